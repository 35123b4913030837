#pragma once

#include <QtGlobal>

// A group's right on a folder; authority is an AuthorityCode value.
struct tagGroupAuthority
{
    qint32 folderId = -1;
    qint32 groupId = -1;
    qint32 authority = 0;

    bool operator==(const tagGroupAuthority &) const = default;
};
