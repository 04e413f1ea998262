#include "testutil.h"

#include "graph/graphscene.h"
#include "graph/inputnode.h"
#include "graph/transformnode.h"
#include "shell/messageboxes.h"
#include "transforms/framework/transform.h"

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
