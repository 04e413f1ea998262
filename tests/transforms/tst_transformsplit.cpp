#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformsplit.h"

#include <QCoreApplication>
#include <QtTest>

using Rows = QList<QStringList>;

// Split Col: the three ways of cutting a cell, the two destinations, order, and the bounds on
// the number of parts with their messages.
class TestTransformSplit : public QObject
{
    Q_OBJECT

private slots:
    void split_data();
    void split();
    void intoRowsRepeatsOtherCells();
    void newColumnsHaveNoIdsAndOldKeepTheirs();
    void nothingToSplitWith_data();
    void nothingToSplitWith();
    void lengthsParsing_data();
    void lengthsParsing();
    void unsetColumnWarnsAndCopies();
    void lengthOptionsOnlyForLengths();
};

void TestTransformSplit::split_data()
{
    QTest::addColumn<Rows>("input");
    QTest::addColumn<QVariantMap>("options");
    QTest::addColumn<QStringList>("header");
    QTest::addColumn<Rows>("expected");
    QTest::addColumn<QString>("result");
    QTest::addColumn<QStringList>("warnings");
    QTest::addColumn<QStringList>("information");

    const Rows tags {{"id", "tags"}, {"1", "b,a,,c"}, {"2", "x"}, {"3", ""}};
    const QStringList tagHeader {"id", "tags", "tags1", "tags2", "tags3"};
    QTest::newRow("text delimiter, empties skipped")
        << tags << QVariantMap {} << tagHeader
        << Rows {{"1", "b,a,,c", "b", "a", "c"}, {"2", "x", "x", "", ""}, {"3", "", "", "", ""}}
        << "3 cols added" << QStringList() << QStringList();
    QTest::newRow("keep empty") << tags << QVariantMap {{"Keep_Empty", true}}
                                << QStringList {"id", "tags", "tags1", "tags2", "tags3", "tags4"}
                                << Rows {{"1", "b,a,,c", "b", "a", "", "c"},
                                         {"2", "x", "x", "", "", ""},
                                         {"3", "", "", "", "", ""}}
                                << "4 cols added" << QStringList() << QStringList();
    QTest::newRow("alphabetic") << tags << QVariantMap {{"Order", "Alphabetic"}} << tagHeader
                                << Rows {{"1", "b,a,,c", "a", "b", "c"},
                                         {"2", "x", "x", "", ""},
                                         {"3", "", "", "", ""}}
                                << "3 cols added" << QStringList() << QStringList();
    QTest::newRow("reverse") << tags << QVariantMap {{"Order", "Reverse"}} << tagHeader
                             << Rows {{"1", "b,a,,c", "c", "a", "b"},
                                      {"2", "x", "x", "", ""},
                                      {"3", "", "", "", ""}}
                             << "3 cols added" << QStringList() << QStringList();
    // Padding comes before the order, so the padded empty part is sorted first.
    QTest::newRow("minimum pads, then order")
        << Rows {{"t"}, {"b;a"}, {"c"}}
        << QVariantMap {{"Delimiter", ";"}, {"Min_New_Cols", 3}, {"Order", "Alphabetic"}}
        << QStringList {"t", "t1", "t2", "t3"} << Rows {{"b;a", "", "a", "b"}, {"c", "", "", "c"}}
        << "3 cols added" << QStringList()
        << QStringList {"2 rows split into less than 'Min. values'=3 value(s), so padded to 3 "
                        "value(s)."};
    QTest::newRow("maximum truncates")
        << tags << QVariantMap {{"Max_New_Cols", 2}} << QStringList {"id", "tags", "tags1", "tags2"}
        << Rows {{"1", "b,a,,c", "b", "a"}, {"2", "x", "x", ""}, {"3", "", "", ""}}
        << "2 cols added"
        << QStringList {"1 row split into more than 'Max. values'=2 value(s), so truncated to 2 "
                        "value(s)."}
        << QStringList();
    QTest::newRow("maximum below minimum is ignored")
        << tags << QVariantMap {{"Max_New_Cols", 1}, {"Min_New_Cols", 2}} << tagHeader
        << Rows {{"1", "b,a,,c", "b", "a", "c"}, {"2", "x", "x", "", ""}, {"3", "", "", "", ""}}
        << "3 cols added" << QStringList {"'Max. values' is less than 'Min. values'."}
        << QStringList {"2 rows split into less than 'Min. values'=2 value(s), so padded to 2 "
                        "value(s)."};
    QTest::newRow("regex delimiter")
        << tags << QVariantMap {{"Delimiter_Type", "Regex delimiter"}, {"Delimiter", "[,;]+"}}
        << tagHeader
        << Rows {{"1", "b,a,,c", "b", "a", "c"}, {"2", "x", "x", "", ""}, {"3", "", "", "", ""}}
        << "3 cols added" << QStringList() << QStringList();
    QTest::newRow("multi-character text delimiter")
        << Rows {{"t"}, {"a::b:c"}} << QVariantMap {{"Delimiter", "::"}}
        << QStringList {"t", "t1", "t2"} << Rows {{"a::b:c", "a", "b:c"}} << "2 cols added"
        << QStringList() << QStringList();
    QTest::newRow("nothing to split: no new columns")
        << Rows {{"t"}, {""}, {""}} << QVariantMap {} << QStringList {"t"} << Rows {{""}, {""}}
        << "No changes" << QStringList() << QStringList();

    const Rows codes {{"code"}, {"AB1XYZ"}, {"CD2"}, {""}};
    const QVariantMap byLengths {{"Delimiter_Type", "Lengths"}};
    QVariantMap lengths = byLengths;
    lengths.insert("Lengths", "2,1,*");
    QTest::newRow("lengths") << codes << lengths << QStringList {"code", "code1", "code2", "code3"}
                             << Rows {{"AB1XYZ", "AB", "1", "XYZ"},
                                      {"CD2", "CD", "2", ""},
                                      {"", "", "", ""}}
                             << "3 cols added" << QStringList() << QStringList();
    lengths.insert("Lengths", " 2 , -1 , * ");
    QTest::newRow("lengths dropping one")
        << codes << lengths << QStringList {"code", "code1", "code2"}
        << Rows {{"AB1XYZ", "AB", "XYZ"}, {"CD2", "CD", ""}, {"", "", ""}} << "2 cols added"
        << QStringList() << QStringList();
    lengths.insert("Lengths", "*,2");
    QTest::newRow("rest before a width")
        << codes << lengths << QStringList {"code", "code1", "code2"}
        << Rows {{"AB1XYZ", "AB1X", "YZ"}, {"CD2", "C", "D2"}, {"", "", ""}} << "2 cols added"
        << QStringList() << QStringList();
    lengths.insert("Lengths", "-*,1");
    QTest::newRow("dropped rest keeps the last character")
        << codes << lengths << QStringList {"code", "code1"}
        << Rows {{"AB1XYZ", "Z"}, {"CD2", "2"}, {"", ""}} << "1 col added" << QStringList()
        << QStringList();
    lengths.insert("Lengths", "2,3");
    lengths.insert("Order", "Reverse");
    QTest::newRow("lengths without rest, reversed")
        << codes << lengths << QStringList {"code", "code1", "code2"}
        << Rows {{"AB1XYZ", "1XY", "AB"}, {"CD2", "2", "CD"}, {"", "", ""}} << "2 cols added"
        << QStringList() << QStringList();
    lengths.insert("Lengths", "2,*,*");
    lengths.remove("Order");
    QTest::newRow("two rests")
        << codes << lengths << QStringList {"code"} << Rows {{"AB1XYZ"}, {"CD2"}, {""}}
        << "No changes" << QStringList {"Badly formed 'Lengths' string: Only 1 '*' or '-*' allowed"}
        << QStringList();
    lengths.insert("Lengths", "2,-*,*");
    QTest::newRow("rest and dropped rest")
        << codes << lengths << QStringList {"code"} << Rows {{"AB1XYZ"}, {"CD2"}, {""}}
        << "No changes" << QStringList {"Badly formed 'Lengths' string: Only 1 '*' or '-*' allowed"}
        << QStringList();
    lengths.insert("Lengths", "2,x1");
    QTest::newRow("unexpected token")
        << codes << lengths << QStringList {"code"} << Rows {{"AB1XYZ"}, {"CD2"}, {""}}
        << "No changes" << QStringList {"Badly formed 'Lengths' string: unexpected token 'x1'"}
        << QStringList();
    lengths.insert("Lengths", "-3");
    QTest::newRow("lengths that yield nothing")
        << codes << lengths << QStringList {"code"} << Rows {{"AB1XYZ"}, {"CD2"}, {""}}
        << "No changes" << QStringList() << QStringList();
    // Bounds are for the delimiter types only.
    lengths.insert("Lengths", "1,1,1,1");
    lengths.insert("Max_New_Cols", 2);
    QTest::newRow("lengths ignore the maximum")
        << Rows {{"c"}, {"abcd"}} << lengths << QStringList {"c", "c1", "c2", "c3", "c4"}
        << Rows {{"abcd", "a", "b", "c", "d"}} << "4 cols added" << QStringList() << QStringList();
}

void TestTransformSplit::split()
{
    QFETCH(Rows, input);
    QFETCH(QVariantMap, options);
    QFETCH(QStringList, header);
    QFETCH(Rows, expected);
    QFETCH(QString, result);
    QFETCH(QStringList, warnings);
    QFETCH(QStringList, information);

    QScopedPointer<DataSource> node(makeDataSource(makeDataset(input)));
    TransformSplit split;
    split.createParameters({node.data()}, false);
    split.parameter("Columns")->setColumnId(node->dataset()->columnId(input.first().size() - 1));
    for (auto it = options.cbegin(); it != options.cend(); ++it) {
        QVERIFY2(split.parameter(it.key()), qPrintable(it.key()));
        split.parameter(it.key())->setValue(it.value());
    }
    const Dataset output = runTransform(split, {node.data()});
    QCOMPARE(output.headers(), header);
    QCOMPARE(output.rows(), expected);
    QCOMPARE(split.result(), result);
    QCOMPARE(split.warnings(), warnings);
    QCOMPARE(split.information(), information);
}

void TestTransformSplit::intoRowsRepeatsOtherCells()
{
    QScopedPointer<DataSource> node(makeDataSource(
        makeDataset({{"id", "tags", "n"}, {"1", "b,a,,c", "p"}, {"2", "x", "q"}, {"3", "", "r"}})));
    TransformSplit split;
    split.createParameters({node.data()}, false);
    split.parameter("Columns")->setColumnId(node->dataset()->columnId(1));
    split.parameter("Into")->setValue(QString("Rows"));
    const Dataset output = runTransform(split, {node.data()});
    QCOMPARE(output.headers(), QStringList({"id", "tags", "n"}));
    QCOMPARE(
        output.rows(),
        Rows({{"1", "b", "p"}, {"1", "a", "p"}, {"1", "c", "p"}, {"2", "x", "q"}, {"3", "", "r"}}));
    QCOMPARE(split.result(), QString("2 rows added"));
    QCOMPARE(output.columnIds(), node->dataset()->columnIds());

    split.parameter("Delimiter")->setValue(QString(";"));
    runTransform(split, {node.data()});
    QCOMPARE(split.result(), QString("No changes"));
}

void TestTransformSplit::newColumnsHaveNoIdsAndOldKeepTheirs()
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset({{"a", "b"}, {"x", "1,2"}})));
    TransformSplit split;
    split.createParameters({node.data()}, false);
    split.parameter("Columns")->setColumnId(node->dataset()->columnId(1));
    const Dataset output = runTransform(split, {node.data()});
    QCOMPARE(output.columnCount(), 4);
    QCOMPARE(output.columnId(0), node->dataset()->columnId(0));
    QCOMPARE(output.columnId(1), node->dataset()->columnId(1));
    QVERIFY(output.columnId(2).isNull());
    QVERIFY(output.columnId(3).isNull());
}

void TestTransformSplit::nothingToSplitWith_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("delimiter");
    QTest::addColumn<QStringList>("warnings");
    QTest::newRow("empty text delimiter") << "Text delimiter"
                                          << "" << QStringList {"1 option not set ('Delimiter')"};
    QTest::newRow("empty regex delimiter") << "Regex delimiter"
                                           << "" << QStringList {"1 option not set ('Delimiter')"};
    QTest::newRow("invalid regex")
        << "Regex delimiter"
        << "(" << QStringList {"Invalid regular expression '(': missing closing parenthesis"};
}

void TestTransformSplit::nothingToSplitWith()
{
    QFETCH(QString, type);
    QFETCH(QString, delimiter);
    QFETCH(QStringList, warnings);
    QScopedPointer<DataSource> node(makeDataSource(makeDataset({{"a"}, {"x,y"}})));
    TransformSplit split;
    split.createParameters({node.data()}, false);
    split.parameter("Delimiter_Type")->setValue(type);
    split.parameter("Delimiter")->setValue(delimiter);
    const Dataset output = runTransform(split, {node.data()});
    QVERIFY(output.equals(*node->dataset()));
    QCOMPARE(split.result(), QString("No changes"));
    QCOMPARE(split.warnings(), warnings);
}

void TestTransformSplit::lengthsParsing_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("cell");
    QTest::addColumn<QStringList>("parts");
    QTest::newRow("widths longer than the text") << "3,3"
                                                 << "abcd" << QStringList {"abc", "d"};
    QTest::newRow("text shorter than the first") << "3,*"
                                                 << "ab" << QStringList {"ab", ""};
    QTest::newRow("zero width") << "0,*"
                                << "ab" << QStringList {"", "ab"};
    QTest::newRow("middle rest") << "1,*,1"
                                 << "abcd" << QStringList {"a", "bc", "d"};
    QTest::newRow("empty elements skipped") << "1,,1,"
                                            << "ab" << QStringList {"a", "b"};
}

void TestTransformSplit::lengthsParsing()
{
    QFETCH(QString, text);
    QFETCH(QString, cell);
    QFETCH(QStringList, parts);
    QList<TransformSplit::Length> lengths;
    QString error;
    QVERIFY(TransformSplit::parseLengths(text, &lengths, &error));
    QCOMPARE(TransformSplit::splitByLengths(cell, lengths), parts);
}

void TestTransformSplit::unsetColumnWarnsAndCopies()
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset({{"a", "b"}, {"x,y", "z"}})));
    TransformSplit split;
    split.createParameters({node.data()}, false);
    const Dataset output = runTransform(split, {node.data()});
    QVERIFY(output.equals(*node->dataset()));
    QCOMPARE(split.result(), QString("No changes"));
    QCOMPARE(split.warnings(), QStringList({"1 option not set ('Column')"}));
}

void TestTransformSplit::lengthOptionsOnlyForLengths()
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset({{"a"}, {"abc"}})));
    TransformSplit split;
    split.createParameters({node.data()}, false);
    // A one-column input needs no choosing.
    QCOMPARE(split.parameter("Columns")->toColumnIndex(), 0);
    split.parameter("Delimiter_Type")->setValue(QString("Lengths"));
    split.parameter("Delimiter")->setValue(QString());
    split.parameter("Lengths")->setValue(QString("1,*"));
    const Dataset output = runTransform(split, {node.data()});
    QCOMPARE(output.rows(), Rows({{"abc", "a", "bc"}}));
    QVERIFY(split.warnings().isEmpty());
    QCOMPARE(split.isParameterEnabled("Delimiter"), false);
    QCOMPARE(split.isParameterEnabled("Max_New_Cols"), false);
    split.parameter("Delimiter_Type")->setValue(QString("Text delimiter"));
    QCOMPARE(split.isParameterEnabled("Lengths"), false);
    QCOMPARE(split.isParameterEnabled("Delimiter"), true);
}

QTEST_GUILESS_MAIN(TestTransformSplit)
#include "tst_transformsplit.moc"
