#pragma once

#include "flow/flowitem.h"
#include "transforms/framework/transforminput.h"

#include <QHash>

class Parameter;
class Transform;

// The item that owns one Transform: it gathers its inputs in canvas order, runs the
// transform, keeps the result as its dataset, and shows whether the result grew or shrank
// against its first input.
class TransformItem : public FlowItem
{
    Q_OBJECT

public:
    explicit TransformItem(Transform *transform, int id = -1, const QString &alias = QString(),
                           const QString &comment = QString());
    ~TransformItem() override;

    int kind() const override { return TransformKind; }
    Transform *transform() const { return m_transform; }

    FlowItem *clone() const override;
    QString displayName() const override;
    QString internalName() const override;
    QString description() const;
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
    bool hasColumnRelatedParameters() const override;
    void run(bool recursive, bool freeUpstream) override;

    int columnRelatedParameterCount() const;
    bool hasSeveralInputs() const;
    bool autoConfigure();
    void connectParameters();
    // The options bound to source's columns.
    QList<Parameter *> parametersWithSource(const FlowItem *source) const;
    // Rebinds options to other items, as copies of a graph need: a source missing from map
    // becomes none when dropUnmapped is set and stays otherwise.
    void remapParameterSources(const QHash<const FlowItem *, FlowItem *> &map, bool dropUnmapped);
    void resolvePendingParameterTexts();

    // Which way the result differs from the first input: the badges of the drawing.
    enum Badge { MoreRows = 0, FewerRows = 1, FewerColumns = 2, MoreColumns = 3 };
    QList<int> changeBadges() const;

protected:
    // Options bound to the source of a removed input lose their column.
    void onConnectionRemoved(FlowConnection *connection) override;

private:
    // The inputs as the transform takes them, with the rows of those it may take over.
    TransformInputs transformInputs(const QList<FlowItem *> &inputs, bool freeUpstream) const;

    Transform *m_transform;
};
