#include "transforms/transformif.h"

#include "graph/node.h"

Dataset &TransformIf::process(Dataset &output, const QList<Node *> &inputs, bool &)
{
    if (!inputs.isEmpty())
        output = *inputs.first()->dataset();
    return output;
}
