#pragma once

#include "transforms/framework/parameterkind.h"

// The operations behind the rows of the kind table, one namespace per shape of value. Kinds
// that hold the same shape share them (Text, Script and LongText are all text). Only
// parameterkind.cpp and the files that define these include this header.

// Helpers shared by the shapes.
namespace ParameterForms {
QString flag(bool on);
bool parseInt(const QString &field, int *out);
// "%1 column(s)" with up to three names of the columns that resolve.
QString columnListSummary(const Parameter &parameter);
bool listIsEmpty(const Parameter &parameter);
// Replaces id through map; a null mapped id clears it. True when id changed.
bool remapId(ColumnId *id, const ColumnIdMap &map);
} // namespace ParameterForms

// Kind 0: one ColumnId.
namespace SingleColumnForm {
QVariant emptyValue();
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
bool isUnset(const Parameter &p);
bool remap(Parameter &p, const ColumnIdMap &map);
QList<ColumnId> columns(const Parameter &p);
void choose(Parameter &p, const QList<ColumnId> &ids);
} // namespace SingleColumnForm

// Kinds 1, 4 and 11: a list of ColumnIds.
namespace ColumnListForm {
QVariant emptyValue();
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
bool remap(Parameter &p, const ColumnIdMap &map);
void choose(Parameter &p, const QList<ColumnId> &ids);
} // namespace ColumnListForm

// Kinds 2 and 22: a list of SortColumns.
namespace SortColumnsForm {
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
bool remap(Parameter &p, const ColumnIdMap &map);
QList<ColumnId> columns(const Parameter &p);
} // namespace SortColumnsForm

// Kind 3: FilterTerms.
namespace FilterForm {
QVariant emptyValue();
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
bool isUnset(const Parameter &p);
bool remap(Parameter &p, const ColumnIdMap &map);
} // namespace FilterForm

// Kind 10: IfTerms.
namespace IfForm {
QVariant emptyValue();
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
bool isUnset(const Parameter &p);
bool remap(Parameter &p, const ColumnIdMap &map);
} // namespace IfForm

// Kind 13: ColumnRenames.
namespace RenameForm {
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
bool remap(Parameter &p, const ColumnIdMap &map);
} // namespace RenameForm

// Kind 14: SplitRowsTerms.
namespace SplitRowsForm {
QVariant emptyValue();
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
bool isUnset(const Parameter &p);
bool remap(Parameter &p, const ColumnIdMap &map);
} // namespace SplitRowsForm

// Kind 15: UniqueColumns.
namespace UniqueForm {
// The texts of the 17 choices a column has, by number: the transform, its tips and the
// widget all name them alike.
QStringList optionTexts();
// What the key columns mean, over the widget and in the tip of the option.
QString keyRuleText();
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
bool isUnset(const Parameter &p);
bool remap(Parameter &p, const ColumnIdMap &map);
} // namespace UniqueForm

// Kind 5.
namespace BoolForm {
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
} // namespace BoolForm

// Kind 6: a text that must be one of the options.
namespace SelectionForm {
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
bool isUnset(const Parameter &p);
} // namespace SelectionForm

// Kinds 6, 7, 12 and 18: free text.
namespace TextForm {
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
bool isUnset(const Parameter &p);
// A script counts as unset when it holds blanks only, whatever textRequired says.
bool isBlank(const Parameter &p);
} // namespace TextForm

// Kind 8.
namespace IntForm {
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
bool isUnset(const Parameter &p);
} // namespace IntForm

// Kind 9.
namespace CharForm {
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
bool isUnset(const Parameter &p);
} // namespace CharForm

// Kind 16: a list of ReplaceTerms.
namespace ReplaceForm {
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
bool isUnset(const Parameter &p);
} // namespace ReplaceForm

// Kind 17.
namespace RealForm {
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
} // namespace RealForm

// Kind 19: the rule set of Verify (VerifyRuleSet), its columns by number.
namespace VerifyRulesForm {
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
bool remap(Parameter &p, const ColumnIdMap &map);
} // namespace VerifyRulesForm

// Kind 20: no value at all.
namespace LabelForm {
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
} // namespace LabelForm

// Kind 21.
namespace DateForm {
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
} // namespace DateForm

// Kind 23.
namespace LocaleForm {
QString write(const Parameter &p);
void read(Parameter &p, const QStringList &fields, const QString &text, int version);
QString summary(const Parameter &p);
} // namespace LocaleForm
