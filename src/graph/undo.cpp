#include "graph/undo.h"

#include "flow/flowmodel.h"
#include "graph/graphscene.h"
#include "shell/guards.h"

#include <algorithm>

UndoHistory::UndoHistory(QObject *parent)
    : UndoRecorder(parent)
{ }

UndoHistory::~UndoHistory()
{
    for (const Entry &entry : qAsConst(m_entries))
        deleteEntry(entry);
}

UndoHistory *UndoHistory::current()
{
    return qobject_cast<UndoHistory *>(UndoRecorder::current());
}

GraphScene *UndoHistory::liveScene() const
{
    return m_live;
}

void UndoHistory::setLiveScene(GraphScene *scene)
{
    const QList<Entry> entries = m_entries;
    m_entries.clear();
    m_index = -1;
    m_live = scene;
    for (const Entry &entry : entries)
        deleteEntry(entry);
    emit changed(false);
}

void UndoHistory::prepare(const QString &hint)
{
    emit recoveryDue();
    if (!m_live)
        return;
    BusyCursor busy;
    // A change after undo makes the undone steps unreachable.
    while (m_index >= 0 && !m_entries.isEmpty()) {
        deleteEntry(m_entries.takeFirst());
        --m_index;
    }
    m_index = -1;
    m_entries.prepend({m_live->model()->deepCopy(this), hint});
    while (m_entries.size() > MaximumSteps)
        deleteEntry(m_entries.takeLast());
}

void UndoHistory::finish()
{
    emit changed(true);
}

void UndoHistory::undo()
{
    if (!canUndo() || (m_live && m_live->isProcessing()))
        return;
    BusyCursor busy;
    if (m_index == -1) {
        // The live state joins the list so that redo can come back to it; it is not trimmed
        // away here, or the oldest step would be lost by the act of undoing.
        m_entries.prepend({m_live->model(), QString()});
        m_index = 1;
    } else {
        ++m_index;
    }
    if (m_index >= 0 && m_index < m_entries.size())
        makeLive(m_index);
}

void UndoHistory::redo()
{
    if (!canRedo() || (m_live && m_live->isProcessing()))
        return;
    BusyCursor busy;
    --m_index;
    makeLive(m_index);
}

bool UndoHistory::canUndo() const
{
    if (!m_live)
        return false;
    return m_index == -1 ? !m_entries.isEmpty() : m_index + 1 < m_entries.size();
}

bool UndoHistory::canRedo() const
{
    return m_live && m_index > 0 && m_index < m_entries.size();
}

QString UndoHistory::undoHint() const
{
    if (!canUndo())
        return QString();
    return m_entries.at(m_index == -1 ? 0 : m_index + 1).hint;
}

QString UndoHistory::redoHint() const
{
    return canRedo() ? m_entries.at(m_index).hint : QString();
}

int UndoHistory::count() const
{
    return m_entries.size();
}

int UndoHistory::index() const
{
    return m_index;
}

FlowModel *UndoHistory::snapshot(int position) const
{
    return position >= 0 && position < m_entries.size() ? m_entries.at(position).model.data()
                                                        : nullptr;
}

QString UndoHistory::hint(int position) const
{
    return position >= 0 && position < m_entries.size() ? m_entries.at(position).hint : QString();
}

void UndoHistory::makeLive(int position)
{
    emit aboutToSwapScene();
    GraphScene *old = m_live;
    FlowModel *model = m_entries.at(position).model;
    if (old) {
        const FlowModel *oldModel = old->model();
        const bool oldKept
            = std::any_of(m_entries.cbegin(), m_entries.cend(),
                          [oldModel](const Entry &entry) { return entry.model == oldModel; });
        if (oldKept)
            old->releaseModel()->setParent(this);
    }
    auto *next = new GraphScene(model, old ? old->parent() : parent());
    m_live = next;
    emit sceneSwapped(next, old);
    if (old)
        old->deleteLater();
    emit changed(true);
}

bool UndoHistory::isLiveModel(const FlowModel *model) const
{
    return m_live && m_live->model() == model;
}

void UndoHistory::deleteEntry(const Entry &entry)
{
    if (entry.model && !isLiveModel(entry.model))
        delete entry.model.data();
}
