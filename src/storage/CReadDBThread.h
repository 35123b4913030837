#pragma once

#include "ServerDataLoader.h"
#include "ServerDataSet.h"

#include <memory>
#include <QString>
#include <QThread>

class MessageService;
class RegistryHives;
class CVelmarManagerDoc;
class SqlTrace;

// Reads the server database on its own thread and connection while the
// user-interface thread keeps painting. The worker touches no object of the
// user-interface thread: progress goes out as queued signals, and the data it
// read is handed over once it has ended. Then, on the user-interface thread,
// the data is adopted into the CVelmarManagerDoc (after a failure too: what was read
// stays in memory), the failure boxes are shown, loadCompleted is emitted when
// everything was read, and workerExited ends the run.
class CReadDBThread : public QThread
{
    Q_OBJECT

public:
    // The connection settings are those of the console's DbSession; the thread
    // builds its own session from them, whose boxes it shows afterwards on the
    // user-interface thread through messages. target receives the data.
    CReadDBThread(const RegistryHives &hives, QString profilePath, QString accessDatabasePath,
        MessageService &messages, CVelmarManagerDoc &target, SqlTrace *trace = nullptr,
        QObject *parent = nullptr);
    // Waits for a running worker.
    ~CReadDBThread() override;

    // Valid after workerExited.
    ServerDataLoader::Result loadResult() const { return m_result; }
    // 1 after a complete load, 0 after a failure (the value workerExited carries).
    int resultFlag() const { return m_result.ok() ? 1 : 0; }

    static QString openFailedText(); // "打开数据库时发生错误."
    static QString readFailedText(); // "当读数据时发生错误."
    static QString busyText(); // another save held the folder past the wait

    // How the worker waits for a save that holds the folder (see
    // ServerDataLoader::setLockWait); called on the worker thread.
    void setLockWait(ServerFolderLock::Wait wait) { m_lockWait = std::move(wait); }

Q_SIGNALS:
    // For the progress dialog; emitted on the worker thread, so connections
    // to objects of the user-interface thread are queued.
    void progressText(const QString &text);
    void progressRange(int maximum);
    void progressPosition(int position);
    // The data is in memory and the views may fill themselves.
    void loadCompleted();
    // The run is over; result is 1 when everything was read, else 0.
    void workerExited(int result);

protected:
    void run() override;

private:
    void onFinished();

    const RegistryHives &m_hives;
    QString m_profilePath;
    QString m_accessDatabasePath;
    MessageService &m_messages;
    CVelmarManagerDoc &m_target;
    SqlTrace *m_trace;
    ServerFolderLock::Wait m_lockWait;

    // Written by the worker, read on the user-interface thread after it ended.
    ServerDataSet m_data;
    ServerDataLoader::Result m_result;
    struct Deferred;
    std::unique_ptr<Deferred> m_deferred;
};
