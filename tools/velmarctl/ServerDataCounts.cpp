#include "ServerDataCounts.h"

#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "NoticeListModel.h"
#include "PositionListModel.h"

#include <QSet>

using namespace Qt::StringLiterals;

QJsonObject ServerDataCounts::of(const CVelmarManagerDoc &data)
{
    const Directory &directory = *data.directory();
    const int regularMembers = directory.regularMembers()->memberCount();
    const int guestMembers = directory.guestMembers()->memberCount();
    // Distinct ids: a duplicated id is one member to everything that looks
    // members up.
    QSet<qint32> ids;
    ids.reserve(regularMembers + guestMembers);
    for (const bool guest : { false, true }) {
        const MemberRows &rows = directory.memberRows(guest);
        for (int row = 0; row < rows.count(); ++row)
            ids.insert(rows.at(row).id);
    }
    int freeAccounts = 0;
    for (const VoipAccountPool::Entry &entry : data.voipPool().entries())
        freeAccounts += entry.isFree() ? 1 : 0;

    return QJsonObject {
        { u"members"_s,
            QJsonObject { { u"regular"_s, regularMembers }, { u"guest"_s, guestMembers },
                { u"total"_s, regularMembers + guestMembers }, { u"index"_s, int(ids.size()) } } },
        { u"groups"_s,
            QJsonObject { { u"regular"_s, directory.regularTree()->tree().groupCount() },
                { u"guest"_s, directory.guestTree()->tree().groupCount() } } },
        { u"memberships"_s,
            QJsonObject { { u"regular"_s, directory.regularTree()->tree().membershipCount() },
                { u"guest"_s, directory.guestTree()->tree().membershipCount() } } },
        { u"positions"_s, data.positions()->list().count() },
        { u"defaultPosition"_s, data.positions()->list().defaultId },
        { u"accessTokens"_s, int(data.permissions().tokens().size()) },
        { u"voipAccounts"_s, int(data.permissions().voipAccounts().size()) },
        { u"pool"_s,
            QJsonObject { { u"total"_s, data.voipPool().size() }, { u"free"_s, freeAccounts } } },
        { u"folders"_s, int(data.fileBox().folders().size()) },
        { u"groupRights"_s, int(data.fileBox().groupRights().size()) },
        { u"memberRights"_s, int(data.fileBox().memberRights().size()) },
        { u"notices"_s, data.notices()->rowCount() },
    };
}
