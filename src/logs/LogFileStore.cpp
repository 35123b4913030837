#include "LogFileStore.h"

#include <QFile>

#ifdef Q_OS_LINUX
#include <sys/mman.h>
#endif

LogFileStore::LogFileStore(qint64 capacity)
{
    if (capacity <= 0)
        return;
#ifdef Q_OS_LINUX
    // Whole huge pages, so that the block's end gets one too.
    constexpr qint64 HugePage = 2 * 1024 * 1024;
    const qint64 mapped = (capacity + HugePage - 1) / HugePage * HugePage;
    void *block = mmap(nullptr, size_t(mapped), PROT_READ | PROT_WRITE,
        MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (block != MAP_FAILED) {
        madvise(block, size_t(mapped), MADV_HUGEPAGE);
        m_data = static_cast<char *>(block);
        m_mapped = mapped;
        m_capacity = capacity;
        return;
    }
#endif
    // Without a block every file keeps bytes of its own.
    m_heap.reset(new (std::nothrow) char[size_t(capacity)]);
    if (m_heap) {
        m_data = m_heap.get();
        m_capacity = capacity;
    }
}

LogFileStore::~LogFileStore()
{
#ifdef Q_OS_LINUX
    if (m_mapped > 0)
        munmap(m_data, size_t(m_mapped));
#endif
}

char *LogFileStore::claim(qint64 size)
{
    if (size < 0 || !m_data)
        return nullptr;
    qint64 used = m_used.load(std::memory_order_relaxed);
    do {
        if (size > m_capacity - used)
            return nullptr;
    } while (!m_used.compare_exchange_weak(used, used + size, std::memory_order_relaxed));
    return m_data + used;
}

std::optional<LogFileBytes> LogFileStore::read(
    const QString &path, qint64 listedSize, LogFileStore *store)
{
    QFile in(path);
    if (!in.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return std::nullopt;
    LogFileBytes bytes;
    const qint64 size = std::max<qint64>(in.size(), 0);
    char *room = store && size <= listedSize ? store->claim(size) : nullptr;
    if (room) {
        const qint64 got = in.read(room, size);
        bytes.view = QByteArrayView(room, std::max<qint64>(got, 0));
    } else {
        // A file still being written: everything there is now.
        bytes.owned = in.readAll();
        bytes.view = bytes.owned;
    }
    std::optional<QByteArray> converted;
    bytes.encoding = LogText::prepare(bytes.view, converted, true);
    if (converted) {
        bytes.owned = std::move(*converted);
        bytes.view = bytes.owned;
    }
    return bytes;
}

qint64 LogFileStore::bytesHeld(const LogFileStore *store, const std::vector<LogFileBytes> &files)
{
    qint64 held = store ? store->capacity() : 0;
    for (const LogFileBytes &file : files)
        held += file.owned.capacity();
    return held + qint64(files.capacity() * sizeof(LogFileBytes));
}
