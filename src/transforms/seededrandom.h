#pragma once

#include <QRandomGenerator>
#include <QVector>

#include <utility>

// Pseudo-random numbers that a seed makes the same on every platform and with every version
// of Qt: the raw output of the Mersenne Twister that QRandomGenerator holds (a generator that
// the C++ standard fixes bit for bit), turned into ranges by our own arithmetic rather than by
// the library's, which may change.
class SeededRandom
{
public:
    explicit SeededRandom(quint32 seed)
        : m_generator(seed)
    { }

    quint64 next64()
    {
        const quint64 high = m_generator.generate();
        return (high << 32) | m_generator.generate();
    }
    // A whole number from low to high, both included; low when high is below it.
    qint64 between(qint64 low, qint64 high)
    {
        if (high <= low)
            return low;
        const quint64 span = quint64(high) - quint64(low) + 1;
        // span is 0 only for the whole 64-bit range. The bias of the remainder is below one
        // part in 2^31 for any span that an option can give.
        return qint64(quint64(low) + (span == 0 ? next64() : next64() % span));
    }
    // A number in [0, 1) with 53 random bits.
    double unit() { return double(next64() >> 11) * (1.0 / 9007199254740992.0); }
    // A position from 0 to count - 1.
    int index(int count) { return int(between(0, count - 1)); }
    // Fisher-Yates, from the end.
    template<typename T> void shuffle(QVector<T> &values)
    {
        for (int i = values.size() - 1; i > 0; --i)
            std::swap(values[i], values[index(i + 1)]);
    }

private:
    QRandomGenerator m_generator;
};
