#include "ServerServices.h"

#include "ProgramLauncher.h"

using namespace Qt::StringLiterals;

namespace {
const QString VelmarD = u"VelmarD"_s;
const QString GroupD = u"GroupD"_s;
const QString VelmarboxServerManager = u"VelmarboxServerManager"_s;
const QString RelayD = u"RelayD"_s;
const QString CheckD = u"CheckD"_s;
const QString FileDispatchD = u"FileDispatchD"_s;
const QString FileSessionD = u"FileSessionD"_s;
const QString ChatD = u"ChatD"_s;

// Clears the flag however the run ends.
struct FlagReset
{
    std::atomic<bool> &flag;
    ~FlagReset() { flag.store(false); }
};
} // namespace

ServerServices::ServerServices(const ServiceControl &control)
    : m_control(control)
{ }

const QStringList &ServerServices::serviceNames()
{
    static const QStringList names = { VelmarD, GroupD, VelmarboxServerManager, RelayD, CheckD,
        FileDispatchD, FileSessionD, ChatD };
    return names;
}

const QStringList &ServerServices::allRunningCheckOrder()
{
    static const QStringList names = { VelmarD, GroupD, VelmarboxServerManager, RelayD,
        FileDispatchD, FileSessionD, CheckD, ChatD };
    return names;
}

const QStringList &ServerServices::startOrder()
{
    static const QStringList names
        = { VelmarD, GroupD, RelayD, FileDispatchD, FileSessionD, ChatD };
    return names;
}

const QStringList &ServerServices::stopOrder()
{
    static const QStringList names
        = { ChatD, VelmarD, GroupD, RelayD, FileDispatchD, FileSessionD, VelmarboxServerManager };
    return names;
}

const QStringList &ServerServices::startEnableOrder()
{
    static const QStringList names
        = { VelmarD, GroupD, VelmarboxServerManager, RelayD, FileDispatchD, FileSessionD, ChatD };
    return names;
}

const QStringList &ServerServices::stopEnableOrder()
{
    static const QStringList names = { VelmarD, GroupD, VelmarboxServerManager, RelayD };
    return names;
}

const QStringList &ServerServices::ensureRegisteredOrder()
{
    static const QStringList names = { VelmarD, GroupD, VelmarboxServerManager, CheckD, RelayD,
        FileDispatchD, FileSessionD, ChatD };
    return names;
}

const QStringList &ServerServices::registerAllOrder()
{
    static const QStringList names = { VelmarD, GroupD, VelmarboxServerManager, RelayD, CheckD,
        FileDispatchD, FileSessionD, ChatD };
    return names;
}

int ServerServices::stopStepCount()
{
    return 2 + int(stopOrder().size());
}

QString ServerServices::startFailureText(const QString &name)
{
    return u"%1 服务运行失败."_s.arg(name);
}

ServerServices::StartOutcome ServerServices::StartAllServices(Observer *observer)
{
    if (m_startInProgress.load())
        return StartOutcome::AlreadyInProgress;
    bool allRunning = true;
    for (const QString &name : allRunningCheckOrder()) {
        if (!m_control.IsServiceRunning(name)) {
            allRunning = false;
            break;
        }
    }
    if (allRunning)
        return StartOutcome::AllRunning;

    m_startInProgress.store(true);
    FlagReset reset { m_startInProgress };
    for (const QString &name : startOrder()) {
        if (!m_control.IsServiceRunning(name))
            startOne(name, observer);
    }
    if (!m_control.IsServiceRunning(VelmarboxServerManager))
        startOne(VelmarboxServerManager, observer);
    if (!m_control.IsServiceRunning(CheckD))
        startOne(CheckD, observer);
    return StartOutcome::Ran;
}

void ServerServices::startOne(const QString &name, Observer *observer)
{
    if (observer)
        observer->starting(name);
    const bool ok = m_control.StartServiceAndWait(name);
    if (!ok) {
        // Composed and dropped: a daemon that does not come up is not
        // reported, and the run goes on with the next one.
        const QString text = startFailureText(name);
        Q_UNUSED(text);
    }
    if (observer)
        observer->started(name, ok);
}

void ServerServices::StopAllServices(Observer *observer)
{
    int step = 0;
    stopIfRunning(step++, CheckD, observer);
    if (observer) {
        observer->stopStep(step, ChatD);
        observer->killing(ChatD);
    }
    ++step;
    m_control.KillProcessByName(ChatD);
    for (const QString &name : stopOrder())
        stopIfRunning(step++, name, observer);
}

void ServerServices::stopIfRunning(int step, const QString &name, Observer *observer)
{
    if (observer)
        observer->stopStep(step, name);
    if (!m_control.IsServiceRunning(name))
        return;
    if (observer)
        observer->stopping(name);
    const bool ok = m_control.StopServiceAndWait(name);
    if (observer)
        observer->stopped(name, ok);
}

bool ServerServices::startEnabled(const std::function<bool(const QString &)> &isRunning)
{
    for (const QString &name : startEnableOrder()) {
        if (!isRunning(name))
            return true;
    }
    return false;
}

bool ServerServices::stopEnabled(const std::function<bool(const QString &)> &isRunning)
{
    for (const QString &name : stopEnableOrder()) {
        if (isRunning(name))
            return true;
    }
    return false;
}

bool ServerServices::isStartEnabled() const
{
    return startEnabled([this](const QString &name) { return m_control.IsServiceRunning(name); });
}

bool ServerServices::isStopEnabled() const
{
    return stopEnabled([this](const QString &name) { return m_control.IsServiceRunning(name); });
}

bool ServerServices::registerService(const QString &name) const
{
    const QString folder = m_control.programDirectory();
    return m_control.launcher().launchDetached(folder + u'/' + name, { u"/service"_s }, folder);
}

void ServerServices::EnsureServicesRegistered(Observer *observer) const
{
    std::unique_ptr<ServiceManager::Session> session = m_control.manager().openManager();
    if (!session)
        return;
    for (const QString &name : ensureRegisteredOrder()) {
        quint32 error = 0;
        if (session->openService(name, ServiceManager::Access::All, error))
            continue;
        if (error != ServiceManager::ServiceDoesNotExist)
            continue;
        const bool launched = registerService(name);
        if (observer)
            observer->registering(name, launched);
    }
}

void ServerServices::RegisterAllServices(Observer *observer) const
{
    for (const QString &name : registerAllOrder()) {
        const bool launched = registerService(name);
        if (observer)
            observer->registering(name, launched);
    }
}

QList<QPair<QString, ServiceControl::State>> ServerServices::states() const
{
    QList<QPair<QString, ServiceControl::State>> result;
    for (const QString &name : serviceNames())
        result.append({ name, m_control.queryState(name) });
    return result;
}
