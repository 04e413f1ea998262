#include "shell/appearancesettings.h"
#include "testutil.h"

#include "flow/flowitem.h"
#include "inspection/datatablemodel.h"
#include "shell/settings.h"
#include "transforms/verifyrules.h"

#include <QApplication>
#include <QBrush>
#include <QtTest>

#include <memory>

// The table model read role by role, as a view would read it.
class TestDataTableModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void invisibleCharacters_data();
    void invisibleCharacters();
    void numbersAlignRight_data();
    void numbersAlignRight();
    void toolTips_data();
    void toolTips();
    void backgrounds();
    void headers();
    void rowFilter_data();
    void rowFilter();
    void columnFilter();
    void sizeLimits_data();
    void sizeLimits();
    void followsTheItem();

private:
    static const QColor Changed;
};

const QColor TestDataTableModel::Changed(0x12, 0x34, 0x56);

void TestDataTableModel::initTestCase()
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    AppearanceSettings().setChangedDataColor(Changed);
}

void TestDataTableModel::invisibleCharacters_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::newRow("tab") << QStringLiteral("a\tb") << QStringLiteral("a\u2192b");
    QTest::newRow("line feed, carriage return")
        << QStringLiteral("1\r\n2") << QStringLiteral("1\u2190\u21b52");
    QTest::newRow("spaces") << QStringLiteral(" x  ") << QStringLiteral("\u00b7x\u00b7\u00b7");
    QTest::newRow("no-break space") << QStringLiteral("5\u00a0kg") << QStringLiteral("5\u237dkg");
    QTest::newRow("null") << QString(QChar(0)) << QStringLiteral("\u2205");
    QTest::newRow("other white space")
        << QStringLiteral("\u2003\u000b\u3000") << QStringLiteral("\u25a1\u25a1\u25a1");
    QTest::newRow("nothing to map") << QStringLiteral("plain-text") << QStringLiteral("plain-text");
}

void TestDataTableModel::invisibleCharacters()
{
    QFETCH(QString, text);
    QFETCH(QString, shown);
    std::unique_ptr<FlowItem> node(makeDataItem(makeDataset({{text}, {text}})));
    DataTableModel model;
    model.setItem(node.get());
    const QModelIndex cell = model.index(0, 0);

    QCOMPARE(model.data(cell).toString(), text);
    QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), text.isEmpty() ? "1" : text);
    model.setShowInvisibles(true);
    QCOMPARE(model.data(cell).toString(), shown);
    QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), shown);
    // What copies and statistics read stays the real text.
    QCOMPARE(model.cellText(0, 0), text);
}

void TestDataTableModel::numbersAlignRight_data()
{
    QTest::addColumn<QLocale>("locale");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("right");
    const QLocale us(QLocale::English, QLocale::UnitedStates);
    const QLocale german(QLocale::German, QLocale::Germany);
    QTest::newRow("integer") << us << "42" << true;
    QTest::newRow("negative decimal") << us << "-3.5" << true;
    QTest::newRow("group separator of the locale") << us << "1,234.5" << true;
    QTest::newRow("group separator of another locale") << us << "1.234,5" << false;
    QTest::newRow("German grouping") << german << "1.234,5" << true;
    QTest::newRow("German decimal comma") << german << "0,25" << true;
    QTest::newRow("word") << us << "abc" << false;
    QTest::newRow("number and word") << us << "12 apples" << false;
    QTest::newRow("empty") << us << "" << false;
    QTest::newRow("not a number") << us << "nan" << false;
}

void TestDataTableModel::numbersAlignRight()
{
    QFETCH(QLocale, locale);
    QFETCH(QString, text);
    QFETCH(bool, right);
    const QLocale previous;
    QLocale::setDefault(locale);
    std::unique_ptr<FlowItem> node(makeDataItem(makeDataset({{"h"}, {text}})));
    DataTableModel model;
    model.setItem(node.get());
    const int alignment = model.data(model.index(0, 0), Qt::TextAlignmentRole).toInt();
    QLocale::setDefault(previous);
    QCOMPARE(alignment, int((right ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter));
}

void TestDataTableModel::toolTips_data()
{
    QTest::addColumn<QString>("mine");
    QTest::addColumn<QString>("theirs");
    QTest::addColumn<bool>("comparing");
    QTest::addColumn<QString>("tip");
    const QString longText = QString(60, QLatin1Char('a')) + QString(60, QLatin1Char('b'));
    QTest::newRow("short text") << "Oslo" << QString() << false << "Oslo";
    QTest::newRow("long text elided at 100")
        << longText << QString() << false
        << QString(60, QLatin1Char('a')) + QString(39, QLatin1Char('b')) + QChar(0x2026);
    QTest::newRow("difference: the other text first") << "new"
                                                      << "old" << true << "'old' -> 'new'";
    QTest::newRow("difference elided at 50")
        << longText << "x" << true
        << "'x' -> '" + QString(49, QLatin1Char('a')) + QChar(0x2026) + "'";
    QTest::newRow("same text in comparison") << "same"
                                             << "same" << true << "same";
    QTest::newRow("difference not shown outside comparison") << "new"
                                                             << "old" << false << "new";
}

void TestDataTableModel::toolTips()
{
    QFETCH(QString, mine);
    QFETCH(QString, theirs);
    QFETCH(bool, comparing);
    QFETCH(QString, tip);
    std::unique_ptr<FlowItem> node(makeDataItem(makeDataset({{"h"}, {mine}})));
    const Dataset other = makeDataset({{"h"}, {theirs}});
    DataTableModel model;
    model.setItem(node.get());
    model.setCompareDataset(&other);
    model.setComparisonMode(comparing);
    QCOMPARE(model.data(model.index(0, 0), Qt::ToolTipRole).toString(), tip);
}

void TestDataTableModel::backgrounds()
{
    Dataset data = makeDataset({{"a", "b"}, {"1", "2"}, {"3", "4"}, {"5", "6"}});
    const Dataset shorter = makeDataset({{"a", "b"}, {"1", "X"}});
    data.markIssue(2, 1, DataTableModel::Error, 7);
    std::unique_ptr<FlowItem> node(makeDataItem(data));
    DataTableModel model;
    model.setItem(node.get());
    model.setCompareDataset(&shorter);
    model.setComparisonMode(true);
    auto brush = [&](int r, int c) {
        return model.data(model.index(r, c), Qt::BackgroundRole).value<QBrush>();
    };

    QCOMPARE(brush(0, 1).color(), Changed);
    QCOMPARE(brush(0, 0), QBrush());
    // Rows past the end of the other dataset are not differences.
    QCOMPARE(brush(1, 1), QBrush());
    QCOMPARE(brush(2, 1), model.severityBrush(DataTableModel::Error));
    // Marks are named by Verify's rule tables unless another namer is set.
    QCOMPARE(model.data(model.index(2, 1), Qt::ToolTipRole).toString(),
             "Error: " + VerifyRules::columnRuleName(7));
    DataTableModel::setRuleNamer(
        [](int rule) { return QStringLiteral("No blanks #%1").arg(rule); });
    QCOMPARE(model.headerData(1, Qt::Horizontal, Qt::ToolTipRole).toString(),
             "Error: No blanks #7");
    QCOMPARE(model.headerData(2, Qt::Vertical, Qt::ToolTipRole).toString(), "Error: No blanks #7");
    DataTableModel::setRuleNamer(nullptr);

    // A mark outranks every other colour; a highlighted row outranks a highlighted cell.
    model.setHighlightedRows({2});
    model.setHighlightedCells({qMakePair(1, -1), qMakePair(0, 1)});
    QCOMPARE(brush(2, 1), model.severityBrush(DataTableModel::Error));
    QVERIFY(brush(2, 0) != QBrush());
    QVERIFY(brush(2, 0) != brush(1, 0));
    QVERIFY(brush(1, 0) != QBrush());
    QCOMPARE(brush(1, 0), brush(1, 1));
    QCOMPARE(brush(0, 1), brush(1, 0));
    QCOMPARE(brush(0, 0), QBrush());

    model.setVerificationHighlighting(false);
    QCOMPARE(brush(2, 1), brush(2, 0));
}

void TestDataTableModel::headers()
{
    std::unique_ptr<FlowItem> node(
        makeDataItem(makeDataset({{"x", "", "z"}, {"1", "2", "3"}, {"4", "5", "6"}}, false)));
    DataTableModel model;
    model.setItem(node.get());
    QCOMPARE(model.rowCount(), 3);
    QStringList names;
    for (int c = 0; c < model.columnCount(); ++c)
        names << model.headerData(c, Qt::Horizontal).toString();
    QCOMPARE(names, QStringList({"1", "2", "3"}));
    QCOMPARE(model.headerData(1, Qt::Horizontal, Qt::ToolTipRole).toString(), "2 (column 2)");
    QCOMPARE(model.headerData(0, Qt::Vertical).toString(), "1");

    model.setRowLabels({"first"});
    QCOMPARE(model.headerData(0, Qt::Vertical).toString(), "first");
    QCOMPARE(model.headerData(2, Qt::Vertical).toString(), "3");
    // Under a filter rows keep the numbers of the dataset.
    model.setRowFilter("6");
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(model.headerData(0, Qt::Vertical).toString(), "3");
}

void TestDataTableModel::rowFilter_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("matchCase");
    QTest::addColumn<QList<int>>("rows");
    QTest::newRow("any column") << "an" << -1 << false << QList<int> {0, 1, 3};
    QTest::newRow("one column") << "an" << 0 << false << QList<int> {0, 3};
    QTest::newRow("case ignored") << "ANN" << -1 << false << QList<int> {0};
    QTest::newRow("case matched") << "ANN" << -1 << true << QList<int> {};
    QTest::newRow("empty text keeps all") << "" << 0 << false << QList<int> {0, 1, 2, 3};
    QTest::newRow("column past the end means any") << "Ban" << 9 << false << QList<int> {1};
}

void TestDataTableModel::rowFilter()
{
    QFETCH(QString, text);
    QFETCH(int, column);
    QFETCH(bool, matchCase);
    QFETCH(QList<int>, rows);
    std::unique_ptr<FlowItem> node(makeDataItem(makeDataset({{"name", "fruit"},
                                                             {"Anna", "apple"},
                                                             {"Bo", "banana"},
                                                             {"Cy", "cherry"},
                                                             {"Dan", "fig"}})));
    DataTableModel model;
    model.setItem(node.get());
    model.setRowFilter(text, column, matchCase ? Qt::CaseSensitive : Qt::CaseInsensitive);

    QCOMPARE(model.rowCount(), rows.size());
    QList<int> shown;
    for (int r = 0; r < model.rowCount(); ++r) {
        shown << model.datasetRow(r);
        QCOMPARE(model.modelRow(model.datasetRow(r)), r);
        QCOMPARE(model.data(model.index(r, 0)).toString(),
                 node->dataset()->cell(model.datasetRow(r), 0));
    }
    QCOMPARE(shown, rows);
    QCOMPARE(model.isRowFiltered(), !text.isEmpty());
    if (rows.size() < 4)
        QCOMPARE(model.modelRow(2), -1);
}

void TestDataTableModel::columnFilter()
{
    std::unique_ptr<FlowItem> node(makeDataItem(
        makeDataset({{"id", "city", "note"}, {"1", "Oslo", ""}, {"2", "Rome", "via Osl"}})));
    DataTableModel model;
    model.setItem(node.get());
    model.setColumnFilter("osl");
    QCOMPARE(model.columnCount(), 2);
    QCOMPARE(model.datasetColumn(1), 2);
    QCOMPARE(model.headerData(1, Qt::Horizontal).toString(), "note");
    QCOMPARE(model.data(model.index(1, 1)).toString(), "via Osl");
    model.setColumnFilter("NOTE", Qt::CaseSensitive);
    QCOMPARE(model.columnCount(), 0);
    model.setColumnFilter("NOTE");
    QCOMPARE(model.columnCount(), 1);
    model.clearFilters();
    QCOMPARE(model.columnCount(), 3);
}

void TestDataTableModel::sizeLimits_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<bool>("shown");
    QTest::newRow("at the limit") << DataTableModel::MaxColumns << true;
    QTest::newRow("one column too many") << DataTableModel::MaxColumns + 1 << false;
}

void TestDataTableModel::sizeLimits()
{
    QFETCH(int, columns);
    QFETCH(bool, shown);
    Dataset data;
    data.setSize(2, columns);
    DataTableModel model;
    model.setDataset(&data);
    QCOMPARE(model.isTooBig(), !shown);
    QCOMPARE(model.columnCount(), shown ? columns : 0);
    QCOMPARE(model.rowCount(), shown ? 2 : 0);
    QCOMPARE(model.tooBigText(),
             shown ? QString()
                   : QStringLiteral("100,001 cols x 2 rows is too big to display\n\nUse a 'Remove "
                                    "Cols' transform to reduce to <=100,000 columns"));
}

void TestDataTableModel::followsTheItem()
{
    FlowItem *node = makeDataItem(makeDataset({{"h"}, {"1"}, {"2"}}));
    DataTableModel model;
    model.setItem(node);
    QCOMPARE(model.rowCount(), 2);

    // While the item runs its dataset is replaced: the table lets go of it until the end.
    emit node->processingStart(node);
    QCOMPARE(model.state(), int(DataTableModel::Processing));
    QCOMPARE(model.rowCount(), 0);
    node->dataset()->appendRow({"3"});
    emit node->processingEnd(node);
    QCOMPARE(model.state(), int(DataTableModel::HasResult));
    QCOMPARE(model.rowCount(), 3);

    // A new run keeps a filter in force over the new data.
    model.setRowFilter("3");
    node->dataset()->appendRow({"33"});
    model.refresh();
    QCOMPARE(model.rowCount(), 2);
    QCOMPARE(model.datasetRow(1), 3);

    node->setStatus(FlowItem::NeedsUpdate, false);
    model.refresh();
    QCOMPARE(model.state(), int(DataTableModel::NotRun));
    QCOMPARE(model.rowCount(), 0);

    delete node;
    QCOMPARE(model.item(), nullptr);
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(model.data(model.index(0, 0)), QVariant());
}

TABULON_TEST_MAIN(TestDataTableModel)
#include "tst_datatablemodel.moc"
