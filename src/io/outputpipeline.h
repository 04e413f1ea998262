#pragma once

#include "io/outputwriters.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>

class Dataset;
class PathVariables;

// The run of an output over its dataset: the Write mode, the one target or the one file per
// value of a column, the expansion of path variables, the confirmation of many targets and
// the messages of all of it. Works from plain options; the caller keeps the messages and the
// expanded target.

struct OutputRunOptions
{
    // Type, mode, encoding, delimiter and the other options of each file. Its comment is
    // ignored: fileComment below is expanded and put there.
    OutputFileOptions file;
    // With variables, as the user wrote them.
    QString path;
    QString sheet;
    QString fileComment;
    bool multipleFiles = false;
    // The column that names the files, -1 when none is set or the dataset has lost it.
    int filesColumn = -1;
    // The `blocked_output_extensions` set in force, for the targets of a Files column.
    QSet<QString> blockedExtensions;
};

struct OutputRunResult
{
    // False when the item is to show an error.
    bool ok = true;
    QStringList warnings;
    QStringList info;
    // The single target with its variables replaced, once the write came to it.
    bool targetExpanded = false;
    QString expandedPath;
    QString expandedSheet;
    // Multi-file mode found no Files column: the status line says "Not written".
    bool noFilesColumn = false;
};

// Asked with a title and text before many files are written; true to go ahead.
using ConfirmTargets = std::function<bool(const QString &title, const QString &text)>;

// Writes dataset as the options say. Progress runs from 0 to 1 over all targets. A null
// confirm writes without asking.
OutputRunResult writeOutput(const Dataset &dataset, const OutputRunOptions &options,
                            const PathVariables &variables, const WriteProgress &progress,
                            const ConfirmTargets &confirm);

// The warning for a single target whose extension is blocked; empty when it isn't.
QString blockedOutputWarning(const QString &expandedPath, const QSet<QString> &blocked);

// The text that lists the targets of a multi-file run, existing and new, for the question
// titled "Multi file output". Targets are absolute paths with their sheets.
QString multiFileConfirmationText(const QList<QPair<QString, QString>> &targets, int writeMode,
                                  bool sheets);
