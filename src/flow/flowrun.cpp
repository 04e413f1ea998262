#include "flow/flowmodel.h"

#include "flow/flowitem.h"
#include "shell/settings.h"

#include <QDateTime>
#include <QElapsedTimer>

#include <algorithm>

// The run: which items run in which order, and what the log says about it.

namespace {

// Pumping is costly next to the work of an inner loop; one pump per 500 ms keeps a window
// alive without slowing a run of millions of rows.
QElapsedTimer s_lastPump;

} // namespace

void FlowModel::process(int mode, bool silent, const QList<FlowItem *> &selected)
{
    if (m_running)
        return;
    m_running = true;
    emit allowUserInteraction(false);
    pumpEvents();

    emit showLogMessage(
        QStringLiteral("Started run at: %1").arg(QDateTime::currentDateTime().toString()));
    QElapsedTimer elapsed;
    elapsed.start();
    m_doneCount = 0;
    m_itemCount = 0;
    emit showProgress(0);

    if (mode == RunSelected)
        runSelected(selected);
    else
        runFromRoots(mode);

    const qint64 elapsedMs = elapsed.elapsed();
    emit showLogMessage(
        QStringLiteral("Ended run at: %1").arg(QDateTime::currentDateTime().toString()));
    emit completedTransforms();
    emit showProgress(100);
    if (m_doneCount >= 1)
        logSummary(elapsedMs);

    if (!silent && Settings::instance()->beepAfterProcessing())
        emit beepRequested();
    emit allowUserInteraction(true);
    m_running = false;
}

void FlowModel::runSelected(const QList<FlowItem *> &selected)
{
    for (FlowItem *node : qAsConst(selected))
        node->setStatus(FlowItem::NeedsUpdate, true);

    QList<FlowItem *> work;
    for (FlowItem *node : qAsConst(selected)) {
        if (!work.contains(node))
            work.append(node);
        const QSet<FlowItem *> ancestors = node->allUpstream(false);
        // The set's order is arbitrary; sorting keeps the work list the same at every run.
        QList<FlowItem *> ordered(ancestors.cbegin(), ancestors.cend());
        sortLeftToRight(ordered);
        for (FlowItem *ancestor : qAsConst(ordered)) {
            if (ancestor->status() == FlowItem::NeedsUpdate) {
                if (!work.contains(ancestor))
                    work.append(ancestor);
            } else if (ancestor->status() == FlowItem::Error) {
                node->setStatus(FlowItem::NeedsUpdate, false);
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
        const QList<FlowItem *> pass = work;
        for (FlowItem *node : pass) {
            const QList<FlowItem *> parents = node->upstream();
            const bool waiting
                = std::any_of(parents.cbegin(), parents.cend(), [](FlowItem *parent) {
                      return parent->status() == FlowItem::NeedsUpdate;
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

void FlowModel::runFromRoots(int mode)
{
    QList<FlowItem *> all = m_items;
    for (FlowItem *node : qAsConst(all)) {
        if (mode == RunAll || mode == RunBatch)
            node->setStatus(FlowItem::NeedsUpdate, false);
        else if (node->status() == FlowItem::Error)
            node->setStatus(FlowItem::NeedsUpdate, false);
    }
    m_itemCount = int(std::count_if(all.cbegin(), all.cend(), [](FlowItem *node) {
        return node->status() != FlowItem::UpToDate;
    }));
    sortLeftToRight(all);
    for (FlowItem *node : qAsConst(all)) {
        if (node->upstream().isEmpty())
            node->run(true, mode == RunBatch);
        if (s_stopRequested) {
            emit showLogMessage(QStringLiteral("  Stopped by user"));
            break;
        }
    }
}

void FlowModel::logSummary(qint64 elapsedMs)
{
    const QString processed
        = QStringLiteral("%1 item(s) processed in %2")
              .arg(QString::number(m_doneCount), FlowItem::elapsedText(elapsedMs));
    emit showTempMessage(processed);
    emit showLogMessage(processed);

    const QList<FlowItem *> &all = m_items;
    QStringList counts;
    for (int status : {FlowItem::UpToDate, FlowItem::NeedsUpdate, FlowItem::Error}) {
        const auto count = std::count_if(all.cbegin(), all.cend(), [status](FlowItem *node) {
            return node->status() == status;
        });
        counts.append(QStringLiteral("%1: %2").arg(FlowItem::statusText(status)).arg(count));
    }
    emit showLogMessage(counts.join(QStringLiteral(", ")));
    const auto warned = std::count_if(all.cbegin(), all.cend(),
                                      [](FlowItem *node) { return node->hasWarnings(); });
    emit showLogMessage(QStringLiteral("%1 item(s) with warnings\n").arg(warned));
}

void FlowModel::onProcessingStart(FlowItem *node)
{
    emit nodeDataChanged(node);
    emit showStatusBarMessage(QStringLiteral("Processing '%1'").arg(node->displayName()));
}

void FlowModel::onProcessed(FlowItem *, qreal fraction)
{
    if (fraction <= 0.0 || fraction >= 1.0 || !s_lastPump.isValid()
        || s_lastPump.elapsed() >= 500) {
        s_lastPump.start();
        pumpEvents();
    }
}

void FlowModel::onProcessingEnd(FlowItem *node)
{
    node->onProcessed(1.0);
    emit nodeDataChanged(node);
    ++m_doneCount;
    emit showProgress(m_itemCount < 1 ? 100 : m_doneCount * 100 / m_itemCount);
    emit showNodeLogMessage(node->logLine());
}
