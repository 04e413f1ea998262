#pragma once

#include "transforms/framework/transform.h"

// Adds a column to the top dataset holding, for each row, values of the bottom dataset found
// by comparing the row's key with the bottom keys: exactly, fuzzily or by a comparison operator.
class TransformLookup : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 29; }
    int category() const override { return CategoryMerge; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    bool hasKeyColumns() const override { return true; }
    QString keyColumn1Key() const override { return QStringLiteral("Top_Lookup_Column"); }
    QString keyColumn2Key() const override { return QStringLiteral("Bottom_Lookup_Column"); }
    QString caseSensitiveKey() const override { return QStringLiteral("Case_Sensitive"); }
    static QStringList matchTypeNames();
    QSet<QString> keywords() const override;
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    void connectParameters(QList<Node *> inputs) override;
    bool autoConfigure(const QList<Node *> &inputs) override;
    QList<ParameterState> parameterStates() const override;
    Transform *clone() const override { return cloneAs<TransformLookup>(); }
    QString displayName() const override { return QStringLiteral("Lookup"); }
    QString typeName() const override { return QStringLiteral("Lookup"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral(
            "Create a new column in the top dataset using values looked up in the bottom dataset.");
    }
    int minimumInputs() const override { return 2; }
    int maximumInputs() const override { return 2; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return false; }
};
