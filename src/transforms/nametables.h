#pragma once

#include <QSet>
#include <QString>
#include <QStringList>
#include <QStringView>

// People's names taken apart: honorifics ("Dr", "Lt Col") off the front, suffixes ("Jr",
// "PhD") off the end, and what remains shared among first, middle and last names.
namespace NameTables {

// The built-in words, lower case and without dots, in alphabetic order.
const QStringList &honorifics();
const QStringList &suffixes();
// A word as the tables hold it: lower case, dots dropped ("Ph.D." is "phd").
QString tableForm(QStringView word);
// Comma-separated words of the user's own, in table form.
QSet<QString> customWords(const QString &text);

struct NameParts
{
    QStringList honorifics;
    QStringList first;
    QStringList middle;
    QStringList last;
    QStringList suffixes;
};

// Which parts a name may have, and the words that mark honorifics and suffixes.
struct NameOptions
{
    bool honorific = true;
    bool first = true;
    bool middle = true;
    bool last = true;
    bool suffix = true;
    int lastCount = 1;
    QSet<QString> customHonorifics;
    QSet<QString> customSuffixes;
};

class NameSplitter
{
public:
    explicit NameSplitter(const NameOptions &options);

    // The words of a name are split at blanks and commas. Honorifics are taken off the front
    // and suffixes off the end while a word is left for the name itself. Then the last
    // lastCount words are the last name, along with the lower-case particles before them
    // ("van der"), the first word is the first name and those between are middle names. A
    // single word is a first name, or a last name after an honorific. "Last, First" is read
    // as such when what follows the comma isn't all suffixes. Words of a part that is off go
    // to the first name (the last name when the first is off too).
    NameParts split(const QString &text) const;

private:
    bool isHonorific(const QString &word) const;
    bool isSuffix(const QString &word) const;
    void assign(const QStringList &words, int forcedLast, bool afterHonorific,
                NameParts *parts) const;

    NameOptions m_options;
    QSet<QString> m_honorifics;
    QSet<QString> m_suffixes;
};

} // namespace NameTables
