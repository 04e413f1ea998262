#pragma once

#include "transforms/framework/transform.h"

// Tidies the whitespace of the cells of the chosen columns: trimming, line breaks and tabs
// to blanks, odd spaces to plain ones, runs of blanks to one, and unprintable characters out.
class TransformWhitespace : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
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
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
