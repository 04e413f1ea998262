#pragma once

#include "graph/node.h"
#include "transforms/framework/transforminput.h"

#include <QHash>

class Parameter;
class Transform;

// The item that owns one Transform: it gathers its inputs in canvas order, runs the
// transform, keeps the result as its dataset, and shows whether the result grew or shrank
// against its first input.
class TransformNode : public Node
{
    Q_OBJECT

public:
    explicit TransformNode(Transform *transform, int id = -1, const QString &alias = QString(),
                           const QString &comment = QString());
    ~TransformNode() override;

    int type() const override { return TransformType; }
    Transform *transform() const { return m_transform; }

    Node *clone() const override;
    QString displayName() const override;
    QString internalName() const override;
    QString description() const;
    QColor backgroundColor() const override;
    QColor borderColor() const override;
    QColor textColor() const override;
    bool canRun() const override;
    int maximumInputs() const override;
    int minimumInputs() const override;
    bool hasWarnings() const override;
    bool hasInfo() const override;
    QString warningsText(bool timeStamp = false) const override;
    QString infoText(bool timeStamp = false) const override;
    QVariantList stateList() const override;
    QList<QPair<QString, QString>> parameterSummary() const override;
    QList<QPair<QString, QString>> runSummary() const override;
    void removeConnection(Connection *connection) override;
    bool hasColumnRelatedParameters() const override;
    void run(bool recursive, bool freeUpstream) override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

    int columnRelatedParameterCount() const;
    bool hasSeveralInputs() const;
    bool autoConfigure();
    void connectParameters();
    // The options bound to source's columns.
    QList<Parameter *> parametersWithSource(const Node *source) const;
    // Rebinds options to other items, as copies of a graph need: a source missing from map
    // becomes none when dropUnmapped is set and stays otherwise.
    void remapParameterSources(const QHash<const Node *, Node *> &map, bool dropUnmapped);
    void resolvePendingParameterTexts();

    // Which way the result differs from the first input: the badges of the drawing.
    enum Badge { MoreRows = 0, FewerRows = 1, FewerColumns = 2, MoreColumns = 3 };
    QList<int> changeBadges() const;

private:
    // The inputs as the transform takes them, with the rows of those it may take over.
    TransformInputs transformInputs(const QList<Node *> &inputs, bool freeUpstream) const;

    Transform *m_transform;
};
