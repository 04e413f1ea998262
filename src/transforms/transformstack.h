#pragma once

#include "transforms/framework/transform.h"

// Puts the rows of all inputs one under another, matching their columns by header name or
// by position.
class TransformStack : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 60; }
    int category() const override { return CategoryMerge; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    QSet<QString> keywords() const override;
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;
    Transform *clone() const override { return cloneAs<TransformStack>(); }
    QString displayName() const override { return QStringLiteral("Stack"); }
    QString typeName() const override { return QStringLiteral("Stack"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Merge input datasets one on top of another. Orders by the vertical "
                              "positions of the input datasets.");
    }
    QString inputImageName() const override { return QStringLiteral("stack.png"); }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 0x7fffffff; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return false; }
};
