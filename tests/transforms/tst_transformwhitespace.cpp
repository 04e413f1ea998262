#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformwhitespace.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QtTest>

// Whitespace: each step alone and together, in its fixed order, and the shared cell loop
// (sharing of untouched rows, progress, counts).
class TestTransformWhitespace : public QObject
{
    Q_OBJECT

private slots:
    void steps_data();
    void steps();
    void optionKeysInOrder();
    void onlySelectedColumnsChange();
    void unchangedRowsStayShared();
    void progressEveryThousandRows();
    void missingOptionFails();
};

namespace {

const char *const kStepKeys[] = {"Trim",
                                 "Line_Feed",
                                 "Tab",
                                 "Non_Standard_Spaces",
                                 "Carriage_Return",
                                 "Consecutive_Spaces",
                                 "Non_Printable"};

} // namespace

void TestTransformWhitespace::steps_data()
{
    QTest::addColumn<QStringList>("on");
    QTest::addColumn<QString>("cell");
    QTest::addColumn<QString>("expected");

    const QString nbsp(QChar(0x00a0));
    const QString emoji = QString::fromUtf8("\xF0\x9F\x98\x80");
    QTest::newRow("trim") << QStringList {"Trim"} << " \t a  b \n"
                          << "a  b";
    QTest::newRow("line feed") << QStringList {"Line_Feed"} << "a\nb\r\n"
                               << "a b\r ";
    QTest::newRow("tab") << QStringList {"Tab"} << "\ta\tb"
                         << " a b";
    QTest::newRow("non-standard spaces")
        << QStringList {"Non_Standard_Spaces"} << QString("a" + nbsp + "b\t\n\r" + QChar(0x2003))
        << "a b\t\n\r ";
    QTest::newRow("carriage return") << QStringList {"Carriage_Return"} << "a\r\nb\r"
                                     << "a\nb";
    QTest::newRow("consecutive spaces") << QStringList {"Consecutive_Spaces"} << "  a   b \t c"
                                        << " a b \t c";
    QTest::newRow("non-printable") << QStringList {"Non_Printable"}
                                   << QString("a\x01"
                                              "b\tc"
                                              + emoji + QChar(0x200b))
                                   << QString("abc" + emoji);
    // Trim goes first, so blanks made by later steps at the ends stay.
    QTest::newRow("trim before line feed") << QStringList {"Trim", "Line_Feed"} << "\n a\nb \n"
                                           << "a b";
    QTest::newRow("line feed then collapse")
        << QStringList {"Line_Feed", "Tab", "Consecutive_Spaces"} << "a \n\t b"
        << "a b";
    QTest::newRow("carriage return after spaces")
        << QStringList {"Non_Standard_Spaces", "Carriage_Return"} << "a\r" + nbsp << "a ";
    QTest::newRow("all") << QStringList(std::begin(kStepKeys), std::end(kStepKeys))
                         << QString(" a\r\n\tb" + nbsp + nbsp + "c\x07 ") << "a b c";
    QTest::newRow("nothing on") << QStringList {} << " a\t\n"
                                << " a\t\n";
}

void TestTransformWhitespace::steps()
{
    QFETCH(QStringList, on);
    QFETCH(QString, cell);
    QFETCH(QString, expected);

    QScopedPointer<DataSource> input(makeDataSource(makeDataset({{"text"}, {cell}, {"plain"}})));
    TransformWhitespace transform;
    transform.createParameters({input.data()}, false);
    QCOMPARE(transform.parameter("Columns")->toColumns().size(), 1);
    for (const char *key : kStepKeys)
        transform.parameter(key)->setValue(on.contains(key));
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(output.cell(0, 0), expected);
    QCOMPARE(output.cell(1, 0), QString("plain"));
    QCOMPARE(transform.result(),
             expected == cell ? QString("No changes") : QString("1 changed, 1 unchanged"));
}

void TestTransformWhitespace::optionKeysInOrder()
{
    TransformWhitespace transform;
    transform.createParameters({}, false);
    QStringList keys;
    for (const Parameter *p : transform.parameters())
        keys.append(p->key());
    QCOMPARE(keys,
             QStringList({"Columns", "Trim", "Line_Feed", "Tab", "Non_Standard_Spaces",
                          "Carriage_Return", "Consecutive_Spaces", "Non_Printable"}));
    QCOMPARE(transform.type(), 74);
    QCOMPARE(transform.typeName(), QString("Whitespace"));
    QVERIFY(transform.changesValuesOnly());
}

void TestTransformWhitespace::onlySelectedColumnsChange()
{
    QScopedPointer<DataSource> input(
        makeDataSource(makeDataset({{"a", "b", "c"}, {" x ", " y ", " z "}, {"1", " 2", "3 "}})));
    TransformWhitespace transform;
    transform.createParameters({input.data()}, false);
    const Dataset *source = input->dataset();
    transform.parameter("Columns")->setColumns({source->columnId(2), source->columnId(0)});
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(output.row(0), QStringList({"x", " y ", "z"}));
    QCOMPARE(output.row(1), QStringList({"1", " 2", "3"}));
    QCOMPARE(transform.result(), QString("3 changed, 1 unchanged"));
    QCOMPARE(output.columnIds(), source->columnIds());
    QCOMPARE(output.header(), source->header());
}

void TestTransformWhitespace::unchangedRowsStayShared()
{
    Dataset big;
    big.setColumnCount(2);
    big.setHeader({"a", "b"});
    for (int r = 0; r < 3000; ++r)
        big.appendRow({r % 3 == 0 ? " pad " : "tidy", QString::number(r)}, true);
    QScopedPointer<DataSource> input(makeDataSource(big));
    TransformWhitespace transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Columns")->setColumns({input->dataset()->columnId(0)});
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(transform.result(), QString("1,000 changed, 2,000 unchanged"));
    const Dataset *source = input->dataset();
    for (int r = 0; r < 3000; ++r) {
        const bool changed = r % 3 == 0;
        QCOMPARE(output.cell(r, 0), changed ? QString("pad") : QString("tidy"));
        QCOMPARE(&output.row(r).at(1) == &source->row(r).at(1), !changed);
        QCOMPARE(&output.row(r).at(0) == &source->row(r).at(0), !changed);
    }
}

void TestTransformWhitespace::progressEveryThousandRows()
{
    Dataset data;
    data.setColumnCount(1);
    for (int r = 0; r < 2001; ++r)
        data.appendRow({" x"}, true);
    QScopedPointer<DataSource> input(makeDataSource(data));
    TransformWhitespace transform;
    transform.createParameters({input.data()}, false);
    QSignalSpy progress(&transform, &Transform::processed);
    runTransform(transform, {input.data()});
    QCOMPARE(progress.count(), 3);
    QCOMPARE(progress.at(2).first().toDouble(), 2000.0 / 2001.0);
}

void TestTransformWhitespace::missingOptionFails()
{
    QScopedPointer<DataSource> input(makeDataSource(makeDataset({{"a"}, {" x "}})));
    TransformWhitespace transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Tab")->setKey("Tabs");
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(output.columnCount(), 0);
    QCOMPARE(transform.result(), Transform::failureText());
}

QTEST_GUILESS_MAIN(TestTransformWhitespace)
#include "tst_transformwhitespace.moc"
