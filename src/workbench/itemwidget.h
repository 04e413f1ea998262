#pragma once

#include "flow/flowitem.h"

#include <QFrame>
#include <QPointer>
#include <QSet>

class DataPage;
class DelayedPlainTextEdit;
class FlowModel;
class QFormLayout;
class QLabel;
class QPlainTextEdit;
class QScrollArea;
class QSplitter;
class QTabWidget;
class QToolButton;
class QVBoxLayout;

// The common page of the Right pane for one item: the show buttons, the status line, the
// subclass's options and the tabs with the data, the messages, the comment and the details.
// It never runs anything itself; it asks the pane, through its timer signals, to run later or
// now.
class ItemWidget : public QFrame
{
    Q_OBJECT

public:
    enum Tab { DataTab = 0, CharactersTab, WarningsTab, InfoTab, CommentTab, DetailsTab };
    enum ShowMode { OptionsAndData = 0, OptionsOnly = 1, DataOnly = 2 };

    explicit ItemWidget(FlowItem *item, QWidget *parent = nullptr);
    ~ItemWidget() override;

    // Null once the item is gone.
    FlowItem *item() const { return m_item; }
    // The model of the item; null once the item is gone.
    FlowModel *model() const;

    // Edits still waiting in the page (a comment being typed) reach the item now.
    virtual void applyPendingEdits();
    // The item ran, or its data changed: status, messages and data shown anew.
    virtual void refreshAfterRun();
    virtual void refreshAfterDataChange();
    void refreshStatus();
    virtual void setInteractionAllowed(bool allowed);

    int currentTab() const;
    void setCurrentTab(int index);
    QTabWidget *tabs() const { return m_tabs; }
    DataPage *dataPage() const { return m_dataPage; }
    QPlainTextEdit *warningsEdit() const { return m_warnings; }
    QPlainTextEdit *infoEdit() const { return m_info; }
    QPlainTextEdit *detailsEdit() const { return m_details; }
    DelayedPlainTextEdit *commentEdit() const { return m_comment; }
    QLabel *statusLabel() const { return m_statusLabel; }
    QWidget *optionsArea() const { return m_optionsArea; }
    QToolButton *showButton(int mode) const;
    QToolButton *fullScreenButton() const { return m_fullScreenButton; }

    int showMode() const { return m_showMode; }
    void setShowMode(int mode);
    bool isFullScreenOn() const { return m_fullScreen; }
    void setFullScreen(bool on);

    // The one line under the show buttons: by status, or the item's result.
    static QString statusText(const FlowItem *item, bool autoRun);
    static QString messagesText(bool has, const QString &text);

signals:
    void fullScreenReleased(ItemWidget *widget);
    void nodeStatusChanged();
    void nodeCommentChanged(FlowItem *item);
    void warnOverwritingOutputMoreThanOnce();
    void flushTimer();
    void restartTimer();
    void stopTimer();
    void restartTimerIfActive();
    void selectedDataCellsChanged();
    void currentTabChanged(int index);
    void changeNeedsSave();

protected:
    // Where subclasses put their options: a form, with rows that can be hidden.
    QFormLayout *form() const { return m_form; }
    QVBoxLayout *optionsLayout() const { return m_optionsLayout; }
    // Shows or hides a form row by its field widget.
    void setRowVisible(QWidget *field, bool visible);
    // A change that needs a run: after the pane's delay, or at once.
    void requestRun(bool viaTimer);
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void onCommentChanged();
    void onTabChanged(int index);
    void updateDetails();
    void placeSplitter();

    QPointer<FlowItem> m_item;
    QVBoxLayout *m_layout = nullptr;
    QToolButton *m_showButtons[3] = {};
    QToolButton *m_fullScreenButton = nullptr;
    QLabel *m_statusIcon = nullptr;
    QLabel *m_statusLabel = nullptr;
    QSplitter *m_splitter = nullptr;
    QScrollArea *m_optionsScroll = nullptr;
    QWidget *m_optionsArea = nullptr;
    QVBoxLayout *m_optionsLayout = nullptr;
    QFormLayout *m_form = nullptr;
    QTabWidget *m_tabs = nullptr;
    DataPage *m_dataPage = nullptr;
    QPlainTextEdit *m_warnings = nullptr;
    QPlainTextEdit *m_info = nullptr;
    DelayedPlainTextEdit *m_comment = nullptr;
    QPlainTextEdit *m_details = nullptr;
    int m_showMode = OptionsAndData;
    bool m_fullScreen = false;
    bool m_splitterMoved = false;
    // The form's rows in their first order, and the fields of those taken out of it.
    struct FormRow
    {
        QWidget *field;
        QWidget *label;
    };
    QList<FormRow> m_rows;
    QSet<QWidget *> m_hiddenRows;
};
