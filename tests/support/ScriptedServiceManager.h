#pragma once

#include "ProgramLauncher.h"
#include "ServiceClock.h"
#include "ServiceManager.h"

#include <functional>
#include <QHash>
#include <QMutex>
#include <QStringList>

// Stands in for the service manager where a real one cannot be made to
// misbehave on demand: it can hold a service in start-pending with a frozen
// check-point, fail a start, not know a service or not be reachable at all.
// The end-to-end test runs the same code against a real systemd.
//
// Every request is written to one journal ("start VelmarD", "stop CheckD",
// "launch pskill ChatD" through launcher(), "sleep 1000" through clock()), so
// a test reads the order of a whole run.
class ScriptedServiceManager final : public ServiceManager
{
public:
    struct Script
    {
        bool known = true; // false: opening it fails with 1060
        quint32 state = Stopped;
        quint32 checkPoint = 0;
        quint32 waitHint = 0;
        bool failStart = false; // the start request itself is refused
        bool failStop = false;
        // Queries answered pending after a start or stop before the state
        // settles; -1 keeps it pending for good.
        int pendingQueries = 0;
        bool progress = true; // the check-point rises with each pending query
        quint32 stateAfterStart = Running; // Stopped: it comes up and dies
        quint32 stateAfterStop = Stopped;
    };

    ScriptedServiceManager();

    void setReachable(bool reachable);
    void setScript(const QString &name, const Script &script);
    void setRunning(const QStringList &names); // every other known service is stopped
    bool isRunning(const QString &name) const;

    QStringList journal() const;
    // Only the entries that begin with one of the words ("start", "stop", ...).
    QStringList journal(const QStringList &words) const;
    void clearJournal();

    // Called before a start or stop request is answered (without the lock), so
    // that a test can hold a run at a known point.
    void setBeforeRequest(std::function<void(const QString &request, const QString &name)> hook);

    ServiceClock &clock() { return m_clock; }
    ProgramLauncher &launcher() { return m_launcher; }
    quint64 now() const;

    std::unique_ptr<Session> openManager() override;

private:
    class Clock final : public ServiceClock
    {
    public:
        explicit Clock(ScriptedServiceManager &owner)
            : m_owner(owner)
        { }
        quint64 tickCount() override;
        void sleep(quint32 milliseconds) override;

    private:
        ScriptedServiceManager &m_owner;
    };

    class Launcher final : public ProgramLauncher
    {
    public:
        explicit Launcher(ScriptedServiceManager &owner)
            : m_owner(owner)
        { }
        bool launchDetached(const QString &program, const QStringList &arguments,
            const QString &workingDirectory) override;

    private:
        ScriptedServiceManager &m_owner;
    };

    friend class ScriptedSession;
    friend class ScriptedService;

    void record(const QString &entry);
    bool request(const QString &name, bool start);
    bool query(const QString &name, Status &status);

    mutable QMutex m_mutex;
    bool m_reachable = true;
    QHash<QString, Script> m_scripts;
    QHash<QString, int> m_pendingLeft;
    QStringList m_journal;
    quint64 m_now = 1000000;
    std::function<void(const QString &, const QString &)> m_beforeRequest;
    Clock m_clock;
    Launcher m_launcher;
};
