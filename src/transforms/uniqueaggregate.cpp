#include "transforms/uniqueaggregate.h"

#include "data/valueinterpretation.h"

UniqueAggregate::UniqueAggregate(int column, int option, const QString &dateFormat)
    : m_column(column)
    , m_option(option)
    , m_dateFormat(dateFormat)
{ }

bool UniqueAggregate::readsEveryRow() const
{
    switch (m_option) {
    case KeepUnique:
    case KeepFirst:
    case KeepLast:
    case SetEmpty:
        return false;
    default:
        return true;
    }
}

void UniqueAggregate::addGroup()
{
    switch (m_option) {
    case Sum:
    case Average:
        m_numbers.append(0.0);
        m_counts.append(0);
        break;
    case Maximum:
    case Minimum:
        m_numbers.append(0.0);
        m_rows.append(-1);
        break;
    case KeepFirstNonEmpty:
    case KeepLastNonEmpty:
        m_rows.append(-1);
        break;
    case Concat:
        m_texts.append(QStringList());
        break;
    case ConcatDistinct:
        m_texts.append(QStringList());
        m_seen.append(QSet<QString>());
        break;
    case CountDistinct:
    case CountUnique:
    case CountDuplicate:
        m_tallies.append(QHash<QString, int>());
        break;
    case CountEmpty:
    case CountNonEmpty:
        m_counts.append(0);
        break;
    default:
        break;
    }
}

bool UniqueAggregate::readExtreme(const QString &cell, const Settings &settings,
                                  double *value) const
{
    if (!m_dateFormat.isEmpty()) {
        const QDate date = toDate(cell, m_dateFormat);
        *value = double(date.toJulianDay());
        return date.isValid();
    }
    bool ok = false;
    *value = toDoubleFast(cell, settings.decimalIsPoint, &ok);
    return ok;
}

void UniqueAggregate::add(int group, int r, const QString &cell, const Settings &settings)
{
    switch (m_option) {
    case Sum:
    case Average: {
        bool ok = false;
        const double number = toDoubleFast(cell, settings.decimalIsPoint, &ok);
        if (ok) {
            m_numbers[group] += number;
            ++m_counts[group];
        }
        break;
    }
    case Maximum:
    case Minimum: {
        double value = 0.0;
        if (cell.isEmpty() || !readExtreme(cell, settings, &value))
            break;
        // The first of equal extremes keeps its place, and with it its spelling.
        const int best = m_rows.at(group);
        if (best < 0
            || (m_option == Maximum ? value > m_numbers.at(group) : value < m_numbers.at(group))) {
            m_numbers[group] = value;
            m_rows[group] = r;
        }
        break;
    }
    case KeepFirstNonEmpty:
        if (!cell.isEmpty() && m_rows.at(group) < 0)
            m_rows[group] = r;
        break;
    case KeepLastNonEmpty:
        if (!cell.isEmpty())
            m_rows[group] = r;
        break;
    case Concat:
        if (!cell.isEmpty() || !settings.concatIgnoreEmpty)
            m_texts[group].append(cell);
        break;
    case ConcatDistinct:
        if ((!cell.isEmpty() || !settings.concatIgnoreEmpty) && !m_seen.at(group).contains(cell)) {
            m_seen[group].insert(cell);
            m_texts[group].append(cell);
        }
        break;
    case CountDistinct:
    case CountUnique:
    case CountDuplicate:
        ++m_tallies[group][cell];
        break;
    case CountEmpty:
        m_counts[group] += cell.isEmpty() ? 1 : 0;
        break;
    case CountNonEmpty:
        m_counts[group] += cell.isEmpty() ? 0 : 1;
        break;
    default:
        break;
    }
}

QString UniqueAggregate::result(int group, int first, int last, const Dataset &input,
                                const Settings &settings) const
{
    const auto cellOf = [this, &input](int r) {
        return r < 0 ? QString() : input.cell(r, m_column);
    };
    const auto countTallies = [this, group](auto test) {
        int count = 0;
        for (const int n : m_tallies.at(group))
            count += test(n) ? 1 : 0;
        return QString::number(count);
    };
    switch (m_option) {
    case KeepUnique:
    case KeepFirst:
        return input.cell(first, m_column);
    case KeepLast:
        return input.cell(last, m_column);
    case Sum:
        return numberToCellText(m_numbers.at(group));
    case Average:
        // A group without numbers has no mean.
        return m_counts.at(group) == 0
            ? QString()
            : numberToCellText(m_numbers.at(group) / double(m_counts.at(group)));
    case Maximum:
    case Minimum:
    case KeepFirstNonEmpty:
    case KeepLastNonEmpty:
        return cellOf(m_rows.at(group));
    case Concat:
    case ConcatDistinct:
        return m_texts.at(group).join(settings.delimiter);
    case CountDistinct:
        return QString::number(m_tallies.at(group).size());
    case CountUnique:
        return countTallies([](int n) { return n == 1; });
    case CountDuplicate:
        return countTallies([](int n) { return n > 1; });
    case CountEmpty:
    case CountNonEmpty:
        return QString::number(m_counts.at(group));
    default:
        return QString();
    }
}
