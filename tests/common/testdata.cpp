#include "testdata.h"

#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/transformitem.h"
#include "transforms/framework/transform.h"

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

Dataset makeDataset(const QList<QStringList> &rows, bool withHeader)
{
    Dataset dataset;
    for (int r = 0; r < rows.size(); ++r) {
        if (r == 0 && withHeader) {
            dataset.setColumnCount(rows.first().size());
            dataset.setHeader(rows.first());
            continue;
        }
        dataset.addInputRow(rows.at(r), false, false, false);
    }
    return dataset;
}

DataSource::DataSource(const Dataset &dataset)
    : m_dataset(dataset)
{
    // Far above the ids of items, so that a test mixing both never sees two columns alike.
    static int counter = 100000;
    m_dataset.assignColumnIds(counter++);
}

DataSource *makeDataSource(const Dataset &dataset)
{
    return new DataSource(dataset);
}

namespace {

Dataset runInContext(Transform &transform, const ColumnSources &inputs, const RunContext &context,
                     bool *failed)
{
    TransformInputs runInputs;
    for (ColumnSource *source : inputs) {
        // Not takeable, so the transform only reads the table.
        runInputs.append({source, const_cast<Dataset *>(source->columnDataset()), false});
    }
    Dataset result = transform.execute(runInputs, context, failed);
    transform.checkRequiredParameters();
    return result;
}

} // namespace

Dataset runTransform(Transform &transform, const ColumnSources &inputs, bool *failed)
{
    return runInContext(transform, inputs, RunContext(), failed);
}

Dataset runTransform(Transform &transform, const ColumnSources &inputs, const RunContext &context)
{
    return runInContext(transform, inputs, context, nullptr);
}

namespace {

class DataItem : public FlowItem
{
public:
    explicit DataItem(const Dataset &dataset)
    {
        m_dataset = dataset;
        m_dataset.assignColumnIds(id());
        m_status = UpToDate;
    }
    int kind() const override { return InputKind; }
    FlowItem *clone() const override { return new DataItem(m_dataset); }
    QString displayName() const override { return QStringLiteral("Data"); }
    void run(bool, bool) override { }
};

} // namespace

FlowItem *makeDataItem(const Dataset &dataset)
{
    return new DataItem(dataset);
}

InputItem *addTextInput(FlowModel &model, const QString &csv, const QPointF &pos)
{
    auto *input = new InputItem;
    input->setMedium(InputItem::Clipboard);
    input->setInputFileType(FileTypeDelimited);
    input->setHeader(InputItem::HasHeader);
    input->setText(csv);
    input->setPos(pos);
    model.addItem(input);
    return input;
}

TransformItem *addTransform(FlowModel &model, Transform *transform, const QList<FlowItem *> &inputs,
                            const QPointF &pos)
{
    transform->createParameters(FlowItem::asSources(inputs), false);
    auto *item = new TransformItem(transform);
    item->setPos(pos);
    model.addItem(item);
    for (FlowItem *input : inputs)
        model.connectItems(input, item);
    return item;
}

namespace {

// Runs before main in every test program: the helpers are linked as objects, so this is
// never left out.
struct TestEnvironment
{
    TestEnvironment()
    {
        QStandardPaths::setTestModeEnabled(true);
        // Recovery files and temporary copies go to the temporary folder; a private one keeps
        // a test from leaving a recovery file that a real window would later offer to restore.
        if (folder.isValid())
            qputenv("TMPDIR", QFile::encodeName(folder.path()));
    }
    QTemporaryDir folder;
};

const TestEnvironment environment;

} // namespace
