#include "shell/appearancesettings.h"

#include "shell/application.h"
#include "shell/settings.h"

#include <QGuiApplication>
#include <QPalette>

AppearanceSettings::AppearanceSettings(Settings *store)
    : m_store(store ? store : Settings::instance())
    , m_writableStore(store ? store : Settings::instance())
{ }

AppearanceSettings::AppearanceSettings(const Settings *store)
    : m_store(store)
    , m_writableStore(nullptr)
{ }

Settings *AppearanceSettings::writable() const
{
    Q_ASSERT_X(m_writableStore, "AppearanceSettings", "a setter on a store given as const");
    return m_writableStore;
}

bool AppearanceSettings::isSystemDark()
{
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return false;
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

int AppearanceSettings::colorScheme() const
{
    const QString key = QStringLiteral("color_scheme");
    if (const QVariant *parsed = m_store->cached(key))
        return parsed->toInt();
    // The default follows the system's look at the time of asking, so it is never cached.
    if (!m_store->contains(key))
        return isSystemDark() ? 7 : 1;
    return m_store->readInt(key, 1);
}

void AppearanceSettings::setColorScheme(int scheme)
{
    writable()->write(QStringLiteral("color_scheme"), scheme);
}

QColor AppearanceSettings::customColor(int role) const
{
    return readColor(QStringLiteral("custom_color_%1").arg(role));
}

void AppearanceSettings::setCustomColor(int role, const QColor &color)
{
    writeColor(QStringLiteral("custom_color_%1").arg(role), color);
}

void AppearanceSettings::setUiFont(const QFont &font)
{
    writable()->write(QStringLiteral("ui_font"), font.toString());
}

void AppearanceSettings::setDataFont(const QFont &font)
{
    writable()->write(QStringLiteral("data_font"), font.toString());
}

QColor AppearanceSettings::readColor(const QString &key) const
{
    if (const QVariant *parsed = m_store->cached(key))
        return parsed->value<QColor>();
    const QVariant stored = m_store->value(key);
    QColor result;
    if (stored.userType() == QMetaType::QColor)
        result = stored.value<QColor>();
    else if (stored.isValid())
        result = QColor(stored.toString().trimmed());
    m_store->remember(key, result);
    return result;
}

QFont AppearanceSettings::readFont(const QString &key) const
{
    QFont font;
    const QVariant stored = m_store->value(key);
    if (stored.isValid() && font.fromString(stored.toString()))
        return font;
    if (Application *app = Application::instance())
        return app->applicationFont();
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return QGuiApplication::font();
    return QFont();
}

void AppearanceSettings::writeColor(const QString &key, const QColor &color)
{
    if (!color.isValid()) {
        writable()->remove(key);
        return;
    }
    writable()->QSettings::setValue(key, color.name(QColor::HexArgb));
    m_store->remember(key, color);
}
