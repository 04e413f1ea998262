#include "data/dataset.h"
#include "io/outputwriters.h"
#include "testdata.h"

#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using Rows = QList<QStringList>;

class TestOutputWriters : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void delimited_data();
    void delimited();
    void byteOrderMark_data();
    void byteOrderMark();
    void appendRules_data();
    void appendRules();
    void writeModes_data();
    void writeModes();
    void openFailures_data();
    void openFailures();
    void extensionMismatch_data();
    void extensionMismatch();
    void unavailableTypes_data();
    void unavailableTypes();
    void html_data();
    void html();
    void markdown_data();
    void markdown();
    void plainText_data();
    void plainText();
    void progressEveryThousandRows();

private:
    QString pathOf(const QString &name) const { return m_dir.filePath(name); }
    static QByteArray readAll(const QString &path);
    static void writeAll(const QString &path, const QByteArray &bytes);

    QTemporaryDir m_dir;
};

QByteArray TestOutputWriters::readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray("<missing>");
    return file.readAll();
}

void TestOutputWriters::writeAll(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

void TestOutputWriters::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
}

void TestOutputWriters::delimited_data()
{
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<QChar>("delimiter");
    QTest::addColumn<int>("quoting");
    QTest::addColumn<int>("lineEnding");
    QTest::addColumn<QByteArray>("expected");
    QTest::addColumn<QStringList>("warnings");

    const Rows tricky
        = {{"x", "y"}, {"1,2", "say \"hi\""}, {"line\nbreak", "plain"}, {"semi;colon", "cr\rhere"}};
    QTest::newRow("as needed") << tricky << QChar(',') << int(OutputQuotingAsNeeded)
                               << int(LineEndingAutomatic)
                               << QByteArray("x,y\r\n\"1,2\",\"say \"\"hi\"\"\"\r\n"
                                             "\"line\nbreak\",plain\r\nsemi;colon,\"cr\rhere\"\r\n")
                               << QStringList();
    QTest::newRow("as needed, semicolon")
        << tricky << QChar(';') << int(OutputQuotingAsNeeded) << int(LineEndingUnix)
        << QByteArray("x;y\n1,2;\"say \"\"hi\"\"\"\n\"line\nbreak\";plain\n"
                      "\"semi;colon\";\"cr\rhere\"\n")
        << QStringList();
    QTest::newRow("always") << Rows {{"x", "y"}, {"a", "b\"c"}, {"", "d"}} << QChar(',')
                            << int(OutputQuotingAlways) << int(LineEndingWindows)
                            << QByteArray("\"x\",\"y\"\r\n\"a\",\"b\"\"c\"\r\n\"\",\"d\"\r\n")
                            << QStringList();
    const QString never = QStringLiteral(
        "Delimiter, Line Feed or Carriage Return characters were found within %1 unquoted data "
        "value(s). These have been replaced with '%2'. You may want to use a 'Replace' transform "
        "to replace these characters or output the file with 'Quoting' set to 'As needed'.");
    QTest::newRow("never, tab") << Rows {{"x\ty", "z"}, {"a\tb", "c\r\nd"}, {"e f", "\"g\""}}
                                << QChar('\t') << int(OutputQuotingNever) << int(LineEndingUnix)
                                << QByteArray("x y\tz\na b\tc  d\ne f\t\"g\"\n")
                                << QStringList {never.arg(3).arg(' ')};
    QTest::newRow("never, space") << Rows {{"x", "y"}, {"a b", "c\nd"}, {"e", "f"}} << QChar(' ')
                                  << int(OutputQuotingNever) << int(LineEndingUnix)
                                  << QByteArray("x y\na_b c_d\ne f\n")
                                  << QStringList {never.arg(2).arg('_')};
    QTest::newRow("never, nothing to replace")
        << Rows {{"x"}, {"a,b"}} << QChar('\t') << int(OutputQuotingNever) << int(LineEndingUnix)
        << QByteArray("x\na,b\n") << QStringList();
    QTest::newRow("old mac") << Rows {{"x"}, {"1"}} << QChar(',') << int(OutputQuotingAsNeeded)
                             << int(LineEndingOldMac) << QByteArray("x\r1\r") << QStringList();
    QTest::newRow("record separator")
        << Rows {{"x"}, {"1"}} << QChar(',') << int(OutputQuotingAsNeeded)
        << int(LineEndingRecordSeparator)
        << QByteArray("x\x1e"
                      "1\x1e")
        << QStringList();
    QTest::newRow("header alone") << Rows {{"x", "y"}} << QChar(',') << int(OutputQuotingAsNeeded)
                                  << int(LineEndingUnix) << QByteArray("x,y\n") << QStringList();
}

void TestOutputWriters::delimited()
{
    QFETCH(Rows, rows);
    QFETCH(QChar, delimiter);
    QFETCH(int, quoting);
    QFETCH(int, lineEnding);
    QFETCH(QByteArray, expected);
    QFETCH(QStringList, warnings);

    OutputFileOptions options;
    options.byteOrderMark = false;
    options.delimiter = delimiter;
    options.quoting = quoting;
    options.lineEnding = lineEnding;
    options.comment = QStringLiteral("never written in delimited files");
    WriteReport report;
    const QString path = pathOf(QStringLiteral("delimited.csv"));
    QVERIFY(writeOutputFile(path, makeDataset(rows), options, report, {}));
    QCOMPARE(readAll(path), expected);
    QCOMPARE(report.warnings, warnings);
    QVERIFY(report.written);
}

void TestOutputWriters::byteOrderMark_data()
{
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<bool>("bom");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("UTF-8 with mark")
        << "UTF-8" << true << QByteArray("\xEF\xBB\xBFh\r\n\xC3\xA9\r\n");
    QTest::newRow("UTF-8 without") << "UTF-8" << false << QByteArray("h\r\n\xC3\xA9\r\n");
    QTest::newRow("lower-case utf-8")
        << "utf-8" << true << QByteArray("\xEF\xBB\xBFh\r\n\xC3\xA9\r\n");
    QTest::newRow("Latin-1 never has one") << "ISO-8859-1" << true << QByteArray("h\r\n\xE9\r\n");
    QTest::newRow("UTF-16LE with mark")
        << "UTF-16LE" << true << QByteArray("\xFF\xFEh\0\r\0\n\0\xE9\0\r\0\n\0", 14);
    QTest::newRow("UTF-16LE without")
        << "UTF-16LE" << false << QByteArray("h\0\r\0\n\0\xE9\0\r\0\n\0", 12);
}

void TestOutputWriters::byteOrderMark()
{
    QFETCH(QString, encoding);
    QFETCH(bool, bom);
    QFETCH(QByteArray, expected);

    OutputFileOptions options;
    options.encoding = encoding;
    options.byteOrderMark = bom;
    WriteReport report;
    const QString path = pathOf(QStringLiteral("bom.csv"));
    QVERIFY(writeOutputFile(path, makeDataset({{"h"}, {QStringLiteral("\u00E9")}}), options, report,
                            {}));
    QCOMPARE(readAll(path), expected);
}

void TestOutputWriters::appendRules_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<bool>("exists");
    QTest::addColumn<bool>("headerOnlyIfEmpty");
    QTest::addColumn<QByteArray>("expected");

    const QByteArray bom("\xEF\xBB\xBF");
    QTest::newRow("new file") << QByteArray() << false << true << bom + "h\n1\n";
    QTest::newRow("empty file") << QByteArray() << true << true << bom + "h\n1\n";
    QTest::newRow("3 bytes: header, no mark")
        << QByteArray("abc") << true << true << QByteArray("abch\n1\n");
    QTest::newRow("a mark alone counts as empty") << bom << true << true << bom + "h\n1\n";
    QTest::newRow("4 bytes: no header")
        << QByteArray("abcd") << true << true << QByteArray("abcd1\n");
    QTest::newRow("header every time")
        << QByteArray("h\n0\n") << true << false << QByteArray("h\n0\nh\n1\n");
}

void TestOutputWriters::appendRules()
{
    QFETCH(QByteArray, before);
    QFETCH(bool, exists);
    QFETCH(bool, headerOnlyIfEmpty);
    QFETCH(QByteArray, expected);

    const QString path = pathOf(QStringLiteral("append.csv"));
    QFile::remove(path);
    if (exists)
        writeAll(path, before);
    OutputFileOptions options;
    options.writeMode = WriteAppend;
    options.lineEnding = LineEndingUnix;
    options.writeHeaderFirstAppendOnly = headerOnlyIfEmpty;
    WriteReport report;
    QVERIFY(writeOutputFile(path, makeDataset({{"h"}, {"1"}}), options, report, {}));
    QCOMPARE(readAll(path), expected);
    QVERIFY(report.warnings.isEmpty());
}

void TestOutputWriters::writeModes_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("exists");
    QTest::addColumn<QByteArray>("expected");
    QTest::addColumn<bool>("written");
    QTest::addColumn<QString>("warning");

    QTest::newRow("overwrite truncates")
        << int(WriteOverwrite) << true << QByteArray("h\n1\n") << true << QString();
    QTest::newRow("header off") << int(WriteOverwrite) << false << QByteArray("1\n") << true
                                << QString();
    QTest::newRow("new creates") << int(WriteNew) << false << QByteArray("h\n1\n") << true
                                 << QString();
    QTest::newRow("new keeps an existing file")
        << int(WriteNew) << true << QByteArray("old contents, longer than the new ones\n") << false
        << QStringLiteral("Write mode='New' and '%1' already exists");
    QTest::newRow("disabled writes nothing")
        << int(WriteDisabled) << false << QByteArray("<missing>") << false << QString();
}

void TestOutputWriters::writeModes()
{
    QFETCH(int, mode);
    QFETCH(bool, exists);
    QFETCH(QByteArray, expected);
    QFETCH(bool, written);
    QFETCH(QString, warning);

    const QString path = pathOf(QStringLiteral("mode.csv"));
    QFile::remove(path);
    if (exists)
        writeAll(path, "old contents, longer than the new ones\n");
    OutputFileOptions options;
    options.writeMode = mode;
    options.byteOrderMark = false;
    options.lineEnding = LineEndingUnix;
    options.writeHeader = QByteArray(QTest::currentDataTag()) != "header off";
    WriteReport report;
    QVERIFY(writeOutputFile(path, makeDataset({{"h"}, {"1"}}), options, report, {}));
    QCOMPARE(readAll(path), expected);
    QCOMPARE(report.written, written);
    QCOMPARE(report.warnings, warning.isEmpty() ? QStringList() : QStringList {warning.arg(path)});
}

void TestOutputWriters::openFailures_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("warning");
    QTest::newRow("overwrite") << int(WriteOverwrite) << "Unable to write '%1'";
    QTest::newRow("append") << int(WriteAppend) << "Unable to append to '%1'";
    QTest::newRow("new") << int(WriteNew) << "Unable to create '%1'";
}

void TestOutputWriters::openFailures()
{
    QFETCH(int, mode);
    QFETCH(QString, warning);
    const QString path = pathOf(QStringLiteral("no/such/folder/out.csv"));
    OutputFileOptions options;
    options.writeMode = mode;
    WriteReport report;
    QVERIFY(!writeOutputFile(path, makeDataset({{"h"}, {"1"}}), options, report, {}));
    QCOMPARE(report.warnings, QStringList {warning.arg(path)});
    QVERIFY(!report.written);
}

void TestOutputWriters::extensionMismatch_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("fileType");
    QTest::addColumn<QString>("warning");
    QTest::newRow("html written as delimited")
        << "out.html" << 0 << "'%1' extension is 'html' but file type is Delimited text.";
    QTest::newRow("upper-case extension")
        << "OUT.MD" << 10 << "'%1' extension is 'MD' but file type is Plain text.";
    QTest::newRow("tsv is delimited") << "out.tsv" << 0 << QString();
    QTest::newRow("unknown extension") << "out.dat" << 8 << QString();
}

void TestOutputWriters::extensionMismatch()
{
    QFETCH(QString, name);
    QFETCH(int, fileType);
    QFETCH(QString, warning);
    OutputFileOptions options;
    options.fileType = fileType;
    options.extensionTypes = FileFormats::defaultOutputExtensionTypes();
    WriteReport report;
    const QString path = pathOf(name);
    QVERIFY(writeOutputFile(path, makeDataset({{"h"}, {"1"}}), options, report, {}));
    QCOMPARE(report.warnings, warning.isEmpty() ? QStringList() : QStringList {warning.arg(path)});
}

void TestOutputWriters::unavailableTypes_data()
{
    QTest::addColumn<int>("fileType");
    QTest::addColumn<QString>("name");
    QTest::newRow("json") << 4 << "JSON";
    QTest::newRow("xml") << 5 << "XML";
    QTest::newRow("vcard") << 6 << "vCard";
    QTest::newRow("yaml") << 7 << "YAML";
}

void TestOutputWriters::unavailableTypes()
{
    QFETCH(int, fileType);
    QFETCH(QString, name);
    const QString path = pathOf(QStringLiteral("unavailable.out"));
    OutputFileOptions options;
    options.fileType = fileType;
    WriteReport report;
    QVERIFY(!writeOutputFile(path, makeDataset({{"h"}, {"1"}}), options, report, {}));
    QCOMPARE(report.warnings,
             QStringList {QStringLiteral("Writing %1 files is not available yet.").arg(name)});
    QVERIFY(!QFile::exists(path));
}

void TestOutputWriters::html_data()
{
    QTest::addColumn<bool>("escape");
    QTest::addColumn<bool>("header");
    QTest::addColumn<QString>("body");

    const QString headerRow = QStringLiteral("        <tr>\n"
                                             "          <th>a &amp; b</th>\n"
                                             "          <th>2</th>\n"
                                             "        </tr>\n");
    QTest::newRow("escaped") << true << true
                             << headerRow
            + "        <tr>\n"
              "          <td>&lt;i&gt;x&lt;/i&gt;</td>\n"
              "          <td>&quot;q&quot;</td>\n"
              "        </tr>\n";
    QTest::newRow("raw") << false << true
                         << QStringLiteral("        <tr>\n"
                                           "          <th>a & b</th>\n"
                                           "          <th>2</th>\n"
                                           "        </tr>\n"
                                           "        <tr>\n"
                                           "          <td><i>x</i></td>\n"
                                           "          <td>\"q\"</td>\n"
                                           "        </tr>\n");
    QTest::newRow("no header") << true << false
                               << QStringLiteral("        <tr>\n"
                                                 "          <td>&lt;i&gt;x&lt;/i&gt;</td>\n"
                                                 "          <td>&quot;q&quot;</td>\n"
                                                 "        </tr>\n");
}

void TestOutputWriters::html()
{
    QFETCH(bool, escape);
    QFETCH(bool, header);
    QFETCH(QString, body);

    OutputFileOptions options;
    options.fileType = 8;
    options.byteOrderMark = false;
    options.lineEnding = LineEndingUnix;
    options.htmlEncode = escape;
    options.writeHeader = header;
    options.comment = QStringLiteral(" made <here> ");
    const QString path = pathOf(QStringLiteral("R&D.html"));
    Dataset dataset = makeDataset({{"a & b", ""}, {"<i>x</i>", "\"q\""}});
    WriteReport report;
    QVERIFY(writeOutputFile(path, dataset, options, report, {}));
    const QString expected
        = QStringLiteral("<!-- made &lt;here&gt; -->\n"
                         "<!DOCTYPE html>\n"
                         "<html>\n"
                         "  <head>\n"
                         "    <meta charset=\"UTF-8\"/>\n"
                         "    <title>")
        + QString(path).replace("&", "&amp;")
        + QStringLiteral(
              "</title>\n"
              "    <style>table,td,th{border:1px solid black;text-align:left;vertical-align:top;"
              "border-spacing:0px;border-color:gray;font-family:Verdana,sans-serif;}"
              "th{background-color:#E0E0E0;}td,th{padding:5px;}</style>\n"
              "  </head>\n"
              "  <body>\n"
              "    <table>\n"
              "      <tbody>\n")
        + body
        + QStringLiteral("      </tbody>\n"
                         "    </table>\n"
                         "  </body>\n"
                         "</html>\n");
    QCOMPARE(QString::fromUtf8(readAll(path)), expected);
    QVERIFY(report.warnings.isEmpty());
}

void TestOutputWriters::markdown_data()
{
    QTest::addColumn<bool>("header");
    QTest::addColumn<QString>("comment");
    QTest::addColumn<QByteArray>("expected");

    // The second column is as wide as its name with a header, and 3 without one.
    QTest::newRow("header and comment") << true << " c <b> "
                                        << QByteArray("<!-- c <b> -->\r\n\r\n"
                                                      "| id   | long name |\r\n"
                                                      "|------|-----------|\r\n"
                                                      "| 1    | a|b       |\r\n"
                                                      "| 1234 |           |\r\n");
    QTest::newRow("no header") << false << ""
                               << QByteArray("| 1    | a|b |\r\n"
                                             "| 1234 |     |\r\n");
}

void TestOutputWriters::markdown()
{
    QFETCH(bool, header);
    QFETCH(QString, comment);
    QFETCH(QByteArray, expected);
    OutputFileOptions options;
    options.fileType = 9;
    options.byteOrderMark = false;
    options.writeHeader = header;
    options.comment = comment;
    Dataset dataset = makeDataset({{"id", "long name"}, {"1", "a|b"}, {"1234", ""}});
    const QString path = pathOf(QStringLiteral("table.md"));
    WriteReport report;
    QVERIFY(writeOutputFile(path, dataset, options, report, {}));
    QCOMPARE(readAll(path), expected);
}

void TestOutputWriters::plainText_data()
{
    QTest::addColumn<Rows>("rows");
    QTest::addColumn<bool>("header");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("one column") << Rows {{"v"}, {"a"}, {""}, {"b c"}} << true
                                << QByteArray("v\na\n\nb c\n");
    QTest::newRow("cells joined") << Rows {{"x", "y"}, {"1", "2"}} << true
                                  << QByteArray("xy\n12\n");
    QTest::newRow("no header") << Rows {{"x", "y"}, {"1", "2"}} << false << QByteArray("12\n");
}

void TestOutputWriters::plainText()
{
    QFETCH(Rows, rows);
    QFETCH(bool, header);
    QFETCH(QByteArray, expected);
    OutputFileOptions options;
    options.fileType = 10;
    options.byteOrderMark = false;
    options.lineEnding = LineEndingUnix;
    options.writeHeader = header;
    options.comment = QStringLiteral("not written in plain text");
    const QString path = pathOf(QStringLiteral("plain.txt"));
    WriteReport report;
    QVERIFY(writeOutputFile(path, makeDataset(rows), options, report, {}));
    QCOMPARE(readAll(path), expected);
}

void TestOutputWriters::progressEveryThousandRows()
{
    Rows rows {{"n"}};
    for (int i = 0; i < 2500; ++i)
        rows.append({QString::number(i)});
    const Dataset dataset = makeDataset(rows);
    QList<double> reported;
    const WriteProgress progress = [&reported](double fraction) {
        reported.append(fraction);
    };
    for (int type : {0, 8, 9, 10}) {
        reported.clear();
        OutputFileOptions options;
        options.fileType = type;
        WriteReport report;
        QVERIFY(writeOutputFile(pathOf(QStringLiteral("progress.out")), dataset, options, report,
                                progress));
        QCOMPARE(reported, (QList<double> {0.0, 0.4, 0.8}));
    }
}

QTEST_GUILESS_MAIN(TestOutputWriters)
#include "tst_outputwriters.moc"
