#pragma once

#include "data/dataset.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>

// The rules that Verify can check: their table (names, kinds of value, tips, which column types
// offer them, which exclude each other) and the rule set a Verify holds, one list of rules for
// the dataset as a whole and one for each column the user gave rules.
namespace VerifyRules {

enum Severity { Information = 0, Warning = 1, Error = 2, SeverityCount = 3 };

// What a rule's value holds.
enum ValueKind {
    NoValue = 0,
    TextValue = 1,
    ListValue = 2, // texts separated by commas
    RealValue = 3,
    IntValue = 4,
    CountValue = 5, // an integer of 0 or more
    DateValue = 6
};

enum ColumnType { Text = 0, Selection = 1, Real = 2, Integer = 3, Date = 4, ColumnTypeCount = 5 };

// One more than the highest rule number of each table: a rule numbered so checks nothing.
constexpr int DatasetRuleCount = 6;
constexpr int ColumnRuleCount = 54;

// The dataset rules.
enum DatasetRule {
    NoDuplicateColumnNames = 0,
    MinimumColumns = 1,
    MaximumColumns = 2,
    MinimumRows = 3,
    MaximumRows = 4,
    NoEmptyRows = 5
};

// The column rules; the numbers are those of documents.
enum ColumnRule {
    MatchColumnName = 0,
    NumericExceptListed = 1,
    IntegerExceptListed = 2,
    ValidDate = 3,
    NoDuplicateTexts = 4,
    NoIntegerGaps = 5,
    NoDateGaps = 6,
    NoEmptyValues = 7,
    AtLeastOneNonEmpty = 8,
    MinimumReal = 9,
    MaximumReal = 10,
    MinimumInteger = 11,
    MaximumInteger = 12,
    MinimumDate = 13,
    MaximumDate = 14,
    MinimumCharacters = 15,
    MaximumCharacters = 16,
    OnlyListed = 17,
    NotListed = 18,
    RequireListed = 19,
    MatchesRegex = 20,
    StartsWith = 21,
    EndsWith = 22,
    Contains = 23,
    IsLowerCase = 24,
    IsUpperCase = 25,
    IsTitleCase = 26,
    IsSentenceCase = 27,
    IsLocalFolder = 28,
    IsLocalFile = 29,
    IsEmail = 30,
    IsTelephone = 31,
    IsEan13 = 32,
    IsUpcA = 33,
    NoPunctuation = 34,
    NoDigits = 35,
    NoCurrency = 36,
    NoWhitespace = 37,
    NoOuterWhitespace = 38,
    NoTabs = 39,
    NoCarriageReturns = 40,
    NoLineFeeds = 41,
    NoDoubleSpaces = 42,
    NoBlankValues = 43,
    NoSymbols = 44,
    NoNonAscii = 45,
    NoNonPrintable = 46,
    NoDuplicateIntegers = 47,
    NoDuplicateDates = 48,
    IsIsbn = 49,
    IsIban = 50,
    IsGtin = 51,
    IsAsin = 52,
    AllEmptyValues = 53
};

QString severityName(int severity);
QStringList severityNames();
QString columnTypeName(int type);
QStringList columnTypeNames();
// The tip of the entries of the type chooser, which says what each type is for.
QString columnTypesToolTip();

// Marks of dataset rules carry their number plus this, so that the data table, which counts
// a row's marks of both tables together, names each by its own table.
constexpr int DatasetRuleMark = 1000;
// The name of a rule as marked in a dataset's issue tables.
QString markedRuleName(int mark);

// The tables. A number out of range has an empty name, no value and checks nothing.
QString datasetRuleName(int rule);
int datasetRuleKind(int rule);
QString datasetRuleToolTip(int rule);
QString columnRuleName(int rule);
int columnRuleKind(int rule);
QString columnRuleToolTip(int rule);
// Whether the rule is decided only once every row is seen (after the row loop).
bool isDecidedAfterRows(int rule);
// The column rules a type offers, in the order the editor lists them.
const QList<int> &rulesOfType(int type);
bool typeOffers(int type, int rule);
// The column rules that ticking rule unticks.
QList<int> excludedBy(int rule);

// A rule's value as documents write it, and read back for a kind; an unreadable text gives
// the kind's empty value.
QString valueText(int kind, const QVariant &value);
QVariant valueFromText(int kind, const QString &text);
// The value a kind starts with, and a value brought to the kind's type.
QVariant defaultValue(int kind);
QVariant valueOfKind(int kind, const QVariant &value);
// The entries of a list value, in order; an empty text has none.
QStringList listEntries(const QVariant &value);

} // namespace VerifyRules

// One rule: which, its value (of the rule's kind), how severe a fail is, and whether it is
// checked at all. A ticked rule keeps its value and severity when unticked.
struct VerifyRule
{
    int number = 0;
    QVariant value;
    int severity = VerifyRules::Warning;
    bool active = false;

    // number, value, severity, active.
    QVariant toVariant() const;
    // A list of fewer than four entries is the inactive rule past the end of its table
    // (pastEnd), which nothing checks.
    static VerifyRule fromVariant(const QVariant &variant, bool datasetRule);
    friend bool operator==(const VerifyRule &a, const VerifyRule &b)
    {
        return a.number == b.number && a.value == b.value && a.severity == b.severity
            && a.active == b.active;
    }
};

// The rules of one column and the type that decides which rules it offers.
struct VerifyColumn
{
    ColumnId column;
    int type = VerifyRules::Text;
    QList<VerifyRule> rules;

    friend bool operator==(const VerifyColumn &a, const VerifyColumn &b)
    {
        return a.column == b.column && a.type == b.type && a.rules == b.rules;
    }
};

// All the rules of a Verify. Rules and columns keep the order they were first given in.
class VerifyRuleSet
{
public:
    QVariant toVariant() const;
    static VerifyRuleSet fromVariant(const QVariant &variant);

    const QList<VerifyRule> &datasetRules() const { return m_datasetRules; }
    const QList<VerifyColumn> &columns() const { return m_columns; }
    void appendDatasetRule(const VerifyRule &rule);
    // Adds a column, or replaces the column's entry when it has one.
    void setColumn(const VerifyColumn &column);

    // The active dataset rules, in order.
    QList<VerifyRule> activeDatasetRules() const;
    // The columns with active rules that their type offers, in order.
    QList<ColumnId> columnsWithActiveRules() const;
    // The active rules of a column that its type offers, in the order the type lists them.
    QList<VerifyRule> activeRules(ColumnId column) const;
    // The column's type; columns without an entry are Text.
    int columnType(ColumnId column) const;
    int activeDatasetRuleCount() const;
    // Counts only the columns that counted(id) accepts, when given.
    int activeColumnRuleCount(const std::function<bool(ColumnId)> &counted = {}) const;
    // "%1 dataset rule(s) and %2 column rule(s)."
    static QString countText(int datasetRules, int columnRules);

    // Editing, for the rules editor. The rule is made when missing, with the kind's value.
    VerifyRule &datasetRule(int number);
    VerifyRule &columnRule(ColumnId column, int number);
    const VerifyColumn *column(ColumnId column) const;
    void setColumnType(ColumnId column, int type);
    // Ticks or unticks a rule; ticking unticks the rules it excludes.
    void setColumnRuleActive(ColumnId column, int number, bool active);
    void clearActive();
    // Replaces ids found in map (a null mapped id drops the column); true when any changed.
    bool remap(const QHash<ColumnId, ColumnId> &map);

    friend bool operator==(const VerifyRuleSet &a, const VerifyRuleSet &b)
    {
        return a.m_datasetRules == b.m_datasetRules && a.m_columns == b.m_columns;
    }

private:
    VerifyColumn &columnEntry(ColumnId column);

    QList<VerifyRule> m_datasetRules;
    QList<VerifyColumn> m_columns;
};
