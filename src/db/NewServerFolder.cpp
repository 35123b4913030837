#include "NewServerFolder.h"

#include "CRegistry.h"
#include "DbConnection.h"
#include "DbError.h"
#include "ProfileFile.h"
#include "RegistryHives.h"
#include "SchemaInstaller.h"
#include "ServerFolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {
bool writeProfile(const QString &path, QString *error)
{
    // Written through the console's own profile code, so the file has the
    // code page and line endings of one the server installation leaves.
    ProfileFile profile(path);
    const std::pair<QString, std::pair<QString, QString>> entries[] = {
        { u"ServerInfo"_s, { u"DefaultPositionID"_s, u"0"_s } },
        { u"ServerInfo"_s, { u"UseDist"_s, u"0"_s } },
        { u"ServerInfo"_s, { u"FileTransMaxSize"_s, u"100"_s } },
        { u"GroupInfo"_s, { u"Version"_s, u"0001"_s } },
        { u"SettingInfo"_s, { u"HomePageURL"_s, QString() } },
        { u"SettingInfo"_s, { u"CaptionBarName"_s, QString() } },
        { u"SettingInfo"_s, { u"bDefaultIcon"_s, u"1"_s } },
        { u"SettingInfo"_s, { u"bDefaultLogo"_s, u"1"_s } },
        { u"SettingInfo"_s, { u"Version"_s, u"1"_s } },
        { u"SettingInfo"_s, { u"USESSO"_s, u"0"_s } },
        { u"SettingInfo"_s, { u"FORCEDMAILMODE"_s, u"0"_s } },
    };
    for (const auto &[section, pair] : entries) {
        if (!profile.writeString(section, pair.first, pair.second)) {
            *error = u"无法写入 %1"_s.arg(path);
            return false;
        }
    }
    return true;
}
} // namespace

QString NewServerFolder::postgresConnectionString(const QString &host, int port,
    const QString &database, const QString &user, const QString &password)
{
    return u"DRIVER={PostgreSQL Unicode};Server=%1;Port=%2;Database=%3;Uid=%4;Pwd=%5;"_s.arg(
        host, QString::number(port), database, user, password);
}

bool NewServerFolder::create(const ServerFolder &folder, RegistryHives &hives,
    const QString &postgresConnectionString, QString *error)
{
    if (QFileInfo::exists(folder.profilePath())) {
        *error = u"%1 中已有服务器 (Serverinfo.ini), 不会覆盖它."_s.arg(folder.programDirectory());
        return false;
    }
    const bool sqlite = postgresConnectionString.isEmpty();
    if (sqlite && QFileInfo::exists(folder.accessDatabasePath())) {
        *error = u"%1 已存在, 不会覆盖它."_s.arg(folder.accessDatabasePath());
        return false;
    }
    if (!QDir().mkpath(folder.programDirectory())) {
        *error = u"无法创建文件夹 %1"_s.arg(folder.programDirectory());
        return false;
    }

    // The console's connections open existing databases only; an empty file
    // is an empty SQLite database.
    if (sqlite) {
        QFile database(folder.accessDatabasePath());
        if (!database.open(QIODevice::NewOnly)) {
            *error = u"无法创建 %1: %2"_s.arg(database.fileName(), database.errorString());
            return false;
        }
    }

    // The tables first: a database that refuses them leaves no half-made
    // server behind.
    const QString connectionString
        = sqlite ? folder.accessConnectionString() : postgresConnectionString;
    try {
        DbConnection connection = DbConnection::open(connectionString);
        SchemaInstaller::install(connection);
    } catch (const DbException &exception) {
        if (sqlite)
            QFile::remove(folder.accessDatabasePath());
        *error = u"无法在数据库中建立服务器的表: %1"_s.arg(exception.error().description);
        return false;
    }

    if (!writeProfile(folder.profilePath(), error))
        return false;
    CRegistry registry(hives, RegistryRoot::LocalMachine);
    if (!registry.createKey(RegistryRoot::LocalMachine, ServerFolder::DatabaseKeyPath)
        || !registry.writeString(u"SetDBType"_s, sqlite ? u"MDB"_s : u"PGSQL"_s)
        || !registry.writeString(u"ConnectionString"_s, connectionString)) {
        *error = u"无法写入注册表的数据库设置"_s;
        return false;
    }
    return true;
}
