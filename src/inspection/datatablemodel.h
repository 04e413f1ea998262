#pragma once

#include <QAbstractTableModel>
#include <QBrush>
#include <QPair>
#include <QPointer>
#include <QSet>
#include <QStringList>
#include <QVector>

#include <functional>

class Dataset;
class FlowItem;

// A read-only table model over one dataset, usually the output of an item. Cells are read
// from the dataset when the view asks for them and nothing is computed ahead, so a dataset
// of millions of rows shows at once. Filters keep only vectors of the rows and columns they
// let through. Positions given to and taken from the highlight sets, the filters and the
// signals of the view are those of the dataset; model positions differ once a filter is on.
class DataTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum State { NotRun = 0, Processing = 1, HasResult = 2 };
    enum Severity { Information = 0, Warning = 1, Error = 2, NoSeverity = 3 };

    // Past these the dataset is not shown at all.
    static constexpr int MaxColumns = 100000;
    static constexpr int MaxRows = 10000000;

    explicit DataTableModel(QObject *parent = nullptr);
    ~DataTableModel() override;

    // Shows the item's dataset and follows its runs; null shows nothing.
    void setItem(FlowItem *item);
    FlowItem *item() const;
    // A dataset without an item, as the compare windows show; not owned, and it must not
    // change without a refresh().
    void setDataset(const Dataset *dataset, int state = HasResult);
    const Dataset *dataset() const { return m_dataset; }
    // The dataset changed in place: takes the item's state again and reapplies the filters.
    void refresh();

    int state() const { return m_state; }
    void setState(int state);

    // The dataset that differences are measured against; not owned.
    void setCompareDataset(const Dataset *other);
    const Dataset *compareDataset() const { return m_compare; }
    bool comparisonMode() const { return m_comparisonMode; }
    void setComparisonMode(bool on);
    bool verificationHighlighting() const { return m_verification; }
    void setVerificationHighlighting(bool on);
    bool showInvisibles() const { return m_showInvisibles; }
    void setShowInvisibles(bool on);

    // Labels of the vertical header by dataset row; rows past the list are numbered.
    QStringList rowLabels() const { return m_rowLabels; }
    void setRowLabels(const QStringList &labels);
    // Highlights, in dataset positions. A cell pair with column -1 stands for its whole row.
    void setHighlightedRows(const QSet<int> &rows);
    void setHighlightedCells(const QSet<QPair<int, int>> &cells);
    void setHighlightedHeaders(const QSet<int> &columns);
    // Rows that exist only in this dataset of a comparison.
    void setRowOnlyRows(const QSet<int> &rows);
    QSet<int> highlightedRows() const { return m_highlightedRows; }

    // Brushes; they follow the colour scheme until set.
    void setDifferenceColor(const QColor &color);
    void setSeverityColor(int severity, const QColor &color);
    QBrush severityBrush(int severity) const;

    // Whether the dataset passes the size limits, and the text the view shows instead.
    bool isTooBig() const;
    QString tooBigText() const;
    bool hasDatasetColumns() const;
    bool datasetHasRows() const;

    // Keeps the rows in which text occurs, in the one column or, for -1, in any column. An
    // empty text shows all rows.
    void setRowFilter(const QString &text, int column = -1,
                      Qt::CaseSensitivity cs = Qt::CaseInsensitive);
    // Keeps the columns whose name or any cell holds text.
    void setColumnFilter(const QString &text, Qt::CaseSensitivity cs = Qt::CaseInsensitive);
    // Both filters at once: one reset of the view.
    void setFilters(const QString &rowText, int rowColumn, Qt::CaseSensitivity rowCase,
                    const QString &columnText, Qt::CaseSensitivity columnCase);
    void clearFilters();
    QString rowFilterText() const { return m_rowFilterText; }
    int rowFilterColumn() const { return m_rowFilterColumn; }
    Qt::CaseSensitivity rowFilterCase() const { return m_rowFilterCase; }
    Qt::CaseSensitivity columnFilterCase() const { return m_columnFilterCase; }
    QString columnFilterText() const { return m_columnFilterText; }
    bool isRowFiltered() const { return m_rowFiltered; }
    bool isColumnFiltered() const { return m_columnFiltered; }

    // Between model and dataset positions; -1 for what a filter hides or what is out of range.
    int datasetRow(int row) const;
    int datasetColumn(int column) const;
    int modelRow(int datasetRow) const;
    int modelColumn(int datasetColumn) const;
    int datasetRowCount() const;
    int datasetColumnCount() const;

    // The real texts at model positions, never mapped.
    QString cellText(int row, int column) const;
    QString headerText(int column) const;

    bool hasDrilldown() const;
    bool hasDrilldown(int row, int column) const;
    bool hasMarks() const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // Each code unit of white space or a null as a visible sign; other text is returned as is.
    static QString mapInvisibles(const QString &text);
    // The number reader of the table: alignment and selection statistics agree on it.
    static bool readsAsNumber(const QString &text, double *value = nullptr);
    static QString severityName(int severity);
    // Names rule numbers in the tool tips of marks; until one is installed they read "rule %1".
    static void setRuleNamer(std::function<QString(int rule)> namer);

signals:
    void filterChanged();

private:
    void attach(FlowItem *item);
    void detach();
    void onItemDestroyed();
    void onProcessingStart();
    void onProcessingEnd();
    void takeStateFromItem();
    void applyFilters();
    void loadBrushes();
    bool showsCells() const;
    bool differs(int r, int c) const;
    QString displayText(const QString &text) const;
    QString markText(int r, int c) const;

    QPointer<FlowItem> m_item;
    const Dataset *m_dataset = nullptr;
    const Dataset *m_compare = nullptr;
    int m_state = HasResult;
    bool m_showInvisibles = false;
    bool m_comparisonMode = false;
    bool m_verification = true;
    QStringList m_rowLabels;
    QSet<int> m_highlightedRows;
    QSet<QPair<int, int>> m_highlightedCells;
    QSet<int> m_highlightedHeaders;
    QSet<int> m_rowOnlyRows;

    QString m_rowFilterText;
    int m_rowFilterColumn = -1;
    Qt::CaseSensitivity m_rowFilterCase = Qt::CaseInsensitive;
    QString m_columnFilterText;
    Qt::CaseSensitivity m_columnFilterCase = Qt::CaseInsensitive;
    bool m_rowFiltered = false;
    bool m_columnFiltered = false;
    QVector<int> m_rowMap;
    QVector<int> m_columnMap;

    QBrush m_highlightBrush;
    QBrush m_rowHighlightBrush;
    QBrush m_severityBrushes[3];
    QBrush m_differenceBrush;
    QBrush m_rowOnlyBackground;
    QBrush m_rowOnlyForeground;
};
