#include "workbench/widgets.h"

#include "shell/delaytimer.h"
#include "shell/settings.h"

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QDesktopServices>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHash>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QTimer>
#include <QVBoxLayout>

DesktopHooks::FileHandler DesktopHooks::s_openFile;
DesktopHooks::FileHandler DesktopHooks::s_saveFile;
DesktopHooks::UrlHandler DesktopHooks::s_openUrl;

void DesktopHooks::setOpenFileHandler(const FileHandler &handler)
{
    s_openFile = handler;
}

void DesktopHooks::setSaveFileHandler(const FileHandler &handler)
{
    s_saveFile = handler;
}

void DesktopHooks::setOpenUrlHandler(const UrlHandler &handler)
{
    s_openUrl = handler;
}

static QFileDialog::Options fileDialogOptions()
{
    QFileDialog::Options options;
    if (!Settings::instance()->useNativeFileDialogs())
        options |= QFileDialog::DontUseNativeDialog;
    return options;
}

QString DesktopHooks::openFileName(QWidget *parent, const QString &caption, const QString &folder,
                                   const QString &filter)
{
    if (s_openFile)
        return s_openFile(parent, caption, folder, filter);
    return QFileDialog::getOpenFileName(parent, caption, folder, filter, nullptr,
                                        fileDialogOptions());
}

QString DesktopHooks::saveFileName(QWidget *parent, const QString &caption, const QString &folder,
                                   const QString &filter)
{
    if (s_saveFile)
        return s_saveFile(parent, caption, folder, filter);
    return QFileDialog::getSaveFileName(parent, caption, folder, filter, nullptr,
                                        fileDialogOptions() | QFileDialog::DontConfirmOverwrite);
}

bool DesktopHooks::openUrl(const QUrl &url)
{
    if (s_openUrl)
        return s_openUrl(url);
    return QDesktopServices::openUrl(url);
}

DelayedFilterEdit::DelayedFilterEdit(QWidget *parent)
    : QLineEdit(parent)
    , m_timer(new DelayTimer(this))
{
    m_timer->setInterval(500);
    setClearButtonEnabled(true);
    connect(m_timer, &DelayTimer::timeout, this, &DelayedFilterEdit::report);
    connect(this, &QLineEdit::textChanged, this, [this] { m_timer->start(); });
    connect(this, &QLineEdit::returnPressed, this, &DelayedFilterEdit::report);
}

int DelayedFilterEdit::delay() const
{
    return m_timer->interval();
}

void DelayedFilterEdit::setDelay(int ms)
{
    m_timer->setInterval(ms);
}

bool DelayedFilterEdit::isPending() const
{
    return m_timer->isActive();
}

void DelayedFilterEdit::report()
{
    m_timer->stop();
    emit delayedTextChanged(text());
}

DelayedPlainTextEdit::DelayedPlainTextEdit(QWidget *parent)
    : QPlainTextEdit(parent)
    , m_timer(new DelayTimer(this))
{
    m_timer->setInterval(1000);
    connect(m_timer, &DelayTimer::timeout, this, &DelayedPlainTextEdit::delayedTextChanged);
    connect(this, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_quiet)
            m_timer->start();
    });
}

int DelayedPlainTextEdit::delay() const
{
    return m_timer->interval();
}

void DelayedPlainTextEdit::setDelay(int ms)
{
    m_timer->setInterval(ms);
}

void DelayedPlainTextEdit::setTextQuietly(const QString &text)
{
    if (text == toPlainText())
        return;
    m_quiet = true;
    setPlainText(text);
    m_quiet = false;
}

void DelayedPlainTextEdit::flush()
{
    if (!m_timer->isActive())
        return;
    m_timer->stop();
    emit delayedTextChanged();
}

void DelayedPlainTextEdit::focusOutEvent(QFocusEvent *event)
{
    flush();
    QPlainTextEdit::focusOutEvent(event);
}

void OpeningComboBox::showPopup()
{
    emit opened();
    QComboBox::showPopup();
}

ActionButton::ActionButton(const QString &text, const QString &toolTip,
                           const QKeySequence &shortcut, const QString &helpKey, QWidget *parent)
    : QToolButton(parent)
    , m_helpKey(helpKey)
{
    setText(text);
    setShortcut(shortcut);
    const QString keys = shortcut.toString(QKeySequence::NativeText);
    setToolTip(toolTip.contains(QLatin1String("%1")) ? toolTip.arg(keys) : toolTip);
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAutoRaise(false);
}

HighlightUncheckedCheckBox::HighlightUncheckedCheckBox(const QString &text, QWidget *parent)
    : QWidget(parent)
    , m_check(new QCheckBox(text, this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_check);
    connect(m_check, &QCheckBox::toggled, this, [this](bool on) {
        updateLook();
        emit toggled(on);
    });
    updateLook();
}

bool HighlightUncheckedCheckBox::isChecked() const
{
    return m_check->isChecked();
}

void HighlightUncheckedCheckBox::setChecked(bool on)
{
    m_check->setChecked(on);
}

void HighlightUncheckedCheckBox::updateLook()
{
    QFont font = m_check->font();
    font.setBold(!m_check->isChecked());
    m_check->setFont(font);
}

ColorButton::ColorButton(const QColor &color, QWidget *parent)
    : QToolButton(parent)
{
    setColor(color);
    connect(this, &QToolButton::clicked, this, &ColorButton::choose);
}

void ColorButton::setColor(const QColor &color)
{
    m_color = color;
    QPixmap swatch(24, 14);
    swatch.fill(color.isValid() ? color : QColor(Qt::transparent));
    QPainter painter(&swatch);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawRect(swatch.rect().adjusted(0, 0, -1, -1));
    painter.end();
    setIcon(QIcon(swatch));
    setIconSize(swatch.size());
}

void ColorButton::choose()
{
    const QColor chosen = QColorDialog::getColor(m_color, this);
    if (!chosen.isValid() || chosen == m_color)
        return;
    setColor(chosen);
    emit colorChanged(chosen);
}

static QHash<QString, QPointer<BalloonTip>> &openTips()
{
    static QHash<QString, QPointer<BalloonTip>> tips;
    return tips;
}

BalloonTip::BalloonTip(const QString &title, const QString &text, QWidget *anchor)
    : QWidget(anchor, Qt::ToolTip | Qt::FramelessWindowHint)
{
    setAttribute(Qt::WA_DeleteOnClose);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 18, 12, 10);
    auto *titleLabel = new QLabel(title, this);
    QFont bold = titleLabel->font();
    bold.setBold(true);
    titleLabel->setFont(bold);
    auto *textLabel = new QLabel(text, this);
    textLabel->setWordWrap(true);
    textLabel->setMaximumWidth(320);
    layout->addWidget(titleLabel);
    layout->addWidget(textLabel);
    adjustSize();
    // A mask rather than a translucent background: without a compositor, as on many X11
    // desktops, translucent pixels show black.
    setMask(QRegion(shape().toFillPolygon().toPolygon()));
    if (anchor)
        move(anchor->mapToGlobal(QPoint(anchor->width() / 2 - ArrowTipX, anchor->height())));
}

QPainterPath BalloonTip::shape() const
{
    const QRectF body = QRectF(rect()).adjusted(0.5, ArrowHeight + 0.5, -0.5, -0.5);
    QPainterPath path;
    path.addRoundedRect(body, 6, 6);
    QPainterPath arrow;
    arrow.moveTo(ArrowTipX - 6, body.top());
    arrow.lineTo(ArrowTipX, 0.5);
    arrow.lineTo(ArrowTipX + 6, body.top());
    arrow.closeSubpath();
    return path.united(arrow);
}

BalloonTip *BalloonTip::showTip(const QString &key, const QString &title, const QString &text,
                                QWidget *anchor, int ms)
{
    if (isDone(key) || !anchor || !anchor->isVisible() || openTips().value(key))
        return nullptr;
    auto *tip = new BalloonTip(title, text, anchor);
    tip->m_key = key;
    openTips().insert(key, tip);
    tip->show();
    QTimer::singleShot(ms, tip, &QWidget::close);
    return tip;
}

bool BalloonTip::isDone(const QString &key)
{
    return Settings::instance()->tipShown(key);
}

void BalloonTip::markDone(const QString &key)
{
    if (!isDone(key))
        Settings::instance()->setTipShown(key, true);
    if (BalloonTip *tip = openTips().take(key))
        tip->close();
}

void BalloonTip::mousePressEvent(QMouseEvent *)
{
    close();
}

void BalloonTip::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette().color(QPalette::ToolTipText));
    painter.setBrush(palette().color(QPalette::ToolTipBase));
    painter.drawPath(shape());
}
