#include "testutil.h"

#include "flow/flowmodel.h"
#include "flow/inputitem.h"
#include "flow/transformitem.h"
#include "shell/delaytimer.h"
#include "shell/settings.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/parameterwidgets.h"
#include "transforms/transformcase.h"
#include "transforms/transformnewcol.h"
#include "workbench/itempane.h"
#include "workbench/itemwidget.h"
#include "workbench/transformitemwidget.h"
#include "workbench/widgets.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

// A small graph: a text input, and one transform on it.
struct Graph
{
    FlowModel model;
    InputItem *input = nullptr;
    TransformItem *node = nullptr;

    explicit Graph(Transform *transform)
    {
        input
            = addTextInput(model, QStringLiteral("name,city\nAnn,Paris\nBob,Rome"), QPointF(0, 0));
        node = addTransform(model, transform, {input}, QPointF(300, 0));
        model.process(FlowModel::RunAll);
        // Columns can be chosen only once the input has read them.
        if (Parameter *columns = transform->parameter(QStringLiteral("Columns"))) {
            columns->selectAllColumns();
            node->setStatus(FlowItem::NeedsUpdate, true);
            model.process(FlowModel::RunAll);
        }
    }
};

class TestItemPane : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void pageFollowsSelection();
    void caseChangeRunsTheItem();
    void typingHoldsBackTheRun();
    void leavingThePageSendsTheWaitingEdit();
    void messagesTabsSayNoMessages();
    void statusText_data();
    void statusText();
    void tabIsRemembered();
    void showButtonsHideParts();
    void fullScreenTakesThePageOutAndBack();
    void commentReachesItsItem();
    void optionsAndStatusFitThePane();

private:
    static QLineEdit *newValueEdit(ItemPane &pane);
    static QString lastColumn(const FlowItem *node, int row);
};

void TestItemPane::initTestCase()
{
    // The pause before a run ends when a test fires it, never on the wall clock.
    DelayTimer::setManualClock(true);
}

void TestItemPane::cleanupTestCase()
{
    DelayTimer::setManualClock(false);
}

void TestItemPane::init()
{
    Settings::instance()->setProcessingDelay(0.05);
    MessageBoxes::setHandler([](QMessageBox::Icon, const QString &, const QString &,
                                QMessageBox::StandardButtons,
                                QMessageBox::StandardButton) { return QMessageBox::Ok; });
}

QLineEdit *TestItemPane::newValueEdit(ItemPane &pane)
{
    auto *page = qobject_cast<TransformItemWidget *>(pane.currentWidget());
    if (!page)
        return nullptr;
    ParameterWidget *widget = page->parameterWidget(QStringLiteral("New_Value"));
    return widget ? qobject_cast<QLineEdit *>(widget->widget()) : nullptr;
}

QString TestItemPane::lastColumn(const FlowItem *node, int row)
{
    const Dataset *dataset = node->dataset();
    if (row >= dataset->rowCount() || dataset->columnCount() == 0)
        return QStringLiteral("<none>");
    return dataset->cell(row, dataset->columnCount() - 1);
}

void TestItemPane::pageFollowsSelection()
{
    Graph graph(new TransformCase);
    ItemPane pane;
    pane.show();
    QVERIFY(!pane.currentWidget());
    pane.showItems({graph.node});
    QVERIFY(qobject_cast<TransformItemWidget *>(pane.currentWidget()));
    QCOMPARE(pane.currentWidget()->item(), graph.node);
    pane.showItems({graph.input, graph.node});
    QVERIFY(!pane.currentWidget());
    pane.showItems({graph.input});
    QVERIFY(pane.currentWidget());
    QCOMPARE(pane.currentWidget()->item(), graph.input);
    QCOMPARE(pane.currentWidget()->tabs()->count(), 6);
    const QStringList tabs
        = {QStringLiteral("Data"), QStringLiteral("Characters"), QStringLiteral("Warnings"),
           QStringLiteral("Info"), QStringLiteral("Comment"),    QStringLiteral("Details")};
    for (int i = 0; i < tabs.size(); ++i)
        QCOMPARE(pane.currentWidget()->tabs()->tabText(i), tabs.at(i));
    pane.showItems({});
    QVERIFY(!pane.currentWidget());
}

void TestItemPane::caseChangeRunsTheItem()
{
    Graph graph(new TransformCase);
    QCOMPARE(graph.node->dataset()->cell(0, 0), QStringLiteral("ann"));
    ItemPane pane;
    pane.show();
    pane.showItems({graph.node});
    auto *page = qobject_cast<TransformItemWidget *>(pane.currentWidget());
    QVERIFY(page);
    auto *caseWidget
        = dynamic_cast<SelectionParameterWidget *>(page->parameterWidget(QStringLiteral("Case")));
    QVERIFY(caseWidget);
    QVERIFY(caseWidget->comboBox());
    QCOMPARE(caseWidget->comboBox()->currentText(), QStringLiteral("Lower case"));
    caseWidget->comboBox()->setFocus();
    QTest::keyClick(caseWidget->comboBox(), Qt::Key_Down);
    QCOMPARE(caseWidget->comboBox()->currentText(), QStringLiteral("Upper case"));
    QCOMPARE(graph.node->dataset()->cell(0, 0), QStringLiteral("ann"));

    QVERIFY(pane.delayTimer()->isActive());
    QCOMPARE(pane.delayTimer()->interval(), 50);
    pane.delayTimer()->fire();
    QCOMPARE(graph.node->dataset()->cell(0, 0), QStringLiteral("ANN"));
    QCOMPARE(graph.node->dataset()->cell(1, 1), QStringLiteral("ROME"));
    QCOMPARE(graph.node->status(), int(FlowItem::UpToDate));
    QCOMPARE(page->statusLabel()->text(), graph.node->transform()->result());
}

void TestItemPane::typingHoldsBackTheRun()
{
    Settings::instance()->setProcessingDelay(1.5);
    Graph graph(new TransformNewCol);
    QCOMPARE(lastColumn(graph.node, 0), QString());
    ItemPane pane;
    pane.show();
    pane.showItems({graph.node});
    QLineEdit *edit = newValueEdit(pane);
    QVERIFY(edit);
    edit->setFocus();

    // Each key starts the whole pause again; until it ends nothing runs.
    QTest::keyClick(edit, Qt::Key_X);
    QVERIFY(pane.isTimerActive());
    QCOMPARE(pane.delayTimer()->interval(), 1500);
    QTest::keyClick(edit, Qt::Key_Y);
    QVERIFY(pane.isTimerActive());
    QCOMPARE(pane.delayTimer()->interval(), 1500);
    QCOMPARE(lastColumn(graph.node, 0), QString());
    QVERIFY(pane.isRunWaiting());
    pane.delayTimer()->fire();
    QCOMPARE(lastColumn(graph.node, 0), QStringLiteral("xy"));
    QCOMPARE(lastColumn(graph.node, 1), QStringLiteral("xy"));
    QVERIFY(!pane.isRunWaiting());
}

void TestItemPane::leavingThePageSendsTheWaitingEdit()
{
    Settings::instance()->setProcessingDelay(60.0);
    Graph graph(new TransformNewCol);
    ItemPane pane;
    pane.show();
    pane.showItems({graph.node});
    QLineEdit *edit = newValueEdit(pane);
    QVERIFY(edit);
    QTest::keyClicks(edit, QStringLiteral("abc"));
    QVERIFY(pane.isRunWaiting());
    QCOMPARE(lastColumn(graph.node, 0), QString());

    pane.showItems({graph.input, graph.node});
    QVERIFY(!pane.currentWidget());
    QVERIFY(!pane.isRunWaiting());
    QCOMPARE(graph.node->transform()->parameter(QStringLiteral("New_Value"))->value().toString(),
             QStringLiteral("abc"));
    QCOMPARE(lastColumn(graph.node, 0), QStringLiteral("abc"));
}

void TestItemPane::messagesTabsSayNoMessages()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("people.csv"));
    FlowModel model;
    auto *input = new InputItem;
    input->setInputFileType(FileTypeDelimited);
    input->setPath(path);
    model.addItem(input);
    model.process(FlowModel::RunAll);

    ItemPane pane;
    pane.show();
    pane.showItems({input});
    ItemWidget *page = pane.currentWidget();
    QVERIFY(page);
    QVERIFY(page->warningsEdit()->toPlainText().contains(QStringLiteral("not found")));

    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("name\nAnn\n");
    file.close();
    input->setStatus(FlowItem::NeedsUpdate, true);
    model.process(FlowModel::RunAll);
    QCOMPARE(page->warningsEdit()->toPlainText(), QStringLiteral("No messages"));
    QVERIFY(page->warningsEdit()->isReadOnly());
}

void TestItemPane::statusText_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("autoRun");
    QTest::addColumn<QString>("expected");
    QTest::newRow("waiting, auto run") << int(FlowItem::NeedsUpdate) << true << "Awaiting update";
    QTest::newRow("waiting, no auto run") << int(FlowItem::NeedsUpdate) << false << "Run to update";
    QTest::newRow("running") << int(FlowItem::Updating) << true << "Processing...";
}

void TestItemPane::statusText()
{
    QFETCH(int, status);
    QFETCH(bool, autoRun);
    QFETCH(QString, expected);
    Graph graph(new TransformCase);
    graph.model.setAutoRun(autoRun);
    graph.node->setStatus(status, false);
    QCOMPARE(ItemWidget::statusText(graph.node, autoRun), expected);
    ItemPane pane;
    pane.showItems({graph.node});
    QCOMPARE(pane.currentWidget()->statusLabel()->text(), expected);
}

void TestItemPane::tabIsRemembered()
{
    Graph graph(new TransformCase);
    ItemPane pane;
    pane.show();
    pane.showItems({graph.node});
    pane.currentWidget()->tabs()->setCurrentIndex(ItemWidget::InfoTab);
    pane.showItems({graph.input});
    QCOMPARE(pane.currentWidget()->currentTab(), int(ItemWidget::InfoTab));
}

void TestItemPane::showButtonsHideParts()
{
    Graph graph(new TransformCase);
    ItemPane pane;
    pane.show();
    pane.showItems({graph.node});
    ItemWidget *page = pane.currentWidget();
    QVERIFY(page->optionsArea()->isVisible());
    QVERIFY(page->tabs()->isVisible());
    QTest::mouseClick(page->showButton(ItemWidget::OptionsOnly), Qt::LeftButton);
    QVERIFY(page->optionsArea()->isVisible());
    QVERIFY(!page->tabs()->isVisible());
    QTest::mouseClick(page->showButton(ItemWidget::DataOnly), Qt::LeftButton);
    QVERIFY(!page->optionsArea()->isVisible());
    QVERIFY(page->tabs()->isVisible());
    QVERIFY(!page->showButton(ItemWidget::OptionsOnly)->isChecked());
    QTest::mouseClick(page->showButton(ItemWidget::OptionsAndData), Qt::LeftButton);
    QVERIFY(page->optionsArea()->isVisible());
    QVERIFY(page->tabs()->isVisible());
}

void TestItemPane::fullScreenTakesThePageOutAndBack()
{
    Graph graph(new TransformCase);
    ItemPane pane;
    pane.show();
    pane.showItems({graph.node});
    ItemWidget *page = pane.currentWidget();
    QTest::mouseClick(page->fullScreenButton(), Qt::LeftButton);
    QVERIFY(page->isWindow());
    QVERIFY(page->isFullScreenOn());
    QCOMPARE(pane.currentWidget(), page);

    QTest::keyClick(page, Qt::Key_Escape);
    QVERIFY(!page->isFullScreenOn());
    QCOMPARE(page->parentWidget(), &pane);
    QVERIFY(page->isVisible());

    pane.setFullScreen(true);
    QVERIFY(page->isWindow());
    pane.setFullScreen(false);
    QCOMPARE(page->parentWidget(), &pane);
}

void TestItemPane::commentReachesItsItem()
{
    Graph graph(new TransformCase);
    ItemPane pane;
    pane.show();
    pane.showItems({graph.node});
    ItemWidget *page = pane.currentWidget();
    page->commentEdit()->setDelay(30);
    QSignalSpy commented(&pane, &ItemPane::nodeCommentChanged);
    page->tabs()->setCurrentIndex(ItemWidget::CommentTab);
    page->commentEdit()->setFocus();
    QTest::keyClicks(page->commentEdit(), QStringLiteral("check"));
    QCOMPARE(graph.node->comment(), QString());
    QCOMPARE(DelayTimer::firePending(), 1);
    QCOMPARE(graph.node->comment(), QStringLiteral("check"));
    QCOMPARE(commented.count(), 1);

    // A comment still being typed goes with the page.
    QTest::keyClicks(page->commentEdit(), QStringLiteral("ed"));
    page->commentEdit()->setDelay(60000);
    QTest::keyClicks(page->commentEdit(), QStringLiteral("!"));
    pane.showItems({});
    QCOMPARE(graph.node->comment(), QStringLiteral("checked!"));
}

void TestItemPane::optionsAndStatusFitThePane()
{
    Graph graph(new TransformCase);
    ItemPane pane;
    pane.resize(510, 900);
    pane.show();
    QVERIFY(QTest::qWaitForWindowExposed(&pane));
    pane.showItems({graph.node});
    ItemWidget *page = pane.currentWidget();
    QApplication::processEvents();

    // The options are shown whole, with the table below them, not squeezed to a sliver.
    QWidget *options = page->optionsArea();
    QVERIFY(options->visibleRegion().boundingRect().height() >= options->sizeHint().height());
    QVERIFY(page->tabs()->height() > 200);

    // A long result stays inside the pane instead of widening the top bar past it.
    page->statusLabel()->setText(QString(300, QLatin1Char('x')));
    QApplication::processEvents();
    QVERIFY(page->minimumSizeHint().width() <= pane.width());
    QVERIFY(page->statusLabel()->geometry().right() < page->width());
    QCOMPARE(page->statusLabel()->text(), QString(300, QLatin1Char('x')));

    // Only data gives the table all the height; back to both, the options show whole again.
    QTest::mouseClick(page->showButton(ItemWidget::DataOnly), Qt::LeftButton);
    QApplication::processEvents();
    QVERIFY(page->tabs()->height() > 800);
    QTest::mouseClick(page->showButton(ItemWidget::OptionsAndData), Qt::LeftButton);
    QApplication::processEvents();
    QVERIFY(options->visibleRegion().boundingRect().height() >= options->sizeHint().height());
}

TABULON_TEST_MAIN(TestItemPane)
#include "tst_itempane.moc"
