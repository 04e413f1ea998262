#pragma once

#include <QList>

class Transform;

// One prototype of every transform class, in the alphabetical order of the class names.
// The caller owns the prototypes.
QList<Transform *> createTransformPrototypes();
