#pragma once

#include "flow/flowitem.h"

// A comment on the canvas; it takes part in no run and is always up to date. It can point at
// an item beside it with an arrow on one of its sides.
class NoteItem : public FlowItem
{
    Q_OBJECT

public:
    // Where the note lies from the item it points at; the arrow leaves from that side.
    enum Arrow { NoArrow = 0, Below = 1, Left = 2, Above = 3, Right = 4 };

    explicit NoteItem(int id = -1)
        : FlowItem(id)
    { }

    int kind() const override { return NoteKind; }
    FlowItem *clone() const override;
    QString displayName() const override { return QStringLiteral("Note"); }
    QString toolTipText() const override { return comment(); }
    int status() const override { return UpToDate; }
    bool canRun() const override { return false; }
    int maximumOutputs() const override { return 0; }
    QString statusLine() const override { return QString(); }
    void run(bool, bool) override { }

    // The fill, as "#rrggbb"; a text that is not such a colour is ignored.
    QString color() const { return m_color; }
    void setColor(const QString &color);
    static bool isColorName(const QString &text);
    int arrow() const { return m_arrow; }
    void setArrow(int arrow);

private:
    QString m_color = QStringLiteral("#fff5b0");
    int m_arrow = NoArrow;
};
