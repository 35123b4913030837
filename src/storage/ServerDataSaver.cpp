#include "ServerDataSaver.h"

#include "CVelmarManagerDoc.h"
#include "DbConnection.h"
#include "DbSession.h"
#include "Directory.h"
#include "DirectoryWriter.h"
#include "MessageService.h"
#include "NoticeListModel.h"
#include "PositionListModel.h"
#include "ProfileFile.h"
#include "SaveJournal.h"
#include "ServerNotifier.h"

#include <QDir>
#include <QElapsedTimer>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {

// The first member row without login name or password, in the regular list
// and then the guest list.
bool findIncompleteMember(const Directory &directory, bool &guest, int &row)
{
    for (const bool g : { false, true }) {
        const MemberList &members = directory.members(g)->members();
        for (int i = 0; i < members.size(); ++i) {
            if (members[i].loginName.isEmpty() || members[i].password.isEmpty()) {
                guest = g;
                row = i;
                return true;
            }
        }
    }
    return false;
}

} // namespace

ServerDataSaver::ServerDataSaver(CVelmarManagerDoc &data, DbSession &session,
    MessageService &messages, QString profilePath, RegistryHives &hives, QString programDir)
    : m_data(data)
    , m_session(session)
    , m_messages(messages)
    , m_profilePath(std::move(profilePath))
    , m_hives(hives)
    , m_programDir(std::move(programDir))
    , m_pause([](int ms) { QThread::msleep(ulong(ms)); })
    , m_lockWait(ServerFolderLock::waitUpTo(DefaultLockWaitMs))
{ }

void ServerDataSaver::setPause(Pause pause)
{
    m_pause = std::move(pause);
}

QString ServerDataSaver::confirmText()
{
    return u"确定要保存?"_s;
}

QString ServerDataSaver::closeQuestionText()
{
    return u"确定要保存编辑的内容?"_s;
}

QString ServerDataSaver::dataErrorText()
{
    return u"当前编辑的数据发生错误."_s;
}

QString ServerDataSaver::memberErrorText()
{
    return u"用户ID和密码为空."_s;
}

QString ServerDataSaver::databaseErrorText()
{
    return u"数据库发生错误."_s;
}

void ServerDataSaver::errorBox(const DbError &error)
{
    MessageService::Box box;
    box.text = error.formatted();
    box.title = error.systemMessage();
    box.buttons = MessageService::Buttons::Ok;
    m_messages.showMessage(box);
}

bool ServerDataSaver::reportsWithErrorBox(Step step)
{
    return step == Step::Permissions || step == Step::FileBox;
}

void ServerDataSaver::balloon(const QString &text)
{
    MessageService::Balloon tip;
    tip.text = text;
    tip.icon = MessageService::Icon::Exclamation;
    tip.timeoutMs = 3000;
    m_messages.showBalloon(tip);
}

int ServerDataSaver::bumpVersion(const QString &profilePath)
{
    ProfileFile profile(profilePath);
    const int version = nextVersion(profilePath);
    profile.writeString(u"GroupInfo"_s, u"Version"_s, QString::asprintf("%04d", version));
    return version;
}

int ServerDataSaver::nextVersion(const QString &profilePath)
{
    const int version = ProfileFile(profilePath).readInt(u"GroupInfo"_s, u"Version"_s, 0) + 1;
    return version > 9999 ? 1 : version;
}

QString ServerDataSaver::journalErrorText(const QString &path, const QString &why)
{
    return u"无法写入保存记录文件 %1:\r\n%2\r\n数据库没有被修改。"_s.arg(
        QDir::toNativeSeparators(path), why);
}

QString ServerDataSaver::lockErrorText(const QString &path, const QString &why)
{
    return u"无法打开保存锁文件 %1:\r\n%2\r\n数据库没有被修改。"_s.arg(
        QDir::toNativeSeparators(path), why);
}

namespace {
// The names the journal gives the save's steps.
const std::pair<ServerDataSaver::Step, QStringView> stepNames[] = {
    { ServerDataSaver::Step::DeletedMembers, u"DeletedMembers" },
    { ServerDataSaver::Step::Directory, u"Directory" },
    { ServerDataSaver::Step::Positions, u"Positions" },
    { ServerDataSaver::Step::Permissions, u"Permissions" },
    { ServerDataSaver::Step::FileBox, u"FileBox" },
    { ServerDataSaver::Step::VoipPool, u"VoipPool" },
    { ServerDataSaver::Step::Notices, u"Notices" },
};
} // namespace

QString ServerDataSaver::stepName(Step step)
{
    for (const auto &[s, name] : stepNames) {
        if (s == step)
            return name.toString();
    }
    return {};
}

ServerDataSaver::Step ServerDataSaver::stepNamed(QStringView name)
{
    for (const auto &[step, n] : stepNames) {
        if (n == name)
            return step;
    }
    return Step::None;
}

QString ServerDataSaver::journalPath() const
{
    return SaveJournal::pathFor(m_profilePath);
}

SaveJournal ServerDataSaver::buildJournal(SqlDialect dialect, int version) const
{
    SaveJournal journal;
    journal.setConnectionString(m_session.connectionString());
    if (ProfileFile(m_profilePath).readInt(u"ServerInfo"_s, u"UseDist"_s, 0) != 0)
        journal.setNotifyPorts(
            { ServerNotification::DistributionPort, ServerNotification::ServerPort });
    else
        journal.setNotifyPorts({ ServerNotification::ServerPort });

    // The data sets write themselves as they always do, into a handle that
    // only records: the journal holds exactly the statements they send.
    DbConnection recorder = DbConnection::recorder(
        dialect, [&journal](const QString &sql) { journal.addStatement(sql); });
    const Directory &directory = *m_data.directory();
    journal.addStep(stepName(Step::DeletedMembers));
    DirectoryWriter::writeDeletedMembers(recorder, directory.deletedMemberIds());
    journal.addStep(stepName(Step::Directory));
    DirectoryWriter::writeDirectory(recorder, directory.content());
    journal.addStep(stepName(Step::Positions));
    m_data.positions()->list().save(recorder);
    journal.addStep(stepName(Step::Permissions));
    m_data.permissions().save(recorder);
    journal.addStep(stepName(Step::FileBox));
    m_data.fileBox().save(recorder);
    // The new value, not "+1": finishing the save twice bumps it once.
    journal.addProfileWrite(u"GroupInfo"_s, u"Version"_s, QString::asprintf("%04d", version));
    journal.addStep(stepName(Step::VoipPool));
    m_data.voipPool().save(recorder);

    journal.addStep(stepName(Step::Notices));
    const QString uploadFolder = NoticeBoard::uploadFolder(m_hives, m_programDir);
    for (const NoticeRecord &record : m_data.notices()->pendingDeletions()) {
        const QString target = NoticeBoard::uploadedItemTarget(record.fileSessionId);
        journal.addNoticeDelete(record.id, NoticeBoard::deleteStatement(record.id),
            target.isEmpty() ? QString() : uploadFolder + u'/' + record.fileSessionId, target);
    }
    return journal;
}

void ServerDataSaver::setCheckpoint(SaveJournalRunner::Checkpoint checkpoint)
{
    m_checkpoint = std::move(checkpoint);
}

ServerDataSaver::Result ServerDataSaver::save(bool confirmed)
{
    Result result;
    if (!confirmed) {
        MessageService::Box box;
        box.text = confirmText();
        box.buttons = MessageService::Buttons::YesNo;
        box.icon = MessageService::Icon::Question;
        if (m_previewAction) {
            box.extraButton = SavePreview::buttonText();
            box.extraAction = m_previewAction;
        }
        if (m_messages.showMessage(box) != MessageService::Yes) {
            result.outcome = Outcome::Declined;
            return result;
        }
    }

    if (m_data.loadState() != CVelmarManagerDoc::LoadState::Complete) {
        balloon(dataErrorText());
        result.outcome = Outcome::DataError;
        return result;
    }

    Directory &directory = *m_data.directory();
    if (findIncompleteMember(directory, result.memberIsGuest, result.memberRow)) {
        balloon(memberErrorText());
        result.outcome = Outcome::MemberMissing;
        return result;
    }

    // One save at a time: held from before the journal is written until it
    // is gone, so two statement streams never interleave and the journal is
    // only ever one save's.
    ServerFolderLock lock(ServerFolderLock::savePathFor(m_profilePath));
    switch (lock.acquire(ServerFolderLock::Mode::Exclusive, m_lockWait)) {
    case ServerFolderLock::Status::Locked:
        break;
    case ServerFolderLock::Status::GaveUp:
        // The wait has told the administrator (or was cancelled by them).
        result.outcome = Outcome::Busy;
        return result;
    case ServerFolderLock::Status::Unavailable: {
        result.journalError = lock.errorString();
        MessageService::Box box;
        box.text = lockErrorText(lock.path(), lock.errorString());
        box.buttons = MessageService::Buttons::Ok;
        box.icon = MessageService::Icon::Exclamation;
        m_messages.showMessage(box);
        result.outcome = Outcome::JournalError;
        return result;
    }
    }

    DbConnection connection = m_session.OpenDBConnection();
    if (connection.isNull()) {
        // A failed open (already reported) or a remote DBAddr: the first
        // statement would fail on the empty handle, so nothing is journalled.
        const DbError error { DbError::InvalidPointer, {}, {} };
        m_session.recordError(error);
        balloon(databaseErrorText());
        result.outcome = Outcome::DatabaseError;
        result.failedStep = Step::DeletedMembers;
        result.error = error;
        return result;
    }

    result.problems = SavePreflight::check(m_data, connection.dialect());
    if (!result.problems.isEmpty()) {
        MessageService::Box box;
        box.text = SavePreflight::refusalText(result.problems);
        box.buttons = MessageService::Buttons::Ok;
        box.icon = MessageService::Icon::Exclamation;
        m_messages.showMessage(box);
        result.outcome = Outcome::UnsafeText;
        return result;
    }

    // The version tells the server and its clients that the organisation
    // changed; a save that could not write it would go unnoticed.
    if (!profileWritable()) {
        result.outcome = Outcome::DamagedProfile;
        return result;
    }

    if (m_conflictPolicy != ConflictPolicy::Overwrite && !m_data.origin().isEmpty()) {
        QElapsedTimer guard;
        guard.start();
        DatabaseFingerprint now;
        try {
            now = ChangeGuard::read(connection, m_profilePath);
        } catch (const DbException &e) {
            m_session.recordError(e.error());
            balloon(databaseErrorText());
            result.outcome = Outcome::DatabaseError;
            result.error = e.error();
            return result;
        }
        result.guardNs = guard.nsecsElapsed();
        result.changes = ChangeGuard::compare(m_data.origin(), now);
        if (result.changes.changed()) {
            if (m_conflictPolicy == ConflictPolicy::Refuse) {
                result.outcome = Outcome::ConcurrentChange;
                return result;
            }
            MessageService::Box box;
            box.text = ChangeGuard::questionText(result.changes);
            box.buttons = MessageService::Buttons::YesNoCancel;
            box.icon = MessageService::Icon::Exclamation;
            const int answer = m_messages.showMessage(box);
            if (answer == MessageService::Yes) {
                result.outcome = Outcome::ReloadRequested;
                return result;
            }
            if (answer != MessageService::No) {
                result.outcome = Outcome::ConcurrentChange;
                return result;
            }
        }
    }

    QElapsedTimer timer;
    timer.start();
    const int version = nextVersion(m_profilePath);
    const SaveJournal journal = buildJournal(connection.dialect(), version);
    result.journalNs = timer.nsecsElapsed();
    const QString path = journalPath();
    QString why;
    if (!journal.write(path, &why)) {
        result.journalError = why;
        MessageService::Box box;
        box.text = journalErrorText(path, why);
        box.buttons = MessageService::Buttons::Ok;
        box.icon = MessageService::Icon::Exclamation;
        m_messages.showMessage(box);
        result.outcome = Outcome::JournalError;
        return result;
    }
    result.journalWriteNs = timer.nsecsElapsed() - result.journalNs;
    result.statements = journal.statementCount();

    timer.restart();
    SaveJournalRunner runner(m_profilePath, m_messages);
    runner.setPause(m_pause);
    runner.setCheckpoint(m_checkpoint);
    const SaveJournalRunner::Result run = runner.run(journal, connection);
    result.runNs = timer.nsecsElapsed();
    result.journalDecodeNs = run.decodeNs;
    if (!run.ok) {
        // The journal stays: saving again replaces it, and a console closed
        // without saving finishes it at the next start.
        m_session.recordError(run.error);
        // The half-written tables are this save's own: saving again must not
        // take them for another program's. Unreadable, the old reading stays
        // (and the next save asks rather than overwrite in silence).
        try {
            m_data.setOrigin(ChangeGuard::read(connection, m_profilePath));
        } catch (const DbException &) { }
        result.outcome = Outcome::DatabaseError;
        result.failedStep = stepNamed(run.failedStep);
        result.errorBoxShown = reportsWithErrorBox(result.failedStep);
        if (result.errorBoxShown)
            errorBox(run.error);
        else
            balloon(databaseErrorText());
        result.failedStatement = run.failedStatement;
        result.error = run.error;
        return result;
    }
    result.version = version;

    // Each failed notice deletion is reported as the database session
    // reports errors; the others went ahead.
    for (const NoticeBoard::Failure &failure : run.noticeFailures) {
        m_session.recordError(failure.error);
        errorBox(failure.error);
    }
    result.failedNoticeDeletes = int(run.noticeFailures.size());
    m_data.notices()->clearPendingDeletions();
    // What the database holds now is this save's: the next save compares
    // against it. Still under the lock, so no other save can slip in.
    try {
        QElapsedTimer guard;
        guard.start();
        m_data.setOrigin(m_rememberOrigin ? ChangeGuard::read(connection, m_profilePath)
                                          : DatabaseFingerprint());
        result.guardAfterNs = guard.nsecsElapsed();
    } catch (const DbException &) {
        m_data.setOrigin({});
    }
    connection = DbConnection();

    runner.notify(journal);
    SaveJournal::remove(path);

    m_data.markSaved();
    return result;
}

bool ServerDataSaver::profileWritable()
{
    ProfileFile profile(m_profilePath);
    const QList<ProfileFile::Damage> damaged = profile.damagedLines();
    if (damaged.isEmpty())
        return true;
    QStringList lines;
    for (const ProfileFile::Damage &damage : damaged)
        lines << u"%1:%2: %3"_s.arg(QDir::toNativeSeparators(m_profilePath))
                     .arg(damage.line)
                     .arg(damage.text.left(80));
    MessageService::Box box;
    box.title = u"VelmarManager"_s;
    if (m_askToMendProfile) {
        box.text = u"服务器信息文件有错误的行:\n%1\n\n保存要在这个文件中写入组织版本. "
                   "是否把这些行改为注释后保存?"_s.arg(lines.join(u'\n'));
        box.buttons = MessageService::Buttons::YesNo;
        box.icon = MessageService::Icon::Question;
        if (m_messages.showMessage(box) == MessageService::Yes && profile.commentOutDamagedLines())
            return true;
        return false;
    }
    box.text = u"服务器信息文件有错误的行, 无法写入组织版本, 没有保存:\n%1\n"
               "请修复这些行, 或在控制台中同意把它们改为注释."_s.arg(lines.join(u'\n'));
    box.buttons = MessageService::Buttons::Ok;
    box.icon = MessageService::Icon::Exclamation;
    m_messages.showMessage(box);
    return false;
}

ServerDataSaver::Preview ServerDataSaver::preview()
{
    Preview preview;
    QElapsedTimer timer;
    timer.start();
    if (m_data.loadState() != CVelmarManagerDoc::LoadState::Complete)
        return preview;
    // What the database holds between two saves, never half of one.
    ServerFolderLock lock(ServerFolderLock::savePathFor(m_profilePath));
    if (lock.acquire(ServerFolderLock::Mode::Shared, m_lockWait)
        == ServerFolderLock::Status::GaveUp) {
        preview.busy = true;
        return preview;
    }
    DbConnection connection = m_session.OpenDBConnection();
    if (connection.isNull()) {
        preview.error = DbError { DbError::InvalidPointer, {}, {} };
        return preview;
    }
    preview.problems = SavePreflight::check(m_data, connection.dialect());
    if (!preview.problems.isEmpty())
        return preview;
    try {
        const SaveJournal journal = buildJournal(connection.dialect(), nextVersion(m_profilePath));
        preview.tables = SavePreview::compute(journal, connection);
    } catch (const DbException &e) {
        m_session.recordError(e.error());
        preview.error = e.error();
        return preview;
    }
    preview.ok = true;
    preview.ns = timer.nsecsElapsed();
    return preview;
}

bool ServerDataSaver::saveOnClose()
{
    if (!m_data.isModified())
        return true;
    MessageService::Box box;
    box.text = closeQuestionText();
    box.buttons = MessageService::Buttons::YesNoCancel;
    box.icon = MessageService::Icon::Question;
    switch (m_messages.showMessage(box)) {
    case MessageService::Yes:
        return save(true).ok();
    case MessageService::No:
        return true;
    default:
        return false;
    }
}
