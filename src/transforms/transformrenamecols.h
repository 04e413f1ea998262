#pragma once

#include "transforms/framework/transform.h"

// Gives chosen columns new header names. The option holds the new names by column id, so a
// rename follows its column wherever it moves upstream.
class TransformRenameCols : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 44; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryColumn; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformRenameCols>(); }
    QString displayName() const override { return QStringLiteral("Rename Cols"); }
    QString typeName() const override { return QStringLiteral("Rename_Cols"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override { return QStringLiteral("Rename column headers."); }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
