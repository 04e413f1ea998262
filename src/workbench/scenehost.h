#pragma once

#include <QObject>

class DelayTimer;
class GraphScene;
class MainWindow;
class UndoHistory;

// Holds the live scene of the window and its undo list. Undo and redo swap whole scenes, so
// this connects each new live scene to the window and lets go of the old one; a quick series
// of undos runs the graph once, after the processing delay.
class SceneHost : public QObject
{
    Q_OBJECT

public:
    explicit SceneHost(MainWindow *window);
    ~SceneHost() override;

    GraphScene *scene() const { return m_scene; }
    UndoHistory *undoHistory() const { return m_undoHistory; }
    // The pause between an undo or redo and its run.
    DelayTimer *undoRunDelay() const { return m_undoRunDelay; }

    // Makes scene the live one, for a new or opened document; the old scene goes.
    void replaceScene(GraphScene *scene);
    // Lets go of the live scene's signals, when the window is going.
    void detach();
    void updateUndoLabels();

public slots:
    void onEditUndo();
    void onEditRedo();
    void onProcessUndoRedoChanges();

private:
    void onSceneSwapped(GraphScene *live, GraphScene *old);
    void onRecoveryDue();
    void connectScene(GraphScene *scene);
    void disconnectScene(GraphScene *scene);
    // What every live scene gets, whether new or swapped in by undo.
    void adopt(GraphScene *scene);

    MainWindow *m_window;
    UndoHistory *m_undoHistory;
    GraphScene *m_scene = nullptr;
    DelayTimer *m_undoRunDelay;
};
