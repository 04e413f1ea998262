#pragma once

#include <QApplication>
#include <QDir>
#include <QFont>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

class QDialog;
class QWidget;
class Settings;

// The process's frame around the window: it owns the settings store, the application and
// fixed-width fonts, the list of text codecs, the last folders of the file dialogs, the
// temporary files to delete at exit and a small memory reserve. It is also the last line of
// defence: notify() turns an exception that escapes an event handler into a message and an orderly
// exit.
class Application : public QApplication
{
    Q_OBJECT

public:
    Application(int &argc, char **argv);
    ~Application() override;

    // The running Application, or null when the process has none.
    static Application *instance();
    // The support address named in the messages of a failed exit.
    static QString supportAddress();

    Settings *settings() const { return m_settings; }

    // The system's font as taken at start, one point larger when it is below 10 points.
    const QFont &applicationFont() const { return m_applicationFont; }
    const QFont &fixedWidthFont() const { return m_fixedWidthFont; }
    // The family of fixedWidthFont(), for style sheets.
    QString fixedWidthFontFamily() const { return m_fixedWidthFont.family(); }

    // Every codec once, under one of its names and never under an alias, sorted.
    const QStringList &codecNames() const { return m_codecNames; }

    // Files deleted when the application ends.
    QStringList &temporaryFiles() { return m_temporaryFiles; }
    void addTemporaryFile(const QString &path) { m_temporaryFiles.append(path); }

    // Folders where the file dialogs start. Each setter takes the path of a file and keeps
    // its folder, or the documents folder when that folder doesn't exist; the choice is
    // stored in the settings too.
    QString lastDocumentFolder() const { return m_lastDocumentFolder; }
    void setLastDocumentFolder(const QString &filePath);
    QString lastDataFolder() const { return m_lastDataFolder; }
    void setLastDataFolder(const QString &filePath);
    QString lastOutputDataFolder() const { return m_lastOutputDataFolder; }
    void setLastOutputDataFolder(const QString &filePath);

    // The folder of the program, where tabulon.ini may sit.
    const QDir &programFolder() const { return m_programFolder; }
    // Tests point the program folder elsewhere; the store is chosen again for the new
    // folder exactly as at start.
    void setProgramFolder(const QString &path);
    // tabulon.ini in the program folder, with native separators.
    QString settingsFilePath() const;
    // Copy every preference into tabulon.ini and use it from now on; false, with nothing
    // changed, when the file can't be written. The user settings keep their copy.
    bool movePreferencesToIni();
    // Copy every preference back into the user settings, use them and delete tabulon.ini.
    bool movePreferencesToUserSettings();

    // The one way long work lets the interface breathe: tells listeners, then handles the
    // pending events.
    void pumpEvents();

    // A plain Ok/Cancel question, Ok by default; true for Ok. What outputs ask through when
    // no window has installed its own dialog.
    static bool confirmWithMessageBox(const QString &title, const QString &text);

    bool notify(QObject *receiver, QEvent *event) override;

    // Called when a failure ends the program, before the message: the window installs what
    // frees the items' data and saves the recovery file.
    void setEmergencyHandler(std::function<void()> handler);

    // Built at start, while memory is still there to build it.
    QDialog *outOfMemoryDialog() const { return m_outOfMemoryDialog; }

signals:
    void heartBeat();

private:
    void buildOutOfMemoryDialog();
    void takeSystemFont();
    void chooseSettings();
    void replaceSettings(Settings *store);
    void readLastFolders();
    void gatherCodecNames();
    void fail(int exitCode, const QString &warning, const QString &message);
    bool askToRaiseMemoryLimit(double limitGiB, double useGiB, double *newLimitGiB);
    static QWidget *visibleWindow();
    static QString folderOfFile(const QString &filePath);

    Settings *m_settings = nullptr;
    QFont m_applicationFont;
    QFont m_fixedWidthFont;
    QStringList m_codecNames;
    QString m_lastDocumentFolder;
    QString m_lastDataFolder;
    QString m_lastOutputDataFolder;
    char *m_reserve = nullptr;
    QDialog *m_outOfMemoryDialog = nullptr;
    QStringList m_temporaryFiles;
    QDir m_programFolder;
    std::function<void()> m_emergencyHandler;
    bool m_failing = false;
};
