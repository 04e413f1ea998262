#pragma once

#include <QStringList>
#include <QWidget>

class DataTableView;
class FlowItem;
class QCheckBox;
class QComboBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class DelayTimer;
class QToolButton;

// The "Data" tab of an item: the data table under a row of tool buttons (copy the dataset,
// the values of the current row or column, the filter row, invisible characters, scrolling)
// and above a filter row that narrows what the table shows without touching the dataset.
class DataPage : public QWidget
{
    Q_OBJECT

public:
    // Typing in a filter box waits this long for the next key before the table follows.
    static constexpr int FilterDelayMs = 300;

    explicit DataPage(QWidget *parent = nullptr);
    ~DataPage() override;

    void setItem(FlowItem *item);
    FlowItem *item() const;
    void refresh();
    DataTableView *view() const { return m_view; }

    // The parts of the page, for the window's shortcuts and for tests.
    QToolButton *copyButton() const { return m_copyButton; }
    QToolButton *rowValuesButton() const { return m_rowValuesButton; }
    QToolButton *columnValuesButton() const { return m_columnValuesButton; }
    QToolButton *filterButton() const { return m_filterButton; }
    QToolButton *invisiblesButton() const { return m_invisiblesButton; }
    QWidget *filterRow() const { return m_filterRow; }
    QLineEdit *rowFilterEdit() const { return m_rowFilterEdit; }
    QComboBox *rowFilterColumnBox() const { return m_rowFilterColumn; }
    QLineEdit *columnFilterEdit() const { return m_columnFilterEdit; }
    QCheckBox *matchCaseBox() const { return m_matchCase; }
    QLabel *filterCountLabel() const { return m_filterCount; }

    enum class Scroll { Left, Right, Up, Down, FirstColumn, LastColumn, FirstRow, LastRow };
    QToolButton *scrollButton(Scroll scroll) const;

    bool isFilterRowShown() const;
    void setFilterRowShown(bool shown);

public slots:
    // Copies the item's whole dataset, whatever the filters show.
    void onCopyDataset();

signals:
    void selectedDataCellsChanged();

private:
    // The parts of the page, top to bottom; the constructor lays them out above the table.
    void buildToolRow();
    // Copy, row and column values, the filter row's switch and invisible characters.
    void buildActionButtons();
    void buildScrollButtons(QHBoxLayout *tools);
    // Hidden until the filter button or a shortcut asks for it.
    void buildFilterRow();
    // The filter row waits for typing to pause; its other controls filter at once.
    void connectFilters();
    QToolButton *addToolButton(const QString &toolTip, const QIcon &icon);
    void scroll(Scroll how);
    void onRowValues();
    void onColumnValues();
    void applyFilters();
    void onModelFilterChanged();
    void onModelReset();
    void fillColumnBox();
    void updateFilterCount();
    void updateButtons();

    DataTableView *m_view = nullptr;
    QToolButton *m_copyButton = nullptr;
    QToolButton *m_rowValuesButton = nullptr;
    QToolButton *m_columnValuesButton = nullptr;
    QToolButton *m_filterButton = nullptr;
    QToolButton *m_invisiblesButton = nullptr;
    QToolButton *m_scrollButtons[8] = {};
    QWidget *m_toolRow = nullptr;
    QWidget *m_filterRow = nullptr;
    QLineEdit *m_rowFilterEdit = nullptr;
    QComboBox *m_rowFilterColumn = nullptr;
    QLineEdit *m_columnFilterEdit = nullptr;
    QCheckBox *m_matchCase = nullptr;
    QLabel *m_filterCount = nullptr;
    QToolButton *m_closeFilterButton = nullptr;
    DelayTimer *m_filterTimer = nullptr;
    QStringList m_columnNames;
};
