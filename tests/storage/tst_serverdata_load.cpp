#include "CReadDBThread.h"
#include "CRegistry.h"
#include "CVelmarManagerDoc.h"
#include "DbConnection.h"
#include "DbSession.h"
#include "Directory.h"
#include "DirectoryFixture.h"
#include "GroupTreeModel.h"
#include "MemberListModel.h"
#include "NoticeListModel.h"
#include "PositionListModel.h"
#include "ProfileFile.h"
#include "Recordset.h"
#include "ScriptedMessageService.h"
#include "ServerDataFixture.h"
#include "ServerDataSaver.h"
#include "ServerDataSet.h"
#include "SqlTrace.h"
#include "TempServerDir.h"
#include "TestDatabase.h"

#include <QAbstractItemModelTester>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(ServerDataLoader::Step)

#define DATABASE(db)                                                                               \
    VELMAR_BACKEND_DATABASE(db);                                                                   \
    QVERIFY(db.writeConnectionString(dir.hives()))

// The loading worker on a real thread against every backend: what it reads,
// the order of its signals, and what it leaves in memory when it fails.
class TestServerDataLoad : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fullLoad_data() { TestDatabase::addBackends(); }
    void fullLoad();
    void openFailure_data();
    void openFailure();
    void readFailure_data();
    void readFailure();
    void lockedDatabase_data() { TestDatabase::addBackends(); }
    void lockedDatabase();
};

void TestServerDataLoad::fullLoad()
{
    DATABASE(db);
    QVERIFY2(db.execAll(populatedDatabase()), qPrintable(db.errorString()));
    ProfileFile(dir.iniPath()).writeString(u"ServerInfo"_s, u"DefaultPositionID"_s, u"2"_s);
    const QString tracePath = dir.filePath(u"trace.sql"_s);
    SqlTrace sqlTrace(tracePath);

    CVelmarManagerDoc data;
    QAbstractItemModelTester regularTester(data.directory()->regularTree());
    QAbstractItemModelTester memberTester(data.directory()->regularMembers());
    QAbstractItemModelTester noticeTester(data.notices());
    ScriptedMessageService messages;
    const ThreadRun run = runReadThread(dir, data, messages, &sqlTrace);
    QVERIFY(run.result.ok());
    QVERIFY2(messages.boxes().isEmpty(), qPrintable(messages.boxTexts().join(u'\n')));

    // 1114 comes once, after every progress signal, and before 1115.
    QCOMPARE(run.events.count(u"completed"_s), 1);
    QCOMPARE(run.events.mid(run.events.size() - 2), QStringList({ u"completed"_s, u"exited 1"_s }));
    QCOMPARE(run.progressRanges(),
        QStringList({ u"text 打开数据库."_s, u"text 读取用户信息."_s, u"range 7"_s,
            u"text 读群组信息."_s, u"range 5"_s, u"text 添加群组."_s, u"range 7"_s }));
    // Every phase ends on its last row: 7 members, 5 groups, 6 relations with a member.
    const int groupsText = int(run.events.indexOf(u"text 读群组信息."_s));
    const int relationsText = int(run.events.indexOf(u"text 添加群组."_s));
    QCOMPARE(run.events.at(groupsText - 1), u"position 7"_s);
    QCOMPARE(run.events.at(relationsText - 1), u"position 5"_s);
    QCOMPARE(run.events.at(run.events.size() - 3), u"position 6"_s);

    // The data sets in their designed order, each read after the one before.
    // Without the aggregate queries that end the load (the fingerprint the
    // save checks against) and the look for texts in number columns that
    // SQLite's ODBC driver would read as 0.
    QStringList statements = readTrace(tracePath);
    statements.removeIf([](const QString &s) {
        return s.startsWith(u"SELECT COUNT(*),"_s) || s.startsWith(u"SELECT CAST("_s);
    });
    QStringList heads;
    static const QRegularExpression table(u"\\bFROM\\s+(\\S+)"_s);
    for (const QString &s : statements)
        heads << table.match(s).captured(1);
    QStringList order;
    for (const QString &h : heads)
        if (order.isEmpty() || order.last() != h)
            order << h;
    QVERIFY2(
        order.join(u',').endsWith(
            u"Rank,AccessToken,VoipInfo,Folder,GroupAuthority,UserAuthority,VoipNumberList,CONTENTS"_s),
        qPrintable(order.join(u',')));

    // Counts of every data set: members, groups and memberships (regular,
    // guest), positions and the default, tokens, VoIP accounts, the pool and
    // its first free account, folders, group and member rights, notices.
    Directory &directory = *data.directory();
    const DirectoryTree &regular = directory.regularTree()->tree();
    const DirectoryTree &guest = directory.guestTree()->tree();
    const QList<qsizetype> counts { directory.regularMembers()->memberCount(),
        directory.guestMembers()->memberCount(), regular.groupCount(), guest.groupCount(),
        regular.membershipCount(), guest.membershipCount(), data.positions()->list().count(),
        data.positions()->list().defaultId, qsizetype(data.permissions().tokens().size()),
        qsizetype(data.permissions().voipAccounts().size()), data.voipPool().size(),
        data.voipPool().firstFree(), data.fileBox().folders().size(),
        data.fileBox().groupRights().size(), data.fileBox().memberRights().size(),
        data.notices()->rowCount() };
    QCOMPARE(counts, QList<qsizetype>({ 5, 2, 3, 2, 4, 2, 3, 2, 3, 2, 4, 2, 2, 2, 2, 2 }));
    QCOMPARE(data.loadState(), CVelmarManagerDoc::LoadState::Complete);
    QVERIFY(!data.isModified());

    // Trees and memberships as the database holds them.
    const QStringList lines = dumpServerData(data);
    for (const QString &expected : { u"regular depth 1 parent -1 group 10 Sales"_s,
             u"regular depth 2 parent 10 group 11 East"_s,
             u"regular depth 1 parent -1 group 20 HQ"_s,
             u"guest depth 1 parent -100 group 50 Forum"_s,
             u"guest depth 2 parent 50 group 51 Lounge"_s, u"regular group 10 member 1 rank 2"_s,
             u"regular group 11 member 2 rank 1"_s, u"regular group 20 member 4 rank 3"_s,
             u"regular group 20 member 6 rank 1"_s, u"guest group 50 member 4 rank 1"_s,
             u"guest group 51 member 5 rank 1"_s, u"folder 1 share\\docs"_s,
             u"group right 2 50 1"_s, u"member right 2 1 0"_s, u"pool v103 p103 0"_s,
             u"token 2 10010100"_s, u"notice 101 Second 2008/01/01 09:00:00  sess1"_s,
             u"notice 100 It's 2007/10/08 12:00:00 2007/12/31 "_s }) {
        QVERIFY2(lines.contains(expected), qPrintable(expected));
    }
    QCOMPARE(directory.regularMembers()->member(0).nickname, u"it's"_s);
    // The normalising UPDATEs changed the rows themselves (their SQL is
    // tst_directory_db's; here they must run on every backend).
    QCOMPARE(db.count(u"Member"_s, u"IsGuestMember NOT IN (0, 1)"_s), 0);
    QCOMPARE(db.count(u"Relation"_s, u"IsGuestRelation NOT IN (0, 1)"_s), 0);
}

void TestServerDataLoad::openFailure_data()
{
    QTest::addColumn<QString>("remoteAddress");
    QTest::addColumn<bool>("sessionBox");
    // No ConnectionString and no VelmarDB.mdb beside the console (the other
    // causes are the session's to test).
    QTest::newRow("no database file") << QString() << true;
    // A remote database address: no connection is attempted, so the session shows nothing.
    QTest::newRow("remote DBAddr") << u"10.0.0.9"_s << false;
}

void TestServerDataLoad::openFailure()
{
    QFETCH(QString, remoteAddress);
    QFETCH(bool, sessionBox);
    TempServerDir dir;
    if (!remoteAddress.isEmpty())
        ProfileFile(dir.iniPath()).writeString(u"DBInfo"_s, u"DBAddr"_s, remoteAddress);

    CVelmarManagerDoc data;
    ScriptedMessageService messages;
    const ThreadRun run = runReadThread(dir, data, messages);
    QCOMPARE(run.exitResult, 0);
    QCOMPARE(run.result.outcome, ServerDataLoader::Outcome::OpenFailed);
    QVERIFY(!run.events.contains(u"completed"_s));

    // The session's own report comes first, then the worker's.
    const QStringList texts = messages.boxTexts();
    QCOMPARE(texts.size(), sessionBox ? 2 : 1);
    QCOMPARE(texts.last(), u"打开数据库时发生错误."_s);
    if (sessionBox)
        QVERIFY2(texts.first().startsWith(u"(80004005) Unspecified error\r\nSource - "_s),
            qPrintable(texts.first()));
    // Nothing was read: a save is refused as after a partial read (below).
    QCOMPARE(data.loadState(), CVelmarManagerDoc::LoadState::NotLoaded);
}

void TestServerDataLoad::readFailure_data()
{
    QTest::addColumn<QString>("dropped");
    QTest::addColumn<ServerDataLoader::Step>("step");
    // Counts kept: members, groups, memberships, positions, tokens, accounts,
    // folders, member rights, pool, notices.
    QTest::addColumn<QList<int>>("kept");
    // A missing table fails alike on every backend (the drivers' errors are
    // the connection's to test).
    QTest::newRow("Relation") << u"Relation"_s << ServerDataLoader::Step::Directory
                              << QList<int> { 7, 5, 0, 0, 0, 0, 0, 0, 0, 0 };
    QTest::newRow("Rank") << u"Rank"_s << ServerDataLoader::Step::Positions
                          << QList<int> { 7, 5, 6, 0, 0, 0, 0, 0, 0, 0 };
    QTest::newRow("VoipInfo") << u"VoipInfo"_s << ServerDataLoader::Step::Permissions
                              << QList<int> { 7, 5, 6, 3, 3, 0, 0, 0, 0, 0 };
    QTest::newRow("UserAuthority") << u"UserAuthority"_s << ServerDataLoader::Step::FileBox
                                   << QList<int> { 7, 5, 6, 3, 3, 2, 2, 0, 0, 0 };
    QTest::newRow("VoipNumberList") << u"VoipNumberList"_s << ServerDataLoader::Step::VoipPool
                                    << QList<int> { 7, 5, 6, 3, 3, 2, 2, 2, 0, 0 };
    QTest::newRow("CONTENTS") << u"CONTENTS"_s << ServerDataLoader::Step::Notices
                              << QList<int> { 7, 5, 6, 3, 3, 2, 2, 2, 4, 0 };
}

void TestServerDataLoad::readFailure()
{
    QFETCH(QString, dropped);
    QFETCH(ServerDataLoader::Step, step);
    QFETCH(QList<int>, kept);
    VELMAR_SQLITE_DATABASE(db);
    QVERIFY(db.writeConnectionString(dir.hives()));
    QVERIFY2(db.execAll(populatedDatabase()), qPrintable(db.errorString()));
    QVERIFY2(db.exec(u"DROP TABLE "_s + dropped), qPrintable(db.errorString()));

    CVelmarManagerDoc data;
    ScriptedMessageService messages;
    const ThreadRun run = runReadThread(dir, data, messages);
    QCOMPARE(run.exitResult, 0);
    QCOMPARE(run.result.outcome, ServerDataLoader::Outcome::ReadFailed);
    QCOMPARE(run.result.failedStep, step);
    QVERIFY(!run.result.error.description.isEmpty());
    QVERIFY(!run.events.contains(u"completed"_s));
    QCOMPARE(messages.boxTexts(), QStringList { u"当读数据时发生错误."_s });

    // What was read before the failure stays in memory.
    const Directory &directory = *data.directory();
    const QList<int> counts {
        directory.memberCount(),
        directory.regularTree()->tree().groupCount() + directory.guestTree()->tree().groupCount(),
        directory.regularTree()->tree().membershipCount()
            + directory.guestTree()->tree().membershipCount(),
        data.positions()->list().count(),
        int(data.permissions().tokens().size()),
        int(data.permissions().voipAccounts().size()),
        int(data.fileBox().folders().size()),
        int(data.fileBox().memberRights().size()),
        data.voipPool().size(),
        data.notices()->rowCount(),
    };
    QCOMPARE(counts, kept);
    QCOMPARE(data.loadState(), CVelmarManagerDoc::LoadState::Partial);
    QVERIFY(!data.isModified());

    // A save would delete every row that was not read: it is refused and the
    // database keeps everything.
    messages.clear();
    DbSession session(dir.hives(), dir.iniPath(), dir.databasePath(), messages);
    ServerDataSaver saver(data, session, messages, dir.iniPath(), dir.hives(), dir.programDir());
    QCOMPARE(saver.save(true).outcome, ServerDataSaver::Outcome::DataError);
    QCOMPARE(messages.balloonTexts(), QStringList { u"当前编辑的数据发生错误."_s });
    QCOMPARE(db.count(u"Member"_s), 7);
}

void TestServerDataLoad::lockedDatabase()
{
    DATABASE(db);
    QVERIFY2(db.execAll(populatedDatabase()), qPrintable(db.errorString()));
    QVERIFY2(db.shortenLockWait(dir.hives()), qPrintable(db.errorString()));
    {
        // Another process of the server holds a write transaction: the load's
        // normalising UPDATE cannot run.
        DbConnection holder = db.holdWriteLock(u"Member"_s);
        CVelmarManagerDoc data;
        ScriptedMessageService messages;
        const ThreadRun run = runReadThread(dir, data, messages);
        QCOMPARE(run.exitResult, 0);
        QCOMPARE(run.result.outcome, ServerDataLoader::Outcome::ReadFailed);
        QCOMPARE(run.result.failedStep, ServerDataLoader::Step::Directory);
        QCOMPARE(messages.boxTexts(), QStringList { u"当读数据时发生错误."_s });
        QCOMPARE(data.loadState(), CVelmarManagerDoc::LoadState::Partial);
        holder.execute(u"ROLLBACK"_s);
    }

    // Once the lock is gone everything is there.
    CVelmarManagerDoc data;
    ScriptedMessageService messages;
    const ThreadRun run = runReadThread(dir, data, messages);
    QCOMPARE(run.exitResult, 1);
    QCOMPARE(data.directory()->regularMembers()->memberCount(), 5);
    QCOMPARE(data.notices()->rowCount(), 2);
}

QTEST_GUILESS_MAIN(TestServerDataLoad)
#include "tst_serverdata_load.moc"
