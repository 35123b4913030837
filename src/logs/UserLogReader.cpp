#include "UserLogReader.h"

#include "LogFileNames.h"
#include "LogHeaderExpression.h"
#include "LogLineReader.h"

void UserLogReader::readRecords(
    QByteArrayView bytes, const std::function<void(const Record &)> &record)
{
    static constexpr QByteArrayView EndOfData(".END_OF_DATA");
    LogLineReader lines(bytes);
    QByteArrayView piece;
    Record current;
    while (lines.readLine(LineBufferSize, piece)) {
        const QByteArrayView line = LogLineReader::trimmed(piece);
        if (line.isEmpty() || line[0] == '#' || !LogHeaderExpression::matches(line))
            continue;
        current.header = line;
        current.data.clear();
        // The block is read with a buffer of DataLen bytes, whatever the text
        // says; a length without room for one character reads nothing and
        // leaves the lines to the loop above, which passes over them.
        const qint64 dataLen = LogFileNames::decimalPrefix(splitFields(line).value(DataLenField));
        if (dataLen >= 2) {
            const qsizetype buffer = qsizetype(std::min<qint64>(dataLen, bytes.size() + 2));
            while (lines.readLine(buffer, piece)) {
                const QByteArrayView text = LogLineReader::trimmed(piece);
                current.data.append(text);
                current.data.append("\r\n", 2);
                if (text == EndOfData)
                    break;
            }
        }
        record(current);
    }
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
