#pragma once

#include <QTableView>

#include <functional>

class DataTableModel;
class Dataset;
class FlowItem;
class QAction;
class QMenu;

// The table that shows an item's dataset: in the Right pane and in the inspection windows.
// It copies the selected block in the clipboard forms, sums up the selected cells for the
// status line, paints what stands in for an empty table, and turns double clicks and menu
// entries into requests for the windows that look closer at a row, a column or a cell.
class DataTableView : public QTableView
{
    Q_OBJECT

public:
    enum class CopyMode { WithHeader, WithoutHeader, HeaderOnly };
    enum class MenuKind { Cell, HorizontalHeader, VerticalHeader };

    // Copies of this many cells or more are confirmed first.
    static constexpr qint64 CopyQuestionCells = 1000000;
    // Past this many selected cells the statistics give the count only.
    static constexpr int StatisticsCellLimit = 100000;

    explicit DataTableView(QWidget *parent = nullptr);
    ~DataTableView() override;

    DataTableModel *dataModel() const { return m_model; }
    void setItem(FlowItem *item);
    FlowItem *item() const;
    // The item's dataset changed; takes the font and padding preferences again too.
    void refresh();

    // What the table says when the dataset has no columns.
    QString emptyText() const { return m_emptyText; }
    void setEmptyText(const QString &text);
    bool filterActionsAllowed() const { return m_filterActionsAllowed; }
    void setFilterActionsAllowed(bool allowed);
    void setShowInvisibles(bool on);
    bool showInvisibles() const;

    // The message painted over the table instead of cells; empty when cells show.
    QString overlayText() const;
    // The one line that sums up the selected cells; empty for none or a single cell.
    QString selectionStatistics() const;
    // The dataset positions of the current cell, -1 when there is none.
    int currentDatasetRow() const;
    int currentDatasetColumn() const;

    // Copies the block of selected cells around the current cell; false when nothing was
    // copied (no selection, or the user said no to a large copy).
    bool copySelection(CopyMode mode);
    // Copies a whole dataset, with its header if it has one, in the copy_data_as form.
    static bool copyDataset(const Dataset &dataset, QWidget *parent);
    // The separator of the text form of copies, by the copy_data_as preference.
    static QChar copyDelimiter();
    static QChar copyDelimiter(int copyDataAs);
    // The choices of copy_data_as, in the order of their numbers.
    static QStringList copyDataAsNames();

    // The menu of one kind at a place in the viewport or header; the caller owns it.
    QMenu *createContextMenu(MenuKind kind, const QPoint &pos);

    // How the table asks (Yes or No, No the default) and tells, through the message boxes of
    // the workbench.
    static bool ask(QWidget *parent, const QString &question);
    static void tell(QWidget *parent, const QString &message);

    // Shown while no window answers the requests below.
    static QString notAvailableText(const QString &window);

public slots:
    void onCopyWithHeader();
    void onCopyWithoutHeader();
    void onCopyHeaderOnly();
    void requestRowValues(int datasetRow);
    void requestColumnValues(int datasetColumn);
    void requestDrilldown(int datasetRow, int datasetColumn);
    void requestValue(int datasetRow, int datasetColumn);

signals:
    void selectedDataCellsChanged();
    void selectionStatisticsChanged(const QString &text);
    // Requests for the windows that look closer, in dataset positions.
    void drilldownRequested(int row, int column);
    void columnValuesRequested(int column);
    void rowValuesRequested(int row);
    void valueRequested(int row, int column);
    // A hint for a balloon: the dataset has marks or drilldown.
    void hintRequested(const QString &title, const QString &text, int milliseconds);

protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void selectionChanged(const QItemSelection &selected,
                          const QItemSelection &deselected) override;

private:
    void applyPreferences();
    void onModelReset();
    void fitColumnWidths();
    void showMenu(MenuKind kind, const QPoint &pos, QWidget *on);
    void filterOnCurrentCell(bool rows);
    qint64 selectedCellCount() const;
    QRect copyBlock() const;
    template<typename Signal> bool answered(Signal signal) const;

    DataTableModel *m_model = nullptr;
    QString m_emptyText;
    bool m_filterActionsAllowed = true;
    QString m_lastStatistics;
    QAction *m_copyWithHeader = nullptr;
    QAction *m_copyWithoutHeader = nullptr;
    QAction *m_copyHeaderOnly = nullptr;
};
