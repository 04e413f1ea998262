#include "testdata.h"

#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/transformitem.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/transform.h"

#include <algorithm>

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

ProbeTransform::ProbeTransform(int minimum, int maximum)
{
    m_descriptor.type = 998;
    m_descriptor.typeName = QStringLiteral("Probe");
    m_descriptor.displayName = QStringLiteral("Probe");
    m_descriptor.minimumInputs = minimum;
    m_descriptor.maximumInputs = maximum;
    m_descriptor.description = QStringLiteral("Stacks rows.");
    m_descriptor.create = createTransform<ProbeTransform>;
    for (int i = 0; i < std::min(maximum, 2); ++i)
        addParameter(new Parameter(ParameterType::SingleColumn,
                                   QStringLiteral("Column_%1").arg(i + 1),
                                   QStringLiteral("Column %1").arg(i + 1), nullptr));
}

bool ProbeTransform::autoConfigure(const ColumnSources &)
{
    ++configureCalls;
    return configures;
}

void ProbeTransform::copyFrom(const Transform &other)
{
    Transform::copyFrom(other);
    const auto &probe = static_cast<const ProbeTransform &>(other);
    m_descriptor = probe.m_descriptor;
    configures = probe.configures;
}

Dataset &ProbeTransform::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                                 bool &)
{
    for (const TransformInput &input : inputs) {
        const Dataset *data = input.dataset;
        if (!output.hasColumns()) {
            output.setColumnCount(data->columnCount());
            output.setHeader(data->header());
        }
        for (int r = 0; r < data->rowCount(); ++r)
            output.appendRow(data->row(r), true);
    }
    return output;
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
