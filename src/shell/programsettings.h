#pragma once

#include <QString>

class Settings;

// Where the program keeps its preferences, for the window and the command line alike: the
// ini file beside the program when there is one (a portable install), else the user's
// settings.
QString programSettingsPath(const QString &programFolder);
// Opens that store and makes it the process's Settings::instance(); the caller owns it.
Settings *openProgramSettings(const QString &programFolder);
// Hands the values that inner loops read to the process: datasets and the date readers
// consult process-wide copies, not the store.
void applyProcessSettings(const Settings &settings);
