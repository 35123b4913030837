#pragma once

#include <memory>
#include <QString>

class RegistryHives;

// The server folder a program works on: the program directory, the files
// looked for there ("Serverinfo.ini", "VelmarDB.mdb") and the folder of the
// registry hives. The console and velmarctl both start from one, so that they
// read the same files and open the same database.
class ServerFolder final
{
public:
    // programDirectory as given (a relative one is taken from the working
    // directory); registryDirectory empty: the hives' usual places.
    explicit ServerFolder(const QString &programDirectory, const QString &registryDirectory = {});

    // Absolute and clean, without a trailing separator: paths are built by
    // appending "/" and a name.
    static QString cleanDirectory(const QString &path);

    static const QString ProfileFileName; // "Serverinfo.ini"
    static const QString AccessDatabaseFileName; // "VelmarDB.mdb"
    static const QString DatabaseKeyPath; // SOFTWARE\Velmar\Services\DataBase

    QString programDirectory() const { return m_programDirectory; }
    QString profilePath() const;
    QString accessDatabasePath() const;
    QString filePath(const QString &name) const;
    QString registryDirectory() const { return m_registryDirectory; }

    // The hive files in the registry folder, or in their usual places.
    std::unique_ptr<RegistryHives> openHives() const;

    // The start-up step for the database settings: a missing "SetDBType"
    // becomes "MDB"; with "MDB" and this folder's "VelmarDB.mdb" present,
    // "ConnectionString" is pointed at that file. Whatever opens the database
    // afterwards reads the string from the registry.
    void prepareDatabaseSettings(RegistryHives &hives) const;
    // The Access driver string written for this folder's database.
    QString accessConnectionString() const;

private:
    QString m_programDirectory;
    QString m_registryDirectory;
};
