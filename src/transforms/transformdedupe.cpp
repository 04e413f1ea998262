#include "transforms/transformdedupe.h"

#include "graph/node.h"

Dataset &TransformDedupe::process(Dataset &output, const QList<Node *> &inputs, bool &)
{
    if (!inputs.isEmpty())
        output = *inputs.first()->dataset();
    return output;
}
