#include "graph/outputnode.h"

#include "graph/graphscene.h"
#include "graph/transformnode.h"

#include <QElapsedTimer>

Node *OutputNode::clone() const
{
    auto *copy = new OutputNode(id());
    copyIOInto(copy);
    copy->m_outputEnabled = m_outputEnabled;
    return copy;
}

QColor OutputNode::backgroundColor() const
{
    return QColor(0xFB, 0xEF, 0xE3);
}

QColor OutputNode::borderColor() const
{
    return QColor(0xB0, 0x6A, 0x1E);
}

bool OutputNode::write()
{
    // The writers of the output pipeline plug in here.
    return true;
}

void OutputNode::run(bool, bool freeUpstream)
{
    if (GraphScene::isStopRequested() || status() == UpToDate || !isUpstreamUpToDate())
        return;
    m_dataset.clear();
    clearMessages();

    const QList<Node *> inputs = upstream();
    if (inputs.isEmpty()) {
        setStatus(UpToDate, false);
        addWarning(QStringLiteral("No transforms or inputs connected"));
        update();
        return;
    }

    setStatus(Updating, false);
    emit processingStart(this);
    m_dataset = *inputs.first()->dataset();
    QElapsedTimer timer;
    timer.start();
    setFractionProcessed(0.0);
    bool ok = true;
    if (!m_outputEnabled)
        addInfo(QStringLiteral("Write mode='%1'").arg(writeModeText()));
    else
        ok = write();
    m_dataset.assignColumnIds(id());
    finishRun(timer.elapsed());
    setStatus(ok ? UpToDate : Error, false);
    emit processingEnd(this);
    m_dataset.clearStringPools();
    update();
    if (freeUpstream)
        freeUpstreamData();
}

void OutputNode::writeAttributes(QDomElement &, const QString &) const { }

void OutputNode::readAttributes(const QDomElement &, int, const QString &) { }
