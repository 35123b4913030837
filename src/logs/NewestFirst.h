#pragma once

#include <algorithm>
#include <vector>

// Orders rows newest first, stably: rows of the same time keep the order in
// which they were read. Log files are written in time order and read file
// after file, so the rows arrive as a few runs oldest first (one per daemon
// folder). Each run is turned around in place and the runs are merged: a
// pass per doubling of the runs, and no copy of the rows beside them, where a
// plain sort of millions of rows would hold a second copy at its peak.
template <typename T, typename Key>
void sortNewestFirst(std::vector<T> &rows, Key key)
{
    if (rows.empty())
        return;
    std::vector<size_t> bounds { 0 };
    for (size_t i = 1; i < rows.size(); ++i) {
        if (key(rows[i]) < key(rows[i - 1]))
            bounds.push_back(i);
    }
    bounds.push_back(rows.size());
    // Turned around, a run is newest first but its rows of one time came out
    // last-read first: those are turned back.
    for (size_t k = 0; k + 1 < bounds.size(); ++k) {
        const auto runEnd = rows.begin() + std::ptrdiff_t(bounds[k + 1]);
        std::reverse(rows.begin() + std::ptrdiff_t(bounds[k]), runEnd);
        for (auto first = rows.begin() + std::ptrdiff_t(bounds[k]); first != runEnd;) {
            const auto time = key(*first);
            const auto last
                = std::find_if(first, runEnd, [&](const T &row) { return key(row) != time; });
            std::reverse(first, last);
            first = last;
        }
    }
    // The merge keeps the earlier run's rows first among rows of one time.
    const auto newer = [&key](const T &a, const T &b) { return key(a) > key(b); };
    while (bounds.size() > 2) {
        std::vector<size_t> merged { 0 };
        size_t k = 0;
        for (; k + 2 < bounds.size(); k += 2) {
            std::inplace_merge(rows.begin() + std::ptrdiff_t(bounds[k]),
                rows.begin() + std::ptrdiff_t(bounds[k + 1]),
                rows.begin() + std::ptrdiff_t(bounds[k + 2]), newer);
            merged.push_back(bounds[k + 2]);
        }
        if (k + 1 < bounds.size())
            merged.push_back(bounds.back());
        bounds = std::move(merged);
    }
}
