#include "graph/node.h"

#include "flow/inputitem.h"
#include "flow/noteitem.h"
#include "flow/outputitem.h"
#include "flow/transformitem.h"
#include "shell/colors.h"
#include "shell/settings.h"

#include <QPainter>
#include <QPainterPath>

// The views of the four kinds of item: their colours and what each draws of its own.

Node *Node::create(FlowItem *item)
{
    if (auto *input = qobject_cast<InputItem *>(item))
        return new InputNode(input);
    if (auto *output = qobject_cast<OutputItem *>(item))
        return new OutputNode(output);
    if (auto *transform = qobject_cast<TransformItem *>(item))
        return new TransformNode(transform);
    if (auto *note = qobject_cast<NoteItem *>(item))
        return new NoteNode(note);
    return nullptr;
}

InputNode::InputNode(InputItem *item)
    : Node(item)
{ }

InputItem *InputNode::input() const
{
    return static_cast<InputItem *>(item());
}

QColor InputNode::backgroundColor() const
{
    return QColor(0xE9, 0xF6, 0xEA);
}

QColor InputNode::borderColor() const
{
    return QColor(0x3C, 0x8D, 0x40);
}

OutputNode::OutputNode(OutputItem *item)
    : Node(item)
{ }

OutputItem *OutputNode::output() const
{
    return static_cast<OutputItem *>(item());
}

QColor OutputNode::backgroundColor() const
{
    return QColor(0xFB, 0xEF, 0xE3);
}

QColor OutputNode::borderColor() const
{
    return QColor(0xB0, 0x6A, 0x1E);
}

TransformNode::TransformNode(TransformItem *item)
    : Node(item)
{ }

TransformItem *TransformNode::transformItem() const
{
    return static_cast<TransformItem *>(item());
}

Transform *TransformNode::transform() const
{
    return transformItem()->transform();
}

QColor TransformNode::backgroundColor() const
{
    return QColor(0xE8, 0xF1, 0xFB);
}

QColor TransformNode::borderColor() const
{
    return QColor(0x3B, 0x6E, 0xA8);
}

QColor TransformNode::textColor() const
{
    return QColor(0x10, 0x20, 0x30);
}

void TransformNode::paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
                          QWidget *widget)
{
    Node::paint(painter, option, widget);
    if (!Settings::instance()->showChanges())
        return;
    const QList<int> badges = transformItem()->changeBadges();
    if (badges.isEmpty())
        return;

    // The strip is 8% of the item's width twice over, a third of that 8% from the right edge.
    const QRectF body = bodyRect();
    const qreal unit = body.width() * 0.08;
    const qreal stripWidth = 2.0 * unit;
    const QRectF strip(body.right() - unit / 3.0 - stripWidth, body.top(), stripWidth,
                       body.height());
    const qreal slot = strip.height() / 3.0;
    const bool dark = backgroundColor().lightness() < 128;
    for (int i = 0; i < badges.size(); ++i) {
        const int position = badges.size() == 1 ? 1 : (i == 0 ? 0 : 2);
        const QRectF rect(strip.left(), strip.top() + position * slot, strip.width(), slot);
        const int badge = badges.at(i);
        const bool grows = badge == TransformItem::MoreRows || badge == TransformItem::MoreColumns;
        QColor colour = grows ? (dark ? QColor(0x00AAAA) : QColor(Qt::darkCyan))
                              : (dark ? QColor(0xAA00AA) : QColor(Qt::darkMagenta));
        QPen pen(colour, 1.5, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
        painter->setPen(pen);
        painter->setBrush(Qt::NoBrush);
        const QRectF in = rect.adjusted(rect.width() * 0.2, rect.height() * 0.2,
                                        -rect.width() * 0.2, -rect.height() * 0.2);
        QPolygonF chevron;
        switch (badge) {
        case TransformItem::MoreRows:
            chevron << in.bottomLeft() << QPointF(in.center().x(), in.top()) << in.bottomRight();
            break;
        case TransformItem::FewerRows:
            chevron << in.topLeft() << QPointF(in.center().x(), in.bottom()) << in.topRight();
            break;
        case TransformItem::FewerColumns:
            chevron << in.topRight() << QPointF(in.left(), in.center().y()) << in.bottomRight();
            break;
        case TransformItem::MoreColumns:
            chevron << in.topLeft() << QPointF(in.right(), in.center().y()) << in.bottomLeft();
            break;
        }
        painter->drawPolyline(chevron);
    }
}

NoteNode::NoteNode(NoteItem *item)
    : Node(item)
{ }

NoteItem *NoteNode::note() const
{
    return static_cast<NoteItem *>(item());
}

QColor NoteNode::backgroundColor() const
{
    return QColor(note()->color());
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
    switch (note()->arrow()) {
    case NoteItem::Below: // the item is above: the arrow leaves the top edge upwards
        return QPolygonF({QPointF(c.x() - half, frame.top()),
                          QPointF(c.x(), frame.top() - ArrowLength),
                          QPointF(c.x() + half, frame.top())});
    case NoteItem::Above:
        return QPolygonF({QPointF(c.x() - half, frame.bottom()),
                          QPointF(c.x(), frame.bottom() + ArrowLength),
                          QPointF(c.x() + half, frame.bottom())});
    case NoteItem::Left:
        return QPolygonF({QPointF(frame.right(), c.y() - half),
                          QPointF(frame.right() + ArrowLength, c.y()),
                          QPointF(frame.right(), c.y() + half)});
    case NoteItem::Right:
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
    const QColor fill = backgroundColor();
    painter->setBrush(fill);
    painter->drawPath(outline);

    // The note's own colour decides the text colour: the user picks the colour, and a pale
    // note in a dark scheme would lose the scheme's light text.
    const QColor schemeText = colors->color(Colors::NoteText);
    const bool darkNote = fill.lightness() < 128;
    const bool readable = darkNote == (schemeText.lightness() >= 128);
    painter->setPen(readable ? schemeText
                             : (darkNote ? QColor(Qt::white) : QColor(0x20, 0x20, 0x20)));
    painter->setFont(font());
    painter->drawText(
        frame.adjusted(Margin + IconGap, Margin + IconGap, -Margin - IconGap, -Margin - IconGap),
        Qt::TextWordWrap | Qt::AlignTop | Qt::AlignLeft, item()->comment());
    painter->restore();
}
