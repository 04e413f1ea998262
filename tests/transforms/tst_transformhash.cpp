#include "flow/document.h"
#include "flow/flowmodel.h"
#include "flow/transformitem.h"
#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformhash.h"
#include "transforms/transformpseudonym.h"
#include "transforms/transformrandom.h"

#include <QCoreApplication>
#include <QDate>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

// Hash against published test vectors (FIPS 180 and 202, the Keccak team's, RFC 1321 and 2104,
// each checked with an independent implementation), and what it does to a table; Pseudonym
// and Random, whose output a seed fixes; and Random's integer maximum in old documents.
class TestTransformHash : public QObject
{
    Q_OBJECT

private slots:
    void digests_data();
    void digests();
    void hashRewritesChosenCells();
    void pseudonymsFollowValuesAndSeed();
    void randomValues_data();
    void randomValues();
    void randomMinimumAboveMaximum();
    void randomMaximumOfOldDocumentIsLowered_data();
    void randomMaximumOfOldDocumentIsLowered();

private:
    static QStringList lastColumn(const Dataset &dataset);
};

QStringList TestTransformHash::lastColumn(const Dataset &dataset)
{
    QStringList values;
    for (int r = 0; r < dataset.rowCount(); ++r)
        values.append(dataset.cell(r, dataset.lastColumn()));
    return values;
}

void TestTransformHash::digests_data()
{
    QTest::addColumn<int>("algorithm");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("secret");
    QTest::addColumn<QString>("digest");

    using H = TransformHash;
    QTest::newRow("SHA1") << int(H::Sha1) << "abc" << QString()
                          << "a9993e364706816aba3e25717850c26c9cd0d89d";
    QTest::newRow("SHA-256") << int(H::Sha256) << "abc" << QString()
                             << "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
    QTest::newRow("SHA-512") << int(H::Sha512) << "abc" << QString()
                             << "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
                                "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f";
    QTest::newRow("SHA3-256") << int(H::Sha3_256) << "abc" << QString()
                              << "3a985da74fe225b2045c172d6bd390bd855f086e3e9d525b46bfe24511431532";
    QTest::newRow("SHA3-512") << int(H::Sha3_512) << "abc" << QString()
                              << "b751850b1a57168a5693cd924b6b096e08f621827444f70d884f5d0240d2712e"
                                 "10e116e9192af3c91a7ec57647e3934057340b4cf408d5a56592f8274eec53f0";
    QTest::newRow("Keccak-256")
        << int(H::Keccak256) << "abc" << QString()
        << "4e03657aea45a94fc7d47ba826c8d667c0d1e6e33a64a036ec44f58fa12d6c45";
    QTest::newRow("Keccak-512")
        << int(H::Keccak512) << "abc" << QString()
        << "18587dc2ea106b9a1563e32b3312421ca164c7f1f07bc922a9c83d77cea3a1e5"
           "d0c69910739025372dc14ac9642629379540c17e2a65b19d77aa511a9d00bb96";
    QTest::newRow("MD5") << int(H::Md5) << "abc" << QString() << "900150983cd24fb0d6963f7d28e17f72";
    QTest::newRow("HMAC-MD5 with its secret") << int(H::HmacMd5) << "what do ya want for nothing?"
                                              << "Jefe"
                                              << "750c783e6ab0b503eaa86e310a5db738";
    QTest::newRow("the UTF-8 bytes of the text")
        << int(H::Sha256) << "Grüße" << QString()
        << "f83e039796c6453a10f5519e39fd113901572316a1a8ea07cb525d2801dfd074";
}

void TestTransformHash::digests()
{
    QFETCH(int, algorithm);
    QFETCH(QString, text);
    QFETCH(QString, secret);
    QFETCH(QString, digest);
    QCOMPARE(TransformHash::digest(text, algorithm, secret), digest);
}

void TestTransformHash::hashRewritesChosenCells()
{
    QScopedPointer<DataSource> node(makeDataSource(
        makeDataset({{"name", "kept"}, {"abc", "abc"}, {"", "x"}, {"abc", "y"}, {"Abc", "z"}})));
    TransformHash transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Columns")->setColumns({node->dataset()->columnId(0)});

    // Nothing chosen yet: nothing changes, and the choice is reported unset.
    Dataset output = runTransform(transform, {node.data()});
    QCOMPARE(output.rows(), node->dataset()->rows());
    QCOMPARE(transform.warnings(), QStringList({"1 option not set ('Algorithm')"}));
    QVERIFY(!transform.isParameterEnabled("Secret"));

    transform.parameter("Hashing")->setValue(QStringLiteral("MD5"));
    output = runTransform(transform, {node.data()});
    const QString abc = "900150983cd24fb0d6963f7d28e17f72";
    QCOMPARE(output.rows(),
             QList<QStringList>(
                 {{abc, "abc"}, {"", "x"}, {abc, "y"}, {"35593b7ce5020eae3ca68fd5b6f3e031", "z"}}));
    QCOMPARE(transform.result(), QString("3 changed, 1 unchanged"));

    transform.parameter("Hashing")->setValue(QStringLiteral("HMAC-MD5"));
    QVERIFY(transform.isParameterEnabled("Secret"));
    transform.parameter("Secret")->setValue(QStringLiteral("Jefe"));
    output = runTransform(transform, {node.data()});
    QCOMPARE(output.cell(0, 0), TransformHash::digest("abc", TransformHash::HmacMd5, "Jefe"));
    QVERIFY(output.cell(0, 0) != abc);
}

void TestTransformHash::pseudonymsFollowValuesAndSeed()
{
    QList<QStringList> rows {{"who"}};
    for (int i = 0; i < 40; ++i)
        rows.append({i % 10 == 9 ? QString() : QStringLiteral("p%1").arg(i % 20)});
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(rows)));
    const auto pseudonyms = [&](int seed, QString *result) {
        TransformPseudonym transform;
        transform.createParameters({node.data()}, false);
        transform.parameter("Prefix")->setValue(QStringLiteral("P-"));
        transform.parameter("Start_At")->setValue(101);
        transform.parameter("Seed")->setValue(seed);
        const Dataset output = runTransform(transform, {node.data()});
        *result = transform.result();
        return lastColumn(output);
    };

    QString result;
    const QStringList first = pseudonyms(7, &result);
    QCOMPARE(result, QString("36 values pseudonymized with 18 pseudonyms"));
    QCOMPARE(pseudonyms(7, &result), first);
    QVERIFY(pseudonyms(8, &result) != first);

    // Equal values alike, different values apart, empty cells empty; the numbers are
    // 101 to 118, dealt out of order.
    QHash<QString, QString> byValue;
    QSet<QString> numbers;
    bool inOrder = true;
    for (int r = 0; r < first.size(); ++r) {
        const QString &value = rows.at(r + 1).first();
        QCOMPARE(first.at(r).isEmpty(), value.isEmpty());
        if (value.isEmpty())
            continue;
        QCOMPARE(byValue.value(value, first.at(r)), first.at(r));
        if (!byValue.contains(value))
            inOrder = inOrder && first.at(r) == QStringLiteral("P-%1").arg(101 + byValue.size());
        byValue.insert(value, first.at(r));
        numbers.insert(first.at(r));
    }
    QSet<QString> expected;
    for (int n = 101; n <= 118; ++n)
        expected.insert(QStringLiteral("P-%1").arg(n));
    QCOMPARE(numbers, expected);
    QVERIFY(!inOrder);
}

void TestTransformHash::randomValues_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QVariantList>("range");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QStringList>("mustAppear");

    QTest::newRow("integers, both ends included") << "Integer" << QVariantList {-2, 2} << "-?[0-9]"
                                                  << QStringList {"-2", "-1", "0", "1", "2"};
    QTest::newRow("a range of one integer")
        << "Integer" << QVariantList {7, 7} << "7" << QStringList {"7"};
    // Checked as numbers from -1 up to, not including, 1.
    QTest::newRow("reals within the range")
        << "Real" << QVariantList {-1.0, 1.0} << QString() << QStringList();
    QTest::newRow("dates in their format, both ends included")
        << "Date" << QVariantList {QDate(2024, 2, 27), QDate(2024, 3, 1)}
        << "(27|28|29)\\.02\\.24|01\\.03\\.24"
        << QStringList {"27.02.24", "28.02.24", "29.02.24", "01.03.24"};
    QTest::newRow("texts, the empty one and repeats among them")
        << "Text" << QVariantList {QStringLiteral("a,,b,a")} << "a?|b"
        << QStringList {"a", "", "b"};
}

void TestTransformHash::randomValues()
{
    QFETCH(QString, type);
    QFETCH(QVariantList, range);
    QFETCH(QString, pattern);
    QFETCH(QStringList, mustAppear);

    QList<QStringList> rows {{"n"}};
    for (int i = 0; i < 300; ++i)
        rows.append({QString::number(i)});
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(rows)));
    const auto generate = [&](int seed) {
        TransformRandom transform;
        transform.createParameters({node.data()}, false);
        transform.parameter("Type")->setValue(type);
        transform.parameter("Seed")->setValue(seed);
        transform.parameter("Date_Format")->setValue(QStringLiteral("dd.MM.yy"));
        if (type == QLatin1String("Text")) {
            transform.parameter("Text_Values")->setValue(range.first());
        } else {
            const QString suffix = type == QLatin1String("Integer") ? QStringLiteral("Int") : type;
            transform.parameter("Minimum_" + suffix)->setValue(range.first());
            transform.parameter("Maximum_" + suffix)->setValue(range.last());
        }
        const Dataset output = runTransform(transform, {node.data()});
        [&] {
            QCOMPARE(output.headerText(1), QString("Random"));
        }();
        return lastColumn(output);
    };

    const QStringList values = generate(42);
    QCOMPARE(generate(42), values);
    if (mustAppear.size() != 1)
        QVERIFY(generate(43) != values);
    const QRegularExpression whole(QRegularExpression::anchoredPattern(pattern));
    for (const QString &value : values) {
        bool ok = false;
        const double number = value.toDouble(&ok);
        const bool fits = pattern.isEmpty() ? ok && number >= -1.0 && number < 1.0
                                            : whole.match(value).hasMatch();
        QVERIFY2(fits, qPrintable(value));
    }
    for (const QString &value : mustAppear)
        QVERIFY2(values.contains(value), qPrintable(value));
}

void TestTransformHash::randomMinimumAboveMaximum()
{
    QScopedPointer<DataSource> node(makeDataSource(makeDataset({{"n"}, {"1"}, {"2"}})));
    TransformRandom transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Minimum_Int")->setValue(5);
    transform.parameter("Maximum_Int")->setValue(4);
    const Dataset output = runTransform(transform, {node.data()});
    QCOMPARE(lastColumn(output), QStringList({"", ""}));
    QCOMPARE(transform.warnings(), QStringList({"'Minimum' is greater than 'Maximum'"}));
}

void TestTransformHash::randomMaximumOfOldDocumentIsLowered_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<int>("maximum");
    QTest::newRow("version 60 lowers it by one") << 60 << 9;
    QTest::newRow("version 78 keeps it") << 78 << 10;
}

void TestTransformHash::randomMaximumOfOldDocumentIsLowered()
{
    QFETCH(int, version);
    QFETCH(int, maximum);

    QTemporaryDir folder;
    const QString path = folder.filePath("old.tabulon");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QStringLiteral("<!DOCTYPE Tabulon>\n<root><meta><version value=\"%1\"/></meta>"
                              "<transforms><transform id=\"1\" name=\"Random\"><parameters>"
                              "<parameter name=\"Minimum_Int\" type=\"8\" value=\"10\"/>"
                              "<parameter name=\"Maximum_Int\" type=\"8\" value=\"10\"/>"
                              "</parameters></transform></transforms></root>\n")
                   .arg(version)
                   .toUtf8());
    file.close();

    FlowModel model;
    DocumentData data;
    bool later = false;
    QStringList messages;
    QString error;
    QVERIFY2(loadDocument(&model, path, &data, &later, &messages, &error), qPrintable(error));
    auto *item = qobject_cast<TransformItem *>(model.itemById(1));
    QVERIFY(item);
    Parameter *minimum = item->transform()->parameter("Minimum_Int");
    Parameter *maximumOption = item->transform()->parameter("Maximum_Int");
    minimum->resolvePendingText();
    maximumOption->resolvePendingText();
    QVERIFY(!maximumOption->hasPendingText());
    QCOMPARE(minimum->toInt(), 10);
    QCOMPARE(maximumOption->toInt(), maximum);
}

QTEST_GUILESS_MAIN(TestTransformHash)
#include "tst_transformhash.moc"
