#pragma once

#include "transforms/framework/transform.h"

// Turns the top rows into the header names, replacing or extending the names there, for files
// whose header spans several lines or comes after a preamble.
class TransformHeader : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 21; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryRow; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformHeader>(); }
    QString displayName() const override { return QStringLiteral("Header"); }
    QString typeName() const override { return QStringLiteral("Header"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override { return QStringLiteral("Move rows to the header."); }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
