#pragma once

#include "data/dataset.h"
#include "transforms/verifyrules.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>
#include <vector>

// The checks behind Verify's rules: validators of identifying numbers, and the checker that
// walks one column once, deciding the cell rules row by row and the rules on the whole column
// from hashes kept on the way. What fails is gathered in VerifyFails, in input row numbers,
// for the transform to filter rows by and to mark.
namespace VerifyChecks {

// Validators: 0 for a valid text, another code for an invalid one.
int ean13Code(const QString &text);
int upcACode(const QString &text);
int gtinCode(const QString &text);
int isbnCode(const QString &text);
int asinCode(const QString &text, bool caseSensitive);
int ibanCode(const QString &text, bool caseSensitive);

// Row numbers of a report: the first five from 1, joined by commas, then "…+%1 more".
constexpr int ListedRows = 5;
QString rowListText(const QVector<int> &firstRows, qint64 total);

} // namespace VerifyChecks

// Everything that failed in a run, by input row and column.
struct VerifyFails
{
    struct CellFail
    {
        int row;
        int column;
        int rule;
        int severity;
    };
    // A fail of a dataset rule on a row (column -1) or a column (row -1), or of a column rule
    // on its column as a whole (row -1).
    struct LineFail
    {
        int row;
        int column;
        int rule;
        int severity;
        bool datasetRule;
    };

    explicit VerifyFails(int rowCount)
        : rowSeverities(rowCount, 0)
    { }
    // countFail is false for the further rows of one fail, such as the rows of a duplicate.
    void addCell(int row, int column, int rule, int severity, bool countFail = true);
    void addLine(const LineFail &fail, qint64 count);
    bool rowHasFail(int row) const { return rowSeverities.at(row) != 0; }
    bool rowHasSeverity(int row, int severity) const
    {
        return (rowSeverities.at(row) & (1 << severity)) != 0;
    }

    // One bit per severity that failed on the row.
    QVector<quint8> rowSeverities;
    QVector<CellFail> cells;
    QVector<LineFail> lines;
    qint64 bySeverity[VerifyRules::SeverityCount] = {};
};

// How one rule of one column or of the dataset came out.
struct RuleOutcome
{
    VerifyRule rule;
    qint64 fails = 0;
    // The rows the rule failed on, counted, and the first of them.
    qint64 rows = 0;
    QVector<int> firstRows;
    QString detail;

    void addRow(int row)
    {
        if (firstRows.size() < VerifyChecks::ListedRows)
            firstRows.append(row);
        ++rows;
    }
};

// Checks the rules of one column: construct, call checkRow for every row in order, then
// finish. Options are read and expressions compiled once, in the constructor.
class ColumnChecker
{
public:
    struct Options
    {
        bool caseSensitive = false;
        // The column's date format; empty when none is known.
        QString dateFormat;
    };

    ColumnChecker(const Dataset &data, int column, const QList<VerifyRule> &rules,
                  const Options &options, VerifyFails *fails);
    ~ColumnChecker();
    ColumnChecker(const ColumnChecker &) = delete;
    ColumnChecker &operator=(const ColumnChecker &) = delete;

    void checkRow(int row);
    // Decides the rules on the whole column; the outcomes are final after it.
    void finish();
    const QList<RuleOutcome> &outcomes() const { return m_outcomes; }
    // Messages about the rules themselves, such as an expression that doesn't compile.
    const QStringList &messages() const { return m_messages; }

    struct Prepared;
    class Dates;

private:
    bool passes(Prepared &rule, const QString &cell);
    bool passesFormat(int rule, const QString &cell) const;
    static bool passesCharacters(int rule, const QString &cell);
    void collect(Prepared &rule, const QString &cell, int row);
    void decide(int index);
    template<typename Key> void failDuplicates(int index, const QHash<Key, QVector<int>> &repeated);
    QString gapText(qint64 value, bool date) const;
    void failCell(int index, int row, bool countFail);
    void failColumn(int index, qint64 count, const QString &detail);

    const Dataset &m_data;
    int m_column;
    Options m_options;
    VerifyFails *m_fails;
    bool m_decimalIsPoint;
    QList<RuleOutcome> m_outcomes;
    std::vector<std::unique_ptr<Prepared>> m_rules;
    std::unique_ptr<Dates> m_dates;
    QStringList m_messages;
};
