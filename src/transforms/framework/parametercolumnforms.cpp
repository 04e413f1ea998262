#include "transforms/framework/parameterforms.h"

#include <QLocale>

#include <algorithm>

// The shapes of value that name columns. Documents hold column numbers of the source's
// dataset (0 when the id no longer resolves); they turn back into ids on reading.

namespace {

const QLatin1String StartIfMarker("*StartIf*");
const QLatin1String EndIfMarker("*EndIf*");
const QLatin1String NoRenameMarker("*NORENAME*");

// The first document version with "Is empty" and "Is not empty" at 19 and 20.
constexpr int EmptyOperatorsMovedVersion = 57;
constexpr int OperatorCount = 21;

using ParameterForms::flag;
using ParameterForms::parseInt;
using ParameterForms::remapId;

// Older documents numbered the two emptiness tests 14 and 15; they now follow the fuzzy
// matches. Returns -1 for an operator that no longer exists.
int mapOperator(int op, int version)
{
    if (version < EmptyOperatorsMovedVersion) {
        if (op == 14)
            return 19;
        if (op == 15)
            return 20;
    }
    return op >= 0 && op < OperatorCount ? op : -1;
}

QString columnField(const Parameter &p, ColumnId id)
{
    return QString::number(p.columnNumber(id));
}

void writeTerm(const Parameter &p, const FilterTerm &term, QStringList *fields)
{
    *fields << columnField(p, term.column) << QString::number(term.op)
            << Parameter::encodeText(term.value);
}

// Reads the three fields of a condition at position at. False when the term is to be left
// out: a field that isn't a number, or an operator that no longer exists.
bool readTerm(const Parameter &p, const QStringList &fields, int at, int version, FilterTerm *term)
{
    int number = 0;
    int op = 0;
    if (!parseInt(fields.at(at), &number) || !parseInt(fields.at(at + 1), &op))
        return false;
    op = mapOperator(op, version);
    if (op < 0)
        return false;
    term->column = p.columnAt(number);
    term->op = op;
    term->value = Parameter::decodeText(fields.at(at + 2));
    return true;
}

bool remapTerms(QList<FilterTerm> *terms, const ColumnIdMap &map)
{
    bool changed = false;
    for (FilterTerm &term : *terms)
        changed |= remapId(&term.column, map);
    return changed;
}

template<typename T> bool remapKeys(QHash<ColumnId, T> *hash, const ColumnIdMap &map)
{
    bool changed = false;
    QHash<ColumnId, T> result;
    for (auto it = hash->constBegin(); it != hash->constEnd(); ++it) {
        ColumnId id = it.key();
        changed |= remapId(&id, map);
        if (!id.isNull())
            result.insert(id, it.value());
    }
    if (changed)
        *hash = result;
    return changed;
}

// Reads one branch from the field after its start marker; false when it isn't closed by an
// end marker and a then value, which ends the reading.
bool readBranch(const Parameter &p, const QStringList &fields, int version, int *i,
                IfBranch *branch)
{
    const int count = fields.size();
    while (*i < count) {
        if (fields.at(*i) == EndIfMarker) {
            if (*i + 1 >= count)
                return false;
            branch->thenValue = Parameter::decodeText(fields.at(*i + 1));
            *i += 2;
            return true;
        }
        if (*i + 3 > count)
            return false;
        FilterTerm term;
        if (readTerm(p, fields, *i, version, &term))
            branch->terms.append(term);
        *i += 3;
    }
    return false;
}

} // namespace

namespace ParameterForms {

QString columnListSummary(const Parameter &parameter)
{
    const QList<int> indexes = parameter.columnIndexes(true);
    QString text = QStringLiteral("%1 column(s)").arg(QLocale().toString(indexes.size()));
    if (indexes.isEmpty())
        return text;
    const Dataset *dataset = parameter.sourceDataset();
    QStringList names;
    for (int i = 0; i < indexes.size() && i < 3; ++i)
        names.append(dataset->headerText(indexes.at(i)));
    QString listed = names.join(QLatin1Char(','));
    if (indexes.size() > 3)
        listed += QLatin1String("...");
    return text + QStringLiteral(" (%1)").arg(listed);
}

bool listIsEmpty(const Parameter &parameter)
{
    return parameter.columnRequired() && parameter.value().toList().isEmpty();
}

bool remapId(ColumnId *id, const ColumnIdMap &map)
{
    if (id->isNull())
        return false;
    const auto found = map.constFind(*id);
    if (found == map.constEnd() || *found == *id)
        return false;
    *id = *found;
    return true;
}

} // namespace ParameterForms

// ---------------------------------------------------------------------------------------------

namespace SingleColumnForm {

QVariant emptyValue()
{
    return columnIdToVariant(ColumnId());
}

QString write(const Parameter &p)
{
    return columnField(p, p.toColumnId());
}

void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    int number = 0;
    if (parseInt(fields.first(), &number))
        p.setColumnId(p.columnAt(number));
}

QString summary(const Parameter &p)
{
    const int index = p.toColumnIndex();
    return index < 0 ? p.noneText() : p.sourceDataset()->headerText(index);
}

bool isUnset(const Parameter &p)
{
    return p.columnRequired() && p.toColumnIndex() < 0;
}

bool remap(Parameter &p, const ColumnIdMap &map)
{
    ColumnId id = p.toColumnId();
    const bool changed = remapId(&id, map);
    if (changed)
        p.setColumnId(id);
    return changed;
}

QList<ColumnId> columns(const Parameter &p)
{
    const ColumnId id = p.toColumnId();
    return id.isNull() ? QList<ColumnId>() : QList<ColumnId> {id};
}

void choose(Parameter &p, const QList<ColumnId> &ids)
{
    p.setColumnId(ids.value(0));
}

} // namespace SingleColumnForm

namespace ColumnListForm {

QVariant emptyValue()
{
    return QVariantList();
}

QString write(const Parameter &p)
{
    QStringList fields;
    const QList<ColumnId> ids = p.toColumns();
    for (ColumnId id : ids)
        fields.append(columnField(p, id));
    return Parameter::joinFields(fields);
}

void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    QList<ColumnId> ids;
    int number = 0;
    for (const QString &field : fields) {
        if (!parseInt(field, &number))
            continue;
        const ColumnId id = p.columnAt(number);
        if (!id.isNull())
            ids.append(id);
    }
    p.setColumns(ids);
}

bool remap(Parameter &p, const ColumnIdMap &map)
{
    bool changed = false;
    QList<ColumnId> ids = p.toColumns();
    for (ColumnId &id : ids)
        changed |= remapId(&id, map);
    if (changed) {
        ids.removeAll(ColumnId());
        p.setColumns(ids);
    }
    return changed;
}

void choose(Parameter &p, const QList<ColumnId> &ids)
{
    p.setColumns(ids);
}

} // namespace ColumnListForm

namespace SortColumnsForm {

// A descending column is written as its negative number.
QString write(const Parameter &p)
{
    QStringList fields;
    const QList<SortColumn> columns = p.toSortColumns();
    for (const SortColumn &column : columns) {
        const int number = p.columnNumber(column.id);
        fields.append(QString::number(column.ascending ? number : -number));
    }
    return Parameter::joinFields(fields);
}

void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    QList<SortColumn> columns;
    int number = 0;
    for (const QString &field : fields) {
        if (!parseInt(field, &number))
            continue;
        const ColumnId id = p.columnAt(qAbs(number));
        if (!id.isNull())
            columns.append(SortColumn {id, number > 0});
    }
    p.setSortColumns(columns);
}

bool remap(Parameter &p, const ColumnIdMap &map)
{
    bool changed = false;
    QList<SortColumn> columns = p.toSortColumns();
    for (SortColumn &column : columns)
        changed |= remapId(&column.id, map);
    if (changed) {
        columns.erase(std::remove_if(columns.begin(), columns.end(),
                                     [](const SortColumn &c) { return c.id.isNull(); }),
                      columns.end());
        p.setSortColumns(columns);
    }
    return changed;
}

QList<ColumnId> columns(const Parameter &p)
{
    QList<ColumnId> ids;
    const QList<SortColumn> columns = p.toSortColumns();
    for (const SortColumn &column : columns)
        ids.append(column.id);
    return ids;
}

} // namespace SortColumnsForm

namespace FilterForm {

QVariant emptyValue()
{
    return FilterTerms().toVariant();
}

QString write(const Parameter &p)
{
    const FilterTerms filter = p.toFilterTerms();
    QStringList fields;
    fields << flag(filter.keep) << flag(filter.matchAny);
    for (const FilterTerm &term : filter.terms)
        writeTerm(p, term, &fields);
    return Parameter::joinFields(fields);
}

void read(Parameter &p, const QStringList &fields, const QString &, int version)
{
    if (fields.size() < 5)
        return;
    FilterTerms filter;
    filter.keep = fields.at(0) == QLatin1String("1");
    filter.matchAny = fields.at(1) == QLatin1String("1");
    FilterTerm term;
    for (int i = 2; i + 3 <= fields.size(); i += 3) {
        if (readTerm(p, fields, i, version, &term))
            filter.terms.append(term);
    }
    p.setFilterTerms(filter);
}

QString summary(const Parameter &p)
{
    return QStringLiteral("%1 term(s)").arg(QLocale().toString(p.toFilterTerms().terms.size()));
}

bool isUnset(const Parameter &p)
{
    return p.toFilterTerms().terms.isEmpty();
}

bool remap(Parameter &p, const ColumnIdMap &map)
{
    FilterTerms filter = p.toFilterTerms();
    const bool changed = remapTerms(&filter.terms, map);
    if (changed)
        p.setFilterTerms(filter);
    return changed;
}

} // namespace FilterForm

namespace IfForm {

QVariant emptyValue()
{
    return IfTerms().toVariant();
}

QString write(const Parameter &p)
{
    const IfTerms ifTerms = p.toIfTerms();
    QStringList fields;
    for (const IfBranch &branch : ifTerms.branches) {
        fields << StartIfMarker;
        for (const FilterTerm &term : branch.terms)
            writeTerm(p, term, &fields);
        fields << EndIfMarker << Parameter::encodeText(branch.thenValue);
    }
    fields << Parameter::encodeText(ifTerms.elseValue);
    return Parameter::joinFields(fields);
}

// The else value is the very last field; a start marker counts only with a whole term's
// worth of fields behind it.
void read(Parameter &p, const QStringList &fields, const QString &, int version)
{
    QStringList rest = fields;
    IfTerms ifTerms;
    ifTerms.elseValue = Parameter::decodeText(rest.takeLast());
    const int count = rest.size();
    int i = 0;
    while (i < count && rest.at(i) == StartIfMarker && count - i >= 5) {
        ++i;
        IfBranch branch;
        if (!readBranch(p, rest, version, &i, &branch))
            break;
        ifTerms.branches.append(branch);
    }
    p.setIfTerms(ifTerms);
}

QString summary(const Parameter &p)
{
    return QStringLiteral("%1 if/elseif + else")
        .arg(QLocale().toString(p.toIfTerms().branches.size()));
}

bool isUnset(const Parameter &p)
{
    return p.toIfTerms().branches.isEmpty();
}

bool remap(Parameter &p, const ColumnIdMap &map)
{
    IfTerms ifTerms = p.toIfTerms();
    bool changed = false;
    for (IfBranch &branch : ifTerms.branches)
        changed |= remapTerms(&branch.terms, map);
    if (changed)
        p.setIfTerms(ifTerms);
    return changed;
}

} // namespace IfForm

namespace RenameForm {

// One field a column of the source, in order, so that the document stays readable.
QString write(const Parameter &p)
{
    const Dataset *dataset = p.sourceDataset();
    const ColumnRenames renames = p.toRenameColumns();
    QStringList fields;
    for (int c = 0; dataset && c < dataset->columnCount(); ++c) {
        const auto found = renames.constFind(dataset->columnId(c));
        fields << (found == renames.constEnd() ? QString(NoRenameMarker)
                                               : Parameter::encodeText(*found));
    }
    return Parameter::joinFields(fields);
}

void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    ColumnRenames renames;
    const Dataset *dataset = p.sourceDataset();
    const int count = dataset ? qMin(fields.size(), dataset->columnCount()) : 0;
    for (int c = 0; c < count; ++c) {
        const ColumnId id = dataset->columnId(c);
        if (fields.at(c) != NoRenameMarker && !id.isNull())
            renames.insert(id, Parameter::decodeText(fields.at(c)));
    }
    p.setRenameColumns(renames);
}

QString summary(const Parameter &p)
{
    const ColumnRenames renames = p.toRenameColumns();
    int count = 0;
    for (auto it = renames.constBegin(); it != renames.constEnd(); ++it)
        count += p.columnPosition(it.key()) >= 0 ? 1 : 0;
    return QStringLiteral("%1 column(s) renamed").arg(QLocale().toString(count));
}

bool remap(Parameter &p, const ColumnIdMap &map)
{
    ColumnRenames renames = p.toRenameColumns();
    const bool changed = remapKeys(&renames, map);
    if (changed)
        p.setRenameColumns(renames);
    return changed;
}

} // namespace RenameForm

namespace SplitRowsForm {

QVariant emptyValue()
{
    return SplitRowsTerms().toVariant();
}

QString write(const Parameter &p)
{
    const SplitRowsTerms terms = p.toSplitRowsTerms();
    QStringList fields;
    fields << flag(terms.splitByName) << flag(terms.automatic) << QString::number(terms.every)
           << columnField(p, terms.nameColumn) << QString::number(terms.times)
           << Parameter::encodeText(terms.text);
    return Parameter::joinFields(fields);
}

// All six fields are required, or the value stays as it was.
void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    SplitRowsTerms terms;
    int number = 0;
    if (fields.size() < 6 || !parseInt(fields.at(2), &terms.every)
        || !parseInt(fields.at(3), &number) || !parseInt(fields.at(4), &terms.times))
        return;
    terms.splitByName = fields.at(0) == QLatin1String("1");
    terms.automatic = fields.at(1) == QLatin1String("1");
    terms.nameColumn = p.columnAt(number);
    terms.text = Parameter::decodeText(fields.at(5));
    p.setSplitRowsTerms(terms);
}

QString summary(const Parameter &p)
{
    const QLocale locale;
    const SplitRowsTerms terms = p.toSplitRowsTerms();
    if (terms.splitByName)
        return QStringLiteral("By matching column names");
    if (terms.automatic)
        return QStringLiteral("Automatically by column names");
    if (terms.times == 1)
        return QStringLiteral("1 time");
    return QStringLiteral("every %2 column(s), %1 times")
        .arg(locale.toString(terms.times), locale.toString(terms.every));
}

bool isUnset(const Parameter &p)
{
    const SplitRowsTerms terms = p.toSplitRowsTerms();
    return !terms.splitByName && !terms.automatic
        && (terms.times == 0 || p.columnPosition(terms.nameColumn) < 0);
}

bool remap(Parameter &p, const ColumnIdMap &map)
{
    SplitRowsTerms terms = p.toSplitRowsTerms();
    const bool changed = remapId(&terms.nameColumn, map);
    if (changed)
        p.setSplitRowsTerms(terms);
    return changed;
}

} // namespace SplitRowsForm

namespace UniqueForm {

QStringList optionTexts()
{
    return {QStringLiteral("Keep unique"),
            QStringLiteral("Keep first"),
            QStringLiteral("Keep last"),
            QStringLiteral("Sum"),
            QStringLiteral("Maximum"),
            QStringLiteral("Minimum"),
            QStringLiteral("Average"),
            QStringLiteral("Concat"),
            QStringLiteral("Concat distinct"),
            QStringLiteral("Keep first non-empty"),
            QStringLiteral("Keep last non-empty"),
            QStringLiteral("Count distinct"),
            QStringLiteral("Count unique"),
            QStringLiteral("Count duplicate"),
            QStringLiteral("Count empty"),
            QStringLiteral("Count non-empty"),
            QStringLiteral("Set empty")};
}

QString keyRuleText()
{
    return QStringLiteral("Only 1 row is kept from those where *all* the values in '%1' columns "
                          "match.\nAt least one column must be set to '%1' for the transform to "
                          "do anything.\nClick the ? button for more details.")
        .arg(optionTexts().first());
}

// One field a column of the source, in order; a column without an entry keeps its first.
QString write(const Parameter &p)
{
    const Dataset *dataset = p.sourceDataset();
    const UniqueColumns unique = p.toUniqueColumns();
    QStringList fields;
    for (int c = 0; dataset && c < dataset->columnCount(); ++c)
        fields << QString::number(unique.value(dataset->columnId(c), Parameter::UniqueKeepFirst));
    return Parameter::joinFields(fields);
}

void read(Parameter &p, const QStringList &fields, const QString &, int)
{
    UniqueColumns unique;
    const Dataset *dataset = p.sourceDataset();
    const int count = dataset ? qMin(fields.size(), dataset->columnCount()) : 0;
    int option = 0;
    for (int c = 0; c < count; ++c) {
        const ColumnId id = dataset->columnId(c);
        if (!id.isNull() && parseInt(fields.at(c), &option))
            unique.insert(id, option);
    }
    p.setUniqueColumns(unique);
}

QString summary(const Parameter &p)
{
    const UniqueColumns unique = p.toUniqueColumns();
    int count = 0;
    for (auto it = unique.constBegin(); it != unique.constEnd(); ++it)
        count
            += it.value() == Parameter::UniqueKeepUnique && p.columnPosition(it.key()) >= 0 ? 1 : 0;
    return QStringLiteral("%1 unique column(s)").arg(QLocale().toString(count));
}

bool isUnset(const Parameter &p)
{
    const UniqueColumns unique = p.toUniqueColumns();
    return std::none_of(unique.constBegin(), unique.constEnd(),
                        [](int option) { return option == Parameter::UniqueKeepUnique; });
}

bool remap(Parameter &p, const ColumnIdMap &map)
{
    UniqueColumns unique = p.toUniqueColumns();
    const bool changed = remapKeys(&unique, map);
    if (changed)
        p.setUniqueColumns(unique);
    return changed;
}

} // namespace UniqueForm
