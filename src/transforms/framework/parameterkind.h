#pragma once

#include "transforms/framework/parameter.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

using ColumnIdMap = QHash<ColumnId, ColumnId>;

// Everything the framework knows about one kind of option apart from its widget: whether it
// names columns, where the Right pane puts it, and how its value is written to and read from
// a document, summarised, found unset and remapped to new column ids. There is one row per
// ParameterType in parameterkind.cpp, so that a new kind is one row there and one in the
// widget table of parameterwidget.cpp; Parameter itself holds no per-kind code.
struct ParameterKind
{
    enum Flag {
        ColumnRelated = 0x01, // has a sourceNode and is rebound when connections change
        Hidden = 0x02, // not listed among the options (a caption has no value)
        SelectsAll = 0x04, // selectAllColumns applies
        SelectsOnly = 0x08, // selectOnlyColumn applies
        IndexesByPosition = 0x10 // columnIndexes sorted by position, not in value order
    };

    ParameterType type;
    const char *name;
    int flags;
    ParameterLayout layout;
    // The empty value a column option starts with, so that the typed getters and the widgets
    // never meet a value of the wrong shape; null leaves the value unset.
    QVariant (*emptyValue)();
    // The document text (fields joined by U+001F), and its reading back. A text that doesn't
    // parse leaves the value as it is; version is that of the document.
    QString (*write)(const Parameter &parameter);
    void (*read)(Parameter &parameter, const QStringList &fields, const QString &text, int version);
    QString (*summary)(const Parameter &parameter);
    // Null: never unset.
    bool (*isUnset)(const Parameter &parameter);
    // Replaces the ids found in the map; true when the value changed. Null: names no columns.
    bool (*remap)(Parameter &parameter, const ColumnIdMap &map);
    // The ids the value names, in its order. Null: the value read as a plain list of ids.
    QList<ColumnId> (*columns)(const Parameter &parameter);
    // Makes the value a choice of exactly these columns, for SelectsAll and SelectsOnly.
    void (*choose)(Parameter &parameter, const QList<ColumnId> &ids);

    constexpr bool has(Flag flag) const { return (flags & flag) != 0; }

    // The row of a kind. Every ParameterType has one.
    static const ParameterKind &of(ParameterType type);
};

// One more than the highest ParameterType.
constexpr int ParameterKindCount = int(ParameterType::Locale) + 1;
