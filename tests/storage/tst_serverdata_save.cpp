#include "ChangeGuard.h"
#include "CRegistry.h"
#include "CVelmarManagerDoc.h"
#include "DbConnection.h"
#include "DbSession.h"
#include "Directory.h"
#include "DirectoryFixture.h"
#include "GroupTreeModel.h"
#include "MemberListModel.h"
#include "NoticeEditor.h"
#include "NoticeListModel.h"
#include "NotificationListeners.h"
#include "PositionListModel.h"
#include "ProfileFile.h"
#include "Recordset.h"
#include "SaveJournal.h"
#include "SavePreflight.h"
#include "SavePreview.h"
#include "SaveRecovery.h"
#include "ScriptedMessageService.h"
#include "ServerDataFixture.h"
#include "ServerDataLoader.h"
#include "ServerDataSaver.h"
#include "ServerDataSet.h"
#include "ServerFolderLock.h"
#include "ServerNotification.h"
#include "SqlTrace.h"
#include "TempServerDir.h"
#include "TestDatabase.h"

#include <memory>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// One server folder with a database, a loaded working copy and the saver's
// collaborators.
class SaveEnv
{
public:
    bool setUp(TestDatabase::Backend backend, const QStringList &statements)
    {
        db = std::make_unique<TestDatabase>(backend, dir.programDir());
        if (!db->isValid() || !db->writeConnectionString(dir.hives()) || !db->execAll(statements)) {
            error = db->errorString();
            return false;
        }
        ServerDataLoader::Result result;
        ServerDataSet set = readBack(dir, &result);
        error = result.error.formatted();
        data.adopt(std::move(set), CVelmarManagerDoc::LoadState::Complete);
        return result.ok() && listeners.bind(&error);
    }

    void traceTo(const QString &name)
    {
        tracePath = dir.filePath(name);
        trace = std::make_unique<SqlTrace>(tracePath);
    }

    template<typename Use> auto withSaver(Use use)
    {
        DbSession session(dir.hives(), dir.iniPath(), dir.databasePath(), messages, trace.get());
        ServerDataSaver saver(
            data, session, messages, dir.iniPath(), dir.hives(), dir.programDir());
        saver.setPause([this](int ms) {
            pauses << ms;
            portsAtPause << listeners.drain();
        });
        saver.setConflictPolicy(policy);
        saver.setLockWait(lockWait);
        return use(saver);
    }

    ServerDataSaver::Result save(bool confirmed)
    {
        return withSaver([&](ServerDataSaver &saver) { return saver.save(confirmed); });
    }

    bool saveOnClose()
    {
        return withSaver([](ServerDataSaver &saver) { return saver.saveOnClose(); });
    }

    QString journalPath() const { return SaveJournal::pathFor(dir.iniPath()); }

    QString version() const { return dir.savedVersion(); }

    QStringList statements() const
    {
        QStringList out;
        static const QRegularExpression space(u"\\s+"_s);
        for (QString line : readTrace(tracePath))
            out << line.replace(space, u" "_s).trimmed();
        return out;
    }

    // The statements without the reads of the concurrent-change check.
    QStringList writes() const
    {
        QStringList out = readTrace(tracePath);
        out.removeIf([](const QString &line) { return line.startsWith(u"SELECT "_s); });
        return out;
    }

    ServerDataSaver::ConflictPolicy policy = ServerDataSaver::ConflictPolicy::Ask;
    ServerFolderLock::Wait lockWait = ServerFolderLock::waitUpTo(60000);
    TempServerDir dir;
    std::unique_ptr<TestDatabase> db;
    ScriptedMessageService messages;
    std::unique_ptr<SqlTrace> trace;
    QString tracePath;
    CVelmarManagerDoc data;
    NotificationListeners listeners;
    QList<int> pauses;
    QStringList portsAtPause;
    QString error; // why setUp failed
};

// One statement of each step: the runner sends a step's statements alike,
// so which of them fails makes no difference to it.
enum class Poison {
    DeletedMemberRows,
    RegularMemberName,
    PositionName,
    AccessTokenRows,
    GroupRights,
    PoolVoipId,
};

// The table a trigger poison sits on, and the rows it refuses.
QString triggerTable(Poison poison)
{
    switch (poison) {
    case Poison::DeletedMemberRows:
        return u"LeavedMemo"_s;
    case Poison::RegularMemberName:
        return u"Member"_s;
    case Poison::PositionName:
        return u"Rank"_s;
    case Poison::AccessTokenRows:
        return u"AccessToken"_s;
    case Poison::GroupRights:
        return u"GroupAuthority"_s;
    case Poison::PoolVoipId:
        return u"VoipNumberList"_s;
    }
    return {};
}

// Every statement of a step can fail (a lock, a constraint, a full disk);
// a trigger that raises stands in for all of them.
bool applyPoison(SaveEnv &env, Poison poison, QString *error)
{
    Directory &directory = *env.data.directory();
    const QString table = triggerTable(poison);
    switch (poison) {
    case Poison::DeletedMemberRows:
        // carl (3) is deleted; his memo row cannot be.
        env.data.editor().deleteMembers(false, { directory.regularMembers()->rowOfId(3) });
        return env.db->exec(u"INSERT INTO LeavedMemo (OMemberID) VALUES (3)"_s)
            && createPoisonTrigger(*env.db, u"DELETE"_s, table, {}, error);
    case Poison::RegularMemberName:
        return createPoisonTrigger(*env.db, u"INSERT"_s, table, u"IsGuestMember = 0"_s, error);
    case Poison::PoolVoipId:
        return createPoisonTrigger(*env.db, u"UPDATE"_s, table, {}, error);
    case Poison::AccessTokenRows:
        env.data.permissionsForSave().setFlag(1, CAccessToken::ChatOn, false);
        return createPoisonTrigger(*env.db, u"INSERT"_s, table, {}, error);
    case Poison::PositionName:
    case Poison::GroupRights:
        return createPoisonTrigger(*env.db, u"INSERT"_s, table, {}, error);
    }
    return false;
}

bool fixPoison(SaveEnv &env, Poison poison)
{
    return dropPoisonTrigger(*env.db, triggerTable(poison));
}

} // namespace

Q_DECLARE_METATYPE(Poison)
Q_DECLARE_METATYPE(ServerDataSaver::Step)

// On the row's backend; SQLITE_SAVE_ENV on the SQLite file, for what does not
// differ between backends.
#define SAVE_ENV(env, statements)                                                                  \
    QFETCH(TestDatabase::Backend, backend);                                                        \
    SaveEnv env;                                                                                   \
    QVERIFY2(env.setUp(backend, statements), qPrintable(env.error))
#define SQLITE_SAVE_ENV(env, statements)                                                           \
    SaveEnv env;                                                                                   \
    QVERIFY2(env.setUp(TestDatabase::Backend::SqliteFile, statements), qPrintable(env.error))

// The save command against every backend, with real listeners for the
// notification ports.
class TestServerDataSave : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void statementOrder_data() { TestDatabase::addBackends(); }
    void statementOrder();
    void refusals_data();
    void refusals();
    void versionAndNotifications_data();
    void versionAndNotifications();
    void failingStatement_data();
    void failingStatement();
    void unsafeTexts();
    void unsafeReason_data();
    void unsafeReason();
    void journal();
    void journalNotWritable_data();
    void journalNotWritable();
    void noticeDeleteFailure();
    void saveOnClose_data();
    void saveOnClose();
    void lockedDatabase_data() { TestDatabase::addBackends(); }
    void lockedDatabase();
    void concurrentChange_data();
    void concurrentChange();
    void saveLock();
    void preview_data() { TestDatabase::addBackends(); }
    void preview();
};

void TestServerDataSave::statementOrder()
{
    SAVE_ENV(env, TestDatabase::statementsFrom(u"storage/save-order.sql"_s));
    env.traceTo(u"save.sql"_s);
    // Member 3 goes with its permissions, and a notice.
    Directory &directory = *env.data.directory();
    QVERIFY(
        env.data.editor().deleteMembers(false, { directory.regularMembers()->rowOfId(3) }).ok());
    QCOMPARE(NoticeEditor(env.data).deleteNotices({ 0 }).applied, 1);
    QVERIFY(env.data.isModified());

    env.messages.queueAnswer(MessageService::Yes);
    const ServerDataSaver::Result result = env.save(false);
    QVERIFY2(result.ok(), qPrintable(result.error.formatted()));
    QCOMPARE(env.messages.boxTexts(), QStringList { u"确定要保存?"_s });
    QCOMPARE(env.messages.boxes().constFirst().buttons, MessageService::Buttons::YesNo);
    QVERIFY(env.messages.balloons().isEmpty());

    const QStringList expected {
        u"DELETE FROM Rank"_s,
        u"INSERT INTO Rank (ORankID,RankName) VALUES ('1' ,'职员')"_s,
        u"DELETE FROM AccessToken"_s,
        u"INSERT INTO AccessToken (OMemberID, MessageOn, ChatOn, FileTransferOn, TTSOn, VoiceToPhoneOn, OneToOneCallOn, SMSOn, VoipOn) VALUES ( '1','1','1','1','1','1','1','1','1')"_s,
        u"DELETE FROM VoipInfo"_s,
        u"INSERT INTO VoipInfo (OMemberID, ID, Pass) VALUES ( '1', 'v1', 'p1')"_s,
        u"DELETE FROM Folder"_s,
        u"INSERT INTO Folder (OFolderID,FolderPath) VALUES ('1' ,'docs\\\\2007')"_s,
        u"DELETE FROM GroupAuthority"_s,
        u"INSERT INTO GroupAuthority (OFolderID,OGroupID,Authority) VALUES ('1' ,'10' ,'W')"_s,
        u"DELETE FROM UserAuthority"_s,
        u"INSERT INTO UserAuthority (OFolderID,OMemberID,Authority) VALUES ('1' ,'1' ,'R')"_s,
        u"UPDATE VoipNumberList SET OMemberID = 1 WHERE VOIP_ID = 'v1'"_s,
        u"DELETE FROM CONTENTS where OCONTENTSID=100;"_s,
    };
    // The concurrent-change check reads the rewritten tables before the
    // save writes anything, and again for the next save once it is done.
    const QStringList statements = env.statements();
    const qsizetype directoryRows = 23;
    QStringList guard;
    for (const QString &table : ChangeGuard::tableNames())
        guard << ChangeGuard::checksumQuery(table, env.db->connect().dialect());
    QCOMPARE(statements.mid(0, guard.size()), guard);
    QCOMPARE(statements.mid(statements.size() - guard.size()), guard);
    // The directory's own statements (the deleted member's rows, then the
    // trees; tst_directory_db) come first, then the other tables.
    QStringList body = statements.mid(guard.size(), statements.size() - 2 * guard.size());
    QCOMPARE(body.value(0), u"DELETE FROM Relation WHERE OGroupID = 3"_s);
    QCOMPARE(
        body.value(directoryRows - 1), u"UPDATE MEMBER SET MemberLevel = 1 where OmemberID = 2"_s);
    body.remove(0, qMin(directoryRows, body.size()));
    QCOMPARE(body, expected);

    QCOMPARE(env.version(), u"0001"_s);
    QCOMPARE(env.listeners.drain(), QStringList { u"55052"_s });
    QVERIFY(env.pauses.isEmpty());
    QVERIFY(!env.data.isModified());
    QVERIFY(env.data.deletedMemberIds().isEmpty());
    QCOMPARE(dumpDataSet(readBack(env.dir)), dumpServerData(env.data));
}

void TestServerDataSave::refusals_data()
{
    QTest::addColumn<int>("answer"); // to "确定要保存?", 0: confirmed beforehand
    QTest::addColumn<int>("emptyField"); // -1 none, else the member column emptied
    QTest::addColumn<bool>("guest");
    QTest::addColumn<ServerDataSaver::Outcome>("outcome");
    QTest::addColumn<QString>("balloon");
    QTest::newRow("declined") << int(MessageService::No) << -1 << false
                              << ServerDataSaver::Outcome::Declined << QString();
    QTest::newRow("regular member without password")
        << int(MessageService::Yes) << int(MemberListModel::PasswordColumn) << false
        << ServerDataSaver::Outcome::MemberMissing << u"用户ID和密码为空."_s;
    QTest::newRow("guest member without password")
        << 0 << int(MemberListModel::PasswordColumn) << true
        << ServerDataSaver::Outcome::MemberMissing << u"用户ID和密码为空."_s;
}

void TestServerDataSave::refusals()
{
    QFETCH(int, answer);
    QFETCH(int, emptyField);
    QFETCH(bool, guest);
    QFETCH(ServerDataSaver::Outcome, outcome);
    QFETCH(QString, balloon);
    SQLITE_SAVE_ENV(env, populatedDatabase());
    env.traceTo(u"save.sql"_s);
    const QStringList before = dumpDataSet(readBack(env.dir));
    QVERIFY(env.data.editor().deleteMembers(false, { 0 }).ok());
    if (emptyField >= 0) {
        MemberListModel &members = *env.data.directory()->members(guest);
        QVERIFY(members.setData(members.index(members.memberCount() - 1, emptyField), QString()));
    }

    if (answer != 0)
        env.messages.queueAnswer(answer);
    const ServerDataSaver::Result result = env.save(answer == 0);
    QCOMPARE(result.outcome, outcome);
    if (outcome == ServerDataSaver::Outcome::MemberMissing) {
        QCOMPARE(result.memberIsGuest, guest);
        QCOMPARE(result.memberRow, env.data.directory()->members(guest)->memberCount() - 1);
    }
    QCOMPARE(
        env.messages.balloonTexts(), balloon.isEmpty() ? QStringList() : QStringList { balloon });
    if (!balloon.isEmpty())
        QCOMPARE(env.messages.balloons().constFirst().timeoutMs, 3000);

    // Nothing reached the database, the profile or the server.
    QVERIFY(env.statements().isEmpty() || env.statements().first().startsWith(u"cannot read"_s));
    QCOMPARE(dumpDataSet(readBack(env.dir)), before);
    QCOMPARE(env.version(), u"absent"_s);
    QVERIFY(env.listeners.drain().isEmpty());
    QVERIFY(env.data.isModified());
    QCOMPARE(env.data.deletedMemberIds().size(), 1);
}

// What a save does with Serverinfo.ini (the version it bumps, the rest kept)
// and whom it tells: the server, and the distribution server when UseDist is set.
void TestServerDataSave::versionAndNotifications_data()
{
    QTest::addColumn<QString>("stored"); // empty: no value
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("useDist"); // empty: no value
    QTest::addColumn<bool>("distribution");
    QTest::newRow("absent") << QString() << u"0001"_s << QString() << false;
    QTest::newRow("0042, UseDist 0") << u"0042"_s << u"0043"_s << u"0"_s << false;
    QTest::newRow("9999 wraps, UseDist 1") << u"9999"_s << u"0001"_s << u"1"_s << true;
    QTest::newRow("not a number, UseDist 2") << u"abc"_s << u"0001"_s << u"2"_s << true;
    QTest::newRow("leading digits") << u"12abc"_s << u"0013"_s << QString() << false;
}

void TestServerDataSave::versionAndNotifications()
{
    QFETCH(QString, stored);
    QFETCH(QString, written);
    QFETCH(QString, useDist);
    QFETCH(bool, distribution);
    SQLITE_SAVE_ENV(env, populatedDatabase());
    QVERIFY(env.dir.writeFile(u"Serverinfo.ini"_s,
        "[ServerInfo]\r\nDefaultPositionID=1\r\n"
            + (useDist.isEmpty() ? QByteArray() : "UseDist=" + useDist.toUtf8() + "\r\n")
            + "[GroupInfo]\r\n"
            + (stored.isEmpty() ? QByteArray() : "Version=" + stored.toUtf8() + "\r\n")
            + "[Other]\r\nKey=kept\r\n"));
    // The file was written by hand after the load, not by another save.
    env.data.setOrigin({});
    const ServerDataSaver::Result result = env.save(true);
    QVERIFY(result.ok());
    QCOMPARE(env.version(), written);
    QCOMPARE(result.version, written.toInt());
    ProfileFile profile(env.dir.iniPath());
    QCOMPARE(profile.readString(u"Other"_s, u"Key"_s, {}, 128), u"kept"_s);
    QCOMPARE(profile.readString(u"ServerInfo"_s, u"DefaultPositionID"_s, {}, 128), u"1"_s);
    // 55051 has its datagram before the pause, 55052 only after it.
    QCOMPARE(env.pauses, distribution ? QList<int> { 3000 } : QList<int>());
    QCOMPARE(env.portsAtPause, distribution ? QStringList { u"55051"_s } : QStringList());
    QCOMPARE(env.listeners.drain(), QStringList { u"55052"_s });
    QVERIFY(env.messages.boxes().isEmpty());
}

void TestServerDataSave::failingStatement_data()
{
    QTest::addColumn<TestDatabase::Backend>("backend");
    QTest::addColumn<Poison>("poison");
    QTest::addColumn<ServerDataSaver::Step>("step");
    using S = ServerDataSaver::Step;
    const QList<std::tuple<const char *, Poison, S>> poisons {
        { "deleted member rows", Poison::DeletedMemberRows, S::DeletedMembers },
        { "regular member name", Poison::RegularMemberName, S::Directory },
        { "position name", Poison::PositionName, S::Positions },
        { "access tokens", Poison::AccessTokenRows, S::Permissions },
        { "group rights", Poison::GroupRights, S::FileBox },
        { "pool voip id", Poison::PoolVoipId, S::VoipPool },
    };
    // Every step on the SQLite file; on the other backends one step that
    // reports with the balloon and one with the session's error box, for
    // their drivers' errors.
    for (const TestDatabase::Backend backend : TestDatabase::availableBackends()) {
        for (const auto &[name, poison, step] : poisons) {
            if (backend == TestDatabase::Backend::SqliteFile || poison == Poison::RegularMemberName
                || poison == Poison::GroupRights)
                QTest::addRow("%s %s", qPrintable(TestDatabase::backendName(backend)), name)
                    << backend << poison << step;
        }
    }
}

void TestServerDataSave::failingStatement()
{
    QFETCH(Poison, poison);
    QFETCH(ServerDataSaver::Step, step);
    SAVE_ENV(env, populatedDatabase());
    ProfileFile(env.dir.iniPath()).writeString(u"ServerInfo"_s, u"UseDist"_s, u"1"_s);
    QString error;
    QVERIFY2(applyPoison(env, poison, &error), qPrintable(error));
    // An edit of its own, so that "still modified" below means something for
    // every poison: a renamed group writes the same rows as before.
    const DirectoryTree &tree = env.data.directory()->treeData(false);
    const DirectoryNode *group = tree.findGroup(tree.groupIdsInIndexOrder().first());
    QVERIFY(env.data.editor().renameGroup(false, group, group->name() + u'+').ok());
    const QStringList memory = dumpServerData(env.data);
    const QList<qint32> deleted = env.data.deletedMemberIds();

    const ServerDataSaver::Result failed = env.save(true);
    QCOMPARE(failed.outcome, ServerDataSaver::Outcome::DatabaseError);
    QCOMPARE(failed.failedStep, step);
    QVERIFY(!failed.error.description.isEmpty());
    if (step == ServerDataSaver::Step::Permissions || step == ServerDataSaver::Step::FileBox) {
        // The permission and file-box writes report as the database session
        // does: its error box, no balloon.
        QVERIFY(failed.errorBoxShown);
        QVERIFY(env.messages.balloons().isEmpty());
        QCOMPARE(env.messages.boxes().size(), 1);
        const MessageService::Box &box = env.messages.boxes().constFirst();
        // The text's form is the error's own to test.
        QCOMPARE(box.text, failed.error.formatted());
        QVERIFY2(box.text.contains(u"poisoned"_s), qPrintable(box.text));
        QCOMPARE(box.title, failed.error.systemMessage());
        QCOMPARE(box.buttons, MessageService::Buttons::Ok);
    } else {
        QVERIFY(!failed.errorBoxShown);
        QCOMPARE(env.messages.balloonTexts(), QStringList { u"数据库发生错误."_s });
        QCOMPARE(env.messages.balloons().constFirst().timeoutMs, 3000);
        QVERIFY(env.messages.boxes().isEmpty());
    }
    // The pool is written after the version by design; everything before it
    // leaves the version alone. No notification either way.
    QCOMPARE(env.version(), step == ServerDataSaver::Step::VoipPool ? u"0001"_s : u"absent"_s);
    QVERIFY(env.listeners.drain().isEmpty());
    QVERIFY(env.pauses.isEmpty());
    // The working copy is as it was, deleted members included, and still modified.
    QCOMPARE(dumpServerData(env.data), memory);
    QCOMPARE(env.data.deletedMemberIds(), deleted);
    QVERIFY(env.data.isModified());
    // The journal stays for the next start, which finishes the save.
    QVERIFY(QFile::exists(env.journalPath()));

    // With the cause gone the next save rewrites everything (what else a save
    // does is statementOrder's to test).
    QVERIFY(fixPoison(env, poison));
    const ServerDataSaver::Result saved = env.save(true);
    QVERIFY2(saved.ok(), qPrintable(saved.error.formatted()));
    QCOMPARE(env.version(), step == ServerDataSaver::Step::VoipPool ? u"0002"_s : u"0001"_s);
    QVERIFY(!QFile::exists(env.journalPath()));
    QCOMPARE(dumpDataSet(readBack(env.dir)), dumpServerData(env.data));
    if (poison == Poison::DeletedMemberRows)
        QCOMPARE(env.db->count(u"LeavedMemo"_s), 0);
}

void TestServerDataSave::unsafeTexts()
{
    SQLITE_SAVE_ENV(env, populatedDatabase());
    env.traceTo(u"unsafe.trace"_s);
    Directory &directory = *env.data.directory();
    DirectoryEditor &editor = env.data.editor();
    const DirectoryNode *sales = directory.treeData(false).root()->child(0);
    QVERIFY(editor.addGroup(false, sales, u"O'Brien"_s).ok());
    QVERIFY(editor.addGroup(true, directory.treeData(true).root(), u"Bob's"_s).ok());
    // The character rule keeps quotes out of user IDs, but not out of the
    // other cells; the nickname is escaped on the way in and never named.
    QVERIFY(editor.addMember(false, u"oneil"_s).ok());
    MemberListModel &members = *directory.regularMembers();
    const int row = members.rowOfLoginName(u"oneil"_s);
    for (const auto &[column, text] :
        { std::pair { MemberListModel::DisplayNameColumn, u"O'Neil"_s },
            { MemberListModel::PasswordColumn, u"pw"_s },
            { MemberListModel::EmailColumn, u"o'neil@x.cn"_s },
            { MemberListModel::NicknameColumn, u"it's fine"_s } })
        QVERIFY(members.setData(members.index(row, column), text));
    QVERIFY(editor.addMember(true, u"guest2"_s).ok());
    MemberListModel &guests = *directory.guestMembers();
    QVERIFY(guests.setData(
        guests.index(guests.rowOfLoginName(u"guest2"_s), MemberListModel::DisplayNameColumn),
        u"G'uest"_s));
    QVERIFY(guests.setData(
        guests.index(guests.rowOfLoginName(u"guest2"_s), MemberListModel::PasswordColumn),
        u"pw"_s));
    QVERIFY(editor.addPosition(u"it's"_s).ok());
    env.data.permissionsForSave().editVoipAccount(
        1, AccessTokenTable::VoipField::Password, u"p'w"_s, &env.data.voipPoolForSave());
    env.data.fileBoxForSave().addFolder(u"it's\\mine"_s);
    env.data.voipPoolForSave().append({ u"p'q"_s, u"pp"_s, 0 });
    const QStringList memory = dumpServerData(env.data);
    const QStringList before = dumpDataSet(readBack(env.dir));

    const ServerDataSaver::Result refused = env.save(true);
    QCOMPARE(refused.outcome, ServerDataSaver::Outcome::UnsafeText);
    // Every offending text is named, in the order the save writes them.
    QCOMPARE(env.messages.boxTexts(),
        QStringList {
            u"以下内容含有数据库不能保存的字符(如单引号)，什么都没有保存。请修改后再保存:\r\n"
            "类别 /Sales/O'Brien\r\n"
            "论坛结构 /Bob's\r\n"
            "会员 oneil 的 姓名\r\n"
            "会员 oneil 的 邮箱\r\n"
            "论坛用户 guest2 的 姓名\r\n"
            "等级 it's\r\n"
            "会员 anna 的 VoIP 密码\r\n"
            "文件夹 it's\\mine\r\n"
            "VoIP 号码 p'q"_s });
    QCOMPARE(env.messages.boxes().constFirst().icon, MessageService::Icon::Exclamation);
    QVERIFY(env.messages.balloons().isEmpty());
    // Nothing reached the database, the information file or the server.
    QVERIFY(env.writes().isEmpty());
    QVERIFY(!QFile::exists(env.journalPath()));
    QCOMPARE(env.version(), u"absent"_s);
    QVERIFY(env.listeners.drain().isEmpty());
    QCOMPARE(dumpDataSet(readBack(env.dir)), before);
    QCOMPARE(dumpServerData(env.data), memory);
    QVERIFY(env.data.isModified());

    // A long list is cut, saying how many more there are.
    const QString cut = SavePreflight::refusalText(refused.problems, 3);
    QVERIFY(cut.endsWith(u"\r\n会员 oneil 的 姓名\r\n... 另有 6 项"_s));
}

void TestServerDataSave::unsafeReason_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<SqlDialect>("dialect");
    QTest::addColumn<bool>("unsafe");
    QTest::newRow("plain") << u"销售部 East; \"x\" % _"_s << SqlDialect::Sqlite << false;
    QTest::newRow("quote") << u"O'Brien"_s << SqlDialect::Sqlite << true;
    QTest::newRow("quote pg") << u"O'Brien"_s << SqlDialect::PostgreSql << true;
    QTest::newRow("nul") << QStringView(u"a\0b", 3).toString() << SqlDialect::PostgreSql << true;
    QTest::newRow("backslash sqlite") << u"D:\\share\\"_s << SqlDialect::Sqlite << false;
    QTest::newRow("backslash pg") << u"D:\\share\\"_s << SqlDialect::PostgreSql << false;
    QTest::newRow("backslash mysql") << u"D:\\share\\"_s << SqlDialect::MySql << true;
    QTest::newRow("line break") << u"a\r\nb"_s << SqlDialect::SqlServer << false;
}

void TestServerDataSave::unsafeReason()
{
    QFETCH(QString, text);
    QFETCH(SqlDialect, dialect);
    QFETCH(bool, unsafe);
    QCOMPARE(!SavePreflight::unsafeReason(text, dialect).isEmpty(), unsafe);
}

void TestServerDataSave::journal()
{
    SQLITE_SAVE_ENV(env, populatedDatabase());
    env.traceTo(u"journal.trace"_s);
    ProfileFile(env.dir.iniPath()).writeString(u"ServerInfo"_s, u"UseDist"_s, u"1"_s);
    ProfileFile(env.dir.iniPath()).writeString(u"GroupInfo"_s, u"Version"_s, u"0041"_s);
    env.data.setOrigin({}); // written by hand, not by another save
    QCOMPARE(NoticeEditor(env.data).deleteNotices({ 0 }).applied, 1);
    const NoticeRecord notice = env.data.notices()->pendingDeletions().constFirst();

    // The journal written just before the first statement, as the saver
    // builds it: it is what a later recovery replays.
    DbSession session(env.dir.hives(), env.dir.iniPath(), env.dir.databasePath(), env.messages);
    ServerDataSaver saver(
        env.data, session, env.messages, env.dir.iniPath(), env.dir.hives(), env.dir.programDir());
    const SaveJournal built = saver.buildJournal(env.db->connect().dialect(), 42);
    QVERIFY(built.write(env.journalPath()));
    SaveJournal journal;
    QString why;
    QCOMPARE(SaveJournal::read(env.journalPath(), journal, &why), SaveJournal::ReadStatus::Ok);
    QCOMPARE(journal.connectionString(), session.connectionString());
    QCOMPARE(journal.notifyPorts(), (QList<quint16> { 55051, 55052 }));
    QCOMPARE(journal.body(), built.body());
    const QStringList recorded = journalStatements(journal);
    QStringList profileWrites;
    QStringList steps;
    SaveJournal::Cursor cursor;
    SaveJournal::Action action;
    while (journal.nextAction(cursor, action)) {
        if (action.kind == SaveJournal::Kind::ProfileWrite)
            profileWrites << action.text + u'/' + action.key + u'=' + action.value;
        else if (action.kind == SaveJournal::Kind::Step)
            steps << action.text;
        if (action.kind == SaveJournal::Kind::NoticeDelete) {
            QCOMPARE(action.key, QString::number(notice.id));
            QCOMPARE(action.text, u"DELETE FROM CONTENTS where OCONTENTSID=%1;"_s.arg(notice.id));
        }
    }
    QCOMPARE(profileWrites, QStringList { u"GroupInfo/Version=0042"_s });
    QCOMPARE(steps,
        (QStringList { u"DeletedMembers"_s, u"Directory"_s, u"Positions"_s, u"Permissions"_s,
            u"FileBox"_s, u"VoipPool"_s, u"Notices"_s }));
    QCOMPARE(journal.statementCount(), recorded.size());

    // The save sends exactly the journal's statements, in its order, and
    // removes the journal once the server has been told.
    QFile::remove(env.journalPath());
    const ServerDataSaver::Result saved = env.save(true);
    QVERIFY2(saved.ok(), qPrintable(saved.error.formatted()));
    QCOMPARE(saved.version, 42);
    QCOMPARE(env.version(), u"0042"_s);
    QCOMPARE(saved.statements, recorded.size());
    QCOMPARE(env.writes(), recorded);
    QVERIFY(!QFile::exists(env.journalPath()));
    QVERIFY(env.data.notices()->pendingDeletions().isEmpty());

    // A journal altered, cut short or padded is never taken for a good one.
    QVERIFY(built.write(env.journalPath()));
    QFile file(env.journalPath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray good = file.readAll();
    file.close();
    const QList<QByteArray> bad {
        good.left(good.size() / 2),
        good.left(good.size() - 1),
        good + "Q DELETE FROM Member\n",
        QByteArray(good).replace("IsGuestGroup=0", "IsGuestGroup=1"),
        QByteArray(),
        QByteArray("VELMAR-SAVE-JOURNAL 1\nend 22 x\n"),
    };
    for (const QByteArray &bytes : bad) {
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        file.close();
        QCOMPARE(
            SaveJournal::read(env.journalPath(), journal, &why), SaveJournal::ReadStatus::Corrupt);
        QVERIFY(!why.isEmpty());
    }
}

void TestServerDataSave::journalNotWritable_data()
{
    QTest::addColumn<bool>("readOnlyFolder"); // else: a folder stands where the journal goes
    QTest::newRow("folder in the journal's place") << false;
    QTest::newRow("read-only server folder") << true;
}

void TestServerDataSave::journalNotWritable()
{
    QFETCH(bool, readOnlyFolder);
    if (readOnlyFolder && ::geteuid() == 0)
        QSKIP("root writes into read-only folders; the other row covers the refusal");
    SQLITE_SAVE_ENV(env, populatedDatabase());
    env.traceTo(u"readonly.trace"_s);
    env.data.editor().addGroup(false, env.data.directory()->treeData(false).root(), u"New"_s);
    const QStringList before = dumpDataSet(readBack(env.dir));
    const QString folder = QFileInfo(env.journalPath()).absolutePath();
    if (readOnlyFolder)
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner);
    else
        QVERIFY(QDir(folder).mkpath(env.journalPath() + u"/blocked"_s));
    const ServerDataSaver::Result refused = env.save(true);
    if (readOnlyFolder)
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QCOMPARE(refused.outcome, ServerDataSaver::Outcome::JournalError);
    QCOMPARE(env.messages.boxes().size(), 1);
    QVERIFY(env.messages.boxTexts().constFirst().startsWith(u"无法写入保存记录文件 "_s));
    QVERIFY(env.messages.boxTexts().constFirst().endsWith(u"\r\n数据库没有被修改。"_s));
    QCOMPARE(env.messages.boxes().constFirst().icon, MessageService::Icon::Exclamation);
    QVERIFY(env.writes().isEmpty());
    QCOMPARE(dumpDataSet(readBack(env.dir)), before);
    QCOMPARE(env.version(), u"absent"_s);
    QVERIFY(env.listeners.drain().isEmpty());
    QVERIFY(env.data.isModified());
}

void TestServerDataSave::noticeDeleteFailure()
{
    SQLITE_SAVE_ENV(env,
        populatedDatabase()
            << u"UPDATE CONTENTS SET FileSessionID = 'sess0' WHERE OCONTENTSID = 100"_s);
    // The first notice cannot be deleted; the second one can.
    {
        QSqlDatabase raw = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"raw-notice"_s);
        raw.setDatabaseName(env.db->filePath());
        QVERIFY(raw.open());
        QVERIFY(QSqlQuery(raw).exec(
            u"CREATE TRIGGER poison BEFORE DELETE ON CONTENTS WHEN OLD.OCONTENTSID = 100 BEGIN SELECT RAISE(ABORT, 'poisoned'); END"_s));
    }
    QSqlDatabase::removeDatabase(u"raw-notice"_s);
    QCOMPARE(NoticeEditor(env.data).deleteNotices({ 0, 1 }).applied, 2);
    // Both have uploaded items; the one beside the process goes with its notice.
    const QString previous = QDir::currentPath();
    QVERIFY(QDir::setCurrent(env.dir.programDir()));
    for (const QString &session : { u"sess0"_s, u"sess1"_s })
        QVERIFY(QDir().mkpath(u"VelmarFile2Upload/"_s + session) && QDir().mkpath(session));

    const ServerDataSaver::Result result = env.save(true);
    QDir::setCurrent(previous);
    QVERIFY(result.ok());
    QCOMPARE(result.failedNoticeDeletes, 1);
    // Reported as the database session reports errors; the save goes on.
    QCOMPARE(env.messages.boxes().size(), 1);
    QVERIFY(env.messages.boxTexts().first().startsWith(u"(80004005) Unspecified error\r\n"_s));
    QCOMPARE(env.db->column(u"SELECT OCONTENTSID FROM CONTENTS"_s), QStringList { u"100"_s });
    QVERIFY(QFileInfo::exists(env.dir.filePath(u"sess0"_s)));
    QVERIFY(!QFileInfo::exists(env.dir.filePath(u"sess1"_s)));
    QCOMPARE(env.version(), u"0001"_s);
    QCOMPARE(env.listeners.drain(), QStringList { u"55052"_s });
}

void TestServerDataSave::saveOnClose_data()
{
    QTest::addColumn<bool>("modified");
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("breakSave");
    QTest::addColumn<bool>("closes");
    QTest::addColumn<bool>("written");
    QTest::newRow("unmodified") << false << 0 << false << true << false;
    QTest::newRow("cancel") << true << int(MessageService::Cancel) << false << false << false;
    QTest::newRow("no") << true << int(MessageService::No) << false << true << false;
    QTest::newRow("yes") << true << int(MessageService::Yes) << false << true << true;
    QTest::newRow("yes, save fails") << true << int(MessageService::Yes) << true << false << false;
}

void TestServerDataSave::saveOnClose()
{
    QFETCH(bool, modified);
    QFETCH(int, answer);
    QFETCH(bool, breakSave);
    QFETCH(bool, closes);
    QFETCH(bool, written);
    SQLITE_SAVE_ENV(env, populatedDatabase());
    QString error;
    if (breakSave)
        QVERIFY2(createPoisonTrigger(*env.db, u"INSERT"_s, u"\"Group\""_s, {}, &error),
            qPrintable(error));
    if (modified)
        env.data.editor().addGroup(false, env.data.directory()->treeData(false).root(), u"New"_s);
    QCOMPARE(env.data.isModified(), modified);
    if (answer)
        env.messages.queueAnswer(answer);

    QCOMPARE(env.saveOnClose(), closes);
    if (modified) {
        // Asked once, with three buttons; a Yes saves without asking "确定要保存?" again.
        QCOMPARE(env.messages.boxTexts(), QStringList { u"确定要保存编辑的内容?"_s });
        QCOMPARE(env.messages.boxes().constFirst().buttons, MessageService::Buttons::YesNoCancel);
    } else {
        QVERIFY(env.messages.boxes().isEmpty());
    }
    QCOMPARE(env.db->count(u"[Group]"_s, u"GroupName = 'New'"_s), written ? 1 : 0);
    QCOMPARE(env.version(), written ? u"0001"_s : u"absent"_s);
    QCOMPARE(env.data.isModified(), modified && !written);
    QCOMPARE(env.messages.balloonTexts(),
        breakSave ? QStringList { u"数据库发生错误."_s } : QStringList());
}

void TestServerDataSave::lockedDatabase()
{
    SAVE_ENV(env, populatedDatabase());
    const bool postgres = backend == TestDatabase::Backend::PostgresOdbc;
    QVERIFY2(env.db->shortenLockWait(env.dir.hives()), qPrintable(env.db->errorString()));
    env.data.editor().addGroup(false, env.data.directory()->treeData(false).root(), u"New"_s);
    const QStringList memory = dumpServerData(env.data);
    const QStringList database = dumpDataSet(readBack(env.dir));

    {
        // A second connection holds a write lock on the database.
        DbConnection holder = env.db->holdWriteLock(u"[Group]"_s);
        const ServerDataSaver::Result failed = env.save(true);
        QCOMPARE(failed.outcome, ServerDataSaver::Outcome::DatabaseError);
        // PostgreSQL's table lock stops the concurrent-change check's read
        // already, before anything is written; SQLite lets it read.
        QCOMPARE(failed.failedStep,
            postgres ? ServerDataSaver::Step::None : ServerDataSaver::Step::Directory);
        QCOMPARE(env.messages.balloonTexts(), QStringList { u"数据库发生错误."_s });
        holder.execute(u"ROLLBACK"_s);
    }
    // Nothing was lost on either side.
    QCOMPARE(dumpServerData(env.data), memory);
    QCOMPARE(dumpDataSet(readBack(env.dir)), database);
    QCOMPARE(env.version(), u"absent"_s);
    QVERIFY(env.listeners.drain().isEmpty());
    QVERIFY(env.data.isModified());

    QVERIFY(env.save(true).ok());
    QCOMPARE(dumpDataSet(readBack(env.dir)), memory);
}

void TestServerDataSave::concurrentChange_data()
{
    // The aggregate query differs between the backends: every one of them.
    QTest::addColumn<TestDatabase::Backend>("backend");
    QTest::addColumn<QString>("change"); // what another program does after the load
    QTest::addColumn<QString>("account"); // the change as the question words it
    for (const TestDatabase::Backend backend : TestDatabase::availableBackends()) {
        const QByteArray name = TestDatabase::backendName(backend).toUtf8();
        QTest::addRow("%s member added", name.constData())
            << backend
            << u"INSERT INTO Member (OMemberID, MemberID, Passwd, IsGuestMember) VALUES (99,'zed','x',0)"_s
            << u"Member: 7 → 8 行 (+1)"_s;
        QTest::addRow("%s password changed", name.constData())
            << backend << u"UPDATE Member SET Passwd = 'a longer one' WHERE OMemberID = 1"_s
            << u"Member: 7 → 7 行 (行数相同, 内容已改变)"_s;
        QTest::addRow("%s relations removed", name.constData())
            << backend << u"DELETE FROM Relation WHERE IsGuestRelation = 1"_s
            << u"Relation: 7 → 4 行 (-3)"_s;
    }
    QTest::addRow("version moved")
        << TestDatabase::Backend::SqliteFile << QString() << u"版本: - → 0007"_s;
}

void TestServerDataSave::concurrentChange()
{
    QFETCH(QString, change);
    QFETCH(QString, account);
    SAVE_ENV(env, populatedDatabase());
    env.traceTo(u"guard.trace"_s);
    env.data.editor().addGroup(false, env.data.directory()->treeData(false).root(), u"Mine"_s);
    if (change.isEmpty())
        QVERIFY(
            ProfileFile(env.dir.iniPath()).writeString(u"GroupInfo"_s, u"Version"_s, u"0007"_s));
    else
        QVERIFY2(env.db->exec(change), qPrintable(env.db->errorString()));
    const QStringList theirs = dumpDataSet(readBack(env.dir));

    // velmarctl edit: refused with the account, nothing written.
    env.policy = ServerDataSaver::ConflictPolicy::Refuse;
    ServerDataSaver::Result result = env.save(true);
    QCOMPARE(result.outcome, ServerDataSaver::Outcome::ConcurrentChange);
    QCOMPARE(ChangeGuard::describe(result.changes), account);
    QVERIFY(env.messages.boxes().isEmpty());

    // The console asks: cancel, then reload; neither writes.
    env.policy = ServerDataSaver::ConflictPolicy::Ask;
    env.messages.queueAnswer(MessageService::Cancel);
    QCOMPARE(env.save(true).outcome, ServerDataSaver::Outcome::ConcurrentChange);
    env.messages.queueAnswer(MessageService::Yes);
    QCOMPARE(env.save(true).outcome, ServerDataSaver::Outcome::ReloadRequested);
    QCOMPARE(env.messages.boxTexts(), QStringList(2, ChangeGuard::questionText(result.changes)));
    QVERIFY(env.messages.boxTexts().constFirst().contains(account));
    QCOMPARE(env.messages.boxes().constFirst().buttons, MessageService::Buttons::YesNoCancel);
    QVERIFY(env.writes().isEmpty());
    QCOMPARE(dumpDataSet(readBack(env.dir)), theirs);
    QVERIFY(env.data.isModified());

    // Save anyway: the working copy replaces theirs, and the next save,
    // against what this one wrote, asks nothing.
    env.messages.queueAnswer(MessageService::No);
    QVERIFY(env.save(true).ok());
    QCOMPARE(dumpDataSet(readBack(env.dir)), dumpServerData(env.data));
    env.data.editor().addGroup(false, env.data.directory()->treeData(false).root(), u"More"_s);
    QVERIFY(env.save(true).ok());
    QCOMPARE(env.messages.boxes().size(), 3);
}

void TestServerDataSave::saveLock()
{
    SQLITE_SAVE_ENV(env, populatedDatabase());
    env.traceTo(u"lock.trace"_s);
    env.data.editor().addGroup(false, env.data.directory()->treeData(false).root(), u"New"_s);
    const QStringList before = dumpDataSet(readBack(env.dir));

    // Another process's save holds the folder (a lock taken on a file
    // description of its own conflicts as another process's would).
    ServerFolderLock other(ServerFolderLock::savePathFor(env.dir.iniPath()));
    QCOMPARE(other.acquire(ServerFolderLock::Mode::Exclusive), ServerFolderLock::Status::Locked);
    QList<qint64> waited;
    env.lockWait = [&waited](qint64 ms) {
        waited << ms;
        return waited.size() < 3;
    };
    QCOMPARE(env.save(true).outcome, ServerDataSaver::Outcome::Busy);
    QCOMPARE(waited.size(), 3);
    QCOMPARE(waited.first(), 0);
    QVERIFY(env.writes().isEmpty());
    QVERIFY(env.messages.boxes().isEmpty());
    // A load waits for it as well, and gives up without reading anything.
    ServerDataSet partial;
    {
        DbSession session(env.dir.hives(), env.dir.iniPath(), env.dir.databasePath(), env.messages);
        ServerDataLoader loader(session, env.dir.iniPath());
        loader.setLockWait([](qint64) { return false; });
        QCOMPARE(loader.run(partial).outcome, ServerDataLoader::Outcome::Busy);
    }
    QVERIFY(partial.directory.regularMembers.isEmpty());
    // So does recovery: the journal of a running save is not a left-over.
    QVERIFY(SaveJournal().write(env.journalPath()));
    {
        DbSession session(env.dir.hives(), env.dir.iniPath(), env.dir.databasePath(), env.messages);
        SaveRecovery recovery(session, env.messages, env.dir.iniPath());
        recovery.setLockWait([](qint64) { return false; });
        QCOMPARE(recovery.inspect(), SaveRecovery::State::None);
        QVERIFY(recovery.gaveUpWaiting());
    }
    QVERIFY(QFile::remove(env.journalPath()));

    // Released (as the kernel does when the holder dies), the save goes on.
    other.release();
    QVERIFY(env.save(true).ok());
    QVERIFY(dumpDataSet(readBack(env.dir)) != before);
    QCOMPARE(dumpDataSet(readBack(env.dir)), dumpServerData(env.data));
}

void TestServerDataSave::preview()
{
    SAVE_ENV(env, populatedDatabase());
    env.traceTo(u"preview.trace"_s);
    DbSession session(env.dir.hives(), env.dir.iniPath(), env.dir.databasePath(), env.messages);
    ServerDataSaver saver(
        env.data, session, env.messages, env.dir.iniPath(), env.dir.hives(), env.dir.programDir());
    // The fixture stores what a save writes otherwise (a NULL group flag and
    // pool holder, a relation without a member, lower-case rights): the first
    // preview shows exactly that, and after a save nothing.
    ServerDataSaver::Preview preview = saver.preview();
    QVERIFY(preview.ok);
    QCOMPARE(SavePreview::describe(preview.tables),
        u"[Group]: +0 -0 ~1\nRelation: +0 -1 ~0\nGroupAuthority: +0 -0 ~1\n"
        "UserAuthority: +0 -0 ~1\nVoipNumberList: +0 -0 ~1"_s);
    const QString settled = SavePreview::describe(preview.tables, true);
    QVERIFY2(settled.contains(u"  ~ 20 (IsGuestGroup:  → 0)"_s), qPrintable(settled));
    QVERIFY2(settled.contains(u"  - OMemberID=0, OGroupID=50, ORankID=1, Position=1, "
                              "IsGuestRelation=1"_s),
        qPrintable(settled));
    QVERIFY(env.save(true).ok());
    preview = saver.preview();
    QCOMPARE(SavePreview::describe(preview.tables), u"没有更改."_s);

    // A group added and one renamed, a member deleted with its folder right,
    // a permission switched off.
    Directory &directory = *env.data.directory();
    const DirectoryTree &tree = directory.treeData(false);
    QVERIFY(env.data.editor().addGroup(false, tree.root(), u"Support"_s).ok());
    QVERIFY(env.data.editor().renameGroup(false, tree.findGroup(10), u"Sales2"_s).ok());
    QVERIFY(
        env.data.editor().deleteMembers(false, { directory.regularMembers()->rowOfId(3) }).ok());
    env.data.permissionsForSave().setFlag(1, CAccessToken::ChatOn, false);
    QVERIFY(env.db->execAll({ u"INSERT INTO LeavedMemo (OMemberID) VALUES (3)"_s,
        u"INSERT INTO LeavedMemo (OMemberID) VALUES (3)"_s }));
    const QStringList before = dumpDataSet(readBack(env.dir));
    preview = saver.preview();
    QVERIFY(preview.ok);
    QCOMPARE(SavePreview::describe(preview.tables),
        u"[Group]: +1 -0 ~1\n"
        "Member: +0 -1 ~0\n"
        "AccessToken: +0 -0 ~1\n"
        "UserAuthority: +0 -1 ~0\n"
        "LeavedMemo: +0 -2 ~0"_s);
    const QString rows = SavePreview::describe(preview.tables, true);
    QVERIFY2(rows.contains(u"  ~ 10 (GroupName: Sales → Sales2)"_s), qPrintable(rows));
    QVERIFY2(rows.contains(u"  ~ 1 (ChatOn: 1 → 0)"_s), qPrintable(rows));
    QVERIFY2(rows.contains(u"  - OFolderID=1, OMemberID=3, Authority=R"_s), qPrintable(rows));
    // Read only: nothing written.
    QCOMPARE(dumpDataSet(readBack(env.dir)), before);
    QCOMPARE(env.version(), u"0001"_s);

    // The confirmation offers it beside Yes and No.
    saver.setPreviewAction([] {});
    env.messages.queueAnswer(MessageService::No);
    QCOMPARE(saver.save(false).outcome, ServerDataSaver::Outcome::Declined);
    QCOMPARE(env.messages.boxes().constLast().extraButton, u"显示更改"_s);
    QVERIFY(bool(env.messages.boxes().constLast().extraAction));
}

QTEST_GUILESS_MAIN(TestServerDataSave)
#include "tst_serverdata_save.moc"
