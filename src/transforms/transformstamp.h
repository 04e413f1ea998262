#pragma once

#include "transforms/framework/transform.h"

#include <QDateTime>

// Adds a text made at run time (date, time, document, computer and user) as a row at the
// start or end of the data, or as a column in every row: a record of when and where the data
// was processed.
class TransformStamp : public Transform
{
    Q_OBJECT

public:
    const TransformDescriptor &descriptor() const override;
    void createParameters(const ColumnSources &inputs, bool useRemembered) override;
    QList<ParameterState> parameterStates() const override;

    // The stamp for a format at a time: the part before the first "!" is a date and time
    // format in which $(f), $(c) and $(u) then stand for the document's file name, the host
    // name and the user name; the part behind the "!" is appended as it stands.
    static QString stampText(const QString &format, const QDateTime &when,
                             const QString &documentName, const QString &hostName,
                             const QString &userName);
    // The host name with each "." made "_", and the user name from the environment.
    static QString hostName();
    static QString userName();

protected:
    Dataset &process(Dataset &output, const TransformInputs &inputs, const RunContext &context,
                     bool &failed) override;
};
