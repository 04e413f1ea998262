#include "transforms/transformremovecols.h"

#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"

const TransformDescriptor &TransformRemoveCols::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 42;
        d.typeName = QStringLiteral("Remove");
        d.displayName = QStringLiteral("Remove Cols");
        d.category = CategoryColumn;
        d.flags = TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Uncheck the column(s) you wish to remove.");
        d.keywords = QStringList {QStringLiteral("delete"), QStringLiteral("drop"),
                                  QStringLiteral("keep"),   QStringLiteral("select"),
                                  QStringLiteral("hide"),   QStringLiteral("remove")};
        d.create = createTransform<TransformRemoveCols>;
        return d;
    }();
    return descriptor;
}

void TransformRemoveCols::copyFrom(const Transform &other)
{
    Transform::copyFrom(other);
    const auto &source = static_cast<const TransformRemoveCols &>(other);
    m_knownColumns = source.m_knownColumns;
    m_knowsColumns = source.m_knowsColumns;
}

void TransformRemoveCols::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
    ColumnSource *input = inputs.value(0);

    auto *columns = new Parameter(ParameterType::MultipleColumnsOrdered, QStringLiteral("Columns"),
                                  QStringLiteral("Columns"), input);
    columns->setToolTip(QStringLiteral("Uncheck the column(s) you wish to remove."));
    addParameter(columns);

    // Every column starts checked: those the input has now, and those it shows later.
    m_knownColumns.clear();
    m_knowsColumns = true;
    if (input)
        keepNewColumns(columns, *input->columnDataset());
}

void TransformRemoveCols::connectParameters(ColumnSources inputs)
{
    Transform::connectParameters(inputs);
    Parameter *columns = parameter(QStringLiteral("Columns"));
    if (!columns)
        return;
    // A document's option is still text until its input has run; its columns are the
    // document's choice, to be learnt at the first run rather than checked as new.
    if (columns->hasPendingText()) {
        m_knowsColumns = false;
        m_knownColumns.clear();
        return;
    }
    if (columns->sourceNode())
        keepNewColumns(columns, *columns->sourceNode()->columnDataset());
}

void TransformRemoveCols::keepNewColumns(Parameter *columns, const Dataset &input)
{
    QList<ColumnId> kept = columns->toColumns();
    bool changed = false;
    const int columnCount = input.columnCount();
    for (int c = 0; c < columnCount; ++c) {
        const ColumnId id = input.columnId(c);
        if (id.isNull() || m_knownColumns.contains(id))
            continue;
        m_knownColumns.insert(id);
        if (m_knowsColumns && !kept.contains(id)) {
            kept.append(id);
            changed = true;
        }
    }
    m_knowsColumns = true;
    if (changed)
        columns->setColumns(kept);
}

Dataset &TransformRemoveCols::process(Dataset &output, const TransformInputs &inputs,
                                      const RunContext &, bool &)
{
    // Columns the input shows for the first time join the kept ones, so the option changes.
    Parameter *columnsOption = parameter(QStringLiteral("Columns"));

    const Dataset &input = *inputs.first().dataset;
    keepNewColumns(columnsOption, input);

    QList<int> keptIndexes;
    columnsOption->toColumnIndexes(&keptIndexes, true);
    const int columnCount = input.columnCount();
    QVector<bool> keep(columnCount, false);
    for (int c : qAsConst(keptIndexes))
        keep[c] = true;
    QList<int> order;
    order.reserve(columnCount);
    for (int c = 0; c < columnCount; ++c) {
        if (keep.at(c))
            order.append(c);
    }
    const int removed = columnCount - order.size();
    if (removed == 0) {
        output = input;
        setResult(QStringLiteral("No changes"));
        return output;
    }
    output = ColumnNames::arrangedColumns(input, order,
                                          [this](int r, int rowCount) { reportRow(r, rowCount); });
    setResult(QStringLiteral("%1 removed").arg(ColumnNames::countedCols(removed)));
    return output;
}
