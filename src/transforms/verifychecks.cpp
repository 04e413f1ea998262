#include "transforms/verifychecks.h"

#include "data/valueinterpretation.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QLocale>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <limits>

// Fails ------------------------------------------------------------------------------------

void VerifyFails::addCell(int row, int column, int rule, int severity, bool countFail)
{
    cells.append({row, column, rule, severity});
    rowSeverities[row] |= quint8(1 << severity);
    if (countFail)
        ++bySeverity[severity];
}

void VerifyFails::addLine(const LineFail &fail, qint64 count)
{
    lines.append(fail);
    if (fail.row >= 0)
        rowSeverities[fail.row] |= quint8(1 << fail.severity);
    bySeverity[fail.severity] += count;
}

// The column checker -----------------------------------------------------------------------

using namespace VerifyRules;

namespace {

// The integer reader, with plain digits read directly: most integer columns hold nothing else.
qlonglong readInteger(const QString &text, bool *ok)
{
    const int length = text.size();
    if (length > 0 && length < 19) {
        const QChar *data = text.constData();
        const bool negative = data[0] == QLatin1Char('-');
        qlonglong value = 0;
        int i = negative ? 1 : 0;
        bool plain = i < length;
        for (; i < length && plain; ++i) {
            const ushort u = data[i].unicode();
            plain = u >= '0' && u <= '9';
            value = value * 10 + (u - '0');
        }
        if (plain) {
            *ok = true;
            return negative ? -value : value;
        }
    }
    return toLongLong(text, false, true, ok);
}

} // namespace

// Dates of one format, each distinct text read once: reading through a format is slow and a
// date column holds few distinct texts. The table is emptied when it grows large.
class ColumnChecker::Dates
{
public:
    static constexpr qint64 Invalid = std::numeric_limits<qint64>::min();

    void setFormat(const QString &format) { m_format = format; }
    qint64 julianDay(const QString &text)
    {
        const auto found = m_days.constFind(text);
        if (found != m_days.constEnd())
            return found.value();
        if (m_days.size() > 100000)
            m_days.clear();
        const QDate date = m_format.isEmpty() ? QDate() : toDate(text, m_format);
        const qint64 day = date.isValid() ? date.toJulianDay() : Invalid;
        m_days.insert(text, day);
        return day;
    }

private:
    QString m_format;
    QHash<QString, qint64> m_days;
};

namespace {

const QRegularExpression &emailExpression()
{
    static const QRegularExpression expression(
        QStringLiteral(
            R"re((?:[a-z0-9!#$%&'*+/=?^_`{|}~-]+(?:\.[a-z0-9!#$%&'*+/=?^_`{|}~-]+)*|"(?:[\x01-\x08\x0b\x0c\x0e-\x1f\x21\x23-\x5b\x5d-\x7f]|\\[\x01-\x09\x0b\x0c\x0e-\x7f])*")@(?:(?:[a-z0-9](?:[a-z0-9-]*[a-z0-9])?\.)+[a-z0-9](?:[a-z0-9-]*[a-z0-9])?|\[(?:(?:(2(5[0-5]|[0-4][0-9])|1[0-9][0-9]|[1-9]?[0-9]))\.){3}(?:(2(5[0-5]|[0-4][0-9])|1[0-9][0-9]|[1-9]?[0-9])|[a-z0-9-]*[a-z0-9]:(?:[\x01-\x08\x0b\x0c\x0e-\x1f\x21-\x5a\x53-\x7f]|\\[\x01-\x09\x0b\x0c\x0e-\x7f])+)\]))re"),
        QRegularExpression::CaseInsensitiveOption);
    return expression;
}

const QRegularExpression &telephoneExpression()
{
    static const QRegularExpression expression(
        QStringLiteral(R"re(^(\+\d{1,2}\s?)?1?\-?\.?\s?\(?\d{3}\)?[\s.-]?\d{3}[\s.-]?\d{4}$)re"),
        QRegularExpression::CaseInsensitiveOption);
    return expression;
}

// Whether any code point of the text passes test.
template<typename Test> bool anyCodePoint(const QString &text, Test test)
{
    const int length = text.size();
    const QChar *data = text.constData();
    for (int i = 0; i < length; ++i) {
        uint c = data[i].unicode();
        if (data[i].isHighSurrogate() && i + 1 < length && data[i + 1].isLowSurrogate()) {
            c = QChar::surrogateToUcs4(data[i], data[i + 1]);
            ++i;
        }
        if (test(c))
            return true;
    }
    return false;
}

bool isDigitOfAnyScript(uint c)
{
    return (c >= '0' && c <= '9') || (c > 127 && QChar::category(c) == QChar::Number_DecimalDigit);
}

// Values seen once and, for those seen again, every row that holds them.
template<typename Key> struct Duplicates
{
    QHash<Key, int> first;
    QHash<Key, QVector<int>> repeated;

    void add(const Key &key, int row)
    {
        const auto found = first.constFind(key);
        if (found == first.constEnd()) {
            first.insert(key, row);
            return;
        }
        QVector<int> &rows = repeated[key];
        if (rows.isEmpty())
            rows.append(found.value());
        rows.append(row);
    }
};

// Values of a range seen, for its gaps.
struct Spread
{
    QSet<qint64> seen;
    qint64 minimum = std::numeric_limits<qint64>::max();
    qint64 maximum = std::numeric_limits<qint64>::min();

    void add(qint64 value)
    {
        seen.insert(value);
        minimum = qMin(minimum, value);
        maximum = qMax(maximum, value);
    }
    // How many values between the smallest and the largest are missing, and the first few.
    qint64 gaps(QList<qint64> *first, int listed) const
    {
        if (seen.isEmpty())
            return 0;
        const quint64 span = quint64(maximum) - quint64(minimum);
        const quint64 missing = span - quint64(seen.size() - 1);
        for (qint64 v = minimum; v < maximum && first->size() <= listed; ++v) {
            if (!seen.contains(v))
                first->append(v);
        }
        return qint64(qMin<quint64>(missing, quint64(std::numeric_limits<qint64>::max())));
    }
};

} // namespace

struct ColumnChecker::Prepared
{
    int number = 0;
    int severity = Warning;
    bool after = false;
    QString text;
    QSet<QString> listed;
    double real = 0.0;
    qlonglong integer = 0;
    qint64 day = 0;
    int count = 0;
    QRegularExpression expression;
    // State of the rules on the whole column.
    bool anyNonEmpty = false;
    Duplicates<QString> texts;
    Duplicates<qint64> numbers;
    Spread spread;
    QStringList required;
    QSet<QString> missing;
};

ColumnChecker::ColumnChecker(const Dataset &data, int column, const QList<VerifyRule> &rules,
                             const Options &options, VerifyFails *fails)
    : m_data(data)
    , m_column(column)
    , m_options(options)
    , m_fails(fails)
    , m_decimalIsPoint(QLocale().decimalPoint() == QLatin1Char('.'))
    , m_dates(std::make_unique<Dates>())
{
    m_dates->setFormat(options.dateFormat);
    const Qt::CaseSensitivity cs = options.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    for (const VerifyRule &rule : rules) {
        RuleOutcome outcome;
        outcome.rule = rule;
        m_outcomes.append(outcome);
        auto prepared = std::make_unique<Prepared>();
        prepared->number = rule.number;
        prepared->severity = rule.severity;
        prepared->after = isDecidedAfterRows(rule.number);
        prepared->text = rule.value.toString();
        prepared->real = rule.value.toDouble();
        prepared->integer = rule.value.toInt();
        prepared->count = rule.value.toInt();
        prepared->day = rule.value.toDate().toJulianDay();
        const QStringList entries = listEntries(rule.value);
        for (const QString &entry : entries)
            prepared->listed.insert(options.caseSensitive ? entry : entry.toLower());
        if (rule.number == RequireListed) {
            prepared->required = entries;
            prepared->missing = prepared->listed;
        }
        if (rule.number == MatchesRegex && !prepared->text.isEmpty()) {
            prepared->expression.setPattern(prepared->text);
            if (cs == Qt::CaseInsensitive)
                prepared->expression.setPatternOptions(QRegularExpression::CaseInsensitiveOption);
            prepared->expression.optimize();
            if (!prepared->expression.isValid())
                m_messages.append(
                    QStringLiteral("Invalid regular expression '%1' for column %2: %3")
                        .arg(prepared->text, QString::number(column + 1),
                             prepared->expression.errorString()));
        }
        m_rules.push_back(std::move(prepared));
    }
}

ColumnChecker::~ColumnChecker() = default;

bool ColumnChecker::passes(Prepared &rule, const QString &cell)
{
    const bool cs = m_options.caseSensitive;
    const Qt::CaseSensitivity sensitivity = cs ? Qt::CaseSensitive : Qt::CaseInsensitive;
    auto listed = [&] {
        return rule.listed.contains(cs ? cell : cell.toLower());
    };
    bool ok = false;
    switch (rule.number) {
    case NumericExceptListed:
        toDoubleFast(cell, m_decimalIsPoint, &ok);
        return ok || listed();
    case IntegerExceptListed:
        readInteger(cell, &ok);
        return ok || listed();
    case ValidDate:
        return m_dates->julianDay(cell) != Dates::Invalid;
    case NoEmptyValues:
        return !cell.isEmpty();
    case AllEmptyValues:
        return cell.isEmpty();
    case MinimumReal:
    case MaximumReal: {
        const double number = toDoubleFast(cell, m_decimalIsPoint, &ok);
        return !ok || (rule.number == MinimumReal ? number >= rule.real : number <= rule.real);
    }
    case MinimumInteger:
    case MaximumInteger: {
        const qlonglong number = readInteger(cell, &ok);
        return !ok
            || (rule.number == MinimumInteger ? number >= rule.integer : number <= rule.integer);
    }
    case MinimumDate:
    case MaximumDate: {
        const qint64 day = m_dates->julianDay(cell);
        return day == Dates::Invalid
            || (rule.number == MinimumDate ? day >= rule.day : day <= rule.day);
    }
    case MinimumCharacters:
        return cell.size() >= rule.count;
    case MaximumCharacters:
        return cell.size() <= rule.count;
    case OnlyListed:
        return rule.listed.isEmpty() || listed();
    case NotListed:
        return rule.listed.isEmpty() || !listed();
    case MatchesRegex:
        return rule.text.isEmpty()
            || (rule.expression.isValid() && rule.expression.match(cell).hasMatch());
    case StartsWith:
        return rule.text.isEmpty() || cell.startsWith(rule.text, sensitivity);
    case EndsWith:
        return rule.text.isEmpty() || cell.endsWith(rule.text, sensitivity);
    case Contains:
        return rule.text.isEmpty() || cell.contains(rule.text, sensitivity);
    case IsLowerCase:
        return cell.isLower();
    case IsUpperCase:
        return cell.isUpper();
    case IsTitleCase:
        return cell == toTitleCase(cell, false);
    case IsSentenceCase:
        return cell == toSentenceCase(cell, false);
    default:
        return passesFormat(rule.number, cell);
    }
}

// The rules of a format that values must have: paths, addresses and identifying numbers.
bool ColumnChecker::passesFormat(int rule, const QString &cell) const
{
    const bool cs = m_options.caseSensitive;
    switch (rule) {
    case IsLocalFolder:
        return !cell.trimmed().isEmpty() && QDir(cell).exists();
    case IsLocalFile: {
        const QFileInfo info(cell);
        return !cell.trimmed().isEmpty() && !info.isDir() && info.exists();
    }
    case IsEmail:
        return emailExpression().match(cell).hasMatch();
    case IsTelephone:
        return telephoneExpression().match(cell).hasMatch();
    case IsEan13:
        return VerifyChecks::ean13Code(cell) == 0;
    case IsUpcA:
        return VerifyChecks::upcACode(cell) == 0;
    case IsIsbn:
        return VerifyChecks::isbnCode(cell) == 0;
    case IsIban:
        return VerifyChecks::ibanCode(cell, cs) == 0;
    case IsGtin:
        return VerifyChecks::gtinCode(cell) == 0;
    case IsAsin:
        return VerifyChecks::asinCode(cell, cs) == 0;
    default:
        return passesCharacters(rule, cell);
    }
}

// The rules that look at single characters.
bool ColumnChecker::passesCharacters(int rule, const QString &cell)
{
    switch (rule) {
    case NoPunctuation:
        return !anyCodePoint(cell, [](uint c) { return QChar::isPunct(c); });
    case NoDigits:
        return !anyCodePoint(cell, isDigitOfAnyScript);
    case NoCurrency:
        return !anyCodePoint(cell,
                             [](uint c) { return QChar::category(c) == QChar::Symbol_Currency; });
    case NoWhitespace:
        return !anyCodePoint(cell, [](uint c) { return QChar::isSpace(c); });
    case NoOuterWhitespace:
        return cell.isEmpty() || (!cell.front().isSpace() && !cell.back().isSpace());
    case NoTabs:
        return !cell.contains(QLatin1Char('\t'));
    case NoCarriageReturns:
        return !cell.contains(QLatin1Char('\r'));
    case NoLineFeeds:
        return !cell.contains(QLatin1Char('\n'));
    case NoDoubleSpaces:
        return !cell.contains(QLatin1String("  "));
    case NoBlankValues: {
        // Only a cell that begins with white space can be white space throughout.
        static const QRegularExpression blank(QStringLiteral("^\\s+$"));
        return cell.isEmpty() || !cell.front().isSpace() || !blank.match(cell).hasMatch();
    }
    case NoSymbols:
        return !anyCodePoint(cell, [](uint c) { return QChar::isSymbol(c); });
    case NoNonAscii:
        return std::none_of(cell.cbegin(), cell.cend(), [](QChar c) { return c.unicode() > 255; });
    case NoNonPrintable:
        return !anyCodePoint(cell, [](uint c) { return !QChar::isPrint(c); });
    default:
        return true;
    }
}

void ColumnChecker::collect(Prepared &rule, const QString &cell, int row)
{
    bool ok = false;
    switch (rule.number) {
    case AtLeastOneNonEmpty:
        rule.anyNonEmpty = rule.anyNonEmpty || !cell.isEmpty();
        break;
    case NoDuplicateTexts:
        rule.texts.add(m_options.caseSensitive ? cell : cell.toLower(), row);
        break;
    case NoDuplicateIntegers: {
        const qlonglong number = readInteger(cell, &ok);
        if (ok)
            rule.numbers.add(number, row);
        break;
    }
    case NoDuplicateDates: {
        const qint64 day = m_dates->julianDay(cell);
        if (day != Dates::Invalid)
            rule.numbers.add(day, row);
        break;
    }
    case NoIntegerGaps: {
        const qlonglong number = readInteger(cell, &ok);
        if (ok)
            rule.spread.add(number);
        break;
    }
    case NoDateGaps: {
        const qint64 day = m_dates->julianDay(cell);
        if (day != Dates::Invalid)
            rule.spread.add(day);
        break;
    }
    case RequireListed:
        if (!rule.missing.isEmpty())
            rule.missing.remove(m_options.caseSensitive ? cell : cell.toLower());
        break;
    default:
        break;
    }
}

void ColumnChecker::checkRow(int row)
{
    const QString &cell = m_data.cell(row, m_column);
    for (int i = 0; i < int(m_rules.size()); ++i) {
        Prepared &rule = *m_rules[i];
        if (rule.after)
            collect(rule, cell, row);
        else if (!passes(rule, cell))
            failCell(i, row, true);
    }
}

void ColumnChecker::failCell(int index, int row, bool countFail)
{
    const Prepared &rule = *m_rules[index];
    RuleOutcome &outcome = m_outcomes[index];
    if (countFail)
        ++outcome.fails;
    outcome.addRow(row);
    m_fails->addCell(row, m_column, rule.number, rule.severity, countFail);
}

void ColumnChecker::failColumn(int index, qint64 count, const QString &detail)
{
    const Prepared &rule = *m_rules[index];
    RuleOutcome &outcome = m_outcomes[index];
    outcome.fails += count;
    outcome.detail = detail;
    m_fails->addLine({-1, m_column, rule.number, rule.severity, false}, count);
}

void ColumnChecker::finish()
{
    for (int i = 0; i < int(m_rules.size()); ++i) {
        if (m_rules[i]->after)
            decide(i);
    }
}

// Each repeated value is one fail, in the order of the values, and marks all its rows.
template<typename Key>
void ColumnChecker::failDuplicates(int index, const QHash<Key, QVector<int>> &repeated)
{
    QList<Key> keys = repeated.keys();
    std::sort(keys.begin(), keys.end());
    for (const Key &key : qAsConst(keys)) {
        ++m_outcomes[index].fails;
        ++m_fails->bySeverity[m_rules[index]->severity];
        const QVector<int> &rows = repeated.value(key);
        for (int row : rows)
            failCell(index, row, false);
    }
}

QString ColumnChecker::gapText(qint64 value, bool date) const
{
    if (!date)
        return QString::number(value);
    const QDate day = QDate::fromJulianDay(value);
    return m_options.dateFormat.isEmpty() ? day.toString(Qt::ISODate)
                                          : day.toString(m_options.dateFormat);
}

void ColumnChecker::decide(int index)
{
    Prepared &rule = *m_rules[index];
    switch (rule.number) {
    case MatchColumnName: {
        const Qt::CaseSensitivity cs
            = m_options.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
        if (QString::compare(m_data.headerText(m_column), rule.text, cs) != 0)
            failColumn(index, 1, QString());
        break;
    }
    case AtLeastOneNonEmpty:
        if (!rule.anyNonEmpty)
            failColumn(index, 1, QString());
        break;
    case NoDuplicateTexts:
        failDuplicates(index, rule.texts.repeated);
        break;
    case NoDuplicateIntegers:
    case NoDuplicateDates:
        failDuplicates(index, rule.numbers.repeated);
        break;
    case NoIntegerGaps:
    case NoDateGaps: {
        QList<qint64> first;
        const qint64 missing = rule.spread.gaps(&first, VerifyChecks::ListedRows);
        if (missing == 0)
            break;
        QStringList texts;
        for (int i = 0; i < qMin(first.size(), VerifyChecks::ListedRows); ++i)
            texts.append(gapText(first.at(i), rule.number == NoDateGaps));
        QString list = texts.join(QLatin1Char(','));
        if (missing > VerifyChecks::ListedRows)
            list += QChar(0x2026);
        failColumn(index, missing, QStringLiteral("missing value(s)=%1").arg(list));
        break;
    }
    case RequireListed: {
        if (rule.missing.isEmpty())
            break;
        QStringList notFound;
        for (const QString &entry : qAsConst(rule.required)) {
            if (rule.missing.contains(m_options.caseSensitive ? entry : entry.toLower()))
                notFound.append(entry);
        }
        failColumn(
            index, 1,
            QStringLiteral("required value(s) not found=%1").arg(notFound.join(QLatin1Char(','))));
        break;
    }
    default:
        break;
    }
}
