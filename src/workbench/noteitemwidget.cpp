#include "workbench/noteitemwidget.h"

#include "flow/noteitem.h"
#include "graph/undo.h"
#include "workbench/widgets.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

NoteItemWidget::NoteItemWidget(NoteItem *note, QWidget *parent)
    : ItemWidget(note, parent)
{
    tabs()->hide();
    for (int mode = OptionsAndData; mode <= DataOnly; ++mode)
        showButton(mode)->hide();
    fullScreenButton()->hide();
    statusLabel()->hide();

    // The comment is the note itself, so it stands with the options instead of in a tab.
    optionsLayout()->insertWidget(0, commentEdit(), 1);
    optionsLayout()->setStretchFactor(commentEdit(), 1);
    commentEdit()->show();

    m_arrow = new QComboBox(optionsArea());
    // A note on side 1 lies below its item and points up, and so round the item.
    m_arrow->addItems({QStringLiteral("None"), QStringLiteral("Up"), QStringLiteral("Right"),
                       QStringLiteral("Down"), QStringLiteral("Left")});
    m_arrow->setToolTip(QStringLiteral("Set arrow status and direction."));
    m_arrow->setCurrentIndex(qBound(0, note->arrow(), m_arrow->count() - 1));
    form()->addRow(QStringLiteral("Arrow:"), m_arrow);

    m_color = new ColorButton(QColor(note->color()), optionsArea());
    m_color->setToolTip(QStringLiteral(
        "Set background color. Set the text and border color in 'Preferences>Colors'."));
    form()->addRow(QStringLiteral("Color:"), m_color);

    connect(m_arrow, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int arrow) {
        NoteItem *note = noteItem();
        if (!note || note->arrow() == arrow)
            return;
        UndoStep step(QStringLiteral("note arrow"));
        note->setArrow(arrow);
        emit changeNeedsSave();
    });
    connect(m_color, &ColorButton::colorChanged, this, [this](const QColor &color) {
        NoteItem *note = noteItem();
        if (!note)
            return;
        UndoStep step(QStringLiteral("note color"));
        note->setColor(color.name());
        emit changeNeedsSave();
    });
}

NoteItem *NoteItemWidget::noteItem() const
{
    return static_cast<NoteItem *>(item());
}
