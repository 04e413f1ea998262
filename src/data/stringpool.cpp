#include "data/stringpool.h"

#include <QHash>

void StringPool::pool(QString &text)
{
    if (text.isEmpty()) {
        if (!text.isNull())
            text = QString();
        return;
    }
    if (m_gaveUp)
        return;

    if (m_count * 2 >= m_slots.size())
        grow();

    const uint hash = qHash(text);
    const int mask = m_slots.size() - 1;
    int slot = int(hash) & mask;
    const QString *slots = m_slots.constData();
    const uint *hashes = m_hashes.constData();
    ++m_lookups;
    while (!slots[slot].isNull()) {
        if (hashes[slot] == hash && slots[slot] == text) {
            text = slots[slot];
            ++m_hits;
            return;
        }
        slot = (slot + 1) & mask;
    }

    if (m_lookups >= SampleSize && m_hits * 2 < m_lookups) {
        // Fewer than half the texts repeat: sharing would save little and cost a look-up
        // per cell, so the column stops pooling and the table is released.
        m_gaveUp = true;
        m_slots = QVector<QString>();
        m_hashes = QVector<uint>();
        m_count = 0;
        return;
    }

    text.squeeze();
    m_slots[slot] = text;
    m_hashes[slot] = hash;
    ++m_count;
}

void StringPool::grow()
{
    const int newSize = m_slots.isEmpty() ? 64 : m_slots.size() * 2;
    QVector<QString> slots(newSize);
    QVector<uint> hashes(newSize);
    const int mask = newSize - 1;
    for (int i = 0; i < m_slots.size(); ++i) {
        const QString &text = m_slots.at(i);
        if (text.isNull())
            continue;
        int slot = int(m_hashes.at(i)) & mask;
        while (!slots.at(slot).isNull())
            slot = (slot + 1) & mask;
        slots[slot] = text;
        hashes[slot] = m_hashes.at(i);
    }
    m_slots.swap(slots);
    m_hashes.swap(hashes);
}
