#include "transforms/transformintersect.h"

#include "graph/node.h"

Dataset &TransformIntersect::process(Dataset &output, const QList<Node *> &inputs, bool &)
{
    if (!inputs.isEmpty())
        output = *inputs.first()->dataset();
    return output;
}
