#include "io/excelwriter.h"

#include "io/outputwriters.h"

namespace ExcelColumnFormat {

QStringList names()
{
    return {QStringLiteral("Automatic"), QStringLiteral("Boolean"), QStringLiteral("Date"),
            QStringLiteral("General"),   QStringLiteral("Number"),  QStringLiteral("Text"),
            QStringLiteral("Formula"),   QStringLiteral("Time"),    QStringLiteral("Hyperlink")};
}

QString name(int format)
{
    return names().value(format);
}

} // namespace ExcelColumnFormat

namespace ExcelFormatting {

QStringList names()
{
    return {QStringLiteral("Automatic"), QStringLiteral("General"), QStringLiteral("Manual")};
}

QString name(int mode)
{
    return names().value(mode);
}

} // namespace ExcelFormatting

namespace ExcelWriter {

bool write(const QString &, const Dataset &, const ExcelWriteOptions &options,
           WriteReport &report, const WriteProgress &)
{
    report.warnings.append(writerUnavailableMessage(options.fileType));
    return false;
}

bool copyStyle(const QString &, const QString &, const QString &, const QString &, int,
               QString *error)
{
    *error = QStringLiteral("Not available yet.");
    return false;
}

} // namespace ExcelWriter
