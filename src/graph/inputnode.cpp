#include "graph/inputnode.h"

#include "graph/graphscene.h"
#include "graph/transformnode.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTextStream>

Node *InputNode::clone() const
{
    auto *copy = new InputNode(id());
    copyIOInto(copy);
    copy->m_medium = m_medium;
    copy->m_text = m_text;
    return copy;
}

QColor InputNode::backgroundColor() const
{
    return QColor(0xE9, 0xF6, 0xEA);
}

QColor InputNode::borderColor() const
{
    return QColor(0x3C, 0x8D, 0x40);
}

bool InputNode::readSource()
{
    // Comma separated text with a header row; the full set of reading options comes with the
    // input pipeline.
    QString text = m_text;
    if (m_medium == File) {
        QFile file(path());
        if (!file.open(QIODevice::ReadOnly)) {
            addWarning(QStringLiteral("Can't open file '%1'.").arg(path()));
            return false;
        }
        text = QString::fromUtf8(file.readAll());
    }
    QTextStream stream(&text, QIODevice::ReadOnly);
    m_dataset = Dataset(stream, QLatin1Char(','), 0, true, true, true);
    m_dataset.setHasHeader(true);
    return true;
}

void InputNode::run(bool recursive, bool freeUpstream)
{
    if (GraphScene::isStopRequested())
        return;
    if (status() != UpToDate) {
        m_dataset.clear();
        clearMessages();
        setStatus(Updating, false);
        emit processingStart(this);
        QElapsedTimer timer;
        timer.start();
        setFractionProcessed(0.0);
        const bool ok = readSource();
        m_dataset.assignColumnIds(id());
        finishRun(timer.elapsed());
        setStatus(ok ? UpToDate : Error, false);
        emit processingEnd(this);
        m_dataset.clearStringPools();
        const QList<Node *> children = downstream(true);
        for (Node *child : children) {
            if (auto *transform = qobject_cast<TransformNode *>(child))
                transform->resolvePendingParameterTexts();
        }
        update();
    }
    if (!recursive)
        return;
    const QList<Node *> children = downstream(true);
    for (Node *child : children) {
        if (status() != Error)
            child->run(recursive, freeUpstream);
    }
}
