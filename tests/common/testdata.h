#pragma once

#include "data/dataset.h"
#include "transforms/framework/columnsource.h"
#include "transforms/framework/transform.h"
#include "transforms/framework/transforminput.h"

#include <QList>
#include <QPointF>
#include <QStringList>

class FlowItem;
class FlowModel;
class InputItem;
class TransformItem;

// What every test program shares, with no GUI: tables built from literal rows, bare sources
// for transforms, small flows built in code, and a run of a transform as the run engine makes
// it. Linking these helpers
// also prepares the process before main: settings kept away from the user's own and
// temporary files in a private folder.

// Builds a dataset from literal rows; the first row is the header when withHeader is true.
Dataset makeDataset(const QList<QStringList> &rows, bool withHeader = true);

// A table that options can bind to, always ready: the input of a transform tested outside a
// flow. Its columns get ids of its own, from a counter apart from that of items.
class DataSource : public ColumnSource
{
public:
    explicit DataSource(const Dataset &dataset);
    const Dataset *columnDataset() const override { return &m_dataset; }
    bool isReady() const override { return true; }
    Dataset *dataset() { return &m_dataset; }

private:
    Dataset m_dataset;
};

// A new source over dataset; the caller owns it.
DataSource *makeDataSource(const Dataset &dataset);

// Runs transform over the given inputs as the run engine would, and returns the result. The
// inputs' rows are never taken over, so the inputs stay as they are.
Dataset runTransform(Transform &transform, const ColumnSources &inputs, bool *failed = nullptr);
// The same in a run of the given context (its document, its stop flag).
Dataset runTransform(Transform &transform, const ColumnSources &inputs, const RunContext &context);

// An item that only holds the given dataset, up to date, with column ids from the item's id:
// for what shows or binds to an item's table. The caller owns it.
FlowItem *makeDataItem(const Dataset &dataset);

// Small flows built in code: an input over comma separated text (first line the header), and
// a transform item made from a transform whose options are created for its inputs, connected
// to them.
InputItem *addTextInput(FlowModel &model, const QString &csv, const QPointF &pos);
TransformItem *addTransform(FlowModel &model, Transform *transform, const QList<FlowItem *> &inputs,
                            const QPointF &pos);

// A transform of a chosen number of inputs with one column option per input (two at most),
// bound in turn to the inputs; it stacks its inputs' rows, and can claim that reordered
// inputs changed its options, as a key-matching transform would.
class ProbeTransform : public Transform
{
public:
    explicit ProbeTransform(int minimum = 1, int maximum = 1);

    bool configures = false;
    int configureCalls = 0;

    const TransformDescriptor &descriptor() const override { return m_descriptor; }
    void createParameters(const ColumnSources &, bool) override { }
    bool autoConfigure(const ColumnSources &) override;

protected:
    void copyFrom(const Transform &other) override;
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                     bool &) override;

private:
    TransformDescriptor m_descriptor;
};
