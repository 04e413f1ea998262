#include "graph/transformnode.h"

#include "graph/connection.h"
#include "graph/graphscene.h"
#include "shell/settings.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/transform.h"

#include <QElapsedTimer>
#include <QPainter>

#include <algorithm>

TransformNode::TransformNode(Transform *transform, int id, const QString &alias,
                             const QString &comment)
    : Node(id)
    , m_transform(transform)
{
    setAlias(alias);
    setComment(comment);
    connect(m_transform, &Transform::processed, this, &Node::onProcessed);
}

TransformNode::~TransformNode()
{
    delete m_transform;
}

Node *TransformNode::clone() const
{
    auto *copy = new TransformNode(m_transform->clone(), id());
    copyInto(copy);
    return copy;
}

QString TransformNode::displayName() const
{
    return m_transform->displayName();
}

QString TransformNode::internalName() const
{
    return m_transform->typeName();
}

QString TransformNode::description() const
{
    return m_transform->description();
}

QColor TransformNode::backgroundColor() const
{
    return QColor(0xE8, 0xF1, 0xFB);
}

QColor TransformNode::borderColor() const
{
    return QColor(0x3B, 0x6E, 0xA8);
}

QColor TransformNode::textColor() const
{
    return QColor(0x10, 0x20, 0x30);
}

bool TransformNode::canRun() const
{
    return isUpstreamUpToDate();
}

int TransformNode::maximumInputs() const
{
    return m_transform->maximumInputs();
}

int TransformNode::minimumInputs() const
{
    return m_transform->minimumInputs();
}

bool TransformNode::hasWarnings() const
{
    return Node::hasWarnings() || m_transform->hasWarnings();
}

bool TransformNode::hasInfo() const
{
    return Node::hasInfo() || m_transform->hasInformation();
}

static QString joinMessages(const QStringList &own, const QStringList &transform, bool timeStamp,
                            const QDateTime &when)
{
    QStringList all;
    if (timeStamp && !(own.isEmpty() && transform.isEmpty()))
        all.append(when.toString());
    all += own;
    all += transform;
    return all.join(QLatin1Char('\n'));
}

QString TransformNode::warningsText(bool timeStamp) const
{
    return joinMessages(m_warnings, m_transform->warnings(), timeStamp, m_lastProcessed);
}

QString TransformNode::infoText(bool timeStamp) const
{
    return joinMessages(m_info, m_transform->information(), timeStamp, m_lastProcessed);
}

QVariantList TransformNode::stateList() const
{
    QVariantList state = Node::stateList();
    const QList<Parameter *> parameters = m_transform->parameters();
    for (const Parameter *parameter : parameters)
        state.append(parameter->value());
    return state;
}

QList<QPair<QString, QString>> TransformNode::parameterSummary() const
{
    QList<QPair<QString, QString>> lines;
    const bool omitDisabled = m_transform->omitDisabledFromDetails();
    const QList<Parameter *> parameters = m_transform->parameters();
    for (const Parameter *parameter : parameters) {
        if (!parameter->isDisplayed())
            continue;
        if (omitDisabled && !m_transform->isParameterEnabled(parameter->key()))
            continue;
        lines.append({parameter->label(), parameter->summary()});
    }
    return lines;
}

QList<QPair<QString, QString>> TransformNode::runSummary() const
{
    QList<QPair<QString, QString>> lines;
    lines.append({QStringLiteral("Connections in"),
                  QString::number(connections(ConnectionDirection::In).size())});
    lines.append({QStringLiteral("Connections out"),
                  QString::number(connections(ConnectionDirection::Out).size())});
    lines.append(
        {QStringLiteral("Transform type"), transformCategoryName(m_transform->category())});
    lines.append({QStringLiteral("Description"), m_transform->description()});
    lines += Node::runSummary();
    if (!m_transform->result().isEmpty())
        lines.append({QStringLiteral("Result"), m_transform->result()});
    return lines;
}

void TransformNode::removeConnection(Connection *connection)
{
    if (!connection)
        return;
    const QList<Parameter *> parameters = m_transform->parameters();
    for (Parameter *parameter : parameters) {
        if (parameter->sourceNode() == connection->source())
            parameter->setSourceNode(nullptr);
    }
    Node::removeConnection(connection);
}

bool TransformNode::hasColumnRelatedParameters() const
{
    return columnRelatedParameterCount() > 0;
}

int TransformNode::columnRelatedParameterCount() const
{
    int count = 0;
    const QList<Parameter *> parameters = m_transform->parameters();
    for (const Parameter *parameter : parameters) {
        if (parameter->isColumnRelated())
            ++count;
    }
    return count;
}

bool TransformNode::hasSeveralInputs() const
{
    return connections(ConnectionDirection::In).size() > 1;
}

bool TransformNode::autoConfigure()
{
    return m_transform->autoConfigure(asSources(upstream(true)));
}

void TransformNode::connectParameters()
{
    m_transform->connectParameters(asSources(upstream(true)));
}

QList<Parameter *> TransformNode::parametersWithSource(const Node *source) const
{
    QList<Parameter *> found;
    const QList<Parameter *> parameters = m_transform->parameters();
    for (Parameter *parameter : parameters) {
        if (source && parameter->sourceNode() == source)
            found.append(parameter);
    }
    return found;
}

void TransformNode::remapParameterSources(const QHash<const Node *, Node *> &map, bool dropUnmapped)
{
    const QList<Parameter *> parameters = m_transform->parameters();
    for (Parameter *parameter : parameters) {
        auto *source = dynamic_cast<Node *>(parameter->sourceNode());
        if (!source)
            continue;
        const auto found = map.constFind(source);
        if (found != map.constEnd())
            parameter->setSourceNode(found.value());
        else if (dropUnmapped)
            parameter->setSourceNode(nullptr);
    }
}

void TransformNode::resolvePendingParameterTexts()
{
    const QList<Parameter *> parameters = m_transform->parameters();
    for (Parameter *parameter : parameters)
        parameter->resolvePendingText();
}

TransformInputs TransformNode::transformInputs(const QList<Node *> &inputs,
                                               bool freeUpstream) const
{
    TransformInputs result;
    result.reserve(inputs.size());
    const GraphScene *scene = graphScene();
    // The test of freeing upstream data after the run, made before it: no other reader waits
    // for the input.
    const bool mayTake = freeUpstream || (scene && scene->rowsHandedOver());
    for (Node *input : inputs) {
        TransformInput entry;
        entry.source = input;
        entry.dataset = input->dataset();
        // An input read twice, as in a self-join, is read again after any one use.
        if (mayTake && inputs.count(input) == 1) {
            const QList<Node *> readers = input->downstream();
            entry.takeable = std::none_of(readers.cbegin(), readers.cend(), [this](const Node *n) {
                return n != this && n->status() == NeedsUpdate;
            });
        }
        result.append(entry);
    }
    return result;
}

void TransformNode::run(bool recursive, bool freeUpstream)
{
    if (GraphScene::isStopRequested())
        return;

    if (status() != UpToDate && canRun()) {
        // While the item is in error only its first input is looked at; this narrow test
        // follows from the order of the checks and documents rely on it.
        bool ready = true;
        const QList<Node *> parents = upstream(false);
        for (const Node *parent : parents) {
            if (parent->status() == NeedsUpdate || parent->status() == Error) {
                ready = false;
                break;
            }
            if (status() == Error)
                break;
        }
        if (ready) {
            m_dataset.clear();
            clearMessages();
            setStatus(Updating, false);
            emit processingStart(this);
            resolvePendingParameterTexts();

            const QList<Node *> inputs = upstream(true);
            QElapsedTimer timer;
            timer.start();
            setFractionProcessed(0.0);

            bool failed = false;
            RunContext context;
            context.stopRequested = &GraphScene::isStopRequested;
            if (const GraphScene *scene = graphScene())
                context.documentPath = scene->documentPath();
            m_dataset = m_transform->execute(transformInputs(inputs, freeUpstream), context,
                                             &failed);
            if (!m_transform->keepsSourceRows())
                m_dataset.clearSourceRows();
            if (!m_transform->keepsIssues())
                m_dataset.clearIssues();
            m_dataset.assignColumnIds(id());
            m_transform->checkRequiredParameters();
            finishRun(timer.elapsed());
            setStatus(failed ? Error : UpToDate, false);

            const int minimum = m_transform->minimumInputs();
            if (inputs.size() < minimum) {
                if (m_transform->maximumInputs() == minimum)
                    addWarning(QStringLiteral("%1 upstream %2 expected")
                                   .arg(minimum)
                                   .arg(minimum == 1 ? QStringLiteral("connection")
                                                     : QStringLiteral("connections")));
                else
                    addWarning(
                        QStringLiteral("At least %1 upstream connections expected").arg(minimum));
            }

            emit processingEnd(this);
            m_dataset.clearStringPools();
            Settings::instance()->addTotalRowsProcessed(m_dataset.rowCount());

            const QList<Node *> children = downstream(true);
            for (Node *child : children) {
                if (auto *transformChild = qobject_cast<TransformNode *>(child))
                    transformChild->resolvePendingParameterTexts();
            }
            update();
            if (freeUpstream)
                freeUpstreamData();
        }
    }

    if (status() == UpToDate && recursive) {
        const QList<Node *> children = downstream(true);
        for (Node *child : children)
            child->run(recursive, freeUpstream);
    }
}

QList<int> TransformNode::changeBadges() const
{
    QList<int> badges;
    const QList<Node *> inputs = upstream(true);
    if (status() != UpToDate || inputs.isEmpty())
        return badges;
    const Dataset *first = inputs.first()->dataset();
    if (m_dataset.columnCount() < first->columnCount())
        badges.append(FewerColumns);
    else if (m_dataset.columnCount() > first->columnCount())
        badges.append(MoreColumns);
    if (m_dataset.rowCount() > first->rowCount())
        badges.append(MoreRows);
    else if (m_dataset.rowCount() < first->rowCount())
        badges.append(FewerRows);
    return badges;
}

void TransformNode::paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
                          QWidget *widget)
{
    Node::paint(painter, option, widget);
    if (!Settings::instance()->showChanges())
        return;
    const QList<int> badges = changeBadges();
    if (badges.isEmpty())
        return;

    // The strip is 8% of the item's width twice over, a third of that 8% from the right edge.
    const QRectF body = bodyRect();
    const qreal unit = body.width() * 0.08;
    const qreal stripWidth = 2.0 * unit;
    const QRectF strip(body.right() - unit / 3.0 - stripWidth, body.top(), stripWidth,
                       body.height());
    const qreal slot = strip.height() / 3.0;
    const bool dark = backgroundColor().lightness() < 128;
    for (int i = 0; i < badges.size(); ++i) {
        const int position = badges.size() == 1 ? 1 : (i == 0 ? 0 : 2);
        const QRectF rect(strip.left(), strip.top() + position * slot, strip.width(), slot);
        const int badge = badges.at(i);
        const bool grows = badge == MoreRows || badge == MoreColumns;
        QColor colour = grows ? (dark ? QColor(0x00AAAA) : QColor(Qt::darkCyan))
                              : (dark ? QColor(0xAA00AA) : QColor(Qt::darkMagenta));
        QPen pen(colour, 1.5, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
        painter->setPen(pen);
        painter->setBrush(Qt::NoBrush);
        const QRectF in = rect.adjusted(rect.width() * 0.2, rect.height() * 0.2,
                                        -rect.width() * 0.2, -rect.height() * 0.2);
        QPolygonF chevron;
        switch (badge) {
        case MoreRows:
            chevron << in.bottomLeft() << QPointF(in.center().x(), in.top()) << in.bottomRight();
            break;
        case FewerRows:
            chevron << in.topLeft() << QPointF(in.center().x(), in.bottom()) << in.topRight();
            break;
        case FewerColumns:
            chevron << in.topRight() << QPointF(in.left(), in.center().y()) << in.bottomRight();
            break;
        case MoreColumns:
            chevron << in.topLeft() << QPointF(in.right(), in.center().y()) << in.bottomLeft();
            break;
        }
        painter->drawPolyline(chevron);
    }
}
