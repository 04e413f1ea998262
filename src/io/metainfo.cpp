#include "io/metainfo.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QSysInfo>

namespace MetaInfo {

QStringList placeNames()
{
    return {QStringLiteral("Not added"), QStringLiteral("At start"), QStringLiteral("At end"),
            QStringLiteral("Every row")};
}

QStringList variables()
{
    return {QStringLiteral("CurrentDateTime"),
            QStringLiteral("CurrentDate"),
            QStringLiteral("ComputerName"),
            QStringLiteral("UserName"),
            QStringLiteral("DataRows"),
            QStringLiteral("DataColumns"),
            QStringLiteral("DataValues"),
            QStringLiteral("FilePath"),
            QStringLiteral("FileName"),
            QStringLiteral("FileSizeBytes"),
            QStringLiteral("FileCreatedDateTime"),
            QStringLiteral("FileUpdatedDateTime"),
            QStringLiteral("FileCreatedDate"),
            QStringLiteral("FileUpdatedDate"),
            QStringLiteral("FileSheetName")};
}

QString defaultText(bool fileSource)
{
    return fileSource ? QStringLiteral("$(CurrentDateTime) $(FilePath)")
                      : QStringLiteral("$(CurrentDateTime)");
}

static QString userName()
{
    QString name = qEnvironmentVariable("USER");
    if (name.isEmpty())
        name = qEnvironmentVariable("LOGNAME");
    return name;
}

static QString valueOf(const QString &variable, const Context &context, const QFileInfo &file)
{
    const QLocale locale;
    if (variable == QLatin1String("CurrentDateTime"))
        return QDateTime::currentDateTime().toString(Qt::ISODate);
    if (variable == QLatin1String("CurrentDate"))
        return QDate::currentDate().toString(Qt::ISODate);
    if (variable == QLatin1String("ComputerName"))
        return QSysInfo::machineHostName();
    if (variable == QLatin1String("UserName"))
        return userName();
    if (variable == QLatin1String("DataRows"))
        return locale.toString(context.rows);
    if (variable == QLatin1String("DataColumns"))
        return locale.toString(context.columns);
    if (variable == QLatin1String("DataValues"))
        return locale.toString(context.rows * context.columns);

    // The File family.
    if (context.path.isEmpty())
        return QString();
    if (!file.exists())
        return QStringLiteral("(file not found)");
    if (variable == QLatin1String("FilePath"))
        return QDir::toNativeSeparators(file.absoluteFilePath());
    if (variable == QLatin1String("FileName"))
        return file.fileName();
    if (variable == QLatin1String("FileSizeBytes"))
        return locale.toString(file.size());
    if (variable == QLatin1String("FileCreatedDateTime"))
        return file.birthTime().toString(Qt::ISODate);
    if (variable == QLatin1String("FileUpdatedDateTime"))
        return file.lastModified().toString(Qt::ISODate);
    if (variable == QLatin1String("FileCreatedDate"))
        return file.birthTime().date().toString(Qt::ISODate);
    if (variable == QLatin1String("FileUpdatedDate"))
        return file.lastModified().date().toString(Qt::ISODate);
    if (variable == QLatin1String("FileSheetName"))
        return context.sheetName;
    return QString();
}

QString expand(const QString &text, const Context &context)
{
    QString result = text;
    const QFileInfo file(context.path);
    const QStringList names = variables();
    for (const QString &name : names) {
        if (!result.contains(QLatin1String("$(")))
            break;
        const QString token = QStringLiteral("$(%1)").arg(name);
        if (result.contains(token))
            result.replace(token, valueOf(name, context, file));
    }
    return result;
}

} // namespace MetaInfo
