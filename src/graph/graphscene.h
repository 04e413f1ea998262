#pragma once

#include <QElapsedTimer>
#include <QGraphicsScene>
#include <QList>

class Connection;
class Node;
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

private:
    void runSelected();
    void runFromRoots(int mode);
    void logSummary(qint64 elapsedMs);

    static bool s_stopRequested;

    bool m_running = false;
    int m_itemCount = 0;
    int m_doneCount = 0;
    bool m_autoRun = true;
    QString m_documentPath;
};

// Gives the event queue a turn, through the application when there is one so that the status
// bar's heartbeat keeps going.
void pumpEvents();
