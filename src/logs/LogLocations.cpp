#include "LogLocations.h"

#include "CRegistry.h"
#include "NoticeBoard.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace {

bool endsInSeparator(const QString &path)
{
    return path.endsWith(u'/') || path.endsWith(QDir::separator());
}

QString withSeparator(QString path)
{
    if (!endsInSeparator(path))
        path += u'/';
    return path;
}

} // namespace

QString LogLocations::logRoot(RegistryHives &hives, const QString &programDir)
{
    QString configured;
    CRegistry registry(hives, RegistryRoot::LocalMachine);
    if (registry.openKey(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\LogManager"_s)) {
        if (!registry.readString(u"LogPath"_s, configured))
            configured.clear();
        registry.close();
    }
    return logRootFrom(configured, programDir);
}

QString LogLocations::logRootFrom(const QString &configured, const QString &programDir)
{
    if (configured.isEmpty())
        return withSeparator(withSeparator(programDir) + u"LogFiles"_s);
    return withSeparator(configured);
}

QString LogLocations::daemonFolder(const QString &root, const QString &daemon)
{
    return root + u'/' + daemon + u'/';
}

QStringList LogLocations::chatDaemons()
{
    return { u"ChatD"_s };
}

QStringList LogLocations::systemDaemons()
{
    return { u"VelmarD"_s, u"GroupD"_s, u"RelayD"_s, u"FileDispatchD"_s, u"FileSessionD"_s,
        u"ChatD"_s };
}

QStringList LogLocations::userDaemons()
{
    return { u"VelmarD"_s };
}

QString LogLocations::sessionUploadFolder(
    RegistryHives &hives, const QString &programDir, const QString &sessionId)
{
    if (sessionId.isEmpty())
        return {};
    return NoticeBoard::uploadFolder(hives, programDir) + u'/' + sessionId;
}
