#pragma once

#include <QObject>

class MainWindow;

// The Run menu of the window: Auto Run, the three run actions and Stop, which of them are
// offered, and whether each can be used with the live scene as it is.
class RunControl : public QObject
{
    Q_OBJECT

public:
    explicit RunControl(MainWindow *window);

    // Sets Auto Run without counting it as an edit of the document, as opening one does.
    void setAutoRunQuietly(bool autoRun);
    void updateRunStatus();

public slots:
    void onRunAutoToggled(bool on);
    void onRunChangesAction();
    void onRunSelectedAction();
    void onRunEverythingAction();
    void onRunStopAction();

private:
    void arrangeRunActions(bool autoRun);

    MainWindow *m_window;
};
