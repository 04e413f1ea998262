#include "flow/flowmodel.h"

#include "flow/outputitem.h"
#include "flow/transformitem.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/transform.h"

#include <QRegularExpression>
#include <QSet>

#include <algorithm>

// Duplicating a branch: the root and all that flows from it, copied under the bottom of the
// flow with new ids, aliases and column ids, fed by the same inputs.

namespace {

// The next free alias after base: "sales" stays if free, else "sales2", "sales3"...; a
// trailing number counts on from itself.
QString nextFreeAlias(const QString &base, const QSet<QString> &used)
{
    if (base.isEmpty() || !used.contains(base))
        return base;
    static const QRegularExpression trailingNumber(QStringLiteral("^(.*?)(\\d+)$"));
    const QRegularExpressionMatch match = trailingNumber.match(base);
    QString stem = base;
    qint64 number = 1;
    if (match.hasMatch()) {
        stem = match.captured(1);
        number = match.captured(2).toLongLong();
    }
    QString candidate;
    do {
        candidate = stem + QString::number(++number);
    } while (used.contains(candidate));
    return candidate;
}

// A copied branch: each item's clone, and each column of an original the one its clone makes.
struct BranchCopy
{
    QHash<const FlowItem *, FlowItem *> items;
    QHash<ColumnId, ColumnId> columns;
};

// How far a copy of branch moves: straight down, below every item of the flow.
QPointF branchCopyShift(const FlowItem *root, const QList<FlowItem *> &branch,
                        const QList<FlowItem *> &all)
{
    qreal bottom = root->pos().y();
    for (const FlowItem *node : all)
        bottom = std::max(bottom, node->pos().y());
    qreal top = branch.first()->pos().y();
    for (const FlowItem *node : branch)
        top = std::min(top, node->pos().y());
    return QPointF(0.0, bottom + FlowModel::GridHeight - top);
}

// Adds a moved clone of each item; inputs and outputs take the next alias not yet used.
BranchCopy cloneBranch(FlowModel *model, const QList<FlowItem *> &branch, const QPointF &shift,
                       QSet<QString> &aliases)
{
    BranchCopy copy;
    for (FlowItem *node : branch) {
        FlowItem *clone = node->clone();
        const int oldId = node->id();
        clone->setId(-1);
        // The copies make columns of their own; options follow them to the new ids.
        const QList<ColumnId> ids = node->dataset()->columnIds();
        for (const ColumnId &id : ids) {
            if (id.sourceId == oldId)
                copy.columns.insert(id, ColumnId(clone->id(), id.ordinal));
        }
        if (clone->kind() == FlowItem::InputKind || clone->kind() == FlowItem::OutputKind) {
            auto *output = qobject_cast<OutputItem *>(clone);
            const bool multiFile = output && output->singleOrMulti() == OutputItem::MultipleFiles;
            const QString alias
                = nextFreeAlias(multiFile ? QStringLiteral("multifile") : clone->alias(), aliases);
            clone->setAlias(alias);
            if (!alias.isEmpty())
                aliases.insert(alias);
        }
        clone->setPos(node->pos() + shift);
        model->addItem(clone);
        copy.items.insert(node, clone);
    }
    return copy;
}

// Points the clones' columns, sources and column options at the copies instead of the originals.
void remapClonedColumns(const BranchCopy &copy)
{
    for (FlowItem *clone : qAsConst(copy.items)) {
        QList<ColumnId> ids = clone->dataset()->columnIds();
        bool changed = false;
        for (ColumnId &id : ids) {
            const auto found = copy.columns.constFind(id);
            if (found != copy.columns.constEnd()) {
                id = found.value();
                changed = true;
            }
        }
        if (changed)
            clone->dataset()->setColumnIds(ids);
        if (auto *transform = qobject_cast<TransformItem *>(clone)) {
            transform->remapParameterSources(copy.items, false);
            const QList<Parameter *> parameters = transform->transform()->parameters();
            for (Parameter *parameter : parameters)
                parameter->remapColumnIds(copy.columns);
        }
    }
}

} // namespace

FlowItem *FlowModel::duplicateBranch(FlowItem *root)
{
    if (!root || !m_items.contains(root))
        return nullptr;
    const QSet<FlowItem *> branchSet = root->allDownstream(true);
    QList<FlowItem *> branch(branchSet.cbegin(), branchSet.cend());
    sortLeftToRight(branch);

    QSet<QString> aliases;
    for (const FlowItem *item : qAsConst(m_items)) {
        if (!item->alias().isEmpty())
            aliases.insert(item->alias());
    }
    const BranchCopy copy
        = cloneBranch(this, branch, branchCopyShift(root, branch, m_items), aliases);

    for (FlowItem *item : qAsConst(branch)) {
        const QList<FlowConnection *> incoming = item->connections(ConnectionDirection::In);
        for (const FlowConnection *connection : incoming) {
            FlowItem *source = copy.items.value(connection->source(), connection->source());
            makeConnection(source, copy.items.value(item));
        }
    }
    remapClonedColumns(copy);
    return copy.items.value(root);
}
