#include "graph/node.h"

#include "graph/connection.h"
#include "graph/graphscene.h"

#include <QApplication>
#include <QGraphicsDropShadowEffect>

Node::Node(FlowItem *item)
    : m_item(item)
{
    setFlags(QGraphicsItem::ItemIsMovable | QGraphicsItem::ItemIsSelectable
             | QGraphicsItem::ItemSendsGeometryChanges);
    setAcceptHoverEvents(true);
    setZValue(0.0);
    setPos(item->pos());
    if (qobject_cast<QApplication *>(QCoreApplication::instance())) {
        auto *shadow = new QGraphicsDropShadowEffect;
        shadow->setBlurRadius(40.0);
        shadow->setOffset(0.0, 2.0);
        shadow->setColor(QColor(0, 0, 0, 60));
        setGraphicsEffect(shadow);
    }
    connect(item, &FlowItem::changed, this, &Node::onItemChanged);
    connect(item, &FlowItem::moved, this, &Node::onItemMoved);
}

Node::~Node() = default;

GraphScene *Node::graphScene() const
{
    return qobject_cast<GraphScene *>(scene());
}

void Node::onItemChanged()
{
    // A note's arrow changes its outline; the other kinds keep theirs, and the call is cheap.
    prepareGeometryChange();
    update();
    for (Connection *connection : qAsConst(m_connections))
        connection->update();
}

void Node::onItemMoved()
{
    if (m_pushingPos || !m_item)
        return;
    setPos(m_item->pos());
}

void Node::addConnection(Connection *connection)
{
    if (connection && !m_connections.contains(connection)) {
        m_connections.append(connection);
        refreshSide(connection->source() == this ? ConnectionDirection::Out
                                                 : ConnectionDirection::In);
    }
}

void Node::removeConnection(Connection *connection)
{
    if (connection && m_connections.removeAll(connection) > 0) {
        refreshSide(connection->source() == this ? ConnectionDirection::Out
                                                 : ConnectionDirection::In);
    }
}

void Node::refreshSide(ConnectionDirection direction)
{
    // The ends on one side are spread by their number, so each arrival or departure moves
    // the others.
    const QList<Connection *> side = connections(direction);
    for (Connection *connection : side)
        connection->updatePath();
}

QList<Connection *> Node::connections(ConnectionDirection direction) const
{
    if (direction == ConnectionDirection::Both)
        return m_connections;
    QList<Connection *> result;
    for (Connection *connection : m_connections) {
        const bool out = connection->source() == this;
        if (out == (direction == ConnectionDirection::Out))
            result.append(connection);
    }
    return result;
}
