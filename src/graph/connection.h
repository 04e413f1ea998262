#pragma once

#include <QGraphicsPathItem>

class Node;

// An arrow from one item's output to another item's input. Both ends keep the connection in
// their lists; the scene owns it as a graphics item.
class Connection : public QGraphicsPathItem
{
public:
    enum { Type = QGraphicsItem::UserType + 10 };

    Connection(Node *source, Node *target);

    int type() const override { return Type; }
    Node *source() const { return m_source; }
    Node *target() const { return m_target; }
    Node *otherEnd(const Node *node) const { return node == m_source ? m_target : m_source; }

    void setHighlighted(bool on);
    bool isHighlighted() const { return m_highlighted; }
    // Rebuilds the path after either end moved.
    void updatePath();

    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget) override;

private:
    Node *m_source;
    Node *m_target;
    bool m_highlighted = false;
};
