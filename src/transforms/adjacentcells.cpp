#include "transforms/adjacentcells.h"

#include "transforms/framework/parameter.h"

#include <algorithm>

QStringList AdjacentCellsTransform::directionNames()
{
    return {QStringLiteral("Down"), QStringLiteral("Up"), QStringLiteral("Left"),
            QStringLiteral("Right")};
}

QStringList AdjacentCellsTransform::forNames()
{
    return {QStringLiteral("All rows"), QStringLiteral("Rows with same key value")};
}

void AdjacentCellsTransform::createAdjacentParameters(const ColumnSources &inputs,
                                                      bool useRemembered,
                                                      const QString &columnsToolTip)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *columns = new Parameter(ParameterType::MultipleColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Columns"), input);
    columns->setToolTip(columnsToolTip);
    columns->selectOnlyColumn();
    addParameter(columns);

    const QStringList directions = directionNames();
    auto *direction = new Parameter(ParameterType::Selection, QStringLiteral("Direction"),
                                    QStringLiteral("Direction"), directions.first(), directions);
    direction->setToolTip(QStringLiteral("The direction in which values travel."));
    applyRememberedValue(useRemembered, direction);
    addParameter(direction);

    const QStringList fors = forNames();
    auto *forRows = new Parameter(ParameterType::Selection, QStringLiteral("For"),
                                  QStringLiteral("For"), fors.first(), fors);
    forRows->setToolTip(QStringLiteral(
        "Whether values may travel between any adjacent rows, or only between adjacent rows "
        "that have the same value in the key column."));
    applyRememberedValue(useRemembered, forRows);
    addParameter(forRows);

    auto *key = new Parameter(ParameterType::SingleColumn, QStringLiteral("Key_Column"),
                              QStringLiteral("Key column"), input);
    key->setToolTip(QStringLiteral("Adjacent rows are only paired when their values in this "
                                   "column are the same."));
    addParameter(key);
}

QList<ParameterState> AdjacentCellsTransform::parameterStates() const
{
    const Parameter *direction = parameter(QStringLiteral("Direction"));
    const Parameter *forRows = parameter(QStringLiteral("For"));
    const int directionIndex = direction ? direction->toSelectionIndex() : Down;
    const bool vertical = directionIndex == Down || directionIndex == Up;
    const bool byKey = forRows && forRows->toSelectionIndex() == SameKeyRows;
    return {{QStringLiteral("For"), vertical}, {QStringLiteral("Key_Column"), vertical && byKey}};
}

bool AdjacentCellsTransform::readWalk(Walk *walk)
{
    const Parameter *columns = parameter(QStringLiteral("Columns"));
    const Parameter *direction = parameter(QStringLiteral("Direction"));
    const Parameter *forRows = parameter(QStringLiteral("For"));
    const Parameter *key = parameter(QStringLiteral("Key_Column"));
    if (!columns || !direction || !forRows || !key) {
        setResult(failureText());
        return false;
    }
    columns->toColumnIndexes(&walk->columns, true);
    walk->direction = direction->toSelectionIndex();
    walk->keyColumn = -1;
    if (walk->vertical() && forRows->toSelectionIndex() == SameKeyRows) {
        walk->keyColumn = key->toColumnIndex();
        // Pairing across keys when the key is gone would do what the user ruled out; the
        // unset option is reported by the required-option check instead.
        if (walk->keyColumn < 0)
            walk->columns.clear();
    }
    return true;
}

QVector<QPair<int, int>> AdjacentCellsTransform::rowRuns(const Dataset &input, const Walk &walk)
{
    QVector<QPair<int, int>> runs;
    const int rowCount = input.rowCount();
    if (rowCount == 0)
        return runs;
    if (walk.keyColumn < 0) {
        runs.append({0, rowCount - 1});
        return runs;
    }
    int first = 0;
    for (int r = 1; r < rowCount; ++r) {
        if (!sameKey(input, walk, r, r - 1)) {
            runs.append({first, r - 1});
            first = r;
        }
    }
    runs.append({first, rowCount - 1});
    return runs;
}

QVector<int> orderRowsByKeys(const QVector<qint64> &keys, const QVector<bool> &valid,
                             bool descending)
{
    const int n = keys.size();
    QVector<int> order;
    order.reserve(n);
    for (int r = 0; r < n; ++r) {
        if (valid.at(r))
            order.append(r);
    }
    const int validCount = order.size();
    for (int r = 0; r < n; ++r) {
        if (!valid.at(r))
            order.append(r);
    }
    const qint64 *k = keys.constData();
    if (descending)
        std::stable_sort(order.begin(), order.begin() + validCount,
                         [k](int a, int b) { return k[a] > k[b]; });
    else
        std::stable_sort(order.begin(), order.begin() + validCount,
                         [k](int a, int b) { return k[a] < k[b]; });
    return order;
}
