#pragma once

#include "transforms/framework/transform.h"

// Lays the cells of a table out again in reading order over a new number of columns, so that
// the number of rows follows.
class TransformReshape : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 48; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryColumn; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformReshape>(); }
    QString displayName() const override { return QStringLiteral("Reshape"); }
    QString typeName() const override { return QStringLiteral("Reshape"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Change the number of columns and rows.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
