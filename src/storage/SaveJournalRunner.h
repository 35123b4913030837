#pragma once

#include "DbError.h"
#include "NoticeBoard.h"
#include "SaveJournal.h"

#include <functional>
#include <QList>
#include <QString>

class DbConnection;
class MessageService;

// Runs a save journal from its first action to its end: the statements in
// order, the notices' deletions with their uploaded items, the values for the
// server information file, then the notifications. The console's save runs
// its freshly written journal through it, and recovery runs a journal left by
// a save that never finished, so both send the same statements in the same
// order. The journal file itself is the caller's to remove.
class SaveJournalRunner final
{
public:
    // Where a run can be watched from (test harnesses stop the process there).
    enum class Point {
        BeforeStatement, // index: statements run so far
        AfterProfileWrite, // after each value written to the information file
        BeforeNotify,
        AfterNotify,
    };
    using Checkpoint = std::function<void(Point point, qsizetype index)>;
    using Pause = std::function<void(int milliseconds)>;

    struct Result
    {
        bool ok = true;
        // The failing statement, its step and its position (0-based) among
        // the journal's statements; the database's error.
        QString failedStep;
        QString failedStatement;
        qsizetype failedIndex = -1;
        DbError error;
        qsizetype statementsRun = 0;
        // Time spent reading the actions back from the journal's body.
        qint64 decodeNs = 0;
        // Notice deletions that failed (the save goes on after them).
        QList<NoticeBoard::Failure> noticeFailures;
    };

    static constexpr int NotificationPauseMs = 3000;

    SaveJournalRunner(QString profilePath, MessageService &messages);

    void setPause(Pause pause) { m_pause = std::move(pause); }
    void setCheckpoint(Checkpoint checkpoint) { m_checkpoint = std::move(checkpoint); }

    // Runs the actions; stops at the first failing statement.
    Result run(const SaveJournal &journal, DbConnection &connection);
    // Sends the journal's notifications in order, pausing between two.
    void notify(const SaveJournal &journal);

private:
    void checkpoint(Point point, qsizetype index);

    QString m_profilePath;
    MessageService &m_messages;
    Pause m_pause;
    Checkpoint m_checkpoint;
};
