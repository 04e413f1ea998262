#include "transforms/transformrandom.h"

#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/parametermigration.h"
#include "transforms/seededrandom.h"

#include <QDate>
#include <QLocale>

#include <functional>

namespace {

constexpr int LargestInt = 999999999;
constexpr double LargestReal = 1e12;

QString keyOf(const char *bound, const QString &suffix)
{
    return QStringLiteral("%1_%2").arg(QLatin1String(bound), suffix);
}

const QString &suffixOf(int type)
{
    static const QString suffixes[]
        = {QStringLiteral("Int"), QStringLiteral("Real"), QStringLiteral("Date")};
    return suffixes[qBound(0, type, 2)];
}

} // namespace

const TransformDescriptor &TransformRandom::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 41;
        d.typeName = QStringLiteral("Random");
        d.displayName = QStringLiteral("Random");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Add a new column filled with pseudo-random values.");
        d.keywords = QStringLiteral("randomize randomise pseudo-random generate test data "
                                    "numbers integers dates values")
                         .split(QLatin1Char(' '));
        d.create = createTransform<TransformRandom>;
        return d;
    }();
    return descriptor;
}

QStringList TransformRandom::typeNames()
{
    return {QStringLiteral("Integer"), QStringLiteral("Real"), QStringLiteral("Date"),
            QStringLiteral("Text")};
}

void TransformRandom::addRangeParameters(ParameterType kind, const QString &suffix,
                                         const QVariant &minimum, const QVariant &maximum,
                                         bool useRemembered)
{
    const std::pair<const char *, QVariant> bounds[] = {{"Minimum", minimum}, {"Maximum", maximum}};
    for (const auto &bound : bounds) {
        auto *p = new Parameter(kind, keyOf(bound.first, suffix), QLatin1String(bound.first),
                                bound.second);
        p->setToolTip(QStringLiteral("The %1 value to generate.")
                          .arg(QString::fromLatin1(bound.first).toLower()));
        p->setMinimumInt(-LargestInt);
        p->setMaximumInt(LargestInt);
        p->setMinimumReal(-LargestReal);
        p->setMaximumReal(LargestReal);
        applyRememberedValue(useRemembered, p);
        addParameter(p);
    }
}

void TransformRandom::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    auto *name = new Parameter(ParameterType::Text, QStringLiteral("New_Name"),
                               QStringLiteral("New column name"), "Random");
    name->setToolTip(QStringLiteral("The name for the new column."));
    applyRememberedValue(useRemembered, name);
    addParameter(name);

    const QStringList types = typeNames();
    auto *type = new Parameter(ParameterType::Selection, QStringLiteral("Type"),
                               QStringLiteral("Type"), types.first(), types);
    type->setToolTip(QStringLiteral("The type of values to generate."));
    applyRememberedValue(useRemembered, type);
    addParameter(type);

    auto *seed = new Parameter(ParameterType::Int, QStringLiteral("Seed"),
                               QStringLiteral("Random seed"), 1);
    seed->setToolTip(QStringLiteral("The seed value for the random number generator."));
    applyRememberedValue(useRemembered, seed);
    addParameter(seed);

    addRangeParameters(ParameterType::Real, suffixOf(Real), 0.0, 1.0, useRemembered);
    addRangeParameters(ParameterType::Int, suffixOf(Integer), 1, 100, useRemembered);
    addRangeParameters(ParameterType::Date, suffixOf(Date), QDate(2000, 1, 1), QDate(2029, 12, 31),
                       useRemembered);

    auto *format = new Parameter(ParameterType::Text, QStringLiteral("Date_Format"),
                                 QStringLiteral("Date format"), "yyyy-MM-dd");
    format->setToolTip(QStringLiteral("The date format.\nClick the ? button for details."));
    applyRememberedValue(useRemembered, format);
    addParameter(format);

    auto *values = new Parameter(ParameterType::Text, QStringLiteral("Text_Values"),
                                 QStringLiteral("Values"), "Value1,Value2");
    values->setToolTip(QStringLiteral("A comma separated list of values to randomly select "
                                      "from.\nEmpty values and repeated values are allowed."));
    values->setTextRequired(false);
    applyRememberedValue(useRemembered, values);
    addParameter(values);
}

QList<ParameterState> TransformRandom::parameterStates() const
{
    const Parameter *typeOption = parameter(QStringLiteral("Type"));
    const int type = typeOption ? typeOption->toSelectionIndex() : Integer;
    QList<ParameterState> states;
    for (int t : {Integer, Real, Date}) {
        states.append({keyOf("Minimum", suffixOf(t)), type == t});
        states.append({keyOf("Maximum", suffixOf(t)), type == t});
    }
    states.append({QStringLiteral("Date_Format"), type == Date});
    states.append({QStringLiteral("Text_Values"), type == Text});
    return states;
}

void TransformRandom::migrateParameters(int version, QList<StoredParameter> *parameters) const
{
    // Before version 78 the integer maximum was never generated itself; now it is.
    if (version >= 78)
        return;
    for (StoredParameter &parameter : *parameters) {
        if (parameter.key == QLatin1String("Maximum_Int"))
            ParameterMigration::lowerByOne(&parameter);
    }
}

QString TransformRandom::rangeProblem(int type) const
{
    if (type == Text)
        return QString();
    const Parameter &minimum = option(keyOf("Minimum", suffixOf(type)));
    const Parameter &maximum = option(keyOf("Maximum", suffixOf(type)));
    const bool reversed = type == Integer ? minimum.toInt() > maximum.toInt()
        : type == Real                    ? minimum.toReal() > maximum.toReal()
                                          : minimum.toDate() > maximum.toDate();
    return reversed
        ? QStringLiteral("'%1' is greater than '%2'").arg(minimum.label(), maximum.label())
        : QString();
}

Dataset &TransformRandom::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &context, bool &)
{
    const int type = option(QStringLiteral("Type")).toSelectionIndex();
    SeededRandom random(quint32(option(QStringLiteral("Seed")).toInt()));

    output = inputDataset(inputs, 0);
    const int c
        = ColumnNames::appendNamedColumn(output, option(QStringLiteral("New_Name")).toString());
    const QString problem = rangeProblem(type);
    if (!problem.isEmpty()) {
        addWarning(problem);
        setResult(QStringLiteral("1 col added"));
        return output;
    }

    std::function<QString()> next;
    if (type == Integer) {
        const qint64 low = option(QStringLiteral("Minimum_Int")).toInt();
        const qint64 high = option(QStringLiteral("Maximum_Int")).toInt();
        next = [&random, low, high] {
            return QString::number(random.between(low, high));
        };
    } else if (type == Real) {
        const double low = option(QStringLiteral("Minimum_Real")).toReal();
        const double high = option(QStringLiteral("Maximum_Real")).toReal();
        next = [&random, low, high] {
            return numberToCellText(low + (high - low) * random.unit());
        };
    } else if (type == Date) {
        const QDate low = option(QStringLiteral("Minimum_Date")).toDate();
        const qint64 days = low.daysTo(option(QStringLiteral("Maximum_Date")).toDate());
        const QString format = option(QStringLiteral("Date_Format")).toString();
        const QLocale locale;
        next = [&random, low, days, format, locale] {
            return locale.toString(low.addDays(random.between(0, days)), format);
        };
    } else {
        const QStringList values
            = option(QStringLiteral("Text_Values")).toString().split(QLatin1Char(','));
        next = [&random, values] {
            return values.at(random.index(values.size()));
        };
    }

    const int rowCount = output.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        output.setCell(r, c, next());
    }
    setResult(QStringLiteral("1 col added"));
    return output;
}
