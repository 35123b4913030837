#include "LogLineReader.h"

#include <cstring>

LogLineReader::LogLineReader(QByteArrayView bytes)
    : m_bytes(bytes)
{ }

bool LogLineReader::readLine(qsizetype bufferSize, QByteArrayView &piece)
{
    if (m_position >= m_bytes.size() || bufferSize < 2)
        return false;
    const qsizetype start = m_position;
    const qsizetype available = m_bytes.size() - start;
    const qsizetype limit = std::min(bufferSize - 1, available);
    const char *begin = m_bytes.data() + start;
    const auto *newline = static_cast<const char *>(std::memchr(begin, '\n', size_t(limit)));
    qsizetype length;
    if (newline) {
        length = newline - begin;
        m_position = start + length + 1;
    } else {
        length = limit;
        // A CR LF counts as one character in text mode: the LF just past the
        // limit still ends this line when the CR was the last one taken.
        if (length > 0 && begin[length - 1] == '\r' && length < available
            && begin[length] == '\n') {
            m_position = start + length + 1;
        } else {
            m_position = start + length;
        }
    }
    if (length > 0 && begin[length - 1] == '\r' && (newline || m_position > start + length))
        --length;
    if (const void *nul = std::memchr(begin, '\0', size_t(length)))
        length = static_cast<const char *>(nul) - begin;
    piece = QByteArrayView(begin, length);
    return true;
}

QByteArrayView LogLineReader::trimmed(QByteArrayView text)
{
    auto space = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    qsizetype from = 0, to = text.size();
    while (from < to && space(text[from]))
        ++from;
    while (to > from && space(text[to - 1]))
        --to;
    return text.sliced(from, to - from);
}
