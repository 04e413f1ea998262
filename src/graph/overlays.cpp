#include "graph/overlays.h"

#include "graph/connection.h"
#include "graph/graphscene.h"
#include "graph/node.h"
#include "shell/colors.h"

#include <QGraphicsSceneMouseEvent>
#include <QPainter>
#include <QPen>

NodeOverlayItem::NodeOverlayItem(Node *node)
    : QGraphicsObject(node)
    , m_node(node)
{
    setAcceptHoverEvents(true);
    setAcceptedMouseButtons(Qt::LeftButton);
    setZValue(1.0);
}

QRectF NodeOverlayItem::boundingRect() const
{
    return QRectF(-Radius - 1.0, -Radius - 1.0, 2 * Radius + 2.0, 2 * Radius + 2.0);
}

QPainterPath NodeOverlayItem::shape() const
{
    QPainterPath path;
    path.addEllipse(QPointF(0.0, 0.0), Radius, Radius);
    return path;
}

void NodeOverlayItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    const Colors *colors = Colors::instance();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QColor accent = colors->color(Colors::Selection);
    painter->setPen(QPen(accent, 1.5));
    painter->setBrush(m_hovered ? accent : colors->color(Colors::CenterBackground));
    const QRectF circle(-Radius, -Radius, 2 * Radius, 2 * Radius);
    painter->drawEllipse(circle);
    painter->setPen(QPen(m_hovered ? colors->color(Colors::CenterBackground) : accent, 2.0,
                         Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->setBrush(Qt::NoBrush);
    const qreal inset = Radius * 0.45;
    paintSign(painter, circle.adjusted(inset, inset, -inset, -inset));
    painter->restore();
}

void NodeOverlayItem::discard()
{
    hide();
    deleteLater();
}

void NodeOverlayItem::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    event->accept();
    emit clicked(m_node);
}

void NodeOverlayItem::hoverEnterEvent(QGraphicsSceneHoverEvent *event)
{
    m_hovered = true;
    update();
    QGraphicsObject::hoverEnterEvent(event);
}

void NodeOverlayItem::hoverLeaveEvent(QGraphicsSceneHoverEvent *event)
{
    m_hovered = false;
    update();
    QGraphicsObject::hoverLeaveEvent(event);
}

ConnectFromNodeOverlayItem::ConnectFromNodeOverlayItem(Node *node)
    : NodeOverlayItem(node)
{
    setToolTip(QStringLiteral("Drag or click to connect to another item"));
}

void ConnectFromNodeOverlayItem::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    event->accept();
    ConnectionMaker *maker = ConnectionMaker::of(scene());
    if (!maker)
        return;
    if (maker->isActive())
        maker->cancel();
    maker->begin(node(), event->scenePos());
    maker->setDragging(true);
    emit clicked(node());
}

void ConnectFromNodeOverlayItem::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    if (ConnectionMaker *maker = ConnectionMaker::of(scene(), false))
        maker->moveTo(event->scenePos());
}

void ConnectFromNodeOverlayItem::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    ConnectionMaker *maker = ConnectionMaker::of(scene(), false);
    if (!maker || !maker->isActive())
        return;
    maker->setDragging(false);
    // Released over a candidate: the drag made the connection. Anywhere else the mode stays,
    // and a click on a candidate ends it.
    const QList<QGraphicsItem *> under = scene()->items(event->scenePos());
    for (QGraphicsItem *item : under) {
        if (item->type() == ConnectToNodeOverlayItem::Type && item->isVisible()) {
            maker->finish(static_cast<ConnectToNodeOverlayItem *>(item)->node());
            return;
        }
    }
}

void ConnectFromNodeOverlayItem::paintSign(QPainter *painter, const QRectF &inner)
{
    painter->drawLine(QPointF(inner.center().x(), inner.top()),
                      QPointF(inner.center().x(), inner.bottom()));
    painter->drawLine(QPointF(inner.left(), inner.center().y()),
                      QPointF(inner.right(), inner.center().y()));
}

ConnectToNodeOverlayItem::ConnectToNodeOverlayItem(Node *node)
    : NodeOverlayItem(node)
{
    setToolTip(QStringLiteral("Click to connect to this item"));
}

void ConnectToNodeOverlayItem::paintSign(QPainter *painter, const QRectF &inner)
{
    painter->drawPolyline(QPolygonF({inner.topLeft() + QPointF(inner.width() * 0.2, 0.0),
                                     QPointF(inner.right(), inner.center().y()),
                                     inner.bottomLeft() + QPointF(inner.width() * 0.2, 0.0)}));
}

ConnectionGuide::ConnectionGuide(const QPointF &from)
    : m_from(from)
    , m_to(from)
{
    const Colors *colors = Colors::instance();
    setPen(QPen(colors->color(Colors::Connection), colors->connectionThickness() + 2.0,
                Qt::DashLine, Qt::RoundCap));
    setZValue(1.0e6);
    setAcceptedMouseButtons(Qt::NoButton);
    setTo(from);
}

void ConnectionGuide::setTo(const QPointF &to)
{
    m_to = to;
    QPainterPath path(m_from);
    path.lineTo(m_to);
    setPath(path);
}

TimingBar::TimingBar(Node *node, qreal fraction, const QString &text)
    : QGraphicsObject(node)
    , m_fraction(std::max<qreal>(0.0, std::min<qreal>(1.0, fraction)))
    , m_text(text)
{
    setPos(0.0, Node::itemSize().height() + 4.0);
    setAcceptedMouseButtons(Qt::NoButton);
    setToolTip(text);
}

QRectF TimingBar::boundingRect() const
{
    return QRectF(0.0, 0.0, Node::itemSize().width(), 16.0);
}

void TimingBar::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    const Colors *colors = Colors::instance();
    const QRectF whole = boundingRect();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    QColor track = colors->color(Colors::Grid);
    painter->setPen(QPen(colors->color(Colors::Connection), 1.0));
    painter->setBrush(track);
    painter->drawRect(whole.adjusted(0.5, 0.5, -0.5, -0.5));
    // Green for the quick items through red for the slowest.
    QColor bar = QColor::fromHsvF((1.0 - m_fraction) / 3.0, 0.75, 0.85);
    painter->setPen(Qt::NoPen);
    painter->setBrush(bar);
    painter->drawRect(QRectF(whole.left() + 1.0, whole.top() + 1.0,
                             (whole.width() - 2.0) * m_fraction, whole.height() - 2.0));
    painter->setPen(colors->color(Colors::TransformText));
    painter->drawText(whole, Qt::AlignCenter, m_text);
    painter->restore();
}

ConnectionMaker::ConnectionMaker(GraphScene *scene)
    : QObject(scene)
    , m_scene(scene)
{ }

ConnectionMaker *ConnectionMaker::of(QGraphicsScene *scene, bool create)
{
    auto *graph = qobject_cast<GraphScene *>(scene);
    if (!graph)
        return nullptr;
    auto *maker = graph->findChild<ConnectionMaker *>(QString(), Qt::FindDirectChildrenOnly);
    if (!maker && create)
        maker = new ConnectionMaker(graph);
    return maker;
}

bool ConnectionMaker::isActive(const QGraphicsScene *scene)
{
    ConnectionMaker *maker = of(const_cast<QGraphicsScene *>(scene), false);
    return maker && maker->isActive();
}

void ConnectionMaker::begin(Node *source, const QPointF &pointer)
{
    if (!source || source->scene() != m_scene)
        return;
    m_source = source;
    m_guide = new ConnectionGuide(source->anchor(ConnectionDirection::Out));
    m_scene->addItem(m_guide);
    moveTo(pointer);
    source->setFlag(QGraphicsItem::ItemIsMovable, false);
    m_scene->clearSelection();
    const QList<Node *> candidates = m_scene->connectionCandidates(source);
    for (Node *candidate : candidates)
        candidate->showConnectToOverlay();
}

void ConnectionMaker::moveTo(const QPointF &pointer)
{
    if (m_guide)
        m_guide->setTo(pointer);
}

Connection *ConnectionMaker::finish(Node *target)
{
    Node *source = m_source;
    if (!source || !target)
        return nullptr;
    const bool allowed = m_scene->connectionCandidates(source).contains(target);
    cancel();
    return allowed ? m_scene->addConnectionByUser(source, target) : nullptr;
}

void ConnectionMaker::cancel()
{
    delete m_guide;
    m_guide = nullptr;
    const QList<Node *> all = m_scene->nodes();
    for (Node *node : all) {
        node->removeConnectToOverlay();
        node->removeConnectFromOverlay();
    }
    if (m_source)
        m_source->setFlag(QGraphicsItem::ItemIsMovable, true);
    m_source = nullptr;
    m_dragging = false;
}
