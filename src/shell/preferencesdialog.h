#pragma once

#include <QColor>
#include <QDialog>
#include <QFont>
#include <QVector>

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QDoubleSpinBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QSpinBox;
class QTabWidget;

// The "Preferences" window: the general choices, the date formats, the blocked extensions and
// the colours of the Center pane. Nothing reaches the settings until OK; Cancel leaves them as
// they were. Each editor is named after its settings key so that it can be found by name.
class PreferencesDialog : public QDialog
{
    Q_OBJECT

public:
    explicit PreferencesDialog(QWidget *parent = nullptr);

    QTabWidget *tabs() const { return m_tabs; }
    QDialogButtonBox *buttons() const { return m_buttons; }

    // Store choices of "Store these preferences in:".
    enum Store { UserSettings = 0, IniFile = 1 };

signals:
    // Something the user must hear about; the window shows it in its message box, so that the
    // dialog needs no knowledge of the window.
    void warningRaised(const QString &title, const QString &text);

public slots:
    void accept() override;

private:
    QWidget *buildGeneralTab();
    void addGeneralChecks(QWidget *page, QFormLayout *form);
    void addGeneralChoices(QWidget *page, QFormLayout *form);
    void addProcessingLimits(QWidget *page, QFormLayout *form);
    void addFontRows(QWidget *page, QFormLayout *form);
    QWidget *buildDatesTab();
    QWidget *buildExtensionsTab(bool input);
    QWidget *buildColorsTab();
    void load();
    void save();
    bool moveStore();
    void updateFontLabels();
    void updateColorButtons();
    void chooseFont(bool dataFont);
    void chooseColor(int role);

    QTabWidget *m_tabs = nullptr;
    QDialogButtonBox *m_buttons = nullptr;

    QCheckBox *m_grayButtons = nullptr;
    QCheckBox *m_nativeDialogs = nullptr;
    QCheckBox *m_beep = nullptr;
    QComboBox *m_atStart = nullptr;
    QComboBox *m_openAutoRun = nullptr;
    QComboBox *m_uiTheme = nullptr;
    QComboBox *m_iconSize = nullptr;
    QComboBox *m_copyDataAs = nullptr;
    QComboBox *m_optimizeFor = nullptr;
    QDoubleSpinBox *m_maxMemory = nullptr;
    QDoubleSpinBox *m_processingDelay = nullptr;
    QComboBox *m_wheel = nullptr;
    QComboBox *m_store = nullptr;
    QLabel *m_uiFontLabel = nullptr;
    QLabel *m_dataFontLabel = nullptr;
    QComboBox *m_locale = nullptr;
    QCheckBox *m_autoMoveNotes = nullptr;
    QSpinBox *m_padding = nullptr;
    QCheckBox *m_warnOnLocaleChange = nullptr;
    QPlainTextEdit *m_dateFormats = nullptr;
    QLineEdit *m_blockedInput = nullptr;
    QLineEdit *m_blockedOutput = nullptr;
    QComboBox *m_scheme = nullptr;
    QVector<QPushButton *> m_colorButtons;
    QSpinBox *m_gradient = nullptr;
    QDoubleSpinBox *m_thickness = nullptr;

    QFont m_uiFont;
    QFont m_dataFont;
    bool m_uiFontSet = false;
    bool m_dataFontSet = false;
    QVector<QColor> m_customColors;
};
