#pragma once

#include "transforms/framework/transform.h"

// Tidies the whitespace of the cells of the chosen columns: trimming, line breaks and tabs
// to blanks, odd spaces to plain ones, runs of blanks to one, and unprintable characters out.
class TransformWhitespace : public Transform
{
    Q_OBJECT

public:
    // The steps, each applied in this order when switched on.
    enum Step {
        Trim = 0x01,
        LineFeed = 0x02,
        Tab = 0x04,
        NonStandardSpaces = 0x08,
        CarriageReturn = 0x10,
        ConsecutiveSpaces = 0x20,
        NonPrintable = 0x40
    };

    static QString tidy(const QString &text, int steps);

    int type() const override { return 74; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryFormat; }
    bool isAdvanced() const override { return false; }
    bool changesValuesOnly() const override { return true; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformWhitespace>(); }
    QString displayName() const override { return QStringLiteral("Whitespace"); }
    QString typeName() const override { return QStringLiteral("Whitespace"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral(
            "Tidy whitespace (Spaces, Tabs, Carriage Returns etc) in the selected column(s).");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
};
