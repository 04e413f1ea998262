#include "io/filetypes.h"

#include "shell/settings.h"

#include <QFileInfo>

namespace FileTypes {

QString description(int fileType)
{
    const FileFormat *format = FileFormats::find(fileType);
    return format ? QString::fromLatin1(format->description) : QString();
}

QString defaultExtension(int fileType)
{
    const FileFormat *format = FileFormats::find(fileType);
    return format ? QString::fromLatin1(format->defaultExtension) : QString();
}

bool canInput(int fileType)
{
    const FileFormat *format = FileFormats::find(fileType);
    return format && format->canInput;
}

bool canOutput(int fileType)
{
    const FileFormat *format = FileFormats::find(fileType);
    return format && format->canOutput;
}

bool isExcel(int fileType)
{
    const FileFormat *format = FileFormats::find(fileType);
    return format && format->sheets;
}

bool canHaveHeader(int fileType)
{
    const FileFormat *format = FileFormats::find(fileType);
    return format && format->header;
}

bool usesEncoding(int fileType)
{
    const FileFormat *format = FileFormats::find(fileType);
    return format && format->encoding;
}

FileExtensionRules currentExtensionRules()
{
    const Settings *settings = Settings::instance();
    FileExtensionRules rules;
    rules.inputTypes = settings->inputFileExtensions();
    rules.outputTypes = settings->outputFileExtensions();
    rules.blockedInput = settings->blockedInputExtensionSet();
    rules.blockedOutput = settings->blockedOutputExtensionSet();
    return rules;
}

int inputTypeForExtension(const QString &extension, int defaultType)
{
    return FileExtensionRules::typeFor(Settings::instance()->inputFileExtensions(), extension,
                                       defaultType);
}

bool isInputExtensionBlocked(const QString &extension)
{
    return FileExtensionRules::isBlocked(Settings::instance()->blockedInputExtensionSet(),
                                         extension);
}

} // namespace FileTypes

int outputFileTypeForPath(const QString &path, int defaultType)
{
    return FileExtensionRules::typeFor(Settings::instance()->outputFileExtensions(),
                                       QFileInfo(path).suffix(), defaultType);
}
