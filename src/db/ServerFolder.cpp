#include "ServerFolder.h"

#include "CRegistry.h"
#include "RegistryHives.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

const QString ServerFolder::ProfileFileName = u"Serverinfo.ini"_s;
const QString ServerFolder::AccessDatabaseFileName = u"VelmarDB.mdb"_s;
const QString ServerFolder::DatabaseKeyPath = u"SOFTWARE\\Velmar\\Services\\DataBase"_s;

ServerFolder::ServerFolder(const QString &programDirectory, const QString &registryDirectory)
    : m_programDirectory(cleanDirectory(programDirectory))
    , m_registryDirectory(
          registryDirectory.isEmpty() ? QString() : cleanDirectory(registryDirectory))
{ }

QString ServerFolder::cleanDirectory(const QString &path)
{
    QString clean = QDir::cleanPath(QDir().absoluteFilePath(path));
    while (clean.size() > 1 && clean.endsWith(u'/'))
        clean.chop(1);
    return clean;
}

QString ServerFolder::profilePath() const
{
    return filePath(ProfileFileName);
}

QString ServerFolder::accessDatabasePath() const
{
    return filePath(AccessDatabaseFileName);
}

QString ServerFolder::filePath(const QString &name) const
{
    return m_programDirectory + u'/' + name;
}

std::unique_ptr<RegistryHives> ServerFolder::openHives() const
{
    return m_registryDirectory.isEmpty() ? RegistryHives::fromEnvironment()
                                         : std::make_unique<RegistryHives>(m_registryDirectory);
}

QString ServerFolder::accessConnectionString() const
{
    return u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=%1;DefaultDir=;UID=admin;PWD=;"_s.arg(
        QDir::toNativeSeparators(accessDatabasePath()));
}

void ServerFolder::prepareDatabaseSettings(RegistryHives &hives) const
{
    CRegistry registry(hives, RegistryRoot::LocalMachine);
    if (!registry.createKey(RegistryRoot::LocalMachine, DatabaseKeyPath))
        return;
    QString type;
    if (!registry.readString(u"SetDBType"_s, type)) {
        registry.writeString(u"SetDBType"_s, u"MDB"_s);
        type = u"MDB"_s;
    }
    // The local Access database beside the console is the server's database:
    // point the server and every program of this folder at it.
    if (type == u"MDB"_s && QFileInfo(accessDatabasePath()).isFile()) {
        registry.writeString(u"ConnectionString"_s, accessConnectionString());
        registry.writeString(u"SetDBType"_s, u"MDB"_s);
    }
}
