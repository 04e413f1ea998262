#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformchop.h"
#include "transforms/transformextract.h"
#include "transforms/transformpad.h"

#include <QCoreApplication>
#include <QtTest>

// The transforms that cut or lengthen cells by position: Chop, Pad and Extract.
class TestTransformChop : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void chop_data();
    void chop();
    void pad_data();
    void pad();
    void extractText_data();
    void extractText();
    void extractRegex_data();
    void extractRegex();
    void invalidRegexLeavesCells();
    void extractStatesFollowUsing();
    void optionKeysInOrder();

private:
    // Runs transform on the column "text" of m_input and returns that column.
    QStringList run(Transform &transform);

    DataSource *m_input = nullptr;
};

void TestTransformChop::init()
{
    m_input = makeDataSource(
        makeDataset({{"text", "other"}, {"abcdef", "1"}, {"ab", "2"}, {"", "3"}, {"abc", "4"}}));
}

void TestTransformChop::cleanup()
{
    delete m_input;
}

QStringList TestTransformChop::run(Transform &transform)
{
    transform.parameter("Columns")->setColumns({m_input->dataset()->columnId(0)});
    const Dataset output = runTransform(transform, {m_input});
    [&] {
        QCOMPARE(output.columnValues(1), QStringList({"1", "2", "3", "4"}));
    }();
    return output.columnValues(0);
}

void TestTransformChop::chop_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("from");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("result");

    QTest::newRow("zero changes nothing")
        << 0 << "Start" << QStringList {"abcdef", "ab", "", "abc"} << "No changes";
    QTest::newRow("start") << 2 << "Start" << QStringList {"cdef", "", "", "c"}
                           << "3 changed, 1 unchanged";
    QTest::newRow("end") << 2 << "End" << QStringList {"abcd", "", "", "a"}
                         << "3 changed, 1 unchanged";
    QTest::newRow("longer than all")
        << 10 << "End" << QStringList {"", "", "", ""} << "3 changed, 1 unchanged";
}

void TestTransformChop::chop()
{
    QFETCH(int, length);
    QFETCH(QString, from);
    QFETCH(QStringList, expected);
    QFETCH(QString, result);

    TransformChop transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Length")->setValue(length);
    transform.parameter("From")->setValue(from);
    QCOMPARE(run(transform), expected);
    QCOMPARE(transform.result(), result);
}

void TestTransformChop::pad_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("side");
    QTest::addColumn<QString>("with");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("result");

    QTest::newRow("left zeros") << 4 << "Left"
                                << "0" << QStringList {"abcdef", "00ab", "0000", "0abc"}
                                << "3 changed, 1 unchanged";
    QTest::newRow("right blanks") << 3 << "Right"
                                  << " " << QStringList {"abcdef", "ab ", "   ", "abc"}
                                  << "2 changed, 2 unchanged";
    QTest::newRow("zero length") << 0 << "Left"
                                 << "x" << QStringList {"abcdef", "ab", "", "abc"} << "No changes";
    // An unset character pads nothing; the run engine warns about the option.
    QTest::newRow("null character")
        << 4 << "Left"
        << "" << QStringList {"abcdef", "ab", "", "abc"} << "No changes";
}

void TestTransformChop::pad()
{
    QFETCH(int, length);
    QFETCH(QString, side);
    QFETCH(QString, with);
    QFETCH(QStringList, expected);
    QFETCH(QString, result);

    TransformPad transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Length")->setValue(length);
    transform.parameter("Left_Right")->setValue(side);
    transform.parameter("Pad_With")->setValue(with.isEmpty() ? QChar() : with.at(0));
    QCOMPARE(run(transform), expected);
    QCOMPARE(transform.result(), result);
    QCOMPARE(transform.warnings().isEmpty(), !with.isEmpty());
}

void TestTransformChop::extractText_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("from");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("start") << 2 << "Start" << 0 << QStringList {"ab", "ab", "", "ab"};
    QTest::newRow("start offset") << 3 << "Start" << 1 << QStringList {"bcd", "b", "", "bc"};
    QTest::newRow("end") << 2 << "End" << 0 << QStringList {"ef", "ab", "", "bc"};
    QTest::newRow("end offset") << 2 << "End" << 1 << QStringList {"de", "a", "", "ab"};
    QTest::newRow("end offset past start") << 2 << "End" << 3 << QStringList {"bc", "", "", ""};
    QTest::newRow("zero length") << 0 << "Start" << 0 << QStringList {"", "", "", ""};
}

void TestTransformChop::extractText()
{
    QFETCH(int, length);
    QFETCH(QString, from);
    QFETCH(int, offset);
    QFETCH(QStringList, expected);

    TransformExtract transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Using")->setValue(QString("Text"));
    transform.parameter("Length")->setValue(length);
    transform.parameter("From")->setValue(from);
    transform.parameter("Offset")->setValue(offset);
    QCOMPARE(run(transform), expected);
}

void TestTransformChop::extractRegex_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QString>("result");

    QTest::newRow("default matches all")
        << "^.*$" << true << QStringList {"abcdef", "ab", "", "abc"} << "No changes";
    QTest::newRow("whole match") << "b.?" << true << QStringList {"bc", "b", "", "bc"}
                                 << "3 changed, 1 unchanged";
    QTest::newRow("capture group")
        << "a(b)(c)" << true << QStringList {"b", "", "", "b"} << "3 changed, 1 unchanged";
    QTest::newRow("no match is empty")
        << "z" << true << QStringList {"", "", "", ""} << "3 changed, 1 unchanged";
    QTest::newRow("case sensitive")
        << "C(.)" << true << QStringList {"", "", "", ""} << "3 changed, 1 unchanged";
    QTest::newRow("case insensitive")
        << "C(.)" << false << QStringList {"d", "", "", ""} << "3 changed, 1 unchanged";
    QTest::newRow("group that takes no part")
        << "(x)?ab" << true << QStringList {"", "", "", ""} << "3 changed, 1 unchanged";
}

void TestTransformChop::extractRegex()
{
    QFETCH(QString, pattern);
    QFETCH(bool, caseSensitive);
    QFETCH(QStringList, expected);
    QFETCH(QString, result);

    TransformExtract transform;
    transform.createParameters({m_input}, false);
    QCOMPARE(transform.parameter("Matching")->toString(), QString("^.*$"));
    transform.parameter("Using")->setValue(QString("Regex"));
    transform.parameter("Matching")->setValue(pattern);
    transform.parameter("Case_Sensitive")->setValue(caseSensitive);
    QCOMPARE(run(transform), expected);
    QCOMPARE(transform.result(), result);
    QVERIFY(transform.warnings().isEmpty());
}

void TestTransformChop::invalidRegexLeavesCells()
{
    TransformExtract transform;
    transform.createParameters({m_input}, false);
    transform.parameter("Using")->setValue(QString("Regex"));
    transform.parameter("Matching")->setValue(QString("a("));
    QCOMPARE(run(transform), QStringList({"abcdef", "ab", "", "abc"}));
    QCOMPARE(transform.result(), QString("No changes"));
    QCOMPARE(transform.warnings().size(), 1);
    QVERIFY(transform.warnings().first().startsWith("Invalid regular expression 'a(': "));
}

void TestTransformChop::extractStatesFollowUsing()
{
    TransformExtract transform;
    transform.createParameters({m_input}, false);
    for (const QString &way : {QString("Text"), QString("Regex")}) {
        transform.parameter("Using")->setValue(way);
        const bool byText = way == "Text";
        for (const ParameterState &state : transform.parameterStates()) {
            const bool textOption
                = state.key == "Length" || state.key == "From" || state.key == "Offset";
            QCOMPARE(state.enabled, textOption == byText);
        }
        QCOMPARE(transform.parameterStates().size(), 5);
    }
}

void TestTransformChop::optionKeysInOrder()
{
    const auto keysOf = [](Transform &&transform) {
        transform.createParameters({}, false);
        QStringList keys;
        for (const Parameter *p : transform.parameters())
            keys.append(p->key());
        return keys;
    };
    QCOMPARE(keysOf(TransformChop()), QStringList({"Columns", "Length", "From"}));
    QCOMPARE(keysOf(TransformPad()), QStringList({"Columns", "Length", "Left_Right", "Pad_With"}));
    QCOMPARE(keysOf(TransformExtract()),
             QStringList(
                 {"Columns", "Using", "Length", "From", "Offset", "Matching", "Case_Sensitive"}));
}

QTEST_GUILESS_MAIN(TestTransformChop)
#include "tst_transformchop.moc"
