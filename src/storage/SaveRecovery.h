#pragma once

#include "MessageService.h"
#include "SaveJournal.h"
#include "SaveJournalRunner.h"
#include "ServerFolderLock.h"

#include <QString>

class DbSession;

// Finishes a save that a crash, a kill or a failing statement left behind.
// Whoever opens a server folder asks it first, before anything reads the
// database: a journal beside the server information file means that the
// database may hold emptied or half-filled partitions. Finishing replays the
// journal from its first statement, writes its values to the information
// file, removes the notices' items and notifies the server, as the save
// would have; the journal goes last.
class SaveRecovery final
{
public:
    enum class State {
        None, // no journal: the database is whole
        Ready, // a journal for the configured database
        OtherDatabase, // a journal written for another connection string
        Corrupt, // a journal that cannot be read or fails its check
    };
    // What the console does after asking (runInteractive).
    enum class Decision { Load, Quit };

    SaveRecovery(DbSession &session, MessageService &messages, QString profilePath);

    void setPause(SaveJournalRunner::Pause pause) { m_pause = std::move(pause); }
    void setCheckpoint(SaveJournalRunner::Checkpoint checkpoint)
    {
        m_checkpoint = std::move(checkpoint);
    }

    QString journalPath() const { return m_path; }
    // How to wait while a save holds the folder: its journal is then a
    // running save's, not a left-over (default: up to a minute).
    void setLockWait(ServerFolderLock::Wait wait) { m_lockWait = std::move(wait); }
    // inspect() or finish() gave up waiting for a running save.
    bool gaveUpWaiting() const { return m_gaveUp; }

    // Reads the journal, if any, and tells what it is, once no save is
    // running (None when the wait gave up: see gaveUpWaiting()).
    State inspect();
    const SaveJournal &journal() const { return m_journal; }
    // Corrupt: why; OtherDatabase: nothing (see journal().connectionString()).
    QString problem() const { return m_problem; }

    // Replays an inspected Ready journal, holding the save lock. On success
    // the journal is removed after the notifications; on a failing statement
    // it stays. A journal another process finished meanwhile is not run again.
    SaveJournalRunner::Result finish();
    bool discard(QString *errorString = nullptr);

    // The console's start-up questions: finish (the default), discard after
    // a second confirmation, or quit. Load means the database is whole (or
    // the administrator chose to keep it as it is).
    Decision runInteractive();

    static QString pendingQuestionText(const SaveJournal &journal);
    static QString discardConfirmText();
    static QString replayFailedText(const SaveJournalRunner::Result &result);
    static QString otherDatabaseText(
        const QString &journalDatabase, const QString &currentDatabase);
    static QString corruptText(const QString &path, const QString &why);
    static QString finishedText();

private:
    bool confirmDiscard();
    int ask(const QString &text, MessageService::Buttons buttons, MessageService::Icon icon);

    DbSession &m_session;
    MessageService &m_messages;
    QString m_profilePath;
    QString m_path;
    SaveJournal m_journal;
    QString m_problem;
    SaveJournalRunner::Pause m_pause;
    SaveJournalRunner::Checkpoint m_checkpoint;
    ServerFolderLock::Wait m_lockWait;
    bool m_gaveUp = false;
};
