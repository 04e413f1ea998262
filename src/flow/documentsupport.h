#pragma once

#include "flow/flowitem.h"
#include "flow/flowmodel.h"

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

inline bool idLess(const FlowItem *a, const FlowItem *b)
{
    return a->id() < b->id();
}

inline QList<FlowItem *> nodesById(const FlowModel &model, int itemType)
{
    QList<FlowItem *> nodes = model.itemsOfKind(itemType);
    std::sort(nodes.begin(), nodes.end(), idLess);
    return nodes;
}

} // namespace DocumentSupport
