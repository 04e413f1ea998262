#include "transforms/framework/parameterkind.h"

#include "transforms/framework/parameterforms.h"

#include <iterator>

namespace {

using L = ParameterLayout;
using ParameterForms::columnListSummary;
using ParameterForms::listIsEmpty;

constexpr int Column = ParameterKind::ColumnRelated;
constexpr int Hidden = ParameterKind::Hidden;
constexpr int All = ParameterKind::SelectsAll;
constexpr int Only = ParameterKind::SelectsOnly;
constexpr int ByPosition = ParameterKind::IndexesByPosition;

// In ParameterType order. Columns: type, name, flags, layout; emptyValue, write, read;
// summary, isUnset, remap; columns, choose.
constexpr ParameterKind Kinds[] = {
    {ParameterType::SingleColumn, "SingleColumn", Column | Only, L::Row,
     SingleColumnForm::emptyValue, SingleColumnForm::write, SingleColumnForm::read,
     SingleColumnForm::summary, SingleColumnForm::isUnset, SingleColumnForm::remap,
     SingleColumnForm::columns, SingleColumnForm::choose},
    {ParameterType::MultipleColumns, "MultipleColumns", Column | All | Only | ByPosition, L::Block,
     ColumnListForm::emptyValue, ColumnListForm::write, ColumnListForm::read, columnListSummary,
     listIsEmpty, ColumnListForm::remap, nullptr, ColumnListForm::choose},
    {ParameterType::SortColumns, "SortColumns", Column, L::Block, ColumnListForm::emptyValue,
     SortColumnsForm::write, SortColumnsForm::read, columnListSummary, listIsEmpty,
     SortColumnsForm::remap, SortColumnsForm::columns, nullptr},
    {ParameterType::FilterColumns, "FilterColumns", Column, L::Block, FilterForm::emptyValue,
     FilterForm::write, FilterForm::read, FilterForm::summary, FilterForm::isUnset,
     FilterForm::remap, nullptr, nullptr},
    {ParameterType::ReorderColumns, "ReorderColumns", Column, L::Block, ColumnListForm::emptyValue,
     ColumnListForm::write, ColumnListForm::read, columnListSummary, nullptr, ColumnListForm::remap,
     nullptr, nullptr},
    {ParameterType::Bool, "Bool", 0, L::Check, nullptr, BoolForm::write, BoolForm::read,
     BoolForm::summary, nullptr, nullptr, nullptr, nullptr},
    {ParameterType::Selection, "Selection", 0, L::Row, nullptr, TextForm::write,
     SelectionForm::read, TextForm::summary, SelectionForm::isUnset, nullptr, nullptr, nullptr},
    {ParameterType::Text, "Text", 0, L::Row, nullptr, TextForm::write, TextForm::read,
     TextForm::summary, TextForm::isUnset, nullptr, nullptr, nullptr},
    {ParameterType::Int, "Int", 0, L::Row, nullptr, IntForm::write, IntForm::read, IntForm::summary,
     IntForm::isUnset, nullptr, nullptr, nullptr},
    {ParameterType::Char, "Char", 0, L::Row, nullptr, CharForm::write, CharForm::read,
     CharForm::summary, CharForm::isUnset, nullptr, nullptr, nullptr},
    {ParameterType::If, "If", Column, L::Block, IfForm::emptyValue, IfForm::write, IfForm::read,
     IfForm::summary, IfForm::isUnset, IfForm::remap, nullptr, nullptr},
    {ParameterType::MultipleColumnsOrdered, "MultipleColumnsOrdered", Column | All, L::Block,
     ColumnListForm::emptyValue, ColumnListForm::write, ColumnListForm::read, columnListSummary,
     nullptr, ColumnListForm::remap, nullptr, ColumnListForm::choose},
    // A script names columns through its variables, so it is rebound like the column kinds.
    {ParameterType::Script, "Script", Column, L::Block, nullptr, TextForm::write, TextForm::read,
     TextForm::summary, TextForm::isBlank, nullptr, nullptr, nullptr},
    {ParameterType::RenameColumns, "RenameColumns", Column, L::Block, ColumnListForm::emptyValue,
     RenameForm::write, RenameForm::read, RenameForm::summary, nullptr, RenameForm::remap, nullptr,
     nullptr},
    {ParameterType::SplitRows, "SplitRows", Column, L::Block, SplitRowsForm::emptyValue,
     SplitRowsForm::write, SplitRowsForm::read, SplitRowsForm::summary, SplitRowsForm::isUnset,
     SplitRowsForm::remap, nullptr, nullptr},
    {ParameterType::Unique, "Unique", Column, L::Block, ColumnListForm::emptyValue,
     UniqueForm::write, UniqueForm::read, UniqueForm::summary, UniqueForm::isUnset,
     UniqueForm::remap, nullptr, nullptr},
    {ParameterType::ReplaceTerms, "ReplaceTerms", 0, L::Block, nullptr, ReplaceForm::write,
     ReplaceForm::read, ReplaceForm::summary, ReplaceForm::isUnset, nullptr, nullptr, nullptr},
    {ParameterType::Real, "Real", 0, L::Row, nullptr, RealForm::write, RealForm::read,
     RealForm::summary, nullptr, nullptr, nullptr, nullptr},
    {ParameterType::LongText, "LongText", 0, L::Row, nullptr, TextForm::write, TextForm::read,
     TextForm::summary, TextForm::isUnset, nullptr, nullptr, nullptr},
    {ParameterType::VerifyRules, "VerifyRules", Column, L::Block, nullptr, VerifyRulesForm::write,
     VerifyRulesForm::read, VerifyRulesForm::summary, nullptr, VerifyRulesForm::remap, nullptr,
     nullptr},
    {ParameterType::Label, "Label", Hidden, L::Row, nullptr, LabelForm::write, LabelForm::read,
     LabelForm::summary, nullptr, nullptr, nullptr, nullptr},
    {ParameterType::Date, "Date", 0, L::Row, nullptr, DateForm::write, DateForm::read,
     DateForm::summary, nullptr, nullptr, nullptr, nullptr},
    {ParameterType::SortColumnsOrdered, "SortColumnsOrdered", Column, L::Row,
     ColumnListForm::emptyValue, SortColumnsForm::write, SortColumnsForm::read, columnListSummary,
     listIsEmpty, SortColumnsForm::remap, SortColumnsForm::columns, nullptr},
    {ParameterType::Locale, "Locale", 0, L::Row, nullptr, LocaleForm::write, LocaleForm::read,
     LocaleForm::summary, nullptr, nullptr, nullptr, nullptr},
};

constexpr bool rowsInTypeOrder()
{
    for (int i = 0; i < int(std::size(Kinds)); ++i) {
        if (int(Kinds[i].type) != i)
            return false;
    }
    return true;
}

// Every kind is written, read and summarised; the other operations may be left out, but a
// kind that selects columns must say how its value holds them.
constexpr bool rowsComplete()
{
    for (const ParameterKind &kind : Kinds) {
        if (!kind.write || !kind.read || !kind.summary)
            return false;
        const bool selects
            = kind.has(ParameterKind::SelectsAll) || kind.has(ParameterKind::SelectsOnly);
        if (selects && !kind.choose)
            return false;
    }
    return true;
}

static_assert(std::size(Kinds) == ParameterKindCount, "one row a kind");
static_assert(rowsInTypeOrder(), "rows in ParameterType order");
static_assert(rowsComplete(), "every row can be written, read, summarised and chosen");

} // namespace

const ParameterKind &ParameterKind::of(ParameterType type)
{
    Q_ASSERT(int(type) >= 0 && int(type) < ParameterKindCount);
    return Kinds[int(type)];
}
