#include "graph/document.h"

#include "graph/connection.h"
#include "graph/graphscene.h"
#include "graph/inputnode.h"
#include "graph/notenode.h"
#include "graph/outputnode.h"
#include "graph/transformnode.h"
#include "graph/xmlattributes.h"
#include "io/pathvariables.h"
#include "shell/guards.h"
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

namespace {

const QString &productName()
{
    static const QString name = QStringLiteral("Tabulon");
    return name;
}

// The version at which the operators "Is empty" and "Is not empty" moved.
constexpr int EmptyOperatorsMovedVersion = 57;

// Attribute order inside QDomDocument follows a hash; a fixed seed while the document is
// built makes the order the same in every file. A process that hashes with seed 0 anyway
// keeps it; any other goes back to a random seed.
class HashSeedGuard
{
public:
    HashSeedGuard()
        : m_previous(qGlobalQHashSeed())
    {
        qSetGlobalQHashSeed(0);
    }
    ~HashSeedGuard() { qSetGlobalQHashSeed(m_previous == 0 ? 0 : -1); }
    HashSeedGuard(const HashSeedGuard &) = delete;
    HashSeedGuard &operator=(const HashSeedGuard &) = delete;

private:
    int m_previous;
};

bool fail(QString *error, const QString &message)
{
    if (error)
        *error = message;
    return false;
}

QString documentFolder(const QString &path)
{
    return QFileInfo(path).absolutePath();
}

bool idLess(const Node *a, const Node *b)
{
    return a->id() < b->id();
}

QList<Node *> nodesById(const GraphScene &scene, int itemType)
{
    QList<Node *> nodes = scene.nodesOfType(itemType);
    std::sort(nodes.begin(), nodes.end(), idLess);
    return nodes;
}

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

// Writing ---------------------------------------------------------------------------------

void appendMetaValue(QDomDocument &doc, QDomElement &meta, const QString &name,
                     const std::function<void(QDomElement &)> &setValue)
{
    QDomElement element = doc.createElement(name);
    setValue(element);
    meta.appendChild(element);
}

QDomElement metaElement(QDomDocument &doc, const DocumentData &data, const QString &path,
                        const QString &savedBy)
{
    using namespace XmlAttributes;
    const QString value = QStringLiteral("value");
    QDomElement meta = doc.createElement(QStringLiteral("meta"));
    appendMetaValue(doc, meta, QStringLiteral("version"),
                    [&](QDomElement &e) { setInt(e, value, CurrentDocumentVersion); });
    appendMetaValue(doc, meta, QStringLiteral("last_saved_by"),
                    [&](QDomElement &e) { setText(e, value, savedBy); });
    appendMetaValue(doc, meta, QStringLiteral("locale"),
                    [&](QDomElement &e) { setText(e, value, QLocale().name()); });
    if (!data.id.isEmpty())
        appendMetaValue(doc, meta, QStringLiteral("id"),
                        [&](QDomElement &e) { setText(e, value, data.id); });
    appendMetaValue(doc, meta, QStringLiteral("snap_to_grid"),
                    [&](QDomElement &e) { setBool(e, value, data.snapToGrid); });
    appendMetaValue(doc, meta, QStringLiteral("notes"),
                    [&](QDomElement &e) { setText(e, value, data.notes); });
    appendMetaValue(doc, meta, QStringLiteral("doc_path"),
                    [&](QDomElement &e) { setText(e, value, QDir::toNativeSeparators(path)); });
    appendMetaValue(doc, meta, QStringLiteral("auto_run_on"),
                    [&](QDomElement &e) { setBool(e, value, data.autoRun); });
    return meta;
}

QDomElement ioElements(QDomDocument &doc, const GraphScene &scene, int itemType,
                       const QString &group, const QString &name, const QString &folder)
{
    QDomElement parent = doc.createElement(group);
    const QList<Node *> nodes = nodesById(scene, itemType);
    for (const Node *node : nodes) {
        QDomElement element = doc.createElement(name);
        static_cast<const IONode *>(node)->writeAttributes(element, folder);
        parent.appendChild(element);
    }
    return parent;
}

QDomElement transformElements(QDomDocument &doc, const GraphScene &scene)
{
    using namespace XmlAttributes;
    QDomElement parent = doc.createElement(QStringLiteral("transforms"));
    const QList<Node *> nodes = nodesById(scene, Node::TransformType);
    for (const Node *node : nodes) {
        const Transform *transform = static_cast<const TransformNode *>(node)->transform();
        QDomElement element = doc.createElement(QStringLiteral("transform"));
        setInt(element, QStringLiteral("id"), node->id());
        setText(element, QStringLiteral("name"), transform->typeName());
        setText(element, QStringLiteral("comment"), node->comment());
        setPosition(element, node->pos());
        QDomElement parameters = doc.createElement(QStringLiteral("parameters"));
        const QList<Parameter *> list = transform->parameters();
        for (const Parameter *parameter : list) {
            QDomElement stored = doc.createElement(QStringLiteral("parameter"));
            setText(stored, QStringLiteral("name"), parameter->key());
            setInt(stored, QStringLiteral("type"), int(parameter->type()));
            // The text form percent-encodes its free text fields itself; the attribute holds
            // it as it stands, written even when empty so that an empty value stays empty.
            stored.setAttribute(QStringLiteral("value"), parameter->toText());
            parameters.appendChild(stored);
        }
        element.appendChild(parameters);
        parent.appendChild(element);
    }
    return parent;
}

QDomElement noteElements(QDomDocument &doc, const GraphScene &scene)
{
    using namespace XmlAttributes;
    QDomElement parent = doc.createElement(QStringLiteral("notes"));
    const QList<Node *> nodes = nodesById(scene, Node::NoteType);
    for (const Node *node : nodes) {
        const auto *note = static_cast<const NoteNode *>(node);
        QDomElement element = doc.createElement(QStringLiteral("note"));
        setInt(element, QStringLiteral("id"), note->id());
        setText(element, QStringLiteral("comment"), note->comment());
        // Notes came after the old point form and never had it.
        const QPointF pos = note->pos();
        element.setAttribute(QStringLiteral("pos_v12"),
                             QString::number(pos.x(), 'g', 6) + ListSeparator
                                 + QString::number(pos.y(), 'g', 6));
        setColor(element, QStringLiteral("color"), note->color());
        setInt(element, QStringLiteral("arrow"), note->arrow());
        parent.appendChild(element);
    }
    return parent;
}

QDomElement connectionElements(QDomDocument &doc, const GraphScene &scene)
{
    QList<QPair<int, int>> ids;
    const QList<Connection *> connections = scene.allConnections();
    ids.reserve(connections.size());
    for (const Connection *connection : connections)
        ids.append({connection->source()->id(), connection->target()->id()});
    std::sort(ids.begin(), ids.end());
    QDomElement parent = doc.createElement(QStringLiteral("connections"));
    for (const auto &pair : qAsConst(ids)) {
        QDomElement element = doc.createElement(QStringLiteral("connection"));
        XmlAttributes::setInt(element, QStringLiteral("start_id"), pair.first);
        XmlAttributes::setInt(element, QStringLiteral("end_id"), pair.second);
        parent.appendChild(element);
    }
    return parent;
}

QDomElement batchValueElements(QDomDocument &doc, const DocumentData &data)
{
    using namespace XmlAttributes;
    QDomElement parent = doc.createElement(QStringLiteral("batch_values"));
    for (const BatchValue &cell : data.batchValues) {
        QDomElement element = doc.createElement(QStringLiteral("batch_value"));
        setInt(element, QStringLiteral("row"), cell.row);
        setText(element, QStringLiteral("alias"), cell.alias);
        setText(element, QStringLiteral("value"), cell.value);
        parent.appendChild(element);
    }
    return parent;
}

QDomElement batchLoggingElement(QDomDocument &doc, const DocumentData &data)
{
    using namespace XmlAttributes;
    QDomElement element = doc.createElement(QStringLiteral("batch_logging"));
    setBool(element, QStringLiteral("verbose"), data.batchLogging.verbose);
    setBool(element, QStringLiteral("enabled"), data.batchLogging.enabled);
    setText(element, QStringLiteral("path"), data.batchLogging.path);
    setInt(element, QStringLiteral("mode"), data.batchLogging.mode);
    return element;
}

bool isSameFile(const QString &a, const QString &b)
{
    return QFileInfo(a).absoluteFilePath() == QFileInfo(b).absoluteFilePath();
}

// True when another holder has the document locked; such a document is not written over.
bool isLockedElsewhere(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    const int descriptor = ::open(name.constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool locked = ::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    ::close(descriptor);
    return locked;
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
    GraphScene *scene;
    int version;
    QString folder;
    QHash<int, Node *> nodes;
    int highestId = -1;
    Tally deprecated;
    Tally unknown;

    void add(Node *node)
    {
        scene->addNode(node);
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
        auto *node = new TransformNode(transform, id, QString(),
                                       XmlAttributes::text(element, QStringLiteral("comment")));
        node->setPos(XmlAttributes::position(element));
        add(node);
    }

    void readNote(const QDomElement &element)
    {
        const int id = takeId(element);
        if (id == -1)
            return;
        auto *note = new NoteNode(id);
        note->setComment(XmlAttributes::text(element, QStringLiteral("comment")));
        note->setPos(XmlAttributes::position(element));
        note->setColor(XmlAttributes::color(element, QStringLiteral("color"), note->color()));
        note->setArrow(XmlAttributes::intValue(element, QStringLiteral("arrow"), 0));
        add(note);
    }

    void readConnection(const QDomElement &element)
    {
        Node *source
            = nodes.value(XmlAttributes::intValue(element, QStringLiteral("start_id"), -1));
        Node *target = nodes.value(XmlAttributes::intValue(element, QStringLiteral("end_id"), -1));
        if (source && target)
            scene->connectNodes(source, target);
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

// Saving -------------------------------------------------------------------------------------

QString lastSavedBy(const QDateTime &when)
{
    const QVersionNumber version = QVersionNumber::fromString(QStringLiteral(TABULON_VERSION));
    QString system = QSysInfo::prettyProductName();
    system.remove(QLatin1Char('('));
    system.remove(QLatin1Char(')'));
    QString text
        = QStringLiteral("%1_v%2_%3_%4_on_%5_%6_at_%7_%8")
              .arg(productName(), QString::number(version.majorVersion()),
                   QString::number(version.minorVersion()), QString::number(version.microVersion()),
                   system, QSysInfo::currentCpuArchitecture(), when.date().toString(Qt::ISODate),
                   when.time().toString(Qt::ISODate));
    const QString user = PathVariables::localUserName();
    if (!user.isEmpty())
        text.prepend(QStringLiteral("%1_using_").arg(user));
    text.replace(QLatin1Char(' '), QLatin1Char('_'));
    text.replace(QLatin1Char(':'), QLatin1Char('_'));
    text.replace(QLatin1Char('.'), QLatin1Char('_'));
    return text;
}

QString documentText(const GraphScene &scene, const DocumentData &data, const QString &path,
                     const QString &savedBy)
{
    const HashSeedGuard seed;
    const QString folder = documentFolder(path);
    QDomDocument doc(productName());
    QDomElement root = doc.createElement(QStringLiteral("root"));
    doc.appendChild(root);
    root.appendChild(metaElement(doc, data, path, savedBy));
    root.appendChild(ioElements(doc, scene, Node::InputType, QStringLiteral("inputs"),
                                QStringLiteral("input"), folder));
    root.appendChild(transformElements(doc, scene));
    root.appendChild(ioElements(doc, scene, Node::OutputType, QStringLiteral("outputs"),
                                QStringLiteral("output"), folder));
    root.appendChild(noteElements(doc, scene));
    root.appendChild(connectionElements(doc, scene));
    root.appendChild(batchValueElements(doc, data));
    root.appendChild(batchLoggingElement(doc, data));
    return doc.toString(4);
}

bool saveDocument(DocumentLock *lock, const GraphScene &scene, const DocumentData &data,
                  const QString &path, QString *error)
{
    const QString cannotOpen = QStringLiteral("Can't open file '%1' to write.").arg(path);
    const bool holdsPath = lock && lock->isHeld() && isSameFile(lock->path(), path);
    if (!holdsPath && isLockedElsewhere(path))
        return fail(error, cannotOpen);

    const QString text = documentText(scene, data, path, lastSavedBy());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return fail(error, cannotOpen);
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    stream << text;
    stream.flush();
    if (stream.status() != QTextStream::Ok) {
        const QString reason = file.errorString();
        file.cancelWriting();
        return fail(error, QStringLiteral("Can't save to file. %1").arg(reason));
    }
    if (!file.commit())
        return fail(error, QStringLiteral("Can't commit to file. %1").arg(file.errorString()));
    if (holdsPath)
        lock->reacquire();
    return true;
}

// Loading ------------------------------------------------------------------------------------

bool loadDocument(GraphScene *scene, const QString &path, DocumentData *data, bool *laterVersion,
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

    // Outputs find their document, for relative paths and variables, through the scene.
    scene->setDocumentPath(QFileInfo(path).absoluteFilePath());
    DocumentData read;
    Loader loader {scene, readMeta(root, &read), documentFolder(path), {}, -1, {}, {}};
    if (laterVersion)
        *laterVersion = loader.version > CurrentDocumentVersion;

    forEachElement(root, QStringLiteral("inputs"), QStringLiteral("input"),
                   [&loader](const QDomElement &e) { loader.readIONode<InputNode>(e); });
    forEachElement(root, QStringLiteral("transforms"), QStringLiteral("transform"),
                   [&loader](const QDomElement &e) { loader.readTransform(e); });
    forEachElement(root, QStringLiteral("outputs"), QStringLiteral("output"),
                   [&loader](const QDomElement &e) { loader.readIONode<OutputNode>(e); });
    forEachElement(root, QStringLiteral("notes"), QStringLiteral("note"),
                   [&loader](const QDomElement &e) { loader.readNote(e); });
    forEachElement(root, QStringLiteral("connections"), QStringLiteral("connection"),
                   [&loader](const QDomElement &e) { loader.readConnection(e); });
    readBatchData(root, &read);

    if (loader.highestId >= 0)
        Node::raiseIdCounter(loader.highestId);
    reportDropped(loader.deprecated, loader.unknown, messages);
    if (data)
        *data = read;
    return true;
}

QList<InputNode *> inputsWithMissingFiles(const GraphScene &scene)
{
    QList<InputNode *> missing;
    const QList<Node *> inputs = nodesById(scene, Node::InputType);
    for (Node *node : inputs) {
        auto *input = static_cast<InputNode *>(node);
        if (input->medium() != InputNode::File || input->path().isEmpty())
            continue;
        QString path;
        QString sheet;
        PathVariables::splitSheet(input->path(), path, sheet);
        if (!QFileInfo::exists(path))
            missing.append(input);
    }
    return missing;
}

QString missingInputFilesQuestion(const QList<InputNode *> &inputs)
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

// Lock ---------------------------------------------------------------------------------------

DocumentLock::~DocumentLock()
{
    release();
}

bool DocumentLock::acquire(const QString &path)
{
    release();
    const QByteArray name = QFile::encodeName(path);
    const int descriptor = ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0)
        return false;
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        ::close(descriptor);
        return false;
    }
    m_descriptor = descriptor;
    m_path = path;
    return true;
}

bool DocumentLock::reacquire()
{
    const QString path = m_path;
    return !path.isEmpty() && acquire(path);
}

void DocumentLock::release()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
    m_path.clear();
}

QString DocumentLock::failureMessage(const QString &path)
{
    return QStringLiteral("Cannot open '%1' to write.\nYou may have insufficient access, it may be "
                          "read-only or it may be open in another application.")
        .arg(path);
}

// Recovery -----------------------------------------------------------------------------------

QString recoveryFilePath()
{
    return QDir::tempPath() + QLatin1Char('/') + QStringLiteral("TabulonAutoRecovery")
        + QLatin1Char('.') + QStringLiteral("tabulon");
}

qint64 recoveryFileAge()
{
    const QFileInfo info(recoveryFilePath());
    if (!info.exists())
        return -1;
    return info.lastModified().secsTo(QDateTime::currentDateTime());
}

bool removeRecoveryFile()
{
    return QFile::remove(recoveryFilePath());
}

bool isRecoverySaveDue(bool modified, int itemCount)
{
    if (!modified || itemCount < 1)
        return false;
    const qint64 age = recoveryFileAge();
    return age < 0 || age > 60;
}

bool isEmergencySaveDue(int itemCount)
{
    if (itemCount < 1)
        return false;
    const qint64 age = recoveryFileAge();
    return age < 0 || age >= 1;
}

bool saveRecoveryFile(const GraphScene &scene, const DocumentData &data, QString *error)
{
    DocumentData recovery = data;
    recovery.id.clear();
    return saveDocument(nullptr, scene, recovery, recoveryFilePath(), error);
}

bool periodicRecoverySave(const GraphScene &scene, const DocumentData &data, bool modified,
                          const std::function<void(const QString &)> &showStatus)
{
    if (!isRecoverySaveDue(modified, scene.nodes().size()))
        return false;
    const BusyCursor busy;
    if (showStatus)
        showStatus(QStringLiteral("Saving auto recovery file"));
    QString error;
    if (saveRecoveryFile(scene, data, &error))
        return true;
    qWarning("%s",
             qUtf8Printable(QStringLiteral("Error saving auto recovery file ") + recoveryFilePath()
                            + QStringLiteral(" : ") + error));
    return false;
}

bool emergencyRecoverySave(const GraphScene &scene, const DocumentData &data)
{
    if (!isEmergencySaveDue(scene.nodes().size()))
        return false;
    QString error;
    return saveRecoveryFile(scene, data, &error);
}
