#pragma once

#include "transforms/framework/transform.h"

// Keeps one row of each group of alike rows, or only the others, or marks the groups; the
// matching itself is the dedupe engine, which the duplicate explorer shares.
class TransformDedupe : public Transform
{
    Q_OBJECT

public:
    int type() const override { return 14; }
    QSet<QString> keywords() const override;
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;
    QString caseSensitiveKey() const override { return QStringLiteral("Case_Sensitive"); }
    QString duplicateColumnsKey() const override { return QStringLiteral("Columns"); }
    QString duplicateMatchTypeKey() const override { return QStringLiteral("Match_Type"); }
    QString duplicateFuzzinessKey() const override { return QStringLiteral("Fuzziness"); }
    QString duplicateIgnoreSpacesKey() const override { return QStringLiteral("Ignore_Spaces"); }
    QString duplicateIgnorePunctuationKey() const override
    {
        return QStringLiteral("Ignore_Punctuation");
    }
    QString duplicateModeKey() const override { return QStringLiteral("Dedupe_Mode"); }
    static QStringList modeNames();
    int category() const override { return CategoryRow; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return true; }
    bool hasDuplicateOptions() const override { return true; }
    Transform *clone() const override { return cloneAs<TransformDedupe>(); }
    QString displayName() const override { return QStringLiteral("Dedupe"); }
    QString typeName() const override { return QStringLiteral("Dedupe"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral(
            "Remove duplicate rows by matching values in all the selected columns.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return false; }
};
