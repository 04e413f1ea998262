#pragma once

#include "transforms/framework/transform.h"

namespace Calculate {
struct Operand;
struct Outcome;
} // namespace Calculate

// Appends one column computed, row by row, from one or two values: cells of a column or
// constants, read as numbers, integers, booleans, dates, times or plain text as the
// operation needs.
class TransformCalculate : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;
    void migrateParameters(int version, QList<StoredParameter> *parameters) const override;

    // The tooltips of a value's type option and of its two choices ("Column", "Constant"),
    // which say "first" and "second" only when the operation takes two values.
    static QStringList typeToolTips(int value, bool twoValues);

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    struct Value;
    // Reads an option pair into value; false when it is a column that isn't there.
    bool readValue(int number, const Dataset &input, Value *value) const;
    void recogniseDates(const Dataset &input, bool twoValues, Value *value1, Value *value2) const;
    void reportFailures(const QStringList &messages, qint64 failures);
};
