#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

class DocumentLock;
class FlowModel;
class InputItem;

// One cell of the batch grid: the location given to the input or output with this alias in
// one run of a batch.
struct BatchValue
{
    int row = 0;
    QString alias;
    QString value;

    friend bool operator==(const BatchValue &a, const BatchValue &b)
    {
        return a.row == b.row && a.alias == b.alias && a.value == b.value;
    }
};

// How a batch run logs its results.
struct BatchLogging
{
    bool verbose = false;
    bool enabled = false;
    QString path;
    int mode = 0;

    friend bool operator==(const BatchLogging &a, const BatchLogging &b)
    {
        return a.verbose == b.verbose && a.enabled == b.enabled && a.path == b.path
            && a.mode == b.mode;
    }
};

// What a document holds besides its items and connections. The last three fields are what the
// file said when it was read; saving writes fresh values for them.
struct DocumentData
{
    QString notes;
    // The caller's identifier of the document; opaque to the format, left out when empty.
    QString id;
    bool autoRun = true;
    bool snapToGrid = false;
    // Kept in the order read, so that a document read and written again is unchanged.
    QList<BatchValue> batchValues;
    BatchLogging batchLogging;

    QString lastSavedBy;
    QString locale;
    QString docPath;
};

// Saves the flow and data to path through a temporary file that replaces the old one only
// once it is complete. When lock holds path, the lock is taken again on the new file; a path
// locked by another instance is refused. False with error set on failure.
bool saveDocument(DocumentLock *lock, const FlowModel &model, const DocumentData &data,
                  const QString &path, QString *error);

// The document text that saveDocument writes; savedBy is the value of last_saved_by.
QString documentText(const FlowModel &model, const DocumentData &data, const QString &path,
                     const QString &savedBy);
// Who saves now, in the form of last_saved_by.
QString lastSavedBy(const QDateTime &when = QDateTime::currentDateTime());

// Reads the document at path into model (normally empty) and data. Transforms that no longer
// exist are dropped with their connections and reported in messages, one entry a group.
// laterVersion says the file comes from a newer program. False with error set on failure.
bool loadDocument(FlowModel *model, const QString &path, DocumentData *data, bool *laterVersion,
                  QStringList *messages, QString *error);

// What the window asks and tells after opening a document: the file inputs whose file is
// missing (in id order), the question about them, and the warning about a newer document.
QList<InputItem *> inputsWithMissingFiles(const FlowModel &model);
QString missingInputFilesQuestion(const QList<InputItem *> &inputs);
QString laterVersionWarning();

// Holds an exclusive lock on an open document, so that a second instance cannot take it and
// opens the document without writing to it.
class DocumentLock
{
public:
    DocumentLock() = default;
    ~DocumentLock();
    DocumentLock(const DocumentLock &) = delete;
    DocumentLock &operator=(const DocumentLock &) = delete;

    // Opens path for reading and writing (creating it if missing) and locks it. False when
    // the file can't be opened for writing or another instance holds it; the previous lock is
    // released either way.
    bool acquire(const QString &path);
    // Locks the file now at path() again: saving replaces the file that was locked.
    bool reacquire();
    void release();
    bool isHeld() const { return m_descriptor >= 0; }
    const QString &path() const { return m_path; }

    // What the user is told when acquire fails.
    static QString failureMessage(const QString &path);

private:
    int m_descriptor = -1;
    QString m_path;
};

// The recovery file: an ordinary document at a fixed place, written now and then while the
// user works, and at a crash.
QString recoveryFilePath();
// Seconds since the recovery file was last written, or -1 when there is none.
qint64 recoveryFileAge();
bool removeRecoveryFile();
// The periodic save is due for a modified document with items when the file is missing or
// older than a minute; the emergency save when the flow has items and the file is missing or
// at least a second old.
bool isRecoverySaveDue(bool modified, int itemCount);
bool isEmergencySaveDue(int itemCount);
// Writes the recovery file with data's notes, batch data and Auto Run state and no id.
bool saveRecoveryFile(const FlowModel &model, const DocumentData &data, QString *error);
// The save at each undo snapshot: when due, tells showStatus "Saving auto recovery file" and
// writes between busy(true) and busy(false), which a window turns into its busy cursor. A
// failure is only logged. True when the file was written.
bool periodicRecoverySave(const FlowModel &model, const DocumentData &data, bool modified,
                          const std::function<void(const QString &)> &showStatus = {},
                          const std::function<void(bool)> &busy = {});
// The save on the way out of a crash: no message, no cursor.
bool emergencyRecoverySave(const FlowModel &model, const DocumentData &data);
