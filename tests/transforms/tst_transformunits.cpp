#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformunits.h"
#include "transforms/unittables.h"

#include <QCoreApplication>
#include <QtTest>

#include <cmath>

// Units: one conversion in every dimension, each against a figure of NIST's tables or of the
// unit's definition (not computed from our factors), the offsets of temperatures, and what
// happens to values that are no numbers and to units of another dimension.
class TestTransformUnits : public QObject
{
    Q_OBJECT

private slots:
    void conversions_data();
    void conversions();
    void everyUnitRoundTrips();
    void nonNumbersStay();
    void unitsOfAnotherDimension();

private:
    struct Run
    {
        QStringList cells;
        QString result;
        QStringList warnings;
        QStringList information;
    };
    static Run convert(const QStringList &cells, const QString &dimension, const QString &from,
                       const QString &to);
};

TestTransformUnits::Run TestTransformUnits::convert(const QStringList &cells,
                                                    const QString &dimension, const QString &from,
                                                    const QString &to)
{
    QList<QStringList> rows {{"value"}};
    for (const QString &cell : cells)
        rows.append({cell});
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(rows)));
    TransformUnits transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Dimension")->setValue(dimension);
    transform.parameter("UnitsFrom")->setValue(from);
    transform.parameter("UnitsTo")->setValue(to);
    const Dataset output = runTransform(transform, {node.data()});
    return {output.columnValues(0), transform.result(), transform.warnings(),
            transform.information()};
}

void TestTransformUnits::conversions_data()
{
    QTest::addColumn<QString>("dimension");
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");

    QTest::newRow("angle") << "Angle"
                           << "Radians"
                           << "Degrees"
                           << "1"
                           << "57.2957795130823";
    QTest::newRow("arc minutes") << "Angle"
                                 << "Degrees"
                                 << "Minutes of arc"
                                 << "1.5"
                                 << "90";
    QTest::newRow("area") << "Area"
                          << "Acres"
                          << "Square meters"
                          << "1"
                          << "4046.8564224";
    QTest::newRow("energy") << "Energy"
                            << "Kilowatt hours"
                            << "British Thermal Units"
                            << "1"
                            << "3412.14163312794";
    QTest::newRow("international calories") << "Energy"
                                            << "Kilocalories"
                                            << "Kilojoules"
                                            << "1"
                                            << "4.1868";
    QTest::newRow("US therm") << "Energy"
                              << "Therms (US)"
                              << "Kilowatt hours"
                              << "1"
                              << "29.3001111111111";
    QTest::newRow("foot-pound force") << "Energy"
                                      << "Foot pounds"
                                      << "Joules"
                                      << "1"
                                      << "1.3558179483314";
    QTest::newRow("length") << "Length"
                            << "Miles"
                            << "Kilometers"
                            << "1"
                            << "1.609344";
    QTest::newRow("nautical miles") << "Length"
                                    << "Nautical miles"
                                    << "Feet"
                                    << "1"
                                    << "6076.1154855643";
    QTest::newRow("mass") << "Mass"
                          << "Kilograms"
                          << "Pounds"
                          << "1"
                          << "2.20462262184878";
    QTest::newRow("long and short tons") << "Mass"
                                         << "Tons (Imperial)"
                                         << "Tons (US)"
                                         << "1"
                                         << "1.12";
    QTest::newRow("power") << "Power"
                           << "Horsepower (Imperial)"
                           << "Watts"
                           << "1"
                           << "745.69987158227";
    QTest::newRow("metric horsepower") << "Power"
                                       << "Horsepower (Metric)"
                                       << "Watts"
                                       << "2"
                                       << "1470.9975";
    QTest::newRow("pressure") << "Pressure"
                              << "Standard atmospheres"
                              << "Pounds per square inch"
                              << "1"
                              << "14.6959487755135";
    QTest::newRow("time") << "Time"
                          << "Years"
                          << "Days"
                          << "1"
                          << "365.25";
    QTest::newRow("velocity") << "Velocity"
                              << "Miles per hour"
                              << "Feet per second"
                              << "60"
                              << "88";
    QTest::newRow("knots") << "Velocity"
                           << "Knots"
                           << "Kilometers per hour"
                           << "1"
                           << "1.852";
    QTest::newRow("volume") << "Volume"
                            << "Gallons (US)"
                            << "Liters"
                            << "1"
                            << "3.785411784";
    QTest::newRow("US fluid ounce") << "Volume"
                                    << "Fluid ounces"
                                    << "Milliliters"
                                    << "1"
                                    << "29.5735295625";
    QTest::newRow("imperial pints") << "Volume"
                                    << "Gallons (Imperial)"
                                    << "Pints (Imperial)"
                                    << "1"
                                    << "8";
    QTest::newRow("boiling water") << "Temperature"
                                   << "Celsius/Centigrade"
                                   << "Fahrenheit"
                                   << "100"
                                   << "212";
    QTest::newRow("where the scales meet") << "Temperature"
                                           << "Fahrenheit"
                                           << "Celsius/Centigrade"
                                           << "-40"
                                           << "-40";
    QTest::newRow("body heat") << "Temperature"
                               << "Fahrenheit"
                               << "Celsius/Centigrade"
                               << "98.6"
                               << "37";
    QTest::newRow("absolute zero") << "Temperature"
                                   << "Kelvin"
                                   << "Fahrenheit"
                                   << "0"
                                   << "-459.67";
    QTest::newRow("freezing") << "Temperature"
                              << "Fahrenheit"
                              << "Kelvin"
                              << "32"
                              << "273.15";
}

void TestTransformUnits::conversions()
{
    QFETCH(QString, dimension);
    QFETCH(QString, from);
    QFETCH(QString, to);
    QFETCH(QString, value);
    QFETCH(QString, expected);
    const Run run = convert({value}, dimension, from, to);
    QCOMPARE(run.cells, QStringList {expected});
    QCOMPARE(run.warnings, QStringList());
}

void TestTransformUnits::everyUnitRoundTrips()
{
    for (const UnitTables::Dimension &dimension : UnitTables::dimensions()) {
        const UnitTables::Unit &first = dimension.units.first();
        for (const UnitTables::Unit &unit : dimension.units) {
            const double there = UnitTables::convert(-12.375, unit, first);
            const double back = UnitTables::convert(there, first, unit);
            QVERIFY2(std::isfinite(there) && std::abs(back + 12.375) < 1e-9, qPrintable(unit.name));
            // Every unit is offered, and found under its own dimension.
            QCOMPARE(UnitTables::dimensionOf(unit.name), dimension.name);
        }
    }
    QCOMPARE(UnitTables::dimensions().size(), 11);
    QCOMPARE(UnitTables::allUnitNames().size(), 75);
}

void TestTransformUnits::nonNumbersStay()
{
    const Run run = convert({"1", "one", "", "2 m", "1e3"}, "Length", "Kilometers", "Meters");
    QCOMPARE(run.cells, QStringList({"1000", "one", "", "2 m", "1000000"}));
    QCOMPARE(run.result, QString("2 changed, 1 unchanged, 2 non-numeric"));
    QCOMPARE(run.warnings,
             QStringList({"2 non-numeric values:", "'one' at column 'value' row 2",
                          "'2 m' at column 'value' row 4"}));
}

void TestTransformUnits::unitsOfAnotherDimension()
{
    const Run mixed = convert({"1"}, "Mass", "Meters", "Pounds");
    QCOMPARE(mixed.cells, QStringList {"1"});
    QCOMPARE(mixed.warnings, QStringList {"'Meters' is not a unit of Mass."});
    QCOMPARE(mixed.result, QString("No changes"));

    const Run same = convert({"1"}, "Mass", "Pounds", "Pounds");
    QCOMPARE(same.cells, QStringList {"1"});
    QCOMPARE(same.warnings, QStringList {"'From' and 'To' values are the same."});
}

QTEST_GUILESS_MAIN(TestTransformUnits)
#include "tst_transformunits.moc"
