#pragma once

#include "LogText.h"

#include <atomic>
#include <memory>
#include <optional>
#include <QByteArray>
#include <QByteArrayView>
#include <vector>

// The bytes of one log file as a search keeps them: a view into the search's
// store, or bytes of their own when the file had to be converted (UTF-16) or
// had grown past the room kept for it since it was listed. Moving it keeps
// the view valid.
struct LogFileBytes
{
    QByteArrayView view;
    QByteArray owned;
    LogTextEncoding encoding = LogTextEncoding::Utf8;

    // Bytes read elsewhere, prepared for the line readers.
    static LogFileBytes fromBytes(QByteArray bytes)
    {
        LogFileBytes file;
        file.encoding = LogText::prepare(bytes, true);
        file.owned = std::move(bytes);
        file.view = file.owned;
        return file;
    }
};

// One block for the bytes of every file a search reads, taken once at the
// listed total. A month of user logs is a gigabyte; read into memory page by
// page it costs a quarter of a million page faults, which on a virtual machine
// take longer than the parsing. One block, backed by huge pages where the
// system offers them, costs a few hundred. Rooms are handed out to the reading
// threads without a lock.
class LogFileStore final
{
public:
    explicit LogFileStore(qint64 capacity);
    ~LogFileStore();
    LogFileStore(const LogFileStore &) = delete;
    LogFileStore &operator=(const LogFileStore &) = delete;

    // Room for size bytes, nullptr when the block has no more.
    char *claim(qint64 size);
    qint64 capacity() const { return m_capacity; }

    // Reads a file (listedSize: its size when the search listed it) into a
    // room of the store, or into its own bytes when it has grown since, and
    // prepares it for the line readers. nullopt when it cannot be opened.
    static std::optional<LogFileBytes> read(
        const QString &path, qint64 listedSize, LogFileStore *store);

    // The memory a search's files hold: the block and the bytes of their own.
    static qint64 bytesHeld(const LogFileStore *store, const std::vector<LogFileBytes> &files);

private:
    char *m_data = nullptr;
    qint64 m_capacity = 0;
    qint64 m_mapped = 0;
    std::unique_ptr<char[]> m_heap;
    std::atomic<qint64> m_used { 0 };
};
