#pragma once

#include "workbench/itemwidget.h"

#include <functional>

class DelimWidget;
class InputItem;
class MetaInfoWidget;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QToolButton;

// The page of an input item: where the data comes from and how it is read. Only the options
// that apply to the file type stand; each change is one undo step and asks for a run.
class InputItemWidget : public ItemWidget
{
    Q_OBJECT

public:
    explicit InputItemWidget(InputItem *input, QWidget *parent = nullptr);

    InputItem *inputItem() const;

    // Takes a new path as the user chose it, asking about the file type.
    void choosePath(const QString &path);
    void importFromClipboard();
    // Reads this item again, leaving the items downstream waiting.
    void rereadSource();
    // Which option widgets stand for the current type and source.
    void updateVisibility();
    void updateValues();

    QPushButton *sourceButton() const { return m_sourceButton; }
    QLineEdit *pathEdit() const { return m_path; }
    QComboBox *typeCombo() const { return m_type; }
    QLineEdit *sheetEdit() const { return m_sheet; }
    QToolButton *chooseSheetButton() const { return m_chooseSheet; }
    DelimWidget *delimWidget() const { return m_delim; }
    QCheckBox *repeatedDelimitersCheck() const { return m_repeated; }
    QComboBox *quotingCombo() const { return m_quoting; }
    QComboBox *encodingCombo() const { return m_encoding; }
    QCheckBox *headerCheck() const { return m_header; }
    QSpinBox *ignoredRowsSpin() const { return m_ignoredRows; }
    QCheckBox *watchCheck() const { return m_watch; }
    QCheckBox *trimCheck() const { return m_trim; }
    QCheckBox *simplifyCheck() const { return m_simplify; }
    QCheckBox *ignoreEmptyRowsCheck() const { return m_ignoreEmptyRows; }
    QCheckBox *ignoreEmptyColumnsCheck() const { return m_ignoreEmptyColumns; }
    QCheckBox *excelHiddenRowsCheck() const { return m_excelHiddenRows; }
    QCheckBox *excelHiddenColumnsCheck() const { return m_excelHiddenColumns; }
    MetaInfoWidget *metaInfoWidget() const { return m_metaInfo; }
    QComboBox *formatCombo() const { return m_format; }
    QLineEdit *aliasEdit() const { return m_alias; }

private:
    void build();
    void buildSourceRows();
    void buildParsingRows();
    void buildReadingChecks();
    void buildExtraRows();
    // One undoable change of the item under hint, then a run.
    void change(const QString &hint, const std::function<void(InputItem *)> &apply,
                bool viaTimer = false);
    QCheckBox *addCheck(const QString &text, const QString &hint,
                        const std::function<void(InputItem *, bool)> &apply);
    void browse();
    // Asks which sheet of the book to read.
    void chooseSheet();

    QPushButton *m_sourceButton = nullptr;
    QWidget *m_pathRow = nullptr;
    QLineEdit *m_path = nullptr;
    QToolButton *m_browse = nullptr;
    QComboBox *m_type = nullptr;
    QWidget *m_sheetRow = nullptr;
    QLineEdit *m_sheet = nullptr;
    QToolButton *m_chooseSheet = nullptr;
    DelimWidget *m_delim = nullptr;
    QCheckBox *m_repeated = nullptr;
    QComboBox *m_quoting = nullptr;
    QComboBox *m_encoding = nullptr;
    QCheckBox *m_header = nullptr;
    QSpinBox *m_ignoredRows = nullptr;
    QCheckBox *m_watch = nullptr;
    QCheckBox *m_trim = nullptr;
    QCheckBox *m_simplify = nullptr;
    QCheckBox *m_ignoreEmptyRows = nullptr;
    QCheckBox *m_ignoreEmptyColumns = nullptr;
    QCheckBox *m_excelHiddenRows = nullptr;
    QCheckBox *m_excelHiddenColumns = nullptr;
    MetaInfoWidget *m_metaInfo = nullptr;
    QComboBox *m_format = nullptr;
    QLineEdit *m_alias = nullptr;
};
