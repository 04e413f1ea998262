#include "transforms/transformslice.h"

#include "graph/node.h"

Dataset &TransformSlice::process(Dataset &output, const QList<Node *> &inputs, bool &)
{
    if (!inputs.isEmpty())
        output = *inputs.first()->dataset();
    return output;
}
