#pragma once

#include "graph/node.h"

#include <QColor>

// A comment on the canvas; it takes part in no run and is always up to date. It can point at
// an item beside it with an arrow on one of its sides.
class NoteNode : public Node
{
    Q_OBJECT

public:
    // Where the note lies from the item it points at; the arrow leaves from that side.
    enum Arrow { NoArrow = 0, Below = 1, Left = 2, Above = 3, Right = 4 };
    static constexpr qreal ArrowLength = 14.0;

    explicit NoteNode(int id = -1)
        : Node(id)
    { }

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
    QRectF boundingRect() const override;
    QPainterPath shape() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

    QColor color() const { return m_color; }
    void setColor(const QColor &color);
    int arrow() const { return m_arrow; }
    void setArrow(int arrow);
    // The arrow's outline in item coordinates; empty without an arrow.
    QPolygonF arrowPolygon() const;

private:
    QColor m_color = QColor(0xFF, 0xF5, 0xB0);
    int m_arrow = 0;
};
