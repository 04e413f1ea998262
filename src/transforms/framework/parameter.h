#pragma once

#include "data/dataset.h"

#include <QChar>
#include <QDate>
#include <QHash>
#include <QList>
#include <QLocale>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstddef>

class ColumnSource;

// The kinds of option. The numbers are written in documents and must never change.
enum class ParameterType {
    SingleColumn = 0,
    MultipleColumns = 1,
    SortColumns = 2,
    FilterColumns = 3,
    ReorderColumns = 4,
    Bool = 5,
    Selection = 6,
    Text = 7,
    Int = 8,
    Char = 9,
    If = 10,
    MultipleColumnsOrdered = 11,
    Script = 12,
    RenameColumns = 13,
    SplitRows = 14,
    Unique = 15,
    ReplaceTerms = 16,
    Real = 17,
    LongText = 18,
    VerifyRules = 19,
    Label = 20,
    Date = 21,
    SortColumnsOrdered = 22,
    Locale = 23
};

// How the Right pane places an option's widget.
enum class ParameterLayout { Row, Check, Block };

// The format version that documents are written with.
constexpr int CurrentDocumentVersion = 81;

// A ColumnId inside a QVariant is a list of two ints, so that values nest in plain lists.
QVariant columnIdToVariant(ColumnId id);
ColumnId columnIdFromVariant(const QVariant &variant);

struct SortColumn
{
    ColumnId id;
    bool ascending = true;

    QVariant toVariant() const;
    static SortColumn fromVariant(const QVariant &variant);
    friend bool operator==(const SortColumn &a, const SortColumn &b)
    {
        return a.id == b.id && a.ascending == b.ascending;
    }
};

// One condition; a null column means "any column".
struct FilterTerm
{
    ColumnId column;
    int op = 0;
    QString value;

    QVariant toVariant() const;
    static FilterTerm fromVariant(const QVariant &variant);
    friend bool operator==(const FilterTerm &a, const FilterTerm &b)
    {
        return a.column == b.column && a.op == b.op && a.value == b.value;
    }
};

struct FilterTerms
{
    bool keep = true;
    bool matchAny = false;
    QList<FilterTerm> terms;

    QVariant toVariant() const;
    static FilterTerms fromVariant(const QVariant &variant);
    friend bool operator==(const FilterTerms &a, const FilterTerms &b)
    {
        return a.keep == b.keep && a.matchAny == b.matchAny && a.terms == b.terms;
    }
};

// The terms of a branch are ANDed.
struct IfBranch
{
    QList<FilterTerm> terms;
    QString thenValue;

    QVariant toVariant() const;
    static IfBranch fromVariant(const QVariant &variant);
    friend bool operator==(const IfBranch &a, const IfBranch &b)
    {
        return a.terms == b.terms && a.thenValue == b.thenValue;
    }
};

struct IfTerms
{
    QList<IfBranch> branches;
    QString elseValue;

    QVariant toVariant() const;
    static IfTerms fromVariant(const QVariant &variant);
    friend bool operator==(const IfTerms &a, const IfTerms &b)
    {
        return a.branches == b.branches && a.elseValue == b.elseValue;
    }
};

struct ReplaceTerm
{
    int matchType = 0;
    QString from;
    QString to;

    QVariant toVariant() const;
    static ReplaceTerm fromVariant(const QVariant &variant);
    friend bool operator==(const ReplaceTerm &a, const ReplaceTerm &b)
    {
        return a.matchType == b.matchType && a.from == b.from && a.to == b.to;
    }
};

struct SplitRowsTerms
{
    bool splitByName = false;
    bool automatic = false;
    int every = 1;
    ColumnId nameColumn;
    int times = 0;
    QString text;

    QVariant toVariant() const;
    static SplitRowsTerms fromVariant(const QVariant &variant);
    friend bool operator==(const SplitRowsTerms &a, const SplitRowsTerms &b)
    {
        return a.splitByName == b.splitByName && a.automatic == b.automatic && a.every == b.every
            && a.nameColumn == b.nameColumn && a.times == b.times && a.text == b.text;
    }
};

// New names by column; columns that keep their name are absent.
using ColumnRenames = QHash<ColumnId, QString>;
// Aggregate option by column; 0 marks a key column ("Keep unique").
using UniqueColumns = QHash<ColumnId, int>;

QVariant columnRenamesToVariant(const ColumnRenames &renames);
ColumnRenames columnRenamesFromVariant(const QVariant &variant);
QVariant uniqueColumnsToVariant(const UniqueColumns &columns);
UniqueColumns uniqueColumnsFromVariant(const QVariant &variant);

struct ParameterKind;

// One option of a transform: its kind, key, caption, value and presentation hints. Options
// that name columns hold ColumnIds of the dataset of sourceNode, so that they follow columns
// through renames and moves; documents store column numbers instead, which are turned back
// into ids (resolvePendingText) only once that dataset exists.
class Parameter
{
public:
    static constexpr int UniqueKeepUnique = 0;
    static constexpr int UniqueKeepFirst = 1;

    Parameter(ParameterType type, const QString &key, const QString &label,
              const QVariant &value = QVariant(), const QVariant &options = QVariant());
    Parameter(ParameterType type, const QString &key, const QString &label,
              ColumnSource *sourceNode);
    // Without these overloads a literal 0 would choose the source pointer, a string literal the
    // bool and a char the int.
    Parameter(ParameterType type, const QString &key, const QString &label, int value,
              const QVariant &options = QVariant())
        : Parameter(type, key, label, QVariant(value), options)
    { }
    Parameter(ParameterType type, const QString &key, const QString &label, bool value,
              const QVariant &options = QVariant())
        : Parameter(type, key, label, QVariant(value), options)
    { }
    Parameter(ParameterType type, const QString &key, const QString &label, double value,
              const QVariant &options = QVariant())
        : Parameter(type, key, label, QVariant(value), options)
    { }
    Parameter(ParameterType type, const QString &key, const QString &label, char value,
              const QVariant &options = QVariant())
        : Parameter(type, key, label, QVariant(QChar::fromLatin1(value)), options)
    { }
    Parameter(ParameterType type, const QString &key, const QString &label, const char *value,
              const QVariant &options = QVariant())
        : Parameter(type, key, label, QVariant(QString::fromUtf8(value)), options)
    { }
    Parameter(ParameterType type, const QString &key, const QString &label, std::nullptr_t)
        : Parameter(type, key, label, static_cast<ColumnSource *>(nullptr))
    { }
    ~Parameter() = default;

    Parameter *clone() const;

    static bool isColumnRelatedType(ParameterType type);
    static ParameterLayout layoutFor(ParameterType type);
    // Document text helpers: fields joined by U+001F, free text percent-encoded.
    static QStringList splitFields(const QString &text);
    static QString joinFields(const QStringList &fields);
    static QString encodeText(const QString &text);
    static QString decodeText(const QString &field);

    // Fields
    ParameterType type() const { return m_type; }
    const QString &key() const { return m_key; }
    void setKey(const QString &key) { m_key = key; }
    const QString &label() const { return m_label; }
    void setLabel(const QString &label) { m_label = label; }
    int pendingVersion() const { return m_pendingVersion; }
    bool hasPendingText() const { return m_hasPendingText; }
    const QString &pendingText() const { return m_pendingText; }
    const QVariant &value() const { return m_value; }
    void setValue(const QVariant &value) { m_value = value; }
    const QVariant &options() const { return m_options; }
    void setOptions(const QVariant &options) { m_options = options; }
    int minimumInt() const { return m_minimumInt; }
    void setMinimumInt(int minimum) { m_minimumInt = minimum; }
    const QString &suffix() const { return m_suffix; }
    void setSuffix(const QString &suffix) { m_suffix = suffix; }
    int maximumInt() const { return m_maximumInt; }
    void setMaximumInt(int maximum) { m_maximumInt = maximum; }
    double minimumReal() const { return m_minimumReal; }
    void setMinimumReal(double minimum) { m_minimumReal = minimum; }
    double maximumReal() const { return m_maximumReal; }
    void setMaximumReal(double maximum) { m_maximumReal = maximum; }
    // What an Int option shows instead of its minimum, which then stands for a choice rather
    // than a number ("Guess"); empty for a plain number.
    const QString &specialValueText() const { return m_specialValueText; }
    void setSpecialValueText(const QString &text) { m_specialValueText = text; }
    const QString &toolTip() const { return m_toolTip; }
    void setToolTip(const QString &toolTip) { m_toolTip = toolTip; }
    // One tip for each choice of a Selection, in the order of its options.
    const QStringList &choiceToolTips() const { return m_choiceToolTips; }
    void setChoiceToolTips(const QStringList &tips) { m_choiceToolTips = tips; }
    ColumnSource *sourceNode() const { return m_sourceNode; }
    void setSourceNode(ColumnSource *node) { m_sourceNode = node; }
    const QString &helpText() const { return m_helpText; }
    void setHelpText(const QString &helpText) { m_helpText = helpText; }
    bool warnWhenSet() const { return m_warnWhenSet; }
    void setWarnWhenSet(bool on) { m_warnWhenSet = on; }
    bool textRequired() const { return m_textRequired; }
    void setTextRequired(bool on) { m_textRequired = on; }
    bool intRequired() const { return m_intRequired; }
    void setIntRequired(bool on) { m_intRequired = on; }
    const QString &noneText() const { return m_noneText; }
    void setNoneText(const QString &text) { m_noneText = text; }
    bool columnRequired() const { return m_columnRequired; }
    void setColumnRequired(bool on) { m_columnRequired = on; }
    bool editable() const { return m_editable; }
    void setEditable(bool on) { m_editable = on; }
    bool selectionRequired() const { return m_selectionRequired; }
    void setSelectionRequired(bool on) { m_selectionRequired = on; }
    bool remembered() const { return m_remembered; }
    void setRemembered(bool on) { m_remembered = on; }

    // Document text
    void setPendingText(const QString &text, int version);
    void clearPendingText();
    bool resolvePendingText();
    void fromText(const QString &text, int version = CurrentDocumentVersion);
    QString toText() const;

    QString summary() const;
    bool isUnset() const;
    bool isColumnRelated() const { return isColumnRelatedType(m_type); }
    bool isDisplayed() const;
    // What the kind of this option does; see parameterkind.h.
    const ParameterKind &kind() const;

    bool selectAllColumns();
    bool selectOnlyColumn();
    bool remapColumnIds(const QHash<ColumnId, ColumnId> &map);

    // The dataset that column references resolve against; null without a source.
    const Dataset *sourceDataset() const;

    // Typed getters
    bool toBool() const { return m_value.toBool(); }
    int toInt() const { return m_value.toInt(); }
    double toReal() const { return m_value.toDouble(); }
    QChar toChar() const;
    QDate toDate() const;
    // The text of Text, LongText, Script and Selection options (toText() is the document form).
    QString toString() const { return m_value.toString(); }
    int toSelectionIndex() const;
    QLocale toLocale() const;
    ColumnId toColumnId() const;
    QList<ColumnId> toColumns() const;
    QList<SortColumn> toSortColumns() const;
    FilterTerms toFilterTerms() const;
    IfTerms toIfTerms() const;
    QList<ReplaceTerm> toReplaceTerms() const;
    SplitRowsTerms toSplitRowsTerms() const;
    ColumnRenames toRenameColumns() const;
    UniqueColumns toUniqueColumns() const;
    int toColumnIndex() const;
    bool toColumnIndexes(QList<int> *out, bool dropMissing) const;
    QList<int> columnIndexes(bool dropMissing = true) const;
    // Positions and directions of the sort columns that resolve, in the value's order.
    QList<QPair<int, bool>> toSortIndexes() const;
    // Column references against the source's dataset: the position of an id (-1 when it
    // doesn't resolve), its one-based number as documents write it (0 when it doesn't
    // resolve), and the id at a number (null when out of range).
    int columnPosition(ColumnId id) const;
    int columnNumber(ColumnId id) const;
    ColumnId columnAt(int number) const;

    // Typed setters
    void setColumnId(ColumnId id) { m_value = columnIdToVariant(id); }
    void setColumns(const QList<ColumnId> &ids);
    void setSortColumns(const QList<SortColumn> &columns);
    void setFilterTerms(const FilterTerms &terms) { m_value = terms.toVariant(); }
    void setIfTerms(const IfTerms &terms) { m_value = terms.toVariant(); }
    void setReplaceTerms(const QList<ReplaceTerm> &terms);
    void setSplitRowsTerms(const SplitRowsTerms &terms) { m_value = terms.toVariant(); }
    void setRenameColumns(const ColumnRenames &renames)
    {
        m_value = columnRenamesToVariant(renames);
    }
    void setUniqueColumns(const UniqueColumns &columns)
    {
        m_value = uniqueColumnsToVariant(columns);
    }

private:
    Parameter(const Parameter &) = default;
    Parameter &operator=(const Parameter &) = delete;

    void initialiseColumns();

    ParameterType m_type;
    QString m_key;
    QString m_label;
    int m_pendingVersion = -1;
    bool m_hasPendingText = false;
    QString m_pendingText;
    QVariant m_value;
    QVariant m_options;
    int m_minimumInt = 0;
    QString m_suffix;
    int m_maximumInt = 999999999;
    double m_minimumReal = 0.0;
    double m_maximumReal = 100.0;
    QString m_specialValueText;
    QString m_toolTip;
    QStringList m_choiceToolTips;
    ColumnSource *m_sourceNode = nullptr;
    QString m_helpText;
    bool m_warnWhenSet = false;
    bool m_textRequired = true;
    bool m_intRequired = false;
    QString m_noneText = QStringLiteral("<None selected>");
    bool m_columnRequired = true;
    bool m_editable = true;
    bool m_selectionRequired = false;
    bool m_remembered = false;
};
