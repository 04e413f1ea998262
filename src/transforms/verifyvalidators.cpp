#include "transforms/verifychecks.h"

#include <QByteArray>
#include <QVector>

#include <iterator>

// The validators of identifying numbers (barcodes, book numbers, bank accounts) and the row
// lists of the report.

namespace VerifyChecks {

namespace {

constexpr QChar Ellipsis(0x2026);

// The value of a decimal digit of any script, or -1.
int digitOf(QChar c)
{
    const ushort u = c.unicode();
    if (u >= '0' && u <= '9')
        return u - '0';
    if (u > 127 && c.category() == QChar::Number_DecimalDigit)
        return c.digitValue();
    return -1;
}

// The digits of a text in which white space is skipped (and '-' when dashes is set); false
// when anything else occurs.
bool collectDigits(const QString &text, bool dashes, QVector<int> *digits)
{
    for (const QChar c : text) {
        const int digit = digitOf(c);
        if (digit >= 0)
            digits->append(digit);
        else if (!c.isSpace() && !(dashes && c == QLatin1Char('-')))
            return false;
    }
    return true;
}

// Whether the last digit checks the others, weighted from the left by odd and even.
bool checkDigitFits(const QVector<int> &digits, int oddWeight, int evenWeight)
{
    int sum = 0;
    for (int i = 0; i + 1 < digits.size(); ++i)
        sum += digits.at(i) * ((i + 1) % 2 == 1 ? oddWeight : evenWeight);
    const int check = sum % 10 == 0 ? 0 : 10 - sum % 10;
    return digits.last() == check;
}

int checkedNumberCode(const QString &text, int length, int oddWeight, int evenWeight)
{
    QVector<int> digits;
    if (!collectDigits(text, false, &digits))
        return 1;
    if (digits.size() != length)
        return 2;
    return checkDigitFits(digits, oddWeight, evenWeight) ? 0 : 3;
}

struct IbanCountry
{
    char code[3];
    int length;
};

constexpr IbanCountry IbanCountries[] = {
    {"AD", 24}, {"AE", 23}, {"AL", 28}, {"AT", 20}, {"AZ", 28}, {"BA", 20}, {"BE", 16}, {"BG", 22},
    {"BH", 22}, {"BI", 27}, {"BR", 29}, {"BY", 28}, {"CH", 21}, {"CR", 22}, {"CY", 28}, {"CZ", 24},
    {"DE", 22}, {"DJ", 27}, {"DK", 18}, {"DO", 28}, {"EE", 20}, {"EG", 29}, {"ES", 24}, {"FI", 18},
    {"FK", 18}, {"FO", 18}, {"FR", 27}, {"GB", 22}, {"GE", 22}, {"GI", 23}, {"GL", 18}, {"GR", 27},
    {"GT", 28}, {"HN", 28}, {"HR", 21}, {"HU", 28}, {"IE", 22}, {"IL", 23}, {"IQ", 23}, {"IS", 26},
    {"IT", 27}, {"JO", 30}, {"KW", 30}, {"KZ", 20}, {"LB", 28}, {"LC", 32}, {"LI", 21}, {"LT", 20},
    {"LU", 20}, {"LV", 21}, {"LY", 25}, {"MC", 27}, {"MD", 24}, {"ME", 22}, {"MK", 19}, {"MN", 20},
    {"MR", 27}, {"MT", 31}, {"MU", 30}, {"NI", 28}, {"NL", 18}, {"NO", 15}, {"OM", 23}, {"PK", 24},
    {"PL", 28}, {"PS", 29}, {"PT", 25}, {"QA", 29}, {"RO", 24}, {"RS", 22}, {"RU", 33}, {"SA", 24},
    {"SC", 31}, {"SD", 18}, {"SE", 24}, {"SI", 19}, {"SK", 24}, {"SM", 27}, {"SO", 23}, {"ST", 25},
    {"SV", 28}, {"TL", 23}, {"TN", 24}, {"TR", 26}, {"UA", 29}, {"VA", 22}, {"VG", 24}, {"XK", 20},
    {"YE", 30}};

static_assert(std::size(IbanCountries) == 89, "the countries of the IBAN registry");

int ibanLength(const QByteArray &country)
{
    for (const IbanCountry &entry : IbanCountries) {
        if (country == entry.code)
            return entry.length;
    }
    return -1;
}

} // namespace

int ean13Code(const QString &text)
{
    return checkedNumberCode(text, 13, 1, 3);
}

int upcACode(const QString &text)
{
    return checkedNumberCode(text, 12, 3, 1);
}

int gtinCode(const QString &text)
{
    QVector<int> digits;
    if (!collectDigits(text, false, &digits))
        return 1;
    const int count = digits.size();
    if (count != 8 && count != 12 && count != 13 && count != 14)
        return 2;
    digits.insert(0, 14 - count, 0);
    return checkDigitFits(digits, 3, 1) ? 0 : 3;
}

int isbnCode(const QString &text)
{
    QVector<int> digits;
    for (const QChar c : text) {
        const int digit = digitOf(c);
        if (digit >= 0)
            digits.append(digit);
        else if (digits.size() == 9 && (c == QLatin1Char('x') || c == QLatin1Char('X')))
            digits.append(10);
        else if (!c.isSpace() && c != QLatin1Char('-'))
            return 1;
    }
    if (digits.size() == 10) {
        int sum = 0;
        for (int i = 0; i < 10; ++i)
            sum += digits.at(i) * (10 - i);
        return sum % 11 == 0 ? 0 : 3;
    }
    if (digits.size() == 13 && digits.indexOf(10) < 0) {
        if (digits.at(0) != 9 || digits.at(1) != 7 || (digits.at(2) != 8 && digits.at(2) != 9))
            return 4;
        return checkDigitFits(digits, 1, 3) ? 0 : 3;
    }
    return 2;
}

int asinCode(const QString &text, bool caseSensitive)
{
    int count = 0;
    for (const QChar c : text) {
        const ushort u = c.unicode();
        if (c.isSpace())
            continue;
        const bool counts = (u >= '0' && u <= '9') || (u >= 'A' && u <= 'Z')
            || (!caseSensitive && u >= 'a' && u <= 'z');
        if (!counts)
            return 1;
        ++count;
    }
    return count == 10 ? 0 : 2;
}

int ibanCode(const QString &text, bool caseSensitive)
{
    QByteArray iban;
    for (const QChar c : text) {
        const ushort u = c.unicode();
        if (c.isSpace())
            continue;
        if (u >= 'a' && u <= 'z') {
            if (caseSensitive)
                return 1;
            iban.append(char(u - 'a' + 'A'));
        } else if ((u >= 'A' && u <= 'Z') || (u >= '0' && u <= '9')) {
            iban.append(char(u));
        } else {
            return 1;
        }
    }
    if (iban.size() < 2)
        return 2;
    if (ibanLength(iban.left(2)) != iban.size())
        return 3;
    const QByteArray moved = iban.mid(4) + iban.left(4);
    int remainder = 0;
    for (const char c : moved) {
        if (c >= 'A' && c <= 'Z') {
            const int value = c - 'A' + 10;
            remainder = (remainder * 100 + value) % 97;
        } else {
            remainder = (remainder * 10 + (c - '0')) % 97;
        }
    }
    return remainder == 1 ? 0 : 4;
}

QString rowListText(const QVector<int> &firstRows, qint64 total)
{
    QStringList numbers;
    for (int row : firstRows)
        numbers.append(QString::number(row + 1));
    QString text = numbers.join(QLatin1Char(','));
    if (total > firstRows.size())
        text += QStringLiteral("%1+%2 more").arg(Ellipsis).arg(total - firstRows.size());
    return text;
}

} // namespace VerifyChecks
