#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformimpute.h"

#include <QCoreApplication>
#include <QtTest>

// Impute: the three statistics over all rows, a tied mode, rows that match exactly or best,
// rows that match nothing, and columns that have nothing to give or nothing to fill.
class TestTransformImpute : public QObject
{
    Q_OBJECT

private slots:
    void impute_data();
    void impute();
};

// Rows 2, 5 and 8 lack a price, rows 4 and 8 a colour; note is empty throughout.
static Dataset cities()
{
    return makeDataset({{"city", "kind", "price", "colour", "note"},
                        {"Paris", "A", "10", "red", ""},
                        {"Paris", "A", "", "red", ""},
                        {"Paris", "B", "30", "blue", ""},
                        {"Rome", "A", "40", "", ""},
                        {"Rome", "B", "", "blue", ""},
                        {"Oslo", "C", "12", "blue", ""},
                        {"paris", "A", "50", "red", ""},
                        {"Lima", "Z", "", "", ""}});
}

void TestTransformImpute::impute_data()
{
    QTest::addColumn<QString>("column");
    QTest::addColumn<int>("using_");
    // Matching columns; none means all rows.
    QTest::addColumn<QStringList>("matching");
    QTest::addColumn<int>("matchType");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<QString>("result");

    using T = TransformImpute;
    const QStringList none;
    QTest::newRow("average of all rows")
        << "price" << int(T::Average) << none << 0 << true
        << QStringList {"10", "28.4", "30", "40", "28.4", "12", "50", "28.4"}
        << QStringList {"3 empty value(s) set to column 'price' average of 28.4"}
        << "3 changed, 5 unchanged";
    QTest::newRow("median of all rows")
        << "price" << int(T::Median) << none << 0 << true
        << QStringList {"10", "30", "30", "40", "30", "12", "50", "30"}
        << QStringList {"3 empty value(s) set to column 'price' median of 30"}
        << "3 changed, 5 unchanged";
    QTest::newRow("tied mode: the first met")
        << "colour" << int(T::Mode) << none << 0 << true
        << QStringList {"red", "red", "blue", "red", "blue", "blue", "red", "red"}
        << QStringList {"2 values occur 3 time(s) in column 'colour' and could be used as the "
                        "mode value:\n'red', 'blue'\nJust 'red' was used as the mode value",
                        "In column 'colour' 2 empty value(s) set to mode of 'red', which occurs "
                        "3 time(s) in 6 row(s)"}
        << "2 changed, 6 unchanged";
    QTest::newRow("exact match, case sensitive")
        << "price" << int(T::Average) << QStringList {"city"} << int(T::ExactMatch) << true
        << QStringList {"10", "20", "30", "40", "40", "12", "50", ""}
        << QStringList {"No matches for row 8, value(s)='Lima'",
                        "1 empty value(s) not imputed in column 'price'"}
        << "2 changed, 6 unchanged";
    QTest::newRow("exact match, case folded")
        << "price" << int(T::Average) << QStringList {"city"} << int(T::ExactMatch) << false
        << QStringList {"10", "30", "30", "40", "40", "12", "50", ""}
        << QStringList {"No matches for row 8, value(s)='Lima'",
                        "1 empty value(s) not imputed in column 'price'"}
        << "2 changed, 6 unchanged";
    // Row 2 matches row 1 in both columns; row 5 matches rows 3 and 4 in one each, and their
    // tie of modes goes to the first row; row 8 matches no row in any column.
    QTest::newRow("best match") << "price" << int(T::Mode) << QStringList {"city", "kind"}
                                << int(T::BestMatch) << true
                                << QStringList {"10", "10", "30", "40", "30", "12", "50", ""}
                                << QStringList {"No matches for row 8, value(s)='Lima', 'Z'",
                                                "1 empty value(s) not imputed in column 'price'"}
                                << "2 changed, 6 unchanged";
    QTest::newRow("exact match of the same columns finds less")
        << "price" << int(T::Mode) << QStringList {"city", "kind"} << int(T::ExactMatch) << true
        << QStringList {"10", "10", "30", "40", "", "12", "50", ""}
        << QStringList {"No matches for row 5, value(s)='Rome', 'B'",
                        "No matches for row 8, value(s)='Lima', 'Z'",
                        "2 empty value(s) not imputed in column 'price'"}
        << "1 changed, 7 unchanged";
    QTest::newRow("no empty values")
        << "kind" << int(T::Mode) << none << 0 << true
        << QStringList {"A", "A", "B", "A", "B", "C", "A", "Z"}
        << QStringList {"Column 'kind' has no empty values to impute"} << "No changes";
    QTest::newRow("no numbers for an average")
        << "colour" << int(T::Average) << none << 0 << true
        << QStringList {"red", "red", "blue", "", "blue", "blue", "red", ""}
        << QStringList {"No numeric values in column 'colour' to set average of 2 empty value(s)"}
        << "No changes";
    QTest::newRow("no values for a mode")
        << "note" << int(T::Mode) << none << 0 << true
        << QStringList {"", "", "", "", "", "", "", ""}
        << QStringList {"No non-empty values in column 'note' to set mode of 8 empty values"}
        << "No changes";
    QTest::newRow("no values for a median")
        << "note" << int(T::Median) << none << 0 << true
        << QStringList {"", "", "", "", "", "", "", ""}
        << QStringList {"No non-empty values in column 'note' to impute 8 empty values"}
        << "No changes";
}

void TestTransformImpute::impute()
{
    QFETCH(QString, column);
    QFETCH(int, using_);
    QFETCH(QStringList, matching);
    QFETCH(int, matchType);
    QFETCH(bool, caseSensitive);
    QFETCH(QStringList, expected);
    QFETCH(QStringList, messages);
    QFETCH(QString, result);

    const Dataset input = cities();
    QScopedPointer<DataSource> node(makeDataSource(input));
    const Dataset &data = *node->dataset();
    const int c = data.headers().indexOf(column);
    TransformImpute transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Columns")->setColumns({data.columnId(c)});
    const auto choose = [&transform](const char *key, int index) {
        Parameter *p = transform.parameter(key);
        p->setValue(p->options().toStringList().at(index));
    };
    choose("Using", using_);
    choose("Of", matching.isEmpty() ? TransformImpute::AllRows : TransformImpute::MatchingRows);
    choose("Match_Type", matchType);
    QList<ColumnId> ids;
    for (const QString &name : qAsConst(matching))
        ids.append(data.columnId(data.headers().indexOf(name)));
    transform.parameter("Matching_Columns")->setColumns(ids);
    transform.parameter("Case_Sensitive")->setValue(caseSensitive);

    const Dataset output = runTransform(transform, {node.data()});
    QCOMPARE(output.columnValues(c), expected);
    for (int other = 0; other < input.columnCount(); ++other) {
        if (other != c)
            QCOMPARE(output.columnValues(other), input.columnValues(other));
    }
    QCOMPARE(transform.information() + transform.warnings(), messages);
    QCOMPARE(transform.result(), result);
}

QTEST_GUILESS_MAIN(TestTransformImpute)
#include "tst_transformimpute.moc"
