#pragma once

#include "transforms/framework/transform.h"

// Keeps or removes the rows whose cells meet a list of conditions, each on one column or on
// every column, joined by all or any.
class TransformFilter : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 18; }
    QSet<QString> keywords() const override;
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    int category() const override { return CategoryRow; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    Transform *clone() const override { return cloneAs<TransformFilter>(); }
    QString displayName() const override { return QStringLiteral("Filter"); }
    QString typeName() const override { return QStringLiteral("Filter"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Filter rows by text, date or numeric values in selected columns.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return true; }
    bool omitDisabledFromDetails() const override { return false; }
};
