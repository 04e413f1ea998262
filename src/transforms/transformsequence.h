#pragma once

#include "transforms/framework/transform.h"

// Completes a sequence of integers or dates in one column: the rows are put in order on that
// column, and each value missing between the minimum and the maximum gets a new row, whose
// other cells are left blank, copied from a neighbouring row or set to a user's value.
class TransformSequence : public Transform
{
    Q_OBJECT

public:
    enum How { MissingIntegers = 0, MissingDates = 1 };
    enum Limit { FromData = 0, UserDefined = 1 };
    enum Order { Ascending = 0, Descending = 1 };
    enum NewRowsAs { Blank = 0, CopyFromAbove = 1, CopyFromBelow = 2, UserDefinedValue = 3 };

    int type() const override { return 52; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryRow; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformSequence>(); }
    QString displayName() const override { return QStringLiteral("Sequence"); }
    QString typeName() const override { return QStringLiteral("Sequence"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Add missing rows from a sequence.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override;
    bool omitDisabledFromDetails() const override { return true; }
    QList<ParameterState> parameterStates() const override;
};
