#include "flow/flowmodel.h"

#include "flow/flowitem.h"
#include "flow/inputitem.h"
#include "flow/transformitem.h"
#include "shell/settings.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLineF>
#include <QtMath>

#include <algorithm>

bool FlowModel::s_stopRequested = false;

namespace {

std::function<void()> &eventPump()
{
    static std::function<void()> pump;
    return pump;
}

} // namespace

void pumpEvents()
{
    if (eventPump())
        eventPump()();
    else
        QCoreApplication::processEvents(QEventLoop::AllEvents);
}

void FlowModel::setEventPump(const std::function<void()> &pump)
{
    eventPump() = pump;
}

FlowModel::FlowModel(QObject *parent)
    : QObject(parent)
{ }

FlowModel::~FlowModel()
{
    // Connections go first so that no item is left holding a pointer to a deleted one.
    qDeleteAll(m_connections);
    m_connections.clear();
    for (FlowItem *item : qAsConst(m_items))
        item->m_connections.clear();
    qDeleteAll(m_items);
}

void FlowModel::addItem(FlowItem *item)
{
    if (!item || m_items.contains(item))
        return;
    item->setParent(this);
    m_items.append(item);
    connect(item, &FlowItem::processingStart, this, &FlowModel::onProcessingStart);
    connect(item, &FlowItem::processed, this, &FlowModel::onProcessed);
    connect(item, &FlowItem::processingEnd, this, &FlowModel::onProcessingEnd);
    if (auto *input = qobject_cast<InputItem *>(item))
        connect(input, &InputItem::sourceChanged, this, &FlowModel::onSourceChanged);
    emit itemAdded(item);
}

void FlowModel::removeItem(FlowItem *item)
{
    if (!item || !m_items.contains(item))
        return;
    const QList<FlowConnection *> outgoing = item->connections(ConnectionDirection::Out);
    for (FlowConnection *connection : outgoing)
        connection->target()->setStatus(FlowItem::NeedsUpdate, true);
    const QList<FlowConnection *> all = item->connections();
    for (FlowConnection *connection : all)
        deleteConnection(connection);
    emit itemRemoved(item);
    m_items.removeOne(item);
    item->disconnect(this);
    // A run may be on the stack below the caller (a progress report pumps events).
    item->setParent(nullptr);
    item->deleteLater();
}

FlowConnection *FlowModel::makeConnection(FlowItem *source, FlowItem *target)
{
    auto *connection = new FlowConnection(source, target);
    source->m_connections.append(connection);
    target->m_connections.append(connection);
    m_connections.append(connection);
    emit connectionAdded(connection);
    return connection;
}

void FlowModel::deleteConnection(FlowConnection *connection)
{
    if (!connection || !m_connections.contains(connection))
        return;
    emit connectionRemoved(connection);
    connection->source()->onConnectionRemoved(connection);
    connection->target()->onConnectionRemoved(connection);
    connection->source()->m_connections.removeAll(connection);
    connection->target()->m_connections.removeAll(connection);
    m_connections.removeOne(connection);
    delete connection;
}

FlowConnection *FlowModel::connectItems(FlowItem *source, FlowItem *target)
{
    if (!source || !target || source == target)
        return nullptr;
    if (target->isConnectedFrom(source) || source->isUpstream(target))
        return nullptr;
    if (target->upstream().size() >= target->maximumInputs()
        || source->downstream().size() >= source->maximumOutputs())
        return nullptr;
    FlowConnection *connection = makeConnection(source, target);
    if (auto *transform = qobject_cast<TransformItem *>(target))
        transform->connectParameters();
    target->setStatus(FlowItem::NeedsUpdate, true);
    return connection;
}

void FlowModel::disconnect(FlowConnection *connection)
{
    if (!connection)
        return;
    FlowItem *target = connection->target();
    deleteConnection(connection);
    if (auto *transform = qobject_cast<TransformItem *>(target))
        transform->connectParameters();
    target->setStatus(FlowItem::NeedsUpdate, true);
}

QList<FlowItem *> FlowModel::itemsOfKind(int kind) const
{
    QList<FlowItem *> result;
    for (FlowItem *item : m_items) {
        if (item->kind() == kind)
            result.append(item);
    }
    return result;
}

FlowItem *FlowModel::itemById(int id) const
{
    for (FlowItem *item : m_items) {
        if (item->id() == id)
            return item;
    }
    return nullptr;
}

QList<FlowItem *> FlowModel::connectionCandidates(const FlowItem *source) const
{
    QList<FlowItem *> candidates;
    if (!source)
        return candidates;
    for (FlowItem *target : m_items) {
        if (target == source)
            continue;
        if (target->connections(ConnectionDirection::In).size() >= target->maximumInputs())
            continue;
        if (target->isConnectedFrom(source) || source->isUpstream(target))
            continue;
        candidates.append(target);
    }
    return candidates;
}

QPointF FlowModel::snapPoint(const QPointF &point)
{
    return QPointF(qFloor(point.x() / GridWidth + 0.5) * GridWidth,
                   qFloor(point.y() / GridHeight + 0.5) * GridHeight);
}

void FlowModel::sortLeftToRight(QList<FlowItem *> &items)
{
    std::stable_sort(items.begin(), items.end(), FlowItem::leftToRight);
}

void FlowModel::sortTopToBottom(QList<FlowItem *> &items)
{
    std::stable_sort(items.begin(), items.end(), FlowItem::topToBottom);
}

FlowModel *FlowModel::deepCopy(QObject *parent) const
{
    auto *copy = new FlowModel(parent);
    copy->m_snapToGrid = m_snapToGrid;
    copy->m_autoRun = m_autoRun;
    copy->m_documentPath = m_documentPath;

    QHash<const FlowItem *, FlowItem *> map;
    for (const FlowItem *item : m_items) {
        FlowItem *clone = item->clone();
        copy->addItem(clone);
        map.insert(item, clone);
    }
    for (FlowItem *clone : qAsConst(copy->m_items)) {
        if (auto *transform = qobject_cast<TransformItem *>(clone))
            transform->remapParameterSources(map, true);
    }
    for (const FlowConnection *connection : m_connections) {
        FlowItem *source = map.value(connection->source());
        FlowItem *target = map.value(connection->target());
        if (source && target)
            copy->makeConnection(source, target);
    }
    return copy;
}

void FlowModel::itemsMoved(const QList<FlowItem *> &dragged)
{
    QList<FlowItem *> moved = dragged;
    if (m_snapToGrid) {
        for (FlowItem *item : qAsConst(m_items)) {
            const QPointF before = item->pos();
            const QPointF after = snapPoint(before);
            if (after == before)
                continue;
            item->setPos(after);
            // Rounding noise is not a move; a shift of a thousandth of a step is.
            if (QLineF(before, after).length() > GridWidth / 1000.0 && !moved.contains(item))
                moved.append(item);
        }
    }
    bool marked = false;
    for (FlowItem *item : qAsConst(moved)) {
        const QList<FlowItem *> children = item->downstream(true);
        for (FlowItem *child : children) {
            auto *transform = qobject_cast<TransformItem *>(child);
            if (!transform || !transform->hasSeveralInputs())
                continue;
            if (transform->autoConfigure()) {
                emit nodeParametersChanged(transform);
                transform->setStatus(FlowItem::NeedsUpdate, false);
                marked = true;
            }
        }
    }
    if (marked && m_autoRun)
        process(RunChanges, false);
    emit nodesPosChanged();
}

void FlowModel::onSourceChanged(FlowItem *item)
{
    if (m_running)
        return;
    item->setStatus(FlowItem::NeedsUpdate, true);
    if (m_autoRun)
        process(RunChanges, false);
}
