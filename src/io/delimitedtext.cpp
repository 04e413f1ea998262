#include "io/delimitedtext.h"

#include "data/dataset.h"
#include "data/valueinterpretation.h"

#include <QTextStream>

namespace {

constexpr int SampleLength = 4096;

QString countText(qlonglong count)
{
    return formatCount(count, true);
}

} // namespace

QString delimiterName(int delimiter)
{
    switch (delimiter) {
    case DelimiterAutomatic:
        return QStringLiteral("Automatic");
    case DelimiterSemicolon:
        return QStringLiteral("Semi-colon (;)");
    case DelimiterColon:
        return QStringLiteral("Colon (:)");
    case DelimiterTab:
        return QStringLiteral("Tab (\\t)");
    case DelimiterPipe:
        return QStringLiteral("Pipe (|)");
    case DelimiterCaret:
        return QStringLiteral("Caret (^)");
    case DelimiterSpace:
        return QStringLiteral("Space ( )");
    case DelimiterCustom:
        return QStringLiteral("Custom");
    case DelimiterUnitSeparator:
        return QStringLiteral("Unit separator (0x1F)");
    default:
        return QStringLiteral("Comma (,)");
    }
}

QChar delimiterCharacter(int delimiter, QChar custom)
{
    switch (delimiter) {
    case DelimiterSemicolon:
        return QLatin1Char(';');
    case DelimiterColon:
        return QLatin1Char(':');
    case DelimiterTab:
        return QLatin1Char('\t');
    case DelimiterPipe:
        return QLatin1Char('|');
    case DelimiterCaret:
        return QLatin1Char('^');
    case DelimiterSpace:
        return QLatin1Char(' ');
    case DelimiterCustom:
        return custom;
    case DelimiterUnitSeparator:
        return QChar(0x1F);
    default:
        return QLatin1Char(',');
    }
}

QList<int> delimiterList(bool automatic, bool colonAndSpace, bool custom)
{
    QList<int> list;
    if (automatic)
        list << DelimiterAutomatic;
    list << DelimiterComma << DelimiterSemicolon;
    if (colonAndSpace)
        list << DelimiterColon;
    list << DelimiterPipe << DelimiterCaret << DelimiterTab << DelimiterUnitSeparator;
    if (colonAndSpace)
        list << DelimiterSpace;
    if (custom)
        list << DelimiterCustom;
    return list;
}

QString quotingName(int quoting)
{
    switch (quoting) {
    case QuotingQuoted:
        return QStringLiteral("Quoted");
    case QuotingUnquoted:
        return QStringLiteral("Unquoted");
    default:
        return QStringLiteral("Automatic");
    }
}

QStringList quotingNames()
{
    return {quotingName(QuotingAutomatic), quotingName(QuotingQuoted),
            quotingName(QuotingUnquoted)};
}

QString quotingToolTip()
{
    return QStringLiteral("Set to '%1' if values can contain delimiters and Carriage Returns "
                          "enclosed within quotes (\").\nSet to '%2' if quoting is not used.\n"
                          "Set to '%3' to make an intelligent guess based on the delimiter.")
        .arg(quotingName(QuotingQuoted), quotingName(QuotingUnquoted),
             quotingName(QuotingAutomatic));
}

void TextReadReport::resetCounts()
{
    emptyRowsIgnored = 0;
    rowsRecorded = 0;
    rowsPerValueCount.clear();
    firstRowPerValueCount.clear();
}

QChar guessDelimiter(QTextStream &stream, QString *infoEntry)
{
    stream.seek(0);
    const QString sample = stream.read(SampleLength);
    const QList<int> candidates = delimiterList(false, false, false);
    int best = DelimiterComma;
    int bestCount = -1;
    QStringList counts;
    for (int candidate : candidates) {
        const int count = sample.count(delimiterCharacter(candidate));
        counts << QStringLiteral("%1 %2").arg(countText(count), delimiterName(candidate));
        if (count > bestCount) {
            best = candidate;
            bestCount = count;
        }
    }
    if (infoEntry) {
        *infoEntry = QStringLiteral(
                         "Delimiter=Automatic guesses '%1'. Set 'Delimiter' option to change.\n")
                         .arg(delimiterName(best))
            + QStringLiteral("First %1 characters contain: %2\n")
                  .arg(countText(sample.size()), counts.join(QStringLiteral(", ")));
    }
    return delimiterCharacter(best);
}

bool useQuotedTokeniser(int quoting, QChar delimiter)
{
    if (quoting == QuotingQuoted)
        return true;
    if (quoting == QuotingUnquoted)
        return false;
    return delimiter != QLatin1Char('\t');
}

bool readDelimitedText(QTextStream &stream, qint64 length, const DelimitedReadOptions &options,
                       Dataset &out, TextReadReport &report, const ReadProgress &progress)
{
    out.clear();
    if (!stream.device() && !stream.string())
        return false;

    QChar delimiter;
    if (options.delimiter == DelimiterAutomatic) {
        QString entry;
        delimiter = guessDelimiter(stream, &entry);
        report.info << entry;
    } else {
        delimiter = delimiterCharacter(options.delimiter, options.customDelimiter);
    }

    const bool quoted = useQuotedTokeniser(options.quoting, delimiter);
    if (options.quoting != QuotingQuoted && options.quoting != QuotingUnquoted) {
        report.info << QStringLiteral(
                           "Quoting=Automatic guesses '%1'. Set 'Quoting' option to change.\n")
                           .arg(quotingName(quoted ? QuotingQuoted : QuotingUnquoted));
    }
    report.delimiter = delimiter;
    report.quoted = quoted;

    if (quoted)
        readQuotedText(stream, length, delimiter, options, out, report, progress);
    else
        readUnquotedText(stream, length, delimiter, options, out, report, progress);
    addReadReport(report, options.ignoredRows, true);
    return true;
}

void addReadReport(TextReadReport &report, int ignoredRows, bool valuesPerRow)
{
    if (report.emptyRowsIgnored > 0) {
        report.info
            << QStringLiteral("%1 empty row(s) ignored").arg(countText(report.emptyRowsIgnored));
    }
    if (!valuesPerRow || report.rowsPerValueCount.size() < 2)
        return;
    report.warnings << QStringLiteral("Number of values per row vary:");
    for (auto it = report.rowsPerValueCount.cbegin(); it != report.rowsPerValueCount.cend(); ++it) {
        const int values = it.key();
        const int rows = it.value();
        const qint64 example
            = qint64(report.firstRowPerValueCount.value(values)) + 1 + qint64(ignoredRows);
        const QString entry
            = QStringLiteral("%1 input %2 %3 %4")
                  .arg(countText(rows),
                       rows == 1 ? QStringLiteral("row has") : QStringLiteral("rows have"),
                       countText(values),
                       values == 1 ? QStringLiteral("value") : QStringLiteral("values"))
            + QStringLiteral(": E.g. input row %1").arg(example);
        report.warnings << entry;
    }
}
