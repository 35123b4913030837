#pragma once

#include <functional>
#include <QDateTime>
#include <QString>
#include <QUrl>

class MessageService;
class ServiceManager;
class RegistryHives;
class SqlTrace;

// What the main frame is given instead of finding it itself, so that a test
// can build one on a temporary server folder with scripted message boxes.
struct MainFrameContext
{
    QString programDirectory; // the server folder, without a trailing separator
    RegistryHives &hives;
    MessageService &messages;
    std::function<QDateTime()> clock = [] { return QDateTime::currentDateTime(); };
    SqlTrace *sqlTrace = nullptr;
    // Read the server data once the administrator is let in. Tests of the
    // frame's own behaviour turn it off; the loading itself is tested headless.
    bool loadServerData = true;
    // The operating system's service manager; nullptr: the platform's own.
    ServiceManager *serviceManager = nullptr;
    // Opens an address in the desktop's browser; empty: QDesktopServices.
    std::function<bool(const QUrl &)> openUrl = {};
};
