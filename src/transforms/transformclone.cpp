#include "transforms/transformclone.h"

#include "graph/node.h"

QSet<QString> TransformClone::keywords() const
{
    QSet<QString> words = Transform::keywords();
    words << QStringLiteral("copy") << QStringLiteral("duplicate") << QStringLiteral("layout");
    return words;
}

Dataset &TransformClone::process(Dataset &output, const QList<Node *> &inputs, bool &)
{
    if (inputs.size() != 1)
        return output;
    output = inputDataset(inputs, 0);
    return output;
}
