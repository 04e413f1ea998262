#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/nametables.h"
#include "transforms/transformsplitname.h"

#include <QCoreApplication>
#include <QtTest>

// Split Name: honorifics and suffixes taken off, first, middle and last names shared out,
// with names written last name first, names of several last names, the user's own words, and
// parts switched off.
class TestTransformSplitName : public QObject
{
    Q_OBJECT

private slots:
    void tables();
    void names_data();
    void names();
    void partsSwitchedOff_data();
    void partsSwitchedOff();
    void columnsAndMessages();

private:
    struct Run
    {
        Dataset output;
        QString result;
        QStringList information;
    };
    // Splits the names of column 1 of a table of ids and names, with options set by setUp.
    static Run split(const QStringList &names, const std::function<void(Transform &)> &setUp);
};

TestTransformSplitName::Run
TestTransformSplitName::split(const QStringList &names,
                              const std::function<void(Transform &)> &setUp)
{
    QList<QStringList> rows {{"id", "name"}};
    for (int i = 0; i < names.size(); ++i)
        rows.append({QString::number(i + 1), names.at(i)});
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(rows)));
    TransformSplitName transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Column")->setColumnId(node->dataset()->columnId(1));
    setUp(transform);
    return {runTransform(transform, {node.data()}), transform.result(), transform.information()};
}

void TestTransformSplitName::tables()
{
    for (const QStringList *table : {&NameTables::honorifics(), &NameTables::suffixes()}) {
        QStringList sorted = *table;
        sorted.sort();
        sorted.removeDuplicates();
        QCOMPARE(*table, sorted);
        for (const QString &word : *table)
            QCOMPARE(NameTables::tableForm(word), word);
    }
    QCOMPARE(NameTables::honorifics().size(), 168);
    QCOMPARE(NameTables::honorifics().mid(0, 6),
             QStringList({"admiral", "air", "airman", "alderman", "ambassador", "archbishop"}));
    QCOMPARE(NameTables::suffixes().mid(0, 6),
             QStringList({"adc", "ae", "afc", "afm", "am", "aprn"}));
    for (const char *suffix : {"i", "ii", "iii", "iv", "jr", "esq", "phd"})
        QVERIFY(NameTables::suffixes().contains(QString::fromLatin1(suffix)));
    for (const char *honorific : {"dr", "frau", "herr", "mr", "mrs", "ms", "sir", "rev"})
        QVERIFY(NameTables::honorifics().contains(QString::fromLatin1(honorific)));
}

void TestTransformSplitName::names_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("lastCount");
    QTest::addColumn<QStringList>("parts"); // honorific, first, middle, last, suffix

    QTest::newRow("plain") << "John Smith" << 1 << QStringList {"", "John", "", "Smith", ""};
    QTest::newRow("with a dot, and a middle name")
        << "Dr. John Quincy Adams" << 1 << QStringList {"Dr.", "John", "Quincy", "Adams", ""};
    QTest::newRow("several honorifics and suffixes")
        << "Lt Col Jane Doe, Ph.D., MBE" << 1
        << QStringList {"Lt Col", "Jane", "", "Doe", "Ph.D. MBE"};
    QTest::newRow("suffixes of any case")
        << "mr john paul jones JR" << 1 << QStringList {"mr", "john", "paul", "jones", "JR"};
    QTest::newRow("last name first")
        << "Smith, John" << 1 << QStringList {"", "John", "", "Smith", ""};
    QTest::newRow("last name first, with the rest")
        << "Smith Jr., Dr. John Q." << 1 << QStringList {"Dr.", "John", "Q.", "Smith", "Jr."};
    QTest::newRow("a comma before suffixes alone")
        << "John Smith, Jr." << 1 << QStringList {"", "John", "", "Smith", "Jr."};
    QTest::newRow("two last names") << "Juan Carlos García López" << 2
                                    << QStringList {"", "Juan", "Carlos", "García López", ""};
    QTest::newRow("two last names, no middle")
        << "Ana García López" << 2 << QStringList {"", "Ana", "", "García López", ""};
    QTest::newRow("more last names expected than there are")
        << "Ana López" << 3 << QStringList {"", "Ana", "", "López", ""};
    QTest::newRow("particles go with the last name")
        << "Ludwig van Beethoven" << 1 << QStringList {"", "Ludwig", "", "van Beethoven", ""};
    QTest::newRow("but not when capitalised")
        << "Van Morrison" << 1 << QStringList {"", "Van", "", "Morrison", ""};
    QTest::newRow("one word is a first name")
        << "Madonna" << 1 << QStringList {"", "Madonna", "", "", ""};
    QTest::newRow("or a last name after an honorific")
        << "Mrs Brown" << 1 << QStringList {"Mrs", "", "", "Brown", ""};
    QTest::newRow("a word is left for the name")
        << "Sir" << 1 << QStringList {"", "Sir", "", "", ""};
    QTest::newRow("blanks of any kind and number")
        << "  Herr \t Karl  Heinz   Müller  " << 1
        << QStringList {"Herr", "Karl", "Heinz", "Müller", ""};
    QTest::newRow("custom honorific and suffix, any case")
        << "Capitaine Archibald Haddock RnR" << 1
        << QStringList {"Capitaine", "Archibald", "", "Haddock", "RnR"};
    QTest::newRow("empty") << "" << 1 << QStringList {"", "", "", "", ""};
}

void TestTransformSplitName::names()
{
    QFETCH(QString, name);
    QFETCH(int, lastCount);
    QFETCH(QStringList, parts);
    const Run run = split({name}, [lastCount](Transform &t) {
        t.parameter("Num_Last")->setValue(lastCount);
        t.parameter("Custom_Title")->setValue(QStringLiteral(" CAPITAINE , lord high admiral"));
        t.parameter("Custom_Suffix")->setValue(QStringLiteral("rnr"));
    });
    QCOMPARE(run.output.row(0).mid(2), parts);
}

void TestTransformSplitName::partsSwitchedOff_data()
{
    QTest::addColumn<QStringList>("off");
    QTest::addColumn<QStringList>("headers");
    QTest::addColumn<QStringList>("cells");

    const QString name = QStringLiteral("Dr Mary Ann Smith Jones PhD");
    QTest::newRow("no honorifics: the word is a name")
        << QStringList {"Title"} << QStringList {"First", "Middle", "Last", "Suffix"}
        << QStringList {"Dr", "Mary Ann Smith", "Jones", "PhD"};
    QTest::newRow("no middle names: they join the first")
        << QStringList {"Middle"} << QStringList {"Honorific", "First", "Last", "Suffix"}
        << QStringList {"Dr", "Mary Ann Smith", "Jones", "PhD"};
    QTest::newRow("no first names: middle names begin")
        << QStringList {"First"} << QStringList {"Honorific", "Middle", "Last", "Suffix"}
        << QStringList {"Dr", "Mary Ann Smith", "Jones", "PhD"};
    QTest::newRow("no first or middle names: all is the last name")
        << QStringList {"First", "Middle"} << QStringList {"Honorific", "Last", "Suffix"}
        << QStringList {"Dr", "Mary Ann Smith Jones", "PhD"};
    QTest::newRow("no last names")
        << QStringList {"Last"} << QStringList {"Honorific", "First", "Middle", "Suffix"}
        << QStringList {"Dr", "Mary", "Ann Smith Jones", "PhD"};
    QTest::newRow("no suffixes: the word is a name")
        << QStringList {"Suffix"} << QStringList {"Honorific", "First", "Middle", "Last"}
        << QStringList {"Dr", "Mary", "Ann Smith Jones", "PhD"};
}

void TestTransformSplitName::partsSwitchedOff()
{
    QFETCH(QStringList, off);
    QFETCH(QStringList, headers);
    QFETCH(QStringList, cells);
    const Run run = split({QStringLiteral("Dr Mary Ann Smith Jones PhD")}, [&off](Transform &t) {
        for (const QString &key : off)
            t.parameter(key)->setValue(false);
    });
    QCOMPARE(run.output.headers(), QStringList({"id", "name"}) + headers);
    QCOMPARE(run.output.row(0), QStringList({"1", "Dr Mary Ann Smith Jones PhD"}) + cells);
}

void TestTransformSplitName::columnsAndMessages()
{
    const Run run = split({"Ms. Ada King", "", "  ", "Alan Turing"}, [](Transform &) {});
    QCOMPARE(run.output.headers(),
             QStringList({"id", "name", "Honorific", "First", "Middle", "Last", "Suffix"}));
    QCOMPARE(run.output.rowCount(), 4);
    QCOMPARE(run.output.row(3), QStringList({"4", "Alan Turing", "", "Alan", "", "Turing", ""}));
    QCOMPARE(run.output.columnCount(), 7);
    QCOMPARE(run.result, QString("5 cols added"));
    QCOMPARE(run.information, QStringList {"2 empty 'name' value(s)"});

    const Run none = split({"Ada King"}, [](Transform &t) {
        for (const char *key : {"Title", "First", "Middle", "Last", "Suffix"})
            t.parameter(QString::fromLatin1(key))->setValue(false);
    });
    QCOMPARE(none.output.columnCount(), 2);
    QCOMPARE(none.result, QString("No changes"));
}

QTEST_GUILESS_MAIN(TestTransformSplitName)
#include "tst_transformsplitname.moc"
