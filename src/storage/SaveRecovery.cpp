#include "SaveRecovery.h"

#include "ConnectionStringMask.h"
#include "DbConnection.h"
#include "DbSession.h"
#include "MessageService.h"

#include <QDir>

using namespace Qt::StringLiterals;

SaveRecovery::SaveRecovery(DbSession &session, MessageService &messages, QString profilePath)
    : m_session(session)
    , m_messages(messages)
    , m_profilePath(std::move(profilePath))
    , m_path(SaveJournal::pathFor(m_profilePath))
    , m_lockWait(ServerFolderLock::waitUpTo(60 * 1000))
{ }

SaveRecovery::State SaveRecovery::inspect()
{
    m_problem.clear();
    // A save that is running has its journal in place: only once it is over
    // is a journal a left-over.
    ServerFolderLock lock(ServerFolderLock::savePathFor(m_profilePath));
    m_gaveUp = lock.acquire(ServerFolderLock::Mode::Shared, m_lockWait)
        == ServerFolderLock::Status::GaveUp;
    if (m_gaveUp)
        return State::None;
    switch (SaveJournal::read(m_path, m_journal, &m_problem)) {
    case SaveJournal::ReadStatus::Missing:
        m_problem.clear();
        return State::None;
    case SaveJournal::ReadStatus::Unreadable:
    case SaveJournal::ReadStatus::Corrupt:
        return State::Corrupt;
    case SaveJournal::ReadStatus::Ok:
        break;
    }
    // Replaying a save into another database would overwrite it with data
    // that was never its own.
    if (m_journal.connectionString() != m_session.connectionString())
        return State::OtherDatabase;
    return State::Ready;
}

SaveJournalRunner::Result SaveRecovery::finish()
{
    SaveJournalRunner runner(m_profilePath, m_messages);
    if (m_pause)
        runner.setPause(m_pause);
    runner.setCheckpoint(m_checkpoint);
    ServerFolderLock lock(ServerFolderLock::savePathFor(m_profilePath));
    const ServerFolderLock::Status locked
        = lock.acquire(ServerFolderLock::Mode::Exclusive, m_lockWait);
    m_gaveUp = locked == ServerFolderLock::Status::GaveUp;
    if (m_gaveUp) {
        SaveJournalRunner::Result result;
        result.ok = false;
        result.error = DbError { DbError::Unspecified, {}, u"another save is running"_s };
        return result;
    }
    // Another process may have finished (or replaced) it while this one waited.
    if (locked == ServerFolderLock::Status::Locked) {
        SaveJournal current;
        if (SaveJournal::read(m_path, current) == SaveJournal::ReadStatus::Missing)
            return {};
    }
    DbConnection connection = m_session.OpenDBConnection();
    SaveJournalRunner::Result result = runner.run(m_journal, connection);
    if (!result.ok) {
        m_session.recordError(result.error);
        return result;
    }
    for (const NoticeBoard::Failure &failure : std::as_const(result.noticeFailures))
        m_session.recordError(failure.error);
    connection = DbConnection();
    runner.notify(m_journal);
    SaveJournal::remove(m_path);
    return result;
}

bool SaveRecovery::discard(QString *errorString)
{
    return SaveJournal::remove(m_path, errorString);
}

int SaveRecovery::ask(
    const QString &text, MessageService::Buttons buttons, MessageService::Icon icon)
{
    MessageService::Box box;
    box.text = text;
    box.buttons = buttons;
    box.icon = icon;
    return m_messages.showMessage(box);
}

QString SaveRecovery::pendingQuestionText(const SaveJournal &journal)
{
    return u"上次的保存(%1)没有完成，数据库中的数据可能不完整。\r\n\r\n"
           "是: 现在完成上次的保存(推荐)\r\n"
           "否: 放弃上次的保存\r\n"
           "取消: 退出程序"_s.arg(journal.created().toString(u"yyyy-MM-dd HH:mm:ss"_s));
}

QString SaveRecovery::discardConfirmText()
{
    return u"放弃后，数据库将保持现在可能不完整的状态，上次保存的内容无法恢复。\r\n确定要放弃上次的保存吗?"_s;
}

QString SaveRecovery::replayFailedText(const SaveJournalRunner::Result &result)
{
    return u"完成上次的保存时数据库发生错误。\r\n语句: %1\r\n%2\r\n\r\n"
           "是否放弃上次的保存? (否: 退出程序，下次启动时再试)"_s.arg(
               result.failedStatement, result.error.formatted());
}

QString SaveRecovery::otherDatabaseText(
    const QString &journalDatabase, const QString &currentDatabase)
{
    return u"上次没有完成的保存属于另一个数据库:\r\n%1\r\n现在设置的数据库:\r\n%2\r\n\r\n"
           "这次保存不能在现在的数据库上完成。是否放弃上次的保存? (否: 退出程序)"_s.arg(
               maskConnectionStringPassword(journalDatabase),
               maskConnectionStringPassword(currentDatabase));
}

QString SaveRecovery::corruptText(const QString &path, const QString &why)
{
    return u"上次保存的记录文件已损坏，不能用来完成保存:\r\n%1\r\n(%2)\r\n\r\n"
           "是否放弃这个记录文件? (否: 退出程序)"_s.arg(QDir::toNativeSeparators(path), why);
}

QString SaveRecovery::finishedText()
{
    return u"上次没有完成的保存已经完成。"_s;
}

bool SaveRecovery::confirmDiscard()
{
    if (ask(discardConfirmText(), MessageService::Buttons::YesNo, MessageService::Icon::Exclamation)
        != MessageService::Yes)
        return false;
    QString why;
    if (!discard(&why)) {
        ask(u"无法删除记录文件 %1:\r\n%2"_s.arg(QDir::toNativeSeparators(m_path), why),
            MessageService::Buttons::Ok, MessageService::Icon::Error);
        return false;
    }
    return true;
}

SaveRecovery::Decision SaveRecovery::runInteractive()
{
    const State state = inspect();
    if (state == State::None)
        return Decision::Load;

    // A journal that cannot be replayed here can only be dropped, or left
    // for later by quitting.
    if (state == State::Corrupt || state == State::OtherDatabase) {
        const QString text = state == State::Corrupt
            ? corruptText(m_path, m_problem)
            : otherDatabaseText(m_journal.connectionString(), m_session.connectionString());
        for (;;) {
            if (ask(text, MessageService::Buttons::YesNo, MessageService::Icon::Exclamation)
                != MessageService::Yes)
                return Decision::Quit;
            if (confirmDiscard())
                return Decision::Load;
        }
    }

    for (;;) {
        const int answer = ask(pendingQuestionText(m_journal), MessageService::Buttons::YesNoCancel,
            MessageService::Icon::Question);
        if (answer == MessageService::Yes) {
            const SaveJournalRunner::Result result = finish();
            if (result.ok) {
                for (const NoticeBoard::Failure &failure : result.noticeFailures)
                    ask(failure.error.formatted(), MessageService::Buttons::Ok,
                        MessageService::Icon::None);
                ask(finishedText(), MessageService::Buttons::Ok, MessageService::Icon::Information);
                return Decision::Load;
            }
            for (;;) {
                if (ask(replayFailedText(result), MessageService::Buttons::YesNo,
                        MessageService::Icon::Error)
                    != MessageService::Yes)
                    return Decision::Quit;
                if (confirmDiscard())
                    return Decision::Load;
            }
        }
        if (answer == MessageService::No) {
            if (confirmDiscard())
                return Decision::Load;
            continue; // back to the question
        }
        return Decision::Quit;
    }
}
