#include "graph/node.h"

#include "flow/noteitem.h"
#include "graph/connection.h"
#include "graph/graphscene.h"
#include "graph/overlays.h"
#include "graph/undo.h"
#include "shell/colors.h"
#include "shell/delaytimer.h"
#include "shell/settings.h"

#include <QApplication>
#include <QGraphicsSceneMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QTextLayout>

#include <algorithm>

// How an item looks and behaves on the canvas: its layout, drawing, hover guide, and the
// moves that carry its notes along. The rest of Node is in node.cpp.

namespace {

constexpr qreal ItemWidth = FlowItem::Width;
constexpr qreal ItemHeight = FlowItem::Height;
constexpr qreal HeaderHeight = 24.0;
constexpr qreal StatusIconSize = 22.0;
constexpr int ConnectionGuideDelayMs = 250;
constexpr qreal NoteSideX = 239.4;
constexpr qreal NoteSideY = 119.7;

// The press of a drag of items, and whether its undo step is open. A drag moves many items
// but only the pressed one sees the release.
bool s_dragPressed = false;
bool s_moveStepOpen = false;
int s_dragCount = 0;

// The item selected last lies on top of the others.
qreal s_topZ = 0.0;

} // namespace

QRectF Node::headerRect() const
{
    return QRectF(0.0, 0.0, ItemWidth, HeaderHeight);
}

QRectF Node::bodyRect() const
{
    return QRectF(0.0, HeaderHeight, ItemWidth, ItemHeight - HeaderHeight);
}

QRectF Node::nameRect() const
{
    return headerRect().adjusted(Margin + IconGap, 0.0, -Margin - IconGap, 0.0);
}

QRectF Node::textRect() const
{
    const QRectF body = bodyRect();
    const QRectF icon = statusIconRect();
    const qreal left = icon.right() + IconGap;
    return QRectF(left, body.top() + Margin, buttonStripRect().left() - left,
                  body.height() - 2 * Margin);
}

QRectF Node::connectHotSpotRect() const
{
    return QRectF(ItemWidth - 12.0, ItemHeight / 2.0 - 12.0, 24.0, 24.0);
}

QRectF Node::statusIconRect() const
{
    const QRectF body = bodyRect();
    return QRectF(body.left() + Margin + IconGap, body.top() + Margin + IconGap, StatusIconSize,
                  StatusIconSize);
}

QRectF Node::buttonStripRect() const
{
    // Two badge widths of 8% of the item, a third of one badge from the right edge.
    const QRectF body = bodyRect();
    const qreal unit = ItemWidth * 0.08;
    return QRectF(body.right() - unit / 3.0 - 2.0 * unit, body.top(), 2.0 * unit, body.height());
}

void Node::setHighlighted(bool on)
{
    if (m_highlighted == on)
        return;
    m_highlighted = on;
    update();
}

QColor Node::schemeBackgroundColor() const
{
    switch (type()) {
    case InputType:
        return Colors::instance()->color(Colors::InputBackground);
    case OutputType:
        return Colors::instance()->color(Colors::OutputBackground);
    case NoteType:
        return backgroundColor();
    default:
        return Colors::instance()->color(Colors::TransformBackground);
    }
}

QColor Node::schemeBorderColor() const
{
    switch (type()) {
    case InputType:
        return Colors::instance()->color(Colors::InputBorder);
    case OutputType:
        return Colors::instance()->color(Colors::OutputBorder);
    case NoteType:
        return Colors::instance()->color(Colors::NoteBorder);
    default:
        return Colors::instance()->color(Colors::TransformBorder);
    }
}

QColor Node::schemeTextColor() const
{
    switch (type()) {
    case InputType:
        return Colors::instance()->color(Colors::InputText);
    case OutputType:
        return Colors::instance()->color(Colors::OutputText);
    case NoteType:
        return Colors::instance()->color(Colors::NoteText);
    default:
        return Colors::instance()->color(Colors::TransformText);
    }
}

QRectF Node::boundingRect() const
{
    const qreal pad = Outline / 2.0;
    return QRectF(-pad, -pad, ItemWidth + 2 * pad, ItemHeight + 2 * pad);
}

void Node::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setRenderHint(QPainter::TextAntialiasing);
    paintBody(painter, QRectF(QPointF(0.0, 0.0), itemSize()));
    paintTexts(painter);
    paintStatusIcon(painter, statusIconRect(), m_item->statusIcon());
    paintProgress(painter);
    painter->restore();
}

void Node::paintBody(QPainter *painter, const QRectF &frame) const
{
    const Colors *colors = Colors::instance();
    const QColor background = schemeBackgroundColor();
    const QColor border = schemeBorderColor();

    QBrush fill(background);
    const int gradient = colors->gradientEffect();
    if (gradient > 0) {
        QLinearGradient shade(frame.topLeft(), frame.bottomLeft());
        shade.setColorAt(0.0, background.lighter(100 + 4 * gradient));
        shade.setColorAt(1.0, background.darker(100 + 4 * gradient));
        fill = QBrush(shade);
    }
    painter->setPen(Qt::NoPen);
    painter->setBrush(fill);
    painter->drawRoundedRect(frame, CornerRadius, CornerRadius);

    // The header is the body's colour washed with the border colour, so the name stands on
    // its own band in every scheme.
    QColor band = border;
    band.setAlpha(colors->isDark() ? 110 : 60);
    QPainterPath header;
    header.addRoundedRect(frame, CornerRadius, CornerRadius);
    QPainterPath clip;
    clip.addRect(headerRect());
    painter->setBrush(band);
    painter->drawPath(header.intersected(clip));

    QPen pen(border, m_hovered ? 2.0 : 1.2);
    if (isSelected()) {
        pen = QPen(colors->color(Colors::Selection), Outline / 2.0);
    } else if (m_highlighted) {
        pen = QPen(colors->color(Colors::Selection), 2.5, Qt::DashLine);
    }
    painter->setPen(pen);
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(frame, CornerRadius, CornerRadius);
}

void Node::paintTexts(QPainter *painter) const
{
    const QColor text = schemeTextColor();
    QFont nameFont = font();
    nameFont.setBold(true);
    painter->setFont(nameFont);
    painter->setPen(text);
    const QRectF name = nameRect();
    painter->drawText(
        name, Qt::AlignVCenter | Qt::AlignLeft,
        QFontMetricsF(nameFont).elidedText(m_item->titleLine(), Qt::ElideRight, name.width()));

    const QFont plain = font();
    const QFontMetricsF metrics(plain);
    const QRectF area = textRect();
    const qreal lineHeight = metrics.height();
    qreal y = area.top();
    painter->setFont(plain);
    const auto drawLine = [&](const QString &line) {
        if (y + lineHeight > area.bottom() + 0.5)
            return false;
        painter->drawText(QRectF(area.left(), y, area.width(), lineHeight),
                          Qt::AlignVCenter | Qt::AlignLeft,
                          metrics.elidedText(line, Qt::ElideRight, area.width()));
        y += lineHeight;
        return true;
    };
    const bool dark = Colors::instance()->isDark();
    if (m_item->status() == FlowItem::Error)
        painter->setPen(dark ? QColor(0xFF, 0x70, 0x70) : QColor(0xAA, 0x00, 0x00));
    drawLine(m_item->statusLine());
    painter->setPen(text);

    if (m_item->status() != FlowItem::Error && m_item->hasWarnings()
        && Settings::instance()->showWarnings()) {
        painter->setPen(dark ? QColor(0xFD, 0xB0, 0x40) : QColor(0xB0, 0x5A, 0x00));
        const QStringList warningLines = m_item->warningsText().split(QLatin1Char('\n'));
        drawLine(warningLines.first());
        painter->setPen(text);
    }

    const QString note = m_item->comment();
    if (!note.isEmpty() && Settings::instance()->showComments()) {
        QFont italic = plain;
        italic.setItalic(true);
        painter->setFont(italic);
        const QFontMetricsF italicMetrics(italic);
        const QRectF rest(area.left(), y, area.width(), area.bottom() - y);
        if (rest.height() >= lineHeight) {
            const int lines = int(rest.height() / lineHeight);
            QString shown = note.simplified();
            // Whole words up to the last line, which is cut with an ellipsis.
            QTextLayout layout(shown, italic);
            layout.beginLayout();
            QString visible;
            for (int i = 0; i < lines; ++i) {
                QTextLine line = layout.createLine();
                if (!line.isValid())
                    break;
                line.setLineWidth(rest.width());
                const QString part = shown.mid(line.textStart(), line.textLength());
                if (i == lines - 1) {
                    visible += italicMetrics.elidedText(shown.mid(line.textStart()), Qt::ElideRight,
                                                        rest.width());
                } else {
                    visible += part.trimmed() + QLatin1Char('\n');
                }
            }
            layout.endLayout();
            painter->drawText(rest, Qt::AlignTop | Qt::AlignLeft, visible.trimmed());
        }
    }
}

void Node::paintProgress(QPainter *painter) const
{
    const double fraction = m_item->fractionProcessed();
    if (m_item->status() != FlowItem::Updating || fraction <= 0.0 || fraction >= 1.0)
        return;
    const QRectF ring = statusIconRect().adjusted(-2.5, -2.5, 2.5, 2.5);
    painter->setBrush(Qt::NoBrush);
    QColor track = Colors::instance()->color(Colors::Selection);
    track.setAlpha(60);
    painter->setPen(QPen(track, 2.5));
    painter->drawEllipse(ring);
    painter->setPen(
        QPen(Colors::instance()->color(Colors::Selection), 2.5, Qt::SolidLine, Qt::FlatCap));
    painter->drawArc(ring, 90 * 16, -int(360 * 16 * fraction));
}

void Node::paintStatusIcon(QPainter *painter, const QRectF &rect, NodeStatusIcon icon)
{
    QColor fill;
    switch (icon) {
    case NodeStatusIcon::Empty:
        fill = QColor(0x90, 0x90, 0x90);
        break;
    case NodeStatusIcon::UpToDate:
        fill = QColor(0x00, 0xAA, 0x00);
        break;
    case NodeStatusIcon::Warning:
        fill = QColor(0xFD, 0x9A, 0x00);
        break;
    case NodeStatusIcon::Error:
        fill = QColor(0xAA, 0x00, 0x00);
        break;
    case NodeStatusIcon::Updating:
    case NodeStatusIcon::NeedsUpdate:
        fill = QColor(0xC8, 0xC8, 0xC8);
        break;
    }
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(fill);
    painter->drawEllipse(rect);
    const qreal quarter = rect.width() / 4.0;
    const QRectF inner = rect.adjusted(quarter, quarter, -quarter, -quarter);
    QPen pen(Qt::white, rect.height() / 9.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    painter->setPen(pen);
    painter->setBrush(Qt::NoBrush);
    switch (icon) {
    case NodeStatusIcon::Empty:
        painter->drawEllipse(inner);
        break;
    case NodeStatusIcon::Updating:
        painter->drawLine(inner.topLeft(), inner.topRight());
        painter->drawLine(inner.topRight(), inner.bottomLeft());
        painter->drawLine(inner.bottomLeft(), inner.bottomRight());
        painter->drawLine(inner.bottomRight(), inner.topLeft());
        break;
    case NodeStatusIcon::UpToDate:
        painter->drawPolyline(QPolygonF(
            {QPointF(inner.left(), inner.center().y()),
             QPointF(inner.left() + inner.width() * 0.4, inner.bottom()), inner.topRight()}));
        break;
    case NodeStatusIcon::Warning:
        painter->drawLine(QPointF(inner.center().x(), inner.top()),
                          QPointF(inner.center().x(), inner.bottom() - inner.height() * 0.35));
        painter->drawPoint(QPointF(inner.center().x(), inner.bottom()));
        break;
    case NodeStatusIcon::Error:
        painter->drawLine(inner.topLeft(), inner.bottomRight());
        painter->drawLine(inner.topRight(), inner.bottomLeft());
        break;
    case NodeStatusIcon::NeedsUpdate: {
        // A hook and a dot, drawn with the same pen as the other signs.
        const qreal w = inner.width();
        QPainterPath hook;
        hook.moveTo(inner.left() + w * 0.1, inner.top() + w * 0.3);
        hook.cubicTo(inner.left() + w * 0.1, inner.top() - w * 0.1, inner.right() - w * 0.1,
                     inner.top() - w * 0.1, inner.right() - w * 0.1, inner.top() + w * 0.3);
        hook.cubicTo(inner.right() - w * 0.1, inner.top() + w * 0.55, inner.center().x(),
                     inner.top() + w * 0.5, inner.center().x(), inner.top() + w * 0.72);
        painter->drawPath(hook);
        painter->drawPoint(QPointF(inner.center().x(), inner.bottom() + w * 0.08));
        break;
    }
    }
    painter->restore();
}

void Node::drawStatusIcon(QPainter *painter, const QRectF &rect, int icon)
{
    paintStatusIcon(painter, rect, NodeStatusIcon(icon));
}

void Node::showTimingBar(qreal fraction)
{
    hideTimingBar();
    m_timingBar = new TimingBar(this, fraction, FlowItem::elapsedText(m_item->processingTime()));
}

void Node::hideTimingBar()
{
    delete m_timingBar;
    m_timingBar = nullptr;
}

void Node::showConnectToOverlay()
{
    if (m_connectTo)
        return;
    m_connectTo = new ConnectToNodeOverlayItem(this);
    m_connectTo->setPos(anchor(ConnectionDirection::In) - pos());
    connect(m_connectTo, &NodeOverlayItem::clicked, this, [this](Node *target) {
        if (ConnectionMaker *maker = ConnectionMaker::of(scene(), false))
            maker->finish(target);
    });
}

void Node::removeConnectFromOverlay()
{
    if (!m_connectFrom)
        return;
    m_connectFrom->discard();
    m_connectFrom = nullptr;
}

void Node::removeConnectToOverlay()
{
    if (!m_connectTo)
        return;
    m_connectTo->discard();
    m_connectTo = nullptr;
}

void Node::onUpdateConnectionGuide()
{
    GraphScene *graph = graphScene();
    if (!graph || m_connectFrom || !m_hovered || m_item->isPreview()
        || ConnectionMaker::isActive(graph))
        return;
    if (!graph->canStartConnection(this))
        return;
    m_connectFrom = new ConnectFromNodeOverlayItem(this);
    m_connectFrom->setPos(anchor(ConnectionDirection::Out) - pos());
}

void Node::gatherNoteOffsets()
{
    m_noteOffsets.clear();
    GraphScene *graph = graphScene();
    if (!graph || type() == NoteType || !Settings::instance()->autoMoveNotes())
        return;
    const QRectF reach(pos() - QPointF(NoteSideX, NoteSideY), QSizeF(2 * NoteSideX, 2 * NoteSideY));
    const QList<Node *> notes = graph->nodesOfType(NoteType);
    for (Node *node : notes) {
        if (node->isSelected() || !reach.contains(node->pos()))
            continue;
        const QPointF offset = node->pos() - pos();
        bool pointsHere = false;
        switch (static_cast<const NoteItem *>(node->item())->arrow()) {
        case NoteItem::Below:
            pointsHere = offset.y() > 0.0 && std::abs(offset.x()) <= NoteSideY;
            break;
        case NoteItem::Above:
            pointsHere = offset.y() < 0.0 && std::abs(offset.x()) <= NoteSideY;
            break;
        case NoteItem::Left:
            pointsHere = offset.x() < 0.0 && std::abs(offset.y()) <= NoteSideY / 2.0;
            break;
        case NoteItem::Right:
            pointsHere = offset.x() > 0.0 && std::abs(offset.y()) <= NoteSideY / 2.0;
            break;
        default:
            break;
        }
        if (pointsHere)
            m_noteOffsets.insert(node, offset);
    }
}

void Node::moveNotes()
{
    for (auto it = m_noteOffsets.cbegin(); it != m_noteOffsets.cend(); ++it) {
        if (it.key()->scene() == scene())
            it.key()->setPos(pos() + it.value());
    }
}

QVariant Node::itemChange(GraphicsItemChange change, const QVariant &value)
{
    if (change == ItemPositionChange && s_dragPressed && isSelected()) {
        // The snapshot must show the items where they were, so it is taken before the first
        // change lands.
        if (!s_moveStepOpen) {
            s_moveStepOpen = true;
            beginUndoStep(QStringLiteral("move item(s)"));
        }
        if (m_noteDrag != s_dragCount) {
            m_noteDrag = s_dragCount;
            gatherNoteOffsets();
        }
    } else if (change == ItemPositionHasChanged) {
        if (m_item) {
            m_pushingPos = true;
            m_item->setPos(pos());
            m_pushingPos = false;
        }
        Connection::refreshPaths({this});
        if (m_noteDrag == s_dragCount && s_dragPressed)
            moveNotes();
        if (isSelected())
            m_moved = true;
    } else if (change == ItemSelectedHasChanged && value.toBool()) {
        s_topZ += 0.001;
        setZValue(s_topZ);
        for (Connection *connection : qAsConst(m_connections))
            connection->setZValue(s_topZ - 1.0);
    }
    return QGraphicsObject::itemChange(change, value);
}

void Node::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    removeConnectFromOverlay();
    if (event->button() == Qt::LeftButton) {
        s_dragPressed = true;
        ++s_dragCount;
    }
    QGraphicsObject::mousePressEvent(event);
}

void Node::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    QGraphicsObject::mouseReleaseEvent(event);
    s_dragPressed = false;
    if (s_moveStepOpen) {
        s_moveStepOpen = false;
        if (GraphScene *graph = graphScene())
            graph->endItemsMove();
        else
            endUndoStep();
    }
    if (m_moved) {
        m_moved = false;
        if (GraphScene *graph = graphScene())
            emit nodePosChanged(graph->nodes());
    }
}

void Node::hoverEnterEvent(QGraphicsSceneHoverEvent *event)
{
    if (!m_guideTimer) {
        m_guideTimer = new DelayTimer(this);
        connect(m_guideTimer, &DelayTimer::timeout, this, &Node::onUpdateConnectionGuide);
    }
    m_guideTimer->stop();
    m_hovered = true;
    for (Connection *connection : qAsConst(m_connections))
        connection->setHighlighted(true);
    update();
    m_guideTimer->start(ConnectionGuideDelayMs);
    QGraphicsObject::hoverEnterEvent(event);
}

void Node::hoverLeaveEvent(QGraphicsSceneHoverEvent *event)
{
    if (m_guideTimer)
        m_guideTimer->stop();
    removeConnectFromOverlay();
    m_hovered = false;
    for (Connection *connection : qAsConst(m_connections))
        connection->setHighlighted(false);
    update();
    QGraphicsObject::hoverLeaveEvent(event);
}

QColor Node::backgroundColor() const
{
    return QColor(0xF4, 0xF6, 0xF8);
}

QColor Node::borderColor() const
{
    return QColor(0x60, 0x6A, 0x78);
}

QColor Node::textColor() const
{
    return QColor(0x20, 0x20, 0x20);
}

QFont Node::font() const
{
    return QApplication::font();
}

QPointF Node::anchor(ConnectionDirection direction, qreal gap) const
{
    if (direction == ConnectionDirection::In)
        return pos() + QPointF(-gap, ItemHeight / 2.0);
    return pos() + QPointF(ItemWidth + gap, ItemHeight / 2.0);
}
