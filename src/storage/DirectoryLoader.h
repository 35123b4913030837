#pragma once

#include "DirectoryData.h"

class DbConnection;
class LoadProgress;

// Reads the organisation directory: members, the regular and the guest group
// trees and every membership, with the designed statements in the designed
// order. Runs on the loading thread; touches nothing but the data it is given.
class DirectoryLoader
{
public:
    // Fills data (cleared first). Raises DbException at the first failing
    // statement or field; whatever was read before stays in data.
    static void load(
        DbConnection &connection, DirectoryData &data, LoadProgress *progress = nullptr);
};
