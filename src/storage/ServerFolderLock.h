#pragma once

#include <functional>
#include <QString>

// An advisory lock on a file beside the server information file, held by the
// kernel for this process: a crash or a kill releases it, so a lock is never
// left behind. Every save (console, velmarctl edit, resave, recover) holds the
// save lock exclusively from before its journal is written until the journal
// is gone; every load holds it shared, so that it never reads a database that
// a save is rewriting. A console holds the console lock for its lifetime, so
// that a second console on the same folder can tell.
class ServerFolderLock final
{
public:
    enum class Mode { Shared, Exclusive };
    enum class Status {
        Locked,
        GaveUp, // held elsewhere; the wait gave up (timed out or cancelled)
        Unavailable, // the lock file can be neither created nor opened
    };
    // Called while the lock is held elsewhere with the milliseconds waited so
    // far. It spends the next pause (sleeping, or running the event loop of
    // a dialog with a cancel button) and returns whether to try again.
    using Wait = std::function<bool(qint64 waitedMs)>;
    static constexpr int PollMs = 50;

    explicit ServerFolderLock(QString path);
    ~ServerFolderLock();
    ServerFolderLock(const ServerFolderLock &) = delete;
    ServerFolderLock &operator=(const ServerFolderLock &) = delete;

    // "VelmarManager.savelock" and "VelmarManager.consolelock" beside the
    // server information file.
    static QString savePathFor(const QString &profilePath);
    static QString consolePathFor(const QString &profilePath);

    QString path() const { return m_path; }
    // Takes the lock, waiting through wait while it is held elsewhere (no
    // wait: one try). Taking it again in another mode changes the mode.
    Status acquire(Mode mode, const Wait &wait = {});
    void release();
    bool isHeld() const { return m_held; }
    // Unavailable: why.
    QString errorString() const { return m_error; }

    // Sleeps PollMs and keeps waiting until limitMs have passed (a negative
    // limit waits for ever).
    static Wait waitUpTo(qint64 limitMs);

private:
    bool open();
    bool tryLock(Mode mode);

    QString m_path;
    QString m_error;
    qintptr m_fd = -1; // a file descriptor, or a HANDLE on Windows
    bool m_held = false;
    bool m_wouldBlock = false; // the last try failed because the lock is held elsewhere
};
