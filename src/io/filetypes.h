#pragma once

#include <QString>
#include <QStringList>

// The table of file types: names, descriptions, default extensions, which can be read and
// written, the mapping of extensions to types kept in the settings, and the guess of the type
// of text taken from the clipboard. The type numbers are those of the FileType enumeration.
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

// The input type for an extension, from the settings map `input_file_extensions` with its
// defaults; the given default when the extension is unknown or maps to no type.
int inputTypeForExtension(const QString &extension, int defaultType);
// True when the extension (any case, surrounding blanks ignored) is listed in
// `blocked_input_extensions`.
bool isInputExtensionBlocked(const QString &extension);

// The type of text pasted or imported from the clipboard.
int guessTextFileType(const QString &text);

} // namespace FileTypes
