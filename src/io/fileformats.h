#pragma once

#include <QList>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>

class Dataset;
class QTextStream;
struct InputReadOptions;
struct TextReadReport;
struct TextWriteOptions;
struct WriteReport;

// File types, stored by number in documents; their order is fixed.
enum FileType {
    FileTypeDelimited = 0,
    FileTypeXlsx = 1,
    FileTypeXls = 2,
    FileTypeFixedWidth = 3,
    FileTypeJson = 4,
    FileTypeXml = 5,
    FileTypeVCard = 6,
    FileTypeYaml = 7,
    FileTypeHtml = 8,
    FileTypeMarkdown = 9,
    FileTypePlainText = 10,
    FileTypeNone = 11
};

// "Delimited text", "Excel XLSX", ...; empty for no type.
QString fileTypeName(int fileType);

using ReadProgress = std::function<void(double)>;
using WriteProgress = std::function<void(double)>;

// Reads a decoded text stream of `length` characters into `out`, with its messages and
// counts in the report; false when the text could not be read as this format.
using TextReader = bool (*)(QTextStream &stream, qint64 length, const InputReadOptions &options,
                            Dataset &out, TextReadReport &report, const ReadProgress &progress);
// Reads a file that the reader opens itself (binary formats such as Excel books); messages
// as for a text reader.
using FileReader = bool (*)(const QString &path, const InputReadOptions &options, Dataset &out,
                            TextReadReport &report, const ReadProgress &progress);
// Writes the dataset to an open text stream with the flags already decided for this file.
using TextWriter
    = bool (*)(QTextStream &stream, const Dataset &dataset, const TextWriteOptions &options,
               WriteReport &report, const WriteProgress &progress);

// One file type: what it is called, the extensions it claims, which options apply to it and
// the functions that read and write it. Readers and writers are null for a format that is
// not built yet; reading or writing it then fails with a message that says so. A new format
// is one entry in the table of fileformats.cpp plus its reader and writer.
struct FileFormat
{
    int type;
    const char *name;
    const char *description;
    // Offered by the open and save dialogs, and written when a type is picked.
    const char *defaultExtension;
    // The defaults of the `input_file_extensions` and `output_file_extensions` settings, comma
    // separated; empty when the type can't be read or written.
    const char *inputExtensions;
    const char *outputExtensions;
    bool canInput;
    bool canOutput;
    // Input: the first row can be a header; the Encoding option applies (file source); rows
    // can be skipped at the start; the Delimiter and Quoting options apply; the Long/Wide
    // option applies; the file is a book of sheets.
    bool header;
    bool encoding;
    bool ignoredRows;
    bool delimiter;
    bool arraysAsRows;
    bool sheets;
    // Output: a comment goes at the top of the file; the header line can be left out.
    bool comment;
    bool headerOption;
    TextReader readText;
    FileReader readFile;
    TextWriter writeText;

    QString typeName() const { return QString::fromLatin1(name); }
    // A text format gets a decoded stream; the others open the file themselves.
    bool readsText() const { return !sheets; }
};

namespace FileFormats {

// Every type from Delimited text to Plain text, in the order of their numbers.
const QList<const FileFormat *> &all();
// The entry of a type; null for FileTypeNone and numbers out of range.
const FileFormat *find(int fileType);

// "Input data files (*.csv *.xlsx ...)", one "%1 file (*.%2)" per readable type, and
// "All Files (*.*)", joined as a file dialog filter.
QString inputDialogFilter();
// "%1 file (*.%2);;All Files (*.*)" for the type.
QString outputDialogFilter(int fileType);

// The default extension maps of the settings, from the table.
QMap<QString, int> defaultInputExtensionTypes();
QMap<QString, int> defaultOutputExtensionTypes();

// The type of text pasted or imported from the clipboard.
int guessTextFileType(const QString &text);

} // namespace FileFormats

// The user's extension preferences, handed in by the caller so that reading and writing
// need no settings store: which type an extension stands for, and which are never touched.
// Keys are lower-case extensions without the dot.
struct FileExtensionRules
{
    QMap<QString, int> inputTypes;
    QMap<QString, int> outputTypes;
    QSet<QString> blockedInput;
    QSet<QString> blockedOutput;

    // The type that the map gives the extension (any case, surrounding blanks ignored), or
    // defaultType when it gives none.
    static int typeFor(const QMap<QString, int> &types, const QString &extension, int defaultType);
    static bool isBlocked(const QSet<QString> &blocked, const QString &extension);
    int inputType(const QString &extension, int defaultType) const
    {
        return typeFor(inputTypes, extension, defaultType);
    }
    int outputType(const QString &extension, int defaultType) const
    {
        return typeFor(outputTypes, extension, defaultType);
    }
    bool isInputBlocked(const QString &extension) const
    {
        return isBlocked(blockedInput, extension);
    }
    bool isOutputBlocked(const QString &extension) const
    {
        return isBlocked(blockedOutput, extension);
    }
};
