#pragma once

#include "transforms/framework/transform.h"

// Joins runs of consecutive rows into single wider rows: a fixed number at a time, runs that
// start at rows marked by a condition on the first column, or runs that share a key value.
class TransformConcatRows : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 7; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryRow; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformConcatRows>(); }
    QString displayName() const override { return QStringLiteral("Concat Rows"); }
    QString typeName() const override { return QStringLiteral("Concat_Rows"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Concatenate multiple consecutive rows into a single row.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
    QList<ParameterState> parameterStates() const override;

private:
    QList<QStringList> concatenateFixed(const Dataset &input, int rows);
    QList<QStringList> concatenateByKey(const Dataset &input, int key, bool repeatKey,
                                        Qt::CaseSensitivity cs);
    QList<QStringList> concatenateVariable(const Dataset &input, bool whileMode, int op,
                                           const QString &value, int concatValue,
                                           Qt::CaseSensitivity cs);
};
