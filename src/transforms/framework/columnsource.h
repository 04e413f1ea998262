#pragma once

#include "data/dataset.h"

#include <QList>

// An upstream table whose columns options name: an item of the flow, or in a test a bare
// dataset. Options hold ColumnIds of its dataset, so that they follow columns through renames
// and moves. The table is only complete once the source has run, hence the ready flag.
class ColumnSource
{
public:
    virtual ~ColumnSource() = default;

    // The source's table, empty before its first run; never null.
    virtual const Dataset *columnDataset() const = 0;
    // True once the source has finished its run; texts read from a document wait for this
    // before they turn column numbers into ids.
    virtual bool isReady() const = 0;
};

// The inputs of a transform in canvas order, top to bottom.
using ColumnSources = QList<ColumnSource *>;
