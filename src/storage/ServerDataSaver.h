#pragma once

#include "ChangeGuard.h"
#include "DbError.h"
#include "SaveJournalRunner.h"
#include "SavePreflight.h"
#include "SavePreview.h"
#include "ServerFolderLock.h"

#include <functional>
#include <QString>

class DbSession;
class MessageService;
class RegistryHives;
class CVelmarManagerDoc;

class SaveJournal;

// The console's save command: writes the whole working copy back to the
// server database on the user-interface thread, in the designed order, bumps
// the organisation version and notifies the server processes. There is no
// transaction: a failing statement stops the save where it is, the working
// copy stays as it is (deleted members included) and stays modified, so that
// saving again rewrites everything.
//
// Because a save cut short leaves emptied partitions behind, the save first
// checks every text it inserts (SavePreflight), then writes everything it is
// about to do into a journal beside the server information file, and only
// then runs that journal. The journal goes when the save has notified the
// server; a journal left behind (a crash, a kill, a failing statement) is
// finished by recovery before anything reads the database again.
class ServerDataSaver
{
public:
    enum class Outcome {
        Saved,
        Declined, // "确定要保存?" answered No
        DataError, // no complete working copy to save
        MemberMissing, // a member without login name or password
        DatabaseError, // a statement failed (the journal stays)
        UnsafeText, // texts that would break their statements: nothing written
        // Serverinfo.ini has damaged lines, so the organisation version cannot
        // be written, and they were not made comments: nothing written.
        DamagedProfile,
        JournalError, // the journal could not be written: nothing written
        Busy, // another save held the folder and the wait gave up: nothing written
        // Another program saved since the working copy was read, and the
        // save was refused or cancelled: nothing written.
        ConcurrentChange,
        // The same, and the administrator chose to read the database again
        // (losing the working copy's changes): nothing written.
        ReloadRequested,
    };
    // What the save does when the database changed since it was read.
    enum class ConflictPolicy {
        Ask, // the console: reload, save anyway, or cancel
        Refuse, // velmarctl edit without --force
        Overwrite, // velmarctl edit --force, resave
    };
    // The step a database failure happened in.
    enum class Step {
        None,
        DeletedMembers,
        Directory,
        Positions,
        Permissions,
        FileBox,
        VoipPool,
        Notices,
    };

    struct Result
    {
        Outcome outcome = Outcome::Saved;
        Step failedStep = Step::None;
        DbError error;
        // MemberMissing: the first offending member row.
        bool memberIsGuest = false;
        int memberRow = -1;
        // Saved: the organisation version written.
        int version = 0;
        // Saved: the notices whose DELETE failed (they stay in the database).
        int failedNoticeDeletes = 0;
        // ConcurrentChange, ReloadRequested, and a save made anyway: what
        // changed since the working copy was read.
        ChangeGuard::Report changes;
        // The concurrent-change check before the journal, and the reading
        // taken after the run for the next save, in nanoseconds.
        qint64 guardNs = 0;
        qint64 guardAfterNs = 0;
        // UnsafeText: every offending text.
        QList<SavePreflight::Problem> problems;
        // DatabaseError: reported with the database session's error box
        // (the permission and file-box writes) instead of the balloon.
        bool errorBoxShown = false;
        // DatabaseError: the failing statement as written; JournalError: why.
        QString failedStatement;
        QString journalError;
        // Phases in nanoseconds: building the journal (the statements and
        // their encoding), writing it to disk, running it.
        qint64 journalNs = 0;
        qint64 journalWriteNs = 0;
        qint64 journalDecodeNs = 0; // inside runNs
        qint64 runNs = 0;
        qsizetype statements = 0;
        bool ok() const { return outcome == Outcome::Saved; }
    };

    using Pause = std::function<void(int milliseconds)>;

    static constexpr int NotificationPauseMs = 3000;

    // profilePath: the server information file; hives and programDir locate
    // the notices' upload folder.
    ServerDataSaver(CVelmarManagerDoc &data, DbSession &session, MessageService &messages,
        QString profilePath, RegistryHives &hives, QString programDir);

    // How the pause between the two notifications is spent (a blocking sleep
    // of the user-interface thread by default, as the save does not repaint).
    void setPause(Pause pause);
    // Where a run can be watched from (see SaveJournalRunner).
    void setCheckpoint(SaveJournalRunner::Checkpoint checkpoint);
    // How to wait while another save holds the folder (default: up to
    // DefaultLockWaitMs). The console shows a waiting state with a cancel.
    void setLockWait(ServerFolderLock::Wait wait) { m_lockWait = std::move(wait); }
    static constexpr qint64 DefaultLockWaitMs = 60 * 1000;
    void setConflictPolicy(ConflictPolicy policy) { m_conflictPolicy = policy; }
    // The console asks whether to turn the server information file's damaged
    // lines into comments (the only way the version can be written); without
    // an administrator to ask (velmarctl) the save is refused instead.
    void setAskToMendProfile(bool ask) { m_askToMendProfile = ask; }
    // Whether a successful save reads the tables again for the next save of
    // this working copy (the console); a process that saves once and ends
    // (velmarctl) does without.
    void setRememberOrigin(bool remember) { m_rememberOrigin = remember; }

    Result save(bool confirmed);

    // What the save would do to the database now, table by table, without
    // writing anything (read under the save lock, shared).
    struct Preview
    {
        bool ok = false;
        bool busy = false; // another save held the folder past the wait
        QList<SavePreflight::Problem> problems; // the save would refuse these texts
        DbError error;
        QList<SavePreview::Table> tables;
        qint64 ns = 0;
    };
    Preview preview();
    // The confirmation "确定要保存?" offers "显示更改", which runs this.
    void setPreviewAction(std::function<void()> action) { m_previewAction = std::move(action); }

    // The question asked when a modified document is closed. Returns whether
    // closing may go on: not modified, No, or Yes and the save succeeded.
    bool saveOnClose();

    // "GroupInfo" "Version" + 1, 1 after 9999, written "%04d". Returns the
    // new value.
    static int bumpVersion(const QString &profilePath);
    // The value bumpVersion would write, without writing it.
    static int nextVersion(const QString &profilePath);

    // The journal of the save the working copy would run now: the statements
    // in order, the version to write, the notices' items and the ports.
    SaveJournal buildJournal(SqlDialect dialect, int version) const;
    QString journalPath() const;

    static Step stepNamed(QStringView name);
    // The feature permissions and the file-box rights report their own
    // write failures as the database session does, with its error box; the
    // other steps leave it to the save's balloon.
    static bool reportsWithErrorBox(Step step);
    static QString stepName(Step step);

    static QString confirmText(); // "确定要保存?"
    static QString closeQuestionText(); // "确定要保存编辑的内容?"
    static QString dataErrorText(); // "当前编辑的数据发生错误."
    static QString memberErrorText(); // "用户ID和密码为空."
    static QString databaseErrorText(); // "数据库发生错误."
    static QString journalErrorText(const QString &path, const QString &why);
    static QString lockErrorText(const QString &path, const QString &why);

private:
    bool profileWritable();
    void balloon(const QString &text);
    void errorBox(const DbError &error);

    CVelmarManagerDoc &m_data;
    DbSession &m_session;
    MessageService &m_messages;
    QString m_profilePath;
    RegistryHives &m_hives;
    QString m_programDir;
    Pause m_pause;
    SaveJournalRunner::Checkpoint m_checkpoint;
    ServerFolderLock::Wait m_lockWait;
    ConflictPolicy m_conflictPolicy = ConflictPolicy::Ask;
    bool m_askToMendProfile = false;
    std::function<void()> m_previewAction;
    bool m_rememberOrigin = true;
};
