#include "workbench/statusbar.h"

#include "graph/node.h"
#include "shell/memory.h"
#include "shell/settings.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QProgressBar>
#include <QToolButton>

namespace {

constexpr int IconCount = 6;

const char *const s_iconToolTips[IconCount] = {
    "Items without data. Click to select them.", "Items being updated. Click to select them.",
    "Items up to date. Click to select them.",   "Items with warnings. Click to select them.",
    "Items in error. Click to select them.",     "Items that need updating. Click to select them.",
};

QIcon statusIcon(int icon)
{
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    Node::drawStatusIcon(&painter, QRectF(2, 2, 28, 28), icon);
    painter.end();
    return QIcon(pixmap);
}

} // namespace

NodeStatusWidget::NodeStatusWidget(QWidget *parent)
    : QWidget(parent)
    , m_counts(IconCount, 0)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    for (int icon = 0; icon < IconCount; ++icon) {
        auto *button = new QToolButton(this);
        button->setAutoRaise(true);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setIcon(statusIcon(icon));
        button->setIconSize(QSize(14, 14));
        button->setToolTip(QString::fromLatin1(s_iconToolTips[icon]));
        button->setText(QStringLiteral("0"));
        button->setVisible(false);
        connect(button, &QToolButton::clicked, this,
                [this, icon]() { emit selectIconsOfType(icon); });
        layout->addWidget(button);
        m_buttons.append(button);
    }
}

void NodeStatusWidget::setItems(const QList<FlowItem *> &items)
{
    m_counts.fill(0);
    for (const FlowItem *item : items) {
        // A note never runs; counted, it would stand as an empty dataset nobody can fill.
        if (item->kind() == FlowItem::NoteKind)
            continue;
        const int icon = static_cast<int>(item->statusIcon());
        if (icon >= 0 && icon < IconCount)
            ++m_counts[icon];
    }
    const QLocale locale;
    for (int icon = 0; icon < IconCount; ++icon) {
        m_buttons[icon]->setText(locale.toString(m_counts[icon]));
        // An empty count says nothing worth the room.
        m_buttons[icon]->setVisible(m_counts[icon] > 0);
    }
}

StatusBar::StatusBar(QWidget *parent)
    : QStatusBar(parent)
{
    m_progress = new QProgressBar(this);
    m_progress->setRange(0, 100);
    m_progress->setMaximumWidth(160);
    m_progress->setMaximumHeight(14);
    m_progress->setTextVisible(false);
    m_progress->setVisible(false);
    addPermanentWidget(m_progress);

    m_nodeStatus = new NodeStatusWidget(this);
    addPermanentWidget(m_nodeStatus);

    m_memoryLabel = new QLabel(this);
    addPermanentWidget(m_memoryLabel);
    refreshMemory();
}

void StatusBar::setMemoryReading(double useGiB, double limitGiB)
{
    const QString use = QString::number(useGiB, 'f', 2) + QStringLiteral("GB");
    const QString limit = QString::number(limitGiB, 'f', 1);
    m_memoryLabel->setText(QStringLiteral(" Memory usage: %1 of %2GB").arg(use, limit));
    m_memoryLabel->setToolTip(
        QStringLiteral("%1 memory used of %2GB maximum. You can increase maximum memory in "
                       "'Preferences'.")
            .arg(use, limit));
    m_memoryWarning = limitGiB > 0.0 && useGiB >= WarningShare * limitGiB;
    const QString style = m_memoryWarning
        ? QStringLiteral("QLabel{ color: %1; }").arg(QColor(0xFC3300).name())
        : QString();
    // A heartbeat comes often; restyling a label each time would relayout the bar.
    if (m_memoryLabel->styleSheet() != style)
        m_memoryLabel->setStyleSheet(style);
}

void StatusBar::onHeartBeat()
{
    refreshMemory();
}

void StatusBar::refreshMemory()
{
    setMemoryReading(processMemoryGiB(), Settings::instance()->maxMemoryUsage());
}

void StatusBar::setProgress(int percent)
{
    m_progress->setValue(qBound(0, percent, 100));
    m_progress->setVisible(percent > 0 && percent < 100);
}
