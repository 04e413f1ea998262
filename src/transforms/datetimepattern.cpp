#include "transforms/datetimepattern.h"

#include <QDate>

#include <algorithm>

namespace {

// Names of months or days in every form a text may use: long and short, standalone and as
// written inside a date, and short ones without the dot that some locales end them with.
template<typename NameOf> QVector<QPair<QString, int>> namesOf(int count, NameOf nameOf)
{
    QVector<QPair<QString, int>> names;
    for (int n = 1; n <= count; ++n) {
        for (const QString &name : nameOf(n)) {
            QString lower = name.toLower();
            if (lower.isEmpty())
                continue;
            if (lower.endsWith(QLatin1Char('.')) && lower.size() > 1)
                names.append({lower.left(lower.size() - 1), n});
            names.append({lower, n});
        }
    }
    return names;
}

} // namespace

DateTimePattern::DateTimePattern(const QString &format, const QLocale &locale)
    : m_locale(locale)
    , m_zeroDigit(locale.zeroDigit())
{
    tokenize(format);
    prepareNames();
}

bool DateTimePattern::fieldAt(const QString &format, int at, Token *token, int *used)
{
    const int size = format.size();
    const QChar ch = format.at(at);
    int run = 1;
    while (at + run < size && format.at(at + run) == ch)
        ++run;
    switch (ch.unicode()) {
    case 'd':
    case 'M':
        *used = qMin(run, 4);
        token->kind = *used >= 3 ? (ch == QLatin1Char('d') ? DayName : MonthName)
                                 : (ch == QLatin1Char('d') ? Day : Month);
        token->longForm = *used == 4;
        token->padTo = *used;
        return true;
    case 'y':
        // A lone y is no field.
        if (run < 2)
            return false;
        *used = run >= 4 ? 4 : 2;
        token->kind = *used == 4 ? Year4 : Year2;
        token->minDigits = token->maxDigits = token->padTo = *used;
        return true;
    case 'h':
    case 'H':
    case 'm':
    case 's':
        *used = qMin(run, 2);
        token->kind = ch == QLatin1Char('h')
            ? Hour
            : (ch == QLatin1Char('H') ? Hour24 : (ch == QLatin1Char('m') ? Minute : Second));
        token->padTo = *used;
        return true;
    case 'z':
        *used = run >= 3 ? 3 : 1;
        token->kind = Msec;
        token->padTo = token->minDigits = *used;
        token->maxDigits = 3;
        return true;
    case 'A':
    case 'a':
        token->kind = AmPm;
        token->longForm = ch == QLatin1Char('A');
        *used = at + 1 < size && format.at(at + 1).toLower() == QLatin1Char('p') ? 2 : 1;
        return true;
    default:
        return false;
    }
}

int DateTimePattern::quotedText(const QString &format, int at, QString *text)
{
    // '' is a quote; otherwise the text up to the closing quote is taken as it stands, with
    // '' inside it a quote too.
    const int size = format.size();
    if (at + 1 < size && format.at(at + 1) == QLatin1Char('\'')) {
        *text = QStringLiteral("'");
        return at + 2;
    }
    int end = at + 1;
    while (end < size) {
        if (format.at(end) == QLatin1Char('\'')) {
            if (end + 1 < size && format.at(end + 1) == QLatin1Char('\'')) {
                *text += QLatin1Char('\'');
                end += 2;
                continue;
            }
            break;
        }
        *text += format.at(end++);
    }
    return end + 1;
}

void DateTimePattern::tokenize(const QString &format)
{
    const auto addLiteral = [this](const QString &text) {
        if (!m_tokens.isEmpty() && m_tokens.last().kind == Literal)
            m_tokens.last().text += text;
        else
            m_tokens.append(Token {Literal, 0, 0, 0, false, text});
    };
    int i = 0;
    while (i < format.size()) {
        Token token;
        int used = 1;
        if (fieldAt(format, i, &token, &used)) {
            m_tokens.append(token);
            i += used;
        } else if (format.at(i) == QLatin1Char('\'')) {
            QString text;
            i = quotedText(format, i, &text);
            addLiteral(text);
        } else {
            addLiteral(QString(format.at(i++)));
        }
    }

    for (int t = 0; t < m_tokens.size(); ++t) {
        Token &token = m_tokens[t];
        if (token.kind == Literal)
            continue;
        m_hasFields = true;
        m_hasDayOfMonth = m_hasDayOfMonth || token.kind == Day;
        m_twelveHour = m_twelveHour || token.kind == AmPm;
        // A two-digit field takes one digit too, unless a number follows with nothing between
        // them to tell where one ends.
        const Kind next = t + 1 < m_tokens.size() ? m_tokens.at(t + 1).kind : Literal;
        const bool numberFollows
            = next != Literal && next != DayName && next != MonthName && next != AmPm;
        if (token.kind == Day || token.kind == Month || token.kind == Hour || token.kind == Hour24
            || token.kind == Minute || token.kind == Second)
            token.minDigits = token.padTo == 2 && numberFollows ? 2 : 1;
    }
}

void DateTimePattern::prepareNames()
{
    const QLocale &locale = m_locale;
    const auto toNames = [](QVector<QPair<QString, int>> pairs) {
        // Longest first, so that "June" is not read as "Jun" followed by an "e" to spare.
        std::stable_sort(pairs.begin(), pairs.end(), [](const auto &a, const auto &b) {
            return a.first.size() > b.first.size();
        });
        QVector<Name> names;
        for (const auto &pair : pairs) {
            const bool known = std::any_of(names.cbegin(), names.cend(), [&pair](const Name &name) {
                return name.text == pair.first;
            });
            if (!known)
                names.append(Name {pair.first, pair.second});
        }
        return names;
    };
    m_monthNames = toNames(namesOf(12, [&locale](int n) {
        return QStringList {locale.monthName(n, QLocale::LongFormat),
                            locale.standaloneMonthName(n, QLocale::LongFormat),
                            locale.monthName(n, QLocale::ShortFormat),
                            locale.standaloneMonthName(n, QLocale::ShortFormat)};
    }));
    m_dayNames = toNames(namesOf(7, [&locale](int n) {
        return QStringList {locale.dayName(n, QLocale::LongFormat),
                            locale.standaloneDayName(n, QLocale::LongFormat),
                            locale.dayName(n, QLocale::ShortFormat),
                            locale.standaloneDayName(n, QLocale::ShortFormat)};
    }));
    for (int form = 0; form < 2; ++form) {
        const QLocale::FormatType type = form == 1 ? QLocale::LongFormat : QLocale::ShortFormat;
        // Some languages inflect a month named in a date ("3 марта") and not one alone.
        for (int month = 1; month <= 12; ++month)
            m_monthsOut[form][month] = m_hasDayOfMonth ? locale.monthName(month, type)
                                                       : locale.standaloneMonthName(month, type);
        for (int day = 1; day <= 7; ++day)
            m_daysOut[form][day] = locale.dayName(day, type);
    }
    m_amText = locale.amText().isEmpty() ? QStringLiteral("AM") : locale.amText();
    m_pmText = locale.pmText().isEmpty() ? QStringLiteral("PM") : locale.pmText();
}

int DateTimePattern::readNumber(QStringView text, int at, const Token &token, int *number) const
{
    const ushort zero = m_zeroDigit.unicode();
    int value = 0;
    int digits = 0;
    while (digits < token.maxDigits && at + digits < text.size()) {
        const ushort ch = text.at(at + digits).unicode();
        int digit = -1;
        if (ch >= '0' && ch <= '9')
            digit = ch - '0';
        else if (zero != '0' && ch >= zero && ch <= zero + 9)
            digit = ch - zero;
        if (digit < 0)
            break;
        value = value * 10 + digit;
        ++digits;
    }
    if (digits < token.minDigits)
        return -1;
    *number = value;
    return at + digits;
}

int DateTimePattern::readName(QStringView text, int at, const QVector<Name> &names,
                              int *number) const
{
    const QStringView rest = text.mid(at);
    for (const Name &name : names) {
        if (rest.size() >= name.text.size()
            && rest.left(name.text.size()).compare(name.text, Qt::CaseInsensitive) == 0) {
            *number = name.number;
            return at + name.text.size();
        }
    }
    return -1;
}

int DateTimePattern::readAmPm(QStringView text, int at, bool *pm) const
{
    const QStringView rest = text.mid(at);
    const QString candidates[] = {m_amText, m_pmText, QStringLiteral("am"), QStringLiteral("pm")};
    int best = -1;
    for (int i = 0; i < 4; ++i) {
        const QString &candidate = candidates[i];
        if (candidate.size() > best && rest.size() >= candidate.size()
            && rest.left(candidate.size()).compare(candidate, Qt::CaseInsensitive) == 0) {
            best = candidate.size();
            *pm = i % 2 == 1;
        }
    }
    return best < 0 ? -1 : at + best;
}

bool DateTimePattern::read(QStringView text, Value *value) const
{
    text = text.trimmed();
    Value v;
    bool pm = false;
    int hour12 = -1;
    int at = 0;
    for (const Token &token : m_tokens) {
        int number = 0;
        switch (token.kind) {
        case Literal:
            if (text.mid(at, token.text.size()).compare(token.text, Qt::CaseInsensitive) != 0)
                return false;
            at += token.text.size();
            continue;
        case DayName:
            at = readName(text, at, m_dayNames, &number);
            break;
        case MonthName:
            at = readName(text, at, m_monthNames, &v.month);
            break;
        case AmPm:
            at = readAmPm(text, at, &pm);
            break;
        default:
            at = readNumber(text, at, token, &number);
            break;
        }
        if (at < 0)
            return false;
        switch (token.kind) {
        case Day:
            v.day = number;
            break;
        case Month:
            v.month = number;
            break;
        case Year2:
            v.year = number < 30 ? 2000 + number : 1900 + number;
            break;
        case Year4:
            v.year = number;
            break;
        case Hour:
            if (m_twelveHour)
                hour12 = number;
            else
                v.hour = number;
            break;
        case Hour24:
            v.hour = number;
            break;
        case Minute:
            v.minute = number;
            break;
        case Second:
            v.second = number;
            break;
        case Msec:
            v.msec = number;
            break;
        default:
            break;
        }
    }
    if (at != text.size())
        return false;
    if (hour12 >= 0) {
        if (hour12 > 12)
            return false;
        v.hour = hour12 % 12 + (pm ? 12 : 0);
    }
    if (!QDate::isValid(v.year, v.month, v.day) || v.hour > 23 || v.minute > 59 || v.second > 59)
        return false;
    *value = v;
    return true;
}

void DateTimePattern::appendNumber(QString &out, int number, int padTo) const
{
    if (number < 0) {
        out += m_locale.negativeSign();
        number = -number;
    }
    char digits[12];
    int count = 0;
    do {
        digits[count++] = char('0' + number % 10);
        number /= 10;
    } while (number > 0);
    for (int i = count; i < padTo; ++i)
        out += m_zeroDigit;
    const ushort zero = m_zeroDigit.unicode();
    while (count > 0)
        out += QChar(ushort(zero + (digits[--count] - '0')));
}

QString DateTimePattern::write(const Value &value) const
{
    QString out;
    out.reserve(32);
    for (const Token &token : m_tokens) {
        switch (token.kind) {
        case Literal:
            out += token.text;
            break;
        case Day:
            appendNumber(out, value.day, token.padTo);
            break;
        case DayName:
            out += m_daysOut[token.longForm][QDate(value.year, value.month, value.day).dayOfWeek()];
            break;
        case Month:
            appendNumber(out, value.month, token.padTo);
            break;
        case MonthName:
            out += m_monthsOut[token.longForm][value.month];
            break;
        case Year2:
            appendNumber(out, qAbs(value.year) % 100, 2);
            break;
        case Year4:
            appendNumber(out, value.year, 4);
            break;
        case Hour:
            appendNumber(out,
                         m_twelveHour ? (value.hour % 12 == 0 ? 12 : value.hour % 12) : value.hour,
                         token.padTo);
            break;
        case Hour24:
            appendNumber(out, value.hour, token.padTo);
            break;
        case Minute:
            appendNumber(out, value.minute, token.padTo);
            break;
        case Second:
            appendNumber(out, value.second, token.padTo);
            break;
        case Msec:
            appendNumber(out, value.msec, token.padTo);
            break;
        case AmPm: {
            const QString &text = value.hour < 12 ? m_amText : m_pmText;
            out += token.longForm ? text.toUpper() : text.toLower();
            break;
        }
        }
    }
    return out;
}
