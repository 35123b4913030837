#include "LogSearch.h"

#include "LogFileNames.h"
#include "LogFilterRules.h"
#include "LogLocations.h"

#include <QDirIterator>
#include <QFileInfo>

using namespace Qt::StringLiterals;

LogSearchControl::LogSearchControl(const std::atomic_bool *cancelled, Progress progress)
    : m_cancelled(cancelled)
    , m_progress(std::move(progress))
{ }

void LogSearchControl::report(qint64 done, qint64 total) const
{
    if (m_progress)
        m_progress(done, total);
}

QString LogSearch::pattern(Kind kind)
{
    switch (kind) {
    case Kind::Chat:
        return u"c*_*.txt"_s;
    case Kind::System:
        return u"s*.txt"_s;
    case Kind::User:
        return u"u*.txt"_s;
    }
    return {};
}

QStringList LogSearch::daemons(Kind kind)
{
    switch (kind) {
    case Kind::Chat:
        return LogLocations::chatDaemons();
    case Kind::System:
        return LogLocations::systemDaemons();
    case Kind::User:
        return LogLocations::userDaemons();
    }
    return {};
}

bool LogSearch::matchesPattern(QStringView name, QStringView pattern)
{
    // Greedy-free wildcard match with one back-track point.
    qsizetype n = 0, p = 0, star = -1, resume = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == u'*') {
            star = p++;
            resume = n;
        } else if (p < pattern.size()
            && (pattern[p] == u'?' || pattern[p].toCaseFolded() == name[n].toCaseFolded())) {
            ++p;
            ++n;
        } else if (star >= 0) {
            p = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == u'*')
        ++p;
    return p == pattern.size();
}

QList<LogFileEntry> LogSearch::keptFiles(Kind kind, const QString &logRoot, const LogFilter &filter)
{
    QList<LogFileEntry> kept;
    const QString wildcard = pattern(kind);
    for (const QString &daemon : daemons(kind)) {
        const QString folder = LogLocations::daemonFolder(logRoot, daemon);
        // The file system's own order, as the enumeration returns it.
        QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::System);
        while (it.hasNext()) {
            it.next();
            const QString name = it.fileName();
            if (!matchesPattern(name, wildcard))
                continue;
            const std::optional<QDateTime> stamp = kind == Kind::Chat
                ? LogFileNames::chatStamp(name)
                : LogFileNames::hourlyStamp(name);
            if (!stamp || !LogFilterRules::inPeriod(filter, *stamp))
                continue;
            kept.append({ folder + name, kind == Kind::Chat ? 0 : it.fileInfo().size() });
        }
    }
    return kept;
}
