#pragma once

#include <QObject>

class MainWindow;
class QIcon;
class QTimer;

// The light or dark look of the window: the icons of the actions, the style sheet and the
// colour scheme of the Center pane. With the system's theme chosen, it looks every few
// seconds whether the system changed.
class ThemeSwitcher : public QObject
{
    Q_OBJECT

public:
    explicit ThemeSwitcher(MainWindow *window);

    bool isDark() const { return m_darkTheme; }
    void applyTheme();
    // Starts looking at the system's theme.
    void startWatching();

public slots:
    void onToggleUITheme();
    void onUpdateUITheme();

private:
    QIcon themedIcon(const QString &name) const;

    MainWindow *m_window;
    QTimer *m_timer;
    bool m_darkTheme = false;
    bool m_systemDark = false;
};
