#include "data/stringpool.h"

#include <QHash>

int StringPool::find(QStringView text, uint hash) const
{
    const int mask = m_slots.size() - 1;
    int slot = int(hash) & mask;
    const QString *slots = m_slots.constData();
    const uint *hashes = m_hashes.constData();
    while (!slots[slot].isNull()) {
        if (hashes[slot] == hash && QStringView(slots[slot]) == text)
            return slot;
        slot = (slot + 1) & mask;
    }
    return slot;
}

void StringPool::giveUp()
{
    m_gaveUp = true;
    m_slots = QVector<QString>();
    m_hashes = QVector<uint>();
    m_count = 0;
}

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
    const int slot = find(text, hash);
    ++m_lookups;
    if (!m_slots.at(slot).isNull()) {
        text = m_slots.at(slot);
        ++m_hits;
        return;
    }
    if (shouldGiveUp()) {
        giveUp();
        return;
    }
    text.squeeze();
    m_slots[slot] = text;
    m_hashes[slot] = hash;
    ++m_count;
}

QString StringPool::pooled(QStringView text)
{
    if (text.isEmpty())
        return QString();
    if (m_gaveUp)
        return text.toString();
    if (m_count * 2 >= m_slots.size())
        grow();

    const uint hash = qHash(text);
    const int slot = find(text, hash);
    ++m_lookups;
    if (!m_slots.at(slot).isNull()) {
        ++m_hits;
        return m_slots.at(slot);
    }
    QString made = text.toString();
    if (shouldGiveUp()) {
        giveUp();
        return made;
    }
    m_slots[slot] = made;
    m_hashes[slot] = hash;
    ++m_count;
    return made;
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
