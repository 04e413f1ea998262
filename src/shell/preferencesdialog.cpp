#include "shell/preferencesdialog.h"
#include "shell/appearancesettings.h"

#include "data/dataset.h"
#include "shell/application.h"
#include "shell/colors.h"
#include "shell/settings.h"

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFontDialog>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

QComboBox *comboBox(const QString &key, const QStringList &texts, QWidget *parent)
{
    auto *box = new QComboBox(parent);
    box->setObjectName(key);
    box->addItems(texts);
    return box;
}

QCheckBox *checkBox(const QString &key, const QString &text, QWidget *parent)
{
    auto *box = new QCheckBox(text, parent);
    box->setObjectName(key);
    return box;
}

QString fontText(const QFont &font, bool set)
{
    if (!set)
        return QStringLiteral("Default");
    return QStringLiteral("%1, %2pt").arg(font.family()).arg(font.pointSize());
}

QStringList localeNames()
{
    static QStringList names;
    if (names.isEmpty()) {
        const QList<QLocale> locales = QLocale::matchingLocales(
            QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyCountry);
        for (const QLocale &locale : locales) {
            if (locale.language() != QLocale::C && !names.contains(locale.name()))
                names.append(locale.name());
        }
        std::sort(names.begin(), names.end());
    }
    return names;
}

} // namespace

PreferencesDialog::PreferencesDialog(QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(QStringLiteral("Preferences"));
    m_tabs = new QTabWidget(this);
    m_tabs->addTab(buildGeneralTab(), QStringLiteral("General"));
    m_tabs->addTab(buildDatesTab(), QStringLiteral("Dates"));
    m_tabs->addTab(buildExtensionsTab(true), QStringLiteral("Input Extensions"));
    m_tabs->addTab(buildExtensionsTab(false), QStringLiteral("Output Extensions"));
    m_tabs->addTab(buildColorsTab(), QStringLiteral("Colors"));
    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &PreferencesDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &PreferencesDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs);
    layout->addWidget(m_buttons);
    load();
    const QByteArray geometry
        = Settings::instance()->windowGeometry(QStringLiteral("prefs_window_geometry"));
    if (!geometry.isEmpty())
        restoreGeometry(geometry);
}

QWidget *PreferencesDialog::buildGeneralTab()
{
    auto *page = new QWidget(this);
    auto *form = new QFormLayout(page);

    addGeneralChecks(page, form);
    addGeneralChoices(page, form);
    addProcessingLimits(page, form);

    m_wheel = comboBox(QStringLiteral("mouse_wheel_behaviour"),
                       {QStringLiteral("Forward=Scroll up (+Option=Zoom in)"),
                        QStringLiteral("Forward=Zoom in (+Option=Scroll up)"),
                        QStringLiteral("Forward=Zoom out (+Option=Scroll up)"),
                        QStringLiteral("Does nothing")},
                       page);
    form->addRow(QStringLiteral("Zoom wheel behavior:"), m_wheel);

    m_store = comboBox(QStringLiteral("store"),
                       {Settings::userSettingsName(), QStringLiteral("tabulon.ini file")}, page);
    form->addRow(QStringLiteral("Store these preferences in:"), m_store);

    addFontRows(page, form);

    m_locale = new QComboBox(page);
    m_locale->setObjectName(QStringLiteral("locale"));
    m_locale->addItems(localeNames());
    form->addRow(QStringLiteral("Default locale:"), m_locale);

    m_padding = new QSpinBox(page);
    m_padding->setObjectName(QStringLiteral("data_font_vertical_padding"));
    m_padding->setRange(0, 100);
    m_padding->setSuffix(QStringLiteral(" pixels"));
    form->addRow(QStringLiteral("Data table default padding:"), m_padding);
    return page;
}

void PreferencesDialog::addGeneralChecks(QWidget *page, QFormLayout *form)
{
    m_grayButtons = checkBox(QStringLiteral("gray_left_pane_buttons"),
                             QStringLiteral("gray Left pane buttons when not available"), page);
    m_nativeDialogs = checkBox(QStringLiteral("use_native_file_dialogs"),
                               QStringLiteral("use native file windows"), page);
    m_beep = checkBox(QStringLiteral("beep_after_processing"),
                      QStringLiteral("make a sound when processing completed"), page);
    m_autoMoveNotes = checkBox(QStringLiteral("auto_move_notes"),
                               QStringLiteral("move Note items with associated items"), page);
    m_warnOnLocaleChange = checkBox(QStringLiteral("warn_on_locale_change"),
                                    QStringLiteral("warn on locale change"), page);
    form->addRow(m_grayButtons);
    form->addRow(m_nativeDialogs);
    form->addRow(m_beep);
    form->addRow(m_autoMoveNotes);
    form->addRow(m_warnOnLocaleChange);
}

void PreferencesDialog::addGeneralChoices(QWidget *page, QFormLayout *form)
{
    m_atStart = comboBox(QStringLiteral("open_previous_at_start"),
                         {QStringLiteral("Nothing"), QStringLiteral("Open last document"),
                          QStringLiteral("Show Open Recent")},
                         page);
    form->addRow(QStringLiteral("At start-up:"), m_atStart);
    m_openAutoRun = comboBox(
        QStringLiteral("open_auto_run"),
        {QStringLiteral("Off"), QStringLiteral("As saved in the document"), QStringLiteral("On")},
        page);
    form->addRow(QStringLiteral("Opening a .tabulon with auto run:"), m_openAutoRun);
    m_uiTheme = comboBox(
        QStringLiteral("ui_theme"),
        {QStringLiteral("Same as system"), QStringLiteral("Light"), QStringLiteral("Dark")}, page);
    form->addRow(QStringLiteral("User interface theme:"), m_uiTheme);
    m_iconSize = comboBox(
        QStringLiteral("toolbar_icon_size"),
        {QStringLiteral("Small"), QStringLiteral("Medium"), QStringLiteral("Large")}, page);
    form->addRow(QStringLiteral("Tool bar icon size:"), m_iconSize);
    m_copyDataAs
        = comboBox(QStringLiteral("copy_data_as"),
                   {QStringLiteral("Tab separated"), QStringLiteral("Comma separated")}, page);
    form->addRow(QStringLiteral("Copy data to clipboard text/plain as:"), m_copyDataAs);
    m_optimizeFor
        = comboBox(QStringLiteral("optimize_for"),
                   {QStringLiteral("Minimum memory use"), QStringLiteral("Maximum speed")}, page);
    form->addRow(QStringLiteral("Optimize processing for:"), m_optimizeFor);
}

// How much memory processing may use, and how long the Right pane waits before it runs.
void PreferencesDialog::addProcessingLimits(QWidget *page, QFormLayout *form)
{
    m_maxMemory = new QDoubleSpinBox(page);
    m_maxMemory->setObjectName(QStringLiteral("max_memory_usage"));
    m_maxMemory->setRange(0.5, 1024.0);
    m_maxMemory->setDecimals(1);
    m_maxMemory->setSingleStep(0.5);
    m_maxMemory->setSuffix(QStringLiteral(" GB"));
    form->addRow(QStringLiteral("Maximum memory usage:"), m_maxMemory);

    m_processingDelay = new QDoubleSpinBox(page);
    m_processingDelay->setObjectName(QStringLiteral("processing_delay"));
    m_processingDelay->setRange(0.0, 60.0);
    m_processingDelay->setDecimals(1);
    m_processingDelay->setSingleStep(0.5);
    m_processingDelay->setSuffix(QStringLiteral(" seconds"));
    form->addRow(QStringLiteral("Right pane processing delay:"), m_processingDelay);
}

// One row for each of the two fonts: its name, a chooser and a way back to the default.
void PreferencesDialog::addFontRows(QWidget *page, QFormLayout *form)
{
    for (int which = 0; which < 2; ++which) {
        const bool data = which == 1;
        auto *row = new QHBoxLayout;
        auto *label = new QLabel(page);
        auto *choose = new QPushButton(QStringLiteral("Choose..."), page);
        auto *reset = new QPushButton(QStringLiteral("Default"), page);
        choose->setObjectName(data ? QStringLiteral("data_font") : QStringLiteral("ui_font"));
        row->addWidget(label, 1);
        row->addWidget(choose);
        row->addWidget(reset);
        connect(choose, &QPushButton::clicked, this, [this, data]() { chooseFont(data); });
        connect(reset, &QPushButton::clicked, this, [this, data]() {
            (data ? m_dataFontSet : m_uiFontSet) = false;
            updateFontLabels();
        });
        (data ? m_dataFontLabel : m_uiFontLabel) = label;
        form->addRow(data ? QStringLiteral("Data table font:")
                          : QStringLiteral("User interface font:"),
                     row);
    }
}

QWidget *PreferencesDialog::buildDatesTab()
{
    auto *page = new QWidget(this);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(new QLabel(QStringLiteral("Supported date formats (1 per line):"), page));
    m_dateFormats = new QPlainTextEdit(page);
    m_dateFormats->setObjectName(QStringLiteral("date_formats"));
    layout->addWidget(m_dateFormats);
    auto *row = new QHBoxLayout;
    auto *us = new QPushButton(QStringLiteral("Default (US)"), page);
    auto *nonUs = new QPushButton(QStringLiteral("Default (non-US)"), page);
    connect(us, &QPushButton::clicked, this, [this]() {
        m_dateFormats->setPlainText(
            Settings::defaultDateFormatsText(QLocale(QLocale::English, QLocale::UnitedStates)));
    });
    connect(nonUs, &QPushButton::clicked, this, [this]() {
        m_dateFormats->setPlainText(
            Settings::defaultDateFormatsText(QLocale(QLocale::English, QLocale::UnitedKingdom)));
    });
    row->addWidget(us);
    row->addWidget(nonUs);
    row->addStretch();
    layout->addLayout(row);
    return page;
}

QWidget *PreferencesDialog::buildExtensionsTab(bool input)
{
    auto *page = new QWidget(this);
    auto *layout = new QVBoxLayout(page);
    layout->addWidget(new QLabel(input ? QStringLiteral("Block input from files with extensions:")
                                       : QStringLiteral("Block output to files with extensions:"),
                                 page));
    auto *edit = new QLineEdit(page);
    edit->setObjectName(input ? QStringLiteral("blocked_input_extensions")
                              : QStringLiteral("blocked_output_extensions"));
    edit->setToolTip(QStringLiteral("Comma separated, for example: exe,dll,bat"));
    layout->addWidget(edit);
    layout->addStretch();
    (input ? m_blockedInput : m_blockedOutput) = edit;
    return page;
}

QWidget *PreferencesDialog::buildColorsTab()
{
    auto *page = new QWidget(this);
    auto *layout = new QVBoxLayout(page);
    auto *form = new QFormLayout;
    QStringList schemes;
    for (int scheme = 0; scheme < Colors::SchemeCount; ++scheme)
        schemes.append(Colors::schemeName(scheme));
    m_scheme = comboBox(QStringLiteral("color_scheme"), schemes, page);
    form->addRow(QStringLiteral("Color scheme:"), m_scheme);
    layout->addLayout(form);

    auto *grid = new QGridLayout;
    m_customColors.resize(Colors::RoleCount);
    for (int role = 0; role < Colors::RoleCount; ++role) {
        auto *button = new QPushButton(page);
        button->setObjectName(QStringLiteral("custom_color_%1").arg(role));
        button->setFixedSize(48, 22);
        connect(button, &QPushButton::clicked, this, [this, role]() { chooseColor(role); });
        m_colorButtons.append(button);
        const int column = (role % 3) * 2;
        const int row = role / 3;
        grid->addWidget(new QLabel(Colors::roleName(role) + QLatin1Char(':'), page), row, column);
        grid->addWidget(button, row, column + 1);
    }
    layout->addLayout(grid);

    auto *custom = new QFormLayout;
    m_gradient = new QSpinBox(page);
    m_gradient->setObjectName(QStringLiteral("custom_gradient_effect"));
    m_gradient->setRange(0, 10);
    custom->addRow(QStringLiteral("Gradient effect:"), m_gradient);
    m_thickness = new QDoubleSpinBox(page);
    m_thickness->setObjectName(QStringLiteral("custom_connection_thickness"));
    m_thickness->setRange(0.5, 10.0);
    m_thickness->setSingleStep(0.5);
    m_thickness->setDecimals(1);
    custom->addRow(QStringLiteral("Connection thickness:"), m_thickness);
    layout->addLayout(custom);
    layout->addStretch();

    connect(m_scheme, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this]() {
        // A built-in scheme shows its colours; choosing one as a start for the custom scheme
        // is done by switching to Custom afterwards, which keeps what is shown.
        if (m_scheme->currentIndex() != Colors::Custom) {
            for (int role = 0; role < Colors::RoleCount; ++role)
                m_customColors[role] = Colors::instance()->color(m_scheme->currentIndex(), role);
        }
        updateColorButtons();
    });
    return page;
}

void PreferencesDialog::load()
{
    Settings *settings = Settings::instance();
    m_grayButtons->setChecked(settings->grayLeftPaneButtons());
    m_nativeDialogs->setChecked(settings->useNativeFileDialogs());
    m_beep->setChecked(settings->beepAfterProcessing());
    m_autoMoveNotes->setChecked(settings->autoMoveNotes());
    m_warnOnLocaleChange->setChecked(settings->warnOnLocaleChange());
    m_atStart->setCurrentIndex(qBound(0, settings->openPreviousAtStart(), 2));
    m_openAutoRun->setCurrentIndex(qBound(0, settings->openAutoRun(), 2));
    m_uiTheme->setCurrentIndex(qBound(0, settings->uiTheme(), 2));
    m_iconSize->setCurrentIndex(qBound(0, settings->toolbarIconSize(), 2));
    m_copyDataAs->setCurrentIndex(qBound(0, settings->copyDataAs(), m_copyDataAs->count() - 1));
    m_optimizeFor->setCurrentIndex(qBound(0, settings->optimizeFor(), 1));
    m_maxMemory->setValue(settings->maxMemoryUsage());
    m_processingDelay->setValue(settings->processingDelay());
    m_wheel->setCurrentIndex(qBound(0, settings->mouseWheelBehaviour(), 3));
    m_store->setCurrentIndex(settings->isIniFile() ? IniFile : UserSettings);
    m_uiFontSet = settings->hasUiFont();
    m_uiFont = m_uiFontSet ? AppearanceSettings(settings).uiFont() : QApplication::font();
    m_dataFontSet = settings->hasDataFont();
    m_dataFont = m_dataFontSet ? AppearanceSettings(settings).dataFont() : QApplication::font();
    updateFontLabels();
    const int locale = m_locale->findText(settings->locale().name());
    m_locale->setCurrentIndex(qMax(0, locale));
    m_padding->setValue(settings->dataFontVerticalPadding());
    m_dateFormats->setPlainText(settings->dateFormats());
    m_blockedInput->setText(settings->blockedInputExtensions());
    m_blockedOutput->setText(settings->blockedOutputExtensions());

    const int scheme = AppearanceSettings(settings).colorScheme();
    for (int role = 0; role < Colors::RoleCount; ++role)
        m_customColors[role] = Colors::instance()->color(Colors::Custom, role);
    {
        const QSignalBlocker blocker(m_scheme);
        m_scheme->setCurrentIndex(qBound(0, scheme, Colors::SchemeCount - 1));
    }
    if (scheme != Colors::Custom) {
        for (int role = 0; role < Colors::RoleCount; ++role)
            m_customColors[role] = Colors::instance()->color(scheme, role);
    }
    m_gradient->setValue(settings->customGradientEffect());
    m_thickness->setValue(settings->customConnectionThickness());
    updateColorButtons();
}

bool PreferencesDialog::moveStore()
{
    const bool wantIni = m_store->currentIndex() == IniFile;
    Application *application = Application::instance();
    if (wantIni == Settings::instance()->isIniFile() || !application)
        return true;
    const bool moved = wantIni ? application->movePreferencesToIni()
                               : application->movePreferencesToUserSettings();
    if (!moved) {
        emit warningRaised(QStringLiteral("Preferences"),
                           QStringLiteral("Cannot write to '%1'.\nEnsure the file and folder "
                                          "have write permission or move the executable to a "
                                          "folder with write permission.")
                               .arg(application->settingsFilePath()));
    }
    return moved;
}

namespace {

// Writes only what the user changed: an untouched key keeps following its default, which for
// some (the colour scheme) is computed afresh at each reading.
template<typename T, typename Getter, typename Setter>
void store(Settings *settings, Getter get, Setter set, const T &value)
{
    if ((settings->*get)() != value)
        (settings->*set)(value);
}

} // namespace

void PreferencesDialog::save()
{
    Settings *s = Settings::instance();
    store(s, &Settings::grayLeftPaneButtons, &Settings::setGrayLeftPaneButtons,
          m_grayButtons->isChecked());
    store(s, &Settings::useNativeFileDialogs, &Settings::setUseNativeFileDialogs,
          m_nativeDialogs->isChecked());
    store(s, &Settings::beepAfterProcessing, &Settings::setBeepAfterProcessing,
          m_beep->isChecked());
    store(s, &Settings::autoMoveNotes, &Settings::setAutoMoveNotes, m_autoMoveNotes->isChecked());
    store(s, &Settings::warnOnLocaleChange, &Settings::setWarnOnLocaleChange,
          m_warnOnLocaleChange->isChecked());
    store(s, &Settings::openPreviousAtStart, &Settings::setOpenPreviousAtStart,
          m_atStart->currentIndex());
    store(s, &Settings::openAutoRun, &Settings::setOpenAutoRun, m_openAutoRun->currentIndex());
    store(s, &Settings::uiTheme, &Settings::setUiTheme, m_uiTheme->currentIndex());
    store(s, &Settings::toolbarIconSize, &Settings::setToolbarIconSize, m_iconSize->currentIndex());
    store(s, &Settings::copyDataAs, &Settings::setCopyDataAs, m_copyDataAs->currentIndex());
    store(s, &Settings::optimizeFor, &Settings::setOptimizeFor, m_optimizeFor->currentIndex());
    Dataset::setOptimizeFor(s->optimizeFor());
    // The spin boxes show one decimal; a stored value with more must not count as a change.
    if (qAbs(s->maxMemoryUsage() - m_maxMemory->value()) >= 0.05)
        s->setMaxMemoryUsage(m_maxMemory->value());
    if (qAbs(s->processingDelay() - m_processingDelay->value()) >= 0.05)
        s->setProcessingDelay(m_processingDelay->value());
    store(s, &Settings::mouseWheelBehaviour, &Settings::setMouseWheelBehaviour,
          m_wheel->currentIndex());
    if (m_uiFontSet) {
        if (!s->hasUiFont() || AppearanceSettings(s).uiFont() != m_uiFont)
            AppearanceSettings(s).setUiFont(m_uiFont);
        QApplication::setFont(m_uiFont);
    } else if (s->hasUiFont()) {
        s->clearUiFont();
        if (Application *application = Application::instance())
            QApplication::setFont(application->applicationFont());
    }
    if (m_dataFontSet) {
        if (!s->hasDataFont() || AppearanceSettings(s).dataFont() != m_dataFont)
            AppearanceSettings(s).setDataFont(m_dataFont);
    } else if (s->hasDataFont()) {
        s->clearDataFont();
    }
    if (m_locale->currentText() != s->locale().name()) {
        s->setLocale(QLocale(m_locale->currentText()));
        QLocale::setDefault(QLocale(m_locale->currentText()));
    }
    store(s, &Settings::dataFontVerticalPadding, &Settings::setDataFontVerticalPadding,
          m_padding->value());
    const QString formats = m_dateFormats->toPlainText().trimmed();
    if (formats != s->dateFormats().trimmed())
        s->setDateFormats(formats);
    store(s, &Settings::blockedInputExtensions, &Settings::setBlockedInputExtensions,
          m_blockedInput->text().trimmed());
    store(s, &Settings::blockedOutputExtensions, &Settings::setBlockedOutputExtensions,
          m_blockedOutput->text().trimmed());

    const int scheme = m_scheme->currentIndex();
    if (scheme == Colors::Custom) {
        for (int role = 0; role < Colors::RoleCount; ++role) {
            if (AppearanceSettings(s).customColor(role) != m_customColors.at(role))
                AppearanceSettings(s).setCustomColor(role, m_customColors.at(role));
        }
        store(s, &Settings::customGradientEffect, &Settings::setCustomGradientEffect,
              m_gradient->value());
        if (qAbs(s->customConnectionThickness() - m_thickness->value()) >= 0.05)
            s->setCustomConnectionThickness(m_thickness->value());
    }
    if (scheme != AppearanceSettings(s).colorScheme())
        Colors::instance()->setScheme(scheme);
}

void PreferencesDialog::accept()
{
    if (!moveStore())
        return;
    save();
    Settings::instance()->setWindowGeometry(QStringLiteral("prefs_window_geometry"),
                                            saveGeometry());
    QDialog::accept();
}

void PreferencesDialog::updateFontLabels()
{
    m_uiFontLabel->setText(fontText(m_uiFont, m_uiFontSet));
    m_dataFontLabel->setText(fontText(m_dataFont, m_dataFontSet));
}

void PreferencesDialog::updateColorButtons()
{
    const bool custom = m_scheme->currentIndex() == Colors::Custom;
    for (int role = 0; role < Colors::RoleCount; ++role) {
        QPushButton *button = m_colorButtons.at(role);
        button->setStyleSheet(QStringLiteral("QPushButton{ background-color: %1; }")
                                  .arg(m_customColors.at(role).name()));
        button->setToolTip(m_customColors.at(role).name());
        button->setEnabled(custom);
    }
    m_gradient->setEnabled(custom);
    m_thickness->setEnabled(custom);
}

void PreferencesDialog::chooseFont(bool dataFont)
{
    bool ok = false;
    const QFont font = QFontDialog::getFont(&ok, dataFont ? m_dataFont : m_uiFont, this);
    if (!ok)
        return;
    (dataFont ? m_dataFont : m_uiFont) = font;
    (dataFont ? m_dataFontSet : m_uiFontSet) = true;
    updateFontLabels();
}

void PreferencesDialog::chooseColor(int role)
{
    const QColor color
        = QColorDialog::getColor(m_customColors.at(role), this, Colors::roleName(role));
    if (!color.isValid())
        return;
    m_customColors[role] = color;
    updateColorButtons();
}
