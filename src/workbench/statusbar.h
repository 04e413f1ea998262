#pragma once

#include <QList>
#include <QStatusBar>
#include <QVector>

class FlowItem;
class QLabel;
class QProgressBar;
class QToolButton;

// The status bar's row of item counts: one button per status icon with the number of items
// showing it. A click asks the window to select those items.
class NodeStatusWidget : public QWidget
{
    Q_OBJECT

public:
    explicit NodeStatusWidget(QWidget *parent = nullptr);

    // Counts the items by their status icon.
    void setItems(const QList<FlowItem *> &items);
    int count(int icon) const { return m_counts.value(icon); }
    QToolButton *button(int icon) const { return m_buttons.value(icon); }

signals:
    // icon is a NodeStatusIcon value.
    void selectIconsOfType(int icon);

private:
    QVector<int> m_counts;
    QVector<QToolButton *> m_buttons;
};

// The window's status bar: messages on the left; on the right the run's progress, the item
// counts and the memory read-out, which the application's heartbeat keeps current even while
// a long run holds the event loop.
class StatusBar : public QStatusBar
{
    Q_OBJECT

public:
    explicit StatusBar(QWidget *parent = nullptr);

    NodeStatusWidget *nodeStatusWidget() const { return m_nodeStatus; }
    QLabel *memoryLabel() const { return m_memoryLabel; }
    QProgressBar *progressBar() const { return m_progress; }

    // Shows a reading of the memory in use against the limit, both in gigabytes.
    void setMemoryReading(double useGiB, double limitGiB);
    // True when the last reading reached the share of the limit that is shown as a warning.
    bool isMemoryWarning() const { return m_memoryWarning; }

    static constexpr double WarningShare = 0.75;

public slots:
    void onHeartBeat();
    // Reads the memory in use and the limit of the preferences now.
    void refreshMemory();
    // 0 to 100; 100 hides the bar.
    void setProgress(int percent);

private:
    QLabel *m_memoryLabel = nullptr;
    QProgressBar *m_progress = nullptr;
    NodeStatusWidget *m_nodeStatus = nullptr;
    bool m_memoryWarning = false;
};
