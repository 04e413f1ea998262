#include "shell/appearancesettings.h"
#include "shell/application.h"
#include "shell/insufficientmemorydialog.h"
#include "shell/memory.h"
#include "shell/settings.h"

#include <QDoubleSpinBox>
#include <QFile>
#include <QFontDatabase>
#include <QLabel>
#include <QMainWindow>
#include <QProcess>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QStyle>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QTimer>
#include <QtTest>

#include <cstring>
#include <memory>
#include <new>
#include <stdexcept>
#include <unistd.h>

namespace {

const char ChildArgument[] = "--child";

// Throws from inside an event handler, the way a failing run would.
class Thrower : public QObject
{
public:
    explicit Thrower(const QString &kind)
        : m_kind(kind)
    { }

    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        if (m_kind == QLatin1String("std"))
            throw std::runtime_error("disk on fire");
        if (m_kind == QLatin1String("other"))
            throw 42;
        if (m_kind == QLatin1String("badalloc"))
            throw std::bad_alloc();
        if (m_kind == QLatin1String("memory")) {
            Settings::instance()->setMaxMemoryUsage(0.0001);
            checkMemoryLimit();
        }
        return true;
    }

private:
    QString m_kind;
};

// The child's part: kind says how the event handler fails; path names a temporary file for
// the application to delete at exit.
int runChild(int argc, char **argv, const QString &kind, const QString &path)
{
    Application app(argc, argv);
    app.addTemporaryFile(path);
    app.setEmergencyHandler([] { std::fputs("emergency handler ran\n", stderr); });
    // The memory limit of the child is its own, not that of the shared user store.
    Settings limits(path + QStringLiteral(".ini"));
    Settings::setInstance(&limits);
    Thrower thrower(kind);
    QCoreApplication::postEvent(&thrower, new QEvent(QEvent::User));
    // A child that fails to fail still ends.
    QTimer::singleShot(10000, &app, [] { QCoreApplication::exit(99); });
    if (kind == QLatin1String("none"))
        return 0;
    return app.exec();
}

QStringList userStoreKeys()
{
    Settings user;
    return user.allKeys();
}

} // namespace

class TestApplication : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void instanceAndSupportAddress();
    void codecNamesHaveNoAliases();
    void fontsAndStyle();
    void iniBesideProgramIsChosen();
    void movePreferencesToIniAndBack();
    void moveToUnwritableFolderFails();
    void folderSetters();
    void pumpEventsBeatsAndProcesses();
    void memoryDialogRaisesLimit();
    void memoryDialogExitThrows();
    void failureExits_data();
    void failureExits();
    void temporaryFilesRemovedAtExit();

private:
    Application *app() const { return Application::instance(); }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestApplication::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    // Each test starts from an empty user store beside a program folder without an ini file.
    app()->setProgramFolder(m_dir->path());
    app()->settings()->clear();
    app()->settings()->sync();
}

void TestApplication::instanceAndSupportAddress()
{
    QVERIFY(app());
    QCOMPARE(Settings::instance(), app()->settings());
    QCOMPARE(Application::supportAddress(), QStringLiteral("support@velmora.example"));
    QVERIFY(app()->outOfMemoryDialog());
    QCOMPARE(app()->outOfMemoryDialog()->windowTitle(), QStringLiteral("Out of memory"));
    QLabel *label = app()->outOfMemoryDialog()->findChild<QLabel *>();
    QVERIFY(label);
    QCOMPARE(label->text(), QStringLiteral("Tabulon ran out of memory!"));
}

void TestApplication::codecNamesHaveNoAliases()
{
    const QStringList names = app()->codecNames();
    QVERIFY(names.size() > 10);
    QVERIFY(std::is_sorted(names.begin(), names.end()));
    QVERIFY(names.contains(QStringLiteral("UTF-8")));

    const QSet<QString> listed(names.begin(), names.end());
    QCOMPARE(listed.size(), names.size());
    // Codecs without a MIB number share 0, so they are told apart by identity.
    QSet<const QTextCodec *> listedCodecs;
    for (const QString &name : names) {
        const QTextCodec *codec = QTextCodec::codecForName(name.toLatin1());
        QVERIFY2(codec, qPrintable(name));
        QVERIFY2(!listedCodecs.contains(codec), qPrintable(name + " twice"));
        listedCodecs.insert(codec);
        QList<QByteArray> otherNames = codec->aliases();
        otherNames.append(codec->name());
        for (const QByteArray &other : qAsConst(otherNames)) {
            if (other != name.toLatin1())
                QVERIFY2(!listed.contains(QString::fromLatin1(other)),
                         qPrintable(QStringLiteral("%1 is an alias of %2").arg(other, name)));
        }
    }
    // Yet every codec is offered under one name.
    const QList<QByteArray> available = QTextCodec::availableCodecs();
    for (const QByteArray &name : available)
        QVERIFY2(listedCodecs.contains(QTextCodec::codecForName(name)), name.constData());
}

void TestApplication::fontsAndStyle()
{
    const QFont system = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    const int expected = system.pointSize() < 10 ? system.pointSize() + 1 : system.pointSize();
    QCOMPARE(app()->applicationFont().pointSize(), expected);
    QCOMPARE(app()->applicationFont().family(), system.family());

    const QFont fixed = app()->fixedWidthFont();
    QCOMPARE(fixed.pointSize(), expected);
    QVERIFY(QFontInfo(fixed).fixedPitch());
    QCOMPARE(app()->fixedWidthFontFamily(), fixed.family());

    QCOMPARE(app()->style()->objectName().toLower(), QStringLiteral("fusion"));
}

void TestApplication::iniBesideProgramIsChosen()
{
    QVERIFY(!app()->settings()->isIniFile());
    const QString path = m_dir->filePath(QStringLiteral("tabulon.ini"));
    QCOMPARE(app()->settingsFilePath(), QDir::toNativeSeparators(path));
    QFile ini(path);
    QVERIFY(ini.open(QIODevice::WriteOnly));
    ini.write("[General]\nmax_memory_usage=3\n");
    ini.close();

    // As at the next start: the file alone decides.
    app()->setProgramFolder(m_dir->path());
    QVERIFY(app()->settings()->isIniFile());
    QCOMPARE(Settings::instance(), app()->settings());
    QCOMPARE(app()->settings()->maxMemoryUsage(), 3.0);
}

void TestApplication::movePreferencesToIniAndBack()
{
    Settings *user = app()->settings();
    QVERIFY(!user->isIniFile());
    user->setMaxMemoryUsage(7.5);
    user->setRecentDocs({QStringLiteral("/a.tabulon"), QStringLiteral("/b.tabulon")});
    user->setTransformDefault(QStringLiteral("Case"), QStringLiteral("Case_Type"), 2);
    user->setGeometry(QByteArray("\x00\x01\x02", 3));
    AppearanceSettings(user).setUiFont(QFont(QStringLiteral("Serif"), 13));
    const QStringList keys = user->allKeys();

    QVERIFY(app()->movePreferencesToIni());
    const QString iniPath = app()->settingsFilePath();
    QVERIFY(QFile::exists(iniPath));
    Settings *ini = app()->settings();
    QVERIFY(ini->isIniFile());
    QCOMPARE(Settings::instance(), ini);
    QCOMPARE(ini->allKeys(), keys);
    QCOMPARE(ini->maxMemoryUsage(), 7.5);
    QCOMPARE(ini->recentDocs(), QStringList({"/a.tabulon", "/b.tabulon"}));
    QCOMPARE(ini->transformDefault(QStringLiteral("Case"), QStringLiteral("Case_Type")).toInt(), 2);
    QCOMPARE(ini->geometry(), QByteArray("\x00\x01\x02", 3));
    // The user settings keep their copy.
    QCOMPARE(userStoreKeys(), keys);

    ini->setMaxMemoryUsage(9.0);
    ini->clearUiFont();
    QVERIFY(app()->movePreferencesToUserSettings());
    QVERIFY(!QFile::exists(iniPath));
    QVERIFY(!app()->settings()->isIniFile());
    QCOMPARE(Settings::instance(), app()->settings());
    QCOMPARE(app()->settings()->maxMemoryUsage(), 9.0);
    QCOMPARE(app()->settings()->recentDocs(), QStringList({"/a.tabulon", "/b.tabulon"}));
    // A key removed while the ini file was in use doesn't come back from the old copy.
    QVERIFY(!app()->settings()->hasUiFont());
    Settings reread;
    QCOMPARE(reread.maxMemoryUsage(), 9.0);
    QVERIFY(!reread.hasUiFont());
}

void TestApplication::moveToUnwritableFolderFails()
{
    if (::geteuid() == 0)
        QSKIP("File permissions don't bind the super-user");
    QVERIFY(QFile::setPermissions(m_dir->path(), QFile::ReadOwner | QFile::ExeOwner));
    Settings *before = app()->settings();
    before->setMaxMemoryUsage(6.0);
    const bool moved = app()->movePreferencesToIni();
    QFile::setPermissions(m_dir->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QVERIFY(!moved);
    QCOMPARE(app()->settings(), before);
    QVERIFY(!QFile::exists(app()->settingsFilePath()));
    QCOMPARE(app()->settings()->maxMemoryUsage(), 6.0);
}

void TestApplication::folderSetters()
{
    const QString file = m_dir->filePath(QStringLiteral("data.csv"));
    app()->setLastDataFolder(file);
    QCOMPARE(app()->lastDataFolder(), QDir::toNativeSeparators(m_dir->path()));
    QCOMPARE(app()->settings()->lastDataDir(), QDir::toNativeSeparators(m_dir->path()));

    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    app()->setLastOutputDataFolder(m_dir->filePath(QStringLiteral("gone/out.csv")));
    QCOMPARE(app()->lastOutputDataFolder(), documents);
    app()->setLastDocumentFolder(QString());
    QCOMPARE(app()->lastDocumentFolder(), documents);

    app()->setLastDocumentFolder(m_dir->filePath(QStringLiteral("a.tabulon")));
    // A store chosen again reads the folders back.
    app()->setProgramFolder(m_dir->path());
    QCOMPARE(app()->lastDocumentFolder(), QDir::toNativeSeparators(m_dir->path()));
    QCOMPARE(app()->lastOutputDataFolder(), documents);
}

void TestApplication::pumpEventsBeatsAndProcesses()
{
    QSignalSpy beats(app(), &Application::heartBeat);
    bool delivered = false;
    QMetaObject::invokeMethod(
        app(), [&delivered] { delivered = true; }, Qt::QueuedConnection);
    QVERIFY(!delivered);
    app()->pumpEvents();
    QVERIFY(delivered);
    QCOMPARE(beats.count(), 1);
}

namespace {

// Answers the memory dialog once it is open; records what it showed.
struct DialogAnswer
{
    bool increase = true;
    bool seen = false;
    QString title;
    QString text;
    QString exitText;
    QString increaseToolTip;
    QString exitToolTip;
    double spinMinimum = 0.0;
};

void answerMemoryDialog(DialogAnswer *answer)
{
    QTimer::singleShot(0, [answer] {
        auto *dialog = qobject_cast<InsufficientMemoryDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        answer->seen = true;
        answer->title = dialog->windowTitle();
        answer->text = dialog->findChild<QLabel *>()->text();
        const QList<QRadioButton *> buttons = dialog->findChildren<QRadioButton *>();
        for (QRadioButton *button : buttons) {
            if (button->text().startsWith(QLatin1String("Exit now"))) {
                answer->exitText = button->text();
                answer->exitToolTip = button->toolTip();
                button->setChecked(!answer->increase);
            } else {
                answer->increaseToolTip = button->toolTip();
            }
        }
        answer->spinMinimum = dialog->findChild<QDoubleSpinBox *>()->minimum();
        dialog->accept();
    });
}

} // namespace

void TestApplication::memoryDialogRaisesLimit()
{
    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Tabulon[*]"));
    window.setWindowModified(true);
    window.show();
    app()->settings()->setMaxMemoryUsage(0.0001);
    const double use = processMemoryGiB();

    DialogAnswer answer;
    answerMemoryDialog(&answer);
    checkMemoryLimit();
    QVERIFY(answer.seen);
    QCOMPARE(answer.title, QStringLiteral("Insufficient Memory"));
    const QString head
        = QStringLiteral("You have exceed the maximum process memory set in 'Preferences'.\n\n"
                         "Maximum memory usage=0.0 GB. Current memory usage=");
    const QString tail = QStringLiteral(" GB.\n\nWould you like to?:");
    QVERIFY2(answer.text.startsWith(head) && answer.text.endsWith(tail), qPrintable(answer.text));
    const QString shownUse
        = answer.text.mid(head.size(), answer.text.size() - head.size() - tail.size());
    QVERIFY2(QRegularExpression(QStringLiteral("^\\d+\\.\\d$")).match(shownUse).hasMatch(),
             qPrintable(shownUse));
    QVERIFY(qAbs(shownUse.toDouble() - use) < 0.1);
    QCOMPARE(answer.exitText, QStringLiteral("Exit now (changes not saved)"));
    QCOMPARE(answer.exitToolTip,
             QStringLiteral("Exit Tabulon immediately. Any unsaved changes will be lost."));
    QCOMPARE(answer.increaseToolTip,
             QStringLiteral("Increase the maximum memory to this amount in 'Preferences' and try "
                            "to continue."));
    QVERIFY(qAbs(answer.spinMinimum - (use + 0.5)) < 0.1);
    QCOMPARE(app()->settings()->maxMemoryUsage(), answer.spinMinimum);
}

void TestApplication::memoryDialogExitThrows()
{
    QMainWindow window;
    window.show();
    app()->settings()->setMaxMemoryUsage(0.0001);

    DialogAnswer answer;
    answer.increase = false;
    answerMemoryDialog(&answer);
    QVERIFY_EXCEPTION_THROWN(checkMemoryLimit(), MaxMemoryException);
    QVERIFY(answer.seen);
    QCOMPARE(answer.exitText, QStringLiteral("Exit now (no changes to save)"));
    QCOMPARE(app()->settings()->maxMemoryUsage(), 0.0001);

    // With no window to ask in, the check ends the run at once.
    window.hide();
    answer = DialogAnswer();
    answerMemoryDialog(&answer);
    QVERIFY_EXCEPTION_THROWN(checkMemoryLimit(), MaxMemoryException);
    QVERIFY(!answer.seen);
    QCoreApplication::processEvents();
}

void TestApplication::failureExits_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QStringList>("messages");
    QTest::newRow("std::exception")
        << "std" << 2
        << QStringList({"exception: disk on fire",
                        "Tabulon has to close due to an exception. Please contact support at "
                        "support@velmora.example.",
                        "emergency handler ran"});
    QTest::newRow("anything else")
        << "other" << 3
        << QStringList({"Tabulon has to close. Please contact support at support@velmora.example.",
                        "emergency handler ran"});
    QTest::newRow("memory limit")
        << "memory" << 1
        << QStringList({"Maximum memory exceeded",
                        "Tabulon has exceeded the memory allocation set in 'Preferences' and will "
                        "close.",
                        "emergency handler ran"});
    QTest::newRow("bad_alloc aborts") << "badalloc" << -1 << QStringList();
}

void TestApplication::failureExits()
{
    QFETCH(QString, kind);
    QFETCH(int, exitCode);
    QFETCH(QStringList, messages);

    QProcess child;
    child.start(QCoreApplication::applicationFilePath(),
                {QLatin1String(ChildArgument), kind, m_dir->filePath(QStringLiteral("tmp"))});
    QVERIFY(child.waitForFinished(30000));
    const QString errors = QString::fromUtf8(child.readAllStandardError());
    if (exitCode < 0) {
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);
        QVERIFY2(!errors.contains(QLatin1String("emergency")), qPrintable(errors));
        return;
    }
    QCOMPARE(child.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.exitCode(), exitCode);
    for (const QString &message : messages)
        QVERIFY2(errors.contains(message), qPrintable(errors));
}

void TestApplication::temporaryFilesRemovedAtExit()
{
    const QString path = m_dir->filePath(QStringLiteral("scratch.csv"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("a,b\n");
    file.close();

    QProcess child;
    child.start(QCoreApplication::applicationFilePath(),
                {QLatin1String(ChildArgument), QStringLiteral("none"), path});
    QVERIFY(child.waitForFinished(30000));
    QCOMPARE(child.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.exitCode(), 0);
    QVERIFY(!QFile::exists(path));
}

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    if (argc == 4 && std::strcmp(argv[1], ChildArgument) == 0) {
        int childArgc = 1;
        return runChild(childArgc, argv, QString::fromLocal8Bit(argv[2]),
                        QString::fromLocal8Bit(argv[3]));
    }
    // Children inherit this home, so no process of the test sees the user's own.
    QTemporaryDir home;
    qputenv("HOME", QFile::encodeName(home.path()));
    Application app(argc, argv);
    TestApplication test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_application.moc"
