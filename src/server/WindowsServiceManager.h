#pragma once

#include "ServiceManager.h"

#ifdef Q_OS_WIN

// The Service Control Manager of the local machine.
class WindowsServiceManager final : public ServiceManager
{
public:
    std::unique_ptr<Session> openManager() override;
};

#endif
