#include "flow/document.h"

#include "flow/documentsupport.h"
#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/noteitem.h"
#include "flow/outputitem.h"
#include "flow/transformitem.h"
#include "flow/xmlattributes.h"
#include "io/pathvariables.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/transform.h"
#include "transforms/registry.h"

#include <QDate>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMap>
#include <QSaveFile>
#include <QSysInfo>
#include <QTextStream>
#include <QVersionNumber>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

// Reading documents: the format's rules for older versions and for bad content, which never
// stop a load: unknown attributes are ignored, missing ones take defaults.

using namespace DocumentSupport;

namespace {

// The version at which the operators "Is empty" and "Is not empty" moved.
constexpr int EmptyOperatorsMovedVersion = 57;

// Migrations --------------------------------------------------------------------------------

// Before version 57 "Is empty" and "Is not empty" were operators 14 and 15. Reading converts
// them by the version, but a document that is saved before its options were ever read would
// carry the old numbers under the new version; so the stored text is converted at once. The
// walk over the fields is the one of the readers of filter and if terms.
QString upgradeOperators(ParameterType type, const QString &text, int version)
{
    if (version >= EmptyOperatorsMovedVersion
        || (type != ParameterType::FilterColumns && type != ParameterType::If))
        return text;
    const QChar separator = text.contains(XmlAttributes::ListSeparator)
        ? XmlAttributes::ListSeparator
        : QLatin1Char('^');
    QStringList fields = text.split(separator);
    bool changed = false;
    auto upgradeAt = [&fields, &changed](int at) {
        const QString op = fields.at(at).trimmed();
        if (op == QLatin1String("14") || op == QLatin1String("15")) {
            fields[at] = op == QLatin1String("14") ? QStringLiteral("19") : QStringLiteral("20");
            changed = true;
        }
    };
    if (type == ParameterType::FilterColumns) {
        if (fields.size() < 5)
            return text;
        for (int i = 2; i + 3 <= fields.size(); i += 3)
            upgradeAt(i + 1);
    } else {
        static const QString startIf = QStringLiteral("*StartIf*");
        static const QString endIf = QStringLiteral("*EndIf*");
        // The last field is the else value.
        const int count = fields.size() - 1;
        int i = 0;
        while (i < count && fields.at(i) == startIf && count - i >= 5) {
            ++i;
            bool closed = false;
            while (i < count && !closed) {
                if (fields.at(i) == endIf) {
                    if (i + 1 >= count)
                        break;
                    i += 2;
                    closed = true;
                } else if (i + 3 <= count) {
                    upgradeAt(i + 1);
                    i += 3;
                } else {
                    break;
                }
            }
            if (!closed)
                break;
        }
    }
    return changed ? fields.join(separator) : text;
}

// Reading ---------------------------------------------------------------------------------

using Tally = QMap<QString, int>;

QString metaText(const QDomElement &meta, const QString &name)
{
    return XmlAttributes::text(meta.firstChildElement(name), QStringLiteral("value"));
}

int metaInt(const QDomElement &meta, const QString &name, int defaultValue)
{
    return XmlAttributes::intValue(meta.firstChildElement(name), QStringLiteral("value"),
                                   defaultValue);
}

int readMeta(const QDomElement &root, DocumentData *data)
{
    const QDomElement meta = root.firstChildElement(QStringLiteral("meta"));
    data->lastSavedBy = metaText(meta, QStringLiteral("last_saved_by"));
    data->locale = metaText(meta, QStringLiteral("locale"));
    data->id = metaText(meta, QStringLiteral("id"));
    data->snapToGrid = metaInt(meta, QStringLiteral("snap_to_grid"), 0) != 0;
    data->notes = metaText(meta, QStringLiteral("notes"));
    data->docPath = metaText(meta, QStringLiteral("doc_path"));
    data->autoRun = metaInt(meta, QStringLiteral("auto_run_on"), 1) != 0;
    return metaInt(meta, QStringLiteral("version"), CurrentDocumentVersion);
}

// Walks the elements named child below the element named group of root.
template<typename Function>
void forEachElement(const QDomElement &root, const QString &group, const QString &child,
                    Function function)
{
    const QDomElement parent = root.firstChildElement(group);
    for (QDomElement element = parent.firstChildElement(child); !element.isNull();
         element = element.nextSiblingElement(child))
        function(element);
}

QList<StoredParameter> readStoredParameters(const QDomElement &transform)
{
    QList<StoredParameter> stored;
    forEachElement(transform, QStringLiteral("parameters"), QStringLiteral("parameter"),
                   [&stored](const QDomElement &element) {
                       StoredParameter parameter;
                       parameter.key = XmlAttributes::text(element, QStringLiteral("name"));
                       parameter.type
                           = XmlAttributes::intValue(element, QStringLiteral("type"), -1);
                       parameter.text = element.attribute(QStringLiteral("value"));
                       stored.append(parameter);
                   });
    return stored;
}

// The state of one load: where items go, which ids they had, what was dropped.
struct Loader
{
    FlowModel *model;
    int version;
    QString folder;
    QHash<int, FlowItem *> nodes;
    int highestId = -1;
    Tally deprecated;
    Tally unknown;

    void add(FlowItem *node)
    {
        model->addItem(node);
        nodes.insert(node->id(), node);
    }

    int takeId(const QDomElement &element)
    {
        const int id = XmlAttributes::intValue(element, QStringLiteral("id"), -1);
        highestId = std::max(highestId, id);
        return id;
    }

    template<typename T> void readIONode(const QDomElement &element)
    {
        const int id = takeId(element);
        if (id == -1)
            return;
        auto *node = new T(id);
        node->readAttributes(element, version, folder);
        add(node);
    }

    void readTransform(const QDomElement &element)
    {
        const int id = takeId(element);
        if (id == -1)
            return;
        const QString name = XmlAttributes::text(element, QStringLiteral("name"));
        const Transform *prototype = TransformRegistry::prototype(name);
        if (!prototype) {
            static const QStringList withdrawn {QStringLiteral("Replace"), QStringLiteral("Trim"),
                                                QStringLiteral("Rename")};
            ++(withdrawn.contains(name) ? deprecated : unknown)[name];
            return;
        }
        Transform *transform = prototype->clone();
        transform->createParameters({}, false);
        QList<StoredParameter> stored = readStoredParameters(element);
        prototype->migrateParameters(version, &stored);
        // Options stay in their text form until the items they name have data; saving before
        // that writes the same text back.
        for (const StoredParameter &entry : qAsConst(stored)) {
            Parameter *parameter = transform->parameter(entry.key);
            if (parameter)
                parameter->setPendingText(upgradeOperators(parameter->type(), entry.text, version),
                                          version);
        }
        auto *node = new TransformItem(transform, id, QString(),
                                       XmlAttributes::text(element, QStringLiteral("comment")));
        node->setPos(XmlAttributes::position(element));
        add(node);
    }

    void readNote(const QDomElement &element)
    {
        const int id = takeId(element);
        if (id == -1)
            return;
        auto *note = new NoteItem(id);
        note->setComment(XmlAttributes::text(element, QStringLiteral("comment")));
        note->setPos(XmlAttributes::position(element));
        note->setColor(XmlAttributes::text(element, QStringLiteral("color"), note->color()));
        note->setArrow(XmlAttributes::intValue(element, QStringLiteral("arrow"), 0));
        add(note);
    }

    void readConnection(const QDomElement &element)
    {
        FlowItem *source
            = nodes.value(XmlAttributes::intValue(element, QStringLiteral("start_id"), -1));
        FlowItem *target
            = nodes.value(XmlAttributes::intValue(element, QStringLiteral("end_id"), -1));
        if (source && target)
            model->connectItems(source, target);
    }
};

QString tallyLine(const QString &name, int count)
{
    return QStringLiteral("'%1' (%2 %3)")
        .arg(name, QString::number(count),
             count == 1 ? QStringLiteral("item") : QStringLiteral("items"));
}

QString advice(const QString &name)
{
    if (name == QLatin1String("Replace"))
        return QStringLiteral(" - use the newer 'Replace' transform.");
    if (name == QLatin1String("Trim"))
        return QStringLiteral(" - use the newer 'Whitespace' transform.");
    return QStringLiteral(" - use the newer 'Rename' transform.");
}

void reportDropped(const Tally &deprecated, const Tally &unknown, QStringList *messages)
{
    if (!messages)
        return;
    if (!deprecated.isEmpty()) {
        QStringList lines {QStringLiteral("The following deprecated transforms were not added:")};
        for (auto it = deprecated.constBegin(); it != deprecated.constEnd(); ++it)
            lines.append(tallyLine(it.key(), it.value()) + advice(it.key()));
        messages->append(lines.join(QLatin1Char('\n')));
    }
    if (!unknown.isEmpty()) {
        QStringList lines {QStringLiteral("The following unknown transforms were not added:")};
        for (auto it = unknown.constBegin(); it != unknown.constEnd(); ++it)
            lines.append(tallyLine(it.key(), it.value()));
        messages->append(lines.join(QLatin1Char('\n')));
    }
}

void readBatchData(const QDomElement &root, DocumentData *data)
{
    using namespace XmlAttributes;
    forEachElement(root, QStringLiteral("batch_values"), QStringLiteral("batch_value"),
                   [data](const QDomElement &element) {
                       BatchValue cell;
                       cell.row = intValue(element, QStringLiteral("row"), 0);
                       cell.alias = text(element, QStringLiteral("alias"));
                       cell.value = text(element, QStringLiteral("value"));
                       data->batchValues.append(cell);
                   });
    const QDomElement logging = root.firstChildElement(QStringLiteral("batch_logging"));
    data->batchLogging.verbose = boolValue(logging, QStringLiteral("verbose"), false);
    data->batchLogging.enabled = boolValue(logging, QStringLiteral("enabled"), false);
    data->batchLogging.path = text(logging, QStringLiteral("path"));
    data->batchLogging.mode = intValue(logging, QStringLiteral("mode"), 0);
}

} // namespace

// Loading ------------------------------------------------------------------------------------

bool loadDocument(FlowModel *model, const QString &path, DocumentData *data, bool *laterVersion,
                  QStringList *messages, QString *error)
{
    if (laterVersion)
        *laterVersion = false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(error, QStringLiteral("Can't open file '%1'.").arg(path));
    if (file.size() == 0)
        return fail(error, QStringLiteral("File '%1' is empty (size=0).").arg(path));

    QDomDocument doc;
    QString parseError;
    int line = 0;
    int column = 0;
    if (!doc.setContent(&file, &parseError, &line, &column))
        return fail(
            error,
            QStringLiteral("Format error '%1' detected at line %2 column %3.\nContact "
                           "support if you are sure this a %4 file.")
                .arg(parseError, QString::number(line), QString::number(column), productName()));
    if (doc.doctype().name() != productName())
        return fail(error, QStringLiteral("Incorrect document type."));
    const QDomElement root = doc.documentElement();
    if (root.isNull())
        return fail(error, QStringLiteral("Document root not found."));

    // Outputs find their document, for relative paths and variables, through the model.
    model->setDocumentPath(QFileInfo(path).absoluteFilePath());
    DocumentData read;
    Loader loader {model, readMeta(root, &read), documentFolder(path), {}, -1, {}, {}};
    if (laterVersion)
        *laterVersion = loader.version > CurrentDocumentVersion;

    forEachElement(root, QStringLiteral("inputs"), QStringLiteral("input"),
                   [&loader](const QDomElement &e) { loader.readIONode<InputItem>(e); });
    forEachElement(root, QStringLiteral("transforms"), QStringLiteral("transform"),
                   [&loader](const QDomElement &e) { loader.readTransform(e); });
    forEachElement(root, QStringLiteral("outputs"), QStringLiteral("output"),
                   [&loader](const QDomElement &e) { loader.readIONode<OutputItem>(e); });
    forEachElement(root, QStringLiteral("notes"), QStringLiteral("note"),
                   [&loader](const QDomElement &e) { loader.readNote(e); });
    forEachElement(root, QStringLiteral("connections"), QStringLiteral("connection"),
                   [&loader](const QDomElement &e) { loader.readConnection(e); });
    readBatchData(root, &read);

    if (loader.highestId >= 0)
        FlowItem::raiseIdCounter(loader.highestId);
    reportDropped(loader.deprecated, loader.unknown, messages);
    if (data)
        *data = read;
    return true;
}

QList<InputItem *> inputsWithMissingFiles(const FlowModel &model)
{
    QList<InputItem *> missing;
    const QList<FlowItem *> inputs = nodesById(model, FlowItem::InputKind);
    for (FlowItem *node : inputs) {
        auto *input = static_cast<InputItem *>(node);
        if (input->medium() != InputItem::File || input->path().isEmpty())
            continue;
        QString path;
        QString sheet;
        PathVariables::splitSheet(input->path(), path, sheet);
        if (!QFileInfo::exists(path))
            missing.append(input);
    }
    return missing;
}

QString missingInputFilesQuestion(const QList<InputItem *> &inputs)
{
    constexpr int MaximumListed = 10;
    if (inputs.size() == 1)
        return QStringLiteral("The following input file cannot be found:\n\n%1\n\nDo you wish to "
                              "choose a new input file?")
            .arg(QDir::toNativeSeparators(inputs.first()->path()));
    QStringList lines;
    for (int i = 0; i < inputs.size() && i < MaximumListed; ++i)
        lines.append(QDir::toNativeSeparators(inputs.at(i)->path()));
    if (inputs.size() > MaximumListed)
        lines.append(QStringLiteral("+ %1 more").arg(inputs.size() - MaximumListed));
    return QStringLiteral("The following %1 input files cannot be found:\n\n%2\n\nDo you wish to "
                          "choose new input files?")
        .arg(QString::number(inputs.size()), lines.join(QLatin1Char('\n')));
}

QString laterVersionWarning()
{
    return QStringLiteral("This document was created with a later version of the software.\nSome "
                          "information may not be readable and information may be lost if you "
                          "overwrite the existing document.\nIt is recommended that you click "
                          "'Save' and save it under a different name, so that the original stays "
                          "as it is.");
}
