#pragma once

#include "graph/graphscene.h"
#include "graph/node.h"

#include <QFileInfo>
#include <QList>
#include <QString>

#include <algorithm>

// Small helpers that the reading and the writing of documents share.
namespace DocumentSupport {

inline const QString &productName()
{
    static const QString name = QStringLiteral("Tabulon");
    return name;
}

inline bool fail(QString *error, const QString &message)
{
    if (error)
        *error = message;
    return false;
}

inline QString documentFolder(const QString &path)
{
    return QFileInfo(path).absolutePath();
}

inline bool idLess(const Node *a, const Node *b)
{
    return a->id() < b->id();
}

inline QList<Node *> nodesById(const GraphScene &scene, int itemType)
{
    QList<Node *> nodes = scene.nodesOfType(itemType);
    std::sort(nodes.begin(), nodes.end(), idLess);
    return nodes;
}

} // namespace DocumentSupport
