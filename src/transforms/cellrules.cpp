#include "transforms/cellrules.h"

#include "transforms/framework/parameter.h"

namespace CellRules {

Parameter *createColumnsParameter(ColumnSource *input, const QString &toolTip)
{
    auto *columns = new Parameter(ParameterType::MultipleColumns, QStringLiteral("Columns"),
                                  QStringLiteral("Columns"), input);
    columns->setToolTip(toolTip);
    columns->selectOnlyColumn();
    return columns;
}

QList<int> selectedColumns(const Parameter &option)
{
    QList<int> columns;
    option.toColumnIndexes(&columns, true);
    return columns;
}

} // namespace CellRules
