#include "transforms/framework/parametermigration.h"

#include "transforms/framework/parameter.h"

#include <limits>

namespace ParameterMigration {

void lowerByOne(StoredParameter *parameter)
{
    bool ok = false;
    const int value = parameter->text.trimmed().toInt(&ok);
    if (ok && value > std::numeric_limits<int>::min())
        parameter->text = QString::number(value - 1);
}

void renameChoice(StoredParameter *parameter, const QString &from, const QString &to)
{
    if (Parameter::decodeText(parameter->text) == from)
        parameter->text = Parameter::encodeText(to);
}

} // namespace ParameterMigration
