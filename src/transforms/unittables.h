#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

// The units that Units converts between, by dimension. Each unit is a factor to the
// dimension's first unit, and temperatures an offset as well: a value v in a unit is
// v * factor + offset in the first unit. Factors are exact where a definition makes them so:
// the international yard and pound (1959), the international table calorie and British
// thermal unit, the US therm of 100,000 BTU at 59 degrees F, the Julian year of 365.25 days,
// the US fluid ounce.
namespace UnitTables {

struct Unit
{
    QString name;
    double factor = 1.0;
    double offset = 0.0;
};

struct Dimension
{
    QString name;
    QVector<Unit> units;
};

const QVector<Dimension> &dimensions();
QStringList dimensionNames();
// The units of a dimension, by name; empty for a name that is none.
QStringList unitNames(const QString &dimension);
// Every unit of every dimension, dimension after dimension: no two dimensions share a name.
QStringList allUnitNames();
// The dimension a unit belongs to, or an empty text.
QString dimensionOf(const QString &unit);
// The unit of that name in the dimension, or null.
const Unit *findUnit(const QString &dimension, const QString &unit);

// value in from, converted to to.
inline double convert(double value, const Unit &from, const Unit &to)
{
    // Units that only scale are converted by one ratio, so that a unit converted to itself
    // and a round trip stay exact.
    if (from.offset == 0.0 && to.offset == 0.0)
        return from.factor == to.factor ? value : value * from.factor / to.factor;
    return (value * from.factor + from.offset - to.offset) / to.factor;
}

} // namespace UnitTables
