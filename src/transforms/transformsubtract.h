#pragma once

#include "transforms/framework/transform.h"

// Removes rows of the top dataset whose key text occurs in the bottom dataset: every such row,
// or one row per bottom occurrence counted from the first or the last row.
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
    QString keyColumn1Key() const override { return QStringLiteral("Column_1"); }
    QString keyColumn2Key() const override { return QStringLiteral("Column_2"); }
    QString caseSensitiveKey() const override { return QStringLiteral("Case_Sensitive"); }
    QSet<QString> keywords() const override;
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    bool autoConfigure(const QList<Node *> &inputs) override;
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
