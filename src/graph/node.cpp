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

namespace {

constexpr qreal ItemWidth = 180.0;
constexpr qreal ItemHeight = 90.0;
constexpr qreal HeaderHeight = 24.0;
constexpr qreal StatusIconSize = 22.0;
constexpr int ConnectionGuideDelayMs = 250;
constexpr qreal NoteSideX = 239.4;
constexpr qreal NoteSideY = 119.7;

// The press of a drag of items, and whether its undo step is open. A drag moves many items
// but only the pressed one sees the release.
bool s_dragPressed = false;
bool s_moveStepOpen = false;
int s_dragCount = 0;

// The item selected last lies on top of the others.
qreal s_topZ = 0.0;

} // namespace

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
    return pos() + QPointF(ItemWidth / 2.0, ItemHeight / 2.0);
}

void Node::setCentrePos(const QPointF &centre)
{
    setPos(centre - QPointF(ItemWidth / 2.0, ItemHeight / 2.0));
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

QColor Node::backgroundColor() const
{
    return QColor(0xF4, 0xF6, 0xF8);
}

QColor Node::borderColor() const
{
    return QColor(0x60, 0x6A, 0x78);
}

QColor Node::textColor() const
{
    return QColor(0x20, 0x20, 0x20);
}

QFont Node::font() const
{
    return QApplication::font();
}

QPointF Node::anchor(ConnectionDirection direction, qreal gap) const
{
    if (direction == ConnectionDirection::In)
        return pos() + QPointF(-gap, ItemHeight / 2.0);
    return pos() + QPointF(ItemWidth + gap, ItemHeight / 2.0);
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

QSizeF Node::itemSize()
{
    return QSizeF(ItemWidth, ItemHeight);
}

QRectF Node::headerRect() const
{
    return QRectF(0.0, 0.0, ItemWidth, HeaderHeight);
}

QRectF Node::bodyRect() const
{
    return QRectF(0.0, HeaderHeight, ItemWidth, ItemHeight - HeaderHeight);
}

QRectF Node::nameRect() const
{
    return headerRect().adjusted(Margin + IconGap, 0.0, -Margin - IconGap, 0.0);
}

QRectF Node::textRect() const
{
    const QRectF body = bodyRect();
    const QRectF icon = statusIconRect();
    const qreal left = icon.right() + IconGap;
    return QRectF(left, body.top() + Margin, buttonStripRect().left() - left,
                  body.height() - 2 * Margin);
}

QRectF Node::connectHotSpotRect() const
{
    return QRectF(ItemWidth - 12.0, ItemHeight / 2.0 - 12.0, 24.0, 24.0);
}

QRectF Node::statusIconRect() const
{
    const QRectF body = bodyRect();
    return QRectF(body.left() + Margin + IconGap, body.top() + Margin + IconGap, StatusIconSize,
                  StatusIconSize);
}

QRectF Node::buttonStripRect() const
{
    // Two badge widths of 8% of the item, a third of one badge from the right edge.
    const QRectF body = bodyRect();
    const qreal unit = ItemWidth * 0.08;
    return QRectF(body.right() - unit / 3.0 - 2.0 * unit, body.top(), 2.0 * unit, body.height());
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

void Node::setHighlighted(bool on)
{
    if (m_highlighted == on)
        return;
    m_highlighted = on;
    update();
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

QColor Node::schemeBackgroundColor() const
{
    switch (type()) {
    case InputType:
        return Colors::instance()->color(Colors::InputBackground);
    case OutputType:
        return Colors::instance()->color(Colors::OutputBackground);
    case NoteType:
        return backgroundColor();
    default:
        return Colors::instance()->color(Colors::TransformBackground);
    }
}

QColor Node::schemeBorderColor() const
{
    switch (type()) {
    case InputType:
        return Colors::instance()->color(Colors::InputBorder);
    case OutputType:
        return Colors::instance()->color(Colors::OutputBorder);
    case NoteType:
        return Colors::instance()->color(Colors::NoteBorder);
    default:
        return Colors::instance()->color(Colors::TransformBorder);
    }
}

QColor Node::schemeTextColor() const
{
    switch (type()) {
    case InputType:
        return Colors::instance()->color(Colors::InputText);
    case OutputType:
        return Colors::instance()->color(Colors::OutputText);
    case NoteType:
        return Colors::instance()->color(Colors::NoteText);
    default:
        return Colors::instance()->color(Colors::TransformText);
    }
}

QRectF Node::boundingRect() const
{
    const qreal pad = Outline / 2.0;
    return QRectF(-pad, -pad, ItemWidth + 2 * pad, ItemHeight + 2 * pad);
}

void Node::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setRenderHint(QPainter::TextAntialiasing);
    paintBody(painter, QRectF(QPointF(0.0, 0.0), itemSize()));
    paintTexts(painter);
    paintStatusIcon(painter, statusIconRect(), statusIcon());
    paintProgress(painter);
    painter->restore();
}

void Node::paintBody(QPainter *painter, const QRectF &frame) const
{
    const Colors *colors = Colors::instance();
    const QColor background = schemeBackgroundColor();
    const QColor border = schemeBorderColor();

    QBrush fill(background);
    const int gradient = colors->gradientEffect();
    if (gradient > 0) {
        QLinearGradient shade(frame.topLeft(), frame.bottomLeft());
        shade.setColorAt(0.0, background.lighter(100 + 4 * gradient));
        shade.setColorAt(1.0, background.darker(100 + 4 * gradient));
        fill = QBrush(shade);
    }
    painter->setPen(Qt::NoPen);
    painter->setBrush(fill);
    painter->drawRoundedRect(frame, CornerRadius, CornerRadius);

    // The header is the body's colour washed with the border colour, so the name stands on
    // its own band in every scheme.
    QColor band = border;
    band.setAlpha(colors->isDark() ? 110 : 60);
    QPainterPath header;
    header.addRoundedRect(frame, CornerRadius, CornerRadius);
    QPainterPath clip;
    clip.addRect(headerRect());
    painter->setBrush(band);
    painter->drawPath(header.intersected(clip));

    QPen pen(border, m_hovered ? 2.0 : 1.2);
    if (isSelected()) {
        pen = QPen(colors->color(Colors::Selection), Outline / 2.0);
    } else if (m_highlighted) {
        pen = QPen(colors->color(Colors::Selection), 2.5, Qt::DashLine);
    }
    painter->setPen(pen);
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(frame, CornerRadius, CornerRadius);
}

void Node::paintTexts(QPainter *painter) const
{
    const QColor text = schemeTextColor();
    QFont nameFont = font();
    nameFont.setBold(true);
    painter->setFont(nameFont);
    painter->setPen(text);
    const QRectF name = nameRect();
    painter->drawText(
        name, Qt::AlignVCenter | Qt::AlignLeft,
        QFontMetricsF(nameFont).elidedText(titleLine(), Qt::ElideRight, name.width()));

    const QFont plain = font();
    const QFontMetricsF metrics(plain);
    const QRectF area = textRect();
    const qreal lineHeight = metrics.height();
    qreal y = area.top();
    painter->setFont(plain);
    const auto drawLine = [&](const QString &line) {
        if (y + lineHeight > area.bottom() + 0.5)
            return false;
        painter->drawText(QRectF(area.left(), y, area.width(), lineHeight),
                          Qt::AlignVCenter | Qt::AlignLeft,
                          metrics.elidedText(line, Qt::ElideRight, area.width()));
        y += lineHeight;
        return true;
    };
    const bool dark = Colors::instance()->isDark();
    if (status() == Error)
        painter->setPen(dark ? QColor(0xFF, 0x70, 0x70) : QColor(0xAA, 0x00, 0x00));
    drawLine(statusLine());
    painter->setPen(text);

    if (status() != Error && hasWarnings() && Settings::instance()->showWarnings()) {
        painter->setPen(dark ? QColor(0xFD, 0xB0, 0x40) : QColor(0xB0, 0x5A, 0x00));
        const QStringList warningLines = warningsText().split(QLatin1Char('\n'));
        drawLine(warningLines.first());
        painter->setPen(text);
    }

    const QString note = comment();
    if (!note.isEmpty() && Settings::instance()->showComments()) {
        QFont italic = plain;
        italic.setItalic(true);
        painter->setFont(italic);
        const QFontMetricsF italicMetrics(italic);
        const QRectF rest(area.left(), y, area.width(), area.bottom() - y);
        if (rest.height() >= lineHeight) {
            const int lines = int(rest.height() / lineHeight);
            QString shown = note.simplified();
            // Whole words up to the last line, which is cut with an ellipsis.
            QTextLayout layout(shown, italic);
            layout.beginLayout();
            QString visible;
            for (int i = 0; i < lines; ++i) {
                QTextLine line = layout.createLine();
                if (!line.isValid())
                    break;
                line.setLineWidth(rest.width());
                const QString part = shown.mid(line.textStart(), line.textLength());
                if (i == lines - 1) {
                    visible += italicMetrics.elidedText(shown.mid(line.textStart()), Qt::ElideRight,
                                                        rest.width());
                } else {
                    visible += part.trimmed() + QLatin1Char('\n');
                }
            }
            layout.endLayout();
            painter->drawText(rest, Qt::AlignTop | Qt::AlignLeft, visible.trimmed());
        }
    }
}

void Node::paintProgress(QPainter *painter) const
{
    if (status() != Updating || m_fractionProcessed <= 0.0 || m_fractionProcessed >= 1.0)
        return;
    const QRectF ring = statusIconRect().adjusted(-2.5, -2.5, 2.5, 2.5);
    painter->setBrush(Qt::NoBrush);
    QColor track = Colors::instance()->color(Colors::Selection);
    track.setAlpha(60);
    painter->setPen(QPen(track, 2.5));
    painter->drawEllipse(ring);
    painter->setPen(
        QPen(Colors::instance()->color(Colors::Selection), 2.5, Qt::SolidLine, Qt::FlatCap));
    painter->drawArc(ring, 90 * 16, -int(360 * 16 * m_fractionProcessed));
}

void Node::paintStatusIcon(QPainter *painter, const QRectF &rect, NodeStatusIcon icon)
{
    QColor fill;
    switch (icon) {
    case NodeStatusIcon::Empty:
        fill = QColor(0x90, 0x90, 0x90);
        break;
    case NodeStatusIcon::UpToDate:
        fill = QColor(0x00, 0xAA, 0x00);
        break;
    case NodeStatusIcon::Warning:
        fill = QColor(0xFD, 0x9A, 0x00);
        break;
    case NodeStatusIcon::Error:
        fill = QColor(0xAA, 0x00, 0x00);
        break;
    case NodeStatusIcon::Updating:
    case NodeStatusIcon::NeedsUpdate:
        fill = QColor(0xC8, 0xC8, 0xC8);
        break;
    }
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(fill);
    painter->drawEllipse(rect);
    const qreal quarter = rect.width() / 4.0;
    const QRectF inner = rect.adjusted(quarter, quarter, -quarter, -quarter);
    QPen pen(Qt::white, rect.height() / 9.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    painter->setPen(pen);
    painter->setBrush(Qt::NoBrush);
    switch (icon) {
    case NodeStatusIcon::Empty:
        painter->drawEllipse(inner);
        break;
    case NodeStatusIcon::Updating:
        painter->drawLine(inner.topLeft(), inner.topRight());
        painter->drawLine(inner.topRight(), inner.bottomLeft());
        painter->drawLine(inner.bottomLeft(), inner.bottomRight());
        painter->drawLine(inner.bottomRight(), inner.topLeft());
        break;
    case NodeStatusIcon::UpToDate:
        painter->drawPolyline(QPolygonF(
            {QPointF(inner.left(), inner.center().y()),
             QPointF(inner.left() + inner.width() * 0.4, inner.bottom()), inner.topRight()}));
        break;
    case NodeStatusIcon::Warning:
        painter->drawLine(QPointF(inner.center().x(), inner.top()),
                          QPointF(inner.center().x(), inner.bottom() - inner.height() * 0.35));
        painter->drawPoint(QPointF(inner.center().x(), inner.bottom()));
        break;
    case NodeStatusIcon::Error:
        painter->drawLine(inner.topLeft(), inner.bottomRight());
        painter->drawLine(inner.topRight(), inner.bottomLeft());
        break;
    case NodeStatusIcon::NeedsUpdate: {
        // A hook and a dot, drawn with the same pen as the other signs.
        const qreal w = inner.width();
        QPainterPath hook;
        hook.moveTo(inner.left() + w * 0.1, inner.top() + w * 0.3);
        hook.cubicTo(inner.left() + w * 0.1, inner.top() - w * 0.1, inner.right() - w * 0.1,
                     inner.top() - w * 0.1, inner.right() - w * 0.1, inner.top() + w * 0.3);
        hook.cubicTo(inner.right() - w * 0.1, inner.top() + w * 0.55, inner.center().x(),
                     inner.top() + w * 0.5, inner.center().x(), inner.top() + w * 0.72);
        painter->drawPath(hook);
        painter->drawPoint(QPointF(inner.center().x(), inner.bottom() + w * 0.08));
        break;
    }
    }
    painter->restore();
}

void Node::drawStatusIcon(QPainter *painter, const QRectF &rect, int icon)
{
    paintStatusIcon(painter, rect, NodeStatusIcon(icon));
}

void Node::showTimingBar(qreal fraction)
{
    hideTimingBar();
    m_timingBar = new TimingBar(this, fraction, elapsedText(m_processingTime));
}

void Node::hideTimingBar()
{
    delete m_timingBar;
    m_timingBar = nullptr;
}

void Node::showConnectToOverlay()
{
    if (m_connectTo)
        return;
    m_connectTo = new ConnectToNodeOverlayItem(this);
    m_connectTo->setPos(anchor(ConnectionDirection::In) - pos());
    connect(m_connectTo, &NodeOverlayItem::clicked, this, [this](Node *target) {
        if (ConnectionMaker *maker = ConnectionMaker::of(scene(), false))
            maker->finish(target);
    });
}

void Node::removeConnectFromOverlay()
{
    if (!m_connectFrom)
        return;
    m_connectFrom->discard();
    m_connectFrom = nullptr;
}

void Node::removeConnectToOverlay()
{
    if (!m_connectTo)
        return;
    m_connectTo->discard();
    m_connectTo = nullptr;
}

void Node::onUpdateConnectionGuide()
{
    GraphScene *graph = graphScene();
    if (!graph || m_connectFrom || !m_hovered || m_preview || ConnectionMaker::isActive(graph))
        return;
    if (!graph->canStartConnection(this))
        return;
    m_connectFrom = new ConnectFromNodeOverlayItem(this);
    m_connectFrom->setPos(anchor(ConnectionDirection::Out) - pos());
}

void Node::gatherNoteOffsets()
{
    m_noteOffsets.clear();
    GraphScene *graph = graphScene();
    if (!graph || type() == NoteType || !Settings::instance()->autoMoveNotes())
        return;
    const QRectF reach(pos() - QPointF(NoteSideX, NoteSideY), QSizeF(2 * NoteSideX, 2 * NoteSideY));
    const QList<Node *> notes = graph->nodesOfType(NoteType);
    for (Node *node : notes) {
        const auto *note = static_cast<const NoteNode *>(node);
        if (note->isSelected() || !reach.contains(note->pos()))
            continue;
        const QPointF offset = note->pos() - pos();
        bool pointsHere = false;
        switch (note->arrow()) {
        case NoteNode::Below:
            pointsHere = offset.y() > 0.0 && std::abs(offset.x()) <= NoteSideY;
            break;
        case NoteNode::Above:
            pointsHere = offset.y() < 0.0 && std::abs(offset.x()) <= NoteSideY;
            break;
        case NoteNode::Left:
            pointsHere = offset.x() < 0.0 && std::abs(offset.y()) <= NoteSideY / 2.0;
            break;
        case NoteNode::Right:
            pointsHere = offset.x() > 0.0 && std::abs(offset.y()) <= NoteSideY / 2.0;
            break;
        default:
            break;
        }
        if (pointsHere)
            m_noteOffsets.insert(node, offset);
    }
}

void Node::moveNotes()
{
    for (auto it = m_noteOffsets.cbegin(); it != m_noteOffsets.cend(); ++it) {
        if (it.key()->scene() == scene())
            it.key()->setPos(pos() + it.value());
    }
}

QVariant Node::itemChange(GraphicsItemChange change, const QVariant &value)
{
    if (change == ItemPositionChange && s_dragPressed && isSelected()) {
        // The snapshot must show the items where they were, so it is taken before the first
        // change lands.
        if (!s_moveStepOpen) {
            s_moveStepOpen = true;
            beginUndoStep(QStringLiteral("move item(s)"));
        }
        if (m_noteDrag != s_dragCount) {
            m_noteDrag = s_dragCount;
            gatherNoteOffsets();
        }
    } else if (change == ItemPositionHasChanged) {
        Connection::refreshPaths({this});
        if (m_noteDrag == s_dragCount && s_dragPressed)
            moveNotes();
        if (isSelected())
            m_moved = true;
    } else if (change == ItemSelectedHasChanged && value.toBool()) {
        s_topZ += 0.001;
        setZValue(s_topZ);
        for (Connection *connection : qAsConst(m_connections))
            connection->setZValue(s_topZ - 1.0);
    }
    return QGraphicsObject::itemChange(change, value);
}

void Node::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    removeConnectFromOverlay();
    if (event->button() == Qt::LeftButton) {
        s_dragPressed = true;
        ++s_dragCount;
    }
    QGraphicsObject::mousePressEvent(event);
}

void Node::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    QGraphicsObject::mouseReleaseEvent(event);
    s_dragPressed = false;
    if (s_moveStepOpen) {
        s_moveStepOpen = false;
        if (GraphScene *graph = graphScene())
            graph->endItemsMove();
        else
            endUndoStep();
    }
    if (m_moved) {
        m_moved = false;
        if (GraphScene *graph = graphScene())
            emit nodePosChanged(graph->nodes());
    }
}

void Node::hoverEnterEvent(QGraphicsSceneHoverEvent *event)
{
    if (!m_guideTimer) {
        m_guideTimer = new DelayTimer(this);
        connect(m_guideTimer, &DelayTimer::timeout, this, &Node::onUpdateConnectionGuide);
    }
    m_guideTimer->stop();
    m_hovered = true;
    for (Connection *connection : qAsConst(m_connections))
        connection->setHighlighted(true);
    update();
    m_guideTimer->start(ConnectionGuideDelayMs);
    QGraphicsObject::hoverEnterEvent(event);
}

void Node::hoverLeaveEvent(QGraphicsSceneHoverEvent *event)
{
    if (m_guideTimer)
        m_guideTimer->stop();
    removeConnectFromOverlay();
    m_hovered = false;
    for (Connection *connection : qAsConst(m_connections))
        connection->setHighlighted(false);
    update();
    QGraphicsObject::hoverLeaveEvent(event);
}
