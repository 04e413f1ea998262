#pragma once

#include "transforms/framework/transform.h"

// Turns a wide table into a long one: the columns that repeat a group (such as "Q1 Sales",
// "Q2 Sales") are stacked, so that each input row becomes one row per group, with the other
// columns repeated in each.
class TransformSplitRows : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 58; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryRow; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformSplitRows>(); }
    QString displayName() const override { return QStringLiteral("Split Rows"); }
    QString typeName() const override { return QStringLiteral("Split_Rows"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Split each row into multiple rows.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return true; }
    bool omitDisabledFromDetails() const override { return true; }
};
