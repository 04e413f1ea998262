#pragma once

#include <QHash>
#include <QString>
#include <QStringView>
#include <QVector>

// Lets equal texts of one column share one data block. A pool only ever holds references:
// it changes no result, it merely saves memory. It is an open-addressing table (no node per
// entry). It gives up on a column whose values hardly ever repeat (ids, free text), where the
// look-ups would cost time and save nothing, but keeps a column of many values that do
// repeat in a long file (dates, prices).
class StringPool
{
public:
    // Lookups after which the pool judges whether the column is worth pooling.
    static constexpr int SampleSize = 4096;
    // The most distinct texts a pool keeps for a column that repeats less than half the time:
    // its table then takes 4 MiB, against the 40 bytes or more that each repeated cell saves.
    static constexpr int MaxValues = 1 << 17;

    // Replaces text by the pooled equal, or adds it to the pool. Empty texts become the one
    // shared null string.
    void pool(QString &text)
    {
        QString pooled;
        if (replacement(text, &pooled))
            text = pooled;
    }
    // The same for a text that may be held elsewhere, such as a cell of a shared row: true
    // with the text to store instead in pooled, false when text is to be kept as it is, so
    // that a row whose cells are pooled already is not detached. A text is copied only to
    // release spare room, never because it is shared.
    bool replacement(const QString &text, QString *pooled);
    // The pooled equal of text, made and added when new: a repeated text costs no
    // allocation at all.
    QString pooled(QStringView text);
    // The same with the hash of text given, for a reader that looks up several texts at
    // once: it computes their hashes and fetches ahead with the two calls below, so that
    // the look-ups wait for memory together rather than one after the other.
    QString pooled(QStringView text, uint hash);
    static uint hashOf(QStringView text) { return qHash(text); }
    // Hints only: fetch the slot where a text of this hash would be, then, once that has
    // arrived, the text it holds.
    void prefetchSlot(uint hash) const
    {
        if (!m_slots.isEmpty())
            __builtin_prefetch(m_slots.constData() + (int(hash) & (m_slots.size() - 1)));
    }
    void prefetchText(uint hash) const
    {
        if (m_slots.isEmpty())
            return;
        const QString &text = m_slots.constData()[int(hash) & (m_slots.size() - 1)].text;
        __builtin_prefetch(*reinterpret_cast<void *const *>(&text));
    }

    bool isActive() const { return !m_gaveUp; }
    int size() const { return m_count; }

private:
    void grow();
    // The slot that holds text, or the empty slot where it belongs.
    int find(QStringView text, uint hash) const;
    // Asked on each new text: whether the column stops pooling and the table is released.
    bool shouldGiveUp();
    void giveUp();

    // A slot keeps its text's hash beside it, so that a probe touches one cache line.
    struct Slot
    {
        QString text;
        uint hash = 0;
    };
    QVector<Slot> m_slots;
    int m_count = 0;
    int m_lookups = 0;
    int m_hits = 0;
    bool m_sampleJudged = false;
    bool m_gaveUp = false;
};
