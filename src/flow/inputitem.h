#pragma once

#include "flow/ioitem.h"
#include "io/inputreader.h"

#include <QPointer>

class QFileSystemWatcher;
class QTimer;

// The item that brings data into a document, from a file or from text held in the document
// (a clipboard import). It has no arrow coming in. It owns the reading options, decides the
// header, adds meta information and watches its file when asked to.
class InputItem : public IOItem
{
    Q_OBJECT

public:
    enum Medium { File = InputReadOptions::File, Clipboard = InputReadOptions::Clipboard };
    enum Header {
        NoHeader = InputReadOptions::NoHeader,
        HasHeader = InputReadOptions::HasHeader,
        GuessHeader = InputReadOptions::GuessHeader
    };

    explicit InputItem(int id = -1);
    ~InputItem() override;

    // A new item guesses its header when runs follow each edit, and assumes one otherwise.
    static int defaultHeader(bool autoRun) { return autoRun ? GuessHeader : HasHeader; }

    int kind() const override { return InputKind; }
    FlowItem *clone() const override;
    QString displayName() const override;
    bool canRun() const override { return true; }
    int maximumInputs() const override { return 0; }
    void run(bool recursive, bool freeUpstream) override;
    void writeAttributes(QDomElement &element, const QString &documentFolder) const override;
    void readAttributes(const QDomElement &element, int version,
                        const QString &documentFolder) override;
    QList<QPair<QString, QString>> parameterSummary() const override;
    QVariantList stateList() const override;

    // The header flag in force: the dataset's own once it has columns, else the option.
    bool hasHeader() const;
    QString description() const;

    // Options. Each setter marks the item as needing a run.
    int medium() const { return m_medium; }
    void setMedium(int medium);
    void setPath(const QString &path) override;
    QString text() const { return m_text; }
    void setText(const QString &text);
    QString worksheet() const { return m_worksheet; }
    void setWorksheet(const QString &sheet);
    void setInputFileType(int fileType);
    int delimiter() const { return m_delimiter; }
    void setDelimiter(int delimiter);
    QChar customDelimiter() const { return m_customDelimiter; }
    void setCustomDelimiter(QChar delimiter);
    bool ignoreRepeatedDelimiters() const { return m_ignoreRepeatedDelimiters; }
    void setIgnoreRepeatedDelimiters(bool on);
    int quoting() const { return m_quoting; }
    void setQuoting(int quoting);
    int autoFixedWidths() const { return m_autoFixedWidths; }
    void setAutoFixedWidths(int mode);
    QList<int> fixedWidths() const { return m_fixedWidths; }
    void setFixedWidths(const QList<int> &widths);
    QString encoding() const { return m_encoding; }
    void setEncoding(const QString &encoding);
    int header() const { return m_header; }
    void setHeader(int header);
    int ignoredRows() const { return m_ignoredRows; }
    void setIgnoredRows(int rows);
    bool watching() const { return m_watching; }
    void setWatching(bool on);
    bool trim() const { return m_trim; }
    void setTrim(bool on);
    bool simplify() const { return m_simplify; }
    void setSimplify(bool on);
    bool ignoreEmptyRows() const { return m_ignoreEmptyRows; }
    void setIgnoreEmptyRows(bool on);
    bool ignoreEmptyColumns() const { return m_ignoreEmptyColumns; }
    void setIgnoreEmptyColumns(bool on);
    bool ignoreExcelHiddenRows() const { return m_ignoreExcelHiddenRows; }
    void setIgnoreExcelHiddenRows(bool on);
    bool ignoreExcelHiddenColumns() const { return m_ignoreExcelHiddenColumns; }
    void setIgnoreExcelHiddenColumns(bool on);
    int metaPlace() const { return m_metaPlace; }
    void setMetaPlace(int place);
    QString metaText() const { return m_metaText; }
    void setMetaText(const QString &text);
    QString metaColumnName() const { return m_metaColumnName; }
    void setMetaColumnName(const QString &name);
    int jsonArraysAsRows() const { return m_jsonArraysAsRows; }
    void setJsonArraysAsRows(int format);

    // The schema of expected columns; applied by the schema step when in use.
    struct Schema
    {
        bool inUse = false;
        QStringList columnNames;
        QStringList missingValues;
        int missingColumns = 0;
        int reorderColumns = 0;
        int extraColumns = 0;
    };
    const Schema &schema() const { return m_schema; }
    void setSchema(const Schema &schema);

    // The file's type stated by its extension differs from the chosen type: the warning text,
    // or empty.
    QString extensionWarning() const;
    // The options of a read, as plain values.
    InputReadOptions readOptions() const;

    // A change of the watched file waits this long for further changes before it is read,
    // and again for the retry while the model is busy with a run.
    static constexpr int ImportDelayMs = 5000;
    static constexpr int BusyRetryDelayMs = 2000;
    // The single-shot timer of the delayed re-read, made on first use; tests fire it.
    QTimer *importTimer();

signals:
    void sourceChanged(FlowItem *node);

public slots:
    void onFileChanged();
    void onDelayedImport();

private:
    void markChanged();
    // Sets an option and marks the item for a run when the value differs.
    template<typename T> void change(T &member, const T &value);
    void updateWatcher();
    void copyOptionsInto(InputItem *copy) const;

    int m_medium = File;
    QString m_text;
    QString m_worksheet;
    int m_delimiter = 0;
    QChar m_customDelimiter;
    bool m_ignoreRepeatedDelimiters = false;
    int m_quoting = 0;
    int m_autoFixedWidths = 1;
    QList<int> m_fixedWidths;
    QString m_encoding = QStringLiteral("Automatic");
    int m_header = GuessHeader;
    int m_ignoredRows = 0;
    bool m_watching = false;
    bool m_trim = true;
    bool m_simplify = true;
    bool m_ignoreEmptyRows = true;
    bool m_ignoreEmptyColumns = false;
    bool m_ignoreExcelHiddenRows = false;
    bool m_ignoreExcelHiddenColumns = false;
    int m_metaPlace = 0;
    QString m_metaText;
    QString m_metaColumnName = QStringLiteral("Meta Info");
    int m_jsonArraysAsRows = 0;
    Schema m_schema;

    QFileSystemWatcher *m_watcher = nullptr;
    QTimer *m_importTimer = nullptr;
};
