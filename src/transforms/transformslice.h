#pragma once

#include "transforms/framework/transform.h"

// Keeps or removes one continuous section of rows, bounded by the start or the end of the
// table or by the first, next or last row that meets a condition.
class TransformSlice : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 53; }
    QSet<QString> keywords() const override;
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    int category() const override { return CategoryRow; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    Transform *clone() const override { return cloneAs<TransformSlice>(); }
    QString displayName() const override { return QStringLiteral("Slice"); }
    QString typeName() const override { return QStringLiteral("Slice"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Keep or remove a continuous section of rows.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
    QList<ParameterState> parameterStates() const override;
};
