#include "LogByteArena.h"

LogByteArena::Ref LogByteArena::append(QByteArrayView bytes)
{
    Ref ref;
    ref.size = quint32(bytes.size());
    if (bytes.size() > BlockSize / 4) {
        // A large piece gets a block of its own; the block being filled stays
        // the one to fill.
        m_blocks.emplace_back(bytes.data(), bytes.size());
        ref.block = quint32(m_blocks.size() - 1);
        ref.offset = 0;
        return ref;
    }
    if (m_current < 0 || m_blocks[size_t(m_current)].size() + bytes.size() > BlockSize) {
        m_blocks.emplace_back();
        m_blocks.back().reserve(BlockSize);
        m_current = qsizetype(m_blocks.size() - 1);
    }
    QByteArray &block = m_blocks[size_t(m_current)];
    ref.block = quint32(m_current);
    ref.offset = quint32(block.size());
    block.append(bytes);
    return ref;
}

QByteArrayView LogByteArena::view(Ref ref) const
{
    return QByteArrayView(m_blocks[ref.block]).sliced(ref.offset, ref.size);
}

qint64 LogByteArena::bytesHeld() const
{
    qint64 total = 0;
    for (const QByteArray &block : m_blocks)
        total += block.capacity();
    return total;
}
