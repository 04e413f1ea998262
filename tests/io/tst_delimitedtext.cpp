#include "data/dataset.h"
#include "io/delimitedtext.h"

#include <QLocale>
#include <QRandomGenerator>
#include <QTemporaryFile>
#include <QTest>
#include <QTextStream>

#include <stdexcept>

Q_DECLARE_METATYPE(DelimitedReadOptions)

namespace {

// Options with no clean-up, so that the tokens come out as cut.
DelimitedReadOptions rawOptions(int delimiter, int quoting)
{
    DelimitedReadOptions options;
    options.delimiter = delimiter;
    options.quoting = quoting;
    options.trim = false;
    options.simplify = false;
    options.ignoreEmpty = false;
    return options;
}

DelimitedReadOptions withIgnored(DelimitedReadOptions options, int rows)
{
    options.ignoredRows = rows;
    return options;
}

DelimitedReadOptions withRepeated(DelimitedReadOptions options)
{
    options.ignoreRepeatedDelimiters = true;
    return options;
}

DelimitedReadOptions withCleanUp(DelimitedReadOptions options)
{
    options.trim = true;
    options.simplify = true;
    options.ignoreEmpty = true;
    return options;
}

const DelimitedReadOptions quotedComma = rawOptions(DelimiterComma, QuotingQuoted);
const DelimitedReadOptions unquotedComma = rawOptions(DelimiterComma, QuotingUnquoted);

QString emptyGuessText()
{
    return QStringLiteral("Delimiter=Automatic guesses 'Comma (,)'. Set 'Delimiter' option to "
                          "change.\nFirst 0 characters contain: 0 Comma (,), 0 Semi-colon (;), "
                          "0 Pipe (|), 0 Caret (^), 0 Tab (\\t), 0 Unit separator (0x1F)\n");
}

QString quotingGuessText(const QString &name)
{
    return QStringLiteral("Quoting=Automatic guesses '%1'. Set 'Quoting' option to change.\n")
        .arg(name);
}

struct ReadResult
{
    Dataset dataset;
    TextReadReport report;
};

ReadResult readString(QString text, const DelimitedReadOptions &options, bool plain = false)
{
    ReadResult result;
    QTextStream stream(&text, QIODevice::ReadOnly);
    if (plain)
        readPlainText(stream, text.size(), options, result.dataset, result.report, {});
    else
        readDelimitedText(stream, text.size(), options, result.dataset, result.report, {});
    return result;
}

// The same read through a file, where the stream decodes and buffers a device.
ReadResult readFile(const QString &text, const DelimitedReadOptions &options, bool plain = false)
{
    ReadResult result;
    QTemporaryFile file;
    if (!file.open())
        qFatal("cannot create a temporary file");
    file.write(text.toUtf8());
    file.flush();
    file.seek(0);
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    if (plain)
        readPlainText(stream, text.size(), options, result.dataset, result.report, {});
    else
        readDelimitedText(stream, text.size(), options, result.dataset, result.report, {});
    return result;
}

QList<QStringList> rowsOf(const Dataset &dataset)
{
    return dataset.rows();
}

// The quoted reader as its table reads, one character at a time over the whole text, with
// no clean-up: the model that the block-wise reader must agree with.
QList<QStringList> modelRows(const QString &text, QChar delimiter, int ignoredRows,
                             bool ignoreRepeated)
{
    static const int next[7][4] = {{5, 2, 6, 1}, {5, 1, 6, 1}, {3, 4, 3, 3}, {3, 4, 3, 3},
                                   {5, 3, 6, 3}, {5, 2, 6, 1}, {5, 2, 6, 1}};
    QList<QStringList> rows;
    QStringList row;
    QString value;
    int state = 0;
    int rowIndex = 0;
    for (int i = 0; i < text.size(); ++i) {
        QChar c = text.at(i);
        if (c == '\r' && state != 2 && state != 3 && i + 1 < text.size() && text.at(i + 1) == '\n')
            c = text.at(++i);
        const int charClass = c == delimiter ? 0 : c == '"' ? 1 : (c == '\n' || c == '\r') ? 2 : 3;
        state = next[state][charClass];
        if (state == 1 || state == 3) {
            value += c;
        } else if (state == 2) {
            value.clear();
        } else if (state == 5 && !(ignoreRepeated && value.isEmpty())) {
            row << value;
            value.clear();
        } else if (state == 6) {
            row << value;
            value.clear();
            if (rowIndex++ >= ignoredRows)
                rows << row;
            row.clear();
        }
    }
    if (!value.isEmpty() || !row.isEmpty())
        row << value;
    if (!row.isEmpty() && rowIndex >= ignoredRows)
        rows << row;
    int width = 0;
    for (const QStringList &r : qAsConst(rows))
        width = qMax(width, r.size());
    for (QStringList &r : rows) {
        while (r.size() < width)
            r << QString();
    }
    return rows;
}

// The unquoted reader as described: lines of the text stream, rebuilt from the end when
// repeated delimiters are ignored, split at CR into rows and at the delimiter into values.
QList<QStringList> unquotedModelRows(QString text, QChar delimiter, int ignoredRows,
                                     bool ignoreRepeated)
{
    QList<QStringList> rows;
    QTextStream stream(&text, QIODevice::ReadOnly);
    QString line;
    int rowIndex = 0;
    while (stream.readLineInto(&line)) {
        if (ignoreRepeated) {
            QString rebuilt;
            for (int i = line.size() - 1; i >= 0; --i) {
                if (!(line.at(i) == delimiter && rebuilt.startsWith(delimiter)))
                    rebuilt.prepend(line.at(i));
            }
            line = rebuilt;
        }
        const QStringList pieces = line.split(QLatin1Char('\r'));
        for (const QString &piece : pieces) {
            if (rowIndex++ >= ignoredRows)
                rows << piece.split(delimiter);
        }
    }
    int width = 0;
    for (const QStringList &r : qAsConst(rows))
        width = qMax(width, r.size());
    for (QStringList &r : rows) {
        while (r.size() < width)
            r << QString();
    }
    return rows;
}

} // namespace

class TestDelimitedText : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void enumerations();
    void read_data();
    void read();
    void plainText_data();
    void plainText();
    void guess_data();
    void guess();
    void blockBoundaries_data();
    void blockBoundaries();
    void agreesWithModel();
    void progress_data();
    void progress();
    void progressThrows();
    void datasetFromStream();
};

void TestDelimitedText::initTestCase()
{
    QLocale::setDefault(QLocale::c());
}

void TestDelimitedText::enumerations()
{
    QCOMPARE(delimiterList(false, false, false),
             QList<int>({DelimiterComma, DelimiterSemicolon, DelimiterPipe, DelimiterCaret,
                         DelimiterTab, DelimiterUnitSeparator}));
    QCOMPARE(delimiterList(true, true, true),
             QList<int>({DelimiterAutomatic, DelimiterComma, DelimiterSemicolon, DelimiterColon,
                         DelimiterPipe, DelimiterCaret, DelimiterTab, DelimiterUnitSeparator,
                         DelimiterSpace, DelimiterCustom}));
    QCOMPARE(delimiterName(DelimiterUnitSeparator), QStringLiteral("Unit separator (0x1F)"));
    QCOMPARE(delimiterName(DelimiterTab), QStringLiteral("Tab (\\t)"));
    QCOMPARE(delimiterName(42), QStringLiteral("Comma (,)"));
    QCOMPARE(delimiterCharacter(42), QChar(QLatin1Char(',')));
    QCOMPARE(delimiterCharacter(DelimiterUnitSeparator), QChar(0x1F));
    QCOMPARE(delimiterCharacter(DelimiterCustom, QLatin1Char('#')), QChar(QLatin1Char('#')));
    QCOMPARE(quotingNames(), QStringList({"Automatic", "Quoted", "Unquoted"}));
    QCOMPARE(quotingToolTip(),
             QStringLiteral("Set to 'Quoted' if values can contain delimiters and Carriage "
                            "Returns enclosed within quotes (\").\nSet to 'Unquoted' if quoting "
                            "is not used.\nSet to 'Automatic' to make an intelligent guess based "
                            "on the delimiter."));
}

void TestDelimitedText::read_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<DelimitedReadOptions>("options");
    QTest::addColumn<QList<QStringList>>("rows");
    QTest::addColumn<QStringList>("info");
    QTest::addColumn<QStringList>("warnings");

    const QStringList none;
    const QStringList ab = {"a", "b"};

    QTest::newRow("empty, automatic")
        << QString() << DelimitedReadOptions() << QList<QStringList>()
        << QStringList({emptyGuessText(), quotingGuessText("Quoted")}) << none;

    const QStringList endings = {"\r\n", "\n", "\r", ""};
    for (const QString &ending : endings) {
        const QByteArray name = ending.toUtf8().toPercentEncoding();
        QTest::addRow("quoted, ending %s", name.constData())
            << "a,b" + ending << quotedComma << QList<QStringList>({ab}) << none << none;
        QTest::addRow("unquoted, ending %s", name.constData())
            << "a,b" + ending << unquotedComma << QList<QStringList>({ab}) << none << none;
    }

    QTest::newRow("quoted, trailing comma")
        << "a,b," << quotedComma << QList<QStringList>({{"a", "b", ""}}) << none << none;
    QTest::newRow("unquoted, trailing comma")
        << "a,b," << unquotedComma << QList<QStringList>({{"a", "b", ""}}) << none << none;
    QTest::newRow("doubled quote")
        << "\"a\"\"b\",c\n"
        << quotedComma << QList<QStringList>({{"a\"b", "c"}}) << none << none;
    QTest::newRow("quote inside plain value")
        << "a\"b,c\n"
        << quotedComma << QList<QStringList>({{"a\"b", "c"}}) << none << none;
    QTest::newRow("text after closing quote stays quoted")
        << "\"a\"b,c\",d\n"
        << quotedComma << QList<QStringList>({{"ab,c", "d"}}) << none << none;
    QTest::newRow("unclosed quote swallows the rest")
        << "x,\"b,c\nd,e\n"
        << quotedComma << QList<QStringList>({{"x", "b,c\nd,e\n"}}) << none << none;
    QTest::newRow("empty quoted value")
        << "a,\"\",b\n"
        << quotedComma << QList<QStringList>({{"a", "", "b"}}) << none << none;
    QTest::newRow("quoted CR LF kept")
        << "\"a\r\nb\",c\r\n"
        << quotedComma << QList<QStringList>({{"a\r\nb", "c"}}) << none << none;
    QTest::newRow("quoted CR LF simplified")
        << "\" a\r\nb\",c\r\n"
        << withCleanUp(quotedComma) << QList<QStringList>({{"a b", "c"}}) << none << none;
    QTest::newRow("CR LF right after the opening quote")
        << "\"\r\n\",x\n"
        << quotedComma << QList<QStringList>({{"\r\n", "x"}}) << none << none;
    QTest::newRow("lone CR in quotes kept")
        << "\"a\rb\"\rc\r" << quotedComma << QList<QStringList>({{"a\rb"}, {"c"}}) << none << none;
    QTest::newRow("quoted, CR alone ends rows")
        << "a,b\rc,d\r" << quotedComma << QList<QStringList>({ab, {"c", "d"}}) << none << none;
    QTest::newRow("unquoted, CR alone ends rows")
        << "a,b\rc,d\r" << unquotedComma << QList<QStringList>({ab, {"c", "d"}}) << none << none;
    QTest::newRow("unquoted, CR inside a line splits it")
        << "a,b\r\rc,d\n"
        << unquotedComma << QList<QStringList>({ab, {"", ""}, {"c", "d"}}) << none
        << QStringList(
               {"Number of values per row vary:", "1 input row has 1 value: E.g. input row 2",
                "2 input rows have 2 values: E.g. input row 1"});
    QTest::newRow("unquoted keeps quotes")
        << "\"a\",\"b\"\n"
        << unquotedComma << QList<QStringList>({{"\"a\"", "\"b\""}}) << none << none;
    QTest::newRow("tab file with quotes, automatic quoting")
        << "\"a\"\t\"b,c\"\n"
        << rawOptions(DelimiterTab, QuotingAutomatic) << QList<QStringList>({{"\"a\"", "\"b,c\""}})
        << QStringList({quotingGuessText("Unquoted")}) << none;
    QTest::newRow("tab file with quotes, quoted")
        << "\"a\"\t\"b\tc\"\n"
        << rawOptions(DelimiterTab, QuotingQuoted) << QList<QStringList>({{"a", "b\tc"}}) << none
        << none;
    QTest::newRow("custom delimiter") << "a#b\n"
                                      <<
        [] {
            DelimitedReadOptions options = rawOptions(DelimiterCustom, QuotingQuoted);
            options.customDelimiter = QLatin1Char('#');
            return options;
        }() << QList<QStringList>({ab})
                                      << none << none;
    QTest::newRow("quote as delimiter is only a delimiter") << "a\"b\"\"c\n"
                                                            <<
        [] {
            DelimitedReadOptions options = rawOptions(DelimiterCustom, QuotingQuoted);
            options.customDelimiter = QLatin1Char('"');
            return options;
        }() << QList<QStringList>({{"a", "b", "", "c"}}) << none
                                                            << none;

    QTest::newRow("quoted, repeated delimiters")
        << ",a,,b\n\"\",c\n"
        << withRepeated(quotedComma) << QList<QStringList>({ab, {"c", ""}}) << none
        << QStringList(
               {"Number of values per row vary:", "1 input row has 1 value: E.g. input row 2",
                "1 input row has 2 values: E.g. input row 1"});
    QTest::newRow("quoted, repeated delimiters keep a trailing one")
        << "a,,b,\n"
        << withRepeated(quotedComma) << QList<QStringList>({{"a", "b", ""}}) << none << none;
    QTest::newRow("unquoted, repeated delimiters")
        << ",a,,,b,,\n"
        << withRepeated(unquotedComma) << QList<QStringList>({{"", "a", "b", ""}}) << none << none;
    QTest::newRow("unquoted, no repeated delimiters")
        << ",a,,b\n"
        << unquotedComma << QList<QStringList>({{"", "a", "", "b"}}) << none << none;

    QTest::newRow("ignored rows with a multi-line value")
        << "title\n\"x\ny\",z\nr1,r2\n"
        << withIgnored(quotedComma, 2) << QList<QStringList>({{"r1", "r2"}}) << none << none;
    QTest::newRow("ignored rows beyond the input")
        << "a\nb\n"
        << withIgnored(quotedComma, 5) << QList<QStringList>() << none << none;
    QTest::newRow("unquoted ignored rows")
        << "title\nx,y\n"
        << withIgnored(unquotedComma, 1) << QList<QStringList>({{"x", "y"}}) << none << none;
    QTest::newRow("ignored row of a last line without ending")
        << "a,b" << withIgnored(quotedComma, 1) << QList<QStringList>() << none << none;

    const QStringList uneven
        = {"Number of values per row vary:", "1 input row has 1 value: E.g. input row 4",
           "1 input row has 2 values: E.g. input row 3",
           "2 input rows have 3 values: E.g. input row 2"};
    const QList<QStringList> unevenRows
        = {{"a", "b", "c"}, {"d", "e", ""}, {"f", "", ""}, {"g", "h", "i"}};
    QTest::newRow("uneven rows, quoted")
        << "skip\na,b,c\nd,e\nf\ng,h,i" << withIgnored(quotedComma, 1) << unevenRows << none
        << uneven;
    QTest::newRow("uneven rows, unquoted")
        << "skip\na,b,c\nd,e\nf\ng,h,i\n"
        << withIgnored(unquotedComma, 1) << unevenRows << none << uneven;

    // Clean-up must reach every kind of white space, each row needing one step only.
    const QString spaced = QString::fromUtf8("é\u00a0,x\ny,\u3000b\ne\u2003f,z\nc\td,w\n"
                                             "\"g\r\nh\",v\n");
    const QList<QStringList> cleaned
        = {{"é", "x"}, {"y", "b"}, {"e f", "z"}, {"c d", "w"}, {"g h", "v"}};
    QTest::newRow("clean-up of white space, quoted")
        << spaced << withCleanUp(quotedComma) << cleaned << none << none;
    QTest::newRow("clean-up of white space, unquoted")
        << QString(spaced).remove('"').replace("\r\n", "\v") << withCleanUp(unquotedComma)
        << cleaned << none << none;
    DelimitedReadOptions simplifyOnly = quotedComma;
    simplifyOnly.simplify = true;
    QTest::newRow("simplify without trim")
        << "\tx,y\n"
        << simplifyOnly << QList<QStringList>({{" x", "y"}}) << none << none;
    QTest::newRow("simplify after a closing quote")
        << "\"a\"\tb\",c\n"
        << simplifyOnly << QList<QStringList>({{"a b", "c"}}) << none << none;
    QTest::newRow("no clean-up of white space")
        << spaced << quotedComma
        << QList<QStringList>({{QString::fromUtf8("é\u00a0"), "x"},
                               {"y", QString::fromUtf8("\u3000b")},
                               {QString::fromUtf8("e\u2003f"), "z"},
                               {"c\td", "w"},
                               {"g\r\nh", "v"}})
        << none << none;
    QTest::newRow("blank lines dropped and reported")
        << "a, b\n\n  \nc,d\n"
        << withCleanUp(quotedComma) << QList<QStringList>({ab, {"c", "d"}})
        << QStringList({"2 empty row(s) ignored"})
        << QStringList(
               {"Number of values per row vary:", "2 input rows have 1 value: E.g. input row 2",
                "2 input rows have 2 values: E.g. input row 1"});
    QTest::newRow("blank lines kept without clean-up")
        << "a\n\nb" << quotedComma << QList<QStringList>({{"a"}, {""}, {"b"}}) << none << none;
}

void TestDelimitedText::read()
{
    QFETCH(QString, text);
    QFETCH(DelimitedReadOptions, options);
    QFETCH(QList<QStringList>, rows);
    QFETCH(QStringList, info);
    QFETCH(QStringList, warnings);

    const ReadResult fromString = readString(text, options);
    QCOMPARE(rowsOf(fromString.dataset), rows);
    QCOMPARE(fromString.dataset.columnCount(), rows.isEmpty() ? 0 : rows.first().size());
    QCOMPARE(fromString.report.info, info);
    QCOMPARE(fromString.report.warnings, warnings);

    const ReadResult fromFile = readFile(text, options);
    QCOMPARE(rowsOf(fromFile.dataset), rows);
    QCOMPARE(fromFile.report.info, info);
    QCOMPARE(fromFile.report.warnings, warnings);
}

void TestDelimitedText::plainText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<DelimitedReadOptions>("options");
    QTest::addColumn<QList<QStringList>>("rows");
    QTest::addColumn<QStringList>("info");

    QTest::newRow("lines, CR splits, clean-up")
        << "one, \"two\"\r\n three\rfour\n\n\tfive" << withIgnored(withCleanUp(quotedComma), 1)
        << QList<QStringList>({{"three"}, {"four"}, {"five"}})
        << QStringList({"1 empty row(s) ignored"});
    QTest::newRow("raw") << "a\t\n\nb\r" << quotedComma
                         << QList<QStringList>({{"a\t"}, {""}, {"b"}}) << QStringList();
}

void TestDelimitedText::plainText()
{
    QFETCH(QString, text);
    QFETCH(DelimitedReadOptions, options);
    QFETCH(QList<QStringList>, rows);
    QFETCH(QStringList, info);

    const ReadResult fromString = readString(text, options, true);
    QCOMPARE(rowsOf(fromString.dataset), rows);
    QCOMPARE(fromString.report.info, info);
    QVERIFY(fromString.report.warnings.isEmpty());
    QCOMPARE(rowsOf(readFile(text, options, true).dataset), rows);
}

void TestDelimitedText::guess_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QChar>("delimiter");
    QTest::addColumn<QString>("info");

    const QString tenEach = QString("a,b;").repeated(10);
    QTest::newRow("tie goes to comma")
        << tenEach << QChar(QLatin1Char(','))
        << "Delimiter=Automatic guesses 'Comma (,)'. Set 'Delimiter' option to change.\n"
           "First 40 characters contain: 10 Comma (,), 10 Semi-colon (;), 0 Pipe (|), 0 Caret "
           "(^), 0 Tab (\\t), 0 Unit separator (0x1F)\n";
    const QString moreSemicolons = QString("a,b;").repeated(9) + "c;";
    QTest::newRow("semi-colon wins")
        << moreSemicolons << QChar(QLatin1Char(';'))
        << "Delimiter=Automatic guesses 'Semi-colon (;)'. Set 'Delimiter' option to change.\n"
           "First 38 characters contain: 9 Comma (,), 10 Semi-colon (;), 0 Pipe (|), 0 Caret "
           "(^), 0 Tab (\\t), 0 Unit separator (0x1F)\n";
    // Only the sample counts: the pipes after it are never seen.
    const QString sampleOnly = QString("x\x1f").repeated(2048) + QString("|").repeated(5000);
    QTest::newRow("sample of 4096")
        << sampleOnly << QChar(0x1F)
        << "Delimiter=Automatic guesses 'Unit separator (0x1F)'. Set 'Delimiter' option to "
           "change.\nFirst 4,096 characters contain: 0 Comma (,), 0 Semi-colon (;), 0 Pipe "
           "(|), 0 Caret (^), 0 Tab (\\t), 2,048 Unit separator (0x1F)\n";
    QTest::newRow("empty") << QString() << QChar(QLatin1Char(',')) << emptyGuessText();
}

void TestDelimitedText::guess()
{
    QFETCH(QString, text);
    QFETCH(QChar, delimiter);
    QFETCH(QString, info);

    QString entry;
    QTextStream stream(&text, QIODevice::ReadOnly);
    QCOMPARE(guessDelimiter(stream, &entry), delimiter);
    QCOMPARE(entry, info);

    const ReadResult result = readFile(text, DelimitedReadOptions());
    QCOMPARE(result.report.delimiter, delimiter);
    QCOMPARE(result.report.info.value(0), info);
}

void TestDelimitedText::blockBoundaries_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<DelimitedReadOptions>("options");
    QTest::addColumn<QList<QStringList>>("rows");

    const QString xs = QString(2046, QLatin1Char('x'));
    QTest::newRow("doubled quote across the block end") << "\"" + xs
            + "\"\"y\",z\n" << quotedComma << QList<QStringList>({{xs + "\"y", "z"}});
    QTest::newRow("closing quote at the block end") << "\"" + xs
            + "\",z\n" << quotedComma << QList<QStringList>({{xs, "z"}});
    const QString longValue = QString(5000, QLatin1Char('v'));
    QTest::newRow("quoted value over three blocks") << "a,\"" + longValue
            + "\r\n\",b\n" << quotedComma << QList<QStringList>({{"a", longValue + "\r\n", "b"}});
    QTest::newRow("plain value across the block end")
        << QString(2040, QLatin1Char('p')) + "," + QString(20, QLatin1Char('q')) + "\n"
        << quotedComma
        << QList<QStringList>({{QString(2040, QLatin1Char('p')), QString(20, QLatin1Char('q'))}});
    const QString quotedXs = QString(2047, QLatin1Char('x'));
    QTest::newRow("quoted CR LF starting a block") << "\"" + quotedXs
            + "\r\ny\",z\n" << quotedComma << QList<QStringList>({{quotedXs + "\r\ny", "z"}});
    QTest::newRow("text after a closing quote at the block end") << "\"" + xs
            + "\"b,c\",d\n" << quotedComma << QList<QStringList>({{xs + "b,c", "d"}});
    const QString as = QString(2047, QLatin1Char('a'));
    QTest::newRow("CR LF across the block end") << as + "\r\nb\r\n"
                                                << quotedComma << QList<QStringList>({{as}, {"b"}});
    QTest::newRow("CR CR LF across the block end")
        << QString(2046, QLatin1Char('a')) + "\r\r\nb" << quotedComma
        << QList<QStringList>({{QString(2046, QLatin1Char('a'))}, {""}, {"b"}});
    QTest::newRow("CR at the very end") << as + "\r" << quotedComma << QList<QStringList>({{as}});

    // Lines come from blocks of 65536 characters.
    const QString head = QString(65535, QLatin1Char('h'));
    QTest::newRow("unquoted CR LF across the line block end") << head
            + "\r\nb,c\n" << unquotedComma << QList<QStringList>({{head, ""}, {"b", "c"}});
    const QString wide = QString(70000, QLatin1Char('w'));
    QTest::newRow("unquoted line over two blocks, CR at the very end") << "a,b\n" + wide
            + ",z\r" << unquotedComma << QList<QStringList>({{"a", "b"}, {wide, "z"}});
    QTest::newRow("unquoted CR at the end of a block") << head
            + "\rx\n" << unquotedComma << QList<QStringList>({{head}, {"x"}});
}

void TestDelimitedText::blockBoundaries()
{
    QFETCH(QString, text);
    QFETCH(DelimitedReadOptions, options);
    QFETCH(QList<QStringList>, rows);

    QCOMPARE(rowsOf(readString(text, options).dataset), rows);
    QCOMPARE(rowsOf(readFile(text, options).dataset), rows);
}

void TestDelimitedText::agreesWithModel()
{
    // Random texts rich in quotes and line ends, long enough to cross block ends anywhere.
    const QString alphabet = QStringLiteral("ab,,\"\"\r\n \t");
    QRandomGenerator random(20261122);
    for (int round = 0; round < 200; ++round) {
        QString text;
        const int length = int(random.bounded(6000));
        text.reserve(length);
        for (int i = 0; i < length; ++i)
            text += alphabet.at(int(random.bounded(alphabet.size())));
        DelimitedReadOptions options = quotedComma;
        options.ignoredRows = int(random.bounded(3));
        options.ignoreRepeatedDelimiters = random.bounded(2) == 1;
        const QList<QStringList> expected = modelRows(text, QLatin1Char(','), options.ignoredRows,
                                                      options.ignoreRepeatedDelimiters);
        QCOMPARE(rowsOf(readFile(text, options).dataset), expected);
        QCOMPARE(rowsOf(readString(text, options).dataset), expected);

        // Ten times longer for the unquoted reader, whose lines come from larger blocks.
        for (int i = 0; i < 9; ++i)
            text += text.left(length);
        options.quoting = QuotingUnquoted;
        const QList<QStringList> unquoted = unquotedModelRows(
            text, QLatin1Char(','), options.ignoredRows, options.ignoreRepeatedDelimiters);
        QCOMPARE(rowsOf(readFile(text, options).dataset), unquoted);
        QCOMPARE(rowsOf(readString(text, options).dataset), unquoted);
    }
}

void TestDelimitedText::progress_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("quoting");
    QTest::addColumn<qint64>("length");
    QTest::addColumn<QList<double>>("reports");

    const QString text = QString("abcdefghi\n").repeated(12000);
    QTest::newRow("quoted") << text << int(QuotingQuoted) << qint64(120000)
                            << QList<double>({50000.0 / 120000, 100000.0 / 120000});
    // Each line counts its length and 2, at most the length given.
    QString lines;
    for (int i = 0; i < 30; ++i)
        lines += QString(998, QLatin1Char('z')) + "\n";
    QTest::newRow("unquoted") << lines << int(QuotingUnquoted) << qint64(25000)
                              << QList<double>({0.4, 0.8});
    QTest::newRow("no total") << text << int(QuotingQuoted) << qint64(0) << QList<double>();
}

void TestDelimitedText::progress()
{
    QFETCH(QString, text);
    QFETCH(int, quoting);
    QFETCH(qint64, length);
    QFETCH(QList<double>, reports);

    QList<double> seen;
    Dataset dataset;
    TextReadReport report;
    QTextStream stream(&text, QIODevice::ReadOnly);
    readDelimitedText(stream, length, rawOptions(DelimiterComma, quoting), dataset, report,
                      [&seen](double value) { seen << value; });
    QCOMPARE(seen, reports);
}

void TestDelimitedText::progressThrows()
{
    QString text = QString("a,b\n").repeated(20000);
    QTextStream stream(&text, QIODevice::ReadOnly);
    Dataset dataset;
    TextReadReport report;
    QVERIFY_EXCEPTION_THROWN(readDelimitedText(stream, text.size(), quotedComma, dataset, report,
                                               [](double) { throw std::runtime_error("limit"); }),
                             std::runtime_error);
}

void TestDelimitedText::datasetFromStream()
{
    QString text = QStringLiteral("skip\n a ;\"b\r\nc\"\n;\n");
    QTextStream stream(&text, QIODevice::ReadOnly);
    const Dataset tidied(stream, QLatin1Char(';'), 1, true, true, true);
    QCOMPARE(rowsOf(tidied), QList<QStringList>({{"a", "b c"}}));

    const Dataset raw(stream, QLatin1Char(';'), 0, false, false, false);
    QCOMPARE(rowsOf(raw), QList<QStringList>({{"skip", ""}, {" a ", "b\r\nc"}, {"", ""}}));
}

QTEST_GUILESS_MAIN(TestDelimitedText)
#include "tst_delimitedtext.moc"
