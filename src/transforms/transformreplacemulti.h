#pragma once

#include "transforms/framework/transform.h"

struct ReplaceTerm;

// Rewrites the cells of the chosen columns through a list of replacement terms, applied in
// order on the running text: plain text, whole-cell text, regular expressions, empty cells
// and classes of characters. The texts of a term may hold column variables.
class TransformReplaceMulti : public Transform
{
    Q_OBJECT

public:
    enum MatchType {
        Text = 0,
        ExactText = 1,
        Regex = 2,
        Empty = 3,
        Letters = 4,
        Digits = 5,
        Punctuation = 6,
        Symbols = 7,
        Whitespace = 8,
        Currency = 9,
        NonAscii = 10
    };

    // The names of the match types, by number.
    static QStringList matchTypeNames();
    // Replaces each character of a class (Letters to NonAscii) by to.
    static QString replaceCharacters(const QString &text, int matchType, const QString &to);

    int type() const override { return 47; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryFormat; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return true; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformReplaceMulti>(); }
    QString displayName() const override { return QStringLiteral("Replace"); }
    QString typeName() const override { return QStringLiteral("Replace_Multi"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Replace multiple text in the selected column(s).");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
