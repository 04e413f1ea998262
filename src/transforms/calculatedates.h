#pragma once

#include <QDate>
#include <QHash>
#include <QLocale>
#include <QString>
#include <QStringList>

class Dataset;

// Dates and times for the Calculate transform: which values are dates for a whole run, and
// the texts of times that run past a day.
namespace Calculate {

// Dates read from, and written as, texts of one format. Reading and writing through a
// format are slow, and a date column holds few distinct dates among many rows, so each text
// is read once and each date written once; the memory stays bounded by emptying a table
// that grows too large.
class DateTexts
{
public:
    void setFormat(const QString &format) { m_format = format; }
    const QString &format() const { return m_format; }
    // A null date when the text doesn't read.
    QDate read(const QString &text);
    QString write(const QDate &date, const QLocale &locale);

private:
    QString m_format;
    QHash<QString, QDate> m_dates;
    QHash<qint64, QString> m_texts;
};

// Whether the first 50 non-empty cells of the column all read as dates by one format of the
// list; the first format that reads them all wins, and goes to format.
bool isDateColumn(const Dataset &dataset, int column, const QStringList &formats, QString *format);
// Whether some format of the list reads the trimmed text; the first that does goes to format.
bool isDateConstant(const QString &text, const QStringList &formats, QString *format);

// h:m, h:m:s or h:m:s.z, the hours without upper limit, in milliseconds; false when the text
// is no such time.
bool timeToMSecs(const QString &text, qlonglong *msecs);
// The hours (at least two digits, past 24 for more than a day), minutes and seconds, and the
// milliseconds only when there are any: "49:00:00", "00:00:01.500". msecs must be 0 or more.
QString msecsToTimeText(qlonglong msecs);
// The ISO year and week, "2024,05".
QString weekOfYearText(const QDate &date);

} // namespace Calculate
