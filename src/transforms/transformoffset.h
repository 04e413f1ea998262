#pragma once

#include "transforms/framework/transform.h"

// Shifts the values of the chosen columns a number of rows down or up, the other columns
// staying put: a column of previous (or next) values beside the current ones. Values pushed
// out at one end either come back at the other or are lost, the gap taking a fixed value.
class TransformOffset : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 36; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryColumn; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return true; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformOffset>(); }
    QString displayName() const override { return QStringLiteral("Offset"); }
    QString typeName() const override { return QStringLiteral("Offset"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Offset values up or down in the selected column(s).");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
    QList<ParameterState> parameterStates() const override;
};
