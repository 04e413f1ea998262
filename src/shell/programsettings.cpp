#include "shell/programsettings.h"

#include "data/dataset.h"
#include "data/valueinterpretation.h"
#include "shell/settings.h"

#include <QDir>
#include <QFile>

QString programSettingsPath(const QString &programFolder)
{
    return QDir::toNativeSeparators(
        QDir(programFolder).absoluteFilePath(QStringLiteral("tabulon.ini")));
}

Settings *openProgramSettings(const QString &programFolder)
{
    const QString iniPath = programSettingsPath(programFolder);
    auto *store = QFile::exists(iniPath) ? new Settings(iniPath) : new Settings;
    Settings::setInstance(store);
    applyProcessSettings(*store);
    return store;
}

void applyProcessSettings(const Settings &settings)
{
    Dataset::setOptimizeFor(settings.optimizeFor());
    setDateFormats(settings.dateFormatList());
}
