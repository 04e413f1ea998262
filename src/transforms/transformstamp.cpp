#include "transforms/transformstamp.h"

#include "transforms/columnnames.h"
#include "transforms/framework/parameter.h"

#include <QFileInfo>
#include <QSysInfo>

namespace {

enum Position { AtStart = 0, AtEnd = 1, EveryRow = 2 };

QStringList positionNames()
{
    return {QStringLiteral("At start"), QStringLiteral("At end"), QStringLiteral("Every row")};
}

} // namespace

const TransformDescriptor &TransformStamp::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 61;
        d.typeName = QStringLiteral("Stamp");
        d.displayName = QStringLiteral("Stamp");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::OmitDisabledFromDetails;
        d.description
            = QStringLiteral("Add a stamp with processing date, time and other information.");
        d.keywords = QStringList {QStringLiteral("date"),       QStringLiteral("time"),
                                  QStringLiteral("timestamp"),  QStringLiteral("datetime"),
                                  QStringLiteral("user"),       QStringLiteral("computer"),
                                  QStringLiteral("provenance"), QStringLiteral("audit")};
        d.create = createTransform<TransformStamp>;
        return d;
    }();
    return descriptor;
}

void TransformStamp::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    auto *format = new Parameter(ParameterType::Text, QStringLiteral("Format"),
                                 QStringLiteral("Format"), "-- d/M/yyyy HH:mm:ss --");
    format->setToolTip(QStringLiteral(
        "The date and time format of the stamp, e.g. d/M/yyyy HH:mm:ss.\n$(f)=document file "
        "name, $(c)=computer name, $(u)=user name.\nText after a ! is added as it is."));
    applyRememberedValue(useRemembered, format);
    addParameter(format);

    const QStringList positions = positionNames();
    auto *position = new Parameter(ParameterType::Selection, QStringLiteral("Position"),
                                   QStringLiteral("Position"), positions.first(), positions);
    position->setToolTip(
        QStringLiteral("%1=add a row at the start.\n%2=add a row at the end.\n"
                       "%3=add a column with the stamp in every row.")
            .arg(positions.at(AtStart), positions.at(AtEnd), positions.at(EveryRow)));
    applyRememberedValue(useRemembered, position);
    addParameter(position);

    auto *newName = new Parameter(ParameterType::Text, QStringLiteral("New_Name"),
                                  QStringLiteral("New column name"), displayName());
    newName->setToolTip(QStringLiteral("The name for the new column."));
    applyRememberedValue(useRemembered, newName);
    addParameter(newName);
}

QList<ParameterState> TransformStamp::parameterStates() const
{
    const Parameter *position = parameter(QStringLiteral("Position"));
    return {{QStringLiteral("New_Name"), position && position->toSelectionIndex() == EveryRow}};
}

QString TransformStamp::stampText(const QString &format, const QDateTime &when,
                                  const QString &documentName, const QString &hostName,
                                  const QString &userName)
{
    const int bang = format.indexOf(QLatin1Char('!'));
    QString text = when.toString(bang < 0 ? format : format.left(bang));
    text.replace(QLatin1String("$(f)"), documentName);
    text.replace(QLatin1String("$(c)"), hostName);
    text.replace(QLatin1String("$(u)"), userName);
    if (bang >= 0)
        text += format.midRef(bang + 1);
    return text;
}

QString TransformStamp::hostName()
{
    return QSysInfo::machineHostName().replace(QLatin1Char('.'), QLatin1Char('_'));
}

QString TransformStamp::userName()
{
    QString name = qEnvironmentVariable("USERNAME");
    if (name.isEmpty())
        name = qEnvironmentVariable("USER");
    return name;
}

Dataset &TransformStamp::process(Dataset &output, const TransformInputs &inputs,
                                 const RunContext &context, bool &)
{
    const Parameter *formatOption = &option(QStringLiteral("Format"));
    const Parameter *positionOption = &option(QStringLiteral("Position"));
    const Parameter *newNameOption = &option(QStringLiteral("New_Name"));

    const QString documentName
        = context.documentPath.isEmpty() ? QString() : QFileInfo(context.documentPath).fileName();
    const QString stamp = stampText(formatOption->toString(), QDateTime::currentDateTime(),
                                    documentName, hostName(), userName());

    output = inputDataset(inputs, 0);
    const int position = positionOption->toSelectionIndex();
    if (position == EveryRow) {
        const int c = ColumnNames::appendNamedColumn(output, newNameOption->toString());
        const int rowCount = output.rowCount();
        for (int r = 0; r < rowCount; ++r) {
            reportRow(r, rowCount);
            output.setCell(r, c, stamp);
        }
    } else {
        if (!output.hasColumns())
            output.setColumnCount(1);
        QStringList row {stamp};
        if (position == AtEnd)
            output.appendRow(row, true);
        else
            output.prependRow(row, true);
    }
    setResult(QStringLiteral("Stamp added"));
    return output;
}
