#pragma once

#include "GeneratedData.h"

#include <QString>

// Everything of a server folder besides the database: "Serverinfo.ini", the
// registry hives the server installation leaves, the uploaded files of
// notices and the file-box folders.
class ServerFolderWriter
{
public:
    ServerFolderWriter(QString serverDir, QString registryDir);

    bool writeProfile(const GeneratedData &data, QString *error) const;
    bool writeRegistry(QString *error) const;
    bool writeUploads(const GeneratedData &data, QString *error) const;
    bool writeFileBox(const GeneratedData &data, QString *error) const;

    QString databasePath() const;
    QString logRoot() const;
    QString uploadRoot() const;
    QString fileBoxRoot() const;

private:
    QString m_serverDir;
    QString m_registryDir;
};
