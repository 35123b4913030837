#pragma once

#include <QDateTime>

// What a search of the log views asks for: the period (both ends inclusive,
// compared on the wall clock) and the order of the list.
struct LogFilter
{
    QDateTime start;
    QDateTime end;
    bool newestFirst = true; // the list sorts descending by its label text
};
