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
    const TransformDescriptor &descriptor() const override;
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
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
