#include "transforms/transformstack.h"

#include "graph/node.h"

Dataset &TransformStack::process(Dataset &output, const QList<Node *> &inputs, bool &)
{
    if (!inputs.isEmpty())
        output = *inputs.first()->dataset();
    return output;
}
