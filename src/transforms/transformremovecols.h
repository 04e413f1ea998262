#pragma once

#include "transforms/framework/transform.h"

// Keeps the checked columns of its input and removes the others. The option lists the columns
// to keep, so that a column which appears upstream later is kept rather than lost; the
// transform remembers which columns it has seen to tell a new column from an unchecked one.
class TransformRemoveCols : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 42; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryColumn; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override;
    QString displayName() const override { return QStringLiteral("Remove Cols"); }
    QString typeName() const override { return QStringLiteral("Remove"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Uncheck the column(s) you wish to remove.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
    void connectParameters(QList<Node *> inputs) override;

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
