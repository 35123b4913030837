#pragma once

#include "LogMemberNames.h"
#include "LogText.h"

#include <optional>
#include <QString>
#include <QStringList>

// Reads the chat daemon's conversation files: the first three lines for the
// list row, the whole file for the detail pane.
class ChatLogReader
{
public:
    // The row cells of a file: date, time, participant names, summary, path
    // (fewer when the file ends early: each part is appended only when its
    // line was read). nullopt when the file cannot be opened for reading and
    // updating, as the daemon's files are opened.
    static std::optional<QStringList> readRow(
        const QString &path, const LogMemberNames &names, const CodePage &codePage);
    // The same from the first bytes of a file (at least its first three
    // lines, or the whole file when it is shorter).
    static QStringList rowFromBytes(QByteArray head, bool complete, const QString &path,
        const LogMemberNames &names, const LogTextDecoder &decoder);

    // Splits on delimiter: the search for the next delimiter starts one
    // character after the end of the one before, so a delimiter right after
    // another belongs to the next field; empty fields are dropped; a text
    // without any delimiter yields no fields.
    static QStringList splitHeader(const QString &line, const QString &delimiter);

    // "N|id|x|x|x|id|x|x|x...": the names of the known ids, each followed by
    // "; ". Empty when N < 1 or when any group is incomplete.
    static QString participantNames(const QString &field, const LogMemberNames &names);

    // The second line without its 20-byte time stamp (bytes of the code page),
    // as the summary begins.
    static QString withoutStampPrefix(const QString &trimmedLine, const CodePage &codePage);

    // The detail pane text: the whole file without its first line (up to and
    // including the first CR LF; all of it when there is none). nullopt when
    // the file cannot be opened: the pane then stays as it is.
    static std::optional<QString> detailText(const QString &path, const CodePage &codePage);
    static QString detailFromBytes(QByteArray bytes, const CodePage &codePage);

    static constexpr qsizetype LineBufferSize = 4096;
    static constexpr qsizetype StampPrefixBytes = 20;
};
