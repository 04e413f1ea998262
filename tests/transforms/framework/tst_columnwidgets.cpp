#include "flow/flowitem.h"
#include "testutil.h"
#include "transforms/framework/columnwidgets.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameterwidget.h"
#include "widgetspies.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCompleter>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QtTest>

#include <memory>

namespace {

// Clicks the check box of a row the way a user would.
void clickCheck(QTableWidget *table, int row)
{
    table->scrollToItem(table->item(row, 0));
    const QRect rect = table->visualItemRect(table->item(row, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                      QPoint(rect.left() + rect.height() / 2, rect.center().y()));
}

void selectListRow(QListWidget *list, int row)
{
    const QRect rect = list->visualItemRect(list->item(row));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, rect.center());
}

} // namespace

// The widgets of the options that name columns of the input: ids, not names or positions,
// are what they read and write.
class TestColumnWidgets : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void roundTrip_data();
    void roundTrip();
    void withoutDatasetShowsNothingAndKeepsValue_data();
    void withoutDatasetShowsNothingAndKeepsValue();

    void comboPicksColumnById();
    void comboFiltersAsTheUserTypes();
    void comboReadsNewNamesAfterRename();
    void checkingColumnsKeepsTheirOrder_data();
    void checkingColumnsKeepsTheirOrder();
    void filterAndAllNoneActOnShownRows();
    void missingColumnSurvivesAnEdit();
    void sortColumnsAddMoveAndDirection();
    void filterTermsAddEditAndKeepAny();
    void reorderWithButtons();
    void splitRowsWays();

private:
    ColumnId id(int c) const { return m_node->dataset()->columnId(c); }
    std::unique_ptr<FlowItem> m_node;
    std::unique_ptr<QWidget> m_window;
};

void TestColumnWidgets::init()
{
    m_node.reset(makeDataItem(makeDataset({{"Name", "Age", "City", "Zip"},
                                           {"Ann", "31", "Oslo", "0150"},
                                           {"Bob", "42", "Rome", "00100"}})));
    m_window = std::make_unique<QWidget>();
    m_window->resize(500, 400);
}

void TestColumnWidgets::cleanup()
{
    m_window.reset();
    m_node.reset();
}

void TestColumnWidgets::roundTrip_data()
{
    QTest::addColumn<ParameterType>("type");
    QTest::addColumn<QString>("text"); // the document form, column numbers from 1
    QTest::newRow("single") << ParameterType::SingleColumn << QStringLiteral("3");
    QTest::newRow("single none") << ParameterType::SingleColumn << QStringLiteral("0");
    QTest::newRow("multiple") << ParameterType::MultipleColumns
                              << QStringLiteral("2\x1f"
                                                "4");
    QTest::newRow("multiple ordered") << ParameterType::MultipleColumnsOrdered
                                      << QStringLiteral("4\x1f"
                                                        "1\x1f"
                                                        "3");
    QTest::newRow("sort") << ParameterType::SortColumns
                          << QStringLiteral("-3\x1f"
                                            "1");
    QTest::newRow("sort ordered") << ParameterType::SortColumnsOrdered << QStringLiteral("2\x1f-4");
    QTest::newRow("filter") << ParameterType::FilterColumns
                            << QStringLiteral("0\x1f"
                                              "1\x1f"
                                              "2\x1f"
                                              "4\x1f"
                                              "30\x1f"
                                              "0\x1f"
                                              "19\x1f\x1f"
                                              "3\x1f"
                                              "8\x1f%5Ea");
    QTest::newRow("reorder") << ParameterType::ReorderColumns
                             << QStringLiteral("4\x1f"
                                               "3\x1f"
                                               "2\x1f"
                                               "1");
    QTest::newRow("split every") << ParameterType::SplitRows
                                 << QStringLiteral("0\x1f"
                                                   "0\x1f"
                                                   "2\x1f"
                                                   "2\x1f"
                                                   "3\x1fGroup");
    QTest::newRow("split by name") << ParameterType::SplitRows
                                   << QStringLiteral("1\x1f"
                                                     "0\x1f"
                                                     "1\x1f"
                                                     "0\x1f"
                                                     "0\x1f");
}

void TestColumnWidgets::roundTrip()
{
    QFETCH(ParameterType, type);
    QFETCH(QString, text);

    Parameter p(type, QStringLiteral("Columns"), QStringLiteral("Columns"), m_node.get());
    p.fromText(text);
    const QVariant before = p.value();
    QCOMPARE(p.toText(), text);
    ParameterWidget *w = createParameterWidget(&p, m_window.get());
    WidgetSpies spies(w->widget());
    w->updateValue();
    QCOMPARE(spies.total(), 0);
    w->saveValue();
    QCOMPARE(p.toText(), text);
    QCOMPARE(p.value(), before);
    QCOMPARE(spies.total(), 0);
}

void TestColumnWidgets::withoutDatasetShowsNothingAndKeepsValue_data()
{
    roundTrip_data();
}

void TestColumnWidgets::withoutDatasetShowsNothingAndKeepsValue()
{
    QFETCH(ParameterType, type);
    QFETCH(QString, text);

    Parameter p(type, QStringLiteral("Columns"), QStringLiteral("Columns"), m_node.get());
    p.fromText(text);
    const QVariant before = p.value();
    p.setSourceNode(nullptr); // as after a disconnection
    ParameterWidget *w = createParameterWidget(&p, m_window.get());
    for (auto *combo : w->widget()->findChildren<ColumnComboBox *>())
        QCOMPARE(combo->count(), 0);
    for (auto *table : w->widget()->findChildren<ColumnsTableWidget *>())
        QCOMPARE(table->rowCount(), 0);
    for (auto *list : w->widget()->findChildren<QListWidget *>())
        QCOMPARE(list->count(), 0);
    w->saveValue();
    QCOMPARE(p.value(), before);
}

void TestColumnWidgets::comboPicksColumnById()
{
    Parameter p(ParameterType::SingleColumn, QStringLiteral("Column"), QStringLiteral("Column"),
                m_node.get());
    p.setColumnId(id(1));
    auto *w = static_cast<SingleColumnFilteredParameterWidget *>(
        createParameterWidget(&p, m_window.get()));
    ColumnComboBox *combo = w->comboBox();
    QCOMPARE(combo->count(), 5);
    QCOMPARE(combo->itemText(0), QStringLiteral("<None selected>"));
    QCOMPARE(combo->currentText(), QStringLiteral("Age"));
    WidgetSpies spies(w);
    combo->setCurrentIndex(3);
    emit combo->activated(3);
    QCOMPARE(p.toColumnId(), id(2));
    QCOMPARE(spies.changed.count(), 1);
    QCOMPARE(spies.changed.at(0).at(0).toBool(), true);
    combo->setCurrentIndex(0);
    emit combo->activated(0);
    QVERIFY(p.toColumnId().isNull());
    QVERIFY(p.isUnset());
}

void TestColumnWidgets::comboFiltersAsTheUserTypes()
{
    Parameter p(ParameterType::SingleColumn, QStringLiteral("Column"), QStringLiteral("Column"),
                m_node.get());
    auto *w = static_cast<SingleColumnFilteredParameterWidget *>(
        createParameterWidget(&p, m_window.get()));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    ColumnComboBox *combo = w->comboBox();
    combo->lineEdit()->selectAll();
    QTest::keyClicks(combo->lineEdit(), QStringLiteral("i"));
    // "i" is inside City and Zip only: the list narrows to what contains it.
    QCOMPARE(combo->completer()->completionCount(), 2);
    QTest::keyClicks(combo->lineEdit(), QStringLiteral("t"));
    QCOMPARE(combo->completer()->completionCount(), 1);
    QCOMPARE(combo->completer()->currentCompletion(), QStringLiteral("City"));
    QVERIFY(p.toColumnId().isNull()); // typing alone chooses nothing
}

void TestColumnWidgets::comboReadsNewNamesAfterRename()
{
    Parameter p(ParameterType::SingleColumn, QStringLiteral("Column"), QStringLiteral("Column"),
                m_node.get());
    p.setColumnId(id(2));
    auto *w = static_cast<SingleColumnFilteredParameterWidget *>(
        createParameterWidget(&p, m_window.get()));
    QCOMPARE(w->comboBox()->currentText(), QStringLiteral("City"));
    // Upstream renames and moves the column: the id still finds it.
    Dataset &data = *m_node->dataset();
    const QList<ColumnId> ids = data.columnIds();
    Dataset moved = makeDataset({{"Town", "Name", "Age", "Zip"}, {"Oslo", "Ann", "31", "0150"}});
    moved.setColumnIds({ids.at(2), ids.at(0), ids.at(1), ids.at(3)});
    data = moved;
    w->updateValue();
    QCOMPARE(w->comboBox()->currentText(), QStringLiteral("Town"));
    QCOMPARE(w->comboBox()->currentIndex(), 1);
    w->saveValue();
    QCOMPARE(p.toColumnId(), ids.at(2));
}

void TestColumnWidgets::checkingColumnsKeepsTheirOrder_data()
{
    QTest::addColumn<ParameterType>("type");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain: the dataset's order") << ParameterType::MultipleColumns
                                                << QStringLiteral("1\x1f"
                                                                  "3");
    QTest::newRow("ordered: the order of checking") << ParameterType::MultipleColumnsOrdered
                                                    << QStringLiteral("3\x1f"
                                                                      "1");
}

void TestColumnWidgets::checkingColumnsKeepsTheirOrder()
{
    QFETCH(ParameterType, type);
    QFETCH(QString, expected);
    Parameter p(type, QStringLiteral("Columns"), QStringLiteral("Columns"), m_node.get());
    auto *w
        = static_cast<MultipleColumnsParameterWidget *>(createParameterWidget(&p, m_window.get()));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    WidgetSpies spies(w);
    clickCheck(w->table(), 2);
    clickCheck(w->table(), 0);
    QCOMPARE(p.toText(), expected);
    QCOMPARE(spies.changed.count(), 2);
    QCOMPARE(spies.changed.at(1).at(0).toBool(), false);
    clickCheck(w->table(), 2);
    QCOMPARE(p.toText(), QStringLiteral("1"));
}

void TestColumnWidgets::filterAndAllNoneActOnShownRows()
{
    Parameter p(ParameterType::MultipleColumns, QStringLiteral("Columns"),
                QStringLiteral("Columns"), m_node.get());
    p.setColumns({id(3)});
    auto *w
        = static_cast<MultipleColumnsParameterWidget *>(createParameterWidget(&p, m_window.get()));
    WidgetSpies spies(w);
    QTest::keyClicks(w->filterEdit(), QStringLiteral("A"));
    QCOMPARE(spies.total(), 0);
    QVERIFY(!w->table()->isRowHidden(0)); // nAme
    QVERIFY(!w->table()->isRowHidden(1)); // Age
    QVERIFY(w->table()->isRowHidden(2));
    QTest::mouseClick(w->allButton(), Qt::LeftButton);
    QCOMPARE(p.toText(),
             QStringLiteral("1\x1f"
                            "2\x1f"
                            "4"));
    QCOMPARE(spies.changed.count(), 1);
    w->filterEdit()->clear();
    QTest::mouseClick(w->noneButton(), Qt::LeftButton);
    QVERIFY(p.toColumns().isEmpty());
    QCOMPARE(spies.changed.count(), 2);
    QTest::mouseClick(w->noneButton(), Qt::LeftButton); // nothing left to uncheck
    QCOMPARE(spies.changed.count(), 2);
}

void TestColumnWidgets::missingColumnSurvivesAnEdit()
{
    Parameter p(ParameterType::MultipleColumns, QStringLiteral("Columns"),
                QStringLiteral("Columns"), m_node.get());
    const ColumnId gone(99, 7);
    p.setColumns({id(0), gone});
    auto *w
        = static_cast<MultipleColumnsParameterWidget *>(createParameterWidget(&p, m_window.get()));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QCOMPARE(w->table()->checkedColumns(), QList<ColumnId> {id(0)});
    clickCheck(w->table(), 1);
    // The removal upstream may be undone: the id stays in the value.
    QCOMPARE(p.toColumns(), (QList<ColumnId> {id(0), id(1), gone}));
}

void TestColumnWidgets::sortColumnsAddMoveAndDirection()
{
    Parameter p(ParameterType::SortColumnsOrdered, QStringLiteral("Columns"),
                QStringLiteral("Sort"), m_node.get());
    auto *w = static_cast<SortColumnsParameterWidget *>(createParameterWidget(&p, m_window.get()));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QCOMPARE(w->availableList()->count(), 4);
    WidgetSpies spies(w);

    selectListRow(w->availableList(), 2); // City
    QTest::mouseClick(w->addButton(), Qt::LeftButton);
    selectListRow(w->availableList(), 0); // Name
    QTest::mouseClick(w->addButton(), Qt::LeftButton);
    QCOMPARE(p.toText(),
             QStringLiteral("3\x1f"
                            "1"));
    QCOMPARE(w->availableList()->count(), 2);

    QCOMPARE(w->sortList()->currentRow(), 1);
    QVERIFY(!w->downButton()->isEnabled());
    QTest::mouseClick(w->upButton(), Qt::LeftButton);
    QCOMPARE(p.toText(),
             QStringLiteral("1\x1f"
                            "3"));
    QCOMPARE(w->sortList()->currentRow(), 0);
    QTest::mouseClick(w->directionButton(), Qt::LeftButton);
    QCOMPARE(p.toText(),
             QStringLiteral("-1\x1f"
                            "3"));
    QVERIFY(w->sortList()->item(0)->text().endsWith(QStringLiteral("Name")));

    selectListRow(w->sortList(), 1);
    QTest::mouseClick(w->removeButton(), Qt::LeftButton);
    QCOMPARE(p.toText(), QStringLiteral("-1"));
    QCOMPARE(spies.changed.count(), 5);
    for (const QList<QVariant> &arguments : qAsConst(spies.changed))
        QCOMPARE(arguments.at(0).toBool(), false);
}

void TestColumnWidgets::filterTermsAddEditAndKeepAny()
{
    Parameter p(ParameterType::FilterColumns, QStringLiteral("Columns"), QStringLiteral("Filter"),
                m_node.get());
    auto *w
        = static_cast<FilterColumnsParameterWidget *>(createParameterWidget(&p, m_window.get()));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    WidgetSpies spies(w);
    QTest::mouseClick(w->addButton(), Qt::LeftButton);
    QCOMPARE(p.toFilterTerms().terms.size(), 1);
    QCOMPARE(w->table()->columnBox(0)->currentText(), QStringLiteral("<Any column>"));
    QCOMPARE(spies.changed.count(), 1);

    // Choose Age, "> Greater than", and type 35 into the value cell.
    ColumnComboBox *column = w->table()->columnBox(0);
    column->setCurrentIndex(2);
    emit column->activated(2);
    QComboBox *op = w->table()->operatorBox(0);
    const int greater = op->findData(int(ComparisonOperator::GreaterThan));
    op->setCurrentIndex(greater);
    emit op->activated(greater);
    const int before = spies.changed.count();
    QTableWidgetItem *value = w->table()->item(0, 2);
    w->table()->editItem(value);
    QWidget *editor = QApplication::focusWidget();
    QVERIFY(qobject_cast<QLineEdit *>(editor));
    QTest::keyClicks(editor, QStringLiteral("35"));
    QVERIFY(spies.interaction.count() >= 2); // while typing, the run waits
    QCOMPARE(spies.changed.count(), before);
    const QPointer<QWidget> open(editor);
    QTest::keyClick(editor, Qt::Key_Return);
    // The view commits a finished edit from the event loop and then drops the editor.
    QTRY_VERIFY(!open);
    QCOMPARE(spies.changed.count(), before + 1);

    QCOMPARE(p.toText(),
             QStringLiteral("1\x1f"
                            "0\x1f"
                            "2\x1f"
                            "4\x1f"
                            "35"));
    w->matchBox()->setCurrentIndex(1);
    emit w->matchBox()->activated(1);
    w->keepBox()->setCurrentIndex(1);
    emit w->keepBox()->activated(1);
    const FilterTerms terms = p.toFilterTerms();
    QCOMPARE(terms.keep, false);
    QCOMPARE(terms.matchAny, true);

    w->table()->setCurrentCell(0, 2);
    QTest::mouseClick(w->removeButton(), Qt::LeftButton);
    QVERIFY(p.toFilterTerms().terms.isEmpty());
    QVERIFY(p.isUnset());
}

void TestColumnWidgets::reorderWithButtons()
{
    Parameter p(ParameterType::ReorderColumns, QStringLiteral("Columns"), QStringLiteral("Columns"),
                m_node.get());
    auto *w
        = static_cast<ReorderColumnsParameterWidget *>(createParameterWidget(&p, m_window.get()));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QCOMPARE(w->list()->count(), 4);
    w->saveValue();
    QVERIFY(p.toColumns().isEmpty()); // never ordered: stays so
    WidgetSpies spies(w);
    selectListRow(w->list(), 2);
    QTest::mouseClick(w->upButton(), Qt::LeftButton);
    QCOMPARE(p.toText(),
             QStringLiteral("1\x1f"
                            "3\x1f"
                            "2\x1f"
                            "4"));
    QTest::mouseClick(w->upButton(), Qt::LeftButton);
    QCOMPARE(p.toText(),
             QStringLiteral("3\x1f"
                            "1\x1f"
                            "2\x1f"
                            "4"));
    QTest::mouseClick(w->upButton(), Qt::LeftButton); // at the top already
    QCOMPARE(spies.changed.count(), 2);
    QCOMPARE(w->list()->item(0)->text(), QStringLiteral("City"));
}

void TestColumnWidgets::splitRowsWays()
{
    Parameter p(ParameterType::SplitRows, QStringLiteral("Split_Rows"), QStringLiteral("Split"),
                m_node.get());
    SplitRowsTerms automatic;
    automatic.automatic = true;
    p.setSplitRowsTerms(automatic);
    auto *w = static_cast<SplitRowsParameterWidget *>(createParameterWidget(&p, m_window.get()));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QVERIFY(w->automaticButton()->isChecked());
    QVERIFY(!w->everyBox()->isEnabled());
    WidgetSpies spies(w);
    QTest::mouseClick(w->everyButton(), Qt::LeftButton, {},
                      QPoint(5, w->everyButton()->height() / 2));
    QVERIFY(w->everyBox()->isEnabled());
    QCOMPARE(spies.changed.count(), 1);
    QCOMPARE(spies.changed.at(0).at(0).toBool(), true);
    QTest::keyClick(w->everyBox(), Qt::Key_Up);
    QTest::keyClick(w->timesBox(), Qt::Key_Up);
    QTest::keyClicks(w->textEdit(), QStringLiteral("G"));
    const SplitRowsTerms terms = p.toSplitRowsTerms();
    QVERIFY(!terms.automatic && !terms.splitByName);
    QCOMPARE(terms.every, 2);
    QCOMPARE(terms.times, 1);
    QCOMPARE(terms.text, QStringLiteral("G"));
    QCOMPARE(spies.changed.count(), 4);
    QCOMPARE(p.summary(), QStringLiteral("1 time"));
}

TABULON_TEST_MAIN(TestColumnWidgets)

#include "tst_columnwidgets.moc"
