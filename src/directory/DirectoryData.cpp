#include "DirectoryData.h"

void DirectoryData::clear()
{
    regularMembers.clear();
    guestMembers.clear();
    regularTree.clear();
    guestTree.clear();
    groupCounter = 0;
    regularGroupsWithUnknownParent.clear();
    guestGroupsWithUnknownParent.clear();
}

void DirectoryData::noteGroupId(qint32 id)
{
    if (id > groupCounter)
        groupCounter = id;
}

DirectoryContent DirectoryContent::of(const DirectoryData &data)
{
    return { data.regularMembers, data.guestMembers, data.regularTree, data.guestTree };
}
