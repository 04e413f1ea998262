#include "transforms/framework/parameter.h"

#include "graph/node.h"

#include <QUrl>

#include <algorithm>

namespace {

const QChar FieldSeparator(0x1F);
const QLatin1Char OldFieldSeparator('^');
const QLatin1String StartIfMarker("*StartIf*");
const QLatin1String EndIfMarker("*EndIf*");
const QLatin1String NoRenameMarker("*NORENAME*");

// The first document version with "Is empty" and "Is not empty" at 19 and 20.
constexpr int EmptyOperatorsMovedVersion = 57;
constexpr int OperatorCount = 21;

QString flag(bool on)
{
    return on ? QStringLiteral("1") : QStringLiteral("0");
}

bool parseInt(const QString &field, int *out)
{
    bool ok = false;
    const int number = field.trimmed().toInt(&ok);
    if (ok)
        *out = number;
    return ok;
}

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

QVariantList termsToVariant(const QList<FilterTerm> &terms)
{
    QVariantList list;
    list.reserve(terms.size());
    for (const FilterTerm &term : terms)
        list.append(term.toVariant());
    return list;
}

QList<FilterTerm> termsFromVariant(const QVariant &variant)
{
    QList<FilterTerm> terms;
    const QVariantList list = variant.toList();
    terms.reserve(list.size());
    for (const QVariant &entry : list)
        terms.append(FilterTerm::fromVariant(entry));
    return terms;
}

bool idLess(ColumnId a, ColumnId b)
{
    return a.sourceId != b.sourceId ? a.sourceId < b.sourceId : a.ordinal < b.ordinal;
}

// Maps are written in id order so that equal maps give equal variants.
template<typename T> QVariant mapToVariant(const QHash<ColumnId, T> &map)
{
    QList<ColumnId> ids = map.keys();
    std::sort(ids.begin(), ids.end(), idLess);
    QVariantList list;
    list.reserve(ids.size());
    for (ColumnId id : qAsConst(ids))
        list.append(
            QVariant(QVariantList {columnIdToVariant(id), QVariant::fromValue(map.value(id))}));
    return list;
}

template<typename T> QHash<ColumnId, T> mapFromVariant(const QVariant &variant)
{
    QHash<ColumnId, T> map;
    const QVariantList list = variant.toList();
    for (const QVariant &entry : list) {
        const QVariantList pair = entry.toList();
        if (pair.size() != 2)
            continue;
        const ColumnId id = columnIdFromVariant(pair.at(0));
        if (!id.isNull())
            map.insert(id, pair.at(1).value<T>());
    }
    return map;
}

// Replaces id through map; a null mapped id clears it. True when id changed.
bool remapId(ColumnId *id, const QHash<ColumnId, ColumnId> &map)
{
    if (id->isNull())
        return false;
    const auto found = map.constFind(*id);
    if (found == map.constEnd() || *found == *id)
        return false;
    *id = *found;
    return true;
}

bool remapTerms(QList<FilterTerm> *terms, const QHash<ColumnId, ColumnId> &map)
{
    bool changed = false;
    for (FilterTerm &term : *terms)
        changed |= remapId(&term.column, map);
    return changed;
}

template<typename T> bool remapKeys(QHash<ColumnId, T> *hash, const QHash<ColumnId, ColumnId> &map)
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

} // namespace

QVariant columnIdToVariant(ColumnId id)
{
    return QVariantList {id.sourceId, id.ordinal};
}

ColumnId columnIdFromVariant(const QVariant &variant)
{
    const QVariantList list = variant.toList();
    if (list.size() != 2)
        return ColumnId();
    bool sourceOk = false;
    bool ordinalOk = false;
    const int sourceId = list.at(0).toInt(&sourceOk);
    const int ordinal = list.at(1).toInt(&ordinalOk);
    return sourceOk && ordinalOk ? ColumnId(sourceId, ordinal) : ColumnId();
}

QVariant SortColumn::toVariant() const
{
    return QVariantList {columnIdToVariant(id), ascending};
}

SortColumn SortColumn::fromVariant(const QVariant &variant)
{
    const QVariantList list = variant.toList();
    SortColumn column;
    column.id = columnIdFromVariant(list.value(0));
    column.ascending = list.value(1, true).toBool();
    return column;
}

QVariant FilterTerm::toVariant() const
{
    return QVariantList {columnIdToVariant(column), op, value};
}

FilterTerm FilterTerm::fromVariant(const QVariant &variant)
{
    const QVariantList list = variant.toList();
    FilterTerm term;
    term.column = columnIdFromVariant(list.value(0));
    term.op = list.value(1).toInt();
    term.value = list.value(2).toString();
    return term;
}

QVariant FilterTerms::toVariant() const
{
    return QVariantList {keep, matchAny, termsToVariant(terms)};
}

FilterTerms FilterTerms::fromVariant(const QVariant &variant)
{
    const QVariantList list = variant.toList();
    FilterTerms filter;
    filter.keep = list.value(0, true).toBool();
    filter.matchAny = list.value(1, false).toBool();
    filter.terms = termsFromVariant(list.value(2));
    return filter;
}

QVariant IfBranch::toVariant() const
{
    return QVariantList {termsToVariant(terms), thenValue};
}

IfBranch IfBranch::fromVariant(const QVariant &variant)
{
    const QVariantList list = variant.toList();
    IfBranch branch;
    branch.terms = termsFromVariant(list.value(0));
    branch.thenValue = list.value(1).toString();
    return branch;
}

QVariant IfTerms::toVariant() const
{
    QVariantList list;
    list.reserve(branches.size());
    for (const IfBranch &branch : branches)
        list.append(branch.toVariant());
    return QVariantList {QVariant(list), elseValue};
}

IfTerms IfTerms::fromVariant(const QVariant &variant)
{
    const QVariantList list = variant.toList();
    IfTerms ifTerms;
    const QVariantList branches = list.value(0).toList();
    ifTerms.branches.reserve(branches.size());
    for (const QVariant &branch : branches)
        ifTerms.branches.append(IfBranch::fromVariant(branch));
    ifTerms.elseValue = list.value(1).toString();
    return ifTerms;
}

QVariant ReplaceTerm::toVariant() const
{
    return QVariantList {matchType, from, to};
}

ReplaceTerm ReplaceTerm::fromVariant(const QVariant &variant)
{
    const QVariantList list = variant.toList();
    ReplaceTerm term;
    term.matchType = list.value(0).toInt();
    term.from = list.value(1).toString();
    term.to = list.value(2).toString();
    return term;
}

QVariant SplitRowsTerms::toVariant() const
{
    return QVariantList {splitByName, automatic, every, columnIdToVariant(nameColumn), times, text};
}

SplitRowsTerms SplitRowsTerms::fromVariant(const QVariant &variant)
{
    const QVariantList list = variant.toList();
    SplitRowsTerms terms;
    if (list.size() != 6)
        return terms;
    terms.splitByName = list.at(0).toBool();
    terms.automatic = list.at(1).toBool();
    terms.every = list.at(2).toInt();
    terms.nameColumn = columnIdFromVariant(list.at(3));
    terms.times = list.at(4).toInt();
    terms.text = list.at(5).toString();
    return terms;
}

QVariant columnRenamesToVariant(const ColumnRenames &renames)
{
    return mapToVariant(renames);
}

ColumnRenames columnRenamesFromVariant(const QVariant &variant)
{
    return mapFromVariant<QString>(variant);
}

QVariant uniqueColumnsToVariant(const UniqueColumns &columns)
{
    return mapToVariant(columns);
}

UniqueColumns uniqueColumnsFromVariant(const QVariant &variant)
{
    return mapFromVariant<int>(variant);
}

Parameter::Parameter(ParameterType type, const QString &key, const QString &label,
                     const QVariant &value, const QVariant &options)
    : m_type(type)
    , m_key(key)
    , m_label(label)
    , m_value(value)
    , m_options(options)
{ }

Parameter::Parameter(ParameterType type, const QString &key, const QString &label, Node *sourceNode)
    : m_type(type)
    , m_key(key)
    , m_label(label)
    , m_sourceNode(sourceNode)
{
    initialiseColumns();
}

// Gives a column option the empty value of its shape, so that the typed getters and the
// widgets never meet a value of the wrong form.
void Parameter::initialiseColumns()
{
    switch (m_type) {
    case ParameterType::SingleColumn:
        setColumnId(ColumnId());
        break;
    case ParameterType::MultipleColumns:
    case ParameterType::ReorderColumns:
    case ParameterType::MultipleColumnsOrdered:
    case ParameterType::SortColumns:
    case ParameterType::SortColumnsOrdered:
    case ParameterType::RenameColumns:
    case ParameterType::Unique:
        m_value = QVariantList();
        break;
    case ParameterType::FilterColumns:
        setFilterTerms(FilterTerms());
        break;
    case ParameterType::If:
        setIfTerms(IfTerms());
        break;
    case ParameterType::SplitRows:
        setSplitRowsTerms(SplitRowsTerms());
        break;
    default:
        break;
    }
}

Parameter *Parameter::clone() const
{
    return new Parameter(*this);
}

bool Parameter::isColumnRelatedType(ParameterType type)
{
    switch (type) {
    case ParameterType::SingleColumn:
    case ParameterType::MultipleColumns:
    case ParameterType::SortColumns:
    case ParameterType::FilterColumns:
    case ParameterType::ReorderColumns:
    case ParameterType::If:
    case ParameterType::MultipleColumnsOrdered:
    case ParameterType::Script:
    case ParameterType::RenameColumns:
    case ParameterType::SplitRows:
    case ParameterType::Unique:
    case ParameterType::VerifyRules:
    case ParameterType::SortColumnsOrdered:
        return true;
    default:
        return false;
    }
}

ParameterLayout Parameter::layoutFor(ParameterType type)
{
    switch (type) {
    case ParameterType::Bool:
        return ParameterLayout::Check;
    case ParameterType::SingleColumn:
    case ParameterType::Selection:
    case ParameterType::Text:
    case ParameterType::Int:
    case ParameterType::Char:
    case ParameterType::Real:
    case ParameterType::LongText:
    case ParameterType::Label:
    case ParameterType::Date:
    case ParameterType::SortColumnsOrdered:
    case ParameterType::Locale:
        return ParameterLayout::Row;
    default:
        return ParameterLayout::Block;
    }
}

QStringList Parameter::splitFields(const QString &text)
{
    return text.split(text.contains(FieldSeparator) ? FieldSeparator : OldFieldSeparator);
}

QString Parameter::joinFields(const QStringList &fields)
{
    return fields.join(FieldSeparator);
}

QString Parameter::encodeText(const QString &text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

QString Parameter::decodeText(const QString &field)
{
    return QUrl::fromPercentEncoding(field.toUtf8());
}

const Dataset *Parameter::sourceDataset() const
{
    return m_sourceNode ? m_sourceNode->dataset() : nullptr;
}

int Parameter::columnPosition(ColumnId id) const
{
    const Dataset *dataset = sourceDataset();
    if (!dataset || id.isNull())
        return -1;
    return dataset->columnIndex(id);
}

int Parameter::columnNumber(ColumnId id) const
{
    return columnPosition(id) + 1;
}

ColumnId Parameter::columnAt(int number) const
{
    const Dataset *dataset = sourceDataset();
    if (!dataset || number < 1 || number > dataset->columnCount())
        return ColumnId();
    return dataset->columnId(number - 1);
}

void Parameter::setPendingText(const QString &text, int version)
{
    m_pendingText = text;
    m_pendingVersion = version;
    m_hasPendingText = true;
}

void Parameter::clearPendingText()
{
    m_pendingText.clear();
    m_pendingVersion = -1;
    m_hasPendingText = false;
}

bool Parameter::resolvePendingText()
{
    if (!m_hasPendingText)
        return false;
    if (m_sourceNode && m_sourceNode->status() != Node::UpToDate)
        return false;
    const QString text = m_pendingText;
    const int version = m_pendingVersion;
    clearPendingText();
    fromText(text, version);
    return true;
}

QString Parameter::toText() const
{
    return m_hasPendingText ? m_pendingText : textForm();
}

QString Parameter::textForm() const
{
    QStringList fields;
    switch (m_type) {
    case ParameterType::SingleColumn:
        return QString::number(columnNumber(toColumnId()));
    case ParameterType::MultipleColumns:
    case ParameterType::ReorderColumns:
    case ParameterType::MultipleColumnsOrdered: {
        const QList<ColumnId> ids = toColumns();
        for (ColumnId id : ids)
            fields.append(QString::number(columnNumber(id)));
        break;
    }
    case ParameterType::SortColumns:
    case ParameterType::SortColumnsOrdered: {
        const QList<SortColumn> columns = toSortColumns();
        for (const SortColumn &column : columns) {
            const int number = columnNumber(column.id);
            fields.append(QString::number(column.ascending ? number : -number));
        }
        break;
    }
    case ParameterType::FilterColumns: {
        const FilterTerms filter = toFilterTerms();
        fields << flag(filter.keep) << flag(filter.matchAny);
        for (const FilterTerm &term : filter.terms)
            fields << QString::number(columnNumber(term.column)) << QString::number(term.op)
                   << encodeText(term.value);
        break;
    }
    case ParameterType::Bool:
        return flag(toBool());
    case ParameterType::Selection:
    case ParameterType::Text:
    case ParameterType::Script:
    case ParameterType::LongText:
        return encodeText(toString());
    case ParameterType::Int:
        return QString::number(toInt());
    case ParameterType::Char: {
        const QChar c = toChar();
        return c.isNull() ? QString() : encodeText(QString(c));
    }
    case ParameterType::If: {
        const IfTerms ifTerms = toIfTerms();
        for (const IfBranch &branch : ifTerms.branches) {
            fields << StartIfMarker;
            for (const FilterTerm &term : branch.terms)
                fields << QString::number(columnNumber(term.column)) << QString::number(term.op)
                       << encodeText(term.value);
            fields << EndIfMarker << encodeText(branch.thenValue);
        }
        fields << encodeText(ifTerms.elseValue);
        break;
    }
    case ParameterType::RenameColumns: {
        const Dataset *dataset = sourceDataset();
        const ColumnRenames renames = toRenameColumns();
        for (int c = 0; dataset && c < dataset->columnCount(); ++c) {
            const auto found = renames.constFind(dataset->columnId(c));
            fields << (found == renames.constEnd() ? QString(NoRenameMarker) : encodeText(*found));
        }
        break;
    }
    case ParameterType::SplitRows: {
        const SplitRowsTerms terms = toSplitRowsTerms();
        fields << flag(terms.splitByName) << flag(terms.automatic) << QString::number(terms.every)
               << QString::number(columnNumber(terms.nameColumn)) << QString::number(terms.times)
               << encodeText(terms.text);
        break;
    }
    case ParameterType::Unique: {
        const Dataset *dataset = sourceDataset();
        const UniqueColumns unique = toUniqueColumns();
        for (int c = 0; dataset && c < dataset->columnCount(); ++c)
            fields << QString::number(unique.value(dataset->columnId(c), UniqueKeepFirst));
        break;
    }
    case ParameterType::ReplaceTerms: {
        const QList<ReplaceTerm> terms = toReplaceTerms();
        for (const ReplaceTerm &term : terms)
            fields << QString::number(term.matchType) << encodeText(term.from)
                   << encodeText(term.to);
        break;
    }
    case ParameterType::Real:
        return QString::number(toReal(), 'g', QLocale::FloatingPointShortest);
    case ParameterType::VerifyRules:
        // Kept as read until the rule set has a structure of its own.
        return m_value.toString();
    case ParameterType::Label:
        return QString();
    case ParameterType::Date: {
        const QDate date = m_value.toDate();
        return date.isValid() ? date.toString(QStringLiteral("yyyy-MM-dd")) : QString();
    }
    case ParameterType::Locale:
        return m_value.isValid() ? toLocale().name() : QString();
    }
    return joinFields(fields);
}

void Parameter::fromText(const QString &text, int version)
{
    if (version < 0)
        version = CurrentDocumentVersion;
    const QStringList fields = splitFields(text);
    const QString &first = fields.first();
    int number = 0;
    switch (m_type) {
    case ParameterType::SingleColumn:
        if (parseInt(first, &number))
            setColumnId(columnAt(number));
        break;
    case ParameterType::MultipleColumns:
    case ParameterType::ReorderColumns:
    case ParameterType::MultipleColumnsOrdered:
        readColumnList(fields);
        break;
    case ParameterType::SortColumns:
    case ParameterType::SortColumnsOrdered:
        readSortColumns(fields);
        break;
    case ParameterType::FilterColumns:
        readFilterTerms(fields, version);
        break;
    case ParameterType::Bool:
        if (first == QLatin1String("1") || first == QLatin1String("0"))
            m_value = first == QLatin1String("1");
        break;
    case ParameterType::Selection: {
        const QString choice = decodeText(first);
        if (m_options.toStringList().contains(choice))
            m_value = choice;
        break;
    }
    case ParameterType::Text:
    case ParameterType::Script:
    case ParameterType::LongText:
        m_value = decodeText(first);
        break;
    case ParameterType::Int:
        if (parseInt(first, &number))
            m_value = number;
        break;
    case ParameterType::Char: {
        const QString decoded = decodeText(first);
        m_value = decoded.isEmpty() ? QChar() : decoded.at(0);
        break;
    }
    case ParameterType::If:
        readIfTerms(fields, version);
        break;
    case ParameterType::RenameColumns:
        readRenames(fields);
        break;
    case ParameterType::SplitRows:
        readSplitRows(fields);
        break;
    case ParameterType::Unique:
        readUnique(fields);
        break;
    case ParameterType::ReplaceTerms:
        readReplaceTerms(fields);
        break;
    case ParameterType::Real: {
        bool ok = false;
        const double real = first.toDouble(&ok);
        if (ok)
            m_value = real;
        break;
    }
    case ParameterType::VerifyRules:
        m_value = text;
        break;
    case ParameterType::Label:
        break;
    case ParameterType::Date: {
        const QDate date = QDate::fromString(first, QStringLiteral("yyyy-MM-dd"));
        if (date.isValid())
            m_value = date;
        break;
    }
    case ParameterType::Locale:
        m_value = first.isEmpty() ? QVariant() : QVariant(QLocale(first));
        break;
    }
}

void Parameter::readColumnList(const QStringList &fields)
{
    QList<ColumnId> ids;
    int number = 0;
    for (const QString &field : fields) {
        if (!parseInt(field, &number))
            continue;
        const ColumnId id = columnAt(number);
        if (!id.isNull())
            ids.append(id);
    }
    setColumns(ids);
}

void Parameter::readSortColumns(const QStringList &fields)
{
    QList<SortColumn> columns;
    int number = 0;
    for (const QString &field : fields) {
        if (!parseInt(field, &number))
            continue;
        const ColumnId id = columnAt(qAbs(number));
        if (!id.isNull())
            columns.append(SortColumn {id, number > 0});
    }
    setSortColumns(columns);
}

// Reads the three fields of a condition at position at. False when the term is to be left
// out: a field that isn't a number, or an operator that no longer exists.
bool Parameter::readTerm(const QStringList &fields, int at, int version, FilterTerm *term) const
{
    int number = 0;
    int op = 0;
    if (!parseInt(fields.at(at), &number) || !parseInt(fields.at(at + 1), &op))
        return false;
    op = mapOperator(op, version);
    if (op < 0)
        return false;
    term->column = columnAt(number);
    term->op = op;
    term->value = decodeText(fields.at(at + 2));
    return true;
}

void Parameter::readFilterTerms(const QStringList &fields, int version)
{
    if (fields.size() < 5)
        return;
    FilterTerms filter;
    filter.keep = fields.at(0) == QLatin1String("1");
    filter.matchAny = fields.at(1) == QLatin1String("1");
    FilterTerm term;
    for (int i = 2; i + 3 <= fields.size(); i += 3) {
        if (readTerm(fields, i, version, &term))
            filter.terms.append(term);
    }
    setFilterTerms(filter);
}

void Parameter::readIfTerms(QStringList fields, int version)
{
    IfTerms ifTerms;
    ifTerms.elseValue = decodeText(fields.takeLast());
    const int count = fields.size();
    int i = 0;
    while (i < count && fields.at(i) == StartIfMarker && count - i >= 5) {
        ++i;
        IfBranch branch;
        bool closed = false;
        while (i < count && !closed) {
            if (fields.at(i) == EndIfMarker) {
                if (i + 1 >= count)
                    break;
                branch.thenValue = decodeText(fields.at(i + 1));
                i += 2;
                closed = true;
            } else if (i + 3 <= count) {
                FilterTerm term;
                if (readTerm(fields, i, version, &term))
                    branch.terms.append(term);
                i += 3;
            } else {
                break;
            }
        }
        if (!closed)
            break;
        ifTerms.branches.append(branch);
    }
    setIfTerms(ifTerms);
}

void Parameter::readRenames(const QStringList &fields)
{
    ColumnRenames renames;
    const Dataset *dataset = sourceDataset();
    const int count = dataset ? qMin(fields.size(), dataset->columnCount()) : 0;
    for (int c = 0; c < count; ++c) {
        const ColumnId id = dataset->columnId(c);
        if (fields.at(c) != NoRenameMarker && !id.isNull())
            renames.insert(id, decodeText(fields.at(c)));
    }
    setRenameColumns(renames);
}

void Parameter::readSplitRows(const QStringList &fields)
{
    SplitRowsTerms terms;
    int number = 0;
    if (fields.size() < 6 || !parseInt(fields.at(2), &terms.every)
        || !parseInt(fields.at(3), &number) || !parseInt(fields.at(4), &terms.times))
        return;
    terms.splitByName = fields.at(0) == QLatin1String("1");
    terms.automatic = fields.at(1) == QLatin1String("1");
    terms.nameColumn = columnAt(number);
    terms.text = decodeText(fields.at(5));
    setSplitRowsTerms(terms);
}

void Parameter::readUnique(const QStringList &fields)
{
    UniqueColumns unique;
    const Dataset *dataset = sourceDataset();
    const int count = dataset ? qMin(fields.size(), dataset->columnCount()) : 0;
    int option = 0;
    for (int c = 0; c < count; ++c) {
        const ColumnId id = dataset->columnId(c);
        if (!id.isNull() && parseInt(fields.at(c), &option))
            unique.insert(id, option);
    }
    setUniqueColumns(unique);
}

void Parameter::readReplaceTerms(const QStringList &fields)
{
    QList<ReplaceTerm> terms;
    ReplaceTerm term;
    for (int i = 0; i + 3 <= fields.size(); i += 3) {
        if (!parseInt(fields.at(i), &term.matchType))
            continue;
        term.from = decodeText(fields.at(i + 1));
        term.to = decodeText(fields.at(i + 2));
        terms.append(term);
    }
    setReplaceTerms(terms);
}

QString Parameter::columnListSummary() const
{
    const QList<int> indexes = columnIndexes(true);
    QString text = QStringLiteral("%1 column(s)").arg(QLocale().toString(indexes.size()));
    if (indexes.isEmpty())
        return text;
    const Dataset *dataset = sourceDataset();
    QStringList names;
    for (int i = 0; i < indexes.size() && i < 3; ++i)
        names.append(dataset->headerText(indexes.at(i)));
    QString listed = names.join(QLatin1Char(','));
    if (indexes.size() > 3)
        listed += QLatin1String("...");
    return text + QStringLiteral(" (%1)").arg(listed);
}

QString Parameter::summary() const
{
    if (m_hasPendingText)
        return QStringLiteral("Needs updating");
    const QLocale locale;
    switch (m_type) {
    case ParameterType::SingleColumn: {
        const int index = toColumnIndex();
        return index < 0 ? m_noneText : sourceDataset()->headerText(index);
    }
    case ParameterType::MultipleColumns:
    case ParameterType::ReorderColumns:
    case ParameterType::MultipleColumnsOrdered:
    case ParameterType::SortColumns:
    case ParameterType::SortColumnsOrdered:
        return columnListSummary();
    case ParameterType::FilterColumns:
        return QStringLiteral("%1 term(s)").arg(locale.toString(toFilterTerms().terms.size()));
    case ParameterType::ReplaceTerms:
        return QStringLiteral("%1 term(s)").arg(locale.toString(toReplaceTerms().size()));
    case ParameterType::Bool:
        return toBool() ? QStringLiteral("Yes") : QStringLiteral("No");
    case ParameterType::Selection:
    case ParameterType::Text:
    case ParameterType::Script:
    case ParameterType::LongText:
        return toString();
    case ParameterType::Int:
        return QString::number(toInt());
    case ParameterType::Real:
        return locale.toString(toReal(), 'f', QLocale::FloatingPointShortest);
    case ParameterType::Char: {
        const QChar c = toChar();
        if (c == QLatin1Char(' '))
            return QStringLiteral("<Space>");
        if (c == QLatin1Char('\t'))
            return QStringLiteral("<Tab>");
        return c.isNull() ? QString() : QString(c);
    }
    case ParameterType::If:
        return QStringLiteral("%1 if/elseif + else")
            .arg(locale.toString(toIfTerms().branches.size()));
    case ParameterType::RenameColumns: {
        const ColumnRenames renames = toRenameColumns();
        int count = 0;
        for (auto it = renames.constBegin(); it != renames.constEnd(); ++it)
            count += columnPosition(it.key()) >= 0 ? 1 : 0;
        return QStringLiteral("%1 column(s) renamed").arg(locale.toString(count));
    }
    case ParameterType::SplitRows: {
        const SplitRowsTerms terms = toSplitRowsTerms();
        if (terms.splitByName)
            return QStringLiteral("By matching column names");
        if (terms.automatic)
            return QStringLiteral("Automatically by column names");
        if (terms.times == 1)
            return QStringLiteral("1 time");
        return QStringLiteral("every %2 column(s), %1 times")
            .arg(locale.toString(terms.times), locale.toString(terms.every));
    }
    case ParameterType::Unique: {
        const UniqueColumns unique = toUniqueColumns();
        int count = 0;
        for (auto it = unique.constBegin(); it != unique.constEnd(); ++it)
            count += it.value() == UniqueKeepUnique && columnPosition(it.key()) >= 0 ? 1 : 0;
        return QStringLiteral("%1 unique column(s)").arg(locale.toString(count));
    }
    case ParameterType::VerifyRules: {
        const QString text = m_value.toString();
        const int count = text.isEmpty() ? 0 : splitFields(text).size();
        return QStringLiteral("%1 rule field(s)").arg(locale.toString(count));
    }
    case ParameterType::Label:
        return QString();
    case ParameterType::Date:
        return locale.toString(toDate(), QLocale::ShortFormat);
    case ParameterType::Locale: {
        const QLocale chosen = toLocale();
        const QString language = QLocale::languageToString(chosen.language());
        if (chosen.country() == QLocale::AnyCountry)
            return language;
        return QStringLiteral("%1 (%2)").arg(language, QLocale::countryToString(chosen.country()));
    }
    }
    return QString();
}

bool Parameter::isUnset() const
{
    switch (m_type) {
    case ParameterType::SingleColumn:
        return m_columnRequired && toColumnIndex() < 0;
    case ParameterType::MultipleColumns:
    case ParameterType::SortColumns:
    case ParameterType::SortColumnsOrdered:
        return m_value.toList().isEmpty();
    case ParameterType::FilterColumns:
        return toFilterTerms().terms.isEmpty();
    case ParameterType::If:
        return toIfTerms().branches.isEmpty();
    case ParameterType::ReplaceTerms:
        return toReplaceTerms().isEmpty();
    case ParameterType::Selection:
        return m_selectionRequired && toSelectionIndex() == 0;
    case ParameterType::Text:
    case ParameterType::LongText:
        return m_textRequired && toString().isEmpty();
    case ParameterType::Int:
        return m_intRequired && toInt() == 0;
    case ParameterType::Char:
        return toChar().isNull();
    case ParameterType::Script:
        return toString().trimmed().isEmpty();
    case ParameterType::SplitRows: {
        const SplitRowsTerms terms = toSplitRowsTerms();
        return !terms.splitByName && !terms.automatic
            && (terms.times == 0 || columnPosition(terms.nameColumn) < 0);
    }
    case ParameterType::Unique: {
        const UniqueColumns unique = toUniqueColumns();
        return std::none_of(unique.constBegin(), unique.constEnd(),
                            [](int option) { return option == UniqueKeepUnique; });
    }
    default:
        return false;
    }
}

bool Parameter::selectAllColumns()
{
    const Dataset *dataset = sourceDataset();
    if ((m_type != ParameterType::MultipleColumns
         && m_type != ParameterType::MultipleColumnsOrdered)
        || !dataset || !dataset->hasColumns())
        return false;
    QList<ColumnId> ids;
    ids.reserve(dataset->columnCount());
    for (int c = 0; c < dataset->columnCount(); ++c) {
        const ColumnId id = dataset->columnId(c);
        if (!id.isNull())
            ids.append(id);
    }
    setColumns(ids);
    return true;
}

bool Parameter::selectOnlyColumn()
{
    const Dataset *dataset = sourceDataset();
    if (!dataset || dataset->columnCount() != 1 || dataset->columnId(0).isNull())
        return false;
    if (m_type == ParameterType::SingleColumn)
        setColumnId(dataset->columnId(0));
    else if (m_type == ParameterType::MultipleColumns)
        setColumns({dataset->columnId(0)});
    else
        return false;
    return true;
}

bool Parameter::remapColumnIds(const QHash<ColumnId, ColumnId> &map)
{
    if (map.isEmpty())
        return false;
    bool changed = false;
    switch (m_type) {
    case ParameterType::SingleColumn: {
        ColumnId id = toColumnId();
        if ((changed = remapId(&id, map)))
            setColumnId(id);
        break;
    }
    case ParameterType::MultipleColumns:
    case ParameterType::ReorderColumns:
    case ParameterType::MultipleColumnsOrdered: {
        QList<ColumnId> ids = toColumns();
        for (ColumnId &id : ids)
            changed |= remapId(&id, map);
        if (changed) {
            ids.removeAll(ColumnId());
            setColumns(ids);
        }
        break;
    }
    case ParameterType::SortColumns:
    case ParameterType::SortColumnsOrdered: {
        QList<SortColumn> columns = toSortColumns();
        for (SortColumn &column : columns)
            changed |= remapId(&column.id, map);
        if (changed) {
            columns.erase(std::remove_if(columns.begin(), columns.end(),
                                         [](const SortColumn &c) { return c.id.isNull(); }),
                          columns.end());
            setSortColumns(columns);
        }
        break;
    }
    case ParameterType::FilterColumns: {
        FilterTerms filter = toFilterTerms();
        if ((changed = remapTerms(&filter.terms, map)))
            setFilterTerms(filter);
        break;
    }
    case ParameterType::If: {
        IfTerms ifTerms = toIfTerms();
        for (IfBranch &branch : ifTerms.branches)
            changed |= remapTerms(&branch.terms, map);
        if (changed)
            setIfTerms(ifTerms);
        break;
    }
    case ParameterType::RenameColumns: {
        ColumnRenames renames = toRenameColumns();
        if ((changed = remapKeys(&renames, map)))
            setRenameColumns(renames);
        break;
    }
    case ParameterType::SplitRows: {
        SplitRowsTerms terms = toSplitRowsTerms();
        if ((changed = remapId(&terms.nameColumn, map)))
            setSplitRowsTerms(terms);
        break;
    }
    case ParameterType::Unique: {
        UniqueColumns unique = toUniqueColumns();
        if ((changed = remapKeys(&unique, map)))
            setUniqueColumns(unique);
        break;
    }
    default:
        break;
    }
    return changed;
}

QChar Parameter::toChar() const
{
    if (m_value.userType() == QMetaType::QChar)
        return m_value.toChar();
    const QString text = m_value.toString();
    return text.isEmpty() ? QChar() : text.at(0);
}

QDate Parameter::toDate() const
{
    const QDate date = m_value.toDate();
    return date.isValid() ? date : QDate(2000, 1, 1);
}

int Parameter::toSelectionIndex() const
{
    return qMax(0, m_options.toStringList().indexOf(m_value.toString()));
}

QLocale Parameter::toLocale() const
{
    if (m_value.userType() == QMetaType::QLocale)
        return m_value.toLocale();
    const QString name = m_value.toString();
    return name.isEmpty() ? QLocale() : QLocale(name);
}

ColumnId Parameter::toColumnId() const
{
    return columnIdFromVariant(m_value);
}

QList<ColumnId> Parameter::toColumns() const
{
    QList<ColumnId> ids;
    switch (m_type) {
    case ParameterType::SingleColumn: {
        const ColumnId id = toColumnId();
        if (!id.isNull())
            ids.append(id);
        break;
    }
    case ParameterType::SortColumns:
    case ParameterType::SortColumnsOrdered: {
        const QList<SortColumn> columns = toSortColumns();
        for (const SortColumn &column : columns)
            ids.append(column.id);
        break;
    }
    default: {
        const QVariantList list = m_value.toList();
        ids.reserve(list.size());
        for (const QVariant &entry : list) {
            const ColumnId id = columnIdFromVariant(entry);
            if (!id.isNull())
                ids.append(id);
        }
        break;
    }
    }
    return ids;
}

QList<SortColumn> Parameter::toSortColumns() const
{
    QList<SortColumn> columns;
    const QVariantList list = m_value.toList();
    columns.reserve(list.size());
    for (const QVariant &entry : list) {
        const SortColumn column = SortColumn::fromVariant(entry);
        if (!column.id.isNull())
            columns.append(column);
    }
    return columns;
}

FilterTerms Parameter::toFilterTerms() const
{
    return FilterTerms::fromVariant(m_value);
}

IfTerms Parameter::toIfTerms() const
{
    return IfTerms::fromVariant(m_value);
}

QList<ReplaceTerm> Parameter::toReplaceTerms() const
{
    QList<ReplaceTerm> terms;
    const QVariantList list = m_value.toList();
    terms.reserve(list.size());
    for (const QVariant &entry : list)
        terms.append(ReplaceTerm::fromVariant(entry));
    return terms;
}

SplitRowsTerms Parameter::toSplitRowsTerms() const
{
    return SplitRowsTerms::fromVariant(m_value);
}

ColumnRenames Parameter::toRenameColumns() const
{
    return columnRenamesFromVariant(m_value);
}

UniqueColumns Parameter::toUniqueColumns() const
{
    return uniqueColumnsFromVariant(m_value);
}

int Parameter::toColumnIndex() const
{
    return columnPosition(toColumnId());
}

bool Parameter::toColumnIndexes(QList<int> *out, bool dropMissing) const
{
    out->clear();
    const QList<ColumnId> ids = toColumns();
    out->reserve(ids.size());
    bool allFound = true;
    for (ColumnId id : ids) {
        const int index = columnPosition(id);
        allFound = allFound && index >= 0;
        if (index >= 0 || !dropMissing)
            out->append(index);
    }
    if (m_type == ParameterType::MultipleColumns)
        std::sort(out->begin(), out->end());
    return allFound;
}

QList<int> Parameter::columnIndexes(bool dropMissing) const
{
    QList<int> indexes;
    toColumnIndexes(&indexes, dropMissing);
    return indexes;
}

QList<QPair<int, bool>> Parameter::toSortIndexes() const
{
    QList<QPair<int, bool>> indexes;
    const QList<SortColumn> columns = toSortColumns();
    for (const SortColumn &column : columns) {
        const int index = columnPosition(column.id);
        if (index >= 0)
            indexes.append(qMakePair(index, column.ascending));
    }
    return indexes;
}

void Parameter::setColumns(const QList<ColumnId> &ids)
{
    QVariantList list;
    list.reserve(ids.size());
    for (ColumnId id : ids)
        list.append(columnIdToVariant(id));
    m_value = list;
}

void Parameter::setSortColumns(const QList<SortColumn> &columns)
{
    QVariantList list;
    list.reserve(columns.size());
    for (const SortColumn &column : columns)
        list.append(column.toVariant());
    m_value = list;
}

void Parameter::setReplaceTerms(const QList<ReplaceTerm> &terms)
{
    QVariantList list;
    list.reserve(terms.size());
    for (const ReplaceTerm &term : terms)
        list.append(term.toVariant());
    m_value = list;
}
