#include "transforms/transformsplitrows.h"

#include "data/valueinterpretation.h"
#include "transforms/framework/parameter.h"
#include "transforms/reshaping.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>

namespace {

// Which input columns go where. Each group is one set of the repeated columns and becomes
// one output row per input row; its columns line up with blockNames (-1: the group lacks
// that column). The kept columns are repeated in every output row, and the repeated block
// stands among them in front of kept column number insertAt.
struct Layout
{
    QList<int> kept;
    int insertAt = 0;
    QStringList blockNames;
    QList<QVector<int>> groups;
    QStringList labels;
};

// Separators that stand between a name and its number and are not part of either.
bool isSeparator(QChar c)
{
    return c.isSpace() || c == QLatin1Char('_') || c == QLatin1Char('-') || c == QLatin1Char('.')
        || c == QLatin1Char('#');
}

QString withoutTrailingSeparators(QString text)
{
    int end = text.size();
    while (end > 0 && isSeparator(text.at(end - 1)))
        --end;
    text.truncate(end);
    return text;
}

QString withoutLeadingSeparators(const QString &text)
{
    int start = 0;
    while (start < text.size() && isSeparator(text.at(start)))
        ++start;
    return text.mid(start);
}

// A column name read as a common name and a varying number: "Q1 Sales" is ("Q", "Sales")
// and 1, "Sales_3" is ("Sales", "") and 3.
struct NumberedName
{
    QString left;
    QString right;
    QString number;

    QString key(Qt::CaseSensitivity cs) const
    {
        const QString joined = left + QChar(0x1f) + right;
        return cs == Qt::CaseSensitive ? joined : joined.toLower();
    }
    QString displayName() const
    {
        if (left.isEmpty() || right.isEmpty())
            return left + right;
        return left + QLatin1Char(' ') + right;
    }
};

QList<NumberedName> numberedReadings(const QString &name)
{
    static const QRegularExpression digits(QStringLiteral("\\d+"));
    QList<NumberedName> readings;
    QRegularExpressionMatchIterator it = digits.globalMatch(name);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        NumberedName reading;
        reading.left = withoutTrailingSeparators(name.left(match.capturedStart()));
        reading.right = withoutLeadingSeparators(name.mid(match.capturedEnd()));
        QString number = match.captured();
        while (number.size() > 1 && number.startsWith(QLatin1Char('0')))
            number.remove(0, 1);
        reading.number = number;
        readings.append(reading);
    }
    return readings;
}

// Lays out groups from a column of membership: member[c] is the index of the repeated name of
// column c (or -1 for a kept column) and instance[c] the index of its group.
Layout layoutFromMembers(const QVector<int> &member, const QVector<int> &instance,
                         const QStringList &blockNames, const QStringList &labels)
{
    Layout layout;
    layout.blockNames = blockNames;
    layout.labels = labels;
    for (int g = 0; g < labels.size(); ++g)
        layout.groups.append(QVector<int>(blockNames.size(), -1));
    bool blockSeen = false;
    for (int c = 0; c < member.size(); ++c) {
        if (member.at(c) < 0) {
            layout.kept.append(c);
            continue;
        }
        if (!blockSeen) {
            blockSeen = true;
            layout.insertAt = layout.kept.size();
        }
        layout.groups[instance.at(c)][member.at(c)] = c;
    }
    return layout;
}

// Columns whose trimmed names are equal repeat one another: the first of each such name is in
// group 1, the second in group 2, and so on. Names that occur once are kept.
Layout layoutByName(const Dataset &input, Qt::CaseSensitivity cs)
{
    const QStringList names = input.headers();
    const int columns = names.size();
    QHash<QString, int> occurrences;
    QStringList keys;
    for (const QString &name : names) {
        const QString key = cs == Qt::CaseSensitive ? name.trimmed() : name.trimmed().toLower();
        keys.append(key);
        ++occurrences[key];
    }
    QHash<QString, int> memberOf;
    QHash<QString, int> seen;
    QVector<int> member(columns, -1);
    QVector<int> instance(columns, 0);
    QStringList blockNames;
    int groupCount = 0;
    for (int c = 0; c < columns; ++c) {
        const QString &key = keys.at(c);
        if (occurrences.value(key) < 2)
            continue;
        if (!memberOf.contains(key)) {
            memberOf.insert(key, blockNames.size());
            blockNames.append(names.at(c).trimmed());
        }
        member[c] = memberOf.value(key);
        instance[c] = seen[key]++;
        groupCount = std::max(groupCount, instance.at(c) + 1);
    }
    QStringList labels;
    for (int g = 1; g <= groupCount; ++g)
        labels.append(QString::number(g));
    return layoutFromMembers(member, instance, blockNames, labels);
}

// Columns repeat one another when their names are equal once a number is taken out of them,
// together with the separators beside it: "Q1 Sales" and "Q2 Sales", or "Sales 1", "Sales 2"
// and "Sales_3". The number tells the group. Of several numbers in a name, the one whose
// removal matches most other columns counts, the last on a tie. A name that matches no other
// is kept, and so is a second column with the same name and number.
Layout layoutAutomatic(const Dataset &input, Qt::CaseSensitivity cs)
{
    const QStringList names = input.headers();
    const int columns = names.size();
    QList<QList<NumberedName>> readings;
    QHash<QString, int> columnsWithKey;
    for (const QString &name : names) {
        readings.append(numberedReadings(name.trimmed()));
        QSet<QString> keys;
        for (const NumberedName &reading : readings.constLast())
            keys.insert(reading.key(cs));
        for (const QString &key : qAsConst(keys))
            ++columnsWithKey[key];
    }
    QHash<QString, int> memberOf;
    QHash<QString, int> instanceOf;
    QSet<QString> taken;
    QVector<int> member(columns, -1);
    QVector<int> instance(columns, 0);
    QStringList blockNames;
    QStringList labels;
    for (int c = 0; c < columns; ++c) {
        int best = -1;
        int bestCount = 1;
        const QList<NumberedName> &options = readings.at(c);
        for (int i = 0; i < options.size(); ++i) {
            const int count = columnsWithKey.value(options.at(i).key(cs));
            if (count >= bestCount && count >= 2) {
                best = i;
                bestCount = count;
            }
        }
        if (best < 0)
            continue;
        const NumberedName &reading = options.at(best);
        const QString key = reading.key(cs);
        const QString cellKey = key + QChar(0x1f) + reading.number;
        if (taken.contains(cellKey))
            continue;
        taken.insert(cellKey);
        if (!memberOf.contains(key)) {
            memberOf.insert(key, blockNames.size());
            blockNames.append(reading.displayName());
        }
        if (!instanceOf.contains(reading.number)) {
            instanceOf.insert(reading.number, labels.size());
            labels.append(reading.number);
        }
        member[c] = memberOf.value(key);
        instance[c] = instanceOf.value(reading.number);
    }
    return layoutFromMembers(member, instance, blockNames, labels);
}

// times groups of every columns from column start; groups past the last column are left out
// and a group cut short by it lacks the missing columns.
Layout layoutEvery(const Dataset &input, int start, int every, int times)
{
    Layout layout;
    const int columns = input.columnCount();
    if (start < 0 || start >= columns || every < 1 || times < 1)
        return layout;
    const QStringList names = input.headers();
    QVector<bool> grouped(columns, false);
    for (int g = 0; g < times && start + g * every < columns; ++g) {
        QVector<int> group(every, -1);
        for (int i = 0; i < every; ++i) {
            const int c = start + g * every + i;
            if (c < columns) {
                group[i] = c;
                grouped[c] = true;
            }
        }
        layout.groups.append(group);
        layout.labels.append(QString::number(g + 1));
    }
    for (int i = 0; i < every; ++i)
        layout.blockNames.append(start + i < columns ? names.at(start + i).trimmed() : QString());
    for (int c = 0; c < columns; ++c) {
        if (!grouped.at(c))
            layout.kept.append(c);
        else if (c == start)
            layout.insertAt = layout.kept.size();
    }
    return layout;
}

} // namespace

const TransformDescriptor &TransformSplitRows::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 58;
        d.typeName = QStringLiteral("Split_Rows");
        d.displayName = QStringLiteral("Split Rows");
        d.category = CategoryRow;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::UsesDateFormats
            | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Split each row into multiple rows.");
        d.keywords = QStringList {QStringLiteral("unpivot"),   QStringLiteral("melt"),
                                  QStringLiteral("longer"),    QStringLiteral("pivot_longer"),
                                  QStringLiteral("normalise"), QStringLiteral("normalize"),
                                  QStringLiteral("repeated"),  QStringLiteral("groups"),
                                  QStringLiteral("stack"),     QStringLiteral("wide"),
                                  QStringLiteral("long")};
        d.create = createTransform<TransformSplitRows>;
        return d;
    }();
    return descriptor;
}

void TransformSplitRows::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *splitRows = new Parameter(ParameterType::SplitRows, QStringLiteral("Split_Rows"),
                                    QStringLiteral("Split"), input);
    SplitRowsTerms terms;
    terms.automatic = true;
    splitRows->setSplitRowsTerms(terms);
    splitRows->setToolTip(QStringLiteral(
        "Which columns repeat a group: columns with the same name, columns whose names differ "
        "only by a number (e.g. 'Q1 Sales', 'Q2 Sales'), or a number of columns from a given "
        "column. An optional name adds a column that tells each row's group."));
    addParameter(splitRows);

    auto *caseSensitive = new Parameter(ParameterType::Bool, QStringLiteral("Case_Sensitive"),
                                        QStringLiteral("Case sensitive"), false);
    caseSensitive->setToolTip(QStringLiteral("Tell upper and lower case apart in column names."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);
}

Dataset &TransformSplitRows::process(Dataset &output, const TransformInputs &inputs,
                                     const RunContext &, bool &)
{
    const Parameter *splitOption = &option(QStringLiteral("Split_Rows"));
    const Parameter *caseOption = &option(QStringLiteral("Case_Sensitive"));
    const Dataset &input = *inputs.first().dataset;
    const SplitRowsTerms terms = splitOption->toSplitRowsTerms();
    const Qt::CaseSensitivity cs = caseOption->toBool() ? Qt::CaseSensitive : Qt::CaseInsensitive;

    Layout layout;
    if (terms.splitByName)
        layout = layoutByName(input, cs);
    else if (terms.automatic)
        layout = layoutAutomatic(input, cs);
    else
        layout = layoutEvery(input, input.columnIndex(terms.nameColumn), terms.every, terms.times);
    if (layout.groups.size() < 2) {
        output = input;
        setResult(QStringLiteral("No changes"));
        return output;
    }

    const bool labelled = !terms.text.isEmpty();
    const int keptCount = layout.kept.size();
    const int blockStart = layout.insertAt + (labelled ? 1 : 0);
    const int width = keptCount + (labelled ? 1 : 0) + layout.blockNames.size();
    // Where each kept column goes in the output.
    QVector<int> keptAt(keptCount);
    for (int k = 0; k < keptCount; ++k)
        keptAt[k] = k < layout.insertAt ? k : k + width - keptCount;

    QStringList names;
    if (input.hasHeader()) {
        const QStringList inputNames = input.header();
        for (int k = 0; k < layout.insertAt; ++k)
            names.append(inputNames.at(layout.kept.at(k)));
        if (labelled)
            names.append(terms.text);
        names.append(layout.blockNames);
        for (int k = layout.insertAt; k < keptCount; ++k)
            names.append(inputNames.at(layout.kept.at(k)));
    }
    beginOutput(output, width, input.hasHeader(), names);
    for (int k = 0; k < keptCount; ++k)
        output.setColumnId(keptAt.at(k), input.columnId(layout.kept.at(k)));

    const int rowCount = input.rowCount();
    output.reserveRows(rowCount * layout.groups.size());
    QStringList newRow;
    for (int c = 0; c < width; ++c)
        newRow.append(QString());
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        const QStringList &row = input.row(r);
        for (int k = 0; k < keptCount; ++k)
            newRow[keptAt.at(k)] = row.at(layout.kept.at(k));
        for (int g = 0; g < layout.groups.size(); ++g) {
            if (labelled)
                newRow[layout.insertAt] = layout.labels.at(g);
            const QVector<int> &group = layout.groups.at(g);
            for (int i = 0; i < group.size(); ++i)
                newRow[blockStart + i] = group.at(i) < 0 ? QString() : row.at(group.at(i));
            output.appendRow(newRow, true);
        }
    }
    setResult(QStringLiteral("%1 split into %2")
                  .arg(countWithNoun(rowCount, QStringLiteral("row"), QStringLiteral("rows")),
                       formatCount(output.rowCount(), true)));
    return output;
}
