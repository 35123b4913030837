#include "ServerDataLoader.h"

#include "ChangeGuard.h"
#include "DbConnection.h"
#include "DbSession.h"
#include "DirectoryLoader.h"
#include "LoadProgress.h"
#include "NoticeBoard.h"
#include "NumberColumns.h"
#include "ProfileFile.h"
#include "ServerDataSet.h"

using namespace Qt::StringLiterals;

ServerDataLoader::ServerDataLoader(DbSession &session, QString profilePath)
    : m_session(session)
    , m_profilePath(std::move(profilePath))
    , m_lockWait(ServerFolderLock::waitUpTo(DefaultLockWaitMs))
{ }

QString ServerDataLoader::waitingText()
{
    return u"等待另一个保存完成."_s;
}

QString ServerDataLoader::openingText()
{
    return u"打开数据库."_s;
}

QString ServerDataLoader::stepName(Step step)
{
    switch (step) {
    case Step::Open:
        return u"open"_s;
    case Step::Directory:
        return u"directory"_s;
    case Step::Positions:
        return u"positions"_s;
    case Step::Permissions:
        return u"permissions"_s;
    case Step::FileBox:
        return u"filebox"_s;
    case Step::VoipPool:
        return u"voip-pool"_s;
    case Step::Notices:
        return u"notices"_s;
    case Step::Done:
        break;
    }
    return u"done"_s;
}

ServerDataLoader::Result ServerDataLoader::run(ServerDataSet &data, LoadProgress *progress)
{
    Result result;
    if (progress)
        progress->setText(openingText());

    // A folder whose lock file cannot be made (read-only) is read unlocked:
    // this process could not save into it anyway.
    ServerFolderLock lock(ServerFolderLock::savePathFor(m_profilePath));
    bool toldWaiting = false;
    const auto wait = [&](qint64 waitedMs) {
        if (!toldWaiting && progress)
            progress->setText(waitingText());
        toldWaiting = true;
        return m_lockWait && m_lockWait(waitedMs);
    };
    if (lock.acquire(ServerFolderLock::Mode::Shared, wait) == ServerFolderLock::Status::GaveUp) {
        result.outcome = Outcome::Busy;
        result.failedStep = Step::Open;
        return result;
    }
    if (toldWaiting && progress)
        progress->setText(openingText());

    DbConnection connection = m_session.OpenDBConnection();
    if (connection.isNull()) {
        result.outcome = Outcome::OpenFailed;
        result.failedStep = Step::Open;
        result.error.hresult = DbError::InvalidPointer;
        return result;
    }

    Step step = Step::Directory;
    try {
        NumberColumns::requireNumbers(connection);
        DirectoryLoader::load(connection, data.directory, progress);

        step = Step::Positions;
        // The default position is a setting of the server information file,
        // written at once by the position view; re-read with every load.
        data.positions.defaultId = PositionList::readDefaultPositionId(ProfileFile(m_profilePath));
        data.positions.load(connection);

        step = Step::Permissions;
        data.permissions.load(connection);

        step = Step::FileBox;
        data.fileBox.load(connection);

        step = Step::VoipPool;
        data.voipPool.load(connection);

        step = Step::Notices;
        data.notices = NoticeBoard::load(connection);
    } catch (const DbException &e) {
        m_session.recordError(e.error());
        result.outcome = Outcome::ReadFailed;
        result.failedStep = step;
        result.error = e.error();
        return result;
    }
    // Without a fingerprint the save cannot tell a colleague's save from
    // none; a database that refuses the aggregate query still loads.
    try {
        data.origin = ChangeGuard::read(connection, m_profilePath);
    } catch (const DbException &) {
        data.origin = {};
    }
    return result;
}
