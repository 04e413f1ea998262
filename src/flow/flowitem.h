#pragma once

#include "data/dataset.h"
#include "transforms/framework/columnsource.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QPair>
#include <QPointF>
#include <QSet>
#include <QSizeF>
#include <QStringList>
#include <QVariantList>

#include <functional>

class FlowConnection;
class FlowModel;

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

// One thing the user lays out in a flow ("an item"): an input, a transform, an output or a
// note. An item owns its output Dataset, its status (the only dirty mark of the run engine),
// the messages of its last run, its place on the canvas and its ends of the connections that
// touch it. Nothing here draws: the canvas shows an item through a view that follows
// changed() and moved().
class FlowItem : public QObject, public ColumnSource
{
    Q_OBJECT

public:
    enum Status { NeedsUpdate = 0, Updating = 1, UpToDate = 2, Error = 3 };
    enum Kind { InputKind = 1, TransformKind = 2, OutputKind = 3, NoteKind = 4 };

    static constexpr int Unlimited = 0x7FFFFFFF;
    // Every item takes the same room on the canvas; positions are its upper left corner.
    static constexpr qreal Width = 180.0;
    static constexpr qreal Height = 90.0;
    static QSizeF size() { return QSizeF(Width, Height); }

    explicit FlowItem(int id = -1);
    ~FlowItem() override;

    static QString statusText(int status);
    static QString kindText(int kind);
    // The process-wide id counter; a document load raises it above the ids it restored.
    static int nextId();
    static void raiseIdCounter(int above);

    virtual int kind() const = 0;
    // A copy with the same id, options, status and data (the rows shared), unconnected.
    virtual FlowItem *clone() const = 0;
    FlowModel *model() const;

    void setId(int id);
    int id() const { return m_id; }
    QString comment() const { return m_comment; }
    void setComment(const QString &comment);
    QString alias() const { return m_alias; }
    void setAlias(const QString &alias);

    // The place on the canvas. Transforms read their inputs in the order of these.
    QPointF pos() const { return m_pos; }
    void setPos(const QPointF &pos);
    QPointF centrePos() const;
    void setCentrePos(const QPointF &centre);

    virtual QString displayName() const = 0;
    virtual QString leftPaneName() const { return displayName(); }
    virtual QString internalName() const { return kindText(kind()); }
    QString kindText() const { return kindText(kind()); }
    virtual QString toolTipText() const;
    QString logLine() const;
    QString richToolTip(int budget = 4000) const;
    QString titleLine() const;
    QString nameAndId() const;

    // Connections, kept by the model; each end lists its own.
    QList<FlowConnection *> connections(ConnectionDirection direction
                                        = ConnectionDirection::Both) const;
    virtual int maximumInputs() const { return 0; }
    virtual int minimumInputs() const { return 0; }
    virtual int maximumOutputs() const { return Unlimited; }

    void setStatus(int status, bool propagate);
    virtual int status() const;
    bool isFinished() const;
    bool isUpstreamUpToDate() const;
    virtual bool canRun() const;
    // Brings the item up to date when its inputs are, then its children when recursive;
    // freeUpstream drops the rows of inputs nobody needs any more.
    virtual void run(bool recursive, bool freeUpstream) = 0;

    Dataset *dataset() { return &m_dataset; }
    const Dataset *dataset() const { return &m_dataset; }
    // What options bound to this item read columns from; ready once the item is up to date.
    const Dataset *columnDataset() const override { return &m_dataset; }
    bool isReady() const override { return status() == UpToDate; }
    // The same items as the sources that transforms bind their options to.
    static ColumnSources asSources(const QList<FlowItem *> &items);
    int columnCount() const;
    int rowCount() const;
    QStringList columnNames() const { return m_dataset.headers(); }
    QString sizeText() const;
    QString shortSizeText() const;
    static QString sizeText(qint64 rows, qint64 columns);
    static QString shortSizeText(qint64 rows, qint64 columns);
    static QString shortCount(qint64 count);
    // "%1 second(s)" with up to 6 significant digits, or "<0.001 second(s)" for no time.
    static QString elapsedText(qint64 elapsedMs);
    virtual bool hasColumnRelatedParameters() const { return false; }

    QList<FlowItem *> upstream(bool sorted = false) const;
    QList<FlowItem *> downstream(bool sorted = false) const;
    QList<FlowItem *> siblings(bool includeSelf = false) const;
    FlowItem *previousSibling() const;
    FlowItem *nextSibling() const;
    QSet<FlowItem *> allUpstream(bool includeSelf = false) const;
    QSet<FlowItem *> allUpstreamIterative(bool includeSelf = false) const;
    QSet<FlowItem *> allUpstreamOfKind(int kind) const;
    QSet<FlowItem *> allDownstream(bool includeSelf = false) const;
    QSet<FlowItem *> allDownstreamOfKind(int kind) const;
    QList<FlowItem *> downstreamTransforms(bool all) const;
    bool isUpstream(const FlowItem *item) const;
    bool isConnectedFrom(const FlowItem *source) const;
    // Whether some item of the model could take a new connection from this one.
    bool canStartConnection() const;
    int depth() const;

    void setFractionProcessed(double fraction);
    double fractionProcessed() const { return m_fractionProcessed; }
    // Called by long work every frequency rows; reports fractions of total.
    void reportProgress(qint64 row, qint64 frequency, qint64 total);
    // Checks the memory limit (which may throw) and, at most every 250 ms or 2%, tells the
    // model, which lets the event queue have a turn.
    void onProcessed(qreal fraction);
    // The clock of that throttle, in milliseconds; a test installs one it moves by hand. Null
    // restores the system clock.
    static void setProgressClock(const std::function<qint64()> &clock);

    virtual bool hasWarnings() const { return !m_warnings.isEmpty(); }
    virtual QString warningsText(bool timeStamp = false) const;
    virtual bool hasInfo() const { return !m_info.isEmpty(); }
    virtual QString infoText(bool timeStamp = false) const;
    const QStringList &warnings() const { return m_warnings; }
    const QStringList &info() const { return m_info; }
    void addWarning(const QString &text) { m_warnings.append(text); }
    void addInfo(const QString &text) { m_info.append(text); }
    void clearMessages();

    // The fields an item's state is compared by (tests, undo checks).
    virtual QVariantList stateList() const;
    virtual QString statusLine() const;
    virtual NodeStatusIcon statusIcon() const;
    qint64 processingTime() const { return m_processingTime; }
    QDateTime lastProcessed() const { return m_lastProcessed; }

    virtual QList<QPair<QString, QString>> identitySummary() const;
    virtual QList<QPair<QString, QString>> runSummary() const;
    virtual QList<QPair<QString, QString>> fileSummary() const { return {}; }
    virtual QList<QPair<QString, QString>> parameterSummary() const { return {}; }
    virtual QString errorText() const { return QString(); }
    virtual QStringList extraLines() const { return {}; }

    // The stand-in item of the Left pane's previews: up to date with a large table.
    void setPreview(bool preview) { m_preview = preview; }
    bool isPreview() const { return m_preview; }

    // Orders used throughout: top to bottom (inputs of a transform, children in a run) and
    // left to right (roots of a run).
    static bool topToBottom(const FlowItem *a, const FlowItem *b);
    static bool leftToRight(const FlowItem *a, const FlowItem *b);

signals:
    // Something an item's drawing shows has changed.
    void changed();
    // The position changed through setPos.
    void moved();
    void processingStart(FlowItem *item);
    void processed(FlowItem *item, qreal fraction);
    void processingEnd(FlowItem *item);

protected:
    // Copies what every clone keeps: alias, comment, position, status, messages and the
    // dataset.
    void copyInto(FlowItem *copy) const;
    void finishRun(qint64 elapsedMs);
    void freeUpstreamData();
    // Children that are transforms learn the columns of the new dataset.
    void resolveChildParameterTexts();
    bool isStopRequested() const;
    // Called by the model when a connection at this item goes, before it is deleted.
    virtual void onConnectionRemoved(FlowConnection *connection) { Q_UNUSED(connection) }

    Dataset m_dataset;
    int m_status = NeedsUpdate;
    qint64 m_processingTime = 0;
    QDateTime m_lastProcessed;
    QStringList m_warnings;
    QStringList m_info;

private:
    friend class FlowModel;

    static int s_idCounter;

    QString m_alias;
    QList<FlowConnection *> m_connections;
    int m_id = -1;
    QPointF m_pos;
    QString m_comment;
    double m_fractionProcessed = 0.0;
    bool m_preview = false;
    // When progress was last shown, by the progress clock; -1 before the first report.
    qint64 m_lastProgressMs = -1;
};

// An arrow from one item's output to another item's input. The model owns it; both ends list
// it.
class FlowConnection
{
public:
    FlowConnection(FlowItem *source, FlowItem *target)
        : m_source(source)
        , m_target(target)
    { }

    FlowItem *source() const { return m_source; }
    FlowItem *target() const { return m_target; }
    FlowItem *otherEnd(const FlowItem *item) const
    {
        return item == m_source ? m_target : m_source;
    }

private:
    FlowItem *m_source;
    FlowItem *m_target;
};
