#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <vector>

// Append-only storage of many small byte strings in large blocks, so that
// millions of log lines cost their bytes and a few words each, and a growing
// store never copies what it already holds.
class LogByteArena final
{
public:
    struct Ref
    {
        quint32 block = 0;
        quint32 offset = 0;
        quint32 size = 0;
    };

    Ref append(QByteArrayView bytes);
    QByteArrayView view(Ref ref) const;
    qint64 bytesHeld() const;

private:
    static constexpr qsizetype BlockSize = 4 * 1024 * 1024;
    std::vector<QByteArray> m_blocks;
    qsizetype m_current = -1; // the block being filled
};
