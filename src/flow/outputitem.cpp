#include "flow/outputitem.h"

#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/xmlattributes.h"
#include "io/delimitedtext.h"
#include "io/excelwriter.h"
#include "io/filetypes.h"
#include "io/outputpipeline.h"
#include "io/pathvariables.h"
#include "shell/settings.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include <algorithm>

bool OutputItem::s_interactive = true;
OutputItem::ConfirmHandler OutputItem::s_confirmHandler;

namespace {

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

} // namespace

OutputItem::OutputItem(int id, const QString &path)
    : IOItem(id)
    , m_delimiter(DelimiterComma)
{
    IOItem::setFileType(FileTypeDelimited);
    m_fileComment = defaultFileComment();
    if (!path.isEmpty()) {
        IOItem::setPath(path);
        applyExtensionDefaults(path);
    }
}

void OutputItem::setInteractive(bool on)
{
    s_interactive = on;
}

bool OutputItem::isInteractive()
{
    return s_interactive;
}

void OutputItem::setConfirmHandler(const ConfirmHandler &handler)
{
    s_confirmHandler = handler;
}

QString OutputItem::defaultFileComment()
{
    return QStringLiteral(" File created by %1 %2 at %3 %4 ")
        .arg(QStringLiteral("Tabulon"), QStringLiteral("{version}"), QStringLiteral("{date}"),
             QStringLiteral("{time}"));
}

FlowItem *OutputItem::clone() const
{
    auto *copy = new OutputItem(id());
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

QString OutputItem::label() const
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

QString OutputItem::writeStatusText() const
{
    if (status() == Error)
        return m_noFilesColumn ? QStringLiteral("Not written") : QStringLiteral("Error writing");
    if (!outputEnabled())
        return QStringLiteral("Write mode='%1'").arg(writeModeName(m_writeMode));
    return QStringLiteral("Written");
}

QString OutputItem::errorText() const
{
    return status() == Error ? writeStatusText() : QString();
}

QVariantList OutputItem::stateList() const
{
    QVariantList state = FlowItem::stateList();
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

bool OutputItem::isExcel() const
{
    return FileTypes::isExcel(fileType());
}

QList<QPair<QString, QString>> OutputItem::optionsList() const
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
        lines.append({QStringLiteral("Formatting"), ExcelFormatting::name(m_excelOutput)});
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

void OutputItem::applyExtensionDefaults(const QString &path)
{
    const QString extension = QFileInfo(path).suffix().trimmed().toLower();
    setOutputFileType(outputFileTypeForPath(path, FileTypeDelimited));
    const bool tabbed = extension.startsWith(QLatin1Char('t'));
    setDelimiter(tabbed ? DelimiterTab : DelimiterComma);
    setQuoting(tabbed ? OutputQuotingNever : OutputQuotingAsNeeded);
    setByteOrderMark(fileType() != FileTypeJson);
}

void OutputItem::setPath(const QString &path)
{
    if (path == this->path())
        return;
    IOItem::setPath(path);
    setStatus(NeedsUpdate, true);
}

void OutputItem::setOutputFileType(int fileType)
{
    if (fileType == this->fileType())
        return;
    IOItem::setFileType(fileType);
    setStatus(NeedsUpdate, true);
}

void OutputItem::setSingleOrMulti(int outputTo)
{
    change(m_singleOrMulti, outputTo);
}

void OutputItem::setMultiFileColumn(ColumnId column)
{
    m_pendingColumnNumber = -1;
    change(m_multiFileColumn, column);
}

int OutputItem::multiFileColumnNumber() const
{
    if (m_pendingColumnNumber >= 0)
        return m_pendingColumnNumber;
    if (m_multiFileColumn.isNull())
        return 0;
    const QList<FlowItem *> sources = upstream();
    const Dataset *source = sources.isEmpty() ? &m_dataset : sources.first()->dataset();
    int index = source->columnIndex(m_multiFileColumn);
    if (index < 0 && source != &m_dataset)
        index = m_dataset.columnIndex(m_multiFileColumn);
    return index + 1;
}

void OutputItem::setMultiFileColumnNumber(int number)
{
    m_pendingColumnNumber = std::max(0, number);
    m_multiFileColumn = ColumnId();
    resolvePendingColumn();
    setStatus(NeedsUpdate, true);
}

bool OutputItem::resolvePendingColumn()
{
    if (m_pendingColumnNumber < 0)
        return false;
    const QList<FlowItem *> sources = upstream();
    if (sources.isEmpty() || sources.first()->status() != UpToDate)
        return false;
    const Dataset *source = sources.first()->dataset();
    m_multiFileColumn
        = m_pendingColumnNumber >= 1 ? source->columnId(m_pendingColumnNumber - 1) : ColumnId();
    m_pendingColumnNumber = -1;
    return true;
}

void OutputItem::setMultiFileConfirm(bool on)
{
    change(m_multiFileConfirm, on);
}

void OutputItem::setWorksheet(const QString &sheet)
{
    change(m_worksheet, sheet);
}

void OutputItem::setDelimiter(int delimiter)
{
    change(m_delimiter, delimiter);
}

void OutputItem::setCustomDelimiter(QChar delimiter)
{
    change(m_customDelimiter, delimiter);
}

QChar OutputItem::delimiterChar() const
{
    const QChar c = delimiterCharacter(m_delimiter, m_customDelimiter);
    // A Custom delimiter never typed in would put nothing between the values.
    return c.isNull() ? QLatin1Char(',') : c;
}

void OutputItem::setQuoting(int quoting)
{
    change(m_quoting, quoting);
}

void OutputItem::setLineEndings(int lineEndings)
{
    change(m_lineEndings, lineEndings);
}

void OutputItem::setEncoding(const QString &encoding)
{
    change(m_encoding, encoding);
}

void OutputItem::setByteOrderMark(bool on)
{
    change(m_byteOrderMark, on);
}

void OutputItem::setExcelOutput(int formatting)
{
    change(m_excelOutput, formatting);
}

void OutputItem::setExcelManualColFormats(const QList<int> &formats)
{
    change(m_excelManualColFormats, formats);
}

void OutputItem::setExcelUseStyleTemplate(bool on)
{
    change(m_excelUseStyleTemplate, on);
}

void OutputItem::setExcelStyleTemplatePath(const QString &path)
{
    change(m_excelStyleTemplatePath, path);
}

void OutputItem::setOverwriteSheet(int mode)
{
    change(m_overwriteSheet, mode);
}

void OutputItem::setJsonTypes(int types)
{
    change(m_jsonTypes, types);
}

void OutputItem::setJsonManualColTypes(const QList<int> &types)
{
    change(m_jsonManualColTypes, types);
}

void OutputItem::setXmlAboveRoot(const QString &text)
{
    change(m_xmlAboveRoot, text);
}

void OutputItem::setXmlRoot(const QString &name)
{
    change(m_xmlRoot, name);
}

void OutputItem::setXmlBelowRoot(const QString &text)
{
    change(m_xmlBelowRoot, text);
}

void OutputItem::setXmlRow(const QString &name)
{
    change(m_xmlRow, name);
}

void OutputItem::setHtmlEncode(bool on)
{
    change(m_htmlEncode, on);
}

void OutputItem::setRemoveEmpty(bool on)
{
    change(m_removeEmpty, on);
}

void OutputItem::setWriteHeader(bool on)
{
    change(m_writeHeader, on);
}

void OutputItem::setWriteHeaderFirstAppendOnly(bool on)
{
    change(m_writeHeaderFirstAppendOnly, on);
}

void OutputItem::setWriteMode(int mode)
{
    change(m_writeMode, mode);
}

void OutputItem::setFileComment(const QString &comment)
{
    change(m_fileComment, comment);
}

QString OutputItem::documentPath() const
{
    const FlowModel *owner = model();
    return owner ? owner->documentPath() : QString();
}

PathVariables OutputItem::pathVariables() const
{
    PathVariables variables;
    variables.setDocumentPath(documentPath());
    if (const FlowModel *owner = model()) {
        QList<FlowItem *> inputs = owner->itemsOfKind(InputKind);
        std::sort(inputs.begin(), inputs.end(),
                  [](const FlowItem *a, const FlowItem *b) { return a->id() < b->id(); });
        for (const FlowItem *node : qAsConst(inputs)) {
            const auto *input = qobject_cast<const InputItem *>(node);
            if (!input || input->medium() != InputItem::File || input->path().isEmpty()
                || input->alias().isEmpty())
                continue;
            variables.addInput(input->alias(), input->path(), input->worksheet());
        }
    }
    return variables;
}

QPair<QString, QString> OutputItem::expandPathVariables(const QString &path,
                                                        const QString &sheet) const
{
    QString expandedPath = path;
    QString expandedSheet = sheet;
    pathVariables().expand(expandedPath, expandedSheet);
    return {expandedPath, expandedSheet};
}

OutputFileOptions OutputItem::fileOptions() const
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
    options.overwriteSheetOnly = m_overwriteSheet == OverwriteSheetOnly;
    options.excelFormatting = m_excelOutput;
    options.excelColumnFormats = m_excelManualColFormats;
    options.excelUseStyleTemplate = m_excelUseStyleTemplate;
    options.excelStyleTemplatePath = m_excelStyleTemplatePath;
    return options;
}

OutputRunOptions OutputItem::runOptions() const
{
    const FileExtensionRules rules = FileTypes::currentExtensionRules();
    OutputRunOptions options;
    options.file = fileOptions();
    options.file.extensionTypes = rules.outputTypes;
    options.path = path();
    options.sheet = m_worksheet;
    options.fileComment = m_fileComment;
    options.multipleFiles = m_singleOrMulti == MultipleFiles;
    options.filesColumn
        = m_multiFileColumn.isNull() ? -1 : m_dataset.columnIndex(m_multiFileColumn);
    options.blockedExtensions = rules.blockedOutput;
    return options;
}

void OutputItem::run(bool, bool freeUpstream)
{
    if (isStopRequested() || status() == UpToDate || !isUpstreamUpToDate())
        return;
    m_dataset.clear();
    clearMessages();
    m_noFilesColumn = false;

    const QList<FlowItem *> inputs = upstream();
    if (inputs.size() != 1) {
        setStatus(UpToDate, false);
        addWarning(QStringLiteral("No transforms or inputs connected"));
        emit changed();
        return;
    }

    if (m_singleOrMulti == SingleFile) {
        const QString blocked
            = blockedOutputWarning(expandPathVariables(path(), m_worksheet).first,
                                   Settings::instance()->blockedOutputExtensionSet());
        if (!blocked.isEmpty()) {
            setStatus(Error, true);
            addWarning(blocked);
            emit changed();
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
    ConfirmTargets confirm;
    if (m_multiFileConfirm && s_interactive) {
        confirm = [](const QString &title, const QString &text) {
            // Without a window to ask in, the question takes its default answer.
            return s_confirmHandler ? s_confirmHandler(title, text) : true;
        };
    }
    const OutputRunResult result = writeOutput(
        m_dataset, runOptions(), pathVariables(),
        [this](double fraction) { onProcessed(fraction); }, confirm);
    m_warnings += result.warnings;
    m_info += result.info;
    m_noFilesColumn = result.noFilesColumn;
    if (result.targetExpanded) {
        m_pathWithoutSheetVarsReplaced = result.expandedPath;
        m_sheetVarsReplaced = result.expandedSheet;
    }
    m_dataset.assignColumnIds(id());
    finishRun(timer.elapsed());
    setStatus(result.ok ? UpToDate : Error, false);
    emit processingEnd(this);
    m_dataset.clearStringPools();
    emit changed();
    if (freeUpstream)
        freeUpstreamData();
}

void OutputItem::setSourcePaths(const QString &documentFolder)
{
    IOItem::setPath(resolvedAgainstFolder(path(), documentFolder));
    m_excelStyleTemplatePath = resolvedAgainstFolder(m_excelStyleTemplatePath, documentFolder);
}

void OutputItem::writeAttributes(QDomElement &element, const QString &documentFolder) const
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

void OutputItem::readAttributes(const QDomElement &element, int version,
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
    IOItem::setPath(resolvedAgainstFolder(text(element, QStringLiteral("path")), documentFolder));

    // What a new item would take from the extension fills in for any option left out.
    const QString extension = QFileInfo(path()).suffix().trimmed().toLower();
    const bool tabbed = extension.startsWith(QLatin1Char('t'));
    IOItem::setFileType(boundedInt(element, QStringLiteral("file_type"),
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
