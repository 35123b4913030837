#include "SaveJournalRunner.h"

#include "DbConnection.h"
#include "ProfileFile.h"
#include "Recordset.h"
#include "ServerNotifier.h"

#include <QElapsedTimer>
#include <QThread>

using namespace Qt::StringLiterals;

SaveJournalRunner::SaveJournalRunner(QString profilePath, MessageService &messages)
    : m_profilePath(std::move(profilePath))
    , m_messages(messages)
    , m_pause([](int ms) { QThread::msleep(ulong(ms)); })
{ }

void SaveJournalRunner::checkpoint(Point point, qsizetype index)
{
    if (m_checkpoint)
        m_checkpoint(point, index);
}

SaveJournalRunner::Result SaveJournalRunner::run(
    const SaveJournal &journal, DbConnection &connection)
{
    Result result;
    QString step;
    SaveJournal::Cursor cursor;
    SaveJournal::Action action;
    QElapsedTimer decoding;
    decoding.start();
    while (journal.nextAction(cursor, action)) {
        result.decodeNs += decoding.nsecsElapsed();
        switch (action.kind) {
        case SaveJournal::Kind::Step:
            step = action.text;
            break;
        case SaveJournal::Kind::Statement:
            checkpoint(Point::BeforeStatement, result.statementsRun);
            try {
                connection.execute(action.text);
            } catch (const DbException &e) {
                result.ok = false;
                result.failedStep = step;
                result.failedStatement = action.text;
                result.failedIndex = result.statementsRun;
                result.error = e.error();
                return result;
            }
            ++result.statementsRun;
            break;
        case SaveJournal::Kind::NoticeDelete: {
            checkpoint(Point::BeforeStatement, result.statementsRun);
            bool deleted = true;
            try {
                connection.execute(action.text);
            } catch (const DbException &e) {
                // The notice stays in the database, and so do its files.
                result.noticeFailures.append({ action.key.toInt(), e.error() });
                deleted = false;
            }
            ++result.statementsRun;
            if (deleted)
                NoticeBoard::removeUploadedItem(action.value, action.target);
            break;
        }
        case SaveJournal::Kind::ProfileWrite:
            ProfileFile(m_profilePath).writeString(action.text, action.key, action.value);
            checkpoint(Point::AfterProfileWrite, result.statementsRun);
            break;
        }
        decoding.restart();
    }
    return result;
}

void SaveJournalRunner::notify(const SaveJournal &journal)
{
    checkpoint(Point::BeforeNotify, 0);
    ServerNotifier notifier(m_messages);
    const QList<quint16> ports = journal.notifyPorts();
    for (qsizetype i = 0; i < ports.size(); ++i) {
        notifier.notify(ports[i]);
        if (i + 1 < ports.size())
            m_pause(NotificationPauseMs);
    }
    checkpoint(Point::AfterNotify, 0);
}
