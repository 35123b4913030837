#pragma once

#include "AccessCommand.h"
#include "EditCommand.h"
#include "ImportCommand.h"
#include "InviteCommand.h"
#include "LogsCommand.h"

#include <QString>
#include <QStringList>

// The command-line companion of the console: runs the console's own load
// and save sequences (CReadDBThread, ServerDataSaver) on a server folder and
// reports what they read, so that an installation or a data set can be
// checked without a display; and lists the daemons' logs as the log views do.
class CVelmarManagerDoc;
class SqlTrace;
class ServerDataSaver;

class VelmarCtl
{
public:
    enum ExitCode {
        Success = 0,
        LoadFailed = 1, // also: recover could not finish the pending save
        UsageError = 2,
        SavePending = 3, // an unfinished save must be recovered first
        SaveFailed = 4,
        ServiceFailed = 5, // a daemon did not start or stop
        NotifyFailed = 6, // the datagram could not be sent
        // edit: a line of the script was refused (nothing saved), or the
        // save refused the edited data (nothing written).
        EditRefused = 1,
        SaveRefused = 2,
        NotFound = 7, // access: no such member or folder
        // Another save held the folder past --wait, or saved since the load.
        Busy = 2,
    };

    struct Options
    {
        // "load", "resave", "recover", "edit", "logs", "access", "invite", "services" or
        // "notify"
        QString command;
        QString servicesAction; // services: "status", "start" or "stop"
        quint16 port = 0; // notify
        quint16 code = 0x0DAC; // notify
        QString serverDir; // empty: none was given or found
        QString serverDirReason; // which folder and why, or what to give when none
        bool verbose = false;
        QString registryDir; // empty: VELMAR_REGISTRY_DIR or the platform's folders
        QString sqlTrace; // empty: no trace
        bool timings = false; // resave: print the save's phases on standard error
        bool discard = false; // recover: drop the journal instead of finishing it
        LogsCommand::Options logs; // "logs" only
        AccessCommand::Options access; // "access" only
        ImportCommand::Options import; // "import" only
        InviteCommand::Options invite; // "invite" only
        // edit: the script file (empty: standard input), or the words of a
        // one-line form ("velmarctl member add alice ...").
        QString editFile;
        QStringList editWords;
        bool dryRun = false; // edit: print the journal, save nothing
        bool preview = false; // edit: print what the save would change, save nothing
        bool previewRows = false; // edit: the same with the rows
        bool json = false; // doctor: print JSON
        bool fix = false; // doctor: repair what has one safe repair, and save
        // How long a load or a save waits for another program's save.
        int waitSeconds = 60;
        // edit, resave: save even when another program saved since the load.
        bool force = false;
    };

    // Parses arguments (the program name first). Returns false with a message
    // on a usage error; helpText is set for --help.
    static bool parse(
        const QStringList &arguments, Options &options, QString &message, bool &helpShown);

    // The server folder, in ServerFolderChoice's order.
    static void resolveServerDir(const QString &option, Options &options);

    // Runs the command; prints JSON on standard output, messages on standard
    // error. Needs a running QCoreApplication.
    static int run(const Options &options);

private:
    // The phases of an edit, in nanoseconds.
    struct EditTimings
    {
        qint64 parseNs = 0;
        qint64 loadNs = 0;
        qint64 editNs = 0;
        qint64 saveNs = 0;
    };

    static int recover(const Options &options);
    static int doctor(const Options &options, SqlTrace *trace);
    // Applies the parsed script to the loaded document and saves it.
    static int edit(const Options &options, const QList<EditCommand> &commands,
        CVelmarManagerDoc &document, ServerDataSaver &saver, const QString &profilePath,
        EditTimings timings);
    // A one-line form: the words of one edit command on the command line,
    // with velmarctl's own options before or among them. Returns false when
    // the arguments are no such form.
    static bool splitOneLineForm(
        const QStringList &arguments, QStringList *ownArguments, QStringList *words);
};
