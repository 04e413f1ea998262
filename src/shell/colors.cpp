#include "shell/appearancesettings.h"
#include "shell/colors.h"

#include "shell/settings.h"

namespace {

Colors *s_instance = nullptr;
Colors *s_owned = nullptr;

using Table = QRgb[Colors::RoleCount];

// Background, grid, connection, selection, note border and text, then border, background and
// text of transforms, inputs and outputs. Schemes 2 to 6 and 8 to 10 vary the item hues of the
// light and dark defaults so that the kinds stay told apart in each.
const Table s_schemes[Colors::SchemeCount] = {
    // 0: custom; its unset roles come from 1 or 7.
    {},
    // 1: Light
    {0xFAFAFA, 0xE6E6E6, 0x7A8594, 0x1E90FF, 0x9A8C3A, 0x2B2B2B, 0x5E6B7D, 0xF2F4F7, 0x1F2328,
     0x3C7A4A, 0xEAF5EC, 0x1F2328, 0x8A5A2B, 0xFBF0E4, 0x1F2328},
    // 2: Light blue
    {0xF5F8FC, 0xE1E8F0, 0x6E7F96, 0x0A6CD6, 0x9A8C3A, 0x2B2B2B, 0x3F5F8A, 0xE8F0FA, 0x15202E,
     0x2E7D6B, 0xE3F4F0, 0x15202E, 0x7A4E8C, 0xF2E9F6, 0x15202E},
    // 3: Light warm
    {0xFCFAF6, 0xECE6DC, 0x8C7F6E, 0xD9730D, 0x9A8C3A, 0x2B2B2B, 0x8C6E4E, 0xF6EFE6, 0x2A2118,
     0x5C7C3A, 0xEEF4E4, 0x2A2118, 0x9C4A3A, 0xF8E8E4, 0x2A2118},
    // 4: Light high contrast
    {0xFFFFFF, 0xDDDDDD, 0x404040, 0x0050C8, 0x806000, 0x000000, 0x202020, 0xFFFFFF, 0x000000,
     0x006020, 0xFFFFFF, 0x000000, 0x803000, 0xFFFFFF, 0x000000},
    // 5: Light pastel
    {0xFBFBFD, 0xEAEAF2, 0x8F8FA8, 0x6A5ACD, 0x9A8C3A, 0x2B2B2B, 0x8A84B8, 0xF0EEFA, 0x25233A,
     0x6BA08A, 0xE9F6F0, 0x25233A, 0xC08A6A, 0xFBF0EA, 0x25233A},
    // 6: Light grey
    {0xF2F2F2, 0xDEDEDE, 0x707070, 0x1E90FF, 0x8A8A8A, 0x202020, 0x6A6A6A, 0xFAFAFA, 0x202020,
     0x5A5A5A, 0xEEEEEE, 0x202020, 0x4A4A4A, 0xE4E4E4, 0x202020},
    // 7: Dark
    {0x1E1F22, 0x2A2C30, 0x8C96A5, 0x3DA5FF, 0xC9B458, 0xE8E8E8, 0x7F8DA3, 0x2C3038, 0xE6E9EE,
     0x5FA872, 0x23332A, 0xE6E9EE, 0xC08A55, 0x3A2E24, 0xE6E9EE},
    // 8: Dark blue
    {0x141A24, 0x1E2633, 0x7D8FAA, 0x4FB0FF, 0xC9B458, 0xE8E8E8, 0x6F8FC0, 0x1F2A3C, 0xE3EAF5,
     0x4FA896, 0x1A3230, 0xE3EAF5, 0xA97FC0, 0x2E2338, 0xE3EAF5},
    // 9: Dark warm
    {0x221E1A, 0x2E2924, 0xA39480, 0xFF9A3D, 0xC9B458, 0xE8E8E8, 0xA88C6C, 0x362E26, 0xF2EAE0,
     0x8CAA5C, 0x2C3222, 0xF2EAE0, 0xC8705C, 0x3C2622, 0xF2EAE0},
    // 10: Dark high contrast
    {0x000000, 0x1A1A1A, 0xC0C0C0, 0x40A0FF, 0xE0C040, 0xFFFFFF, 0xD0D0D0, 0x101010, 0xFFFFFF,
     0x60D080, 0x101010, 0xFFFFFF, 0xFFA060, 0x101010, 0xFFFFFF},
};

bool validScheme(int scheme)
{
    return scheme >= 0 && scheme < Colors::SchemeCount;
}

bool validRole(int role)
{
    return role >= 0 && role < Colors::RoleCount;
}

} // namespace

Colors::Colors() = default;

Colors::~Colors()
{
    if (s_instance == this)
        s_instance = nullptr;
    if (s_owned == this)
        s_owned = nullptr;
}

Colors *Colors::instance()
{
    if (!s_instance) {
        if (!s_owned)
            s_owned = new Colors;
        s_instance = s_owned;
    }
    return s_instance;
}

void Colors::setInstance(Colors *colors)
{
    s_instance = colors;
}

QColor Colors::color(int scheme, int role) const
{
    if (!validRole(role))
        return QColor();
    if (!validScheme(scheme))
        scheme = Light;
    if (scheme == Custom) {
        const QColor custom = AppearanceSettings().customColor(role);
        if (custom.isValid())
            return custom;
        scheme = AppearanceSettings::isSystemDark() ? Dark : Light;
    }
    return QColor(s_schemes[scheme][role]);
}

QColor Colors::color(int role) const
{
    return color(scheme(), role);
}

int Colors::scheme() const
{
    const int scheme = AppearanceSettings().colorScheme();
    return validScheme(scheme) ? scheme : Light;
}

void Colors::setScheme(int scheme)
{
    AppearanceSettings().setColorScheme(validScheme(scheme) ? scheme : Light);
}

bool Colors::isDarkScheme(int scheme)
{
    if (scheme == Custom) {
        const QColor background = Colors::instance()->color(Custom, CenterBackground);
        return background.lightness() < 128;
    }
    return scheme >= Dark && scheme < SchemeCount;
}

QString Colors::schemeName(int scheme)
{
    static const char *const names[SchemeCount]
        = {"Custom",     "Light", "Light blue", "Light warm", "Light high contrast", "Light pastel",
           "Light grey", "Dark",  "Dark blue",  "Dark warm",  "Dark high contrast"};
    return validScheme(scheme) ? QString::fromLatin1(names[scheme]) : QString();
}

QString Colors::roleName(int role)
{
    static const char *const names[RoleCount] = {"Background",       "Grid",
                                                 "Connection",       "Selection",
                                                 "Note border",      "Note text",
                                                 "Transform border", "Transform background",
                                                 "Transform text",   "Input border",
                                                 "Input background", "Input text",
                                                 "Output border",    "Output background",
                                                 "Output text"};
    return validRole(role) ? QString::fromLatin1(names[role]) : QString();
}

int Colors::gradientEffect() const
{
    // The built-in schemes share one moderate gradient; only the custom one is adjustable.
    return scheme() == Custom ? Settings::instance()->customGradientEffect() : 1;
}

double Colors::connectionThickness() const
{
    return scheme() == Custom ? Settings::instance()->customConnectionThickness() : 2.0;
}
