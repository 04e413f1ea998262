#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformfilldown.h"
#include "transforms/transformslide.h"
#include "transforms/transformunfill.h"

#include <QCoreApplication>
#include <QtTest>

// Fill, Unfill and Slide: the transforms that move values between neighbouring cells, in the
// four directions and with the key rule.
class TestTransformFillDown : public QObject
{
    Q_OBJECT

private slots:
    void fill_data();
    void fill();
    void fillLeavesEmptyFirstRowEmpty();
    void fillKeepsUntouchedRowsShared();
    void unfill_data();
    void unfill();
    void unfillDistinctValuesChangesNothing();
    void slide_data();
    void slide();
    void keyRuleOptionsFollowDirection();
    void missingKeyColumnChangesNothingAndWarns();
    void wrongInputCountGivesEmptyResult();

private:
    // Runs transform on data with the named columns selected; returns the output columns.
    static QList<QStringList> run(AdjacentCellsTransform &transform, const Dataset &data,
                                  const QList<int> &columns, const QString &direction, bool byKey,
                                  const QList<int> &shown);
};

QList<QStringList> TestTransformFillDown::run(AdjacentCellsTransform &transform,
                                              const Dataset &data, const QList<int> &columns,
                                              const QString &direction, bool byKey,
                                              const QList<int> &shown)
{
    QScopedPointer<DataSource> input(makeDataSource(data));
    transform.createParameters({input.data()}, false);
    QList<ColumnId> ids;
    for (int c : columns)
        ids.append(input->dataset()->columnId(c));
    transform.parameter("Columns")->setColumns(ids);
    transform.parameter("Direction")->setValue(direction);
    transform.parameter("For")->setValue(byKey ? QString("Rows with same key value")
                                               : QString("All rows"));
    transform.parameter("Key_Column")->setColumnId(input->dataset()->columnId(0));
    const Dataset output = runTransform(transform, {input.data()});
    QList<QStringList> result;
    for (int c : shown)
        result.append(output.columnValues(c));
    return result;
}

// key, a, b, c
static Dataset fillData()
{
    return makeDataset({{"key", "a", "b", "c"},
                        {"k1", "", "x", ""},
                        {"k1", "1", "", ""},
                        {"k1", "", "", "y"},
                        {"k2", "", "", ""},
                        {"k2", "2", "z", ""}});
}

void TestTransformFillDown::fill_data()
{
    QTest::addColumn<QString>("direction");
    QTest::addColumn<bool>("byKey");
    QTest::addColumn<QList<QStringList>>("expected"); // columns a, b, c
    QTest::addColumn<QString>("result");

    const QStringList cUnchanged {"", "", "y", "", ""};
    QTest::newRow("down") << "Down" << false
                          << QList<QStringList> {{"", "1", "1", "1", "2"},
                                                 {"x", "x", "x", "x", "z"},
                                                 cUnchanged}
                          << "5 changed, 5 unchanged";
    QTest::newRow("down by key") << "Down" << true
                                 << QList<QStringList> {{"", "1", "1", "", "2"},
                                                        {"x", "x", "x", "", "z"},
                                                        cUnchanged}
                                 << "3 changed, 7 unchanged";
    QTest::newRow("up") << "Up" << false
                        << QList<QStringList> {{"1", "1", "2", "2", "2"},
                                               {"x", "z", "z", "z", "z"},
                                               cUnchanged}
                        << "6 changed, 4 unchanged";
    QTest::newRow("up by key") << "Up" << true
                               << QList<QStringList> {{"1", "1", "", "2", "2"},
                                                      {"x", "", "", "z", "z"},
                                                      cUnchanged}
                               << "3 changed, 7 unchanged";
}

void TestTransformFillDown::fill()
{
    QFETCH(QString, direction);
    QFETCH(bool, byKey);
    QFETCH(QList<QStringList>, expected);
    QFETCH(QString, result);

    TransformFillDown transform;
    QCOMPARE(run(transform, fillData(), {1, 2}, direction, byKey, {1, 2, 3}), expected);
    QCOMPARE(transform.result(), result);
    QVERIFY(transform.warnings().isEmpty());
}

void TestTransformFillDown::fillLeavesEmptyFirstRowEmpty()
{
    // Sideways along a, b, c; the key rule has no meaning across a row and is ignored.
    TransformFillDown right;
    QCOMPARE(run(right, fillData(), {1, 2, 3}, "Right", true, {1, 2, 3}),
             (QList<QStringList> {
                 {"", "1", "", "", "2"}, {"x", "1", "", "", "z"}, {"x", "1", "y", "", "z"}}));
    QCOMPARE(right.result(), QString("4 changed, 11 unchanged"));
    TransformFillDown left;
    QCOMPARE(run(left, fillData(), {1, 2, 3}, "Left", false, {1, 2, 3}),
             (QList<QStringList> {
                 {"x", "1", "y", "", "2"}, {"x", "", "y", "", "z"}, {"", "", "y", "", ""}}));
    QCOMPARE(left.result(), QString("3 changed, 12 unchanged"));

    // Nothing is above the first row, so an empty first row stays empty.
    TransformFillDown down;
    const Dataset data = makeDataset({{"a", "b"}, {"", ""}, {"1", ""}, {"", "2"}});
    QCOMPARE(run(down, data, {0, 1}, "Down", false, {0, 1}),
             (QList<QStringList> {{"", "1", "1"}, {"", "", "2"}}));
    QCOMPARE(down.result(), QString("1 changed, 5 unchanged"));
}

void TestTransformFillDown::fillKeepsUntouchedRowsShared()
{
    Dataset big;
    big.setColumnCount(2);
    big.setHeader({"a", "b"});
    for (int r = 0; r < 3000; ++r)
        big.appendRow({r % 3 == 0 ? QString::number(r) : QString(), "same"}, true);
    QScopedPointer<DataSource> input(makeDataSource(big));
    TransformFillDown transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Columns")->setColumns({input->dataset()->columnId(0)});
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(transform.result(), QString("2,000 changed, 1,000 unchanged"));
    const Dataset *source = input->dataset();
    for (int r = 0; r < 3000; ++r) {
        QCOMPARE(output.cell(r, 0), QString::number(r - r % 3));
        QCOMPARE(&output.row(r).at(1) == &source->row(r).at(1), r % 3 == 0);
    }
}

void TestTransformFillDown::unfill_data()
{
    QTest::addColumn<QString>("direction");
    QTest::addColumn<bool>("byKey");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("result");

    QTest::newRow("down") << "Down" << false << QStringList {"a", "", "", "", "b", "", ""}
                          << "3 changed, 4 unchanged";
    QTest::newRow("down by key") << "Down" << true << QStringList {"a", "", "", "a", "b", "", ""}
                                 << "2 changed, 5 unchanged";
    QTest::newRow("up") << "Up" << false << QStringList {"", "", "", "a", "b", "", ""}
                        << "3 changed, 4 unchanged";
    QTest::newRow("up by key") << "Up" << true << QStringList {"", "", "a", "a", "b", "", ""}
                               << "2 changed, 5 unchanged";
}

void TestTransformFillDown::unfill()
{
    QFETCH(QString, direction);
    QFETCH(bool, byKey);
    QFETCH(QStringList, expected);
    QFETCH(QString, result);

    const Dataset data = makeDataset({{"key", "v"},
                                      {"k1", "a"},
                                      {"k1", "a"},
                                      {"k1", "a"},
                                      {"k2", "a"},
                                      {"k2", "b"},
                                      {"k2", ""},
                                      {"k2", ""}});
    TransformUnfill transform;
    QCOMPARE(run(transform, data, {1}, direction, byKey, {1}), QList<QStringList> {expected});
    QCOMPARE(transform.result(), result);
}

void TestTransformFillDown::unfillDistinctValuesChangesNothing()
{
    const Dataset data = makeDataset({{"a", "b"}, {"1", "2"}, {"2", "1"}, {"1", "3"}});
    for (const QString direction : {"Down", "Up", "Left", "Right"}) {
        TransformUnfill transform;
        run(transform, data, {0, 1}, direction, false, {});
        QCOMPARE(transform.result(), QString("No changes"));
    }
    // Sideways: the second of two equal neighbours in the direction of travel goes.
    const Dataset pairs = makeDataset({{"a", "b", "c"}, {"x", "x", "x"}, {"x", "y", "y"}});
    TransformUnfill right;
    QCOMPARE(run(right, pairs, {0, 1, 2}, "Right", false, {0, 1, 2}),
             (QList<QStringList> {{"x", "x"}, {"", "y"}, {"", ""}}));
    QCOMPARE(right.result(), QString("3 changed, 3 unchanged"));
    TransformUnfill left;
    QCOMPARE(run(left, pairs, {0, 1, 2}, "Left", false, {0, 1, 2}),
             (QList<QStringList> {{"", "x"}, {"", ""}, {"x", "y"}}));
}

void TestTransformFillDown::slide_data()
{
    QTest::addColumn<QString>("direction");
    QTest::addColumn<QList<int>>("columns");
    QTest::addColumn<QList<QStringList>>("expected"); // columns a, b, c
    QTest::addColumn<QString>("result");

    QTest::newRow("left") << "Left" << QList<int> {0, 1, 2}
                          << QList<QStringList> {{"p", "q", "", "s"},
                                                 {"", "r", "", "t"},
                                                 {"", "", "", "u"}}
                          << "2 rows changed";
    QTest::newRow("right") << "Right" << QList<int> {0, 1, 2}
                           << QList<QStringList> {{"", "", "", "s"},
                                                  {"", "q", "", "t"},
                                                  {"p", "r", "", "u"}}
                           << "2 rows changed";
    QTest::newRow("left over a and c only")
        << "Left" << QList<int> {0, 2}
        << QList<QStringList> {{"", "q", "", "s"}, {"p", "", "", "t"}, {"", "r", "", "u"}}
        << "No changes";
    QTest::newRow("up") << "Up" << QList<int> {0, 1, 2}
                        << QList<QStringList> {{"q", "s", "", ""},
                                               {"p", "t", "", ""},
                                               {"r", "u", "", ""}}
                        << "3 columns changed";
    QTest::newRow("down") << "Down" << QList<int> {0, 1, 2}
                          << QList<QStringList> {{"", "", "q", "s"},
                                                 {"", "", "p", "t"},
                                                 {"", "", "r", "u"}}
                          << "3 columns changed";
    QTest::newRow("up one column")
        << "Up" << QList<int> {1}
        << QList<QStringList> {{"", "q", "", "s"}, {"p", "t", "", ""}, {"", "r", "", "u"}}
        << "1 column changed";
}

void TestTransformFillDown::slide()
{
    QFETCH(QString, direction);
    QFETCH(QList<int>, columns);
    QFETCH(QList<QStringList>, expected);
    QFETCH(QString, result);

    const Dataset data = makeDataset(
        {{"a", "b", "c"}, {"", "p", ""}, {"q", "", "r"}, {"", "", ""}, {"s", "t", "u"}});
    TransformSlide transform;
    QCOMPARE(run(transform, data, columns, direction, false, {0, 1, 2}), expected);
    QCOMPARE(transform.result(), result);
}

void TestTransformFillDown::keyRuleOptionsFollowDirection()
{
    // Sliding up by key packs each run of equal keys on its own.
    const Dataset data
        = makeDataset({{"key", "v"}, {"k1", ""}, {"k1", "x"}, {"k2", ""}, {"k2", "y"}, {"k2", ""}});
    TransformSlide slide;
    QCOMPARE(run(slide, data, {1}, "Up", true, {1}),
             QList<QStringList> {QStringList({"x", "", "y", "", ""})});
    QCOMPARE(slide.result(), QString("1 column changed"));

    const auto states = [&](const QString &direction, const QString &forRows) {
        slide.parameter("Direction")->setValue(direction);
        slide.parameter("For")->setValue(forRows);
        QStringList enabled;
        for (const ParameterState &state : slide.parameterStates())
            enabled << QString("%1=%2").arg(state.key).arg(state.enabled);
        return enabled;
    };
    QCOMPARE(states("Down", "All rows"), QStringList({"For=1", "Key_Column=0"}));
    QCOMPARE(states("Up", "Rows with same key value"), QStringList({"For=1", "Key_Column=1"}));
    QCOMPARE(states("Left", "Rows with same key value"), QStringList({"For=0", "Key_Column=0"}));
}

void TestTransformFillDown::missingKeyColumnChangesNothingAndWarns()
{
    QScopedPointer<DataSource> input(makeDataSource(fillData()));
    TransformFillDown transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Columns")->setColumns({input->dataset()->columnId(1)});
    transform.parameter("For")->setValue(QString("Rows with same key value"));
    const Dataset output = runTransform(transform, {input.data()});
    QVERIFY(output.equals(*input->dataset()));
    QCOMPARE(transform.result(), QString("No changes"));
    QCOMPARE(transform.warnings(), QStringList({"1 option not set ('Key column')"}));

    // The unset key is no concern while it is disabled.
    transform.parameter("For")->setValue(QString("All rows"));
    runTransform(transform, {input.data()});
    QVERIFY(transform.warnings().isEmpty());
    QCOMPARE(transform.result(), QString("2 changed, 3 unchanged"));
}

void TestTransformFillDown::wrongInputCountGivesEmptyResult()
{
    QScopedPointer<DataSource> a(makeDataSource(fillData()));
    QScopedPointer<DataSource> b(makeDataSource(fillData()));
    TransformUnfill transform;
    transform.createParameters({a.data()}, false);
    QCOMPARE(runTransform(transform, {a.data(), b.data()}).columnCount(), 0);
    QCOMPARE(runTransform(transform, {}).columnCount(), 0);
}

QTEST_GUILESS_MAIN(TestTransformFillDown)
#include "tst_transformfilldown.moc"
