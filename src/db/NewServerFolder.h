#pragma once

#include <QString>

class RegistryHives;
class ServerFolder;

// Creates an empty server in a folder, for an administrator who starts the
// console without one: "Serverinfo.ini" with the settings a new installation
// has, the registry's database key, and the server's tables in an empty
// database - a new SQLite "VelmarDB.mdb" in the folder, or a database the
// administrator created on a PostgreSQL server.
class NewServerFolder final
{
public:
    // Refuses (false, error set) a folder that already holds a server and a
    // database that already holds the server's tables; nothing is
    // overwritten. postgresConnectionString empty: SQLite.
    static bool create(const ServerFolder &folder, RegistryHives &hives,
        const QString &postgresConnectionString, QString *error);

    // The unixODBC string for a PostgreSQL database.
    static QString postgresConnectionString(const QString &host, int port, const QString &database,
        const QString &user, const QString &password);
};
