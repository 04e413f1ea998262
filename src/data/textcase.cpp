#include "data/valueinterpretation.h"

#include <QRegularExpression>

// The case conversions offered by Case and used in new column names.

namespace {

bool isApostrophe(uint code)
{
    return code == 0x27 || code == 0x2019 || code == 0xFF07;
}

// The character before position i, as a code point, so that a letter outside the basic
// plane still counts as a letter for the word-start rule.
uint codePointBefore(const QString &text, int i)
{
    const QChar previous = text.at(i - 1);
    if (previous.isLowSurrogate() && i >= 2 && text.at(i - 2).isHighSurrogate())
        return QChar::surrogateToUcs4(text.at(i - 2), previous);
    return previous.unicode();
}

bool isWordCharacter(uint code)
{
    switch (QChar::category(code)) {
    case QChar::Letter_Uppercase:
    case QChar::Letter_Lowercase:
    case QChar::Letter_Titlecase:
    case QChar::Letter_Modifier:
    case QChar::Letter_Other:
    case QChar::Number_DecimalDigit:
    case QChar::Number_Letter:
    case QChar::Number_Other:
    case QChar::Mark_NonSpacing:
    case QChar::Mark_SpacingCombining:
    case QChar::Mark_Enclosing:
        return true;
    default:
        return isApostrophe(code);
    }
}

const QRegularExpression &whitespaceRun()
{
    static const QRegularExpression expression(QStringLiteral("\\s+"));
    return expression;
}

QString camelCase(const QString &text, bool upperFirst)
{
    const QStringList words = text.split(whitespaceRun(), Qt::SkipEmptyParts);
    QString result;
    result.reserve(text.size());
    for (int i = 0; i < words.size(); ++i) {
        if (i == 0 && !upperFirst)
            result.append(words.at(i).toLower());
        else
            result.append(toTitleCase(words.at(i), false));
    }
    return result;
}

} // namespace

QStringList textCaseNames()
{
    return {QStringLiteral("Lower case"),       QStringLiteral("Upper case"),
            QStringLiteral("Title case"),       QStringLiteral("Sentence case"),
            QStringLiteral("Lower camel case"), QStringLiteral("Upper camel case"),
            QStringLiteral("Kebab case"),       QStringLiteral("Snake case"),
            QStringLiteral("Inverted case")};
}

QString toLowerCase(const QString &text)
{
    return text.toLower();
}

QString toUpperCase(const QString &text)
{
    return text.toUpper();
}

QString toTitleCase(const QString &text, bool keepUpper)
{
    QString result = text;
    const int size = result.size();
    if (size == 0)
        return result;
    QChar *out = result.data();
    if (out[0].isLower())
        out[0] = out[0].toUpper();
    for (int i = 1; i < size; ++i) {
        const QChar ch = out[i];
        const uint previous = codePointBefore(text, i);
        if (!isWordCharacter(previous)) {
            if (ch.isLower())
                out[i] = ch.toUpper();
        } else if (!keepUpper && ch.isUpper() && QChar::isLetter(previous)) {
            out[i] = ch.toLower();
        }
    }
    return result;
}

QString toSentenceCase(const QString &text, bool keepUpper)
{
    QString result = text;
    const int size = result.size();
    if (size == 0)
        return result;
    QChar *out = result.data();
    bool first = true;
    for (int i = 0; i < size; ++i) {
        const QChar ch = out[i];
        if (!ch.isLetter())
            continue;
        if (first) {
            out[i] = ch.toUpper();
            first = false;
        } else if (!keepUpper) {
            out[i] = ch.toLower();
        }
    }
    return result;
}

QString toLowerCamelCase(const QString &text)
{
    return camelCase(text, false);
}

QString toUpperCamelCase(const QString &text)
{
    return camelCase(text, true);
}

QString toKebabCase(const QString &text)
{
    QString result = text;
    return result.replace(whitespaceRun(), QStringLiteral("-"));
}

QString toSnakeCase(const QString &text)
{
    QString result = text;
    return result.replace(whitespaceRun(), QStringLiteral("_"));
}

QString toInvertedCase(const QString &text)
{
    QString result = text;
    const int size = result.size();
    if (size == 0)
        return result;
    QChar *out = result.data();
    for (int i = 0; i < size; ++i) {
        const QChar ch = out[i];
        if (ch.isUpper())
            out[i] = ch.toLower();
        else if (ch.isLower())
            out[i] = ch.toUpper();
    }
    return result;
}

QString convertCase(const QString &text, int caseIndex, bool keepUpper)
{
    switch (TextCase(caseIndex)) {
    case TextCase::Lower:
        return toLowerCase(text);
    case TextCase::Upper:
        return toUpperCase(text);
    case TextCase::Title:
        return toTitleCase(text, keepUpper);
    case TextCase::Sentence:
        return toSentenceCase(text, keepUpper);
    case TextCase::LowerCamel:
        return toLowerCamelCase(text);
    case TextCase::UpperCamel:
        return toUpperCamelCase(text);
    case TextCase::Kebab:
        return toKebabCase(text);
    case TextCase::Snake:
        return toSnakeCase(text);
    case TextCase::Inverted:
        return toInvertedCase(text);
    case TextCase::Count:
        break;
    }
    return text;
}
