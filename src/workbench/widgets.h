#pragma once

// The message boxes moved to their own unit; code that still finds them here keeps building.
#include "shell/messageboxes.h"

#include <QColor>
#include <QComboBox>
#include <QLineEdit>
#include <QPainterPath>
#include <QPlainTextEdit>
#include <QToolButton>
#include <QUrl>
#include <QWidget>

#include <functional>

class DelayTimer;
class QLabel;

// File dialogs and the desktop's "open with" of the panes, replaceable so that tests can answer
// them without a modal loop.
class DesktopHooks
{
public:
    using FileHandler = std::function<QString(QWidget *parent, const QString &caption,
                                              const QString &folder, const QString &filter)>;
    using UrlHandler = std::function<bool(const QUrl &url)>;

    static void setOpenFileHandler(const FileHandler &handler);
    static void setSaveFileHandler(const FileHandler &handler);
    static void setOpenUrlHandler(const UrlHandler &handler);

    static QString openFileName(QWidget *parent, const QString &caption, const QString &folder,
                                const QString &filter);
    // The dialog does not ask about replacing; callers ask themselves.
    static QString saveFileName(QWidget *parent, const QString &caption, const QString &folder,
                                const QString &filter);
    static bool openUrl(const QUrl &url);

private:
    static FileHandler s_openFile;
    static FileHandler s_saveFile;
    static UrlHandler s_openUrl;
};

// A line edit that reports its text only once the user pauses, so that a filter over a long
// list doesn't redo its work at every key. Return reports at once.
class DelayedFilterEdit : public QLineEdit
{
    Q_OBJECT

public:
    explicit DelayedFilterEdit(QWidget *parent = nullptr);

    int delay() const;
    void setDelay(int ms);
    bool isPending() const;

signals:
    void delayedTextChanged(const QString &text);

private:
    void report();

    DelayTimer *m_timer;
};

// A plain text edit that reports its text only after a pause in typing, or when flushed.
class DelayedPlainTextEdit : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit DelayedPlainTextEdit(QWidget *parent = nullptr);

    int delay() const;
    void setDelay(int ms);
    // Shows text without reporting it.
    void setTextQuietly(const QString &text);
    // A pending change is reported now.
    void flush();

signals:
    void delayedTextChanged();

protected:
    void focusOutEvent(QFocusEvent *event) override;

private:
    DelayTimer *m_timer;
    bool m_quiet = false;
};

// A combo box that says when its list is about to open, so that rows depending on state
// elsewhere can be checked at the last moment.
class OpeningComboBox : public QComboBox
{
    Q_OBJECT

public:
    explicit OpeningComboBox(QWidget *parent = nullptr)
        : QComboBox(parent)
    { }
    void showPopup() override;

signals:
    void opened();
};

// A button of the panes: text beside an optional icon, a tool tip and a shortcut, and the
// help page it belongs to.
class ActionButton : public QToolButton
{
    Q_OBJECT

public:
    ActionButton(const QString &text, const QString &toolTip, const QKeySequence &shortcut,
                 const QString &helpKey, QWidget *parent = nullptr);

    QString helpKey() const { return m_helpKey; }

private:
    QString m_helpKey;
};

// A check box that draws attention while unchecked, for options that hide things.
class HighlightUncheckedCheckBox : public QWidget
{
    Q_OBJECT

public:
    HighlightUncheckedCheckBox(const QString &text, QWidget *parent = nullptr);

    bool isChecked() const;
    void setChecked(bool on);
    class QCheckBox *checkBox() const { return m_check; }

signals:
    void toggled(bool on);

private:
    void updateLook();

    class QCheckBox *m_check;
};

// A swatch that shows a colour and lets the user pick another.
class ColorButton : public QToolButton
{
    Q_OBJECT

public:
    explicit ColorButton(const QColor &color, QWidget *parent = nullptr);

    QColor color() const { return m_color; }
    void setColor(const QColor &color);

signals:
    void colorChanged(const QColor &color);

private:
    void choose();

    QColor m_color;
};

// A tip in a balloon beside a widget, with a title, shown until the user has done once what it
// suggests. Whether it is done is kept in the settings under the tip's key.
class BalloonTip : public QWidget
{
    Q_OBJECT

public:
    BalloonTip(const QString &title, const QString &text, QWidget *anchor);

    // Shows the tip under key beside anchor unless it is done; null when not shown.
    static BalloonTip *showTip(const QString &key, const QString &title, const QString &text,
                               QWidget *anchor, int ms = 15000);
    static bool isDone(const QString &key);
    // The user did it: the tip is not shown again, and an open one closes.
    static void markDone(const QString &key);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    // The arrow stands on the top edge and points up at the anchor's middle.
    static constexpr int ArrowTipX = 20;
    static constexpr int ArrowHeight = 8;

    QPainterPath shape() const;

    QString m_key;
};
