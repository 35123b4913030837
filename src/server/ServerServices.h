#pragma once

#include "ServiceControl.h"

#include <atomic>
#include <functional>
#include <QList>
#include <QPair>
#include <QStringList>

// The server's eight daemons as a set: start all, stop all, the enable state
// of the two menu commands, and their registration as services. The orders
// differ from operation to operation on purpose: the watchdog CheckD comes
// last on start and first on stop, so it never sees the others half up or
// half down.
class ServerServices final
{
public:
    // Told about each step of a run as it happens (on the run's thread).
    class Observer
    {
    public:
        virtual ~Observer() = default;
        virtual void starting(const QString & /*name*/) { }
        virtual void started(const QString & /*name*/, bool /*ok*/) { }
        // Each of the stopStepCount() steps of a stop, before it is taken.
        virtual void stopStep(int /*step*/, const QString & /*name*/) { }
        virtual void stopping(const QString & /*name*/) { }
        virtual void stopped(const QString & /*name*/, bool /*ok*/) { }
        virtual void killing(const QString & /*name*/) { }
        virtual void registering(const QString & /*name*/, bool /*launched*/) { }
    };

    enum class StartOutcome { AlreadyInProgress, AllRunning, Ran };

    explicit ServerServices(const ServiceControl &control);

    // Every daemon, in the order of the daemon table.
    static const QStringList &serviceNames();
    // The checks and runs, each in its own order.
    static const QStringList &allRunningCheckOrder();
    static const QStringList &startOrder(); // without VelmarboxServerManager and CheckD
    static const QStringList &stopOrder(); // after CheckD and the kill of ChatD
    static const QStringList &startEnableOrder();
    static const QStringList &stopEnableOrder();
    static const QStringList &ensureRegisteredOrder();
    static const QStringList &registerAllOrder();
    // The number of steps StopAllServices reports: CheckD, the kill, the others.
    static int stopStepCount();

    // "%s 服务运行失败."
    static QString startFailureText(const QString &name);

    // Runs on the start thread; a second run while one is under way, or a run
    // with every daemon up, does nothing.
    StartOutcome StartAllServices(Observer *observer = nullptr);
    bool startInProgress() const { return m_startInProgress.load(); }
    // Runs on the caller's thread until every stop has finished or timed out.
    void StopAllServices(Observer *observer = nullptr);

    // The enable state of "启动服务(&S)": some daemon other than CheckD is down.
    bool isStartEnabled() const;
    // The enable state of "停止服务(&T)": one of the first four is up.
    bool isStopEnabled() const;
    // The same rules on states already known (name -> running).
    static bool startEnabled(const std::function<bool(const QString &)> &isRunning);
    static bool stopEnabled(const std::function<bool(const QString &)> &isRunning);

    void EnsureServicesRegistered(Observer *observer = nullptr) const;
    void RegisterAllServices(Observer *observer = nullptr) const;
    // Launches "<program folder>/<name> /service" in the program folder.
    bool registerService(const QString &name) const;

    QList<QPair<QString, ServiceControl::State>> states() const;

    const ServiceControl &control() const { return m_control; }

private:
    void startOne(const QString &name, Observer *observer);
    void stopIfRunning(int step, const QString &name, Observer *observer);

    const ServiceControl &m_control;
    // Keeps a second start command from running while the first is under
    // way; it orders nothing else.
    std::atomic<bool> m_startInProgress { false };
};
