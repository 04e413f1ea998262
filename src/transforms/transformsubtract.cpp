#include "transforms/transformsubtract.h"

#include "graph/node.h"

Dataset &TransformSubtract::process(Dataset &output, const QList<Node *> &inputs, bool &)
{
    if (!inputs.isEmpty())
        output = *inputs.first()->dataset();
    return output;
}
