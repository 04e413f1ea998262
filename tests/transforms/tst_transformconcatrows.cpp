#include "testdata.h"
#include "transforms/framework/comparisonoperator.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformconcatrows.h"

#include <QCoreApplication>
#include <QtTest>

using Rows = QList<QStringList>;

namespace {

QString op(int value)
{
    return ComparisonOperator::displayText(value);
}

} // namespace

// Concat Rows in its three modes.
class TestTransformConcatRows : public QObject
{
    Q_OBJECT

private slots:
    void concat_data();
    void concat();
    void firstBlockKeepsIds();
    void unsetKeyWarnsOnlyByKey();
};

void TestTransformConcatRows::concat_data()
{
    QTest::addColumn<Rows>("input");
    QTest::addColumn<QVariantMap>("options");
    QTest::addColumn<QStringList>("header");
    QTest::addColumn<Rows>("expected");
    QTest::addColumn<QString>("result");

    const Rows pairs {{"a", "b"}, {"1", "x"}, {"2", "y"}, {"3", "z"}};
    QTest::newRow("fixed 2") << pairs << QVariantMap {{"Rows", 2}}
                             << QStringList {"a", "b", "a 2", "b 2"}
                             << Rows {{"1", "x", "2", "y"}, {"3", "z", "", ""}}
                             << "3 rows concatenated into 2";
    QTest::newRow("fixed 3") << pairs << QVariantMap {{"Rows", 3}}
                             << QStringList {"a", "b", "a 2", "b 2", "a 3", "b 3"}
                             << Rows {{"1", "x", "2", "y", "3", "z"}}
                             << "3 rows concatenated into 1";
    QTest::newRow("fixed 1") << pairs << QVariantMap {{"Rows", 1}} << QStringList {"a", "b"}
                             << pairs.mid(1) << "3 rows concatenated into 3";

    const Rows keyed {{"k", "v"}, {"A", "1"}, {"a", "2"}, {"B", "3"}, {"A", "4"}};
    QTest::newRow("by key") << keyed << QVariantMap {{"Mode", "By key"}}
                            << QStringList {"k", "v", "v 2"}
                            << Rows {{"A", "1", "2"}, {"B", "3", ""}, {"A", "4", ""}}
                            << "4 rows concatenated into 3";
    QTest::newRow("by key, key repeated")
        << keyed << QVariantMap {{"Mode", "By key"}, {"Repeat_Key_Column", true}}
        << QStringList {"k", "v", "k 2", "v 2"}
        << Rows {{"A", "1", "a", "2"}, {"B", "3", "", ""}, {"A", "4", "", ""}}
        << "4 rows concatenated into 3";
    QTest::newRow("by key, case sensitive")
        << keyed << QVariantMap {{"Mode", "By key"}, {"Case_Sensitive", true}}
        << QStringList {"k", "v"} << keyed.mid(1) << "4 rows concatenated into 4";

    const Rows records {{"line"}, {"Record"}, {"a"}, {"b"}, {"record"}, {"c"}};
    QVariantMap until {
        {"Mode", "Variable"}, {"Matches", op(ComparisonOperator::EqualTo)}, {"Value", "Record"}};
    QTest::newRow("until, omit") << records << until << QStringList {"line", "2"}
                                 << Rows {{"a", "b"}, {"c", ""}} << "5 rows concatenated into 2";
    until.insert("Concat_Value", "Add to row start");
    QTest::newRow("until, value at start")
        << records << until << QStringList {"line", "2", "3"}
        << Rows {{"Record", "a", "b"}, {"record", "c", ""}} << "5 rows concatenated into 2";
    until.insert("Concat_Value", "Add to row end");
    QTest::newRow("until, value at end")
        << records << until << QStringList {"line", "2", "3"}
        << Rows {{"a", "b", "Record"}, {"c", "record", ""}} << "5 rows concatenated into 2";
    until.insert("Case_Sensitive", true);
    QTest::newRow("until, case sensitive, rows before the first mark")
        << Rows {{"line"}, {"x"}, {"Record"}, {"record"}} << until << QStringList {"line", "2"}
        << Rows {{"x", ""}, {"record", "Record"}} << "3 rows concatenated into 2";

    const QVariantMap whileIndented {{"Mode", "Variable"},
                                     {"While_Or_Until", "While"},
                                     {"Matches", op(ComparisonOperator::StartsWith)},
                                     {"Value", " "},
                                     {"Concat_Value", "Add to row start"}};
    QTest::newRow("while continued")
        << Rows {{"t", "u"}, {"John", "1"}, {" a", "2"}, {" b", "3"}, {"Mary", "4"}}
        << whileIndented << QStringList {"t", "u", "3", "4", "5", "6"}
        << Rows {{"John", "1", " a", "2", " b", "3"}, {"Mary", "4", "", "", "", ""}}
        << "4 rows concatenated into 2";
    QTest::newRow("until an empty first cell")
        << Rows {{"t"}, {"a"}, {"b"}, {""}, {"c"}}
        << QVariantMap {{"Mode", "Variable"}, {"Matches", op(ComparisonOperator::IsEmpty)}}
        << QStringList {"t", "2"} << Rows {{"a", "b"}, {"c", ""}} << "4 rows concatenated into 2";
    // A term that needs a value and has none is no condition at all.
    QTest::newRow("contains nothing")
        << records
        << QVariantMap {{"Mode", "Variable"}, {"Matches", op(ComparisonOperator::Contains)}}
        << QStringList {"line"} << records.mid(1) << "No changes";
    QTest::newRow("empty input") << Rows {{"a"}} << QVariantMap {} << QStringList {"a"} << Rows {}
                                 << "No changes";
}

void TestTransformConcatRows::concat()
{
    QFETCH(Rows, input);
    QFETCH(QVariantMap, options);
    QFETCH(QStringList, header);
    QFETCH(Rows, expected);
    QFETCH(QString, result);

    QScopedPointer<DataSource> node(makeDataSource(makeDataset(input)));
    TransformConcatRows concat;
    concat.createParameters({node.data()}, false);
    concat.parameter("Key_Column")->setColumnId(node->dataset()->columnId(0));
    for (auto it = options.cbegin(); it != options.cend(); ++it) {
        QVERIFY2(concat.parameter(it.key()), qPrintable(it.key()));
        concat.parameter(it.key())->setValue(it.value());
    }
    const Dataset output = runTransform(concat, {node.data()});
    QCOMPARE(output.headers(), header);
    QCOMPARE(output.rows(), expected);
    QCOMPARE(concat.result(), result);
    QVERIFY(concat.warnings().isEmpty());
}

void TestTransformConcatRows::firstBlockKeepsIds()
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset({{"a", "b"}, {"1", "2"}, {"3", "4"}})));
    TransformConcatRows concat;
    concat.createParameters({node.data()}, false);
    const Dataset output = runTransform(concat, {node.data()});
    QCOMPARE(output.columnCount(), 4);
    QCOMPARE(output.columnIds().mid(0, 2), node->dataset()->columnIds());
    QVERIFY(output.columnId(2).isNull());
}

void TestTransformConcatRows::unsetKeyWarnsOnlyByKey()
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset({{"a", "b"}, {"1", "2"}, {"1", "4"}})));
    TransformConcatRows concat;
    concat.createParameters({node.data()}, false);
    runTransform(concat, {node.data()});
    QVERIFY(concat.warnings().isEmpty());
    concat.parameter("Mode")->setValue(QString("By key"));
    const Dataset output = runTransform(concat, {node.data()});
    QVERIFY(output.equals(*node->dataset()));
    QCOMPARE(concat.result(), QString("No changes"));
    QCOMPARE(concat.warnings(), QStringList({"1 option not set ('Key column')"}));
}

QTEST_GUILESS_MAIN(TestTransformConcatRows)
#include "tst_transformconcatrows.moc"
