#pragma once

#include <QColor>
#include <QFont>

class Settings;

// The colours, fonts and colour scheme of the user's preferences. They live in the same
// store as every other setting, but only a process with a GUI can read them as colours and
// fonts, so they are kept apart from Settings, which the command line uses without one.
class AppearanceSettings
{
public:
    // Reads and writes through store, by default the one in force.
    explicit AppearanceSettings(Settings *store = nullptr);
    // Reads only; the setters must not be called.
    explicit AppearanceSettings(const Settings *store);

    // Whether the system looks dark: a GUI application exists and its palette's window
    // colour has a lightness below 128.
    static bool isSystemDark();

    // The colour scheme; unset, it follows the system's look at the time of asking.
    int colorScheme() const;
    void setColorScheme(int scheme);
    QColor customColor(int role) const;
    void setCustomColor(int role, const QColor &color);
    QColor changedDataColor() const { return readColor(QStringLiteral("changed_data_color")); }
    void setChangedDataColor(const QColor &color)
    {
        writeColor(QStringLiteral("changed_data_color"), color);
    }
    QColor verifyFailErrorColor() const
    {
        return readColor(QStringLiteral("verify_fail_error_color"));
    }
    void setVerifyFailErrorColor(const QColor &color)
    {
        writeColor(QStringLiteral("verify_fail_error_color"), color);
    }
    QColor verifyFailWarningColor() const
    {
        return readColor(QStringLiteral("verify_fail_warning_color"));
    }
    void setVerifyFailWarningColor(const QColor &color)
    {
        writeColor(QStringLiteral("verify_fail_warning_color"), color);
    }
    QColor verifyFailInfoColor() const
    {
        return readColor(QStringLiteral("verify_fail_info_color"));
    }
    void setVerifyFailInfoColor(const QColor &color)
    {
        writeColor(QStringLiteral("verify_fail_info_color"), color);
    }
    QFont uiFont() const { return readFont(QStringLiteral("ui_font")); }
    void setUiFont(const QFont &font);
    QFont dataFont() const { return readFont(QStringLiteral("data_font")); }
    void setDataFont(const QFont &font);

private:
    Settings *writable() const;
    QColor readColor(const QString &key) const;
    QFont readFont(const QString &key) const;
    void writeColor(const QString &key, const QColor &color);

    const Settings *m_store;
    // Null for an object that only reads.
    Settings *m_writableStore;
};
