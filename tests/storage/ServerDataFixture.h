#pragma once

#include "ServerDataLoader.h"

#include <QList>
#include <QString>
#include <QStringList>

class MessageService;
class CVelmarManagerDoc;
class SqlTrace;
class TempServerDir;
class TestDatabase;
struct ServerDataSet;

// The INSERT heads of the directory's tables, every column named.
inline const QString MemberInsert
    = QStringLiteral("INSERT INTO Member (OMemberID, MemberID, MemberName, MemberNickname, Passwd, "
                     "Gender, bPublic, Email, HP, Address, HomePhone, OfficePhone, BirthDay, "
                     "bSolar, bAdmin, Description, MemberLevel, IsGuestMember) VALUES ");
inline const QString GroupInsert = QStringLiteral(
    "INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, IsGuestGroup) VALUES ");
inline const QString RelationInsert = QStringLiteral(
    "INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES ");

// A server database with something in every table the console reads, and the
// anomalies the load has to live with (a guest flag of 5, a relation flag of
// 7, a relation without member, a member id used twice, a NULL group flag).
//
//   Member: regular anna(1) bert(2, flag 5) carl(3, in no group) dup(6) dup2(6);
//           guest gina(4) gus(5)
//   [Group]: regular Sales(10) { East(11) }, HQ(20, flag NULL); guest Forum(50) { Lounge(51) }
//   Relation: regular anna@Sales bert@East(flag 7) gina@HQ dup@HQ;
//             guest gina@Forum gus@Lounge, and (NULL)@Forum
//   Rank 1 职员, 2 经理, 3 总监; AccessToken for 1, 2, 4; VoipInfo for 1, 4;
//   VoipNumberList v100(1) v101(4) v102(0) v103(NULL); Folder 1 share\docs, 2 public;
//   GroupAuthority (1,10,W) (2,50,r); UserAuthority (1,3,R) (2,1,x); two notices.
QStringList populatedDatabase();

// Every data set as comparable lines (the member level is left out: the save
// derives it; see dumpDirectory).
QStringList dumpDataSet(const ServerDataSet &data);
QStringList dumpServerData(const CVelmarManagerDoc &data);

// What one CReadDBThread run did, in the order the user-interface thread saw it.
struct ThreadRun
{
    bool finished = false;
    int exitResult = -1;
    // "text ...", "range n", "position n", "completed", "exited n"
    QStringList events;
    ServerDataLoader::Result result;

    QStringList progressRanges() const;
};

// Starts a CReadDBThread on the server folder's settings and runs the event
// loop until it has exited.
ThreadRun runReadThread(TempServerDir &dir, CVelmarManagerDoc &target, MessageService &messages,
    SqlTrace *trace = nullptr);

// Reads the database again into a fresh data set (ServerDataLoader, no thread).
ServerDataSet readBack(TempServerDir &dir, ServerDataLoader::Result *result = nullptr);

// A trigger named "poison" that makes every `event` ("INSERT", "UPDATE",
// "DELETE") on table fail, limited to the rows where NEW.`when` holds when
// when is given; table is written as the database knows it ("\"Group\""
// for the group table). It stands in for any statement failure (a lock, a
// constraint, a full disk). Set up outside the console's statement checks:
// an SQLite trigger body holds several statements.
bool createPoisonTrigger(TestDatabase &db, const QString &event, const QString &table,
    const QString &when, QString *error);
bool dropPoisonTrigger(TestDatabase &db, const QString &table);

class SaveJournal;
// The statements of a save journal, in order.
QStringList journalStatements(const SaveJournal &journal);
