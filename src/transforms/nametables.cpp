#include "transforms/nametables.h"

#include <algorithm>

namespace NameTables {

namespace {

const char *const HonorificWords[] = {"admiral",
                                      "air",
                                      "airman",
                                      "alderman",
                                      "ambassador",
                                      "archbishop",
                                      "archdeacon",
                                      "archduchess",
                                      "archduke",
                                      "assemblyman",
                                      "assemblywoman",
                                      "baron",
                                      "baroness",
                                      "baronet",
                                      "bishop",
                                      "br",
                                      "brig",
                                      "brigadier",
                                      "brother",
                                      "cadet",
                                      "canon",
                                      "capt",
                                      "captain",
                                      "cardinal",
                                      "chairman",
                                      "chancellor",
                                      "chaplain",
                                      "chief",
                                      "cllr",
                                      "cmdr",
                                      "col",
                                      "colonel",
                                      "commandant",
                                      "commander",
                                      "commissioner",
                                      "commodore",
                                      "congressman",
                                      "congresswoman",
                                      "constable",
                                      "consul",
                                      "corporal",
                                      "councillor",
                                      "councilman",
                                      "councilwoman",
                                      "count",
                                      "countess",
                                      "cpl",
                                      "cpt",
                                      "dame",
                                      "deacon",
                                      "deaconess",
                                      "delegate",
                                      "det",
                                      "detective",
                                      "doctor",
                                      "dr",
                                      "duchess",
                                      "duke",
                                      "earl",
                                      "elder",
                                      "emperor",
                                      "empress",
                                      "ensign",
                                      "excellency",
                                      "father",
                                      "fr",
                                      "frau",
                                      "fraulein",
                                      "friar",
                                      "gen",
                                      "general",
                                      "gov",
                                      "governor",
                                      "her",
                                      "herr",
                                      "highness",
                                      "his",
                                      "hon",
                                      "honorable",
                                      "honourable",
                                      "imam",
                                      "insp",
                                      "inspector",
                                      "judge",
                                      "justice",
                                      "king",
                                      "lady",
                                      "lcpl",
                                      "lieut",
                                      "lieutenant",
                                      "lord",
                                      "lt",
                                      "madam",
                                      "madame",
                                      "maj",
                                      "majesty",
                                      "major",
                                      "marchioness",
                                      "marquess",
                                      "marquis",
                                      "marshal",
                                      "master",
                                      "mayor",
                                      "messrs",
                                      "mgr",
                                      "miss",
                                      "mister",
                                      "mlle",
                                      "mme",
                                      "monsignor",
                                      "mother",
                                      "mr",
                                      "mrs",
                                      "ms",
                                      "msgr",
                                      "mstr",
                                      "mx",
                                      "nurse",
                                      "officer",
                                      "pastor",
                                      "pc",
                                      "pfc",
                                      "pres",
                                      "president",
                                      "prince",
                                      "princess",
                                      "private",
                                      "prof",
                                      "professor",
                                      "provost",
                                      "pte",
                                      "queen",
                                      "rabbi",
                                      "rear",
                                      "rector",
                                      "regent",
                                      "rep",
                                      "representative",
                                      "rev",
                                      "revd",
                                      "reverend",
                                      "right",
                                      "rt",
                                      "sen",
                                      "senator",
                                      "senor",
                                      "senora",
                                      "senorita",
                                      "sergeant",
                                      "sgt",
                                      "sheikh",
                                      "sheriff",
                                      "sir",
                                      "sister",
                                      "sqn",
                                      "squadron",
                                      "sra",
                                      "srta",
                                      "superintendent",
                                      "supt",
                                      "the",
                                      "very",
                                      "vice",
                                      "viscount",
                                      "viscountess",
                                      "warden",
                                      "wing",
                                      "wo"};

const char *const SuffixWords[]
    = {"adc", "ae",   "afc",  "afm",  "am",  "aprn", "ba",     "bart", "bds",  "bem",   "bsc",
       "bt",  "cb",   "cbe",  "cd",   "cfa", "cfp",  "cmg",    "cpa",  "cvo",  "dbe",   "dc",
       "dcb", "dcm",  "dcmg", "dcvo", "dd",  "dds",  "dfc",    "dfm",  "dmd",  "dphil", "dsc",
       "dsm", "dso",  "dvm",  "edd",  "esq", "fca",  "frcp",   "frcs", "frs",  "gbe",   "gc",
       "gcb", "gcmg", "gcvo", "gm",   "i",   "ii",   "iii",    "iv",   "ix",   "jd",    "jnr",
       "jp",  "jr",   "kbe",  "kc",   "kcb", "kcmg", "kcvo",   "kg",   "kp",   "kt",    "lld",
       "llm", "lpn",  "lvo",  "mba",  "mbe", "mc",   "md",     "mp",   "mph",  "msc",   "msw",
       "mvo", "np",   "obe",  "om",   "pc",  "pe",   "pharmd", "phd",  "psyd", "qc",    "qpm",
       "rn",  "sj",   "snr",  "sr",   "td",  "v",    "vc",     "vi",   "vii",  "viii"};

// Words that belong to the last name that follows them when written in lower case: "Ludwig
// van Beethoven", "Maria de la Cruz". Capitalised, they may be names of their own ("Van").
const char *const Particles[]
    = {"al", "bin", "da", "das", "de", "degli", "dei", "del", "della", "den", "der", "des", "di",
       "do", "dos", "du", "ibn", "la", "le",    "lo",  "st",  "ten",   "ter", "van", "von", "zu"};

template<size_t N> QStringList listOf(const char *const (&words)[N])
{
    QStringList list;
    list.reserve(int(N));
    for (const char *word : words)
        list.append(QString::fromLatin1(word));
    return list;
}

QSet<QString> setOf(const QStringList &list)
{
    return QSet<QString>(list.cbegin(), list.cend());
}

bool isParticle(const QString &word)
{
    static const QSet<QString> particles = setOf(listOf(Particles));
    return particles.contains(word);
}

} // namespace

const QStringList &honorifics()
{
    static const QStringList list = listOf(HonorificWords);
    return list;
}

const QStringList &suffixes()
{
    static const QStringList list = listOf(SuffixWords);
    return list;
}

QString tableForm(QStringView word)
{
    QString form;
    form.reserve(int(word.size()));
    for (const QChar ch : word) {
        if (ch != QLatin1Char('.'))
            form += ch.toLower();
    }
    return form;
}

QSet<QString> customWords(const QString &text)
{
    QSet<QString> words;
    for (const QString &part : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QString word = tableForm(part.trimmed());
        if (!word.isEmpty())
            words.insert(word);
    }
    return words;
}

NameSplitter::NameSplitter(const NameOptions &options)
    : m_options(options)
{
    if (options.honorific)
        m_honorifics = setOf(honorifics()) + options.customHonorifics;
    if (options.suffix)
        m_suffixes = setOf(suffixes()) + options.customSuffixes;
    m_options.lastCount = qMax(1, options.lastCount);
}

bool NameSplitter::isHonorific(const QString &word) const
{
    return !m_honorifics.isEmpty() && m_honorifics.contains(tableForm(word));
}

bool NameSplitter::isSuffix(const QString &word) const
{
    return !m_suffixes.isEmpty() && m_suffixes.contains(tableForm(word));
}

NameParts NameSplitter::split(const QString &text) const
{
    // The words, and how many of them come before the first comma (-1 without one).
    QStringList words;
    int comma = -1;
    int start = -1;
    const int size = text.size();
    for (int i = 0; i <= size; ++i) {
        const bool separator = i == size || text.at(i).isSpace() || text.at(i) == QLatin1Char(',');
        if (!separator) {
            if (start < 0)
                start = i;
            continue;
        }
        if (start >= 0) {
            words.append(text.mid(start, i - start));
            start = -1;
        }
        if (i < size && text.at(i) == QLatin1Char(',') && comma < 0)
            comma = words.size();
    }

    NameParts parts;
    if (words.isEmpty())
        return parts;
    if (m_options.last && comma > 0 && comma < words.size()) {
        QStringList before = words.mid(0, comma);
        QStringList after = words.mid(comma);
        const bool allSuffixes = std::all_of(after.cbegin(), after.cend(),
                                             [this](const QString &w) { return isSuffix(w); });
        if (!allSuffixes) {
            // "Smith Jr., Dr. John": the last name first, then the rest of the name.
            while (before.size() > 1 && isSuffix(before.last()))
                parts.suffixes.prepend(before.takeLast());
            while (after.size() > 1 && isSuffix(after.last()))
                parts.suffixes.prepend(after.takeLast());
            while (!after.isEmpty() && isHonorific(after.first()))
                parts.honorifics.append(after.takeFirst());
            assign(after + before, before.size(), !parts.honorifics.isEmpty(), &parts);
            return parts;
        }
    }
    int first = 0;
    int end = words.size();
    while (end - first > 1 && isHonorific(words.at(first)))
        parts.honorifics.append(words.at(first++));
    while (end - first > 1 && isSuffix(words.at(end - 1)))
        parts.suffixes.prepend(words.at(--end));
    assign(words.mid(first, end - first), -1, !parts.honorifics.isEmpty(), &parts);
    return parts;
}

void NameSplitter::assign(const QStringList &words, int forcedLast, bool afterHonorific,
                          NameParts *parts) const
{
    const NameOptions &o = m_options;
    const int n = words.size();
    if (n == 0)
        return;
    int lastCount = 0;
    if (forcedLast >= 0) {
        lastCount = forcedLast;
    } else if (o.last) {
        const int keep = o.first ? 1 : 0;
        if (!o.first && !o.middle)
            lastCount = n;
        else if (n == 1)
            lastCount = afterHonorific || !o.first ? 1 : 0;
        else
            lastCount = qMin(o.lastCount, n - keep);
        while (n - lastCount > keep && isParticle(words.at(n - lastCount - 1)))
            ++lastCount;
    }
    QStringList rest = words.mid(0, n - lastCount);
    parts->last = words.mid(n - lastCount);
    if (o.first && !rest.isEmpty())
        parts->first.append(rest.takeFirst());
    if (o.middle)
        parts->middle = rest;
    else if (o.first)
        parts->first += rest;
    else if (o.last)
        parts->last = rest + parts->last;
}

} // namespace NameTables
