#include "workbench/selectionnavigator.h"

#include "graph/graphscene.h"
#include "graph/node.h"
#include "workbench/graphpane.h"
#include "workbench/mainwindow.h"
#include "workbench/mainwindowactions.h"
// graphpane.h returns its menu inline, which needs the full type.
#include "workbench/typeablemenu.h"

#include <QAction>
#include <QShortcut>

#include <algorithm>

SelectionNavigator::SelectionNavigator(MainWindow *window)
    : QObject(window)
    , m_window(window)
{
    const std::pair<Qt::Key, Walk> walks[] = {{Qt::Key_Left, Upstream},
                                              {Qt::Key_Right, Downstream},
                                              {Qt::Key_Up, PreviousSibling},
                                              {Qt::Key_Down, NextSibling}};
    for (const auto &entry : walks) {
        const Walk direction = entry.second;
        connect(new QShortcut(QKeySequence(Qt::CTRL | entry.first), window), &QShortcut::activated,
                this, [this, direction]() { walk(direction); });
    }
    for (int n = 1; n <= 9; ++n) {
        const int key = Qt::Key_0 + n;
        connect(new QShortcut(QKeySequence(Qt::CTRL | key), window), &QShortcut::activated, this,
                [this, n]() { selectNthOfType(Node::InputType, n); });
        connect(new QShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | key), window),
                &QShortcut::activated, this, [this, n]() { selectNthOfType(Node::OutputType, n); });
    }
    connect(window->windowActions()[MainWindowActions::EditSelectAll], &QAction::triggered, this,
            &SelectionNavigator::onEditSelectAllAction);
}

void SelectionNavigator::selectAndShow(Node *node)
{
    if (!node)
        return;
    m_window->graphScene()->clearSelection();
    node->setSelected(true);
    m_window->graphPane()->ensureVisible(node);
}

void SelectionNavigator::walk(Walk direction)
{
    const QList<Node *> selected = m_window->selectedNodes();
    if (selected.size() != 1)
        return;
    const FlowItem *from = selected.first()->item();
    FlowItem *to = nullptr;
    if (direction == Upstream || direction == Downstream) {
        const QList<FlowItem *> next
            = direction == Upstream ? from->upstream(true) : from->downstream(true);
        to = next.isEmpty() ? nullptr : next.first();
    } else {
        to = direction == PreviousSibling ? from->previousSibling() : from->nextSibling();
    }
    selectAndShow(to ? m_window->graphScene()->nodeFor(to) : nullptr);
}

void SelectionNavigator::selectNthOfType(int itemType, int n)
{
    QList<Node *> nodes = m_window->graphScene()->nodesOfType(itemType);
    std::stable_sort(nodes.begin(), nodes.end(), [](const Node *a, const Node *b) {
        return FlowItem::leftToRight(a->item(), b->item());
    });
    if (n >= 1 && n <= nodes.size())
        selectAndShow(nodes.at(n - 1));
}

void SelectionNavigator::onEditSelectAllAction()
{
    GraphScene *scene = m_window->graphScene();
    if (scene->isProcessing())
        return;
    const QList<QGraphicsItem *> items = scene->items();
    for (QGraphicsItem *item : items) {
        if (item->flags() & QGraphicsItem::ItemIsSelectable)
            item->setSelected(true);
    }
}

void SelectionNavigator::onSelectIconsOfType(int icon)
{
    GraphScene *scene = m_window->graphScene();
    QSignalBlocker blocker(scene);
    scene->clearSelection();
    const QList<Node *> nodes = scene->nodes();
    for (Node *node : nodes) {
        if (static_cast<int>(node->item()->statusIcon()) == icon)
            node->setSelected(true);
    }
    blocker.unblock();
    m_window->onGraphSelectionChanged();
}
