#pragma once

#include "flow/flowitem.h"

#include <QGraphicsObject>
#include <QHash>
#include <QList>
#include <QPointer>

class Connection;
class InputItem;
class NoteItem;
class OutputItem;
class Transform;
class TransformItem;
class ConnectFromNodeOverlayItem;
class ConnectToNodeOverlayItem;
class GraphScene;
class DelayTimer;
class TimingBar;

// How one item of the flow looks and behaves on the canvas. The item (a FlowItem of the
// scene's model) holds everything else: options, status, data, connections. A node follows
// its item: it repaints on changed() and takes the item's position on moved(); a drag moves
// the node and the node moves the item.
class Node : public QGraphicsObject
{
    Q_OBJECT

public:
    enum ItemType {
        InputType = QGraphicsItem::UserType + FlowItem::InputKind,
        TransformType = QGraphicsItem::UserType + FlowItem::TransformKind,
        OutputType = QGraphicsItem::UserType + FlowItem::OutputKind,
        NoteType = QGraphicsItem::UserType + FlowItem::NoteKind
    };
    static bool isNodeType(int graphicsType)
    {
        return graphicsType >= InputType && graphicsType <= NoteType;
    }

    // The view of item's kind; the caller (the scene) owns it, the model owns item.
    static Node *create(FlowItem *item);
    ~Node() override;

    FlowItem *item() const { return m_item; }
    int type() const override { return QGraphicsItem::UserType + m_item->kind(); }
    GraphScene *graphScene() const;

    // The views of the connections at this node, kept by the scene.
    QList<Connection *> connections(ConnectionDirection direction
                                    = ConnectionDirection::Both) const;
    void addConnection(Connection *connection);
    void removeConnection(Connection *connection);

    // The drag that ended moved this node.
    void setMoved(bool moved) { m_moved = moved; }
    bool moved() const { return m_moved; }

    virtual QColor backgroundColor() const;
    virtual QColor borderColor() const;
    virtual QColor textColor() const;
    virtual QFont font() const;
    // The colours of the item's kind in the scheme in force.
    QColor schemeBackgroundColor() const;
    QColor schemeBorderColor() const;
    QColor schemeTextColor() const;
    static constexpr qreal Outline = 6.0;
    static constexpr qreal Margin = 2.0;
    static constexpr qreal IconGap = 4.0;
    static constexpr qreal CornerRadius = 3.0;
    static QSizeF itemSize() { return FlowItem::size(); }
    QPointF anchor(ConnectionDirection direction, qreal gap = 0.0) const;

    void showConnectToOverlay();
    void removeConnectFromOverlay();
    void removeConnectToOverlay();
    ConnectFromNodeOverlayItem *connectFromOverlay() const { return m_connectFrom; }
    ConnectToNodeOverlayItem *connectToOverlay() const { return m_connectTo; }
    // fraction is the item's share of the longest processing time.
    void showTimingBar(qreal fraction);
    void hideTimingBar();
    TimingBar *timingBar() const { return m_timingBar; }

    void setHighlighted(bool on);
    bool isHighlighted() const { return m_highlighted; }
    bool isHovered() const { return m_hovered; }

    // Layout rectangles of the drawing.
    QRectF headerRect() const;
    QRectF bodyRect() const;
    QRectF nameRect() const;
    QRectF textRect() const;
    QRectF connectHotSpotRect() const;
    QRectF statusIconRect() const;
    QRectF buttonStripRect() const;

    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    static void paintStatusIcon(QPainter *painter, const QRectF &rect, NodeStatusIcon icon);
    // The same drawings for painters outside the canvas (the status bar); icon is a
    // NodeStatusIcon value.
    static void drawStatusIcon(QPainter *painter, const QRectF &rect, int icon);

public slots:
    void onUpdateConnectionGuide();

signals:
    void nodePosChanged(const QList<Node *> &nodes);

protected:
    explicit Node(FlowItem *item);

    QVariant itemChange(GraphicsItemChange change, const QVariant &value) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void hoverEnterEvent(QGraphicsSceneHoverEvent *event) override;
    void hoverLeaveEvent(QGraphicsSceneHoverEvent *event) override;

    // The drawing of all kinds but notes, in layers that subclasses may add to.
    void paintBody(QPainter *painter, const QRectF &frame) const;
    void paintTexts(QPainter *painter) const;
    void paintProgress(QPainter *painter) const;

private:
    void onItemChanged();
    void onItemMoved();
    void refreshSide(ConnectionDirection direction);
    void gatherNoteOffsets();
    void moveNotes();

    QPointer<FlowItem> m_item;
    bool m_hovered = false;
    bool m_highlighted = false;
    bool m_moved = false;
    // Set while the node itself pushes its position to the item.
    bool m_pushingPos = false;
    QList<Connection *> m_connections;
    ConnectFromNodeOverlayItem *m_connectFrom = nullptr;
    ConnectToNodeOverlayItem *m_connectTo = nullptr;
    TimingBar *m_timingBar = nullptr;
    QHash<Node *, QPointF> m_noteOffsets;
    int m_noteDrag = -1;
    DelayTimer *m_guideTimer = nullptr;
};

// The views of the kinds. Each gives its item typed and draws what is its own.
class InputNode : public Node
{
    Q_OBJECT
public:
    explicit InputNode(InputItem *item);
    InputItem *input() const;
    QColor backgroundColor() const override;
    QColor borderColor() const override;
};

class OutputNode : public Node
{
    Q_OBJECT
public:
    explicit OutputNode(OutputItem *item);
    OutputItem *output() const;
    QColor backgroundColor() const override;
    QColor borderColor() const override;
};

// Besides the item, draws the badges that say whether the result grew or shrank.
class TransformNode : public Node
{
    Q_OBJECT
public:
    explicit TransformNode(TransformItem *item);
    TransformItem *transformItem() const;
    Transform *transform() const;
    QColor backgroundColor() const override;
    QColor borderColor() const override;
    QColor textColor() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
};

// A comment on the canvas, drawn in its own colour with an arrow toward its item.
class NoteNode : public Node
{
    Q_OBJECT
public:
    static constexpr qreal ArrowLength = 14.0;

    explicit NoteNode(NoteItem *item);
    NoteItem *note() const;
    QColor backgroundColor() const override;
    QRectF boundingRect() const override;
    QPainterPath shape() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    // The arrow's outline in item coordinates; empty without an arrow.
    QPolygonF arrowPolygon() const;
};
