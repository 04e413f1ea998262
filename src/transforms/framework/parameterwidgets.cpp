#include "transforms/framework/parameterwidgets.h"

#include "transforms/framework/comparisonoperator.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMenu>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace {

bool isReturnKey(const QKeyEvent *event)
{
    return event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
}

// Radio buttons only while the choices stay short enough to sit side by side in a row.
bool wantsRadioButtons(const QStringList &options)
{
    if (options.size() < 2 || options.size() > 3)
        return false;
    int length = 0;
    for (const QString &option : options)
        length += option.size();
    return length <= 24;
}

} // namespace

// ---------------------------------------------------------------------------------------------

BoolParameterWidget::BoolParameterWidget(Parameter *parameter, QWidget *parent)
    : QCheckBox(parameter->label(), parent)
    , ParameterWidget(parameter)
{
    setToolTip(parameter->toolTip());
    // clicked, unlike toggled, comes from the user only.
    connect(this, &QCheckBox::clicked, this, [this] {
        updateWarning();
        commitChange(false);
    });
}

void BoolParameterWidget::updateValue()
{
    const QSignalBlocker blocker(this);
    setChecked(parameter()->toBool());
    updateWarning();
}

void BoolParameterWidget::updateEnabled(bool enabled)
{
    setEnabled(enabled);
    updateWarning();
}

void BoolParameterWidget::saveValue()
{
    parameter()->setValue(isChecked());
}

void BoolParameterWidget::changeEvent(QEvent *event)
{
    QCheckBox::changeEvent(event);
    if (event->type() == QEvent::EnabledChange)
        updateWarning();
}

void BoolParameterWidget::updateWarning()
{
    const bool warn = parameter()->warnWhenSet() && isChecked() && isEnabled();
    const QString sheet = warn
        ? QStringLiteral("BoolParameterWidget{ color: %1; }").arg(QColor(WarningColor).name())
        : QString();
    if (styleSheet() != sheet)
        setStyleSheet(sheet);
}

// ---------------------------------------------------------------------------------------------

SelectionParameterWidget::SelectionParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
{
    setToolTip(parameter->toolTip());
    const QStringList options = parameter->options().toStringList();
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    if (wantsRadioButtons(options)) {
        m_group = new QButtonGroup(this);
        for (int i = 0; i < options.size(); ++i) {
            auto *radio = new QRadioButton(options.at(i), this);
            m_group->addButton(radio, i);
            m_radios.append(radio);
            layout->addWidget(radio);
        }
        layout->addStretch(1);
        // A choice is a complete edit: run at once.
        connect(m_group, &QButtonGroup::idClicked, this, [this] { commitChange(true); });
    } else {
        m_combo = new QComboBox(this);
        m_combo->addItems(options);
        m_combo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        layout->addWidget(m_combo, 1);
        setFocusProxy(m_combo);
        // Arrowing through the choices is a series of edits: the run waits for the pause.
        connect(m_combo, QOverload<int>::of(&QComboBox::activated), this,
                [this] { commitChange(false); });
    }
    updateChoiceToolTips();
}

void SelectionParameterWidget::updateEnabled(bool enabled)
{
    ParameterWidgetBase::updateEnabled(enabled);
    updateChoiceToolTips();
}

void SelectionParameterWidget::updateChoiceToolTips()
{
    const QStringList &tips = parameter()->choiceToolTips();
    for (int i = 0; i < tips.size(); ++i) {
        if (m_combo && i < m_combo->count())
            m_combo->setItemData(i, tips.at(i), Qt::ToolTipRole);
        else if (i < m_radios.size())
            m_radios.at(i)->setToolTip(tips.at(i));
    }
}

void SelectionParameterWidget::updateValue()
{
    resolvePending();
    const int index = parameter()->toSelectionIndex();
    if (m_combo) {
        const QSignalBlocker blocker(m_combo);
        m_combo->setCurrentIndex(index);
    } else if (QAbstractButton *button = m_group->button(index)) {
        const QSignalBlocker blocker(m_group);
        button->setChecked(true);
    }
}

void SelectionParameterWidget::saveValue()
{
    const QStringList options = parameter()->options().toStringList();
    const int index = currentIndex();
    if (index >= 0 && index < options.size())
        parameter()->setValue(options.at(index));
}

int SelectionParameterWidget::currentIndex() const
{
    return m_combo ? m_combo->currentIndex() : m_group->checkedId();
}

// ---------------------------------------------------------------------------------------------

LineEditWithInsertControlChars::LineEditWithInsertControlChars(QWidget *parent)
    : QLineEdit(parent)
{ }

const QList<QPair<QString, QChar>> &LineEditWithInsertControlChars::controlChars()
{
    static const QList<QPair<QString, QChar>> chars = {
        {QStringLiteral("Tab"), QChar(0x09)},
        {QStringLiteral("Line feed"), QChar(0x0A)},
        {QStringLiteral("Carriage return"), QChar(0x0D)},
        {QStringLiteral("Unit separator"), QChar(0x1F)},
        {QStringLiteral("Record separator"), QChar(0x1E)},
        {QStringLiteral("Non-breaking space"), QChar(0xA0)},
    };
    return chars;
}

void LineEditWithInsertControlChars::insertControlChar(QChar c)
{
    // insert() goes through the same path as typing, so textEdited follows.
    insert(QString(c));
}

void LineEditWithInsertControlChars::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu *menu = createStandardContextMenu();
    menu->addSeparator();
    QMenu *insertMenu = menu->addMenu(QStringLiteral("Insert"));
    insertMenu->setEnabled(!isReadOnly());
    for (const auto &entry : controlChars()) {
        const QChar c = entry.second;
        insertMenu->addAction(entry.first, this, [this, c] { insertControlChar(c); });
    }
    menu->exec(event->globalPos());
    delete menu;
}

// ---------------------------------------------------------------------------------------------

TextParameterWidget::TextParameterWidget(Parameter *parameter, QWidget *parent)
    : LineEditWithInsertControlChars(parent)
    , ParameterWidget(parameter)
{
    setToolTip(parameter->toolTip());
    setReadOnly(!parameter->editable());
    connect(this, &QLineEdit::textEdited, this, &TextParameterWidget::onChanged);
    connect(this, &QLineEdit::returnPressed, this, &TextParameterWidget::processNow);
}

void TextParameterWidget::updateValue()
{
    resolvePending();
    const QSignalBlocker blocker(this);
    setText(parameter()->toString());
}

void TextParameterWidget::saveValue()
{
    parameter()->setValue(text());
}

void TextParameterWidget::onChanged()
{
    commitChange(false);
}

// ---------------------------------------------------------------------------------------------

IntParameterWidget::IntParameterWidget(Parameter *parameter, QWidget *parent)
    : QSpinBox(parent)
    , ParameterWidget(parameter)
{
    setToolTip(parameter->toolTip());
    setRange(parameter->minimumInt(), parameter->maximumInt());
    if (!parameter->suffix().isEmpty())
        setSuffix(QLatin1Char(' ') + parameter->suffix());
    setSpecialValueText(parameter->specialValueText());
    setAccelerated(true);
    connect(this, QOverload<int>::of(&QSpinBox::valueChanged), this, [this] {
        if (!m_loading)
            commitChange(false);
    });
}

void IntParameterWidget::updateValue()
{
    resolvePending();
    m_loading = true;
    setValue(parameter()->toInt());
    m_loading = false;
}

void IntParameterWidget::saveValue()
{
    parameter()->setValue(QSpinBox::value());
}

void IntParameterWidget::keyPressEvent(QKeyEvent *event)
{
    QSpinBox::keyPressEvent(event);
    if (isReturnKey(event))
        emit processNow();
}

// ---------------------------------------------------------------------------------------------

RealParameterWidget::RealParameterWidget(Parameter *parameter, QWidget *parent)
    : QDoubleSpinBox(parent)
    , ParameterWidget(parameter)
{
    setToolTip(parameter->toolTip());
    setDecimals(2);
    setRange(parameter->minimumReal(), parameter->maximumReal());
    if (!parameter->suffix().isEmpty())
        setSuffix(QLatin1Char(' ') + parameter->suffix());
    connect(this, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this] {
        if (!m_loading)
            commitChange(false);
    });
}

void RealParameterWidget::updateValue()
{
    resolvePending();
    const double v = parameter()->toReal();
    // The decimals the value needs, up to what a double holds usefully; a spin box rounds
    // to its decimals, and range and value must be set after them.
    int needed = 2;
    while (needed < 12) {
        const double scale = std::pow(10.0, needed);
        if (std::abs(std::round(v * scale) / scale - v) <= std::abs(v) * 1e-15)
            break;
        ++needed;
    }
    m_loading = true;
    if (needed > decimals()) {
        setDecimals(needed);
        setRange(parameter()->minimumReal(), parameter()->maximumReal());
    }
    setValue(v);
    m_loading = false;
}

void RealParameterWidget::saveValue()
{
    parameter()->setValue(QDoubleSpinBox::value());
}

void RealParameterWidget::keyPressEvent(QKeyEvent *event)
{
    QDoubleSpinBox::keyPressEvent(event);
    if (isReturnKey(event))
        emit processNow();
}

// ---------------------------------------------------------------------------------------------

namespace {
const QString &spaceName()
{
    static const QString name = QStringLiteral("Space");
    return name;
}
const QString &tabName()
{
    static const QString name = QStringLiteral("Tab");
    return name;
}
} // namespace

CharParameterWidget::CharParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_combo(new QComboBox(this))
{
    setToolTip(parameter->toolTip());
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_combo);
    layout->addStretch(1);
    setFocusProxy(m_combo);
    m_combo->setEditable(true);
    m_combo->setInsertPolicy(QComboBox::NoInsert);
    // Inline completion would turn a typed "s" into "Space".
    m_combo->setCompleter(nullptr);
    m_combo->addItems({spaceName(), tabName(), QStringLiteral("0"), QStringLiteral("-"),
                       QStringLiteral("_"), QStringLiteral("."), QStringLiteral(","),
                       QStringLiteral("*")});
    m_combo->setMinimumContentsLength(6);
    connect(m_combo->lineEdit(), &QLineEdit::textEdited, this, [this] { commitChange(false); });
    connect(m_combo, QOverload<int>::of(&QComboBox::activated), this,
            [this] { commitChange(true); });
    connect(m_combo->lineEdit(), &QLineEdit::returnPressed, this, &CharParameterWidget::processNow);
}

QString CharParameterWidget::textForChar(QChar c)
{
    if (c == QLatin1Char(' '))
        return spaceName();
    if (c == QLatin1Char('\t'))
        return tabName();
    return c.isNull() ? QString() : QString(c);
}

QChar CharParameterWidget::charForText(const QString &text)
{
    if (text.compare(spaceName(), Qt::CaseInsensitive) == 0)
        return QLatin1Char(' ');
    if (text.compare(tabName(), Qt::CaseInsensitive) == 0)
        return QLatin1Char('\t');
    return text.isEmpty() ? QChar() : text.at(0);
}

void CharParameterWidget::updateValue()
{
    resolvePending();
    const QSignalBlocker blocker(m_combo);
    const QString text = textForChar(parameter()->toChar());
    const int index = m_combo->findText(text);
    m_combo->setCurrentIndex(index);
    m_combo->setEditText(text);
}

void CharParameterWidget::saveValue()
{
    const QChar c = charForText(m_combo->currentText());
    parameter()->setValue(c.isNull() ? QVariant(QString()) : QVariant(c));
}

// ---------------------------------------------------------------------------------------------

LongTextParameterWidget::LongTextParameterWidget(Parameter *parameter, QWidget *parent)
    : QPlainTextEdit(parent)
    , ParameterWidget(parameter)
{
    setToolTip(parameter->toolTip());
    setReadOnly(!parameter->editable());
    setMinimumHeight(4 * fontMetrics().lineSpacing());
    connect(this, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_loading)
            commitChange(false);
    });
}

void LongTextParameterWidget::updateValue()
{
    resolvePending();
    if (toPlainText() == parameter()->toString())
        return;
    m_loading = true;
    setPlainText(parameter()->toString());
    m_loading = false;
}

void LongTextParameterWidget::saveValue()
{
    parameter()->setValue(toPlainText());
}

// ---------------------------------------------------------------------------------------------

LabelParameterWidget::LabelParameterWidget(Parameter *parameter, QWidget *parent)
    : QLabel(parent)
    , ParameterWidget(parameter)
{
    setWordWrap(true);
    setToolTip(parameter->toolTip());
}

void LabelParameterWidget::updateValue()
{
    setText(parameter()->label());
}

// ---------------------------------------------------------------------------------------------

DateParameterWidget::DateParameterWidget(Parameter *parameter, QWidget *parent)
    : QDateEdit(parent)
    , ParameterWidget(parameter)
{
    setToolTip(parameter->toolTip());
    setCalendarPopup(true);
    setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    connect(this, &QDateEdit::dateChanged, this, [this] {
        if (!m_loading)
            commitChange(false);
    });
}

void DateParameterWidget::updateValue()
{
    resolvePending();
    m_loading = true;
    setDate(parameter()->toDate());
    m_loading = false;
}

void DateParameterWidget::saveValue()
{
    parameter()->setValue(date());
}

void DateParameterWidget::keyPressEvent(QKeyEvent *event)
{
    QDateEdit::keyPressEvent(event);
    if (isReturnKey(event))
        emit processNow();
}

// ---------------------------------------------------------------------------------------------

namespace {

// Languages that have at least one locale, sorted by name; built once, as the list is long.
const QList<QPair<QString, int>> &languageList()
{
    static const QList<QPair<QString, int>> languages = [] {
        QList<QPair<QString, int>> list;
        for (int l = QLocale::C + 1; l <= QLocale::LastLanguage; ++l) {
            const auto language = static_cast<QLocale::Language>(l);
            if (QLocale::matchingLocales(language, QLocale::AnyScript, QLocale::AnyCountry)
                    .isEmpty())
                continue;
            list.append({QLocale::languageToString(language), l});
        }
        std::sort(list.begin(), list.end());
        return list;
    }();
    return languages;
}

} // namespace

LocaleParameterWidget::LocaleParameterWidget(Parameter *parameter, QWidget *parent)
    : ParameterWidgetBase(parameter, parent)
    , m_language(new QComboBox(this))
    , m_country(new QComboBox(this))
{
    setToolTip(parameter->toolTip());
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_language, 1);
    layout->addWidget(m_country, 1);
    setFocusProxy(m_language);

    m_language->addItem(QStringLiteral("Default"), int(QLocale::AnyLanguage));
    for (const auto &language : languageList())
        m_language->addItem(language.first, language.second);
    m_language->setToolTip(QStringLiteral("Language"));
    m_country->setToolTip(QStringLiteral("Country"));

    connect(m_language, QOverload<int>::of(&QComboBox::activated), this, [this](int index) {
        fillCountries(m_language->itemData(index).toInt());
        commitChange(true);
    });
    connect(m_country, QOverload<int>::of(&QComboBox::activated), this,
            [this] { commitChange(true); });
}

void LocaleParameterWidget::fillCountries(int language)
{
    const QSignalBlocker blocker(m_country);
    m_country->clear();
    if (language == QLocale::AnyLanguage) {
        m_country->setEnabled(false);
        return;
    }
    QList<QPair<QString, int>> countries;
    const QList<QLocale> locales = QLocale::matchingLocales(
        static_cast<QLocale::Language>(language), QLocale::AnyScript, QLocale::AnyCountry);
    for (const QLocale &locale : locales) {
        const QPair<QString, int> entry(QLocale::countryToString(locale.country()),
                                        int(locale.country()));
        if (!countries.contains(entry))
            countries.append(entry);
    }
    std::sort(countries.begin(), countries.end());
    for (const auto &country : countries)
        m_country->addItem(country.first, country.second);
    m_country->setEnabled(isEnabled());
}

void LocaleParameterWidget::updateValue()
{
    resolvePending();
    const QSignalBlocker blocker(m_language);
    if (!parameter()->value().isValid()) {
        m_language->setCurrentIndex(0);
        fillCountries(QLocale::AnyLanguage);
        return;
    }
    const QLocale locale = parameter()->toLocale();
    const int languageIndex = m_language->findData(int(locale.language()));
    m_language->setCurrentIndex(qMax(0, languageIndex));
    fillCountries(m_language->currentData().toInt());
    const QSignalBlocker countryBlocker(m_country);
    m_country->setCurrentIndex(qMax(0, m_country->findData(int(locale.country()))));
}

void LocaleParameterWidget::saveValue()
{
    const int language = m_language->currentData().toInt();
    if (language == QLocale::AnyLanguage) {
        parameter()->setValue(QVariant());
        return;
    }
    const QLocale locale(static_cast<QLocale::Language>(language),
                         static_cast<QLocale::Country>(m_country->currentData().toInt()));
    parameter()->setValue(QVariant(locale));
}
