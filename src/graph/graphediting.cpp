#include "graph/graphscene.h"

#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/noteitem.h"
#include "flow/outputitem.h"
#include "flow/transformitem.h"
#include "graph/connection.h"
#include "graph/node.h"
#include "shell/undostep.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/transform.h"

#include <QLocale>
#include <QSet>

#include <algorithm>

// The edits of the user on the scene: connections, new items in free places, deletion with
// bridging, disconnection, duplication and the snap grid. Each public edit is one undo step;
// the model does the work, and the scene's nodes follow its signals.

namespace {

constexpr qreal GridWidth = FlowModel::GridWidth;
constexpr qreal GridHeight = FlowModel::GridHeight;

QRectF itemRect(const QPointF &pos)
{
    return QRectF(pos, Node::itemSize());
}

} // namespace

void GraphScene::refreshGeometry()
{
    const QList<Connection *> connections = allConnections();
    for (Connection *connection : connections)
        connection->updatePath();
    QRectF bounds;
    const QList<FlowItem *> all = m_model->items();
    for (const FlowItem *item : all)
        bounds |= itemRect(item->pos());
    setSceneRect(bounds.adjusted(-SceneMargin, -SceneMargin, SceneMargin, SceneMargin));
}

void GraphScene::runChangesIfAuto()
{
    if (m_model->autoRun() && !m_model->isProcessing())
        m_model->process(FlowModel::RunChanges, false);
}

bool GraphScene::collides(const QRectF &rect, const Node *ignore) const
{
    const QList<FlowItem *> all = m_model->items();
    return std::any_of(all.cbegin(), all.cend(), [&](const FlowItem *item) {
        return (!ignore || item != ignore->item()) && itemRect(item->pos()).intersects(rect);
    });
}

QList<Node *> GraphScene::connectionCandidates(const Node *source) const
{
    return source ? nodesFor(m_model->connectionCandidates(source->item())) : QList<Node *>();
}

bool GraphScene::canStartConnection(const Node *source) const
{
    return source
        && source->item()->connections(ConnectionDirection::Out).size()
        < source->item()->maximumOutputs()
        && !m_model->connectionCandidates(source->item()).isEmpty();
}

Connection *GraphScene::addConnectionByUser(Node *source, Node *target)
{
    if (!source || !target || !canStartConnection(source)
        || !m_model->connectionCandidates(source->item()).contains(target->item()))
        return nullptr;
    UndoStep step(QStringLiteral("add connection"));
    FlowConnection *link = m_model->makeConnection(source->item(), target->item());
    const QList<Connection *> touching
        = source->connections() + target->connections(ConnectionDirection::Both);
    for (Connection *each : touching)
        each->updatePath();
    if (auto *transform = qobject_cast<TransformItem *>(target->item())) {
        transform->connectParameters();
        emit nodeParametersChanged(transform);
    }
    target->item()->setStatus(FlowItem::NeedsUpdate, true);
    runChangesIfAuto();
    return m_connections.value(link);
}

Node *GraphScene::addPlaced(FlowItem *item, const QPointF &pos)
{
    item->setPos(pos);
    m_model->addItem(item);
    clearSelection();
    Node *node = nodeFor(item);
    if (node)
        node->setSelected(true);
    return node;
}

Node *GraphScene::addInputByUser(InputItem *input, const QPointF &scenePos, bool ctrlHeld)
{
    if (!input)
        return nullptr;
    UndoStep step(input->medium() == InputItem::Clipboard ? QStringLiteral("add clipboard")
                                                          : QStringLiteral("add file(s)"));
    Node *node = addPlaced(input, scenePos.isNull() ? freePlace({}, ctrlHeld, scenePos) : scenePos);
    refreshGeometry();
    emit nodesAdded();
    runChangesIfAuto();
    return node;
}

Node *GraphScene::addOutputByUser(Node *sourceNode, const QString &path)
{
    FlowItem *source = sourceNode ? sourceNode->item() : nullptr;
    if (!source || source->maximumOutputs() <= source->connections(ConnectionDirection::Out).size())
        return nullptr;
    UndoStep step(QStringLiteral("add output"));
    auto *output = new OutputItem(-1, path);
    Node *node = addPlaced(output, freePlace({sourceNode}, false, QPointF()));
    m_model->makeConnection(source, output);
    output->setStatus(FlowItem::NeedsUpdate, true);
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
    return node;
}

QPointF GraphScene::notePlace(const QPointF &scenePos, int *arrow) const
{
    *arrow = 0;
    const QList<FlowItem *> all = m_model->items();
    const FlowItem *under = nullptr;
    for (const FlowItem *item : all) {
        if (item->kind() != FlowItem::NoteKind && itemRect(item->pos()).contains(scenePos))
            under = item;
    }
    if (!under)
        return scenePos;
    // The sides a note prefers depend on where the item's arrows run: 1 below, 2 left,
    // 3 above, 4 right.
    QList<int> sides;
    switch (under->kind()) {
    case FlowItem::InputKind:
        sides = {2, 3, 1, 4};
        break;
    case FlowItem::OutputKind:
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

Node *GraphScene::addNoteByUser(const QPointF &scenePos)
{
    UndoStep step(QStringLiteral("add note"));
    int arrow = 0;
    const QPointF place = notePlace(scenePos, &arrow);
    auto *note = new NoteItem;
    note->setArrow(arrow);
    Node *node = addPlaced(note, place);
    refreshGeometry();
    emit nodesAdded();
    return node;
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

Node *GraphScene::addTransformByUser(const Transform *prototype, bool ctrlHeld,
                                     const QPointF &cursorScenePos)
{
    const QList<QGraphicsItem *> selection = QGraphicsScene::selectedItems();
    if (!canAddTransform(prototype, selection))
        return nullptr;
    UndoStep step(QStringLiteral("add '%1'").arg(prototype->displayName()));

    QList<Node *> sourceNodes = selectedNodes();
    std::stable_sort(sourceNodes.begin(), sourceNodes.end(), [](const Node *a, const Node *b) {
        return FlowItem::topToBottom(a->item(), b->item());
    });
    QList<FlowItem *> sources;
    for (Node *node : qAsConst(sourceNodes))
        sources.append(node->item());
    FlowConnection *into = nullptr;
    if (sources.isEmpty()) {
        for (QGraphicsItem *item : selection) {
            if (item->type() == Connection::Type)
                into = static_cast<Connection *>(item)->link();
        }
    }

    Transform *transform = prototype->clone();
    transform->createParameters(
        FlowItem::asSources(into ? QList<FlowItem *> {into->source()} : sources), true);
    auto *item = new TransformItem(transform);
    Node *node = nullptr;

    if (into) {
        FlowItem *source = into->source();
        FlowItem *target = into->target();
        // The target's options that read the source now read the new transform, which passes
        // the same columns on.
        QList<Parameter *> moved;
        if (auto *targetTransform = qobject_cast<TransformItem *>(target))
            moved = targetTransform->parametersWithSource(source);
        node = addPlaced(item, freePlace({nodeFor(source)}, ctrlHeld, cursorScenePos));
        m_model->deleteConnection(into);
        m_model->makeConnection(source, item);
        m_model->makeConnection(item, target);
        for (Parameter *parameter : qAsConst(moved))
            parameter->setSourceNode(item);
        target->setStatus(FlowItem::NeedsUpdate, true);
    } else {
        node = addPlaced(item, freePlace(sourceNodes, ctrlHeld, cursorScenePos));
        for (FlowItem *source : qAsConst(sources))
            m_model->makeConnection(source, item);
    }
    item->autoConfigure();
    item->connectParameters();
    item->setStatus(FlowItem::NeedsUpdate, true);
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
        const QList<FlowItem *> all = m_model->items();
        for (const FlowItem *item : all)
            bounds |= itemRect(item->pos());
        return freePlaceFrom(bounds.topLeft(), true);
    }
    const Node *rightMost = sources.first();
    for (const Node *source : sources) {
        if (source->pos().x() > rightMost->pos().x())
            rightMost = source;
    }
    QPointF start = rightMost->pos() + QPointF(GridWidth, 0.0);

    QRectF bounds;
    const QList<FlowItem *> all = m_model->items();
    for (const FlowItem *item : all)
        bounds |= itemRect(item->pos());
    if ((bounds | itemRect(start)).width() > RowWidth)
        start = QPointF(bounds.left(), bounds.bottom() - Node::itemSize().height() + GridHeight);
    return freePlaceFrom(start);
}

void GraphScene::deleteSelectedByUser()
{
    if (m_model->isProcessing())
        return;
    const QList<QGraphicsItem *> selection = QGraphicsScene::selectedItems();
    if (selection.isEmpty())
        return;
    UndoStep step(QStringLiteral("delete"));

    QList<FlowConnection *> selectedConnections;
    QList<FlowItem *> selected;
    for (QGraphicsItem *item : selection) {
        if (item->type() == Connection::Type)
            selectedConnections.append(static_cast<Connection *>(item)->link());
        else if (Node::isNodeType(item->type()))
            selected.append(static_cast<Node *>(item)->item());
    }

    for (FlowConnection *connection : qAsConst(selectedConnections)) {
        connection->target()->setStatus(FlowItem::NeedsUpdate, true);
        m_model->deleteConnection(connection);
    }
    bridgeAround(selected);
    for (FlowItem *item : qAsConst(selected))
        m_model->removeItem(item);

    // Bridging can join a source to a target it already fed.
    QList<FlowConnection *> connections = m_model->connections();
    for (int i = 0; i < connections.size(); ++i) {
        for (int j = i + 1; j < connections.size(); ++j) {
            FlowConnection *low = connections.at(i);
            FlowConnection *high = connections.at(j);
            if (high && low && high->source() == low->source() && high->target() == low->target()) {
                m_model->deleteConnection(high);
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

void GraphScene::bridgeAround(const QList<FlowItem *> &selected)
{
    // A transform taken out of a chain leaves its source feeding its targets.
    for (FlowItem *item : selected) {
        auto *transform = qobject_cast<TransformItem *>(item);
        if (!transform)
            continue;
        const QList<FlowConnection *> incoming = transform->connections(ConnectionDirection::In);
        const QList<FlowConnection *> outgoing = transform->connections(ConnectionDirection::Out);
        if (incoming.size() != 1 || outgoing.isEmpty())
            continue;
        FlowItem *source = incoming.first()->source();
        if (selected.contains(source))
            continue;
        transform->setStatus(FlowItem::NeedsUpdate, true);
        m_model->deleteConnection(incoming.first());
        for (FlowConnection *connection : outgoing) {
            FlowItem *target = connection->target();
            if (selected.contains(target))
                continue;
            QList<Parameter *> moved;
            if (auto *targetTransform = qobject_cast<TransformItem *>(target))
                moved = targetTransform->parametersWithSource(transform);
            m_model->deleteConnection(connection);
            m_model->makeConnection(source, target);
            for (Parameter *parameter : qAsConst(moved))
                parameter->setSourceNode(source);
        }
    }
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
    const QList<FlowItem *> selected = selectedItems();
    QSet<TransformItem *> affected;
    for (const FlowItem *item : selected) {
        const QList<FlowConnection *> connections
            = item->connections(toConnectionDirection(direction));
        for (const FlowConnection *connection : connections) {
            if (auto *target = qobject_cast<TransformItem *>(connection->target()))
                affected.insert(target);
            const QSet<FlowItem *> below
                = connection->target()->allDownstreamOfKind(FlowItem::TransformKind);
            for (FlowItem *each : below)
                affected.insert(static_cast<TransformItem *>(each));
        }
    }
    int count = 0;
    for (TransformItem *transform : qAsConst(affected)) {
        if (direction == Disconnect::Out && selected.contains(transform))
            continue;
        count += transform->columnRelatedParameterCount();
    }
    return count;
}

void GraphScene::disconnectSelectedByUser(Disconnect direction)
{
    if (m_model->isProcessing())
        return;
    const QList<FlowItem *> selected = selectedItems();
    if (selected.isEmpty())
        return;
    UndoStep step(QStringLiteral("disconnect"));
    for (FlowItem *item : selected) {
        if (direction != Disconnect::Out && !item->connections(ConnectionDirection::In).isEmpty())
            item->setStatus(FlowItem::NeedsUpdate, true);
        if (direction != Disconnect::In) {
            const QList<FlowItem *> targets = item->downstream();
            for (FlowItem *target : targets)
                target->setStatus(FlowItem::NeedsUpdate, true);
        }
        const QList<FlowConnection *> doomed = item->connections(toConnectionDirection(direction));
        for (FlowConnection *connection : doomed)
            m_model->deleteConnection(connection);
    }
    refreshGeometry();
    runChangesIfAuto();
}

void GraphScene::duplicateBranchByUser()
{
    const QList<FlowItem *> selected = selectedItems();
    if (selected.size() != 1 || m_model->isProcessing())
        return;
    UndoStep step(QStringLiteral("duplicate branch"));
    clearSelection();
    FlowItem *rootCopy = m_model->duplicateBranch(selected.first());
    if (Node *node = nodeFor(rootCopy))
        node->setSelected(true);
    refreshGeometry();
    emit nodesAdded();
    runChangesIfAuto();
}

void GraphScene::setSnapToGrid(bool on)
{
    if (m_model->snapToGrid() == on)
        return;
    UndoStep step(on ? QStringLiteral("snap on") : QStringLiteral("snap off"));
    m_model->setSnapToGrid(on);
}

void GraphScene::endItemsMove()
{
    onPosChanged(selectedNodes());
    endUndoStep();
}
