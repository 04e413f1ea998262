#pragma once

#include "transforms/framework/transform.h"

// Appends copies of the chosen columns at the end, names and all, so that a column can be
// changed downstream while its original is kept.
class TransformCopy : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 8; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryColumn; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformCopy>(); }
    QString displayName() const override { return QStringLiteral("Copy Cols"); }
    QString typeName() const override { return QStringLiteral("Copy"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override { return QStringLiteral("Copy selected columns."); }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
