#pragma once

#include "LogsCommand.h"

#include <QString>
#include <QStringList>

// The command-line companion of the console: runs the console's own load
// and save sequences (CReadDBThread, ServerDataSaver) on a server folder and
// reports what they read, so that an installation or a data set can be
// checked without a display; and lists the daemons' logs as the log views do.
class VelmarCtl
{
public:
    enum ExitCode { Success = 0, LoadFailed = 1, UsageError = 2, SaveFailed = 3 };

    struct Options
    {
        QString command; // "load", "resave" or "logs"
        QString serverDir;
        QString registryDir; // empty: VELMAR_REGISTRY_DIR or the platform's folders
        QString sqlTrace; // empty: no trace
        LogsCommand::Options logs; // "logs" only
    };

    // Parses arguments (the program name first). Returns false with a message
    // on a usage error; helpText is set for --help.
    static bool parse(
        const QStringList &arguments, Options &options, QString &message, bool &helpShown);

    // The server folder: --server-dir, else VELMAR_SERVER_DIR, else the
    // folder of the executable.
    static QString resolveServerDir(const QString &option);

    // Runs the command; prints JSON on standard output, messages on standard
    // error. Needs a running QCoreApplication.
    static int run(const Options &options);
};
