#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointF>

#include <functional>

class FlowConnection;
class FlowItem;
class TransformItem;

// A flow: the items, their connections, and the run that brings them up to date. It owns
// both. A run happens inside one call of process() on the calling thread; progress reports
// pump the event queue so that a window stays alive, and the running flag drops any run asked
// for in the meantime. The canvas, the command line and the tests all work on this; none of it
// needs a display.
class FlowModel : public QObject
{
    Q_OBJECT

public:
    enum RunMode { RunAll = 0, RunChanges = 1, RunSelected = 2, RunBatch = 3 };

    static constexpr qreal GridWidth = 239.4;
    static constexpr qreal GridHeight = 119.7;

    explicit FlowModel(QObject *parent = nullptr);
    ~FlowModel() override;

    // The process-wide stop flag, shared by the model, the items and the Stop action.
    static bool isStopRequested() { return s_stopRequested; }
    static void setStopRequested(bool stop) { s_stopRequested = stop; }
    // How a run lets the event queue have a turn; the window installs one that keeps its
    // heartbeat going. Null restores QCoreApplication::processEvents.
    static void setEventPump(const std::function<void()> &pump);

    // Runs the items as mode says; RunSelected runs selected and what they wait for.
    void process(int mode, bool silent = false, const QList<FlowItem *> &selected = {});
    bool isProcessing() const { return m_running; }
    // For runs whose tables nobody looks at (the command line): a transform may then take
    // over the rows of an input it is the last reader of, and change them in place. Runs
    // that free upstream data allow it anyway.
    void setRowsHandedOver(bool on) { m_rowsHandedOver = on; }
    bool rowsHandedOver() const { return m_rowsHandedOver; }

    // Takes ownership.
    void addItem(FlowItem *item);
    // Marks the items below as needing a run, drops the item's connections and deletes it
    // once control returns to the event loop.
    void removeItem(FlowItem *item);
    // Connects source to target; null when the connection is refused (a cycle, a duplicate,
    // too many inputs or outputs). The target's options follow its new inputs.
    FlowConnection *connectItems(FlowItem *source, FlowItem *target);
    // Removes the connection; the target's options follow and it needs a run.
    void disconnect(FlowConnection *connection);
    // A bare connection: no rules checked, no options rebound, no status touched.
    FlowConnection *makeConnection(FlowItem *source, FlowItem *target);
    void deleteConnection(FlowConnection *connection);

    QList<FlowItem *> items() const { return m_items; }
    QList<FlowItem *> itemsOfKind(int kind) const;
    FlowItem *itemById(int id) const;
    QList<FlowConnection *> connections() const { return m_connections; }
    // The items the user may connect source to.
    QList<FlowItem *> connectionCandidates(const FlowItem *source) const;

    // The document the flow was loaded from or saved to; relative output paths and path
    // variables are taken from it. Empty for a document never saved.
    QString documentPath() const { return m_documentPath; }
    void setDocumentPath(const QString &path) { m_documentPath = path; }
    bool autoRun() const { return m_autoRun; }
    void setAutoRun(bool on) { m_autoRun = on; }
    bool snapToGrid() const { return m_snapToGrid; }
    void setSnapToGrid(bool on) { m_snapToGrid = on; }
    // The nearest grid point; halves round upward, negative coordinates included.
    static QPointF snapPoint(const QPointF &point);

    static void sortLeftToRight(QList<FlowItem *> &items);
    static void sortTopToBottom(QList<FlowItem *> &items);

    // A copy for the undo list: new items with the same ids, the same connections, options
    // pointing at the copied items, and datasets sharing their rows with the originals.
    FlowModel *deepCopy(QObject *parent = nullptr) const;

    // Copies root and everything below it under the bottom of the flow, with new ids, aliases
    // and column ids, fed by the same inputs; returns the root's copy.
    FlowItem *duplicateBranch(FlowItem *root);

    // The items were moved by the user: snaps all items when the grid is on, lets the
    // transforms below that read several inputs reorder them after the canvas, and runs the
    // changes when Auto Run is on.
    void itemsMoved(const QList<FlowItem *> &moved);
    // An input's file changed on disk.
    void onSourceChanged(FlowItem *item);

signals:
    void itemAdded(FlowItem *item);
    // Emitted before the item goes.
    void itemRemoved(FlowItem *item);
    void connectionAdded(FlowConnection *connection);
    // Emitted before the connection is deleted.
    void connectionRemoved(FlowConnection *connection);

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
    // A run that was not silent has ended and the preferences ask for a sound.
    void beepRequested();

private:
    void onProcessingStart(FlowItem *item);
    void onProcessed(FlowItem *item, qreal fraction);
    void onProcessingEnd(FlowItem *item);
    void runSelected(const QList<FlowItem *> &selected);
    void runFromRoots(int mode);
    void logSummary(qint64 elapsedMs);

    static bool s_stopRequested;

    QList<FlowItem *> m_items;
    QList<FlowConnection *> m_connections;
    bool m_running = false;
    int m_itemCount = 0;
    int m_doneCount = 0;
    bool m_autoRun = true;
    bool m_snapToGrid = false;
    bool m_rowsHandedOver = false;
    QString m_documentPath;
};

// Gives the event queue a turn through the pump in force.
void pumpEvents();
