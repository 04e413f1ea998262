#pragma once

#include "transforms/framework/transform.h"

// Inserts rows beside existing ones: blank rows, copies of the row, or rows of a user's
// value, above or below every row, the first or last row, or the rows that meet a condition.
// How many may be fixed or read from a column of each row.
class TransformNewRows : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    enum NumberHow { SameForEveryRow = 0, SetFromColumn = 1 };
    enum NewRowsAs { BlankRows = 0, CopiedRows = 1, UserDefinedRows = 2 };
    enum Location { AboveEachRow = 0, BelowEachRow = 1 };
    enum ForRows { EveryRow = 0, RowsWhere = 1, FirstRow = 2, LastRow = 3 };
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    struct Options;
    struct Condition;

    // process() reads the options and the condition, then inserts the new rows among the
    // existing ones.
    Options readOptions() const;
    Condition readCondition(const Dataset &input, int forRows) const;
    // Returns how many new rows it inserted.
    qint64 insertRows(Dataset &output, const Dataset &input, const Options &options,
                      const Condition &condition, const QHash<QString, ColumnIndex> &byName,
                      qint64 &badNumbers);

    // createParameters calls these in turn: the Right pane shows the options, and documents
    // store them, in the order they are added.

    // How many new rows: a fixed number or one read from a column.
    void createNumberParameters(ColumnSource *input, bool useRemembered);
    // What the new rows hold and where they go.
    void createNewRowParameters(bool useRemembered);
    // Which rows get new rows, with the "Rows where" condition.
    void createConditionParameters(ColumnSource *input, bool useRemembered);
};
