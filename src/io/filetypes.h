#pragma once

#include "io/fileformats.h"

#include <QString>

// Questions about file types answered from the table of formats, and the extension rules of
// the user's preferences as the settings hold them now. The only part of io/ that reads the
// settings store: readers and writers take the rules in their options instead.
namespace FileTypes {

QString description(int fileType);
QString defaultExtension(int fileType);
bool canInput(int fileType);
bool canOutput(int fileType);
bool isExcel(int fileType);
// Types that can carry a header row.
bool canHaveHeader(int fileType);
// Types for which the Encoding option applies (for a file source).
bool usesEncoding(int fileType);

// The extension maps and blocked lists of the settings.
FileExtensionRules currentExtensionRules();
// The input type for an extension, from the settings map `input_file_extensions` with its
// defaults; the given default when the extension is unknown or maps to no type.
int inputTypeForExtension(const QString &extension, int defaultType);
// True when the extension (any case, surrounding blanks ignored) is listed in
// `blocked_input_extensions`.
bool isInputExtensionBlocked(const QString &extension);

// The type of text pasted or imported from the clipboard.
inline int guessTextFileType(const QString &text)
{
    return FileFormats::guessTextFileType(text);
}

} // namespace FileTypes

// The file type that output_file_extensions gives the extension of path, or defaultType.
int outputFileTypeForPath(const QString &path, int defaultType);
