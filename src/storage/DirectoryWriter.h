#pragma once

#include "DirectoryData.h"

#include <QList>

class DbConnection;

// The directory part of the save: rows of deleted members, then both group
// partitions, both member partitions, both relation partitions and the member
// levels, each partition deleted and refilled. No transaction: a failing
// statement raises DbException and stops the write where it is; writing the
// same content again puts everything right.
class DirectoryWriter
{
public:
    // The dependent rows of each deleted member, in list order.
    static void writeDeletedMembers(DbConnection &connection, const QList<qint32> &deletedIds);
    // The groups, members, relations and levels.
    static void writeDirectory(DbConnection &connection, const DirectoryContent &content);
};
