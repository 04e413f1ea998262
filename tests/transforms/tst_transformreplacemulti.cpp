#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformreplacemulti.h"

#include <QCoreApplication>
#include <QtTest>

Q_DECLARE_METATYPE(QList<ReplaceTerm>)

// Replace: every match type, terms in order on the running text, column variables in both
// texts of a term, and the handling of bad patterns.
class TestTransformReplaceMulti : public QObject
{
    Q_OBJECT

private slots:
    void terms_data();
    void terms();
    void variablesComeFromTheInputRow();
    void invalidRegexWarnsOnce();
    void documentTextRoundTrip();
    void optionKeysInOrder();
};

namespace {

ReplaceTerm term(int type, const QString &from, const QString &to)
{
    ReplaceTerm t;
    t.matchType = type;
    t.from = from;
    t.to = to;
    return t;
}

using Terms = QList<ReplaceTerm>;

} // namespace

void TestTransformReplaceMulti::terms_data()
{
    QTest::addColumn<Terms>("terms");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QString>("cell");
    QTest::addColumn<QString>("expected");

    using R = TransformReplaceMulti;
    const QString emoji = QString::fromUtf8("\xF0\x9F\x98\x80");
    QTest::newRow("text all occurrences") << Terms {term(R::Text, "ab", "X")} << true << "abcABab"
                                          << "XcABX";
    QTest::newRow("text case insensitive") << Terms {term(R::Text, "ab", "X")} << false << "abcABab"
                                           << "XcXX";
    QTest::newRow("text empty from does nothing") << Terms {term(R::Text, "", "X")} << true << "ab"
                                                  << "ab";
    QTest::newRow("in order on running text")
        << Terms {term(R::Text, "a", "b"), term(R::Text, "b", "c")} << true << "ab"
        << "cc";
    QTest::newRow("exact text") << Terms {term(R::ExactText, "yes", "Y")} << true << "yes"
                                << "Y";
    QTest::newRow("exact text not part") << Terms {term(R::ExactText, "yes", "Y")} << true << "yes!"
                                         << "yes!";
    QTest::newRow("exact text case") << Terms {term(R::ExactText, "yes", "Y")} << true << "YES"
                                     << "YES";
    QTest::newRow("exact text no case") << Terms {term(R::ExactText, "yes", "Y")} << false << "YES"
                                        << "Y";
    QTest::newRow("exact after text")
        << Terms {term(R::Text, "!", ""), term(R::ExactText, "yes", "Y")} << true << "yes!"
        << "Y";
    QTest::newRow("regex backreference")
        << Terms {term(R::Regex, "(\\d+)-(\\d+)", "\\2/\\1")} << true << "12-34 5-6"
        << "34/12 6/5";
    QTest::newRow("regex case") << Terms {term(R::Regex, "^a", "_")} << true << "Aa"
                                << "Aa";
    QTest::newRow("regex no case") << Terms {term(R::Regex, "^a", "_")} << false << "Aa"
                                   << "_a";
    QTest::newRow("empty") << Terms {term(R::Empty, "ignored", "N/A")} << true << ""
                           << "N/A";
    QTest::newRow("empty not blank") << Terms {term(R::Empty, "", "N/A")} << true << " "
                                     << " ";
    QTest::newRow("letters") << Terms {term(R::Letters, "", "L")} << true
                             << QString("a1" + QString(QChar(0xe9)) + " Z") << "L1L L";
    QTest::newRow("digits") << Terms {term(R::Digits, "", "#")} << true << "a1b22"
                            << "a#b##";
    QTest::newRow("punctuation") << Terms {term(R::Punctuation, "", "")} << true << "a,b.c-d(e)!'+$"
                                 << "abcde+$";
    QTest::newRow("symbols") << Terms {term(R::Symbols, "", "?")} << true << "a+b$c=d,^"
                             << "a?b?c?d,?";
    QTest::newRow("whitespace") << Terms {term(R::Whitespace, "", "_")} << true
                                << QString("a b\tc\n" + QString(QChar(0xa0))) << "a_b_c__";
    QTest::newRow("currency") << Terms {term(R::Currency, "", "")} << true
                              << QString("$5 " + QString(QChar(0x20ac)) + "6 +") << "5 6 +";
    QTest::newRow("non-ascii") << Terms {term(R::NonAscii, "", "*")} << true
                               << QString("caf" + QString(QChar(0xe9)) + emoji + "!") << "caf**!";
    // The replacement is never judged: letters replaced by letters don't multiply.
    QTest::newRow("replacement not rescanned")
        << Terms {term(R::Letters, "", "ab")} << true << "x1y"
        << "ab1ab";
    QTest::newRow("class with nothing to do") << Terms {term(R::Digits, "", "#")} << true << "abc"
                                              << "abc";
    QTest::newRow("unknown type reads as text") << Terms {term(42, "a", "b")} << true << "aa"
                                                << "bb";
}

void TestTransformReplaceMulti::terms()
{
    QFETCH(Terms, terms);
    QFETCH(bool, caseSensitive);
    QFETCH(QString, cell);
    QFETCH(QString, expected);

    QScopedPointer<DataSource> input(makeDataSource(makeDataset({{"text", "other"}, {cell, cell}})));
    TransformReplaceMulti transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Columns")->setColumns({input->dataset()->columnId(0)});
    transform.parameter("Replace")->setReplaceTerms(terms);
    transform.parameter("Case_Sensitive")->setValue(caseSensitive);
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(output.cell(0, 0), expected);
    QCOMPARE(output.cell(0, 1), cell);
    QCOMPARE(transform.result(),
             expected == cell ? QString("No changes") : QString("1 changed, 0 unchanged"));
    QVERIFY(transform.warnings().isEmpty());
}

void TestTransformReplaceMulti::variablesComeFromTheInputRow()
{
    QScopedPointer<DataSource> input(makeDataSource(makeDataset({{"code", "name", "Total", "Total Cost"},
                                                         {"A", "x-A-y", "1", "9"},
                                                         {"B", "x-A-y", "2", "8"}})));
    TransformReplaceMulti transform;
    transform.createParameters({input.data()}, false);
    const Dataset *source = input->dataset();
    transform.parameter("Columns")->setColumns({source->columnId(0), source->columnId(1)});
    // The first term rewrites column 1 before column 2 is reached; the variable still reads
    // the input's value. A variable of a missing column stays as it is.
    transform.parameter("Replace")->setReplaceTerms(
        {term(TransformReplaceMulti::ExactText, "$(1)", "<$(Total Cost)>"),
         term(TransformReplaceMulti::Text, "$(code)", "[$(Total)$(nope)]"),
         term(TransformReplaceMulti::Regex, "^$(4)", "$(3)")});
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(output.row(0), QStringList({"<9>", "x-[1$(nope)]-y", "1", "9"}));
    QCOMPARE(output.row(1), QStringList({"<8>", "x-A-y", "2", "8"}));
    QCOMPARE(transform.result(), QString("3 changed, 1 unchanged"));
}

void TestTransformReplaceMulti::invalidRegexWarnsOnce()
{
    QScopedPointer<DataSource> input(
        makeDataSource(makeDataset({{"p", "q"}, {"a(", "x"}, {"b[", "y"}, {"a(", "z"}})));
    TransformReplaceMulti transform;
    transform.createParameters({input.data()}, false);
    transform.parameter("Columns")->setColumns({input->dataset()->columnId(1)});
    transform.parameter("Replace")->setReplaceTerms(
        {term(TransformReplaceMulti::Regex, "(", "!"),
         term(TransformReplaceMulti::Regex, "$(p)", "!"),
         term(TransformReplaceMulti::Text, "z", "Z")});
    const Dataset output = runTransform(transform, {input.data()});
    QCOMPARE(output.columnValues(1), QStringList({"x", "y", "Z"}));
    QCOMPARE(transform.result(), QString("1 changed, 2 unchanged"));
    const QStringList warnings = transform.warnings();
    QCOMPARE(warnings.size(), 3);
    QVERIFY(warnings.at(0).startsWith("Invalid regular expression '(': "));
    QVERIFY(warnings.at(1).startsWith("Invalid regular expression 'a(': "));
    QVERIFY(warnings.at(2).startsWith("Invalid regular expression 'b[': "));
}

void TestTransformReplaceMulti::documentTextRoundTrip()
{
    TransformReplaceMulti transform;
    transform.createParameters({}, false);
    Parameter *replace = transform.parameter("Replace");
    const Terms terms {term(TransformReplaceMulti::Regex, "a^b",
                            "c\x1f"
                            "d"),
                       term(TransformReplaceMulti::NonAscii, "", " ")};
    replace->setReplaceTerms(terms);
    QScopedPointer<Transform> copy(transform.clone());
    copy->parameter("Replace")->fromText(replace->toText());
    QCOMPARE(copy->parameter("Replace")->toReplaceTerms(), terms);
    QCOMPARE(TransformReplaceMulti::matchTypeNames().size(), 11);
    QCOMPARE(TransformReplaceMulti::matchTypeNames().at(10), QString("Non-ASCII"));
}

void TestTransformReplaceMulti::optionKeysInOrder()
{
    TransformReplaceMulti transform;
    transform.createParameters({}, false);
    QStringList keys;
    for (const Parameter *p : transform.parameters())
        keys.append(p->key());
    QCOMPARE(keys, QStringList({"Columns", "Replace", "Case_Sensitive"}));
    QCOMPARE(transform.typeName(), QString("Replace_Multi"));
    QCOMPARE(transform.displayName(), QString("Replace"));
}

QTEST_GUILESS_MAIN(TestTransformReplaceMulti)
#include "tst_transformreplacemulti.moc"
