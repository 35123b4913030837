#include "ScriptedServiceManager.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

class ScriptedService final : public ServiceManager::Service
{
public:
    ScriptedService(ScriptedServiceManager &owner, const QString &name)
        : m_owner(owner)
        , m_name(name)
    { }
    bool start() override { return m_owner.request(m_name, true); }
    bool controlStop() override { return m_owner.request(m_name, false); }
    bool queryStatus(ServiceManager::Status &status) override
    {
        return m_owner.query(m_name, status);
    }

private:
    ScriptedServiceManager &m_owner;
    QString m_name;
};

class ScriptedSession final : public ServiceManager::Session
{
public:
    explicit ScriptedSession(ScriptedServiceManager &owner)
        : m_owner(owner)
    { }
    std::unique_ptr<ServiceManager::Service> openService(
        const QString &name, ServiceManager::Access, quint32 &error) override
    {
        QMutexLocker lock(&m_owner.m_mutex);
        if (!m_owner.m_scripts.value(name).known) {
            error = ServiceManager::ServiceDoesNotExist;
            return nullptr;
        }
        return std::make_unique<ScriptedService>(m_owner, name);
    }

private:
    ScriptedServiceManager &m_owner;
};

ScriptedServiceManager::ScriptedServiceManager()
    : m_clock(*this)
    , m_launcher(*this)
{
    for (const QString &name : { u"VelmarD"_s, u"GroupD"_s, u"VelmarboxServerManager"_s,
             u"RelayD"_s, u"CheckD"_s, u"FileDispatchD"_s, u"FileSessionD"_s, u"ChatD"_s })
        m_scripts.insert(name, Script());
}

void ScriptedServiceManager::setReachable(bool reachable)
{
    QMutexLocker lock(&m_mutex);
    m_reachable = reachable;
}

void ScriptedServiceManager::setScript(const QString &name, const Script &script)
{
    QMutexLocker lock(&m_mutex);
    m_scripts.insert(name, script);
    m_pendingLeft.remove(name);
}

void ScriptedServiceManager::setRunning(const QStringList &names)
{
    QMutexLocker lock(&m_mutex);
    for (auto it = m_scripts.begin(); it != m_scripts.end(); ++it)
        it->state = names.contains(it.key()) ? Running : Stopped;
}

bool ScriptedServiceManager::isRunning(const QString &name) const
{
    QMutexLocker lock(&m_mutex);
    return m_scripts.value(name).state == Running;
}

QStringList ScriptedServiceManager::journal() const
{
    QMutexLocker lock(&m_mutex);
    return m_journal;
}

QStringList ScriptedServiceManager::journal(const QStringList &words) const
{
    QStringList result;
    for (const QString &entry : journal()) {
        if (words.contains(entry.section(u' ', 0, 0)))
            result.append(entry);
    }
    return result;
}

void ScriptedServiceManager::clearJournal()
{
    QMutexLocker lock(&m_mutex);
    m_journal.clear();
}

void ScriptedServiceManager::setBeforeRequest(
    std::function<void(const QString &, const QString &)> hook)
{
    QMutexLocker lock(&m_mutex);
    m_beforeRequest = std::move(hook);
}

quint64 ScriptedServiceManager::now() const
{
    QMutexLocker lock(&m_mutex);
    return m_now;
}

void ScriptedServiceManager::record(const QString &entry)
{
    QMutexLocker lock(&m_mutex);
    m_journal.append(entry);
}

std::unique_ptr<ServiceManager::Session> ScriptedServiceManager::openManager()
{
    QMutexLocker lock(&m_mutex);
    if (!m_reachable)
        return nullptr;
    return std::make_unique<ScriptedSession>(*this);
}

bool ScriptedServiceManager::request(const QString &name, bool start)
{
    std::function<void(const QString &, const QString &)> hook;
    {
        QMutexLocker lock(&m_mutex);
        hook = m_beforeRequest;
    }
    const QString word = start ? u"start"_s : u"stop"_s;
    if (hook)
        hook(word, name);
    QMutexLocker lock(&m_mutex);
    m_journal.append(word + u' ' + name);
    Script &script = m_scripts[name];
    if (start ? script.failStart : script.failStop)
        return false;
    const quint32 pending = start ? StartPending : StopPending;
    const quint32 settled = start ? script.stateAfterStart : script.stateAfterStop;
    if (script.pendingQueries == 0) {
        script.state = settled;
    } else {
        script.state = pending;
        m_pendingLeft.insert(name, script.pendingQueries);
    }
    return true;
}

bool ScriptedServiceManager::query(const QString &name, Status &status)
{
    QMutexLocker lock(&m_mutex);
    Script &script = m_scripts[name];
    if (script.state == StartPending || script.state == StopPending) {
        int &left = m_pendingLeft[name];
        // The first answer after the request shows the request taken, pending.
        if (left != 0) {
            if (left > 0)
                --left;
            if (script.progress)
                ++script.checkPoint;
        } else {
            script.state
                = script.state == StartPending ? script.stateAfterStart : script.stateAfterStop;
        }
    }
    status.currentState = script.state;
    status.checkPoint = script.checkPoint;
    status.waitHint = script.waitHint;
    return true;
}

quint64 ScriptedServiceManager::Clock::tickCount()
{
    return m_owner.now();
}

void ScriptedServiceManager::Clock::sleep(quint32 milliseconds)
{
    QMutexLocker lock(&m_owner.m_mutex);
    m_owner.m_now += milliseconds;
    m_owner.m_journal.append(u"sleep %1"_s.arg(milliseconds));
}

bool ScriptedServiceManager::Launcher::launchDetached(
    const QString &program, const QStringList &arguments, const QString &workingDirectory)
{
    QString entry = u"launch "_s + QFileInfo(program).fileName();
    for (const QString &argument : arguments)
        entry += u' ' + argument;
    if (!workingDirectory.isEmpty())
        entry += u" in "_s + workingDirectory;
    m_owner.record(entry);
    return true;
}
