#include "testdata.h"
#include "transforms/framework/parameter.h"
#include "transforms/transformdecode.h"
#include "transforms/transformuuid.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSet>
#include <QtTest>

// Decode's eight changes, each checked against a value worked out by hand and, where both
// ways exist, round-tripped through non-ASCII text; and UUID's formats and uniqueness.
class TestTransformEncodings : public QObject
{
    Q_OBJECT

private slots:
    void changes_data();
    void changes();
    void roundTrips_data();
    void roundTrips();
    void onlyChosenColumnsChange();
    void uuidFormats_data();
    void uuidFormats();
};

void TestTransformEncodings::changes_data()
{
    QTest::addColumn<int>("change");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    using D = TransformDecode;
    QTest::newRow("to Base64 of UTF-8") << int(D::ToBase64) << "Grüße"
                                        << "R3LDvMOfZQ==";
    QTest::newRow("from Base64") << int(D::FromBase64) << "R3LDvMOfZQ=="
                                 << "Grüße";
    QTest::newRow("from Base64 that isn't stays") << int(D::FromBase64) << "not base64!"
                                                  << "not base64!";
    QTest::newRow("to URL, unreserved kept") << int(D::ToUrl) << "a b&c=d/é~_.-"
                                             << "a%20b%26c%3Dd%2F%C3%A9~_.-";
    QTest::newRow("from URL") << int(D::FromUrl) << "a%20b%26c%3D%C3%A9+x"
                              << "a b&c=é+x";
    QTest::newRow("to HTML") << int(D::ToHtml) << "<a href=\"x\">&</a>"
                             << "&lt;a href=&quot;x&quot;&gt;&amp;&lt;/a&gt;";
    QTest::newRow("from HTML: names, numbers, and what isn't a reference")
        << int(D::FromHtml) << "&lt;b&gt; &euro;5 &#233;&#x20AC; &nosuch; a&b &#0;"
        << "<b> €5 é€ &nosuch; a&b &#0;";
    QTest::newRow("to XML") << int(D::ToXml) << "it's <1> & \"2\""
                            << "it&apos;s &lt;1&gt; &amp; &quot;2&quot;";
    QTest::newRow("from XML leaves HTML-only names")
        << int(D::FromXml) << "&apos;&amp;&nbsp;&#x1F600;"
        << QString("'&&nbsp;") + QChar(0xD83D) + QChar(0xDE00);
    QTest::newRow("nothing chosen") << int(D::Unchosen) << "&amp;"
                                    << "&amp;";
}

void TestTransformEncodings::changes()
{
    QFETCH(int, change);
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(TransformDecode::changed(text, change), expected);
}

void TestTransformEncodings::roundTrips_data()
{
    QTest::addColumn<int>("to");
    QTest::addColumn<int>("from");
    QTest::newRow("Base64") << int(TransformDecode::ToBase64) << int(TransformDecode::FromBase64);
    QTest::newRow("URL") << int(TransformDecode::ToUrl) << int(TransformDecode::FromUrl);
    QTest::newRow("HTML") << int(TransformDecode::ToHtml) << int(TransformDecode::FromHtml);
    QTest::newRow("XML") << int(TransformDecode::ToXml) << int(TransformDecode::FromXml);
}

void TestTransformEncodings::roundTrips()
{
    QFETCH(int, to);
    QFETCH(int, from);
    const QString text
        = QStringLiteral("Zoë & 北京 <tag attr='1'> 100%% ") + QChar(0xD83D) + QChar(0xDE00);
    const QString encoded = TransformDecode::changed(text, to);
    QVERIFY(encoded != text);
    QCOMPARE(TransformDecode::changed(encoded, from), text);
}

void TestTransformEncodings::onlyChosenColumnsChange()
{
    QScopedPointer<DataSource> node(
        makeDataSource(makeDataset({{"plain", "coded"}, {"a b", "a b"}, {"c", ""}})));
    TransformDecode transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Columns")->setColumns({node->dataset()->columnId(1)});
    transform.parameter("Change")->setValue(QStringLiteral("To URL encoding"));
    const Dataset output = runTransform(transform, {node.data()});
    QCOMPARE(output.rows(), QList<QStringList>({{"a b", "a%20b"}, {"c", ""}}));
    QCOMPARE(transform.result(), QString("1 changed, 1 unchanged"));
}

void TestTransformEncodings::uuidFormats_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("pattern");
    const QString hex = QStringLiteral("[0-9a-f]");
    const QString dashed = QStringLiteral("%1{8}-%1{4}-4%1{3}-[89ab]%1{3}-%1{12}").arg(hex);
    QTest::newRow("standard") << "Standard"
                              << "\\{" + dashed + "\\}";
    QTest::newRow("without braces") << "Without braces" << dashed;
    QTest::newRow("without braces or dashes")
        << "Without braces or dashes" << QStringLiteral("%1{12}4%1{3}[89ab]%1{15}").arg(hex);
}

void TestTransformEncodings::uuidFormats()
{
    QFETCH(QString, format);
    QFETCH(QString, pattern);
    QList<QStringList> rows {{"n"}};
    for (int i = 0; i < 500; ++i)
        rows.append({QString::number(i)});
    QScopedPointer<DataSource> node(makeDataSource(makeDataset(rows)));
    TransformUUID transform;
    transform.createParameters({node.data()}, false);
    transform.parameter("Format")->setValue(format);
    transform.parameter("New_Name")->setValue(QStringLiteral("id"));
    const Dataset output = runTransform(transform, {node.data()});
    QCOMPARE(output.headers(), QStringList({"n", "id"}));
    const QRegularExpression whole(QRegularExpression::anchoredPattern(pattern));
    QSet<QString> seen;
    for (int r = 0; r < output.rowCount(); ++r) {
        const QString id = output.cell(r, 1);
        QVERIFY2(whole.match(id).hasMatch(), qPrintable(id));
        seen.insert(id);
    }
    QCOMPARE(seen.size(), 500);
    QCOMPARE(transform.result(), QString("1 col added"));
}

QTEST_GUILESS_MAIN(TestTransformEncodings)
#include "tst_transformencodings.moc"
