#pragma once

#include <QPointer>
#include <QWidget>

// Shows the wait cursor while at least one guard lives; nested guards only count.
class BusyCursor
{
public:
    BusyCursor();
    ~BusyCursor();
    BusyCursor(const BusyCursor &) = delete;
    BusyCursor &operator=(const BusyCursor &) = delete;

    static int depth();
    // The same count for work whose start and end are not in one scope (a callback told
    // busy(true) and later busy(false)); each push needs its pop.
    static void push();
    static void pop();

private:
    static int s_depth;
};

// Stops a widget's repaints for the guard's life.
class UpdateBlocker
{
public:
    explicit UpdateBlocker(QWidget *widget);
    ~UpdateBlocker();
    UpdateBlocker(const UpdateBlocker &) = delete;
    UpdateBlocker &operator=(const UpdateBlocker &) = delete;

private:
    QPointer<QWidget> m_widget;
    bool m_wasEnabled = false;
};
