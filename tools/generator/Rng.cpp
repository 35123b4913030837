#include "Rng.h"

namespace {

quint64 splitMix(quint64 &x)
{
    quint64 z = (x += 0x9e3779b97f4a7c15ULL);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
}

quint64 rotl(quint64 x, int k)
{
    return (x << k) | (x >> (64 - k));
}

} // namespace

Rng::Rng(quint64 seed)
{
    quint64 x = seed;
    for (quint64 &s : m_state)
        s = splitMix(x);
}

quint64 Rng::next()
{
    const quint64 result = rotl(m_state[1] * 5, 7) * 9;
    const quint64 t = m_state[1] << 17;
    m_state[2] ^= m_state[0];
    m_state[3] ^= m_state[1];
    m_state[1] ^= m_state[2];
    m_state[0] ^= m_state[3];
    m_state[2] ^= t;
    m_state[3] = rotl(m_state[3], 45);
    return result;
}

quint64 Rng::below(quint64 bound)
{
    if (bound == 0)
        return 0;
    // Rejection keeps the draw unbiased; the loop almost never repeats.
    const quint64 limit = ~0ULL - (~0ULL % bound);
    quint64 value;
    do {
        value = next();
    } while (value >= limit);
    return value % bound;
}

qint64 Rng::range(qint64 low, qint64 high)
{
    if (high <= low)
        return low;
    return low + static_cast<qint64>(below(static_cast<quint64>(high - low) + 1));
}

bool Rng::percent(int chance)
{
    return static_cast<int>(below(100)) < chance;
}

double Rng::unit()
{
    return static_cast<double>(next() >> 11) * (1.0 / 9007199254740992.0);
}

Rng Rng::fork(quint64 salt)
{
    return Rng(next() ^ (salt * 0x9e3779b97f4a7c15ULL));
}
