#pragma once

#include "transforms/framework/transform.h"

// Appends a column that holds the same text in every row, such as a constant for a later
// join or a marker of where the rows came from.
class TransformNewCol : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 31; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryColumn; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformNewCol>(); }
    QString displayName() const override { return QStringLiteral("New Col"); }
    QString typeName() const override { return QStringLiteral("New_Col"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Add a new column filled with a specified value.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
