#pragma once

#include <QPlainTextEdit>

// The Log pane under the canvas: one timestamped line per message of the runs and the file
// flows. Old lines drop off the top so that a long session keeps a bounded log.
class LogPane : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit LogPane(QWidget *parent = nullptr);

    static constexpr int MaximumLines = 20000;

    // The lines as shown, each with its time.
    QStringList lines() const;

public slots:
    void appendLine(const QString &text);

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
};
