#include "LogMemberNames.h"

LogMemberNames logMemberNames(const MemberIndex &index)
{
    LogMemberNames names;
    names.reserve(index.size());
    for (auto it = index.cbegin(); it != index.cend(); ++it)
        names.insert(it.key(), it->displayName);
    return names;
}
