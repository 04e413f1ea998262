#include "flow/noteitem.h"

#include <QRegularExpression>

FlowItem *NoteItem::clone() const
{
    auto *copy = new NoteItem(id());
    copyInto(copy);
    copy->m_color = m_color;
    copy->m_arrow = m_arrow;
    return copy;
}

bool NoteItem::isColorName(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("^#[0-9a-fA-F]{6}$"));
    return pattern.match(text).hasMatch();
}

void NoteItem::setColor(const QString &color)
{
    if (!isColorName(color))
        return;
    const QString name = color.toLower();
    if (m_color == name)
        return;
    m_color = name;
    emit changed();
}

void NoteItem::setArrow(int arrow)
{
    if (m_arrow == arrow)
        return;
    m_arrow = arrow;
    emit changed();
}
