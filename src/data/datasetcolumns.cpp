// The column tests of Dataset and the substitution of column variables. The tests sample
// the first rows only, so that classing a column costs the same on a million rows as on a
// hundred.

#include "data/dataset.h"
#include "data/valueinterpretation.h"

#include <QDate>
#include <QVarLengthArray>

#include <algorithm>
#include <utility>

namespace {

const int kSampleRows = 100;
const int kKeySampleRows = 50;

// Applies a per-cell test to the non-blank cells among the first rows: every such cell
// must pass and at least one must be there.
template<typename Test>
bool allSampledCellsPass(const Dataset &dataset, int c, int limit, Test test)
{
    if (c < 0 || c >= dataset.columnCount())
        return false;
    const int rows = qMin(limit, dataset.rowCount());
    bool any = false;
    for (int r = 0; r < rows; ++r) {
        const QStringView cell = QStringView(dataset.cell(r, c)).trimmed();
        if (cell.isEmpty())
            continue;
        switch (test(dataset.cell(r, c), cell)) {
        case -1:
            return false;
        case 1:
            any = true;
            break;
        default:
            break;
        }
    }
    return any;
}

// The token list of a columnsByName table, longest name first, paired with the column.
using VariableTokens = QVector<QPair<QString, int>>;

VariableTokens buildVariableTokens(const QHash<QString, ColumnIndex> &byName)
{
    QVector<QPair<QString, ColumnIndex>> entries;
    entries.reserve(byName.size());
    for (auto it = byName.constBegin(); it != byName.constEnd(); ++it)
        entries.append({it.key(), it.value()});
    // Longer names first, so that "Total Cost" is replaced before "Total"; equal lengths
    // are put in name order only to make runs reproducible.
    std::sort(entries.begin(), entries.end(), [](const auto &a, const auto &b) {
        if (a.first.size() != b.first.size())
            return a.first.size() > b.first.size();
        return a.first < b.first;
    });
    VariableTokens tokens;
    tokens.reserve(entries.size());
    for (const auto &entry : std::as_const(entries)) {
        const QString token = QStringLiteral("$(") + entry.first.trimmed() + QLatin1Char(')');
        tokens.append({token, entry.second.value()});
    }
    return tokens;
}

// Substitution runs once a row with the same name table; sorting the names every row
// would cost more than the substitution. The table is compared, not trusted: an equal
// shared copy compares in constant time.
const VariableTokens &variableTokens(const QHash<QString, ColumnIndex> &byName)
{
    static QHash<QString, ColumnIndex> cachedNames;
    static VariableTokens cachedTokens;
    static bool cached = false;
    if (!cached || cachedNames != byName) {
        cachedTokens = buildVariableTokens(byName);
        cachedNames = byName;
        cached = true;
    }
    return cachedTokens;
}

using Openings = QVarLengthArray<int, 8>;

// Where "$(" starts in the text. Every token opens so, so a token is in the text exactly
// when it starts at one of these; testing a few places is far cheaper per row than
// searching the whole text once per column name.
void findOpenings(const QString &text, Openings &openings)
{
    openings.clear();
    const QChar *data = text.constData();
    const int last = text.size() - 1;
    for (int i = 0; i < last; ++i) {
        if (data[i] == QLatin1Char('$') && data[i + 1] == QLatin1Char('('))
            openings.append(i);
    }
}

bool holdsToken(const QString &text, const Openings &openings, const QString &token)
{
    for (const int position : openings) {
        if (QStringView(text).mid(position).startsWith(token))
            return true;
    }
    return false;
}

} // namespace

bool Dataset::isNumericColumn(int c, bool stripCurrency, int limit) const
{
    const QLocale locale;
    return allSampledCellsPass(*this, c, limit, [&](const QString &text, QStringView trimmed) {
        // NaN is a number that a numeric column may hold.
        if (trimmed.compare(QStringView(u"nan"), Qt::CaseInsensitive) == 0)
            return 0;
        bool ok = false;
        toDouble(text, locale, false, stripCurrency, &ok);
        return ok ? 1 : -1;
    });
}

bool Dataset::isBooleanColumn(int c) const
{
    return allSampledCellsPass(*this, c, kSampleRows, [](const QString &text, QStringView) {
        bool ok = false;
        toBool(text, false, false, &ok);
        return ok ? 1 : -1;
    });
}

bool Dataset::isPlainNumberColumn(int c) const
{
    return allSampledCellsPass(*this, c, kSampleRows, [](const QString &text, QStringView) {
        return isPlainNumber(text) ? 1 : -1;
    });
}

bool Dataset::isTimeColumn(int c) const
{
    return allSampledCellsPass(*this, c, kSampleRows, [](const QString &text, QStringView) {
        return toTime(text).isValid() ? 1 : -1;
    });
}

bool Dataset::isDateColumn(int c, const QStringList &formats, QString *format, int limit) const
{
    if (format)
        format->clear();
    if (c < 0 || c >= m_columnCount)
        return false;
    QStringList cells;
    const int rows = m_rows.size();
    for (int r = 0; r < rows && cells.size() < limit; ++r) {
        const QString trimmed = cell(r, c).trimmed();
        if (!trimmed.isEmpty())
            cells.append(trimmed);
    }
    if (cells.isEmpty())
        return false;

    int bestCount = 0;
    for (const QString &candidate : formats) {
        int count = 0;
        for (const QString &text : std::as_const(cells)) {
            if (QDate::fromString(text, candidate).isValid())
                ++count;
        }
        if (count > bestCount) {
            bestCount = count;
            if (format)
                *format = candidate;
        }
        if (count == cells.size())
            return true;
    }
    return false;
}

bool Dataset::isKeyLikeColumn(int c, const QStringList &formats) const
{
    if (c < 0 || c >= m_columnCount)
        return false;
    const int rows = qMin(kKeySampleRows, rowCount());
    for (int r = 0; r < rows; ++r) {
        const QString &text = cell(r, c);
        for (const QChar ch : text) {
            if (ch == QLatin1Char(' ') || ch == QLatin1Char('.') || ch == QLatin1Char(','))
                return false;
        }
    }
    return !isDateColumn(c, formats);
}

int Dataset::columnKind(int c, const QStringList &formats, QString *format,
                        bool stripCurrency) const
{
    if (format)
        format->clear();
    if (isNumericColumn(c, stripCurrency, kSampleRows))
        return 1;
    if (isBooleanColumn(c))
        return 2;
    if (isTimeColumn(c))
        return 4;
    QString dateFormat;
    if (isDateColumn(c, formats, &dateFormat)) {
        if (format)
            *format = dateFormat;
        return 3;
    }
    return 0;
}

QList<int> Dataset::numericColumns(bool stripCurrency) const
{
    QList<int> columns;
    for (int c = 0; c < m_columnCount; ++c) {
        if (isNumericColumn(c, stripCurrency))
            columns.append(c);
    }
    return columns;
}

QString Dataset::substituteColumnVariables(const QString &text,
                                           const QHash<QString, ColumnIndex> &byName, int r) const
{
    Openings openings;
    findOpenings(text, openings);
    if (openings.isEmpty() || r < 0 || r >= m_rows.size())
        return text;
    QString result = text;
    for (const auto &token : variableTokens(byName)) {
        const int c = token.second;
        if (c < 0 || c >= m_columnCount || !holdsToken(result, openings, token.first))
            continue;
        result.replace(token.first, cell(r, c), Qt::CaseSensitive);
        findOpenings(result, openings);
        if (openings.isEmpty())
            break;
    }
    return result;
}
