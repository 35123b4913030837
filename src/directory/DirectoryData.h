#pragma once

#include "DirectoryTree.h"
#include "UserInfo.h"

#include <QList>

// The whole directory as plain data, filled by DirectoryLoader on the loading
// thread and adopted by Directory on the user-interface thread.
struct DirectoryData
{
    MemberList regularMembers; // IsGuestMember 0 (and anything but 1), in load order
    MemberList guestMembers; // IsGuestMember 1, in load order
    DirectoryTree regularTree { DirectoryTree::Kind::Regular };
    DirectoryTree guestTree { DirectoryTree::Kind::Guest };
    // The largest group id ever inserted into either tree (0 while none).
    qint32 groupCounter = 0;
    // Groups whose parent id named no group of their tree (nor the root marker):
    // they were placed at the top of their tree, see DirectoryLoader.
    QList<qint32> regularGroupsWithUnknownParent;
    QList<qint32> guestGroupsWithUnknownParent;

    void clear();
    // Records a group id in the group counter.
    void noteGroupId(qint32 id);
};

// What the save writes of the directory, borrowed from wherever it is held:
// the loaded data or the document's working copy.
struct DirectoryContent
{
    MemberList regularMembers;
    MemberList guestMembers;
    const DirectoryTree &regularTree;
    const DirectoryTree &guestTree;

    static DirectoryContent of(const DirectoryData &data);
};
