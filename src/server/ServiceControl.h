#pragma once

#include "ServiceManager.h"

#include <QString>

class ProgramLauncher;
class ServiceClock;

// The four service primitives. Each call is self-contained: it opens the
// manager and the service and closes both before it returns, so calls from the
// start thread and from the user-interface thread share nothing.
class ServiceControl final
{
public:
    // What the dashboard and velmarctl show; richer than IsServiceRunning.
    enum class State {
        Running,
        Stopped,
        StartPending,
        StopPending,
        NotInstalled,
        Unreachable, // the manager or the service cannot be opened
    };

    ServiceControl(ServiceManager &manager, ServiceClock &clock, ProgramLauncher &launcher,
        const QString &programDirectory);

    // False also when the manager or the service cannot be opened.
    bool IsServiceRunning(const QString &name) const;
    // True also when the manager or the service cannot be opened: a service
    // that cannot even be opened is not reported as a failure.
    bool StartServiceAndWait(const QString &name) const;
    bool StopServiceAndWait(const QString &name) const;
    // Launches "pskill" from the program folder with the name; does not wait.
    void KillProcessByName(const QString &name) const;

    State queryState(const QString &name) const;
    static QString stateText(State state);

    // One poll's sleep: the wait hint / 10, clamped to 1000..maximum.
    static quint32 pollInterval(quint32 waitHint, quint32 maximum);
    static constexpr quint32 StartPollMaximum = 5000;
    static constexpr quint32 StopPollMaximum = 10000;

    ServiceClock &clock() const { return m_clock; }
    ProgramLauncher &launcher() const { return m_launcher; }
    ServiceManager &manager() const { return m_manager; }
    QString programDirectory() const { return m_programDirectory; }

private:
    bool controlAndWait(const QString &name, bool start) const;

    ServiceManager &m_manager;
    ServiceClock &m_clock;
    ProgramLauncher &m_launcher;
    QString m_programDirectory;
};
