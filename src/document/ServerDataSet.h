#pragma once

#include "AccessTokenTable.h"
#include "DatabaseFingerprint.h"
#include "DirectoryData.h"
#include "FileBoxRights.h"
#include "NoticeRecord.h"
#include "PositionList.h"
#include "VoipAccountPool.h"

#include <QList>

// Every data set the console edits, as plain data: what the loading worker
// reads on its own thread and hands to the user-interface thread, which moves
// it into CVelmarManagerDoc. Nothing in it is bound to a thread.
struct ServerDataSet
{
    DirectoryData directory;
    PositionList positions;
    AccessTokenTable permissions;
    FileBoxRights fileBox;
    VoipAccountPool voipPool;
    QList<NoticeRecord> notices;
    // What the database held when it was read (empty when not taken).
    DatabaseFingerprint origin;
};
