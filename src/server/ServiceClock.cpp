#include "ServiceClock.h"

#include <QDeadlineTimer>
#include <QThread>

quint64 ThreadSleepClock::tickCount()
{
    return quint64(QDeadlineTimer::current().deadline());
}

void ThreadSleepClock::sleep(quint32 milliseconds)
{
    QThread::msleep(milliseconds);
}
