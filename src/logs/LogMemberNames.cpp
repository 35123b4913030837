#include "LogMemberNames.h"

LogMemberNames logMemberNames(const MemberList &regular, const MemberList &guest)
{
    LogMemberNames names;
    names.reserve(regular.size() + guest.size());
    // A later row of a duplicated id stands for the member; the member list
    // before the guest list, as the directory looks members up.
    for (const UserInfo &member : guest)
        names.insert(member.id, member.displayName);
    for (const UserInfo &member : regular)
        names.insert(member.id, member.displayName);
    return names;
}
