#include "workbench/logpane.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QTime>

LogPane::LogPane(QWidget *parent)
    : QPlainTextEdit(parent)
{
    setReadOnly(true);
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setMaximumBlockCount(MaximumLines);
    setPlaceholderText(QStringLiteral("Log"));
    setObjectName(QStringLiteral("logPane"));
}

QStringList LogPane::lines() const
{
    QStringList result = toPlainText().split(QLatin1Char('\n'));
    if (result.size() == 1 && result.first().isEmpty())
        result.clear();
    return result;
}

void LogPane::appendLine(const QString &text)
{
    // Messages of a run end with their own line feed at times; the pane keeps one per line.
    QString line = text;
    while (line.endsWith(QLatin1Char('\n')))
        line.chop(1);
    const QString stamp = QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
    appendPlainText(stamp + QLatin1Char(' ') + line);
}

void LogPane::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu *menu = createStandardContextMenu();
    menu->addSeparator();
    menu->addAction(QStringLiteral("Clear"), this, &QPlainTextEdit::clear);
    menu->exec(event->globalPos());
    delete menu;
}
