#pragma once

#include <cstdio>
#include <QString>
#include <QStringList>

class CVelmarManagerDoc;
class RegistryHives;

// "velmarctl invite USERID...": the console's invitation mail to members
// picked by user ID, with the mail settings the console keeps, each
// overridable here. One line per recipient; --dry-run prints the filled
// messages (mbox format) and sends nothing.
class InviteCommand
{
public:
    enum ExitCode {
        Success = 0,
        UsageError = 2, // no sender, server or password to send with
        NotFound = 7, // a user ID no member has; nothing is sent
        Refused = 8, // a mail refused, or a member without a usable address
    };

    struct Options
    {
        QStringList userIds;
        QString memo;
        bool dryRun = false;
        QString smtp; // HOST[:PORT]; empty: the console's setting
        QString security; // none, starttls or tls; empty: the console's setting
        QString from; // empty: the console's setting
        QString user; // empty: the console's setting
        QString caFile;
    };

    // Reads the option texts into options; false with the reason.
    static bool check(const Options &options, QString *error);

    static int run(const Options &options, const CVelmarManagerDoc &document, RegistryHives &hives,
        const QString &serverDir, const QString &profilePath);
};
