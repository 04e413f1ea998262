#pragma once

#include "transforms/framework/transform.h"

// Keeps the checked columns of its input and removes the others. The option lists the columns
// to keep, so that a column which appears upstream later is kept rather than lost; the
// transform remembers which columns it has seen to tell a new column from an unchecked one.
class TransformRemoveCols : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    void connectParameters(ColumnSources inputs) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
    void copyFrom(const Transform &other) override;

private:
    // Checks the columns of input that this transform has never seen, so that a column
    // added upstream is kept until the user unchecks it.
    void keepNewColumns(Parameter *columns, const Dataset &input);

    // Every column id the input has shown since the option was made or read: a column
    // outside it is new, one inside it and not checked was unchecked by the user.
    QSet<ColumnId> m_knownColumns;
    // False while the option holds what a document said and the input has not been seen yet:
    // the first columns seen then are the document's, not new ones.
    bool m_knowsColumns = true;
};
