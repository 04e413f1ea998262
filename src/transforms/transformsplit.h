#pragma once

#include "transforms/framework/transform.h"

// Splits the cells of one column into parts, at a text or regular expression delimiter or by
// fixed lengths, and puts the parts in new columns at the end of the table or in new rows
// that repeat the other cells.
class TransformSplit : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void migrateParameters(int version, QList<StoredParameter> *parameters) const override;
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
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
