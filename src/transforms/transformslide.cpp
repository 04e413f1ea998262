#include "transforms/transformslide.h"

#include "data/valueinterpretation.h"

#include <algorithm>

const TransformDescriptor &TransformSlide::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 54;
        d.typeName = QStringLiteral("Slide");
        d.displayName = QStringLiteral("Slide");
        d.category = CategoryFormat;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::ChangesValuesOnly
            | TransformDescriptor::OmitDisabledFromDetails;
        d.description
            = QStringLiteral("Move non-empty values in selected columns to adjacent empty cells.");
        d.keywords = QStringList {
            QStringLiteral("shift"),   QStringLiteral("move"),   QStringLiteral("gaps"),
            QStringLiteral("empty"),   QStringLiteral("blanks"), QStringLiteral("pack"),
            QStringLiteral("compact"), QStringLiteral("left"),   QStringLiteral("align")};
        d.create = createTransform<TransformSlide>;
        return d;
    }();
    return descriptor;
}

void TransformSlide::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    createAdjacentParameters(inputs, useRemembered,
                             QStringLiteral("Select the column(s) whose values you want to "
                                            "slide into empty cells."));
}

Dataset &TransformSlide::process(Dataset &output, const TransformInputs &inputs, const RunContext &,
                                 bool &)
{
    Walk walk;
    if (!readWalk(&walk))
        return output;

    const Dataset &input = *inputs.first().dataset;
    output = input;
    if (walk.vertical()) {
        const qint64 changed = slideColumns(input, walk, output);
        setResult(changed == 0 ? QStringLiteral("No changes")
                               : QStringLiteral("%1 %2 changed")
                                     .arg(formatCount(changed),
                                          changed == 1 ? QStringLiteral("column")
                                                       : QStringLiteral("columns")));
    } else {
        const qint64 changed = slideRows(input, walk, output);
        setResult(changed == 0
                      ? QStringLiteral("No changes")
                      : QStringLiteral("%1 %2 changed")
                            .arg(formatCount(changed),
                                 changed == 1 ? QStringLiteral("row") : QStringLiteral("rows")));
    }
    return output;
}

// Left and Right: each row's selected cells are packed at one end and the row, when it
// differs, is stored whole.
qint64 TransformSlide::slideRows(const Dataset &input, const Walk &walk, Dataset &output)
{
    const int rowCount = input.rowCount();
    const int count = walk.columns.size();
    const bool left = walk.direction == Left;
    QStringList packed;
    packed.reserve(count);
    qint64 changed = 0;
    for (int r = 0; r < rowCount; ++r) {
        reportRow(r, rowCount);
        const QStringList &row = input.row(r);
        packed.clear();
        for (int c : walk.columns) {
            if (!row.at(c).isEmpty())
                packed.append(row.at(c));
        }
        const int empties = count - packed.size();
        if (empties == 0 || packed.isEmpty())
            continue;
        // Slot i of the selected columns receives packed.at(i - offset), or nothing.
        const int offset = left ? 0 : empties;
        bool differs = false;
        for (int i = 0; i < count && !differs; ++i) {
            const int p = i - offset;
            const bool filled = p >= 0 && p < packed.size();
            differs = filled ? row.at(walk.columns.at(i)) != packed.at(p)
                             : !row.at(walk.columns.at(i)).isEmpty();
        }
        if (!differs)
            continue;
        QStringList rebuilt = row;
        for (int i = 0; i < count; ++i) {
            const int p = i - offset;
            rebuilt[walk.columns.at(i)] = p >= 0 && p < packed.size() ? packed.at(p) : QString();
        }
        output.setRow(r, rebuilt);
        ++changed;
    }
    return changed;
}

// Up and Down: within each run of rows (the whole table, or the rows of one key), a
// column's values are packed at the run's end in the direction of travel. Only the cells
// that change are written, so rows without a change stay shared with the input.
qint64 TransformSlide::slideColumns(const Dataset &input, const Walk &walk, Dataset &output)
{
    const int rowCount = input.rowCount();
    const int count = walk.columns.size();
    if (count == 0)
        return 0;
    const bool down = walk.direction == Down;
    QVector<bool> columnChanged(count, false);
    QVector<int> next(count);
    const QVector<QPair<int, int>> runs = rowRuns(input, walk);
    int step = 0;
    for (const auto &run : runs) {
        // Walk from the end that values travel to, so a value's slot is at or behind it.
        const int from = down ? run.second : run.first;
        const int to = down ? run.first : run.second;
        const int delta = down ? -1 : 1;
        next.fill(from);
        for (int r = from;; r += delta) {
            reportRow(step++, rowCount);
            for (int i = 0; i < count; ++i) {
                const int c = walk.columns.at(i);
                const QString &value = input.cell(r, c);
                if (value.isEmpty())
                    continue;
                const int slot = next[i];
                next[i] += delta;
                if (input.cell(slot, c) != value) {
                    output.setCell(slot, c, value);
                    columnChanged[i] = true;
                }
            }
            if (r == to)
                break;
        }
        for (int i = 0; i < count; ++i) {
            const int c = walk.columns.at(i);
            for (int r = next[i]; r != to + delta; r += delta) {
                if (!input.cell(r, c).isEmpty()) {
                    output.setCell(r, c, QString());
                    columnChanged[i] = true;
                }
            }
        }
    }
    return std::count(columnChanged.cbegin(), columnChanged.cend(), true);
}
