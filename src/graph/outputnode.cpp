#include "graph/outputnode.h"

#include "data/valueinterpretation.h"
#include "graph/graphscene.h"
#include "graph/inputnode.h"
#include "graph/xmlattributes.h"
#include "io/delimitedtext.h"
#include "io/pathvariables.h"
#include "shell/settings.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QHash>
#include <QMap>
#include <QMessageBox>

#include <algorithm>

bool OutputNode::s_interactive = true;
OutputNode::ConfirmHandler OutputNode::s_confirmHandler;

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

QString yesNo(bool on)
{
    return on ? QStringLiteral("Yes") : QStringLiteral("No");
}

QString nativePath(const QString &path)
{
    return QDir::toNativeSeparators(path);
}

// A path below the document's folder is stored relative to it, so that the document and its
// files can move together. Paths that start with a variable are left alone both ways.
QString relativeToFolder(const QString &path, const QString &folder)
{
    if (path.isEmpty() || folder.isEmpty() || QDir::isRelativePath(path))
        return path;
    const QString base = QDir::cleanPath(QDir(folder).absolutePath());
    const QString clean = QDir::cleanPath(path);
    if (clean.startsWith(base + QLatin1Char('/')))
        return clean.mid(base.size() + 1);
    return path;
}

QString resolvedAgainstFolder(const QString &path, const QString &folder)
{
    if (path.isEmpty() || folder.isEmpty() || path.startsWith(QLatin1Char('{'))
        || !QDir::isRelativePath(path))
        return path;
    return QDir::cleanPath(QDir(folder).absoluteFilePath(path));
}

int boundedInt(const QDomElement &element, const QString &name, int defaultValue, int last)
{
    const int value = XmlAttributes::intValue(element, name, defaultValue);
    return value >= 0 && value <= last ? value : defaultValue;
}

// A plain list, since QVariants of QList<int> do not compare by value.
QVariantList intsToVariant(const QList<int> &values)
{
    QVariantList list;
    list.reserve(values.size());
    for (int value : values)
        list.append(value);
    return list;
}

bool askWithMessageBox(const QString &title, const QString &text)
{
    if (!qobject_cast<QApplication *>(QCoreApplication::instance()))
        return true;
    return QMessageBox::question(nullptr, title, text, QMessageBox::Ok | QMessageBox::Cancel,
                                 QMessageBox::Ok)
        == QMessageBox::Ok;
}

// One target of a multi-file run, or the problem that a value of the Files column has.
struct ResolvedTarget
{
    enum Problem { None, NoFileName, RelativeUnsaved, NotValid, NoFolder, Blocked };
    Problem problem = None;
    QString path;
    QString sheet;
};

} // namespace

OutputNode::OutputNode(int id, const QString &path)
    : IONode(id)
    , m_delimiter(DelimiterComma)
{
    IONode::setFileType(FileTypeDelimited);
    m_fileComment = defaultFileComment();
    if (!path.isEmpty()) {
        IONode::setPath(path);
        applyExtensionDefaults(path);
    }
}

void OutputNode::setInteractive(bool on)
{
    s_interactive = on;
}

bool OutputNode::isInteractive()
{
    return s_interactive;
}

void OutputNode::setConfirmHandler(const ConfirmHandler &handler)
{
    s_confirmHandler = handler;
}

QString OutputNode::defaultFileComment()
{
    return QStringLiteral(" File created by %1 %2 at %3 %4 ")
        .arg(QStringLiteral("Tabulon"), QStringLiteral("{version}"), QStringLiteral("{date}"),
             QStringLiteral("{time}"));
}

Node *OutputNode::clone() const
{
    auto *copy = new OutputNode(id());
    copyIOInto(copy);
    copy->m_singleOrMulti = m_singleOrMulti;
    copy->m_multiFileColumn = m_multiFileColumn;
    copy->m_pendingColumnNumber = m_pendingColumnNumber;
    copy->m_multiFileConfirm = m_multiFileConfirm;
    copy->m_worksheet = m_worksheet;
    copy->m_delimiter = m_delimiter;
    copy->m_customDelimiter = m_customDelimiter;
    copy->m_quoting = m_quoting;
    copy->m_lineEndings = m_lineEndings;
    copy->m_encoding = m_encoding;
    copy->m_byteOrderMark = m_byteOrderMark;
    copy->m_excelOutput = m_excelOutput;
    copy->m_excelManualColFormats = m_excelManualColFormats;
    copy->m_excelUseStyleTemplate = m_excelUseStyleTemplate;
    copy->m_excelStyleTemplatePath = m_excelStyleTemplatePath;
    copy->m_overwriteSheet = m_overwriteSheet;
    copy->m_jsonTypes = m_jsonTypes;
    copy->m_jsonManualColTypes = m_jsonManualColTypes;
    copy->m_xmlAboveRoot = m_xmlAboveRoot;
    copy->m_xmlRoot = m_xmlRoot;
    copy->m_xmlBelowRoot = m_xmlBelowRoot;
    copy->m_xmlRow = m_xmlRow;
    copy->m_htmlEncode = m_htmlEncode;
    copy->m_removeEmpty = m_removeEmpty;
    copy->m_writeHeader = m_writeHeader;
    copy->m_writeHeaderFirstAppendOnly = m_writeHeaderFirstAppendOnly;
    copy->m_writeMode = m_writeMode;
    copy->m_fileComment = m_fileComment;
    copy->m_pathWithoutSheetVarsReplaced = m_pathWithoutSheetVarsReplaced;
    copy->m_sheetVarsReplaced = m_sheetVarsReplaced;
    copy->m_noFilesColumn = m_noFilesColumn;
    return copy;
}

QColor OutputNode::backgroundColor() const
{
    return QColor(0xFB, 0xEF, 0xE3);
}

QColor OutputNode::borderColor() const
{
    return QColor(0xB0, 0x6A, 0x1E);
}

QString OutputNode::label() const
{
    if (isPreview())
        return QStringLiteral("Output.csv");
    const QString name = QFileInfo(path()).fileName();
    if (name.isEmpty())
        return QStringLiteral("<no file name>");
    if (isExcel() && !m_worksheet.isEmpty())
        return QStringLiteral("%1[%2]").arg(name, m_worksheet);
    return name;
}

QString OutputNode::writeStatusText() const
{
    if (status() == Error)
        return m_noFilesColumn ? QStringLiteral("Not written") : QStringLiteral("Error writing");
    if (!outputEnabled())
        return QStringLiteral("Write mode='%1'").arg(writeModeName(m_writeMode));
    return QStringLiteral("Written");
}

QString OutputNode::errorText() const
{
    return status() == Error ? writeStatusText() : QString();
}

QVariantList OutputNode::stateList() const
{
    QVariantList state = Node::stateList();
    state << path() << fileType() << m_singleOrMulti << multiFileColumnNumber()
          << m_multiFileConfirm << m_worksheet << m_delimiter << QString(m_customDelimiter)
          << m_quoting << m_lineEndings << m_encoding << m_byteOrderMark << m_excelOutput
          << intsToVariant(m_excelManualColFormats) << m_excelUseStyleTemplate
          << m_excelStyleTemplatePath << m_overwriteSheet << m_jsonTypes
          << intsToVariant(m_jsonManualColTypes) << m_xmlAboveRoot << m_xmlRoot << m_xmlBelowRoot
          << m_xmlRow << m_htmlEncode << m_removeEmpty << m_writeHeader
          << m_writeHeaderFirstAppendOnly << m_writeMode << m_fileComment;
    return state;
}

bool OutputNode::isExcel() const
{
    return fileType() == FileTypeXlsx || fileType() == FileTypeXls;
}

QList<QPair<QString, QString>> OutputNode::optionsList() const
{
    const int type = fileType();
    const bool excel = isExcel();
    QList<QPair<QString, QString>> lines;
    if (m_singleOrMulti == MultipleFiles) {
        const int number = multiFileColumnNumber();
        const Dataset *source = upstream().isEmpty() ? &m_dataset : upstream().first()->dataset();
        lines.append({QStringLiteral("Files"),
                      number > 0 && number <= source->columnCount() ? source->headerText(number - 1)
                                                                    : QString()});
    } else if (excel && !m_worksheet.isEmpty()) {
        lines.append({QStringLiteral("File") + QStringLiteral("/Sheet"),
                      QStringLiteral("%1[%2]").arg(nativePath(path()), m_worksheet)});
    } else {
        lines.append({QStringLiteral("File"),
                      path().isEmpty() ? QStringLiteral("<no file name>") : nativePath(path())});
    }
    lines.append({QStringLiteral("Type"), fileTypeName(type)});
    if (!alias().isEmpty())
        lines.append({QStringLiteral("Alias"), alias()});
    if (type == FileTypeDelimited) {
        lines.append({QStringLiteral("Delimiter"), delimiterName(m_delimiter)});
        lines.append({QStringLiteral("Quoting"), outputQuotingName(m_quoting)});
    }
    if (!excel) {
        lines.append({QStringLiteral("Line endings"), lineEndingName(m_lineEndings)});
        lines.append({QStringLiteral("Encoding"), m_encoding});
        if (m_encoding.contains(QLatin1String("utf"), Qt::CaseInsensitive))
            lines.append({QStringLiteral("Byte Order Mark"), yesNo(m_byteOrderMark)});
    } else {
        lines.append({QStringLiteral("Formatting"), QString::number(m_excelOutput)});
    }
    if (type == FileTypeJson)
        lines.append({QStringLiteral("Types"), QString::number(m_jsonTypes)});
    if (type == FileTypeXml) {
        lines.append({QStringLiteral("Above root"), m_xmlAboveRoot});
        lines.append({QStringLiteral("Root name"), m_xmlRoot});
        lines.append({QStringLiteral("Below root"), m_xmlBelowRoot});
        lines.append({QStringLiteral("Row name"), m_xmlRow});
    }
    if (type == FileTypeHtml)
        lines.append({QStringLiteral("Escape special"), yesNo(m_htmlEncode)});
    if (type == FileTypeJson || type == FileTypeXml)
        lines.append({QStringLiteral("Remove empty"), yesNo(m_removeEmpty)});
    if (fileTypeHasHeaderOption(type)) {
        QString label = QStringLiteral("Write header");
        if (m_writeMode == WriteAppend && m_writeHeaderFirstAppendOnly)
            label += QStringLiteral(" (if empty)");
        lines.append({label, yesNo(m_writeHeader)});
    }
    lines.append({QStringLiteral("Write mode"), writeModeName(m_writeMode)});
    return lines;
}

void OutputNode::applyExtensionDefaults(const QString &path)
{
    const QString extension = QFileInfo(path).suffix().trimmed().toLower();
    setOutputFileType(outputFileTypeForPath(path, FileTypeDelimited));
    const bool tabbed = extension.startsWith(QLatin1Char('t'));
    setDelimiter(tabbed ? DelimiterTab : DelimiterComma);
    setQuoting(tabbed ? OutputQuotingNever : OutputQuotingAsNeeded);
    setByteOrderMark(fileType() != FileTypeJson);
}

void OutputNode::setPath(const QString &path)
{
    if (path == this->path())
        return;
    IONode::setPath(path);
    setStatus(NeedsUpdate, true);
}

void OutputNode::setOutputFileType(int fileType)
{
    if (fileType == this->fileType())
        return;
    IONode::setFileType(fileType);
    setStatus(NeedsUpdate, true);
}

void OutputNode::setSingleOrMulti(int outputTo)
{
    change(m_singleOrMulti, outputTo);
}

void OutputNode::setMultiFileColumn(ColumnId column)
{
    m_pendingColumnNumber = -1;
    change(m_multiFileColumn, column);
}

int OutputNode::multiFileColumnNumber() const
{
    if (m_pendingColumnNumber >= 0)
        return m_pendingColumnNumber;
    if (m_multiFileColumn.isNull())
        return 0;
    const QList<Node *> sources = upstream();
    const Dataset *source = sources.isEmpty() ? &m_dataset : sources.first()->dataset();
    int index = source->columnIndex(m_multiFileColumn);
    if (index < 0 && source != &m_dataset)
        index = m_dataset.columnIndex(m_multiFileColumn);
    return index + 1;
}

void OutputNode::setMultiFileColumnNumber(int number)
{
    m_pendingColumnNumber = std::max(0, number);
    m_multiFileColumn = ColumnId();
    resolvePendingColumn();
    setStatus(NeedsUpdate, true);
}

bool OutputNode::resolvePendingColumn()
{
    if (m_pendingColumnNumber < 0)
        return false;
    const QList<Node *> sources = upstream();
    if (sources.isEmpty() || sources.first()->status() != UpToDate)
        return false;
    const Dataset *source = sources.first()->dataset();
    m_multiFileColumn
        = m_pendingColumnNumber >= 1 ? source->columnId(m_pendingColumnNumber - 1) : ColumnId();
    m_pendingColumnNumber = -1;
    return true;
}

void OutputNode::setMultiFileConfirm(bool on)
{
    change(m_multiFileConfirm, on);
}

void OutputNode::setWorksheet(const QString &sheet)
{
    change(m_worksheet, sheet);
}

void OutputNode::setDelimiter(int delimiter)
{
    change(m_delimiter, delimiter);
}

void OutputNode::setCustomDelimiter(QChar delimiter)
{
    change(m_customDelimiter, delimiter);
}

QChar OutputNode::delimiterChar() const
{
    const QChar c = delimiterCharacter(m_delimiter, m_customDelimiter);
    // A Custom delimiter never typed in would put nothing between the values.
    return c.isNull() ? QLatin1Char(',') : c;
}

void OutputNode::setQuoting(int quoting)
{
    change(m_quoting, quoting);
}

void OutputNode::setLineEndings(int lineEndings)
{
    change(m_lineEndings, lineEndings);
}

void OutputNode::setEncoding(const QString &encoding)
{
    change(m_encoding, encoding);
}

void OutputNode::setByteOrderMark(bool on)
{
    change(m_byteOrderMark, on);
}

void OutputNode::setExcelOutput(int formatting)
{
    change(m_excelOutput, formatting);
}

void OutputNode::setExcelManualColFormats(const QList<int> &formats)
{
    change(m_excelManualColFormats, formats);
}

void OutputNode::setExcelUseStyleTemplate(bool on)
{
    change(m_excelUseStyleTemplate, on);
}

void OutputNode::setExcelStyleTemplatePath(const QString &path)
{
    change(m_excelStyleTemplatePath, path);
}

void OutputNode::setOverwriteSheet(int mode)
{
    change(m_overwriteSheet, mode);
}

void OutputNode::setJsonTypes(int types)
{
    change(m_jsonTypes, types);
}

void OutputNode::setJsonManualColTypes(const QList<int> &types)
{
    change(m_jsonManualColTypes, types);
}

void OutputNode::setXmlAboveRoot(const QString &text)
{
    change(m_xmlAboveRoot, text);
}

void OutputNode::setXmlRoot(const QString &name)
{
    change(m_xmlRoot, name);
}

void OutputNode::setXmlBelowRoot(const QString &text)
{
    change(m_xmlBelowRoot, text);
}

void OutputNode::setXmlRow(const QString &name)
{
    change(m_xmlRow, name);
}

void OutputNode::setHtmlEncode(bool on)
{
    change(m_htmlEncode, on);
}

void OutputNode::setRemoveEmpty(bool on)
{
    change(m_removeEmpty, on);
}

void OutputNode::setWriteHeader(bool on)
{
    change(m_writeHeader, on);
}

void OutputNode::setWriteHeaderFirstAppendOnly(bool on)
{
    change(m_writeHeaderFirstAppendOnly, on);
}

void OutputNode::setWriteMode(int mode)
{
    change(m_writeMode, mode);
}

void OutputNode::setFileComment(const QString &comment)
{
    change(m_fileComment, comment);
}

QString OutputNode::documentPath() const
{
    const GraphScene *owner = graphScene();
    return owner ? owner->documentPath() : QString();
}

PathVariables OutputNode::pathVariables() const
{
    PathVariables variables;
    variables.setDocumentPath(documentPath());
    if (const GraphScene *owner = graphScene()) {
        QList<Node *> inputs = owner->nodesOfType(InputType);
        std::sort(inputs.begin(), inputs.end(),
                  [](const Node *a, const Node *b) { return a->id() < b->id(); });
        for (const Node *node : qAsConst(inputs)) {
            const auto *input = qobject_cast<const InputNode *>(node);
            if (!input || input->medium() != InputNode::File || input->path().isEmpty()
                || input->alias().isEmpty())
                continue;
            variables.addInput(input->alias(), input->path(), input->worksheet());
        }
    }
    return variables;
}

QPair<QString, QString> OutputNode::expandPathVariables(const QString &path,
                                                        const QString &sheet) const
{
    QString expandedPath = path;
    QString expandedSheet = sheet;
    pathVariables().expand(expandedPath, expandedSheet);
    return {expandedPath, expandedSheet};
}

OutputFileOptions OutputNode::fileOptions() const
{
    OutputFileOptions options;
    options.fileType = fileType();
    options.writeMode = m_writeMode;
    options.encoding = m_encoding;
    options.byteOrderMark = m_byteOrderMark;
    options.delimiter = delimiterChar();
    options.quoting = m_quoting;
    options.lineEnding = m_lineEndings;
    options.writeHeader = m_writeHeader;
    options.writeHeaderFirstAppendOnly = m_writeHeaderFirstAppendOnly;
    options.htmlEncode = m_htmlEncode;
    return options;
}

void OutputNode::run(bool, bool freeUpstream)
{
    if (GraphScene::isStopRequested() || status() == UpToDate || !isUpstreamUpToDate())
        return;
    m_dataset.clear();
    clearMessages();
    m_noFilesColumn = false;

    const QList<Node *> inputs = upstream();
    if (inputs.size() != 1) {
        setStatus(UpToDate, false);
        addWarning(QStringLiteral("No transforms or inputs connected"));
        update();
        return;
    }

    if (m_singleOrMulti == SingleFile) {
        const QString target = expandPathVariables(path(), m_worksheet).first;
        const QString extension = QFileInfo(target).suffix().trimmed().toLower();
        if (Settings::instance()->blockedOutputExtensionSet().contains(extension)) {
            setStatus(Error, true);
            addWarning(QStringLiteral("The extension for this file is blocked in "
                                      "'Preferences>Output Extensions':\n%1")
                           .arg(nativePath(target)));
            update();
            return;
        }
    }

    setStatus(Updating, false);
    emit processingStart(this);
    m_dataset = *inputs.first()->dataset();
    resolvePendingColumn();
    QElapsedTimer timer;
    timer.start();
    setFractionProcessed(0.0);
    bool ok = true;
    if (!outputEnabled())
        addInfo(QStringLiteral("Write mode='%1'").arg(writeModeName(m_writeMode)));
    else
        ok = write();
    m_dataset.assignColumnIds(id());
    finishRun(timer.elapsed());
    setStatus(ok ? UpToDate : Error, false);
    emit processingEnd(this);
    m_dataset.clearStringPools();
    update();
    if (freeUpstream)
        freeUpstreamData();
}

bool OutputNode::write()
{
    if (!isExcel() && m_lineEndings == LineEndingAutomatic) {
        addInfo(QStringLiteral("Line endings=Automatic sets line endings as %1. Set 'Line endings' "
                               "option to change.\n")
                    .arg(lineEndingName(LineEndingWindows)));
    }
    if (m_singleOrMulti == MultipleFiles)
        return writeMultipleFiles();
    return writeFile(path(), m_worksheet, m_dataset);
}

bool OutputNode::writeFile(const QString &path, const QString &sheet, const Dataset &dataset,
                           bool expand, double progressStart, double progressSpan, bool *written)
{
    const PathVariables variables = pathVariables();
    QString target = path;
    QString targetSheet = sheet;
    if (expand) {
        variables.expand(target, targetSheet);
        m_pathWithoutSheetVarsReplaced = target;
        m_sheetVarsReplaced = targetSheet;
    }
    OutputFileOptions options = fileOptions();
    options.comment = variables.expand(m_fileComment);
    WriteReport report;
    const bool ok = writeOutputFile(target, dataset, options, report,
                                    [this, progressStart, progressSpan](double fraction) {
                                        onProcessed(progressStart + fraction * progressSpan);
                                    });
    m_warnings += report.warnings;
    m_info += report.info;
    if (written)
        *written = report.written;
    return ok;
}

bool OutputNode::writeMultipleFiles()
{
    const int column = m_multiFileColumn.isNull() ? -1 : m_dataset.columnIndex(m_multiFileColumn);
    if (column < 0) {
        m_noFilesColumn = true;
        addWarning(QStringLiteral("No column set for 'Files column'.\n"));
        return false;
    }

    const QSet<QString> blocked = Settings::instance()->blockedOutputExtensionSet();
    const PathVariables variables = pathVariables();
    const QString document = documentPath();
    const QString documentFolder
        = document.isEmpty() ? QString() : QFileInfo(document).absolutePath();
    // Files columns repeat their values, so each distinct value is looked at once.
    QHash<QString, ResolvedTarget> resolved;
    auto resolve = [&](const QString &value) {
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
    };

    CappedList warnings(m_warnings);
    QMap<QPair<QString, QString>, QList<int>> targets;
    const int rowCount = m_dataset.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        const QString value = m_dataset.cell(r, column).trimmed();
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
            it = resolved.insert(value, resolve(value));
        switch (it->problem) {
        case ResolvedTarget::None:
            targets[{it->path, it->sheet}].append(r);
            break;
        case ResolvedTarget::RelativeUnsaved:
            warnings.add(QStringLiteral("Relative file path for '%1' at row %2, but .tabulon not "
                                        "saved for it to be relative to.")
                             .arg(value, row));
            break;
        case ResolvedTarget::NotValid:
            warnings.add(QStringLiteral("File path not valid for '%1' at row %2").arg(value, row));
            break;
        case ResolvedTarget::NoFolder:
            warnings.add(
                QStringLiteral("Folder does not exist for '%1' at row %2").arg(value, row));
            break;
        case ResolvedTarget::NoFileName:
            warnings.add(QStringLiteral("No file name for '%1' at row %2").arg(value, row));
            break;
        case ResolvedTarget::Blocked:
            warnings.add(
                QStringLiteral("Extension for '%1' is blocked in 'Preferences>Output Extensions'.")
                    .arg(value));
            break;
        }
    }

    if (m_multiFileConfirm && s_interactive && !targets.isEmpty()
        && !confirmTargets(targets.keys())) {
        addWarning(QStringLiteral("Output cancelled by user"));
        return true;
    }

    // Each target's dataset lives only while it is written.
    QStringList header = m_dataset.header();
    if (column < header.size())
        header.removeAt(column);
    CappedList writtenLines(m_info);
    const double span = 1.0 / std::max(1, targets.size());
    int writtenCount = 0;
    int done = 0;
    bool ok = true;
    for (auto it = targets.constBegin(); it != targets.constEnd(); ++it, ++done) {
        Dataset part;
        part.setColumnCount(m_dataset.columnCount() - 1);
        if (m_dataset.hasHeader())
            part.setHeader(header);
        part.reserveRows(it->size());
        // With the Files column as the only column there is nothing left to write but the file.
        const QList<int> &rows = it.value();
        for (int i = 0; part.hasColumns() && i < rows.size(); ++i) {
            QStringList cells = m_dataset.row(rows.at(i));
            cells.removeAt(column);
            part.appendRow(cells, true);
        }
        bool written = false;
        if (!writeFile(it.key().first, it.key().second, part, false, done * span, span, &written))
            ok = false;
        if (written) {
            ++writtenCount;
            writtenLines.add(QStringLiteral("Written to '%1'").arg(nativePath(it.key().first)));
        }
    }
    if (writtenCount > 0)
        addInfo(QStringLiteral("%1 file(s) written").arg(formatCount(writtenCount)));
    else
        addWarning(QStringLiteral("0 files written"));
    return ok;
}

bool OutputNode::confirmTargets(const QList<QPair<QString, QString>> &targets)
{
    QStringList existing;
    QStringList created;
    for (const auto &target : targets) {
        const QString shown = target.second.isEmpty()
            ? nativePath(target.first)
            : QStringLiteral("%1[%2]").arg(nativePath(target.first), target.second);
        (QFileInfo::exists(target.first) ? existing : created).append(shown);
    }
    const QString word
        = isExcel() ? QStringLiteral("file(s)/sheets(s)") : QStringLiteral("file(s)");
    QString text;
    if (!existing.isEmpty()) {
        QString pattern = QStringLiteral("%1 existing %2 to be overwritten:\n%3\n");
        if (m_writeMode == WriteAppend)
            pattern = QStringLiteral("%1 existing %2 to be appended to:\n%3\n");
        else if (m_writeMode == WriteNew)
            pattern = QStringLiteral("%1 existing %2 will not be overwritten:\n%3\n");
        text += pattern.arg(formatCount(existing.size()), word, existing.join(QLatin1Char('\n')));
    }
    if (!created.isEmpty()) {
        text += QStringLiteral("%1 new %2 to be created:\n%3\n")
                    .arg(formatCount(created.size()), word, created.join(QLatin1Char('\n')));
    }
    const int toWrite = m_writeMode == WriteNew ? created.size() : targets.size();
    text += QStringLiteral("%1 %2 will be written").arg(formatCount(toWrite), word);
    const QString title = QStringLiteral("Multi file output");
    return s_confirmHandler ? s_confirmHandler(title, text) : askWithMessageBox(title, text);
}

void OutputNode::setSourcePaths(const QString &documentFolder)
{
    IONode::setPath(resolvedAgainstFolder(path(), documentFolder));
    m_excelStyleTemplatePath = resolvedAgainstFolder(m_excelStyleTemplatePath, documentFolder);
}

void OutputNode::writeAttributes(QDomElement &element, const QString &documentFolder) const
{
    using namespace XmlAttributes;
    setInt(element, QStringLiteral("id"), id());
    setInt(element, QStringLiteral("single_or_multi"), m_singleOrMulti);
    setInt(element, QStringLiteral("multi_file_column"), multiFileColumnNumber());
    setBool(element, QStringLiteral("multi_file_confirm"), m_multiFileConfirm);
    setText(element, QStringLiteral("name"), alias());
    setText(element, QStringLiteral("comment"), comment());
    setPosition(element, pos());
    setText(element, QStringLiteral("path"), relativeToFolder(path(), documentFolder));
    setInt(element, QStringLiteral("file_type"), fileType());
    setText(element, QStringLiteral("alias"), alias());
    setText(element, QStringLiteral("custom_delimiter"),
            m_customDelimiter.isNull() ? QString() : QString(m_customDelimiter));
    setInt(element, QStringLiteral("delimiter"), m_delimiter);
    setInt(element, QStringLiteral("line_endings"), m_lineEndings);
    setInt(element, QStringLiteral("quote"), m_quoting);
    setInt(element, QStringLiteral("excel_output"), m_excelOutput);
    setBool(element, QStringLiteral("excel_use_style_template"), m_excelUseStyleTemplate);
    setText(element, QStringLiteral("excel_style_template_path"),
            relativeToFolder(m_excelStyleTemplatePath, documentFolder));
    setText(element, QStringLiteral("path_without_sheet_vars_replaced"),
            m_pathWithoutSheetVarsReplaced);
    setText(element, QStringLiteral("sheet_vars_replaced"), m_sheetVarsReplaced);
    setIntList(element, QStringLiteral("excel_manual_col_formats"), m_excelManualColFormats);
    setInt(element, QStringLiteral("json_types"), m_jsonTypes);
    setIntList(element, QStringLiteral("json_manual_col_types"), m_jsonManualColTypes);
    setText(element, QStringLiteral("encoding"), m_encoding);
    setBool(element, QStringLiteral("bom"), m_byteOrderMark);
    setText(element, QStringLiteral("xml_above_root"), m_xmlAboveRoot);
    setText(element, QStringLiteral("xml_root"), m_xmlRoot);
    setText(element, QStringLiteral("xml_below_root"), m_xmlBelowRoot);
    setText(element, QStringLiteral("xml_row"), m_xmlRow);
    setBool(element, QStringLiteral("html_encode"), m_htmlEncode);
    setInt(element, QStringLiteral("enable_output"), m_writeMode);
    setInt(element, QStringLiteral("overwrite_sheet"), m_overwriteSheet);
    setText(element, QStringLiteral("worksheet"), m_worksheet);
    setBool(element, QStringLiteral("write_header"), m_writeHeader);
    setBool(element, QStringLiteral("write_header_first_append_only"),
            m_writeHeaderFirstAppendOnly);
    setBool(element, QStringLiteral("remove_empty"), m_removeEmpty);
    setText(element, QStringLiteral("file_comment"), m_fileComment);
}

void OutputNode::readAttributes(const QDomElement &element, int version,
                                const QString &documentFolder)
{
    using namespace XmlAttributes;
    m_singleOrMulti
        = boundedInt(element, QStringLiteral("single_or_multi"), SingleFile, MultipleFiles);
    const int column = intValue(element, QStringLiteral("multi_file_column"), 0);
    m_multiFileColumn = ColumnId();
    m_pendingColumnNumber = column > 0 ? column : -1;
    m_multiFileConfirm = boolValue(element, QStringLiteral("multi_file_confirm"), true);
    setAlias(text(element, QStringLiteral("alias"), text(element, QStringLiteral("name"))));
    setComment(text(element, QStringLiteral("comment")));
    setPos(position(element));
    IONode::setPath(resolvedAgainstFolder(text(element, QStringLiteral("path")), documentFolder));

    // What a new item would take from the extension fills in for any option left out.
    const QString extension = QFileInfo(path()).suffix().trimmed().toLower();
    const bool tabbed = extension.startsWith(QLatin1Char('t'));
    IONode::setFileType(boundedInt(element, QStringLiteral("file_type"),
                                   outputFileTypeForPath(path(), FileTypeDelimited),
                                   FileTypePlainText));
    const QString custom = text(element, QStringLiteral("custom_delimiter"));
    m_customDelimiter = custom.isEmpty() ? QChar() : custom.at(0);
    m_delimiter = boundedInt(element, QStringLiteral("delimiter"),
                             tabbed ? DelimiterTab : DelimiterComma, DelimiterUnitSeparator);
    m_lineEndings = boundedInt(element, QStringLiteral("line_endings"), LineEndingAutomatic,
                               LineEndingRecordSeparator);
    m_quoting = boundedInt(element, QStringLiteral("quote"),
                           tabbed ? OutputQuotingNever : OutputQuotingAsNeeded, OutputQuotingNever);
    m_excelOutput = intValue(element, QStringLiteral("excel_output"), 0);
    m_excelUseStyleTemplate = boolValue(element, QStringLiteral("excel_use_style_template"), false);
    m_excelStyleTemplatePath = resolvedAgainstFolder(
        text(element, QStringLiteral("excel_style_template_path")), documentFolder);
    m_pathWithoutSheetVarsReplaced
        = text(element, QStringLiteral("path_without_sheet_vars_replaced"));
    m_sheetVarsReplaced = text(element, QStringLiteral("sheet_vars_replaced"));
    m_excelManualColFormats = intList(element, QStringLiteral("excel_manual_col_formats"));
    m_jsonTypes = intValue(element, QStringLiteral("json_types"), 0);
    m_jsonManualColTypes = intList(element, QStringLiteral("json_manual_col_types"));
    m_encoding = text(element, QStringLiteral("encoding"), QStringLiteral("UTF-8"));
    m_byteOrderMark = boolValue(element, QStringLiteral("bom"), fileType() != FileTypeJson);
    m_xmlAboveRoot = text(element, QStringLiteral("xml_above_root"));
    m_xmlRoot = text(element, QStringLiteral("xml_root"), QStringLiteral("root"));
    m_xmlBelowRoot = text(element, QStringLiteral("xml_below_root"));
    m_xmlRow = text(element, QStringLiteral("xml_row"), QStringLiteral("record"));
    m_htmlEncode = boolValue(element, QStringLiteral("html_encode"), true);
    m_writeMode = boundedInt(element, QStringLiteral("enable_output"), WriteOverwrite, WriteNew);
    m_overwriteSheet = boundedInt(element, QStringLiteral("overwrite_sheet"), OverwriteSheetOnly,
                                  OverwriteSheetOnly);
    m_worksheet = text(element, QStringLiteral("worksheet"));
    m_writeHeader = boolValue(element, QStringLiteral("write_header"), true);
    m_writeHeaderFirstAppendOnly
        = boolValue(element, QStringLiteral("write_header_first_append_only"), true);
    m_removeEmpty = boolValue(element, QStringLiteral("remove_empty"), true);
    // Documents older than 61 left the comment out when it was the default.
    m_fileComment = text(element, QStringLiteral("file_comment"),
                         version < 61 ? defaultFileComment() : QString());
}
