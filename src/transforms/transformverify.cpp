#include "transforms/transformverify.h"

#include "data/valueinterpretation.h"
#include "transforms/calculatedates.h"
#include "transforms/framework/parameter.h"
#include "transforms/verifychecks.h"
#include "transforms/verifyrules.h"

#include <QLocale>
#include <QSet>

#include <algorithm>

using namespace VerifyRules;

namespace {

const QString RulesKey = QStringLiteral("Rules");
const QString CaseSensitiveKey = QStringLiteral("Case_Sensitive");
const QString FilterKey = QStringLiteral("Keep_Remove_rows");
const QString NoFailKey = QStringLiteral("No_Fail");
const QString SeverityKeys[SeverityCount]
    = {QStringLiteral("No_Info"), QStringLiteral("No_Warning"), QStringLiteral("No_Error")};

// The rules that read dates, and so need the column's date format.
bool readsDates(int rule)
{
    return rule == ValidDate || rule == NoDateGaps || rule == MinimumDate || rule == MaximumDate
        || rule == NoDuplicateDates;
}

QString count(qint64 n)
{
    return formatCount(n, true);
}

// " (%1 error, %2 warning, %3 information)" of the counts that aren't zero; empty if none.
QString severityCountsText(const qint64 (&counts)[SeverityCount])
{
    QStringList parts;
    for (int severity = Error; severity >= Information; --severity) {
        if (counts[severity] > 0)
            parts.append(QStringLiteral("%1 %2").arg(count(counts[severity]),
                                                     severityName(severity).toLower()));
    }
    return parts.isEmpty() ? QString()
                           : QStringLiteral(" (%1)").arg(parts.join(QLatin1String(", ")));
}

// "Dataset rule: %1 '%2', %3 %4 fail(s) (%5)" and the like for a rule of either table.
QString ruleLine(const QString &table, const RuleOutcome &outcome, int kind)
{
    const VerifyRule &rule = outcome.rule;
    QString line = QStringLiteral("%1 rule: %2")
                       .arg(table,
                            table == QLatin1String("Dataset") ? datasetRuleName(rule.number)
                                                              : columnRuleName(rule.number));
    if (kind != NoValue)
        line += QStringLiteral(" '%1'").arg(valueText(kind, rule.value));
    if (kind == DateValue)
        line += QStringLiteral(" (yyyy-MM-dd)");
    line
        += QStringLiteral(", %1 %2 fail(s)").arg(count(outcome.fails), severityName(rule.severity));
    if (outcome.rows > 0)
        line += QStringLiteral(" (input row(s)=%2)")
                    .arg(VerifyChecks::rowListText(outcome.firstRows, outcome.rows));
    if (!outcome.detail.isEmpty())
        line += QStringLiteral(" (%1)").arg(outcome.detail);
    return line;
}

// A column with rules to check, where the option's id resolves.
struct CheckedColumn
{
    int position;
    QList<VerifyRule> rules;
    QString dateFormat;
};

// One run: checks the rules, gathers what failed and writes the report, the row filter and
// the marks.
class VerifyRun
{
public:
    VerifyRun(Dataset &data, const VerifyRuleSet &set, bool caseSensitive)
        : m_data(data)
        , m_set(set)
        , m_caseSensitive(caseSensitive)
        , m_fails(data.rowCount())
    { }

    void checkDataset();
    QList<CheckedColumn> columnsToCheck(const Parameter &rules);
    // False when stopped.
    bool checkColumns(const QList<CheckedColumn> &columns, const RunContext &context,
                      Transform *transform);
    // Rows are removed in place; returns how many.
    int filterRows(int mode, bool noFail, const bool (&bySeverity)[SeverityCount]);
    void writeMarks();
    QString summaryText() const;
    QString resultText(int removed) const;
    bool hasErrors() const { return m_fails.bySeverity[Error] > 0; }

    QStringList report;
    QStringList warnings;

private:
    void addOutcome(const QString &table, const RuleOutcome &outcome, int kind,
                    const QString &where);
    void checkDatasetRule(const VerifyRule &rule, RuleOutcome *outcome);
    QString inferDateFormat(int column);
    void reportColumn(int column, const ColumnChecker &checker);

    Dataset &m_data;
    const VerifyRuleSet &m_set;
    bool m_caseSensitive;
    VerifyFails m_fails;
    // Rule number and fails, in order, for the summary.
    QList<QPair<int, qint64>> m_datasetTotals;
    QMap<int, qint64> m_columnTotals;
    QSet<int> m_failedColumns;
    QVector<int> m_newRowOf;
};

void VerifyRun::addOutcome(const QString &table, const RuleOutcome &outcome, int kind,
                           const QString &where)
{
    const QString line = ruleLine(table, outcome, kind);
    report.append(line);
    if (outcome.fails > 0 && outcome.rule.severity >= Warning)
        warnings.append(where.isEmpty() ? line : where + QLatin1String(": ") + line);
}

void VerifyRun::checkDataset()
{
    const QList<VerifyRule> rules = m_set.activeDatasetRules();
    report.append(QStringLiteral("Dataset [%1 rule(s) active]").arg(count(rules.size())));
    for (const VerifyRule &rule : rules) {
        RuleOutcome outcome;
        outcome.rule = rule;
        checkDatasetRule(rule, &outcome);
        addOutcome(QStringLiteral("Dataset"), outcome, datasetRuleKind(rule.number), QString());
        if (outcome.fails > 0)
            m_datasetTotals.append({rule.number, outcome.fails});
    }
}

void VerifyRun::checkDatasetRule(const VerifyRule &rule, RuleOutcome *outcome)
{
    const int limit = rule.value.toInt();
    const int columns = m_data.columnCount();
    const int rows = m_data.rowCount();
    auto failOnce = [&](bool fails, const QString &detail) {
        if (!fails)
            return;
        outcome->fails = 1;
        outcome->detail = detail;
        m_fails.addLine({-1, -1, rule.number, rule.severity, true}, 1);
    };
    switch (rule.number) {
    case NoDuplicateColumnNames: {
        const QStringList headers = m_data.headers();
        QHash<QString, QList<int>> byName;
        QStringList order;
        for (int c = 0; c < columns; ++c) {
            const QString name = m_caseSensitive ? headers.at(c) : headers.at(c).toLower();
            QList<int> &found = byName[name];
            if (found.isEmpty())
                order.append(name);
            found.append(c);
        }
        QStringList details;
        for (const QString &name : qAsConst(order)) {
            const QList<int> &found = byName.value(name);
            if (found.size() < 2)
                continue;
            details.append(
                QStringLiteral("'%1'x%2").arg(headers.at(found.first())).arg(found.size()));
            outcome->fails += found.size();
            for (int c : found) {
                m_fails.addLine({-1, c, rule.number, rule.severity, true}, 1);
                m_failedColumns.insert(c);
            }
        }
        outcome->detail = details.join(QLatin1Char(','));
        break;
    }
    case MinimumColumns:
    case MaximumColumns:
        failOnce(rule.number == MinimumColumns ? columns < limit : columns > limit,
                 QStringLiteral("%1 column(s)").arg(count(columns)));
        break;
    case MinimumRows:
    case MaximumRows:
        failOnce(rule.number == MinimumRows ? rows < limit : rows > limit,
                 QStringLiteral("%1 row(s)").arg(count(rows)));
        break;
    case NoEmptyRows:
        for (int r = 0; r < rows; ++r) {
            const QStringList &row = m_data.row(r);
            if (std::all_of(row.cbegin(), row.cend(),
                            [](const QString &c) { return c.isEmpty(); })) {
                ++outcome->fails;
                outcome->addRow(r);
                m_fails.addLine({r, -1, rule.number, rule.severity, true}, 1);
            }
        }
        if (outcome->rows > 0)
            outcome->detail
                = QStringLiteral("input row(s)=%1")
                      .arg(VerifyChecks::rowListText(outcome->firstRows, outcome->rows));
        outcome->rows = 0;
        outcome->firstRows.clear();
        break;
    default:
        break;
    }
}

QString VerifyRun::inferDateFormat(int column)
{
    report.append(QStringLiteral("No date format set for '%1'").arg(columnRuleName(ValidDate)));
    QString format;
    if (Calculate::isDateColumn(m_data, column, dateFormats(), &format)) {
        report.append(QStringLiteral("Inferred date format for column %1 as '%2'")
                          .arg(QString::number(column + 1), format));
        return format;
    }
    report.append(QStringLiteral("Unable to infer date format for column %1")
                      .arg(QString::number(column + 1)));
    return QString();
}

QList<CheckedColumn> VerifyRun::columnsToCheck(const Parameter &rules)
{
    QList<CheckedColumn> columns;
    for (ColumnId id : m_set.columnsWithActiveRules()) {
        const int position = rules.columnPosition(id);
        if (position < 0 || position >= m_data.columnCount())
            continue;
        CheckedColumn column {position, m_set.activeRules(id), QString()};
        if (std::any_of(column.rules.cbegin(), column.rules.cend(),
                        [](const VerifyRule &rule) { return readsDates(rule.number); })) {
            const VerifyColumn *entry = m_set.column(id);
            for (const VerifyRule &rule : entry->rules) {
                if (rule.number == ValidDate)
                    column.dateFormat = rule.value.toString();
            }
        }
        columns.append(column);
    }
    std::sort(columns.begin(), columns.end(), [](const CheckedColumn &a, const CheckedColumn &b) {
        return a.position < b.position;
    });
    return columns;
}

bool VerifyRun::checkColumns(const QList<CheckedColumn> &columns, const RunContext &context,
                             Transform *transform)
{
    const int rowCount = m_data.rowCount();
    const int n = columns.size();
    for (int k = 0; k < n; ++k) {
        emit transform->processed(qreal(k) / n);
        const CheckedColumn &column = columns.at(k);
        ColumnChecker::Options options;
        options.caseSensitive = m_caseSensitive;
        options.dateFormat = column.dateFormat;
        const bool needsDates
            = std::any_of(column.rules.cbegin(), column.rules.cend(),
                          [](const VerifyRule &rule) { return readsDates(rule.number); });
        if (needsDates && options.dateFormat.isEmpty())
            options.dateFormat = inferDateFormat(column.position);
        ColumnChecker checker(m_data, column.position, column.rules, options, &m_fails);
        for (int r = 0; r < rowCount; ++r) {
            if (r % 1000 == 0) {
                if (context.isStopRequested())
                    return false;
                if (r > 0)
                    emit transform->processed((k + qreal(r) / rowCount) / n);
            }
            checker.checkRow(r);
        }
        checker.finish();
        reportColumn(column.position, checker);
    }
    return true;
}

void VerifyRun::reportColumn(int column, const ColumnChecker &checker)
{
    const QList<RuleOutcome> &outcomes = checker.outcomes();
    qint64 bySeverity[SeverityCount] = {};
    qint64 total = 0;
    for (const RuleOutcome &outcome : outcomes) {
        bySeverity[outcome.rule.severity] += outcome.fails;
        total += outcome.fails;
        if (outcome.fails > 0)
            m_columnTotals[outcome.rule.number] += outcome.fails;
    }
    const QString header = m_data.headerText(column);
    QString line = QStringLiteral("Column %1: '%2' [%3 rule(s) active]")
                       .arg(QString::number(column + 1), header, count(outcomes.size()));
    if (total > 0) {
        m_failedColumns.insert(column);
        line += QStringLiteral(" %1 fails (%2 %3, %4 %5, %6 %7)")
                    .arg(count(total), count(bySeverity[Error]), severityName(Error),
                         count(bySeverity[Warning]), severityName(Warning),
                         count(bySeverity[Information]), severityName(Information));
    }
    report.append(line);
    report.append(checker.messages());
    const QString where = QStringLiteral("Column %1 '%2'").arg(QString::number(column + 1), header);
    for (const RuleOutcome &outcome : outcomes)
        addOutcome(QStringLiteral("Column"), outcome, columnRuleKind(outcome.rule.number), where);
}

int VerifyRun::filterRows(int mode, bool noFail, const bool (&bySeverity)[SeverityCount])
{
    const int rowCount = m_data.rowCount();
    m_newRowOf.resize(rowCount);
    auto selected = [&](int r) {
        if (noFail && !m_fails.rowHasFail(r))
            return true;
        for (int severity = Information; severity < SeverityCount; ++severity) {
            if (bySeverity[severity] && m_fails.rowHasSeverity(r, severity))
                return true;
        }
        return false;
    };
    int kept = 0;
    for (int r = 0; r < rowCount; ++r) {
        const bool keep = mode == TransformVerify::KeepAllRows
            || (mode == TransformVerify::KeepRowsWith ? selected(r) : !selected(r));
        m_newRowOf[r] = keep ? kept++ : -1;
    }
    if (kept == rowCount)
        return 0;
    const QList<QStringList> rows = m_data.takeRows();
    QList<QStringList> keptRows;
    keptRows.reserve(kept);
    for (int r = 0; r < rowCount; ++r) {
        if (m_newRowOf.at(r) >= 0)
            keptRows.append(rows.at(r));
    }
    m_data.setSharedRows(std::move(keptRows));
    return rowCount - kept;
}

void VerifyRun::writeMarks()
{
    auto newRow = [this](int r) {
        return r < m_newRowOf.size() ? m_newRowOf.at(r) : r;
    };
    for (const VerifyFails::CellFail &fail : qAsConst(m_fails.cells)) {
        const int r = newRow(fail.row);
        if (r >= 0)
            m_data.markIssue(r, fail.column, fail.severity, fail.rule);
    }
    for (const VerifyFails::LineFail &fail : qAsConst(m_fails.lines)) {
        const int r = fail.row >= 0 ? newRow(fail.row) : -1;
        if (fail.row >= 0 && r < 0)
            continue;
        if (!fail.datasetRule)
            m_data.markColumnIssue(fail.column, fail.severity, fail.rule);
        else if (r >= 0 || fail.column >= 0)
            m_data.markDatasetIssue(r, fail.column, fail.severity,
                                    VerifyRules::DatasetRuleMark + fail.rule);
    }
}

QString VerifyRun::summaryText() const
{
    const qint64 total
        = m_fails.bySeverity[Information] + m_fails.bySeverity[Warning] + m_fails.bySeverity[Error];
    QString text = QStringLiteral("%1 verification fail(s)").arg(count(total))
        + severityCountsText(m_fails.bySeverity);
    const qint64 rows = std::count_if(m_fails.rowSeverities.cbegin(), m_fails.rowSeverities.cend(),
                                      [](quint8 severities) { return severities != 0; });
    if (rows > 0)
        text += QStringLiteral("\n%1 row(s) with fails").arg(count(rows));
    if (!m_failedColumns.isEmpty())
        text += QStringLiteral("\n%1 columns(s) with fails").arg(count(m_failedColumns.size()));
    for (const auto &entry : m_datasetTotals)
        text += QStringLiteral("\nDataset rule: %1, %2 fail(s)")
                    .arg(datasetRuleName(entry.first), count(entry.second));
    for (auto it = m_columnTotals.cbegin(); it != m_columnTotals.cend(); ++it)
        text += QStringLiteral("\nColumn rule: %1, %2 fail(s)")
                    .arg(columnRuleName(it.key()), count(it.value()));
    return text;
}

QString VerifyRun::resultText(int removed) const
{
    const qint64 total
        = m_fails.bySeverity[Information] + m_fails.bySeverity[Warning] + m_fails.bySeverity[Error];
    QString text = total == 0
        ? QStringLiteral("No verifications fails")
        : QStringLiteral("%1 %2").arg(count(total),
                                      total == 1 ? QStringLiteral("fail") : QStringLiteral("fails"))
            + severityCountsText(m_fails.bySeverity);
    if (removed > 0)
        text += QStringLiteral(", %1 row(s) removed").arg(count(removed));
    return text;
}

} // namespace

QStringList TransformVerify::rowFilterNames()
{
    return {QStringLiteral("Keep all rows"), QStringLiteral("Keep rows with:"),
            QStringLiteral("Remove rows with:")};
}

const TransformDescriptor &TransformVerify::descriptor() const
{
    static const TransformDescriptor descriptor = [] {
        TransformDescriptor d;
        d.type = 73;
        d.typeName = QStringLiteral("Verify");
        d.displayName = QStringLiteral("Verify");
        d.category = CategoryOther;
        d.flags = TransformDescriptor::Advanced | TransformDescriptor::KeepsIssues
            | TransformDescriptor::OmitDisabledFromDetails;
        d.description = QStringLiteral("Verify that values in the dataset are as expected.");
        d.keywords = QStringList {QStringLiteral("verify"),    QStringLiteral("verifies"),
                                  QStringLiteral("validates"), QStringLiteral("asserts"),
                                  QStringLiteral("expects"),   QStringLiteral("checks")};
        d.create = createTransform<TransformVerify>;
        return d;
    }();
    return descriptor;
}

void TransformVerify::createParameters(const ColumnSources &inputs, bool useRemembered)
{
    Transform::createParameters(inputs, useRemembered);

    auto *rules = new Parameter(ParameterType::VerifyRules, RulesKey,
                                QStringLiteral("Verify rules"), inputs.value(0));
    rules->setValue(VerifyRuleSet().toVariant());
    rules->setToolTip(QStringLiteral("The verification rules."));
    addParameter(rules);

    auto *caseSensitive = new Parameter(ParameterType::Bool, CaseSensitiveKey,
                                        QStringLiteral("case sensitive"), false);
    caseSensitive->setToolTip(
        QStringLiteral("Check for case sensitive text matching.\nOnly applies to some rules. Hover "
                       "over a rule or see the documentation for more details."));
    applyRememberedValue(useRemembered, caseSensitive);
    addParameter(caseSensitive);

    const QStringList filters = rowFilterNames();
    auto *filter = new Parameter(ParameterType::Selection, FilterKey, QStringLiteral("Filter"),
                                 filters.first(), filters);
    filter->setToolTip(QStringLiteral("Whether to keep or remove rows based on fail severity."));
    applyRememberedValue(useRemembered, filter);
    addParameter(filter);

    struct Check
    {
        QString key;
        const char *label;
        const char *toolTip;
    };
    const Check checks[] = {
        {NoFailKey, "no fails", "Check to keep or remove rows with no verification fails."},
        {SeverityKeys[Information], "Information fails",
         "Check to keep or remove rows with no 'Information' verification fails."},
        {SeverityKeys[Warning], "Warning fails",
         "Check to keep or remove rows with no 'Warning' verification fails."},
        {SeverityKeys[Error], "Error fails",
         "Check to keep or remove rows with no 'Error' verification fails."},
    };
    for (const Check &check : checks) {
        auto *option = new Parameter(ParameterType::Bool, check.key,
                                     QString::fromLatin1(check.label), false);
        option->setToolTip(QString::fromLatin1(check.toolTip));
        applyRememberedValue(useRemembered, option);
        addParameter(option);
    }
}

QList<ParameterState> TransformVerify::parameterStates() const
{
    const Parameter *filter = parameter(FilterKey);
    const bool filtering = filter && filter->toSelectionIndex() != KeepAllRows;
    return {{NoFailKey, filtering},
            {SeverityKeys[Information], filtering},
            {SeverityKeys[Warning], filtering},
            {SeverityKeys[Error], filtering}};
}

bool TransformVerify::usesDateFormats() const
{
    const Parameter *rules = parameter(RulesKey);
    if (!rules)
        return false;
    const VerifyRuleSet set = VerifyRuleSet::fromVariant(rules->value());
    for (ColumnId id : set.columnsWithActiveRules()) {
        const QList<VerifyRule> active = set.activeRules(id);
        if (std::none_of(active.cbegin(), active.cend(),
                         [](const VerifyRule &rule) { return readsDates(rule.number); }))
            continue;
        const VerifyColumn *entry = set.column(id);
        const bool hasFormat
            = std::any_of(entry->rules.cbegin(), entry->rules.cend(), [](const VerifyRule &rule) {
                  return rule.number == ValidDate && !rule.value.toString().isEmpty();
              });
        if (!hasFormat)
            return true;
    }
    return false;
}

Dataset &TransformVerify::process(Dataset &output, const TransformInputs &inputs,
                                  const RunContext &context, bool &failed)
{
    const Parameter &rules = option(RulesKey);
    const bool caseSensitive = option(CaseSensitiveKey).toBool();
    const int mode = option(FilterKey).toSelectionIndex();
    const bool noFail = option(NoFailKey).toBool();
    bool bySeverity[SeverityCount];
    for (int severity = Information; severity < SeverityCount; ++severity)
        bySeverity[severity] = option(SeverityKeys[severity]).toBool();
    const VerifyRuleSet set = VerifyRuleSet::fromVariant(rules.value());

    output = inputDataset(inputs, 0);
    VerifyRun run(output, set, caseSensitive);
    run.checkDataset();
    if (!run.checkColumns(run.columnsToCheck(rules), context, this))
        return output;
    const int removed = run.filterRows(mode, noFail, bySeverity);
    run.writeMarks();

    addInformation(run.summaryText());
    for (const QString &line : qAsConst(run.report))
        addInformation(line);
    for (const QString &warning : qAsConst(run.warnings))
        addWarning(warning);
    setResult(run.resultText(removed));
    failed = run.hasErrors();
    return output;
}
