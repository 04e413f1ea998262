#pragma once

#include <QGraphicsPathItem>
#include <QList>
#include <QPolygonF>

class FlowConnection;
class Node;

// The drawing of one connection of the flow: an arrow from one node's output to another
// node's input. Both ends keep it in their lists; the scene owns it as a graphics item. The ends of
// all connections on one side of an item are spread along that side, ordered by the height of the
// items at their other ends, and the inner curves bend less than the outer ones so that they don't
// cross.
class Connection : public QGraphicsPathItem
{
public:
    enum { Type = QGraphicsItem::UserType + 10 };

    static constexpr qreal EndSpacing = 16.0;
    static constexpr qreal SideFraction = 0.75;
    static constexpr qreal ControlBase = 75.0;
    static constexpr qreal ControlStep = 50.0;
    static constexpr qreal MinimumControl = 24.0;
    static constexpr qreal HitWidth = 10.0;
    static constexpr qreal HeadAngle = 0.7;

    Connection(FlowConnection *link, Node *source, Node *target);

    int type() const override { return Type; }
    FlowConnection *link() const { return m_link; }
    Node *source() const { return m_source; }
    Node *target() const { return m_target; }
    Node *otherEnd(const Node *node) const { return node == m_source ? m_target : m_source; }

    void setHighlighted(bool on);
    bool isHighlighted() const { return m_highlighted; }
    bool isHovered() const { return m_hovered; }
    // Rebuilds the path after either end moved or the connections of an end changed.
    void updatePath();
    // Rebuilds the connections at the given items and at the items at their other ends,
    // whose sides may have to make room or close up.
    static void refreshPaths(const QList<Node *> &nodes);

    // Where each end stands on its side, from the side's middle, and how far its control
    // point reaches out before the limit by distance.
    qreal sourceOffset() const { return m_sourceOffset; }
    qreal targetOffset() const { return m_targetOffset; }
    qreal sourceControl() const { return m_sourceControl; }
    qreal targetControl() const { return m_targetControl; }
    QPointF startPoint() const;
    QPointF endPoint() const;
    QPolygonF arrowHead() const { return m_arrow; }
    // The middle of the arrow head's base, where buttons on the connection sit.
    QPointF buttonPoint() const;
    qreal penWidth() const;
    QColor penColor() const;

    QRectF boundingRect() const override;
    QPainterPath shape() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

protected:
    void hoverEnterEvent(QGraphicsSceneHoverEvent *event) override;
    void hoverLeaveEvent(QGraphicsSceneHoverEvent *event) override;

private:
    // The place of this connection's end among the n ends on the given side of node.
    void placeEnd(const Node *node, bool outgoing, qreal *offset, qreal *control) const;

    FlowConnection *m_link;
    Node *m_source;
    Node *m_target;
    bool m_highlighted = false;
    bool m_hovered = false;
    qreal m_sourceOffset = 0.0;
    qreal m_targetOffset = 0.0;
    qreal m_sourceControl = ControlBase;
    qreal m_targetControl = ControlBase;
    QPolygonF m_arrow;
};
