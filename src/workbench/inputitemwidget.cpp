#include "workbench/inputitemwidget.h"

#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "graph/undo.h"
#include "io/delimitedtext.h"
#include "io/fileformats.h"
#include "io/filetypes.h"
#include "shell/application.h"
#include "workbench/exceldialogs.h"
#include "workbench/iowidgets.h"
#include "workbench/widgets.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QToolButton>

namespace {

QStringList codecChoices()
{
    QStringList names = encodingNames();
    names.prepend(QStringLiteral("Automatic"));
    return names;
}

} // namespace

InputItemWidget::InputItemWidget(InputItem *input, QWidget *parent)
    : ItemWidget(input, parent)
{
    build();
    updateValues();
    updateVisibility();
}

InputItem *InputItemWidget::inputItem() const
{
    return static_cast<InputItem *>(item());
}

void InputItemWidget::change(const QString &hint, const std::function<void(InputItem *)> &apply,
                             bool viaTimer)
{
    InputItem *input = inputItem();
    if (!input)
        return;
    {
        UndoStep step(hint);
        apply(input);
    }
    updateVisibility();
    requestRun(viaTimer);
}

QCheckBox *InputItemWidget::addCheck(const QString &text, const QString &hint,
                                     const std::function<void(InputItem *, bool)> &apply)
{
    auto *check = new QCheckBox(text, optionsArea());
    form()->addRow(check);
    connect(check, &QCheckBox::toggled, this, [this, hint, apply](bool on) {
        change(hint, [&](InputItem *input) { apply(input, on); });
    });
    return check;
}

void InputItemWidget::build()
{
    buildSourceRows();
    buildParsingRows();
    buildReadingChecks();
    buildExtraRows();
}

// Where the data comes from: the reread button, the path and the file type.
void InputItemWidget::buildSourceRows()
{
    m_sourceButton = new QPushButton(optionsArea());
    form()->addRow(m_sourceButton);
    connect(m_sourceButton, &QPushButton::clicked, this, [this] {
        InputItem *input = inputItem();
        if (input && input->medium() == InputItem::Clipboard)
            importFromClipboard();
        else
            rereadSource();
    });

    m_pathRow = new QWidget(optionsArea());
    auto *pathLayout = new QHBoxLayout(m_pathRow);
    pathLayout->setContentsMargins(0, 0, 0, 0);
    m_path = new QLineEdit(m_pathRow);
    m_browse = new QToolButton(m_pathRow);
    m_browse->setText(QStringLiteral("..."));
    m_browse->setToolTip(QStringLiteral("Choose the file to input."));
    pathLayout->addWidget(m_path, 1);
    pathLayout->addWidget(m_browse);
    form()->addRow(QStringLiteral("File:"), m_pathRow);
    connect(m_path, &QLineEdit::editingFinished, this, [this] {
        if (inputItem() && m_path->text() != inputItem()->path())
            choosePath(m_path->text());
    });
    connect(m_browse, &QToolButton::clicked, this, &InputItemWidget::browse);

    m_type = new QComboBox(optionsArea());
    for (int type = FileTypeDelimited; type < FileTypeNone; ++type)
        if (FileTypes::canInput(type)) {
            m_type->addItem(fileTypeName(type), type);
            m_type->setItemData(m_type->count() - 1, FileTypes::description(type), Qt::ToolTipRole);
        }
    form()->addRow(QStringLiteral("Type:"), m_type);
    connect(m_type, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] {
        const int type = m_type->currentData().toInt();
        change(QStringLiteral("file type"), [type](InputItem *in) { in->setInputFileType(type); });
    });

    m_sheetRow = new QWidget(optionsArea());
    auto *sheetLayout = new QHBoxLayout(m_sheetRow);
    sheetLayout->setContentsMargins(0, 0, 0, 0);
    m_sheet = new QLineEdit(m_sheetRow);
    m_sheet->setToolTip(QStringLiteral("The sheet to input, by name or by number from 1. Empty "
                                       "for the first sheet."));
    m_chooseSheet = new QToolButton(m_sheetRow);
    m_chooseSheet->setText(QStringLiteral("..."));
    m_chooseSheet->setToolTip(QStringLiteral("Choose the sheet to input."));
    sheetLayout->addWidget(m_sheet, 1);
    sheetLayout->addWidget(m_chooseSheet);
    form()->addRow(QStringLiteral("Sheet:"), m_sheetRow);
    connect(m_sheet, &QLineEdit::editingFinished, this, [this] {
        const QString sheet = m_sheet->text();
        if (inputItem() && sheet != inputItem()->worksheet())
            change(QStringLiteral("sheet"), [sheet](InputItem *in) { in->setWorksheet(sheet); });
    });
    connect(m_chooseSheet, &QToolButton::clicked, this, &InputItemWidget::chooseSheet);
}

// How the text is split into rows and columns.
void InputItemWidget::buildParsingRows()
{
    m_delim = new DelimWidget(true, optionsArea());
    form()->addRow(QStringLiteral("Delimiter:"), m_delim);
    connect(m_delim, &DelimWidget::delimiterChanged, this, [this](int delimiter) {
        change(QStringLiteral("delimiter"),
               [delimiter](InputItem *in) { in->setDelimiter(delimiter); });
    });
    connect(m_delim, &DelimWidget::customDelimiterChanged, this, [this](QChar custom) {
        change(
            QStringLiteral("custom delimiter"),
            [custom](InputItem *in) { in->setCustomDelimiter(custom); }, true);
    });
    m_repeated = addCheck(QStringLiteral("ignore repeated delimiters"),
                          QStringLiteral("ignore repeated delimiters"),
                          [](InputItem *in, bool on) { in->setIgnoreRepeatedDelimiters(on); });

    m_quoting = new QComboBox(optionsArea());
    m_quoting->addItems(quotingNames());
    m_quoting->setToolTip(quotingToolTip());
    form()->addRow(QStringLiteral("Quoting:"), m_quoting);
    connect(m_quoting, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this](int quoting) {
                change(QStringLiteral("quoting"),
                       [quoting](InputItem *in) { in->setQuoting(quoting); });
            });

    m_encoding = new QComboBox(optionsArea());
    m_encoding->addItems(codecChoices());
    form()->addRow(QStringLiteral("Encoding:"), m_encoding);
    connect(m_encoding, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] {
        const QString encoding = m_encoding->currentText();
        change(QStringLiteral("encoding"),
               [encoding](InputItem *in) { in->setEncoding(encoding); });
    });

    m_header = addCheck(QStringLiteral("has header"), QStringLiteral("has header"),
                        [](InputItem *in, bool on) {
                            in->setHeader(on ? InputItem::HasHeader : InputItem::NoHeader);
                        });

    m_ignoredRows = new QSpinBox(optionsArea());
    m_ignoredRows->setRange(0, 2147483647);
    m_ignoredRows->setPrefix(QStringLiteral("First "));
    m_ignoredRows->setSuffix(QStringLiteral(" row(s)"));
    form()->addRow(QStringLiteral("Ignore:"), m_ignoredRows);
    connect(m_ignoredRows, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int rows) {
        change(
            QStringLiteral("ignore rows"), [rows](InputItem *in) { in->setIgnoredRows(rows); },
            true);
    });
}

// The checks: whether the file is watched, and what is tidied or dropped as it is read.
void InputItemWidget::buildReadingChecks()
{
    m_watch = addCheck(QStringLiteral("watch file"), QStringLiteral("watch file"),
                       [](InputItem *in, bool on) { in->setWatching(on); });
    m_trim = addCheck(QStringLiteral("trim whitespace"), QStringLiteral("trim whitespace"),
                      [](InputItem *in, bool on) { in->setTrim(on); });
    m_simplify
        = addCheck(QStringLiteral("simplify whitespace"), QStringLiteral("simplify whitespace"),
                   [](InputItem *in, bool on) { in->setSimplify(on); });
    m_ignoreEmptyRows
        = addCheck(QStringLiteral("ignore empty rows"), QStringLiteral("ignore empty rows"),
                   [](InputItem *in, bool on) { in->setIgnoreEmptyRows(on); });
    m_ignoreEmptyColumns
        = addCheck(QStringLiteral("ignore empty columns"), QStringLiteral("ignore empty columns"),
                   [](InputItem *in, bool on) { in->setIgnoreEmptyColumns(on); });
    m_excelHiddenRows = addCheck(QStringLiteral("ignore hidden Excel rows"),
                                 QStringLiteral("ignore hidden Excel rows"),
                                 [](InputItem *in, bool on) { in->setIgnoreExcelHiddenRows(on); });
    m_excelHiddenColumns
        = addCheck(QStringLiteral("ignore hidden Excel columns"),
                   QStringLiteral("ignore hidden Excel columns"),
                   [](InputItem *in, bool on) { in->setIgnoreExcelHiddenColumns(on); });
}

// Meta information, the JSON layout and the name the input is known by.
void InputItemWidget::buildExtraRows()
{
    m_metaInfo = new MetaInfoWidget(optionsArea());
    form()->addRow(QStringLiteral("Meta information:"), m_metaInfo);
    connect(m_metaInfo, &MetaInfoWidget::placeChanged, this, [this](int place) {
        change(QStringLiteral("meta information"),
               [place](InputItem *in) { in->setMetaPlace(place); });
    });
    connect(m_metaInfo, &MetaInfoWidget::textChanged, this, [this](const QString &text) {
        change(QStringLiteral("meta information text"),
               [text](InputItem *in) { in->setMetaText(text); });
    });

    m_format = new QComboBox(optionsArea());
    m_format->addItems({QStringLiteral("Wide (more columns)"), QStringLiteral("Long (more rows)")});
    form()->addRow(QStringLiteral("Format:"), m_format);
    connect(m_format, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int f) {
        change(QStringLiteral("format"), [f](InputItem *in) { in->setJsonArraysAsRows(f); });
    });

    m_alias = new QLineEdit(optionsArea());
    m_alias->setToolTip(QStringLiteral("Name by which batch runs and the command line refer to "
                                       "this input."));
    form()->addRow(QStringLiteral("Alias:"), m_alias);
    connect(m_alias, &QLineEdit::editingFinished, this, [this] {
        InputItem *input = inputItem();
        const QString alias = m_alias->text().trimmed();
        if (!input || alias == input->alias())
            return;
        // The alias names the input for others; the data stays as it is.
        UndoStep step(QStringLiteral("alias"));
        input->setAlias(alias);
        emit changeNeedsSave();
    });
}

void InputItemWidget::updateValues()
{
    InputItem *input = inputItem();
    if (!input)
        return;
    const QList<QWidget *> widgets = {m_path,
                                      m_type,
                                      m_sheet,
                                      m_delim,
                                      m_repeated,
                                      m_quoting,
                                      m_encoding,
                                      m_header,
                                      m_ignoredRows,
                                      m_watch,
                                      m_trim,
                                      m_simplify,
                                      m_ignoreEmptyRows,
                                      m_ignoreEmptyColumns,
                                      m_excelHiddenRows,
                                      m_excelHiddenColumns,
                                      m_format,
                                      m_alias};
    QList<QSharedPointer<QSignalBlocker>> blockers;
    for (QWidget *widget : widgets)
        blockers.append(QSharedPointer<QSignalBlocker>::create(widget));
    m_path->setText(input->path());
    m_type->setCurrentIndex(m_type->findData(input->fileType()));
    m_sheet->setText(input->worksheet());
    m_delim->setValues(input->delimiter(), input->customDelimiter());
    m_repeated->setChecked(input->ignoreRepeatedDelimiters());
    m_quoting->setCurrentIndex(input->quoting());
    const int encoding = m_encoding->findText(input->encoding());
    m_encoding->setCurrentIndex(encoding < 0 ? 0 : encoding);
    m_header->setChecked(input->hasHeader());
    m_ignoredRows->setValue(input->ignoredRows());
    m_watch->setChecked(input->watching());
    m_trim->setChecked(input->trim());
    m_simplify->setChecked(input->simplify());
    m_ignoreEmptyRows->setChecked(input->ignoreEmptyRows());
    m_ignoreEmptyColumns->setChecked(input->ignoreEmptyColumns());
    m_excelHiddenRows->setChecked(input->ignoreExcelHiddenRows());
    m_excelHiddenColumns->setChecked(input->ignoreExcelHiddenColumns());
    m_metaInfo->setValues(input->metaPlace(), input->metaText(),
                          input->medium() == InputItem::File);
    m_format->setCurrentIndex(input->jsonArraysAsRows());
    m_alias->setText(input->alias());
}

void InputItemWidget::updateVisibility()
{
    InputItem *input = inputItem();
    if (!input)
        return;
    const int type = input->fileType();
    const bool file = input->medium() == InputItem::File;
    const QString runNote = QStringLiteral("\nDoes not run items downstream.");
    if (file) {
        m_sourceButton->setText(QStringLiteral("Read from file."));
        m_sourceButton->setToolTip(QStringLiteral("Read the data from the file again.") + runNote);
    } else {
        m_sourceButton->setText(QStringLiteral("Import from clipboard."));
        m_sourceButton->setToolTip(
            QStringLiteral("Process data previously imported from the clipboard.")
            + QStringLiteral("\nPress the 'Import from clipboard' button to re-import from the "
                             "clipboard.")
            + runNote);
    }
    const bool delimited = type == FileTypeDelimited;
    setRowVisible(m_pathRow, file);
    setRowVisible(m_sheetRow, file && FileTypes::isExcel(type));
    setRowVisible(m_delim, delimited);
    setRowVisible(m_repeated, delimited);
    setRowVisible(m_quoting, delimited);
    setRowVisible(m_encoding, file && FileTypes::usesEncoding(type));
    setRowVisible(m_header, FileTypes::canHaveHeader(type));
    setRowVisible(m_ignoredRows,
                  delimited || FileTypes::isExcel(type) || type == FileTypeFixedWidth
                      || type == FileTypeVCard || type == FileTypePlainText);
    setRowVisible(m_watch, file);
    setRowVisible(m_excelHiddenRows, FileTypes::isExcel(type));
    setRowVisible(m_excelHiddenColumns, FileTypes::isExcel(type));
    setRowVisible(m_format, type == FileTypeJson || type == FileTypeXml);
    const bool autoRun = model() ? model()->autoRun() : true;
    m_watch->setToolTip(autoRun ? QStringLiteral("Check to automatically re-input the file every "
                                                 "time it changes.")
                                : QStringLiteral("Check to automatically set the input to status "
                                                 "'needs update' every time the file changes."));
}

void InputItemWidget::choosePath(const QString &chosen)
{
    InputItem *input = inputItem();
    if (!input)
        return;
    const QString path = chosen.trimmed();
    {
        UndoStep step(QStringLiteral("file path"));
        const QFileInfo info(path);
        if (!path.isEmpty() && info.exists()) {
            const int type = FileTypes::inputTypeForExtension(info.suffix(), input->fileType());
            if (type != input->fileType()
                && MessageBoxes::askYesNo(
                    this, QStringLiteral("File type"),
                    QStringLiteral("Change file type to '%1'?").arg(fileTypeName(type))))
                input->setInputFileType(type);
            if (Application *application = Application::instance())
                application->setLastDataFolder(path);
        }
        input->setPath(path);
    }
    updateValues();
    updateVisibility();
    requestRun(false);
}

void InputItemWidget::browse()
{
    InputItem *input = inputItem();
    if (!input)
        return;
    Application *application = Application::instance();
    const QString folder = !input->path().isEmpty() ? QFileInfo(input->path()).absolutePath()
        : application                               ? application->lastDataFolder()
                                                    : QString();
    const QString path = DesktopHooks::openFileName(this, QStringLiteral("Input file"), folder,
                                                    FileFormats::inputDialogFilter());
    if (!path.isEmpty())
        choosePath(path);
}

void InputItemWidget::chooseSheet()
{
    InputItem *input = inputItem();
    if (!input)
        return;
    QString sheet;
    if (!ExcelSheetChoice::chooseSheet(this, input->path(), input->fileType(), input->worksheet(),
                                       &sheet)
        || sheet == input->worksheet())
        return;
    change(QStringLiteral("sheet"), [sheet](InputItem *in) { in->setWorksheet(sheet); });
    updateValues();
}

void InputItemWidget::importFromClipboard()
{
    InputItem *input = inputItem();
    if (!input)
        return;
    const QString text = QGuiApplication::clipboard()->text();
    if (text.isEmpty())
        return;
    {
        UndoStep step(QStringLiteral("import from clipboard"));
        const int type = FileTypes::guessTextFileType(text);
        if (type != input->fileType()
            && MessageBoxes::askYesNo(
                this, QStringLiteral("Import from clipboard"),
                QStringLiteral("Change file type to '%1'?").arg(fileTypeName(type))))
            input->setInputFileType(type);
        input->setMedium(InputItem::Clipboard);
        input->setText(text);
        input->setStatus(FlowItem::NeedsUpdate, true);
    }
    updateValues();
    updateVisibility();
    requestRun(false);
}

void InputItemWidget::rereadSource()
{
    InputItem *input = inputItem();
    if (!input)
        return;
    const FlowModel *flow = model();
    if (flow && flow->isProcessing())
        return;
    input->setStatus(FlowItem::NeedsUpdate, true);
    input->run(false, false);
    emit nodeStatusChanged();
    refreshAfterRun();
    updateValues();
}
