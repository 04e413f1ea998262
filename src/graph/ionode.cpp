#include "graph/ionode.h"

#include <QDir>
#include <QFileInfo>

QString IONode::displayName() const
{
    if (m_path.isEmpty())
        return kindText();
    return QFileInfo(m_path).fileName();
}

QString IONode::leftPaneName() const
{
    return displayName();
}

QList<QPair<QString, QString>> IONode::fileSummary() const
{
    QList<QPair<QString, QString>> lines;
    lines.append({QStringLiteral("Path"),
                  m_path.isEmpty() ? QStringLiteral("<unset>") : QDir::toNativeSeparators(m_path)});
    lines.append({QStringLiteral("Type"), fileTypeName(m_fileType)});
    return lines;
}

void IONode::setSourcePaths(const QString &documentFolder)
{
    if (m_path.isEmpty() || QFileInfo(m_path).isAbsolute())
        return;
    m_path = QDir::cleanPath(QDir(documentFolder).absoluteFilePath(m_path));
}

void IONode::copyIOInto(IONode *copy) const
{
    copyInto(copy);
    copy->m_path = m_path;
    copy->m_fileType = m_fileType;
}
