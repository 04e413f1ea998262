#include "io/filetypes.h"

#include "graph/ionode.h"
#include "io/delimitedtext.h"
#include "shell/settings.h"

#include <algorithm>

namespace FileTypes {

namespace {

struct FileTypeRow
{
    const char *description;
    const char *extension;
    bool input;
    bool output;
};

const FileTypeRow Rows[] = {
    {"Comma Separated Value (CSV), Tab Separated Value (TSV) etc.", "csv", true, true},
    {"Excel spreadsheet (Excel 2007 and later)", "xlsx", true, true},
    {"Excel spreadsheet (Excel 2003 and earlier)", "xls", true, true},
    {"Text file with columns of fixed width", "txt", true, false},
    {"JavaScript Object Notation", "json", true, true},
    {"Extensible Markup Language", "xml", true, true},
    {"Virtual Contact File", "vcf", true, true},
    {"Yet Another Markup Language", "yaml", false, true},
    {"Hypertext Markup Language", "html", false, true},
    {"Markdown", "md", false, true},
    {"Plain text, one value per row", "log", true, true},
};

constexpr int RowCount = int(sizeof(Rows) / sizeof(Rows[0]));

} // namespace

QString description(int fileType)
{
    return fileType >= 0 && fileType < RowCount ? QString::fromLatin1(Rows[fileType].description)
                                                : QString();
}

QString defaultExtension(int fileType)
{
    return fileType >= 0 && fileType < RowCount ? QString::fromLatin1(Rows[fileType].extension)
                                                : QString();
}

bool canInput(int fileType)
{
    return fileType >= 0 && fileType < RowCount && Rows[fileType].input;
}

bool canOutput(int fileType)
{
    return fileType >= 0 && fileType < RowCount && Rows[fileType].output;
}

bool isExcel(int fileType)
{
    return fileType == FileTypeXlsx || fileType == FileTypeXls;
}

bool canHaveHeader(int fileType)
{
    return fileType != FileTypePlainText && fileType != FileTypeNone && fileType != FileTypeVCard;
}

bool usesEncoding(int fileType)
{
    return fileType == FileTypeDelimited || fileType == FileTypeFixedWidth
        || fileType == FileTypeXml || fileType == FileTypeVCard || fileType == FileTypePlainText;
}

int inputTypeForExtension(const QString &extension, int defaultType)
{
    const int type = Settings::instance()->inputFileExtensions().value(
        extension.trimmed().toLower(), FileTypeNone);
    return type == FileTypeNone ? defaultType : type;
}

bool isInputExtensionBlocked(const QString &extension)
{
    return Settings::instance()->blockedInputExtensionSet().contains(extension.trimmed().toLower());
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

} // namespace FileTypes
