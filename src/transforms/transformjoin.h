#pragma once

#include "transforms/framework/transform.h"

// Puts the rows of two datasets side by side, pairing them by equal key texts or by row
// number; rows without a partner can be kept on either side (left, right or full outer join).
class TransformJoin : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 28; }
    int category() const override { return CategoryMerge; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    bool hasKeyColumns() const override { return true; }
    QString keyColumn1Key() const override { return QStringLiteral("Column_1"); }
    QString keyColumn2Key() const override { return QStringLiteral("Column_2"); }
    QString caseSensitiveKey() const override { return QStringLiteral("Case_Sensitive"); }
    QSet<QString> keywords() const override;
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;
    bool autoConfigure(const QList<Node *> &inputs) override;
    Transform *clone() const override { return cloneAs<TransformJoin>(); }
    QString displayName() const override { return QStringLiteral("Join"); }
    QString typeName() const override { return QStringLiteral("Join"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral(
            "Merge 2 input datasets side by side using common (key) columns or row numbers. The "
            "bottom dataset (by vertical position) is joined to the right of the top dataset.");
    }
    QString inputImageName() const override { return QStringLiteral("join.png"); }
    int minimumInputs() const override { return 2; }
    int maximumInputs() const override { return 2; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return false; }

private:
    void addDetailedReport(const Dataset &top, int topKey, const Dataset &bottom, int bottomKey,
                           bool caseSensitive);
};
