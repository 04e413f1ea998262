#include "transforms/transformfilter.h"

#include "graph/node.h"

Dataset &TransformFilter::process(Dataset &output, const QList<Node *> &inputs, bool &)
{
    if (!inputs.isEmpty())
        output = *inputs.first()->dataset();
    return output;
}
