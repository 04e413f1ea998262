#pragma once

#include "transforms/adjacentcells.h"

// Fills the empty cells of the chosen columns from their neighbour against the direction of
// travel, so that a value runs on through a stretch of empty cells: the usual repair of
// reports that print a group's value only on its first row.
class TransformFillDown : public AdjacentCellsTransform
{
    Q_OBJECT

public:
    int type() const override { return 17; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryFormat; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return true; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformFillDown>(); }
    QString displayName() const override { return QStringLiteral("Fill"); }
    QString typeName() const override { return QStringLiteral("Fill"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Fill empty cells in selected columns from adjacent cells.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
