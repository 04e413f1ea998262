#include "shell/appearancesettings.h"
#include "testutil.h"

#include "shell/colors.h"
#include "shell/settings.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

// WCAG relative luminance contrast: 4.5 is the usual floor for body text.
double luminance(const QColor &color)
{
    auto channel = [](double value) {
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(color.redF()) + 0.7152 * channel(color.greenF())
        + 0.0722 * channel(color.blueF());
}

double contrast(const QColor &a, const QColor &b)
{
    const double la = luminance(a);
    const double lb = luminance(b);
    return (qMax(la, lb) + 0.05) / (qMin(la, lb) + 0.05);
}

} // namespace

// The colour table: every scheme complete and legible, the custom scheme read from the
// settings with the defaults behind it, and the scheme in force kept in the settings.
class TestColors : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void builtInSchemesAreLegible_data();
    void builtInSchemesAreLegible();
    void customSchemeFallsBackPerRole();
    void schemeInForceFollowsSettings_data();
    void schemeInForceFollowsSettings();
    void outOfRangeRoleHasNoColour();

private:
    QTemporaryDir m_dir;
    Settings *m_settings = nullptr;
};

void TestColors::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_settings = new Settings(m_dir.filePath(QStringLiteral("tabulon.ini")));
    Settings::setInstance(m_settings);
}

void TestColors::init()
{
    m_settings->clear();
}

void TestColors::cleanupTestCase()
{
    Settings::setInstance(nullptr);
    delete m_settings;
}

void TestColors::builtInSchemesAreLegible_data()
{
    QTest::addColumn<int>("scheme");
    for (int scheme = 1; scheme < Colors::SchemeCount; ++scheme)
        QTest::newRow(qPrintable(Colors::schemeName(scheme))) << scheme;
}

void TestColors::builtInSchemesAreLegible()
{
    QFETCH(int, scheme);
    const Colors *colors = Colors::instance();
    for (int role = 0; role < Colors::RoleCount; ++role)
        QVERIFY2(colors->color(scheme, role).isValid(), qPrintable(Colors::roleName(role)));

    const QColor background = colors->color(scheme, Colors::CenterBackground);
    QCOMPARE(Colors::isDarkScheme(scheme), background.lightness() < 128);

    const int kinds[][2] = {{Colors::TransformBackground, Colors::TransformText},
                            {Colors::InputBackground, Colors::InputText},
                            {Colors::OutputBackground, Colors::OutputText}};
    for (const auto &kind : kinds) {
        const double ratio
            = contrast(colors->color(scheme, kind[0]), colors->color(scheme, kind[1]));
        QVERIFY2(ratio >= 4.5,
                 qPrintable(QStringLiteral("%1 on %2: %3")
                                .arg(Colors::roleName(kind[1]), Colors::roleName(kind[0]))
                                .arg(ratio)));
    }
    // The kinds are told apart by their borders, and connections stand out on the canvas.
    QVERIFY(colors->color(scheme, Colors::TransformBorder)
            != colors->color(scheme, Colors::InputBorder));
    QVERIFY(colors->color(scheme, Colors::InputBorder)
            != colors->color(scheme, Colors::OutputBorder));
    QVERIFY(contrast(colors->color(scheme, Colors::Connection), background) >= 2.0);
}

void TestColors::customSchemeFallsBackPerRole()
{
    const Colors *colors = Colors::instance();
    AppearanceSettings(m_settings).setCustomColor(Colors::Connection, QColor(0x12, 0x34, 0x56));
    QCOMPARE(colors->color(Colors::Custom, Colors::Connection), QColor(0x12, 0x34, 0x56));
    const int fallback = AppearanceSettings::isSystemDark() ? Colors::Dark : Colors::Light;
    QCOMPARE(colors->color(Colors::Custom, Colors::TransformText),
             colors->color(fallback, Colors::TransformText));

    AppearanceSettings(m_settings).setCustomColor(Colors::CenterBackground, QColor(0x10, 0x10, 0x10));
    QVERIFY(Colors::isDarkScheme(Colors::Custom));
    AppearanceSettings(m_settings).setCustomColor(Colors::CenterBackground, QColor(0xF0, 0xF0, 0xF0));
    QVERIFY(!Colors::isDarkScheme(Colors::Custom));
}

void TestColors::schemeInForceFollowsSettings_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<int>("inForce");
    QTest::newRow("light") << 1 << 1;
    QTest::newRow("dark") << 7 << 7;
    QTest::newRow("custom") << 0 << 0;
    QTest::newRow("last") << 10 << 10;
    QTest::newRow("beyond the table") << 11 << 1;
    QTest::newRow("negative") << -1 << 1;
}

void TestColors::schemeInForceFollowsSettings()
{
    QFETCH(int, stored);
    QFETCH(int, inForce);
    Colors *colors = Colors::instance();
    AppearanceSettings(m_settings).setColorScheme(stored);
    QCOMPARE(colors->scheme(), inForce);
    QCOMPARE(colors->color(Colors::OutputBackground),
             colors->color(inForce, Colors::OutputBackground));

    colors->setScheme(stored);
    QCOMPARE(AppearanceSettings(m_settings).colorScheme(), inForce);
}

void TestColors::outOfRangeRoleHasNoColour()
{
    QVERIFY(!Colors::instance()->color(Colors::Light, Colors::RoleCount).isValid());
    QVERIFY(!Colors::instance()->color(Colors::Light, -1).isValid());
    QVERIFY(Colors::roleName(Colors::RoleCount).isEmpty());
}

TABULON_TEST_MAIN(TestColors)

#include "tst_colors.moc"
