#include "ServerFolderLock.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QThread>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

ServerFolderLock::ServerFolderLock(QString path)
    : m_path(std::move(path))
{ }

ServerFolderLock::~ServerFolderLock()
{
    release();
    if (m_fd >= 0)
        ::close(m_fd);
}

QString ServerFolderLock::savePathFor(const QString &profilePath)
{
    return QFileInfo(profilePath).absoluteDir().filePath(u"VelmarManager.savelock"_s);
}

QString ServerFolderLock::consolePathFor(const QString &profilePath)
{
    return QFileInfo(profilePath).absoluteDir().filePath(u"VelmarManager.consolelock"_s);
}

bool ServerFolderLock::open()
{
    if (m_fd >= 0)
        return true;
    const QByteArray name = QFile::encodeName(m_path);
    // The file is never deleted: removing a lock file while another process
    // waits on it would let a third one lock a new file beside it.
    m_fd = ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    // A folder the console may read but not write (a load only needs to
    // wait): an existing file can still be locked when opened for reading.
    if (m_fd < 0)
        m_fd = ::open(name.constData(), O_RDONLY | O_CLOEXEC);
    if (m_fd < 0) {
        m_error = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    return true;
}

bool ServerFolderLock::tryLock(Mode mode)
{
    int result;
    do {
        result = ::flock(m_fd, (mode == Mode::Exclusive ? LOCK_EX : LOCK_SH) | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

ServerFolderLock::Status ServerFolderLock::acquire(Mode mode, const Wait &wait)
{
    if (!open())
        return Status::Unavailable;
    QElapsedTimer waited;
    waited.start();
    while (!tryLock(mode)) {
        if (errno != EWOULDBLOCK) {
            m_error = QString::fromLocal8Bit(std::strerror(errno));
            return Status::Unavailable;
        }
        if (!wait || !wait(waited.elapsed()))
            return Status::GaveUp;
    }
    m_held = true;
    return Status::Locked;
}

void ServerFolderLock::release()
{
    if (m_fd >= 0 && m_held)
        ::flock(m_fd, LOCK_UN);
    m_held = false;
}

ServerFolderLock::Wait ServerFolderLock::waitUpTo(qint64 limitMs)
{
    return [limitMs](qint64 waitedMs) {
        if (limitMs >= 0 && waitedMs >= limitMs)
            return false;
        QThread::msleep(PollMs);
        return true;
    };
}
