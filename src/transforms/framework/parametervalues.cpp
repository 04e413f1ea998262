#include "transforms/framework/parameter.h"

#include <algorithm>

// The structured values of options and how each nests in a QVariant.

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
