#pragma once

#include "io/fileformats.h"
// outputFileTypeForPath, for callers that had it from here.
#include "io/filetypes.h"

#include <QChar>
#include <QMap>
#include <QString>
#include <QStringList>

#include <cstring>

class Dataset;
class QTextStream;

// Writing a Dataset to a file: the write modes, the per-file rules (how the file is opened,
// when a byte-order mark and a header go in) and the text writers of the output file types,
// found through the table of formats. Free of widgets and items: callers pass the options and a
// progress callback, and receive the messages for the user in a WriteReport.

// Stored by number in documents under `enable_output`.
enum WriteMode { WriteDisabled = 0, WriteOverwrite = 1, WriteAppend = 2, WriteNew = 3 };
QString writeModeName(int mode);

// Stored by number in documents under `line_endings`.
enum LineEnding {
    LineEndingAutomatic = 0,
    LineEndingWindows = 1,
    LineEndingUnix = 2,
    LineEndingOldMac = 3,
    LineEndingRecordSeparator = 4
};
QString lineEndingName(int lineEnding);
// The characters that end a line; Automatic means CR LF.
QString lineEndingCharacters(int lineEnding);

// Stored by number in documents under `quote`.
enum OutputQuoting { OutputQuotingAsNeeded = 0, OutputQuotingAlways = 1, OutputQuotingNever = 2 };
QString outputQuotingName(int quoting);

// What a text writer needs besides the stream and the dataset, with the flags already decided
// for this file.
struct TextWriteOptions
{
    QString encoding = QStringLiteral("UTF-8");
    bool byteOrderMark = false;
    QChar delimiter = QLatin1Char(',');
    int quoting = OutputQuotingAsNeeded;
    QString lineEnding = QStringLiteral("\r\n");
    bool writeHeader = true;
    bool htmlEncode = true;
    // Written at the top of the formats that have comments; empty for none.
    QString comment;
    // The file's path, for the HTML title.
    QString path;
};

struct WriteReport
{
    QStringList warnings;
    QStringList info;
    // Whether a file was actually written; a New write onto an existing file succeeds without.
    bool written = false;
};

// Sets the codec by name (an unknown name keeps the stream's own) and whether a byte-order
// mark is generated: the first thing every writer does.
void prepareTextStream(QTextStream &stream, const QString &encoding, bool byteOrderMark);

// Text gathered in one large buffer and handed to the stream in big pieces, so that a row
// costs a few copies of its characters and no allocation: at millions of rows, a call into
// QString or the stream per cell costs more than the characters themselves. Callers make
// room for a whole row with ensure() and then put characters without further checks.
class ChunkedTextWriter
{
public:
    explicit ChunkedTextWriter(QTextStream &stream, int chunkSize = 1 << 16);
    ~ChunkedTextWriter() { flush(); }
    ChunkedTextWriter(const ChunkedTextWriter &) = delete;
    ChunkedTextWriter &operator=(const ChunkedTextWriter &) = delete;

    // Room for at least count more characters.
    void ensure(int count)
    {
        if (m_used + count > m_capacity)
            makeRoom(count);
    }
    void put(QChar c) { m_data[m_used++] = c; }
    void put(const QChar *characters, int count)
    {
        std::memcpy(m_data + m_used, characters, size_t(count) * sizeof(QChar));
        m_used += count;
    }
    void put(const QString &text) { put(text.constData(), text.size()); }
    void putRepeated(QChar c, int count)
    {
        for (int i = 0; i < count; ++i)
            m_data[m_used + i] = c;
        m_used += count;
    }
    // ensure() and put() in one, for text outside the row loops.
    void append(const QString &text)
    {
        ensure(text.size());
        put(text);
    }
    void flush();

private:
    void makeRoom(int count);

    QTextStream &m_stream;
    QString m_chunk;
    QChar *m_data = nullptr;
    int m_used = 0;
    int m_capacity = 0;
};

// Each writer sets the codec and the byte-order-mark generation on the stream first, streams
// the dataset a row at a time, reports progress every 1000 rows and flushes at the end.
bool writeDelimitedText(QTextStream &stream, const Dataset &dataset,
                        const TextWriteOptions &options, WriteReport &report,
                        const WriteProgress &progress);
bool writeHtml(QTextStream &stream, const Dataset &dataset, const TextWriteOptions &options,
               WriteReport &report, const WriteProgress &progress);
bool writeMarkdown(QTextStream &stream, const Dataset &dataset, const TextWriteOptions &options,
                   WriteReport &report, const WriteProgress &progress);
bool writePlainText(QTextStream &stream, const Dataset &dataset, const TextWriteOptions &options,
                    WriteReport &report, const WriteProgress &progress);

// The writer of an output file type, or null when that type cannot be written (yet).
TextWriter textWriterFor(int fileType);
// Whether the type's files start with the comment.
bool fileTypeHasComment(int fileType);
// Whether the type writes column names as a header line that the user may leave out.
bool fileTypeHasHeaderOption(int fileType);
QString writerUnavailableMessage(int fileType);

// The output options that decide how one file is written.
struct OutputFileOptions
{
    int fileType = 0;
    int writeMode = WriteOverwrite;
    QString encoding = QStringLiteral("UTF-8");
    bool byteOrderMark = true;
    QChar delimiter = QLatin1Char(',');
    int quoting = OutputQuotingAsNeeded;
    int lineEnding = LineEndingAutomatic;
    bool writeHeader = true;
    bool writeHeaderFirstAppendOnly = true;
    bool htmlEncode = true;
    // With its variables already replaced.
    QString comment;
    // The `output_file_extensions` map in force, for the warning about an extension that
    // stands for another type; empty for no such check.
    QMap<QString, int> extensionTypes;

    // Excel books: the sheet (variables replaced), whether Overwrite replaces only that sheet,
    // the `excel_output` mode with the manual formats by column, and the style template
    // (variables replaced, with an optional "[sheet]" part).
    QString sheet;
    bool overwriteSheetOnly = true;
    int excelFormatting = 0;
    QList<int> excelColumnFormats;
    bool excelUseStyleTemplate = false;
    QString excelStyleTemplatePath;
};

// Byte-order mark and header of one write, given the state of the target before it is
// opened (exists, size in bytes).
bool byteOrderMarkWanted(const OutputFileOptions &options, bool exists, qint64 size);
bool headerWanted(const OutputFileOptions &options, bool exists, qint64 size);

// Writes the dataset to path, opened directly in the way of the write mode. Returns false on
// failure with the reason in report.warnings. With mode New and an existing file nothing is
// written, and the call still succeeds with a warning.
bool writeOutputFile(const QString &path, const Dataset &dataset, const OutputFileOptions &options,
                     WriteReport &report, const WriteProgress &progress);
