#include "shell/appearancesettings.h"
#include "testutil.h"

#include "shell/colors.h"
#include "shell/preferencesdialog.h"
#include "shell/settings.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QtTest>

// The preferences window edited with keys and clicks: what the user changes reaches the
// settings on OK, and nothing does on Cancel.
class TestPreferencesDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void showsStoredValues();
    void changeReachesSettingsOnlyOnOk_data();
    void changeReachesSettingsOnlyOnOk();
    void defaultDateFormatsButtons();
    void customColoursKeptWhenCustomSchemeChosen();

private:
    QTemporaryDir m_dir;
    Settings *m_settings = nullptr;
};

void TestPreferencesDialog::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_settings = new Settings(m_dir.filePath(QStringLiteral("tabulon.ini")));
    Settings::setInstance(m_settings);
}

void TestPreferencesDialog::init()
{
    m_settings->clear();
}

void TestPreferencesDialog::cleanupTestCase()
{
    Settings::setInstance(nullptr);
    delete m_settings;
}

void TestPreferencesDialog::showsStoredValues()
{
    m_settings->setProcessingDelay(3.5);
    m_settings->setBeepAfterProcessing(true);
    m_settings->setMouseWheelBehaviour(3);
    m_settings->setBlockedInputExtensions(QStringLiteral("exe,bat"));
    PreferencesDialog dialog;
    QCOMPARE(dialog.findChild<QDoubleSpinBox *>(QStringLiteral("processing_delay"))->value(), 3.5);
    QVERIFY(dialog.findChild<QCheckBox *>(QStringLiteral("beep_after_processing"))->isChecked());
    QCOMPARE(dialog.findChild<QComboBox *>(QStringLiteral("mouse_wheel_behaviour"))->currentText(),
             QStringLiteral("Does nothing"));
    QCOMPARE(dialog.findChild<QLineEdit *>(QStringLiteral("blocked_input_extensions"))->text(),
             QStringLiteral("exe,bat"));
    QStringList tabs;
    for (int i = 0; i < dialog.tabs()->count(); ++i)
        tabs.append(dialog.tabs()->tabText(i));
    QCOMPARE(tabs,
             QStringList({QStringLiteral("General"), QStringLiteral("Dates"),
                          QStringLiteral("Input Extensions"), QStringLiteral("Output Extensions"),
                          QStringLiteral("Colors")}));
}

void TestPreferencesDialog::changeReachesSettingsOnlyOnOk_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QVariant>("expected");
    QTest::addColumn<bool>("ok");
    // typed: text for spin boxes and line edits, "click" for check boxes, "down" for combos.
    const struct
    {
        const char *key;
        const char *typed;
        QVariant expected;
    } cases[] = {
        {"processing_delay", "0.5", 0.5},
        {"max_memory_usage", "7.5", 7.5},
        {"gray_left_pane_buttons", "click", true},
        {"use_native_file_dialogs", "click", false},
        {"open_previous_at_start", "up", 1},
        {"optimize_for", "down", 1},
        {"blocked_output_extensions", "exe,com", QStringLiteral("exe,com")},
        {"data_font_vertical_padding", "4", 4},
    };
    for (const auto &c : cases) {
        QTest::newRow(qPrintable(QStringLiteral("%1 ok").arg(QLatin1String(c.key))))
            << QString::fromLatin1(c.key) << QString::fromLatin1(c.typed) << c.expected << true;
        QTest::newRow(qPrintable(QStringLiteral("%1 cancel").arg(QLatin1String(c.key))))
            << QString::fromLatin1(c.key) << QString::fromLatin1(c.typed) << c.expected << false;
    }
}

void TestPreferencesDialog::changeReachesSettingsOnlyOnOk()
{
    QFETCH(QString, key);
    QFETCH(QString, typed);
    QFETCH(QVariant, expected);
    QFETCH(bool, ok);

    PreferencesDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QWidget *editor = dialog.findChild<QWidget *>(key);
    QVERIFY2(editor, qPrintable(key));
    for (int i = 0; i < dialog.tabs()->count(); ++i) {
        if (dialog.tabs()->widget(i)->isAncestorOf(editor))
            dialog.tabs()->setCurrentIndex(i);
    }
    if (typed == QLatin1String("click")) {
        QTest::mouseClick(editor, Qt::LeftButton, {}, QPoint(6, editor->height() / 2));
    } else if (typed == QLatin1String("down") || typed == QLatin1String("up")) {
        editor->setFocus();
        QTest::keyClick(editor, typed == QLatin1String("down") ? Qt::Key_Down : Qt::Key_Up);
    } else {
        editor->setFocus();
        QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(editor, typed);
    }
    const QVariant before = m_settings->value(key);
    QPushButton *button
        = dialog.buttons()->button(ok ? QDialogButtonBox::Ok : QDialogButtonBox::Cancel);
    QTest::mouseClick(button, Qt::LeftButton);
    QCOMPARE(dialog.result(), ok ? int(QDialog::Accepted) : int(QDialog::Rejected));
    if (ok) {
        QVERIFY(m_settings->contains(key));
        QCOMPARE(m_settings->value(key).toString(), expected.toString());
    } else {
        QCOMPARE(m_settings->value(key), before);
        QVERIFY(!m_settings->contains(key));
    }
}

void TestPreferencesDialog::defaultDateFormatsButtons()
{
    PreferencesDialog dialog;
    dialog.show();
    dialog.tabs()->setCurrentIndex(1);
    auto *edit = dialog.findChild<QPlainTextEdit *>(QStringLiteral("date_formats"));
    edit->clear();
    const QList<QPushButton *> buttons = dialog.tabs()->widget(1)->findChildren<QPushButton *>();
    QPushButton *us = nullptr;
    for (QPushButton *button : buttons) {
        if (button->text() == QLatin1String("Default (US)"))
            us = button;
    }
    QVERIFY(us);
    QTest::mouseClick(us, Qt::LeftButton);
    const QString usFormats
        = Settings::defaultDateFormatsText(QLocale(QLocale::English, QLocale::UnitedStates));
    QCOMPARE(edit->toPlainText(), usFormats);
    QTest::mouseClick(dialog.buttons()->button(QDialogButtonBox::Ok), Qt::LeftButton);
    QCOMPARE(m_settings->dateFormats().trimmed(), usFormats.trimmed());
}

void TestPreferencesDialog::customColoursKeptWhenCustomSchemeChosen()
{
    PreferencesDialog dialog;
    auto *scheme = dialog.findChild<QComboBox *>(QStringLiteral("color_scheme"));
    // Starting the custom scheme from the dark one keeps the dark colours as the custom ones.
    scheme->setCurrentIndex(Colors::Dark);
    scheme->setCurrentIndex(Colors::Custom);
    QTest::mouseClick(dialog.buttons()->button(QDialogButtonBox::Ok), Qt::LeftButton);
    QCOMPARE(AppearanceSettings(m_settings).colorScheme(), int(Colors::Custom));
    for (int role = 0; role < Colors::RoleCount; ++role)
        QCOMPARE(AppearanceSettings(m_settings).customColor(role), Colors::instance()->color(Colors::Dark, role));
}

TABULON_TEST_MAIN(TestPreferencesDialog)

#include "tst_preferencesdialog.moc"
