#pragma once

#include "LogFileStore.h"
#include "LogSearch.h"

#include <optional>
#include <QByteArray>
#include <QList>
#include <QtConcurrent/QtConcurrentMap>
#include <QThreadPool>
#include <vector>

// Reads the files of a search on every core: a batch of files is read and
// parsed side by side, then its parts are handed over one by one in file
// order, so the rows come out in the order a single reader gives them.
// Between batches the search reports its progress and notices a cancel.
class LogFileLoader
{
public:
    // parse(const LogFileEntry &) -> std::optional<Part> runs on the pool's
    // threads; take(Part &&) and weight(const LogFileEntry &) -> qint64 (what
    // a file counts for in the progress) on the calling thread. False when
    // cancelled.
    template<typename Part, typename Parse, typename Take, typename Weight>
    static bool load(const QList<LogFileEntry> &files, const LogSearchControl &control, Parse parse,
        Take take, Weight weight)
    {
        qint64 total = 0;
        for (const LogFileEntry &file : files)
            total += weight(file);
        qint64 done = 0;
        control.report(0, total);
        struct Slot
        {
            const LogFileEntry *file;
            std::optional<Part> part;
        };
        const qsizetype batch = 4 * std::max(1, QThreadPool::globalInstance()->maxThreadCount());
        std::vector<Slot> slots;
        for (qsizetype from = 0; from < files.size(); from += batch) {
            if (control.isCancelled())
                return false;
            slots.clear();
            for (qsizetype i = from; i < std::min(files.size(), from + batch); ++i)
                slots.push_back({ &files[i], std::nullopt });
            QtConcurrent::blockingMap(
                slots, [&parse](Slot &slot) { slot.part = parse(*slot.file); });
            for (Slot &slot : slots) {
                if (slot.part)
                    take(std::move(*slot.part));
                slot.part.reset();
                done += weight(*slot.file);
            }
            control.report(done, total);
        }
        return !control.isCancelled();
    }

    static qint64 totalSize(const QList<LogFileEntry> &files)
    {
        qint64 total = 0;
        for (const LogFileEntry &file : files)
            total += file.size;
        return total;
    }

    // Reads the files into the store and parses them on every core:
    // parse(LogFileBytes) -> Part on the pool's threads, take(Part &&, double
    // growth) on the calling thread in file order, where growth is how much
    // the rows taken so far are likely to grow by the end (the bytes listed
    // over the bytes taken). False when cancelled.
    template<typename Part, typename Parse, typename Take>
    static bool loadFiles(const QList<LogFileEntry> &files, const LogSearchControl &control,
        LogFileStore *store, Parse parse, Take take)
    {
        const qint64 total = totalSize(files);
        qint64 taken = 0;
        return load<Part>(
            files, control,
            [store, &parse](const LogFileEntry &file) -> std::optional<Part> {
                std::optional<LogFileBytes> bytes = LogFileStore::read(file.path, file.size, store);
                if (!bytes)
                    return std::nullopt;
                return parse(std::move(*bytes));
            },
            [&](Part &&part) {
                taken += part.bytes.view.size();
                take(std::move(part),
                    taken > 0 ? double(std::max(total, taken)) / double(taken) : 1.0);
            },
            [](const LogFileEntry &file) { return file.size; });
    }

    // Room in a growing list for the rest of a search at the rate seen so
    // far, so that millions of rows are not copied again and again.
    template<typename List> static void reserveAhead(List &list, size_t more, double growth)
    {
        if (list.capacity() < list.size() + more)
            list.reserve(size_t(double(list.size() + more) * growth * 1.05) + more);
    }
};
