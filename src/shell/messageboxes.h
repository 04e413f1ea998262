#pragma once

#include <QMessageBox>

#include <functional>

// The one way the workbench asks and tells the user in a message box: the window, its panes,
// the item pages, the data tables and the confirmations of outputs all come through here.
// Tests install a handler that answers in place of the user, so that no modal loop blocks.
class MessageBoxes
{
public:
    using Handler = std::function<QMessageBox::StandardButton(
        QMessageBox::Icon icon, const QString &title, const QString &text,
        QMessageBox::StandardButtons buttons, QMessageBox::StandardButton defaultButton)>;

    // Null restores the real message boxes.
    static void setHandler(const Handler &handler);

    static QMessageBox::StandardButton
    show(QWidget *parent, QMessageBox::Icon icon, const QString &title, const QString &text,
         QMessageBox::StandardButtons buttons = QMessageBox::Ok,
         QMessageBox::StandardButton defaultButton = QMessageBox::NoButton);
    // Yes and No, Yes the default; true for Yes.
    static bool askYesNo(QWidget *parent, const QString &title, const QString &text);
    // Ok and Cancel, Ok the default; true for Ok.
    static bool askOkCancel(QWidget *parent, const QString &title, const QString &text);
    static void warning(QWidget *parent, const QString &title, const QString &text);
    static void critical(QWidget *parent, const QString &title, const QString &text);
    static void information(QWidget *parent, const QString &title, const QString &text);

private:
    static Handler s_handler;
};
