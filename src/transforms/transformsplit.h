#pragma once

#include "transforms/framework/transform.h"

// Splits the cells of one column into parts, at a text or regular expression delimiter or by
// fixed lengths, and puts the parts in new columns at the end of the table or in new rows
// that repeat the other cells.
class TransformSplit : public Transform
{
    Q_OBJECT

public:
    // One element of a Lengths text: a width, or all that the other elements leave ('*').
    struct Length
    {
        int width = 0;
        bool rest = false;
        bool dropped = false;
    };
    // Reads a text such as "2,-1,*"; on a badly formed text returns false and the error.
    static bool parseLengths(const QString &text, QList<Length> *lengths, QString *error);
    static QStringList splitByLengths(const QString &text, const QList<Length> &lengths);

    int type() const override { return 56; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryColumn; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformSplit>(); }
    QString displayName() const override { return QStringLiteral("Split Col"); }
    QString typeName() const override { return QStringLiteral("Split"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Split a column into multiple new columns.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
    QList<ParameterState> parameterStates() const override;
};
