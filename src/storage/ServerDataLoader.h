#pragma once

#include "DbError.h"
#include "ServerFolderLock.h"

#include <QString>

class DbSession;
class LoadProgress;
struct ServerDataSet;

// The loading worker's run: opens one connection and reads, in this order,
// the directory, the positions, the feature permissions, the file-box rights,
// the VoIP account pool and the notices, each only when the one before
// succeeded. Touches nothing but the data set it is given, so it runs on the
// loading thread (CReadDBThread) as well as in velmarctl.
class ServerDataLoader
{
public:
    enum class Outcome {
        Ok,
        OpenFailed, // no connection: the open failed, or DBAddr names a remote database
        ReadFailed, // a statement or a field failed; what was read before stays
        Busy, // another program's save held the folder and the wait gave up: nothing read
    };
    enum class Step { Open, Directory, Positions, Permissions, FileBox, VoipPool, Notices, Done };

    struct Result
    {
        Outcome outcome = Outcome::Ok;
        Step failedStep = Step::Done;
        DbError error; // ReadFailed: the failure
        bool ok() const { return outcome == Outcome::Ok; }
    };

    // session opens the connection (and reports a failed open its own way);
    // profilePath is the server information file, for the default position.
    ServerDataLoader(DbSession &session, QString profilePath);

    // Fills data; progress (may be null) receives the designed texts, ranges
    // and positions. The connection is dropped before it returns.
    // The whole run holds the save lock shared, so that it never reads a
    // database that a save is rewriting; the fingerprint the save checks is
    // taken at its end.
    Result run(ServerDataSet &data, LoadProgress *progress = nullptr);

    // How long to wait for a save that holds the folder (default: ten
    // minutes); the wait is told how long it has waited.
    void setLockWait(ServerFolderLock::Wait wait) { m_lockWait = std::move(wait); }
    static constexpr qint64 DefaultLockWaitMs = 10 * 60 * 1000;
    static QString waitingText(); // "等待另一个保存完成."

    static QString stepName(Step step);
    static QString openingText(); // "打开数据库."

private:
    DbSession &m_session;
    QString m_profilePath;
    ServerFolderLock::Wait m_lockWait;
};
