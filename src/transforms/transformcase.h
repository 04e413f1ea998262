#pragma once

#include "transforms/framework/transform.h"

// Changes the letter case of the cells of the chosen columns, by one of nine rules.
class TransformCase : public Transform
{
    Q_OBJECT

public:
    static QStringList caseNames();

    int type() const override { return 1; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryFormat; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return true; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformCase>(); }
    QString displayName() const override { return QStringLiteral("Case"); }
    QString typeName() const override { return QStringLiteral("Case"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Change the case in the selected column(s).");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
    QList<ParameterState> parameterStates() const override;
};
