#pragma once

#include <QString>

// A file-box folder; the path keeps single backslashes in memory.
struct tagFolderData
{
    qint32 folderId = -1;
    QString path;

    bool operator==(const tagFolderData &) const = default;
};
