#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

// What records user edits as undo steps: the window's history of the graph. Edits anywhere
// (the canvas, the Right pane's widgets) bracket themselves with UndoStep and need not know
// who records them.
class UndoRecorder : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    ~UndoRecorder() override;

    // The recorder UndoStep talks to; null when nobody keeps one (the command line).
    static UndoRecorder *current();
    static void setCurrent(UndoRecorder *recorder);

    // Takes a snapshot under hint before an edit changes anything.
    virtual void prepare(const QString &hint) = 0;
    // The edit is done.
    virtual void finish() = 0;

private:
    static UndoRecorder *s_current;
};

// Records one user edit for the current recorder: the snapshot is taken on construction and
// the edit finished on destruction. Inner guards of an edit made of smaller ones do nothing,
// so one edit is one undo step.
class UndoStep
{
public:
    explicit UndoStep(const QString &hint);
    ~UndoStep();

    UndoStep(const UndoStep &) = delete;
    UndoStep &operator=(const UndoStep &) = delete;

private:
    bool m_owner = false;
    QPointer<UndoRecorder> m_recorder;
};

// The plain pair, for edits that span several events (a drag of items on the canvas: begun
// when the press first moves, ended on release).
void beginUndoStep(const QString &hint);
void endUndoStep();
// Whether an edit is being recorded now.
bool isUndoStepOpen();
