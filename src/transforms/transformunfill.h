#pragma once

#include "transforms/adjacentcells.h"

// Empties each cell of the chosen columns that repeats the value of its neighbour against the
// direction of travel, so that a group's value shows only once: the inverse of Fill.
class TransformUnfill : public AdjacentCellsTransform
{
    Q_OBJECT

public:
    int type() const override { return 69; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryFormat; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return true; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformUnfill>(); }
    QString displayName() const override { return QStringLiteral("Unfill"); }
    QString typeName() const override { return QStringLiteral("Unfill"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral(
            "Set adjacent cells with identical values to empty in selected columns.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
