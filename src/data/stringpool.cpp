#include "data/stringpool.h"

#include <QHash>

#include <algorithm>

int StringPool::find(QStringView text, uint hash) const
{
    const int mask = m_slots.size() - 1;
    int slot = int(hash) & mask;
    const Slot *slots = m_slots.constData();
    while (!slots[slot].text.isNull()) {
        if (slots[slot].hash == hash && QStringView(slots[slot].text) == text)
            return slot;
        slot = (slot + 1) & mask;
    }
    return slot;
}

bool StringPool::shouldGiveUp()
{
    if (m_lookups < SampleSize || m_hits * 2 >= m_lookups)
        return false;
    if (!m_sampleJudged) {
        // n draws from D equally likely values repeat about n * n / 2D times, so the repeats
        // of the sample tell how many values the column holds. Three thousand dates repeat a
        // third of the time in the first four thousand rows and nearly always later on;
        // ids and free text, which hardly ever repeat, are let go here.
        m_sampleJudged = true;
        const double values = double(m_lookups) * m_lookups / (2.0 * std::max(m_hits, 1));
        return values > MaxValues;
    }
    return m_count >= MaxValues;
}

void StringPool::giveUp()
{
    m_gaveUp = true;
    m_slots = QVector<Slot>();
    m_count = 0;
}

bool StringPool::replacement(const QString &text, QString *pooled)
{
    if (text.isEmpty()) {
        if (text.isNull())
            return false;
        *pooled = QString();
        return true;
    }
    if (m_gaveUp)
        return false;
    if (m_count * 2 >= m_slots.size())
        grow();

    const uint hash = qHash(text);
    const int slot = find(text, hash);
    ++m_lookups;
    const QString &found = m_slots.at(slot).text;
    if (!found.isNull()) {
        ++m_hits;
        if (found.isSharedWith(text))
            return false;
        *pooled = found;
        return true;
    }
    if (shouldGiveUp()) {
        giveUp();
        return false;
    }
    QString kept = text;
    const bool spareRoom = kept.capacity() > kept.size();
    if (spareRoom)
        kept.squeeze();
    m_slots[slot] = Slot {kept, hash};
    ++m_count;
    if (!spareRoom)
        return false;
    *pooled = kept;
    return true;
}

QString StringPool::pooled(QStringView text)
{
    if (text.isEmpty())
        return QString();
    if (m_gaveUp)
        return text.toString();
    return pooled(text, qHash(text));
}

QString StringPool::pooled(QStringView text, uint hash)
{
    if (text.isEmpty())
        return QString();
    if (m_gaveUp)
        return text.toString();
    if (m_count * 2 >= m_slots.size())
        grow();

    const int slot = find(text, hash);
    ++m_lookups;
    if (!m_slots.at(slot).text.isNull()) {
        ++m_hits;
        return m_slots.at(slot).text;
    }
    QString made = text.toString();
    if (shouldGiveUp()) {
        giveUp();
        return made;
    }
    m_slots[slot] = Slot {made, hash};
    ++m_count;
    return made;
}
void StringPool::grow()
{
    const int newSize = m_slots.isEmpty() ? 64 : m_slots.size() * 2;
    QVector<Slot> slots(newSize);
    const int mask = newSize - 1;
    for (const Slot &old : qAsConst(m_slots)) {
        if (old.text.isNull())
            continue;
        int slot = int(old.hash) & mask;
        while (!slots.at(slot).text.isNull())
            slot = (slot + 1) & mask;
        slots[slot] = old;
    }
    m_slots.swap(slots);
}
