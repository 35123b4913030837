#pragma once

#include <QByteArray>
#include <QByteArrayView>

// Reads lines from a file's bytes the way a C runtime reads a text file with
// a fixed buffer: each read takes at most bufferSize - 1 characters and stops
// after a line end (CR LF and LF count as one character); a longer line is
// continued by the next read. Like a C string, a piece ends at a NUL byte.
class LogLineReader final
{
public:
    explicit LogLineReader(QByteArrayView bytes);

    // False at the end of the bytes or when bufferSize < 2 (a buffer that
    // holds no character reads nothing). The piece excludes the line end.
    bool readLine(qsizetype bufferSize, QByteArrayView &piece);
    bool atEnd() const { return m_position >= m_bytes.size(); }
    qsizetype position() const { return m_position; }

    // White space at both ends removed (ASCII white space: in the code page
    // and in UTF-8 no byte of a longer character is white space).
    static QByteArrayView trimmed(QByteArrayView text);

private:
    QByteArrayView m_bytes;
    qsizetype m_position = 0;
};
