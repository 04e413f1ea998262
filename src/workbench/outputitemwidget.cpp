#include "workbench/outputitemwidget.h"

#include "flow/outputitem.h"
#include "graph/undo.h"
#include "io/fileformats.h"
#include "io/filetypes.h"
#include "io/outputwriters.h"
#include "shell/application.h"
#include "shell/settings.h"
#include "workbench/iowidgets.h"
#include "workbench/widgets.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QSharedPointer>
#include <QToolButton>

namespace {

// Whether the path's extension is one this type is written with.
bool extensionFits(const QString &path, int type)
{
    const QString suffix = QFileInfo(path).suffix();
    return outputFileTypeForPath(path, FileTypeNone) == type
        || suffix.compare(FileTypes::defaultExtension(type), Qt::CaseInsensitive) == 0;
}

} // namespace

OutputItemWidget::OutputItemWidget(OutputItem *output, QWidget *parent)
    : ItemWidget(output, parent)
{
    build();
    updateValues();
    updateVisibility();
}

OutputItem *OutputItemWidget::outputItem() const
{
    return static_cast<OutputItem *>(item());
}

void OutputItemWidget::change(const QString &hint, const std::function<void(OutputItem *)> &apply,
                              bool viaTimer)
{
    OutputItem *output = outputItem();
    if (!output)
        return;
    {
        UndoStep step(hint);
        apply(output);
    }
    updateVisibility();
    requestRun(viaTimer);
}

void OutputItemWidget::build()
{
    buildDestinationRows();
    buildExcelRows();
    buildTextFormatRows();
    buildContentRows();
}

// Where the data goes: path, type, sheet and how an existing file is treated.
void OutputItemWidget::buildDestinationRows()
{
    m_pathRow = new QWidget(optionsArea());
    auto *pathLayout = new QHBoxLayout(m_pathRow);
    pathLayout->setContentsMargins(0, 0, 0, 0);
    m_path = new QLineEdit(m_pathRow);
    m_path->setToolTip(QStringLiteral("The file to write. It can hold variables such as "
                                      "{date} and {time}."));
    m_browse = new QToolButton(m_pathRow);
    m_browse->setText(QStringLiteral("..."));
    m_browse->setToolTip(QStringLiteral("Choose the file to write."));
    pathLayout->addWidget(m_path, 1);
    pathLayout->addWidget(m_browse);
    form()->addRow(QStringLiteral("File:"), m_pathRow);
    connect(m_path, &QLineEdit::editingFinished, this, [this] {
        if (outputItem() && m_path->text() != outputItem()->path())
            choosePath(m_path->text());
    });
    connect(m_browse, &QToolButton::clicked, this, &OutputItemWidget::browse);

    m_type = new QComboBox(optionsArea());
    for (int type = FileTypeDelimited; type < FileTypeNone; ++type)
        if (FileTypes::canOutput(type)) {
            m_type->addItem(fileTypeName(type), type);
            m_type->setItemData(m_type->count() - 1, FileTypes::description(type), Qt::ToolTipRole);
        }
    form()->addRow(QStringLiteral("Type:"), m_type);
    connect(m_type, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this] { chooseType(m_type->currentData().toInt()); });

    m_sheet = new QLineEdit(optionsArea());
    m_sheet->setToolTip(QStringLiteral("The sheet to write. It can hold variables such as "
                                       "{date} and {time}."));
    form()->addRow(QStringLiteral("Sheet:"), m_sheet);
    connect(m_sheet, &QLineEdit::editingFinished, this, [this] {
        const QString sheet = m_sheet->text();
        if (outputItem() && sheet != outputItem()->worksheet())
            change(QStringLiteral("sheet"), [sheet](OutputItem *out) { out->setWorksheet(sheet); });
    });

    auto *modeRow = new QWidget(optionsArea());
    auto *modeLayout = new QHBoxLayout(modeRow);
    modeLayout->setContentsMargins(0, 0, 0, 0);
    m_writeMode = new WriteModeComboBox(modeRow);
    m_overwriteSheet = new QComboBox(modeRow);
    m_overwriteSheet->addItems({QStringLiteral("File"), QStringLiteral("Sheet")});
    m_overwriteSheet->setToolTip(QStringLiteral("What Overwrite replaces.\nFile=The whole Excel "
                                                "file.\nSheet=Only the sheet named, keeping the "
                                                "other sheets of the file."));
    modeLayout->addWidget(m_writeMode, 1);
    modeLayout->addWidget(m_overwriteSheet);
    form()->addRow(QStringLiteral("Write mode:"), modeRow);
    connect(m_writeMode, &WriteModeComboBox::modeChanged, this, [this](int mode) {
        change(QStringLiteral("write mode"), [mode](OutputItem *out) { out->setWriteMode(mode); });
    });
    connect(m_overwriteSheet, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this](int mode) {
                change(QStringLiteral("overwrite sheet"),
                       [mode](OutputItem *out) { out->setOverwriteSheet(mode); });
            });
}

// How an Excel file formats its cells, and the sheet it takes its styling from.
void OutputItemWidget::buildExcelRows()
{
    m_excelFormats = new ExcelColumnFormatsWidget(optionsArea());
    m_excelFormats->setColumnNames([this] { return columnNames(); });
    form()->addRow(QStringLiteral("Formatting:"), m_excelFormats);
    connect(m_excelFormats, &ExcelColumnFormatsWidget::formattingChanged, this, [this](int mode) {
        change(QStringLiteral("formatting"),
               [mode](OutputItem *out) { out->setExcelOutput(mode); });
    });
    connect(m_excelFormats, &ExcelColumnFormatsWidget::formatsChanged, this,
            [this](const QList<int> &formats) {
                change(QStringLiteral("column formats"),
                       [formats](OutputItem *out) { out->setExcelManualColFormats(formats); });
            });

    m_styleTemplate = new ExcelStyleTemplateWidget(optionsArea());
    form()->addRow(QStringLiteral("Style template:"), m_styleTemplate);
    connect(m_styleTemplate, &ExcelStyleTemplateWidget::useChanged, this, [this](bool on) {
        change(QStringLiteral("style template"),
               [on](OutputItem *out) { out->setExcelUseStyleTemplate(on); });
    });
    connect(m_styleTemplate, &ExcelStyleTemplateWidget::pathChanged, this,
            [this](const QString &path) {
                change(QStringLiteral("style template path"),
                       [path](OutputItem *out) { out->setExcelStyleTemplatePath(path); });
            });
}

QStringList OutputItemWidget::columnNames() const
{
    const OutputItem *output = outputItem();
    if (!output)
        return {};
    if (output->status() == FlowItem::UpToDate && output->columnCount() > 0)
        return output->columnNames();
    const QList<FlowItem *> sources = output->upstream();
    return sources.isEmpty() ? QStringList() : sources.first()->columnNames();
}

// How delimited and other text files are laid out and encoded.
void OutputItemWidget::buildTextFormatRows()
{
    m_delim = new DelimWidget(false, optionsArea());
    form()->addRow(QStringLiteral("Delimiter:"), m_delim);
    connect(m_delim, &DelimWidget::delimiterChanged, this, [this](int delimiter) {
        change(QStringLiteral("delimiter"),
               [delimiter](OutputItem *out) { out->setDelimiter(delimiter); });
    });
    connect(m_delim, &DelimWidget::customDelimiterChanged, this, [this](QChar custom) {
        change(
            QStringLiteral("custom delimiter"),
            [custom](OutputItem *out) { out->setCustomDelimiter(custom); }, true);
    });

    m_quoting = new QComboBox(optionsArea());
    for (int quoting = OutputQuotingAsNeeded; quoting <= OutputQuotingNever; ++quoting)
        m_quoting->addItem(outputQuotingName(quoting));
    form()->addRow(QStringLiteral("Quoting:"), m_quoting);
    connect(m_quoting, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int q) {
        change(QStringLiteral("quoting"), [q](OutputItem *out) { out->setQuoting(q); });
    });

    m_lineEndings = new QComboBox(optionsArea());
    for (int ending = LineEndingAutomatic; ending <= LineEndingRecordSeparator; ++ending)
        m_lineEndings->addItem(lineEndingName(ending));
    form()->addRow(QStringLiteral("Line endings:"), m_lineEndings);
    connect(m_lineEndings, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this](int ending) {
                change(QStringLiteral("line endings"),
                       [ending](OutputItem *out) { out->setLineEndings(ending); });
            });

    auto *encodingRow = new QWidget(optionsArea());
    auto *encodingLayout = new QHBoxLayout(encodingRow);
    encodingLayout->setContentsMargins(0, 0, 0, 0);
    m_encoding = new QComboBox(encodingRow);
    m_encoding->addItems(encodingNames());
    m_byteOrderMark = new QCheckBox(QStringLiteral("Byte Order Mark"), encodingRow);
    encodingLayout->addWidget(m_encoding, 1);
    encodingLayout->addWidget(m_byteOrderMark);
    form()->addRow(QStringLiteral("Encoding:"), encodingRow);
    connect(m_encoding, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] {
        const QString encoding = m_encoding->currentText();
        change(QStringLiteral("encoding"),
               [encoding](OutputItem *out) { out->setEncoding(encoding); });
    });
    connect(m_byteOrderMark, &QCheckBox::toggled, this, [this](bool on) {
        change(QStringLiteral("byte order mark"),
               [on](OutputItem *out) { out->setByteOrderMark(on); });
    });
}

// What goes into the file besides the rows, and the name the output is known by.
void OutputItemWidget::buildContentRows()
{
    m_writeHeader = new WriteHeaderWidget(optionsArea());
    form()->addRow(m_writeHeader);
    connect(m_writeHeader, &WriteHeaderWidget::writeHeaderChanged, this, [this](bool on) {
        change(QStringLiteral("write header"), [on](OutputItem *out) { out->setWriteHeader(on); });
    });
    connect(m_writeHeader, &WriteHeaderWidget::onlyIfEmptyChanged, this, [this](bool on) {
        change(QStringLiteral("write header if empty"),
               [on](OutputItem *out) { out->setWriteHeaderFirstAppendOnly(on); });
    });

    m_escape = new QCheckBox(QStringLiteral("escape special characters"), optionsArea());
    form()->addRow(m_escape);
    connect(m_escape, &QCheckBox::toggled, this, [this](bool on) {
        change(QStringLiteral("escape special"), [on](OutputItem *out) { out->setHtmlEncode(on); });
    });
    m_removeEmpty = new QCheckBox(QStringLiteral("remove empty values"), optionsArea());
    form()->addRow(m_removeEmpty);
    connect(m_removeEmpty, &QCheckBox::toggled, this, [this](bool on) {
        change(QStringLiteral("remove empty"), [on](OutputItem *out) { out->setRemoveEmpty(on); });
    });

    m_comment = new QLineEdit(optionsArea());
    m_comment->setToolTip(QStringLiteral("Written at the top of the file. Leave empty for none."));
    form()->addRow(QStringLiteral("Comment:"), m_comment);
    connect(m_comment, &QLineEdit::editingFinished, this, [this] {
        const QString comment = m_comment->text();
        if (outputItem() && comment != outputItem()->fileComment())
            change(QStringLiteral("file comment"),
                   [comment](OutputItem *out) { out->setFileComment(comment); });
    });

    m_alias = new QLineEdit(optionsArea());
    m_alias->setToolTip(QStringLiteral("Name by which batch runs and the command line refer to "
                                       "this output."));
    form()->addRow(QStringLiteral("Alias:"), m_alias);
    connect(m_alias, &QLineEdit::editingFinished, this, [this] {
        OutputItem *output = outputItem();
        const QString alias = m_alias->text().trimmed();
        if (!output || alias == output->alias())
            return;
        UndoStep step(QStringLiteral("alias"));
        output->setAlias(alias);
        emit changeNeedsSave();
    });
}

void OutputItemWidget::updateValues()
{
    OutputItem *output = outputItem();
    if (!output)
        return;
    const QList<QObject *> widgets
        = {m_path,   m_type,        m_sheet,       m_writeMode, m_overwriteSheet,
           m_delim,  m_quoting,     m_lineEndings, m_encoding,  m_byteOrderMark,
           m_escape, m_removeEmpty, m_comment,     m_alias};
    m_excelFormats->setValues(output->excelOutput(), output->excelManualColFormats());
    m_styleTemplate->setValues(output->excelUseStyleTemplate(), output->excelStyleTemplatePath());
    QList<QSharedPointer<QSignalBlocker>> blockers;
    for (QObject *widget : widgets)
        blockers.append(QSharedPointer<QSignalBlocker>::create(widget));
    m_path->setText(output->path());
    m_type->setCurrentIndex(m_type->findData(output->fileType()));
    m_sheet->setText(output->worksheet());
    m_writeMode->setMode(output->writeMode());
    m_overwriteSheet->setCurrentIndex(output->overwriteSheet());
    m_delim->setValues(output->delimiter(), output->customDelimiter());
    m_quoting->setCurrentIndex(output->quoting());
    m_lineEndings->setCurrentIndex(output->lineEndings());
    const int encoding = m_encoding->findText(output->encoding(), Qt::MatchFixedString);
    if (encoding >= 0)
        m_encoding->setCurrentIndex(encoding);
    m_byteOrderMark->setChecked(output->byteOrderMark());
    m_writeHeader->setValues(output->writeHeader(), output->writeHeaderFirstAppendOnly());
    m_escape->setChecked(output->htmlEncode());
    m_removeEmpty->setChecked(output->removeEmpty());
    m_comment->setText(output->fileComment());
    m_alias->setText(output->alias());
}

void OutputItemWidget::updateVisibility()
{
    OutputItem *output = outputItem();
    if (!output)
        return;
    const int type = output->fileType();
    const bool excel = FileTypes::isExcel(type);
    setRowVisible(m_sheet, excel);
    m_overwriteSheet->setVisible(excel);
    // Append keeps the rest of the file and New leaves an existing one alone: only Overwrite
    // has a choice to make.
    m_overwriteSheet->setEnabled(output->writeMode() == WriteOverwrite);
    setRowVisible(m_excelFormats, excel);
    setRowVisible(m_styleTemplate, excel);
    setRowVisible(m_delim, type == FileTypeDelimited);
    setRowVisible(m_quoting, type == FileTypeDelimited);
    setRowVisible(m_lineEndings, !excel);
    setRowVisible(m_encoding->parentWidget(), !excel);
    m_byteOrderMark->setVisible(
        output->encoding().contains(QLatin1String("utf"), Qt::CaseInsensitive));
    setRowVisible(m_writeHeader, fileTypeHasHeaderOption(type));
    setRowVisible(m_escape, type == FileTypeHtml);
    setRowVisible(m_removeEmpty, type == FileTypeJson || type == FileTypeXml);
    setRowVisible(m_comment, fileTypeHasComment(type));
}

void OutputItemWidget::choosePath(const QString &chosen)
{
    OutputItem *output = outputItem();
    if (!output)
        return;
    const QString path = chosen.trimmed();
    const QString extension = QFileInfo(path).suffix().trimmed().toLower();
    if (!extension.isEmpty()
        && Settings::instance()->blockedOutputExtensionSet().contains(extension)) {
        MessageBoxes::warning(this, QStringLiteral("Output"),
                              QStringLiteral("The extension for this file is blocked in "
                                             "'Preferences>Output Extensions':\n%1")
                                  .arg(path));
        updateValues();
        return;
    }
    {
        UndoStep step(QStringLiteral("file path"));
        const int type = outputFileTypeForPath(path, FileTypeNone);
        if (type != FileTypeNone && type != output->fileType()
            && MessageBoxes::askYesNo(
                this, QStringLiteral("Output"),
                QStringLiteral("Change file type to '%1'?").arg(fileTypeName(type))))
            output->setOutputFileType(type);
        output->setPath(path);
    }
    updateValues();
    updateVisibility();
    requestRun(false);
}

void OutputItemWidget::chooseType(int fileType)
{
    OutputItem *output = outputItem();
    if (!output || fileType == output->fileType())
        return;
    {
        UndoStep step(QStringLiteral("file type"));
        output->setOutputFileType(fileType);
        const QString path = output->path();
        const QString extension = FileTypes::defaultExtension(fileType);
        if (!path.isEmpty() && !extensionFits(path, fileType)
            && MessageBoxes::askYesNo(
                this, QStringLiteral("Output"),
                QStringLiteral("Change file extension to '%1'?").arg(extension))) {
            const QFileInfo info(path);
            const QString stem = info.suffix().isEmpty()
                ? path
                : path.left(path.size() - info.suffix().size() - 1);
            output->setPath(stem + QLatin1Char('.') + extension);
        }
    }
    updateValues();
    updateVisibility();
    requestRun(false);
}

void OutputItemWidget::browse()
{
    OutputItem *output = outputItem();
    if (!output)
        return;
    Application *application = Application::instance();
    const QString folder = !output->path().isEmpty() ? output->path()
        : application                                ? application->lastOutputDataFolder()
                                                     : QString();
    const QString path
        = DesktopHooks::saveFileName(this, QStringLiteral("Output file"), folder,
                                     FileFormats::outputDialogFilter(output->fileType()));
    if (path.isEmpty())
        return;
    if (QFileInfo::exists(path)
        && !MessageBoxes::askYesNo(
            this, QStringLiteral("Output file"),
            QStringLiteral("%1 already exists.\nDo you want to replace it?").arg(path)))
        return;
    if (application)
        application->setLastOutputDataFolder(path);
    choosePath(path);
}
