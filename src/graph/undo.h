#pragma once

#include "shell/undostep.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

class FlowModel;
class GraphScene;

// The window's list of snapshots of the flow. Each user edit first copies the live scene's
// model, with the name of the edit, to the front of the list; undo shows a copy in a new live
// scene and keeps the model it replaces so that redo can bring it back. Copies share their rows
// with the live model, so a snapshot costs the items, not the data, and draws nothing until it
// is made live.
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

    // Copies the live model under hint before an edit changes it.
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
    FlowModel *snapshot(int position) const;
    QString hint(int position) const;

signals:
    void aboutToSwapScene();
    // live shows the model made live; old is deleted after the signal returns (its model
    // stays in the list when redo or undo can reach it).
    void sceneSwapped(GraphScene *live, GraphScene *old);
    // The labels may have changed; documentEdited tells an edit, undo or redo from a history
    // that was only reset for a new or opened document.
    void changed(bool documentEdited);
    void recoveryDue();

private:
    struct Entry
    {
        // Guarded: the live entry belongs to the live scene, which its owner may delete.
        QPointer<FlowModel> model;
        QString hint;
    };

    void makeLive(int position);
    void deleteEntry(const Entry &entry);
    bool isLiveModel(const FlowModel *model) const;

    static UndoHistory *s_current;

    QPointer<GraphScene> m_live;
    QList<Entry> m_entries;
    int m_index = -1;
};
