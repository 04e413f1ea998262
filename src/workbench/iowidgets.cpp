#include "workbench/iowidgets.h"

#include "io/delimitedtext.h"
#include "io/metainfo.h"
#include "io/outputwriters.h"
#include "shell/application.h"

#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
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
