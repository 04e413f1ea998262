#pragma once

#include "transforms/framework/columnsource.h"

#include <QList>
#include <QString>

#include <functional>

// One input of a run of a transform: the table and what column options bound to it resolve
// against. When takeable is set this run is the table's last reader, and the transform may
// take its rows over instead of copying them (Transform::inputDataset).
struct TransformInput
{
    ColumnSource *source = nullptr;
    Dataset *dataset = nullptr;
    bool takeable = false;
};

using TransformInputs = QList<TransformInput>;

// What a run of a transform may ask of the world around it, so that a transform needs no
// graph, scene or window to run.
struct RunContext
{
    // The process-wide Stop of the user; long loops look at it between rows.
    std::function<bool()> stopRequested;
    // The document being run; empty while it was never saved.
    QString documentPath;

    bool isStopRequested() const { return stopRequested && stopRequested(); }
};
