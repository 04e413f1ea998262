#include "shell/messageboxes.h"

#include <QGuiApplication>

MessageBoxes::Handler MessageBoxes::s_handler;

void MessageBoxes::setHandler(const Handler &handler)
{
    s_handler = handler;
}

QMessageBox::StandardButton MessageBoxes::show(QWidget *parent, QMessageBox::Icon icon,
                                               const QString &title, const QString &text,
                                               QMessageBox::StandardButtons buttons,
                                               QMessageBox::StandardButton defaultButton)
{
    if (s_handler)
        return s_handler(icon, title, text, buttons, defaultButton);
    QMessageBox box(icon, title, text, buttons, parent);
    if (defaultButton != QMessageBox::NoButton)
        box.setDefaultButton(defaultButton);
    // A busy cursor of a run must not hide the buttons' arrow.
    QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
    box.exec();
    QGuiApplication::restoreOverrideCursor();
    return box.standardButton(box.clickedButton());
}

bool MessageBoxes::askYesNo(QWidget *parent, const QString &title, const QString &text)
{
    return show(parent, QMessageBox::Question, title, text, QMessageBox::Yes | QMessageBox::No,
                QMessageBox::Yes)
        == QMessageBox::Yes;
}

bool MessageBoxes::askOkCancel(QWidget *parent, const QString &title, const QString &text)
{
    return show(parent, QMessageBox::Question, title, text, QMessageBox::Ok | QMessageBox::Cancel,
                QMessageBox::Ok)
        == QMessageBox::Ok;
}

void MessageBoxes::warning(QWidget *parent, const QString &title, const QString &text)
{
    show(parent, QMessageBox::Warning, title, text);
}

void MessageBoxes::critical(QWidget *parent, const QString &title, const QString &text)
{
    show(parent, QMessageBox::Critical, title, text);
}

void MessageBoxes::information(QWidget *parent, const QString &title, const QString &text)
{
    show(parent, QMessageBox::Information, title, text);
}
