#pragma once

#include <QColor>
#include <QString>

// The colours of the Center pane: for each of the schemes a colour per role. Everything that
// paints the flow graph asks here instead of naming colours itself, so that the light and dark
// looks and the user's own scheme reach every item, connection and note alike.
class Colors
{
public:
    // Roles, numbered as stored in the custom_color_ keys.
    enum Role {
        CenterBackground = 0,
        Grid = 1,
        Connection = 2,
        Selection = 3,
        NoteBorder = 4,
        NoteText = 5,
        TransformBorder = 6,
        TransformBackground = 7,
        TransformText = 8,
        InputBorder = 9,
        InputBackground = 10,
        InputText = 11,
        OutputBorder = 12,
        OutputBackground = 13,
        OutputText = 14,
        RoleCount = 15
    };

    // Schemes. 0 is the user's own (the custom_color_ keys), 1 to 6 are light, 7 to 10 dark.
    enum Scheme { Custom = 0, Light = 1, Dark = 7, SchemeCount = 11 };

    Colors();
    virtual ~Colors();

    // The one in force. Made on first use unless one was installed.
    static Colors *instance();
    // Installs colors as the one in force without taking ownership; null uninstalls.
    static void setInstance(Colors *colors);

    virtual QColor color(int scheme, int role) const;
    // In the scheme in force.
    QColor color(int role) const;

    // The scheme in force is the color_scheme setting.
    int scheme() const;
    void setScheme(int scheme);

    // A custom colour that was never set falls back on the light or dark default, whichever
    // the system looks like.
    static bool isDarkScheme(int scheme);
    bool isDark() const { return isDarkScheme(scheme()); }
    static QString schemeName(int scheme);
    static QString roleName(int role);

    // The scheme's gradient strength on item bodies (0 none) and connection width.
    int gradientEffect() const;
    double connectionThickness() const;
};
