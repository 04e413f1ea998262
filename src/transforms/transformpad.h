#pragma once

#include "transforms/framework/transform.h"

// Pads the cells of the chosen columns with a character, at the left or the right, up to a
// minimum length. Longer cells are left alone; cutting them is Extract's job.
class TransformPad : public Transform
{
    Q_OBJECT

public:
    static QString pad(const QString &text, int length, bool left, QChar with);

    int type() const override { return 38; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryFormat; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return true; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformPad>(); }
    QString displayName() const override { return QStringLiteral("Pad"); }
    QString typeName() const override { return QStringLiteral("Pad"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Pad the selected column(s) to a fixed length.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
