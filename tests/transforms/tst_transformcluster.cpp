#include "data/valueinterpretation.h"
#include "testdata.h"
#include "transforms/clusterblocking.h"
#include "transforms/clusterengine.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformcluster.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QSet>
#include <QtTest>

// Cluster: assignment to the user's terms (closeness, ties, case, blanks), the messages, the
// blocked search for close terms checked against measuring every pair, and the search for
// terms under a clock and a seed that the tests hold.
class TestTransformCluster : public QObject
{
    Q_OBJECT

private slots:
    void manual_data();
    void manual();
    void messages_data();
    void messages();
    void reportListsTermsAndLeftovers();
    void blockedEqualsUnblocked_data();
    void blockedEqualsUnblocked();
    void searchFindsTheGroups();
    void searchKeepsUserTermsFirst();
    void searchIsRepeatableWithSeedAndClock();
    void timeLimitEndsTheSearch();
    void stopEndsTheSearch();

private:
    struct Run
    {
        Dataset output;
        QStringList warnings;
        QStringList information;
        QString result;
    };
    static Run cluster(const QStringList &texts, const QString &way, const QString &terms,
                       int fuzziness, bool caseSensitive);
};

TestTransformCluster::Run TestTransformCluster::cluster(const QStringList &texts,
                                                        const QString &way, const QString &terms,
                                                        int fuzziness, bool caseSensitive)
{
    QList<QStringList> rows {{"id", "text"}};
    for (int i = 0; i < texts.size(); ++i)
        rows.append({QString::number(i + 1), texts.at(i)});
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(rows)));
    TransformCluster transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Column")->setColumnId(node->dataset()->columnId(1));
    transform.parameter("Clustering")->setValue(way);
    transform.parameter("Terms")->setValue(terms);
    transform.parameter("Fuzziness")->setValue(fuzziness);
    transform.parameter("Case_Sensitive")->setValue(caseSensitive);
    Run run;
    run.output = runTransform(transform, {node.data()});
    run.warnings = transform.warnings();
    run.information = transform.information();
    run.result = transform.result();
    return run;
}

void TestTransformCluster::manual_data()
{
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QString>("terms");
    QTest::addColumn<int>("fuzziness");
    QTest::addColumn<bool>("caseSensitive");
    QTest::addColumn<QStringList>("clusters");
    QTest::addColumn<QStringList>("closeness");

    // rat is one edit from cat and from bat: 100 - ceil(100 / 3) = 66 for both.
    QTest::newRow("a tie goes to the term listed first")
        << QStringList {"rat", "bat"} << "cat\nbat" << 50 << false << QStringList {"cat", "bat"}
        << QStringList {"66", "100"};
    QTest::newRow("the same tie the other way round")
        << QStringList {"rat"} << "bat\ncat" << 50 << false << QStringList {"bat"}
        << QStringList {"66"};
    // appel is two edits from apple (100 - 40) and apply one (100 - 20); apricot is out of
    // reach of both, so the closer term wins though it is listed second.
    QTest::newRow("the closest term wins wherever it is listed")
        << QStringList {"appel", "apply"} << "apricot\napple" << 50 << false
        << QStringList {"apple", "apple"} << QStringList {"60", "80"};
    QTest::newRow("case ignored: terms and texts folded, APPLE is 100")
        << QStringList {"APPLE", "  Apple  ", "aPPle"} << "Apple" << 90 << false
        << QStringList {"apple", "apple", "apple"} << QStringList {"100", "100", "100"};
    // Apple against APPLE: four substitutions of five, 100 - 80 = 20.
    QTest::newRow("case sensitive: only the same spelling is close")
        << QStringList {"APPLE", "Apple", "Appel"} << "Apple" << 50 << true
        << QStringList {"<None>", "Apple", "Apple"} << QStringList {"", "100", "60"};
    QTest::newRow("empty and blank texts have no cluster even at 0")
        << QStringList {"", "   ", "x"} << "apple" << 0 << false
        << QStringList {"<None>", "<None>", "apple"} << QStringList {"", "", "0"};
    QTest::newRow("at 0 everything goes to the nearest term")
        << QStringList {"zzzz", "bananas", "kiwi"} << "banana\nkiwi" << 0 << false
        << QStringList {"banana", "banana", "kiwi"} << QStringList {"0", "85", "100"};
    // abce against abcd: one edit of four, 75: reached at 75, missed at 76.
    QTest::newRow("closeness equal to the minimum is close")
        << QStringList {"abce"} << "abcd" << 75 << false << QStringList {"abcd"}
        << QStringList {"75"};
    QTest::newRow("closeness one below the minimum is not")
        << QStringList {"abce"} << "abcd" << 76 << false << QStringList {"<None>"}
        << QStringList {""};
    QTest::newRow("terms trimmed, blank lines and repeats dropped")
        << QStringList {"pear"} << "\n  pear  \n\npear\n"
        << 50 << false << QStringList {"pear"} << QStringList {"100"};
    QTest::newRow("a long text is far from a short term")
        << QStringList {"new york city", "york"} << "york" << 50 << false
        << QStringList {"<None>", "york"} << QStringList {"", "100"};
}

void TestTransformCluster::manual()
{
    QFETCH(QStringList, texts);
    QFETCH(QString, terms);
    QFETCH(int, fuzziness);
    QFETCH(bool, caseSensitive);
    QFETCH(QStringList, clusters);
    QFETCH(QStringList, closeness);

    const Run run = cluster(texts, "Manual", terms, fuzziness, caseSensitive);
    QCOMPARE(run.output.header(), (QStringList {"id", "text", "Cluster", "Closeness"}));
    QCOMPARE(run.output.columnValues(1), texts);
    QCOMPARE(run.output.columnValues(2), clusters);
    QCOMPARE(run.output.columnValues(3), closeness);
}

void TestTransformCluster::messages_data()
{
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QString>("way");
    QTest::addColumn<QString>("terms");
    QTest::addColumn<QStringList>("clusters");
    QTest::addColumn<QStringList>("warnings");
    QTest::addColumn<QString>("result");
    QTest::addColumn<QString>("firstInformation");

    QTest::newRow("manual without terms")
        << QStringList {"a", "b"} << "Manual"
        << " \n " << QStringList {"<None>", "<None>"}
        << QStringList {"No terms to cluster on", "2 row(s) not assigned a cluster"}
        << "0 clustered from 2 row(s)"
        << "0 clustering term(s)";
    QTest::newRow("automatic over blanks only")
        << QStringList {"", "  ", ""} << "Automatic" << QString()
        << QStringList {"<None>", "<None>", "<None>"}
        << QStringList {"Insufficient data for clustering", "3 row(s) not assigned a cluster"}
        << "0 clustered from 3 row(s)"
        << "Tried 0 different combinations of clustering terms\n";
    QTest::newRow("guided over blanks keeps the user's terms")
        << QStringList {"", " "} << "Guided"
        << "pear" << QStringList {"<None>", "<None>"}
        << QStringList {"2 row(s) not assigned a cluster"} << "0 clustered from 2 row(s)"
        << "Tried 1 different combinations of clustering terms\n";
    QTest::newRow("all clustered: no warning")
        << QStringList {"pear", "Pear"} << "Manual"
        << "pear" << QStringList {"pear", "pear"} << QStringList() << "2 clustered from 2 row(s)"
        << "1 clustering term(s)";
}

void TestTransformCluster::messages()
{
    QFETCH(QStringList, texts);
    QFETCH(QString, way);
    QFETCH(QString, terms);
    QFETCH(QStringList, clusters);
    QFETCH(QStringList, warnings);
    QFETCH(QString, result);
    QFETCH(QString, firstInformation);

    const Run run = cluster(texts, way, terms, 50, false);
    QCOMPARE(run.output.columnValues(2), clusters);
    QCOMPARE(run.warnings, warnings);
    QCOMPARE(run.result, result);
    QCOMPARE(run.information.value(0), firstInformation);
}

void TestTransformCluster::reportListsTermsAndLeftovers()
{
    QStringList texts {"pear", "peach", "Pear", "plum", "plum", "plum", "kiwi", "fig", "KIWI"};
    for (int i = 0; i < 12; ++i)
        texts.append(QStringLiteral("odd%1").arg(QChar('a' + i)));
    const Run run = cluster(texts, "Manual", "plum\npear", 80, false);
    QStringList expected {"2 clustering term(s)",
                          "\nClustering term(s) alphabetically:",
                          "pear  - 2",
                          "plum  - 3",
                          "\nClustering term(s) by count:",
                          "plum  - 3",
                          "pear  - 2",
                          "\nValues not clustered:",
                          "'peach'",
                          "'kiwi'",
                          "'fig'"};
    for (int i = 0; i < 7; ++i)
        expected.append(QStringLiteral("'odd%1'").arg(QChar('a' + i)));
    expected.append("+ 5 more");
    QCOMPARE(run.information, expected);
    QCOMPARE(run.warnings, QStringList {"16 row(s) not assigned a cluster"});
    QCOMPARE(run.result, QString("5 clustered from 21 row(s)"));
}

namespace {

// Texts made from a small vocabulary of random words, each copy with a few random edits and
// random case, so that many pairs are near each other and many aren't.
QStringList generatedTexts(QRandomGenerator &generator, const QStringList &vocabulary, int count)
{
    QStringList texts;
    for (int i = 0; i < count; ++i) {
        QStringList words;
        // Some texts longer than 64 units, which are measured another way.
        const int n = i % 50 == 0 ? 9 : 1 + int(generator.bounded(3));
        for (int w = 0; w < n; ++w)
            words.append(vocabulary.at(int(generator.bounded(vocabulary.size()))));
        QString text = words.join(QLatin1Char(' '));
        const int edits = int(generator.bounded(4));
        for (int e = 0; e < edits && !text.isEmpty(); ++e) {
            const int at = int(generator.bounded(text.size()));
            // Now and then a letter beyond Latin-1.
            const QChar letter = generator.bounded(10) == 0
                ? QChar(0x3b1 + int(generator.bounded(3)))
                : QChar('a' + int(generator.bounded(26)));
            switch (generator.bounded(3)) {
            case 0:
                text[at] = letter;
                break;
            case 1:
                text.remove(at, 1);
                break;
            default:
                text.insert(at, letter);
            }
        }
        if (generator.bounded(5) == 0)
            text = text.toUpper();
        texts.append(text);
    }
    texts << QString() << "a"
          << "ab" << texts.first() << QString(40, 'q');
    return texts;
}

QStringList vocabularyOf(QRandomGenerator &generator, int count)
{
    QStringList words;
    for (int i = 0; i < count; ++i) {
        QString word;
        const int length = 2 + int(generator.bounded(10));
        for (int k = 0; k < length; ++k)
            word.append(QChar('a' + int(generator.bounded(8))));
        words.append(word);
    }
    return words;
}

// Measures every term, in order: the closest at or above minimum, ties to the first.
FuzzyIndex::Match closestByEveryPair(const QString &text, const QStringList &terms, int minimum)
{
    FuzzyIndex::Match best;
    for (int t = 0; t < terms.size(); ++t) {
        const int closeness = similarity(text, terms.at(t), minimum);
        if (closeness >= minimum && closeness > best.closeness)
            best = FuzzyIndex::Match {t, closeness};
    }
    return best;
}

} // namespace

void TestTransformCluster::blockedEqualsUnblocked_data()
{
    QTest::addColumn<int>("minimum");
    for (int minimum : {0, 30, 50, 51, 67, 80, 95, 100})
        QTest::newRow(qPrintable(QStringLiteral("at %1").arg(minimum))) << minimum;
}

void TestTransformCluster::blockedEqualsUnblocked()
{
    QFETCH(int, minimum);
    QRandomGenerator generator(20240611);
    const QStringList vocabulary = vocabularyOf(generator, 60);
    const QStringList texts = generatedTexts(generator, vocabulary, 3000);
    QStringList terms = generatedTexts(generator, vocabulary, 120);
    terms.removeAll(QString());

    // The closest term of every text, as the clustering assigns them.
    const FuzzyIndex termIndex(terms);
    int matched = 0;
    for (const QString &text : texts) {
        const FuzzyIndex::Match blocked = termIndex.closest(text, minimum);
        const FuzzyIndex::Match every = closestByEveryPair(text, terms, minimum);
        if (blocked.index != every.index || blocked.closeness != every.closeness)
            QFAIL(qPrintable(QStringLiteral("'%1': %2 (%3) instead of %4 (%5)")
                                 .arg(text)
                                 .arg(blocked.index)
                                 .arg(blocked.closeness)
                                 .arg(every.index)
                                 .arg(every.closeness)));
        matched += every.index >= 0 ? 1 : 0;
    }
    // Enough matches, and above the lowest minimums enough misses, for the comparison to
    // prove something.
    QVERIFY2(matched >= 20, qPrintable(QString::number(matched)));
    if (minimum >= 20)
        QVERIFY2(matched < texts.size() - 10, qPrintable(QString::number(matched)));

    // All texts close to each term, as a search covers them.
    const FuzzyIndex textIndex(texts);
    for (const QString &term : qAsConst(terms)) {
        QSet<QPair<int, int>> blocked;
        textIndex.forEachWithin(term, minimum, [&](int index, int closeness) {
            blocked.insert({index, closeness});
        });
        QSet<QPair<int, int>> every;
        for (int v = 0; v < texts.size(); ++v) {
            const int closeness = similarity(texts.at(v), term, minimum);
            if (closeness >= minimum)
                every.insert({v, closeness});
        }
        QCOMPARE(blocked, every);
    }

    // And through the engine, by rows, with the folding of case.
    QList<QStringList> rows;
    for (const QString &text : texts)
        rows.append({text});
    const Dataset input = makeDataset(rows, false);
    ClusterOptions options;
    options.terms = terms.join(QLatin1Char('\n'));
    options.fuzziness = minimum;
    const ClusterOutcome outcome = ClusterEngine::cluster(input, 0, options);
    const QStringList folded = ClusterEngine::userTerms(options.terms, false);
    QCOMPARE(outcome.terms, folded);
    for (int r = 0; r < texts.size(); ++r) {
        const QString form = ClusterEngine::normalForm(texts.at(r), false);
        const FuzzyIndex::Match every
            = form.isEmpty() ? FuzzyIndex::Match() : closestByEveryPair(form, folded, minimum);
        QCOMPARE(outcome.termOfRow.at(r), every.index);
        QCOMPARE(outcome.closenessOfRow.at(r), every.closeness);
    }
}

namespace {

// Three firms, each written several ways, and one row of nothing.
Dataset firms()
{
    return makeDataset({{"Acme Corporation"},
                        {"ACME corporation"},
                        {"Acme Corporatoin"},
                        {"acme corporation "},
                        {"Globex Industries"},
                        {"Globex Industry"},
                        {"globex industries"},
                        {"Initech Software"},
                        {"Initech Sofware"},
                        {""}},
                       false);
}

ClusterOptions searchOptions(int mode, int maxClusters)
{
    ClusterOptions options;
    options.mode = mode;
    options.maxClusters = maxClusters;
    options.fuzziness = 60;
    options.seed = 42;
    options.elapsedMs = [] {
        return qint64(0);
    };
    return options;
}

} // namespace

void TestTransformCluster::searchFindsTheGroups()
{
    const ClusterOutcome outcome
        = ClusterEngine::cluster(firms(), 0, searchOptions(ClusterOptions::Automatic, 3));
    QCOMPARE(outcome.terms.size(), 3);
    const QVector<int> &term = outcome.termOfRow;
    QVERIFY(term.at(0) >= 0 && term.at(4) >= 0 && term.at(7) >= 0);
    QCOMPARE(QVector<int>({term.at(1), term.at(2), term.at(3)}), QVector<int>(3, term.at(0)));
    QCOMPARE(QVector<int>({term.at(5), term.at(6)}), QVector<int>(2, term.at(4)));
    QCOMPARE(term.at(8), term.at(7));
    QCOMPARE(QSet<int>({term.at(0), term.at(4), term.at(7)}).size(), 3);
    QCOMPARE(term.at(9), -1);
    QCOMPARE(outcome.rowsOfTerm.at(term.at(0)), qint64(4));
    QVERIFY(!outcome.timedOut);
    // The search goes on until twice the maximum changes in a row bring nothing.
    QVERIFY2(outcome.combinationsTried >= 1 + 10,
             qPrintable(QString::number(outcome.combinationsTried)));
}

void TestTransformCluster::searchKeepsUserTermsFirst()
{
    ClusterOptions options = searchOptions(ClusterOptions::Guided, 3);
    options.terms = QStringLiteral("Initech\nzzz unused\nmore than\nthe maximum");
    const ClusterOutcome outcome = ClusterEngine::cluster(firms(), 0, options);
    // As many of the user's terms as the maximum allows stay first and unchanged, used or not.
    QCOMPARE(outcome.terms.mid(0, 3), (QStringList {"initech", "zzz unused", "more than"}));
    QCOMPARE(outcome.terms.size(), 3);
    QCOMPARE(outcome.combinationsTried, 1);
}

void TestTransformCluster::searchIsRepeatableWithSeedAndClock()
{
    const ClusterOptions options = searchOptions(ClusterOptions::Automatic, 2);
    const ClusterOutcome first = ClusterEngine::cluster(firms(), 0, options);
    const ClusterOutcome second = ClusterEngine::cluster(firms(), 0, options);
    QCOMPARE(first.terms, second.terms);
    QCOMPARE(first.termOfRow, second.termOfRow);
    QCOMPARE(first.combinationsTried, second.combinationsTried);
}

void TestTransformCluster::timeLimitEndsTheSearch()
{
    // The clock says the time is over from the start: no greedy choice, no random change, only
    // the terms drawn at random; the rows are still clustered by them.
    ClusterOptions options = searchOptions(ClusterOptions::Automatic, 3);
    options.maxSeconds = 10;
    options.elapsedMs = [] {
        return qint64(10000);
    };
    const ClusterOutcome outcome = ClusterEngine::cluster(firms(), 0, options);
    QVERIFY(outcome.timedOut);
    QCOMPARE(outcome.combinationsTried, 0);
    QVERIFY(!outcome.terms.isEmpty());
    const QStringList texts = {"acme corporation", "acme corporatoin", "globex industries",
                               "globex industry",  "initech software", "initech sofware"};
    for (const QString &term : outcome.terms)
        QVERIFY2(texts.contains(term), qPrintable(term));

    // A clock a millisecond short of the limit lets it finish.
    options.elapsedMs = [] {
        return qint64(9999);
    };
    QVERIFY(!ClusterEngine::cluster(firms(), 0, options).timedOut);
}

void TestTransformCluster::stopEndsTheSearch()
{
    ClusterOptions options = searchOptions(ClusterOptions::Automatic, 3);
    int asked = 0;
    options.stopRequested = [&asked] {
        return ++asked > 1;
    };
    const ClusterOutcome outcome = ClusterEngine::cluster(firms(), 0, options);
    QVERIFY(!outcome.timedOut);
    QCOMPARE(outcome.combinationsTried, 0);
    QCOMPARE(outcome.termOfRow, QVector<int>(10, -1));
}

QTEST_GUILESS_MAIN(TestTransformCluster)
#include "tst_transformcluster.moc"
