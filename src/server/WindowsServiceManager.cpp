#include "WindowsServiceManager.h"

#ifdef Q_OS_WIN

#include <qt_windows.h>

namespace {
// Full access to the manager, and to a service; query-status access alone.
constexpr DWORD ManagerAllAccess = 0xF003F;
constexpr DWORD ServiceAllAccess = 0xF01FF;
constexpr DWORD ServiceQueryStatus = 0x0004;

class WindowsService final : public ServiceManager::Service
{
public:
    explicit WindowsService(SC_HANDLE handle)
        : m_handle(handle)
    { }
    ~WindowsService() override { CloseServiceHandle(m_handle); }

    bool start() override { return StartServiceW(m_handle, 0, nullptr) != FALSE; }

    bool controlStop() override
    {
        SERVICE_STATUS status;
        ZeroMemory(&status, sizeof(status));
        return ControlService(m_handle, SERVICE_CONTROL_STOP, &status) != FALSE;
    }

    bool queryStatus(ServiceManager::Status &result) override
    {
        SERVICE_STATUS status;
        ZeroMemory(&status, sizeof(status));
        const bool ok = QueryServiceStatus(m_handle, &status) != FALSE;
        result.currentState = status.dwCurrentState;
        result.checkPoint = status.dwCheckPoint;
        result.waitHint = status.dwWaitHint;
        return ok;
    }

private:
    SC_HANDLE m_handle;
};

class WindowsSession final : public ServiceManager::Session
{
public:
    explicit WindowsSession(SC_HANDLE handle)
        : m_handle(handle)
    { }
    ~WindowsSession() override { CloseServiceHandle(m_handle); }

    std::unique_ptr<ServiceManager::Service> openService(
        const QString &name, ServiceManager::Access access, quint32 &error) override
    {
        const DWORD rights
            = access == ServiceManager::Access::All ? ServiceAllAccess : ServiceQueryStatus;
        SC_HANDLE service = OpenServiceW(m_handle, reinterpret_cast<LPCWSTR>(name.utf16()), rights);
        if (!service) {
            error = GetLastError();
            return nullptr;
        }
        return std::make_unique<WindowsService>(service);
    }

private:
    SC_HANDLE m_handle;
};
} // namespace

std::unique_ptr<ServiceManager::Session> WindowsServiceManager::openManager()
{
    SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, ManagerAllAccess);
    if (!manager)
        return nullptr;
    return std::make_unique<WindowsSession>(manager);
}

std::unique_ptr<ServiceManager> ServiceManager::createPlatformManager()
{
    return std::make_unique<WindowsServiceManager>();
}

#endif
