#pragma once

#include <QtGlobal>
#include <vector>

// A small pseudo-random generator (xoshiro256**, seeded through splitmix64)
// written out here rather than taken from <random>: the standard distributions
// differ between library implementations, and generated folders must be the
// same for a seed on every machine.
class Rng
{
public:
    explicit Rng(quint64 seed);

    quint64 next();
    // Uniform in [0, bound); bound 0 gives 0.
    quint64 below(quint64 bound);
    // Uniform in [low, high], both inclusive.
    qint64 range(qint64 low, qint64 high);
    // True with the given probability in percent (0..100).
    bool percent(int chance);
    double unit(); // [0, 1)

    template<typename T> const T &pick(const std::vector<T> &items)
    {
        return items[static_cast<size_t>(below(items.size()))];
    }

    template<typename T> void shuffle(std::vector<T> &items)
    {
        for (size_t i = items.size(); i > 1; --i)
            std::swap(items[i - 1], items[static_cast<size_t>(below(i))]);
    }

    // An independent generator derived from this one, so that adding draws to
    // one part of the data does not shift every part generated after it.
    Rng fork(quint64 salt);

private:
    quint64 m_state[4];
};
