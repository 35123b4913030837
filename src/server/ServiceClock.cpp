#include "ServiceClock.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

quint64 ThreadSleepClock::tickCount()
{
    return quint64(QDeadlineTimer::current().deadline());
}

void ThreadSleepClock::sleep(quint32 milliseconds)
{
    QThread::msleep(milliseconds);
}

quint64 EventLoopClock::tickCount()
{
    return quint64(QDeadlineTimer::current().deadline());
}

void EventLoopClock::sleep(quint32 milliseconds)
{
    QCoreApplication *application = QCoreApplication::instance();
    if (!application || QThread::currentThread() != application->thread()) {
        QThread::msleep(milliseconds);
        return;
    }
    QEventLoop loop;
    QTimer::singleShot(int(qMin<quint32>(milliseconds, INT_MAX)), &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}
