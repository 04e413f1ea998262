#pragma once

#include "shell/undostep.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

class GraphScene;

// The window's list of snapshots of the graph. Each user edit first copies the live scene,
// with the name of the edit, to the front of the list; undo makes a copy live and keeps the
// scene it replaces so that redo can bring it back. Copies share their rows with the live
// scene, so a snapshot costs the items, not the data.
class UndoHistory : public UndoRecorder
{
    Q_OBJECT

public:
    static constexpr int MaximumSteps = 10;

    explicit UndoHistory(QObject *parent = nullptr);
    ~UndoHistory() override;

    // The history UndoStep talks to; null when nobody keeps one (the command line).
    static UndoHistory *current();
    static void setCurrent(UndoHistory *history) { UndoRecorder::setCurrent(history); }

    GraphScene *liveScene() const;
    // A new or opened document: forgets every snapshot and follows scene from now on.
    void setLiveScene(GraphScene *scene);

    // Copies the live scene under hint before an edit changes it.
    void prepare(const QString &hint) override;
    // The edit is done: labels and the modified mark may change.
    void finish() override;
    // Ignored while the live scene runs.
    void undo();
    void redo();

    bool canUndo() const;
    bool canRedo() const;
    QString undoHint() const;
    QString redoHint() const;
    // The snapshots kept, and the position of the one last made live (-1: the live scene is
    // none of them, the state after an edit).
    int count() const;
    int index() const;
    GraphScene *snapshot(int position) const;
    QString hint(int position) const;

signals:
    void aboutToSwapScene();
    // old is still owned by the list, or deleted after the signal returns.
    void sceneSwapped(GraphScene *live, GraphScene *old);
    // The labels may have changed; documentEdited tells an edit, undo or redo from a history
    // that was only reset for a new or opened document.
    void changed(bool documentEdited);
    void recoveryDue();

private:
    struct Entry
    {
        // Guarded: snapshots are children of the live scene's parent, which may go first.
        QPointer<GraphScene> scene;
        QString hint;
    };

    void makeLive(int position);
    void deleteEntry(const Entry &entry);

    static UndoHistory *s_current;

    QPointer<GraphScene> m_live;
    QList<Entry> m_entries;
    int m_index = -1;
};
