#pragma once

#include "transforms/framework/transform.h"

// An identical copy of its input; useful to tidy the layout of a graph.
class TransformClone : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 3; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryOther; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    Transform *clone() const override { return cloneAs<TransformClone>(); }
    QString displayName() const override { return QStringLiteral("Clone"); }
    QString typeName() const override { return QStringLiteral("Clone"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral(
            "Make an identical copy. Can be useful to improve the Center pane layout.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return false; }
};
