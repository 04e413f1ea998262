#include "workbench/exceldialogs.h"

#include "io/excelreader.h"
#include "io/excelwriter.h"
#include "shell/messageboxes.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QSet>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

const QString s_sheetsTitle = QStringLiteral("Choose Excel sheets");
const QString s_sheetsText = QStringLiteral("Select Excel sheet to input");

QDialogButtonBox *okCancelButtons(QDialog *dialog)
{
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}

// The listing of the book's sheets with data; empty after the user has been told why.
ExcelReader::SheetListing listOrTell(QWidget *parent, const QString &path, int fileType)
{
    ExcelReader::SheetListing listing = ExcelReader::listSheets(path, fileType);
    if (!listing.error.isEmpty())
        MessageBoxes::warning(parent, s_sheetsTitle, listing.error);
    else if (listing.names.isEmpty())
        MessageBoxes::warning(parent, s_sheetsTitle, ExcelReader::noSheetsMessage());
    return listing;
}

} // namespace

DialogExec::Hook DialogExec::s_hook;

void DialogExec::setHook(const Hook &hook)
{
    s_hook = hook;
}

int DialogExec::run(QDialog *dialog)
{
    if (s_hook)
        return s_hook(dialog);
    return dialog->exec();
}

ColumnChoicesDialog::ColumnChoicesDialog(const QString &title, const QString &valueHeader,
                                         const QStringList &names, const QStringList &choices,
                                         const QList<int> &values, int fallback, QWidget *parent)
    : QDialog(parent)
    , m_table(new QTableWidget(names.size(), 2, this))
    , m_setMode(new QComboBox(this))
    , m_setValue(new QComboBox(this))
    , m_set(new QPushButton(QStringLiteral("Set"), this))
    , m_buttons(okCancelButtons(this))
{
    setWindowTitle(title);
    m_table->setHorizontalHeaderLabels({QStringLiteral("Column"), valueHeader});
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    for (int row = 0; row < names.size(); ++row) {
        m_table->setItem(row, 0, new QTableWidgetItem(names.at(row)));
        auto *combo = new QComboBox(m_table);
        combo->addItems(choices);
        const int value = row < values.size() ? values.at(row) : fallback;
        combo->setCurrentIndex(value >= 0 && value < choices.size() ? value : fallback);
        m_table->setCellWidget(row, 1, combo);
    }
    // The header sizes to its text, not to the combos in its cells: wide enough for the longest
    // choice, whether or not there are rows.
    QComboBox widest;
    widest.addItems(choices);
    m_table->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Fixed);
    m_table->setColumnWidth(
        1, qMax(widest.sizeHint().width(), m_table->horizontalHeader()->sectionSizeHint(1)));

    m_setMode->addItems({QStringLiteral("Selected"), QStringLiteral("All")});
    m_setMode->setToolTip(QStringLiteral("Set the selected columns, or all of them."));
    m_setValue->addItems(choices);
    m_setValue->setToolTip(QStringLiteral("The value to give them."));
    m_set->setToolTip(QStringLiteral("Give the columns this value."));
    connect(m_set, &QPushButton::clicked, this, &ColumnChoicesDialog::setSeveral);
    auto *setRow = new QHBoxLayout;
    setRow->addWidget(m_setMode);
    setRow->addWidget(m_setValue, 1);
    setRow->addWidget(m_set);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_table, 1);
    layout->addLayout(setRow);
    layout->addWidget(m_buttons);
    resize(420, 480);
}

QComboBox *ColumnChoicesDialog::valueCombo(int row) const
{
    return qobject_cast<QComboBox *>(m_table->cellWidget(row, 1));
}

QList<int> ColumnChoicesDialog::values() const
{
    QList<int> values;
    values.reserve(m_table->rowCount());
    for (int row = 0; row < m_table->rowCount(); ++row)
        values.append(valueCombo(row)->currentIndex());
    return values;
}

void ColumnChoicesDialog::setSeveral()
{
    const int value = m_setValue->currentIndex();
    QSet<int> rows;
    if (m_setMode->currentIndex() == SetAll) {
        for (int row = 0; row < m_table->rowCount(); ++row)
            rows.insert(row);
    } else {
        const QModelIndexList selected = m_table->selectionModel()->selectedRows();
        for (const QModelIndex &index : selected)
            rows.insert(index.row());
    }
    for (int row : qAsConst(rows))
        valueCombo(row)->setCurrentIndex(value);
}

ExcelColumnFormatsDialog::ExcelColumnFormatsDialog(const QStringList &names,
                                                   const QList<int> &formats, QWidget *parent)
    : ColumnChoicesDialog(QStringLiteral("Excel Column Formats"), QStringLiteral("Excel Format"),
                          names, ExcelColumnFormat::names(), formats, ExcelColumnFormat::Text,
                          parent)
{ }

ExcelWorksheetDialog::ExcelWorksheetDialog(const QStringList &names, const QStringList &labels,
                                           const QString &current, QWidget *parent)
    : QDialog(parent)
    , m_names(names)
    , m_combo(new QComboBox(this))
    , m_buttons(okCancelButtons(this))
{
    setWindowTitle(s_sheetsTitle);
    m_combo->addItems(labels);
    for (int i = 0; i < names.size(); ++i)
        if (names.at(i).compare(current, Qt::CaseInsensitive) == 0) {
            m_combo->setCurrentIndex(i);
            break;
        }
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(s_sheetsText, this));
    layout->addWidget(m_combo);
    layout->addWidget(m_buttons);
}

QString ExcelWorksheetDialog::sheetName() const
{
    return m_names.value(m_combo->currentIndex());
}

ExcelWorksheetsDialog::ExcelWorksheetsDialog(const QStringList &names, const QStringList &labels,
                                             QWidget *parent)
    : QDialog(parent)
    , m_names(names)
    , m_buttons(okCancelButtons(this))
{
    setWindowTitle(s_sheetsTitle);
    // A book can have many sheets; the list scrolls rather than grow off the screen.
    auto *scroll = new QScrollArea(this);
    auto *list = new QWidget(scroll);
    auto *listLayout = new QVBoxLayout(list);
    for (const QString &label : labels) {
        auto *check = new QCheckBox(label, list);
        listLayout->addWidget(check);
        m_checks.append(check);
        connect(check, &QCheckBox::toggled, this, &ExcelWorksheetsDialog::updateOk);
    }
    listLayout->addStretch(1);
    scroll->setWidget(list);
    scroll->setWidgetResizable(true);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(s_sheetsText, this));
    layout->addWidget(scroll, 1);
    layout->addWidget(m_buttons);
    updateOk();
}

QStringList ExcelWorksheetsDialog::sheetNames() const
{
    QStringList chosen;
    for (int i = 0; i < m_checks.size(); ++i)
        if (m_checks.at(i)->isChecked())
            chosen.append(m_names.value(i));
    return chosen;
}

void ExcelWorksheetsDialog::updateOk()
{
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(!sheetNames().isEmpty());
}

namespace ExcelSheetChoice {

QStringList sheetsToInput(QWidget *parent, const QString &path, int fileType)
{
    const ExcelReader::SheetListing listing = listOrTell(parent, path, fileType);
    if (listing.names.size() <= 1)
        return listing.names;
    ExcelWorksheetsDialog dialog(listing.names, listing.labels, parent);
    if (DialogExec::run(&dialog) != QDialog::Accepted)
        return {};
    return dialog.sheetNames();
}

bool chooseSheet(QWidget *parent, const QString &path, int fileType, const QString &current,
                 QString *chosen)
{
    const ExcelReader::SheetListing listing = listOrTell(parent, path, fileType);
    if (listing.names.isEmpty())
        return false;
    ExcelWorksheetDialog dialog(listing.names, listing.labels, current, parent);
    if (DialogExec::run(&dialog) != QDialog::Accepted)
        return false;
    *chosen = dialog.sheetName();
    return true;
}

} // namespace ExcelSheetChoice
