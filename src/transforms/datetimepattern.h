#pragma once

#include <QLocale>
#include <QString>
#include <QStringList>
#include <QStringView>
#include <QVector>

// A date and time format in the notation of Qt's format strings (d dd ddd dddd, M MM MMM
// MMMM, yy yyyy, h hh H HH, m mm, s ss, z zzz, AP ap A a, text in single quotes), compiled
// once for a locale and then used to read or write any number of cells. Reading through
// QLocale costs several microseconds a cell and turns local times that a change to summer
// time skips into invalid values; these read plain fields, with no time zone, in a fraction
// of that.
//
// Reading is forgiving where a user would be: a two-letter day, month, hour, minute or
// second field takes one digit too unless another number follows it directly, names of
// months and days are matched without regard to case, in their short or long, standalone or
// in-date forms, and letters of the format's own text match either case. A two-digit year
// is read as 1930 to 2029.
class DateTimePattern
{
public:
    // The fields of one value. Unset fields take 1900-01-01 00:00:00.000.
    struct Value
    {
        int year = 1900;
        int month = 1;
        int day = 1;
        int hour = 0;
        int minute = 0;
        int second = 0;
        int msec = 0;
    };

    DateTimePattern() = default;
    DateTimePattern(const QString &format, const QLocale &locale);

    // Whether the format has at least one field.
    bool hasFields() const { return m_hasFields; }
    // Reads the whole of text (blanks around it aside); false when it doesn't match or names
    // no real date or time, such as the 31st of February.
    bool read(QStringView text, Value *value) const;
    // The value written in the format.
    QString write(const Value &value) const;

private:
    enum Kind {
        Literal,
        Day,
        DayName,
        Month,
        MonthName,
        Year2,
        Year4,
        Hour,
        Hour24,
        Minute,
        Second,
        Msec,
        AmPm
    };
    struct Token
    {
        Kind kind = Literal;
        // Digits a number must have at least and may have at most when read; digits it is
        // padded to when written. For names: long (true) or short; for AM/PM: upper case.
        int minDigits = 1;
        int maxDigits = 2;
        int padTo = 1;
        bool longForm = false;
        QString text;
    };
    // The names of one kind (months or days) as read: lower-cased, longest first, each with
    // its number.
    struct Name
    {
        QString text;
        int number = 0;
    };

    // The field that starts at format[at], and how many characters it takes; false when the
    // character there is text.
    static bool fieldAt(const QString &format, int at, Token *token, int *used);
    // The text of the quotation that starts at format[at]; returns where the format goes on.
    static int quotedText(const QString &format, int at, QString *text);
    void tokenize(const QString &format);
    void prepareNames();
    int readNumber(QStringView text, int at, const Token &token, int *number) const;
    int readName(QStringView text, int at, const QVector<Name> &names, int *number) const;
    int readAmPm(QStringView text, int at, bool *pm) const;
    void appendNumber(QString &out, int number, int padTo) const;

    QLocale m_locale;
    QVector<Token> m_tokens;
    bool m_hasFields = false;
    bool m_hasDayOfMonth = false;
    bool m_twelveHour = false;
    QChar m_zeroDigit = QLatin1Char('0');
    QVector<Name> m_monthNames;
    QVector<Name> m_dayNames;
    QString m_amText;
    QString m_pmText;
    // Names as written, short [0] and long [1], by number from 1: looking them up in the
    // locale for every cell would cost more than the rest of the writing.
    QString m_monthsOut[2][13];
    QString m_daysOut[2][8];
};
