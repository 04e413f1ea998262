#pragma once

#include "transforms/framework/transform.h"

// Placeholder until the transform is written.
class TransformSlice : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 53; }
    int category() const override { return CategoryRow; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    Transform *clone() const override { return cloneAs<TransformSlice>(); }
    QString displayName() const override { return QStringLiteral("Slice"); }
    QString typeName() const override { return QStringLiteral("Slice"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Keep or remove a continuous section of rows.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return false; }
};
