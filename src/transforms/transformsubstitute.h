#pragma once

#include "transforms/framework/transform.h"

// Adds a column whose cell in each row is a text with the row's values put in for its
// column variables: a template filled from every row.
class TransformSubstitute : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 63; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryOther; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformSubstitute>(); }
    QString displayName() const override { return QStringLiteral("Substitute"); }
    QString typeName() const override { return QStringLiteral("Substitute"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Substitute column values into text.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
