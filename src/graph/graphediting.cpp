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

// The edits of the user on the scene: connections, new items in free places, deletion with
// bridging, disconnection and the snap grid; duplicating a branch is in duplicatebranch.cpp.
// Each public edit is one undo step.

namespace {

bool isNodeType(int type)
{
    return type >= Node::InputType && type <= Node::NoteType;
}

QRectF itemRect(const QPointF &pos)
{
    return QRectF(pos, Node::itemSize());
}

} // namespace

Connection *GraphScene::makeConnection(Node *source, Node *target)
{
    auto *connection = new Connection(source, target);
    source->addConnection(connection);
    target->addConnection(connection);
    addItem(connection);
    return connection;
}

void GraphScene::deleteConnection(Connection *connection)
{
    connection->source()->removeConnection(connection);
    connection->target()->removeConnection(connection);
    removeItem(connection);
    delete connection;
}

void GraphScene::refreshGeometry()
{
    const QList<Connection *> connections = allConnections();
    for (Connection *connection : connections)
        connection->updatePath();
    QRectF bounds;
    const QList<Node *> all = nodes();
    for (const Node *node : all)
        bounds |= itemRect(node->pos());
    // Room for the selection outline and the connect overlays along the edges.
    setSceneRect(bounds.adjusted(-45.0, -45.0, 45.0, 45.0));
}

void GraphScene::runChangesIfAuto()
{
    if (m_autoRun && !m_running)
        process(RunChanges, false);
}

QList<Node *> GraphScene::selectedNodes() const
{
    QList<Node *> result;
    const QList<QGraphicsItem *> selection = selectedItems();
    for (QGraphicsItem *item : selection) {
        if (isNodeType(item->type()))
            result.append(static_cast<Node *>(item));
    }
    return result;
}

bool GraphScene::collides(const QRectF &rect, const Node *ignore) const
{
    const QList<Node *> all = nodes();
    return std::any_of(all.cbegin(), all.cend(), [&](const Node *node) {
        return node != ignore && itemRect(node->pos()).intersects(rect);
    });
}

QPointF GraphScene::snapPoint(const QPointF &point)
{
    return QPointF(qFloor(point.x() / GridWidth + 0.5) * GridWidth,
                   qFloor(point.y() / GridHeight + 0.5) * GridHeight);
}

GraphScene *GraphScene::deepCopy(QObject *parent) const
{
    auto *copy = new GraphScene(parent);
    copy->m_snapToGrid = m_snapToGrid;
    copy->m_autoRun = m_autoRun;
    copy->m_documentPath = m_documentPath;

    QHash<const Node *, Node *> map;
    const QList<Node *> all = nodes();
    for (const Node *node : all) {
        Node *clone = node->clone();
        clone->setZValue(node->zValue());
        copy->addNode(clone);
        map.insert(node, clone);
    }
    for (Node *clone : qAsConst(map)) {
        if (auto *transform = qobject_cast<TransformNode *>(clone))
            transform->remapParameterSources(map, true);
    }
    const QList<Connection *> connections = allConnections();
    for (const Connection *connection : connections) {
        Node *source = map.value(connection->source());
        Node *target = map.value(connection->target());
        if (source && target)
            copy->makeConnection(source, target);
    }
    copy->refreshGeometry();
    return copy;
}

QList<Node *> GraphScene::connectionCandidates(const Node *source) const
{
    QList<Node *> candidates;
    if (!source)
        return candidates;
    const QList<Node *> all = nodes();
    for (Node *target : all) {
        if (target == source)
            continue;
        if (target->connections(ConnectionDirection::In).size() >= target->maximumInputs())
            continue;
        if (target->isConnectedFrom(source) || source->isUpstream(target))
            continue;
        candidates.append(target);
    }
    return candidates;
}

bool GraphScene::canStartConnection(const Node *source) const
{
    return source && source->connections(ConnectionDirection::Out).size() < source->maximumOutputs()
        && !connectionCandidates(source).isEmpty();
}

Connection *GraphScene::addConnectionByUser(Node *source, Node *target)
{
    if (!source || !target || !connectionCandidates(source).contains(target)
        || source->connections(ConnectionDirection::Out).size() >= source->maximumOutputs())
        return nullptr;
    UndoStep step(QStringLiteral("add connection"));
    Connection *connection = makeConnection(source, target);
    const QList<Connection *> touching
        = source->connections() + target->connections(ConnectionDirection::Both);
    for (Connection *each : touching)
        each->updatePath();
    if (auto *transform = qobject_cast<TransformNode *>(target)) {
        transform->connectParameters();
        emit nodeParametersChanged(transform);
    }
    target->setStatus(Node::NeedsUpdate, true);
    runChangesIfAuto();
    return connection;
}

void GraphScene::addInputNodeByUser(InputNode *node, const QPointF &scenePos, bool ctrlHeld)
{
    if (!node)
        return;
    UndoStep step(node->medium() == InputNode::Clipboard ? QStringLiteral("add clipboard")
                                                         : QStringLiteral("add file(s)"));
    const QPointF pos = scenePos.isNull() ? freePlace({}, ctrlHeld, scenePos) : scenePos;
    node->setPos(pos);
    addNode(node);
    clearSelection();
    node->setSelected(true);
    refreshGeometry();
    emit nodesAdded();
    runChangesIfAuto();
}

OutputNode *GraphScene::addOutputByUser(Node *source, const QString &path)
{
    if (!source || source->maximumOutputs() <= source->connections(ConnectionDirection::Out).size())
        return nullptr;
    UndoStep step(QStringLiteral("add output"));
    clearSelection();
    auto *output = new OutputNode(-1, path);
    output->setPos(freePlace({source}, false, QPointF()));
    addNode(output);
    makeConnection(source, output);
    output->setStatus(Node::NeedsUpdate, true);
    output->setSelected(true);
    refreshGeometry();

    const qint64 rows = source->rowCount();
    const qint64 columns = source->columnCount();
    const QLocale locale;
    const QString tooBig = QStringLiteral(
        "The output dataset exceeds the maximum size for an %1 file of %2 rows x %3 columns. "
        "It may be truncated by Excel.");
    if (output->fileType() == FileTypeXlsx && (rows >= 1048576 || columns >= 16384))
        emit showWarningMessage(QStringLiteral("Output"),
                                tooBig.arg(QStringLiteral("Excel .xlsx"), locale.toString(1048576),
                                           locale.toString(16384)));
    else if (output->fileType() == FileTypeXls && (rows >= 65536 || columns >= 256))
        emit showWarningMessage(
            QStringLiteral("Output"),
            tooBig.arg(QStringLiteral("Excel .xls"), locale.toString(65536), locale.toString(256)));
    emit nodesAdded();
    runChangesIfAuto();
    return output;
}

QPointF GraphScene::notePlace(const QPointF &scenePos, int *arrow) const
{
    *arrow = 0;
    const QList<Node *> all = nodes();
    const Node *under = nullptr;
    for (const Node *node : all) {
        if (node->type() != Node::NoteType && itemRect(node->pos()).contains(scenePos))
            under = node;
    }
    if (!under)
        return scenePos;
    // The sides a note prefers depend on where the item's arrows run: 1 below, 2 left,
    // 3 above, 4 right.
    QList<int> sides;
    switch (under->type()) {
    case Node::InputType:
        sides = {2, 3, 1, 4};
        break;
    case Node::OutputType:
        sides = {4, 3, 1, 2};
        break;
    default:
        sides = {3, 1, 2, 4};
        break;
    }
    for (int side : qAsConst(sides)) {
        QPointF offset;
        switch (side) {
        case 1:
            offset = QPointF(0.0, GridHeight);
            break;
        case 2:
            offset = QPointF(-GridWidth, 0.0);
            break;
        case 3:
            offset = QPointF(0.0, -GridHeight);
            break;
        default:
            offset = QPointF(GridWidth, 0.0);
            break;
        }
        const QPointF place = under->pos() + offset;
        if (!collides(itemRect(place))) {
            *arrow = side;
            return place;
        }
    }
    return scenePos;
}

NoteNode *GraphScene::addNoteByUser(const QPointF &scenePos)
{
    UndoStep step(QStringLiteral("add note"));
    int arrow = 0;
    const QPointF place = notePlace(scenePos, &arrow);
    auto *note = new NoteNode;
    note->setArrow(arrow);
    note->setPos(place);
    addNode(note);
    clearSelection();
    note->setSelected(true);
    refreshGeometry();
    emit nodesAdded();
    return note;
}

bool GraphScene::canAddTransform(const Transform *prototype,
                                 const QList<QGraphicsItem *> &selection)
{
    if (!prototype)
        return false;
    int inputs = 0, transforms = 0, outputs = 0, notes = 0, connections = 0;
    for (const QGraphicsItem *item : selection) {
        switch (item->type()) {
        case Node::InputType:
            ++inputs;
            break;
        case Node::TransformType:
            ++transforms;
            break;
        case Node::OutputType:
            ++outputs;
            break;
        case Node::NoteType:
            ++notes;
            break;
        case Connection::Type:
            ++connections;
            break;
        default:
            break;
        }
    }
    if (outputs > 0 || notes > 0)
        return false;
    const int sources = inputs + transforms;
    if (connections == 1 && sources == 0 && prototype->maximumInputs() > 0)
        return true;
    return sources >= prototype->minimumInputs() && sources <= prototype->maximumInputs();
}

TransformNode *GraphScene::addTransformByUser(const Transform *prototype, bool ctrlHeld,
                                              const QPointF &cursorScenePos)
{
    const QList<QGraphicsItem *> selection = selectedItems();
    if (!canAddTransform(prototype, selection))
        return nullptr;
    UndoStep step(QStringLiteral("add '%1'").arg(prototype->displayName()));

    QList<Node *> sources = selectedNodes();
    sortTopToBottom(sources);
    Connection *into = nullptr;
    if (sources.isEmpty()) {
        for (QGraphicsItem *item : selection) {
            if (item->type() == Connection::Type)
                into = static_cast<Connection *>(item);
        }
    }

    Transform *transform = prototype->clone();
    transform->createParameters(Node::asSources(into ? QList<Node *> {into->source()} : sources),
                                true);
    auto *node = new TransformNode(transform);
    clearSelection();

    if (into) {
        Node *source = into->source();
        Node *target = into->target();
        // The target's options that read the source now read the new transform, which passes
        // the same columns on.
        QList<Parameter *> moved;
        if (auto *targetTransform = qobject_cast<TransformNode *>(target))
            moved = targetTransform->parametersWithSource(source);
        node->setPos(freePlace({source}, ctrlHeld, cursorScenePos));
        addNode(node);
        deleteConnection(into);
        makeConnection(source, node);
        makeConnection(node, target);
        for (Parameter *parameter : qAsConst(moved))
            parameter->setSourceNode(node);
        target->setStatus(Node::NeedsUpdate, true);
    } else {
        node->setPos(freePlace(sources, ctrlHeld, cursorScenePos));
        addNode(node);
        for (Node *source : qAsConst(sources))
            makeConnection(source, node);
    }
    node->autoConfigure();
    node->connectParameters();
    node->setStatus(Node::NeedsUpdate, true);
    node->setSelected(true);
    refreshGeometry();
    emit transformNodeAddedByUser(prototype->typeName());
    emit nodesAdded();
    runChangesIfAuto();
    return node;
}

QPointF GraphScene::freePlaceFrom(const QPointF &start, bool downOnly) const
{
    // Down one step, up one step, down two... the first place where nothing lies.
    for (int k = 0;; ++k) {
        const int steps = downOnly ? k : (k + 1) / 2;
        const qreal dy = (downOnly || k % 2 == 1 ? steps : -steps) * GridHeight;
        const QPointF candidate = start + QPointF(0.0, dy);
        if (!collides(itemRect(candidate)))
            return candidate;
    }
}

QPointF GraphScene::freePlace(const QList<Node *> &sources, bool ctrlHeld,
                              const QPointF &cursorScenePos) const
{
    if (ctrlHeld || sources.isEmpty()) {
        if (!cursorScenePos.isNull())
            return cursorScenePos;
        // No point given: the first free place down the left edge of the graph.
        QRectF bounds;
        const QList<Node *> all = nodes();
        for (const Node *node : all)
            bounds |= itemRect(node->pos());
        return freePlaceFrom(bounds.topLeft(), true);
    }
    const Node *rightMost = sources.first();
    for (const Node *source : sources) {
        if (source->pos().x() > rightMost->pos().x())
            rightMost = source;
    }
    QPointF start = rightMost->pos() + QPointF(GridWidth, 0.0);

    QRectF bounds;
    const QList<Node *> all = nodes();
    for (const Node *node : all)
        bounds |= itemRect(node->pos());
    if ((bounds | itemRect(start)).width() > RowWidth)
        start = QPointF(bounds.left(), bounds.bottom() - Node::itemSize().height() + GridHeight);
    return freePlaceFrom(start);
}

void GraphScene::deleteSelectedByUser()
{
    if (m_running)
        return;
    const QList<QGraphicsItem *> selection = selectedItems();
    if (selection.isEmpty())
        return;
    UndoStep step(QStringLiteral("delete"));

    QList<Connection *> selectedConnections;
    QList<Node *> selected;
    for (QGraphicsItem *item : selection) {
        if (item->type() == Connection::Type)
            selectedConnections.append(static_cast<Connection *>(item));
        else if (isNodeType(item->type()))
            selected.append(static_cast<Node *>(item));
    }

    for (Connection *connection : qAsConst(selectedConnections)) {
        connection->target()->setStatus(Node::NeedsUpdate, true);
        deleteConnection(connection);
    }

    // A transform taken out of a chain leaves its source feeding its targets.
    for (Node *node : qAsConst(selected)) {
        auto *transform = qobject_cast<TransformNode *>(node);
        if (!transform)
            continue;
        const QList<Connection *> incoming = transform->connections(ConnectionDirection::In);
        const QList<Connection *> outgoing = transform->connections(ConnectionDirection::Out);
        if (incoming.size() != 1 || outgoing.isEmpty())
            continue;
        Node *source = incoming.first()->source();
        if (selected.contains(source))
            continue;
        transform->setStatus(Node::NeedsUpdate, true);
        deleteConnection(incoming.first());
        for (Connection *connection : outgoing) {
            Node *target = connection->target();
            if (selected.contains(target))
                continue;
            QList<Parameter *> moved;
            if (auto *targetTransform = qobject_cast<TransformNode *>(target))
                moved = targetTransform->parametersWithSource(transform);
            deleteConnection(connection);
            makeConnection(source, target);
            for (Parameter *parameter : qAsConst(moved))
                parameter->setSourceNode(source);
        }
    }

    for (Node *node : qAsConst(selected))
        node->deleteNode();

    // Bridging can join a source to a target it already fed.
    QList<Connection *> connections = allConnections();
    std::sort(connections.begin(), connections.end(), std::less<Connection *>());
    for (int i = 0; i < connections.size(); ++i) {
        for (int j = i + 1; j < connections.size(); ++j) {
            Connection *low = connections.at(i);
            Connection *high = connections.at(j);
            if (high && low && high->source() == low->source() && high->target() == low->target()) {
                deleteConnection(high);
                connections[j] = nullptr;
            }
        }
    }

    refreshGeometry();
    runChangesIfAuto();
    emit nodesDeleted();
    if (selected.isEmpty())
        emit showTip(QStringLiteral("Deleting connections"),
                     QStringLiteral("You can delete/insert transforms without deleting "
                                    "connections. See 'Reference>Connections' in the help."),
                     20000);
}

namespace {

ConnectionDirection toConnectionDirection(GraphScene::Disconnect direction)
{
    switch (direction) {
    case GraphScene::Disconnect::Out:
        return ConnectionDirection::Out;
    case GraphScene::Disconnect::In:
        return ConnectionDirection::In;
    case GraphScene::Disconnect::Both:
        break;
    }
    return ConnectionDirection::Both;
}

} // namespace

int GraphScene::columnOptionsAtRisk(Disconnect direction) const
{
    const QList<Node *> selected = selectedNodes();
    QSet<TransformNode *> affected;
    for (const Node *node : selected) {
        const QList<Connection *> connections = node->connections(toConnectionDirection(direction));
        for (const Connection *connection : connections) {
            if (auto *target = qobject_cast<TransformNode *>(connection->target()))
                affected.insert(target);
            const QSet<Node *> below
                = connection->target()->allDownstreamOfType(Node::TransformType);
            for (Node *each : below)
                affected.insert(static_cast<TransformNode *>(each));
        }
    }
    int count = 0;
    for (TransformNode *transform : qAsConst(affected)) {
        if (direction == Disconnect::Out && transform->isSelected())
            continue;
        count += transform->columnRelatedParameterCount();
    }
    return count;
}

void GraphScene::disconnectSelectedByUser(Disconnect direction)
{
    if (m_running)
        return;
    const QList<Node *> selected = selectedNodes();
    if (selected.isEmpty())
        return;
    UndoStep step(QStringLiteral("disconnect"));
    for (Node *node : selected) {
        if (direction != Disconnect::Out && !node->connections(ConnectionDirection::In).isEmpty())
            node->setStatus(Node::NeedsUpdate, true);
        if (direction != Disconnect::In) {
            const QList<Node *> targets = node->downstream();
            for (Node *target : targets)
                target->setStatus(Node::NeedsUpdate, true);
        }
        node->deleteConnections(toConnectionDirection(direction));
    }
    refreshGeometry();
    runChangesIfAuto();
}

void GraphScene::setSnapToGrid(bool on)
{
    if (m_snapToGrid == on)
        return;
    UndoStep step(on ? QStringLiteral("snap on") : QStringLiteral("snap off"));
    m_snapToGrid = on;
}

void GraphScene::endItemsMove()
{
    onPosChanged(selectedNodes());
    endUndoStep();
}
