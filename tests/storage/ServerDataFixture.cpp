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
    return TestDatabase::statementsFrom(u"storage/populated.sql"_s);
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
