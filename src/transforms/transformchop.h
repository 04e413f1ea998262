#pragma once

#include "transforms/framework/transform.h"

// Removes a number of characters from the start or the end of the cells of the chosen
// columns.
class TransformChop : public Transform
{
    Q_OBJECT

public:
    static QString chop(const QString &text, int length, bool fromStart);

    int type() const override { return 2; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryFormat; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return true; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformChop>(); }
    QString displayName() const override { return QStringLiteral("Chop"); }
    QString typeName() const override { return QStringLiteral("Chop"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral(
            "Remove a number of characters from the start or end of the selected column(s).");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
