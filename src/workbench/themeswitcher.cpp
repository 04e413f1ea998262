#include "shell/appearancesettings.h"
#include "workbench/themeswitcher.h"

#include "graph/graphscene.h"
#include "shell/colors.h"
#include "shell/settings.h"
#include "workbench/mainwindow.h"
#include "workbench/mainwindowactions.h"

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QPainter>
#include <QTimer>

namespace {

enum UiTheme { ThemeSystem = 0, ThemeLight = 1, ThemeDark = 2 };
constexpr int ThemeCheckMs = 5000;

} // namespace

ThemeSwitcher::ThemeSwitcher(MainWindow *window)
    : QObject(window)
    , m_window(window)
    , m_timer(new QTimer(this))
    , m_systemDark(AppearanceSettings::isSystemDark())
{
    connect(m_timer, &QTimer::timeout, this, &ThemeSwitcher::onUpdateUITheme);
    connect(window->windowActions()[MainWindowActions::ToggleUITheme], &QAction::triggered, this,
            &ThemeSwitcher::onToggleUITheme);
}

void ThemeSwitcher::startWatching()
{
    m_timer->start(ThemeCheckMs);
}

QIcon ThemeSwitcher::themedIcon(const QString &name) const
{
    const QIcon drawing(
        QStringLiteral(":/icons/%1/%2.svg")
            .arg(m_darkTheme ? QStringLiteral("dark") : QStringLiteral("light"), name));
    if (!m_darkTheme)
        return drawing;
    // The style greys a disabled icon towards the light palette, which on a dark bar looks
    // as bright as an enabled one; fade it instead, at every size the tool bar offers.
    QIcon icon;
    for (const int side : {16, 24, 32, 48}) {
        const QPixmap normal = drawing.pixmap(side, side);
        icon.addPixmap(normal, QIcon::Normal);
        QPixmap faded(normal.size());
        faded.setDevicePixelRatio(normal.devicePixelRatio());
        faded.fill(Qt::transparent);
        QPainter painter(&faded);
        painter.setOpacity(0.3);
        painter.drawPixmap(0, 0, normal);
        painter.end();
        icon.addPixmap(faded, QIcon::Disabled);
    }
    return icon;
}

void ThemeSwitcher::applyTheme()
{
    const int theme = Settings::instance()->uiTheme();
    const bool dark = theme == ThemeDark || (theme == ThemeSystem && m_systemDark);
    m_darkTheme = dark;
    m_window->windowActions().applyIcons([this](const QString &name) { return themedIcon(name); });
    QString styleSheet;
    if (dark) {
        QFile file(QStringLiteral(":/styles/dark.qss"));
        if (file.open(QIODevice::ReadOnly))
            styleSheet = QString::fromUtf8(file.readAll());
    }
    if (qApp->styleSheet() != styleSheet)
        qApp->setStyleSheet(styleSheet);
    // Only the two default schemes follow the theme; a scheme the user picked stays.
    Colors *colors = Colors::instance();
    if (dark && colors->scheme() == Colors::Light)
        colors->setScheme(Colors::Dark);
    else if (!dark && colors->scheme() == Colors::Dark)
        colors->setScheme(Colors::Light);
    if (GraphScene *scene = m_window->graphScene()) {
        scene->setBackgroundBrush(colors->color(Colors::CenterBackground));
        scene->update();
    }
}

void ThemeSwitcher::onToggleUITheme()
{
    Settings::instance()->setUiTheme(m_darkTheme ? ThemeLight : ThemeDark);
    applyTheme();
}

void ThemeSwitcher::onUpdateUITheme()
{
    const bool systemDark = AppearanceSettings::isSystemDark();
    if (systemDark == m_systemDark)
        return;
    m_systemDark = systemDark;
    if (Settings::instance()->uiTheme() == ThemeSystem)
        applyTheme();
}
