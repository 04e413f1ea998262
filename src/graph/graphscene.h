#pragma once

#include <QGraphicsScene>
#include <QHash>
#include <QList>

class Connection;
class FlowConnection;
class FlowItem;
class FlowModel;
class InputItem;
class Node;
class NoteItem;
class OutputItem;
class Transform;
class TransformItem;

// The canvas of one flow: a node for each item of its model and an arrow for each connection,
// kept in step with the model's signals, and the editing the user does with them. The model
// holds the items, runs them and says what happened; the scene passes its messages on, so that
// the window connects to the scene alone.
class GraphScene : public QGraphicsScene
{
    Q_OBJECT

public:
    // Shows model, which the scene takes over; null makes an empty one.
    explicit GraphScene(FlowModel *model = nullptr, QObject *parent = nullptr);
    ~GraphScene() override;

    FlowModel *model() const { return m_model; }
    // Gives the model up, unowned, and shows an empty one instead: for undo, which keeps
    // models and draws only the live one.
    FlowModel *releaseModel();

    // Runs the model; RunSelected runs the selected items and what they wait for.
    void process(int mode, bool silent = false);
    bool isProcessing() const;

    // The nodes, in the order of the model's items.
    QList<Node *> nodes() const;
    QList<Node *> nodesOfType(int itemType) const;
    Node *nodeById(int id) const;
    Node *nodeFor(const FlowItem *item) const;
    QList<Node *> nodesFor(const QList<FlowItem *> &items) const;
    QList<Connection *> allConnections() const;
    QList<Node *> selectedNodes() const;
    QList<FlowItem *> selectedItems() const;

    // Editing by the user. Each ...ByUser call is one undo step and leaves the scene as the
    // user expects to see it: new items placed and selected, options following their sources,
    // a run started when Auto Run is on.

    // The nodes the user may connect source to, and whether there is any.
    QList<Node *> connectionCandidates(const Node *source) const;
    bool canStartConnection(const Node *source) const;
    Connection *addConnectionByUser(Node *source, Node *target);
    // A null scenePos puts the item in a free place.
    Node *addInputByUser(InputItem *input, const QPointF &scenePos, bool ctrlHeld = false);
    Node *addOutputByUser(Node *source, const QString &path);
    Node *addNoteByUser(const QPointF &scenePos);
    static bool canAddTransform(const Transform *prototype,
                                const QList<QGraphicsItem *> &selection);
    Node *addTransformByUser(const Transform *prototype, bool ctrlHeld,
                             const QPointF &cursorScenePos);
    // Where a new item goes: right of the right-most source, off any other item; at the
    // cursor (or the view's upper left, which the caller passes) with Ctrl or no sources.
    QPointF freePlace(const QList<Node *> &sources, bool ctrlHeld,
                      const QPointF &cursorScenePos) const;
    void deleteSelectedByUser();
    enum class Disconnect { Both, Out, In };
    // How many column options of the affected transforms would lose their column; 0 means no
    // question is needed.
    int columnOptionsAtRisk(Disconnect direction) const;
    void disconnectSelectedByUser(Disconnect direction);
    void duplicateBranchByUser();
    bool snapToGrid() const;
    // The toggle of the user, recorded as an undo step.
    void setSnapToGrid(bool on);
    // The canvas calls beginUndoStep("move item(s)") when a press on items first moves, and
    // this on release: it snaps the moved items, lets multi-input transforms reorder their
    // inputs to follow the canvas, and ends the undo step.
    void endItemsMove();

    static constexpr qreal RowWidth = 1440.0;
    // Room around the items for the selection outline and the connect overlays.
    static constexpr qreal SceneMargin = 45.0;

public slots:
    void onPosChanged(const QList<Node *> &nodes);

signals:
    void allowUserInteraction(bool allow);
    void completedTransforms();
    void nodeDataChanged(FlowItem *item);
    void nodeParametersChanged(TransformItem *item);
    void nodesPosChanged();
    void showStatusBarMessage(const QString &text);
    void showTempMessage(const QString &text);
    void showLogMessage(const QString &text);
    void showNodeLogMessage(const QString &text);
    void showWarningMessage(const QString &title, const QString &text);
    void showCriticalMessage(const QString &title, const QString &text);
    void showProgress(int percent);
    void doubleClickNode(Node *node);
    void nodesAdded();
    void nodesDeleted();
    void fileOpen(const QString &path);
    void transformNodeAddedByUser(const QString &typeName);
    void showTip(const QString &title, const QString &text, int ms);

private:
    void connectModel();
    void removeViews();
    void forwardModelSignals();
    void onItemAdded(FlowItem *item);
    void onItemRemoved(FlowItem *item);
    void onConnectionAdded(FlowConnection *connection);
    void onConnectionRemoved(FlowConnection *connection);
    void refreshGeometry();
    void runChangesIfAuto();
    bool collides(const QRectF &rect, const Node *ignore = nullptr) const;
    QPointF freePlaceFrom(const QPointF &start, bool downOnly = false) const;
    QPointF notePlace(const QPointF &scenePos, int *arrow) const;
    // Leaves the sources of the selected transforms feeding their targets.
    void bridgeAround(const QList<FlowItem *> &selected);
    // Adds item to the model and returns its new node, placed and selected alone.
    Node *addPlaced(FlowItem *item, const QPointF &pos);

    FlowModel *m_model = nullptr;
    QHash<const FlowItem *, Node *> m_nodes;
    QHash<const FlowConnection *, Connection *> m_connections;
};
