#include "transforms/transformunique.h"

#include "data/valueinterpretation.h"
#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/parameterforms.h"
#include "transforms/uniqueaggregate.h"

#include <QHash>
#include <QLocale>
#include <QVector>

#include <algorithm>

namespace {

// The group of each row, by the texts of its key columns. Rows are looked up by their exact
// texts first, so that with case folded the lower-case form is made once for each spelling
// met, not once a row; with one key column the cell itself is the key, and a row that joins
// a known group costs one look-up and no allocation.
class Grouper
{
public:
    Grouper(const QList<int> &columns, bool caseSensitive)
        : m_columns(columns)
        , m_caseSensitive(caseSensitive)
    { }

    int size() const { return m_groups; }

    // The group of the row; a row of a new key opens the next group.
    int groupOf(const QStringList &row)
    {
        const QString &exact
            = m_columns.size() == 1 ? row.at(m_columns.first()) : compositeKey(row, false);
        const auto it = m_bySpelling.constFind(exact);
        if (it != m_bySpelling.cend())
            return it.value();
        int group = m_groups;
        if (!m_caseSensitive) {
            const QString folded = compositeKey(row, true);
            group = m_byFolded.value(folded, m_groups);
            if (group == m_groups)
                m_byFolded.insert(folded, group);
        }
        if (group == m_groups)
            ++m_groups;
        m_bySpelling.insert(exact, group);
        return group;
    }

private:
    // Each cell preceded by its length, so that no text can make two different rows' keys
    // alike. Cells are folded one by one: a length would be no letter to lower.
    const QString &compositeKey(const QStringList &row, bool folded)
    {
        m_key.resize(0);
        for (int c : qAsConst(m_columns)) {
            const QString cell = folded ? row.at(c).toLower() : row.at(c);
            m_key.append(QChar(ushort(cell.size() & 0xffff)));
            m_key.append(QChar(ushort(uint(cell.size()) >> 16)));
            m_key.append(cell);
        }
        return m_key;
    }

    QList<int> m_columns;
    bool m_caseSensitive;
    int m_groups = 0;
    QString m_key;
    QHash<QString, int> m_bySpelling;
    QHash<QString, int> m_byFolded;
};

struct Group
{
    int first = 0;
    int last = 0;
    int size = 0;
    QList<int> rows;
};

QString concatName()
{
    return UniqueForm::optionTexts().at(UniqueAggregate::Concat);
}

QString concatDistinctName()
{
    return UniqueForm::optionTexts().at(UniqueAggregate::ConcatDistinct);
}

// The option of each column of the input; a column the value doesn't name keeps its first.
QVector<int> columnOptions(const Parameter &parameter, int columnCount)
{
    QVector<int> options(columnCount, UniqueAggregate::KeepFirst);
    const UniqueColumns unique = parameter.toUniqueColumns();
    for (auto it = unique.constBegin(); it != unique.constEnd(); ++it) {
        const int c = parameter.columnPosition(it.key());
        if (c >= 0 && c < columnCount && it.value() >= 0
            && it.value() < UniqueAggregate::OptionCount)
            options[c] = it.value();
    }
    return options;
}

} // namespace

const TransformDescriptor &TransformUnique::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 70;
        d.typeName = QStringLiteral("Unique");
        d.displayName = QStringLiteral("Unique");
        d.category = CategoryRow;
        d.minimumInputs = 1;
        d.maximumInputs = 1;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::KeepsSourceRows;
        d.description
            = QStringLiteral("Aggregate rows that have matching values in selected column(s).");
        d.keywords = QStringList {QStringLiteral("flatten"),      QStringLiteral("sumif"),
                                  QStringLiteral("rollup"),       QStringLiteral("distinct"),
                                  QStringLiteral("group_by"),     QStringLiteral("groupby"),
                                  QStringLiteral("delimiters"),   QStringLiteral("aggregates"),
                                  QStringLiteral("concatenates"), QStringLiteral("mean"),
                                  QStringLiteral("averages"),     QStringLiteral("minimum"),
                                  QStringLiteral("maximum"),      QStringLiteral("keeps"),
                                  QStringLiteral("last"),         QStringLiteral("first"),
                                  QStringLiteral("latest"),       QStringLiteral("sums"),
                                  QStringLiteral("same"),         QStringLiteral("duplicates"),
                                  QStringLiteral("removes"),      QStringLiteral("unique"),
                                  QStringLiteral("dupe"),         QStringLiteral("dedupe"),
                                  QStringLiteral("deduplication")};
        d.create = createTransform<TransformUnique>;
        return d;
    }();
    return descriptor;
}

void TransformUnique::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *columns = new Parameter(ParameterType::Unique, QStringLiteral("Column_Options"),
                                  QStringLiteral("Column options"), input);
    columns->setToolTip(UniqueForm::keyRuleText());
    addParameter(columns);

    auto *delim = new Parameter(ParameterType::Text, QStringLiteral("Delim"),
                                QStringLiteral("Concat delimiter"), ",");
    delim->setTextRequired(false);
    delim->setToolTip(
        QStringLiteral("The delimiter to use between concatenated terms for '%1' or '%2'.")
            .arg(concatName(), concatDistinctName()));
    applyRememberedValue(useRemembered, delim);
    addParameter(delim);

    const auto addCheck = [this, useRemembered](const char *key, const char *label, bool value,
                                                const QString &toolTip) {
        auto *check = new Parameter(ParameterType::Bool, QString::fromLatin1(key),
                                    QString::fromLatin1(label), value);
        check->setToolTip(toolTip);
        applyRememberedValue(useRemembered, check);
        addParameter(check);
    };
    addCheck("Concat_Ignore_Empty", "ignore empty values for concat", true,
             QStringLiteral("Check to ignore any empty values for '%1' or '%2'.")
                 .arg(concatName(), concatDistinctName()));
    addCheck("Count", "add count column", false,
             QStringLiteral("Check to add an additional column that counts the number of rows "
                            "that have been replaced with one unique row."));
    addCheck("Case_Sensitive", "case sensitive", true,
             QStringLiteral("Check for case sensitive '%1' matching.")
                 .arg(UniqueForm::optionTexts().at(UniqueAggregate::KeepUnique)));
    addCheck("Drilldown", "allow drilldown", false,
             QStringLiteral("Allow double click to drilldown in the data table."));
}

bool TransformUnique::usesDateFormats() const
{
    const Parameter *columns = parameter(QStringLiteral("Column_Options"));
    if (!columns)
        return false;
    const UniqueColumns unique = columns->toUniqueColumns();
    return std::any_of(unique.constBegin(), unique.constEnd(), UniqueAggregate::comparesExtremes);
}

Dataset &TransformUnique::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &context, bool &)
{
    const Dataset &input = *inputs.first().dataset;
    const int columnCount = input.columnCount();
    const QVector<int> options
        = columnOptions(option(QStringLiteral("Column_Options")), columnCount);
    QList<int> keyColumns;
    for (int c = 0; c < columnCount; ++c) {
        if (options.at(c) == UniqueAggregate::KeepUnique)
            keyColumns.append(c);
    }
    if (keyColumns.isEmpty()) {
        output = inputDataset(inputs, 0);
        setResult(rowsRemovedText(0));
        return output;
    }

    UniqueAggregate::Settings settings;
    settings.delimiter = option(QStringLiteral("Delim")).toString();
    settings.concatIgnoreEmpty = option(QStringLiteral("Concat_Ignore_Empty")).toBool();
    settings.decimalIsPoint = QLocale().decimalPoint() == QLatin1Char('.');
    const bool addCount = option(QStringLiteral("Count")).toBool();
    const bool drilldown = option(QStringLiteral("Drilldown")).toBool();

    // Columns whose cells are only taken from a group's first or last row need no look at
    // the rows in between.
    QVector<UniqueAggregate> aggregates;
    for (int c = 0; c < columnCount; ++c) {
        QString dateFormat;
        if (UniqueAggregate::comparesExtremes(options.at(c))
            && !input.isDateColumn(c, dateFormats(), &dateFormat))
            dateFormat.clear();
        aggregates.append(UniqueAggregate(c, options.at(c), dateFormat));
    }
    QVector<int> reading;
    for (int c = 0; c < columnCount; ++c) {
        if (aggregates.at(c).readsEveryRow())
            reading.append(c);
    }

    Grouper grouper(keyColumns, option(QStringLiteral("Case_Sensitive")).toBool());
    QVector<Group> groups;
    const int rowCount = input.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        if (r % 1000 == 0 && context.isStopRequested())
            break;
        prefetchAhead(input.rows(), r);
        const QStringList &row = input.row(r);
        const int g = grouper.groupOf(row);
        if (g == groups.size()) {
            groups.append(Group {r, r, 0, {}});
            for (int c : qAsConst(reading))
                aggregates[c].addGroup();
        }
        Group &group = groups[g];
        group.last = r;
        ++group.size;
        if (drilldown)
            group.rows.append(r);
        for (int c : qAsConst(reading))
            aggregates[c].add(g, r, row.at(c), settings);
    }

    output.setColumnCount(columnCount);
    output.setColumnIds(input.columnIds());
    if (input.hasHeader())
        output.setHeader(input.header());
    if (addCount)
        ColumnNames::appendNamedColumn(output, QStringLiteral("Count"));
    output.reserveRows(groups.size());
    for (int g = 0; g < groups.size(); ++g) {
        const Group &group = groups.at(g);
        QStringList cells;
        cells.reserve(output.columnCount());
        for (const UniqueAggregate &aggregate : qAsConst(aggregates))
            cells.append(aggregate.result(g, group.first, group.last, input, settings));
        if (addCount)
            cells.append(QString::number(group.size));
        if (drilldown)
            output.addSourceRows(g, -1, group.rows);
        output.appendSharedRow(cells);
    }
    setResult(rowsRemovedText(qint64(rowCount) - groups.size()));
    return output;
}
