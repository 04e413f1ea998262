#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformreshape.h"
#include "transforms/transformtranspose.h"

#include <QCoreApplication>
#include <QtTest>

using Rows = QList<QStringList>;

// Transpose and Reshape: the two transforms that lay all cells out anew.
class TestTransformTranspose : public QObject
{
    Q_OBJECT

private slots:
    void transpose_data();
    void transpose();
    void transposeTwiceGivesInputBack();
    void reshape_data();
    void reshape();
    void reshapeKeepsIdsInPlace();
};

void TestTransformTranspose::transpose_data()
{
    QTest::addColumn<Rows>("input");
    QTest::addColumn<bool>("withHeader");
    QTest::addColumn<bool>("headerOption");
    QTest::addColumn<bool>("outputHasHeader");
    QTest::addColumn<QStringList>("header");
    QTest::addColumn<Rows>("expected");
    QTest::addColumn<QString>("result");

    const Rows data {{"name", "a", "b"}, {"x", "1", "2"}, {"y", "3", "4"}};
    QTest::newRow("header to header")
        << data << true << true << true << QStringList {"name", "x", "y"}
        << Rows {{"a", "1", "3"}, {"b", "2", "4"}} << "Transposed";
    QTest::newRow("header to first column")
        << data << true << false << false << QStringList {"1", "2", "3"}
        << Rows {{"name", "x", "y"}, {"a", "1", "3"}, {"b", "2", "4"}} << "Transposed";
    QTest::newRow("no header, first row becomes header")
        << data << false << true << true << QStringList {"name", "x", "y"}
        << Rows {{"a", "1", "3"}, {"b", "2", "4"}} << "Transposed";
    QTest::newRow("header only") << Rows {{"p", "q"}} << true << false << false << QStringList {"1"}
                                 << Rows {{"p"}, {"q"}} << "Transposed";
    QTest::newRow("empty") << Rows {} << false << true << false << QStringList {} << Rows {}
                           << "No changes";
    // An empty name is read as it displays: the column's number.
    QTest::newRow("empty header name")
        << Rows {{"k", ""}, {"v", "w"}} << true << false << false << QStringList {"1", "2"}
        << Rows {{"k", "v"}, {"2", "w"}} << "Transposed";
}

void TestTransformTranspose::transpose()
{
    QFETCH(Rows, input);
    QFETCH(bool, withHeader);
    QFETCH(bool, headerOption);
    QFETCH(bool, outputHasHeader);
    QFETCH(QStringList, header);
    QFETCH(Rows, expected);
    QFETCH(QString, result);

    QScopedPointer<DataSource> node(makeDataSource(makeDataset(input, withHeader)));
    TransformTranspose transpose;
    transpose.createParameters({node.data()}, false);
    transpose.parameter("Header")->setValue(headerOption);
    const Dataset output = runTransform(transpose, {node.data()});
    QCOMPARE(output.hasHeader(), outputHasHeader);
    QCOMPARE(output.headers(), header);
    QCOMPARE(output.rows(), expected);
    QCOMPARE(transpose.result(), result);
    for (int c = 0; c < output.columnCount(); ++c)
        QVERIFY(output.columnId(c).isNull());
}

void TestTransformTranspose::transposeTwiceGivesInputBack()
{
    Dataset data;
    data.setColumnCount(3);
    data.setHeader({"id", "name", "city"});
    for (int r = 0; r < 1500; ++r)
        data.appendRow({QString::number(r), QStringLiteral("n%1").arg(r % 7), "c"}, true);
    QScopedPointer<DataSource> first(makeDataSource(data));
    TransformTranspose transpose;
    transpose.createParameters({first.data()}, true);
    QVERIFY(transpose.parameter("Header")->toBool());
    const Dataset once = runTransform(transpose, {first.data()});
    QCOMPARE(once.columnCount(), 1501);
    QCOMPARE(once.rowCount(), 2);
    QScopedPointer<DataSource> second(makeDataSource(once));
    const Dataset twice = runTransform(transpose, {second.data()});
    QVERIFY(twice.equals(data));
}

void TestTransformTranspose::reshape_data()
{
    QTest::addColumn<Rows>("input");
    QTest::addColumn<int>("newSize");
    QTest::addColumn<QStringList>("header");
    QTest::addColumn<Rows>("expected");
    QTest::addColumn<QString>("result");

    const Rows data {{"a", "b", "c"}, {"1", "2", "3"}, {"4", "5", "6"}};
    QTest::newRow("narrower, dividing")
        << data << 2 << QStringList {"a", "b"} << Rows {{"1", "2"}, {"3", "4"}, {"5", "6"}}
        << "Changed to 2 cols x 3 rows";
    QTest::newRow("narrower, tail left empty")
        << data << 4 << QStringList {"a", "b", "c", "4"}
        << Rows {{"1", "2", "3", "4"}, {"5", "6", "", ""}} << "Changed to 4 cols x 2 rows";
    QTest::newRow("one column") << data << 1 << QStringList {"a"}
                                << Rows {{"1"}, {"2"}, {"3"}, {"4"}, {"5"}, {"6"}}
                                << "Changed to 1 cols x 6 rows";
    QTest::newRow("wider than all cells")
        << data << 8 << QStringList {"a", "b", "c", "4", "5", "6", "7", "8"}
        << Rows {{"1", "2", "3", "4", "5", "6", "", ""}} << "Changed to 8 cols x 1 rows";
    QTest::newRow("same width") << data << 3 << QStringList {"a", "b", "c"}
                                << Rows {{"1", "2", "3"}, {"4", "5", "6"}} << "No changes";
    QTest::newRow("no rows") << Rows {{"a", "b"}} << 1 << QStringList {"a", "b"} << Rows {}
                             << "No changes";
}

void TestTransformTranspose::reshape()
{
    QFETCH(Rows, input);
    QFETCH(int, newSize);
    QFETCH(QStringList, header);
    QFETCH(Rows, expected);
    QFETCH(QString, result);

    QScopedPointer<DataSource> node(makeDataSource(makeDataset(input)));
    TransformReshape reshape;
    reshape.createParameters({node.data()}, false);
    QCOMPARE(reshape.parameter("New_Size")->toInt(), input.first().size());
    reshape.parameter("New_Size")->setValue(newSize);
    const Dataset output = runTransform(reshape, {node.data()});
    QCOMPARE(output.headers(), header);
    QCOMPARE(output.rows(), expected);
    QCOMPARE(reshape.result(), result);
    QVERIFY(reshape.warnings().isEmpty());
}

void TestTransformTranspose::reshapeKeepsIdsInPlace()
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset({{"1", "2", "3"}, {"a", "b", "c"}}, false)));
    const Dataset &input = *node->dataset();
    TransformReshape reshape;
    reshape.createParameters({node.data()}, false);
    reshape.parameter("New_Size")->setValue(5);
    Dataset output = runTransform(reshape, {node.data()});
    QVERIFY(!output.hasHeader());
    QCOMPARE(output.rows(), Rows({{"1", "2", "3", "a", "b"}, {"c", "", "", "", ""}}));
    QCOMPARE(output.columnIds().mid(0, 3), input.columnIds());
    QVERIFY(output.columnId(3).isNull());
    reshape.parameter("New_Size")->setValue(2);
    output = runTransform(reshape, {node.data()});
    QCOMPARE(output.columnIds(), input.columnIds().mid(0, 2));
}

QTEST_GUILESS_MAIN(TestTransformTranspose)
#include "tst_transformtranspose.moc"
