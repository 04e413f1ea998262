#pragma once

#include "data/dataset.h"

#include <QObject>

#include <functional>

// Progress of a duplicate search. The engine reports only through this object, so that the
// transform and an interactive window can each show it their own way.
class DedupeProgress : public QObject
{
    Q_OBJECT

signals:
    void processed(qreal fraction);
    void processed(qreal fraction, int groups, int duplicates);
};

// What makes rows alike: the selected columns (0-based, any order: keys follow the dataset's
// column order), how each cell is normalised, and the closeness threshold in percent (100
// asks for exact matching).
struct DedupeOptions
{
    enum Mode { RemoveDuplicates = 0, KeepOnlyDuplicates = 1, AddInformation = 2 };

    QList<int> columns;
    bool caseSensitive = true;
    bool ignoreSpaces = false;
    bool ignorePunctuation = false;
    int threshold = 100;
    int mode = RemoveDuplicates;
    bool drilldown = false;
    // Read before each row: the Stop of a run, or of a window that searches on its own. The
    // search then keeps what it has found.
    std::function<bool()> stopRequested;
};

struct DedupeResult
{
    Dataset output;
    int groups = 0;
    int duplicates = 0;
};

namespace DedupeEngine {

// The names of the columns the information mode adds, in order.
QStringList informationColumns();

// One cell as it takes part in a key.
QString normalise(const QString &text, const DedupeOptions &options);

DedupeResult findDuplicates(DedupeProgress *progress, const Dataset &input,
                            const DedupeOptions &options);

} // namespace DedupeEngine
