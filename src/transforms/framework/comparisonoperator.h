#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// The fixed table of operators with which Filter, If and their option widgets state a
// condition on a cell, and the "$(name)" column variables that comparison values may hold.
// Operators are plain ints because documents store them by number; any number outside the
// table evaluates to false and displays as Contains.
class ComparisonOperator
{
public:
    enum Value {
        Contains = 0,
        EqualTo = 1,
        StartsWith = 2,
        EndsWith = 3,
        GreaterThan = 4,
        LessThan = 5,
        GreaterThanOrEqual = 6,
        LessThanOrEqual = 7,
        MatchesRegex = 8,
        DoesNotContain = 9,
        NotEqualTo = 10,
        DoesNotStartWith = 11,
        DoesNotEndWith = 12,
        DoesNotMatchRegex = 13,
        FuzzyMatch90 = 14,
        FuzzyMatch80 = 15,
        FuzzyMatch70 = 16,
        FuzzyMatch60 = 17,
        FuzzyMatch50 = 18,
        IsEmpty = 19,
        IsNotEmpty = 20,
        Count = 21
    };

    ComparisonOperator() = delete;

    static bool isValid(int op) { return op >= 0 && op < Count; }
    static QString displayText(int op);
    // The first blank-separated token of the display text, such as ">=" or "!rx".
    static QString shortText(int op);
    // Operators that are evaluated even with an empty comparison value; a term with any
    // other operator and an empty value is dropped by its transform.
    static bool takesNoValue(int op);
    // The percentage of likeness of a fuzzy operator, 0 for the others.
    static int fuzzyThreshold(int op);

    // The order of the combo boxes: positives beside their negations, then patterns and
    // the fuzzy family. displayTexts() follows the same order.
    static const QList<int> &displayOrder();
    static QStringList displayTexts();

    // formatCell and formatValue are the date formats of the columns that cell and value
    // come from when those are date columns, empty otherwise. Parsed texts are cached for
    // the run; the caller clears the caches (clearComparisonCaches) at its end.
    static bool evaluate(int op, const QString &cell, const QString &value,
                         const QString &formatCell, const QString &formatValue,
                         Qt::CaseSensitivity caseSensitivity);
    // The same without the caches and with numbers tried whenever dates fail, for If.
    static bool evaluateUncached(int op, const QString &cell, const QString &value,
                                 const QString &formatCell, const QString &formatValue,
                                 Qt::CaseSensitivity caseSensitivity);

    // The token that names a column in a comparison value: "$(3)" or "$(Total)".
    static QString columnVariable(int number);
    static QString columnVariable(const QString &name);

    // The outcome of an ordering operator (equal, not equal, greater, less and their
    // "or equal" forms) on two values; false for any other operator. Written with the plain
    // operators rather than through a three-way result, so that a NaN is equal to nothing,
    // not even itself.
    template<typename T> static bool ordered(int op, T a, T b)
    {
        switch (op) {
        case EqualTo:
            return a == b;
        case NotEqualTo:
            return !(a == b);
        case GreaterThan:
            return a > b;
        case LessThan:
            return a < b;
        case GreaterThanOrEqual:
            return a >= b;
        case LessThanOrEqual:
            return a <= b;
        default:
            return false;
        }
    }
};
