#pragma once

#include <QtGlobal>

// Time as the status polling sees it: a millisecond tick count and a sleep.
// The start thread sleeps for real; the stop on the user-interface thread
// keeps the window painted while it waits; tests let time pass at once.
class ServiceClock
{
public:
    virtual ~ServiceClock() = default;
    virtual quint64 tickCount() = 0;
    virtual void sleep(quint32 milliseconds) = 0;
};

// Blocks the calling thread.
class ThreadSleepClock final : public ServiceClock
{
public:
    quint64 tickCount() override;
    void sleep(quint32 milliseconds) override;
};

// On the thread that runs the application's event loop (the user-interface
// thread), waits in a local event loop that leaves out user input, so the
// windows keep painting and nothing new is started meanwhile; on any other
// thread it blocks like ThreadSleepClock.
class EventLoopClock final : public ServiceClock
{
public:
    quint64 tickCount() override;
    void sleep(quint32 milliseconds) override;
};
