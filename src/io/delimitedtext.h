#pragma once

#include "io/fileformats.h"

#include <QChar>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <functional>

class Dataset;
class QTextStream;

// Reading of delimited and plain text into a Dataset: the delimiter and quoting guesses, the
// quoted and unquoted tokenisers and the reports that follow a read. Works on decoded
// characters only; the caller opens the source, sets the codec and handles a memory limit
// raised through the progress callback.

// Stored by number in documents.
enum Delimiter {
    DelimiterAutomatic = 0,
    DelimiterComma = 1,
    DelimiterSemicolon = 2,
    DelimiterColon = 3,
    DelimiterTab = 4,
    DelimiterPipe = 5,
    DelimiterCaret = 6,
    DelimiterSpace = 7,
    DelimiterCustom = 8,
    DelimiterUnitSeparator = 9
};

enum Quoting { QuotingAutomatic = 0, QuotingQuoted = 1, QuotingUnquoted = 2 };

// Name shown for a delimiter; a number out of range is named as Comma.
QString delimiterName(int delimiter);
// The character that separates values. Automatic and numbers out of range give the comma;
// Custom gives `custom` as it stands.
QChar delimiterCharacter(int delimiter, QChar custom = QChar());
// Delimiters offered, in their fixed order. The candidates of the guess are the list with
// no flag set.
QList<int> delimiterList(bool automatic, bool colonAndSpace, bool custom);

QString quotingName(int quoting);
QStringList quotingNames();
QString quotingToolTip();

struct DelimitedReadOptions
{
    int delimiter = DelimiterAutomatic;
    QChar customDelimiter;
    int quoting = QuotingAutomatic;
    int ignoredRows = 0;
    bool ignoreRepeatedDelimiters = false;
    bool trim = true;
    bool simplify = true;
    bool ignoreEmpty = true;
};

// What a read tells the user, and the counts that its end report is made from.
struct TextReadReport
{
    QStringList info;
    QStringList warnings;
    int emptyRowsIgnored = 0;
    // Rows that reached clean-up, whether kept or dropped as empty.
    int rowsRecorded = 0;
    // For each number of values per row: how many rows had it, and the position in reading
    // order (from 0) of the first of them.
    QMap<int, int> rowsPerValueCount;
    QMap<int, int> firstRowPerValueCount;
    // What the read settled on.
    QChar delimiter;
    bool quoted = false;

    void resetCounts();
};

// Counts the candidate delimiters in the first 4096 characters and takes the most frequent,
// the earlier candidate on a tie. infoEntry, when given, receives the message that tells
// the guess. Leaves the stream after the sample.
QChar guessDelimiter(QTextStream &stream, QString *infoEntry);

// Whether values may be quoted, for a quoting option and the delimiter in force.
bool useQuotedTokeniser(int quoting, QChar delimiter);

// The whole read of a delimited text: delimiter and quoting decisions, tokeniser, end
// report. `length` is the stream's length in characters, used for progress only. Clears
// `out` first. Returns false only when the stream has nothing to read from. An exception
// thrown by `progress` passes through and leaves `out` partly filled.
bool readDelimitedText(QTextStream &stream, qint64 length, const DelimitedReadOptions &options,
                       Dataset &out, TextReadReport &report, const ReadProgress &progress);
// Every line is a row of one value.
bool readPlainText(QTextStream &stream, qint64 length, const DelimitedReadOptions &options,
                   Dataset &out, TextReadReport &report, const ReadProgress &progress);

// The tokenisers on their own, with the delimiter already settled. They rewind the stream,
// clear `out`, and fill the report's counters but not its texts.
void readQuotedText(QTextStream &stream, qint64 length, QChar delimiter,
                    const DelimitedReadOptions &options, Dataset &out, TextReadReport &report,
                    const ReadProgress &progress);
void readUnquotedText(QTextStream &stream, qint64 length, QChar delimiter,
                      const DelimitedReadOptions &options, Dataset &out, TextReadReport &report,
                      const ReadProgress &progress);

// Adds the end report texts from the counters: empty rows to info, uneven rows to warnings
// (the latter only when `valuesPerRow` is set).
void addReadReport(TextReadReport &report, int ignoredRows, bool valuesPerRow);
