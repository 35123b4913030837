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
        QEventLoop loop;
        QMetaObject::invokeMethod(
            m_context,
            [&] {
                result.emplace(job());
                QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
            },
            Qt::QueuedConnection);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
        return std::move(*result);
    }

    // Closes a source on the thread it was opened on. Closing does not wait
    // on the server, so the caller waits for it without painting meanwhile;
    // that keeps it usable from a destructor.
    void close(std::unique_ptr<ImportSource> source);

private:
    QThread m_thread;
    QObject *m_context;
};
