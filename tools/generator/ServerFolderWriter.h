#pragma once

#include "GeneratedData.h"
#include "ServerFolder.h"

#include <QString>

// Everything of a server folder besides the database: "Serverinfo.ini", the
// registry hives the server installation leaves, the uploaded files of
// notices and the file-box folders. Paths come from ServerFolder, as the
// console and velmarctl derive them.
class ServerFolderWriter
{
public:
    ServerFolderWriter(const QString &serverDir, const QString &registryDir);

    bool writeProfile(const GeneratedData &data, QString *error) const;
    bool writeRegistry(QString *error) const;
    bool writeUploads(const GeneratedData &data, QString *error) const;
    bool writeFileBox(const GeneratedData &data, QString *error) const;

    QString databasePath() const;
    QString logRoot() const;
    QString uploadRoot() const;
    QString fileBoxRoot() const;

private:
    ServerFolder m_folder;
};
