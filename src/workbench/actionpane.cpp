#include "workbench/actionpane.h"

#include "graph/node.h"
#include "shell/application.h"
#include "shell/settings.h"
#include "transforms/framework/transform.h"
#include "transforms/registry.h"

#include <QCheckBox>
#include <QGraphicsItem>
#include <QLabel>
#include <QScrollArea>
#include <QShortcut>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace {

const QString RecentKey = QStringLiteral("recent_transforms_added");
const QString CountKey = QStringLiteral("all_transforms_added_count");
const QString AdvancedText = QStringLiteral("show advanced");
constexpr int MaximumRecent = 30;

const QList<Transform *> &applicationPrototypes()
{
    return TransformRegistry::prototypes();
}

bool countsAsSource(const QGraphicsItem *item)
{
    return item && (item->type() == Node::InputType || item->type() == Node::TransformType);
}

} // namespace

TransformButton::TransformButton(const Transform *prototype, QWidget *parent)
    : ActionButton(prototype->displayName(), QString(), QKeySequence(),
                   QStringLiteral("Transform_") + prototype->typeName(), parent)
    , m_prototype(prototype)
{ }

QString TransformButton::toolTipFor(const Transform *prototype, bool showAdvanced)
{
    QString tip = prototype->description() + QStringLiteral("\n\n") + prototype->inputHint();
    if (prototype->isAdvanced() && !showAdvanced)
        tip += QStringLiteral("\nCheck '%1' (above) to see all transforms.").arg(AdvancedText);
    return tip;
}

void TransformButton::enterEvent(QEvent *event)
{
    ActionButton::enterEvent(event);
    emit hoverChanged(true);
}

void TransformButton::leaveEvent(QEvent *event)
{
    ActionButton::leaveEvent(event);
    emit hoverChanged(false);
}

ActionPane::ActionPane(QWidget *parent)
    : QWidget(parent)
{
    build(applicationPrototypes());
}

ActionPane::ActionPane(const QList<Transform *> &prototypes, QWidget *parent)
    : QWidget(parent)
{
    build(prototypes);
}

ActionPane::~ActionPane() = default;

void ActionPane::build(const QList<Transform *> &prototypes)
{
    setObjectName(QStringLiteral("ActionPane"));
    for (const Transform *prototype : prototypes)
        m_prototypes.append(prototype);

    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(1, 1, 1, 1);
    auto *scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    outer->addWidget(scroll);

    auto *column = new QWidget(scroll);
    auto *layout = new QVBoxLayout(column);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->setSpacing(4);
    scroll->setWidget(column);

    addInputButtons(column, layout);
    addTransformChooser(column, layout);
    addTransformButtons(column, layout);
    layout->addStretch(1);
    addOutputButton(column, layout);

    updateCategoryRows();
    updateButtons();
    updateEnabled();
}

void ActionPane::addInputButtons(QWidget *column, QVBoxLayout *layout)
{
    const QString inputFormats = QStringLiteral(
        "\n\nCSV/Excel/fixed width/JSON/plain text/TSV/vCard/XML formats are supported.");
    m_fromFile
        = new ActionButton(QStringLiteral("From File"),
                           QStringLiteral("Input a dataset from a file. (%1)") + inputFormats,
                           QKeySequence(Qt::ALT + Qt::Key_I), QStringLiteral("Input_data"), column);
    m_fromClipboard = new ActionButton(
        QStringLiteral("From Clipboard"),
        QStringLiteral("Input a dataset from the clipboard. (%1)") + inputFormats,
        QKeySequence(Qt::ALT + Qt::SHIFT + Qt::Key_I), QStringLiteral("Input_data"), column);
    layout->addWidget(m_fromFile);
    layout->addWidget(m_fromClipboard);
    connect(m_fromFile, &QToolButton::clicked, this, [this] {
        BalloonTip::markDone(QStringLiteral("tip_input_button"));
        emit inputFileClicked();
    });
    connect(m_fromClipboard, &QToolButton::clicked, this, [this] {
        BalloonTip::markDone(QStringLiteral("tip_input_button"));
        emit inputClipboardClicked();
    });
}

// The category, the keyword filter and the advanced check that narrow the transform buttons.
void ActionPane::addTransformChooser(QWidget *column, QVBoxLayout *layout)
{
    m_category = new OpeningComboBox(column);
    m_category->setToolTip(QStringLiteral("Filter the type of transforms to display."));
    layout->addWidget(m_category);
    connect(m_category, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &ActionPane::onCategoryChanged);
    connect(m_category, &OpeningComboBox::opened, this, &ActionPane::onComboOpened);

    m_filter = new DelayedFilterEdit(column);
    m_filter->setPlaceholderText(QStringLiteral("Transform keywords"));
    const QKeySequence filterKeys(Qt::CTRL + Qt::Key_K);
    m_filter->setToolTip(QStringLiteral("Type one or more keywords, separated by Spaces, to find "
                                        "the transform you want. (%1)")
                             .arg(filterKeys.toString(QKeySequence::NativeText)));
    layout->addWidget(m_filter);
    connect(m_filter, &DelayedFilterEdit::delayedTextChanged, this,
            &ActionPane::onMatchTextChanged);
    auto *focusFilter = new QShortcut(filterKeys, this);
    connect(focusFilter, &QShortcut::activated, m_filter, [this] {
        m_filter->setFocus(Qt::ShortcutFocusReason);
        m_filter->selectAll();
    });

    m_advanced = new HighlightUncheckedCheckBox(AdvancedText, column);
    m_advanced->setToolTip(
        QStringLiteral("Check to show all available transforms, including the advanced ones."));
    m_advanced->setChecked(Settings::instance()->showAdvancedTransforms());
    layout->addWidget(m_advanced);
    connect(m_advanced, &HighlightUncheckedCheckBox::toggled, this, &ActionPane::onAdvancedChanged);
}

// One button per prototype, hidden until the chooser shows it.
void ActionPane::addTransformButtons(QWidget *column, QVBoxLayout *layout)
{
    m_buttonBox = new QWidget(column);
    m_buttonLayout = new QVBoxLayout(m_buttonBox);
    m_buttonLayout->setContentsMargins(0, 0, 0, 0);
    m_buttonLayout->setSpacing(2);
    layout->addWidget(m_buttonBox);
    for (const Transform *prototype : qAsConst(m_prototypes)) {
        auto *button = new TransformButton(prototype, m_buttonBox);
        button->hide();
        m_buttons.append(button);
        connect(button, &QToolButton::clicked, this,
                [this, button] { onTransformButtonClicked(button); });
        connect(button, &TransformButton::hoverChanged, this,
                [this, prototype](bool hovered) { emit hoverStatusChanged(hovered, prototype); });
    }
}

void ActionPane::addOutputButton(QWidget *column, QVBoxLayout *layout)
{
    m_toFile = new ActionButton(
        QStringLiteral("To File"),
        QStringLiteral("Output a dataset to a file. (%1)\n\nCSV/Excel/HTML/JSON/Markdown/plain "
                       "text/TSV/vCard/XML/YAML formats are supported.\n\nSelect 1 "
                       "input/transform item in the center pane and then click this button to "
                       "add an output."),
        QKeySequence(Qt::ALT + Qt::Key_O), QStringLiteral("Output_data"), column);
    layout->addWidget(m_toFile);
    connect(m_toFile, &QToolButton::clicked, this, &ActionPane::outputFileClicked);
}

QSize ActionPane::minimumSizeHint() const
{
    // Hidden buttons count too: a keyword may show any of them later.
    int width = 0;
    const QList<QWidget *> controls
        = {m_fromFile, m_fromClipboard, m_toFile, m_category, m_filter, m_advanced};
    for (const QWidget *control : controls)
        width = qMax(width, control->sizeHint().width());
    for (const TransformButton *button : m_buttons)
        width = qMax(width, button->sizeHint().width());
    const int margins = 2 * 1 + 2 * 4;
    width += margins + style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
    return QSize(width, QWidget::minimumSizeHint().height());
}

QSize ActionPane::sizeHint() const
{
    const QSize minimum = minimumSizeHint();
    return QSize(minimum.width(), qMax(minimum.height(), QWidget::sizeHint().height()));
}

int ActionPane::rowCount(int data)
{
    if (data >= 0)
        return 0;
    const int step = (-data - 1) % 5;
    return 10 + 5 * step;
}

QStringList ActionPane::recentTransforms()
{
    return Settings::instance()->value(RecentKey).toStringList();
}

QMap<QString, int> ActionPane::transformCounts()
{
    QMap<QString, int> counts;
    const QVariantMap stored = Settings::instance()->value(CountKey).toMap();
    for (auto it = stored.cbegin(); it != stored.cend(); ++it)
        counts.insert(it.key(), it.value().toInt());
    return counts;
}

void ActionPane::recordTransformAdded(const QString &typeName)
{
    if (typeName.isEmpty())
        return;
    QStringList recent = recentTransforms();
    recent.removeAll(typeName);
    recent.append(typeName);
    while (recent.size() > MaximumRecent)
        recent.removeFirst();
    Settings::instance()->setValue(RecentKey, recent);

    QVariantMap counts = Settings::instance()->value(CountKey).toMap();
    counts.insert(typeName, counts.value(typeName).toInt() + 1);
    Settings::instance()->setValue(CountKey, counts);

    // A list shown from the memory follows it at once.
    if (m_category->currentData().toInt() < 0 && m_filter->text().trimmed().isEmpty())
        updateButtons();
}

void ActionPane::updateCategoryRows()
{
    const int current = m_category->count() ? m_category->currentData().toInt() : 0;
    const int recentCount = recentTransforms().size();
    const int usedCount = transformCounts().size();

    QList<int> rows;
    for (int category = CategoryAll; category <= CategoryOther; ++category)
        rows.append(category);
    for (int data = -1; data >= -5; --data)
        if (recentCount >= rowCount(data))
            rows.append(data);
    for (int data = -6; data >= -10; --data)
        if (usedCount >= rowCount(data))
            rows.append(data);

    QList<int> present;
    for (int i = 0; i < m_category->count(); ++i)
        present.append(m_category->itemData(i).toInt());
    if (present == rows)
        return;

    const QSignalBlocker blocker(m_category);
    m_category->clear();
    for (int data : qAsConst(rows)) {
        QString text;
        if (data >= 0)
            text = QStringLiteral("%1 transforms").arg(transformCategoryName(data));
        else if (data >= -5)
            text = QStringLiteral("%1 last used").arg(rowCount(data));
        else
            text = QStringLiteral("%1 most used").arg(rowCount(data));
        m_category->addItem(text, data);
    }
    const int index = m_category->findData(current);
    m_category->setCurrentIndex(index < 0 ? 0 : index);
    if (index < 0)
        updateButtons();
}

void ActionPane::onComboOpened()
{
    updateCategoryRows();
}

void ActionPane::onCategoryChanged()
{
    if (!m_filter->text().isEmpty()) {
        const QSignalBlocker blocker(m_filter);
        m_filter->clear();
    }
    updateButtons();
}

void ActionPane::onMatchTextChanged(const QString &text)
{
    if (!text.trimmed().isEmpty()) {
        BalloonTip::markDone(QStringLiteral("tip_filter_transform"));
        if (m_category->currentIndex() != 0) {
            const QSignalBlocker blocker(m_category);
            m_category->setCurrentIndex(0);
        }
    }
    updateButtons();
}

void ActionPane::onAdvancedChanged(bool on)
{
    BalloonTip::markDone(QStringLiteral("tip_advanced_transform"));
    Settings::instance()->setShowAdvancedTransforms(on);
    updateButtons();
}

const Transform *ActionPane::prototypeNamed(const QString &typeName) const
{
    for (const Transform *prototype : m_prototypes)
        if (prototype->typeName() == typeName)
            return prototype;
    return nullptr;
}

QList<const Transform *> ActionPane::transformsForRow(int data) const
{
    QList<const Transform *> list;
    const bool advanced = m_advanced->isChecked();
    if (data >= 0) {
        for (const Transform *prototype : m_prototypes)
            if ((data == CategoryAll || prototype->category() == data)
                && (advanced || !prototype->isAdvanced()))
                list.append(prototype);
        return list;
    }
    const int wanted = rowCount(data);
    if (data >= -5) {
        const QStringList recent = recentTransforms();
        for (int i = recent.size() - 1; i >= 0 && list.size() < wanted; --i) {
            const Transform *prototype = prototypeNamed(recent.at(i));
            if (prototype && !list.contains(prototype))
                list.append(prototype);
        }
        return list;
    }
    const QMap<QString, int> counts = transformCounts();
    QList<QPair<QString, int>> ranked;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        ranked.append({it.key(), it.value()});
    // Ties go to the name, so that the list doesn't shuffle between openings.
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const QPair<QString, int> &a, const QPair<QString, int> &b) {
                         return a.second > b.second;
                     });
    for (const auto &entry : qAsConst(ranked)) {
        if (list.size() >= wanted)
            break;
        if (const Transform *prototype = prototypeNamed(entry.first))
            list.append(prototype);
    }
    return list;
}

void ActionPane::updateButtons()
{
    QList<const Transform *> shown;
    const QStringList words = m_filter->text().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (!words.isEmpty()) {
        // Keywords find advanced transforms too: a user who names one wants it.
        QList<QPair<int, const Transform *>> matched;
        for (const Transform *prototype : qAsConst(m_prototypes)) {
            const int count = prototype->keywordMatchCount(words);
            if (count > 0)
                matched.append({count, prototype});
        }
        std::stable_sort(matched.begin(), matched.end(),
                         [](const QPair<int, const Transform *> &a,
                            const QPair<int, const Transform *> &b) { return a.first > b.first; });
        for (const auto &entry : qAsConst(matched))
            shown.append(entry.second);
    } else {
        shown = transformsForRow(m_category->currentData().toInt());
    }

    const bool advanced = m_advanced->isChecked();
    m_buttonBox->setUpdatesEnabled(false);
    for (TransformButton *button : qAsConst(m_buttons)) {
        m_buttonLayout->removeWidget(button);
        button->hide();
    }
    for (const Transform *prototype : qAsConst(shown)) {
        TransformButton *button = m_buttons.value(m_prototypes.indexOf(prototype));
        if (!button)
            continue;
        button->setToolTip(TransformButton::toolTipFor(prototype, advanced));
        m_buttonLayout->addWidget(button);
        button->show();
    }
    m_buttonBox->setUpdatesEnabled(true);
}

QList<const Transform *> ActionPane::shownTransforms() const
{
    QList<const Transform *> list;
    for (int i = 0; i < m_buttonLayout->count(); ++i)
        if (auto *button = qobject_cast<TransformButton *>(m_buttonLayout->itemAt(i)->widget()))
            list.append(button->prototype());
    return list;
}

void ActionPane::setSelection(const QList<QGraphicsItem *> &selected)
{
    m_selectedCount = int(std::count_if(selected.cbegin(), selected.cend(), countsAsSource));
    updateEnabled();
    if (m_selectedCount == 0 || !isVisible())
        return;
    // Under the first button, not under the whole column, where it would hide "To File".
    QWidget *anchor = m_buttonBox;
    if (m_buttonLayout->count() > 0 && m_buttonLayout->itemAt(0)->widget())
        anchor = m_buttonLayout->itemAt(0)->widget();
    BalloonTip::showTip(QStringLiteral("tip_transform_button"),
                        QStringLiteral("Transform datasets"),
                        QStringLiteral("Click a transform button to transform the selected "
                                       "item(s)."),
                        anchor);
}

void ActionPane::updateEnabled()
{
    const bool gray = Settings::instance()->grayLeftPaneButtons();
    for (TransformButton *button : qAsConst(m_buttons)) {
        const Transform *prototype = button->prototype();
        const bool fits = m_selectedCount >= prototype->minimumInputs()
            && m_selectedCount <= prototype->maximumInputs();
        button->setEnabled(m_interactionAllowed && (!gray || fits));
    }
    m_toFile->setEnabled(m_interactionAllowed && (!gray || m_selectedCount == 1));
    m_fromFile->setEnabled(m_interactionAllowed);
    m_fromClipboard->setEnabled(m_interactionAllowed);
    m_category->setEnabled(m_interactionAllowed);
    m_filter->setEnabled(m_interactionAllowed);
    m_advanced->setEnabled(m_interactionAllowed);
}

void ActionPane::setInteractionAllowed(bool allowed)
{
    m_interactionAllowed = allowed;
    updateEnabled();
}

QString ActionPane::wrongSelectionMessage(const Transform *prototype, int selectedCount)
{
    const int minimum = prototype->minimumInputs();
    const int maximum = prototype->maximumInputs();
    if (selectedCount >= minimum && selectedCount <= maximum)
        return QString();
    const QString kind = QStringLiteral("input or transform");
    QString needed;
    if (minimum == maximum)
        needed = QStringLiteral("just %1 %2 %3")
                     .arg(minimum)
                     .arg(kind, minimum == 1 ? QStringLiteral("item") : QStringLiteral("items"));
    else if (maximum == FlowItem::Unlimited)
        needed = QStringLiteral("at least %1 %2 %3")
                     .arg(minimum)
                     .arg(kind, minimum == 1 ? QStringLiteral("item") : QStringLiteral("items"));
    else
        needed = QStringLiteral("%1 to %2 %3 items").arg(minimum).arg(maximum).arg(kind);
    const QString head = selectedCount == 0
        ? QStringLiteral("No items selected.")
        : QStringLiteral("%1 input or transform item(s) selected.").arg(selectedCount);
    return head
        + QStringLiteral("\nTo add a '%1' transform you need to first select %2 in the Center "
                         "pane.")
              .arg(prototype->displayName(), needed);
}

void ActionPane::onTransformButtonClicked(TransformButton *button)
{
    BalloonTip::markDone(QStringLiteral("tip_transform_button"));
    const QString message = wrongSelectionMessage(button->prototype(), m_selectedCount);
    if (!message.isEmpty()) {
        MessageBoxes::information(this, button->prototype()->displayName(), message);
        return;
    }
    emit transformClicked(button->prototype());
}

void ActionPane::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (m_tipsOffered)
        return;
    m_tipsOffered = true;
    QTimer::singleShot(2000, this, &ActionPane::offerTips);
}

void ActionPane::offerTips()
{
    if (!isVisible())
        return;
    if (!BalloonTip::isDone(QStringLiteral("tip_input_button"))) {
        BalloonTip::showTip(
            QStringLiteral("tip_input_button"), QStringLiteral("Add datasets to transform"),
            QStringLiteral("Click an input button to add your dataset (or drag the file(s) onto "
                           "the Center pane).\nCSV/Excel/fixed width/JSON/plain "
                           "text/TSV/vCard/XML formats are supported."),
            m_fromFile);
    } else if (!BalloonTip::isDone(QStringLiteral("tip_filter_transform"))) {
        BalloonTip::showTip(
            QStringLiteral("tip_filter_transform"), QStringLiteral("Find transforms"),
            QStringLiteral("Type keywords in the transforms filter to find the "
                           "right transform (%1).")
                .arg(QKeySequence(Qt::CTRL + Qt::Key_K).toString(QKeySequence::NativeText)),
            m_filter);
    } else if (!BalloonTip::isDone(QStringLiteral("tip_advanced_transform"))) {
        BalloonTip::showTip(
            QStringLiteral("tip_advanced_transform"), QStringLiteral("Advanced transforms"),
            QStringLiteral("Check to show all transforms, including advanced."), m_advanced);
    }
}
