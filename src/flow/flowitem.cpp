#include "flow/flowitem.h"

#include "flow/flowmodel.h"
#include "flow/transformitem.h"
#include "shell/memory.h"
#include "shell/settings.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

int FlowItem::s_idCounter = 0;

FlowItem::FlowItem(int id)
{
    setId(id);
}

FlowItem::~FlowItem() = default;

QString FlowItem::statusText(int status)
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

QString FlowItem::kindText(int kind)
{
    switch (kind) {
    case InputKind:
        return QStringLiteral("Input");
    case TransformKind:
        return QStringLiteral("Transform");
    case OutputKind:
        return QStringLiteral("Output");
    case NoteKind:
        return QStringLiteral("Note");
    }
    return QString();
}

int FlowItem::nextId()
{
    return s_idCounter;
}

void FlowItem::raiseIdCounter(int above)
{
    s_idCounter = std::max(s_idCounter, above + 1);
}

QString FlowItem::toolTipText() const
{
    if (m_preview)
        return QString();
    return richToolTip();
}

void FlowItem::setId(int id)
{
    m_id = id == -1 ? s_idCounter++ : id;
}

void FlowItem::setComment(const QString &comment)
{
    if (m_comment == comment)
        return;
    m_comment = comment;
    emit changed();
}

void FlowItem::setAlias(const QString &alias)
{
    const QString trimmed = alias.trimmed();
    if (m_alias == trimmed)
        return;
    m_alias = trimmed;
    emit changed();
}

void FlowItem::setPos(const QPointF &pos)
{
    if (m_pos == pos)
        return;
    m_pos = pos;
    emit moved();
}

QPointF FlowItem::centrePos() const
{
    return m_pos + QPointF(Width / 2.0, Height / 2.0);
}

void FlowItem::setCentrePos(const QPointF &centre)
{
    setPos(centre - QPointF(Width / 2.0, Height / 2.0));
}

QString FlowItem::logLine() const
{
    QString line = QStringLiteral("  Processed %1 '%2' Id=%3 (%4) in %5 [%6], %7")
                       .arg(kindText(), displayName(), QString::number(m_id), sizeText(),
                            elapsedText(m_processingTime), statusLine(), statusText(status()));
    if (hasWarnings())
        line += QStringLiteral(" - has warnings");
    return line;
}

QString FlowItem::elapsedText(qint64 elapsedMs)
{
    if (elapsedMs <= 0)
        return QStringLiteral("<%1 second(s)").arg(QString::number(0.001));
    return QStringLiteral("%1 second(s)").arg(QString::number(double(elapsedMs) / 1000.0, 'g', 6));
}

QString FlowItem::richToolTip(int budget) const
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

QString FlowItem::titleLine() const
{
    return m_alias.isEmpty() ? displayName() : m_alias;
}

QString FlowItem::nameAndId() const
{
    return QStringLiteral("%1 (%2)").arg(titleLine(), QString::number(m_id));
}

QList<FlowConnection *> FlowItem::connections(ConnectionDirection direction) const
{
    if (direction == ConnectionDirection::Both)
        return m_connections;
    QList<FlowConnection *> result;
    for (FlowConnection *connection : m_connections) {
        const bool out = connection->source() == this;
        if (out == (direction == ConnectionDirection::Out))
            result.append(connection);
    }
    return result;
}

void FlowItem::setStatus(int status, bool propagate)
{
    if (m_status != status) {
        m_status = status;
        emit changed();
    }
    if (propagate) {
        const QList<FlowItem *> children = downstream(true);
        for (FlowItem *child : children)
            child->setStatus(status, true);
    }
}

int FlowItem::status() const
{
    return m_preview ? UpToDate : m_status;
}

QString FlowItem::sizeText(qint64 rows, qint64 columns)
{
    const QLocale locale;
    return QStringLiteral("%1 %2 x %3 %4")
        .arg(locale.toString(rows), rows == 1 ? QStringLiteral("row") : QStringLiteral("rows"),
             locale.toString(columns),
             columns == 1 ? QStringLiteral("col") : QStringLiteral("cols"));
}

QString FlowItem::shortCount(qint64 count)
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

QString FlowItem::shortSizeText(qint64 rows, qint64 columns)
{
    return QStringLiteral("%1 %2 x %3 %4")
        .arg(shortCount(rows), rows == 1 ? QStringLiteral("row") : QStringLiteral("rows"),
             shortCount(columns), columns == 1 ? QStringLiteral("col") : QStringLiteral("cols"));
}

QString FlowItem::sizeText() const
{
    return sizeText(rowCount(), columnCount());
}

QString FlowItem::shortSizeText() const
{
    return shortSizeText(rowCount(), columnCount());
}

bool FlowItem::isFinished() const
{
    return status() == UpToDate || status() == Error;
}

bool FlowItem::isUpstreamUpToDate() const
{
    const QList<FlowItem *> inputs = upstream();
    return std::all_of(inputs.cbegin(), inputs.cend(),
                       [](const FlowItem *node) { return node->status() == UpToDate; });
}

bool FlowItem::canRun() const
{
    return isUpstreamUpToDate();
}

int FlowItem::columnCount() const
{
    return m_preview ? 100 : m_dataset.columnCount();
}

int FlowItem::rowCount() const
{
    return m_preview ? 100000 : m_dataset.rowCount();
}

bool FlowItem::topToBottom(const FlowItem *a, const FlowItem *b)
{
    const QPointF pa = a->pos();
    const QPointF pb = b->pos();
    if (std::abs(pa.y() - pb.y()) < 1.0)
        return pa.x() < pb.x();
    return pa.y() < pb.y();
}

bool FlowItem::leftToRight(const FlowItem *a, const FlowItem *b)
{
    const QPointF pa = a->pos();
    const QPointF pb = b->pos();
    if (std::abs(pa.x() - pb.x()) < 1.0)
        return pa.y() < pb.y();
    return pa.x() < pb.x();
}

ColumnSources FlowItem::asSources(const QList<FlowItem *> &nodes)
{
    ColumnSources sources;
    sources.reserve(nodes.size());
    for (FlowItem *node : nodes)
        sources.append(node);
    return sources;
}

QList<FlowItem *> FlowItem::upstream(bool sorted) const
{
    QList<FlowItem *> result;
    for (FlowConnection *connection : m_connections) {
        if (connection->target() == this)
            result.append(connection->source());
    }
    if (sorted)
        std::stable_sort(result.begin(), result.end(), topToBottom);
    return result;
}

QList<FlowItem *> FlowItem::downstream(bool sorted) const
{
    QList<FlowItem *> result;
    for (FlowConnection *connection : m_connections) {
        if (connection->source() == this)
            result.append(connection->target());
    }
    if (sorted)
        std::stable_sort(result.begin(), result.end(), topToBottom);
    return result;
}

QList<FlowItem *> FlowItem::siblings(bool includeSelf) const
{
    QList<FlowItem *> result;
    const QList<FlowItem *> parents = upstream();
    for (const FlowItem *parent : parents) {
        const QList<FlowItem *> children = parent->downstream();
        for (FlowItem *child : children) {
            if ((child != this || includeSelf) && !result.contains(child))
                result.append(child);
        }
    }
    if (includeSelf && !result.contains(const_cast<FlowItem *>(this)))
        result.append(const_cast<FlowItem *>(this));
    std::stable_sort(result.begin(), result.end(), topToBottom);
    return result;
}

FlowItem *FlowItem::previousSibling() const
{
    const QList<FlowItem *> all = siblings(true);
    const int at = all.indexOf(const_cast<FlowItem *>(this));
    return at > 0 ? all.at(at - 1) : nullptr;
}

FlowItem *FlowItem::nextSibling() const
{
    const QList<FlowItem *> all = siblings(true);
    const int at = all.indexOf(const_cast<FlowItem *>(this));
    return at >= 0 && at + 1 < all.size() ? all.at(at + 1) : nullptr;
}

QSet<FlowItem *> FlowItem::allUpstream(bool includeSelf) const
{
    QSet<FlowItem *> result;
    if (includeSelf)
        result.insert(const_cast<FlowItem *>(this));
    const QList<FlowItem *> parents = upstream();
    for (FlowItem *parent : parents) {
        if (!result.contains(parent))
            result.unite(parent->allUpstream(true));
    }
    return result;
}

QSet<FlowItem *> FlowItem::allUpstreamIterative(bool includeSelf) const
{
    QSet<FlowItem *> result;
    QList<FlowItem *> work = upstream();
    while (!work.isEmpty()) {
        FlowItem *node = work.takeLast();
        if (result.contains(node))
            continue;
        result.insert(node);
        work += node->upstream();
    }
    if (includeSelf)
        result.insert(const_cast<FlowItem *>(this));
    return result;
}

QSet<FlowItem *> FlowItem::allUpstreamOfKind(int kind) const
{
    QSet<FlowItem *> result;
    const QSet<FlowItem *> all = allUpstreamIterative(false);
    for (FlowItem *node : all) {
        if (node->kind() == kind)
            result.insert(node);
    }
    return result;
}

QSet<FlowItem *> FlowItem::allDownstream(bool includeSelf) const
{
    QSet<FlowItem *> result;
    QList<FlowItem *> work = downstream();
    while (!work.isEmpty()) {
        FlowItem *node = work.takeLast();
        if (result.contains(node))
            continue;
        result.insert(node);
        work += node->downstream();
    }
    if (includeSelf)
        result.insert(const_cast<FlowItem *>(this));
    return result;
}

QSet<FlowItem *> FlowItem::allDownstreamOfKind(int kind) const
{
    QSet<FlowItem *> result;
    const QSet<FlowItem *> all = allDownstream(false);
    for (FlowItem *node : all) {
        if (node->kind() == kind)
            result.insert(node);
    }
    return result;
}

QList<FlowItem *> FlowItem::downstreamTransforms(bool all) const
{
    QList<FlowItem *> result;
    if (all) {
        const QSet<FlowItem *> nodes = allDownstreamOfKind(TransformKind);
        result = QList<FlowItem *>(nodes.cbegin(), nodes.cend());
    } else {
        const QList<FlowItem *> children = downstream(true);
        for (FlowItem *child : children) {
            if (child->kind() == TransformKind)
                result.append(child);
        }
    }
    return result;
}

bool FlowItem::isUpstream(const FlowItem *node) const
{
    return allUpstreamIterative(false).contains(const_cast<FlowItem *>(node));
}

bool FlowItem::isConnectedFrom(const FlowItem *source) const
{
    return std::any_of(m_connections.cbegin(), m_connections.cend(), [&](FlowConnection *c) {
        return c->source() == source && c->target() == this;
    });
}

void FlowItem::setFractionProcessed(double fraction)
{
    m_fractionProcessed = fraction;
}

bool FlowItem::canStartConnection() const
{
    if (connections(ConnectionDirection::Out).size() >= maximumOutputs())
        return false;
    const FlowModel *flow = model();
    if (!flow)
        return false;
    const QList<FlowItem *> all = flow->items();
    return std::any_of(all.cbegin(), all.cend(), [this](const FlowItem *target) {
        return target != this && target->maximumInputs() > target->upstream().size()
            && !isUpstream(target) && !target->isConnectedFrom(this);
    });
}

int FlowItem::depth() const
{
    int deepest = -1;
    const QList<FlowItem *> parents = upstream();
    for (const FlowItem *parent : parents)
        deepest = std::max(deepest, parent->depth());
    return deepest + 1;
}

void FlowItem::reportProgress(qint64 row, qint64 frequency, qint64 total)
{
    if (total > 0 && frequency > 0 && row % frequency == 0)
        onProcessed(qreal(row) / qreal(total));
}

void FlowItem::onProcessed(qreal fraction)
{
    // May throw MaxMemoryException: no caller may assume that a report returns.
    checkMemoryLimit();
    const QDateTime now = QDateTime::currentDateTimeUtc();
    if (fraction < 1.0 && m_lastProgressTime.isValid() && m_lastProgressTime.msecsTo(now) < 250)
        return;
    if (fraction > 0.0 && fraction < 1.0 && std::abs(fraction - m_fractionProcessed) < 0.02)
        return;
    m_fractionProcessed = fraction;
    emit changed();
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

QString FlowItem::warningsText(bool timeStamp) const
{
    return joinedWithStamp(m_warnings, timeStamp, m_lastProcessed);
}

QString FlowItem::infoText(bool timeStamp) const
{
    return joinedWithStamp(m_info, timeStamp, m_lastProcessed);
}

void FlowItem::clearMessages()
{
    m_warnings.clear();
    m_info.clear();
}

QVariantList FlowItem::stateList() const
{
    return {m_id, m_alias, m_comment, int(m_connections.size()), m_status};
}

QString FlowItem::statusLine() const
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

NodeStatusIcon FlowItem::statusIcon() const
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

QList<QPair<QString, QString>> FlowItem::identitySummary() const
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

QList<QPair<QString, QString>> FlowItem::runSummary() const
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

void FlowItem::copyInto(FlowItem *copy) const
{
    copy->m_alias = m_alias;
    copy->m_comment = m_comment;
    copy->m_status = m_status;
    copy->m_dataset = m_dataset;
    copy->m_warnings = m_warnings;
    copy->m_info = m_info;
    copy->m_processingTime = m_processingTime;
    copy->m_lastProcessed = m_lastProcessed;
    copy->m_pos = m_pos;
}

void FlowItem::finishRun(qint64 elapsedMs)
{
    m_processingTime = elapsedMs;
    m_lastProcessed = QDateTime::currentDateTime();
}

void FlowItem::freeUpstreamData()
{
    const QList<FlowItem *> parents = upstream();
    for (FlowItem *parent : parents) {
        if (!parent->dataset()->hasColumns())
            continue;
        const QList<FlowItem *> consumers = parent->downstream();
        const bool stillNeeded
            = std::any_of(consumers.cbegin(), consumers.cend(),
                          [](const FlowItem *n) { return n->status() == NeedsUpdate; });
        if (!stillNeeded)
            parent->dataset()->clear();
    }
}

FlowModel *FlowItem::model() const
{
    return qobject_cast<FlowModel *>(parent());
}

bool FlowItem::isStopRequested() const
{
    return FlowModel::isStopRequested();
}

void FlowItem::resolveChildParameterTexts()
{
    const QList<FlowItem *> children = downstream(true);
    for (FlowItem *child : children) {
        if (auto *transform = qobject_cast<TransformItem *>(child))
            transform->resolvePendingParameterTexts();
    }
}
