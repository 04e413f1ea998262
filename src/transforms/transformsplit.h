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

private:
    struct Splitter;

    // process() reads how to cut a cell, cuts the column's cells into new rows or new
    // columns, and notes the cells padded or truncated to the number of parts allowed.

    // False, after a warning where there is something to say, when nothing can be cut.
    bool readSplitter(Splitter *splitter);
    void splitIntoRows(Dataset &output, const Dataset &input, int column, Splitter &splitter);
    void splitIntoColumns(Dataset &output, const Dataset &input, int column, Splitter &splitter);
    void addPartCountNotes(const Splitter &splitter);
};
