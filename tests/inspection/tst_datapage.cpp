#include "testutil.h"

#include "flow/document.h"
#include "flow/flowitem.h"
#include "flow/flowmodel.h"
#include "inspection/datapage.h"
#include "inspection/datatablemodel.h"
#include "inspection/datatableview.h"
#include "shell/delaytimer.h"
#include "shell/messageboxes.h"
#include "shell/settings.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

#include <memory>

// The "Data" tab as a user meets it: a document run headless and shown in the page, then
// its tool row and filter row worked with the mouse and keyboard.
class TestDataPage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void documentEndToEnd();
    void filterRow_data();
    void filterRow();
    void menuFilterOpensTheRow();
    void scrollButtons_data();
    void scrollButtons();
    void rowAndColumnButtons();
    void invisiblesButton();

private:
    void show(const Dataset &data);
    void clickCell(int row, int column, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    static QString readText(const QString &path);

    std::unique_ptr<FlowItem> m_node;
    std::unique_ptr<DataPage> m_page;
    QStringList m_messages;
};

void TestDataPage::initTestCase()
{
    // The filter's pause after typing ends when a test fires it, not on the wall clock.
    DelayTimer::setManualClock(true);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    MessageBoxes::setHandler([this](QMessageBox::Icon icon, const QString &, const QString &text,
                                    QMessageBox::StandardButtons, QMessageBox::StandardButton) {
        if (icon == QMessageBox::Question)
            return QMessageBox::Yes;
        m_messages << text;
        return QMessageBox::Ok;
    });
}

void TestDataPage::init()
{
    m_messages.clear();
    Settings::instance()->setCopyDataAs(0);
}

void TestDataPage::cleanup()
{
    m_page.reset();
    m_node.reset();
}

void TestDataPage::show(const Dataset &data)
{
    m_page.reset(new DataPage);
    if (data.hasColumns()) {
        m_node.reset(makeDataItem(data));
        m_page->setItem(m_node.get());
    }
    m_page->resize(900, 600);
    m_page->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
}

void TestDataPage::clickCell(int row, int column, Qt::KeyboardModifiers modifiers)
{
    DataTableView *view = m_page->view();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, modifiers,
                      view->visualRect(view->model()->index(row, column)).center());
}

QString TestDataPage::readText(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void TestDataPage::documentEndToEnd()
{
    const QString folder = QStringLiteral(TABULON_TEST_DATA "/../inspection/data/sales");
    QTemporaryDir work;
    QVERIFY(work.isValid());
    for (const QString &name : {QStringLiteral("document.tabulon"), QStringLiteral("input.csv")})
        QVERIFY(QFile::copy(folder + QLatin1Char('/') + name, work.filePath(name)));
    FlowModel scene;
    DocumentData data;
    bool laterVersion = false;
    QString error;
    QVERIFY2(loadDocument(&scene, work.filePath("document.tabulon"), &data, &laterVersion, nullptr,
                          &error),
             qPrintable(error));
    scene.process(FlowModel::RunAll, true);
    FlowItem *sorted = scene.itemById(2);
    QVERIFY(sorted);
    QCOMPARE(sorted->status(), int(FlowItem::UpToDate));

    m_page.reset(new DataPage);
    m_page->setItem(sorted);
    m_page->resize(900, 600);
    m_page->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
    DataTableView *view = m_page->view();
    QCOMPARE(view->model()->rowCount(), 6);
    QCOMPARE(view->overlayText(), QString());

    // A click on the header of the amount column sums it up.
    QHeaderView *header = view->horizontalHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(header->sectionViewportPosition(1) + header->sectionSize(1) / 2,
                             header->height() / 2));
    QCOMPARE(view->selectionStatistics(),
             QStringLiteral("Selected: 6 Empty: 1 Numeric: 4 Sum: 1,420.5 Average: 355.125 "
                            "Min: -30 Max: 1,250"));

    QTest::mouseClick(m_page->filterButton(), Qt::LeftButton);
    QVERIFY(m_page->isFilterRowShown());
    QTest::keyClicks(m_page->rowFilterEdit(), QStringLiteral("north"));
    QCOMPARE(DelayTimer::firePending(), 1);
    QCOMPARE(view->model()->rowCount(), 2);
    QCOMPARE(m_page->filterCountLabel()->text(), QStringLiteral("2 of 6 rows"));

    clickCell(0, 0);
    QTest::keyClick(view, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(view, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), readText(folder + "/expected/filtered.tsv"));

    // The copy button takes the whole dataset, whatever the filter shows.
    QTest::mouseClick(m_page->copyButton(), Qt::LeftButton);
    QCOMPARE(QGuiApplication::clipboard()->text(), readText(folder + "/expected/dataset.tsv"));

    // A new run while the page shows the item keeps the filter over the new rows.
    QFile input(work.filePath("input.csv"));
    QVERIFY(input.open(QIODevice::Append));
    input.write("kiwi,7,North\n");
    input.close();
    scene.itemById(1)->setStatus(FlowItem::NeedsUpdate, true);
    scene.process(FlowModel::RunChanges, true);
    QCOMPARE(view->model()->rowCount(), 3);
    QCOMPARE(m_page->filterCountLabel()->text(), QStringLiteral("3 of 7 rows"));
    m_page.reset();
}

void TestDataPage::filterRow_data()
{
    QTest::addColumn<QString>("rowText");
    QTest::addColumn<int>("columnChoice");
    QTest::addColumn<QString>("columnText");
    QTest::addColumn<bool>("matchCase");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("columns");
    QTest::addColumn<QString>("count");
    QTest::newRow("rows in any column") << "an" << 0 << "" << false << 3 << 3 << "3 of 5 rows";
    QTest::newRow("rows in the fruit column")
        << "an" << 3 << "" << false << 1 << 3 << "1 of 5 rows";
    QTest::newRow("matched case") << "AN" << 0 << "" << true << 0 << 3 << "0 of 5 rows";
    QTest::newRow("columns only") << "" << 0 << "ruit" << false << 5 << 1 << "1 of 3 cols";
    QTest::newRow("rows and columns")
        << "e" << 0 << "n" << false << 3 << 2 << "3 of 5 rows, 2 of 3 cols";
}

void TestDataPage::filterRow()
{
    QFETCH(QString, rowText);
    QFETCH(int, columnChoice);
    QFETCH(QString, columnText);
    QFETCH(bool, matchCase);
    QFETCH(int, rows);
    QFETCH(int, columns);
    QFETCH(QString, count);
    show(makeDataset({{"id", "name", "fruit"},
                      {"1", "Anna", "apple"},
                      {"2", "Bo", "banana"},
                      {"3", "Cy", "cherry"},
                      {"4", "Dan", "fig"},
                      {"5", "Eve", "kiwi"}}));
    QAbstractItemModel *model = m_page->view()->model();
    QVERIFY(!m_page->isFilterRowShown());
    QTest::mouseClick(m_page->filterButton(), Qt::LeftButton);
    QVERIFY(m_page->isFilterRowShown());

    for (int i = 0; i < columnChoice; ++i)
        QTest::keyClick(m_page->rowFilterColumnBox(), Qt::Key_Down);
    if (matchCase)
        QTest::mouseClick(m_page->matchCaseBox(), Qt::LeftButton);
    QTest::keyClicks(m_page->rowFilterEdit(), rowText);
    QTest::keyClicks(m_page->columnFilterEdit(), columnText);
    DelayTimer::firePending();
    QCOMPARE(model->rowCount(), rows);
    QCOMPARE(model->columnCount(), columns);
    QCOMPARE(m_page->filterCountLabel()->text(), count);

    // Hiding the row drops the filters with it.
    QTest::mouseClick(m_page->filterButton(), Qt::LeftButton);
    QVERIFY(!m_page->isFilterRowShown());
    QCOMPARE(model->rowCount(), 5);
    QCOMPARE(model->columnCount(), 3);
    QCOMPARE(m_page->rowFilterEdit()->text(), QString());
}

void TestDataPage::menuFilterOpensTheRow()
{
    show(makeDataset({{"city"}, {"Oslo"}, {"Rome"}, {"Oslo"}}));
    clickCell(2, 0);
    std::unique_ptr<QMenu> menu(m_page->view()->createContextMenu(
        DataTableView::MenuKind::Cell,
        m_page->view()->visualRect(m_page->view()->currentIndex()).center()));
    QAction *filter = nullptr;
    const QList<QAction *> actions = menu->actions();
    for (QAction *action : actions) {
        if (action->text() == QStringLiteral("Filter on &row contains 'Oslo'"))
            filter = action;
    }
    QVERIFY(filter);
    filter->trigger();
    QVERIFY(m_page->isFilterRowShown());
    QVERIFY(m_page->filterButton()->isChecked());
    QCOMPARE(m_page->rowFilterEdit()->text(), QStringLiteral("Oslo"));
    QCOMPARE(m_page->view()->model()->rowCount(), 2);

    // Emptying the box with its clear button shows every row again.
    m_page->rowFilterEdit()->clear();
    QCOMPARE(DelayTimer::firePending(), 1);
    QCOMPARE(m_page->view()->model()->rowCount(), 3);
}

void TestDataPage::scrollButtons_data()
{
    QTest::addColumn<int>("scroll");
    QTest::addColumn<Qt::Orientation>("orientation");
    QTest::addColumn<QString>("where");
    QTest::newRow("last row") << int(DataPage::Scroll::LastRow) << Qt::Vertical << "end";
    QTest::newRow("page down") << int(DataPage::Scroll::Down) << Qt::Vertical << "page";
    QTest::newRow("page up") << int(DataPage::Scroll::Up) << Qt::Vertical << "page back";
    QTest::newRow("first row") << int(DataPage::Scroll::FirstRow) << Qt::Vertical << "start";
    QTest::newRow("last column") << int(DataPage::Scroll::LastColumn) << Qt::Horizontal << "end";
    QTest::newRow("page right") << int(DataPage::Scroll::Right) << Qt::Horizontal << "page";
    QTest::newRow("page left") << int(DataPage::Scroll::Left) << Qt::Horizontal << "page back";
    QTest::newRow("first column") << int(DataPage::Scroll::FirstColumn) << Qt::Horizontal
                                  << "start";
}

void TestDataPage::scrollButtons()
{
    QFETCH(int, scroll);
    QFETCH(Qt::Orientation, orientation);
    QFETCH(QString, where);
    Dataset data;
    data.setSize(1000, 80);
    show(data);
    QScrollBar *bar = orientation == Qt::Vertical ? m_page->view()->verticalScrollBar()
                                                  : m_page->view()->horizontalScrollBar();
    QVERIFY(bar->maximum() > 2 * bar->pageStep());
    const int middle = bar->maximum() / 2;
    if (where != QLatin1String("page"))
        bar->setValue(middle);

    QTest::mouseClick(m_page->scrollButton(DataPage::Scroll(scroll)), Qt::LeftButton);
    if (where == QLatin1String("end"))
        QCOMPARE(bar->value(), bar->maximum());
    else if (where == QLatin1String("start"))
        QCOMPARE(bar->value(), 0);
    else if (where == QLatin1String("page"))
        QCOMPARE(bar->value(), bar->pageStep());
    else
        QCOMPARE(bar->value(), middle - bar->pageStep());
}

void TestDataPage::rowAndColumnButtons()
{
    show(makeDataset({{"a", "b"}, {"1", "2"}, {"3", "4"}}));
    clickCell(1, 1);
    QVERIFY(m_page->rowValuesButton()->isEnabled());
    QTest::mouseClick(m_page->rowValuesButton(), Qt::LeftButton);
    QTest::mouseClick(m_page->columnValuesButton(), Qt::LeftButton);
    QCOMPARE(m_messages,
             QStringList({"The Row Values window is not yet available.",
                          "The Column Values window is not yet available."}));

    QSignalSpy rows(m_page->view(), &DataTableView::rowValuesRequested);
    QTest::mouseClick(m_page->rowValuesButton(), Qt::LeftButton);
    QCOMPARE(rows.count(), 1);
    QCOMPARE(rows.first().first().toInt(), 1);
}

void TestDataPage::invisiblesButton()
{
    show(makeDataset({{"h"}, {"a b"}}));
    const QModelIndex cell = m_page->view()->model()->index(0, 0);
    QCOMPARE(cell.data().toString(), QStringLiteral("a b"));
    QTest::mouseClick(m_page->invisiblesButton(), Qt::LeftButton);
    QCOMPARE(cell.data().toString(), QStringLiteral("a\u00b7b"));

    // The choice carries over to the page of the next item.
    DataPage next;
    std::unique_ptr<FlowItem> other(makeDataItem(makeDataset({{"h"}, {"c d"}})));
    next.setItem(other.get());
    QVERIFY(next.invisiblesButton()->isChecked());
    QCOMPARE(next.view()->model()->index(0, 0).data().toString(), QStringLiteral("c\u00b7d"));
    QTest::mouseClick(m_page->invisiblesButton(), Qt::LeftButton);
    QCOMPARE(cell.data().toString(), QStringLiteral("a b"));
}

TABULON_TEST_MAIN(TestDataPage)
#include "tst_datapage.moc"
