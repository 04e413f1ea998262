#include "graph/notenode.h"

#include <QPainter>

Node *NoteNode::clone() const
{
    auto *copy = new NoteNode(id());
    copyInto(copy);
    copy->m_color = m_color;
    copy->m_arrow = m_arrow;
    return copy;
}

QColor NoteNode::backgroundColor() const
{
    return m_color;
}

void NoteNode::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF frame(QPointF(0.0, 0.0), itemSize());
    painter->setPen(QPen(isSelected() ? QColor(0x1E, 0x90, 0xFF) : m_color.darker(140), 1.0));
    painter->setBrush(m_color);
    painter->drawRect(frame);
    painter->setPen(textColor());
    painter->setFont(font());
    painter->drawText(frame.adjusted(6, 6, -6, -6), Qt::TextWordWrap, comment());
}
