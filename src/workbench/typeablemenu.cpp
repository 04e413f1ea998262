#include "workbench/typeablemenu.h"

#include "transforms/framework/transform.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>

namespace {

// 0 for a name that starts with the filter, 1 for one with a word that does, 2 otherwise.
int matchRank(const QString &name, const QString &filter)
{
    if (name.startsWith(filter, Qt::CaseInsensitive))
        return 0;
    for (int at = name.indexOf(filter, 0, Qt::CaseInsensitive); at > 0;
         at = name.indexOf(filter, at + 1, Qt::CaseInsensitive)) {
        if (!name.at(at - 1).isLetterOrNumber())
            return 1;
    }
    return 2;
}

} // namespace

TypeableMenu::TypeableMenu(const QList<Transform *> &prototypes, QWidget *parent)
    : QMenu(parent)
    , m_prototypes(prototypes)
{
    setToolTipsVisible(true);
    connect(this, &QMenu::triggered, this, &TypeableMenu::choose);
    rebuild();
}

void TypeableMenu::setFilterText(const QString &text)
{
    m_filter = text;
    rebuild();
}

QList<const Transform *> TypeableMenu::filtered(const QList<Transform *> &prototypes,
                                                const QString &filter)
{
    const QString wanted = filter.simplified();
    const QStringList words = wanted.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QList<const Transform *> ranked[3];
    for (const Transform *prototype : prototypes) {
        const QString name = prototype->displayName();
        const bool all = std::all_of(words.cbegin(), words.cend(), [&name](const QString &w) {
            return name.contains(w, Qt::CaseInsensitive);
        });
        if (all)
            ranked[wanted.isEmpty() ? 0 : matchRank(name, wanted)].append(prototype);
    }
    return ranked[0] + ranked[1] + ranked[2];
}

void TypeableMenu::rebuild()
{
    clear();
    m_matches = filtered(m_prototypes, m_filter);
    m_heading = addAction(m_filter.isEmpty() ? QStringLiteral("Type to find a transform")
                                             : QStringLiteral("Find: %1").arg(m_filter));
    m_heading->setEnabled(false);
    addSeparator();
    QAction *first = nullptr;
    const int shown = std::min<int>(MaximumShown, m_matches.size());
    for (int i = 0; i < shown; ++i) {
        const Transform *prototype = m_matches.at(i);
        QAction *action = addAction(prototype->displayName());
        action->setData(
            QVariant::fromValue(static_cast<void *>(const_cast<Transform *>(prototype))));
        action->setToolTip(prototype->description());
        if (!first)
            first = action;
    }
    if (m_matches.isEmpty())
        addAction(QStringLiteral("No matching transform"))->setEnabled(false);
    else if (m_matches.size() > shown)
        addAction(QStringLiteral("%1 more...").arg(m_matches.size() - shown))->setEnabled(false);
    if (first)
        setActiveAction(first);
    if (isVisible()) {
        adjustSize();
        followAnchor();
    }
}

void TypeableMenu::popupAt(const QPoint &anchor)
{
    m_anchor = anchor;
    m_anchored = true;
    popup(anchor);
}

void TypeableMenu::followAnchor()
{
    if (!m_anchored)
        return;
    QPoint at = m_anchor;
    if (const QScreen *screen = QGuiApplication::screenAt(m_anchor)) {
        const QRect room = screen->availableGeometry();
        at.setX(std::max(room.left(), std::min(at.x(), room.right() + 1 - width())));
        at.setY(std::max(room.top(), std::min(at.y(), room.bottom() + 1 - height())));
    }
    move(at);
}

void TypeableMenu::choose(QAction *action)
{
    if (!action || !action->data().isValid())
        return;
    emit transformChosen(static_cast<const Transform *>(action->data().value<void *>()));
}

void TypeableMenu::keyPressEvent(QKeyEvent *event)
{
    const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::ShiftModifier;
    const QString text = event->text();
    if (event->key() == Qt::Key_Backspace) {
        if (!m_filter.isEmpty())
            setFilterText(m_filter.left(m_filter.size() - 1));
        return;
    }
    if (modifiers == Qt::NoModifier && text.size() == 1
        && (text.at(0).isLetterOrNumber() || text.at(0) == QLatin1Char(' ')
            || text.at(0).isPunct())) {
        setFilterText(m_filter + text);
        return;
    }
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        && (!activeAction() || !activeAction()->isEnabled())) {
        if (!m_matches.isEmpty()) {
            const Transform *first = m_matches.first();
            close();
            emit transformChosen(first);
        }
        return;
    }
    QMenu::keyPressEvent(event);
}
