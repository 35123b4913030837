#pragma once

#include <memory>
#include <QString>
#include <QtGlobal>

// The operating system's service manager as the service commands see it: open
// the manager, open a service, query its state, start it, send it the stop
// control, close. The Service Control Manager on Windows and systemd over
// D-Bus elsewhere stand behind it; closing is the destruction of a handle.
class ServiceManager
{
public:
    // The Service Control Manager's state codes; systemd's states are mapped onto them.
    enum State : quint32 { Stopped = 1, StartPending = 2, StopPending = 3, Running = 4 };

    // What a service handle is opened for: only its state, or everything.
    enum class Access { QueryStatus, All };

    // The error of an open that failed because the service does not exist.
    static constexpr quint32 ServiceDoesNotExist = 1060;

    struct Status
    {
        quint32 currentState = 0;
        quint32 checkPoint = 0; // rises while a start or stop makes progress
        quint32 waitHint = 0; // milliseconds the pending operation may take
    };

    class Service
    {
    public:
        virtual ~Service() = default;
        virtual bool start() = 0;
        virtual bool controlStop() = 0;
        virtual bool queryStatus(Status &status) = 0;
    };

    class Session
    {
    public:
        virtual ~Session() = default;
        // nullptr with error set when the service cannot be opened.
        virtual std::unique_ptr<Service> openService(
            const QString &name, Access access, quint32 &error)
            = 0;
    };

    virtual ~ServiceManager() = default;
    // nullptr when the manager cannot be reached.
    virtual std::unique_ptr<Session> openManager() = 0;

    // The platform's own manager: the Service Control Manager on Windows,
    // systemd elsewhere (the system bus, or the user's manager when
    // VELMAR_SERVICE_BUS is "user").
    static std::unique_ptr<ServiceManager> createPlatformManager();
};
