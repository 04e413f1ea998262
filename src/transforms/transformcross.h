#pragma once

#include "transforms/framework/transform.h"

// Makes every combination of one row from each input (the Cartesian product).
class TransformCross : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 11; }
    int category() const override { return CategoryMerge; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    QSet<QString> keywords() const override;
    Transform *clone() const override { return cloneAs<TransformCross>(); }
    QString displayName() const override { return QStringLiteral("Cross"); }
    QString typeName() const override { return QStringLiteral("Cross"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Create every combination of rows in each input dataset.");
    }
    QString inputImageName() const override { return QStringLiteral("cross.png"); }
    int minimumInputs() const override { return 2; }
    int maximumInputs() const override { return 0x7fffffff; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return false; }
};
