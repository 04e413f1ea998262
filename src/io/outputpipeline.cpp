#include "io/outputpipeline.h"

#include "data/dataset.h"
#include "data/valueinterpretation.h"
#include "io/pathvariables.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QMap>

#include <algorithm>

namespace {

// Row problems of a multi-file run can number as many as the rows; the user gets the first
// thousand and a mark that more were left out.
constexpr int MaxListedMessages = 1000;

class CappedList
{
public:
    explicit CappedList(QStringList &target)
        : m_target(target)
    { }

    void add(const QString &text)
    {
        if (m_count < MaxListedMessages) {
            m_target.append(text);
        } else if (!m_closed) {
            m_target.append(QStringLiteral("\n...etc"));
            m_closed = true;
        }
        ++m_count;
    }

private:
    QStringList &m_target;
    int m_count = 0;
    bool m_closed = false;
};

QString nativePath(const QString &path)
{
    return QDir::toNativeSeparators(path);
}

// One target of a multi-file run, or the problem that a value of the Files column has.
struct ResolvedTarget
{
    enum Problem { None, NoFileName, RelativeUnsaved, NotValid, NoFolder, Blocked };
    Problem problem = None;
    QString path;
    QString sheet;
};

using Targets = QMap<QPair<QString, QString>, QList<int>>;

ResolvedTarget resolveTarget(const QString &value, const PathVariables &variables,
                             const QString &documentFolder, const QSet<QString> &blocked)
{
    ResolvedTarget target;
    QString file;
    PathVariables::splitSheet(value, file, target.sheet);
    variables.expand(file, target.sheet);
    if (QDir::isRelativePath(file)) {
        if (documentFolder.isEmpty()) {
            target.problem = ResolvedTarget::RelativeUnsaved;
            return target;
        }
        file = QDir(documentFolder).absoluteFilePath(file);
    }
    if (QDir::isRelativePath(file)) {
        target.problem = ResolvedTarget::NotValid;
        return target;
    }
    const QFileInfo info(file);
    if (!info.absoluteDir().exists())
        target.problem = ResolvedTarget::NoFolder;
    else if (info.fileName().isEmpty())
        target.problem = ResolvedTarget::NoFileName;
    else if (blocked.contains(info.suffix().trimmed().toLower()))
        target.problem = ResolvedTarget::Blocked;
    target.path = QDir::cleanPath(info.absoluteFilePath());
    return target;
}

QString problemText(ResolvedTarget::Problem problem, const QString &value, const QString &row)
{
    switch (problem) {
    case ResolvedTarget::RelativeUnsaved:
        return QStringLiteral("Relative file path for '%1' at row %2, but .tabulon not saved for "
                              "it to be relative to.")
            .arg(value, row);
    case ResolvedTarget::NotValid:
        return QStringLiteral("File path not valid for '%1' at row %2").arg(value, row);
    case ResolvedTarget::NoFolder:
        return QStringLiteral("Folder does not exist for '%1' at row %2").arg(value, row);
    case ResolvedTarget::NoFileName:
        return QStringLiteral("No file name for '%1' at row %2").arg(value, row);
    case ResolvedTarget::Blocked:
        return QStringLiteral("Extension for '%1' is blocked in 'Preferences>Output Extensions'.")
            .arg(value);
    case ResolvedTarget::None:
        break;
    }
    return QString();
}

// The rows of each target, from the values of the Files column; the problem of each row that
// names no target goes to the warnings.
Targets collectTargets(const Dataset &dataset, int column, const OutputRunOptions &options,
                       const PathVariables &variables, CappedList &warnings)
{
    const QString document = variables.documentPath();
    const QString documentFolder
        = document.isEmpty() ? QString() : QFileInfo(document).absolutePath();
    // Files columns repeat their values, so each distinct value is looked at once.
    QHash<QString, ResolvedTarget> resolved;
    Targets targets;
    const int rowCount = dataset.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        const QString value = dataset.cell(r, column).trimmed();
        const QString row = QString::number(r + 1);
        if (value.isEmpty()) {
            warnings.add(QStringLiteral("Empty value for row %1").arg(row));
            continue;
        }
        if (value.endsWith(QLatin1Char('/')) || value.endsWith(QLatin1Char('\\'))) {
            warnings.add(QStringLiteral("No file name for '%1' at row %2").arg(value, row));
            continue;
        }
        auto it = resolved.find(value);
        if (it == resolved.end())
            it = resolved.insert(
                value, resolveTarget(value, variables, documentFolder, options.blockedExtensions));
        if (it->problem == ResolvedTarget::None)
            targets[{it->path, it->sheet}].append(r);
        else
            warnings.add(problemText(it->problem, value, row));
    }
    return targets;
}

// The rows of one target without the Files column.
Dataset targetDataset(const Dataset &dataset, int column, const QStringList &header,
                      const QList<int> &rows)
{
    Dataset part;
    part.setColumnCount(dataset.columnCount() - 1);
    if (dataset.hasHeader())
        part.setHeader(header);
    part.reserveRows(rows.size());
    // With the Files column as the only column there is nothing left to write but the file.
    for (int i = 0; part.hasColumns() && i < rows.size(); ++i) {
        QStringList cells = dataset.row(rows.at(i));
        cells.removeAt(column);
        part.appendRow(cells, true);
    }
    return part;
}

bool writeTarget(const QString &path, const Dataset &dataset, const OutputFileOptions &options,
                 OutputRunResult &result, const WriteProgress &progress, bool *written)
{
    WriteReport report;
    const bool ok = writeOutputFile(path, dataset, options, report, progress);
    result.warnings += report.warnings;
    result.info += report.info;
    *written = report.written;
    return ok;
}

bool writeMultipleFiles(const Dataset &dataset, const OutputRunOptions &options,
                        const OutputFileOptions &fileOptions, const PathVariables &variables,
                        const WriteProgress &progress, const ConfirmTargets &confirm,
                        OutputRunResult &result)
{
    const int column = options.filesColumn;
    if (column < 0 || column >= dataset.columnCount()) {
        result.noFilesColumn = true;
        result.warnings.append(QStringLiteral("No column set for 'Files column'.\n"));
        return false;
    }
    CappedList warnings(result.warnings);
    const Targets targets = collectTargets(dataset, column, options, variables, warnings);
    if (confirm && !targets.isEmpty()) {
        const FileFormat *format = FileFormats::find(fileOptions.fileType);
        const QString text = multiFileConfirmationText(targets.keys(), fileOptions.writeMode,
                                                       format && format->sheets);
        if (!confirm(QStringLiteral("Multi file output"), text)) {
            result.warnings.append(QStringLiteral("Output cancelled by user"));
            return true;
        }
    }

    // Each target's dataset lives only while it is written.
    QStringList header = dataset.header();
    if (column < header.size())
        header.removeAt(column);
    CappedList writtenLines(result.info);
    const double span = 1.0 / std::max(1, targets.size());
    int writtenCount = 0;
    int done = 0;
    bool ok = true;
    for (auto it = targets.constBegin(); it != targets.constEnd(); ++it, ++done) {
        const double start = done * span;
        const WriteProgress partProgress = [&progress, start, span](double fraction) {
            if (progress)
                progress(start + fraction * span);
        };
        bool written = false;
        OutputFileOptions targetOptions = fileOptions;
        targetOptions.sheet = it.key().second;
        if (!writeTarget(it.key().first, targetDataset(dataset, column, header, it.value()),
                         targetOptions, result, partProgress, &written))
            ok = false;
        if (written) {
            ++writtenCount;
            writtenLines.add(QStringLiteral("Written to '%1'").arg(nativePath(it.key().first)));
        }
    }
    if (writtenCount > 0)
        result.info.append(QStringLiteral("%1 file(s) written").arg(formatCount(writtenCount)));
    else
        result.warnings.append(QStringLiteral("0 files written"));
    return ok;
}

} // namespace

OutputRunResult writeOutput(const Dataset &dataset, const OutputRunOptions &options,
                            const PathVariables &variables, const WriteProgress &progress,
                            const ConfirmTargets &confirm)
{
    OutputRunResult result;
    const OutputFileOptions &file = options.file;
    if (file.writeMode == WriteDisabled) {
        result.info.append(QStringLiteral("Write mode='%1'").arg(writeModeName(file.writeMode)));
        return result;
    }
    const FileFormat *format = FileFormats::find(file.fileType);
    if (!(format && format->sheets) && file.lineEnding == LineEndingAutomatic) {
        result.info.append(
            QStringLiteral("Line endings=Automatic sets line endings as %1. Set 'Line endings' "
                           "option to change.\n")
                .arg(lineEndingName(LineEndingWindows)));
    }
    OutputFileOptions fileOptions = file;
    fileOptions.comment = variables.expand(options.fileComment);
    fileOptions.excelStyleTemplatePath = variables.expand(file.excelStyleTemplatePath);
    if (options.multipleFiles) {
        result.ok = writeMultipleFiles(dataset, options, fileOptions, variables, progress, confirm,
                                       result);
        return result;
    }
    result.expandedPath = options.path;
    result.expandedSheet = options.sheet;
    variables.expand(result.expandedPath, result.expandedSheet);
    result.targetExpanded = true;
    bool written = false;
    fileOptions.sheet = result.expandedSheet;
    result.ok = writeTarget(result.expandedPath, dataset, fileOptions, result, progress, &written);
    return result;
}

QString blockedOutputWarning(const QString &expandedPath, const QSet<QString> &blocked)
{
    if (!FileExtensionRules::isBlocked(blocked, QFileInfo(expandedPath).suffix()))
        return QString();
    return QStringLiteral("The extension for this file is blocked in "
                          "'Preferences>Output Extensions':\n%1")
        .arg(nativePath(expandedPath));
}

QString multiFileConfirmationText(const QList<QPair<QString, QString>> &targets, int writeMode,
                                  bool sheets)
{
    QStringList existing;
    QStringList created;
    for (const auto &target : targets) {
        const QString shown = target.second.isEmpty()
            ? nativePath(target.first)
            : QStringLiteral("%1[%2]").arg(nativePath(target.first), target.second);
        (QFileInfo::exists(target.first) ? existing : created).append(shown);
    }
    const QString word = sheets ? QStringLiteral("file(s)/sheets(s)") : QStringLiteral("file(s)");
    QString text;
    if (!existing.isEmpty()) {
        QString pattern = QStringLiteral("%1 existing %2 to be overwritten:\n%3\n");
        if (writeMode == WriteAppend)
            pattern = QStringLiteral("%1 existing %2 to be appended to:\n%3\n");
        else if (writeMode == WriteNew)
            pattern = QStringLiteral("%1 existing %2 will not be overwritten:\n%3\n");
        text += pattern.arg(formatCount(existing.size()), word, existing.join(QLatin1Char('\n')));
    }
    if (!created.isEmpty()) {
        text += QStringLiteral("%1 new %2 to be created:\n%3\n")
                    .arg(formatCount(created.size()), word, created.join(QLatin1Char('\n')));
    }
    const int toWrite = writeMode == WriteNew ? created.size() : targets.size();
    text += QStringLiteral("%1 %2 will be written").arg(formatCount(toWrite), word);
    return text;
}
