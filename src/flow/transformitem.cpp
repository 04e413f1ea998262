#include "flow/transformitem.h"

#include "flow/flowmodel.h"
#include "shell/settings.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/transform.h"

#include <QElapsedTimer>

#include <algorithm>

TransformItem::TransformItem(Transform *transform, int id, const QString &alias,
                             const QString &comment)
    : FlowItem(id)
    , m_transform(transform)
{
    setAlias(alias);
    setComment(comment);
    connect(m_transform, &Transform::processed, this, &FlowItem::onProcessed);
}

TransformItem::~TransformItem()
{
    delete m_transform;
}

FlowItem *TransformItem::clone() const
{
    auto *copy = new TransformItem(m_transform->clone(), id());
    copyInto(copy);
    return copy;
}

QString TransformItem::displayName() const
{
    return m_transform->displayName();
}

QString TransformItem::internalName() const
{
    return m_transform->typeName();
}

QString TransformItem::description() const
{
    return m_transform->description();
}

bool TransformItem::canRun() const
{
    return isUpstreamUpToDate();
}

int TransformItem::maximumInputs() const
{
    return m_transform->maximumInputs();
}

int TransformItem::minimumInputs() const
{
    return m_transform->minimumInputs();
}

bool TransformItem::hasWarnings() const
{
    return FlowItem::hasWarnings() || m_transform->hasWarnings();
}

bool TransformItem::hasInfo() const
{
    return FlowItem::hasInfo() || m_transform->hasInformation();
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

QString TransformItem::warningsText(bool timeStamp) const
{
    return joinMessages(m_warnings, m_transform->warnings(), timeStamp, m_lastProcessed);
}

QString TransformItem::infoText(bool timeStamp) const
{
    return joinMessages(m_info, m_transform->information(), timeStamp, m_lastProcessed);
}

QVariantList TransformItem::stateList() const
{
    QVariantList state = FlowItem::stateList();
    const QList<Parameter *> parameters = m_transform->parameters();
    for (const Parameter *parameter : parameters)
        state.append(parameter->value());
    return state;
}

QList<QPair<QString, QString>> TransformItem::parameterSummary() const
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

QList<QPair<QString, QString>> TransformItem::runSummary() const
{
    QList<QPair<QString, QString>> lines;
    lines.append({QStringLiteral("Connections in"),
                  QString::number(connections(ConnectionDirection::In).size())});
    lines.append({QStringLiteral("Connections out"),
                  QString::number(connections(ConnectionDirection::Out).size())});
    lines.append(
        {QStringLiteral("Transform type"), transformCategoryName(m_transform->category())});
    lines.append({QStringLiteral("Description"), m_transform->description()});
    lines += FlowItem::runSummary();
    if (!m_transform->result().isEmpty())
        lines.append({QStringLiteral("Result"), m_transform->result()});
    return lines;
}

void TransformItem::onConnectionRemoved(FlowConnection *connection)
{
    const QList<Parameter *> parameters = m_transform->parameters();
    for (Parameter *parameter : parameters) {
        if (parameter->sourceNode() == connection->source())
            parameter->setSourceNode(nullptr);
    }
}

bool TransformItem::hasColumnRelatedParameters() const
{
    return columnRelatedParameterCount() > 0;
}

int TransformItem::columnRelatedParameterCount() const
{
    int count = 0;
    const QList<Parameter *> parameters = m_transform->parameters();
    for (const Parameter *parameter : parameters) {
        if (parameter->isColumnRelated())
            ++count;
    }
    return count;
}

bool TransformItem::hasSeveralInputs() const
{
    return connections(ConnectionDirection::In).size() > 1;
}

bool TransformItem::autoConfigure()
{
    return m_transform->autoConfigure(asSources(upstream(true)));
}

void TransformItem::connectParameters()
{
    m_transform->connectParameters(asSources(upstream(true)));
}

QList<Parameter *> TransformItem::parametersWithSource(const FlowItem *source) const
{
    QList<Parameter *> found;
    const QList<Parameter *> parameters = m_transform->parameters();
    for (Parameter *parameter : parameters) {
        if (source && parameter->sourceNode() == source)
            found.append(parameter);
    }
    return found;
}

void TransformItem::remapParameterSources(const QHash<const FlowItem *, FlowItem *> &map,
                                          bool dropUnmapped)
{
    const QList<Parameter *> parameters = m_transform->parameters();
    for (Parameter *parameter : parameters) {
        auto *source = dynamic_cast<FlowItem *>(parameter->sourceNode());
        if (!source)
            continue;
        const auto found = map.constFind(source);
        if (found != map.constEnd())
            parameter->setSourceNode(found.value());
        else if (dropUnmapped)
            parameter->setSourceNode(nullptr);
    }
}

void TransformItem::resolvePendingParameterTexts()
{
    const QList<Parameter *> parameters = m_transform->parameters();
    for (Parameter *parameter : parameters)
        parameter->resolvePendingText();
}

TransformInputs TransformItem::transformInputs(const QList<FlowItem *> &inputs,
                                               bool freeUpstream) const
{
    TransformInputs result;
    result.reserve(inputs.size());
    const FlowModel *flow = model();
    // The test of freeing upstream data after the run, made before it: no other reader waits
    // for the input.
    const bool mayTake = freeUpstream || (flow && flow->rowsHandedOver());
    for (FlowItem *input : inputs) {
        TransformInput entry;
        entry.source = input;
        entry.dataset = input->dataset();
        // An input read twice, as in a self-join, is read again after any one use.
        if (mayTake && inputs.count(input) == 1) {
            const QList<FlowItem *> readers = input->downstream();
            entry.takeable
                = std::none_of(readers.cbegin(), readers.cend(), [this](const FlowItem *n) {
                      return n != this && n->status() == NeedsUpdate;
                  });
        }
        result.append(entry);
    }
    return result;
}

void TransformItem::run(bool recursive, bool freeUpstream)
{
    if (isStopRequested())
        return;

    if (status() != UpToDate && canRun()) {
        // While the item is in error only its first input is looked at; this narrow test
        // follows from the order of the checks and documents rely on it.
        bool ready = true;
        const QList<FlowItem *> parents = upstream(false);
        for (const FlowItem *parent : parents) {
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

            const QList<FlowItem *> inputs = upstream(true);
            QElapsedTimer timer;
            timer.start();
            setFractionProcessed(0.0);

            bool failed = false;
            RunContext context;
            context.stopRequested = &FlowModel::isStopRequested;
            if (const FlowModel *flow = model())
                context.documentPath = flow->documentPath();
            m_dataset
                = m_transform->execute(transformInputs(inputs, freeUpstream), context, &failed);
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

            resolveChildParameterTexts();
            emit changed();
            if (freeUpstream)
                freeUpstreamData();
        }
    }

    if (status() == UpToDate && recursive) {
        const QList<FlowItem *> children = downstream(true);
        for (FlowItem *child : children)
            child->run(recursive, freeUpstream);
    }
}

QList<int> TransformItem::changeBadges() const
{
    QList<int> badges;
    const QList<FlowItem *> inputs = upstream(true);
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
