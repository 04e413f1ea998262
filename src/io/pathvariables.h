#pragma once

#include <QDateTime>
#include <QHash>
#include <QString>

// The variables in braces that the path, sheet and comment of an output may hold, such as
// {date} or {sales.fname}. One instance holds everything a replacement needs (the moment, the
// document, the inputs by alias), so that every variable of one write sees the same time and
// the same inputs. Matching is case-sensitive, and a variable that matches nothing stays in
// the text as it stands.
class PathVariables
{
public:
    // Takes the current time, the program's version and the machine and user names.
    PathVariables();

    void setNow(const QDateTime &now) { m_now = now; }
    const QDateTime &now() const { return m_now; }
    void setVersion(const QString &version) { m_version = version; }
    void setComputerName(const QString &name) { m_computerName = name; }
    void setUserName(const QString &name) { m_userName = name; }
    // The .tabulon file, for {transformfname}; empty while the document is unsaved.
    void setDocumentPath(const QString &path) { m_documentPath = path; }
    const QString &documentPath() const { return m_documentPath; }
    // An input file under its alias. The first input given an alias keeps it.
    void addInput(const QString &alias, const QString &path, const QString &sheet = QString());
    bool hasInput(const QString &alias) const { return m_inputs.contains(alias); }

    // Every variable of text replaced; replaced text is never scanned again.
    QString expand(const QString &text) const;
    // Path and sheet together; nothing is done unless one of them holds "{".
    void expand(QString &path, QString &sheet) const;

    // Cuts a trailing sheet part off a path: when the text holds both "[" and "]", everything
    // from the first "[" on. The sheet is what stands between that "[" and the last "]".
    static void splitSheet(const QString &text, QString &path, QString &sheet);
    // "v%1_%2_%3" from a dotted version such as "1.4.2"; missing parts count as 0.
    static QString versionText(const QString &version);
    static QString localComputerName();
    static QString localUserName();

private:
    struct Input
    {
        QString path;
        QString sheet;
    };

    // The value of one variable named without its braces; false when nothing matches.
    bool lookUp(const QString &name, QString &value) const;
    bool lookUpInput(const QString &name, QString &value) const;

    QDateTime m_now;
    QString m_version;
    QString m_computerName;
    QString m_userName;
    QString m_documentPath;
    QHash<QString, Input> m_inputs;
};
