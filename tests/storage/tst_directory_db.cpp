#include "DbConnection.h"
#include "DirectoryFixture.h"
#include "DirectoryLoader.h"
#include "DirectoryWriter.h"
#include "PositionList.h"
#include "Recordset.h"
#include "ServerDataFixture.h"
#include "TempServerDir.h"
#include "TestDatabase.h"
#include "TracedConnection.h"

#include <algorithm>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The record a member id stands for once the directory holds the data: the
// last row carrying it in the member list, else in the guest list.
UserInfo standsFor(const DirectoryData &data, qint32 id)
{
    for (const MemberList *list : { &data.regularMembers, &data.guestMembers }) {
        for (auto it = list->crbegin(); it != list->crend(); ++it) {
            if (it->id == id)
                return *it;
        }
    }
    return {};
}

UserInfo member(qint32 id, const QString &login, const QString &name = QString())
{
    UserInfo info;
    info.id = id;
    info.loginName = login;
    info.displayName = name;
    info.password = u"pw"_s;
    info.gender = 1;
    return info;
}

// regular: Sales 10 { East 11 { anna rank 2 }, gina }, HQ 20; guest: Forum 50 { gina, gus }
DirectoryData smallDirectory()
{
    DirectoryData data;
    UserInfo anna = member(1, u"anna"_s, u"50%d %s"_s);
    anna.nickname = u"it's;a\\b"_s;
    data.regularMembers = { anna, member(2, u"bert"_s) };
    data.guestMembers = { member(3, u"gina"_s), member(4, u"gus"_s) };
    for (UserInfo &m : data.guestMembers)
        m.isGuest = 1;
    DirectoryNode *sales = data.regularTree.addGroup(data.regularTree.root(), 10, u"Sales"_s);
    DirectoryNode *east = data.regularTree.addGroup(sales, 11, u"East"_s);
    data.regularTree.addMembership(east, 1, 2);
    data.regularTree.addMembership(sales, 3, -1);
    data.regularTree.addGroup(data.regularTree.root(), 20, u"HQ"_s);
    DirectoryNode *forum = data.guestTree.addGroup(data.guestTree.root(), 50, u"Forum"_s);
    data.guestTree.addMembership(forum, 3, -1);
    data.guestTree.addMembership(forum, 4, -1);
    data.groupCounter = 50;
    return data;
}

QStringList table(TestDatabase &db, const QString &sql)
{
    QStringList out;
    for (const QVariantList &row : db.rows(sql)) {
        QStringList cells;
        for (const QVariant &cell : row)
            cells << (cell.isNull() ? u"NULL"_s : cell.toString());
        out << cells.join(u'|');
    }
    return out;
}

QStringList wholeDirectory(TestDatabase &db)
{
    return table(db,
               u"SELECT OGroupID, GroupName, OGroupID_P, Position, Depth, IsGuestGroup FROM [Group] ORDER BY IsGuestGroup, OGroupID"_s)
        + table(db,
            u"SELECT OMemberID, MemberID, MemberName, MemberNickname, Passwd, Gender, bPublic, Email, HP, Address, HomePhone, OfficePhone, BirthDay, bSolar, bAdmin, Description, MemberLevel, IsGuestMember FROM Member ORDER BY IsGuestMember, OMemberID, MemberID"_s)
        + table(db,
            u"SELECT OMemberID, OGroupID, ORankID, Position, IsGuestRelation FROM Relation ORDER BY IsGuestRelation, OGroupID, Position, OMemberID"_s);
}

DirectoryData load(TestDatabase &db)
{
    DirectoryData data;
    DbConnection connection = db.connect();
    DirectoryLoader::load(connection, data);
    return data;
}

void write(TestDatabase &db, const DirectoryData &data, const QList<qint32> &deleted = {})
{
    DbConnection connection = db.connect();
    DirectoryWriter::writeDeletedMembers(connection, deleted);
    DirectoryWriter::writeDirectory(connection, DirectoryContent::of(data));
}

} // namespace

class TestDirectoryDb : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void loadAnomalies();
    void nullFlagLeftoversAreReadOnce();
    void statementStream();
    void roundTrip();
    void positions();
};

void TestDirectoryDb::loadAnomalies()
{
    VELMAR_SQLITE_DATABASE(db);
    DirectoryData data;
    data.groupCounter = 99; // left from an earlier load
    RecordingProgress progress;
    DbConnection connection = db.connect();
    // An empty database first.
    DirectoryLoader::load(connection, data, &progress);
    QCOMPARE(progress.calls,
        QStringList({ u"text 读取用户信息."_s, u"range 0"_s, u"text 读群组信息."_s, u"range 0"_s,
            u"text 添加群组."_s, u"range 0"_s }));
    QVERIFY(data.regularMembers.isEmpty() && data.guestMembers.isEmpty());
    QCOMPARE(data.regularTree.root()->childCount() + data.guestTree.root()->childCount(), 0);
    QCOMPARE(data.groupCounter, 0);

    QVERIFY2(db.execAll(TestDatabase::statementsFrom(u"storage/anomalous-directory.sql"_s)),
        qPrintable(db.errorString()));
    data = DirectoryData();
    progress = RecordingProgress();
    DirectoryLoader::load(connection, data, &progress);

    // IsGuestMember 5 is read as regular and rewritten 0; 7 in Relation likewise.
    QCOMPARE(db.scalar(u"SELECT IsGuestMember FROM Member WHERE OMemberID = 2"_s).toInt(), 0);
    QCOMPARE(db.count(u"Relation"_s, u"IsGuestRelation = 7"_s), 0);

    QStringList regular = dumpMembers(data.regularMembers, u"regular"_s);
    regular.sort(); // PostgreSQL may return an updated row elsewhere
    QCOMPARE(regular,
        QStringList({
            u"regular|1|anna2|Anna Again||pw1b|1|0||||||0|0|||0"_s,
            u"regular|1|anna|Anna|it's|pw1|1|1|anna@x.cn|139|010-1|Road 1|1980-01-02|1|0|010-2|hello|0"_s,
            u"regular|2|five|Five||pw2|0|0||||||0|0|||0"_s,
            // NULL text reads as empty, NULL numbers as 0 (NULL IsGuestMember: regular).
            u"regular|4|nulls||||0|0||||||0|0|||0"_s,
        }));
    QCOMPARE(dumpMembers(data.guestMembers, u"guest"_s),
        QStringList({ u"guest|3|gina|Gina||pw3|0|1||||||1|1|||1"_s }));
    // Both rows of id 1 are listed; the later one stands for the member.
    QCOMPARE(standsFor(data, 1).loginName, u"anna2"_s);
    QCOMPARE(standsFor(data, 1).level, 0);

    // NULL IsGuestGroup is regular; a parent read after its child still takes
    // it; unknown parents put a group at the top of its own tree.
    const QStringList dump = dumpDirectory(data);
    const QStringList groupsAndRelations = dump.mid(5);
    QCOMPARE(groupsAndRelations,
        QStringList({
            u"regular depth 1 parent -1 group 10 Sales"_s,
            u"regular depth 2 parent 10 group 11 East"_s,
            u"regular depth 1 parent -1 group 14 Late parent"_s,
            u"regular depth 2 parent 14 group 13 Early child"_s,
            u"regular depth 1 parent -1 group 12 Orphan"_s,
            u"guest depth 1 parent -100 group 50 Forum"_s,
            u"guest depth 1 parent -100 group 51 Lost guest"_s,
            // Sorted by the stored order; NULL rank reads as 0; the NULL
            // member, the repeated row and the unknown group's row are not
            // loaded; an unknown member's membership is kept.
            u"regular group 11 member 4 rank 1"_s,
            u"regular group 10 member 2 rank 0"_s,
            u"regular group 10 member 1 rank 5"_s,
            u"regular group 12 member 777 rank 1"_s,
            u"guest group 50 member 3 rank 1"_s,
            u"guest group 50 member 1 rank 2"_s,
        }));
    QCOMPARE(data.regularGroupsWithUnknownParent, QList<qint32>({ 12 }));
    QCOMPARE(data.guestGroupsWithUnknownParent, QList<qint32>({ 51 }));
    QCOMPARE(data.groupCounter, 51);
    QCOMPARE(data.regularTree.groupIdsInIndexOrder(), QList<qint32>({ 10, 11, 14, 13, 12 }));
    QCOMPARE(data.regularTree.findMembership(1)->position(), 2);

    QCOMPARE(progress.calls,
        QStringList({ u"text 读取用户信息."_s, u"range 5"_s, u"position"_s, u"text 读群组信息."_s,
            u"range 7"_s, u"position"_s, u"text 添加群组."_s, u"range 9"_s, u"position"_s }));
    QCOMPARE(progress.positions,
        QList<int>({ 1, 2, 3, 4, 5, 1, 2, 3, 4, 5, 6, 7, 1, 2, 3, 4, 5, 6, 7 }));
}

void TestDirectoryDb::nullFlagLeftoversAreReadOnce()
{
    VELMAR_SQLITE_DATABASE(db);
    // Rows written without the partition flag (the guest-tree conversion,
    // older databases), and a NULL row beside the row an earlier save wrote.
    QVERIFY2(db.execAll({
                 MemberInsert + u"(5,'old','','','x',0,0,'','','','','','',0,0,'',NULL,NULL)"_s,
                 MemberInsert + u"(6,'keep','','','x',0,0,'','','','','','',0,0,'',NULL,NULL)"_s,
                 MemberInsert + u"(5,'new','','','x',0,0,'','','','','','',0,0,'',NULL,0)"_s,
                 GroupInsert + u"(20,'HQ',-1,0,1,NULL)"_s,
                 GroupInsert + u"(20,'HQ new',-1,3,1,0)"_s,
                 GroupInsert + u"(21,'Sub',20,0,2,NULL)"_s,
                 RelationInsert + u"(5,20,1,0,0)"_s,
                 RelationInsert + u"(6,21,1,0,NULL)"_s,
             }),
        qPrintable(db.errorString()));
    const DirectoryData first = load(db);
    const QStringList expected { u"regular|5|new|||x|0|0||||||0|0|||0"_s,
        u"regular|6|keep|||x|0|0||||||0|0|||0"_s, u"regular depth 1 parent -1 group 20 HQ new"_s,
        u"regular depth 2 parent 20 group 21 Sub"_s, u"regular group 20 member 5 rank 1"_s };
    QCOMPARE(dumpDirectory(first), expected);
    QCOMPARE(standsFor(first, 5).loginName, u"new"_s);

    // The NULL rows are part of the regular partition: a save replaces them,
    // so every group and member is stored once.
    for (int round = 0; round < 2; ++round) {
        write(db, load(db));
        // A member row the save leaves behind shows below, once the working
        // copy no longer holds its id.
        QCOMPARE(dumpDirectory(load(db)), expected);
        QCOMPARE(db.count(u"[Group]"_s), 2);
    }

    // What the working copy no longer holds does not come back.
    QVERIFY(db.execAll({
        MemberInsert + u"(7,'gone','','','x',0,0,'','','','','','',0,0,'',NULL,NULL)"_s,
        GroupInsert + u"(22,'Gone sub',21,0,3,NULL)"_s,
    }));
    const DirectoryData small = smallDirectory();
    write(db, small, { 7 });
    QCOMPARE(dumpDirectory(load(db)), dumpDirectory(small));
    QCOMPARE(db.count(u"Member"_s), 4);
    QCOMPARE(db.count(u"[Group]"_s), 4);
    // A relation without its flag is never read, so it is not the save's to
    // remove.
    QCOMPARE(db.count(u"Relation"_s, u"IsGuestRelation IS NULL"_s), 1);
}

void TestDirectoryDb::statementStream()
{
    VELMAR_SQLITE_DATABASE(db);
    TracedConnection writing(db, dir.filePath(u"save.sql"_s));
    DirectoryWriter::writeDeletedMembers(writing.connection(), { 8 });
    DirectoryWriter::writeDirectory(writing.connection(), DirectoryContent::of(smallDirectory()));
    const QString groupRow
        = u"INSERT INTO [Group] (OGroupID,GroupName,OGroupID_P,Position,Depth, IsGuestGroup) VALUES  "_s;
    const QString memberRow
        = u"INSERT INTO Member (OMemberID,MemberID,MemberName, MemberNickname, Passwd,Gender,bPublic,Email,HP,Address,HomePhone,OfficePhone,BirthDay,Description,bSolar,bAdmin, IsGuestMember) VALUES  "_s;
    const QString relationRow
        = u"INSERT INTO Relation (OMemberID,OGroupID,ORankID,Position, IsGuestRelation) VALUES  "_s;
    QCOMPARE(writing.statements(),
        QStringList({
            u"DELETE FROM Relation WHERE OGroupID = 8 "_s,
            u"DELETE FROM VoipInfo WHERE OMemberID = 8"_s,
            u"DELETE FROM AccessToken WHERE OMemberID = 8"_s,
            u"DELETE FROM LeavedMemo WHERE OMemberID = 8"_s,
            u"DELETE FROM MyGroup WHERE OMemberID = 8 "_s,
            u"DELETE FROM MyMember WHERE OMemberID = 8 OR OMemberID_O = 8 "_s,
            u"DELETE FROM Antenna WHERE OMemberID = 8 OR OMemberID_O = 8 "_s,
            u"DELETE FROM [Group] where IsGuestGroup=0"_s,
            u"DELETE FROM [Group] where IsGuestGroup IS NULL"_s,
            // Each group's sub-groups together, parents before children.
            groupRow + u"('10' ,'Sales' ,'-1','0','1', 0)"_s,
            groupRow + u"('20' ,'HQ' ,'-1','1','1', 0)"_s,
            groupRow + u"('11' ,'East' ,'10','0','2', 0)"_s,
            u"DELETE FROM [Group] where IsGuestGroup=1"_s,
            groupRow + u"('50' ,'Forum' ,'-100','0','1', 1)"_s,
            u"DELETE FROM Member where IsGuestMember=0"_s,
            u"DELETE FROM Member where IsGuestMember IS NULL"_s,
            memberRow
                + u"( '1', 'anna', '50%d %s', 'it###VELMAR-QUOTATION###s###VELMAR-SEMICOLON###a###VELMAR-BACKSLASH###b', 'pw', '1', '0', '', '', '', '', '', '', '', '0', '0', 0 )"_s,
            memberRow
                + u"( '2', 'bert', '', '', 'pw', '1', '0', '', '', '', '', '', '', '', '0', '0', 0 )"_s,
            u"DELETE FROM Member where IsGuestMember=1"_s,
            memberRow
                + u"( '3', 'gina', '', '', 'pw', '1', '0', '', '', '', '', '', '', '', '0', '0', 1 )"_s,
            memberRow
                + u"( '4', 'gus', '', '', 'pw', '1', '0', '', '', '', '', '', '', '', '0', '0', 1 )"_s,
            u"DELETE FROM Relation where IsGuestRelation=0"_s,
            // Each group's memberships together, parents before children.
            relationRow + u"('3' ,'10' ,'-1','0', 0)"_s,
            relationRow + u"('1' ,'11' ,'2','0', 0)"_s,
            u"DELETE FROM Relation where IsGuestRelation=1"_s,
            relationRow + u"('3' ,'50' ,'-1','0', 1)"_s,
            relationRow + u"('4' ,'50' ,'-1','1', 1)"_s,
            // Regular members in the order met, then guest-only ones.
            u"UPDATE MEMBER SET MemberLevel = 3 \t\t\t\t\t\t\twhere OmemberID = 3"_s,
            u"UPDATE MEMBER SET MemberLevel = 2 \t\t\t\t\t\t\twhere OmemberID = 1"_s,
            u"UPDATE MEMBER SET MemberLevel = 1 \t\t\t\t\t\t\twhere OmemberID = 4"_s,
        }));

    TracedConnection reading(db, dir.filePath(u"load.sql"_s));
    DirectoryData data;
    DirectoryLoader::load(reading.connection(), data);
    QCOMPARE(reading.statements(),
        QStringList({
            u"SELECT COUNT(*) FROM Member"_s,
            u"Update Member Set IsGuestMember = 0 WHERE IsGuestMember <> 0 AND IsGuestMember <> 1"_s,
            u"SELECT MemberID,MemberName,MemberNickname,Passwd,Gender,bPublic,Email,HP,Homephone,Address,HomePhone,BirthDay,bSolar,bAdmin,OMemberID,Officephone,Description, MemberLevel, IsGuestMember FROM Member"_s,
            u"SELECT COUNT(*) FROM [Group]"_s,
            u"SELECT OGroupID,GroupName,Position,OGroupID_P FROM [Group]  where isGuestGroup = 0 OR isGuestGroup IS NULL ORDER BY Depth, Position"_s,
            u"SELECT OGroupID,GroupName,Position,OGroupID_P FROM [Group]  where isGuestGroup=1 ORDER BY Depth,Position"_s,
            u"SELECT COUNT(*) FROM Relation"_s,
            u"Update Relation Set IsGuestRelation = 0 WHERE IsGuestRelation <> 0 AND IsGuestRelation <> 1"_s,
            // Groups in the order they were read: by depth, then position.
            u"SELECT OMemberID,ORankID,Position FROM Relation WHERE OGroupID=10 and OMemberID is not null  and IsGuestRelation=0"_s,
            u"SELECT OMemberID,ORankID,Position FROM Relation WHERE OGroupID=20 and OMemberID is not null  and IsGuestRelation=0"_s,
            u"SELECT OMemberID,ORankID,Position FROM Relation WHERE OGroupID=11 and OMemberID is not null  and IsGuestRelation=0"_s,
            u"SELECT OMemberID,ORankID,Position FROM Relation WHERE OGroupID=50 and OMemberID is not null  and IsGuestRelation=1"_s,
        }));
}

void TestDirectoryDb::roundTrip()
{
    VELMAR_SQLITE_DATABASE(db);
    QVERIFY2(db.execAll(TestDatabase::statementsFrom(u"storage/anomalous-directory.sql"_s)),
        qPrintable(db.errorString()));
    const DirectoryData first = load(db);
    write(db, first);
    const QStringList afterFirstWrite = wholeDirectory(db);
    const DirectoryData second = load(db);
    QCOMPARE(dumpDirectory(second), dumpDirectory(first));
    QCOMPARE(standsFor(second, 1).loginName, u"anna2"_s);
    // The group with the unknown parent is now an ordinary top-level group.
    QVERIFY(second.regularGroupsWithUnknownParent.isEmpty());
    write(db, second);
    QCOMPARE(wholeDirectory(db), afterFirstWrite);
}

void TestDirectoryDb::positions()
{
    VELMAR_SQLITE_DATABASE(db);
    QVERIFY(db.execAll({ u"INSERT INTO Rank (ORankID, RankName) VALUES (3, '主任')"_s,
        u"INSERT INTO Rank (ORankID, RankName) VALUES (1, '职员')"_s,
        u"INSERT INTO Rank (ORankID, RankName) VALUES (2, NULL)"_s }));
    PositionList list;
    list.defaultId = 3;
    {
        DbConnection connection = db.connect();
        list.load(connection);
    }
    // In the order the rows arrive, not sorted; the default is kept.
    QCOMPARE(
        list.positions, QList<Position>({ { 3, u"主任"_s }, { 1, u"职员"_s }, { 2, QString() } }));
    QCOMPARE(list.defaultId, 3);

    list.positions[2].name = u"100% 经理"_s;
    list.positions.append({ list.newPositionId(), list.newPositionName() });
    {
        DbConnection connection = db.connect();
        list.save(connection);
    }
    PositionList reloaded;
    {
        DbConnection connection = db.connect();
        reloaded.load(connection);
    }
    QCOMPARE(reloaded.positions, list.positions);
    // A quote in a name never reaches the writer: the save's preflight refuses it.
}

QTEST_GUILESS_MAIN(TestDirectoryDb)
#include "tst_directory_db.moc"
