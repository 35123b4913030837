#include "CVelmarManagerDoc.h"
#include "DataDoctor.h"
#include "DbConnection.h"
#include "DbSession.h"
#include "Directory.h"
#include "DirectoryNode.h"
#include "GroupTreeModel.h"
#include "NotificationListeners.h"
#include "Recordset.h"
#include "ScriptedMessageService.h"
#include "ServerDataFixture.h"
#include "ServerDataLoader.h"
#include "ServerDataSaver.h"
#include "ServerDataSet.h"
#include "TempServerDir.h"
#include "TestDatabase.h"

#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {

ServerDataSaver::Result save(TempServerDir &dir, CVelmarManagerDoc &document)
{
    ScriptedMessageService messages;
    DbSession session(dir.hives(), dir.iniPath(), dir.databasePath(), messages);
    ServerDataSaver saver(
        document, session, messages, dir.iniPath(), dir.hives(), dir.programDir());
    saver.setPause([](int) {});
    return saver.save(true);
}

QList<DataDoctor::Finding> examine(TestDatabase &db)
{
    DbConnection connection = db.connect();
    return DataDoctor::examine(connection);
}

DataDoctor::Finding finding(const QList<DataDoctor::Finding> &findings, const QString &kind)
{
    for (const DataDoctor::Finding &f : findings) {
        if (f.kind == kind)
            return f;
    }
    return {};
}

} // namespace

// Databases that an older server, a hand-run script or a crash left behind,
// loaded the way the console loads them, examined by the data doctor and
// saved back, on every backend.
class TestDamagedDatabase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void groupsThatNeverReachTheTop_data() { TestDatabase::addBackends(); }
    void groupsThatNeverReachTheTop();
    void textInNumberColumn_data() { TestDatabase::addBackends(); }
    void textInNumberColumn();
    void deepChainWithoutRecursion_data() { TestDatabase::addBackends(); }
    void deepChainWithoutRecursion();
};

void TestDamagedDatabase::groupsThatNeverReachTheTop()
{
    VELMAR_BACKEND_DATABASE(db);
    QVERIFY(db.writeConnectionString(dir.hives()));
    NotificationListeners listeners;
    QString error;
    QVERIFY2(listeners.bind(&error), qPrintable(error));
    QVERIFY2(
        db.execAll({
            MemberInsert + u"(1,'anna','Anna','','pw',0,0,'','','','','','',0,0,'',2,0)"_s,
            // Everything NULL that a save does not need.
            MemberInsert
                + u"(2,'nils',NULL,NULL,'pw',NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL)"_s,
            GroupInsert + u"(10,'Sales',-1,0,1,0)"_s,
            GroupInsert + u"(20,'Ping',21,0,2,0)"_s, // 20 and 21 name each other
            GroupInsert + u"(21,'Pong',20,1,2,0)"_s,
            GroupInsert + u"(22,'Below',21,0,1,0)"_s, // read before its parent
            GroupInsert + u"(30,'Self',30,2,2,0)"_s,
            GroupInsert + u"(40,'Orphan',999,3,2,0)"_s,
            GroupInsert + u"(NULL,NULL,NULL,NULL,NULL,NULL)"_s,
            RelationInsert + u"(1,21,1,0,0)"_s,
            RelationInsert + u"(2,30,NULL,NULL,0)"_s,
            RelationInsert + u"(1,22,1,0,0)"_s,
            RelationInsert + u"(NULL,NULL,NULL,NULL,NULL)"_s,
        }),
        qPrintable(db.errorString()));

    // The doctor names the circles and the missing parent.
    const QList<DataDoctor::Finding> findings = examine(db);
    QCOMPARE(finding(findings, u"group-parent-cycle"_s).examples,
        QStringList({ u"20/21"_s, u"21/20"_s, u"30/30"_s }));
    QStringList missing = finding(findings, u"group-parent-missing"_s).examples;
    missing.sort();
    QCOMPARE(missing, QStringList({ u"40/999"_s, u"NULL/NULL"_s }));
    QCOMPARE(finding(findings, u"relation-flag-null"_s).count, 1);

    // Loaded as the console loads: every group is shown, the ones whose
    // chain never reaches the top at the top, with what hangs below them.
    CVelmarManagerDoc document;
    ScriptedMessageService messages;
    const ThreadRun run = runReadThread(dir, document, messages);
    QVERIFY2(run.result.ok(), qPrintable(run.result.error.formatted()));
    const DirectoryTree &tree = document.directory()->treeData(false);
    QVERIFY(tree.findMembership(1, tree.findGroup(22), false));
    QVERIFY(tree.findMembership(2, tree.findGroup(30), false));

    // The save writes the tree as shown (the last line compares the two):
    // the circles broken at the top, and cut where the walk up from Below
    // met it, so that only the link that closed it is lost; the group of
    // NULLs as the top-level group 0 it was shown as; the relation of NULLs,
    // which the load cannot read, stays as it was.
    const ServerDataSaver::Result saved = save(dir, document);
    QVERIFY2(saved.ok(), qPrintable(saved.error.formatted()));
    QStringList written;
    for (const QVariantList &row : db.rows(u"SELECT OGroupID, OGroupID_P FROM [Group]"_s))
        written << row.at(0).toString() + u'/' + row.at(1).toString();
    written.sort();
    QCOMPARE(written.join(u' '), u"0/-1 10/-1 20/21 21/-1 22/21 30/-1 40/-1"_s);
    QCOMPARE(db.count(u"Relation"_s), 4);
    QCOMPARE(db.count(u"Relation"_s, u"OMemberID IS NULL"_s), 1);
    QCOMPARE(
        db.scalar(u"SELECT MemberName FROM Member WHERE OMemberID = 2"_s).toString(), QString());
    QVERIFY(finding(examine(db), u"group-parent-cycle"_s).examples.isEmpty());
    QCOMPARE(dumpDataSet(readBack(dir)), dumpServerData(document));
}

void TestDamagedDatabase::textInNumberColumn()
{
    VELMAR_BACKEND_DATABASE(db);
    QVERIFY(db.writeConnectionString(dir.hives()));
    // A PostgreSQL server whose column became text (an old schema, a
    // hand-made migration); SQLite keeps any value in any column.
    if (backend == TestDatabase::Backend::PostgresOdbc)
        QVERIFY2(db.exec(u"ALTER TABLE member ALTER COLUMN gender TYPE text"_s),
            qPrintable(db.errorString()));
    QVERIFY2(db.execAll({
                 MemberInsert + u"(1,'anna','Anna','','pw',0,0,'','','','','','',0,0,'',2,0)"_s,
                 MemberInsert + u"(7,'text','T','','pw','abc',0,'','','','','','',0,0,'',2,0)"_s,
                 GroupInsert + u"(10,'Sales',-1,0,1,0)"_s,
             }),
        qPrintable(db.errorString()));
    // PostgreSQL's integer columns cannot hold these.
    const bool sqlite = backend != TestDatabase::Backend::PostgresOdbc;
    if (sqlite) {
        QVERIFY2(db.execAll({
                     GroupInsert + u"(11,'East',10,'first',2,0)"_s,
                     RelationInsert + u"(1,10,99999999999,0,0)"_s,
                 }),
            qPrintable(db.errorString()));
    }

    // The load stops at the first with the database error naming column
    // and value.
    CVelmarManagerDoc document;
    ScriptedMessageService messages;
    const ThreadRun run = runReadThread(dir, document, messages);
    QCOMPARE(run.result.outcome, ServerDataLoader::Outcome::ReadFailed);
    QVERIFY2(run.result.error.description.contains(u"holds 'abc', not a 32-bit number"_s),
        qPrintable(run.result.error.formatted()));
    QVERIFY(run.result.error.description.contains(u"Gender"_s, Qt::CaseInsensitive));

    // The doctor lists every one, so that they can be found and mended.
    QStringList expected { u"Member.Gender (OMemberID=7, MemberID=text): 'abc'"_s };
    if (sqlite) {
        expected << u"[Group].Position (OGroupID=11, GroupName=East): 'first'"_s
                 << u"Relation.ORankID (OMemberID=1, OGroupID=10): '99999999999'"_s;
    }
    QCOMPARE(finding(examine(db), u"number-column-text"_s).examples, expected);
}

void TestDamagedDatabase::deepChainWithoutRecursion()
{
    VELMAR_BACKEND_DATABASE(db);
    QVERIFY(db.writeConnectionString(dir.hives()));
    NotificationListeners listeners;
    QString error;
    QVERIFY2(listeners.bind(&error), qPrintable(error));
    constexpr int depth = 20000;
    {
        // Inserted in one transaction, outside the console.
        DbConnection connection = db.connect();
        connection.execute(u"BEGIN"_s);
        for (int i = 1; i <= depth; ++i) {
            connection.execute(
                GroupInsert + u"(%1,'g%1',%2,0,%1,0)"_s.arg(i).arg(i == 1 ? -1 : i - 1));
        }
        connection.execute(RelationInsert + u"(1,%1,1,0,0)"_s.arg(depth));
        connection.execute(
            MemberInsert + u"(1,'deep','Deep','','pw',0,0,'','','','','','',0,0,'',2,0)"_s);
        connection.execute(u"COMMIT"_s);
    }

    // Load, tree model, doctor, save and freeing on a stack far smaller
    // than one frame per level would need.
    QStringList failures;
    QThread *worker = QThread::create([&] {
        auto document = std::make_unique<CVelmarManagerDoc>();
        ScriptedMessageService messages;
        DbSession session(dir.hives(), dir.iniPath(), dir.databasePath(), messages);
        ServerDataSet data;
        const ServerDataLoader::Result loaded = ServerDataLoader(session, dir.iniPath()).run(data);
        if (!loaded.ok())
            failures << u"load: "_s + loaded.error.formatted();
        document->adopt(std::move(data), CVelmarManagerDoc::LoadState::Complete);

        const GroupTreeModel *model = document->directory()->tree(false);
        QModelIndex index;
        int levels = 0;
        while (model->rowCount(index) > 0) {
            index = model->index(0, 0, index);
            ++levels;
        }
        if (levels != depth + 2) // the tree's top item, and the membership at the bottom
            failures << u"tree model depth %1"_s.arg(levels);
        int up = 0;
        for (QModelIndex i = index; i.isValid(); i = model->parent(i))
            ++up;
        if (up != levels)
            failures << u"tree model parents %1"_s.arg(up);

        DbConnection connection = session.openConnection();
        const QList<DataDoctor::Finding> findings = DataDoctor::examine(connection)
            + DataDoctor::examine(*document, connection.dialect());
        connection = DbConnection();
        for (const DataDoctor::Finding &f : findings) {
            if (f.count > 0 && f.kind != u"member-without-accesstoken"_s
                && f.kind != u"member-without-voipinfo"_s)
                failures << u"doctor: "_s + f.kind;
        }

        ServerDataSaver saver(
            *document, session, messages, dir.iniPath(), dir.hives(), dir.programDir());
        saver.setPause([](int) {});
        const ServerDataSaver::Result saved = saver.save(true);
        if (!saved.ok())
            failures << u"save: "_s + saved.error.formatted();
        document.reset();
    });
    worker->setStackSize(512 * 1024);
    worker->start();
    QVERIFY(worker->wait(600000));
    delete worker;
    QCOMPARE(failures.join(u'\n'), QString());
    QCOMPARE(db.count(u"[Group]"_s), depth);
    QCOMPARE(db.count(u"[Group]"_s, u"OGroupID_P = OGroupID - 1"_s), depth - 1);
    QCOMPARE(db.count(u"Relation"_s, u"OGroupID = %1"_s.arg(depth)), 1);
}

QTEST_GUILESS_MAIN(TestDamagedDatabase)
#include "tst_damaged_database.moc"
