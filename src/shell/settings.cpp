#include "shell/settings.h"

#include "data/valueinterpretation.h"

#include <memory>

namespace {

Settings *s_installed = nullptr;

const QString &storeOrganisation()
{
    static const QString name = QStringLiteral("Velmora");
    return name;
}

const QString &storeApplication()
{
    static const QString name = QStringLiteral("Tabulon");
    return name;
}

QString transformDefaultKey(const QString &typeName, const QString &key)
{
    return QStringLiteral("defaults/transforms/%1/%2").arg(typeName, key);
}

QString ioDefaultKey(const QString &kind, const QString &fileType, const QString &group,
                     const QString &key)
{
    return QStringLiteral("defaults/%1/%2/%3/%4").arg(kind, fileType, group, key);
}

// A hand-edited ini file turns "a, b" into a list; the typed getters read it back as the
// text that was meant.
QString variantText(const QVariant &stored)
{
    if (stored.type() == QVariant::StringList)
        return stored.toStringList().join(QLatin1Char(','));
    return stored.toString();
}

} // namespace

Settings::Settings(const QString &path, QObject *parent)
    : QSettings(path, QSettings::IniFormat, parent)
    , m_isIniFile(true)
{ }

Settings::Settings(QObject *parent)
    : QSettings(QSettings::NativeFormat, QSettings::UserScope, storeOrganisation(),
                storeApplication(), parent)
{ }

Settings::~Settings()
{
    if (s_installed == this)
        s_installed = nullptr;
}

QString Settings::userSettingsName()
{
    return QStringLiteral("user settings");
}

Settings *Settings::instance()
{
    if (s_installed)
        return s_installed;
    // Built on first use, after the library statics that QSettings relies on, so that it
    // is also destroyed before them at exit.
    static std::unique_ptr<Settings> fallback(new Settings);
    return fallback.get();
}

void Settings::setInstance(Settings *store)
{
    s_installed = store;
}

void Settings::setValue(const QString &key, const QVariant &value)
{
    QSettings::setValue(key, value);
    if (!group().isEmpty())
        m_cache.clear();
    else
        m_cache.remove(key);
}

void Settings::remove(const QString &key)
{
    QSettings::remove(key);
    if (key.isEmpty() || !group().isEmpty()) {
        m_cache.clear();
        return;
    }
    const QString prefix = key + QLatin1Char('/');
    for (auto it = m_cache.begin(); it != m_cache.end();) {
        if (it.key() == key || it.key().startsWith(prefix))
            it = m_cache.erase(it);
        else
            ++it;
    }
}

void Settings::clear()
{
    QSettings::clear();
    m_cache.clear();
}

QList<int> Settings::splitterWidths() const
{
    return {splitterWidth1(), splitterWidth2(), splitterWidth3()};
}

void Settings::setSplitterWidths(const QList<int> &widths)
{
    if (widths.size() != 3)
        return;
    setSplitterWidth1(widths.at(0));
    setSplitterWidth2(widths.at(1));
    setSplitterWidth3(widths.at(2));
}

QDate Settings::totalRowsProcessedStartDate() const
{
    return QDate::fromString(value(QStringLiteral("total_rows_processed_start_date")).toString(),
                             Qt::ISODate);
}

void Settings::setTotalRowsProcessedStartDate(const QDate &date)
{
    setValue(QStringLiteral("total_rows_processed_start_date"), date.toString(Qt::ISODate));
}

QLocale Settings::locale() const
{
    const QString name = readText(QStringLiteral("locale"), QString());
    return name.isEmpty() ? QLocale::system() : QLocale(name);
}

QString Settings::dateFormats() const
{
    const QString key = QStringLiteral("date_formats");
    if (const QVariant *parsed = cached(key))
        return parsed->toString();
    // The default depends on the locale in force, which documents change.
    if (!contains(key))
        return defaultDateFormatsText(QLocale());
    return readText(key, QString());
}

QStringList Settings::dateFormatList() const
{
    return parseDateFormats(dateFormats());
}

QString Settings::defaultDateFormatsText(const QLocale &locale)
{
    return defaultDateFormats(isMonthFirstLocale(locale)).join(QLatin1Char('\n'));
}

QString Settings::defaultBlockedExtensions()
{
    return QStringLiteral("exe,bat,bsh,csh,zsh,cmd,py,js,com,doc,docx,scr,arx,bpl,vcl,mui,ocx,"
                          "sys,drv,zip,arj,7z,png,jpeg,jpg,chm,hlp");
}

QString Settings::blockedInputExtensions() const
{
    return readText(QStringLiteral("blocked_input_extensions"), defaultBlockedExtensions());
}

void Settings::setBlockedInputExtensions(const QString &list)
{
    write(QStringLiteral("blocked_input_extensions"), list);
}

QSet<QString> Settings::blockedInputExtensionSet() const
{
    return extensionSet(blockedInputExtensions());
}

QString Settings::blockedOutputExtensions() const
{
    return readText(QStringLiteral("blocked_output_extensions"), defaultBlockedExtensions());
}

void Settings::setBlockedOutputExtensions(const QString &list)
{
    write(QStringLiteral("blocked_output_extensions"), list);
}

QSet<QString> Settings::blockedOutputExtensionSet() const
{
    return extensionSet(blockedOutputExtensions());
}

QSet<QString> Settings::extensionSet(const QString &list)
{
    QSet<QString> set;
    const QStringList parts = list.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString &part : parts) {
        const QString extension = part.trimmed().toLower();
        if (!extension.isEmpty())
            set.insert(extension);
    }
    return set;
}

QMap<QString, int> Settings::defaultInputFileExtensions()
{
    // File type numbers: 0 delimited, 1 xlsx, 2 xls, 3 fixed width, 4 JSON, 5 XML,
    // 6 vCard, 10 plain text.
    return {
        {QStringLiteral("csv"), 0},     {QStringLiteral("tsv"), 0},  {QStringLiteral("xlsx"), 1},
        {QStringLiteral("xls"), 2},     {QStringLiteral("txt"), 3},  {QStringLiteral("json"), 4},
        {QStringLiteral("geojson"), 4}, {QStringLiteral("log"), 10}, {QStringLiteral("xml"), 5},
        {QStringLiteral("opml"), 5},    {QStringLiteral("vcf"), 6}};
}

QMap<QString, int> Settings::defaultOutputFileExtensions()
{
    // As for inputs, plus 7 YAML, 8 HTML and 9 Markdown.
    return {{QStringLiteral("csv"), 0},  {QStringLiteral("tsv"), 0},  {QStringLiteral("xlsx"), 1},
            {QStringLiteral("xls"), 2},  {QStringLiteral("html"), 8}, {QStringLiteral("json"), 4},
            {QStringLiteral("log"), 10}, {QStringLiteral("txt"), 10}, {QStringLiteral("md"), 9},
            {QStringLiteral("xml"), 5},  {QStringLiteral("vcf"), 6},  {QStringLiteral("yaml"), 7}};
}

QMap<QString, int> Settings::inputFileExtensions() const
{
    return readExtensionMap(QStringLiteral("input_file_extensions"), defaultInputFileExtensions());
}

QMap<QString, int> Settings::outputFileExtensions() const
{
    return readExtensionMap(QStringLiteral("output_file_extensions"),
                            defaultOutputFileExtensions());
}

// Stored as "extension=type" entries so that the ini file stays readable and editable.
void Settings::setInputFileExtensions(const QMap<QString, int> &map)
{
    QStringList entries;
    for (auto it = map.constBegin(); it != map.constEnd(); ++it)
        entries.append(it.key().toLower() + QLatin1Char('=') + QString::number(it.value()));
    setValue(QStringLiteral("input_file_extensions"), entries);
}

void Settings::setOutputFileExtensions(const QMap<QString, int> &map)
{
    QStringList entries;
    for (auto it = map.constBegin(); it != map.constEnd(); ++it)
        entries.append(it.key().toLower() + QLatin1Char('=') + QString::number(it.value()));
    setValue(QStringLiteral("output_file_extensions"), entries);
}

QMap<QString, int> Settings::readExtensionMap(const QString &key,
                                              const QMap<QString, int> &defaultValue) const
{
    const QVariant stored = value(key);
    if (!stored.isValid())
        return defaultValue;
    QMap<QString, int> map;
    const QStringList entries = stored.toStringList();
    for (const QString &entry : entries) {
        const int equals = entry.indexOf(QLatin1Char('='));
        if (equals <= 0)
            continue;
        bool ok = false;
        const int type = entry.midRef(equals + 1).trimmed().toInt(&ok);
        if (ok)
            map.insert(entry.left(equals).trimmed().toLower(), type);
    }
    return map;
}

QStringList Settings::recentDocs() const
{
    return value(QStringLiteral("recent_docs")).toStringList();
}

void Settings::setRecentDocs(const QStringList &paths)
{
    setValue(QStringLiteral("recent_docs"), paths);
}

QDateTime Settings::lastUpdatedCheck() const
{
    return QDateTime::fromString(value(QStringLiteral("last_updated_check")).toString(),
                                 Qt::ISODate);
}

void Settings::setLastUpdatedCheck(const QDateTime &time)
{
    setValue(QStringLiteral("last_updated_check"), time.toString(Qt::ISODate));
}

QVariant Settings::transformDefault(const QString &typeName, const QString &key) const
{
    return value(transformDefaultKey(typeName, key));
}

bool Settings::hasTransformDefault(const QString &typeName, const QString &key) const
{
    return contains(transformDefaultKey(typeName, key));
}

void Settings::setTransformDefault(const QString &typeName, const QString &key,
                                   const QVariant &value)
{
    setValue(transformDefaultKey(typeName, key), value);
}

QVariant Settings::ioDefault(const QString &kind, const QString &fileType, const QString &group,
                             const QString &key) const
{
    return value(ioDefaultKey(kind, fileType, group, key));
}

bool Settings::hasIoDefault(const QString &kind, const QString &fileType, const QString &group,
                            const QString &key) const
{
    return contains(ioDefaultKey(kind, fileType, group, key));
}

void Settings::setIoDefault(const QString &kind, const QString &fileType, const QString &group,
                            const QString &key, const QVariant &value)
{
    setValue(ioDefaultKey(kind, fileType, group, key), value);
}

const QVariant *Settings::cached(const QString &key) const
{
    const auto it = m_cache.constFind(key);
    return it == m_cache.constEnd() ? nullptr : &it.value();
}

void Settings::remember(const QString &key, const QVariant &value) const
{
    m_cache.insert(key, value);
}

bool Settings::readBool(const QString &key, bool defaultValue) const
{
    if (const QVariant *parsed = cached(key))
        return parsed->toBool();
    bool result = defaultValue;
    const QVariant stored = value(key);
    if (stored.type() == QVariant::Bool) {
        result = stored.toBool();
    } else if (stored.isValid()) {
        const QString text = stored.toString().trimmed().toLower();
        if (text == QLatin1String("true") || text == QLatin1String("1"))
            result = true;
        else if (text == QLatin1String("false") || text == QLatin1String("0"))
            result = false;
    }
    remember(key, result);
    return result;
}

int Settings::readInt(const QString &key, int defaultValue) const
{
    if (const QVariant *parsed = cached(key))
        return parsed->toInt();
    bool ok = false;
    int result = value(key).toInt(&ok);
    if (!ok)
        result = defaultValue;
    remember(key, result);
    return result;
}

qint64 Settings::readLongLong(const QString &key, qint64 defaultValue) const
{
    if (const QVariant *parsed = cached(key))
        return parsed->toLongLong();
    bool ok = false;
    qint64 result = value(key).toLongLong(&ok);
    if (!ok)
        result = defaultValue;
    remember(key, result);
    return result;
}

double Settings::readDouble(const QString &key, double defaultValue) const
{
    if (const QVariant *parsed = cached(key))
        return parsed->toDouble();
    bool ok = false;
    double result = value(key).toDouble(&ok);
    if (!ok)
        result = defaultValue;
    remember(key, result);
    return result;
}

QString Settings::readText(const QString &key, const QString &defaultValue) const
{
    if (const QVariant *parsed = cached(key))
        return parsed->toString();
    const QVariant stored = value(key);
    const QString result = stored.isValid() ? variantText(stored) : defaultValue;
    remember(key, result);
    return result;
}

QList<int> Settings::readIntList(const QString &key) const
{
    if (const QVariant *parsed = cached(key))
        return parsed->value<QList<int>>();
    QList<int> result;
    const QStringList parts = value(key).toStringList();
    for (const QString &part : parts) {
        bool ok = false;
        const int number = part.trimmed().toInt(&ok);
        if (!ok) {
            result.clear();
            break;
        }
        result.append(number);
    }
    remember(key, QVariant::fromValue(result));
    return result;
}

void Settings::write(const QString &key, const QVariant &value)
{
    QSettings::setValue(key, value);
    remember(key, value);
}

void Settings::writeIntList(const QString &key, const QList<int> &list)
{
    QStringList parts;
    parts.reserve(list.size());
    for (int number : list)
        parts.append(QString::number(number));
    QSettings::setValue(key, parts);
    remember(key, QVariant::fromValue(list));
}
