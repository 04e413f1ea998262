#pragma once

#include "transforms/framework/transform.h"

// Swaps rows and columns; the input's header, when it has one, becomes the first column, and
// the first row may become the output's header.
class TransformTranspose : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 67; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryOther; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformTranspose>(); }
    QString displayName() const override { return QStringLiteral("Transpose"); }
    QString typeName() const override { return QStringLiteral("Transpose"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override { return QStringLiteral("Swap rows and columns."); }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
