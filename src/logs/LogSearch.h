#pragma once

#include "CodePage.h"
#include "LogFilter.h"
#include "LogMemberNames.h"

#include <atomic>
#include <functional>
#include <QList>
#include <QString>
#include <QStringList>

// What one search of a log view reads: the filter, the log root and the
// member names to show.
struct LogSearchRequest
{
    LogFilter filter;
    QString logRoot; // ends in a separator (LogLocations::logRoot)
    LogMemberNames names;
    CodePage codePage = CodePage::system();
};

// How a running search learns that it is no longer wanted and tells how far
// it got. Both parts are optional.
class LogSearchControl final
{
public:
    using Progress = std::function<void(qint64 done, qint64 total)>;

    LogSearchControl() = default;
    LogSearchControl(const std::atomic_bool *cancelled, Progress progress);

    bool isCancelled() const { return m_cancelled && m_cancelled->load(std::memory_order_relaxed); }
    void report(qint64 done, qint64 total) const;

private:
    const std::atomic_bool *m_cancelled = nullptr;
    Progress m_progress;
};

// One log file a search will read.
struct LogFileEntry
{
    QString path;
    qint64 size = 0;
};

class LogSearch
{
public:
    enum class Kind { Chat, System, User };

    // The files of a view's daemon folders that the period accepts, folder by
    // folder in the view's order and, inside a folder, in the order the file
    // system lists them. Missing or unreadable folders give nothing.
    static QList<LogFileEntry> keptFiles(
        Kind kind, const QString &logRoot, const LogFilter &filter);

    // Wildcard match as the file enumeration does it ("*" for any run of
    // characters), without regard to case.
    static bool matchesPattern(QStringView name, QStringView pattern);
    static QString pattern(Kind kind); // "c*_*.txt", "s*.txt", "u*.txt"
    static QStringList daemons(Kind kind);
};
