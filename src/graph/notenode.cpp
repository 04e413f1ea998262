#include "graph/notenode.h"

#include "shell/colors.h"
#include "shell/settings.h"

#include <QPainter>
#include <QPainterPath>

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

void NoteNode::setColor(const QColor &color)
{
    if (m_color == color)
        return;
    m_color = color;
    update();
}

void NoteNode::setArrow(int arrow)
{
    if (m_arrow == arrow)
        return;
    prepareGeometryChange();
    m_arrow = arrow;
    update();
}

QRectF NoteNode::boundingRect() const
{
    return Node::boundingRect().adjusted(-ArrowLength, -ArrowLength, ArrowLength, ArrowLength);
}

QPainterPath NoteNode::shape() const
{
    QPainterPath path;
    path.addRect(QRectF(QPointF(0.0, 0.0), itemSize()));
    const QPolygonF arrow = arrowPolygon();
    if (!arrow.isEmpty())
        path.addPolygon(arrow);
    return path.simplified();
}

QPolygonF NoteNode::arrowPolygon() const
{
    const QRectF frame(QPointF(0.0, 0.0), itemSize());
    const qreal half = ArrowLength * 0.8;
    const QPointF c = frame.center();
    switch (m_arrow) {
    case Below: // the item is above: the arrow leaves the top edge upwards
        return QPolygonF({QPointF(c.x() - half, frame.top()),
                          QPointF(c.x(), frame.top() - ArrowLength),
                          QPointF(c.x() + half, frame.top())});
    case Above:
        return QPolygonF({QPointF(c.x() - half, frame.bottom()),
                          QPointF(c.x(), frame.bottom() + ArrowLength),
                          QPointF(c.x() + half, frame.bottom())});
    case Left:
        return QPolygonF({QPointF(frame.right(), c.y() - half),
                          QPointF(frame.right() + ArrowLength, c.y()),
                          QPointF(frame.right(), c.y() + half)});
    case Right:
        return QPolygonF({QPointF(frame.left(), c.y() - half),
                          QPointF(frame.left() - ArrowLength, c.y()),
                          QPointF(frame.left(), c.y() + half)});
    default:
        return QPolygonF();
    }
}

void NoteNode::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    const Colors *colors = Colors::instance();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF frame(QPointF(0.0, 0.0), itemSize());
    QPainterPath outline;
    outline.addRoundedRect(frame, CornerRadius, CornerRadius);
    const QPolygonF arrow = arrowPolygon();
    if (!arrow.isEmpty()) {
        QPainterPath tip;
        tip.addPolygon(arrow);
        tip.closeSubpath();
        outline = outline.united(tip);
    }
    QPen pen(colors->color(Colors::NoteBorder), 1.2);
    if (isSelected())
        pen = QPen(colors->color(Colors::Selection), Outline / 2.0);
    else if (isHovered())
        pen.setWidthF(2.0);
    painter->setPen(pen);
    painter->setBrush(m_color);
    painter->drawPath(outline);

    // The note's own colour decides the text colour: the user picks the colour, and a pale
    // note in a dark scheme would lose the scheme's light text.
    const QColor schemeText = colors->color(Colors::NoteText);
    const bool darkNote = m_color.lightness() < 128;
    const bool readable = darkNote == (schemeText.lightness() >= 128);
    painter->setPen(readable ? schemeText
                             : (darkNote ? QColor(Qt::white) : QColor(0x20, 0x20, 0x20)));
    painter->setFont(font());
    painter->drawText(
        frame.adjusted(Margin + IconGap, Margin + IconGap, -Margin - IconGap, -Margin - IconGap),
        Qt::TextWordWrap | Qt::AlignTop | Qt::AlignLeft, comment());
    painter->restore();
}
