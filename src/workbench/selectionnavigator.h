#pragma once

#include <QObject>

class MainWindow;
class Node;

// Moves the selection of the Center pane from the keyboard: Ctrl with an arrow walks along the
// graph, Ctrl+digit picks the n-th input and Ctrl+Shift+digit the n-th output, counted as the
// canvas reads, columns left to right and each top to bottom.
class SelectionNavigator : public QObject
{
    Q_OBJECT

public:
    // Where Ctrl and an arrow go from the one selected item.
    enum Walk { Upstream, Downstream, PreviousSibling, NextSibling };

    explicit SelectionNavigator(MainWindow *window);

    void walk(Walk direction);
    // Selects the n-th item (from 1) of the given item type.
    void selectNthOfType(int itemType, int n);

public slots:
    void onEditSelectAllAction();
    // Selects the items whose status shows the given NodeStatusIcon.
    void onSelectIconsOfType(int icon);

private:
    void selectAndShow(Node *node);

    MainWindow *m_window;
};
