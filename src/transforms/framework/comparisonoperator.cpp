#include "transforms/framework/comparisonoperator.h"

#include "data/valueinterpretation.h"

#include <QRegularExpression>
#include <QVector>

#include <algorithm>

namespace {

const QString &emptySetSign()
{
    static const QString sign(QChar(0x2205));
    return sign;
}

const QStringList &operatorTexts()
{
    static const QStringList texts = {QStringLiteral("c   Contains"),
                                      QStringLiteral("=   Equal to"),
                                      QStringLiteral("^   Starts with"),
                                      QStringLiteral("$   Ends with"),
                                      QStringLiteral(">   Greater than"),
                                      QStringLiteral("<   Less than"),
                                      QStringLiteral(">=  Greater than equal"),
                                      QStringLiteral("<=  Less than equal"),
                                      QStringLiteral("rx  Matches regex"),
                                      QStringLiteral("!c   Doesn't contain"),
                                      QStringLiteral("!=  Not equal to"),
                                      QStringLiteral("!^  Doesn't start with"),
                                      QStringLiteral("!$  Doesn't end with"),
                                      QStringLiteral("!rx Doesn't match regex"),
                                      QString(QChar(0x2248)) + QStringLiteral("9  90% fuzzy match"),
                                      QString(QChar(0x2248)) + QStringLiteral("8  80% fuzzy match"),
                                      QString(QChar(0x2248)) + QStringLiteral("7  70% fuzzy match"),
                                      QString(QChar(0x2248)) + QStringLiteral("6  60% fuzzy match"),
                                      QString(QChar(0x2248)) + QStringLiteral("5  50% fuzzy match"),
                                      QStringLiteral("%1   Is empty").arg(emptySetSign()),
                                      QStringLiteral("!%1  Is not empty").arg(emptySetSign())};
    return texts;
}

struct CompiledPattern
{
    QString pattern;
    Qt::CaseSensitivity caseSensitivity;
    QRegularExpression expression;
};

// Compiling a pattern per cell would dominate a filter over a million rows, and a filter
// or If with several regex terms alternates between their patterns on every row, so the
// last few compiled patterns are kept, most recently used first.
const QRegularExpression &compiledPattern(const QString &pattern,
                                          Qt::CaseSensitivity caseSensitivity)
{
    static const int capacity = 8;
    static QVector<CompiledPattern> recent;
    for (int i = 0; i < recent.size(); ++i) {
        if (recent.at(i).caseSensitivity == caseSensitivity && recent.at(i).pattern == pattern) {
            if (i > 0)
                std::rotate(recent.begin(), recent.begin() + i, recent.begin() + i + 1);
            return recent.at(0).expression;
        }
    }
    QRegularExpression::PatternOptions options = QRegularExpression::NoPatternOption;
    if (caseSensitivity == Qt::CaseInsensitive)
        options |= QRegularExpression::CaseInsensitiveOption;
    QRegularExpression expression(pattern, options);
    if (expression.isValid())
        expression.optimize();
    if (recent.size() >= capacity)
        recent.removeLast();
    recent.prepend({pattern, caseSensitivity, expression});
    return recent.at(0).expression;
}

bool regexMatches(const QString &cell, const QString &pattern, Qt::CaseSensitivity caseSensitivity)
{
    const QRegularExpression &expression = compiledPattern(pattern, caseSensitivity);
    return expression.isValid() && expression.match(cell).hasMatch();
}

bool evaluateOrdering(int op, const QString &cell, const QString &value, const QString &formatCell,
                      const QString &formatValue, Qt::CaseSensitivity caseSensitivity, bool cached)
{
    const PairInterpretation pair = cached
        ? interpretPair(cell, value, formatCell, formatValue, true)
        : interpretPairUncached(cell, value, formatCell, formatValue);
    if (pair.bothDates) {
        const qint64 a = pair.dateA.toJulianDay();
        const qint64 b = pair.dateB.toJulianDay();
        return ComparisonOperator::ordered(op, a, b);
    }
    if (pair.bothNumbers)
        return ComparisonOperator::ordered(op, pair.numberA, pair.numberB);
    return ComparisonOperator::ordered(op, QString::compare(cell, value, caseSensitivity), 0);
}

bool fuzzyMatches(const QString &cell, const QString &value, int threshold,
                  Qt::CaseSensitivity caseSensitivity)
{
    if (caseSensitivity == Qt::CaseInsensitive)
        return similarity(cell.toLower(), value.toLower(), threshold) >= threshold;
    return similarity(cell, value, threshold) >= threshold;
}

bool evaluateOperator(int op, const QString &cell, const QString &value, const QString &formatCell,
                      const QString &formatValue, Qt::CaseSensitivity caseSensitivity, bool cached)
{
    switch (op) {
    case ComparisonOperator::EqualTo:
    case ComparisonOperator::NotEqualTo:
    case ComparisonOperator::GreaterThan:
    case ComparisonOperator::LessThan:
    case ComparisonOperator::GreaterThanOrEqual:
    case ComparisonOperator::LessThanOrEqual:
        return evaluateOrdering(op, cell, value, formatCell, formatValue, caseSensitivity, cached);
    case ComparisonOperator::Contains:
        return cell.contains(value, caseSensitivity);
    case ComparisonOperator::DoesNotContain:
        return !cell.contains(value, caseSensitivity);
    case ComparisonOperator::StartsWith:
        return cell.startsWith(value, caseSensitivity);
    case ComparisonOperator::DoesNotStartWith:
        return !cell.startsWith(value, caseSensitivity);
    case ComparisonOperator::EndsWith:
        return cell.endsWith(value, caseSensitivity);
    case ComparisonOperator::DoesNotEndWith:
        return !cell.endsWith(value, caseSensitivity);
    case ComparisonOperator::MatchesRegex:
        return regexMatches(cell, value, caseSensitivity);
    case ComparisonOperator::DoesNotMatchRegex:
        return !regexMatches(cell, value, caseSensitivity);
    case ComparisonOperator::FuzzyMatch90:
    case ComparisonOperator::FuzzyMatch80:
    case ComparisonOperator::FuzzyMatch70:
    case ComparisonOperator::FuzzyMatch60:
    case ComparisonOperator::FuzzyMatch50:
        return fuzzyMatches(cell, value, ComparisonOperator::fuzzyThreshold(op), caseSensitivity);
    case ComparisonOperator::IsEmpty:
        return cell.isEmpty();
    case ComparisonOperator::IsNotEmpty:
        return !cell.isEmpty();
    default:
        return false;
    }
}

} // namespace

QString ComparisonOperator::displayText(int op)
{
    return operatorTexts().at(isValid(op) ? op : int(Contains));
}

QString ComparisonOperator::shortText(int op)
{
    const QString text = displayText(op);
    return text.left(text.indexOf(QLatin1Char(' ')));
}

bool ComparisonOperator::takesNoValue(int op)
{
    switch (op) {
    case EqualTo:
    case MatchesRegex:
    case NotEqualTo:
    case DoesNotMatchRegex:
    case FuzzyMatch90:
    case FuzzyMatch80:
    case FuzzyMatch70:
    case FuzzyMatch60:
    case FuzzyMatch50:
    case IsEmpty:
    case IsNotEmpty:
        return true;
    default:
        return false;
    }
}

int ComparisonOperator::fuzzyThreshold(int op)
{
    if (op < FuzzyMatch90 || op > FuzzyMatch50)
        return 0;
    return 90 - 10 * (op - FuzzyMatch90);
}

const QList<int> &ComparisonOperator::displayOrder()
{
    static const QList<int> order
        = {Contains,          DoesNotContain,  EqualTo,        NotEqualTo,   StartsWith,
           DoesNotStartWith,  EndsWith,        DoesNotEndWith, GreaterThan,  GreaterThanOrEqual,
           LessThan,          LessThanOrEqual, IsEmpty,        IsNotEmpty,   MatchesRegex,
           DoesNotMatchRegex, FuzzyMatch90,    FuzzyMatch80,   FuzzyMatch70, FuzzyMatch60,
           FuzzyMatch50};
    return order;
}

QStringList ComparisonOperator::displayTexts()
{
    QStringList texts;
    for (const int op : displayOrder())
        texts.append(displayText(op));
    return texts;
}

bool ComparisonOperator::evaluate(int op, const QString &cell, const QString &value,
                                  const QString &formatCell, const QString &formatValue,
                                  Qt::CaseSensitivity caseSensitivity)
{
    return evaluateOperator(op, cell, value, formatCell, formatValue, caseSensitivity, true);
}

bool ComparisonOperator::evaluateUncached(int op, const QString &cell, const QString &value,
                                          const QString &formatCell, const QString &formatValue,
                                          Qt::CaseSensitivity caseSensitivity)
{
    return evaluateOperator(op, cell, value, formatCell, formatValue, caseSensitivity, false);
}

QString ComparisonOperator::columnVariable(int number)
{
    return QStringLiteral("$(%1)").arg(number);
}

QString ComparisonOperator::columnVariable(const QString &name)
{
    return QStringLiteral("$(%1)").arg(name.trimmed());
}
