#include "DirectoryLoader.h"

#include "DbConnection.h"
#include "EscapeMarkers.h"
#include "LoadProgress.h"
#include "Recordset.h"
#include "SqlTemplate.h"

#include <algorithm>
#include <deque>
#include <QHash>
#include <QSet>

using namespace Qt::StringLiterals;

namespace {

class Progress
{
public:
    explicit Progress(LoadProgress *sink)
        : m_sink(sink)
    { }
    void start(const QString &text)
    {
        if (m_sink)
            m_sink->setText(text);
    }
    void range(int maximum)
    {
        m_done = 0;
        if (m_sink)
            m_sink->setRange(maximum);
    }
    void advance()
    {
        ++m_done;
        if (m_sink)
            m_sink->setPosition(m_done);
    }

private:
    LoadProgress *m_sink;
    int m_done = 0;
};

// Integer columns may be NULL (no NOT NULL anywhere); they read as 0. Text
// that is no number still fails, so that nothing is saved over it.
qint32 intOrZero(const Recordset &set, int column)
{
    return set.intField(column, 0);
}

int readCount(DbConnection &connection, const QString &sql)
{
    Recordset set = connection.execute(sql);
    const int count = set.isEOF() ? 0 : set.intField(0);
    set.close();
    return count;
}

void readMembers(DbConnection &connection, DirectoryData &data, Progress &progress)
{
    Recordset set = connection.execute(
        u"SELECT MemberID,MemberName,MemberNickname,Passwd,Gender,bPublic,Email,HP,Homephone,Address,HomePhone,BirthDay,bSolar,bAdmin,OMemberID,Officephone,Description, MemberLevel, IsGuestMember FROM Member"_s);
    if (set.isEOF()) {
        set.close();
        return;
    }
    // HomePhone is named twice (also as Homephone): the first column serves.
    const int memberId = set.fieldIndex(u"MemberID"), memberName = set.fieldIndex(u"MemberName"),
              nickname = set.fieldIndex(u"MemberNickname"), passwd = set.fieldIndex(u"Passwd"),
              gender = set.fieldIndex(u"Gender"), bPublic = set.fieldIndex(u"bPublic"),
              email = set.fieldIndex(u"Email"), hp = set.fieldIndex(u"HP"),
              homePhone = set.fieldIndex(u"HomePhone"), address = set.fieldIndex(u"Address"),
              birthDay = set.fieldIndex(u"BirthDay"), bSolar = set.fieldIndex(u"bSolar"),
              bAdmin = set.fieldIndex(u"bAdmin"), oMemberId = set.fieldIndex(u"OMemberID"),
              officePhone = set.fieldIndex(u"Officephone"),
              description = set.fieldIndex(u"Description"),
              memberLevel = set.fieldIndex(u"MemberLevel"),
              isGuestMember = set.fieldIndex(u"IsGuestMember");
    QSet<qint32> flaggedRegular; // ids read from a row with IsGuestMember 0
    QList<qint32> nullFlagRows; // rows of regularMembers read with a NULL flag
    while (!set.isEOF()) {
        UserInfo member;
        member.loginName = set.textField(memberId);
        member.displayName = set.textField(memberName);
        member.nickname = EscapeMarkers::unescape(set.textField(nickname));
        member.password = set.textField(passwd);
        member.gender = intOrZero(set, gender);
        member.bPublic = intOrZero(set, bPublic);
        member.email = set.textField(email);
        member.mobile = set.textField(hp);
        member.homePhone = set.textField(homePhone);
        member.address = set.textField(address);
        member.birthday = set.textField(birthDay);
        member.bSolar = intOrZero(set, bSolar);
        member.bAdmin = intOrZero(set, bAdmin);
        member.id = intOrZero(set, oMemberId);
        member.officePhone = set.textField(officePhone);
        member.description = set.textField(description);
        member.level = intOrZero(set, memberLevel);
        // The UPDATE before has made every flag 0 or 1; a NULL (which that
        // UPDATE cannot reach) or a row changed meanwhile counts as regular.
        const bool nullFlag = set.isNull(isGuestMember);
        member.isGuest = nullFlag ? 0 : (set.intField(isGuestMember) == 1 ? 1 : 0);
        if (nullFlag) {
            nullFlagRows.append(qint32(data.regularMembers.size()));
        } else if (!member.isGuest) {
            flaggedRegular.insert(member.id);
        }
        (member.isGuest ? data.guestMembers : data.regularMembers).append(std::move(member));
        progress.advance();
        set.moveNext();
    }
    set.close();

    // The save's "DELETE FROM Member where IsGuestMember=0" cannot remove a
    // row whose flag is NULL, so after a save such a member is in the table
    // twice: the old NULL row and the row the save wrote. Listing both would
    // make every save add another copy; the written row stands for it.
    if (nullFlagRows.isEmpty())
        return;
    QSet<qint32> dropRows;
    for (const qint32 row : std::as_const(nullFlagRows)) {
        if (flaggedRegular.contains(data.regularMembers.at(row).id))
            dropRows.insert(row);
    }
    if (dropRows.isEmpty())
        return;
    MemberList kept;
    kept.reserve(data.regularMembers.size() - dropRows.size());
    for (qint32 row = 0; row < qint32(data.regularMembers.size()); ++row) {
        if (!dropRows.contains(row))
            kept.append(std::move(data.regularMembers[row]));
    }
    data.regularMembers = std::move(kept);
}

// Reads one tree's groups. Rows come by depth, so a parent normally precedes
// its children. A group whose parent comes later anyway (inconsistent Depth)
// waits for it. One whose parent never comes (no such group in this tree, or
// a cycle of groups naming each other) is put at the top of the tree rather
// than dropped: it stays visible and editable, keeps its sub-groups and
// memberships, and the next save writes it as a top-level group instead of
// losing it with everything below it.
class GroupReader
{
public:
    GroupReader(DirectoryData &data, DirectoryTree &tree, QList<qint32> &unknownParent)
        : m_data(data)
        , m_tree(tree)
        , m_unknownParent(unknownParent)
    { }
    GroupReader(const GroupReader &) = delete;
    GroupReader &operator=(const GroupReader &) = delete;
    ~GroupReader() { placeWaiting(); }

    void read(DbConnection &connection, const QString &sql, Progress &progress)
    {
        Recordset set = connection.execute(sql);
        int idColumn = -1, nameColumn = -1, positionColumn = -1, parentColumn = -1;
        if (!set.isEOF()) {
            idColumn = set.fieldIndex(u"OGroupID");
            nameColumn = set.fieldIndex(u"GroupName");
            positionColumn = set.fieldIndex(u"Position");
            parentColumn = set.fieldIndex(u"OGroupID_P");
        }
        while (!set.isEOF()) {
            Pending group { intOrZero(set, idColumn), set.textField(nameColumn),
                intOrZero(set, positionColumn), intOrZero(set, parentColumn), m_nextSeq++ };
            if (DirectoryNode *parent = m_tree.findGroup(group.parentId))
                place(parent, std::move(group));
            else
                wait(std::move(group));
            progress.advance();
            set.moveNext();
        }
        set.close();
        placeWaiting();
    }

private:
    struct Pending
    {
        qint32 id;
        QString name;
        qint32 position;
        qint32 parentId;
        int seq; // read order
    };

    void wait(Pending group)
    {
        m_waitingOrder.push_back({ group.seq, group.parentId, group.id });
        m_waiting[group.parentId].append(std::move(group));
    }

    void place(DirectoryNode *parent, Pending group)
    {
        std::deque<std::pair<DirectoryNode *, Pending>> queue;
        queue.emplace_back(parent, std::move(group));
        while (!queue.empty()) {
            auto [under, next] = std::move(queue.front());
            queue.pop_front();
            // One node per group id and tree: the save's "DELETE FROM [Group]
            // where IsGuestGroup=0" leaves a row whose flag is NULL in place, so
            // after a save that group is read twice; a node per row would make
            // every save add another copy. The later row (the one written last)
            // gives the name and the stored order.
            DirectoryNode *placed = m_tree.findGroup(next.id);
            if (placed && placed->isGroup()) {
                m_tree.setName(placed, next.name);
                m_tree.setPosition(placed, next.position);
            } else {
                placed = m_tree.addGroup(under, next.id, next.name, next.position);
            }
            m_data.noteGroupId(next.id);
            m_placedSeq.insert(next.seq);
            auto children = m_waiting.find(next.id);
            if (children == m_waiting.end())
                continue;
            QList<Pending> waiting = std::move(children.value());
            m_waiting.erase(children);
            for (Pending &child : waiting)
                queue.emplace_back(placed, std::move(child));
        }
    }

    // What still waits never reaches the top through its parents: its parent
    // is no group of this tree, or the parents run in a circle. Those whose
    // parent is missing go to the top first, each with what waits below it;
    // then each circle is cut at one of its groups, which goes to the top with
    // the rest of the circle and everything below it, so that only the link
    // closing the circle is lost. Both in read order, without recursion.
    void placeWaiting()
    {
        QHash<qint32, qint32> parentOf; // waiting group id -> its parent's
        QHash<qint32, qsizetype> waitingIndex; // waiting group id -> m_waitingOrder
        for (qsizetype i = 0; i < qsizetype(m_waitingOrder.size()); ++i) {
            parentOf.insert(m_waitingOrder[i].id, m_waitingOrder[i].parentId);
            waitingIndex.insert(m_waitingOrder[i].id, i);
        }
        for (const Waiting &waiting : m_waitingOrder) {
            if (!parentOf.contains(waiting.parentId))
                placeAtTop(waiting);
        }
        QSet<qint32> seen;
        for (const Waiting &waiting : m_waitingOrder) {
            if (m_placedSeq.contains(waiting.seq))
                continue;
            // Up the parents to the first group met twice: it is on the circle.
            seen.clear();
            qint32 id = waiting.id;
            while (parentOf.contains(id) && !seen.contains(id)) {
                seen.insert(id);
                id = parentOf.value(id);
            }
            const qsizetype cut = waitingIndex.value(id, -1);
            if (cut >= 0 && !m_placedSeq.contains(m_waitingOrder[size_t(cut)].seq))
                placeAtTop(m_waitingOrder[size_t(cut)]);
            if (!m_placedSeq.contains(waiting.seq))
                placeAtTop(waiting); // ids used twice can leave it out of its circle
        }
        m_waitingOrder.clear();
        m_waiting.clear();
    }

    struct Waiting
    {
        int seq;
        qint32 parentId;
        qint32 id;
    };

    void placeAtTop(const Waiting &waiting)
    {
        if (m_placedSeq.contains(waiting.seq))
            return;
        auto list = m_waiting.find(waiting.parentId);
        if (list == m_waiting.end())
            return;
        const int seq = waiting.seq;
        auto found = std::find_if(
            list->begin(), list->end(), [seq](const Pending &p) { return p.seq == seq; });
        if (found == list->end())
            return;
        Pending group = std::move(*found);
        list->erase(found);
        if (list->isEmpty())
            m_waiting.erase(list);
        m_unknownParent.append(group.id);
        place(m_tree.root(), std::move(group));
    }

    DirectoryData &m_data;
    DirectoryTree &m_tree;
    QList<qint32> &m_unknownParent;
    QHash<qint32, QList<Pending>> m_waiting; // by the parent id they wait for
    std::vector<Waiting> m_waitingOrder; // in read order
    QSet<int> m_placedSeq;
    int m_nextSeq = 0;
};

void readRelations(
    DbConnection &connection, DirectoryTree &tree, const SqlTemplate &query, Progress &progress)
{
    // Indexed groups in the order they were first indexed, that is as the
    // group queries returned them.
    const QList<qint32> groupIds = tree.groupIdsInIndexOrder();
    for (const qint32 groupId : groupIds) {
        DirectoryNode *group = tree.findGroup(groupId);
        Recordset set = connection.execute(query.format({ qint64(groupId) }));
        int memberColumn = -1, rankColumn = -1, positionColumn = -1;
        if (!set.isEOF()) {
            memberColumn = set.fieldIndex(u"OMemberID");
            rankColumn = set.fieldIndex(u"ORankID");
            positionColumn = set.fieldIndex(u"Position");
        }
        while (!set.isEOF()) {
            // A membership of a member missing from Member is kept (shown by
            // its id) so that the save writes it back; a second membership of
            // the same member directly under the same group is dropped.
            tree.addMembership(group, intOrZero(set, memberColumn), intOrZero(set, rankColumn),
                intOrZero(set, positionColumn));
            progress.advance();
            set.moveNext();
        }
        set.close();
        // The query has no ORDER BY; show and save members in their stored order.
        tree.sortMembershipsByPosition(group);
    }
}

} // namespace

void DirectoryLoader::load(DbConnection &connection, DirectoryData &data, LoadProgress *sink)
{
    data.clear();
    Progress progress(sink);

    progress.start(u"读取用户信息."_s);
    const int members = readCount(connection, u"SELECT COUNT(*) FROM Member"_s);
    progress.range(members);
    data.regularMembers.reserve(members);
    connection.execute(
        u"Update Member Set IsGuestMember = 0 WHERE IsGuestMember <> 0 AND IsGuestMember <> 1"_s);
    readMembers(connection, data, progress);

    progress.start(u"读群组信息."_s);
    progress.range(readCount(connection, u"SELECT COUNT(*) FROM [Group]"_s));
    {
        GroupReader regular(data, data.regularTree, data.regularGroupsWithUnknownParent);
        regular.read(connection,
            u"SELECT OGroupID,GroupName,Position,OGroupID_P FROM [Group]  where isGuestGroup = 0 OR isGuestGroup IS NULL ORDER BY Depth, Position"_s,
            progress);
    }
    {
        GroupReader guest(data, data.guestTree, data.guestGroupsWithUnknownParent);
        guest.read(connection,
            u"SELECT OGroupID,GroupName,Position,OGroupID_P FROM [Group]  where isGuestGroup=1 ORDER BY Depth,Position"_s,
            progress);
    }

    progress.start(u"添加群组."_s);
    progress.range(readCount(connection, u"SELECT COUNT(*) FROM Relation"_s));
    connection.execute(
        u"Update Relation Set IsGuestRelation = 0 WHERE IsGuestRelation <> 0 AND IsGuestRelation <> 1"_s);
    static const SqlTemplate regularRelations(
        u"SELECT OMemberID,ORankID,Position FROM Relation WHERE OGroupID=%d and OMemberID is not "
        u"null  and IsGuestRelation=0");
    static const SqlTemplate guestRelations(
        u"SELECT OMemberID,ORankID,Position FROM Relation WHERE OGroupID=%d and OMemberID is not "
        u"null  and IsGuestRelation=1");
    readRelations(connection, data.regularTree, regularRelations, progress);
    readRelations(connection, data.guestTree, guestRelations, progress);
}
