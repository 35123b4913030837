#pragma once

#include "ServiceManager.h"

#include <QDBusConnection>

// systemd over D-Bus. The unit is the service name plus ".service"; active is
// running, activating or reloading is start pending, deactivating is stop
// pending, inactive or failed is stopped; a unit systemd does not find is the
// error "the service does not exist". The wait hint is the unit's start or
// stop time-out; the check-point rises whenever the unit's state or its job
// changes.
class SystemdServiceManager final : public ServiceManager
{
public:
    enum class Bus { System, User };

    explicit SystemdServiceManager(Bus bus);
    // VELMAR_SERVICE_BUS=user: the user's manager on the session bus.
    static Bus busFromEnvironment();

    std::unique_ptr<Session> openManager() override;

private:
    Bus m_bus;
};
