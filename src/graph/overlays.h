#pragma once

#include <QGraphicsObject>
#include <QGraphicsPathItem>
#include <QPointer>

class Connection;
class GraphScene;
class Node;

// A round button that sits on an item's side while the pointer or a connection being made
// needs it; it belongs to the item (a child), so it moves and dies with it.
class NodeOverlayItem : public QGraphicsObject
{
    Q_OBJECT

public:
    enum { Type = QGraphicsItem::UserType + 20 };
    static constexpr qreal Radius = 11.0;

    explicit NodeOverlayItem(Node *node);

    int type() const override { return Type; }
    Node *node() const { return m_node; }
    bool isHovered() const { return m_hovered; }

    QRectF boundingRect() const override;
    QPainterPath shape() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

    // Hides at once and deletes later: the overlay may be inside its own mouse handler.
    void discard();

signals:
    void clicked(Node *node);

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void hoverEnterEvent(QGraphicsSceneHoverEvent *event) override;
    void hoverLeaveEvent(QGraphicsSceneHoverEvent *event) override;
    // The sign drawn inside the circle.
    virtual void paintSign(QPainter *painter, const QRectF &inner) = 0;

private:
    Node *m_node;
    bool m_hovered = false;
};

// The handle on the right side of a hovered item: pressing it starts a connection, and
// releasing it over a candidate's handle, or clicking that handle later, ends it.
class ConnectFromNodeOverlayItem : public NodeOverlayItem
{
    Q_OBJECT

public:
    enum { Type = QGraphicsItem::UserType + 21 };

    explicit ConnectFromNodeOverlayItem(Node *node);
    int type() const override { return Type; }

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void paintSign(QPainter *painter, const QRectF &inner) override;
};

// The handle on the left side of each item a connection being made may end on.
class ConnectToNodeOverlayItem : public NodeOverlayItem
{
    Q_OBJECT

public:
    enum { Type = QGraphicsItem::UserType + 22 };

    explicit ConnectToNodeOverlayItem(Node *node);
    int type() const override { return Type; }

protected:
    void paintSign(QPainter *painter, const QRectF &inner) override;
};

// The rubber line from the source of a connection being made to the pointer.
class ConnectionGuide : public QGraphicsPathItem
{
public:
    enum { Type = QGraphicsItem::UserType + 23 };

    explicit ConnectionGuide(const QPointF &from);
    int type() const override { return Type; }
    QPointF from() const { return m_from; }
    QPointF to() const { return m_to; }
    void setTo(const QPointF &to);

private:
    QPointF m_from;
    QPointF m_to;
};

// The bar under an item that shows its share of the time of the last run, for the timing
// profile.
class TimingBar : public QGraphicsObject
{
    Q_OBJECT

public:
    enum { Type = QGraphicsItem::UserType + 24 };

    TimingBar(Node *node, qreal fraction, const QString &text);
    int type() const override { return Type; }
    qreal fraction() const { return m_fraction; }
    QString text() const { return m_text; }

    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    qreal m_fraction;
    QString m_text;
};

// The state of one scene while the user makes a connection: the source, the guide, and the
// handles on the candidates. It lives as a child of the scene, so undo copies never carry it
// and a replaced scene takes it along.
class ConnectionMaker : public QObject
{
    Q_OBJECT

public:
    // The scene's maker, made on first use when create is true.
    static ConnectionMaker *of(QGraphicsScene *scene, bool create = true);
    static bool isActive(const QGraphicsScene *scene);

    bool isActive() const { return m_source != nullptr; }
    Node *source() const { return m_source; }
    ConnectionGuide *guide() const { return m_guide; }
    // True while the press that began the connection is still held.
    bool isDragging() const { return m_dragging; }
    void setDragging(bool dragging) { m_dragging = dragging; }

    void begin(Node *source, const QPointF &pointer);
    void moveTo(const QPointF &pointer);
    // Ends the mode and makes the connection through the scene's user edit.
    Connection *finish(Node *target);
    void cancel();

private:
    explicit ConnectionMaker(GraphScene *scene);

    GraphScene *m_scene;
    QPointer<Node> m_source;
    ConnectionGuide *m_guide = nullptr;
    bool m_dragging = false;
};
