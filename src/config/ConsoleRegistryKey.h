#pragma once

#include <QString>

// The console's own registry key. Under HKEY_CURRENT_USER it holds the
// window's state, the balloon help, the online addresses and the invitation
// mail settings; under HKEY_LOCAL_MACHINE the administrator password.
inline const QString ConsoleRegistryKey = QStringLiteral("Software\\Velmar\\VelmarManager");
