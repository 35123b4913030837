#pragma once

#include <memory>
#include <QString>
#include <QTemporaryDir>

class RegistryHives;

// A throw-away server installation: a program folder (where the console, its
// Serverinfo.ini and VelmarDB.mdb live) and a registry folder with the two hives.
class TempServerDir
{
public:
    TempServerDir();
    ~TempServerDir();

    bool isValid() const;
    QString root() const;
    QString programDir() const; // <root>/server
    QString registryDir() const; // <root>/registry
    QString iniPath() const; // <programDir>/Serverinfo.ini
    // [GroupInfo] Version of Serverinfo.ini, which every save bumps; "absent"
    // when it is not there.
    QString savedVersion() const;
    QString databasePath() const; // <programDir>/VelmarDB.mdb
    QString filePath(const QString &relative) const; // inside programDir

    RegistryHives &hives();

    // Writes text (UTF-8) to a file below the program folder, creating folders.
    bool writeFile(const QString &relative, const QByteArray &contents) const;
    QByteArray readFile(const QString &relative) const;

private:
    QTemporaryDir m_dir;
    std::unique_ptr<RegistryHives> m_hives;
};
