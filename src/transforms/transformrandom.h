#pragma once

#include "transforms/framework/transform.h"

enum class ParameterType;

// Adds a column of reproducible pseudo-random integers, reals, dates or texts.
class TransformRandom : public Transform
{
    Q_OBJECT

public:
    enum Type { Integer, Real, Date, Text };

    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;
    void migrateParameters(int version, QList<StoredParameter> *parameters) const override;

    static QStringList typeNames();

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    void addRangeParameters(ParameterType kind, const QString &suffix, const QVariant &minimum,
                            const QVariant &maximum, bool useRemembered);
    // The message when the minimum of the type is above its maximum, else empty.
    QString rangeProblem(int type) const;
};
