#include "io/pathvariables.h"

#include <QFileInfo>
#include <QStringList>
#include <QSysInfo>

namespace {

QString programVersion()
{
#ifdef TABULON_VERSION
    return QStringLiteral(TABULON_VERSION);
#else
    return QString();
#endif
}

} // namespace

PathVariables::PathVariables()
    : m_now(QDateTime::currentDateTime())
    , m_version(versionText(programVersion()))
    , m_computerName(localComputerName())
    , m_userName(localUserName())
{ }

void PathVariables::addInput(const QString &alias, const QString &path, const QString &sheet)
{
    if (alias.isEmpty() || m_inputs.contains(alias))
        return;
    m_inputs.insert(alias, Input {path, sheet});
}

void PathVariables::splitSheet(const QString &text, QString &path, QString &sheet)
{
    const int open = text.indexOf(QLatin1Char('['));
    const int close = text.lastIndexOf(QLatin1Char(']'));
    if (open < 0 || close < 0) {
        path = text;
        sheet.clear();
        return;
    }
    sheet = close > open ? text.mid(open + 1, close - open - 1) : QString();
    path = text.left(open);
}

QString PathVariables::versionText(const QString &version)
{
    const QStringList parts = version.split(QLatin1Char('.'));
    auto part = [&parts](int i) {
        bool ok = false;
        const int number = i < parts.size() ? parts.at(i).trimmed().toInt(&ok) : 0;
        return ok ? number : 0;
    };
    return QStringLiteral("v%1_%2_%3").arg(part(0)).arg(part(1)).arg(part(2));
}

QString PathVariables::localComputerName()
{
    return QSysInfo::machineHostName();
}

QString PathVariables::localUserName()
{
    QString name = qEnvironmentVariable("USER");
    if (name.isEmpty())
        name = qEnvironmentVariable("USERNAME");
    if (name.isEmpty())
        name = qEnvironmentVariable("LOGNAME");
    return name;
}

QString PathVariables::expand(const QString &text) const
{
    if (!text.contains(QLatin1Char('{')))
        return text;
    QString result;
    result.reserve(text.size() + 32);
    QString value;
    int position = 0;
    while (position < text.size()) {
        const int open = text.indexOf(QLatin1Char('{'), position);
        if (open < 0)
            break;
        const int close = text.indexOf(QLatin1Char('}'), open + 1);
        if (close < 0)
            break;
        result.append(text.constData() + position, open - position);
        if (lookUp(text.mid(open + 1, close - open - 1), value)) {
            result.append(value);
            position = close + 1;
        } else {
            // The brace may open a later variable, as in "{{date}".
            result.append(QLatin1Char('{'));
            position = open + 1;
        }
    }
    result.append(text.constData() + position, text.size() - position);
    return result;
}

void PathVariables::expand(QString &path, QString &sheet) const
{
    if (!path.contains(QLatin1Char('{')) && !sheet.contains(QLatin1Char('{')))
        return;
    path = expand(path);
    sheet = expand(sheet);
}

bool PathVariables::lookUp(const QString &name, QString &value) const
{
    enum Kind {
        Date,
        Time,
        DateTime,
        Day,
        Month,
        Year,
        Hour,
        Minute,
        Second,
        Version,
        ComputerName,
        UserName,
        DocumentName
    };
    static const QHash<QString, int> fixed = {
        {QStringLiteral("date"), Date},
        {QStringLiteral("time"), Time},
        {QStringLiteral("datetime"), DateTime},
        {QStringLiteral("day"), Day},
        {QStringLiteral("month"), Month},
        {QStringLiteral("year"), Year},
        {QStringLiteral("hour"), Hour},
        {QStringLiteral("minute"), Minute},
        {QStringLiteral("second"), Second},
        {QStringLiteral("version"), Version},
        {QStringLiteral("computername"), ComputerName},
        {QStringLiteral("username"), UserName},
        {QStringLiteral("transformfname"), DocumentName},
    };
    const auto it = fixed.constFind(name);
    if (it == fixed.constEnd())
        return lookUpInput(name, value);
    switch (it.value()) {
    case Date:
        value = m_now.toString(QStringLiteral("yyyy_MM_dd"));
        break;
    case Time:
        value = m_now.toString(QStringLiteral("HH_mm_ss_zzz"));
        break;
    case DateTime:
        value = m_now.toString(QStringLiteral("yyyy_MM_dd_HH_mm_ss_zzz"));
        break;
    case Day:
        value = m_now.toString(QStringLiteral("dd"));
        break;
    case Month:
        value = m_now.toString(QStringLiteral("MM"));
        break;
    case Year:
        value = m_now.toString(QStringLiteral("yyyy"));
        break;
    case Hour:
        value = m_now.toString(QStringLiteral("HH"));
        break;
    case Minute:
        value = m_now.toString(QStringLiteral("mm"));
        break;
    case Second:
        value = m_now.toString(QStringLiteral("ss"));
        break;
    case Version:
        value = m_version;
        break;
    case ComputerName:
        value = m_computerName;
        break;
    case UserName:
        value = m_userName;
        break;
    case DocumentName:
        value = QFileInfo(m_documentPath).completeBaseName();
        break;
    }
    return true;
}

bool PathVariables::lookUpInput(const QString &name, QString &value) const
{
    // A whole alias first, so that an alias holding a dot still names its input.
    auto it = m_inputs.constFind(name);
    if (it != m_inputs.constEnd()) {
        value = QFileInfo(it->path).completeBaseName();
        if (!it->sheet.isEmpty())
            value += QLatin1Char('_') + it->sheet;
        return true;
    }
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot < 0)
        return false;
    it = m_inputs.constFind(name.left(dot));
    if (it == m_inputs.constEnd())
        return false;
    const QStringRef field = name.midRef(dot + 1);
    const QFileInfo file(it->path);
    if (field == QLatin1String("fname"))
        value = file.completeBaseName();
    else if (field == QLatin1String("folder"))
        value = file.absolutePath();
    else if (field == QLatin1String("ext"))
        value = file.suffix();
    else if (field == QLatin1String("sheet"))
        value = it->sheet;
    else
        return false;
    return true;
}
