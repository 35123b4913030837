#include "UserLogReader.h"

#include "LogFileNames.h"
#include "LogHeaderExpression.h"
#include "LogLineReader.h"

namespace {

constexpr QByteArrayView EndOfData(".END_OF_DATA");

// The block is read with a buffer of DataLen bytes, whatever the text says; a
// length without room for one character reads nothing and leaves the lines to
// the header loop, which passes over them.
qsizetype blockBuffer(QByteArrayView bytes, QByteArrayView header)
{
    const qint64 dataLen = LogFileNames::decimalPrefix(
        UserLogReader::splitFields(header).value(UserLogReader::DataLenField));
    return dataLen >= 2 ? qsizetype(std::min<qint64>(dataLen, bytes.size() + 2)) : 0;
}

} // namespace

void UserLogReader::readRecords(
    QByteArrayView bytes, const std::function<void(const Record &)> &record)
{
    LogLineReader lines(bytes);
    QByteArrayView piece;
    Record current;
    while (lines.readLine(LineBufferSize, piece)) {
        const QByteArrayView line = LogLineReader::trimmed(piece);
        if (line.isEmpty() || line[0] == '#' || !LogHeaderExpression::matches(line))
            continue;
        current.header = line;
        current.dataBegin = lines.position();
        if (const qsizetype buffer = blockBuffer(bytes, line)) {
            while (lines.readLine(buffer, piece)) {
                if (LogLineReader::trimmed(piece) == EndOfData)
                    break;
            }
        }
        current.dataEnd = lines.position();
        record(current);
    }
}

QByteArray UserLogReader::dataText(
    QByteArrayView bytes, QByteArrayView header, qsizetype dataBegin, qsizetype dataEnd)
{
    QByteArray text;
    const qsizetype buffer = blockBuffer(bytes, header);
    if (buffer == 0 || dataBegin >= dataEnd)
        return text;
    // The same reads from the same place give the same pieces: a read depends
    // only on where it starts and on where the bytes end.
    LogLineReader lines(bytes.sliced(dataBegin));
    QByteArrayView piece;
    while (lines.position() < dataEnd - dataBegin && lines.readLine(buffer, piece)) {
        text.append(LogLineReader::trimmed(piece));
        text.append("\r\n", 2);
    }
    return text;
}

UserLogReader::Fields UserLogReader::splitFields(QByteArrayView line)
{
    Fields fields;
    auto space = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    qsizetype i = 0;
    const qsizetype n = line.size();
    while (i < n) {
        while (i < n && space(line[i]))
            ++i;
        if (i >= n)
            break;
        const qsizetype start = i;
        while (i < n && !space(line[i]))
            ++i;
        fields.append(line.sliced(start, i - start));
    }
    return fields;
}

QList<QByteArrayView> UserLogReader::splitReceivers(QByteArrayView field)
{
    QList<QByteArrayView> ids;
    qsizetype from = 0;
    while (from <= field.size()) {
        qsizetype semicolon = field.indexOf(';', from);
        if (semicolon < 0)
            semicolon = field.size();
        if (semicolon > from)
            ids.append(field.sliced(from, semicolon - from));
        from = semicolon + 1;
    }
    return ids;
}
