#include "graph/connection.h"

#include "graph/node.h"
#include "shell/colors.h"

#include <QPainter>
#include <QPainterPathStroker>
#include <QPen>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace {

// Slightly less than pi: the head's corners lean a hair off the line, as they always have.
constexpr qreal HeadTurn = 3.1412;
constexpr qreal TipGap = 2.0;

} // namespace

Connection::Connection(FlowConnection *link, Node *source, Node *target)
    : m_link(link)
    , m_source(source)
    , m_target(target)
{
    setZValue(-1.0);
    setFlag(QGraphicsItem::ItemIsSelectable, true);
    setAcceptHoverEvents(true);
    updatePath();
}

void Connection::setHighlighted(bool on)
{
    if (m_highlighted == on)
        return;
    m_highlighted = on;
    update();
}

void Connection::placeEnd(const Node *node, bool outgoing, qreal *offset, qreal *control) const
{
    QList<Connection *> side
        = node->connections(outgoing ? ConnectionDirection::Out : ConnectionDirection::In);
    const int n = side.size();
    if (n <= 1) {
        *offset = 0.0;
        *control = ControlBase;
        return;
    }
    std::stable_sort(side.begin(), side.end(), [node](const Connection *a, const Connection *b) {
        return FlowItem::topToBottom(a->otherEnd(node)->item(), b->otherEnd(node)->item());
    });
    const int i = std::max(0, int(side.indexOf(const_cast<Connection *>(this))));
    const qreal height = Node::itemSize().height();
    const qreal spacing = std::min(EndSpacing, SideFraction * height / qreal(n - 1));
    *offset = (qreal(i) - qreal(n - 1) / 2.0) * spacing;
    const int fromOutside = std::min(i, n - 1 - i);
    *control = fromOutside * ControlStep + ControlBase;
}

QPointF Connection::startPoint() const
{
    return m_source->anchor(ConnectionDirection::Out) + QPointF(0.0, m_sourceOffset);
}

QPointF Connection::endPoint() const
{
    return m_target->anchor(ConnectionDirection::In, TipGap) + QPointF(0.0, m_targetOffset);
}

void Connection::updatePath()
{
    prepareGeometryChange();
    placeEnd(m_source, true, &m_sourceOffset, &m_sourceControl);
    placeEnd(m_target, false, &m_targetOffset, &m_targetControl);
    const QPointF start = startPoint();
    const QPointF end = endPoint();
    const qreal limit
        = std::min(std::abs(end.x() - start.x()), std::abs(end.y() - start.y())) / 2.5;
    const qreal out = std::max(MinimumControl, std::min(m_sourceControl, limit));
    const qreal in = std::max(MinimumControl, std::min(m_targetControl, limit));
    const QPointF c1 = start + QPointF(out, 0.0);
    const QPointF c2 = end - QPointF(in, 0.0);
    QPainterPath path(start);
    path.cubicTo(c1, c2, end);
    setPath(path);

    // The head follows the last piece of the curve, from its second control point.
    const qreal length = 8.0 + 2.0 * Colors::instance()->connectionThickness();
    const QPointF d = end - c2;
    const qreal angle = std::atan2(d.x(), d.y());
    const qreal first = angle + HeadTurn - HeadAngle / 2.0;
    const qreal second = first + HeadAngle;
    m_arrow = QPolygonF({end, end + QPointF(std::sin(first), std::cos(first)) * length,
                         end + QPointF(std::sin(second), std::cos(second)) * length, end});
}

void Connection::refreshPaths(const QList<Node *> &nodes)
{
    QSet<Node *> touched;
    for (Node *node : nodes) {
        touched.insert(node);
        const QList<Connection *> all = node->connections();
        for (const Connection *connection : all)
            touched.insert(connection->otherEnd(node));
    }
    QSet<Connection *> done;
    for (Node *node : qAsConst(touched)) {
        const QList<Connection *> all = node->connections();
        for (Connection *connection : all) {
            if (!done.contains(connection)) {
                done.insert(connection);
                connection->updatePath();
            }
        }
    }
}

QPointF Connection::buttonPoint() const
{
    if (m_arrow.size() < 3)
        return endPoint();
    return (m_arrow.at(1) + m_arrow.at(2)) / 2.0;
}

qreal Connection::penWidth() const
{
    const qreal base = Colors::instance()->connectionThickness();
    return (m_hovered || m_highlighted || isSelected()) ? base + 2.0 : base;
}

QColor Connection::penColor() const
{
    const Colors *colors = Colors::instance();
    if (isSelected())
        return colors->color(Colors::Selection);
    QColor colour = colors->color(Colors::Connection);
    // A connection whose data isn't there yet is drawn fainter.
    if (m_source->item()->status() != FlowItem::UpToDate)
        colour.setAlpha(150);
    return colour;
}

QRectF Connection::boundingRect() const
{
    const qreal pad
        = std::max(HitWidth, Colors::instance()->connectionThickness() + 2.0) / 2.0 + 1.0;
    return path().boundingRect().united(m_arrow.boundingRect()).adjusted(-pad, -pad, pad, pad);
}

QPainterPath Connection::shape() const
{
    QPainterPathStroker stroker;
    stroker.setWidth(HitWidth);
    QPainterPath hit = stroker.createStroke(path());
    hit.addPolygon(m_arrow);
    return hit;
}

void Connection::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    const QColor colour = penColor();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(colour, penWidth(), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->setBrush(Qt::NoBrush);
    painter->drawPath(path());
    painter->setPen(QPen(colour, 1.0, Qt::SolidLine, Qt::RoundCap, Qt::MiterJoin));
    painter->setBrush(colour);
    painter->drawPolygon(m_arrow);
}

void Connection::hoverEnterEvent(QGraphicsSceneHoverEvent *event)
{
    m_hovered = true;
    update();
    QGraphicsPathItem::hoverEnterEvent(event);
}

void Connection::hoverLeaveEvent(QGraphicsSceneHoverEvent *event)
{
    m_hovered = false;
    update();
    QGraphicsPathItem::hoverLeaveEvent(event);
}
