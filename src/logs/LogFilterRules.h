#pragma once

#include "LogFilter.h"

#include <QDateTime>

// The filter panel's rules, kept apart from its widgets. Every calculation is
// wall-clock arithmetic on the date and the time of day (as the pickers show
// them), so a change of daylight-saving time never shifts a period.
class LogFilterRules
{
public:
    enum class PeriodButton { Today, Week, Month }; // "当日", "1周", "1个月"

    struct Period
    {
        QDateTime start;
        QDateTime end;
    };

    // What a period button puts into the pickers at now. The start keeps the
    // current minutes and seconds (today 00:m:s, 7 or 30 days back); the end
    // is today 23:59:59, except for "1个月", whose end is today 01:59:59.
    static Period periodFor(PeriodButton button, const QDateTime &now);
    static QString buttonText(PeriodButton button);

    // The pickers stay ordered: the end follows a start moved past it ...
    static QDateTime endAfterStartChanged(const QDateTime &start, const QDateTime &end);
    // ... and the start follows an end moved before it.
    static QDateTime startAfterEndChanged(const QDateTime &start, const QDateTime &end);

    // The record a search hands to the listener: the start loses its hours
    // (minutes and seconds stay), the end gains 24 minus its hours.
    static LogFilter searchFilter(const QDateTime &start, const QDateTime &end, bool newestFirst);

    // Start <= stamp <= end, both inclusive; nothing when start > end or when
    // the stamp is not a real date and time.
    static bool inPeriod(const LogFilter &filter, const QDateTime &stamp);

    // Compares on the wall clock: date first, then the time of day.
    static int compareWallClock(const QDateTime &a, const QDateTime &b);
};
