#include "DirectoryWriter.h"

#include "DbConnection.h"
#include "DirectoryData.h"
#include "EscapeMarkers.h"
#include "Recordset.h"
#include "SqlTemplate.h"

#include <QHash>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// Walks the containers of a tree parents first. The stored Position of a
// group or a membership is its place among the siblings of its own kind, and
// a group's Depth its level below the root (1 at the top): both come from the
// tree as it stands, so moves made while editing are what gets saved.
template<typename Visit> void walkContainers(const DirectoryTree &tree, Visit visit)
{
    std::vector<std::pair<const DirectoryNode *, int>> pending { { tree.root(), 0 } };
    while (!pending.empty()) {
        auto [container, depth] = pending.back();
        pending.pop_back();
        visit(container, depth);
        // Pushed in reverse so that the first sub-group is walked next.
        for (int row = container->childCount() - 1; row >= 0; --row) {
            const DirectoryNode *child = container->child(row);
            if (child->isGroup())
                pending.emplace_back(child, depth + 1);
        }
    }
}

void writeGroups(DbConnection &connection, const DirectoryTree &tree, const SqlTemplate &insert)
{
    walkContainers(tree, [&](const DirectoryNode *container, int depth) {
        qint64 position = 0;
        for (int row = 0; row < container->childCount(); ++row) {
            const DirectoryNode *group = container->child(row);
            if (!group->isGroup())
                continue;
            connection.execute(insert.format({ qint64(group->id()), QStringView(group->name()),
                qint64(container->id()), position++, qint64(depth + 1) }));
        }
    });
}

void writeMembers(DbConnection &connection, const MemberList &members, const SqlTemplate &insert)
{
    for (const UserInfo &m : members) {
        const QString nickname = EscapeMarkers::escape(m.nickname);
        connection.execute(
            insert.format({ qint64(m.id), QStringView(m.loginName), QStringView(m.displayName),
                QStringView(nickname), QStringView(m.password), qint64(m.gender), qint64(m.bPublic),
                QStringView(m.email), QStringView(m.mobile), QStringView(m.address),
                QStringView(m.homePhone), QStringView(m.officePhone), QStringView(m.birthday),
                QStringView(m.description), qint64(m.bSolar), qint64(m.bAdmin) }));
    }
}

// Which trees each member has a membership in, and the order in which each
// member was first met in each tree (the order the levels are written in).
struct Placement
{
    static constexpr quint8 Regular = 1;
    static constexpr quint8 Guest = 2;
    QHash<qint32, quint8> trees;
    std::vector<qint32> regularOrder;
    std::vector<qint32> guestOrder;
};

void writeRelations(DbConnection &connection, const DirectoryTree &tree, const SqlTemplate &insert,
    Placement &placement)
{
    const quint8 bit = tree.isGuest() ? Placement::Guest : Placement::Regular;
    std::vector<qint32> &order = tree.isGuest() ? placement.guestOrder : placement.regularOrder;
    walkContainers(tree, [&](const DirectoryNode *container, int) {
        qint64 position = 0;
        for (int row = 0; row < container->childCount(); ++row) {
            const DirectoryNode *membership = container->child(row);
            if (!membership->isMembership())
                continue;
            connection.execute(insert.format({ qint64(membership->id()), qint64(container->id()),
                qint64(membership->rankId()), position++ }));
            quint8 &trees = placement.trees[membership->id()];
            if (!(trees & bit)) {
                trees |= bit;
                order.push_back(membership->id());
            }
        }
    });
}

} // namespace

void DirectoryWriter::writeDeletedMembers(DbConnection &connection, const QList<qint32> &deletedIds)
{
    // The first statement filters Relation by its group column although it is
    // handed the member id; the relation partitions are rewritten anyway.
    static const SqlTemplate relation(u"DELETE FROM Relation WHERE OGroupID = %d ");
    static const SqlTemplate voipInfo(u"DELETE FROM VoipInfo WHERE OMemberID = %d");
    static const SqlTemplate accessToken(u"DELETE FROM AccessToken WHERE OMemberID = %d");
    static const SqlTemplate leavedMemo(u"DELETE FROM LeavedMemo WHERE OMemberID = %d");
    static const SqlTemplate myGroup(u"DELETE FROM MyGroup WHERE OMemberID = %d ");
    static const SqlTemplate myMember(
        u"DELETE FROM MyMember WHERE OMemberID = %d OR OMemberID_O = %d ");
    static const SqlTemplate antenna(
        u"DELETE FROM Antenna WHERE OMemberID = %d OR OMemberID_O = %d ");
    for (const qint32 id : deletedIds) {
        connection.execute(relation.format({ qint64(id) }));
        connection.execute(voipInfo.format({ qint64(id) }));
        connection.execute(accessToken.format({ qint64(id) }));
        connection.execute(leavedMemo.format({ qint64(id) }));
        connection.execute(myGroup.format({ qint64(id) }));
        connection.execute(myMember.format({ qint64(id), qint64(id) }));
        connection.execute(antenna.format({ qint64(id), qint64(id) }));
    }
}

void DirectoryWriter::writeDirectory(DbConnection &connection, const DirectoryContent &content)
{
    static const SqlTemplate regularGroup(
        u"INSERT INTO [Group] (OGroupID,GroupName,OGroupID_P,Position,Depth, IsGuestGroup) VALUES  "
        u"('%d' ,'%s' ,'%d','%d','%d', 0)");
    static const SqlTemplate guestGroup(
        u"INSERT INTO [Group] (OGroupID,GroupName,OGroupID_P,Position,Depth, IsGuestGroup) VALUES  "
        u"('%d' ,'%s' ,'%d','%d','%d', 1)");
    static const SqlTemplate regularMember(
        u"INSERT INTO Member (OMemberID,MemberID,MemberName, MemberNickname, "
        u"Passwd,Gender,bPublic,Email,HP,Address,HomePhone,OfficePhone,BirthDay,Description,bSolar,"
        u"bAdmin, IsGuestMember) VALUES  ( '%d', '%s', '%s', '%s', '%s', '%d', '%d', '%s', '%s', "
        u"'%s', '%s', '%s', '%s', '%s', '%d', '%d', 0 )");
    static const SqlTemplate guestMember(
        u"INSERT INTO Member (OMemberID,MemberID,MemberName, MemberNickname, "
        u"Passwd,Gender,bPublic,Email,HP,Address,HomePhone,OfficePhone,BirthDay,Description,bSolar,"
        u"bAdmin, IsGuestMember) VALUES  ( '%d', '%s', '%s', '%s', '%s', '%d', '%d', '%s', '%s', "
        u"'%s', '%s', '%s', '%s', '%s', '%d', '%d', 1 )");
    static const SqlTemplate regularRelation(
        u"INSERT INTO Relation (OMemberID,OGroupID,ORankID,Position, IsGuestRelation) VALUES  "
        u"('%d' ,'%d' ,'%d','%d', 0)");
    static const SqlTemplate guestRelation(
        u"INSERT INTO Relation (OMemberID,OGroupID,ORankID,Position, IsGuestRelation) VALUES  "
        u"('%d' ,'%d' ,'%d','%d', 1)");
    static const SqlTemplate level1(
        u"UPDATE MEMBER SET MemberLevel = 1 \t\t\t\t\t\t\twhere OmemberID = %d");
    static const SqlTemplate level2(
        u"UPDATE MEMBER SET MemberLevel = 2 \t\t\t\t\t\t\twhere OmemberID = %d");
    static const SqlTemplate level3(
        u"UPDATE MEMBER SET MemberLevel = 3 \t\t\t\t\t\t\twhere OmemberID = %d");

    // The load reads a NULL flag as regular (rows written without the column
    // by the guest-tree conversion, or older than it), so those rows belong
    // to the regular partition too: left in place, a deleted group would come
    // back and a kept one would be stored twice.
    connection.execute(u"DELETE FROM [Group] where IsGuestGroup=0"_s);
    connection.execute(u"DELETE FROM [Group] where IsGuestGroup IS NULL"_s);
    writeGroups(connection, content.regularTree, regularGroup);
    connection.execute(u"DELETE FROM [Group] where IsGuestGroup=1"_s);
    writeGroups(connection, content.guestTree, guestGroup);

    connection.execute(u"DELETE FROM Member where IsGuestMember=0"_s);
    connection.execute(u"DELETE FROM Member where IsGuestMember IS NULL"_s);
    writeMembers(connection, content.regularMembers, regularMember);
    connection.execute(u"DELETE FROM Member where IsGuestMember=1"_s);
    writeMembers(connection, content.guestMembers, guestMember);

    Placement placement;
    placement.trees.reserve(content.regularMembers.size() + content.guestMembers.size());
    connection.execute(u"DELETE FROM Relation where IsGuestRelation=0"_s);
    writeRelations(connection, content.regularTree, regularRelation, placement);
    connection.execute(u"DELETE FROM Relation where IsGuestRelation=1"_s);
    writeRelations(connection, content.guestTree, guestRelation, placement);

    // A member in no group keeps the level its row was inserted with (none).
    for (const qint32 id : placement.regularOrder) {
        const bool alsoGuest = placement.trees.value(id) & Placement::Guest;
        connection.execute((alsoGuest ? level3 : level2).format({ qint64(id) }));
    }
    for (const qint32 id : placement.guestOrder) {
        if (!(placement.trees.value(id) & Placement::Regular))
            connection.execute(level1.format({ qint64(id) }));
    }
}
