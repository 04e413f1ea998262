#pragma once

#include "transforms/framework/transform.h"

// Placeholder until the transform is written.
class TransformLookup : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 29; }
    int category() const override { return CategoryMerge; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    bool hasKeyColumns() const override { return true; }
    Transform *clone() const override { return cloneAs<TransformLookup>(); }
    QString displayName() const override { return QStringLiteral("Lookup"); }
    QString typeName() const override { return QStringLiteral("Lookup"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral(
            "Create a new column in the top dataset using values looked up in the bottom dataset.");
    }
    int minimumInputs() const override { return 2; }
    int maximumInputs() const override { return 2; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return false; }
};
