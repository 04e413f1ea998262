#include "graph/inputnode.h"

#include "data/valueinterpretation.h"
#include "graph/graphscene.h"
#include "graph/transformnode.h"
#include "graph/xmlattributes.h"
#include "io/delimitedtext.h"
#include "io/filetypes.h"
#include "io/metainfo.h"
#include "shell/memory.h"
#include "shell/settings.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QTextCodec>
#include <QTextStream>
#include <QTimer>

#include <new>

namespace {

QString yesNo(bool on)
{
    return on ? QStringLiteral("Yes") : QStringLiteral("No");
}

// The path of a file without the "[sheet]" part that Excel inputs append.
QString pathWithoutSheet(const QString &path)
{
    if (path.contains(QLatin1Char('[')) && path.contains(QLatin1Char(']')))
        return path.left(path.indexOf(QLatin1Char('[')));
    return path;
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

InputNode::InputNode(int id)
    : IONode(id)
{
    setFileType(FileTypeDelimited);
}

InputNode::~InputNode() = default;

void InputNode::copyOptionsInto(InputNode *copy) const
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

Node *InputNode::clone() const
{
    auto *copy = new InputNode(id());
    copyIOInto(copy);
    copyOptionsInto(copy);
    return copy;
}

QString InputNode::displayName() const
{
    if (m_medium == Clipboard)
        return QStringLiteral("Clipboard");
    if (path().isEmpty())
        return QStringLiteral("<unset>");
    const QString name = QFileInfo(pathWithoutSheet(path())).fileName();
    if (!m_worksheet.isEmpty())
        return QStringLiteral("%1[%2]").arg(name, m_worksheet);
    return name;
}

QString InputNode::description() const
{
    return QStringLiteral("Input from %1.")
        .arg(m_medium == Clipboard ? QStringLiteral("clipboard") : QStringLiteral("file"));
}

QColor InputNode::backgroundColor() const
{
    return QColor(0xE9, 0xF6, 0xEA);
}

QColor InputNode::borderColor() const
{
    return QColor(0x3C, 0x8D, 0x40);
}

void InputNode::connectToScene(GraphScene *scene)
{
    IONode::connectToScene(scene);
    connect(this, &InputNode::sourceChanged, scene, &GraphScene::onSourceChanged,
            Qt::UniqueConnection);
}

bool InputNode::hasHeader() const
{
    if (m_dataset.hasColumns())
        return m_dataset.hasHeader();
    return m_header == HasHeader;
}

// Options

void InputNode::markChanged()
{
    setStatus(NeedsUpdate, true);
}

template<typename T> void InputNode::change(T &member, const T &value)
{
    if (member == value)
        return;
    member = value;
    markChanged();
}

void InputNode::setMedium(int value)
{
    change(m_medium, value);
}

void InputNode::setText(const QString &value)
{
    change(m_text, value);
}

void InputNode::setWorksheet(const QString &value)
{
    change(m_worksheet, value);
}

void InputNode::setDelimiter(int value)
{
    change(m_delimiter, value);
}

void InputNode::setCustomDelimiter(QChar value)
{
    change(m_customDelimiter, value);
}

void InputNode::setIgnoreRepeatedDelimiters(bool value)
{
    change(m_ignoreRepeatedDelimiters, value);
}

void InputNode::setQuoting(int value)
{
    change(m_quoting, value);
}

void InputNode::setAutoFixedWidths(int value)
{
    change(m_autoFixedWidths, value);
}

void InputNode::setFixedWidths(const QList<int> &value)
{
    change(m_fixedWidths, value);
}

void InputNode::setEncoding(const QString &value)
{
    change(m_encoding, value);
}

void InputNode::setHeader(int value)
{
    change(m_header, value);
}

void InputNode::setIgnoredRows(int value)
{
    change(m_ignoredRows, value);
}

void InputNode::setTrim(bool value)
{
    change(m_trim, value);
}

void InputNode::setSimplify(bool value)
{
    change(m_simplify, value);
}

void InputNode::setIgnoreEmptyRows(bool value)
{
    change(m_ignoreEmptyRows, value);
}

void InputNode::setIgnoreEmptyColumns(bool value)
{
    change(m_ignoreEmptyColumns, value);
}

void InputNode::setIgnoreExcelHiddenRows(bool value)
{
    change(m_ignoreExcelHiddenRows, value);
}

void InputNode::setIgnoreExcelHiddenColumns(bool value)
{
    change(m_ignoreExcelHiddenColumns, value);
}

void InputNode::setMetaPlace(int value)
{
    change(m_metaPlace, value);
}

void InputNode::setMetaText(const QString &value)
{
    change(m_metaText, value);
}

void InputNode::setMetaColumnName(const QString &value)
{
    change(m_metaColumnName, value);
}

void InputNode::setJsonArraysAsRows(int value)
{
    change(m_jsonArraysAsRows, value);
}

void InputNode::setPath(const QString &path)
{
    if (path == this->path())
        return;
    IONode::setPath(path);
    markChanged();
}

void InputNode::setInputFileType(int fileType)
{
    if (fileType == this->fileType())
        return;
    setFileType(fileType);
    markChanged();
}

void InputNode::setWatching(bool on)
{
    if (m_watching == on)
        return;
    m_watching = on;
    updateWatcher();
}

void InputNode::setSchema(const Schema &schema)
{
    m_schema = schema;
    markChanged();
}

QVariantList InputNode::stateList() const
{
    QVariantList state = Node::stateList();
    state << m_medium << path() << m_text << fileType() << m_worksheet << m_delimiter
          << QString(m_customDelimiter) << m_ignoreRepeatedDelimiters << m_quoting << m_encoding
          << m_header << m_ignoredRows << m_watching << m_trim << m_simplify << m_ignoreEmptyRows
          << m_ignoreEmptyColumns << m_metaPlace << m_metaText << m_metaColumnName;
    return state;
}

QList<QPair<QString, QString>> InputNode::parameterSummary() const
{
    QList<QPair<QString, QString>> lines;
    const int type = fileType();
    const bool excel = FileTypes::isExcel(type);
    lines.append({QStringLiteral("Type"), fileTypeName(type)});
    if (type == FileTypeDelimited) {
        lines.append({QStringLiteral("Delimiter"), delimiterName(m_delimiter)});
        lines.append({QStringLiteral("Ignore repeated delim"), yesNo(m_ignoreRepeatedDelimiters)});
        lines.append({QStringLiteral("Quoting"), quotingName(m_quoting)});
    }
    if (type == FileTypeFixedWidth)
        lines.append({QStringLiteral("Columns"),
                      m_autoFixedWidths ? QStringLiteral("Automatic") : QStringLiteral("Manual")});
    if (m_medium == File && FileTypes::usesEncoding(type))
        lines.append({QStringLiteral("Encoding"), m_encoding});
    if (type == FileTypeJson || type == FileTypeXml)
        lines.append({QStringLiteral("Format"),
                      m_jsonArraysAsRows ? QStringLiteral("Long (more rows)")
                                         : QStringLiteral("Wide (more columns)")});
    if (type == FileTypeDelimited || excel || type == FileTypeFixedWidth || type == FileTypeVCard
        || type == FileTypePlainText)
        lines.append(
            {QStringLiteral("Ignore"), QStringLiteral("First %1 row(s)").arg(m_ignoredRows)});
    if (FileTypes::canHaveHeader(type))
        lines.append({QStringLiteral("Has header"), yesNo(hasHeader())});
    lines.append({QStringLiteral("Trim whitespace"), yesNo(m_trim)});
    lines.append({QStringLiteral("Simplify whitespace"), yesNo(m_simplify)});
    lines.append({QStringLiteral("Ignore empty rows"), yesNo(m_ignoreEmptyRows)});
    lines.append({QStringLiteral("Ignore empty columns"), yesNo(m_ignoreEmptyColumns)});
    if (excel) {
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

DelimitedReadOptions InputNode::readOptions() const
{
    DelimitedReadOptions options;
    options.delimiter = m_delimiter;
    options.customDelimiter = m_customDelimiter;
    options.quoting = m_quoting;
    options.ignoredRows = m_ignoredRows;
    options.ignoreRepeatedDelimiters = m_ignoreRepeatedDelimiters;
    options.trim = m_trim;
    options.simplify = m_simplify;
    options.ignoreEmpty = m_ignoreEmptyRows;
    return options;
}

QString InputNode::extensionWarning() const
{
    const QString file = pathWithoutSheet(path());
    const QString extension = QFileInfo(file).suffix();
    const int byExtension = FileTypes::inputTypeForExtension(extension, FileTypeNone);
    if (byExtension == FileTypeNone || byExtension == fileType())
        return QString();
    return QStringLiteral("'%1' extension is '%2' but file type is %3.")
        .arg(QDir::toNativeSeparators(file), extension, fileTypeName(fileType()));
}

bool InputNode::readText(QTextStream &stream, qint64 length, const QString &pathForMessages)
{
    const int type = fileType();
    if (type != FileTypeDelimited && type != FileTypePlainText) {
        addWarning(
            QStringLiteral("Reading %1 files is not available yet.").arg(fileTypeName(type)));
        return false;
    }
    TextReadReport report;
    auto progress = [this](double fraction) {
        onProcessed(fraction);
    };
    try {
        if (type == FileTypePlainText)
            readPlainText(stream, length, readOptions(), m_dataset, report, progress);
        else
            readDelimitedText(stream, length, readOptions(), m_dataset, report, progress);
    } catch (const MaxMemoryException &) {
        m_dataset.clear();
        addWarning(QStringLiteral("'%1' is too big for Tabulon to read.").arg(pathForMessages));
        return false;
    } catch (const std::bad_alloc &) {
        m_dataset.clear();
        addWarning(QStringLiteral("'%1' is too big for Tabulon to read.").arg(pathForMessages));
        return false;
    }
    m_info += report.info;
    m_warnings += report.warnings;
    return true;
}

bool InputNode::readFile()
{
    const int type = fileType();
    if (FileTypes::isExcel(type)) {
        addWarning(
            QStringLiteral("Reading %1 files is not available yet.").arg(fileTypeName(type)));
        return false;
    }
    QFile file(path());
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QTextStream stream(&file);
    QString codecName = QStringLiteral("UTF-8");
    if (m_encoding == QLatin1String("Automatic") || type == FileTypeJson) {
        stream.setCodec("UTF-8");
        stream.setAutoDetectUnicode(true);
        if (FileTypes::usesEncoding(type) && m_encoding == QLatin1String("Automatic"))
            addInfo(QStringLiteral(
                        "Encoding=Automatic guesses '%1'. Set 'Encoding' option to change.\n")
                        .arg(QStringLiteral("UTF-8")));
    } else {
        stream.setAutoDetectUnicode(false);
        if (QTextCodec *codec = QTextCodec::codecForName(m_encoding.toLatin1())) {
            stream.setCodec(codec);
            codecName = m_encoding;
        }
    }
    qint64 length = file.size();
    if (codecName.contains(QLatin1String("-16")))
        length /= 2;
    else if (codecName.contains(QLatin1String("-32")))
        length /= 4;
    const bool ok = readText(stream, length, QDir::toNativeSeparators(path()));
    updateWatcher();
    return ok;
}

bool InputNode::readSource()
{
    if (m_medium == File && !path().isEmpty()) {
        const QString file = pathWithoutSheet(path());
        if (!QFileInfo::exists(file)) {
            addWarning(QStringLiteral("File '%1' not found").arg(QDir::toNativeSeparators(file)));
            return false;
        }
        if (FileTypes::isInputExtensionBlocked(QFileInfo(file).suffix())) {
            addWarning(
                QStringLiteral("The extension for this file is blocked in 'Preferences>Input "
                               "Extensions':\n%1")
                    .arg(QDir::toNativeSeparators(file)));
            return false;
        }
        const bool ok = readFile();
        if (fileType() != FileTypeXlsx && fileType() != FileTypeXls) {
            const QString warning = extensionWarning();
            if (!warning.isEmpty())
                addWarning(warning);
        }
        return ok;
    }
    if (m_medium == Clipboard && !m_text.isEmpty()) {
        QString text = m_text;
        QTextStream stream(&text, QIODevice::ReadOnly);
        return readText(stream, text.size(), QString());
    }
    return true;
}

bool InputNode::guessHasHeader(const Dataset &dataset)
{
    if (dataset.hasHeader())
        return true;
    if (dataset.rowCount() < 2)
        return false;
    const QStringList formats = dateFormats();
    const QStringList &first = dataset.row(0);
    for (const QString &cell : first) {
        if (cell.trimmed().isEmpty())
            continue;
        bool number = false;
        toDouble(cell, false, false, &number);
        if (number || toDate(cell, formats).isValid())
            return false;
    }
    return true;
}

void InputNode::decideHeader()
{
    if (m_header == GuessHeader)
        m_header = guessHasHeader(m_dataset) ? HasHeader : NoHeader;
    m_dataset.setHasHeader(m_header == HasHeader);
}

void InputNode::addMetaInformation()
{
    if (!m_dataset.hasColumns() || m_metaPlace == MetaInfo::NotAdded)
        return;
    MetaInfo::Context context;
    if (m_medium == File)
        context.path = pathWithoutSheet(path());
    context.sheetName = m_worksheet;
    context.rows = m_dataset.rowCount();
    context.columns = m_dataset.columnCount();
    const QString text = MetaInfo::expand(
        m_metaText.isEmpty() ? MetaInfo::defaultText(m_medium == File) : m_metaText, context);
    if (m_metaPlace == MetaInfo::EveryRow) {
        m_dataset.appendColumn();
        const int column = m_dataset.lastColumn();
        QStringList values;
        values.reserve(m_dataset.rowCount());
        for (int r = 0; r < m_dataset.rowCount(); ++r)
            values.append(text);
        m_dataset.setColumn(column, values);
        if (m_dataset.hasHeader())
            m_dataset.setColumnName(column, m_metaColumnName);
        return;
    }
    QStringList row {text};
    if (m_metaPlace == MetaInfo::AtStart)
        m_dataset.insertRow(0, row);
    else
        m_dataset.appendRow(row, true);
}

void InputNode::run(bool recursive, bool freeUpstream)
{
    if (GraphScene::isStopRequested())
        return;
    if (status() != UpToDate) {
        m_dataset.clear();
        clearMessages();
        setStatus(Updating, false);
        emit processingStart(this);
        QElapsedTimer timer;
        timer.start();
        setFractionProcessed(0.0);

        const bool ok = readSource();
        // A source that could not be read must not use up the header guess.
        if (ok || m_header != GuessHeader)
            decideHeader();
        if (ok)
            addMetaInformation();
        m_dataset.assignColumnIds(id());
        if (m_dataset.hasColumns() && m_ignoreEmptyColumns) {
            const int removed = m_dataset.removeEmptyColumns();
            if (removed > 0)
                addInfo(QStringLiteral("%1 empty column(s) ignored").arg(removed));
        }

        finishRun(timer.elapsed());
        setStatus(ok ? UpToDate : Error, false);
        emit processingEnd(this);
        m_dataset.clearStringPools();
        const QList<Node *> children = downstream(true);
        for (Node *child : children) {
            if (auto *transform = qobject_cast<TransformNode *>(child))
                transform->resolvePendingParameterTexts();
        }
        update();
    }
    if (!recursive)
        return;
    const QList<Node *> children = downstream(true);
    for (Node *child : children) {
        if (status() != Error)
            child->run(recursive, freeUpstream);
    }
}

// Watching

void InputNode::updateWatcher()
{
    const QString file = pathWithoutSheet(path());
    // Some editors replace the file when saving, so each read builds a new watcher.
    delete m_watcher;
    m_watcher = nullptr;
    if (!m_watching || m_medium != File || file.isEmpty() || !QFileInfo::exists(file))
        return;
    m_watcher = new QFileSystemWatcher(this);
    m_watcher->addPath(file);
    connect(m_watcher, &QFileSystemWatcher::fileChanged, this, &InputNode::onFileChanged);
}

void InputNode::onFileChanged()
{
    if (!m_importTimer) {
        m_importTimer = new QTimer(this);
        m_importTimer->setSingleShot(true);
        connect(m_importTimer, &QTimer::timeout, this, &InputNode::onDelayedImport);
    }
    m_importTimer->start(5000);
}

void InputNode::onDelayedImport()
{
    GraphScene *graph = graphScene();
    if (graph && graph->isProcessing()) {
        m_importTimer->start(2000);
        return;
    }
    emit sourceChanged(this);
}

// Document attributes

void InputNode::writeAttributes(QDomElement &element, const QString &documentFolder) const
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

void InputNode::readAttributes(const QDomElement &element, int version,
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
    IONode::setPath(resolvedPath(storedFilePath, documentFolder));
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
