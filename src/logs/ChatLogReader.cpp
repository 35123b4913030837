#include "ChatLogReader.h"

#include "CBStringTokenizer.h"
#include "LogFileNames.h"
#include "LogLineReader.h"

#include <cstring>
#include <QFile>

using namespace Qt::StringLiterals;

std::optional<QStringList> ChatLogReader::readRow(
    const QString &path, const LogMemberNames &names, const CodePage &codePage)
{
    if (path.isEmpty())
        return std::nullopt;
    // The daemon's files are opened for reading and updating, so a file that
    // is read-only or locked against writing is left out of the list.
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered))
        return std::nullopt;
    // Three reads of at most 4095 characters, each CR LF counted as one.
    constexpr qsizetype wanted = 3 * (LineBufferSize + 1);
    QByteArray head(wanted, Qt::Uninitialized);
    qsizetype got = 0;
    while (got < wanted) {
        const qint64 n = file.read(head.data() + got, wanted - got);
        if (n <= 0)
            break;
        got += n;
    }
    const bool complete = got < wanted;
    head.truncate(got);
    file.close();
    const LogTextDecoder decoder(codePage);
    return rowFromBytes(std::move(head), complete, path, names, decoder);
}

QStringList ChatLogReader::rowFromBytes(QByteArray head, bool complete, const QString &path,
    const LogMemberNames &names, const LogTextDecoder &decoder)
{
    const LogTextEncoding encoding = LogText::prepare(head, complete);
    LogLineReader lines(head);
    QStringList cells;
    QByteArrayView piece;
    if (lines.readLine(LineBufferSize, piece)) {
        const QString header = decoder.decode(LogLineReader::trimmed(piece), encoding);
        const QStringList fields = splitHeader(header, u" "_s);
        cells << fields.value(0) << fields.value(1) << participantNames(fields.value(3), names);
    }
    QString summary;
    if (lines.readLine(LineBufferSize, piece)) {
        summary = withoutStampPrefix(
                      decoder.decode(LogLineReader::trimmed(piece), encoding), decoder.codePage())
            + u' ';
        if (lines.readLine(LineBufferSize, piece))
            summary += decoder.decode(LogLineReader::trimmed(piece), encoding);
    }
    cells << summary << path;
    return cells;
}

QStringList ChatLogReader::splitHeader(const QString &line, const QString &delimiter)
{
    QStringList fields;
    if (delimiter.isEmpty())
        return fields;
    qsizetype found = line.indexOf(delimiter);
    if (found < 0)
        return fields;
    const qsizetype width = delimiter.size();
    qsizetype fieldStart = 0;
    while (found >= 0) {
        const QString field = line.mid(fieldStart, found - fieldStart);
        if (!field.isEmpty())
            fields << field;
        fieldStart = found + width;
        found = line.indexOf(delimiter, fieldStart + 1);
    }
    const QString last = line.mid(fieldStart);
    if (!last.isEmpty())
        fields << last;
    return fields;
}

QString ChatLogReader::participantNames(const QString &field, const LogMemberNames &names)
{
    CBStringTokenizer tokens(field, u"|"_s);
    QString countText;
    if (!tokens.nextToken(countText))
        return {};
    const qint64 count = LogFileNames::decimalPrefix(QStringView(countText));
    QString result;
    for (qint64 i = 0; i < count; ++i) {
        QString id, unused;
        if (!tokens.nextToken(id) || !tokens.nextToken(unused) || !tokens.nextToken(unused)
            || !tokens.nextToken(unused))
            return {};
        const auto known = names.constFind(qint32(LogFileNames::decimalPrefix(QStringView(id))));
        if (known != names.constEnd())
            result += *known + u"; "_s;
    }
    return result;
}

QString ChatLogReader::withoutStampPrefix(const QString &trimmedLine, const CodePage &codePage)
{
    qsizetype bytes = 0;
    qsizetype pos = 0;
    while (pos < trimmedLine.size() && bytes < StampPrefixBytes) {
        const QChar c = trimmedLine.at(pos);
        if (c.unicode() < 0x80) {
            ++bytes;
            ++pos;
            continue;
        }
        qsizetype next = pos + 1;
        if (c.isHighSurrogate() && next < trimmedLine.size()
            && trimmedLine.at(next).isLowSurrogate())
            ++next;
        bytes += std::max<qsizetype>(
            1, codePage.byteLength(QStringView(trimmedLine).mid(pos, next - pos)));
        pos = next;
    }
    return trimmedLine.mid(pos);
}

std::optional<QString> ChatLogReader::detailText(const QString &path, const CodePage &codePage)
{
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    // Each 4096-byte chunk is appended as a C string: a NUL ends its chunk.
    QByteArray bytes;
    char chunk[LineBufferSize];
    for (;;) {
        const qint64 n = file.read(chunk, sizeof chunk);
        if (n <= 0)
            break;
        const void *nul = std::memchr(chunk, '\0', size_t(n));
        bytes.append(chunk, nul ? static_cast<const char *>(nul) - chunk : n);
    }
    return detailFromBytes(std::move(bytes), codePage);
}

QString ChatLogReader::detailFromBytes(QByteArray bytes, const CodePage &codePage)
{
    const LogTextEncoding encoding = LogText::prepare(bytes, true);
    const qsizetype lineEnd = bytes.indexOf("\r\n");
    const QByteArrayView rest
        = lineEnd < 0 ? QByteArrayView(bytes) : QByteArrayView(bytes).sliced(lineEnd + 2);
    return LogTextDecoder(codePage).decode(rest, encoding);
}
