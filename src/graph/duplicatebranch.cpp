#include "graph/graphscene.h"

#include "graph/connection.h"
#include "graph/inputnode.h"
#include "graph/node.h"
#include "graph/notenode.h"
#include "graph/outputnode.h"
#include "graph/transformnode.h"
#include "graph/undo.h"
#include "shell/application.h"
#include "shell/guards.h"
#include "shell/settings.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/transform.h"

#include <QApplication>
#include <QDateTime>
#include <QLineF>
#include <QLocale>
#include <QRegularExpression>
#include <QtMath>

#include <algorithm>

// Duplicating a branch: the root and all that flows from it, copied under the bottom of the
// scene with new ids, aliases and column ids, fed by the same inputs.

namespace {

// The next free alias after base: "sales" stays if free, else "sales2", "sales3"...; a
// trailing number counts on from itself.
QString nextFreeAlias(const QString &base, const QSet<QString> &used)
{
    if (base.isEmpty() || !used.contains(base))
        return base;
    static const QRegularExpression trailingNumber(QStringLiteral("^(.*?)(\\d+)$"));
    const QRegularExpressionMatch match = trailingNumber.match(base);
    QString stem = base;
    qint64 number = 1;
    if (match.hasMatch()) {
        stem = match.captured(1);
        number = match.captured(2).toLongLong();
    }
    QString candidate;
    do {
        candidate = stem + QString::number(++number);
    } while (used.contains(candidate));
    return candidate;
}

// A copied branch: each node's clone, and each column of an original the one its clone makes.
struct BranchCopy
{
    QHash<const Node *, Node *> nodes;
    QHash<ColumnId, ColumnId> columns;
};

// How far a copy of branch moves: straight down, below every item of the scene.
QPointF branchCopyShift(const Node *root, const QList<Node *> &branch, const QList<Node *> &all)
{
    qreal bottom = root->pos().y();
    for (const Node *node : all)
        bottom = std::max(bottom, node->pos().y());
    qreal top = branch.first()->pos().y();
    for (const Node *node : branch)
        top = std::min(top, node->pos().y());
    return QPointF(0.0, bottom + GraphScene::GridHeight - top);
}

// Adds a moved clone of each node; inputs and outputs take the next alias not yet used.
BranchCopy cloneBranch(GraphScene *scene, const QList<Node *> &branch, const QPointF &shift,
                       QSet<QString> &aliases)
{
    BranchCopy copy;
    for (Node *node : branch) {
        Node *clone = node->clone();
        const int oldId = node->id();
        clone->setId(-1);
        // The copies make columns of their own; options follow them to the new ids.
        const QList<ColumnId> ids = node->dataset()->columnIds();
        for (const ColumnId &id : ids) {
            if (id.sourceId == oldId)
                copy.columns.insert(id, ColumnId(clone->id(), id.ordinal));
        }
        if (clone->type() == Node::InputType || clone->type() == Node::OutputType) {
            auto *output = qobject_cast<OutputNode *>(clone);
            const bool multiFile = output && output->singleOrMulti() == OutputNode::MultipleFiles;
            const QString alias
                = nextFreeAlias(multiFile ? QStringLiteral("multifile") : clone->alias(), aliases);
            clone->setAlias(alias);
            if (!alias.isEmpty())
                aliases.insert(alias);
        }
        clone->setPos(node->pos() + shift);
        scene->addNode(clone);
        copy.nodes.insert(node, clone);
    }
    return copy;
}

// Points the clones' columns, sources and column options at the copies instead of the originals.
void remapClonedColumns(const BranchCopy &copy)
{
    for (Node *clone : qAsConst(copy.nodes)) {
        QList<ColumnId> ids = clone->dataset()->columnIds();
        bool changed = false;
        for (ColumnId &id : ids) {
            const auto found = copy.columns.constFind(id);
            if (found != copy.columns.constEnd()) {
                id = found.value();
                changed = true;
            }
        }
        if (changed)
            clone->dataset()->setColumnIds(ids);
        if (auto *transform = qobject_cast<TransformNode *>(clone)) {
            transform->remapParameterSources(copy.nodes, false);
            const QList<Parameter *> parameters = transform->transform()->parameters();
            for (Parameter *parameter : parameters)
                parameter->remapColumnIds(copy.columns);
        }
    }
}

} // namespace

void GraphScene::duplicateBranchByUser()
{
    const QList<Node *> selected = selectedNodes();
    if (selected.size() != 1 || m_running)
        return;
    UndoStep step(QStringLiteral("duplicate branch"));
    clearSelection();

    Node *root = selected.first();
    const QSet<Node *> branchSet = root->allDownstream(true);
    QList<Node *> branch(branchSet.cbegin(), branchSet.cend());
    sortLeftToRight(branch);

    QSet<QString> aliases;
    const QList<Node *> all = nodes();
    for (const Node *node : all) {
        if (!node->alias().isEmpty())
            aliases.insert(node->alias());
    }
    const BranchCopy copy = cloneBranch(this, branch, branchCopyShift(root, branch, all), aliases);

    for (Node *node : qAsConst(branch)) {
        const QList<Connection *> incoming = node->connections(ConnectionDirection::In);
        for (const Connection *connection : incoming) {
            Node *source = copy.nodes.value(connection->source(), connection->source());
            makeConnection(source, copy.nodes.value(node));
        }
    }
    remapClonedColumns(copy);
    if (Node *rootClone = copy.nodes.value(root))
        rootClone->setSelected(true);
    refreshGeometry();
    emit nodesAdded();
    runChangesIfAuto();
}
