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
    int type() const override { return 61; }
    QSet<QString> keywords() const override;
    int category() const override { return CategoryOther; }
    bool isAdvanced() const override { return true; }
    bool changesValuesOnly() const override { return false; }
    bool keepsSourceRows() const override { return false; }
    void createParameters(const QList<Node *> &inputs, bool useRemembered) override;
    Transform *clone() const override { return cloneAs<TransformStamp>(); }
    QString displayName() const override { return QStringLiteral("Stamp"); }
    QString typeName() const override { return QStringLiteral("Stamp"); }
    Dataset &process(Dataset &output, const QList<Node *> &inputs, bool &failed) override;
    QString description() const override
    {
        return QStringLiteral("Add a stamp with processing date, time and other information.");
    }
    int minimumInputs() const override { return 1; }
    int maximumInputs() const override { return 1; }
    bool usesDateFormats() const override { return false; }
    bool omitDisabledFromDetails() const override { return true; }
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
};
