#include "CRegistry.h"
#include "DirectoryFixture.h"
#include "NotificationListeners.h"
#include "ProfileFile.h"
#include "RegistryHives.h"
#include "SaveJournal.h"
#include "ServerDataFixture.h"
#include "ServerDataSet.h"
#include "ServerNotification.h"
#include "TempServerDir.h"
#include "TestDatabase.h"
#include "VelmarCtlTool.h"

#include <csignal>
#include <QDeadlineTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The counts of populatedDatabase().
QJsonObject populatedCounts()
{
    return QJsonDocument::fromJson(R"({
        "members": {"regular": 5, "guest": 2, "total": 7, "index": 6},
        "groups": {"regular": 3, "guest": 2},
        "memberships": {"regular": 4, "guest": 2},
        "positions": 3, "defaultPosition": 2,
        "accessTokens": 3, "voipAccounts": 2,
        "pool": {"total": 4, "free": 2},
        "folders": 2, "groupRights": 2, "memberRights": 2,
        "notices": 2 })")
        .object();
}

// A few hundred more rows on top of populatedDatabase(), so that every
// partition of the save takes many statements.
QStringList generatedRows()
{
    QStringList rows;
    for (int g = 0; g < 40; ++g) {
        rows
            << u"INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, IsGuestGroup) VALUES (%1,'Team %2',%3,%4,%5,%6)"_s
                   .arg(1000 + g)
                   .arg(g)
                   .arg(g < 30 ? (g < 10 ? 10 : 1000 + g % 10) : 50)
                   .arg(g)
                   .arg(g < 10 ? 2 : 3)
                   .arg(g < 30 ? 0 : 1);
    }
    for (int m = 0; m < 300; ++m) {
        const bool guest = m >= 250;
        rows
            << u"INSERT INTO Member (OMemberID, MemberID, MemberName, MemberNickname, Passwd, Gender, bPublic, Email, HP, Address, HomePhone, OfficePhone, BirthDay, bSolar, bAdmin, Description, IsGuestMember) VALUES (%1,'user%1','成员 %1','nick###VELMAR-SEMICOLON###%1','pw%1',%2,1,'u%1@x.cn','139','Road','010','020','1990-01-01',1,0,'',%3)"_s
                   .arg(100 + m)
                   .arg(m % 2)
                   .arg(guest ? 1 : 0);
        const int group = guest ? 1030 + m % 10 : 1000 + m % 30;
        rows
            << u"INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (%1,%2,%3,%4,%5)"_s
                   .arg(100 + m)
                   .arg(group)
                   .arg(1 + m % 3)
                   .arg(m / 30)
                   .arg(guest ? 1 : 0);
        if (!guest && m % 3 == 0) {
            rows
                << u"INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES (%1,%2,1,%3,1)"_s
                       .arg(100 + m)
                       .arg(1030 + m % 10)
                       .arg(50 + m);
        }
    }
    for (int r = 4; r < 20; ++r)
        rows << u"INSERT INTO Rank (ORankID, RankName) VALUES (%1,'等级 %1')"_s.arg(r);
    for (int f = 3; f < 40; ++f) {
        rows << u"INSERT INTO Folder (OFolderID, FolderPath) VALUES (%1,'share\\\\f%1')"_s.arg(f);
        rows << u"INSERT INTO GroupAuthority (OFolderID, OGroupID, Authority) VALUES (%1,%2,'R')"_s
                    .arg(f)
                    .arg(1000 + f % 30);
        rows << u"INSERT INTO UserAuthority (OFolderID, OMemberID, Authority) VALUES (%1,%2,'W')"_s
                    .arg(f)
                    .arg(100 + f);
    }
    for (int v = 0; v < 60; ++v) {
        rows
            << u"INSERT INTO VoipNumberList (VOIP_ID, VOIP_PASS, OMemberID) VALUES ('g%1','gp%1',%2)"_s
                   .arg(v)
                   .arg(v < 30 ? 100 + v : 0);
    }
    return rows;
}

// One letter of /proc/PID/stat: 'T' for a stopped process.
char processState(qint64 pid)
{
    QFile stat(u"/proc/%1/stat"_s.arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray line = stat.readAll();
    const qsizetype close = line.lastIndexOf(')');
    return close >= 0 && close + 2 < line.size() ? line.at(close + 2) : 0;
}

// Starts velmarctl without waiting for it; with stopAt, it stops itself there.
std::unique_ptr<QProcess> startCtl(const QStringList &arguments, const QString &stopAt = {})
{
    auto process = std::make_unique<QProcess>();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!stopAt.isEmpty())
        environment.insert(u"VELMAR_SAVE_STOP_AT"_s, stopAt);
    process->setProcessEnvironment(environment);
    process->start(QStringLiteral(VELMARCTL_PATH), arguments);
    process->waitForStarted();
    return process;
}

bool waitUntilStopped(QProcess &process)
{
    QDeadlineTimer deadline(120000);
    while (!deadline.hasExpired()) {
        if (processState(process.processId()) == 'T')
            return true;
        if (process.waitForFinished(5))
            return false;
    }
    return false;
}

// Runs velmarctl until it stops itself at point (VELMAR_SAVE_STOP_AT), then
// kills it with SIGKILL, as a crash or a power cut would end it there.
bool killAt(const QStringList &arguments, const QString &point, QString *why)
{
    const std::unique_ptr<QProcess> process = startCtl(arguments, point);
    if (!waitUntilStopped(*process)) {
        *why
            = u"did not stop at the point (exit %1): %2"_s.arg(QString::number(process->exitCode()),
                QString::fromUtf8(process->readAllStandardError()));
        return false;
    }
    ::kill(pid_t(process->processId()), SIGKILL);
    process->waitForFinished(30000);
    return true;
}

// Row counts of every table a save touches.
QMap<QString, qint64> rowCounts(TestDatabase &db)
{
    QMap<QString, qint64> counts;
    for (const QString &table : { u"Member"_s, u"[Group]"_s, u"Relation"_s, u"Rank"_s,
             u"AccessToken"_s, u"VoipInfo"_s, u"VoipNumberList"_s, u"Folder"_s, u"GroupAuthority"_s,
             u"UserAuthority"_s, u"CONTENTS"_s })
        counts.insert(table, db.count(table));
    // Ids stored more than once (the fixture has one duplicate on purpose).
    counts.insert(u"duplicate member ids"_s,
        db.scalar(u"SELECT COUNT(*) - COUNT(DISTINCT OMemberID) FROM Member"_s).toLongLong());
    counts.insert(u"duplicate group ids"_s,
        db.scalar(u"SELECT COUNT(*) - COUNT(DISTINCT OGroupID) FROM [Group]"_s).toLongLong());
    return counts;
}

} // namespace

// A server folder whose SQLite file holds populatedDatabase().
#define POPULATED_SERVER(dir, db)                                                                  \
    TempServerDir dir;                                                                             \
    TestDatabase db(TestDatabase::Backend::SqliteFile, dir.programDir());                          \
    QVERIFY2(db.isValid(), qPrintable(db.errorString()));                                          \
    QVERIFY2(db.execAll(populatedDatabase()), qPrintable(db.errorString()))

// velmarctl as an administrator runs it, on temporary server folders.
class TestVelmarCtl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void load_data();
    void load();
    void accessFallback();
    void loadFailures_data();
    void loadFailures();
    void resave();
    void resaveFailure();
    void unusableJournal_data();
    void unusableJournal();
    void killedSave_data();
    void killedSave();
    void usage();
    void racingEdits();
    void waitAndConflict();
    // The doctor's queries differ between the backends.
    void doctor_data() { TestDatabase::addBackends(); }
    void doctor();
    void damagedFilesAndRows();
};

void TestVelmarCtl::load_data()
{
    // The load itself runs on every backend in tst_serverdata_load; here the
    // command's own surface: where it finds the folders, what it prints.
    QTest::addColumn<bool>("throughEnvironment");
    QTest::newRow("options") << false;
    QTest::newRow("environment") << true;
}

void TestVelmarCtl::load()
{
    QFETCH(bool, throughEnvironment);
    POPULATED_SERVER(dir, db);
    QVERIFY(db.writeConnectionString(dir.hives()));
    ProfileFile(dir.iniPath()).writeString(u"ServerInfo"_s, u"DefaultPositionID"_s, u"2"_s);

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QStringList arguments { u"load"_s };
    if (throughEnvironment) {
        environment.insert(u"VELMAR_SERVER_DIR"_s, dir.programDir());
        environment.insert(u"VELMAR_REGISTRY_DIR"_s, dir.registryDir());
    } else {
        environment.remove(u"VELMAR_SERVER_DIR"_s);
        environment.remove(u"VELMAR_REGISTRY_DIR"_s);
        arguments += dirArguments(dir);
    }
    const CtlRun run = velmarctl(arguments, environment);
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QCOMPARE(run.err, QString());
    QCOMPARE(QJsonDocument::fromJson(run.out).object(), populatedCounts());
}

void TestVelmarCtl::accessFallback()
{
    // No ConnectionString: the local VelmarDB.mdb beside the console, which
    // start-up writes into the registry as the console's start-up does (the
    // value itself is tst_serverfolder's).
    POPULATED_SERVER(dir, db);
    const CtlRun run = ctl(dir, { u"load"_s });
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QString value;
    QCOMPARE(readRegistryString(dir.hives(), RegistryRoot::LocalMachine,
                 u"SOFTWARE\\Velmar\\Services\\Database"_s, u"ConnectionString"_s, value),
        1);
}

void TestVelmarCtl::loadFailures_data()
{
    QTest::addColumn<bool>("database");
    QTest::addColumn<QStringList>("expectedLines");
    QTest::newRow("no database") << false
                                 << QStringList { u"Desc - "_s, u"打开数据库时发生错误."_s };
    QTest::newRow("table missing") << true
                                   << QStringList { u"当读数据时发生错误."_s,
                                          u"velmarctl: reading notices failed: (80004005)"_s };
}

void TestVelmarCtl::loadFailures()
{
    QFETCH(bool, database);
    QFETCH(QStringList, expectedLines);
    TempServerDir dir;
    std::unique_ptr<TestDatabase> db;
    if (database) {
        db = std::make_unique<TestDatabase>(TestDatabase::Backend::SqliteFile, dir.programDir());
        QVERIFY2(db->isValid(), qPrintable(db->errorString()));
        QVERIFY(db->execAll(populatedDatabase()));
        QVERIFY(db->exec(u"DROP TABLE CONTENTS"_s));
    }
    const CtlRun run = ctl(dir, { u"load"_s });
    QCOMPARE(run.exitCode, 1);
    QVERIFY(run.out.isEmpty());
    for (const QString &line : expectedLines)
        QVERIFY2(run.err.contains(line), qPrintable(run.err));
}

void TestVelmarCtl::resave()
{
    // The statements of each backend are the saver's tests (tst_serverdata_save).
    POPULATED_SERVER(dir, db);
    QVERIFY(db.writeConnectionString(dir.hives()));
    ProfileFile(dir.iniPath()).writeString(u"GroupInfo"_s, u"Version"_s, u"0041"_s);
    const QString tracePath = dir.root() + u"/trace.sql"_s;
    const QStringList before = dumpDataSet(readBack(dir));
    NotificationListeners listener(
        { ServerNotification::ServerPort }, ServerNotification::DatabaseChanged);
    QString bindError;
    QVERIFY2(listener.bind(&bindError), qPrintable(bindError));

    const CtlRun run = ctl(dir, { u"resave"_s, u"--sql-trace"_s, tracePath });
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QJsonObject expected = populatedCounts();
    expected.insert(u"defaultPosition"_s, -1);
    expected.insert(u"version"_s, 42);
    QCOMPARE(QJsonDocument::fromJson(run.out).object(), expected);
    QCOMPARE(dir.savedVersion(), u"0042"_s);
    QCOMPARE(listener.drain(), QStringList { u"55052"_s });

    // The load and then the save on the one trace (the save's statements
    // themselves are the saver's tests); saved unchanged, it reads back as before.
    // Without the concurrent-change check's aggregate queries.
    QStringList trace = readTrace(tracePath);
    trace.removeIf([](const QString &line) { return line.startsWith(u"SELECT COUNT(*),"_s); });
    QVERIFY(!trace.isEmpty());
    QCOMPARE(trace.first(), u"SELECT COUNT(*) FROM Member"_s);
    QVERIFY2(trace.last().startsWith(u"UPDATE VoipNumberList"_s), qPrintable(trace.last()));
    QCOMPARE(dumpDataSet(readBack(dir)), before);
}

void TestVelmarCtl::resaveFailure()
{
    // A statement the database refuses part-way through the save (a trigger
    // stands in for a lock, a constraint or a full disk).
    POPULATED_SERVER(dir, db);
    const QStringList before = dumpDataSet(readBack(dir));
    QString error;
    QVERIFY2(createPoisonTrigger(db, u"INSERT"_s, u"Member"_s, u"IsGuestMember = 1"_s, &error),
        qPrintable(error));
    NotificationListeners listener(
        { ServerNotification::ServerPort }, ServerNotification::DatabaseChanged);
    QString bindError;
    QVERIFY2(listener.bind(&bindError), qPrintable(bindError));

    const CtlRun run = ctl(dir, { u"resave"_s });
    QCOMPARE(run.exitCode, 4);
    QVERIFY(run.out.isEmpty());
    QVERIFY2(run.err.contains(u"数据库发生错误."_s), qPrintable(run.err));
    QVERIFY2(run.err.contains(u"velmarctl: the save failed: (80004005)"_s), qPrintable(run.err));
    QCOMPARE(dir.savedVersion(), u"absent"_s);
    QVERIFY(listener.drain().isEmpty());

    // The guest members are gone from the database now; nothing reads it
    // until the save is finished.
    QVERIFY(dumpDataSet(readBack(dir)) != before);
    const CtlRun load = ctl(dir, { u"load"_s });
    QCOMPARE(load.exitCode, 3);
    QVERIFY2(load.err.contains(u"an unfinished save is pending"_s), qPrintable(load.err));
    QVERIFY(load.out.isEmpty());

    // Finishing fails while the cause is there, names the statement and
    // keeps the journal.
    const CtlRun stuck = ctl(dir, { u"recover"_s });
    QCOMPARE(stuck.exitCode, 1);
    QVERIFY2(stuck.err.contains(u"(Directory): INSERT INTO Member "_s), qPrintable(stuck.err));
    QVERIFY(QFile::exists(SaveJournal::pathFor(dir.iniPath())));

    QVERIFY(dropPoisonTrigger(db, u"Member"_s));
    const CtlRun recovered = ctl(dir, { u"recover"_s });
    QVERIFY2(recovered.exitCode == 0, qPrintable(recovered.err));
    QCOMPARE(
        QJsonDocument::fromJson(recovered.out).object().value(u"recovered"_s), QJsonValue(true));
    QCOMPARE(dumpDataSet(readBack(dir)), before);
    QCOMPARE(dir.savedVersion(), u"0001"_s);
    QCOMPARE(listener.drain(), QStringList { u"55052"_s });
    QVERIFY(!QFile::exists(SaveJournal::pathFor(dir.iniPath())));
    const CtlRun again = ctl(dir, { u"recover"_s });
    QCOMPARE(again.exitCode, 0);
    QCOMPARE(again.out, QByteArray("nothing to recover\n"));
}

void TestVelmarCtl::unusableJournal_data()
{
    QTest::addColumn<QByteArray>("bytes"); // empty: a good journal of another database
    QTest::addColumn<QString>("message");
    QTest::newRow("corrupt") << QByteArray("VELMAR-SAVE-JOURNAL 1\nconnection x\nbody\nQ DELETE")
                             << u"cannot be used: The journal is cut short."_s;
    QTest::newRow("other database") << QByteArray()
                                    << u"the unfinished save belongs to another database: "
                                       "DRIVER={PostgreSQL Unicode};SERVER=elsewhere;PWD=*"_s;
}

void TestVelmarCtl::unusableJournal()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, message);
    POPULATED_SERVER(dir, db);
    const QStringList before = dumpDataSet(readBack(dir));
    const QString path = SaveJournal::pathFor(dir.iniPath());
    if (bytes.isEmpty()) {
        SaveJournal journal;
        journal.setConnectionString(u"DRIVER={PostgreSQL Unicode};SERVER=elsewhere;PWD=secret;"_s);
        journal.addStep(u"Directory"_s);
        journal.addStatement(u"DELETE FROM Member where IsGuestMember=0"_s);
        QVERIFY(journal.write(path));
    } else {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    // load, resave and edit pass the same check before they read.
    QCOMPARE(ctl(dir, { u"load"_s }).exitCode, 3);
    const CtlRun refused = ctl(dir, { u"recover"_s });
    QCOMPARE(refused.exitCode, 1);
    QVERIFY2(refused.err.contains(message), qPrintable(refused.err));
    QVERIFY(refused.err.contains(u"Nothing was replayed."_s));
    QVERIFY(!refused.err.contains(u"secret"_s));
    QVERIFY(QFile::exists(path));
    QCOMPARE(dumpDataSet(readBack(dir)), before);

    const CtlRun discarded = ctl(dir, { u"recover"_s, u"--discard"_s });
    QCOMPARE(discarded.exitCode, 0);
    QVERIFY(!QFile::exists(path));
    QCOMPARE(dumpDataSet(readBack(dir)), before);
    QCOMPARE(ctl(dir, { u"load"_s }).exitCode, 0);
}

void TestVelmarCtl::killedSave_data()
{
    QTest::addColumn<TestDatabase::Backend>("backend");
    for (const TestDatabase::Backend backend : TestDatabase::availableBackends()) {
        // The SQLite ODBC driver writes the same file as the SQLite backend.
        if (backend != TestDatabase::Backend::SqliteOdbc)
            QTest::newRow(qPrintable(TestDatabase::backendName(backend))) << backend;
    }
}

void TestVelmarCtl::killedSave()
{
    VELMAR_BACKEND_DATABASE(db);
    QVERIFY(db.writeConnectionString(dir.hives()));
    QVERIFY2(db.execAll(populatedDatabase() + generatedRows()), qPrintable(db.errorString()));
    // A first save settles what the fixture stores unlike the console (a
    // group whose guest flag is NULL is written again with 0).
    const CtlRun settled = ctl(dir, { u"resave"_s });
    QVERIFY2(settled.exitCode == 0, qPrintable(settled.err));
    // The designed reads carry no ORDER BY, and PostgreSQL hands rows that
    // were deleted and written again back in another order than before: the
    // data sets are compared as multisets of lines.
    auto dump = [&dir] {
        QStringList lines = dumpDataSet(readBack(dir));
        std::sort(lines.begin(), lines.end());
        return lines;
    };
    const QStringList before = dump();
    const QMap<QString, qint64> countsBefore = rowCounts(db);
    const QString journalPath = SaveJournal::pathFor(dir.iniPath());

    // The statement stream of this save, from a journal written by a save
    // stopped before its first statement.
    QString why;
    QVERIFY2(killAt(QStringList { u"resave"_s } + dirArguments(dir), u"statement:0"_s, &why),
        qPrintable(why));
    SaveJournal journal;
    QCOMPARE(SaveJournal::read(journalPath, journal, &why), SaveJournal::ReadStatus::Ok);
    const QStringList statements = journalStatements(journal);
    // Right after each partition is emptied, and in the middle of its rows.
    QList<int> inside;
    QList<int> starts;
    for (int i = 0; i < statements.size(); ++i) {
        if (statements[i].startsWith(u"DELETE FROM"_s) && !statements[i].contains(u"OMemberID"_s))
            starts << i;
    }
    starts << int(statements.size());
    for (int k = 0; k + 1 < starts.size(); ++k) {
        inside << starts[k] + 1;
        if (starts[k + 1] - starts[k] > 3)
            inside << (starts[k] + starts[k + 1]) / 2;
    }
    QStringList points { u"statement:1"_s };
    for (const int index : inside)
        points << u"statement:%1"_s.arg(index);
    points << u"profile"_s << u"notify"_s << u"remove"_s;
    points.removeDuplicates();
    QVERIFY(points.size() > 12);

    // The first kill left its journal too; each round kills one save and
    // recovers it, so the version goes up by exactly one per round.
    int version = 1;
    for (const QString &point : std::as_const(points)) {
        if (point != points.first()) {
            QVERIFY2(killAt(QStringList { u"resave"_s } + dirArguments(dir), point, &why),
                qPrintable(point + u": "_s + why));
        }
        QVERIFY2(QFile::exists(journalPath), qPrintable(point));
        const CtlRun recovered = ctl(dir, { u"recover"_s });
        QVERIFY2(recovered.exitCode == 0, qPrintable(point + u": "_s + recovered.err));
        ++version;
        QCOMPARE(dir.savedVersion(), QString::asprintf("%04d", version));
        QVERIFY2(!QFile::exists(journalPath), qPrintable(point));
        QCOMPARE(rowCounts(db), countsBefore);
        QCOMPARE(dump(), before);
    }
    // A save that ran to its end.
    const CtlRun saved = ctl(dir, { u"resave"_s });
    QVERIFY2(saved.exitCode == 0, qPrintable(saved.err));
    QCOMPARE(dir.savedVersion(), QString::asprintf("%04d", version + 1));
    QVERIFY(!QFile::exists(journalPath));
}

void TestVelmarCtl::usage()
{
    for (const QStringList &arguments :
        { QStringList(), QStringList { u"save"_s }, QStringList { u"load"_s, u"--bogus"_s } }) {
        const CtlRun run = velmarctl(arguments);
        QCOMPARE(run.exitCode, 2);
        QVERIFY(!run.err.isEmpty());
    }
    const CtlRun help = velmarctl({ u"--help"_s });
    QCOMPARE(help.exitCode, 0);
    QVERIFY(help.out.contains("--sql-trace"));
}

void TestVelmarCtl::racingEdits()
{
    // Two administrators' scripts started together on one folder, round
    // after round: each save runs whole or not at all, and one that would
    // overwrite the other's is refused (exit 2) instead of losing it.
    POPULATED_SERVER(dir, db);
    QVERIFY(db.writeConnectionString(dir.hives()));
    QVERIFY2(db.execAll(generatedRows()), qPrintable(db.errorString()));
    const CtlRun settled = ctl(dir, { u"resave"_s });
    QVERIFY2(settled.exitCode == 0, qPrintable(settled.err));
    QMap<QString, qint64> expected = rowCounts(db);
    int version = dir.savedVersion().toInt();
    int saved = 0;
    for (int round = 0; round < 6; ++round) {
        std::unique_ptr<QProcess> processes[2];
        for (int i = 0; i < 2; ++i) {
            processes[i] = startCtl(QStringList { u"member"_s, u"add"_s,
                                        u"r%1x%2"_s.arg(round).arg(i), u"--password"_s, u"p"_s }
                + dirArguments(dir));
        }
        for (int i = 0; i < 2; ++i) {
            QProcess &process = *processes[i];
            QVERIFY(process.waitForFinished(120000));
            const QString err = QString::fromUtf8(process.readAllStandardError());
            const bool ok = process.exitCode() == 0;
            QVERIFY2(ok || (process.exitCode() == 2 && err.contains(u"another program saved"_s)),
                qPrintable(err));
            QCOMPARE(db.count(u"Member"_s, u"MemberID = 'r%1x%2'"_s.arg(round).arg(i)), ok ? 1 : 0);
            if (ok) {
                ++saved;
                ++version;
                // Every new member gets its permissions and a free pool account.
                for (const QString &table : { u"Member"_s, u"AccessToken"_s, u"VoipInfo"_s })
                    ++expected[table];
            }
        }
        QCOMPARE(rowCounts(db), expected);
        QCOMPARE(dir.savedVersion().toInt(), version);
        QVERIFY(!QFile::exists(SaveJournal::pathFor(dir.iniPath())));
    }
    QVERIFY(saved >= 6);
}

void TestVelmarCtl::waitAndConflict()
{
    POPULATED_SERVER(dir, db);
    QVERIFY(db.writeConnectionString(dir.hives()));
    const QStringList addX
        = QStringList { u"member"_s, u"add"_s, u"xavier"_s, u"--password"_s, u"p"_s }
        + dirArguments(dir);
    const QStringList addY
        = QStringList { u"member"_s, u"add"_s, u"yvonne"_s, u"--password"_s, u"p"_s }
        + dirArguments(dir);

    // A save that holds the folder: the others wait up to --wait and give up.
    std::unique_ptr<QProcess> holder = startCtl(addX, u"statement:0"_s);
    QVERIFY(waitUntilStopped(*holder));
    for (const QStringList &arguments : { addY, QStringList { u"load"_s } + dirArguments(dir) }) {
        const CtlRun run = velmarctl(arguments + QStringList { u"--wait"_s, u"1"_s });
        QCOMPARE(run.exitCode, 2);
        QVERIFY2(run.err.contains(u"waiting for another save"_s), qPrintable(run.err));
        QVERIFY2(run.err.contains(u"was still running after 1 s"_s), qPrintable(run.err));
    }
    // One that waits long enough goes on once the first is done, and reads
    // what it saved.
    std::unique_ptr<QProcess> waiter = startCtl(addY);
    QTest::qWait(300);
    QCOMPARE(waiter->state(), QProcess::Running);
    ::kill(pid_t(holder->processId()), SIGCONT);
    QVERIFY(holder->waitForFinished(60000));
    QCOMPARE(holder->exitCode(), 0);
    QVERIFY(waiter->waitForFinished(60000));
    QCOMPARE(waiter->exitCode(), 0);
    QCOMPARE(db.count(u"Member"_s, u"MemberID IN ('xavier', 'yvonne')"_s), 2);

    // Read before another program saved: refused with what changed, unless
    // --force.
    std::unique_ptr<QProcess> late = startCtl(
        QStringList { u"member"_s, u"delete"_s, u"xavier"_s } + dirArguments(dir), u"loaded"_s);
    QVERIFY(waitUntilStopped(*late));
    const CtlRun between = ctl(dir, { u"member"_s, u"add"_s, u"zora"_s, u"--password"_s, u"p"_s });
    QVERIFY2(between.exitCode == 0, qPrintable(between.err));
    ::kill(pid_t(late->processId()), SIGCONT);
    QVERIFY(late->waitForFinished(60000));
    QCOMPARE(late->exitCode(), 2);
    const QString err = QString::fromUtf8(late->readAllStandardError());
    QVERIFY2(err.contains(u"another program saved"_s), qPrintable(err));
    QVERIFY2(err.contains(u"Member: 9 → 10 行 (+1)"_s), qPrintable(err));
    QVERIFY2(err.contains(u"--force"_s), qPrintable(err));
    QCOMPARE(db.count(u"Member"_s, u"MemberID IN ('xavier', 'zora')"_s), 2);
}

void TestVelmarCtl::doctor()
{
    VELMAR_BACKEND_DATABASE(db);
    QVERIFY2(db.execAll(populatedDatabase()), qPrintable(db.errorString()));
    QVERIFY(db.writeConnectionString(dir.hives()));
    QVERIFY2(db.execAll(sqlStatements(u"velmarctl/doctor-anomalies.sql"_s)),
        qPrintable(db.errorString()));
    const auto counts = [](const QJsonArray &findings) {
        QStringList out;
        for (const QJsonValue &finding : findings) {
            if (const int count = finding[u"count"_s].toInt())
                out << finding[u"kind"_s].toString() + u' ' + QString::number(count);
        }
        return out;
    };
    CtlRun run = ctl(dir, { u"doctor"_s, u"--json"_s });
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QJsonObject report = QJsonDocument::fromJson(run.out).object();
    // Examined before the load settles anything; the last two are the
    // working copy's.
    const QStringList before { u"member-id-shared 1"_s, u"group-id-shared 1"_s,
        u"member-flag-stray 1"_s, u"member-flag-null 1"_s, u"group-flag-stray 1"_s,
        u"group-flag-null 1"_s, u"relation-flag-stray 1"_s, u"relation-flag-null 1"_s,
        u"group-parent-missing 1"_s, u"relation-member-missing 1"_s, u"relation-group-missing 1"_s,
        u"relation-duplicate 1"_s, u"accesstoken-member-missing 1"_s,
        u"voipinfo-member-missing 1"_s, u"member-without-accesstoken 8"_s,
        u"member-without-voipinfo 8"_s, u"pool-holder-missing 1"_s, u"voip-id-shared 1"_s,
        u"voip-id-outside-pool 1"_s, u"right-folder-missing 1"_s, u"right-group-missing 1"_s,
        u"right-member-missing 1"_s, u"userid-case-twins 1"_s, u"member-level-wrong 1"_s,
        u"userid-characters 1"_s, u"unsafe-text 1"_s };
    QCOMPARE(counts(report[u"findings"_s].toArray()), before);
    QCOMPARE(report[u"total"_s].toInt(), 40);
    QVERIFY(run.outText().contains(u"\"examples\": [\n                \"777/10\""_s));

    // The save would refuse the quote: mended by hand first.
    QVERIFY(db.exec(u"DELETE FROM Member WHERE OMemberID = 10"_s));
    run = ctl(dir, { u"doctor"_s, u"--json"_s, u"--fix"_s });
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    report = QJsonDocument::fromJson(run.out).object();
    QCOMPARE(report[u"repairSteps"_s].toInt(), 1);
    QCOMPARE(report[u"version"_s].toInt(), 1);
    // What the load and one save settle is gone; the rest needs a person.
    QCOMPARE(counts(report[u"after"_s].toArray()),
        QStringList({ u"member-id-shared 1"_s, u"group-id-shared 1"_s, u"group-flag-stray 1"_s,
            u"relation-flag-null 1"_s, u"accesstoken-member-missing 1"_s,
            u"voipinfo-member-missing 1"_s, u"member-without-accesstoken 7"_s,
            u"member-without-voipinfo 7"_s, u"pool-holder-missing 1"_s, u"voip-id-shared 1"_s,
            u"voip-id-outside-pool 1"_s, u"right-folder-missing 1"_s, u"right-group-missing 1"_s,
            u"right-member-missing 1"_s, u"userid-case-twins 1"_s, u"userid-characters 1"_s }));
    QCOMPARE(db.count(u"Relation"_s, u"OMemberID = 777"_s), 0);
}

void TestVelmarCtl::damagedFilesAndRows()
{
    // A damaged line in the user hive and in Serverinfo.ini, a text in a
    // number column of the database.
    POPULATED_SERVER(dir, db);
    QVERIFY(db.writeConnectionString(dir.hives()));
    QVERIFY(db.exec(u"INSERT INTO Member (OMemberID, MemberID, Passwd, Gender, IsGuestMember) "
                    u"VALUES (7,'text','x','abc',0)"_s));
    const QString hive = dir.hives().hive(RegistryRoot::CurrentUser).filePath();
    QVERIFY(dir.writeFile(u"../registry/HKEY_CURRENT_USER.reg"_s,
        "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\n\"A\"=\"1\"\n"));
    QFile ini(dir.iniPath());
    QVERIFY(ini.open(QIODevice::Append));
    ini.write("[GroupInfo\r\n");
    ini.close();
    const int iniLine = int(dir.readFile(u"Serverinfo.ini"_s).count('\n'));

    CtlRun run = ctl(dir, { u"doctor"_s, u"--verbose"_s });
    QCOMPARE(run.exitCode, 1); // the load stopped; the findings are printed anyway
    QVERIFY2(run.err.contains(u"skipped a damaged line: %1:3: "_s.arg(hive)), qPrintable(run.err));
    QVERIFY2(run.err.contains(u"skipped a damaged line: %1:%2: "_s.arg(dir.iniPath()).arg(iniLine)),
        qPrintable(run.err));
    QVERIFY2(run.err.contains(u"holds 'abc', not a 32-bit number."_s), qPrintable(run.err));
    QVERIFY2(run.outText().contains(u"Member.Gender (OMemberID=7, MemberID=text): 'abc'"_s),
        qPrintable(run.outText()));
    // Neither file was written.
    QCOMPARE(dir.readFile(u"../registry/HKEY_CURRENT_USER.reg"_s),
        QByteArray("REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\n\"A\"=\"1\"\n"));

    // With the row mended, a save still cannot write the organisation
    // version into the damaged ini file: nobody is there to agree to a
    // rewrite, so nothing is saved.
    QVERIFY(db.exec(u"UPDATE Member SET Gender = 0 WHERE OMemberID = 7"_s));
    const QByteArray iniBefore = dir.readFile(u"Serverinfo.ini"_s);
    run = ctl(dir, { u"member"_s, u"add"_s, u"fresh"_s, u"--password"_s, u"pf"_s });
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.err.contains(u"%1:%2: [GroupInfo"_s.arg(dir.iniPath()).arg(iniLine)),
        qPrintable(run.err));
    QCOMPARE(dir.readFile(u"Serverinfo.ini"_s), iniBefore);
    QCOMPARE(db.count(u"Member"_s, u"MemberID = 'fresh'"_s), 0);
}

QTEST_GUILESS_MAIN(TestVelmarCtl)
#include "tst_velmarctl.moc"
