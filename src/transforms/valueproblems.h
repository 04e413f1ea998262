#pragma once

#include "data/dataset.h"
#include "data/valueinterpretation.h"
#include "transforms/reshaping.h"

#include <QString>
#include <QStringList>

// Cells that a conversion could not read, one kind to a listing: a heading with their count
// ("3 non-numeric values:"), the first few as "'text' at column 'name' row 5", and a line
// for the rest. The line of a cell is only made while the list is short, so counting a
// million bad cells costs no texts.
class ValueProblems
{
public:
    // heading takes the count and the word "value" or "values".
    explicit ValueProblems(const QString &heading)
        : m_heading(heading)
    { }

    void add(const Dataset &data, int r, int c, const QString &text)
    {
        add([&] {
            return QStringLiteral("'%1' at column '%2' row %3")
                .arg(text, data.headerText(c), QString::number(r + 1));
        });
    }
    // Counts one more, with a line of its own made by line() while the list is short.
    template<typename Line> void add(const Line &line)
    {
        if (++m_count <= ListedProblems)
            m_lines.append(line());
    }
    qint64 count() const { return m_count; }
    QStringList lines() const
    {
        if (m_count == 0)
            return {};
        QStringList lines {
            m_heading.arg(formatCount(m_count),
                          m_count == 1 ? QStringLiteral("value") : QStringLiteral("values"))};
        lines += m_lines;
        if (m_count > ListedProblems)
            lines.append(furtherProblemsText(m_count - ListedProblems));
        return lines;
    }

private:
    QString m_heading;
    QStringList m_lines;
    qint64 m_count = 0;
};

// The result line of a conversion: "%1 changed, %2 unchanged, %3 non-numeric" with the word
// of the values it could not read, or "No changes" when it neither changed nor met any.
inline QString conversionResult(qint64 changed, qint64 unchanged, const ValueProblems &unread,
                                const QString &unreadWord)
{
    if (changed == 0 && unread.count() == 0)
        return QStringLiteral("No changes");
    return QStringLiteral("%1 changed, %2 unchanged, %3 %4")
        .arg(formatCount(changed), formatCount(unchanged), formatCount(unread.count()), unreadWord);
}

// What the format conversions do with a value they cannot read, in the order of their
// choices; Date Format offers a value of the user's instead of NaN.
enum class UnreadValue { Keep = 0, Empty = 1, Replace = 2 };

// The tally of one conversion of cells in place.
struct CellConversion
{
    explicit CellConversion(const QString &heading)
        : problems(heading)
    { }

    ValueProblems problems;
    qint64 changed = 0;
    qint64 unchanged = 0;
    // What becomes of a cell that can't be read: kept, or set to `replacement`.
    UnreadValue unread = UnreadValue::Keep;
    QString replacement;

    QString result(const QString &unreadWord) const
    {
        return conversionResult(changed, unchanged, problems, unreadWord);
    }
};

// Rewrites each non-empty cell of the columns through convert(columnPosition, cell, &text),
// which returns false for a value it can't read. An empty cell is a missing value, not a
// wrong one, and stays. report(row, rowCount) gives progress; the loop ends early, keeping
// what it has done, when stopRequested() says so.
template<typename Convert, typename Report, typename Stop>
void convertCells(Dataset &output, const QList<int> &columns, CellConversion &conversion,
                  Convert convert, Report report, Stop stopRequested)
{
    const int rowCount = output.rowCount();
    for (int r = 0; r < rowCount; ++r) {
        report(r, rowCount);
        if (r % 1000 == 0 && stopRequested())
            break;
        for (int i = 0; i < columns.size(); ++i) {
            const int c = columns.at(i);
            const QString &cell = output.cell(r, c);
            if (cell.isEmpty()) {
                ++conversion.unchanged;
                continue;
            }
            QString text;
            if (!convert(i, cell, &text)) {
                conversion.problems.add(output, r, c, cell);
                // Counted as unread only, whatever becomes of it.
                if (conversion.unread != UnreadValue::Keep && conversion.replacement != cell)
                    output.setCell(r, c, conversion.replacement);
                continue;
            }
            if (text == cell) {
                ++conversion.unchanged;
                continue;
            }
            output.setCell(r, c, text);
            ++conversion.changed;
        }
    }
}
