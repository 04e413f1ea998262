#pragma once

#include "flow/ioitem.h"
#include "io/outputpipeline.h"

#include <QList>
#include <QPair>

#include <functional>

class PathVariables;

// The item that writes its one input to a file, or to one file per value of a column. Nothing
// leaves it. It holds every output option of every file type, so that a document keeps them
// when the type changes; whenever it runs with a Write mode other than Disabled, it writes.
class OutputItem : public IOItem
{
    Q_OBJECT

public:
    enum OutputTo { SingleFile = 0, MultipleFiles = 1 };
    enum OverwriteSheet { OverwriteWholeFile = 0, OverwriteSheetOnly = 1 };
    // The write modes of outputwriters.h, for callers that think in items.
    enum Mode {
        Disabled = WriteDisabled,
        Overwrite = WriteOverwrite,
        Append = WriteAppend,
        New = WriteNew
    };
    static QString writeModeName(int mode) { return ::writeModeName(mode); }

    // With a path, the file type, delimiter, quoting and byte-order mark follow its extension.
    explicit OutputItem(int id = -1, const QString &path = QString());

    // Whether a person can be asked; the command line switches this off for the process, and
    // every question then takes its default answer.
    static void setInteractive(bool on);
    static bool isInteractive();
    // Asks to go ahead with the text under the title; true to go ahead. The window installs
    // its own dialog; with none, every question takes its default answer, to go ahead.
    using ConfirmHandler = std::function<bool(const QString &title, const QString &text)>;
    static void setConfirmHandler(const ConfirmHandler &handler);
    // " File created by Tabulon {version} at {date} {time} "
    static QString defaultFileComment();

    int kind() const override { return OutputKind; }
    FlowItem *clone() const override;
    QString displayName() const override { return label(); }
    int maximumInputs() const override { return 1; }
    int minimumInputs() const override { return 1; }
    int maximumOutputs() const override { return 0; }
    void run(bool recursive, bool freeUpstream) override;
    void writeAttributes(QDomElement &element, const QString &documentFolder) const override;
    void readAttributes(const QDomElement &element, int version,
                        const QString &documentFolder) override;
    void setSourcePaths(const QString &documentFolder) override;
    QList<QPair<QString, QString>> parameterSummary() const override { return optionsList(); }
    QString errorText() const override;
    QVariantList stateList() const override;

    // The file name, "%1[%2]" with a sheet, "<no file name>", or "Output.csv" in a preview.
    QString label() const;
    // "Written", "Error writing", "Not written" (no Files column), or the disabled Write mode.
    QString writeStatusText() const;
    // Label and text of each option that applies to the file type, as the Details list shows.
    QList<QPair<QString, QString>> optionsList() const;
    bool outputEnabled() const { return m_writeMode != WriteDisabled; }

    // File type, delimiter, quoting and byte-order mark as the extension of path suggests.
    void applyExtensionDefaults(const QString &path);

    // Options. Each setter that changes a value marks the item as needing a run.
    void setPath(const QString &path) override;
    void setOutputFileType(int fileType);
    int singleOrMulti() const { return m_singleOrMulti; }
    void setSingleOrMulti(int outputTo);
    // The column that names the files, by identity; null when none is set.
    ColumnId multiFileColumn() const { return m_multiFileColumn; }
    void setMultiFileColumn(ColumnId column);
    // The column as a one-based number in the input's dataset (0 for none), the document form.
    // A number set while the input has no data yet waits until it has.
    int multiFileColumnNumber() const;
    void setMultiFileColumnNumber(int number);
    bool resolvePendingColumn();
    bool multiFileConfirm() const { return m_multiFileConfirm; }
    void setMultiFileConfirm(bool on);
    QString worksheet() const { return m_worksheet; }
    // Whether the file type is one of the Excel types, whose files have sheets.
    bool isExcel() const;
    void setWorksheet(const QString &sheet);
    int delimiter() const { return m_delimiter; }
    void setDelimiter(int delimiter);
    QChar customDelimiter() const { return m_customDelimiter; }
    void setCustomDelimiter(QChar delimiter);
    // The character written between values.
    QChar delimiterChar() const;
    int quoting() const { return m_quoting; }
    void setQuoting(int quoting);
    int lineEndings() const { return m_lineEndings; }
    void setLineEndings(int lineEndings);
    QString encoding() const { return m_encoding; }
    void setEncoding(const QString &encoding);
    bool byteOrderMark() const { return m_byteOrderMark; }
    void setByteOrderMark(bool on);
    int excelOutput() const { return m_excelOutput; }
    void setExcelOutput(int formatting);
    QList<int> excelManualColFormats() const { return m_excelManualColFormats; }
    void setExcelManualColFormats(const QList<int> &formats);
    bool excelUseStyleTemplate() const { return m_excelUseStyleTemplate; }
    void setExcelUseStyleTemplate(bool on);
    QString excelStyleTemplatePath() const { return m_excelStyleTemplatePath; }
    void setExcelStyleTemplatePath(const QString &path);
    int overwriteSheet() const { return m_overwriteSheet; }
    void setOverwriteSheet(int mode);
    int jsonTypes() const { return m_jsonTypes; }
    void setJsonTypes(int types);
    QList<int> jsonManualColTypes() const { return m_jsonManualColTypes; }
    void setJsonManualColTypes(const QList<int> &types);
    QString xmlAboveRoot() const { return m_xmlAboveRoot; }
    void setXmlAboveRoot(const QString &text);
    QString xmlRoot() const { return m_xmlRoot; }
    void setXmlRoot(const QString &name);
    QString xmlBelowRoot() const { return m_xmlBelowRoot; }
    void setXmlBelowRoot(const QString &text);
    QString xmlRow() const { return m_xmlRow; }
    void setXmlRow(const QString &name);
    bool htmlEncode() const { return m_htmlEncode; }
    void setHtmlEncode(bool on);
    bool removeEmpty() const { return m_removeEmpty; }
    void setRemoveEmpty(bool on);
    bool writeHeader() const { return m_writeHeader; }
    void setWriteHeader(bool on);
    bool writeHeaderFirstAppendOnly() const { return m_writeHeaderFirstAppendOnly; }
    void setWriteHeaderFirstAppendOnly(bool on);
    int writeMode() const { return m_writeMode; }
    void setWriteMode(int mode);
    QString fileComment() const { return m_fileComment; }
    void setFileComment(const QString &comment);

    // What the last write made of the path and sheet, variables replaced.
    QString pathWithoutSheetVarsReplaced() const { return m_pathWithoutSheetVarsReplaced; }
    QString sheetVarsReplaced() const { return m_sheetVarsReplaced; }

    // The variables as they stand for this item now: the model's inputs by alias, the
    // document, the time.
    PathVariables pathVariables() const;
    // Path and sheet with every variable replaced.
    QPair<QString, QString> expandPathVariables(const QString &path, const QString &sheet) const;

private:
    template<typename T> void change(T &member, const T &value)
    {
        if (member == value)
            return;
        member = value;
        setStatus(NeedsUpdate, true);
    }

    OutputFileOptions fileOptions() const;
    // Everything the write needs, as plain values.
    OutputRunOptions runOptions() const;
    // The .tabulon file of the model; empty while the document is unsaved.
    QString documentPath() const;

    static bool s_interactive;
    static ConfirmHandler s_confirmHandler;

    int m_singleOrMulti = SingleFile;
    ColumnId m_multiFileColumn;
    // A column number from a document, -1 when none waits.
    int m_pendingColumnNumber = -1;
    bool m_multiFileConfirm = true;
    QString m_worksheet;
    int m_delimiter;
    QChar m_customDelimiter;
    int m_quoting = OutputQuotingAsNeeded;
    int m_lineEndings = LineEndingAutomatic;
    QString m_encoding = QStringLiteral("UTF-8");
    bool m_byteOrderMark = true;
    int m_excelOutput = 0;
    QList<int> m_excelManualColFormats;
    bool m_excelUseStyleTemplate = false;
    QString m_excelStyleTemplatePath;
    int m_overwriteSheet = OverwriteSheetOnly;
    int m_jsonTypes = 0;
    QList<int> m_jsonManualColTypes;
    QString m_xmlAboveRoot;
    QString m_xmlRoot = QStringLiteral("root");
    QString m_xmlBelowRoot;
    QString m_xmlRow = QStringLiteral("record");
    bool m_htmlEncode = true;
    bool m_removeEmpty = true;
    bool m_writeHeader = true;
    bool m_writeHeaderFirstAppendOnly = true;
    int m_writeMode = WriteOverwrite;
    QString m_fileComment;
    QString m_pathWithoutSheetVarsReplaced;
    QString m_sheetVarsReplaced;
    bool m_noFilesColumn = false;
};
