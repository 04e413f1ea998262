#pragma once

#include "transforms/framework/transform.h"

// Keeps a given number of rows: the first, the last, evenly spaced, or drawn at random in a
// way that the seed makes repeatable.
class TransformSample : public Transform
{
    Q_OBJECT

public:
    static QStringList spreadNames();

    int type() const override { return 50; }
    QSet<QString> keywords() const override;
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    int category() const override { return CategoryRow; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    Transform *clone() const override { return cloneAs<TransformSample>(); }
    QString displayName() const override { return QStringLiteral("Sample"); }
    QString typeName() const override { return QStringLiteral("Sample"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override { return QStringLiteral("Sample from all rows."); }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
    QList<ParameterState> parameterStates() const override;
};
