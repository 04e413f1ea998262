#include "shell/undostep.h"

UndoRecorder *UndoRecorder::s_current = nullptr;

namespace {

// One step open at a time, process-wide: an edit made of smaller edits is one undo.
bool s_stepOpen = false;
// Whether the open step came from beginUndoStep, so that a stray endUndoStep cannot close a
// guard's step.
bool s_pairOpen = false;
QPointer<UndoRecorder> s_pairRecorder;

} // namespace

UndoRecorder::~UndoRecorder()
{
    if (s_current == this)
        s_current = nullptr;
}

UndoRecorder *UndoRecorder::current()
{
    return s_current;
}

void UndoRecorder::setCurrent(UndoRecorder *recorder)
{
    s_current = recorder;
}

UndoStep::UndoStep(const QString &hint)
{
    UndoRecorder *recorder = UndoRecorder::current();
    if (!recorder || s_stepOpen)
        return;
    s_stepOpen = true;
    m_owner = true;
    m_recorder = recorder;
    recorder->prepare(hint);
}

UndoStep::~UndoStep()
{
    if (!m_owner)
        return;
    s_stepOpen = false;
    if (m_recorder)
        m_recorder->finish();
}

void beginUndoStep(const QString &hint)
{
    UndoRecorder *recorder = UndoRecorder::current();
    if (!recorder || s_stepOpen)
        return;
    s_stepOpen = true;
    s_pairOpen = true;
    s_pairRecorder = recorder;
    recorder->prepare(hint);
}

void endUndoStep()
{
    if (!s_pairOpen)
        return;
    s_pairOpen = false;
    s_stepOpen = false;
    if (s_pairRecorder)
        s_pairRecorder->finish();
    s_pairRecorder = nullptr;
}

bool isUndoStepOpen()
{
    return s_stepOpen;
}
