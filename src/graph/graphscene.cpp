#include "graph/graphscene.h"

#include "flow/flowmodel.h"
#include "flow/transformitem.h"
#include "graph/connection.h"
#include "graph/node.h"
#include "shell/guards.h"

#include <QApplication>

GraphScene::GraphScene(FlowModel *model, QObject *parent)
    : QGraphicsScene(parent)
    , m_model(model ? model : new FlowModel)
{
    m_model->setParent(this);
    connectModel();
}

void GraphScene::connectModel()
{
    const QList<FlowItem *> items = m_model->items();
    for (FlowItem *item : items)
        onItemAdded(item);
    const QList<FlowConnection *> connections = m_model->connections();
    for (FlowConnection *connection : connections)
        onConnectionAdded(connection);
    connect(m_model, &FlowModel::itemAdded, this, &GraphScene::onItemAdded);
    connect(m_model, &FlowModel::itemRemoved, this, &GraphScene::onItemRemoved);
    connect(m_model, &FlowModel::connectionAdded, this, &GraphScene::onConnectionAdded);
    connect(m_model, &FlowModel::connectionRemoved, this, &GraphScene::onConnectionRemoved);
    forwardModelSignals();
    refreshGeometry();
}

GraphScene::~GraphScene()
{
    // The views go before the model they show; the model goes with the scene, its parent.
    removeViews();
}

FlowModel *GraphScene::releaseModel()
{
    removeViews();
    FlowModel *model = m_model;
    model->setParent(nullptr);
    m_model = new FlowModel(this);
    connectModel();
    return model;
}

void GraphScene::removeViews()
{
    QObject::disconnect(m_model, nullptr, this, nullptr);
    const QList<Connection *> connections = m_connections.values();
    for (Connection *connection : connections) {
        removeItem(connection);
        delete connection;
    }
    m_connections.clear();
    const QList<Node *> nodes = m_nodes.values();
    for (Node *node : nodes) {
        removeItem(node);
        delete node;
    }
    m_nodes.clear();
}

void GraphScene::forwardModelSignals()
{
    FlowModel *model = m_model;
    // Every run, whoever started it, shows the busy cursor; the model's running flag keeps
    // the pushes and pops paired.
    connect(model, &FlowModel::allowUserInteraction, this, [](bool allow) {
        if (allow)
            BusyCursor::pop();
        else
            BusyCursor::push();
    });
    connect(model, &FlowModel::allowUserInteraction, this, &GraphScene::allowUserInteraction);
    connect(model, &FlowModel::completedTransforms, this, [this] {
        update();
        emit completedTransforms();
    });
    connect(model, &FlowModel::nodeDataChanged, this, &GraphScene::nodeDataChanged);
    connect(model, &FlowModel::nodeParametersChanged, this, &GraphScene::nodeParametersChanged);
    connect(model, &FlowModel::nodesPosChanged, this, &GraphScene::nodesPosChanged);
    connect(model, &FlowModel::showStatusBarMessage, this, &GraphScene::showStatusBarMessage);
    connect(model, &FlowModel::showTempMessage, this, &GraphScene::showTempMessage);
    connect(model, &FlowModel::showLogMessage, this, &GraphScene::showLogMessage);
    connect(model, &FlowModel::showNodeLogMessage, this, &GraphScene::showNodeLogMessage);
    connect(model, &FlowModel::showWarningMessage, this, &GraphScene::showWarningMessage);
    connect(model, &FlowModel::showCriticalMessage, this, &GraphScene::showCriticalMessage);
    connect(model, &FlowModel::showProgress, this, &GraphScene::showProgress);
    connect(model, &FlowModel::beepRequested, this, [] { QApplication::beep(); });
}

void GraphScene::onItemAdded(FlowItem *item)
{
    if (m_nodes.contains(item))
        return;
    Node *node = Node::create(item);
    if (!node)
        return;
    m_nodes.insert(item, node);
    addItem(node);
    connect(node, &Node::nodePosChanged, this, &GraphScene::onPosChanged);
    // Whoever added the item, the canvas must reach it.
    setSceneRect(
        sceneRect().united(QRectF(item->pos(), Node::itemSize())
                               .adjusted(-SceneMargin, -SceneMargin, SceneMargin, SceneMargin)));
}

void GraphScene::onItemRemoved(FlowItem *item)
{
    Node *node = m_nodes.take(item);
    if (!node)
        return;
    removeItem(node);
    // The node may be inside its own event handler (a delete button on it).
    node->deleteLater();
}

void GraphScene::onConnectionAdded(FlowConnection *link)
{
    Node *source = m_nodes.value(link->source());
    Node *target = m_nodes.value(link->target());
    if (!source || !target || m_connections.contains(link))
        return;
    auto *connection = new Connection(link, source, target);
    m_connections.insert(link, connection);
    source->addConnection(connection);
    target->addConnection(connection);
    addItem(connection);
}

void GraphScene::onConnectionRemoved(FlowConnection *link)
{
    Connection *connection = m_connections.take(link);
    if (!connection)
        return;
    connection->source()->removeConnection(connection);
    connection->target()->removeConnection(connection);
    removeItem(connection);
    delete connection;
}

void GraphScene::process(int mode, bool silent)
{
    m_model->process(mode, silent,
                     mode == FlowModel::RunSelected ? selectedItems() : QList<FlowItem *>());
}

bool GraphScene::isProcessing() const
{
    return m_model->isProcessing();
}

QList<Node *> GraphScene::nodes() const
{
    return nodesFor(m_model->items());
}

QList<Node *> GraphScene::nodesFor(const QList<FlowItem *> &items) const
{
    QList<Node *> result;
    result.reserve(items.size());
    for (const FlowItem *item : items) {
        if (Node *node = m_nodes.value(item))
            result.append(node);
    }
    return result;
}

QList<Node *> GraphScene::nodesOfType(int itemType) const
{
    return nodesFor(m_model->itemsOfKind(itemType - QGraphicsItem::UserType));
}

Node *GraphScene::nodeById(int id) const
{
    return m_nodes.value(m_model->itemById(id));
}

Node *GraphScene::nodeFor(const FlowItem *item) const
{
    return m_nodes.value(item);
}

QList<Connection *> GraphScene::allConnections() const
{
    QList<Connection *> result;
    const QList<FlowConnection *> links = m_model->connections();
    for (const FlowConnection *link : links) {
        if (Connection *connection = m_connections.value(link))
            result.append(connection);
    }
    return result;
}

QList<Node *> GraphScene::selectedNodes() const
{
    QList<Node *> result;
    const QList<QGraphicsItem *> selection = QGraphicsScene::selectedItems();
    for (QGraphicsItem *item : selection) {
        if (Node::isNodeType(item->type()))
            result.append(static_cast<Node *>(item));
    }
    return result;
}

QList<FlowItem *> GraphScene::selectedItems() const
{
    QList<FlowItem *> result;
    const QList<Node *> selection = selectedNodes();
    for (Node *node : selection)
        result.append(node->item());
    return result;
}

bool GraphScene::snapToGrid() const
{
    return m_model->snapToGrid();
}

void GraphScene::onPosChanged(const QList<Node *> &dragged)
{
    QList<FlowItem *> items;
    for (Node *node : dragged)
        items.append(node->item());
    refreshGeometry();
    m_model->itemsMoved(items);
    refreshGeometry();
}
