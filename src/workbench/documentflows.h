#pragma once

#include "flow/document.h"

#include <QObject>
#include <QString>

class FlowModel;
class GraphScene;
class MainWindow;

// The life of the window's document: new, open, save, the recent list, the notes, the lock
// held on the open file and the recovery file. Each flow asks to save first where the user
// could lose changes, and nothing happens while a run is going on.
class DocumentFlows : public QObject
{
    Q_OBJECT

public:
    explicit DocumentFlows(MainWindow *window);

    QString documentPath() const { return m_documentPath; }
    const DocumentData &documentData() const { return m_documentData; }
    // The document's settings as they stand in the window, as saving would write them.
    DocumentData currentData() const;

    bool open(const QString &path);
    // Saves to path (the held document when empty); false with a message on failure.
    bool save(const QString &path = QString());
    // The "Save changes?" question; true when the flow may go on.
    bool askToSave();
    // A new, empty document.
    void newDocument();
    // The document of a visible start: the recovery file, the argument or the preferences.
    void openAtStart(const QString &documentArgument, bool newWindow);
    // Remembers where the window was and lets go of the document, when the window closes.
    void closeDocument();
    void updateTitle();
    void updateRecentMenu();

public slots:
    void onFileNewAction();
    void onFileOpenAction();
    void onFileOpenRecentAction();
    void onRecentDocSelected();
    void onClearRecentDocSelected();
    void onFileSaveAction();
    void onFileSaveAsAction();
    void onFileNotesAction();
    void onFileOpenRequested(const QString &path);

private:
    bool isBusy() const;
    // Takes the lock on path, asking when it can't; false when the user cancels.
    bool lockForOpening(const QString &path, bool recovery);
    // Shows a loaded scene and its settings in the window.
    void showOpened(GraphScene *scene, const DocumentData &data, const QString &path,
                    bool recovery);
    // True when the user chose a new file for any input.
    bool askForMissingInputs();
    bool writeDocument(const QString &target);
    void addRecentDocument(const QString &path);
    QString startDocumentFromPreferences() const;

    MainWindow *m_window;
    QString m_documentPath;
    DocumentData m_documentData;
    DocumentLock m_lock;
};
