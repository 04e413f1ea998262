#pragma once

#include "transforms/framework/transform.h"

// Puts a text before or after each cell of the chosen columns. The text may hold column
// variables, filled in from each row.
class TransformInsert : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 24; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryFormat; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return true; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformInsert>(); }
    QString displayName() const override { return QStringLiteral("Insert"); }
    QString typeName() const override { return QStringLiteral("Insert"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Append/prepend text in the selected column(s).");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
