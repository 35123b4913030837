#include "SystemLogReader.h"

#include "LogHeaderExpression.h"
#include "LogLineReader.h"

void SystemLogReader::readLines(
    QByteArrayView bytes, const std::function<void(QByteArrayView)> &row)
{
    LogLineReader lines(bytes);
    QByteArrayView piece;
    while (lines.readLine(LineBufferSize, piece)) {
        const QByteArrayView line = LogLineReader::trimmed(piece);
        if (line.isEmpty() || line[0] == '#')
            continue;
        if (LogHeaderExpression::matches(line))
            row(line);
    }
}

SystemLogReader::Fields SystemLogReader::splitFields(QByteArrayView line)
{
    Fields fields;
    qsizetype from = 0;
    for (int k = 0; k < 3; ++k) {
        const qsizetype space = line.indexOf(' ', from);
        if (space < 0)
            break;
        fields.append(line.sliced(from, space - from));
        from = space + 1;
    }
    fields.append(line.sliced(from));
    return fields;
}
