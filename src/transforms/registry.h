#pragma once

#include <QList>
#include <QString>

class Transform;

// The one list of transform classes: the Left pane, the canvas menu, documents and the
// command line all find transforms here. Adding a transform is one source pair and one line
// in registry.cpp. Prototypes carry no options; a new item clones one and calls
// createParameters(). They live as long as the process.
namespace TransformRegistry {

// One prototype of every class, sorted by display name regardless of case.
const QList<Transform *> &prototypes();
// The prototype with this typeName, or null.
Transform *prototype(const QString &typeName);
// A new transform of the class with this typeName, without options; null when unknown.
Transform *create(const QString &typeName);
// Makes prototype known ahead of all others; ownership passes. Tests use it for transforms
// of their own.
void addPrototype(Transform *prototype);

} // namespace TransformRegistry

// One new instance of every class, in the alphabetical order of the class names; the caller
// owns them.
QList<Transform *> createTransformPrototypes();
