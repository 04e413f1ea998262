#include "workbench/windowprompts.h"

#include "shell/application.h"
#include "shell/messageboxes.h"
#include "shell/settings.h"

#include <QLocale>

#include <cmath>

namespace {

const QString s_productName = QStringLiteral("Tabulon");

QString achievementLine(int exponent)
{
    switch (exponent) {
    case 6:
        return QStringLiteral("Take that, Excel!");
    case 7:
        return QStringLiteral("Maybe have a lie down?");
    case 8:
        return QStringLiteral("We're glad to see you're getting value for money.");
    case 9:
        return QStringLiteral("Welcome to the billion rows club.");
    case 10:
        return QStringLiteral("We think your boss should give you a raise!");
    case 11:
        return QStringLiteral("To infinity, and beyond!");
    case 12:
        return QStringLiteral("Post a screenshot of this on the Tabulon forum!");
    default:
        return QStringLiteral("Awesome!!");
    }
}

} // namespace

namespace WindowPrompts {

void showStartMessages(QWidget *parent)
{
    Settings *settings = Settings::instance();
    if (settings->showGettingStarted()) {
        settings->setShowGettingStarted(false);
        MessageBoxes::information(
            parent, QStringLiteral("Getting Started"),
            QStringLiteral("Welcome to Tabulon.\n\n"
                           "1. Drop a data file on the center pane (or click an input button "
                           "on the left).\n"
                           "2. Click a transform on the left to add it after the selected "
                           "item.\n"
                           "3. Set its options on the right; the table below them shows the "
                           "result.\n"
                           "4. Add an output to write the result to a file.\n\n"
                           "Save the document to repeat the same steps on other files."));
    }
    if (settings->isIniFile() && !settings->isWritable()) {
        MessageBoxes::warning(parent, s_productName,
                              QStringLiteral("Cannot write preferences to '%1'.\nMake sure the "
                                             "file and folder have write permission\nor store "
                                             "'Preferences' in the %2.")
                                  .arg(settings->fileName(), Settings::userSettingsName()));
    }
}

QString aboutText()
{
    return QStringLiteral("%1 %2\n\nA workbench for transforming tabular data without "
                          "programming.\n\nSupport: %3")
        .arg(s_productName, QStringLiteral(TABULON_VERSION), Application::supportAddress());
}

QString notAvailableText(const QString &what)
{
    return QStringLiteral("%1 is not yet available in this version.").arg(what);
}

QString takeAchievement()
{
    Settings *settings = Settings::instance();
    const qint64 total = settings->totalRowsProcessed();
    if (total < 1000000)
        return QString();
    const int exponent = int(std::floor(std::log10(double(total))));
    if (settings->totalNextExpRowsToNotify() > exponent)
        return QString();
    settings->setTotalNextExpRowsToNotify(exponent + 1);
    return QStringLiteral("You have now transformed more than %1 rows of data in Tabulon.\n%2")
        .arg(QLocale().toString(qint64(std::pow(10.0, exponent))), achievementLine(exponent));
}

} // namespace WindowPrompts
