#pragma once

#include <QList>
#include <QMenu>
#include <QPoint>

class Transform;

// The pop-up of transforms that narrows as the user types: letters, digits and spaces add to
// the filter, Backspace takes one off, the arrows and Return work as in any menu. It lets the
// user add a transform without leaving the keyboard.
class TypeableMenu : public QMenu
{
    Q_OBJECT

public:
    static constexpr int MaximumShown = 30;

    explicit TypeableMenu(const QList<Transform *> &prototypes, QWidget *parent = nullptr);

    QString filterText() const { return m_filter; }
    void setFilterText(const QString &text);
    // Shows the menu with its corner at anchor. While the list shrinks and grows with typing the
    // menu comes back to that corner whenever it fits there, instead of staying where the first,
    // longer list had to be pushed to fit on the screen.
    void popupAt(const QPoint &anchor);
    // The transforms shown, best match first.
    QList<const Transform *> matches() const { return m_matches; }

    // The prototypes whose name holds every word of filter, ignoring case: names that start
    // with the filter first, then names with a word that does, then the rest, each group in
    // the prototypes' order.
    static QList<const Transform *> filtered(const QList<Transform *> &prototypes,
                                             const QString &filter);

signals:
    void transformChosen(const Transform *prototype);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void rebuild();
    void followAnchor();
    void choose(QAction *action);

    QList<Transform *> m_prototypes;
    QList<const Transform *> m_matches;
    QString m_filter;
    QAction *m_heading = nullptr;
    QPoint m_anchor;
    bool m_anchored = false;
};
