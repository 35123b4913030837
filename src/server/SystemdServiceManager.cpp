#include "SystemdServiceManager.h"

#include <limits>
#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QVariantMap>

using namespace Qt::StringLiterals;

namespace {
const QString Systemd = u"org.freedesktop.systemd1"_s;
const QString ManagerPath = u"/org/freedesktop/systemd1"_s;
const QString ManagerInterface = u"org.freedesktop.systemd1.Manager"_s;
const QString UnitInterface = u"org.freedesktop.systemd1.Unit"_s;
const QString ServiceInterface = u"org.freedesktop.systemd1.Service"_s;
const QString PropertiesInterface = u"org.freedesktop.DBus.Properties"_s;
const QString NoSuchUnit = u"org.freedesktop.systemd1.NoSuchUnit"_s;

// A manager that does not answer must not hold a window or a run for long.
constexpr int CallTimeoutMs = 10000;

// Windows error codes for the failures that have one.
constexpr quint32 AccessDenied = 5;
constexpr quint32 ServiceCannotBeOpened = 1058;

QDBusMessage call(const QDBusConnection &bus, const QString &path, const QString &interface,
    const QString &method, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(Systemd, path, interface, method);
    message.setArguments(arguments);
    return bus.call(message, QDBus::Block, CallTimeoutMs);
}

quint32 microsecondsToWaitHint(qulonglong microseconds)
{
    // "infinity" is the largest 64-bit number; a wait hint is 32 bits of milliseconds.
    const qulonglong milliseconds = microseconds / 1000;
    return milliseconds > std::numeric_limits<quint32>::max() ? std::numeric_limits<quint32>::max()
                                                              : quint32(milliseconds);
}

class SystemdService final : public ServiceManager::Service
{
public:
    SystemdService(QDBusConnection bus, const QString &name, const QString &unitPath)
        : m_bus(std::move(bus))
        , m_unitName(name + u".service"_s)
        , m_unitPath(unitPath)
    { }

    bool start() override { return request(u"StartUnit"_s, true); }
    bool controlStop() override { return request(u"StopUnit"_s, false); }

    bool queryStatus(ServiceManager::Status &status) override
    {
        status = {};
        const QDBusMessage reply
            = call(m_bus, m_unitPath, PropertiesInterface, u"GetAll"_s, { UnitInterface });
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
            return false;
        const QVariantMap properties
            = qdbus_cast<QVariantMap>(reply.arguments().constFirst().value<QDBusArgument>());
        const QString active = properties.value(u"ActiveState"_s).toString();
        const QString sub = properties.value(u"SubState"_s).toString();
        quint32 jobId = 0;
        const QVariant job = properties.value(u"Job"_s);
        if (job.canConvert<QDBusArgument>()) {
            const QDBusArgument argument = job.value<QDBusArgument>();
            QDBusObjectPath jobPath;
            argument.beginStructure();
            argument >> jobId >> jobPath;
            argument.endStructure();
        }

        if (active == u"active"_s)
            status.currentState = ServiceManager::Running;
        else if (active == u"activating"_s || active == u"reloading"_s)
            status.currentState = ServiceManager::StartPending;
        else if (active == u"deactivating"_s)
            status.currentState = ServiceManager::StopPending;
        else
            status.currentState = ServiceManager::Stopped;
        // A job queued but not yet begun: the unit still shows the old state.
        if (jobId != 0 && m_requested == Requested::Start
            && status.currentState == ServiceManager::Stopped)
            status.currentState = ServiceManager::StartPending;
        if (jobId != 0 && m_requested == Requested::Stop
            && status.currentState == ServiceManager::Running)
            status.currentState = ServiceManager::StopPending;

        const QString seen = active + u'/' + sub + u'/' + QString::number(jobId);
        if (!m_lastSeen.isEmpty() && seen != m_lastSeen)
            ++m_checkPoint;
        m_lastSeen = seen;
        status.checkPoint = m_checkPoint;

        if (status.currentState == ServiceManager::StartPending
            || status.currentState == ServiceManager::StopPending) {
            const QString timeout = status.currentState == ServiceManager::StartPending
                ? u"TimeoutStartUSec"_s
                : u"TimeoutStopUSec"_s;
            const QDBusMessage hint = call(
                m_bus, m_unitPath, PropertiesInterface, u"Get"_s, { ServiceInterface, timeout });
            if (hint.type() == QDBusMessage::ReplyMessage && !hint.arguments().isEmpty()) {
                status.waitHint = microsecondsToWaitHint(
                    hint.arguments().constFirst().value<QDBusVariant>().variant().toULongLong());
            }
        }
        return true;
    }

private:
    enum class Requested { Nothing, Start, Stop };

    bool request(const QString &method, bool start)
    {
        const QDBusMessage reply
            = call(m_bus, ManagerPath, ManagerInterface, method, { m_unitName, u"replace"_s });
        if (reply.type() != QDBusMessage::ReplyMessage)
            return false;
        m_requested = start ? Requested::Start : Requested::Stop;
        return true;
    }

    QDBusConnection m_bus;
    QString m_unitName;
    QString m_unitPath;
    Requested m_requested = Requested::Nothing;
    QString m_lastSeen;
    quint32 m_checkPoint = 0;
};

class SystemdSession final : public ServiceManager::Session
{
public:
    explicit SystemdSession(QDBusConnection bus)
        : m_bus(std::move(bus))
    { }

    std::unique_ptr<ServiceManager::Service> openService(
        const QString &name, ServiceManager::Access, quint32 &error) override
    {
        const QString unit = name + u".service"_s;
        const QDBusMessage reply
            = call(m_bus, ManagerPath, ManagerInterface, u"LoadUnit"_s, { unit });
        if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
            error = reply.errorName() == NoSuchUnit ? ServiceManager::ServiceDoesNotExist
                : reply.errorName() == u"org.freedesktop.DBus.Error.AccessDenied"_s
                ? AccessDenied
                : ServiceCannotBeOpened;
            return nullptr;
        }
        const QString path = reply.arguments().constFirst().value<QDBusObjectPath>().path();
        const QDBusMessage load
            = call(m_bus, path, PropertiesInterface, u"Get"_s, { UnitInterface, u"LoadState"_s });
        if (load.type() != QDBusMessage::ReplyMessage || load.arguments().isEmpty()) {
            error = ServiceCannotBeOpened;
            return nullptr;
        }
        const QString loadState
            = load.arguments().constFirst().value<QDBusVariant>().variant().toString();
        if (loadState == u"not-found"_s) {
            error = ServiceManager::ServiceDoesNotExist;
            return nullptr;
        }
        if (loadState != u"loaded"_s) {
            // masked, a broken unit file: there, but not usable
            error = ServiceCannotBeOpened;
            return nullptr;
        }
        return std::make_unique<SystemdService>(m_bus, name, path);
    }

private:
    QDBusConnection m_bus;
};
} // namespace

SystemdServiceManager::SystemdServiceManager(Bus bus)
    : m_bus(bus)
{ }

SystemdServiceManager::Bus SystemdServiceManager::busFromEnvironment()
{
    return qEnvironmentVariable("VELMAR_SERVICE_BUS") == u"user"_s ? Bus::User : Bus::System;
}

std::unique_ptr<ServiceManager::Session> SystemdServiceManager::openManager()
{
    QDBusConnection bus
        = m_bus == Bus::User ? QDBusConnection::sessionBus() : QDBusConnection::systemBus();
    if (!bus.isConnected())
        return nullptr;
    QDBusConnectionInterface *daemon = bus.interface();
    if (!daemon || !daemon->isServiceRegistered(Systemd).value())
        return nullptr;
    return std::make_unique<SystemdSession>(bus);
}

#ifndef Q_OS_WIN
std::unique_ptr<ServiceManager> ServiceManager::createPlatformManager()
{
    return std::make_unique<SystemdServiceManager>(SystemdServiceManager::busFromEnvironment());
}
#endif
