#include "transforms/registry.h"

#include "transforms/transformcase.h"
#include "transforms/transformclone.h"

QList<Transform *> createTransformPrototypes()
{
    return {
        new TransformCase,
        new TransformClone,
    };
}
