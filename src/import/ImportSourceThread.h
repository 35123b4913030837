#pragma once

#include "ImportSource.h"

#include <memory>
#include <optional>
#include <QEventLoop>
#include <QObject>
#include <QThread>
#include <type_traits>

// A thread of its own for an import source. Opening an ODBC or LDAP source,
// and reading a whole table from one, waits on the network for as long as the
// server takes, and a QSqlDatabase connection may only be used on the thread
// that opened it; so a source is opened, read and closed through run(), which
// does the work on this thread while the caller's event loop goes on
// painting. Input events wait meanwhile, so nothing the user does can reach
// the source halfway through a call.
class ImportSourceThread final
{
public:
    ImportSourceThread();
    ~ImportSourceThread();
    ImportSourceThread(const ImportSourceThread &) = delete;
    ImportSourceThread &operator=(const ImportSourceThread &) = delete;

    // Runs job on the source's thread and returns what it returned.
    template<typename Job> std::invoke_result_t<Job> run(Job job)
    {
        std::optional<std::invoke_result_t<Job>> result;
        bool done = false;
        QEventLoop loop;
        m_running = true;
        // The answer comes back as an event to this thread, so that the
        // worker touches nothing of this frame after handing over the result.
        QMetaObject::invokeMethod(
            m_context,
            [&] {
                result.emplace(job());
                QMetaObject::invokeMethod(
                    &m_answers,
                    [&] {
                        done = true;
                        loop.quit();
                    },
                    Qt::QueuedConnection);
            },
            Qt::QueuedConnection);
        // The application quitting ends every event loop at once; the job
        // still holds references into this frame, so its end is waited for.
        while (!done)
            loop.exec(QEventLoop::ExcludeUserInputEvents);
        m_running = false;
        return std::move(*result);
    }

    // Whether a job runs: the caller must not go away meanwhile (its window
    // may still be closed, which is not an input event).
    bool isRunning() const { return m_running; }

    // Closes a source on the thread it was opened on. Closing does not wait
    // on the server, so the caller waits for it without painting meanwhile;
    // that keeps it usable from a destructor.
    void close(std::unique_ptr<ImportSource> source);

private:
    QThread m_thread;
    QObject *m_context; // on m_thread
    QObject m_answers; // on the caller's thread
    bool m_running = false;
};
