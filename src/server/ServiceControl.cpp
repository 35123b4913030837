#include "ServiceControl.h"

#include "ProgramLauncher.h"
#include "ServiceClock.h"

using namespace Qt::StringLiterals;

ServiceControl::ServiceControl(ServiceManager &manager, ServiceClock &clock,
    ProgramLauncher &launcher, const QString &programDirectory)
    : m_manager(manager)
    , m_clock(clock)
    , m_launcher(launcher)
    , m_programDirectory(programDirectory)
{ }

bool ServiceControl::IsServiceRunning(const QString &name) const
{
    std::unique_ptr<ServiceManager::Session> session = m_manager.openManager();
    if (!session)
        return false;
    quint32 error = 0;
    std::unique_ptr<ServiceManager::Service> service
        = session->openService(name, ServiceManager::Access::QueryStatus, error);
    if (!service)
        return false;
    ServiceManager::Status status;
    return service->queryStatus(status) && status.currentState == ServiceManager::Running;
}

bool ServiceControl::StartServiceAndWait(const QString &name) const
{
    return controlAndWait(name, true);
}

bool ServiceControl::StopServiceAndWait(const QString &name) const
{
    return controlAndWait(name, false);
}

quint32 ServiceControl::pollInterval(quint32 waitHint, quint32 maximum)
{
    return qBound<quint32>(1000, waitHint / 10, maximum);
}

bool ServiceControl::controlAndWait(const QString &name, bool start) const
{
    std::unique_ptr<ServiceManager::Session> session = m_manager.openManager();
    if (!session)
        return true;
    quint32 error = 0;
    std::unique_ptr<ServiceManager::Service> service
        = session->openService(name, ServiceManager::Access::All, error);
    if (!service)
        return true;

    if (!(start ? service->start() : service->controlStop()))
        return false;

    bool result = true;
    ServiceManager::Status status;
    if (!service->queryStatus(status))
        result = false;

    const quint32 pending = start ? ServiceManager::StartPending : ServiceManager::StopPending;
    const quint32 maximum = start ? StartPollMaximum : StopPollMaximum;
    quint64 lastProgress = m_clock.tickCount();
    quint32 checkPoint = status.checkPoint;
    while (status.currentState == pending) {
        m_clock.sleep(pollInterval(status.waitHint, maximum));
        if (!service->queryStatus(status))
            break;
        if (status.checkPoint > checkPoint) {
            checkPoint = status.checkPoint;
            lastProgress = m_clock.tickCount();
        } else if (m_clock.tickCount() - lastProgress > status.waitHint) {
            // No progress within the service's own wait hint: give up on it.
            break;
        }
    }

    const quint32 wanted = start ? ServiceManager::Running : ServiceManager::Stopped;
    if (status.currentState != wanted)
        result = false;
    return result;
}

void ServiceControl::KillProcessByName(const QString &name) const
{
    // Started and forgotten: a missing tool only leaves the work to the
    // regular stop that follows.
    m_launcher.launchDetached(m_programDirectory + u"/pskill"_s, { name }, QString());
}

ServiceControl::State ServiceControl::queryState(const QString &name) const
{
    std::unique_ptr<ServiceManager::Session> session = m_manager.openManager();
    if (!session)
        return State::Unreachable;
    quint32 error = 0;
    std::unique_ptr<ServiceManager::Service> service
        = session->openService(name, ServiceManager::Access::QueryStatus, error);
    if (!service)
        return error == ServiceManager::ServiceDoesNotExist ? State::NotInstalled
                                                            : State::Unreachable;
    ServiceManager::Status status;
    if (!service->queryStatus(status))
        return State::Unreachable;
    switch (status.currentState) {
    case ServiceManager::Running:
        return State::Running;
    case ServiceManager::StartPending:
        return State::StartPending;
    case ServiceManager::StopPending:
        return State::StopPending;
    default:
        return State::Stopped;
    }
}

QString ServiceControl::stateText(State state)
{
    switch (state) {
    case State::Running:
        return u"运行中"_s;
    case State::Stopped:
        return u"已停止"_s;
    case State::StartPending:
        return u"正在启动"_s;
    case State::StopPending:
        return u"正在停止"_s;
    case State::NotInstalled:
        return u"未注册"_s;
    case State::Unreachable:
        break;
    }
    return u"无法查询"_s;
}
