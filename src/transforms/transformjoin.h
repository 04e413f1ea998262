#pragma once

#include "transforms/framework/transform.h"

// Placeholder until the transform is written.
class TransformJoin : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 28; }
    int category() const override { return CategoryMerge; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    bool hasKeyColumns() const override { return true; }
    Transform *clone() const override { return cloneAs<TransformJoin>(); }
    QString displayName() const override { return QStringLiteral("Join"); }
    QString typeName() const override { return QStringLiteral("Join"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral(
            "Merge 2 input datasets side by side using common (key) columns or row numbers. The "
            "bottom dataset (by vertical position) is joined to the right of the top dataset.");
    }
    int minimumInputs() const override { return 2; }
    int maximumInputs() const override { return 2; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return false; }
};
