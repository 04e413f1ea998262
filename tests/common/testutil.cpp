#include "testutil.h"

#include "graph/graphscene.h"
#include "graph/inputnode.h"
#include "graph/transformnode.h"
#include "transforms/framework/transform.h"
#include "transforms/framework/transforminput.h"
#include "workbench/widgets.h"

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
    m_id = counter++;
    m_dataset.assignColumnIds(m_id);
}

DataSource *makeDataSource(const Dataset &dataset)
{
    return new DataSource(dataset);
}

namespace {

class DataNode : public Node
{
public:
    explicit DataNode(const Dataset &dataset)
    {
        m_dataset = dataset;
        m_dataset.assignColumnIds(id());
        m_status = UpToDate;
    }
    int type() const override { return InputType; }
    Node *clone() const override { return new DataNode(m_dataset); }
    QString displayName() const override { return QStringLiteral("Data"); }
    void run(bool, bool) override { }
};

} // namespace

Node *makeDataNode(const Dataset &dataset)
{
    return new DataNode(dataset);
}

namespace {

Dataset runInContext(Transform &transform, const ColumnSources &inputs,
                     const RunContext &context, bool *failed)
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

void prepareTestEnvironment(const QTemporaryDir &temporaryFolder)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    // Recovery files and temporary copies go to the temporary folder; a private one keeps a
    // test from leaving a recovery file that a real window would later offer to restore.
    if (temporaryFolder.isValid())
        qputenv("TMPDIR", QFile::encodeName(temporaryFolder.path()));
}

InputNode *addTextInput(GraphScene &scene, const QString &csv, const QPointF &pos)
{
    auto *input = new InputNode;
    input->setMedium(InputNode::Clipboard);
    input->setInputFileType(FileTypeDelimited);
    input->setHeader(InputNode::HasHeader);
    input->setText(csv);
    input->setPos(pos);
    scene.addNode(input);
    return input;
}

TransformNode *addTransform(GraphScene &scene, Transform *transform, const QList<Node *> &inputs,
                            const QPointF &pos)
{
    transform->createParameters(Node::asSources(inputs), false);
    auto *node = new TransformNode(transform);
    node->setPos(pos);
    scene.addNode(node);
    for (Node *input : inputs)
        scene.connectNodes(input, node);
    return node;
}

MessageBoxAnswerer::MessageBoxAnswerer()
{
    MessageBoxes::setHandler([this](QMessageBox::Icon, const QString &, const QString &text,
                                    QMessageBox::StandardButtons buttons,
                                    QMessageBox::StandardButton) {
        texts.append(text);
        return buttons.testFlag(QMessageBox::Yes) ? answer : QMessageBox::Ok;
    });
}

MessageBoxAnswerer::~MessageBoxAnswerer()
{
    MessageBoxes::setHandler(nullptr);
}
