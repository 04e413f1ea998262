#pragma once

#include "workbench/itemwidget.h"

class ColorButton;
class NoteItem;
class QComboBox;

// The page of a note: its text, its arrow and its colour; a note has no data.
class NoteItemWidget : public ItemWidget
{
    Q_OBJECT

public:
    explicit NoteItemWidget(NoteItem *note, QWidget *parent = nullptr);

    QComboBox *arrowCombo() const { return m_arrow; }
    ColorButton *colorButton() const { return m_color; }

private:
    NoteItem *noteItem() const;

    QComboBox *m_arrow = nullptr;
    ColorButton *m_color = nullptr;
};
