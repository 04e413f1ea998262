#pragma once

#include "transforms/framework/transform.h"

// Appends a column that numbers the rows: from a start, by an increment, with several rows
// sharing a number when asked to.
class TransformRowNum : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 49; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryRow; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformRowNum>(); }
    QString displayName() const override { return QStringLiteral("Row Num"); }
    QString typeName() const override { return QStringLiteral("Row_Num"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Add a new column with the row number.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
