#include "graph/node.h"

#include "graph/connection.h"
#include "graph/graphscene.h"
#include "graph/notenode.h"
#include "graph/overlays.h"
#include "graph/undo.h"
#include "shell/colors.h"
#include "shell/delaytimer.h"
#include "shell/memory.h"
#include "shell/settings.h"

#include <QApplication>
#include <QGraphicsDropShadowEffect>
#include <QGraphicsSceneMouseEvent>
#include <QLocale>
#include <QPainter>
#include <QPainterPath>
#include <QTextLayout>
#include <QTimer>

#include <algorithm>

int Node::s_idCounter = 0;

Node::Node(int id, QGraphicsItem *parent)
    : QGraphicsObject(parent)
{
    setFlags(QGraphicsItem::ItemIsMovable | QGraphicsItem::ItemIsSelectable
             | QGraphicsItem::ItemSendsGeometryChanges);
    setAcceptHoverEvents(true);
    setZValue(0.0);
    setId(id);
    if (QCoreApplication::instance()
        && qobject_cast<QApplication *>(QCoreApplication::instance())) {
        auto *shadow = new QGraphicsDropShadowEffect;
        shadow->setBlurRadius(40.0);
        shadow->setOffset(0.0, 2.0);
        shadow->setColor(QColor(0, 0, 0, 60));
        setGraphicsEffect(shadow);
    }
}

Node::~Node() = default;

QString Node::statusText(int status)
{
    switch (status) {
    case NeedsUpdate:
        return QStringLiteral("Needs updating");
    case Updating:
        return QStringLiteral("Updating");
    case UpToDate:
        return QStringLiteral("Up to date");
    case Error:
        return QStringLiteral("Error");
    }
    return QString();
}

QString Node::kindText(int itemType)
{
    switch (itemType) {
    case InputType:
        return QStringLiteral("Input");
    case TransformType:
        return QStringLiteral("Transform");
    case OutputType:
        return QStringLiteral("Output");
    case NoteType:
        return QStringLiteral("Note");
    }
    return QString();
}

int Node::nextId()
{
    return s_idCounter;
}

void Node::raiseIdCounter(int above)
{
    s_idCounter = std::max(s_idCounter, above + 1);
}

QString Node::toolTipText() const
{
    if (m_preview)
        return QString();
    return richToolTip();
}

void Node::setId(int id)
{
    m_id = id == -1 ? s_idCounter++ : id;
}

void Node::setComment(const QString &comment)
{
    if (m_comment == comment)
        return;
    m_comment = comment;
    update();
}

QPointF Node::centrePos() const
{
    const QSizeF size = itemSize();
    return pos() + QPointF(size.width() / 2.0, size.height() / 2.0);
}

void Node::setCentrePos(const QPointF &centre)
{
    const QSizeF size = itemSize();
    setPos(centre - QPointF(size.width() / 2.0, size.height() / 2.0));
}

QString Node::logLine() const
{
    QString line = QStringLiteral("  Processed %1 '%2' Id=%3 (%4) in %5 [%6], %7")
                       .arg(kindText(), displayName(), QString::number(m_id), sizeText(),
                            elapsedText(m_processingTime), statusLine(), statusText(status()));
    if (hasWarnings())
        line += QStringLiteral(" - has warnings");
    return line;
}

QString Node::elapsedText(qint64 elapsedMs)
{
    if (elapsedMs <= 0)
        return QStringLiteral("<%1 second(s)").arg(QString::number(0.001));
    return QStringLiteral("%1 second(s)").arg(QString::number(double(elapsedMs) / 1000.0, 'g', 6));
}

QString Node::richToolTip(int budget) const
{
    QList<QPair<QString, QString>> lines = identitySummary();
    lines += runSummary();
    lines += fileSummary();
    QString html = QStringLiteral("<table>");
    int used = 0;
    for (const auto &line : qAsConst(lines)) {
        QString value = line.second;
        if (used + line.first.size() + value.size() > budget) {
            value = value.left(std::max(0, budget - used - int(line.first.size())))
                + QStringLiteral("…");
        }
        html += QStringLiteral("<tr><td>%1:</td><td>%2</td></tr>")
                    .arg(line.first.toHtmlEscaped(), value.toHtmlEscaped());
        used += line.first.size() + value.size();
        if (used >= budget)
            break;
    }
    html += QStringLiteral("</table>");
    return html;
}

QString Node::titleLine() const
{
    return m_alias.isEmpty() ? displayName() : m_alias;
}

QString Node::nameAndId() const
{
    return QStringLiteral("%1 (%2)").arg(titleLine(), QString::number(m_id));
}

void Node::addConnection(Connection *connection)
{
    if (connection && !m_connections.contains(connection)) {
        m_connections.append(connection);
        refreshSide(connection->source() == this ? ConnectionDirection::Out
                                                 : ConnectionDirection::In);
    }
}

void Node::refreshSide(ConnectionDirection direction)
{
    // The ends on one side are spread by their number, so each arrival or departure moves
    // the others.
    const QList<Connection *> side = connections(direction);
    for (Connection *connection : side)
        connection->updatePath();
}

QList<Connection *> Node::connections(ConnectionDirection direction) const
{
    if (direction == ConnectionDirection::Both)
        return m_connections;
    QList<Connection *> result;
    for (Connection *connection : m_connections) {
        const bool out = connection->source() == this;
        if (out == (direction == ConnectionDirection::Out))
            result.append(connection);
    }
    return result;
}

void Node::removeConnection(Connection *connection)
{
    if (connection && m_connections.removeAll(connection) > 0) {
        refreshSide(connection->source() == this ? ConnectionDirection::Out
                                                 : ConnectionDirection::In);
    }
}

void Node::deleteConnections(ConnectionDirection direction)
{
    const QList<Connection *> doomed = connections(direction);
    for (Connection *connection : doomed) {
        connection->source()->removeConnection(connection);
        connection->target()->removeConnection(connection);
        if (connection->scene())
            connection->scene()->removeItem(connection);
        delete connection;
    }
}

void Node::deleteNode()
{
    const QList<Connection *> outgoing = connections(ConnectionDirection::Out);
    for (Connection *connection : outgoing) {
        connection->target()->setStatus(NeedsUpdate, true);
    }
    deleteConnections(ConnectionDirection::Out);
    deleteConnections(ConnectionDirection::In);
    if (scene())
        scene()->removeItem(this);
    deleteLater();
}

void Node::setStatus(int status, bool propagate)
{
    const bool changed = m_status != status;
    if (changed) {
        m_status = status;
        update();
    }
    if (propagate) {
        const QList<Node *> children = downstream(true);
        for (Node *child : children)
            child->setStatus(status, true);
    }
    if (changed) {
        for (Connection *connection : qAsConst(m_connections))
            connection->update();
    }
}

int Node::status() const
{
    return m_preview ? UpToDate : m_status;
}

QString Node::sizeText(qint64 rows, qint64 columns)
{
    const QLocale locale;
    return QStringLiteral("%1 %2 x %3 %4")
        .arg(locale.toString(rows), rows == 1 ? QStringLiteral("row") : QStringLiteral("rows"),
             locale.toString(columns),
             columns == 1 ? QStringLiteral("col") : QStringLiteral("cols"));
}

QString Node::shortCount(qint64 count)
{
    if (count < 1000 && count > -1000)
        return QString::number(count);
    static const char suffixes[] = {'K', 'M', 'B'};
    double scaled = double(count);
    int suffix = -1;
    while (std::abs(scaled) >= 1000.0 && suffix < 2) {
        scaled /= 1000.0;
        ++suffix;
    }
    QString number = QString::number(scaled, 'f', 1);
    if (number.size() > 4 || number.endsWith(QLatin1String(".0")))
        number = QString::number(scaled, 'f', 0);
    return number + QLatin1Char(suffixes[suffix]);
}

QString Node::shortSizeText(qint64 rows, qint64 columns)
{
    return QStringLiteral("%1 %2 x %3 %4")
        .arg(shortCount(rows), rows == 1 ? QStringLiteral("row") : QStringLiteral("rows"),
             shortCount(columns), columns == 1 ? QStringLiteral("col") : QStringLiteral("cols"));
}

QString Node::sizeText() const
{
    return sizeText(rowCount(), columnCount());
}

QString Node::shortSizeText() const
{
    return shortSizeText(rowCount(), columnCount());
}

bool Node::isFinished() const
{
    return status() == UpToDate || status() == Error;
}

bool Node::isUpstreamUpToDate() const
{
    const QList<Node *> inputs = upstream();
    return std::all_of(inputs.cbegin(), inputs.cend(),
                       [](const Node *node) { return node->status() == UpToDate; });
}

bool Node::canRun() const
{
    return isUpstreamUpToDate();
}

int Node::columnCount() const
{
    return m_preview ? 100 : m_dataset.columnCount();
}

int Node::rowCount() const
{
    return m_preview ? 100000 : m_dataset.rowCount();
}

bool Node::topToBottom(const Node *a, const Node *b)
{
    const QPointF pa = a->pos();
    const QPointF pb = b->pos();
    if (std::abs(pa.y() - pb.y()) < 1.0)
        return pa.x() < pb.x();
    return pa.y() < pb.y();
}

bool Node::leftToRight(const Node *a, const Node *b)
{
    const QPointF pa = a->pos();
    const QPointF pb = b->pos();
    if (std::abs(pa.x() - pb.x()) < 1.0)
        return pa.y() < pb.y();
    return pa.x() < pb.x();
}

ColumnSources Node::asSources(const QList<Node *> &nodes)
{
    ColumnSources sources;
    sources.reserve(nodes.size());
    for (Node *node : nodes)
        sources.append(node);
    return sources;
}

QList<Node *> Node::upstream(bool sorted) const
{
    QList<Node *> result;
    for (Connection *connection : m_connections) {
        if (connection->target() == this)
            result.append(connection->source());
    }
    if (sorted)
        std::stable_sort(result.begin(), result.end(), topToBottom);
    return result;
}

QList<Node *> Node::downstream(bool sorted) const
{
    QList<Node *> result;
    for (Connection *connection : m_connections) {
        if (connection->source() == this)
            result.append(connection->target());
    }
    if (sorted)
        std::stable_sort(result.begin(), result.end(), topToBottom);
    return result;
}

QList<Node *> Node::siblings(bool includeSelf) const
{
    QList<Node *> result;
    const QList<Node *> parents = upstream();
    for (const Node *parent : parents) {
        const QList<Node *> children = parent->downstream();
        for (Node *child : children) {
            if ((child != this || includeSelf) && !result.contains(child))
                result.append(child);
        }
    }
    if (includeSelf && !result.contains(const_cast<Node *>(this)))
        result.append(const_cast<Node *>(this));
    std::stable_sort(result.begin(), result.end(), topToBottom);
    return result;
}

Node *Node::previousSibling() const
{
    const QList<Node *> all = siblings(true);
    const int at = all.indexOf(const_cast<Node *>(this));
    return at > 0 ? all.at(at - 1) : nullptr;
}

Node *Node::nextSibling() const
{
    const QList<Node *> all = siblings(true);
    const int at = all.indexOf(const_cast<Node *>(this));
    return at >= 0 && at + 1 < all.size() ? all.at(at + 1) : nullptr;
}

QSet<Node *> Node::allUpstream(bool includeSelf) const
{
    QSet<Node *> result;
    if (includeSelf)
        result.insert(const_cast<Node *>(this));
    const QList<Node *> parents = upstream();
    for (Node *parent : parents) {
        if (!result.contains(parent))
            result.unite(parent->allUpstream(true));
    }
    return result;
}

QSet<Node *> Node::allUpstreamIterative(bool includeSelf) const
{
    QSet<Node *> result;
    QList<Node *> work = upstream();
    while (!work.isEmpty()) {
        Node *node = work.takeLast();
        if (result.contains(node))
            continue;
        result.insert(node);
        work += node->upstream();
    }
    if (includeSelf)
        result.insert(const_cast<Node *>(this));
    return result;
}

QSet<Node *> Node::allUpstreamOfType(int itemType) const
{
    QSet<Node *> result;
    const QSet<Node *> all = allUpstreamIterative(false);
    for (Node *node : all) {
        if (node->type() == itemType)
            result.insert(node);
    }
    return result;
}

QSet<Node *> Node::allDownstream(bool includeSelf) const
{
    QSet<Node *> result;
    QList<Node *> work = downstream();
    while (!work.isEmpty()) {
        Node *node = work.takeLast();
        if (result.contains(node))
            continue;
        result.insert(node);
        work += node->downstream();
    }
    if (includeSelf)
        result.insert(const_cast<Node *>(this));
    return result;
}

QSet<Node *> Node::allDownstreamOfType(int itemType) const
{
    QSet<Node *> result;
    const QSet<Node *> all = allDownstream(false);
    for (Node *node : all) {
        if (node->type() == itemType)
            result.insert(node);
    }
    return result;
}

QList<Node *> Node::downstreamTransforms(bool all) const
{
    QList<Node *> result;
    if (all) {
        const QSet<Node *> nodes = allDownstreamOfType(TransformType);
        result = QList<Node *>(nodes.cbegin(), nodes.cend());
    } else {
        const QList<Node *> children = downstream(true);
        for (Node *child : children) {
            if (child->type() == TransformType)
                result.append(child);
        }
    }
    return result;
}

bool Node::isUpstream(const Node *node) const
{
    return allUpstreamIterative(false).contains(const_cast<Node *>(node));
}

bool Node::isConnectedFrom(const Node *source) const
{
    return std::any_of(m_connections.cbegin(), m_connections.cend(),
                       [&](Connection *c) { return c->source() == source && c->target() == this; });
}

void Node::setFractionProcessed(double fraction)
{
    m_fractionProcessed = fraction;
}

void Node::connectToScene(GraphScene *scene)
{
    connect(this, &Node::nodePosChanged, scene, &GraphScene::onPosChanged);
    connect(this, &Node::processingStart, scene, &GraphScene::onProcessingStart);
    connect(this, &Node::processed, scene, &GraphScene::onProcessed);
    connect(this, &Node::processingEnd, scene, &GraphScene::onProcessingEnd);
}

bool Node::canStartConnection() const
{
    if (connections(ConnectionDirection::Out).size() >= maximumOutputs())
        return false;
    const GraphScene *graph = graphScene();
    if (!graph)
        return false;
    const QList<Node *> all = graph->nodes();
    return std::any_of(all.cbegin(), all.cend(), [this](const Node *target) {
        return target != this && target->maximumInputs() > target->upstream().size()
            && !isUpstream(target) && !target->isConnectedFrom(this);
    });
}

int Node::depth() const
{
    int deepest = -1;
    const QList<Node *> parents = upstream();
    for (const Node *parent : parents)
        deepest = std::max(deepest, parent->depth());
    return deepest + 1;
}

void Node::reportProgress(qint64 row, qint64 frequency, qint64 total)
{
    if (total > 0 && frequency > 0 && row % frequency == 0)
        onProcessed(qreal(row) / qreal(total));
}

void Node::onProcessed(qreal fraction)
{
    // May throw MaxMemoryException: no caller may assume that a report returns.
    checkMemoryLimit();
    const QDateTime now = QDateTime::currentDateTimeUtc();
    if (fraction < 1.0 && m_lastProgressTime.isValid() && m_lastProgressTime.msecsTo(now) < 250)
        return;
    if (fraction > 0.0 && fraction < 1.0 && std::abs(fraction - m_fractionProcessed) < 0.02)
        return;
    m_fractionProcessed = fraction;
    update();
    emit processed(this, fraction);
    m_lastProgressTime = now;
}

static QString joinedWithStamp(const QStringList &lines, bool timeStamp, const QDateTime &when)
{
    QStringList all;
    if (timeStamp && !lines.isEmpty())
        all.append(when.toString());
    all += lines;
    return all.join(QLatin1Char('\n'));
}

QString Node::warningsText(bool timeStamp) const
{
    return joinedWithStamp(m_warnings, timeStamp, m_lastProcessed);
}

QString Node::infoText(bool timeStamp) const
{
    return joinedWithStamp(m_info, timeStamp, m_lastProcessed);
}

void Node::clearMessages()
{
    m_warnings.clear();
    m_info.clear();
}

QVariantList Node::stateList() const
{
    return {m_id, m_alias, m_comment, int(m_connections.size()), m_status};
}

QString Node::statusLine() const
{
    if (status() == Error) {
        const QString error = errorText();
        if (!error.isEmpty())
            return error;
        return m_warnings.isEmpty() ? statusText(Error) : m_warnings.first();
    }
    if (rowCount() == 0 && columnCount() == 0)
        return QStringLiteral("No data");
    return sizeText();
}

NodeStatusIcon Node::statusIcon() const
{
    switch (status()) {
    case Updating:
        return NodeStatusIcon::Updating;
    case Error:
        return NodeStatusIcon::Error;
    case NeedsUpdate:
        return NodeStatusIcon::NeedsUpdate;
    default:
        break;
    }
    if (hasWarnings() && Settings::instance()->showWarnings())
        return NodeStatusIcon::Warning;
    if (rowCount() == 0 && columnCount() == 0)
        return NodeStatusIcon::Empty;
    return NodeStatusIcon::UpToDate;
}

GraphScene *Node::graphScene() const
{
    return qobject_cast<GraphScene *>(scene());
}

QList<QPair<QString, QString>> Node::identitySummary() const
{
    QList<QPair<QString, QString>> lines;
    lines.append({QStringLiteral("Type"), kindText()});
    lines.append({QStringLiteral("Name"), displayName()});
    if (!m_alias.isEmpty())
        lines.append({QStringLiteral("Alias"), m_alias});
    lines.append({QStringLiteral("Id"), QString::number(m_id)});
    if (!m_comment.isEmpty())
        lines.append({QStringLiteral("Comment"), m_comment});
    return lines;
}

QList<QPair<QString, QString>> Node::runSummary() const
{
    QList<QPair<QString, QString>> lines;
    lines.append({QStringLiteral("Status"), statusText(status())});
    lines.append({QStringLiteral("Size"), sizeText()});
    if (m_lastProcessed.isValid()) {
        lines.append({QStringLiteral("Last processed"), m_lastProcessed.toString()});
        lines.append({QStringLiteral("Processing time"), elapsedText(m_processingTime)});
    }
    if (hasWarnings())
        lines.append({QStringLiteral("Warnings"), warningsText()});
    if (hasInfo())
        lines.append({QStringLiteral("Info"), infoText()});
    return lines;
}

void Node::copyInto(Node *copy) const
{
    copy->m_alias = m_alias;
    copy->m_comment = m_comment;
    copy->m_status = m_status;
    copy->m_dataset = m_dataset;
    copy->m_warnings = m_warnings;
    copy->m_info = m_info;
    copy->m_processingTime = m_processingTime;
    copy->m_lastProcessed = m_lastProcessed;
    copy->setPos(pos());
}

void Node::finishRun(qint64 elapsedMs)
{
    m_processingTime = elapsedMs;
    m_lastProcessed = QDateTime::currentDateTime();
}

void Node::freeUpstreamData()
{
    const QList<Node *> parents = upstream();
    for (Node *parent : parents) {
        if (!parent->dataset()->hasColumns())
            continue;
        const QList<Node *> consumers = parent->downstream();
        const bool stillNeeded
            = std::any_of(consumers.cbegin(), consumers.cend(),
                          [](const Node *n) { return n->status() == NeedsUpdate; });
        if (!stillNeeded)
            parent->dataset()->clear();
    }
}
