#include "transforms/framework/parameter.h"
#include "transforms/framework/parameterkind.h"

#include "transforms/framework/columnsource.h"

#include <algorithm>

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
    if (const auto emptyValue = kind().emptyValue)
        m_value = emptyValue();
}

Parameter *Parameter::clone() const
{
    return new Parameter(*this);
}

const ParameterKind &Parameter::kind() const
{
    return ParameterKind::of(m_type);
}

bool Parameter::isColumnRelatedType(ParameterType type)
{
    return ParameterKind::of(type).has(ParameterKind::ColumnRelated);
}

ParameterLayout Parameter::layoutFor(ParameterType type)
{
    return ParameterKind::of(type).layout;
}

bool Parameter::isDisplayed() const
{
    return !kind().has(ParameterKind::Hidden);
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

QString Parameter::summary() const
{
    if (m_hasPendingText)
        return QStringLiteral("Needs updating");
    return kind().summary(*this);
}

bool Parameter::isUnset() const
{
    const auto isUnset = kind().isUnset;
    return isUnset && isUnset(*this);
}

bool Parameter::selectAllColumns()
{
    const ParameterKind &k = kind();
    const Dataset *dataset = sourceDataset();
    if (!k.has(ParameterKind::SelectsAll) || !dataset || !dataset->hasColumns())
        return false;
    QList<ColumnId> ids;
    ids.reserve(dataset->columnCount());
    for (int c = 0; c < dataset->columnCount(); ++c) {
        const ColumnId id = dataset->columnId(c);
        if (!id.isNull())
            ids.append(id);
    }
    k.choose(*this, ids);
    return true;
}

bool Parameter::selectOnlyColumn()
{
    const ParameterKind &k = kind();
    const Dataset *dataset = sourceDataset();
    if (!dataset || dataset->columnCount() != 1 || dataset->columnId(0).isNull()
        || !k.has(ParameterKind::SelectsOnly))
        return false;
    k.choose(*this, {dataset->columnId(0)});
    return true;
}

bool Parameter::remapColumnIds(const QHash<ColumnId, ColumnId> &map)
{
    const auto remap = kind().remap;
    if (map.isEmpty() || !remap)
        return false;
    return remap(*this, map);
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
    if (const auto columns = kind().columns)
        return columns(*this);
    QList<ColumnId> ids;
    const QVariantList list = m_value.toList();
    ids.reserve(list.size());
    for (const QVariant &entry : list) {
        const ColumnId id = columnIdFromVariant(entry);
        if (!id.isNull())
            ids.append(id);
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
    if (kind().has(ParameterKind::IndexesByPosition))
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
