#include "testutil.h"

#include "flow/inputitem.h"
#include "flow/transformitem.h"
#include "graph/graphscene.h"
#include "graph/node.h"
#include "shell/messageboxes.h"

InputNode *addTextInput(GraphScene &scene, const QString &csv, const QPointF &pos)
{
    InputItem *input = addTextInput(*scene.model(), csv, pos);
    return static_cast<InputNode *>(scene.nodeFor(input));
}

TransformNode *addTransform(GraphScene &scene, Transform *transform, const QList<Node *> &inputs,
                            const QPointF &pos)
{
    QList<FlowItem *> items;
    for (const Node *node : inputs)
        items.append(node->item());
    TransformItem *item = addTransform(*scene.model(), transform, items, pos);
    return static_cast<TransformNode *>(scene.nodeFor(item));
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
