#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformcase.h"
#include "transforms/transformclone.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QtTest>

// The Case transform as the model of the cell family, and Clone.
class TestTransformCase : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void cases_data();
    void cases();
    void keepUpperOnlyForTitleAndSentence();
    void untouchedColumnsAndRowsStayShared();
    void wrongInputCountGivesEmptyResult();
    void emptyDatasetReportsNoChanges();
    void progressEveryThousandRows();
    void unsetColumnsWarn();
    void cloneKeepsOptionsNotMessages();
    void toolTipShowsEveryCase();
    void cloneTransformCopiesInput();

private:
    DataSource *m_input = nullptr;
    TransformCase *m_case = nullptr;
};

void TestTransformCase::init()
{
    m_input = makeDataSource(makeDataset(
        {{"text", "other"}, {"hello wORLD", "keep me"}, {"  it's the NASA way", "x"}, {"", "y"}}));
    m_case = new TransformCase;
    m_case->createParameters({m_input}, false);
    m_case->parameter("Columns")->setColumns({m_input->dataset()->columnId(0)});
}

void TestTransformCase::cleanup()
{
    delete m_case;
    delete m_input;
}

// Upper, lower, snake, inverted and title keeping upper run end to end in the golden
// documents, and every case's text rules are checked with convertCase.
void TestTransformCase::cases_data()
{
    QTest::addColumn<QString>("caseName");
    QTest::addColumn<bool>("keepUpper");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("result");

    QTest::newRow("lower") << "Lower case" << false
                           << QStringList {"hello world", "  it's the nasa way", ""}
                           << "2 changed, 1 unchanged";
    QTest::newRow("title") << "Title case" << false
                           << QStringList {"Hello World", "  It's The Nasa Way", ""}
                           << "2 changed, 1 unchanged";
    QTest::newRow("title keep upper")
        << "Title case" << true << QStringList {"Hello WORLD", "  It's The NASA Way", ""}
        << "2 changed, 1 unchanged";
    QTest::newRow("sentence") << "Sentence case" << false
                              << QStringList {"Hello world", "  It's the nasa way", ""}
                              << "2 changed, 1 unchanged";
    QTest::newRow("lower camel") << "Lower camel case" << false
                                 << QStringList {"helloWorld", "it'sTheNasaWay", ""}
                                 << "2 changed, 1 unchanged";
    QTest::newRow("upper camel") << "Upper camel case" << false
                                 << QStringList {"HelloWorld", "It'sTheNasaWay", ""}
                                 << "2 changed, 1 unchanged";
    QTest::newRow("kebab") << "Kebab case" << false
                           << QStringList {"hello-wORLD", "-it's-the-NASA-way", ""}
                           << "2 changed, 1 unchanged";
    // Keep upper means nothing outside Title and Sentence.
    QTest::newRow("lower ignores keep upper")
        << "Lower case" << true << QStringList {"hello world", "  it's the nasa way", ""}
        << "2 changed, 1 unchanged";
}

void TestTransformCase::cases()
{
    QFETCH(QString, caseName);
    QFETCH(bool, keepUpper);
    QFETCH(QStringList, expected);
    QFETCH(QString, result);

    m_case->parameter("Case")->setValue(caseName);
    m_case->parameter("Keep_Upper")->setValue(keepUpper);
    const Dataset output = runTransform(*m_case, {m_input});
    QCOMPARE(output.columnValues(0), expected);
    QCOMPARE(output.columnValues(1), QStringList({"keep me", "x", "y"}));
    QCOMPARE(m_case->result(), result);
    QVERIFY(m_case->warnings().isEmpty());
}

void TestTransformCase::keepUpperOnlyForTitleAndSentence()
{
    const QStringList names = TransformCase::caseNames();
    QCOMPARE(names.size(), 9);
    for (int i = 0; i < names.size(); ++i) {
        m_case->parameter("Case")->setValue(names.at(i));
        const QList<ParameterState> states = m_case->parameterStates();
        QCOMPARE(states.size(), 1);
        QCOMPARE(states.first().key, QString("Keep_Upper"));
        QCOMPARE(states.first().enabled, i == 2 || i == 3);
    }
}

void TestTransformCase::untouchedColumnsAndRowsStayShared()
{
    Dataset big;
    big.setColumnCount(3);
    big.setHeader({"a", "b", "c"});
    for (int r = 0; r < 5000; ++r)
        big.appendRow({r % 2 ? "UP" : "down", QString::number(r), "z"}, true);
    QScopedPointer<DataSource> input(makeDataSource(big));
    TransformCase transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Columns")->setColumns({input->dataset()->columnId(0)});
    transform.parameter("Case")->setValue(QString("Upper case"));

    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(transform.result(), QString("2,500 changed, 2,500 unchanged"));
    const Dataset *source = input->dataset();
    for (int r = 0; r < 5000; ++r) {
        const bool changed = r % 2 == 0;
        // A row whose cell did not change is the input's own row, not a copy.
        QCOMPARE(&output.row(r).at(1) == &source->row(r).at(1), !changed);
        QCOMPARE(output.cell(r, 1).constData(), source->cell(r, 1).constData());
    }
}

void TestTransformCase::wrongInputCountGivesEmptyResult()
{
    QScopedPointer<DataSource> second(makeDataSource(makeDataset({{"a"}, {"b"}})));
    Dataset output = runTransform(*m_case, {m_input, second.data()});
    QCOMPARE(output.columnCount(), 0);
    output = runTransform(*m_case, {});
    QCOMPARE(output.columnCount(), 0);
}

void TestTransformCase::emptyDatasetReportsNoChanges()
{
    QScopedPointer<DataSource> empty(makeDataSource(makeDataset({{"a", "b"}})));
    TransformCase transform;
    transform.createParameters({empty.data()}, false);
    transform.parameter("Columns")->setColumns({empty->dataset()->columnId(0)});
    QSignalSpy progress(&transform, &Transform::processed);
    const Dataset output = runTransform(transform, {empty.data()});
    QCOMPARE(output.columnCount(), 2);
    QCOMPARE(transform.result(), QString("No changes"));
    QCOMPARE(progress.count(), 0);
}

void TestTransformCase::progressEveryThousandRows()
{
    Dataset data;
    data.setColumnCount(1);
    for (int r = 0; r < 2500; ++r)
        data.appendRow({"x"}, true);
    QScopedPointer<DataSource> input(makeDataSource(data));
    TransformCase transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Columns")->setColumns({input->dataset()->columnId(0)});
    QSignalSpy progress(&transform, &Transform::processed);
    runTransform(transform, {input.data()});
    QCOMPARE(progress.count(), 3);
    QCOMPARE(progress.at(1).first().toDouble(), 1000.0 / 2500.0);
}

void TestTransformCase::unsetColumnsWarn()
{
    m_case->parameter("Columns")->setColumns({});
    const Dataset output = runTransform(*m_case, {m_input});
    QCOMPARE(output.rowCount(), 3);
    QCOMPARE(m_case->warnings(), QStringList({"1 option not set ('Columns')"}));
    QCOMPARE(m_case->result(), QString("No changes"));
}

void TestTransformCase::cloneKeepsOptionsNotMessages()
{
    m_case->parameter("Case")->setValue(QString("Snake case"));
    runTransform(*m_case, {m_input});
    QVERIFY(!m_case->result().isEmpty());
    QScopedPointer<Transform> copy(m_case->clone());
    QVERIFY(copy->result().isEmpty());
    QCOMPARE(copy->parameter("Case")->toText(), QString("Snake%20case"));
    QCOMPARE(copy->parameter("Columns")->toColumns(), m_case->parameter("Columns")->toColumns());
    QVERIFY(copy->parameter("Case") != m_case->parameter("Case"));
}

void TestTransformCase::toolTipShowsEveryCase()
{
    const QString tip = m_case->parameter("Case")->toolTip();
    QVERIFY(tip.startsWith("E.g:\n"));
    QVERIFY(tip.contains("Upper case -> UPPER CASE"));
    QVERIFY(tip.contains("Kebab case -> Kebab-case"));
    QVERIFY(tip.contains("Lower camel case -> lowerCamelCase"));
    QCOMPARE(tip.count('\n'), 9);
}

void TestTransformCase::cloneTransformCopiesInput()
{
    TransformClone clone;
    clone.createParameters({m_input}, false);
    const Dataset output = runTransform(clone, {m_input});
    QVERIFY(output.equals(*m_input->dataset()));
    QVERIFY(clone.result().isEmpty());
    QVERIFY(clone.warnings().isEmpty());
}

QTEST_GUILESS_MAIN(TestTransformCase)
#include "tst_transformcase.moc"
