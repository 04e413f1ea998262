#include "graph/connection.h"

#include "graph/node.h"

#include <QPainter>
#include <QPen>

Connection::Connection(Node *source, Node *target) : m_source(source), m_target(target)
{
    setZValue(-1.0);
    setFlag(QGraphicsItem::ItemIsSelectable, true);
    updatePath();
}

void Connection::setHighlighted(bool on)
{
    if (m_highlighted == on)
        return;
    m_highlighted = on;
    update();
}

void Connection::updatePath()
{
    // The ends stand a little away from the items so that the arrow head stays visible.
    const QPointF start = m_source->anchor(ConnectionDirection::Out, 4.0);
    const QPointF end = m_target->anchor(ConnectionDirection::In, 4.0);
    const qreal bend = std::max<qreal>(40.0, std::abs(end.x() - start.x()) / 2.0);
    QPainterPath path(start);
    path.cubicTo(start + QPointF(bend, 0.0), end - QPointF(bend, 0.0), end);
    setPath(path);
}

void Connection::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    const bool strong = m_highlighted || isSelected();
    QPen pen(strong ? QColor(0x1E, 0x90, 0xFF) : QColor(0x70, 0x70, 0x70), strong ? 3.0 : 2.0);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(pen);
    painter->setBrush(Qt::NoBrush);
    painter->drawPath(path());

    // Arrow head at the target end, along the path's last direction.
    const QPointF tip = path().pointAtPercent(1.0);
    const QPointF before = path().pointAtPercent(0.97);
    QLineF back(tip, before);
    if (back.length() < 0.01)
        return;
    back.setLength(10.0);
    QLineF left = back;
    left.setAngle(back.angle() + 25.0);
    QLineF right = back;
    right.setAngle(back.angle() - 25.0);
    painter->setBrush(pen.color());
    painter->drawPolygon(QPolygonF({tip, left.p2(), right.p2()}));
}
