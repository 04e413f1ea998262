#pragma once

#include "transforms/framework/transform.h"

#include <QStringView>

// Rewrites integers from one number base to another.
class TransformNumBase : public Transform
{
    Q_OBJECT

public:
    // The value of From that stands for guessing the base of each column.
    static constexpr int Guess = 1;

    // An integer as read: its magnitude and sign. Values from -2^63 to 2^64 - 1 are read.
    struct Integer
    {
        quint64 magnitude = 0;
        bool negative = false;
    };

    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;

    // Reads text (blanks around it aside) as an integer in base, with an optional sign; with
    // hexPrefix a text that starts "0x" is read in base 16 whatever the base (under Guess, and
    // where the base is 16 anyway).
    static bool readInteger(QStringView text, int base, bool hexPrefix, Integer *value);
    // The integer in base, upper-case letters for digits past 9. A negative number is written
    // with a minus sign in base 10, and in any other base as the 64-bit two's complement.
    static QString writeInteger(const Integer &value, int base);
    // The base that the texts of one column are written in: the smallest of 10, 16 and 36
    // that holds every digit of the texts that aren't "0x" hexadecimal; 16 when those are all.
    static int guessBase(const Dataset &data, int c);

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    // The base of each column: from, or the guess for each under Guess, which is reported.
    QVector<int> columnBases(const Dataset &data, const QList<int> &columns, int from);
};
