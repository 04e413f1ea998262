#pragma once

#include <QElapsedTimer>
#include <QGraphicsScene>
#include <QList>

class Connection;
class InputNode;
class Node;
class NoteNode;
class OutputNode;
class Transform;
class TransformNode;

// The flow graph: owns the items and their connections and brings them up to date. A run
// happens inside one call of process() on the GUI thread; progress reports pump the event
// queue so that the window stays alive, and the running flag drops any run asked for in the
// meantime.
class GraphScene : public QGraphicsScene
{
    Q_OBJECT

public:
    enum RunMode { RunAll = 0, RunChanges = 1, RunSelected = 2, RunBatch = 3 };

    explicit GraphScene(QObject *parent = nullptr);
    ~GraphScene() override;

    // The process-wide stop flag, shared by the scene, the items and the Stop action.
    static bool isStopRequested() { return s_stopRequested; }
    static void setStopRequested(bool stop) { s_stopRequested = stop; }

    void process(int mode, bool silent = false);
    bool isProcessing() const { return m_running; }
    // For runs whose tables nobody looks at (the command line): a transform may then take
    // over the rows of an input it is the last reader of, and change them in place. Runs
    // that free upstream data allow it anyway.
    void setRowsHandedOver(bool on) { m_rowsHandedOver = on; }
    bool rowsHandedOver() const { return m_rowsHandedOver; }

    void addNode(Node *node);
    // Connects source to target; null when the connection is refused (a cycle, a duplicate,
    // too many inputs or outputs).
    Connection *connectNodes(Node *source, Node *target);
    void disconnect(Connection *connection);
    QList<Node *> nodes() const;
    QList<Node *> nodesOfType(int itemType) const;
    Node *nodeById(int id) const;
    QList<Connection *> allConnections() const;
    // The document the scene was loaded from or saved to; relative output paths and path
    // variables are taken from it. Empty for a document never saved.
    QString documentPath() const { return m_documentPath; }
    void setDocumentPath(const QString &path) { m_documentPath = path; }
    bool autoRun() const { return m_autoRun; }
    void setAutoRun(bool on) { m_autoRun = on; }

    // Sorts nodes left to right (roots of a run) or top to bottom (inputs of a transform).
    static void sortLeftToRight(QList<Node *> &nodes);
    static void sortTopToBottom(QList<Node *> &nodes);

    // Editing by the user. Each ...ByUser call is one undo step and leaves the scene as the
    // user expects to see it: new items placed and selected, parameters following their
    // sources, a run started when Auto Run is on.

    // A copy for the undo list: new items with the same ids, the same connections, parameters
    // pointing at the copied items, and datasets sharing their rows with the originals.
    GraphScene *deepCopy(QObject *parent = nullptr) const;
    // The items the user may connect source to, and whether there is any.
    QList<Node *> connectionCandidates(const Node *source) const;
    bool canStartConnection(const Node *source) const;
    Connection *addConnectionByUser(Node *source, Node *target);
    // A null scenePos puts the item in a free place.
    void addInputNodeByUser(InputNode *node, const QPointF &scenePos, bool ctrlHeld = false);
    OutputNode *addOutputByUser(Node *source, const QString &path);
    NoteNode *addNoteByUser(const QPointF &scenePos);
    static bool canAddTransform(const Transform *prototype,
                                const QList<QGraphicsItem *> &selection);
    TransformNode *addTransformByUser(const Transform *prototype, bool ctrlHeld,
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
    bool snapToGrid() const { return m_snapToGrid; }
    // The toggle of the user, recorded as an undo step.
    void setSnapToGrid(bool on);
    // The state a document brings, set without an undo step.
    void initSnapToGrid(bool on) { m_snapToGrid = on; }
    // The nearest grid point; halves round upward, negative coordinates included.
    static QPointF snapPoint(const QPointF &point);
    // The canvas calls beginUndoStep("move item(s)") when a press on items first moves, and
    // this on release: it snaps the moved items, lets multi-input transforms reorder their
    // inputs to follow the canvas, and ends the undo step.
    void endItemsMove();

    static constexpr qreal GridWidth = 239.4;
    static constexpr qreal GridHeight = 119.7;
    static constexpr qreal RowWidth = 1440.0;

public slots:
    void onSourceChanged(Node *node);
    void onPosChanged(const QList<Node *> &nodes);
    void onProcessingStart(Node *node);
    void onProcessed(Node *node, qreal fraction);
    void onProcessingEnd(Node *node);

signals:
    void allowUserInteraction(bool allow);
    void completedTransforms();
    void nodeDataChanged(Node *node);
    void nodeParametersChanged(TransformNode *node);
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
    // A bare connection: no options rebound, no status touched.
    Connection *makeConnection(Node *source, Node *target);
    void deleteConnection(Connection *connection);
    void refreshGeometry();
    void runChangesIfAuto();
    QList<Node *> selectedNodes() const;
    bool collides(const QRectF &rect, const Node *ignore = nullptr) const;
    QPointF freePlaceFrom(const QPointF &start, bool downOnly = false) const;
    QPointF notePlace(const QPointF &scenePos, int *arrow) const;
    void runSelected();
    void runFromRoots(int mode);
    void logSummary(qint64 elapsedMs);

    static bool s_stopRequested;

    bool m_running = false;
    int m_itemCount = 0;
    int m_doneCount = 0;
    bool m_autoRun = true;
    bool m_snapToGrid = false;
    bool m_rowsHandedOver = false;
    QString m_documentPath;
};

// Gives the event queue a turn, through the application when there is one so that the status
// bar's heartbeat keeps going.
void pumpEvents();
