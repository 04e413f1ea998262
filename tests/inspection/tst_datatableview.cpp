#include "testutil.h"

#include "flow/flowitem.h"
#include "flow/flowmodel.h"
#include "inspection/datatablemodel.h"
#include "inspection/datatableview.h"
#include "shell/messageboxes.h"
#include "shell/settings.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QtTest>

#include <memory>

// The data table driven with mouse and keys, offscreen; what it copies is read back from
// the clipboard, and its questions and messages go through hooks instead of dialogs.
class TestDataTableView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void selectionStatistics_data();
    void selectionStatistics();
    void copy_data();
    void copy();
    void copyKeepsInvisibleCharacters();
    void millionCellQuestion_data();
    void millionCellQuestion();
    void cellMenu_data();
    void cellMenu();
    void headerDoubleClicks();
    void drilldownDoubleClick();
    void overlayTexts();

private:
    void show(const Dataset &data);
    QPoint cellCentre(int row, int column) const;
    void click(int row, int column, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

    std::unique_ptr<FlowItem> m_node;
    std::unique_ptr<DataTableView> m_view;
    QStringList m_questions;
    QStringList m_messages;
    bool m_answer = true;
};

void TestDataTableView::initTestCase()
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    MessageBoxes::setHandler([this](QMessageBox::Icon icon, const QString &, const QString &text,
                                    QMessageBox::StandardButtons, QMessageBox::StandardButton) {
        if (icon != QMessageBox::Question) {
            m_messages << text;
            return QMessageBox::Ok;
        }
        m_questions << text;
        return m_answer ? QMessageBox::Yes : QMessageBox::No;
    });
}

void TestDataTableView::init()
{
    m_questions.clear();
    m_messages.clear();
    m_answer = true;
    Settings::instance()->setCopyDataAs(0);
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
}

void TestDataTableView::cleanup()
{
    m_view.reset();
    m_node.reset();
}

void TestDataTableView::show(const Dataset &data)
{
    m_view.reset(new DataTableView);
    m_node.reset(makeDataItem(data));
    m_view->setItem(m_node.get());
    m_view->resize(900, 700);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
}

QPoint TestDataTableView::cellCentre(int row, int column) const
{
    return m_view->visualRect(m_view->model()->index(row, column)).center();
}

void TestDataTableView::click(int row, int column, Qt::KeyboardModifiers modifiers)
{
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, modifiers, cellCentre(row, column));
}

void TestDataTableView::selectionStatistics_data()
{
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QString>("line");
    QTest::newRow("one empty, one five") << QStringList {"", "5"}
                                         << "Selected: 2 Empty: 1 Numeric: 1 Sum: 5 Average: 5 "
                                            "Min: 5 Max: 5";
    QTest::newRow("sum of zero has no average")
        << QStringList {"-2.5", "2.5"}
        << "Selected: 2 Empty: 0 Numeric: 2 Sum: 0 Min: -2.5 Max: 2.5";
    QTest::newRow("grouped figures, text left out")
        << QStringList {"1234.5", "x", "1,000"}
        << "Selected: 3 Empty: 0 Numeric: 2 Sum: 2,234.5 Average: 1,117.25 Min: 1,000 "
           "Max: 1,234.5";
    QTest::newRow("three decimals") << QStringList {"1", "1", "0"}
                                    << "Selected: 3 Empty: 0 Numeric: 3 Sum: 2 Average: 0.667 "
                                       "Min: 0 Max: 1";
    QTest::newRow("no numbers") << QStringList {"a", "b"} << "Selected: 2 Empty: 0 Numeric: 0";
    QTest::newRow("one cell says nothing") << QStringList {"7"} << "";
}

void TestDataTableView::selectionStatistics()
{
    QFETCH(QStringList, values);
    QFETCH(QString, line);
    QList<QStringList> rows {{"name", "amount"}};
    for (const QString &value : values)
        rows << QStringList {"n", value};
    rows << QStringList {"after", "100"};
    show(makeDataset(rows));
    QSignalSpy lines(m_view.get(), &DataTableView::selectionStatisticsChanged);
    const int last = values.size() - 1;

    click(0, 1);
    click(last, 1, Qt::ShiftModifier);
    QCOMPARE(m_view->selectionStatistics(), line);
    QCOMPARE(lines.isEmpty() ? QString() : lines.last().first().toString(), line);

    // The same cells picked by keyboard.
    click(0, 0);
    QCOMPARE(m_view->selectionStatistics(), QString());
    QTest::keyClick(m_view.get(), Qt::Key_Right);
    for (int i = 0; i < last; ++i)
        QTest::keyClick(m_view.get(), Qt::Key_Down, Qt::ShiftModifier);
    QCOMPARE(m_view->selectionStatistics(), line);
}

void TestDataTableView::copy_data()
{
    QTest::addColumn<int>("copyDataAs");
    QTest::addColumn<bool>("withHeader");
    QTest::addColumn<QString>("text");
    QTest::newRow("tabs, with header") << 0 << true << "city\tpop\r\nOslo\t700\r\nLima\ta,b\r\n";
    QTest::newRow("tabs, without header") << 0 << false << "Oslo\t700\r\nLima\ta,b\r\n";
    QTest::newRow("commas quote a comma")
        << 1 << true << "city,pop\r\nOslo,700\r\nLima,\"a,b\"\r\n";
}

void TestDataTableView::copy()
{
    QFETCH(int, copyDataAs);
    QFETCH(bool, withHeader);
    QFETCH(QString, text);
    Settings::instance()->setCopyDataAs(copyDataAs);
    show(makeDataset(
        {{"id", "city", "hidden", "pop"}, {"1", "Oslo", "h", "700"}, {"2", "Lima", "h", "a,b"}}));
    m_view->setColumnHidden(2, true);

    // A hidden column inside the block stays out of the copy.
    click(0, 1);
    click(1, 3, Qt::ShiftModifier);
    QTest::keyClick(m_view.get(), Qt::Key_C,
                    withHeader ? Qt::ControlModifier : Qt::ControlModifier | Qt::ShiftModifier);
    const QMimeData *mime = QGuiApplication::clipboard()->mimeData();
    QCOMPARE(mime->text(), text);
    QVERIFY(mime->hasHtml());
    QCOMPARE(QString::fromUtf8(mime->data("text/csv")).section(QLatin1String("\r\n"), -2, -2),
             QStringLiteral("Lima,\"a,b\""));

    // The block grows from the current cell along its row and column only: the selected
    // cells of the first row are left out.
    Settings::instance()->setCopyDataAs(0);
    click(1, 0, Qt::ControlModifier);
    QVERIFY(m_view->copySelection(DataTableView::CopyMode::WithHeader));
    QCOMPARE(QGuiApplication::clipboard()->text(),
             QStringLiteral("id\tcity\tpop\r\n2\tLima\ta,b\r\n"));
    QVERIFY(m_view->copySelection(DataTableView::CopyMode::HeaderOnly));
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("id\tcity\tpop\r\n"));
}

void TestDataTableView::copyKeepsInvisibleCharacters()
{
    Settings::instance()->setCopyDataAs(1);
    show(makeDataset({{"h"}, {"a\tb"}}));
    m_view->setShowInvisibles(true);
    QCOMPARE(m_view->model()->index(0, 0).data().toString(), QStringLiteral("a\u2192b"));
    click(0, 0);
    QTest::keyClick(m_view.get(), Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("h\r\na\tb\r\n"));
}

void TestDataTableView::millionCellQuestion_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<bool>("answer");
    QTest::addColumn<bool>("asked");
    QTest::addColumn<bool>("copied");
    QTest::newRow("a million, no") << 1000 << false << true << false;
    QTest::newRow("a million, yes") << 1000 << true << true << true;
    QTest::newRow("just under a million") << 999 << false << false << true;
}

void TestDataTableView::millionCellQuestion()
{
    QFETCH(int, rows);
    QFETCH(bool, answer);
    QFETCH(bool, asked);
    QFETCH(bool, copied);
    Dataset data;
    data.setSize(rows, 1000);
    show(data);
    m_answer = answer;

    click(0, 0);
    QTest::keyClick(m_view.get(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(m_view.get(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(m_questions,
             asked ? QStringList {QStringLiteral("Are you sure you want to copy 1,000 rows x 1,000 "
                                                 "cols into the clipboard?")}
                   : QStringList());
    const QString text = QGuiApplication::clipboard()->text();
    QCOMPARE(text == QLatin1String("before"), !copied);
    if (copied)
        QCOMPARE(text.count(QLatin1String("\r\n")), rows);

    // The copy button of the page asks the same of a whole dataset.
    m_questions.clear();
    QCOMPARE(DataTableView::copyDataset(data, m_view.get()), copied);
    QCOMPARE(m_questions.size(), asked ? 1 : 0);
}

void TestDataTableView::cellMenu_data()
{
    QTest::addColumn<int>("selectedCells");
    QTest::addColumn<bool>("filtersAllowed");
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<QList<bool>>("enabled");
    const QString withHeader = QStringLiteral("&Copy Selected With Header");
    const QString withoutHeader = QStringLiteral("Copy Selected &Without Header");
    const QString value = QStringLiteral("Show &Value...");
    QTest::newRow("one cell")
        << 1 << true
        << QStringList {withHeader, withoutHeader,
                        "Filter on &row contains 'The quick brown fox jumps ove\u2026'",
                        "&Filter on column contains 'The quick brown fox jumps ove\u2026'", value}
        << QList<bool> {true, true, true, true, true};
    QTest::newRow("filters not offered here")
        << 1 << false << QStringList {withHeader, withoutHeader, value}
        << QList<bool> {true, true, true};
    QTest::newRow("two cells") << 2 << true << QStringList {withHeader, withoutHeader, value}
                               << QList<bool> {true, true, false};
}

void TestDataTableView::cellMenu()
{
    QFETCH(int, selectedCells);
    QFETCH(bool, filtersAllowed);
    QFETCH(QStringList, entries);
    QFETCH(QList<bool>, enabled);
    show(makeDataset({{"text"}, {"The quick brown fox jumps over the lazy dog"}, {"x"}}));
    m_view->setFilterActionsAllowed(filtersAllowed);
    click(0, 0);
    if (selectedCells == 2)
        click(1, 0, Qt::ShiftModifier);

    std::unique_ptr<QMenu> menu(
        m_view->createContextMenu(DataTableView::MenuKind::Cell, cellCentre(0, 0)));
    QVERIFY(menu);
    QStringList texts;
    QList<bool> states;
    const QList<QAction *> actions = menu->actions();
    for (const QAction *action : actions) {
        texts << action->text();
        states << action->isEnabled();
    }
    QCOMPARE(texts, entries);
    QCOMPARE(states, enabled);
    QCOMPARE(menu->actions().at(0)->shortcut(), QKeySequence(QStringLiteral("Ctrl+C")));

    if (filtersAllowed && selectedCells == 1) {
        menu->actions().at(2)->trigger();
        QCOMPARE(m_view->model()->rowCount(), 1);
        QCOMPARE(m_view->dataModel()->rowFilterText(),
                 QStringLiteral("The quick brown fox jumps over the lazy dog"));
    }
}

void TestDataTableView::headerDoubleClicks()
{
    show(makeDataset({{"a", "b", "c"}, {"1", "2", "3"}, {"4", "5", "6"}, {"7", "8", "9"}}));
    QHeaderView *top = m_view->horizontalHeader();
    QHeaderView *left = m_view->verticalHeader();
    auto doubleClick = [](QHeaderView *header, int section) {
        const int middle
            = header->sectionViewportPosition(section) + header->sectionSize(section) / 2;
        const QPoint pos = header->orientation() == Qt::Horizontal
            ? QPoint(middle, header->height() / 2)
            : QPoint(header->width() / 2, middle);
        QTest::mouseDClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, pos);
    };

    doubleClick(top, 1);
    doubleClick(left, 0);
    QCOMPARE(m_messages,
             QStringList({"The Column Values window is not yet available.",
                          "The Row Values window is not yet available."}));

    // With filters on, the requests name positions in the dataset, not in the view.
    QSignalSpy columns(m_view.get(), &DataTableView::columnValuesRequested);
    QSignalSpy rows(m_view.get(), &DataTableView::rowValuesRequested);
    m_view->dataModel()->setColumnFilter("c");
    m_view->dataModel()->setRowFilter("7");
    doubleClick(top, 0);
    doubleClick(left, 0);
    QCOMPARE(columns.count(), 1);
    QCOMPARE(columns.first().first().toInt(), 2);
    QCOMPARE(rows.count(), 1);
    QCOMPARE(rows.first().first().toInt(), 2);
    QCOMPARE(m_messages.size(), 2);
}

void TestDataTableView::drilldownDoubleClick()
{
    Dataset data = makeDataset({{"key", "count"}, {"a", "2"}, {"b", "1"}});
    data.addSourceRows(0, -1, {0, 3});
    data.addSourceRow(1, 1, 2);
    show(data);
    QSignalSpy asked(m_view.get(), &DataTableView::drilldownRequested);
    QTest::mouseDClick(m_view->viewport(), Qt::LeftButton, Qt::NoModifier, cellCentre(1, 1));
    QCOMPARE(asked.count(), 1);
    QCOMPARE(asked.first(), QVariantList({1, 1}));

    click(0, 0);
    std::unique_ptr<QMenu> menu(
        m_view->createContextMenu(DataTableView::MenuKind::Cell, cellCentre(0, 0)));
    QCOMPARE(menu->actions().first()->text(), QStringLiteral("&Drilldown..."));
    QVERIFY(menu->actions().first()->isEnabled());
    click(1, 0);
    menu.reset(m_view->createContextMenu(DataTableView::MenuKind::Cell, cellCentre(1, 0)));
    QVERIFY(!menu->actions().first()->isEnabled());
}

void TestDataTableView::overlayTexts()
{
    DataTableView view;
    QCOMPARE(view.overlayText(), QStringLiteral("No data"));
    view.setEmptyText(QStringLiteral("Nothing to compare"));
    QCOMPARE(view.overlayText(), QStringLiteral("Nothing to compare"));

    Dataset headerOnly;
    headerOnly.setColumnCount(2);
    view.dataModel()->setDataset(&headerOnly);
    QCOMPARE(view.overlayText(), QStringLiteral("No rows"));

    FlowModel scene;
    FlowItem *node = makeDataItem(makeDataset({{"h"}, {"1"}}));
    scene.addItem(node);
    view.setItem(node);
    QCOMPARE(view.overlayText(), QString());
    view.dataModel()->setRowFilter("2");
    QCOMPARE(view.overlayText(), QStringLiteral("No rows match the filter"));

    node->setStatus(FlowItem::NeedsUpdate, false);
    view.refresh();
    QCOMPARE(view.overlayText(), QStringLiteral("Awaiting update"));
    scene.setAutoRun(false);
    QCOMPARE(view.overlayText(), QStringLiteral("Run to update"));
    emit node->processingStart(node);
    QCOMPARE(view.overlayText(), QStringLiteral("Processing..."));

    Dataset wide;
    wide.setSize(1, DataTableModel::MaxColumns + 1);
    view.dataModel()->setDataset(&wide);
    QVERIFY(view.overlayText().startsWith(QStringLiteral("100,001 cols x 1 rows is too big")));
}

TABULON_TEST_MAIN(TestDataTableView)
#include "tst_datatableview.moc"
