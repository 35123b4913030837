#include "ServerFolderChoice.h"

#include "ServerFolder.h"

#include <QFileInfo>
#include <QSettings>

using namespace Qt::StringLiterals;

namespace {
// The console's own settings file, read by velmarctl too: both are given the
// organisation and application names explicitly, so that velmarctl's own
// application name does not lead it to a file of its own.
const QString Organization = u"Velmar"_s;
const QString ConsoleName = u"VelmarManager"_s;
const QString RememberedKey = u"ServerFolder/LastUsed"_s;
} // namespace

ServerFolderChoice::Choice ServerFolderChoice::choose(const QString &option,
    const QString &executableDir, const QString &environment, const QString &remembered)
{
    if (!option.isEmpty())
        return { ServerFolder::cleanDirectory(option), Reason::Option };
    if (!executableDir.isEmpty() && holdsServer(executableDir))
        return { ServerFolder::cleanDirectory(executableDir), Reason::ExecutableFolder };
    if (!environment.isEmpty())
        return { ServerFolder::cleanDirectory(environment), Reason::Environment };
    if (!remembered.isEmpty() && holdsServer(remembered))
        return { ServerFolder::cleanDirectory(remembered), Reason::Remembered };
    return {};
}

bool ServerFolderChoice::holdsServer(const QString &directory)
{
    return QFileInfo(ServerFolder(directory).profilePath()).isFile();
}

QString ServerFolderChoice::describe(const Choice &choice)
{
    switch (choice.reason) {
    case Reason::Option:
        return u"server folder %1 (--server-dir)"_s.arg(choice.directory);
    case Reason::ExecutableFolder:
        return u"server folder %1 (the program's own folder, which holds %2)"_s.arg(
            choice.directory, ServerFolder::ProfileFileName);
    case Reason::Environment:
        return u"server folder %1 (VELMAR_SERVER_DIR)"_s.arg(choice.directory);
    case Reason::Remembered:
        return u"server folder %1 (the folder the console used last)"_s.arg(choice.directory);
    case Reason::None:
        break;
    }
    return u"no server folder: give --server-dir DIR or set VELMAR_SERVER_DIR"_s;
}

QString ServerFolderChoice::remembered()
{
    const QSettings settings(
        QSettings::NativeFormat, QSettings::UserScope, Organization, ConsoleName);
    return settings.value(RememberedKey).toString();
}

void ServerFolderChoice::remember(const QString &directory)
{
    QSettings settings(QSettings::NativeFormat, QSettings::UserScope, Organization, ConsoleName);
    settings.setValue(RememberedKey, ServerFolder::cleanDirectory(directory));
}
