#pragma once

#include "transforms/framework/transform.h"

// Moves columns: those named in the option first, in its order, then the rest in input order,
// so that columns added upstream later arrive at the end. Names and ids move with the cells.
class TransformReorder : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 45; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryColumn; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformReorder>(); }
    QString displayName() const override { return QStringLiteral("Reorder Cols"); }
    QString typeName() const override { return QStringLiteral("Reorder"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override { return QStringLiteral("Drag columns to reorder."); }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
