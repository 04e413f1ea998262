#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

class DelayTimer;
class FlowItem;
class ItemWidget;
class QVBoxLayout;

// The Right pane: the page of the one selected item, and the timer that holds back a run
// while the user is still editing options, so that typing doesn't run the graph at each key.
class ItemPane : public QWidget
{
    Q_OBJECT

public:
    explicit ItemPane(QWidget *parent = nullptr);
    ~ItemPane() override;

    void showItems(const QList<FlowItem *> &selected);
    void flush();
    void refreshAfterRun(FlowItem *item);
    void refreshAfterDataChange(FlowItem *item);
    ItemWidget *currentWidget() const;
    void setInteractionAllowed(bool allowed);
    void setFullScreen(bool on);

    // Builds the page for an item by its kind; exposed so that the pages can be shown alone.
    static ItemWidget *createWidget(FlowItem *item, QWidget *parent);
    bool isRunWaiting() const { return m_runWaiting; }
    bool isTimerActive() const;
    // The pause between an edit and its run, to be fired by hand under a manual clock.
    DelayTimer *delayTimer() const { return m_timer; }
    int rememberedTab() const { return m_tab; }

signals:
    void nodeStatusChanged();
    void nodeCommentChanged(FlowItem *item);
    void selectedDataCellsChanged();
    // The one line that sums up the cells selected in the page's table; empty for none.
    void selectionStatisticsChanged(const QString &text);
    void changeNeedsSave();
    void closeRequested();

public slots:
    void onRestartTimer();
    void onRestartTimerIfActive();
    void onStopTimer();
    void onFlushTimer();
    void onProcessChanges();
    void onItemCurrentTabChanged(int index);
    void onFullScreenReleased(ItemWidget *widget);
    void onWarnOverwritingOutputMoreThanOnce();

protected:
    void paintEvent(QPaintEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void clearWidget();
    void onSelectionStatisticsChanged(const QString &text);

    QVBoxLayout *m_layout = nullptr;
    QPointer<ItemWidget> m_widget;
    DelayTimer *m_timer = nullptr;
    bool m_runWaiting = false;
    bool m_interactionAllowed = true;
    int m_tab = 0;
    QString m_statistics;
};
