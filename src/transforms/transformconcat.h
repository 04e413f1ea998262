#pragma once

#include "transforms/framework/transform.h"

// Appends a column whose cells join the cells of the chosen columns with a delimiter, empty
// cells left out unless asked for.
class TransformConcat : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 6; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryColumn; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformConcat>(); }
    QString displayName() const override { return QStringLiteral("Concat Cols"); }
    QString typeName() const override { return QStringLiteral("Concat"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Concatenate selected columns into a single new column.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
    QList<ParameterState> parameterStates() const override;
};
