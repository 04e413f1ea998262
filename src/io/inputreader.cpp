#include "io/inputreader.h"

#include "data/valueinterpretation.h"
#include "io/metainfo.h"
#include "shell/memory.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextCodec>
#include <QTextStream>

#include <new>

namespace {

QString native(const QString &path)
{
    return QDir::toNativeSeparators(path);
}

QString unavailableMessage(int fileType)
{
    return QStringLiteral("Reading %1 files is not available yet.").arg(fileTypeName(fileType));
}

// Runs a reader and takes over its messages. Running out of memory, or past the limit the
// user set, leaves an empty dataset and the one warning instead.
template<typename Read>
bool runReader(InputReadResult &result, const QString &pathForMessages, Read &&read)
{
    TextReadReport report;
    try {
        const bool ok = read(report);
        result.info += report.info;
        result.warnings += report.warnings;
        return ok;
    } catch (const MaxMemoryException &) {
    } catch (const std::bad_alloc &) { }
    result.dataset.clear();
    result.warnings.append(
        QStringLiteral("'%1' is too big for Tabulon to read.").arg(pathForMessages));
    return false;
}

bool readText(QTextStream &stream, qint64 length, const QString &pathForMessages,
              const InputReadOptions &options, const ReadProgress &progress,
              InputReadResult &result)
{
    const FileFormat *format = FileFormats::find(options.fileType);
    if (!format || !format->readText) {
        result.warnings.append(unavailableMessage(options.fileType));
        return false;
    }
    return runReader(result, pathForMessages, [&](TextReadReport &report) {
        return format->readText(stream, length, options, result.dataset, report, progress);
    });
}

// A book of sheets is opened by its own reader; nothing of it is decoded here.
bool readBook(const FileFormat &format, const InputReadOptions &options,
              const ReadProgress &progress, InputReadResult &result)
{
    if (!format.readFile) {
        result.warnings.append(unavailableMessage(format.type));
        return false;
    }
    result.fileOpened = true;
    return runReader(result, native(options.path), [&](TextReadReport &report) {
        return format.readFile(options.path, options, result.dataset, report, progress);
    });
}

bool readFile(const InputReadOptions &options, const ReadProgress &progress,
              InputReadResult &result)
{
    const FileFormat *format = FileFormats::find(options.fileType);
    if (format && !format->readsText())
        return readBook(*format, options, progress, result);
    QFile file(options.path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    result.fileOpened = true;
    QTextStream stream(&file);
    QString codecName = QStringLiteral("UTF-8");
    const bool automatic = options.encoding == QLatin1String("Automatic");
    // A format without the Encoding option, such as JSON, is always Unicode.
    if (automatic || !format || !format->encoding) {
        stream.setCodec("UTF-8");
        stream.setAutoDetectUnicode(true);
        if (format && format->encoding && automatic)
            result.info.append(
                QStringLiteral(
                    "Encoding=Automatic guesses '%1'. Set 'Encoding' option to change.\n")
                    .arg(QStringLiteral("UTF-8")));
    } else {
        stream.setAutoDetectUnicode(false);
        if (QTextCodec *codec = QTextCodec::codecForName(options.encoding.toLatin1())) {
            stream.setCodec(codec);
            codecName = options.encoding;
        }
    }
    qint64 length = file.size();
    if (codecName.contains(QLatin1String("-16")))
        length /= 2;
    else if (codecName.contains(QLatin1String("-32")))
        length /= 4;
    return readText(stream, length, native(options.path), options, progress, result);
}

bool readSource(const InputReadOptions &options, const ReadProgress &progress,
                InputReadResult &result)
{
    if (options.medium == InputReadOptions::File && !options.path.isEmpty()) {
        const QString file = inputPathWithoutSheet(options.path);
        if (!QFileInfo::exists(file)) {
            result.warnings.append(QStringLiteral("File '%1' not found").arg(native(file)));
            return false;
        }
        if (FileExtensionRules::isBlocked(options.blockedExtensions, QFileInfo(file).suffix())) {
            result.warnings.append(
                QStringLiteral("The extension for this file is blocked in 'Preferences>Input "
                               "Extensions':\n%1")
                    .arg(native(file)));
            return false;
        }
        const bool ok = readFile(options, progress, result);
        // A book's extension was checked when its sheet was chosen.
        const FileFormat *format = FileFormats::find(options.fileType);
        if (!format || !format->sheets) {
            const QString warning
                = extensionMismatchWarning(options.path, options.fileType, options.extensionTypes);
            if (!warning.isEmpty())
                result.warnings.append(warning);
        }
        return ok;
    }
    if (options.medium == InputReadOptions::Clipboard && !options.text.isEmpty()) {
        QString text = options.text;
        QTextStream stream(&text, QIODevice::ReadOnly);
        return readText(stream, text.size(), QString(), options, progress, result);
    }
    return true;
}

void addMetaInformation(const InputReadOptions &options, Dataset &dataset)
{
    if (!dataset.hasColumns() || options.metaPlace == MetaInfo::NotAdded)
        return;
    const bool fileSource = options.medium == InputReadOptions::File;
    MetaInfo::Context context;
    if (fileSource)
        context.path = inputPathWithoutSheet(options.path);
    context.sheetName = options.worksheet;
    context.rows = dataset.rowCount();
    context.columns = dataset.columnCount();
    const QString text = MetaInfo::expand(
        options.metaText.isEmpty() ? MetaInfo::defaultText(fileSource) : options.metaText, context);
    if (options.metaPlace == MetaInfo::EveryRow) {
        dataset.appendColumn();
        const int column = dataset.lastColumn();
        QStringList values;
        values.reserve(dataset.rowCount());
        for (int r = 0; r < dataset.rowCount(); ++r)
            values.append(text);
        dataset.setColumn(column, values);
        if (dataset.hasHeader())
            dataset.setColumnName(column, options.metaColumnName);
        return;
    }
    QStringList row {text};
    if (options.metaPlace == MetaInfo::AtStart)
        dataset.insertRow(0, row);
    else
        dataset.appendRow(row, true);
}

} // namespace

DelimitedReadOptions InputReadOptions::delimitedOptions() const
{
    DelimitedReadOptions options;
    options.delimiter = delimiter;
    options.customDelimiter = customDelimiter;
    options.quoting = quoting;
    options.ignoredRows = ignoredRows;
    options.ignoreRepeatedDelimiters = ignoreRepeatedDelimiters;
    options.trim = trim;
    options.simplify = simplify;
    options.ignoreEmpty = ignoreEmptyRows;
    return options;
}

InputReadResult readInput(const InputReadOptions &options, const InputReadCallbacks &callbacks)
{
    InputReadResult result;
    result.header = options.header;
    if (callbacks.stopRequested && callbacks.stopRequested()) {
        result.stopped = true;
        return result;
    }
    result.ok = readSource(options, callbacks.progress, result);
    Dataset &dataset = result.dataset;
    // A source that could not be read must not use up the header guess.
    if (result.ok || result.header != InputReadOptions::GuessHeader) {
        if (result.header == InputReadOptions::GuessHeader)
            result.header = guessHasHeader(dataset) ? InputReadOptions::HasHeader
                                                    : InputReadOptions::NoHeader;
        dataset.setHasHeader(result.header == InputReadOptions::HasHeader);
    }
    if (result.ok)
        addMetaInformation(options, dataset);
    dataset.assignColumnIds(options.columnOrigin);
    if (dataset.hasColumns() && options.ignoreEmptyColumns) {
        const int removed = dataset.removeEmptyColumns();
        if (removed > 0)
            result.info.append(QStringLiteral("%1 empty column(s) ignored").arg(removed));
    }
    return result;
}

bool guessHasHeader(const Dataset &dataset)
{
    if (dataset.hasHeader())
        return true;
    if (dataset.rowCount() < 2)
        return false;
    const QStringList formats = dateFormats();
    const QStringList &first = dataset.row(0);
    for (const QString &cell : first) {
        if (cell.trimmed().isEmpty())
            continue;
        bool number = false;
        toDouble(cell, false, false, &number);
        if (number || toDate(cell, formats).isValid())
            return false;
    }
    return true;
}

QString inputPathWithoutSheet(const QString &path)
{
    if (path.contains(QLatin1Char('[')) && path.contains(QLatin1Char(']')))
        return path.left(path.indexOf(QLatin1Char('[')));
    return path;
}

QString extensionMismatchWarning(const QString &path, int fileType,
                                 const QMap<QString, int> &extensionTypes)
{
    const QString file = inputPathWithoutSheet(path);
    const QString extension = QFileInfo(file).suffix();
    const int byExtension = FileExtensionRules::typeFor(extensionTypes, extension, FileTypeNone);
    if (byExtension == FileTypeNone || byExtension == fileType)
        return QString();
    return QStringLiteral("'%1' extension is '%2' but file type is %3.")
        .arg(native(file), extension, fileTypeName(fileType));
}
