#pragma once

#include "transforms/framework/transform.h"

// Placeholder until the transform is written.
class TransformSubtract : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 64; }
    int category() const override { return CategoryMerge; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    bool hasKeyColumns() const override { return true; }
    Transform *clone() const override { return cloneAs<TransformSubtract>(); }
    QString displayName() const override { return QStringLiteral("Subtract"); }
    QString typeName() const override { return QStringLiteral("Subtract"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral(
            "Remove rows from the top dataset whose key values are also in the bottom dataset.");
    }
    int minimumInputs() const override { return 2; }
    int maximumInputs() const override { return 2; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return false; }
};
