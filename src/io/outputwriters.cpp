#include "io/outputwriters.h"

#include "io/excelwriter.h"
#include "io/pathvariables.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

namespace {

bool isUtfEncoding(const QString &encoding)
{
    return encoding.contains(QLatin1String("utf"), Qt::CaseInsensitive);
}

} // namespace

QString writeModeName(int mode)
{
    switch (mode) {
    case WriteDisabled:
        return QStringLiteral("Disabled");
    case WriteOverwrite:
        return QStringLiteral("Overwrite");
    case WriteAppend:
        return QStringLiteral("Append");
    case WriteNew:
        return QStringLiteral("New");
    }
    return QString();
}

QString lineEndingName(int lineEnding)
{
    switch (lineEnding) {
    case LineEndingAutomatic:
        return QStringLiteral("Automatic");
    case LineEndingWindows:
        return QStringLiteral("Windows (CRLF)");
    case LineEndingUnix:
        return QStringLiteral("Mac\\Unix (LF)");
    case LineEndingOldMac:
        return QStringLiteral("Old Mac (CR)");
    case LineEndingRecordSeparator:
        return QStringLiteral("Record separator (0x1E)");
    }
    return QString();
}

QString lineEndingCharacters(int lineEnding)
{
    switch (lineEnding) {
    case LineEndingUnix:
        return QStringLiteral("\n");
    case LineEndingOldMac:
        return QStringLiteral("\r");
    case LineEndingRecordSeparator:
        return QString(QChar(0x1E));
    default:
        return QStringLiteral("\r\n");
    }
}

QString outputQuotingName(int quoting)
{
    switch (quoting) {
    case OutputQuotingAsNeeded:
        return QStringLiteral("As needed");
    case OutputQuotingAlways:
        return QStringLiteral("Always");
    case OutputQuotingNever:
        return QStringLiteral("Never");
    }
    return QString();
}

void prepareTextStream(QTextStream &stream, const QString &encoding, bool byteOrderMark)
{
    stream.setCodec(encoding.toLatin1().constData());
    stream.setGenerateByteOrderMark(byteOrderMark);
}

ChunkedTextWriter::ChunkedTextWriter(QTextStream &stream, int chunkSize)
    : m_stream(stream)
{
    m_chunk.resize(chunkSize);
    m_data = m_chunk.data();
    m_capacity = chunkSize;
}

void ChunkedTextWriter::flush()
{
    // A QStringRef is copied into the stream's buffer, so the chunk never becomes shared.
    if (m_used > 0)
        m_stream << QStringRef(&m_chunk, 0, m_used);
    m_used = 0;
}

void ChunkedTextWriter::makeRoom(int count)
{
    flush();
    if (count > m_capacity) {
        m_chunk.resize(count);
        m_data = m_chunk.data();
        m_capacity = count;
    }
}

TextWriter textWriterFor(int fileType)
{
    const FileFormat *format = FileFormats::find(fileType);
    return format ? format->writeText : nullptr;
}

bool fileTypeHasComment(int fileType)
{
    const FileFormat *format = FileFormats::find(fileType);
    return format && format->comment;
}

bool fileTypeHasHeaderOption(int fileType)
{
    const FileFormat *format = FileFormats::find(fileType);
    return format && format->headerOption;
}

QString writerUnavailableMessage(int fileType)
{
    const QString name = fileTypeName(fileType);
    if (name.isEmpty())
        return QStringLiteral("No file type set for writing.");
    return QStringLiteral("Writing %1 files is not available yet.").arg(name);
}

bool byteOrderMarkWanted(const OutputFileOptions &options, bool exists, qint64 size)
{
    if (!options.byteOrderMark || !isUtfEncoding(options.encoding))
        return false;
    if (options.writeMode == WriteAppend)
        return !exists || size == 0;
    return true;
}

bool headerWanted(const OutputFileOptions &options, bool exists, qint64 size)
{
    if (!options.writeHeader)
        return false;
    if (options.writeMode != WriteAppend || !options.writeHeaderFirstAppendOnly)
        return true;
    // Up to 3 bytes leaves room for nothing but a byte-order mark.
    return !exists || size <= 3;
}

namespace {

void warnOfExtension(const QString &path, const OutputFileOptions &options, WriteReport &report)
{
    const int extensionType = FileExtensionRules::typeFor(options.extensionTypes,
                                                          QFileInfo(path).suffix(), FileTypeNone);
    if (extensionType != FileTypeNone && extensionType != options.fileType) {
        report.warnings.append(QStringLiteral("'%1' extension is '%2' but file type is %3.")
                                   .arg(QDir::toNativeSeparators(path), QFileInfo(path).suffix(),
                                        fileTypeName(options.fileType)));
    }
}

void applyStyleTemplate(const QString &path, const OutputFileOptions &options, WriteReport &report)
{
    QString templatePath;
    QString templateSheet;
    PathVariables::splitSheet(options.excelStyleTemplatePath, templatePath, templateSheet);
    if (QFileInfo(templatePath).isRelative()) {
        report.warnings.append(QStringLiteral("Relative file path for '%1', but .tabulon not "
                                              "saved for it to be relative to.")
                                   .arg(QDir::toNativeSeparators(templatePath)));
        return;
    }
    QString error;
    const QString shown
        = QStringLiteral("%1[%2]").arg(QDir::toNativeSeparators(templatePath), templateSheet);
    if (ExcelWriter::copyStyle(templatePath, templateSheet, path, options.sheet, options.fileType,
                               &error))
        report.info.append(QStringLiteral("Copied styling from '%1'.").arg(shown));
    else
        report.warnings.append(
            QStringLiteral("Unable to copy styling from '%1.\n%2").arg(shown, error));
}

bool writeExcelFile(const QString &path, const Dataset &dataset, const OutputFileOptions &options,
                    WriteReport &report, const WriteProgress &progress)
{
    ExcelWriteOptions excel;
    excel.fileType = options.fileType;
    excel.sheet = options.sheet;
    excel.append = options.writeMode == WriteAppend;
    excel.keepExisting = excel.append || options.overwriteSheetOnly;
    excel.writeHeader = options.writeHeader;
    excel.writeHeaderOnlyIfEmpty = options.writeHeaderFirstAppendOnly;
    excel.formatting = options.excelFormatting;
    excel.manualFormats = options.excelColumnFormats;
    if (!ExcelWriter::write(path, dataset, excel, report, progress))
        return false;
    report.written = true;
    if (options.excelUseStyleTemplate && !options.excelStyleTemplatePath.isEmpty())
        applyStyleTemplate(path, options, report);
    warnOfExtension(path, options, report);
    return true;
}

} // namespace

bool writeOutputFile(const QString &path, const Dataset &dataset, const OutputFileOptions &options,
                     WriteReport &report, const WriteProgress &progress)
{
    const QString nativePath = QDir::toNativeSeparators(path);
    const FileFormat *format = FileFormats::find(options.fileType);
    if (format && format->sheets && options.writeMode != WriteDisabled) {
        if (options.writeMode == WriteNew && QFileInfo::exists(path)) {
            report.warnings.append(QStringLiteral("Write mode='%1' and '%2' already exists")
                                       .arg(writeModeName(WriteNew), nativePath));
            return true;
        }
        return writeExcelFile(path, dataset, options, report, progress);
    }
    const TextWriter writer = textWriterFor(options.fileType);
    if (!writer) {
        report.warnings.append(writerUnavailableMessage(options.fileType));
        return false;
    }
    if (options.writeMode == WriteDisabled)
        return true;

    const QFileInfo before(path);
    const bool exists = before.exists();
    const qint64 size = exists ? before.size() : 0;

    QFile file(path);
    QIODevice::OpenMode openMode = QIODevice::WriteOnly;
    if (options.writeMode == WriteAppend)
        openMode |= QIODevice::Append;
    else if (options.writeMode == WriteNew)
        openMode |= QIODevice::NewOnly;
    else
        openMode |= QIODevice::Truncate;
    if (!file.open(openMode)) {
        switch (options.writeMode) {
        case WriteAppend:
            report.warnings.append(QStringLiteral("Unable to append to '%1'").arg(nativePath));
            return false;
        case WriteNew:
            if (QFileInfo::exists(path)) {
                report.warnings.append(QStringLiteral("Write mode='%1' and '%2' already exists")
                                           .arg(writeModeName(WriteNew), nativePath));
                return true;
            }
            report.warnings.append(QStringLiteral("Unable to create '%1'").arg(nativePath));
            return false;
        default:
            report.warnings.append(QStringLiteral("Unable to write '%1'").arg(nativePath));
            return false;
        }
    }

    TextWriteOptions text;
    text.encoding = options.encoding;
    text.byteOrderMark = byteOrderMarkWanted(options, exists, size);
    text.delimiter = options.delimiter;
    text.quoting = options.quoting;
    text.lineEnding = lineEndingCharacters(options.lineEnding);
    text.writeHeader = headerWanted(options, exists, size);
    text.htmlEncode = options.htmlEncode;
    if (fileTypeHasComment(options.fileType))
        text.comment = options.comment;
    text.path = nativePath;

    QTextStream stream(&file);
    const bool ok = writer(stream, dataset, text, report, progress);
    file.close();
    if (!ok)
        return false;
    report.written = true;
    warnOfExtension(path, options, report);
    return true;
}
