#include "flow/inputitem.h"

#include "flow/flowmodel.h"
#include "flow/xmlattributes.h"
#include "io/delimitedtext.h"
#include "io/filetypes.h"
#include "io/inputreader.h"
#include "io/metainfo.h"
#include "shell/settings.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QTimer>

namespace {

QString yesNo(bool on)
{
    return on ? QStringLiteral("Yes") : QStringLiteral("No");
}

QString storedPath(const QString &path, const QString &documentFolder)
{
    if (path.isEmpty() || documentFolder.isEmpty())
        return QDir::toNativeSeparators(path);
    const QString relative = QDir(documentFolder).relativeFilePath(path);
    if (relative.startsWith(QLatin1String("..")) || QFileInfo(relative).isAbsolute())
        return QDir::toNativeSeparators(path);
    return QDir::toNativeSeparators(relative);
}

QString resolvedPath(const QString &stored, const QString &documentFolder)
{
    const QString path = QDir::fromNativeSeparators(stored);
    if (path.isEmpty() || QFileInfo(path).isAbsolute() || documentFolder.isEmpty())
        return path;
    return QDir::cleanPath(QDir(documentFolder).absoluteFilePath(path));
}

} // namespace

InputItem::InputItem(int id)
    : IOItem(id)
{
    setFileType(FileTypeDelimited);
}

InputItem::~InputItem() = default;

void InputItem::copyOptionsInto(InputItem *copy) const
{
    copy->m_medium = m_medium;
    copy->m_text = m_text;
    copy->m_worksheet = m_worksheet;
    copy->m_delimiter = m_delimiter;
    copy->m_customDelimiter = m_customDelimiter;
    copy->m_ignoreRepeatedDelimiters = m_ignoreRepeatedDelimiters;
    copy->m_quoting = m_quoting;
    copy->m_autoFixedWidths = m_autoFixedWidths;
    copy->m_fixedWidths = m_fixedWidths;
    copy->m_encoding = m_encoding;
    copy->m_header = m_header;
    copy->m_ignoredRows = m_ignoredRows;
    copy->m_watching = m_watching;
    copy->m_trim = m_trim;
    copy->m_simplify = m_simplify;
    copy->m_ignoreEmptyRows = m_ignoreEmptyRows;
    copy->m_ignoreEmptyColumns = m_ignoreEmptyColumns;
    copy->m_ignoreExcelHiddenRows = m_ignoreExcelHiddenRows;
    copy->m_ignoreExcelHiddenColumns = m_ignoreExcelHiddenColumns;
    copy->m_metaPlace = m_metaPlace;
    copy->m_metaText = m_metaText;
    copy->m_metaColumnName = m_metaColumnName;
    copy->m_jsonArraysAsRows = m_jsonArraysAsRows;
    copy->m_schema = m_schema;
}

FlowItem *InputItem::clone() const
{
    auto *copy = new InputItem(id());
    copyIOInto(copy);
    copyOptionsInto(copy);
    return copy;
}

QString InputItem::displayName() const
{
    if (m_medium == Clipboard)
        return QStringLiteral("Clipboard");
    if (path().isEmpty())
        return QStringLiteral("<unset>");
    const QString name = QFileInfo(inputPathWithoutSheet(path())).fileName();
    if (!m_worksheet.isEmpty())
        return QStringLiteral("%1[%2]").arg(name, m_worksheet);
    return name;
}

QString InputItem::description() const
{
    return QStringLiteral("Input from %1.")
        .arg(m_medium == Clipboard ? QStringLiteral("clipboard") : QStringLiteral("file"));
}

bool InputItem::hasHeader() const
{
    if (m_dataset.hasColumns())
        return m_dataset.hasHeader();
    return m_header == HasHeader;
}

// Options

void InputItem::markChanged()
{
    setStatus(NeedsUpdate, true);
}

template<typename T> void InputItem::change(T &member, const T &value)
{
    if (member == value)
        return;
    member = value;
    markChanged();
}

void InputItem::setMedium(int value)
{
    change(m_medium, value);
}

void InputItem::setText(const QString &value)
{
    change(m_text, value);
}

void InputItem::setWorksheet(const QString &value)
{
    change(m_worksheet, value);
}

void InputItem::setDelimiter(int value)
{
    change(m_delimiter, value);
}

void InputItem::setCustomDelimiter(QChar value)
{
    change(m_customDelimiter, value);
}

void InputItem::setIgnoreRepeatedDelimiters(bool value)
{
    change(m_ignoreRepeatedDelimiters, value);
}

void InputItem::setQuoting(int value)
{
    change(m_quoting, value);
}

void InputItem::setAutoFixedWidths(int value)
{
    change(m_autoFixedWidths, value);
}

void InputItem::setFixedWidths(const QList<int> &value)
{
    change(m_fixedWidths, value);
}

void InputItem::setEncoding(const QString &value)
{
    change(m_encoding, value);
}

void InputItem::setHeader(int value)
{
    change(m_header, value);
}

void InputItem::setIgnoredRows(int value)
{
    change(m_ignoredRows, value);
}

void InputItem::setTrim(bool value)
{
    change(m_trim, value);
}

void InputItem::setSimplify(bool value)
{
    change(m_simplify, value);
}

void InputItem::setIgnoreEmptyRows(bool value)
{
    change(m_ignoreEmptyRows, value);
}

void InputItem::setIgnoreEmptyColumns(bool value)
{
    change(m_ignoreEmptyColumns, value);
}

void InputItem::setIgnoreExcelHiddenRows(bool value)
{
    change(m_ignoreExcelHiddenRows, value);
}

void InputItem::setIgnoreExcelHiddenColumns(bool value)
{
    change(m_ignoreExcelHiddenColumns, value);
}

void InputItem::setMetaPlace(int value)
{
    change(m_metaPlace, value);
}

void InputItem::setMetaText(const QString &value)
{
    change(m_metaText, value);
}

void InputItem::setMetaColumnName(const QString &value)
{
    change(m_metaColumnName, value);
}

void InputItem::setJsonArraysAsRows(int value)
{
    change(m_jsonArraysAsRows, value);
}

void InputItem::setPath(const QString &path)
{
    if (path == this->path())
        return;
    IOItem::setPath(path);
    markChanged();
}

void InputItem::setInputFileType(int fileType)
{
    if (fileType == this->fileType())
        return;
    setFileType(fileType);
    markChanged();
}

void InputItem::setWatching(bool on)
{
    if (m_watching == on)
        return;
    m_watching = on;
    updateWatcher();
}

void InputItem::setSchema(const Schema &schema)
{
    m_schema = schema;
    markChanged();
}

QVariantList InputItem::stateList() const
{
    QVariantList state = FlowItem::stateList();
    state << m_medium << path() << m_text << fileType() << m_worksheet << m_delimiter
          << QString(m_customDelimiter) << m_ignoreRepeatedDelimiters << m_quoting << m_encoding
          << m_header << m_ignoredRows << m_watching << m_trim << m_simplify << m_ignoreEmptyRows
          << m_ignoreEmptyColumns << m_metaPlace << m_metaText << m_metaColumnName;
    return state;
}

QList<QPair<QString, QString>> InputItem::parameterSummary() const
{
    QList<QPair<QString, QString>> lines;
    const int type = fileType();
    // A type outside the table has none of the options.
    static const FileFormat none {};
    const FileFormat *found = FileFormats::find(type);
    const FileFormat &format = found ? *found : none;
    lines.append({QStringLiteral("Type"), fileTypeName(type)});
    if (format.delimiter) {
        lines.append({QStringLiteral("Delimiter"), delimiterName(m_delimiter)});
        lines.append({QStringLiteral("Ignore repeated delim"), yesNo(m_ignoreRepeatedDelimiters)});
        lines.append({QStringLiteral("Quoting"), quotingName(m_quoting)});
    }
    if (type == FileTypeFixedWidth)
        lines.append({QStringLiteral("Columns"),
                      m_autoFixedWidths ? QStringLiteral("Automatic") : QStringLiteral("Manual")});
    if (m_medium == File && format.encoding)
        lines.append({QStringLiteral("Encoding"), m_encoding});
    if (format.arraysAsRows)
        lines.append({QStringLiteral("Format"),
                      m_jsonArraysAsRows ? QStringLiteral("Long (more rows)")
                                         : QStringLiteral("Wide (more columns)")});
    if (format.ignoredRows)
        lines.append(
            {QStringLiteral("Ignore"), QStringLiteral("First %1 row(s)").arg(m_ignoredRows)});
    if (format.header)
        lines.append({QStringLiteral("Has header"), yesNo(hasHeader())});
    lines.append({QStringLiteral("Trim whitespace"), yesNo(m_trim)});
    lines.append({QStringLiteral("Simplify whitespace"), yesNo(m_simplify)});
    lines.append({QStringLiteral("Ignore empty rows"), yesNo(m_ignoreEmptyRows)});
    lines.append({QStringLiteral("Ignore empty columns"), yesNo(m_ignoreEmptyColumns)});
    if (format.sheets) {
        lines.append({QStringLiteral("Ignore hidden Excel rows"), yesNo(m_ignoreExcelHiddenRows)});
        lines.append(
            {QStringLiteral("Ignore hidden Excel columns"), yesNo(m_ignoreExcelHiddenColumns)});
    }
    lines.append({QStringLiteral("Meta information"), MetaInfo::placeNames().value(m_metaPlace)});
    lines.append({QStringLiteral("Uses schema"), yesNo(m_schema.inUse)});
    if (!alias().isEmpty())
        lines.append({QStringLiteral("Alias"), alias()});
    return lines;
}

// Reading

InputReadOptions InputItem::readOptions() const
{
    const FileExtensionRules rules = FileTypes::currentExtensionRules();
    InputReadOptions options;
    options.medium = m_medium;
    options.path = path();
    options.text = m_text;
    options.fileType = fileType();
    options.worksheet = m_worksheet;
    options.delimiter = m_delimiter;
    options.customDelimiter = m_customDelimiter;
    options.ignoreRepeatedDelimiters = m_ignoreRepeatedDelimiters;
    options.quoting = m_quoting;
    options.autoFixedWidths = m_autoFixedWidths;
    options.fixedWidths = m_fixedWidths;
    options.encoding = m_encoding;
    options.header = m_header;
    options.ignoredRows = m_ignoredRows;
    options.trim = m_trim;
    options.simplify = m_simplify;
    options.ignoreEmptyRows = m_ignoreEmptyRows;
    options.ignoreEmptyColumns = m_ignoreEmptyColumns;
    options.ignoreExcelHiddenRows = m_ignoreExcelHiddenRows;
    options.ignoreExcelHiddenColumns = m_ignoreExcelHiddenColumns;
    options.metaPlace = m_metaPlace;
    options.metaText = m_metaText;
    options.metaColumnName = m_metaColumnName;
    options.jsonArraysAsRows = m_jsonArraysAsRows;
    options.columnOrigin = id();
    options.extensionTypes = rules.inputTypes;
    options.blockedExtensions = rules.blockedInput;
    return options;
}

QString InputItem::extensionWarning() const
{
    return extensionMismatchWarning(path(), fileType(),
                                    Settings::instance()->inputFileExtensions());
}

void InputItem::run(bool recursive, bool freeUpstream)
{
    if (isStopRequested())
        return;
    if (status() != UpToDate) {
        m_dataset.clear();
        clearMessages();
        setStatus(Updating, false);
        emit processingStart(this);
        QElapsedTimer timer;
        timer.start();
        setFractionProcessed(0.0);

        InputReadCallbacks callbacks;
        callbacks.progress = [this](double fraction) {
            onProcessed(fraction);
        };
        InputReadResult result = readInput(readOptions(), callbacks);
        m_dataset = std::move(result.dataset);
        m_header = result.header;
        m_warnings += result.warnings;
        m_info += result.info;
        // Some editors replace the file when saving, so each read builds a new watcher.
        if (result.fileOpened)
            updateWatcher();

        finishRun(timer.elapsed());
        setStatus(result.ok ? UpToDate : Error, false);
        emit processingEnd(this);
        m_dataset.clearStringPools();
        resolveChildParameterTexts();
        emit changed();
    }
    if (!recursive)
        return;
    const QList<FlowItem *> children = downstream(true);
    for (FlowItem *child : children) {
        if (status() != Error)
            child->run(recursive, freeUpstream);
    }
}

// Watching

void InputItem::updateWatcher()
{
    const QString file = inputPathWithoutSheet(path());
    delete m_watcher;
    m_watcher = nullptr;
    if (!m_watching || m_medium != File || file.isEmpty() || !QFileInfo::exists(file))
        return;
    m_watcher = new QFileSystemWatcher(this);
    m_watcher->addPath(file);
    connect(m_watcher, &QFileSystemWatcher::fileChanged, this, &InputItem::onFileChanged);
}

QTimer *InputItem::importTimer()
{
    if (!m_importTimer) {
        m_importTimer = new QTimer(this);
        m_importTimer->setSingleShot(true);
        connect(m_importTimer, &QTimer::timeout, this, &InputItem::onDelayedImport);
    }
    return m_importTimer;
}

void InputItem::onFileChanged()
{
    importTimer()->start(ImportDelayMs);
}

void InputItem::onDelayedImport()
{
    const FlowModel *flow = model();
    if (flow && flow->isProcessing()) {
        importTimer()->start(BusyRetryDelayMs);
        return;
    }
    emit sourceChanged(this);
}

// Document attributes

void InputItem::writeAttributes(QDomElement &element, const QString &documentFolder) const
{
    XmlAttributes::setInt(element, QStringLiteral("medium"), m_medium);
    XmlAttributes::setInt(element, QStringLiteral("id"), id());
    XmlAttributes::setText(element, QStringLiteral("name"), displayName());
    XmlAttributes::setText(element, QStringLiteral("comment"), comment());
    XmlAttributes::setInt(element, QStringLiteral("ignored_rows"), m_ignoredRows);
    XmlAttributes::setInt(element, QStringLiteral("header"), m_header);
    XmlAttributes::setBool(element, QStringLiteral("watching"), m_watching);
    XmlAttributes::setInt(element, QStringLiteral("json_arrays_as_rows"), m_jsonArraysAsRows);
    XmlAttributes::setBool(element, QStringLiteral("trim"), m_trim);
    XmlAttributes::setBool(element, QStringLiteral("simplify"), m_simplify);
    XmlAttributes::setBool(element, QStringLiteral("ignore_empty"), m_ignoreEmptyRows);
    XmlAttributes::setBool(element, QStringLiteral("ignore_empty_cols"), m_ignoreEmptyColumns);
    XmlAttributes::setBool(element, QStringLiteral("ignore_excel_hidden_cols"),
                           m_ignoreExcelHiddenColumns);
    XmlAttributes::setBool(element, QStringLiteral("ignore_excel_hidden_rows"),
                           m_ignoreExcelHiddenRows);
    XmlAttributes::setInt(element, QStringLiteral("show_meta"), m_metaPlace);
    XmlAttributes::setText(element, QStringLiteral("meta_text"), m_metaText);
    XmlAttributes::setText(element, QStringLiteral("meta_col_name"), m_metaColumnName);
    XmlAttributes::setBool(element, QStringLiteral("schema_in_use"), m_schema.inUse);
    XmlAttributes::setTextList(element, QStringLiteral("schema_col_name"), m_schema.columnNames);
    XmlAttributes::setTextList(element, QStringLiteral("schema_missing_value"),
                               m_schema.missingValues);
    XmlAttributes::setInt(element, QStringLiteral("schema_missing_cols"), m_schema.missingColumns);
    XmlAttributes::setInt(element, QStringLiteral("schema_reorder_cols"), m_schema.reorderColumns);
    XmlAttributes::setInt(element, QStringLiteral("schema_extra_cols"), m_schema.extraColumns);
    XmlAttributes::setText(element, QStringLiteral("path"), storedPath(path(), documentFolder));
    XmlAttributes::setInt(element, QStringLiteral("file_type"), fileType());
    XmlAttributes::setText(element, QStringLiteral("alias"), alias());
    XmlAttributes::setInt(element, QStringLiteral("delimiter"), m_delimiter);
    XmlAttributes::setText(element, QStringLiteral("custom_delimiter"),
                           m_customDelimiter.isNull() ? QString() : QString(m_customDelimiter));
    XmlAttributes::setInt(element, QStringLiteral("quote"), m_quoting);
    XmlAttributes::setBool(element, QStringLiteral("ignore_repeated_delim"),
                           m_ignoreRepeatedDelimiters);
    XmlAttributes::setInt(element, QStringLiteral("auto_fixed_widths"), m_autoFixedWidths);
    XmlAttributes::setIntList(element, QStringLiteral("fixed_widths"), m_fixedWidths);
    XmlAttributes::setText(element, QStringLiteral("encoding"), m_encoding);
    XmlAttributes::setText(element, QStringLiteral("worksheet"), m_worksheet);
    XmlAttributes::setText(element, QStringLiteral("text"), m_text);
    XmlAttributes::setPosition(element, pos());
}

void InputItem::readAttributes(const QDomElement &element, int version,
                               const QString &documentFolder)
{
    using namespace XmlAttributes;
    const QString storedFilePath = XmlAttributes::text(element, QStringLiteral("path"));
    m_text = XmlAttributes::text(element, QStringLiteral("text"));
    m_medium = intValue(element, QStringLiteral("medium"),
                        storedFilePath.isEmpty() && !m_text.isEmpty() ? Clipboard : File);
    setComment(XmlAttributes::text(element, QStringLiteral("comment")));
    m_ignoredRows = std::max(0, intValue(element, QStringLiteral("ignored_rows"), 0));
    m_header = intValue(element, QStringLiteral("header"), NoHeader);
    m_watching = boolValue(element, QStringLiteral("watching"), false);
    m_jsonArraysAsRows = intValue(element, QStringLiteral("json_arrays_as_rows"), 0);
    m_trim = boolValue(element, QStringLiteral("trim"), false);
    m_simplify = boolValue(element, QStringLiteral("simplify"), false);
    m_ignoreEmptyRows = boolValue(element, QStringLiteral("ignore_empty"), false);
    m_ignoreEmptyColumns = boolValue(element, QStringLiteral("ignore_empty_cols"), false);
    if (version < 72) {
        const bool hidden = boolValue(element, QStringLiteral("ignore_excel_hidden"), false);
        m_ignoreExcelHiddenColumns = hidden;
        m_ignoreExcelHiddenRows = hidden;
    } else {
        m_ignoreExcelHiddenColumns
            = boolValue(element, QStringLiteral("ignore_excel_hidden_cols"), false);
        m_ignoreExcelHiddenRows
            = boolValue(element, QStringLiteral("ignore_excel_hidden_rows"), false);
    }
    m_metaPlace = intValue(element, QStringLiteral("show_meta"), 0);
    m_metaText = XmlAttributes::text(element, QStringLiteral("meta_text"));
    m_metaColumnName = XmlAttributes::text(element, QStringLiteral("meta_col_name"),
                                           QStringLiteral("Meta Info"));
    m_schema.inUse = boolValue(element, QStringLiteral("schema_in_use"), false);
    m_schema.columnNames = textList(element, QStringLiteral("schema_col_name"));
    m_schema.missingValues = textList(element, QStringLiteral("schema_missing_value"));
    m_schema.missingColumns = intValue(element, QStringLiteral("schema_missing_cols"), 0);
    m_schema.reorderColumns = intValue(element, QStringLiteral("schema_reorder_cols"), 0);
    m_schema.extraColumns = intValue(element, QStringLiteral("schema_extra_cols"), 0);
    IOItem::setPath(resolvedPath(storedFilePath, documentFolder));
    setFileType(intValue(element, QStringLiteral("file_type"), FileTypeNone));
    setAlias(XmlAttributes::text(element, QStringLiteral("alias")));
    m_delimiter = intValue(element, QStringLiteral("delimiter"), 0);
    const QString custom = XmlAttributes::text(element, QStringLiteral("custom_delimiter"));
    m_customDelimiter = custom.isEmpty() ? QChar() : custom.front();
    m_quoting = intValue(element, QStringLiteral("quote"), 0);
    m_ignoreRepeatedDelimiters = boolValue(element, QStringLiteral("ignore_repeated_delim"), false);
    m_autoFixedWidths = intValue(element, QStringLiteral("auto_fixed_widths"), 0);
    m_fixedWidths = intList(element, QStringLiteral("fixed_widths"));
    m_encoding
        = XmlAttributes::text(element, QStringLiteral("encoding"), QStringLiteral("Automatic"));
    m_worksheet = XmlAttributes::text(element, QStringLiteral("worksheet"));
    setPos(position(element));
    setStatus(NeedsUpdate, false);
}
