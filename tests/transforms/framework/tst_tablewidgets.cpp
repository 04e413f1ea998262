#include "flow/flowitem.h"
#include "testutil.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameterwidget.h"
#include "transforms/framework/tablewidgets.h"
#include "widgetspies.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QVBoxLayout>
#include <QtTest>

#include <memory>

namespace {

// Types text into a cell through its editor, as a user does, and confirms with Return.
void typeIntoCell(QTableWidget *table, int row, int column, const QString &text)
{
    table->setCurrentCell(row, column);
    table->editItem(table->item(row, column));
    QWidget *editor = QApplication::focusWidget();
    QVERIFY(qobject_cast<QLineEdit *>(editor));
    QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(editor, Qt::Key_Delete);
    QTest::keyClicks(editor, text);
    const QPointer<QWidget> open(editor);
    QTest::keyClick(editor, Qt::Key_Return);
    // The view commits a finished edit from the event loop and then drops the editor.
    QTRY_VERIFY(!open);
}

} // namespace

// The table-shaped option widgets: If branches, renames, unique column choices and
// replacements.
class TestTableWidgets : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void roundTrip_data();
    void roundTrip();

    void ifBranchesAndConditions();
    void renameEditsOneColumn();
    void renameKeepsRenamesOfMissingColumns();
    void uniqueChoicePerColumn();
    void replaceTermsAddEditMove();

private:
    ColumnId id(int c) const { return m_node->dataset()->columnId(c); }
    // The option's widget laid out to fill the window, as the item pane shows it: a table
    // left at a child's default size shows hardly a row, and the view hides the editor of a
    // cell outside it once its delayed layout runs, before or after the typing.
    template<typename W = ParameterWidget> W *createShown(Parameter *p)
    {
        auto *w = static_cast<W *>(createParameterWidget(p, m_window.get()));
        m_window->layout()->addWidget(w->widget());
        m_window->layout()->activate();
        return w;
    }
    std::unique_ptr<FlowItem> m_node;
    std::unique_ptr<QWidget> m_window;
};

void TestTableWidgets::init()
{
    m_node.reset(makeDataItem(
        makeDataset({{"Name", "Age", "City"}, {"Ann", "31", "Oslo"}, {"Bob", "42", "Rome"}})));
    m_window = std::make_unique<QWidget>();
    new QVBoxLayout(m_window.get());
    m_window->resize(600, 400);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestTableWidgets::cleanup()
{
    m_window.reset();
    m_node.reset();
}

void TestTableWidgets::roundTrip_data()
{
    QTest::addColumn<ParameterType>("type");
    QTest::addColumn<QString>("text");
    QTest::newRow("if two branches") << ParameterType::If
                                     << QStringLiteral("*StartIf*\x1f"
                                                       "2\x1f"
                                                       "4\x1f"
                                                       "40\x1f"
                                                       "3\x1f"
                                                       "0\x1fO\x1f*EndIf*\x1f"
                                                       "old\x1f*StartIf*\x1f"
                                                       "0\x1f"
                                                       "19\x1f\x1f*EndIf*\x1f"
                                                       "blank\x1f"
                                                       "other");
    QTest::newRow("if else only") << ParameterType::If << QStringLiteral("%5Eelse");
    QTest::newRow("rename some") << ParameterType::RenameColumns
                                 << QStringLiteral("*NORENAME*\x1f"
                                                   "Years\x1fTown");
    QTest::newRow("unique") << ParameterType::Unique
                            << QStringLiteral("0\x1f"
                                              "7\x1f"
                                              "1");
    QTest::newRow("replace") << ParameterType::ReplaceTerms
                             << QStringLiteral("0\x1f"
                                               "a\x1f"
                                               "b\x1f"
                                               "2\x1f%5Cd%2B\x1f%23\x1f"
                                               "10\x1f\x1f%3F");
}

void TestTableWidgets::roundTrip()
{
    QFETCH(ParameterType, type);
    QFETCH(QString, text);
    Parameter p(type, QStringLiteral("Key"), QStringLiteral("Label"), m_node.get());
    p.fromText(text);
    QCOMPARE(p.toText(), text);
    const QVariant before = p.value();
    ParameterWidget *w = createShown(&p);
    WidgetSpies spies(w->widget());
    w->updateValue();
    QCOMPARE(spies.total(), 0);
    w->saveValue();
    QCOMPARE(p.toText(), text);
    QCOMPARE(p.value(), before);
    QCOMPARE(spies.total(), 0);
}

void TestTableWidgets::ifBranchesAndConditions()
{
    Parameter p(ParameterType::If, QStringLiteral("If"), QStringLiteral("If"), m_node.get());
    auto *w = createShown<IfParameterWidget>(&p);
    IfTableWidget *table = w->table();
    QCOMPARE(table->rowCount(), 1); // the else row
    WidgetSpies spies(w);

    QTest::mouseClick(w->addBranchButton(), Qt::LeftButton);
    QTest::mouseClick(w->addConditionButton(), Qt::LeftButton);
    QTest::mouseClick(w->addBranchButton(), Qt::LeftButton);
    QCOMPARE(table->rowCount(), 4);
    QCOMPARE(table->item(0, IfTableWidget::KindColumn)->text(), QStringLiteral("If"));
    QCOMPARE(table->item(1, IfTableWidget::KindColumn)->text(), QStringLiteral("and"));
    QCOMPARE(table->item(2, IfTableWidget::KindColumn)->text(), QStringLiteral("Else if"));
    QCOMPARE(table->item(3, IfTableWidget::KindColumn)->text(), QStringLiteral("Else"));
    // Only the first row of a branch takes its result.
    QVERIFY(!(table->item(1, IfTableWidget::ThenColumn)->flags() & Qt::ItemIsEditable));

    ColumnComboBox *column = table->columnBox(1);
    column->setCurrentIndex(2); // Age
    emit column->activated(2);
    const int interactions = spies.interaction.count();
    typeIntoCell(table, 1, IfTableWidget::ValueColumn, QStringLiteral("31"));
    QVERIFY(spies.interaction.count() > interactions);
    typeIntoCell(table, 0, IfTableWidget::ThenColumn, QStringLiteral("first"));
    typeIntoCell(table, 2, IfTableWidget::ThenColumn, QStringLiteral("second"));
    typeIntoCell(table, 3, IfTableWidget::ThenColumn, QStringLiteral("$(Name)"));

    IfTerms terms = p.toIfTerms();
    QCOMPARE(terms.branches.size(), 2);
    QCOMPARE(terms.branches.at(0).terms.size(), 2);
    QCOMPARE(terms.branches.at(0).terms.at(1).column, id(1));
    QCOMPARE(terms.branches.at(0).terms.at(1).value, QStringLiteral("31"));
    QCOMPARE(terms.branches.at(0).thenValue, QStringLiteral("first"));
    QCOMPARE(terms.branches.at(1).thenValue, QStringLiteral("second"));
    QCOMPARE(terms.elseValue, QStringLiteral("$(Name)"));
    QCOMPARE(p.summary(), QStringLiteral("2 if/elseif + else"));
    for (const QList<QVariant> &arguments : qAsConst(spies.changed))
        QCOMPARE(arguments.at(0).toBool(), false);

    // Removing the last condition of a branch removes the branch.
    table->setCurrentCell(2, IfTableWidget::ValueColumn);
    QTest::mouseClick(w->removeButton(), Qt::LeftButton);
    terms = p.toIfTerms();
    QCOMPARE(terms.branches.size(), 1);
    QCOMPARE(terms.elseValue, QStringLiteral("$(Name)"));
    QCOMPARE(table->rowCount(), 3);
}

void TestTableWidgets::renameEditsOneColumn()
{
    Parameter p(ParameterType::RenameColumns, QStringLiteral("RenameColumns"),
                QStringLiteral("Rename"), m_node.get());
    auto *w = createShown<RenameColumnsParameterWidget>(&p);
    QCOMPARE(w->table()->rowCount(), 3);
    QCOMPARE(w->table()->item(1, 0)->text(), QStringLiteral("Age"));
    QVERIFY(!(w->table()->item(1, 0)->flags() & Qt::ItemIsEditable));
    WidgetSpies spies(w);
    typeIntoCell(w->table(), 1, 1, QStringLiteral("Years"));
    QVERIFY(spies.interaction.count() >= 5);
    QCOMPARE(spies.changed.count(), 1);
    QCOMPARE(p.toText(), QStringLiteral("*NORENAME*\x1fYears\x1f*NORENAME*"));
    typeIntoCell(w->table(), 1, 1, QString()); // cleared: the name stays
    QVERIFY(p.toRenameColumns().isEmpty());
}

void TestTableWidgets::renameKeepsRenamesOfMissingColumns()
{
    Parameter p(ParameterType::RenameColumns, QStringLiteral("RenameColumns"),
                QStringLiteral("Rename"), m_node.get());
    ColumnRenames renames;
    renames.insert(ColumnId(77, 3), QStringLiteral("Elsewhere"));
    p.setRenameColumns(renames);
    auto *w = createShown<RenameColumnsParameterWidget>(&p);
    typeIntoCell(w->table(), 0, 1, QStringLiteral("Who"));
    renames.insert(id(0), QStringLiteral("Who"));
    QCOMPARE(p.toRenameColumns(), renames);
}

void TestTableWidgets::uniqueChoicePerColumn()
{
    Parameter p(ParameterType::Unique, QStringLiteral("Column_Options"),
                QStringLiteral("Column options"), m_node.get());
    auto *w = createShown<UniqueParameterWidget>(&p);
    QCOMPARE(w->table()->rowCount(), 3);
    QCOMPARE(w->optionBox(0)->currentText(), QStringLiteral("Keep first"));
    QCOMPARE(w->optionBox(0)->count(), 17);
    QCOMPARE(w->optionBox(0)->itemText(16), QStringLiteral("Set empty"));
    QVERIFY(p.isUnset());
    WidgetSpies spies(w);
    QTest::keyClick(w->optionBox(2), Qt::Key_Up); // Keep first -> Keep unique
    QCOMPARE(p.toText(),
             QStringLiteral("1\x1f"
                            "1\x1f"
                            "0"));
    QVERIFY(!p.isUnset());
    QCOMPARE(p.summary(), QStringLiteral("1 unique column(s)"));
    QCOMPARE(spies.changed.count(), 1);
    QVERIFY(w->findChild<QLabel *>()->text().startsWith(
        QStringLiteral("Only 1 row is kept from those where *all* the values in 'Keep unique'")));
}

void TestTableWidgets::replaceTermsAddEditMove()
{
    Parameter p(ParameterType::ReplaceTerms, QStringLiteral("Replace"), QStringLiteral("Replace"),
                QVariant());
    auto *w = createShown<ReplaceTermsParameterWidget>(&p);
    WidgetSpies spies(w);
    QTest::mouseClick(w->addButton(), Qt::LeftButton);
    typeIntoCell(w->table(), 0, ReplaceTableWidget::FromColumn, QStringLiteral("a"));
    typeIntoCell(w->table(), 0, ReplaceTableWidget::ToColumn, QStringLiteral("b"));
    QTest::mouseClick(w->addButton(), Qt::LeftButton);
    QComboBox *match = w->table()->matchBox(1);
    const int empty = ReplaceTableWidget::matchTypeTexts().indexOf(QStringLiteral("Empty"));
    match->setCurrentIndex(empty);
    emit match->activated(empty);
    typeIntoCell(w->table(), 1, ReplaceTableWidget::ToColumn, QStringLiteral("-"));
    QCOMPARE(p.toText(),
             QStringLiteral("0\x1f"
                            "a\x1f"
                            "b\x1f"
                            "3\x1f\x1f-"));
    QVERIFY(spies.interaction.count() > 0);

    w->table()->setCurrentCell(1, ReplaceTableWidget::FromColumn);
    QTest::mouseClick(w->upButton(), Qt::LeftButton);
    QCOMPARE(p.toText(),
             QStringLiteral("3\x1f\x1f-\x1f"
                            "0\x1f"
                            "a\x1f"
                            "b"));
    QCOMPARE(w->table()->currentRow(), 0);
    QTest::mouseClick(w->removeButton(), Qt::LeftButton);
    QCOMPARE(p.toText(),
             QStringLiteral("0\x1f"
                            "a\x1f"
                            "b"));
    for (const QList<QVariant> &arguments : qAsConst(spies.changed))
        QCOMPARE(arguments.at(0).toBool(), false);
}

TABULON_TEST_MAIN(TestTableWidgets)

#include "tst_tablewidgets.moc"
