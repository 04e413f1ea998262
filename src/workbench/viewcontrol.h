#pragma once

#include <QList>
#include <QObject>

class GraphPane;
class MainWindow;
class QSplitter;

// The View menu of the window: zoom of the Center pane, what the canvas shows, the tool bar
// and the log, and two-screen mode, in which the Right pane floats on a screen of its own.
class ViewControl : public QObject
{
    Q_OBJECT

public:
    ViewControl(MainWindow *window, QSplitter *splitter);

    // Zoom In, Zoom Out and Zoom Fit as the Center pane allows them now.
    void updateZoomActions();

public slots:
    void onZoomToFitToggled(bool on);
    void onTwoScreenModeToggled(bool on);
    void onEnableTwoScreenMode();
    void onItemPaneClosed();

private:
    void showSettings();
    void connectZoom();
    void connectCanvasFlags();
    // Runs a zoom of the Center pane, then follows what it allows next.
    void zoom(void (GraphPane::*step)());
    // Stores a flag the canvas paints by (none for the timing profile, kept on the scene).
    void onCanvasFlagToggled(void (*store)(bool), bool on);
    void onLogVisibilityToggled(bool on);

    MainWindow *m_window;
    QSplitter *m_splitter;
    // The three pane widths from before the item pane left for a screen of its own.
    QList<int> m_dockedWidths;
};
