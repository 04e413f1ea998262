#include "testutil.h"

#include "flow/document.h"
#include "flow/flowmodel.h"
#include "flow/transformitem.h"
#include "graph/graphscene.h"
#include "graph/node.h"
#include "inspection/datapage.h"
#include "inspection/datatableview.h"
#include "shell/delaytimer.h"
#include "shell/messageboxes.h"
#include "shell/settings.h"
#include "transforms/framework/columnwidgets.h"
#include "transforms/framework/parameter.h"
#include "transforms/framework/parameterwidgets.h"
#include "transforms/framework/transform.h"
#include "workbench/actionpane.h"
#include "workbench/itempane.h"
#include "workbench/itemwidget.h"
#include "workbench/mainwindow.h"
#include "workbench/mainwindowactions.h"
#include "workbench/transformitemwidget.h"
#include "workbench/widgets.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QPushButton>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

// The Left and Right panes driven in a whole main window, as a user would: a file goes in,
// a transform is found by keyword and clicked, its options are changed, and the data table
// is looked at, selected and copied.
class TestPanesInWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void keywordThenClickAddsAConnectedTransform();
    void optionChangeRunsAfterThePause();
    void typingWithoutAPauseRunsOnce();
    void selectingTwoItemsSendsTheWaitingEdit();
    void dataPageShowsSumsAndCopies();

private:
    Node *addSalesInput();
    TransformNode *addByKeyword(const QString &keyword, const QString &typeName);
    TransformItemWidget *page() const;
    QString shownCell(int row, int column) const;
    void selectOnly(const QList<Node *> &nodes);

    QTemporaryDir *m_dir = nullptr;
    Settings *m_settings = nullptr;
    MainWindow *m_window = nullptr;
    QStringList m_asked;
};

void TestPanesInWindow::initTestCase()
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    m_dir = new QTemporaryDir;
    QVERIFY(m_dir->isValid());
    // The window keeps a recovery file in the temporary folder; ours must not reach the
    // user's, nor be found by the next window.
    QVERIFY(QDir(m_dir->path()).mkpath(QStringLiteral("tmp")));
    qputenv("TMPDIR", QFile::encodeName(m_dir->filePath(QStringLiteral("tmp"))));
    QVERIFY(recoveryFilePath().startsWith(m_dir->path()));
    m_settings = new Settings(m_dir->filePath(QStringLiteral("tabulon.ini")));
    Settings::setInstance(m_settings);
    // The user agrees to every Yes or No question, and takes the default anywhere else.
    MessageBoxes::setHandler([this](QMessageBox::Icon, const QString &, const QString &text,
                                    QMessageBox::StandardButtons buttons,
                                    QMessageBox::StandardButton defaultButton) {
        m_asked.append(text);
        if (buttons == (QMessageBox::Yes | QMessageBox::No))
            return QMessageBox::Yes;
        return defaultButton == QMessageBox::NoButton ? QMessageBox::Ok : defaultButton;
    });
    // Pauses before runs and filters end when the test says so, not on the wall clock.
    DelayTimer::setManualClock(true);

    QFile file(m_dir->filePath(QStringLiteral("sales.csv")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("name,city,amount\nann,new york,10\nbob,rome,2.5\ncy,oslo,x\n");
}

void TestPanesInWindow::init()
{
    m_settings->clear();
    m_settings->setProcessingDelay(0.3);
    m_settings->setCopyDataAs(0);
    m_asked.clear();
    QFile::remove(recoveryFilePath());
    m_window = new MainWindow;
    m_window->resize(1400, 900);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window));
}

void TestPanesInWindow::cleanup()
{
    m_window->setWindowModified(false);
    delete m_window;
    m_window = nullptr;
}

void TestPanesInWindow::cleanupTestCase()
{
    MessageBoxes::setHandler(nullptr);
    DelayTimer::setManualClock(false);
    Settings::setInstance(nullptr);
    delete m_settings;
    delete m_dir;
}

Node *TestPanesInWindow::addSalesInput()
{
    GraphScene *scene = m_window->graphScene();
    const QUrl url = QUrl::fromLocalFile(m_dir->filePath(QStringLiteral("sales.csv")));
    if (!m_window->addFiles({url}, QPointF(0, 0)))
        return nullptr;
    const QList<Node *> inputs = scene->nodesOfType(Node::InputType);
    if (inputs.size() != 1)
        return nullptr;
    Node *input = inputs.first();
    if (input->item()->status() != FlowItem::UpToDate)
        return nullptr;
    selectOnly({input});
    return input;
}

void TestPanesInWindow::selectOnly(const QList<Node *> &nodes)
{
    GraphScene *scene = m_window->graphScene();
    scene->clearSelection();
    for (Node *node : nodes)
        node->setSelected(true);
}

TransformItemWidget *TestPanesInWindow::page() const
{
    return qobject_cast<TransformItemWidget *>(m_window->itemPane()->currentWidget());
}

QString TestPanesInWindow::shownCell(int row, int column) const
{
    ItemWidget *widget = m_window->itemPane()->currentWidget();
    if (!widget)
        return QStringLiteral("<no page>");
    QAbstractItemModel *model = widget->dataPage()->view()->model();
    if (row >= model->rowCount() || column >= model->columnCount())
        return QStringLiteral("<no cell>");
    return model->index(row, column).data().toString();
}

// Types the keyword into the Left pane, waits for the buttons to narrow, and clicks the
// transform's button with the current selection.
TransformNode *TestPanesInWindow::addByKeyword(const QString &keyword, const QString &typeName)
{
    ActionPane *pane = m_window->actionPane();
    const QList<const Transform *> before = pane->shownTransforms();
    QTest::keyClicks(pane->filterEdit(), keyword);
    if (pane->shownTransforms() != before)
        return nullptr; // narrowed at a key press, not after the pause
    if (!pane->filterEdit()->isPending())
        return nullptr;
    DelayTimer::firePending();
    const QList<const Transform *> after = pane->shownTransforms();
    if (after.isEmpty() || after.size() >= before.size())
        return nullptr;
    TransformButton *button = nullptr;
    for (TransformButton *candidate : pane->transformButtons())
        if (candidate->isVisible() && candidate->prototype()->typeName() == typeName)
            button = candidate;
    if (!button)
        return nullptr;
    QTest::mouseClick(button, Qt::LeftButton);
    for (Node *node : m_window->graphScene()->nodesOfType(Node::TransformType)) {
        auto *transformNode = static_cast<TransformNode *>(node);
        if (transformNode->transform()->typeName() == typeName)
            return transformNode;
    }
    return nullptr;
}

void TestPanesInWindow::keywordThenClickAddsAConnectedTransform()
{
    Node *input = addSalesInput();
    QVERIFY(input);
    QCOMPARE(m_window->itemPane()->currentWidget()->item(), input->item());

    TransformNode *node = addByKeyword(QStringLiteral("case"), QStringLiteral("Case"));
    QVERIFY(node);
    QCOMPARE(node->item()->upstream(), QList<FlowItem *> {input->item()});
    QCOMPARE(m_window->graphScene()->selectedItems().size(), 1);
    QVERIFY(node->isSelected());
    QVERIFY(page());
    QCOMPARE(page()->item(), node->item());
    ParameterWidget *caseWidget = page()->parameterWidget(QStringLiteral("Case"));
    QVERIFY(caseWidget);
    QVERIFY(caseWidget->widget()->isVisible());
    QVERIFY(page()->parameterWidget(QStringLiteral("Columns")));
    QVERIFY(ActionPane::recentTransforms().contains(QStringLiteral("Case")));
    QCOMPARE(ActionPane::transformCounts().value(QStringLiteral("Case")), 1);
}

void TestPanesInWindow::optionChangeRunsAfterThePause()
{
    QVERIFY(addSalesInput());
    TransformNode *node = addByKeyword(QStringLiteral("case"), QStringLiteral("Case"));
    QVERIFY(node);
    QTRY_COMPARE(node->item()->status(), int(FlowItem::UpToDate));

    auto *columns = dynamic_cast<MultipleColumnsParameterWidget *>(
        page()->parameterWidget(QStringLiteral("Columns")));
    QVERIFY(columns);
    QTest::mouseClick(columns->allButton(), Qt::LeftButton);
    m_window->itemPane()->delayTimer()->fire();
    auto *caseWidget
        = dynamic_cast<SelectionParameterWidget *>(page()->parameterWidget(QStringLiteral("Case")));
    QVERIFY(caseWidget && caseWidget->comboBox());
    QTRY_COMPARE(node->item()->status(), int(FlowItem::UpToDate));
    QCOMPARE(shownCell(0, 0), QStringLiteral("ann"));

    const int upper = caseWidget->comboBox()->findText(QStringLiteral("Upper case"));
    QVERIFY(upper >= 0);
    caseWidget->comboBox()->setFocus();
    while (caseWidget->comboBox()->currentIndex() != upper)
        QTest::keyClick(caseWidget->comboBox(),
                        caseWidget->comboBox()->currentIndex() < upper ? Qt::Key_Down : Qt::Key_Up);
    // The edit is marked on the page, and the table changes only after the pause.
    QVERIFY(m_window->itemPane()->isRunWaiting());
    QCOMPARE(shownCell(0, 0), QStringLiteral("ann"));
    QCOMPARE(m_window->itemPane()->delayTimer()->interval(), 300);
    m_window->itemPane()->delayTimer()->fire();
    QCOMPARE(shownCell(0, 0), QStringLiteral("ANN"));
    QCOMPARE(shownCell(1, 1), QStringLiteral("ROME"));
    QCOMPARE(node->item()->status(), int(FlowItem::UpToDate));
    QCOMPARE(page()->statusLabel()->text(), node->transform()->result());
}

void TestPanesInWindow::typingWithoutAPauseRunsOnce()
{
    m_settings->setProcessingDelay(1.0);
    QVERIFY(addSalesInput());
    TransformNode *node = addByKeyword(QStringLiteral("new"), QStringLiteral("New_Col"));
    QVERIFY(node);
    QTRY_COMPARE(node->item()->status(), int(FlowItem::UpToDate));
    ParameterWidget *value = page()->parameterWidget(QStringLiteral("New_Value"));
    QVERIFY(value);
    int runs = 0;
    QObject::connect(m_window->graphScene(), &GraphScene::completedTransforms, this,
                     [&runs] { ++runs; });

    value->widget()->setFocus();
    // Every key starts the whole second's pause again: while typing goes on, nothing runs.
    DelayTimer *delay = m_window->itemPane()->delayTimer();
    for (const char key : QByteArray("abcdef")) {
        QTest::keyClick(value->widget(), key);
        QVERIFY(delay->isActive());
        QCOMPARE(delay->interval(), 1000);
    }
    QCOMPARE(runs, 0);
    QCOMPARE(shownCell(0, 3), QString());
    delay->fire();
    QCOMPARE(shownCell(0, 3), QStringLiteral("abcdef"));
    QCOMPARE(runs, 1);
}

void TestPanesInWindow::selectingTwoItemsSendsTheWaitingEdit()
{
    m_settings->setProcessingDelay(60.0);
    Node *input = addSalesInput();
    QVERIFY(input);
    TransformNode *node = addByKeyword(QStringLiteral("new"), QStringLiteral("New_Col"));
    QVERIFY(node);
    QTRY_COMPARE(node->item()->status(), int(FlowItem::UpToDate));
    ParameterWidget *value = page()->parameterWidget(QStringLiteral("New_Value"));
    QVERIFY(value);
    QTest::keyClicks(value->widget(), QStringLiteral("kept"));
    QVERIFY(m_window->itemPane()->isRunWaiting());

    selectOnly({input, node});
    QVERIFY(!m_window->itemPane()->currentWidget());
    QCOMPARE(node->transform()->parameter(QStringLiteral("New_Value"))->value().toString(),
             QStringLiteral("kept"));
    QTRY_COMPARE(node->item()->status(), int(FlowItem::UpToDate));
    QCOMPARE(node->item()->dataset()->cell(2, 3), QStringLiteral("kept"));
}

void TestPanesInWindow::dataPageShowsSumsAndCopies()
{
    QVERIFY(addSalesInput());
    ItemWidget *widget = m_window->itemPane()->currentWidget();
    QVERIFY(widget);
    DataPage *data = widget->dataPage();
    DataTableView *view = data->view();
    QVERIFY(view->isVisible());

    // Invisible characters on and off, from the tool row.
    QCOMPARE(shownCell(0, 1), QStringLiteral("new york"));
    QTest::mouseClick(data->invisiblesButton(), Qt::LeftButton);
    QCOMPARE(shownCell(0, 1), QStringLiteral("new\u00B7york"));
    QTest::mouseClick(data->invisiblesButton(), Qt::LeftButton);
    QCOMPARE(shownCell(0, 1), QStringLiteral("new york"));

    // A click on the header of the numeric column sums it up in the window's status bar.
    QHeaderView *header = view->horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(header->sectionViewportPosition(2) + header->sectionSize(2) / 2,
                             header->height() / 2));
    const QString line = QStringLiteral(
        "Selected: 3 Empty: 0 Numeric: 2 Sum: 12.5 Average: 6.25 Min: 2.5 Max: 10");
    QCOMPARE(view->selectionStatistics(), line);
    QCOMPARE(m_window->statusBar()->currentMessage(), line);

    // Copies of a block, with and without the header.
    const auto cellCentre = [view](int row, int column) {
        return QPoint(view->columnViewportPosition(column) + view->columnWidth(column) / 2,
                      view->rowViewportPosition(row) + view->rowHeight(row) / 2);
    };
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, cellCentre(0, 0));
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ShiftModifier, cellCentre(1, 1));
    QTest::keyClick(view, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(),
             QStringLiteral("name\tcity\r\nann\tnew york\r\nbob\trome\r\n"));
    QTest::keyClick(view, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(),
             QStringLiteral("ann\tnew york\r\nbob\trome\r\n"));
    QVERIFY(m_asked.isEmpty());
}

TABULON_TEST_MAIN(TestPanesInWindow)
#include "tst_panesinwindow.moc"
