#include "inspection/datatablemodel.h"

#include "data/dataset.h"
#include "data/valueinterpretation.h"
#include "flow/flowitem.h"
#include "shell/appearancesettings.h"
#include "shell/colors.h"
#include "shell/settings.h"

#include "transforms/verifyrules.h"

#include <QColor>

#include <algorithm>

namespace {

std::function<QString(int)> &ruleNamer()
{
    static std::function<QString(int)> namer;
    return namer;
}

QString ruleName(int rule)
{
    if (ruleNamer())
        return ruleNamer()(rule);
    const QString name = VerifyRules::markedRuleName(rule);
    return name.isEmpty() ? QStringLiteral("rule %1").arg(rule) : name;
}

// "rule a, rule b x3" from counts by rule, rules in ascending order.
QString countedRules(const IssueCounts &counts)
{
    QList<int> rules = counts.keys();
    std::sort(rules.begin(), rules.end());
    QStringList parts;
    for (int rule : rules) {
        const int count = counts.value(rule);
        parts.append(count > 1
                         ? QString(ruleName(rule) + QLatin1String(" x") + QString::number(count))
                         : ruleName(rule));
    }
    return parts.join(QLatin1String(", "));
}

constexpr int MarkTextLength = 256;
constexpr int TipLength = 100;
constexpr int DifferenceTipLength = 50;

} // namespace

DataTableModel::DataTableModel(QObject *parent)
    : QAbstractTableModel(parent)
{
    loadBrushes();
}

DataTableModel::~DataTableModel() = default;

void DataTableModel::setItem(FlowItem *item)
{
    beginResetModel();
    detach();
    // Highlights and labels belong to the dataset they were made for.
    m_compare = nullptr;
    m_rowLabels.clear();
    m_highlightedRows.clear();
    m_highlightedCells.clear();
    m_highlightedHeaders.clear();
    m_rowOnlyRows.clear();
    m_rowFilterText.clear();
    m_columnFilterText.clear();
    if (item)
        attach(item);
    takeStateFromItem();
    applyFilters();
    endResetModel();
    emit filterChanged();
}

FlowItem *DataTableModel::item() const
{
    return m_item;
}

void DataTableModel::setDataset(const Dataset *dataset, int state)
{
    beginResetModel();
    detach();
    m_dataset = dataset;
    m_state = state;
    applyFilters();
    endResetModel();
}

void DataTableModel::refresh()
{
    beginResetModel();
    takeStateFromItem();
    applyFilters();
    endResetModel();
}

void DataTableModel::setState(int state)
{
    if (state == m_state)
        return;
    beginResetModel();
    m_state = state;
    endResetModel();
}

void DataTableModel::attach(FlowItem *item)
{
    m_item = item;
    m_dataset = item->dataset();
    connect(item, &QObject::destroyed, this, &DataTableModel::onItemDestroyed);
    connect(item, &FlowItem::processingStart, this, &DataTableModel::onProcessingStart);
    connect(item, &FlowItem::processingEnd, this, &DataTableModel::onProcessingEnd);
}

void DataTableModel::detach()
{
    if (m_item)
        disconnect(m_item, nullptr, this, nullptr);
    m_item = nullptr;
    m_dataset = nullptr;
}

void DataTableModel::onItemDestroyed()
{
    // The QPointer is already null here, but the dataset pointer still names freed memory.
    beginResetModel();
    m_item = nullptr;
    m_dataset = nullptr;
    m_compare = nullptr;
    applyFilters();
    endResetModel();
}

void DataTableModel::onProcessingStart()
{
    // The run replaces the dataset while events are still pumped; the table lets go of it
    // until the run ends.
    setState(Processing);
}

void DataTableModel::onProcessingEnd()
{
    refresh();
}

void DataTableModel::takeStateFromItem()
{
    if (!m_item)
        return;
    switch (m_item->status()) {
    case FlowItem::NeedsUpdate:
        m_state = NotRun;
        break;
    case FlowItem::Updating:
        m_state = Processing;
        break;
    default:
        m_state = HasResult;
        break;
    }
}

void DataTableModel::setCompareDataset(const Dataset *other)
{
    beginResetModel();
    m_compare = other;
    endResetModel();
}

void DataTableModel::setComparisonMode(bool on)
{
    if (on == m_comparisonMode)
        return;
    beginResetModel();
    m_comparisonMode = on;
    endResetModel();
}

void DataTableModel::setVerificationHighlighting(bool on)
{
    if (on == m_verification)
        return;
    beginResetModel();
    m_verification = on;
    endResetModel();
}

void DataTableModel::setShowInvisibles(bool on)
{
    if (on == m_showInvisibles)
        return;
    m_showInvisibles = on;
    if (rowCount() > 0 && columnCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    if (columnCount() > 0)
        emit headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
}

void DataTableModel::setRowLabels(const QStringList &labels)
{
    m_rowLabels = labels;
    if (rowCount() > 0)
        emit headerDataChanged(Qt::Vertical, 0, rowCount() - 1);
}

void DataTableModel::setHighlightedRows(const QSet<int> &rows)
{
    beginResetModel();
    m_highlightedRows = rows;
    endResetModel();
}

void DataTableModel::setHighlightedCells(const QSet<QPair<int, int>> &cells)
{
    beginResetModel();
    m_highlightedCells = cells;
    endResetModel();
}

void DataTableModel::setHighlightedHeaders(const QSet<int> &columns)
{
    m_highlightedHeaders = columns;
    if (columnCount() > 0)
        emit headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
}

void DataTableModel::setRowOnlyRows(const QSet<int> &rows)
{
    beginResetModel();
    m_rowOnlyRows = rows;
    endResetModel();
}

void DataTableModel::setDifferenceColor(const QColor &color)
{
    m_differenceBrush = QBrush(color);
}

void DataTableModel::setSeverityColor(int severity, const QColor &color)
{
    if (severity >= Information && severity <= Error)
        m_severityBrushes[severity] = QBrush(color);
}

QBrush DataTableModel::severityBrush(int severity) const
{
    if (severity >= Information && severity <= Error)
        return m_severityBrushes[severity];
    return QBrush();
}

void DataTableModel::loadBrushes()
{
    // The data colours the user chose win; otherwise soft tints that keep black text
    // readable in a light scheme and light text in a dark one.
    const bool dark = Colors::instance()->isDark();
    const Settings *settings = Settings::instance();
    auto pick = [dark](const QColor &chosen, const QColor &light, const QColor &darkColor) {
        if (chosen.isValid())
            return QBrush(chosen);
        return QBrush(dark ? darkColor : light);
    };
    m_highlightBrush = pick(QColor(), QColor(255, 250, 160), QColor(96, 90, 30));
    m_rowHighlightBrush = pick(QColor(), QColor(255, 226, 170), QColor(110, 80, 30));
    m_severityBrushes[Information] = pick(AppearanceSettings(settings).verifyFailInfoColor(),
                                          QColor(205, 228, 255), QColor(40, 64, 104));
    m_severityBrushes[Warning] = pick(AppearanceSettings(settings).verifyFailWarningColor(),
                                      QColor(255, 222, 150), QColor(112, 84, 24));
    m_severityBrushes[Error] = pick(AppearanceSettings(settings).verifyFailErrorColor(),
                                    QColor(255, 176, 176), QColor(122, 40, 40));
    m_differenceBrush = pick(AppearanceSettings(settings).changedDataColor(), QColor(176, 232, 255),
                             QColor(30, 84, 112));
    m_rowOnlyBackground = pick(QColor(), QColor(222, 250, 222), QColor(30, 76, 30));
    m_rowOnlyForeground = pick(QColor(), QColor(0, 96, 0), QColor(170, 235, 170));
}

bool DataTableModel::isTooBig() const
{
    return m_dataset && (m_dataset->columnCount() > MaxColumns || m_dataset->rowCount() > MaxRows);
}

QString DataTableModel::tooBigText() const
{
    if (!isTooBig())
        return QString();
    QString text
        = QStringLiteral("%1 cols x %2 rows is too big to display")
              .arg(formatCount(m_dataset->columnCount()), formatCount(m_dataset->rowCount()));
    if (m_dataset->columnCount() > MaxColumns)
        text += QStringLiteral("\n\nUse a 'Remove Cols' transform to reduce to <=%1 columns")
                    .arg(formatCount(MaxColumns));
    else
        text += QStringLiteral("\n\nUse a 'Sample' transform to reduce to <=%1 rows")
                    .arg(formatCount(MaxRows));
    return text;
}

bool DataTableModel::hasDatasetColumns() const
{
    return m_dataset && m_dataset->hasColumns();
}

bool DataTableModel::datasetHasRows() const
{
    return m_dataset && m_dataset->hasRows();
}

bool DataTableModel::showsCells() const
{
    return m_dataset && m_state == HasResult && !isTooBig();
}

int DataTableModel::datasetRowCount() const
{
    return m_dataset ? m_dataset->rowCount() : 0;
}

int DataTableModel::datasetColumnCount() const
{
    return m_dataset ? m_dataset->columnCount() : 0;
}

QString DataTableModel::cellText(int row, int column) const
{
    const int r = datasetRow(row);
    const int c = datasetColumn(column);
    if (r < 0 || c < 0)
        return QString();
    return m_dataset->cell(r, c);
}

QString DataTableModel::headerText(int column) const
{
    const int c = datasetColumn(column);
    return c < 0 ? QString() : m_dataset->headerText(c);
}

bool DataTableModel::hasDrilldown() const
{
    return m_dataset && !m_dataset->sourceRows().isEmpty();
}

bool DataTableModel::hasDrilldown(int row, int column) const
{
    if (!hasDrilldown())
        return false;
    const int r = datasetRow(row);
    const int c = datasetColumn(column);
    return r >= 0 && c >= 0 && !m_dataset->sourceRowsOf(r, c).isEmpty();
}

bool DataTableModel::hasMarks() const
{
    return m_dataset && m_dataset->hasIssues();
}

// Model interface

int DataTableModel::rowCount(const QModelIndex &parent) const
{
    if (parent.isValid() || !showsCells())
        return 0;
    return m_rowFiltered ? m_rowMap.size() : m_dataset->rowCount();
}

int DataTableModel::columnCount(const QModelIndex &parent) const
{
    if (parent.isValid() || !showsCells())
        return 0;
    return m_columnFiltered ? m_columnMap.size() : m_dataset->columnCount();
}

QString DataTableModel::displayText(const QString &text) const
{
    return m_showInvisibles ? mapInvisibles(text) : text;
}

bool DataTableModel::differs(int r, int c) const
{
    // Rows and columns beyond the other dataset are no difference: that is told by the
    // row-only colours, not cell by cell.
    if (!m_compare || r >= m_compare->rowCount() || c >= m_compare->columnCount())
        return false;
    const QString &mine = m_dataset->cell(r, c);
    const QString &theirs = m_compare->cell(r, c);
    if (mine == theirs)
        return false;
    return !m_showInvisibles || mapInvisibles(mine) != mapInvisibles(theirs);
}

QString DataTableModel::markText(int r, int c) const
{
    const int severity = m_dataset->issueSeverityOf(r, c);
    if (severity == NoSeverity)
        return QString();
    QString rules;
    if (r >= 0 && c >= 0) {
        QList<int> numbers = m_dataset->cellIssues(r, c);
        std::sort(numbers.begin(), numbers.end());
        numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
        QStringList names;
        for (int rule : numbers)
            names.append(ruleName(rule));
        rules = names.join(QLatin1String(", "));
    } else if (c < 0) {
        IssueCounts counts = m_dataset->rowIssues().value(RowIndex(r));
        const IssueCounts datasetCounts = m_dataset->datasetRowIssues().value(RowIndex(r));
        for (auto it = datasetCounts.cbegin(); it != datasetCounts.cend(); ++it)
            counts[it.key()] += it.value();
        rules = countedRules(counts);
    } else {
        IssueCounts counts = m_dataset->columnIssues().value(ColumnIndex(c));
        const IssueCounts datasetCounts = m_dataset->datasetColumnIssues().value(ColumnIndex(c));
        for (auto it = datasetCounts.cbegin(); it != datasetCounts.cend(); ++it)
            counts[it.key()] += it.value();
        rules = countedRules(counts);
    }
    QString text = severityName(severity);
    if (!rules.isEmpty())
        text += QLatin1String(": ") + rules;
    return elide(text, MarkTextLength);
}

QVariant DataTableModel::data(const QModelIndex &index, int role) const
{
    const int r = datasetRow(index.row());
    const int c = datasetColumn(index.column());
    // The checks also guard against a dataset that shrank without a reset.
    if (r < 0 || c < 0 || r >= m_dataset->rowCount() || c >= m_dataset->columnCount())
        return QVariant();

    switch (role) {
    case Qt::DisplayRole:
        return displayText(m_dataset->cell(r, c));
    case Qt::TextAlignmentRole:
        return readsAsNumber(m_dataset->cell(r, c)) ? int(Qt::AlignRight | Qt::AlignVCenter)
                                                    : int(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::ToolTipRole: {
        if (m_verification && m_dataset->hasIssues()) {
            const QString mark = markText(r, c);
            if (!mark.isEmpty())
                return mark;
        }
        if (m_comparisonMode && differs(r, c))
            return QStringLiteral("'%1' -> '%2'")
                .arg(elide(displayText(m_compare->cell(r, c)), DifferenceTipLength),
                     elide(displayText(m_dataset->cell(r, c)), DifferenceTipLength));
        return elide(displayText(m_dataset->cell(r, c)), TipLength);
    }
    case Qt::BackgroundRole:
        if (m_verification && m_dataset->hasIssues()) {
            const int severity = m_dataset->issueSeverityOf(r, c);
            if (severity != NoSeverity)
                return severityBrush(severity);
        }
        if (m_highlightedRows.contains(r))
            return m_rowHighlightBrush;
        if (!m_highlightedCells.isEmpty()
            && (m_highlightedCells.contains(qMakePair(r, c))
                || m_highlightedCells.contains(qMakePair(r, -1))))
            return m_highlightBrush;
        if (m_comparisonMode) {
            if (m_rowOnlyRows.contains(r))
                return m_rowOnlyBackground;
            if (differs(r, c))
                return m_differenceBrush;
        }
        return QVariant();
    case Qt::ForegroundRole:
        if (m_comparisonMode && m_rowOnlyRows.contains(r))
            return m_rowOnlyForeground;
        return QVariant();
    default:
        return QVariant();
    }
}

QVariant DataTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal) {
        const int c = datasetColumn(section);
        if (c < 0 || c >= m_dataset->columnCount())
            return QVariant();
        const bool marks = m_verification && m_dataset->hasIssues();
        switch (role) {
        case Qt::DisplayRole:
            return displayText(m_dataset->headerText(c));
        case Qt::ToolTipRole: {
            if (marks) {
                const QString mark = markText(-1, c);
                if (!mark.isEmpty())
                    return mark;
            }
            return QStringLiteral("%1 (column %2)").arg(m_dataset->headerText(c)).arg(c + 1);
        }
        case Qt::BackgroundRole:
            if (marks && m_dataset->issueSeverityOf(-1, c) != NoSeverity)
                return severityBrush(m_dataset->issueSeverityOf(-1, c));
            if (m_highlightedHeaders.contains(c))
                return m_highlightBrush;
            return QVariant();
        default:
            return QVariant();
        }
    }

    const int r = datasetRow(section);
    if (r < 0 || r >= m_dataset->rowCount())
        return QVariant();
    const bool marks = m_verification && m_dataset->hasIssues();
    switch (role) {
    case Qt::DisplayRole:
        return r < m_rowLabels.size() ? m_rowLabels.at(r) : QString::number(r + 1);
    case Qt::ToolTipRole:
        return marks ? markText(r, -1) : QVariant();
    case Qt::BackgroundRole:
        if (marks && m_dataset->issueSeverityOf(r, -1) != NoSeverity)
            return severityBrush(m_dataset->issueSeverityOf(r, -1));
        if (m_highlightedRows.contains(r))
            return m_highlightBrush;
        return QVariant();
    case Qt::TextAlignmentRole:
        return int(Qt::AlignRight | Qt::AlignVCenter);
    default:
        return QVariant();
    }
}

QString DataTableModel::mapInvisibles(const QString &text)
{
    // Most cells have nothing to map; they are returned shared, without a copy.
    const QChar *begin = text.constData();
    const QChar *end = begin + text.size();
    const QChar *first
        = std::find_if(begin, end, [](QChar ch) { return ch.isSpace() || ch.unicode() == 0; });
    if (first == end)
        return text;
    QString mapped = text;
    QChar *out = mapped.data();
    for (int i = int(first - begin); i < mapped.size(); ++i) {
        const ushort unit = out[i].unicode();
        switch (unit) {
        case 0x0000:
            out[i] = QChar(0x2205);
            break;
        case 0x0009:
            out[i] = QChar(0x2192);
            break;
        case 0x000A:
            out[i] = QChar(0x21B5);
            break;
        case 0x000D:
            out[i] = QChar(0x2190);
            break;
        case 0x0020:
            out[i] = QChar(0x00B7);
            break;
        case 0x00A0:
            out[i] = QChar(0x237D);
            break;
        default:
            if (out[i].isSpace())
                out[i] = QChar(0x25A1);
            break;
        }
    }
    return mapped;
}

bool DataTableModel::readsAsNumber(const QString &text, double *value)
{
    if (text.isEmpty())
        return false;
    bool ok = false;
    const double number = toDouble(text, false, false, &ok);
    if (ok && value)
        *value = number;
    return ok;
}

QString DataTableModel::severityName(int severity)
{
    switch (severity) {
    case Information:
        return QStringLiteral("Information");
    case Warning:
        return QStringLiteral("Warning");
    case Error:
        return QStringLiteral("Error");
    default:
        return QString();
    }
}

void DataTableModel::setRuleNamer(std::function<QString(int)> namer)
{
    ruleNamer() = std::move(namer);
}
