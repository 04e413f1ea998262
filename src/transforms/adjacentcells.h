#pragma once

#include "transforms/framework/transform.h"

#include <QList>
#include <QStringList>
#include <QVector>

class ColumnSource;
class Parameter;

// The base of Fill, Unfill and Slide: transforms that look at each selected cell together with
// its neighbour in a direction of travel. It owns their four common options (Columns,
// Direction, For, Key_Column) and the walk over neighbouring cells with the key rule, so that
// the three agree on what "adjacent" means.
//
// Walking orders: "Down" walks rows top to bottom and pairs each row with the one above, "Up"
// walks bottom to top and pairs each row with the one below. "Right" walks the selected columns
// of a row left to right and pairs each with the previous selected column, "Left" walks right
// to left and pairs each with the next selected column; unselected columns in between are
// stepped over. The key rule ("Rows with same key value") applies to Down and Up only: two
// cells of one row always belong to the same key, so Left and Right ignore it.
class AdjacentCellsTransform : public Transform
{
    Q_OBJECT

public:
    enum Direction { Down = 0, Up = 1, Left = 2, Right = 3 };
    enum ForRows { AllRows = 0, SameKeyRows = 1 };

    static QStringList directionNames();
    static QStringList forNames();

    QList<ParameterState> parameterStates() const override;

protected:
    // The options of one run, read into plain values before the row loops.
    struct Walk
    {
        QList<int> columns; // ascending positions
        int direction = Down;
        int keyColumn = -1; // -1 without the key rule
        bool vertical() const { return direction == Down || direction == Up; }
    };

    void createAdjacentParameters(const ColumnSources &inputs, bool useRemembered,
                                  const QString &columnsToolTip);
    // False, with the failure text as result, when an option is missing.
    bool readWalk(Walk *walk);

    // Whether rows a and b may be paired under the key rule.
    static bool sameKey(const Dataset &input, const Walk &walk, int a, int b)
    {
        return walk.keyColumn < 0 || input.cell(a, walk.keyColumn) == input.cell(b, walk.keyColumn);
    }

    // Calls visit(r, c, neighbourRow, neighbourColumn) for each selected cell that has a
    // neighbour against the direction of travel, in the walking order above, so that a cell's
    // neighbour has always been visited first. Pairs that the key rule keeps apart are skipped.
    template<typename Visit> void walkPairs(const Dataset &input, const Walk &walk, Visit visit)
    {
        const int rowCount = input.rowCount();
        const int columnCount = walk.columns.size();
        if (walk.vertical()) {
            const bool down = walk.direction == Down;
            for (int step = 0; step < rowCount; ++step) {
                reportRow(step, rowCount);
                const int r = down ? step : rowCount - 1 - step;
                const int neighbour = down ? r - 1 : r + 1;
                if (neighbour < 0 || neighbour >= rowCount || !sameKey(input, walk, r, neighbour))
                    continue;
                for (int c : walk.columns)
                    visit(r, c, neighbour, c);
            }
            return;
        }
        const bool right = walk.direction == Right;
        for (int r = 0; r < rowCount; ++r) {
            reportRow(r, rowCount);
            for (int step = 1; step < columnCount; ++step) {
                const int i = right ? step : columnCount - 1 - step;
                const int neighbour = right ? i - 1 : i + 1;
                visit(r, walk.columns.at(i), r, walk.columns.at(neighbour));
            }
        }
    }

    // The runs of consecutive rows [first, last] that values may move within: the whole
    // table, or each run of rows sharing a key value under the key rule.
    static QVector<QPair<int, int>> rowRuns(const Dataset &input, const Walk &walk);
};

// Stable ordering of rows by integer keys parsed beforehand (one parse per cell): rows whose
// key is valid come first, ascending or descending, ties in input order; rows without a valid
// key follow in input order. Returns the row positions in their new order.
QVector<int> orderRowsByKeys(const QVector<qint64> &keys, const QVector<bool> &valid,
                             bool descending);
