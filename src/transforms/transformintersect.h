#pragma once

#include "transforms/framework/transform.h"

// Keeps the rows of the top dataset whose key text also occurs in the bottom dataset.
class TransformIntersect : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 25; }
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
    Transform *clone() const override { return cloneAs<TransformIntersect>(); }
    QString displayName() const override { return QStringLiteral("Intersect"); }
    QString typeName() const override { return QStringLiteral("Intersect"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral(
            "Keep only rows from the top dataset whose key values are also in the bottom dataset.");
    }
    int minimumInputs() const override { return 2; }
    int maximumInputs() const override { return 2; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return false; }
};
