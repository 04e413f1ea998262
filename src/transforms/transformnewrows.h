#pragma once

#include "transforms/framework/transform.h"

// Inserts rows beside existing ones: blank rows, copies of the row, or rows of a user's
// value, above or below every row, the first or last row, or the rows that meet a condition.
// How many may be fixed or read from a column of each row.
class TransformNewRows : public Transform
{
    Q_OBJECT

public:
    enum NumberHow { SameForEveryRow = 0, SetFromColumn = 1 };
    enum NewRowsAs { BlankRows = 0, CopiedRows = 1, UserDefinedRows = 2 };
    enum Location { AboveEachRow = 0, BelowEachRow = 1 };
    enum ForRows { EveryRow = 0, RowsWhere = 1, FirstRow = 2, LastRow = 3 };

    int type() const override { return 32; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryRow; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformNewRows>(); }
    QString displayName() const override { return QStringLiteral("New Rows"); }
    QString typeName() const override { return QStringLiteral("New_Rows"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override { return QStringLiteral("Add new rows."); }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
    QList<ParameterState> parameterStates() const override;
};
