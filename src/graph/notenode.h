#pragma once

#include "graph/node.h"

#include <QColor>

// A comment on the canvas; it takes part in no run and is always up to date.
class NoteNode : public Node
{
    Q_OBJECT

public:
    explicit NoteNode(int id = -1) : Node(id) { }

    int type() const override { return NoteType; }
    Node *clone() const override;
    QString displayName() const override { return QStringLiteral("Note"); }
    QString toolTipText() const override { return comment(); }
    QColor backgroundColor() const override;
    int status() const override { return UpToDate; }
    bool canRun() const override { return false; }
    int maximumOutputs() const override { return 0; }
    QString statusLine() const override { return QString(); }
    void run(bool, bool) override { }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option,
               QWidget *widget) override;

    QColor color() const { return m_color; }
    void setColor(const QColor &color) { m_color = color; }
    int arrow() const { return m_arrow; }
    void setArrow(int arrow) { m_arrow = arrow; }

private:
    QColor m_color = QColor(0xFF, 0xF5, 0xB0);
    int m_arrow = 0;
};
