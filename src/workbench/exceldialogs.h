#pragma once

#include <QDialog>
#include <QList>
#include <QStringList>

#include <functional>

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QPushButton;
class QTableWidget;

// How the dialogs of this file are run modally. Tests put in a function that works the dialog
// with events and returns its result, so that no modal loop blocks.
class DialogExec
{
public:
    using Hook = std::function<int(QDialog *dialog)>;
    // Null restores the modal loop.
    static void setHook(const Hook &hook);
    static int run(QDialog *dialog);

private:
    static Hook s_hook;
};

// One choice for each column of a table: a row per column with a combo of the choices, and a
// row below to give several columns the same choice at once. The Excel column formats use it;
// other per-column choices can, with their own texts.
class ColumnChoicesDialog : public QDialog
{
    Q_OBJECT

public:
    enum SetMode { SetSelected = 0, SetAll = 1 };

    // values are indexes into choices, by column position; a column past the end of values
    // gets fallback.
    ColumnChoicesDialog(const QString &title, const QString &valueHeader, const QStringList &names,
                        const QStringList &choices, const QList<int> &values, int fallback,
                        QWidget *parent = nullptr);

    // One index into the choices for each column.
    QList<int> values() const;

    QTableWidget *table() const { return m_table; }
    // The combo of the column at row.
    QComboBox *valueCombo(int row) const;
    QComboBox *setModeCombo() const { return m_setMode; }
    QComboBox *setValueCombo() const { return m_setValue; }
    QPushButton *setButton() const { return m_set; }
    QDialogButtonBox *buttons() const { return m_buttons; }

private:
    void setSeveral();

    QTableWidget *m_table;
    QComboBox *m_setMode;
    QComboBox *m_setValue;
    QPushButton *m_set;
    QDialogButtonBox *m_buttons;
};

// The format each column of an Excel output is written with, when Formatting is Manual.
class ExcelColumnFormatsDialog : public ColumnChoicesDialog
{
    Q_OBJECT

public:
    // formats by column position; a column past their end shows as Text, as it is written.
    ExcelColumnFormatsDialog(const QStringList &names, const QList<int> &formats,
                             QWidget *parent = nullptr);
};

// One sheet of a book, from a combo box of the sheets' labels.
class ExcelWorksheetDialog : public QDialog
{
    Q_OBJECT

public:
    // labels stand for names, one for one; current is preselected when it names one of them.
    ExcelWorksheetDialog(const QStringList &names, const QStringList &labels,
                         const QString &current, QWidget *parent = nullptr);

    QString sheetName() const;
    QComboBox *combo() const { return m_combo; }
    QDialogButtonBox *buttons() const { return m_buttons; }

private:
    QStringList m_names;
    QComboBox *m_combo;
    QDialogButtonBox *m_buttons;
};

// Any number of sheets of a book, each ticked in a list; OK waits for the first tick.
class ExcelWorksheetsDialog : public QDialog
{
    Q_OBJECT

public:
    ExcelWorksheetsDialog(const QStringList &names, const QStringList &labels,
                          QWidget *parent = nullptr);

    // The ticked sheets in the book's order.
    QStringList sheetNames() const;
    QList<QCheckBox *> checks() const { return m_checks; }
    QDialogButtonBox *buttons() const { return m_buttons; }

private:
    void updateOk();

    QStringList m_names;
    QList<QCheckBox *> m_checks;
    QDialogButtonBox *m_buttons;
};

// The questions about the sheets of a book, the listing's failures told in a message box.
namespace ExcelSheetChoice {

// The sheets to input from the book at path: the one sheet with data without asking, else
// those the user ticks. Empty when the book can't be listed, has no sheet with data, or the
// user cancels.
QStringList sheetsToInput(QWidget *parent, const QString &path, int fileType);

// One sheet of the book at path, asked for with the current one preselected; false when the
// book can't be listed, has no sheet with data, or the user cancels.
bool chooseSheet(QWidget *parent, const QString &path, int fileType, const QString &current,
                 QString *chosen);

} // namespace ExcelSheetChoice
