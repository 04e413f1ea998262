#include "shell/memory.h"
#include "shell/settings.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <cstring>
#include <memory>

namespace {

const char SleepArgument[] = "--sleep-as-second-instance";

// Polls until the count of instances reaches expected; the kernel names a process a moment
// after it starts.
int waitForInstanceCount(int expected, const QString &name = QString())
{
    QElapsedTimer timer;
    timer.start();
    int count = instanceCount(name);
    while (count != expected && timer.elapsed() < 10000) {
        QThread::msleep(20);
        count = instanceCount(name);
    }
    return count;
}

} // namespace

class TestMemory : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void useIsPositiveAndGrowsWithTouchedMemory();
    void useBelowLimitPasses();
    void limitBelowUseThrowsWithoutHandler();
    void handlerRaisingTheLimitStoresIt();
    void handlerDecliningThrows();
    void instanceCountSeesSecondInstance();
    void ageText_data();
    void ageText();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<Settings> m_store;
};

void TestMemory::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_store = std::make_unique<Settings>(m_dir->filePath(QStringLiteral("tabulon.ini")));
    Settings::setInstance(m_store.get());
    setMemoryLimitHandler(MemoryLimitHandler());
}

void TestMemory::cleanup()
{
    setMemoryLimitHandler(MemoryLimitHandler());
    m_store.reset();
}

void TestMemory::useIsPositiveAndGrowsWithTouchedMemory()
{
    const double before = processMemoryGiB();
    QVERIFY(before > 0.0);
    QVERIFY(before < 64.0);

    constexpr size_t bytes = 200u * 1024u * 1024u;
    std::unique_ptr<char[]> block(new char[bytes]);
    // Pages count only once written to.
    std::memset(block.get(), 1, bytes);
    const double after = processMemoryGiB();
    QVERIFY2(after - before > 0.17, qPrintable(QStringLiteral("%1 -> %2").arg(before).arg(after)));
    QVERIFY(after - before < 0.25);
    QCOMPARE(block[bytes - 1], char(1));

    block.reset();
    QVERIFY(processMemoryGiB() < after - 0.17);
}

void TestMemory::useBelowLimitPasses()
{
    int asked = 0;
    setMemoryLimitHandler([&asked](double, double, double *) { return bool(++asked); });
    m_store->setMaxMemoryUsage(processMemoryGiB() + 1.0);
    checkMemoryLimit();
    QCOMPARE(asked, 0);
}

void TestMemory::limitBelowUseThrowsWithoutHandler()
{
    QVERIFY(!hasMemoryLimitHandler());
    m_store->setMaxMemoryUsage(processMemoryGiB() / 2.0);
    QVERIFY_EXCEPTION_THROWN(checkMemoryLimit(), MaxMemoryException);
    // The limit stays as it was.
    QVERIFY(m_store->maxMemoryUsage() < processMemoryGiB());
}

void TestMemory::handlerRaisingTheLimitStoresIt()
{
    const double limit = processMemoryGiB() / 2.0;
    m_store->setMaxMemoryUsage(limit);
    double askedLimit = -1.0;
    double askedUse = -1.0;
    int asked = 0;
    setMemoryLimitHandler([&](double limitGiB, double useGiB, double *newLimitGiB) {
        ++asked;
        askedLimit = limitGiB;
        askedUse = useGiB;
        *newLimitGiB = useGiB + 0.5;
        return true;
    });
    QVERIFY(hasMemoryLimitHandler());
    checkMemoryLimit();
    QCOMPARE(asked, 1);
    QCOMPARE(askedLimit, limit);
    QVERIFY(askedUse > limit);
    QCOMPARE(m_store->maxMemoryUsage(), askedUse + 0.5);

    // Written through: a second store on the file sees the new limit.
    m_store->sync();
    Settings reopened(m_store->fileName());
    QCOMPARE(reopened.maxMemoryUsage(), askedUse + 0.5);

    checkMemoryLimit();
    QCOMPARE(asked, 1);
}

void TestMemory::handlerDecliningThrows()
{
    const double limit = processMemoryGiB() / 2.0;
    m_store->setMaxMemoryUsage(limit);
    int asked = 0;
    setMemoryLimitHandler([&asked](double, double, double *newLimitGiB) {
        ++asked;
        *newLimitGiB = 1000.0;
        return false;
    });
    QVERIFY_EXCEPTION_THROWN(checkMemoryLimit(), MaxMemoryException);
    QCOMPARE(asked, 1);
    QCOMPARE(m_store->maxMemoryUsage(), limit);
}

void TestMemory::instanceCountSeesSecondInstance()
{
    QVERIFY(instanceCount() >= 1);
    QCOMPARE(instanceCount(QStringLiteral("no-such-program")), 0);

    // Started through a link of a name of its own, so that other test runs can't interfere;
    // the kernel keeps only its first 15 characters, which are the unique part.
    const QString unique = QStringLiteral("ti%1").arg(
        QCoreApplication::applicationPid() % 100000000000LL, 13, 10, QLatin1Char('0'));
    const QString linkName = unique + QStringLiteral("-instance");
    const QString link = m_dir->filePath(linkName);
    QVERIFY(QFile::link(QCoreApplication::applicationFilePath(), link));
    QCOMPARE(instanceCount(linkName), 0);

    QProcess first;
    first.start(link, {QLatin1String(SleepArgument)});
    QVERIFY(first.waitForStarted());
    QCOMPARE(waitForInstanceCount(1, linkName), 1);
    QProcess second;
    second.start(link, {QLatin1String(SleepArgument)});
    QVERIFY(second.waitForStarted());
    QCOMPARE(waitForInstanceCount(2, linkName), 2);
    QCOMPARE(instanceCount(unique), 2);
    QCOMPARE(instanceCount(unique.left(14)), 0);

    second.kill();
    QVERIFY(second.waitForFinished());
    QCOMPARE(waitForInstanceCount(1, linkName), 1);
    first.kill();
    QVERIFY(first.waitForFinished());
    QCOMPARE(waitForInstanceCount(0, linkName), 0);
}

void TestMemory::ageText_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << qint64(0) << QStringLiteral("0 second(s)");
    QTest::newRow("clock skew") << qint64(-5) << QStringLiteral("0 second(s)");
    QTest::newRow("59 s") << qint64(59) << QStringLiteral("59 second(s)");
    QTest::newRow("60 s") << qint64(60) << QStringLiteral("1 minute(s)");
    QTest::newRow("89 s rounds down") << qint64(89) << QStringLiteral("1 minute(s)");
    QTest::newRow("90 s rounds up") << qint64(90) << QStringLiteral("2 minute(s)");
    QTest::newRow("59 min") << qint64(59 * 60) << QStringLiteral("59 minute(s)");
    QTest::newRow("1 h") << qint64(3600) << QStringLiteral("1 hour(s)");
    QTest::newRow("2.5 h") << qint64(9000) << QStringLiteral("3 hour(s)");
    QTest::newRow("23 h") << qint64(23 * 3600) << QStringLiteral("23 hour(s)");
    QTest::newRow("1 day") << qint64(86400) << QStringLiteral("1 day(s)");
    QTest::newRow("3.4 days") << qint64(86400 * 34 / 10) << QStringLiteral("3 day(s)");
    QTest::newRow("400 days") << qint64(86400) * 400 << QStringLiteral("400 day(s)");
}

void TestMemory::ageText()
{
    QFETCH(qint64, seconds);
    QFETCH(QString, text);
    QCOMPARE(::ageText(seconds), text);
}

int main(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], SleepArgument) == 0) {
            QThread::sleep(60);
            return 0;
        }
    }
    QTemporaryDir home;
    qputenv("HOME", QFile::encodeName(home.path()));
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication app(argc, argv);
    TestMemory test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_memory.moc"
