#pragma once

#include <QString>
#include <QStringList>

class RegistryHives;

// Where the daemons' logs are: the log root of the log settings, one folder
// per daemon below it, and the session upload folders the user log points at.
class LogLocations
{
public:
    // LogPath under SOFTWARE\Velmar\LogManager (machine hive); when it cannot
    // be read or is empty, programDir + "/LogFiles". Always ends in a separator.
    static QString logRoot(RegistryHives &hives, const QString &programDir);
    // The same rule for a value already read (empty: the default).
    static QString logRootFrom(const QString &configured, const QString &programDir);

    // "%s\%s\" of the root and a daemon folder name. The root already ends in
    // a separator, so the result holds it twice; the path is used as it is.
    static QString daemonFolder(const QString &root, const QString &daemon);

    static QStringList chatDaemons(); // "ChatD"
    static QStringList systemDaemons(); // "VelmarD" ... "ChatD", in search order
    static QStringList userDaemons(); // "VelmarD"

    // The folder the "打开..." button opens for a session id: UploadPath under
    // SOFTWARE\Velmar\Services\SessionFolder, else programDir +
    // "/VelmarFile2Upload"; then "/" and the id. Empty for an empty id.
    static QString sessionUploadFolder(
        RegistryHives &hives, const QString &programDir, const QString &sessionId);
};
