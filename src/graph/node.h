#pragma once

#include "data/dataset.h"
#include "transforms/framework/columnsource.h"

#include <QDateTime>
#include <QGraphicsObject>
#include <QHash>
#include <QList>
#include <QSet>
#include <QStringList>
#include <QVariantList>

class Connection;
class ConnectFromNodeOverlayItem;
class ConnectToNodeOverlayItem;
class GraphScene;
class NodeOverlayItem;
class DelayTimer;
class TimingBar;

// What an item's icon shows; also how the status bar selects all items of one state.
enum class NodeStatusIcon {
    Empty = 0,
    Updating = 1,
    UpToDate = 2,
    Warning = 3,
    Error = 4,
    NeedsUpdate = 5
};

// Which end of a connection an item is.
enum class ConnectionDirection { Out = 0, In = 1, Both = 2 };

// The base of everything the user lays out on the canvas ("items"): inputs, transforms,
// outputs and notes. An item owns its output Dataset, its status (the only dirty mark of the
// run engine), the messages of its last run and the connections that touch it.
class Node : public QGraphicsObject, public ColumnSource
{
    Q_OBJECT

public:
    enum Status { NeedsUpdate = 0, Updating = 1, UpToDate = 2, Error = 3 };

    enum ItemType {
        InputType = QGraphicsItem::UserType + 1,
        TransformType = QGraphicsItem::UserType + 2,
        OutputType = QGraphicsItem::UserType + 3,
        NoteType = QGraphicsItem::UserType + 4
    };

    static constexpr int Unlimited = 0x7FFFFFFF;

    explicit Node(int id = -1, QGraphicsItem *parent = nullptr);
    ~Node() override;

    static QString statusText(int status);
    static QString kindText(int itemType);
    // The process-wide id counter; a document load raises it above the ids it restored.
    static int nextId();
    static void raiseIdCounter(int above);

    // 1
    virtual Node *clone() const = 0;
    // 2
    virtual QString toolTipText() const;
    // 3, 4
    void setId(int id);
    int id() const { return m_id; }
    // 5, 6
    virtual QString comment() const { return m_comment; }
    virtual void setComment(const QString &comment);
    // 7, 8
    QPointF centrePos() const;
    void setCentrePos(const QPointF &centre);
    // 9, 10, 11, 12
    virtual QString displayName() const = 0;
    virtual QString leftPaneName() const { return displayName(); }
    virtual QString internalName() const { return kindText(type()); }
    QString kindText() const { return kindText(type()); }
    // 13
    QString logLine() const;
    // 14, 15, 16
    QString richToolTip(int budget = 4000) const;
    QString titleLine() const;
    QString nameAndId() const;
    // 17, 18, 19
    virtual QColor backgroundColor() const;
    virtual QColor borderColor() const;
    virtual QColor textColor() const;
    // 20 to 24
    virtual QFont font() const;
    static constexpr qreal Outline = 6.0;
    static constexpr qreal Margin = 2.0;
    static constexpr qreal IconGap = 4.0;
    static constexpr qreal CornerRadius = 3.0;
    // 25
    QPointF anchor(ConnectionDirection direction, qreal gap = 0.0) const;
    // 26 to 29
    void addConnection(Connection *connection);
    QList<Connection *> connections(ConnectionDirection direction
                                    = ConnectionDirection::Both) const;
    virtual void removeConnection(Connection *connection);
    void deleteConnections(ConnectionDirection direction);
    // 30
    void deleteNode();
    // 31
    void setMoved(bool moved) { m_moved = moved; }
    bool moved() const { return m_moved; }
    // 32, 33
    void setStatus(int status, bool propagate);
    virtual int status() const;
    // 34, 35, 36, 37, 38
    QString sizeText() const;
    bool isFinished() const;
    bool isUpstreamUpToDate() const;
    virtual bool canRun() const;
    QString shortSizeText() const;
    static QString sizeText(qint64 rows, qint64 columns);
    static QString shortSizeText(qint64 rows, qint64 columns);
    static QString shortCount(qint64 count);
    // "%1 second(s)" with up to 6 significant digits, or "<0.001 second(s)" for no time.
    static QString elapsedText(qint64 elapsedMs);
    // 39
    virtual bool hasColumnRelatedParameters() const { return false; }
    // 40 to 45
    Dataset *dataset() { return &m_dataset; }
    const Dataset *dataset() const { return &m_dataset; }
    // What options bound to this item read columns from; ready once the item is up to date.
    const Dataset *columnDataset() const override { return &m_dataset; }
    bool isReady() const override { return status() == UpToDate; }
    // The same items as the sources that transforms bind their options to.
    static ColumnSources asSources(const QList<Node *> &nodes);
    int columnCount() const;
    int rowCount() const;
    QStringList columnNames() const { return m_dataset.headers(); }
    // 46, 47
    virtual int maximumInputs() const { return 0; }
    virtual int minimumInputs() const { return 0; }
    virtual int maximumOutputs() const { return Unlimited; }
    // 48, 49
    QList<Node *> upstream(bool sorted = false) const;
    QList<Node *> downstream(bool sorted = false) const;
    // 50, 51, 52
    QList<Node *> siblings(bool includeSelf = false) const;
    Node *previousSibling() const;
    Node *nextSibling() const;
    // 53 to 58
    QSet<Node *> allUpstream(bool includeSelf = false) const;
    QSet<Node *> allUpstreamIterative(bool includeSelf = false) const;
    QSet<Node *> allUpstreamOfType(int itemType) const;
    QSet<Node *> allDownstream(bool includeSelf = false) const;
    QSet<Node *> allDownstreamOfType(int itemType) const;
    QList<Node *> downstreamTransforms(bool all) const;
    // 59, 60
    bool isUpstream(const Node *node) const;
    bool isConnectedFrom(const Node *source) const;
    // 61, 62, 63
    void showConnectToOverlay();
    void removeConnectFromOverlay();
    void removeConnectToOverlay();
    ConnectFromNodeOverlayItem *connectFromOverlay() const { return m_connectFrom; }
    ConnectToNodeOverlayItem *connectToOverlay() const { return m_connectTo; }
    // 64
    void setFractionProcessed(double fraction);
    double fractionProcessed() const { return m_fractionProcessed; }
    // 65
    virtual void run(bool recursive, bool freeUpstream) = 0;
    // 66, 67
    QString alias() const { return m_alias; }
    void setAlias(const QString &alias) { m_alias = alias.trimmed(); }
    // 68
    virtual void connectToScene(GraphScene *scene);
    // 69
    bool canStartConnection() const;
    // 70
    int depth() const;
    // 71
    void reportProgress(qint64 row, qint64 frequency, qint64 total);
    // 72 to 75
    virtual bool hasWarnings() const { return !m_warnings.isEmpty(); }
    virtual QString warningsText(bool timeStamp = false) const;
    virtual bool hasInfo() const { return !m_info.isEmpty(); }
    virtual QString infoText(bool timeStamp = false) const;
    const QStringList &warnings() const { return m_warnings; }
    const QStringList &info() const { return m_info; }
    void addWarning(const QString &text) { m_warnings.append(text); }
    void addInfo(const QString &text) { m_info.append(text); }
    void clearMessages();
    // 76, 77, 78
    virtual QVariantList stateList() const;
    virtual QString statusLine() const;
    virtual NodeStatusIcon statusIcon() const;
    // 81, 82: fraction is the item's share of the longest processing time.
    void showTimingBar(qreal fraction);
    void hideTimingBar();
    TimingBar *timingBar() const { return m_timingBar; }
    // 83, 84
    qint64 processingTime() const { return m_processingTime; }
    QDateTime lastProcessed() const { return m_lastProcessed; }
    // 85 to 91: layout rectangles of the drawing
    QRectF headerRect() const;
    QRectF bodyRect() const;
    QRectF nameRect() const;
    QRectF textRect() const;
    QRectF connectHotSpotRect() const;
    QRectF statusIconRect() const;
    QRectF buttonStripRect() const;
    // 92 to 95
    GraphScene *graphScene() const;
    virtual QList<QPair<QString, QString>> identitySummary() const;
    virtual QList<QPair<QString, QString>> runSummary() const;
    virtual QList<QPair<QString, QString>> fileSummary() const { return {}; }
    // 96 to 98
    virtual QList<QPair<QString, QString>> parameterSummary() const { return {}; }
    virtual QString errorText() const { return QString(); }
    virtual QStringList extraLines() const { return {}; }

    void setPreview(bool preview) { m_preview = preview; }
    bool isPreview() const { return m_preview; }
    void setHighlighted(bool on);
    bool isHighlighted() const { return m_highlighted; }
    bool isHovered() const { return m_hovered; }
    // The colours of the item's kind in the scheme in force.
    QColor schemeBackgroundColor() const;
    QColor schemeBorderColor() const;
    QColor schemeTextColor() const;

    // Drawing
    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    static void paintStatusIcon(QPainter *painter, const QRectF &rect, NodeStatusIcon icon);
    // The same drawings for painters outside the canvas (the status bar); icon is a
    // NodeStatusIcon value.
    static void drawStatusIcon(QPainter *painter, const QRectF &rect, int icon);
    static QSizeF itemSize();

    // Orders used throughout: top to bottom (inputs of a transform, children in a run) and
    // left to right (roots of a run).
    static bool topToBottom(const Node *a, const Node *b);
    static bool leftToRight(const Node *a, const Node *b);

public slots:
    void onProcessed(qreal fraction);
    void onUpdateConnectionGuide();

signals:
    void nodePosChanged(const QList<Node *> &nodes);
    void processingStart(Node *node);
    void processed(Node *node, qreal fraction);
    void processingEnd(Node *node);

protected:
    // Copies what every clone keeps: id, alias, comment, position, status and the dataset.
    void copyInto(Node *copy) const;
    void finishRun(qint64 elapsedMs);
    void freeUpstreamData();
    QVariant itemChange(GraphicsItemChange change, const QVariant &value) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void hoverEnterEvent(QGraphicsSceneHoverEvent *event) override;
    void hoverLeaveEvent(QGraphicsSceneHoverEvent *event) override;

    Dataset m_dataset;
    int m_status = NeedsUpdate;
    qint64 m_processingTime = 0;
    QDateTime m_lastProcessed;
    QStringList m_warnings;
    QStringList m_info;

    // The drawing of all kinds but notes, in layers that subclasses may add to.
    void paintBody(QPainter *painter, const QRectF &frame) const;
    void paintTexts(QPainter *painter) const;
    void paintProgress(QPainter *painter) const;

private:
    void refreshSide(ConnectionDirection direction);
    void gatherNoteOffsets();
    void moveNotes();

    static int s_idCounter;

    bool m_hovered = false;
    bool m_highlighted = false;
    QString m_alias;
    QList<Connection *> m_connections;
    int m_id = -1;
    bool m_moved = false;
    QString m_comment;
    double m_fractionProcessed = 0.0;
    bool m_preview = false;
    QDateTime m_lastProgressTime;
    ConnectFromNodeOverlayItem *m_connectFrom = nullptr;
    ConnectToNodeOverlayItem *m_connectTo = nullptr;
    TimingBar *m_timingBar = nullptr;
    QHash<Node *, QPointF> m_noteOffsets;
    int m_noteDrag = -1;
    DelayTimer *m_guideTimer = nullptr;
};
