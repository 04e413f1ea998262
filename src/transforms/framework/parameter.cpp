#include "transforms/framework/parameter.h"

#include "transforms/framework/columnsource.h"

#include <QUrl>

#include <algorithm>

namespace {
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

Parameter::Parameter(ParameterType type, const QString &key, const QString &label,
                     ColumnSource *sourceNode)
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

const Dataset *Parameter::sourceDataset() const
{
    return m_sourceNode ? m_sourceNode->columnDataset() : nullptr;
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
