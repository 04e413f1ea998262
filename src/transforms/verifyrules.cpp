#include "transforms/verifyrules.h"

#include "transforms/framework/parameter.h"

#include <QDate>
#include <QLocale>

#include <algorithm>
#include <iterator>

namespace VerifyRules {

namespace {

const char *const CaseNote
    = "\nMatching is sensitive to whitespace (and case, if 'case sensitive' is checked).";

struct RuleRow
{
    const char *name;
    int kind;
    bool after; // decided once every row is seen
    const char *toolTip;
    bool caseNote; // the tip ends with CaseNote
};

// In rule number order.
constexpr RuleRow DatasetRows[] = {
    {"No duplicate col names", NoValue, true,
     "Verify that no 2 column names in the dataset are the same.", true},
    {"Minimum number of cols", IntValue, true,
     "Verify the minimum number of columns in the dataset.", false},
    {"Maximum number of cols", IntValue, true,
     "Verify the maximum number of columns in the dataset.", false},
    {"Minimum number of rows", IntValue, true, "Verify the minimum number of rows in the dataset.",
     false},
    {"Maximum number of rows", IntValue, true, "Verify the maximum number of rows in the dataset.",
     false},
    {"No empty rows", NoValue, true,
     "Verify that no rows in the dataset has an empty value for every column.\nA value "
     "containing whitespace is not considered empty.",
     false},
};

constexpr RuleRow ColumnRows[] = {
    {"Match column name", TextValue, true, "Verify that column has the expected name.", true},
    {"Numeric except listed", ListValue, false,
     "Verify that every value is a number, or one of the values listed (separated by commas).",
     true},
    {"Integer except listed", ListValue, false,
     "Verify that every value is an integer, or one of the values listed (separated by commas).",
     true},
    {"Valid date in format", TextValue, false,
     "Verify that every value is a valid date in this format, e.g. 'dd/MM/yyyy'.\nWithout a "
     "format, one is inferred from the values.",
     false},
    {"No duplicate values", NoValue, true,
     "Verify that no value occurs more than once.\nMatches as text.", true},
    {"No gaps in values", NoValue, true,
     "Verify that no integer between the smallest and the largest value is missing.", false},
    {"No gaps in values", NoValue, true,
     "Verify that no day between the earliest and the latest date is missing.", false},
    {"No empty values", NoValue, false,
     "Verify that no value is empty.\nA value containing whitespace is not considered empty.",
     false},
    {"At least 1 non-empty", NoValue, true, "Verify that at least 1 value is not empty.", false},
    {"Minimum value", RealValue, false,
     "Verify that every number is at least this value.\nValues that are not numbers are "
     "ignored.",
     false},
    {"Maximum value", RealValue, false,
     "Verify that every number is at most this value.\nValues that are not numbers are ignored.",
     false},
    {"Minimum value", IntValue, false,
     "Verify that every integer is at least this value.\nValues that are not integers are "
     "ignored.",
     false},
    {"Maximum value", IntValue, false,
     "Verify that every integer is at most this value.\nValues that are not integers are "
     "ignored.",
     false},
    {"Minimum value", DateValue, false,
     "Verify that every date is on or after this date.\nValues that are not dates are ignored.",
     false},
    {"Maximum value", DateValue, false,
     "Verify that every date is on or before this date.\nValues that are not dates are ignored.",
     false},
    {"Minimum characters", CountValue, false,
     "Verify that every value has at least this number of characters.\nWhitespace counts.", false},
    {"Maximum characters", CountValue, false,
     "Verify that every value has at most this number of characters.\nWhitespace counts.", false},
    {"Only allow listed values", ListValue, false,
     "Verify that every value is one of the values listed (separated by commas).", true},
    {"Don't allow listed values", ListValue, false,
     "Verify that no value is one of the values listed (separated by commas).", true},
    {"Require listed values", ListValue, true,
     "Verify that every value listed (separated by commas) occurs at least once.", true},
    {"Matches regex", TextValue, false, "Verify that every value matches this regular expression.",
     true},
    {"Starts with", TextValue, false, "Verify that every value starts with this text.", true},
    {"Ends with", TextValue, false, "Verify that every value ends with this text.", true},
    {"Contains", TextValue, false, "Verify that every value contains this text.", true},
    {"Is lower case", NoValue, false, "Verify that every value is lower case.", false},
    {"Is upper case", NoValue, false, "Verify that every value is upper case.", false},
    {"Is title case", NoValue, false,
     "Verify that every value is title case, e.g. 'The Quick Brown Fox'.", false},
    {"Is sentence case", NoValue, false,
     "Verify that every value is sentence case, e.g. 'The quick brown fox'.", false},
    {"Is local folder", NoValue, false,
     "Verify that every value is the path of an existing folder on this computer.", false},
    {"Is local file", NoValue, false,
     "Verify that every value is the path of an existing file on this computer.", false},
    {"Is valid email", NoValue, false, "Verify that every value is a valid email address.", false},
    {"Is valid telephone num.", NoValue, false,
     "Verify that every value is a valid telephone number, e.g. '(555) 123-4567' or "
     "'+1 555 123 4567'.",
     false},
    {"Is valid EAN13", NoValue, false,
     "Verify that every value is a valid EAN-13 number, check digit included.", false},
    {"Is valid UPC-A", NoValue, false,
     "Verify that every value is a valid UPC-A number, check digit included.", false},
    {"No punctuation", NoValue, false, "Verify that no value contains punctuation.", false},
    {"No digits", NoValue, false, "Verify that no value contains digits.", false},
    {"No currency", NoValue, false, "Verify that no value contains currency symbols.", false},
    {"No whitespace", NoValue, false,
     "Verify that no value contains whitespace (Spaces, Tabs, Carriage Returns, Line Feeds "
     "etc).",
     false},
    {"No leading/trailing whitespace", NoValue, false,
     "Verify that no value starts or ends with whitespace.", false},
    {"No Tab characters", NoValue, false, "Verify that no value contains Tab characters.", false},
    {"No Carriage Returns", NoValue, false, "Verify that no value contains Carriage Returns.",
     false},
    {"No Line Feeds", NoValue, false, "Verify that no value contains Line Feeds.", false},
    {"No double Spaces", NoValue, false, "Verify that no value contains 2 or more Spaces in a row.",
     false},
    {"No blank values", NoValue, false,
     "Verify that no value is made of whitespace only.\nAn empty value is not blank.", false},
    {"No symbols", NoValue, false,
     "Verify that no value contains symbols, such as '+', '©' or '€'.", false},
    {"No non-ASCII", NoValue, false,
     "Verify that no value contains characters above code 255.\nAccented letters such as 'é' "
     "are allowed.",
     false},
    {"No non-printable", NoValue, false, "Verify that no value contains non-printable characters.",
     false},
    {"No duplicate values", NoValue, true,
     "Verify that no value occurs more than once.\nMatches as integers.\nE.g. '1', '+1', ' 1' "
     "and '01' are duplicates.",
     false},
    {"No duplicate values", NoValue, true,
     "Verify that no value occurs more than once.\nMatches as dates.\nE.g. '01/01/2000' and "
     "'1/1/2000' are duplicates.",
     false},
    {"Is valid ISBN", NoValue, false,
     "Verify that every value is a valid ISBN-10 or ISBN-13, check digit included.", false},
    {"Is valid IBAN", NoValue, false,
     "Verify that every value is a valid International Bank Account Number (IBAN).\nLower case "
     "letters fail if 'case sensitive' is checked.",
     false},
    {"Is valid GTIN", NoValue, false,
     "Verify that every value is a valid GTIN-8, GTIN-12, GTIN-13 or GTIN-14, check digit "
     "included.",
     false},
    {"Is valid ASIN", NoValue, false,
     "Verify that every value is a valid Amazon Standard Identification Number of 10 letters "
     "and digits.\nLower case letters fail if 'case sensitive' is checked.",
     false},
    {"All empty values", NoValue, false,
     "Verify that every value is empty.\nA value containing whitespace is not considered empty.",
     false},
};

static_assert(std::size(DatasetRows) == DatasetRuleCount, "one row a dataset rule");
static_assert(std::size(ColumnRows) == ColumnRuleCount, "one row a column rule");

const RuleRow *datasetRow(int rule)
{
    return rule >= 0 && rule < DatasetRuleCount ? &DatasetRows[rule] : nullptr;
}

const RuleRow *columnRow(int rule)
{
    return rule >= 0 && rule < ColumnRuleCount ? &ColumnRows[rule] : nullptr;
}

QString toolTipOf(const RuleRow *row)
{
    if (!row)
        return QString();
    QString tip = QString::fromUtf8(row->toolTip);
    if (row->caseNote)
        tip += QString::fromLatin1(CaseNote);
    return tip;
}

const QList<int> FormatRules = {IsLocalFolder, IsLocalFile, IsEmail, IsTelephone, IsEan13,
                                IsUpcA,        IsIsbn,      IsIban,  IsGtin,      IsAsin};
const QList<int> WhitespaceRules
    = {NoOuterWhitespace, NoTabs, NoCarriageReturns, NoLineFeeds, NoDoubleSpaces, NoBlankValues};

} // namespace

QString severityName(int severity)
{
    return severityNames().value(severity);
}

QStringList severityNames()
{
    return {QStringLiteral("Information"), QStringLiteral("Warning"), QStringLiteral("Error")};
}

QString columnTypeName(int type)
{
    return columnTypeNames().value(type);
}

QStringList columnTypeNames()
{
    return {QStringLiteral("Text"), QStringLiteral("Selection"), QStringLiteral("Numeric (real)"),
            QStringLiteral("Numeric (integer)"), QStringLiteral("Date")};
}

QString columnTypesToolTip()
{
    const QStringList names = columnTypeNames();
    return QStringLiteral("Set the expected type for this column. Use:\n'%1' if free format text "
                          "is expected.\n'%2' if one of a few fixed values is expected.\n'%3' if "
                          "decimal numbers are expected.\n'%4' if whole numbers are "
                          "expected.\n'%5' if dates are expected.")
        .arg(names.at(0), names.at(1), names.at(2), names.at(3), names.at(4));
}

QString datasetRuleName(int rule)
{
    const RuleRow *row = datasetRow(rule);
    return row ? QString::fromLatin1(row->name) : QString();
}

int datasetRuleKind(int rule)
{
    const RuleRow *row = datasetRow(rule);
    return row ? row->kind : NoValue;
}

QString datasetRuleToolTip(int rule)
{
    return toolTipOf(datasetRow(rule));
}

QString markedRuleName(int mark)
{
    return mark >= DatasetRuleMark ? datasetRuleName(mark - DatasetRuleMark) : columnRuleName(mark);
}

QString columnRuleName(int rule)
{
    const RuleRow *row = columnRow(rule);
    return row ? QString::fromLatin1(row->name) : QString();
}

int columnRuleKind(int rule)
{
    const RuleRow *row = columnRow(rule);
    return row ? row->kind : NoValue;
}

QString columnRuleToolTip(int rule)
{
    return toolTipOf(columnRow(rule));
}

bool isDecidedAfterRows(int rule)
{
    const RuleRow *row = columnRow(rule);
    return row && row->after;
}

const QList<int> &rulesOfType(int type)
{
    static const QList<int> types[ColumnTypeCount] = {
        {0,  4,  7,  8,  53, 24, 25, 26, 27, 15, 16, 18, 19, 20, 21, 22, 23, 28, 29, 30,
         31, 32, 33, 49, 50, 51, 52, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43, 44, 45, 46},
        {0, 17, 19},
        {0, 1, 7, 8, 53, 9, 10, 15, 16, 21, 22, 23, 37},
        {0, 2, 47, 5, 7, 8, 53, 11, 12, 15, 16, 19, 21, 22, 23, 31, 32, 33, 49, 37},
        {0, 3, 48, 6, 7, 8, 53, 13, 14, 15, 16, 37},
    };
    static const QList<int> none;
    return type >= 0 && type < ColumnTypeCount ? types[type] : none;
}

bool typeOffers(int type, int rule)
{
    return rulesOfType(type).contains(rule);
}

QList<int> excludedBy(int rule)
{
    auto without = [](QList<int> rules, int rule) {
        rules.removeAll(rule);
        return rules;
    };
    switch (rule) {
    case MatchColumnName:
        return {};
    case AllEmptyValues: {
        QList<int> all;
        for (int other = 0; other < ColumnRuleCount; ++other) {
            if (other != MatchColumnName && other != AllEmptyValues)
                all.append(other);
        }
        return all;
    }
    case NoEmptyValues:
        return {AtLeastOneNonEmpty, MinimumCharacters, AllEmptyValues};
    case AtLeastOneNonEmpty:
        return {NoEmptyValues, MinimumCharacters, AllEmptyValues};
    case MinimumCharacters:
        return {NoEmptyValues, AtLeastOneNonEmpty, AllEmptyValues};
    case MatchesRegex:
        return {StartsWith, EndsWith, Contains, AllEmptyValues};
    case StartsWith:
    case EndsWith:
    case Contains:
        return {MatchesRegex, AllEmptyValues};
    case IsLowerCase:
        return {IsUpperCase, AllEmptyValues};
    case IsUpperCase:
        return {IsLowerCase, AllEmptyValues};
    case IsTitleCase:
        return {IsLowerCase, IsUpperCase, AllEmptyValues};
    case IsSentenceCase:
        return {IsLowerCase, IsUpperCase, IsTitleCase, AllEmptyValues};
    case NoWhitespace:
        return WhitespaceRules + QList<int> {AllEmptyValues};
    default:
        break;
    }
    if (WhitespaceRules.contains(rule))
        return {NoWhitespace, AllEmptyValues};
    if (FormatRules.contains(rule))
        return without(FormatRules, rule) + QList<int> {AllEmptyValues};
    return {AllEmptyValues};
}

QString valueText(int kind, const QVariant &value)
{
    switch (kind) {
    case TextValue:
    case ListValue:
        return value.toString();
    case RealValue:
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case IntValue:
    case CountValue:
        return QString::number(value.toInt());
    case DateValue:
        return value.toDate().toString(Qt::ISODate);
    default:
        return QString();
    }
}

QVariant valueFromText(int kind, const QString &text)
{
    bool ok = false;
    switch (kind) {
    case TextValue:
    case ListValue:
        return text;
    case RealValue: {
        const double number = text.toDouble(&ok);
        return ok ? QVariant(number) : defaultValue(kind);
    }
    case IntValue:
    case CountValue: {
        const int number = text.toInt(&ok);
        return ok ? QVariant(kind == CountValue ? qMax(0, number) : number) : defaultValue(kind);
    }
    case DateValue: {
        const QDate date = QDate::fromString(text, Qt::ISODate);
        return date.isValid() ? QVariant(date) : defaultValue(kind);
    }
    default:
        return QVariant();
    }
}

QVariant defaultValue(int kind)
{
    switch (kind) {
    case TextValue:
    case ListValue:
        return QString();
    case RealValue:
        return 0.0;
    case IntValue:
    case CountValue:
        return 0;
    case DateValue:
        return QDate(2000, 1, 1);
    default:
        return QVariant();
    }
}

QVariant valueOfKind(int kind, const QVariant &value)
{
    if (!value.isValid())
        return defaultValue(kind);
    switch (kind) {
    case TextValue:
    case ListValue:
        return value.toString();
    case RealValue:
        return value.toDouble();
    case IntValue:
        return value.toInt();
    case CountValue:
        return qMax(0, value.toInt());
    case DateValue: {
        const QDate date = value.type() == QVariant::Date
            ? value.toDate()
            : QDate::fromString(value.toString(), Qt::ISODate);
        return date.isValid() ? QVariant(date) : defaultValue(kind);
    }
    default:
        return QVariant();
    }
}

QStringList listEntries(const QVariant &value)
{
    const QString text = value.toString();
    return text.isEmpty() ? QStringList() : text.split(QLatin1Char(','));
}

} // namespace VerifyRules

using namespace VerifyRules;

QVariant VerifyRule::toVariant() const
{
    return QVariantList {number, value, severity, active};
}

VerifyRule VerifyRule::fromVariant(const QVariant &variant, bool datasetRule)
{
    const QVariantList list = variant.toList();
    VerifyRule rule;
    if (list.size() < 4) {
        rule.number = datasetRule ? DatasetRuleCount : ColumnRuleCount;
        return rule;
    }
    rule.number = list.at(0).toInt();
    const int kind = datasetRule ? datasetRuleKind(rule.number) : columnRuleKind(rule.number);
    rule.value = valueOfKind(kind, list.at(1));
    rule.severity = qBound(int(Information), list.at(2).toInt(), int(Error));
    rule.active = list.at(3).toBool();
    return rule;
}

QVariant VerifyRuleSet::toVariant() const
{
    QVariantList datasetRules;
    for (const VerifyRule &rule : m_datasetRules)
        datasetRules.append(rule.toVariant());
    QVariantList columns;
    for (const VerifyColumn &column : m_columns) {
        QVariantList rules;
        for (const VerifyRule &rule : column.rules)
            rules.append(rule.toVariant());
        columns.append(QVariant(
            QVariantList {columnIdToVariant(column.column), column.type, QVariant(rules)}));
    }
    return QVariantList {QVariant(datasetRules), QVariant(columns)};
}

VerifyRuleSet VerifyRuleSet::fromVariant(const QVariant &variant)
{
    VerifyRuleSet set;
    const QVariantList parts = variant.toList();
    const QVariantList datasetRules = parts.value(0).toList();
    for (const QVariant &rule : datasetRules)
        set.appendDatasetRule(VerifyRule::fromVariant(rule, true));
    const QVariantList columns = parts.value(1).toList();
    for (const QVariant &entry : columns) {
        const QVariantList fields = entry.toList();
        VerifyColumn column;
        column.column = columnIdFromVariant(fields.value(0));
        if (column.column.isNull())
            continue;
        column.type = qBound(0, fields.value(1).toInt(), ColumnTypeCount - 1);
        const QVariantList rules = fields.value(2).toList();
        for (const QVariant &rule : rules)
            column.rules.append(VerifyRule::fromVariant(rule, false));
        set.setColumn(column);
    }
    return set;
}

void VerifyRuleSet::appendDatasetRule(const VerifyRule &rule)
{
    // A later entry for the same rule replaces the earlier; rules past the table are kept
    // apart, as they stand for nothing a later one could mean.
    if (rule.number >= 0 && rule.number < DatasetRuleCount) {
        for (VerifyRule &existing : m_datasetRules) {
            if (existing.number == rule.number) {
                existing = rule;
                return;
            }
        }
    }
    m_datasetRules.append(rule);
}

void VerifyRuleSet::setColumn(const VerifyColumn &column)
{
    for (VerifyColumn &existing : m_columns) {
        if (existing.column == column.column) {
            existing = column;
            return;
        }
    }
    m_columns.append(column);
}

QList<VerifyRule> VerifyRuleSet::activeDatasetRules() const
{
    QList<VerifyRule> active;
    for (const VerifyRule &rule : m_datasetRules) {
        if (rule.active && rule.number >= 0 && rule.number < DatasetRuleCount)
            active.append(rule);
    }
    std::stable_sort(active.begin(), active.end(),
                     [](const VerifyRule &a, const VerifyRule &b) { return a.number < b.number; });
    return active;
}

QList<ColumnId> VerifyRuleSet::columnsWithActiveRules() const
{
    QList<ColumnId> columns;
    for (const VerifyColumn &column : m_columns) {
        if (!activeRules(column.column).isEmpty())
            columns.append(column.column);
    }
    return columns;
}

QList<VerifyRule> VerifyRuleSet::activeRules(ColumnId id) const
{
    QList<VerifyRule> active;
    const VerifyColumn *entry = column(id);
    if (!entry)
        return active;
    // Rules of another type stay in the set, so that going back to it brings them back, but
    // only those of the column's type are checked.
    for (int number : rulesOfType(entry->type)) {
        for (const VerifyRule &rule : entry->rules) {
            if (rule.number == number && rule.active) {
                active.append(rule);
                break;
            }
        }
    }
    return active;
}

int VerifyRuleSet::columnType(ColumnId id) const
{
    const VerifyColumn *entry = column(id);
    return entry ? entry->type : Text;
}

int VerifyRuleSet::activeDatasetRuleCount() const
{
    return activeDatasetRules().size();
}

int VerifyRuleSet::activeColumnRuleCount(const std::function<bool(ColumnId)> &counted) const
{
    int count = 0;
    for (const VerifyColumn &entry : m_columns) {
        if (!counted || counted(entry.column))
            count += activeRules(entry.column).size();
    }
    return count;
}

QString VerifyRuleSet::countText(int datasetRules, int columnRules)
{
    return QStringLiteral("%1 dataset rule(s) and %2 column rule(s).")
        .arg(QLocale().toString(datasetRules), QLocale().toString(columnRules));
}

VerifyRule &VerifyRuleSet::datasetRule(int number)
{
    for (VerifyRule &rule : m_datasetRules) {
        if (rule.number == number)
            return rule;
    }
    VerifyRule rule;
    rule.number = number;
    rule.value = defaultValue(datasetRuleKind(number));
    m_datasetRules.append(rule);
    return m_datasetRules.last();
}

VerifyColumn &VerifyRuleSet::columnEntry(ColumnId id)
{
    for (VerifyColumn &entry : m_columns) {
        if (entry.column == id)
            return entry;
    }
    VerifyColumn entry;
    entry.column = id;
    m_columns.append(entry);
    return m_columns.last();
}

VerifyRule &VerifyRuleSet::columnRule(ColumnId id, int number)
{
    VerifyColumn &entry = columnEntry(id);
    for (VerifyRule &rule : entry.rules) {
        if (rule.number == number)
            return rule;
    }
    VerifyRule rule;
    rule.number = number;
    rule.value = defaultValue(columnRuleKind(number));
    entry.rules.append(rule);
    return entry.rules.last();
}

const VerifyColumn *VerifyRuleSet::column(ColumnId id) const
{
    for (const VerifyColumn &entry : m_columns) {
        if (entry.column == id)
            return &entry;
    }
    return nullptr;
}

void VerifyRuleSet::setColumnType(ColumnId id, int type)
{
    columnEntry(id).type = qBound(0, type, ColumnTypeCount - 1);
}

void VerifyRuleSet::setColumnRuleActive(ColumnId id, int number, bool active)
{
    columnRule(id, number).active = active;
    if (!active)
        return;
    VerifyColumn &entry = columnEntry(id);
    const QList<int> excluded = excludedBy(number);
    for (VerifyRule &rule : entry.rules) {
        if (excluded.contains(rule.number))
            rule.active = false;
    }
}

void VerifyRuleSet::clearActive()
{
    for (VerifyRule &rule : m_datasetRules)
        rule.active = false;
    for (VerifyColumn &entry : m_columns) {
        for (VerifyRule &rule : entry.rules)
            rule.active = false;
    }
}

bool VerifyRuleSet::remap(const QHash<ColumnId, ColumnId> &map)
{
    bool changed = false;
    for (int i = m_columns.size() - 1; i >= 0; --i) {
        const auto found = map.constFind(m_columns.at(i).column);
        if (found == map.constEnd())
            continue;
        changed = true;
        if (found.value().isNull())
            m_columns.removeAt(i);
        else
            m_columns[i].column = found.value();
    }
    return changed;
}
