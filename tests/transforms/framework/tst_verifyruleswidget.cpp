#include "flow/flowitem.h"
#include "testutil.h"
#include "transforms/framework/verifyruleswidget.h"
#include "transforms/verifyrules.h"
#include "widgetspies.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <QtTest>

#include <memory>

using namespace VerifyRules;

// The rule tree of Verify, used as a user does: check boxes clicked, values typed, severities
// and column types chosen with the keyboard, each edit landing in the option.
class TestVerifyRulesWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void showsWithoutEmitting();
    void tickTypeAndChooseSeverityOfADatasetRule();
    void columnRulesOfTheGuessedTypeAndTheirExclusions();
    void changingTheTypeOffersItsRules();
    void filterAndUncheckAll();

private:
    VerifyRuleSet saved() const { return VerifyRuleSet::fromVariant(m_parameter->value()); }
    ColumnId id(int c) const { return m_node->dataset()->columnId(c); }
    // Clicks the check box of a rule line, as a user does.
    void clickCheck(QTreeWidgetItem *item);

    std::unique_ptr<FlowItem> m_node;
    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<Parameter> m_parameter;
    VerifyRulesParameterWidget *m_widget = nullptr;
    VerifyRulesWidget *m_rules = nullptr;
};

void TestVerifyRulesWidget::init()
{
    m_node.reset(makeDataItem(makeDataset({{"Name", "Age", "Born", "Score"},
                                           {"Ann", "31", "1/2/1990", "1.5"},
                                           {"Bob", "42", "3/4/1980", "2"}})));
    m_parameter = std::make_unique<Parameter>(ParameterType::VerifyRules, "Rules", "Verify rules",
                                              m_node.get());
    m_parameter->setValue(VerifyRuleSet().toVariant());
    m_window = std::make_unique<QWidget>();
    new QVBoxLayout(m_window.get());
    m_window->resize(640, 520);
    m_widget = static_cast<VerifyRulesParameterWidget *>(
        createParameterWidget(m_parameter.get(), m_window.get()));
    m_window->layout()->addWidget(m_widget);
    m_rules = m_widget->rulesWidget();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void TestVerifyRulesWidget::cleanup()
{
    m_window.reset();
    m_parameter.reset();
    m_node.reset();
}

void TestVerifyRulesWidget::clickCheck(QTreeWidgetItem *item)
{
    QTreeWidget *tree = m_rules->tree();
    tree->scrollToItem(item);
    QStyleOptionViewItem option;
    option.initFrom(tree);
    option.rect = tree->visualItemRect(item);
    option.features |= QStyleOptionViewItem::HasCheckIndicator;
    const QRect box
        = tree->style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, tree);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, Qt::NoModifier, box.center());
}

void TestVerifyRulesWidget::showsWithoutEmitting()
{
    VerifyRuleSet set;
    set.setColumnType(id(1), Integer);
    set.setColumnRuleActive(id(1), MaximumInteger, true);
    set.columnRule(id(1), MaximumInteger).value = 120;
    set.datasetRule(NoEmptyRows).active = true;
    m_parameter->setValue(set.toVariant());
    WidgetSpies spies(m_widget);
    m_widget->updateValue();
    m_widget->saveValue();
    QCOMPARE(spies.total(), 0);
    QCOMPARE(saved(), set);

    // A column with active rules is open, with its value shown; the others stay closed.
    QVERIFY(m_rules->columnItem(1)->isExpanded());
    QVERIFY(!m_rules->columnItem(0)->isExpanded());
    auto *maximum
        = qobject_cast<QSpinBox *>(m_rules->valueEditor(m_rules->ruleItem(1, MaximumInteger)));
    QVERIFY(maximum);
    QCOMPARE(maximum->value(), 120);
    QCOMPARE(m_rules->columnItem(1)->text(0), "Column 2: Age [1 rule active]");
    QCOMPARE(m_rules->datasetItem()->text(0), "Dataset [1 rule active]");
    QCOMPARE(m_rules->countLabel()->text(), "2 rules checked");
    QCOMPARE(m_parameter->summary(), "1 dataset rule(s) and 1 column rule(s).");
}

void TestVerifyRulesWidget::tickTypeAndChooseSeverityOfADatasetRule()
{
    WidgetSpies spies(m_widget);
    QTreeWidgetItem *minimum = m_rules->ruleItem(-1, MinimumRows);
    QCOMPARE(minimum->text(0), "Minimum number of rows:");
    clickCheck(minimum);
    QCOMPARE(minimum->checkState(0), Qt::Checked);
    QVERIFY(saved().datasetRules().value(0).active);

    auto *value = qobject_cast<QSpinBox *>(m_rules->valueEditor(minimum));
    QVERIFY(value);
    value->setFocus();
    QTest::keyClick(value, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(value, "25");
    QCOMPARE(saved().activeDatasetRules().value(0).value, QVariant(25));

    QComboBox *severity = m_rules->severityBox(minimum);
    QCOMPARE(severity->currentText(), "Warning");
    severity->setFocus();
    QTest::keyClick(severity, Qt::Key_Down);
    QCOMPARE(saved().activeDatasetRules().value(0).severity, int(Error));

    clickCheck(minimum);
    QVERIFY(saved().activeDatasetRules().isEmpty());
    // The value and severity stay for when it is ticked again.
    QCOMPARE(saved().datasetRules().value(0).value, QVariant(25));
    // Every edit went through the panel's delay.
    QVERIFY(spies.changed.count() >= 4);
    for (const QList<QVariant> &arguments : qAsConst(spies.changed))
        QCOMPARE(arguments.first().toBool(), false);
    QCOMPARE(spies.now.count(), 0);
}

void TestVerifyRulesWidget::columnRulesOfTheGuessedTypeAndTheirExclusions()
{
    // Types are guessed from the cells until the user chooses one.
    QCOMPARE(m_rules->typeBox(0)->currentText(), "Text");
    QCOMPARE(m_rules->typeBox(1)->currentText(), "Numeric (integer)");
    QCOMPARE(m_rules->typeBox(2)->currentText(), "Date");
    QCOMPARE(m_rules->typeBox(3)->currentText(), "Numeric (real)");
    QVERIFY(saved().columns().isEmpty());

    m_rules->columnItem(1)->setExpanded(true);
    QTreeWidgetItem *noEmpty = m_rules->ruleItem(1, NoEmptyValues);
    QTreeWidgetItem *atLeastOne = m_rules->ruleItem(1, AtLeastOneNonEmpty);
    QVERIFY(!m_rules->ruleItem(1, NoDigits)); // a rule of text, not offered for integers
    clickCheck(noEmpty);
    QCOMPARE(saved().columnType(id(1)), int(Integer));
    QCOMPARE(saved().activeRules(id(1)).size(), 1);
    clickCheck(atLeastOne);
    QCOMPARE(noEmpty->checkState(0), Qt::Unchecked);
    QCOMPARE(atLeastOne->checkState(0), Qt::Checked);
    QCOMPARE(saved().activeRules(id(1)).value(0).number, int(AtLeastOneNonEmpty));
    QCOMPARE(m_rules->columnItem(1)->text(0), "Column 2: Age [1 rule active]");
    QVERIFY(m_rules->columnItem(1)->font(0).bold());
    QCOMPARE(m_rules->countLabel()->text(), "1 rule checked");
}

void TestVerifyRulesWidget::changingTheTypeOffersItsRules()
{
    m_rules->columnItem(0)->setExpanded(true);
    clickCheck(m_rules->ruleItem(0, NoDigits));
    QComboBox *type = m_rules->typeBox(0);
    type->setFocus();
    QTest::keyClick(type, Qt::Key_Down); // Text -> Selection
    QCOMPARE(saved().columnType(id(0)), int(Selection));
    QVERIFY(!m_rules->ruleItem(0, NoDigits));
    QTreeWidgetItem *listed = m_rules->ruleItem(0, OnlyListed);
    QVERIFY(listed);
    QCOMPARE(m_rules->countLabel()->text(), "0 rules checked");

    auto *values = qobject_cast<QLineEdit *>(m_rules->valueEditor(listed));
    QVERIFY(values);
    clickCheck(listed);
    values->setFocus();
    QTest::keyClicks(values, "Ann,Bob");
    QCOMPARE(saved().activeRules(id(0)).value(0).value, QVariant("Ann,Bob"));

    // Back to Text, the rule ticked there is checked again.
    type->setFocus();
    QTest::keyClick(type, Qt::Key_Up);
    QCOMPARE(m_rules->ruleItem(0, NoDigits)->checkState(0), Qt::Checked);
    QCOMPARE(saved().activeRules(id(0)).value(0).number, int(NoDigits));
}

void TestVerifyRulesWidget::filterAndUncheckAll()
{
    VerifyRuleSet set;
    set.datasetRule(NoEmptyRows).active = true;
    set.setColumnRuleActive(id(0), NoDigits, true);
    m_parameter->setValue(set.toVariant());
    m_widget->updateValue();

    WidgetSpies spies(m_widget);
    m_rules->filterEdit()->setFocus();
    QTest::keyClicks(m_rules->filterEdit(), "O");
    QCOMPARE(m_rules->columnItem(0)->isHidden(), true);
    QCOMPARE(m_rules->columnItem(2)->isHidden(), false); // "Born", not case sensitive
    QCOMPARE(spies.changed.count(), 0);
    QVERIFY(spies.interaction.count() > 0);
    QCOMPARE(saved(), set);

    QTest::mouseClick(m_rules->uncheckButton(), Qt::LeftButton);
    QVERIFY(saved().activeDatasetRules().isEmpty());
    QVERIFY(saved().columnsWithActiveRules().isEmpty());
    QCOMPARE(m_rules->ruleItem(-1, NoEmptyRows)->checkState(0), Qt::Unchecked);
    QCOMPARE(m_rules->ruleItem(0, NoDigits)->checkState(0), Qt::Unchecked);
    QCOMPARE(m_rules->countLabel()->text(), "0 rules checked");
    QCOMPARE(spies.changed.count(), 1);
}

TABULON_TEST_MAIN(TestVerifyRulesWidget)
#include "tst_verifyruleswidget.moc"
