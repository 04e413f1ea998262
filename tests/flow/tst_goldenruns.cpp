#include "testdata.h"

#include <QDirIterator>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

// Runs each document of tests/data/golden/<case>/ with the real program on the command line,
// in a copy of its folder, and compares every file of the case's expected/ folder with what
// the run wrote. A case may hold arguments.txt (one argument a line, replacing the default
// "-cli document.tabulon") and exit_code.txt. Adding a case is adding a folder.
class TestGoldenRuns : public QObject
{
    Q_OBJECT

private slots:
    void documents_data();
    void documents();
};

static bool copyFolder(const QString &from, const QString &to)
{
    QDirIterator it(from, QDir::Files | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString source = it.next();
        const QString relative = QDir(from).relativeFilePath(source);
        if (relative.startsWith(QLatin1String("expected/")))
            continue;
        const QString target = QDir(to).filePath(relative);
        QDir().mkpath(QFileInfo(target).absolutePath());
        if (!QFile::copy(source, target))
            return false;
    }
    return true;
}

static QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestGoldenRuns::documents_data()
{
    QTest::addColumn<QString>("folder");
    const QDir root(QStringLiteral(TABULON_TEST_DATA "/golden"));
    const QStringList cases = root.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    QVERIFY(!cases.isEmpty());
    for (const QString &name : cases)
        QTest::newRow(qPrintable(name)) << root.filePath(name);
}

void TestGoldenRuns::documents()
{
    QFETCH(QString, folder);
    QTemporaryDir work;
    QTemporaryDir home;
    QVERIFY(work.isValid() && home.isValid());
    QVERIFY(copyFolder(folder, work.path()));

    QStringList arguments {QStringLiteral("-cli"), QStringLiteral("document.tabulon")};
    const QByteArray argumentText = readAll(QDir(folder).filePath("arguments.txt"));
    if (!argumentText.isEmpty())
        arguments = QString::fromUtf8(argumentText).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    const QByteArray exitText = readAll(QDir(folder).filePath("exit_code.txt"));
    const int expectedExit = exitText.isEmpty() ? 0 : exitText.trimmed().toInt();

    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // The run must not see, nor change, the settings of whoever runs the tests.
    environment.insert("HOME", home.path());
    environment.insert("XDG_CONFIG_HOME", home.filePath("config"));
    environment.insert("XDG_RUNTIME_DIR", home.path());
    // Nor a display: a run of the command line works where there is none, even when the
    // environment names a platform that needs one.
    environment.remove("DISPLAY");
    environment.remove("WAYLAND_DISPLAY");
    environment.insert("QT_QPA_PLATFORM", "xcb");
    program.setProcessEnvironment(environment);
    program.setWorkingDirectory(work.path());
    program.start(QStringLiteral(TABULON_PROGRAM), arguments);
    QVERIFY(program.waitForFinished(60000));
    const QByteArray errors = program.readAllStandardError();
    QVERIFY2(program.exitCode() == expectedExit, errors.constData());

    const QDir expected(QDir(folder).filePath("expected"));
    const QStringList files = expected.entryList(QDir::Files, QDir::Name);
    QVERIFY(!files.isEmpty());
    for (const QString &name : files) {
        const QByteArray want = readAll(expected.filePath(name));
        const QByteArray got = readAll(QDir(work.path()).filePath(name));
        if (got != want)
            qWarning().noquote() << name << "\nexpected:" << want << "\nwritten: " << got;
        QCOMPARE(got, want);
    }
}

QTEST_GUILESS_MAIN(TestGoldenRuns)
#include "tst_goldenruns.moc"
