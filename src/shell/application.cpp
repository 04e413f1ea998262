#include "shell/application.h"

#include "data/dataset.h"
#include "data/valueinterpretation.h"
#include "shell/guards.h"
#include "shell/insufficientmemorydialog.h"
#include "shell/memory.h"
#include "shell/settings.h"

#include <QDialog>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QFontInfo>
#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>
#include <QSet>
#include <QStandardPaths>
#include <QStyleFactory>
#include <QTextCodec>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>

namespace {

// Enough for the message box and the emergency save once the heap is exhausted.
constexpr int ReserveBytes = 262144;

const QString &programName()
{
    static const QString name = QStringLiteral("Tabulon");
    return name;
}

void copyKeys(const QSettings &from, Settings &to)
{
    const QStringList keys = from.allKeys();
    for (const QString &key : keys)
        to.setValue(key, from.value(key));
}

} // namespace

Application::Application(int &argc, char **argv)
    : QApplication(argc, argv)
{
    m_reserve = new char[ReserveBytes];
    buildOutOfMemoryDialog();
    m_programFolder = QDir(QCoreApplication::applicationDirPath());
    takeSystemFont();
    setAttribute(Qt::AA_UseHighDpiPixmaps);
    setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    chooseSettings();
    gatherCodecNames();

    setMemoryLimitHandler([this](double limitGiB, double useGiB, double *newLimitGiB) {
        return askToRaiseMemoryLimit(limitGiB, useGiB, newLimitGiB);
    });
}

Application::~Application()
{
    setMemoryLimitHandler(MemoryLimitHandler());
    delete[] m_reserve;
    m_reserve = nullptr;
    delete m_outOfMemoryDialog;
    // The store uninstalls itself as it goes.
    delete m_settings;
    for (const QString &path : qAsConst(m_temporaryFiles))
        QFile::remove(path);
}

Application *Application::instance()
{
    return qobject_cast<Application *>(QCoreApplication::instance());
}

QString Application::supportAddress()
{
    return QStringLiteral("support@velmora.example");
}

QString Application::folderOfFile(const QString &filePath)
{
    const QFileInfo file(filePath);
    if (!filePath.isEmpty() && QDir(file.absolutePath()).exists())
        return QDir::toNativeSeparators(file.absolutePath());
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

void Application::setLastDocumentFolder(const QString &filePath)
{
    m_lastDocumentFolder = folderOfFile(filePath);
    m_settings->setLastDocDir(m_lastDocumentFolder);
}

void Application::setLastDataFolder(const QString &filePath)
{
    m_lastDataFolder = folderOfFile(filePath);
    m_settings->setLastDataDir(m_lastDataFolder);
}

void Application::setLastOutputDataFolder(const QString &filePath)
{
    m_lastOutputDataFolder = folderOfFile(filePath);
    m_settings->setLastOutputDataDir(m_lastOutputDataFolder);
}

void Application::readLastFolders()
{
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    m_lastDocumentFolder = m_settings->lastDocDir();
    if (m_lastDocumentFolder.isEmpty())
        m_lastDocumentFolder = documents;
    m_lastDataFolder = m_settings->lastDataDir();
    if (m_lastDataFolder.isEmpty())
        m_lastDataFolder = documents;
    m_lastOutputDataFolder = m_settings->lastOutputDataDir();
    if (m_lastOutputDataFolder.isEmpty())
        m_lastOutputDataFolder = documents;
}

void Application::setProgramFolder(const QString &path)
{
    m_programFolder = QDir(path);
    chooseSettings();
}

QString Application::settingsFilePath() const
{
    return QDir::toNativeSeparators(
        m_programFolder.absoluteFilePath(QStringLiteral("tabulon.ini")));
}

void Application::chooseSettings()
{
    const QString iniPath = settingsFilePath();
    replaceSettings(QFile::exists(iniPath) ? new Settings(iniPath) : new Settings);
    readLastFolders();
    // Datasets and the readers of dates consult process-wide values, not the store, in their
    // inner loops.
    Dataset::setOptimizeFor(m_settings->optimizeFor());
    setDateFormats(m_settings->dateFormatList());
}

void Application::replaceSettings(Settings *store)
{
    Settings *old = m_settings;
    m_settings = store;
    Settings::setInstance(store);
    delete old;
}

bool Application::movePreferencesToIni()
{
    if (m_settings->isIniFile())
        return true;
    BusyCursor busy;
    auto store = std::make_unique<Settings>(settingsFilePath());
    if (!store->isWritable())
        return false;
    copyKeys(*m_settings, *store);
    store->sync();
    if (store->status() != QSettings::NoError) {
        store.reset();
        QFile::remove(settingsFilePath());
        return false;
    }
    replaceSettings(store.release());
    return true;
}

bool Application::movePreferencesToUserSettings()
{
    if (!m_settings->isIniFile())
        return true;
    BusyCursor busy;
    auto store = std::make_unique<Settings>();
    // What the user settings held before the move to the ini file is out of date: a key
    // removed since then must not come back.
    store->clear();
    copyKeys(*m_settings, *store);
    store->sync();
    if (store->status() != QSettings::NoError)
        return false;
    // The ini store goes first, so that its last sync can't write the file again.
    replaceSettings(store.release());
    QFile::remove(settingsFilePath());
    return true;
}

void Application::pumpEvents()
{
    emit heartBeat();
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

bool Application::confirmWithMessageBox(const QString &title, const QString &text)
{
    return QMessageBox::question(nullptr, title, text, QMessageBox::Ok | QMessageBox::Cancel,
                                 QMessageBox::Ok)
        == QMessageBox::Ok;
}

bool Application::notify(QObject *receiver, QEvent *event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::bad_alloc &) {
        // Nothing can be relied on to work any more, not even a message.
        std::abort();
    } catch (const MaxMemoryException &) {
        fail(1, QStringLiteral("Maximum memory exceeded"),
             QStringLiteral("%1 has exceeded the memory allocation set in 'Preferences' and will "
                            "close.")
                 .arg(programName()));
    } catch (const std::exception &exception) {
        fail(2, QStringLiteral("exception: ") + QString::fromLocal8Bit(exception.what()),
             QStringLiteral("%1 has to close due to an exception. Please contact support at %2.")
                 .arg(programName(), supportAddress()));
    } catch (...) {
        fail(3, QStringLiteral("exception"),
             QStringLiteral("%1 has to close. Please contact support at %2.")
                 .arg(programName(), supportAddress()));
    }
    return true;
}

void Application::setEmergencyHandler(std::function<void()> handler)
{
    m_emergencyHandler = std::move(handler);
}

void Application::fail(int exitCode, const QString &warning, const QString &message)
{
    // A second failure while the first is being handled (say, in the message box's own
    // event loop) only makes sure that the program ends.
    if (m_failing) {
        QCoreApplication::exit(exitCode);
        return;
    }
    m_failing = true;
    delete[] m_reserve;
    m_reserve = nullptr;
    if (m_emergencyHandler) {
        try {
            m_emergencyHandler();
        } catch (...) {
            qWarning("emergency save failed");
        }
    }
    qWarning("%s", qUtf8Printable(warning));
    if (QWidget *window = visibleWindow()) {
        QMessageBox box(QMessageBox::Critical, programName(), message, QMessageBox::Ok, window);
        box.exec();
    } else {
        std::fprintf(stderr, "%s\n", qUtf8Printable(message));
        std::fflush(stderr);
    }
    QCoreApplication::exit(exitCode);
}

QWidget *Application::visibleWindow()
{
    QWidget *found = nullptr;
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (!window->isVisible())
            continue;
        if (qobject_cast<QMainWindow *>(window))
            return window;
        if (!found)
            found = window;
    }
    return found;
}

bool Application::askToRaiseMemoryLimit(double limitGiB, double useGiB, double *newLimitGiB)
{
    // Without a window there is nobody to ask: the run ends as if the user chose to exit.
    QWidget *window = visibleWindow();
    if (!window)
        return false;
    QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
    InsufficientMemoryDialog dialog(limitGiB, useGiB, window->isWindowModified(), window);
    dialog.exec();
    QGuiApplication::restoreOverrideCursor();
    if (!dialog.increaseChosen())
        return false;
    *newLimitGiB = dialog.newLimit();
    // Stored before pumping, so that the status bar's memory read-out shows the new limit.
    m_settings->setMaxMemoryUsage(*newLimitGiB);
    pumpEvents();
    return true;
}

void Application::buildOutOfMemoryDialog()
{
    m_outOfMemoryDialog = new QDialog;
    m_outOfMemoryDialog->setWindowTitle(QStringLiteral("Out of memory"));
    auto *layout = new QVBoxLayout(m_outOfMemoryDialog);
    layout->addWidget(new QLabel(QStringLiteral("%1 ran out of memory!").arg(programName()),
                                 m_outOfMemoryDialog));
}

void Application::takeSystemFont()
{
    QApplication::setFont(QFontDatabase::systemFont(QFontDatabase::GeneralFont));
    m_applicationFont = QApplication::font();
    if (m_applicationFont.pointSize() > 0 && m_applicationFont.pointSize() < 10)
        m_applicationFont.setPointSize(m_applicationFont.pointSize() + 1);

    const QString preferred = QStringLiteral("Consolas");
    m_fixedWidthFont = m_applicationFont;
    m_fixedWidthFont.setFamily(preferred);
    if (QFontInfo(m_fixedWidthFont).family().compare(preferred, Qt::CaseInsensitive) != 0) {
        m_fixedWidthFont = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        if (m_applicationFont.pointSize() > 0)
            m_fixedWidthFont.setPointSize(m_applicationFont.pointSize());
        // Some platforms (offscreen among them) answer with a proportional font, and the
        // generic "monospace" may resolve to a family whose metrics Qt doesn't see as fixed.
        if (!QFontInfo(m_fixedWidthFont).fixedPitch()) {
            m_fixedWidthFont.setStyleHint(QFont::TypeWriter);
            const QFontDatabase fonts;
            QStringList candidates
                = {QStringLiteral("DejaVu Sans Mono"), QStringLiteral("Liberation Mono"),
                   QStringLiteral("Courier New"), QStringLiteral("monospace")};
            candidates += fonts.families();
            for (const QString &family : qAsConst(candidates)) {
                m_fixedWidthFont.setFamily(family);
                if (QFontInfo(m_fixedWidthFont).fixedPitch())
                    break;
            }
        }
    }
}

void Application::gatherCodecNames()
{
    // availableCodecs() lists aliases as names of their own, and some aliases (such as
    // ICU's "1383" for GBK) are not among the codec's aliases(): keep the first name met of
    // each codec.
    QSet<QByteArray> seen;
    QSet<const QTextCodec *> listed;
    const QList<QByteArray> available = QTextCodec::availableCodecs();
    for (const QByteArray &name : available) {
        if (seen.contains(name))
            continue;
        seen.insert(name);
        const QTextCodec *codec = QTextCodec::codecForName(name);
        if (codec) {
            if (listed.contains(codec))
                continue;
            listed.insert(codec);
            seen.insert(codec->name());
            const QList<QByteArray> aliases = codec->aliases();
            for (const QByteArray &alias : aliases)
                seen.insert(alias);
        }
        m_codecNames.append(QString::fromLatin1(name));
    }
    std::sort(m_codecNames.begin(), m_codecNames.end());
}
