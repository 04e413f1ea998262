#pragma once

#include <QString>
#include <QStringList>

// The text that an input adds to its data as "meta information", with variables written as
// "$(Name)" that stand for the time, the machine, the data's size and the source file.
namespace MetaInfo {

enum Place { NotAdded = 0, AtStart = 1, AtEnd = 2, EveryRow = 3 };

QStringList placeNames();
// The variable names, in the order of expansion.
QStringList variables();
// The default text: CurrentDateTime and FilePath for a file, CurrentDateTime alone otherwise.
QString defaultText(bool fileSource);

struct Context
{
    QString path; // empty when the source is not a file
    QString sheetName; // worksheet, for Excel sources
    qint64 rows = 0;
    qint64 columns = 0;
};

QString expand(const QString &text, const Context &context);

} // namespace MetaInfo
