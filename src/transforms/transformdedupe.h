#pragma once

#include "transforms/framework/transform.h"

// Placeholder until the transform is written.
class TransformDedupe : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 14; }
    int category() const override { return CategoryRow; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return true; }
    bool hasDuplicateOptions() const override { return true; }
    Transform *clone() const override { return cloneAs<TransformDedupe>(); }
    QString displayName() const override { return QStringLiteral("Dedupe"); }
    QString typeName() const override { return QStringLiteral("Dedupe"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral(
            "Remove duplicate rows by matching values in all the selected columns.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return false; }
};
