#pragma once

#include "transforms/framework/transform.h"

// Adds a column whose value in each row comes from the first branch of conditions that the
// row meets, or from the else value.
class TransformIf : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 22; }
    QSet<QString> keywords() const override;
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    int category() const override { return CategoryColumn; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    Transform *clone() const override { return cloneAs<TransformIf>(); }
    QString displayName() const override { return QStringLiteral("If"); }
    QString typeName() const override { return QStringLiteral("If"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Create a new column with values conditional on other columns.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return true; }
    bool omitDisabledFromDetails() const override { return false; }
};
