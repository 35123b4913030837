#pragma once

#include <algorithm>
#include <utility>
#include <vector>

// Orders rows newest first, stably: rows of the same time keep the order in
// which they were read. Log files are written in time order and read file
// after file, so the rows nearly always arrive oldest first; that case is a
// reversal that puts the runs of equal times back in their order, one pass
// instead of a sort of millions of rows.
template <typename T, typename Key>
void sortNewestFirst(std::vector<T> &rows, Key key)
{
    const auto older = [&key](const T &a, const T &b) { return key(a) < key(b); };
    if (std::is_sorted(rows.begin(), rows.end(), older)) {
        std::reverse(rows.begin(), rows.end());
        for (auto first = rows.begin(); first != rows.end();) {
            const auto time = key(*first);
            const auto last
                = std::find_if(first, rows.end(), [&](const T &row) { return key(row) != time; });
            std::reverse(first, last);
            first = last;
        }
        return;
    }
    // Sorted on a copy of the keys beside the rows: the comparisons then stay
    // in one array instead of reaching through the rows.
    std::vector<std::pair<decltype(key(rows.front())), T>> keyed;
    keyed.reserve(rows.size());
    for (T &row : rows)
        keyed.emplace_back(key(row), std::move(row));
    std::stable_sort(keyed.begin(), keyed.end(),
        [](const auto &a, const auto &b) { return a.first > b.first; });
    for (size_t i = 0; i < keyed.size(); ++i)
        rows[i] = std::move(keyed[i].second);
}
