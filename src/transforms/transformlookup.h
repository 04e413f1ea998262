#pragma once

#include "transforms/framework/transform.h"

// Adds a column to the top dataset holding, for each row, values of the bottom dataset found
// by comparing the row's key with the bottom keys: exactly, fuzzily or by a comparison operator.
class TransformLookup : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    static QStringList matchTypeNames();
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    void connectParameters(ColumnSources inputs) override;
    bool autoConfigure(const ColumnSources &inputs) override;
    QList<ParameterState> parameterStates() const override;

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;

private:
    struct Options;
    struct LookedUp;
    class BottomSearch;

    // process() reads the options, looks up a value for every top row and adds the column.
    Options readOptions() const;
    LookedUp lookUpValues(const Dataset &top, const Dataset &bottom, const Options &options);

    // createParameters calls these in turn: the Right pane shows the options, and documents
    // store them, in the order they are added.
    void createNameParameters(bool useRemembered);
    void createColumnParameters(ColumnSource *top, ColumnSource *bottom);
    // The match type and, for Fuzzy, how close is close enough.
    void createMatchParameters(bool useRemembered);
    // Which of several matching bottom values are used, and how they are joined.
    void createValueParameters(bool useRemembered);
    void createNoMatchParameters(bool useRemembered);
};
