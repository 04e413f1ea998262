#include "transforms/unittables.h"

#include <cmath>

namespace UnitTables {

namespace {

// The international foot and pound, and the standard acceleration of gravity: a pound-force
// is the weight of a pound under it.
constexpr double Foot = 0.3048;
constexpr double Inch = 0.0254;
constexpr double Mile = 1609.344;
constexpr double Pound = 0.45359237;
constexpr double PoundForce = Pound * 9.80665;
constexpr double Calorie = 4.1868;
constexpr double Btu = 1055.05585262;

// Angle to Mass; the others follow in powerToVolume().
QVector<Dimension> angleToMass()
{
    const double pi = std::acos(-1.0);
    return {
        {QStringLiteral("Angle"),
         {{QStringLiteral("Degrees"), 1.0},
          {QStringLiteral("Minutes of arc"), 1.0 / 60.0},
          {QStringLiteral("Radians"), 180.0 / pi},
          {QStringLiteral("Seconds of arc"), 1.0 / 3600.0}}},
        {QStringLiteral("Area"),
         {{QStringLiteral("Square meters"), 1.0},
          {QStringLiteral("Acres"), 43560.0 * Foot * Foot},
          {QStringLiteral("Hectares"), 10000.0},
          {QStringLiteral("Square foot"), Foot * Foot},
          {QStringLiteral("Square inch"), Inch * Inch},
          {QStringLiteral("Square kilometers"), 1e6},
          {QStringLiteral("Square miles"), Mile * Mile},
          {QStringLiteral("Square yards"), 9.0 * Foot * Foot}}},
        {QStringLiteral("Energy"),
         {{QStringLiteral("Joules"), 1.0},
          {QStringLiteral("British Thermal Units"), Btu},
          {QStringLiteral("Calories"), Calorie},
          {QStringLiteral("Erg"), 1e-7},
          {QStringLiteral("Foot pounds"), Foot * PoundForce},
          {QStringLiteral("Kilocalories"), 1000.0 * Calorie},
          {QStringLiteral("Kilojoules"), 1000.0},
          {QStringLiteral("Kilowatt hours"), 3.6e6},
          {QStringLiteral("Therms (US)"), 105480400.0},
          {QStringLiteral("Watt hours"), 3600.0}}},
        {QStringLiteral("Length"),
         {{QStringLiteral("Meters"), 1.0},
          {QStringLiteral("Centimeters"), 0.01},
          {QStringLiteral("Feet"), Foot},
          {QStringLiteral("Inches"), Inch},
          {QStringLiteral("Kilometers"), 1000.0},
          {QStringLiteral("Miles"), Mile},
          {QStringLiteral("Millimeters"), 0.001},
          {QStringLiteral("Nautical miles"), 1852.0},
          {QStringLiteral("Yards"), 3.0 * Foot}}},
        {QStringLiteral("Mass"),
         {{QStringLiteral("Kilograms"), 1.0},
          {QStringLiteral("Grams"), 0.001},
          {QStringLiteral("Milligrams"), 1e-6},
          {QStringLiteral("Ounces"), Pound / 16.0},
          {QStringLiteral("Pounds"), Pound},
          {QStringLiteral("Stones"), 14.0 * Pound},
          {QStringLiteral("Tonnes"), 1000.0},
          {QStringLiteral("Tons (Imperial)"), 2240.0 * Pound},
          {QStringLiteral("Tons (US)"), 2000.0 * Pound}}},
    };
}

QVector<Dimension> powerToVolume()
{
    return {
        {QStringLiteral("Power"),
         {{QStringLiteral("Watts"), 1.0},
          {QStringLiteral("Horsepower (Imperial)"), 550.0 * Foot * PoundForce},
          {QStringLiteral("Horsepower (Metric)"), 75.0 * 9.80665},
          {QStringLiteral("Kilowatts"), 1000.0},
          {QStringLiteral("Megawatts"), 1e6},
          {QStringLiteral("Milliwatts"), 0.001}}},
        {QStringLiteral("Pressure"),
         {{QStringLiteral("Pascals"), 1.0},
          {QStringLiteral("Bars"), 1e5},
          {QStringLiteral("Pounds per square inch"), PoundForce / (Inch * Inch)},
          {QStringLiteral("Standard atmospheres"), 101325.0}}},
        {QStringLiteral("Temperature"),
         {{QStringLiteral("Celsius/Centigrade"), 1.0},
          {QStringLiteral("Fahrenheit"), 5.0 / 9.0, -32.0 * 5.0 / 9.0},
          {QStringLiteral("Kelvin"), 1.0, -273.15}}},
        {QStringLiteral("Time"),
         {{QStringLiteral("Seconds"), 1.0},
          {QStringLiteral("Days"), 86400.0},
          {QStringLiteral("Hours"), 3600.0},
          {QStringLiteral("Milliseconds"), 0.001},
          {QStringLiteral("Minutes"), 60.0},
          {QStringLiteral("Weeks"), 604800.0},
          {QStringLiteral("Years"), 365.25 * 86400.0}}},
        {QStringLiteral("Velocity"),
         {{QStringLiteral("Meters per second"), 1.0},
          {QStringLiteral("Feet per second"), Foot},
          {QStringLiteral("Kilometers per hour"), 1000.0 / 3600.0},
          {QStringLiteral("Knots"), 1852.0 / 3600.0},
          {QStringLiteral("Miles per hour"), Mile / 3600.0}}},
        {QStringLiteral("Volume"),
         {{QStringLiteral("Liters"), 1.0},
          {QStringLiteral("Cubic feet"), 1000.0 * Foot * Foot * Foot},
          {QStringLiteral("Cubic inches"), 1000.0 * Inch * Inch * Inch},
          {QStringLiteral("Cubic meters"), 1000.0},
          {QStringLiteral("Fluid ounces"), 231.0 * 1000.0 * Inch * Inch * Inch / 128.0},
          {QStringLiteral("Gallons (Imperial)"), 4.54609},
          {QStringLiteral("Gallons (US)"), 231.0 * 1000.0 * Inch * Inch * Inch},
          {QStringLiteral("Milliliters"), 0.001},
          {QStringLiteral("Pints (Imperial)"), 4.54609 / 8.0},
          {QStringLiteral("Pints (US)"), 231.0 * 1000.0 * Inch * Inch * Inch / 8.0}}},
    };
}

} // namespace

const QVector<Dimension> &dimensions()
{
    static const QVector<Dimension> all = angleToMass() + powerToVolume();
    return all;
}

QStringList dimensionNames()
{
    QStringList names;
    for (const Dimension &dimension : dimensions())
        names.append(dimension.name);
    return names;
}

QStringList unitNames(const QString &dimension)
{
    QStringList names;
    for (const Dimension &candidate : dimensions()) {
        if (candidate.name != dimension)
            continue;
        for (const Unit &unit : candidate.units)
            names.append(unit.name);
    }
    return names;
}

QStringList allUnitNames()
{
    QStringList names;
    for (const Dimension &dimension : dimensions()) {
        for (const Unit &unit : dimension.units)
            names.append(unit.name);
    }
    return names;
}

QString dimensionOf(const QString &unit)
{
    for (const Dimension &dimension : dimensions()) {
        for (const Unit &candidate : dimension.units) {
            if (candidate.name == unit)
                return dimension.name;
        }
    }
    return QString();
}

const Unit *findUnit(const QString &dimension, const QString &unit)
{
    for (const Dimension &candidate : dimensions()) {
        if (candidate.name != dimension)
            continue;
        for (const Unit &entry : candidate.units) {
            if (entry.name == unit)
                return &entry;
        }
    }
    return nullptr;
}

} // namespace UnitTables
