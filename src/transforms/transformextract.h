#pragma once

#include "transforms/framework/transform.h"

class QRegularExpression;

// Keeps part of each cell of the chosen columns: a stretch of characters counted from
// either end, or what a regular expression matches (its first capture group if it has one).
class TransformExtract : public Transform
{
    Q_OBJECT

public:
    static QString extractText(const QString &text, int length, bool fromStart, int offset);
    static QString extractMatch(const QString &text, const QRegularExpression &pattern);

    int type() const override { return 16; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryFormat; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return true; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformExtract>(); }
    QString displayName() const override { return QStringLiteral("Extract"); }
    QString typeName() const override { return QStringLiteral("Extract"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Extract text in the selected column(s).");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
    QList<ParameterState> parameterStates() const override;
};
