#include "graph/graphscene.h"

#include "graph/connection.h"
#include "graph/inputnode.h"
#include "graph/node.h"
#include "graph/notenode.h"
#include "graph/outputnode.h"
#include "graph/transformnode.h"
#include "graph/undo.h"
#include "shell/application.h"
#include "shell/guards.h"
#include "shell/settings.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/transform.h"

#include <QApplication>
#include <QDateTime>
#include <QLineF>
#include <QLocale>
#include <QRegularExpression>
#include <QtMath>

#include <algorithm>

bool GraphScene::s_stopRequested = false;

namespace {

// Pumping is costly next to the work of an inner loop; one pump per 500 ms keeps the window
// alive without slowing a run of millions of rows.
QElapsedTimer s_lastPump;

} // namespace

void pumpEvents()
{
    if (Application *app = Application::instance())
        app->pumpEvents();
    else
        QCoreApplication::processEvents(QEventLoop::AllEvents);
}

GraphScene::GraphScene(QObject *parent)
    : QGraphicsScene(parent)
{ }

GraphScene::~GraphScene()
{
    // Connections go first so that no item is left holding a pointer to a deleted one.
    const QList<Connection *> connections = allConnections();
    for (Connection *connection : connections) {
        connection->source()->removeConnection(connection);
        connection->target()->removeConnection(connection);
        removeItem(connection);
        delete connection;
    }
}

void GraphScene::addNode(Node *node)
{
    addItem(node);
    node->connectToScene(this);
}

Connection *GraphScene::connectNodes(Node *source, Node *target)
{
    if (!source || !target || source == target)
        return nullptr;
    if (target->isConnectedFrom(source) || source->isUpstream(target))
        return nullptr;
    if (target->upstream().size() >= target->maximumInputs()
        || source->downstream().size() >= source->maximumOutputs())
        return nullptr;
    auto *connection = new Connection(source, target);
    source->addConnection(connection);
    target->addConnection(connection);
    addItem(connection);
    if (auto *transform = qobject_cast<TransformNode *>(target))
        transform->connectParameters();
    target->setStatus(Node::NeedsUpdate, true);
    return connection;
}

void GraphScene::disconnect(Connection *connection)
{
    Node *target = connection->target();
    connection->source()->removeConnection(connection);
    target->removeConnection(connection);
    removeItem(connection);
    delete connection;
    if (auto *transform = qobject_cast<TransformNode *>(target))
        transform->connectParameters();
    target->setStatus(Node::NeedsUpdate, true);
}

QList<Node *> GraphScene::nodes() const
{
    QList<Node *> result;
    const QList<QGraphicsItem *> all = items(Qt::AscendingOrder);
    for (QGraphicsItem *item : all) {
        if (item->type() >= Node::InputType && item->type() <= Node::NoteType)
            result.append(static_cast<Node *>(item));
    }
    return result;
}

QList<Node *> GraphScene::nodesOfType(int itemType) const
{
    QList<Node *> result;
    const QList<Node *> all = nodes();
    for (Node *node : all) {
        if (node->type() == itemType)
            result.append(node);
    }
    return result;
}

Node *GraphScene::nodeById(int id) const
{
    const QList<Node *> all = nodes();
    for (Node *node : all) {
        if (node->id() == id)
            return node;
    }
    return nullptr;
}

QList<Connection *> GraphScene::allConnections() const
{
    QList<Connection *> result;
    const QList<QGraphicsItem *> all = items(Qt::AscendingOrder);
    for (QGraphicsItem *item : all) {
        if (item->type() == Connection::Type)
            result.append(static_cast<Connection *>(item));
    }
    return result;
}

void GraphScene::sortLeftToRight(QList<Node *> &nodes)
{
    std::stable_sort(nodes.begin(), nodes.end(), Node::leftToRight);
}

void GraphScene::sortTopToBottom(QList<Node *> &nodes)
{
    std::stable_sort(nodes.begin(), nodes.end(), Node::topToBottom);
}

void GraphScene::process(int mode, bool silent)
{
    if (m_running)
        return;
    m_running = true;
    emit allowUserInteraction(false);
    BusyCursor busy;
    pumpEvents();

    emit showLogMessage(
        QStringLiteral("Started run at: %1").arg(QDateTime::currentDateTime().toString()));
    QElapsedTimer elapsed;
    elapsed.start();
    m_doneCount = 0;
    m_itemCount = 0;
    emit showProgress(0);

    if (mode == RunSelected)
        runSelected();
    else
        runFromRoots(mode);

    const qint64 elapsedMs = elapsed.elapsed();
    emit showLogMessage(
        QStringLiteral("Ended run at: %1").arg(QDateTime::currentDateTime().toString()));
    emit completedTransforms();
    emit showProgress(100);
    if (m_doneCount >= 1)
        logSummary(elapsedMs);

    update();
    if (!silent && Settings::instance()->beepAfterProcessing())
        QApplication::beep();
    emit allowUserInteraction(true);
    m_running = false;
}

void GraphScene::runSelected()
{
    QList<Node *> selected;
    const QList<QGraphicsItem *> items = selectedItems();
    for (QGraphicsItem *item : items) {
        if (item->type() >= Node::InputType && item->type() <= Node::NoteType)
            selected.append(static_cast<Node *>(item));
    }
    for (Node *node : qAsConst(selected))
        node->setStatus(Node::NeedsUpdate, true);

    QList<Node *> work;
    for (Node *node : qAsConst(selected)) {
        if (!work.contains(node))
            work.append(node);
        const QSet<Node *> ancestors = node->allUpstream(false);
        // The set's order is arbitrary; sorting keeps the work list the same at every run.
        QList<Node *> ordered(ancestors.cbegin(), ancestors.cend());
        sortLeftToRight(ordered);
        for (Node *ancestor : qAsConst(ordered)) {
            if (ancestor->status() == Node::NeedsUpdate) {
                if (!work.contains(ancestor))
                    work.append(ancestor);
            } else if (ancestor->status() == Node::Error) {
                node->setStatus(Node::NeedsUpdate, false);
                if (!work.contains(ancestor))
                    work.append(ancestor);
            }
        }
    }
    m_itemCount = work.size();
    sortLeftToRight(work);

    while (!work.isEmpty()) {
        if (s_stopRequested) {
            emit showLogMessage(QStringLiteral("  Stopped by user"));
            break;
        }
        const QList<Node *> pass = work;
        for (Node *node : pass) {
            const QList<Node *> parents = node->upstream();
            const bool waiting = std::any_of(parents.cbegin(), parents.cend(), [](Node *parent) {
                return parent->status() == Node::NeedsUpdate;
            });
            if (waiting)
                continue;
            node->run(false, false);
            work.removeOne(node);
        }
        // A list that cannot drain loops until the user stops it; let the Stop button through.
        pumpEvents();
    }
}

void GraphScene::runFromRoots(int mode)
{
    QList<Node *> all = nodes();
    for (Node *node : qAsConst(all)) {
        if (mode == RunAll || mode == RunBatch)
            node->setStatus(Node::NeedsUpdate, false);
        else if (node->status() == Node::Error)
            node->setStatus(Node::NeedsUpdate, false);
    }
    m_itemCount = int(std::count_if(all.cbegin(), all.cend(),
                                    [](Node *node) { return node->status() != Node::UpToDate; }));
    sortLeftToRight(all);
    for (Node *node : qAsConst(all)) {
        if (node->upstream().isEmpty())
            node->run(true, mode == RunBatch);
        if (s_stopRequested) {
            emit showLogMessage(QStringLiteral("  Stopped by user"));
            break;
        }
    }
}

void GraphScene::logSummary(qint64 elapsedMs)
{
    const QString processed = QStringLiteral("%1 item(s) processed in %2")
                                  .arg(QString::number(m_doneCount), Node::elapsedText(elapsedMs));
    emit showTempMessage(processed);
    emit showLogMessage(processed);

    const QList<Node *> all = nodes();
    QStringList counts;
    for (int status : {Node::UpToDate, Node::NeedsUpdate, Node::Error}) {
        const auto count = std::count_if(all.cbegin(), all.cend(),
                                         [status](Node *node) { return node->status() == status; });
        counts.append(QStringLiteral("%1: %2").arg(Node::statusText(status)).arg(count));
    }
    emit showLogMessage(counts.join(QStringLiteral(", ")));
    const auto warned
        = std::count_if(all.cbegin(), all.cend(), [](Node *node) { return node->hasWarnings(); });
    emit showLogMessage(QStringLiteral("%1 item(s) with warnings\n").arg(warned));
}

void GraphScene::onSourceChanged(Node *node)
{
    if (m_running)
        return;
    node->setStatus(Node::NeedsUpdate, true);
    if (m_autoRun)
        process(RunChanges, false);
}

void GraphScene::onPosChanged(const QList<Node *> &dragged)
{
    QList<Node *> moved = dragged;
    if (m_snapToGrid) {
        const QList<Node *> all = nodes();
        for (Node *node : all) {
            const QPointF before = node->pos();
            const QPointF after = snapPoint(before);
            if (after == before)
                continue;
            node->setPos(after);
            // Rounding noise is not a move; a shift of a thousandth of a step is.
            if (QLineF(before, after).length() > GridWidth / 1000.0 && !moved.contains(node))
                moved.append(node);
        }
    }
    bool marked = false;
    for (Node *node : moved) {
        const QList<Node *> children = node->downstream(true);
        for (Node *child : children) {
            auto *transform = qobject_cast<TransformNode *>(child);
            if (!transform || !transform->hasSeveralInputs())
                continue;
            if (transform->autoConfigure()) {
                emit nodeParametersChanged(transform);
                transform->setStatus(Node::NeedsUpdate, false);
                marked = true;
            }
        }
    }
    refreshGeometry();
    if (marked && m_autoRun)
        process(RunChanges, false);
    emit nodesPosChanged();
}

void GraphScene::onProcessingStart(Node *node)
{
    emit nodeDataChanged(node);
    emit showStatusBarMessage(QStringLiteral("Processing '%1'").arg(node->displayName()));
}

void GraphScene::onProcessed(Node *, qreal fraction)
{
    if (fraction <= 0.0 || fraction >= 1.0 || !s_lastPump.isValid()
        || s_lastPump.elapsed() >= 500) {
        s_lastPump.start();
        pumpEvents();
    }
}

void GraphScene::onProcessingEnd(Node *node)
{
    node->onProcessed(1.0);
    emit nodeDataChanged(node);
    ++m_doneCount;
    emit showProgress(m_itemCount < 1 ? 100 : m_doneCount * 100 / m_itemCount);
    emit showNodeLogMessage(node->logLine());
}

// ---- Editing ----------------------------------------------------------------------------------
