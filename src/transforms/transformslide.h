#pragma once

#include "transforms/adjacentcells.h"

// Closes the gaps between the non-empty values of the chosen columns by moving the values in
// the direction of travel, keeping their order: sliding left packs a row's values into its
// first selected columns, sliding down packs a column's values into its last rows.
class TransformSlide : public AdjacentCellsTransform
{
    Q_OBJECT

public:
    int type() const override { return 54; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryFormat; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return true; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformSlide>(); }
    QString displayName() const override { return QStringLiteral("Slide"); }
    QString typeName() const override { return QStringLiteral("Slide"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Move non-empty values in selected columns to adjacent empty cells.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }

private:
    qint64 slideRows(const Dataset &input, const Walk &walk, Dataset &output);
    qint64 slideColumns(const Dataset &input, const Walk &walk, Dataset &output);
};
