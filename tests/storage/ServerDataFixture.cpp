#include "ServerDataFixture.h"

#include "CReadDBThread.h"
#include "CVelmarManagerDoc.h"
#include "DbSession.h"
#include "Directory.h"
#include "DirectoryFixture.h"
#include "NoticeListModel.h"
#include "PositionListModel.h"
#include "SaveJournal.h"
#include "ScriptedMessageService.h"
#include "ServerDataSet.h"
#include "TempServerDir.h"
#include "TestDatabase.h"

#include <QEventLoop>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTimer>

using namespace Qt::StringLiterals;

QStringList populatedDatabase()
{
    const QString member
        = u"INSERT INTO Member (OMemberID, MemberID, MemberName, MemberNickname, Passwd, Gender, bPublic, Email, HP, Address, HomePhone, OfficePhone, BirthDay, bSolar, bAdmin, Description, MemberLevel, IsGuestMember) VALUES "_s;
    const QString group
        = u"INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, IsGuestGroup) VALUES "_s;
    const QString relation
        = u"INSERT INTO Relation (OMemberID, OGroupID, ORankID, Position, IsGuestRelation) VALUES "_s;
    return {
        member
            + u"(1,'anna','安娜','it###VELMAR-QUOTATION###s','pw1',0,1,'anna@x.cn','139','Road 1','010-1','010-2','1980-01-02',1,0,'hello',2,0)"_s,
        member + u"(2,'bert','Bert','','pw2',1,0,'','','','','','',0,0,'',2,5)"_s,
        member + u"(3,'carl','Carl','','pw3',1,0,'','','','','','',0,1,'',NULL,0)"_s,
        member + u"(6,'dup','Dup','','pw6',1,0,'','','','','','',0,0,'',2,0)"_s,
        member + u"(6,'dup2','Dup Again','','pw6b',1,0,'','','','','','',0,0,'',2,0)"_s,
        member + u"(4,'gina','Gina','','pw4',0,1,'','','','','','',1,0,'',3,1)"_s,
        member + u"(5,'gus','Gus','','pw5',1,1,'','','','','','',1,0,'',1,1)"_s,
        group + u"(10,'Sales',-1,0,1,0)"_s,
        group + u"(11,'East',10,0,2,0)"_s,
        group + u"(20,'HQ',-1,1,1,NULL)"_s,
        group + u"(50,'Forum',-100,0,1,1)"_s,
        group + u"(51,'Lounge',50,0,2,1)"_s,
        relation + u"(1,10,2,0,0)"_s,
        relation + u"(2,11,1,0,7)"_s,
        relation + u"(4,20,3,0,0)"_s,
        relation + u"(6,20,1,1,0)"_s,
        relation + u"(4,50,1,0,1)"_s,
        relation + u"(5,51,1,0,1)"_s,
        relation + u"(NULL,50,1,1,1)"_s,
        u"INSERT INTO Rank (ORankID, RankName) VALUES (1,'职员')"_s,
        u"INSERT INTO Rank (ORankID, RankName) VALUES (2,'经理')"_s,
        u"INSERT INTO Rank (ORankID, RankName) VALUES (3,'总监')"_s,
        u"INSERT INTO AccessToken (OMemberID, MessageOn, ChatOn, FileTransferOn, TTSOn, VoiceToPhoneOn, OneToOneCallOn, SMSOn, VoipOn) VALUES (1,1,1,1,1,1,1,1,1)"_s,
        u"INSERT INTO AccessToken (OMemberID, MessageOn, ChatOn, FileTransferOn, TTSOn, VoiceToPhoneOn, OneToOneCallOn, SMSOn, VoipOn) VALUES (2,1,0,0,1,0,1,0,0)"_s,
        u"INSERT INTO AccessToken (OMemberID, MessageOn, ChatOn, FileTransferOn, TTSOn, VoiceToPhoneOn, OneToOneCallOn, SMSOn, VoipOn) VALUES (4,0,1,0,0,0,0,1,1)"_s,
        u"INSERT INTO VoipInfo (OMemberID, ID, Pass) VALUES (1,'v100','p100')"_s,
        u"INSERT INTO VoipInfo (OMemberID, ID, Pass) VALUES (4,'v101','p101')"_s,
        u"INSERT INTO VoipNumberList (VOIP_ID, VOIP_PASS, OMemberID) VALUES ('v100','p100',1)"_s,
        u"INSERT INTO VoipNumberList (VOIP_ID, VOIP_PASS, OMemberID) VALUES ('v101','p101',4)"_s,
        u"INSERT INTO VoipNumberList (VOIP_ID, VOIP_PASS, OMemberID) VALUES ('v102','p102',0)"_s,
        u"INSERT INTO VoipNumberList (VOIP_ID, VOIP_PASS, OMemberID) VALUES ('v103','p103',NULL)"_s,
        u"INSERT INTO Folder (OFolderID, FolderPath) VALUES (1,'share\\\\docs')"_s,
        u"INSERT INTO Folder (OFolderID, FolderPath) VALUES (2,'public')"_s,
        u"INSERT INTO GroupAuthority (OFolderID, OGroupID, Authority) VALUES (1,10,'W')"_s,
        u"INSERT INTO GroupAuthority (OFolderID, OGroupID, Authority) VALUES (2,50,'r')"_s,
        u"INSERT INTO UserAuthority (OFolderID, OMemberID, Authority) VALUES (1,3,'R')"_s,
        u"INSERT INTO UserAuthority (OFolderID, OMemberID, Authority) VALUES (2,1,'x')"_s,
        u"INSERT INTO CONTENTS (OCONTENTSID, TITLE, WRITEDATE, OMEMBERID, MEMBERID, MEMBERNAME, CONTENTS, FilePath, FileSessionID, WriteEndDate) VALUES (100,'It###VELMAR-QUOTATION###s','2007-10-08 12:00:00',1,'anna','安娜','body','','','20071231')"_s,
        u"INSERT INTO CONTENTS (OCONTENTSID, TITLE, WRITEDATE, OMEMBERID, MEMBERID, MEMBERNAME, CONTENTS, FilePath, FileSessionID, WriteEndDate) VALUES (101,'Second','2008-01-01 09:00:00',4,'gina','Gina','text','|a|b|x|f.txt|y|','sess1','')"_s,
    };
}

namespace {

QStringList dumpParts(const DirectoryData &directory, const PositionList &positions,
    const AccessTokenTable &permissions, const FileBoxRights &fileBox, const VoipAccountPool &pool,
    const QList<NoticeRecord> &notices)
{
    QStringList out = dumpDirectory(directory);
    out << u"default position %1"_s.arg(positions.defaultId);
    for (const Position &p : positions.positions)
        out << u"position %1 %2"_s.arg(p.id).arg(p.name);
    for (const auto &[id, token] : permissions.tokens()) {
        QString flags;
        for (int f = 0; f < CAccessToken::FeatureCount; ++f)
            flags += QString::number(token.rawFlag(CAccessToken::Feature(f)));
        out << u"token %1 %2"_s.arg(id).arg(flags);
    }
    for (const auto &[id, account] : permissions.voipAccounts())
        out << u"voip %1 %2 %3"_s.arg(id).arg(account.id, account.password);
    for (const VoipAccountPool::Entry &e : pool.entries())
        out << u"pool %1 %2 %3"_s.arg(e.voipId, e.voipPassword).arg(e.memberId);
    for (const tagFolderData &f : fileBox.folders())
        out << u"folder %1 %2"_s.arg(f.folderId).arg(f.path);
    for (const tagGroupAuthority &r : fileBox.groupRights())
        out << u"group right %1 %2 %3"_s.arg(r.folderId).arg(r.groupId).arg(r.authority);
    for (const tagUserAuthority &r : fileBox.memberRights())
        out << u"member right %1 %2 %3"_s.arg(r.folderId).arg(r.memberId).arg(r.authority);
    for (const NoticeRecord &n : notices)
        out << u"notice %1 %2 %3 %4 %5"_s.arg(n.id).arg(
            n.title, n.written, n.endDate, n.fileSessionId);
    return out;
}

} // namespace

QStringList dumpDataSet(const ServerDataSet &data)
{
    return dumpParts(data.directory, data.positions, data.permissions, data.fileBox, data.voipPool,
        data.notices);
}

QStringList dumpServerData(const CVelmarManagerDoc &data)
{
    return dumpParts(data.directory()->toData(), data.positions()->list(), data.permissions(),
        data.fileBox(), data.voipPool(), data.notices()->records());
}

QStringList ThreadRun::progressRanges() const
{
    QStringList out;
    for (const QString &e : events)
        if (e.startsWith(u"text ") || e.startsWith(u"range "))
            out << e;
    return out;
}

ThreadRun runReadThread(
    TempServerDir &dir, CVelmarManagerDoc &target, MessageService &messages, SqlTrace *trace)
{
    ThreadRun run;
    QEventLoop loop;
    CReadDBThread thread(dir.hives(), dir.iniPath(), dir.databasePath(), messages, target, trace);
    QObject::connect(&thread, &CReadDBThread::progressText, &loop,
        [&](const QString &text) { run.events << u"text "_s + text; });
    QObject::connect(&thread, &CReadDBThread::progressRange, &loop,
        [&](int max) { run.events << u"range %1"_s.arg(max); });
    QObject::connect(&thread, &CReadDBThread::progressPosition, &loop,
        [&](int pos) { run.events << u"position %1"_s.arg(pos); });
    QObject::connect(
        &thread, &CReadDBThread::loadCompleted, &loop, [&] { run.events << u"completed"_s; });
    QObject::connect(&thread, &CReadDBThread::workerExited, &loop, [&](int result) {
        run.events << u"exited %1"_s.arg(result);
        run.exitResult = result;
        run.finished = true;
        loop.quit();
    });
    QTimer::singleShot(120000, &loop, &QEventLoop::quit);
    thread.start();
    loop.exec();
    run.result = thread.loadResult();
    return run;
}

ServerDataSet readBack(TempServerDir &dir, ServerDataLoader::Result *result)
{
    ScriptedMessageService messages;
    DbSession session(dir.hives(), dir.iniPath(), dir.databasePath(), messages);
    ServerDataSet data;
    const ServerDataLoader::Result r = ServerDataLoader(session, dir.iniPath()).run(data);
    if (result)
        *result = r;
    return data;
}

// Triggers are set up outside the console's statement checks (an SQLite
// trigger body holds several statements).
bool createPoisonTrigger(TestDatabase &db, const QString &event, const QString &table,
    const QString &when, QString *error)
{
    if (db.backend() == TestDatabase::Backend::PostgresOdbc) {
        if (!db.exec(
                u"CREATE OR REPLACE FUNCTION velmar_poison() RETURNS trigger LANGUAGE plpgsql AS 'BEGIN RAISE EXCEPTION ''poisoned''; END;'"_s)
            || !db.exec(
                u"CREATE TRIGGER poison BEFORE %1 ON %2 FOR EACH ROW %3 EXECUTE FUNCTION velmar_poison()"_s
                    .arg(event, table.startsWith(u'"') ? table : table.toLower(),
                        when.isEmpty() ? QString() : u"WHEN (NEW.%1)"_s.arg(when.toLower())))) {
            *error = db.errorString();
            return false;
        }
        return true;
    }
    static int serial = 0;
    const QString name = u"raw-trigger-%1"_s.arg(++serial);
    bool ok = false;
    {
        QSqlDatabase raw = QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
        raw.setDatabaseName(db.filePath());
        QSqlQuery query(raw);
        ok = raw.open()
            && query.exec(
                u"CREATE TRIGGER poison BEFORE %1 ON %2 %3 BEGIN SELECT RAISE(ABORT, 'poisoned'); END"_s
                    .arg(event, table, when.isEmpty() ? QString() : u"WHEN NEW."_s + when));
        if (!ok)
            *error = query.lastError().text() + raw.lastError().text();
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}

bool dropPoisonTrigger(TestDatabase &db, const QString &table)
{
    if (db.backend() == TestDatabase::Backend::PostgresOdbc)
        return db.exec(
            u"DROP TRIGGER poison ON "_s + (table.startsWith(u'"') ? table : table.toLower()));
    return db.exec(u"DROP TRIGGER poison"_s);
}

QStringList journalStatements(const SaveJournal &journal)
{
    QStringList statements;
    SaveJournal::Cursor cursor;
    SaveJournal::Action action;
    while (journal.nextAction(cursor, action)) {
        if (action.kind == SaveJournal::Kind::Statement
            || action.kind == SaveJournal::Kind::NoticeDelete)
            statements << action.text;
    }
    return statements;
}
