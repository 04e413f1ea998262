#pragma once

#include "transforms/framework/transform.h"

// Puts the rows in order by one or more columns, each compared as dates, numbers or text as
// its values suggest, and can add a column that ranks them.
class TransformSort : public Transform
{
    Q_OBJECT

public:
    static QStringList rankTypeNames();

    int type() const override { return 55; }
    QSet<QString> keywords() const override;
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    int category() const override { return CategoryRow; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    Transform *clone() const override { return cloneAs<TransformSort>(); }
    QString displayName() const override { return QStringLiteral("Sort"); }
    QString typeName() const override { return QStringLiteral("Sort"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral(
            "Sort rows by text, numeric and date values in the selected column(s).");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return true; }
    bool omitDisabledFromDetails() const override { return true; }
    QList<ParameterState> parameterStates() const override;
};
