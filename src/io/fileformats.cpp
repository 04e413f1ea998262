#include "io/fileformats.h"

#include "io/delimitedtext.h"
#include "io/excelreader.h"
#include "io/inputreader.h"
#include "io/outputwriters.h"

#include <algorithm>

namespace {

// Readers that adapt the item's options to the delimited text reader.
bool readDelimitedInput(QTextStream &stream, qint64 length, const InputReadOptions &options,
                        Dataset &out, TextReadReport &report, const ReadProgress &progress)
{
    return readDelimitedText(stream, length, options.delimitedOptions(), out, report, progress);
}

bool readPlainTextInput(QTextStream &stream, qint64 length, const InputReadOptions &options,
                        Dataset &out, TextReadReport &report, const ReadProgress &progress)
{
    return readPlainText(stream, length, options.delimitedOptions(), out, report, progress);
}

// clang-format off
// Columns: type, name, description, default extension, input extensions, output extensions,
// can input, can output, header, encoding, ignored rows, delimiter, arrays as rows, sheets,
// comment, header option, text reader, file reader, text writer.
const FileFormat Formats[] = {
    {FileTypeDelimited, "Delimited text", "Comma Separated Value (CSV), Tab Separated Value (TSV) etc.",
     "csv", "csv,tsv", "csv,tsv", true, true,
     true, true, true, true, false, false, false, true,
     readDelimitedInput, nullptr, writeDelimitedText},
    {FileTypeXlsx, "Excel XLSX", "Excel spreadsheet (Excel 2007 and later)",
     "xlsx", "xlsx", "xlsx", true, true,
     true, false, true, false, false, true, false, true,
     nullptr, ExcelReader::read, nullptr},
    {FileTypeXls, "Excel XLS", "Excel spreadsheet (Excel 2003 and earlier)",
     "xls", "xls", "xls", true, true,
     true, false, true, false, false, true, false, true,
     nullptr, ExcelReader::read, nullptr},
    {FileTypeFixedWidth, "Fixed width", "Text file with columns of fixed width",
     "txt", "txt", "", true, false,
     true, true, true, false, false, false, false, false,
     nullptr, nullptr, nullptr},
    {FileTypeJson, "JSON", "JavaScript Object Notation",
     "json", "json,geojson", "json", true, true,
     true, false, false, false, true, false, false, false,
     nullptr, nullptr, nullptr},
    {FileTypeXml, "XML", "Extensible Markup Language",
     "xml", "xml,opml", "xml", true, true,
     true, true, false, false, true, false, true, false,
     nullptr, nullptr, nullptr},
    {FileTypeVCard, "vCard", "Virtual Contact File",
     "vcf", "vcf", "vcf", true, true,
     false, true, true, false, false, false, false, false,
     nullptr, nullptr, nullptr},
    {FileTypeYaml, "YAML", "Yet Another Markup Language",
     "yaml", "", "yaml", false, true,
     true, false, false, false, false, false, true, false,
     nullptr, nullptr, nullptr},
    {FileTypeHtml, "HTML", "Hypertext Markup Language",
     "html", "", "html", false, true,
     true, false, false, false, false, false, true, true,
     nullptr, nullptr, writeHtml},
    {FileTypeMarkdown, "Markdown", "Markdown",
     "md", "", "md", false, true,
     true, false, false, false, false, false, true, true,
     nullptr, nullptr, writeMarkdown},
    {FileTypePlainText, "Plain text", "Plain text, one value per row",
     "log", "log", "log,txt", true, true,
     false, true, true, false, false, false, false, true,
     readPlainTextInput, nullptr, writePlainText},
};
// clang-format on

QMap<QString, int> extensionTypes(const char *FileFormat::*extensions)
{
    QMap<QString, int> map;
    for (const FileFormat *format : FileFormats::all()) {
        const QStringList list
            = QString::fromLatin1(format->*extensions).split(QLatin1Char(','), Qt::SkipEmptyParts);
        for (const QString &extension : list)
            map.insert(extension, format->type);
    }
    return map;
}

} // namespace

QString fileTypeName(int fileType)
{
    const FileFormat *format = FileFormats::find(fileType);
    return format ? format->typeName() : QString();
}

namespace FileFormats {

const QList<const FileFormat *> &all()
{
    static const QList<const FileFormat *> list = [] {
        QList<const FileFormat *> formats;
        for (const FileFormat &format : Formats)
            formats.append(&format);
        return formats;
    }();
    return list;
}

const FileFormat *find(int fileType)
{
    constexpr int count = int(sizeof(Formats) / sizeof(Formats[0]));
    return fileType >= 0 && fileType < count ? &Formats[fileType] : nullptr;
}

QString inputDialogFilter()
{
    QStringList patterns;
    QStringList filters;
    for (const FileFormat *format : all()) {
        if (!format->canInput)
            continue;
        const QString extension = QString::fromLatin1(format->defaultExtension);
        patterns.append(QStringLiteral("*.") + extension);
        filters.append(QStringLiteral("%1 file (*.%2)").arg(format->typeName(), extension));
    }
    patterns.removeDuplicates();
    filters.prepend(QStringLiteral("Input data files (%1)").arg(patterns.join(QLatin1Char(' '))));
    filters.append(QStringLiteral("All Files (*.*)"));
    return filters.join(QStringLiteral(";;"));
}

QString outputDialogFilter(int fileType)
{
    const FileFormat *format = find(fileType);
    const QString extension = format ? QString::fromLatin1(format->defaultExtension) : QString();
    return QStringLiteral("%1 file (*.%2);;All Files (*.*)").arg(fileTypeName(fileType), extension);
}

QMap<QString, int> defaultInputExtensionTypes()
{
    return extensionTypes(&FileFormat::inputExtensions);
}

QMap<QString, int> defaultOutputExtensionTypes()
{
    return extensionTypes(&FileFormat::outputExtensions);
}

int guessTextFileType(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return FileTypeDelimited;
    const QChar first = trimmed.front();
    const QChar last = trimmed.back();
    if ((first == QLatin1Char('[') && last == QLatin1Char(']'))
        || (first == QLatin1Char('{') && last == QLatin1Char('}')))
        return FileTypeJson;
    if (first == QLatin1Char('<') && last == QLatin1Char('>'))
        return FileTypeXml;
    if (trimmed.startsWith(QLatin1String("BEGIN:VCARD"))
        && trimmed.endsWith(QLatin1String("END:VCARD")))
        return FileTypeVCard;
    if (text.size() < 101)
        return FileTypeDelimited;

    const QString sample = text.size() <= 1000 ? text : text.mid((text.size() - 1000) / 2, 1000);
    int highest = 0;
    const QList<int> candidates = delimiterList(false, false, false);
    for (int delimiter : candidates)
        highest = std::max(highest, int(sample.count(delimiterCharacter(delimiter))));

    int spaces = 0;
    int longRuns = 0;
    int run = 0;
    for (const QChar c : sample) {
        if (c == QLatin1Char(' ')) {
            ++spaces;
            ++run;
            continue;
        }
        if (run >= 3)
            ++longRuns;
        run = 0;
    }
    if (run >= 3)
        ++longRuns;
    if (longRuns >= 2 && spaces >= 3 * highest)
        return FileTypeFixedWidth;
    if (sample.size() * 0.025 > highest)
        return FileTypePlainText;
    return FileTypeDelimited;
}

} // namespace FileFormats

int FileExtensionRules::typeFor(const QMap<QString, int> &types, const QString &extension,
                                int defaultType)
{
    const int type = types.value(extension.trimmed().toLower(), FileTypeNone);
    return type == FileTypeNone ? defaultType : type;
}

bool FileExtensionRules::isBlocked(const QSet<QString> &blocked, const QString &extension)
{
    return blocked.contains(extension.trimmed().toLower());
}
