#pragma once

#include "UserInfo.h"

#include <QHash>
#include <QString>

// The member names a log search shows, by member id: a copy taken from the
// directory when the search starts, so the reading thread never touches the
// directory the user-interface thread edits.
using LogMemberNames = QHash<qint32, QString>;

LogMemberNames logMemberNames(const MemberList &regular, const MemberList &guest);
