#pragma once

#include "workbench/itemwidget.h"

#include <functional>

class DelimWidget;
class ExcelColumnFormatsWidget;
class ExcelStyleTemplateWidget;
class OutputItem;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QToolButton;
class WriteHeaderWidget;
class WriteModeComboBox;

// The page of an output item: where the data goes and how it is written. Only the options
// that apply to the file type stand; each change is one undo step and asks for a run, and a
// new path or type brings the questions that keep path and type in step.
class OutputItemWidget : public ItemWidget
{
    Q_OBJECT

public:
    explicit OutputItemWidget(OutputItem *output, QWidget *parent = nullptr);

    OutputItem *outputItem() const;

    // A path typed or chosen: blocked extensions refused, the type offered from the extension.
    void choosePath(const QString &path);
    // A type chosen: the extension offered from the type.
    void chooseType(int fileType);
    void updateVisibility();
    void updateValues();

    QLineEdit *pathEdit() const { return m_path; }
    QComboBox *typeCombo() const { return m_type; }
    WriteModeComboBox *writeModeCombo() const { return m_writeMode; }
    DelimWidget *delimWidget() const { return m_delim; }
    QComboBox *quotingCombo() const { return m_quoting; }
    QComboBox *lineEndingsCombo() const { return m_lineEndings; }
    QComboBox *encodingCombo() const { return m_encoding; }
    QCheckBox *byteOrderMarkCheck() const { return m_byteOrderMark; }
    WriteHeaderWidget *writeHeaderWidget() const { return m_writeHeader; }
    QCheckBox *escapeCheck() const { return m_escape; }
    QLineEdit *commentEdit() const { return m_comment; }
    QLineEdit *sheetEdit() const { return m_sheet; }
    QComboBox *overwriteSheetCombo() const { return m_overwriteSheet; }
    ExcelColumnFormatsWidget *excelFormatsWidget() const { return m_excelFormats; }
    ExcelStyleTemplateWidget *styleTemplateWidget() const { return m_styleTemplate; }
    // The columns the output writes: its own once it has run, else its source's.
    QStringList columnNames() const;
    QLineEdit *aliasEdit() const { return m_alias; }

private:
    void build();
    void buildDestinationRows();
    void buildExcelRows();
    void buildTextFormatRows();
    void buildContentRows();
    void change(const QString &hint, const std::function<void(OutputItem *)> &apply,
                bool viaTimer = false);
    void browse();

    QWidget *m_pathRow = nullptr;
    QLineEdit *m_path = nullptr;
    QToolButton *m_browse = nullptr;
    QComboBox *m_type = nullptr;
    QLineEdit *m_sheet = nullptr;
    WriteModeComboBox *m_writeMode = nullptr;
    QComboBox *m_overwriteSheet = nullptr;
    ExcelColumnFormatsWidget *m_excelFormats = nullptr;
    ExcelStyleTemplateWidget *m_styleTemplate = nullptr;
    DelimWidget *m_delim = nullptr;
    QComboBox *m_quoting = nullptr;
    QComboBox *m_lineEndings = nullptr;
    QComboBox *m_encoding = nullptr;
    QCheckBox *m_byteOrderMark = nullptr;
    WriteHeaderWidget *m_writeHeader = nullptr;
    QCheckBox *m_escape = nullptr;
    QCheckBox *m_removeEmpty = nullptr;
    QLineEdit *m_comment = nullptr;
    QLineEdit *m_alias = nullptr;
};
