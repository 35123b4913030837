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
#ifdef Q_OS_WIN
    if (m_fd >= 0)
        ::CloseHandle(reinterpret_cast<HANDLE>(m_fd));
#else
    if (m_fd >= 0)
        ::close(m_fd);
#endif
}

QString ServerFolderLock::savePathFor(const QString &profilePath)
{
    return QFileInfo(profilePath).absoluteDir().filePath(u"VelmarManager.savelock"_s);
}

QString ServerFolderLock::consolePathFor(const QString &profilePath)
{
    return QFileInfo(profilePath).absoluteDir().filePath(u"VelmarManager.consolelock"_s);
}

#ifdef Q_OS_WIN
// LockFileEx on one byte stands for flock: shared or exclusive, released by
// the system when the process ends.
bool ServerFolderLock::open()
{
    if (m_fd >= 0)
        return true;
    const HANDLE handle = ::CreateFileW(reinterpret_cast<const wchar_t *>(m_path.utf16()),
        GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        m_error = QString::number(::GetLastError());
        return false;
    }
    m_fd = qintptr(handle);
    return true;
}

bool ServerFolderLock::tryLock(Mode mode)
{
    OVERLAPPED at = {};
    const DWORD flags
        = LOCKFILE_FAIL_IMMEDIATELY | (mode == Mode::Exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0);
    // Taking it again in another mode: let go of the old one first.
    if (m_held) {
        ::UnlockFileEx(reinterpret_cast<HANDLE>(m_fd), 0, 1, 0, &at);
        m_held = false;
    }
    if (::LockFileEx(reinterpret_cast<HANDLE>(m_fd), flags, 0, 1, 0, &at))
        return true;
    m_wouldBlock = ::GetLastError() == ERROR_LOCK_VIOLATION;
    if (!m_wouldBlock)
        m_error = QString::number(::GetLastError());
    return false;
}

void ServerFolderLock::release()
{
    OVERLAPPED at = {};
    if (m_fd >= 0 && m_held)
        ::UnlockFileEx(reinterpret_cast<HANDLE>(m_fd), 0, 1, 0, &at);
    m_held = false;
}
#else
bool ServerFolderLock::open()
{
    if (m_fd >= 0)
        return true;
    const QByteArray name = QFile::encodeName(m_path);
    // The file is never deleted: removing a lock file while another process
    // waits on it would let a third one lock a new file beside it.
    const int fd = ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    // A folder the console may read but not write (a load only needs to
    // wait): an existing file can still be locked when opened for reading.
    m_fd = fd >= 0 ? fd : ::open(name.constData(), O_RDONLY | O_CLOEXEC);
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
        result = ::flock(int(m_fd), (mode == Mode::Exclusive ? LOCK_EX : LOCK_SH) | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    if (result == 0)
        return true;
    m_wouldBlock = errno == EWOULDBLOCK;
    if (!m_wouldBlock)
        m_error = QString::fromLocal8Bit(std::strerror(errno));
    return false;
}

void ServerFolderLock::release()
{
    if (m_fd >= 0 && m_held)
        ::flock(int(m_fd), LOCK_UN);
    m_held = false;
}
#endif

ServerFolderLock::Status ServerFolderLock::acquire(Mode mode, const Wait &wait)
{
    if (!open())
        return Status::Unavailable;
    QElapsedTimer waited;
    waited.start();
    while (!tryLock(mode)) {
        if (!m_wouldBlock)
            return Status::Unavailable;
        if (!wait || !wait(waited.elapsed()))
            return Status::GaveUp;
    }
    m_held = true;
    return Status::Locked;
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
