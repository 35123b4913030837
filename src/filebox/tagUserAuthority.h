#pragma once

#include <QtGlobal>

// A member's right on a folder; authority is an AuthorityCode value.
struct tagUserAuthority
{
    qint32 folderId = -1;
    qint32 memberId = -1;
    qint32 authority = 0;

    bool operator==(const tagUserAuthority &) const = default;
};
