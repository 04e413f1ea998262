#include "flow/ioitem.h"

#include <QDir>
#include <QFileInfo>

QString IOItem::displayName() const
{
    if (m_path.isEmpty())
        return kindText();
    return QFileInfo(m_path).fileName();
}

QString IOItem::leftPaneName() const
{
    return displayName();
}

QList<QPair<QString, QString>> IOItem::fileSummary() const
{
    QList<QPair<QString, QString>> lines;
    lines.append({QStringLiteral("Path"),
                  m_path.isEmpty() ? QStringLiteral("<unset>") : QDir::toNativeSeparators(m_path)});
    lines.append({QStringLiteral("Type"), fileTypeName(m_fileType)});
    return lines;
}

void IOItem::setSourcePaths(const QString &documentFolder)
{
    if (m_path.isEmpty() || QFileInfo(m_path).isAbsolute())
        return;
    m_path = QDir::cleanPath(QDir(documentFolder).absoluteFilePath(m_path));
}

void IOItem::copyIOInto(IOItem *copy) const
{
    copyInto(copy);
    copy->m_path = m_path;
    copy->m_fileType = m_fileType;
}
