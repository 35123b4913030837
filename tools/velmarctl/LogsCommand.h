#pragma once

#include "LogFilter.h"
#include "LogSearch.h"

#include <cstdio>
#include <QString>

class RegistryHives;
class LogRows;

// "velmarctl logs chat|system|user": the rows a log view lists for a period,
// read by the view's own reader classes, one row per line.
class LogsCommand
{
public:
    enum class Format { Tsv, Json };

    struct Options
    {
        LogSearch::Kind kind = LogSearch::Kind::Chat;
        LogFilter filter; // compared as a view compares after its search rule
        Format format = Format::Tsv;
    };

    // "chat", "system" or "user"; false for anything else.
    static bool parseKind(const QString &text, LogSearch::Kind &kind);
    // "YYYY-MM-DDTHH:MM:SS" or "YYYY-MM-DD HH:MM:SS"; invalid otherwise.
    static QDateTime parseDateTime(const QString &text);

    // The member names of the server database, or none when it cannot be
    // opened (the lists then show ids, as the views do before a load).
    static LogMemberNames memberNames(RegistryHives &hives, const QString &serverDir);

    // Prints every row of rows to out; returns the number of rows.
    static qint64 print(const LogRows &rows, Format format, FILE *out);
    // Appends a cell as the tsv output writes it: a backslash, tab, CR and LF
    // escaped, so that a cell never breaks the line format.
    static void appendTsvCell(QString &line, const QString &cell);

    static int run(const Options &options, RegistryHives &hives, const QString &serverDir);
};
