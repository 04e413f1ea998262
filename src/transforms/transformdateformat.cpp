#include "transforms/transformdateformat.h"

const TransformDescriptor &TransformDateFormat::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 12;
        d.typeName = QStringLiteral("Date_Format");
        d.displayName = QStringLiteral("DateTime Format");
        d.category = CategoryFormat;
        d.flags = TransformDescriptor::ChangesValuesOnly;
        d.description
            = QStringLiteral("Change the date and/or time format in the selected column(s).");
        d.create = createTransform<TransformDateFormat>;
        return d;
    }();
    return descriptor;
}

void TransformDateFormat::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);
}

Dataset &TransformDateFormat::process(Dataset &output, const TransformInputs &, const RunContext &,
                                      bool &)
{
    output = Dataset();
    return output;
}
