#include "LogFilterRules.h"

using namespace Qt::StringLiterals;

namespace {

QDateTime wallClock(QDate date, QTime time, const QDateTime &like)
{
    return QDateTime(date, time, like.timeSpec() == Qt::UTC ? Qt::UTC : Qt::LocalTime);
}

// The pickers show whole seconds.
QTime toSecond(QTime time)
{
    return QTime(time.hour(), time.minute(), time.second());
}

} // namespace

LogFilterRules::Period LogFilterRules::periodFor(PeriodButton button, const QDateTime &now)
{
    const QDate today = now.date();
    const QTime time = toSecond(now.time());
    // now - (days, h hours): midnight plus the current minutes and seconds.
    const int daysBack = button == PeriodButton::Today ? 0 : button == PeriodButton::Week ? 7 : 30;
    Period period;
    period.start = wallClock(today.addDays(-daysBack), QTime(0, time.minute(), time.second()), now);
    // now + (23 - h, 59 - m, 59 - s); the month button adds 1 - h instead.
    period.end = wallClock(today, QTime(button == PeriodButton::Month ? 1 : 23, 59, 59), now);
    return period;
}

QString LogFilterRules::buttonText(PeriodButton button)
{
    switch (button) {
    case PeriodButton::Today:
        return u"当日"_s;
    case PeriodButton::Week:
        return u"1周"_s;
    case PeriodButton::Month:
        return u"1个月"_s;
    }
    return {};
}

QDateTime LogFilterRules::endAfterStartChanged(const QDateTime &start, const QDateTime &end)
{
    return compareWallClock(start, end) > 0 ? start : end;
}

QDateTime LogFilterRules::startAfterEndChanged(const QDateTime &start, const QDateTime &end)
{
    return compareWallClock(start, end) > 0 ? end : start;
}

LogFilter LogFilterRules::searchFilter(
    const QDateTime &start, const QDateTime &end, bool newestFirst)
{
    LogFilter filter;
    const QTime startTime = toSecond(start.time());
    filter.start = wallClock(start.date(), QTime(0, startTime.minute(), startTime.second()), start);
    // end + (24 - h) hours always lands on the next day at 00:m:s.
    const QTime endTime = toSecond(end.time());
    filter.end
        = wallClock(end.date().addDays(1), QTime(0, endTime.minute(), endTime.second()), end);
    filter.newestFirst = newestFirst;
    return filter;
}

int LogFilterRules::compareWallClock(const QDateTime &a, const QDateTime &b)
{
    if (a.date() != b.date())
        return a.date() < b.date() ? -1 : 1;
    if (a.time() != b.time())
        return a.time() < b.time() ? -1 : 1;
    return 0;
}

bool LogFilterRules::inPeriod(const LogFilter &filter, const QDateTime &stamp)
{
    if (!stamp.date().isValid() || !stamp.time().isValid())
        return false;
    if (compareWallClock(filter.start, filter.end) > 0)
        return false;
    return compareWallClock(filter.start, stamp) <= 0 && compareWallClock(stamp, filter.end) <= 0;
}
