#include "workbench/iowidgets.h"

#include "io/delimitedtext.h"
#include "io/excelreader.h"
#include "io/excelwriter.h"
#include "io/filetypes.h"
#include "io/metainfo.h"
#include "io/outputwriters.h"
#include "shell/application.h"
#include "shell/messageboxes.h"
#include "workbench/exceldialogs.h"
#include "workbench/widgets.h"

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTextCodec>
#include <QToolButton>
#include <QVBoxLayout>

QStringList encodingNames()
{
    if (Application *application = Application::instance())
        return application->codecNames();
    QStringList names;
    const QList<QByteArray> available = QTextCodec::availableCodecs();
    for (const QByteArray &name : available)
        names.append(QString::fromLatin1(name));
    names.removeDuplicates();
    names.sort(Qt::CaseInsensitive);
    return names;
}

DelimWidget::DelimWidget(bool forInput, QWidget *parent)
    : QWidget(parent)
    , m_combo(new QComboBox(this))
    , m_custom(new QLineEdit(this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_combo, 1);
    layout->addWidget(m_custom);
    const QList<int> delimiters
        = forInput ? delimiterList(true, false, true) : delimiterList(false, true, true);
    for (int delimiter : delimiters)
        m_combo->addItem(delimiterName(delimiter), delimiter);
    m_custom->setMaxLength(1);
    m_custom->setMaximumWidth(m_custom->fontMetrics().horizontalAdvance(QLatin1Char('W')) * 4);
    m_custom->hide();
    setToolTip(QStringLiteral("Choose the delimiter used to separate values in a row.\nChoose "
                              "'%1' for a delimiter not on the list.")
                   .arg(delimiterName(DelimiterCustom))
               + (forInput ? QStringLiteral("\n'Automatic' makes an intelligent guess.")
                           : QStringLiteral("\nIf in doubt, choose Comma.")));
    m_combo->setToolTip(toolTip());
    connect(m_combo, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this] {
        m_custom->setVisible(delimiter() == DelimiterCustom);
        emit delimiterChanged(delimiter());
    });
    connect(m_custom, &QLineEdit::textEdited, this,
            [this] { emit customDelimiterChanged(customDelimiter()); });
}

int DelimWidget::delimiter() const
{
    return m_combo->currentData().toInt();
}

QChar DelimWidget::customDelimiter() const
{
    const QString text = m_custom->text();
    return text.isEmpty() ? QChar() : text.at(0);
}

void DelimWidget::setValues(int delimiter, QChar custom)
{
    const QSignalBlocker comboBlocker(m_combo);
    const QSignalBlocker customBlocker(m_custom);
    int index = m_combo->findData(delimiter);
    if (index < 0)
        index = m_combo->findData(int(DelimiterComma));
    m_combo->setCurrentIndex(index);
    m_custom->setText(custom.isNull() ? QString() : QString(custom));
    m_custom->setVisible(this->delimiter() == DelimiterCustom);
}

WriteHeaderWidget::WriteHeaderWidget(QWidget *parent)
    : QWidget(parent)
    , m_writeHeader(new QCheckBox(QStringLiteral("write header"), this))
    , m_ifEmpty(new QCheckBox(QStringLiteral("if empty"), this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_writeHeader);
    layout->addWidget(m_ifEmpty);
    layout->addStretch(1);
    m_ifEmpty->setToolTip(QStringLiteral("Check to only write the header if the file (sheet for "
                                         "Excel) is currently empty (and not for subsequent "
                                         "appends)."));
    connect(m_writeHeader, &QCheckBox::toggled, this, [this](bool on) {
        m_ifEmpty->setEnabled(on);
        emit writeHeaderChanged(on);
    });
    connect(m_ifEmpty, &QCheckBox::toggled, this, &WriteHeaderWidget::onlyIfEmptyChanged);
}

void WriteHeaderWidget::setValues(bool writeHeader, bool onlyIfEmpty)
{
    const QSignalBlocker headerBlocker(m_writeHeader);
    const QSignalBlocker emptyBlocker(m_ifEmpty);
    m_writeHeader->setChecked(writeHeader);
    m_ifEmpty->setChecked(onlyIfEmpty);
    m_ifEmpty->setEnabled(writeHeader);
}

WriteModeComboBox::WriteModeComboBox(QWidget *parent)
    : QComboBox(parent)
{
    for (int mode = WriteDisabled; mode <= WriteNew; ++mode)
        addItem(writeModeName(mode), mode);
    setToolTip(QStringLiteral("%1=Do not write to this file.\n%2=Write to file, overwriting any "
                              "existing file/sheet.\n%3=Write to file, appending to any existing "
                              "file.\n%4=Write to file only if it doesn't already exist.")
                   .arg(writeModeName(WriteDisabled), writeModeName(WriteOverwrite),
                        writeModeName(WriteAppend), writeModeName(WriteNew)));
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int mode) {
        updateLook();
        emit modeChanged(mode);
    });
    updateLook();
}

void WriteModeComboBox::setMode(int mode)
{
    const QSignalBlocker blocker(this);
    setCurrentIndex(qBound(int(WriteDisabled), mode, int(WriteNew)));
    updateLook();
}

void WriteModeComboBox::updateLook()
{
    setStyleSheet(currentIndex() == WriteDisabled
                      ? QStringLiteral("QComboBox{ color: %1; }").arg(QColor(0xfc3300).name())
                      : QString());
}

MetaInfoWidget::MetaInfoWidget(QWidget *parent)
    : QWidget(parent)
    , m_combo(new QComboBox(this))
    , m_edit(new QToolButton(this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_combo, 1);
    layout->addWidget(m_edit);
    m_combo->addItems(MetaInfo::placeNames());
    m_edit->setText(QStringLiteral("..."));
    m_edit->setToolTip(QStringLiteral("Edit the meta information text."));
    connect(m_combo, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int place) {
        m_edit->setEnabled(place != MetaInfo::NotAdded);
        emit placeChanged(place);
    });
    connect(m_edit, &QToolButton::clicked, this, &MetaInfoWidget::editText);
}

void MetaInfoWidget::setValues(int place, const QString &text, bool fileSource)
{
    const QSignalBlocker blocker(m_combo);
    m_combo->setCurrentIndex(qBound(0, place, m_combo->count() - 1));
    m_edit->setEnabled(place != MetaInfo::NotAdded);
    m_text = text;
    m_fileSource = fileSource;
}

void MetaInfoWidget::editText()
{
    QDialog dialog(this);
    dialog.setWindowTitle(QStringLiteral("Meta Information"));
    auto *layout = new QVBoxLayout(&dialog);
    auto *edit = new QPlainTextEdit(m_text, &dialog);
    auto *variables = new QListWidget(&dialog);
    const QStringList names = MetaInfo::variables();
    for (const QString &name : names)
        if (m_fileSource || !name.startsWith(QLatin1String("File")))
            variables->addItem(name);
    connect(variables, &QListWidget::itemDoubleClicked, edit, [edit](QListWidgetItem *item) {
        edit->insertPlainText(QStringLiteral("$(%1)").arg(item->text()));
    });
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(edit);
    layout->addWidget(new QLabel(QStringLiteral("Double-click a variable to insert it:"), &dialog));
    layout->addWidget(variables);
    layout->addWidget(buttons);
    if (dialog.exec() != QDialog::Accepted || edit->toPlainText() == m_text)
        return;
    m_text = edit->toPlainText();
    emit textChanged(m_text);
}

ExcelColumnFormatsWidget::ExcelColumnFormatsWidget(QWidget *parent)
    : QWidget(parent)
    , m_combo(new QComboBox(this))
    , m_edit(new QToolButton(this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_combo, 1);
    layout->addWidget(m_edit);
    m_combo->addItems(ExcelFormatting::names());
    setToolTip(QStringLiteral("Choose whether to set Excel cell formats automatically (based on "
                              "column contents), to 'General' format or choose by column."));
    m_combo->setToolTip(toolTip());
    m_edit->setText(QStringLiteral("..."));
    m_edit->setToolTip(QStringLiteral("Choose the Excel format of each column."));
    connect(m_combo, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [this](int mode) {
        m_edit->setEnabled(mode == ExcelFormatting::Manual);
        emit formattingChanged(mode);
    });
    connect(m_edit, &QToolButton::clicked, this, &ExcelColumnFormatsWidget::editFormats);
}

void ExcelColumnFormatsWidget::setValues(int formatting, const QList<int> &formats)
{
    const QSignalBlocker blocker(m_combo);
    m_combo->setCurrentIndex(qBound(0, formatting, m_combo->count() - 1));
    m_edit->setEnabled(formatting == ExcelFormatting::Manual);
    m_formats = formats;
}

void ExcelColumnFormatsWidget::editFormats()
{
    const QStringList names = m_columnNames ? m_columnNames() : QStringList();
    ExcelColumnFormatsDialog dialog(names, m_formats, this);
    if (DialogExec::run(&dialog) != QDialog::Accepted)
        return;
    // Formats kept for columns the data no longer has come back with those columns.
    const QList<int> chosen = dialog.values() + m_formats.mid(names.size());
    QList<int> before = m_formats;
    while (before.size() < chosen.size())
        before.append(ExcelColumnFormat::Text);
    if (chosen == before)
        return;
    m_formats = chosen;
    emit formatsChanged(m_formats);
}

ExcelStyleTemplateWidget::ExcelStyleTemplateWidget(QWidget *parent)
    : QWidget(parent)
    , m_use(new QCheckBox(this))
    , m_path(new QLineEdit(this))
    , m_browse(new QToolButton(this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_use);
    layout->addWidget(m_path, 1);
    layout->addWidget(m_browse);
    m_use->setToolTip(QStringLiteral("Check to copy the column widths, row heights, hidden rows "
                                     "and columns, merges and cell formats of a template sheet "
                                     "after writing."));
    m_path->setToolTip(QStringLiteral("The Excel file to copy the styling from, with its sheet "
                                      "in brackets, for example 'template.xlsx[Sheet1]'.\nIt can "
                                      "hold variables such as {date}. A relative path is taken "
                                      "from the folder of the .tabulon document."));
    m_browse->setText(QStringLiteral("..."));
    m_browse->setToolTip(QStringLiteral("Choose the style template."));
    connect(m_use, &QCheckBox::toggled, this, [this](bool on) {
        updateEnabled();
        emit useChanged(on);
    });
    connect(m_path, &QLineEdit::editingFinished, this, [this] {
        if (m_path->text() == m_value)
            return;
        m_value = m_path->text();
        emit pathChanged(m_value);
    });
    connect(m_browse, &QToolButton::clicked, this, &ExcelStyleTemplateWidget::browse);
    updateEnabled();
}

void ExcelStyleTemplateWidget::setValues(bool use, const QString &path)
{
    const QSignalBlocker useBlocker(m_use);
    const QSignalBlocker pathBlocker(m_path);
    m_use->setChecked(use);
    m_value = path;
    m_path->setText(path);
    updateEnabled();
}

void ExcelStyleTemplateWidget::updateEnabled()
{
    m_path->setEnabled(m_use->isChecked());
    m_browse->setEnabled(m_use->isChecked());
}

void ExcelStyleTemplateWidget::browse()
{
    const QString current = m_value.section(QLatin1Char('['), 0, 0);
    const QString sheet = m_value.contains(QLatin1Char('[')) && m_value.endsWith(QLatin1Char(']'))
        ? m_value.section(QLatin1Char('['), 1).chopped(1)
        : QString();
    const QString folder = current.isEmpty() ? QString() : QFileInfo(current).absolutePath();
    const QString path
        = DesktopHooks::openFileName(this, QStringLiteral("Style template"), folder,
                                     QStringLiteral("Excel files (*.xlsx *.xls);;All files (*)"));
    if (path.isEmpty())
        return;
    // The sheet goes with the path, so that the template stays the same whatever sheets the
    // book gains; a book whose sheets can't be listed is taken whole for the user to finish.
    const int type = FileTypes::inputTypeForExtension(QFileInfo(path).suffix(), FileTypeXlsx);
    const ExcelReader::SheetListing listing = ExcelReader::listSheets(path, type);
    QString chosen = path;
    if (listing.names.size() == 1) {
        chosen += QStringLiteral("[%1]").arg(listing.names.first());
    } else if (listing.names.size() > 1) {
        ExcelWorksheetDialog dialog(listing.names, listing.labels, sheet, this);
        if (DialogExec::run(&dialog) != QDialog::Accepted)
            return;
        chosen += QStringLiteral("[%1]").arg(dialog.sheetName());
    }
    m_path->setText(chosen);
    if (chosen == m_value)
        return;
    m_value = chosen;
    emit pathChanged(m_value);
}
