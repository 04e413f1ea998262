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

using namespace DocumentSupport;

namespace {

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

QDomElement ioElements(QDomDocument &doc, const FlowModel &model, int itemType,
                       const QString &group, const QString &name, const QString &folder)
{
    QDomElement parent = doc.createElement(group);
    const QList<FlowItem *> nodes = nodesById(model, itemType);
    for (const FlowItem *node : nodes) {
        QDomElement element = doc.createElement(name);
        static_cast<const IOItem *>(node)->writeAttributes(element, folder);
        parent.appendChild(element);
    }
    return parent;
}

QDomElement transformElements(QDomDocument &doc, const FlowModel &model)
{
    using namespace XmlAttributes;
    QDomElement parent = doc.createElement(QStringLiteral("transforms"));
    const QList<FlowItem *> nodes = nodesById(model, FlowItem::TransformKind);
    for (const FlowItem *node : nodes) {
        const Transform *transform = static_cast<const TransformItem *>(node)->transform();
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

QDomElement noteElements(QDomDocument &doc, const FlowModel &model)
{
    using namespace XmlAttributes;
    QDomElement parent = doc.createElement(QStringLiteral("notes"));
    const QList<FlowItem *> nodes = nodesById(model, FlowItem::NoteKind);
    for (const FlowItem *node : nodes) {
        const auto *note = static_cast<const NoteItem *>(node);
        QDomElement element = doc.createElement(QStringLiteral("note"));
        setInt(element, QStringLiteral("id"), note->id());
        setText(element, QStringLiteral("comment"), note->comment());
        // Notes came after the old point form and never had it.
        const QPointF pos = note->pos();
        element.setAttribute(QStringLiteral("pos_v12"),
                             QString::number(pos.x(), 'g', 6) + ListSeparator
                                 + QString::number(pos.y(), 'g', 6));
        setText(element, QStringLiteral("color"), note->color());
        setInt(element, QStringLiteral("arrow"), note->arrow());
        parent.appendChild(element);
    }
    return parent;
}

QDomElement connectionElements(QDomDocument &doc, const FlowModel &model)
{
    QList<QPair<int, int>> ids;
    const QList<FlowConnection *> connections = model.connections();
    ids.reserve(connections.size());
    for (const FlowConnection *connection : connections)
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

QString documentText(const FlowModel &model, const DocumentData &data, const QString &path,
                     const QString &savedBy)
{
    const HashSeedGuard seed;
    const QString folder = documentFolder(path);
    QDomDocument doc(productName());
    QDomElement root = doc.createElement(QStringLiteral("root"));
    doc.appendChild(root);
    root.appendChild(metaElement(doc, data, path, savedBy));
    root.appendChild(ioElements(doc, model, FlowItem::InputKind, QStringLiteral("inputs"),
                                QStringLiteral("input"), folder));
    root.appendChild(transformElements(doc, model));
    root.appendChild(ioElements(doc, model, FlowItem::OutputKind, QStringLiteral("outputs"),
                                QStringLiteral("output"), folder));
    root.appendChild(noteElements(doc, model));
    root.appendChild(connectionElements(doc, model));
    root.appendChild(batchValueElements(doc, data));
    root.appendChild(batchLoggingElement(doc, data));
    return doc.toString(4);
}

bool saveDocument(DocumentLock *lock, const FlowModel &model, const DocumentData &data,
                  const QString &path, QString *error)
{
    const QString cannotOpen = QStringLiteral("Can't open file '%1' to write.").arg(path);
    const bool holdsPath = lock && lock->isHeld() && isSameFile(lock->path(), path);
    if (!holdsPath && isLockedElsewhere(path))
        return fail(error, cannotOpen);

    const QString text = documentText(model, data, path, lastSavedBy());
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

bool saveRecoveryFile(const FlowModel &model, const DocumentData &data, QString *error)
{
    DocumentData recovery = data;
    recovery.id.clear();
    return saveDocument(nullptr, model, recovery, recoveryFilePath(), error);
}

bool periodicRecoverySave(const FlowModel &model, const DocumentData &data, bool modified,
                          const std::function<void(const QString &)> &showStatus,
                          const std::function<void(bool)> &busy)
{
    if (!isRecoverySaveDue(modified, model.items().size()))
        return false;
    if (busy)
        busy(true);
    if (showStatus)
        showStatus(QStringLiteral("Saving auto recovery file"));
    QString error;
    const bool saved = saveRecoveryFile(model, data, &error);
    if (busy)
        busy(false);
    if (saved)
        return true;
    qWarning("%s",
             qUtf8Printable(QStringLiteral("Error saving auto recovery file ") + recoveryFilePath()
                            + QStringLiteral(" : ") + error));
    return false;
}

bool emergencyRecoverySave(const FlowModel &model, const DocumentData &data)
{
    if (!isEmergencySaveDue(model.items().size()))
        return false;
    QString error;
    return saveRecoveryFile(model, data, &error);
}
