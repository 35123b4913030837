#include "VelmarCtl.h"

#include "AccessCommand.h"
#include "BuildInfo.h"
#include "ConnectionStringMask.h"
#include "ConsoleMessageService.h"
#include "ConsoleOutput.h"
#include "CReadDBThread.h"
#include "CVelmarManagerDoc.h"
#include "DamagedConfigLines.h"
#include "DataDoctor.h"
#include "DbConnection.h"
#include "DbSession.h"
#include "EditCommandParser.h"
#include "EditScript.h"
#include "EditScriptApplier.h"
#include "PositionList.h"
#include "ProfileFile.h"
#include "RegistryHives.h"
#include "SaveRecovery.h"
#include "ServerDataCounts.h"
#include "ServerDataLoader.h"
#include "ServerDataSaver.h"
#include "ServerDataSet.h"
#include "ServerFolder.h"
#include "ServerFolderChoice.h"
#include "ServiceCommand.h"
#include "SqlTrace.h"

#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

// VELMAR_SAVE_STOP_AT makes a save or a recovery stop its own process
// (SIGSTOP) at one point, so that a test can kill it there with SIGKILL:
// "statement:N" before the statement with index N, "profile" after the
// version is written, "notify" before the notifications, "remove" after them,
// before the journal is removed; "loaded" stops velmarctl itself once the data
// is read, before an edit is applied (another program may save meanwhile).
SaveJournalRunner::Checkpoint stopPointFromEnvironment()
{
    const QString stopAt = qEnvironmentVariable("VELMAR_SAVE_STOP_AT");
    if (stopAt.isEmpty())
        return {};
    return [stopAt](SaveJournalRunner::Point point, qsizetype index) {
        bool stop = false;
        switch (point) {
        case SaveJournalRunner::Point::BeforeStatement:
            stop = stopAt == u"statement:%1"_s.arg(index);
            break;
        case SaveJournalRunner::Point::AfterProfileWrite:
            stop = stopAt == u"profile"_s;
            break;
        case SaveJournalRunner::Point::BeforeNotify:
            stop = stopAt == u"notify"_s;
            break;
        case SaveJournalRunner::Point::AfterNotify:
            stop = stopAt == u"remove"_s;
            break;
        }
        if (stop) {
#ifdef Q_OS_UNIX
            ::raise(SIGSTOP);
#endif
        }
    };
}

// Waits up to --wait seconds for another program's save on the folder,
// saying once on standard error what it waits for.
ServerFolderLock::Wait lockWait(const VelmarCtl::Options &options)
{
    auto told = std::make_shared<bool>(false);
    const ServerFolderLock::Wait sleep
        = ServerFolderLock::waitUpTo(qint64(options.waitSeconds) * 1000);
    return [told, sleep, options](qint64 waitedMs) {
        if (!*told) {
            *told = true;
            printTo(stderr,
                u"velmarctl: waiting for another save on %1 (up to %2 s)\n"_s.arg(
                    options.serverDir, QString::number(options.waitSeconds)));
        }
        return sleep(waitedMs);
    };
}

void printBusy(const VelmarCtl::Options &options)
{
    printTo(stderr,
        u"velmarctl: another save on %1 was still running after %2 s; nothing was done.\n"_s.arg(
            options.serverDir, QString::number(options.waitSeconds)));
}

// Nothing reads a database that a cut-short save may have left half
// written: the exit code when a save is pending or another one holds the
// folder past --wait.
std::optional<int> refuseOverPendingSave(DbSession &session, MessageService &messages,
    const QString &profilePath, const VelmarCtl::Options &options)
{
    SaveRecovery recovery(session, messages, profilePath);
    recovery.setLockWait(lockWait(options));
    const SaveRecovery::State state = recovery.inspect();
    if (recovery.gaveUpWaiting()) {
        printBusy(options);
        return int(VelmarCtl::Busy);
    }
    if (state != SaveRecovery::State::None) {
        printTo(stderr,
            u"velmarctl: an unfinished save is pending in %1 (%2); the database may be "
            "half written. Run 'velmarctl recover --server-dir %1' first.\n"_s.arg(
                options.serverDir, recovery.journalPath()));
        return int(VelmarCtl::SavePending);
    }
    return std::nullopt;
}

// Sets up a save as velmarctl runs it.
void prepareSaver(ServerDataSaver &saver, const VelmarCtl::Options &options)
{
    saver.setCheckpoint(stopPointFromEnvironment());
    saver.setLockWait(lockWait(options));
    // One save per process: nothing compares against what it wrote.
    saver.setRememberOrigin(false);
    saver.setConflictPolicy(options.force ? ServerDataSaver::ConflictPolicy::Overwrite
                                          : ServerDataSaver::ConflictPolicy::Refuse);
}

// The save's refusals that are velmarctl's to explain; -1 for the others.
int reportSaveRefusal(const ServerDataSaver::Result &result, const VelmarCtl::Options &options)
{
    if (result.outcome == ServerDataSaver::Outcome::Busy) {
        printBusy(options);
        return VelmarCtl::Busy;
    }
    if (result.outcome == ServerDataSaver::Outcome::ConcurrentChange) {
        printTo(stderr,
            u"velmarctl: another program saved %1 since it was read; nothing was saved.\n%2\n"
            "Run the edit again on the data as it is now, or add --force to save over it.\n"_s.arg(
                options.serverDir,
                ChangeGuard::describe(result.changes).replace(u"\r\n"_s, u"\n"_s)));
        return VelmarCtl::Busy;
    }
    return -1;
}

// The server folder a command works on, with its registry hives. The
// database settings go through the console's start-up step, so that both
// open the same database.
struct Folder
{
    explicit Folder(const VelmarCtl::Options &options)
        : folder(options.serverDir, options.registryDir)
        , hives(folder.openHives())
        , profilePath(folder.profilePath())
        , databasePath(folder.accessDatabasePath())
    { }

    void prepareDatabaseSettings() const { folder.prepareDatabaseSettings(*hives); }

    ServerFolder folder;
    std::unique_ptr<RegistryHives> hives;
    QString profilePath;
    QString databasePath;
};

QString milliseconds(qint64 ns)
{
    return QString::number(double(ns) / 1e6, 'f', 1);
}

// Reads and parses the script of an edit (its file, standard input, or the
// words of a one-line form). False with the refusal printed.
bool readEditScript(const VelmarCtl::Options &options, QList<EditCommand> *commands)
{
    if (!options.editWords.isEmpty()) {
        EditCommandParser::Result parsed = EditCommandParser::parse(options.editWords, 1);
        if (!parsed.command) {
            printTo(stderr, u"line 1: %1\n"_s.arg(parsed.error));
            return false;
        }
        commands->append(std::move(*parsed.command));
        return true;
    }
    QFile file;
    const bool opened = options.editFile.isEmpty()
        ? file.open(stdin, QIODevice::ReadOnly)
        : (file.setFileName(options.editFile), file.open(QIODevice::ReadOnly));
    if (!opened) {
        printTo(
            stderr, u"velmarctl: cannot read %1: %2\n"_s.arg(options.editFile, file.errorString()));
        return false;
    }
    EditScript::Result parsed = EditScript::parse(file);
    if (!parsed.ok()) {
        printTo(stderr, parsed.error + u'\n');
        return false;
    }
    *commands = std::move(parsed.commands);
    return true;
}

} // namespace

bool VelmarCtl::splitOneLineForm(
    const QStringList &arguments, QStringList *ownArguments, QStringList *words)
{
    // velmarctl's own options; any other word after the command word is the
    // command's, and the word after a member text option is its value
    // whatever it looks like (as in a script).
    static const QStringList withValue
        = { u"--server-dir"_s, u"--registry-dir"_s, u"--sql-trace"_s, u"--wait"_s };
    static const QStringList flags = { u"--dry-run"_s, u"--timings"_s, u"--verbose"_s, u"--force"_s,
        u"--preview"_s, u"--preview-rows"_s };
    const auto isOwn = [](const QString &word) {
        return flags.contains(word)
            || std::any_of(withValue.cbegin(), withValue.cend(),
                [&word](const QString &option) { return word.startsWith(option + u'='); });
    };

    ownArguments->clear();
    words->clear();
    ownArguments->append(arguments.value(0));
    qsizetype i = 1;
    bool inCommand = false;
    bool valueNext = false;
    for (; i < arguments.size(); ++i) {
        const QString &word = arguments.at(i);
        if (!valueNext && withValue.contains(word) && i + 1 < arguments.size()) {
            ownArguments->append({ word, arguments.at(++i) });
            continue;
        }
        if (!valueNext && isOwn(word)) {
            ownArguments->append(word);
            continue;
        }
        if (!inCommand) {
            if (!EditCommandParser::isCommandWord(word))
                return false;
            inCommand = true;
        }
        words->append(word);
        valueNext = !valueNext && EditCommandParser::takesValue(word);
    }
    return inCommand;
}

bool VelmarCtl::parse(
    const QStringList &arguments, Options &options, QString &message, bool &helpShown)
{
    helpShown = false;
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Runs the console's own sequences on a server folder, from a shell.\n\n"
        "  load     read every data set and print the counts as JSON\n"
        "  resave   read every data set, save it back unchanged (with the version bump\n"
        "           and the server notifications) and print the counts and the version\n"
        "  recover  finish a save that was cut short (its journal beside Serverinfo.ini);\n"
        "           load and resave refuse (exit 3) while one is pending\n"
        "  edit [FILE|-]\n"
        "           apply an edit script (FILE, or standard input for - or none) to the\n"
        "           loaded data, one command per line, then save as the console saves;\n"
        "           the first refused line ends it with 'line N: ' and the reason (exit 1,\n"
        "           nothing saved); a refused save, another save still running after\n"
        "           --wait, or another save since the load (without --force) exits 2;\n"
        "           --preview prints what the save would change. Each edit command is also\n"
        "           a command of its own:\n"
        "           velmarctl member add alice --password x\n"
        "  import SOURCE [--table T] [--map FIELD=COLUMN]... [--skip-refused]\n"
        "           add the rows of csv:FILE, sqlite:FILE, odbc:CONNECTION-STRING or an\n"
        "           ldap:// URL as members, with the checks of the console's import, and\n"
        "           save as edit saves; a refused row prints 'row N: ' and the reason and\n"
        "           ends it (exit 1, the rows before it saved) unless --skip-refused\n"
        "  doctor [--json] [--fix]\n"
        "           list what is wrong with the database (ids used twice, partition flags,\n"
        "           rows pointing at nothing, levels, ...) with counts and examples\n"
        "  logs chat|system|user --from DATETIME --to DATETIME\n"
        "           print the rows the log view lists for that period, one per line\n"
        "           (DATETIME: YYYY-MM-DDTHH:MM:SS or 'YYYY-MM-DD HH:MM:SS')\n"
        "  access member USERID | access folder PATH\n"
        "           print the rights that reach a member (folder, right, origin) or the\n"
        "           members a folder's rights reach (user ID, name, right, origin), as\n"
        "           the file box's access overview shows them\n"
        "  services status|start|stop\n"
        "           print each daemon's state, or start or stop the server's daemons in\n"
        "           the console's orders and print each step\n"
        "  invite USERID... [--memo TEXT] [--dry-run]\n"
        "           send the invitation mail (Template.html of the server folder) to the\n"
        "           members, with the console's mail settings or --smtp, --security,\n"
        "           --from, --user and --ca-file; the SMTP password is VELMAR_SMTP_PASSWORD\n"
        "           or the keyring's; one line per member, exit 8 when any was refused;\n"
        "           --dry-run prints the messages (mbox) and sends nothing\n"
        "  notify PORT [--code N]\n"
        "           send the 32-byte change notification to 127.0.0.1:PORT"_s);
    parser.addPositionalArgument(u"command"_s,
        u"load, resave, recover, edit [FILE], an edit command, logs, access, invite, "
        "services status|start|stop or notify PORT"_s);
    const QCommandLineOption serverDir(
        u"server-dir"_s, u"The server folder (Serverinfo.ini, VelmarDB.mdb)."_s, u"dir"_s);
    const QCommandLineOption registryDir(
        u"registry-dir"_s, u"The folder of the registry hive files."_s, u"dir"_s);
    const QCommandLineOption sqlTrace(
        u"sql-trace"_s, u"Write every statement executed to this file."_s, u"file"_s);
    const QCommandLineOption timings(u"timings"_s,
        u"resave: print the save's phases (journal, statements) on standard error; edit: the "
        "phases load, parse, edits and save."_s);
    const QCommandLineOption dryRun(u"dry-run"_s,
        u"edit: apply the script, print the journal and save nothing; invite: print the "
        "messages and send nothing."_s);
    const QCommandLineOption wait(u"wait"_s,
        u"How long to wait for another program's save on the folder before giving up with "
        "exit 2 (default 60)."_s,
        u"seconds"_s, u"60"_s);
    const QCommandLineOption force(u"force"_s,
        u"edit, resave: save even when another program saved since the data was read "
        "(otherwise exit 2, nothing saved)."_s);
    const QCommandLineOption preview(u"preview"_s,
        u"edit: apply the script and print, per table, how many rows the save would add (+), "
        "remove (-) and change (~) against the database as it is now; save nothing."_s);
    const QCommandLineOption previewRows(
        u"preview-rows"_s, u"edit: the same, with the rows themselves."_s);
    const QCommandLineOption json(u"json"_s, u"doctor: print the findings as JSON."_s);
    const QCommandLineOption fix(u"fix"_s,
        u"doctor: repair what has one safe repair (see the README), save as edit saves, and "
        "print the findings before and after."_s);
    const QCommandLineOption discard(
        u"discard"_s, u"recover: drop the pending save's journal instead of finishing it."_s);
    const QCommandLineOption from(u"from"_s,
        u"logs: the start of the period (inclusive); invite: the sender's address."_s,
        u"datetime"_s);
    const QCommandLineOption memo(u"memo"_s, u"invite: the memo of the mail."_s, u"text"_s);
    const QCommandLineOption smtp(
        u"smtp"_s, u"invite: the SMTP server, HOST or HOST:PORT."_s, u"host"_s);
    const QCommandLineOption security(
        u"security"_s, u"invite: none, starttls or tls (implicit TLS)."_s, u"kind"_s);
    const QCommandLineOption smtpUser(
        u"user"_s, u"invite: the SMTP login's user name."_s, u"name"_s);
    const QCommandLineOption caFile(u"ca-file"_s,
        u"invite: trust the certificates of this file for the SMTP server."_s, u"file"_s);
    const QCommandLineOption to(
        u"to"_s, u"logs: the end of the period (inclusive)."_s, u"datetime"_s);
    const QCommandLineOption oldestFirst(
        u"oldest-first"_s, u"logs: keep the reading order instead of newest first."_s);
    const QCommandLineOption format(
        u"format"_s, u"logs, access: tsv (default) or json (one array per line)."_s, u"format"_s);
    const QCommandLineOption verbose(
        u"verbose"_s, u"Say on standard error which server folder is used and why."_s);
    const QCommandLineOption code(
        u"code"_s, u"notify: the code at bytes 18-19 (default 0x0DAC)."_s, u"n"_s);
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOptions({ serverDir, registryDir, sqlTrace, timings, dryRun, discard, from, to,
        oldestFirst, format, code, verbose, wait, force, preview, previewRows, json, fix, memo,
        smtp, security, smtpUser, caFile });
    ImportCommand::addOptions(parser);
    QStringList ownArguments;
    QStringList editWords;
    const bool oneLine = splitOneLineForm(arguments, &ownArguments, &editWords);
    if (!parser.parse(oneLine ? ownArguments : arguments)) {
        message = parser.errorText();
        return false;
    }
    options.verbose = parser.isSet(verbose);
    if (parser.isSet(help)) {
        message = parser.helpText();
        helpShown = true;
        return false;
    }
    if (parser.isSet(version)) {
        message = BuildInfo::versionLine(u"velmarctl"_s);
        helpShown = true;
        return false;
    }
    const QStringList positional = parser.positionalArguments();
    bool waitOk = false;
    options.waitSeconds = parser.value(wait).toInt(&waitOk);
    if (!waitOk || options.waitSeconds < 0) {
        message = u"--wait needs a number of seconds (0 or more)"_s;
        return false;
    }
    options.force = parser.isSet(force);
    if (oneLine || positional.value(0) == u"edit"_s) {
        if (oneLine ? !positional.isEmpty() : positional.size() > 2) {
            message = u"expected edit [FILE] or one edit command\n\n"_s + parser.helpText();
            return false;
        }
        options.command = u"edit"_s;
        options.editWords = editWords;
        options.editFile = oneLine ? QString() : positional.value(1);
        // "-" is standard input, as for every Unix tool.
        if (options.editFile == u"-"_s)
            options.editFile.clear();
        options.dryRun = parser.isSet(dryRun);
        options.preview = parser.isSet(preview) || parser.isSet(previewRows);
        options.previewRows = parser.isSet(previewRows);
        resolveServerDir(parser.value(serverDir), options);
        options.registryDir = parser.value(registryDir);
        options.sqlTrace = parser.value(sqlTrace);
        options.timings = parser.isSet(timings);
        return true;
    }
    if (positional.value(0) == u"import"_s) {
        if (!ImportCommand::readOptions(parser, positional, &options.import, &message))
            return false;
        options.command = u"import"_s;
        options.dryRun = parser.isSet(dryRun);
        options.preview = parser.isSet(preview) || parser.isSet(previewRows);
        options.previewRows = parser.isSet(previewRows);
        resolveServerDir(parser.value(serverDir), options);
        options.registryDir = parser.value(registryDir);
        options.sqlTrace = parser.value(sqlTrace);
        options.timings = parser.isSet(timings);
        return true;
    }
    static const QStringList actions = { u"status"_s, u"start"_s, u"stop"_s };
    if (!positional.isEmpty() && positional.first() == u"services"_s) {
        if (positional.size() != 2 || !actions.contains(positional.at(1))) {
            message = u"expected services status, start or stop\n\n"_s + parser.helpText();
            return false;
        }
        options.command = positional.first();
        options.servicesAction = positional.at(1);
        resolveServerDir(parser.value(serverDir), options);
        return true;
    }
    if (!positional.isEmpty() && positional.first() == u"notify"_s) {
        if (positional.size() != 2
            || !ServiceCommand::parseNumber(positional.at(1), options.port, 1)) {
            message = u"expected notify PORT (1-65535)\n\n"_s + parser.helpText();
            return false;
        }
        if (parser.isSet(code)
            && !ServiceCommand::parseNumber(parser.value(code), options.code, 0)) {
            message = u"--code needs a number from 0 to 0xFFFF"_s;
            return false;
        }
        options.command = positional.first();
        return true;
    }
    static const QStringList commands { u"load"_s, u"resave"_s, u"recover"_s, u"doctor"_s };
    const auto readFormat = [&](auto &target, auto tsv, auto json) {
        const QString formatText = parser.value(format);
        if (formatText.isEmpty() || formatText == u"tsv"_s) {
            target = tsv;
        } else if (formatText == u"json"_s) {
            target = json;
        } else {
            message = u"--format is tsv or json"_s;
            return false;
        }
        return true;
    };
    if (positional.value(0) == u"invite"_s) {
        options.invite.userIds = positional.mid(1);
        options.invite.memo = parser.value(memo);
        options.invite.dryRun = parser.isSet(dryRun);
        options.invite.smtp = parser.value(smtp);
        options.invite.security = parser.value(security);
        options.invite.from = parser.value(from);
        options.invite.user = parser.value(smtpUser);
        options.invite.caFile = parser.value(caFile);
        if (!InviteCommand::check(options.invite, &message))
            return false;
    } else if (positional.value(0) == u"access"_s) {
        if (positional.size() != 3
            || (positional.at(1) != u"member"_s && positional.at(1) != u"folder"_s)) {
            message = u"expected access member USERID or access folder PATH"_s;
            return false;
        }
        options.access.folder = positional.at(1) == u"folder"_s;
        options.access.subject = positional.at(2);
        if (!readFormat(
                options.access.format, AccessCommand::Format::Tsv, AccessCommand::Format::Json))
            return false;
    } else if (positional.value(0) == u"logs"_s) {
        if (positional.size() != 2
            || !LogsCommand::parseKind(positional.at(1), options.logs.kind)) {
            message = u"expected logs chat, logs system or logs user"_s;
            return false;
        }
        options.logs.filter.start = LogsCommand::parseDateTime(parser.value(from));
        options.logs.filter.end = LogsCommand::parseDateTime(parser.value(to));
        if (!options.logs.filter.start.isValid() || !options.logs.filter.end.isValid()) {
            message = u"--from and --to need a date and time, YYYY-MM-DDTHH:MM:SS"_s;
            return false;
        }
        options.logs.filter.newestFirst = !parser.isSet(oldestFirst);
        if (!readFormat(options.logs.format, LogsCommand::Format::Tsv, LogsCommand::Format::Json))
            return false;
    } else if (positional.size() != 1 || !commands.contains(positional.first())) {
        message
            = u"expected one command: load, resave, recover, doctor, edit, an edit command, logs, "
              "access, invite, services or notify\n\n"_s
            + parser.helpText();
        return false;
    }
    options.command = positional.first();
    resolveServerDir(parser.value(serverDir), options);
    options.registryDir = parser.value(registryDir);
    options.sqlTrace = parser.value(sqlTrace);
    options.timings = parser.isSet(timings);
    options.discard = parser.isSet(discard);
    options.json = parser.isSet(json);
    options.fix = parser.isSet(fix);
    return true;
}

void VelmarCtl::resolveServerDir(const QString &option, Options &options)
{
    const ServerFolderChoice::Choice choice
        = ServerFolderChoice::choose(option, QCoreApplication::applicationDirPath(),
            qEnvironmentVariable("VELMAR_SERVER_DIR"), ServerFolderChoice::remembered());
    options.serverDir = choice.directory;
    options.serverDirReason = ServerFolderChoice::describe(choice);
}

int VelmarCtl::run(const Options &options)
{
    if (options.command == u"notify"_s)
        return ServiceCommand::runNotify(options.port, options.code);
    if (options.command == u"services"_s) {
        // The daemons' states need no server folder; starting one that is
        // not registered yet looks for it beside this program, as it always has.
        const QString folder = options.serverDir.isEmpty() ? QCoreApplication::applicationDirPath()
                                                           : options.serverDir;
        if (options.verbose)
            printTo(stderr, u"velmarctl: server folder %1\n"_s.arg(folder));
        return ServiceCommand::runServices(options.servicesAction, folder);
    }
    if (options.serverDir.isEmpty()) {
        printTo(stderr, u"velmarctl: "_s + options.serverDirReason + u'\n');
        return UsageError;
    }
    if (options.verbose)
        printTo(stderr, u"velmarctl: "_s + options.serverDirReason + u'\n');

    // A script is read whole before anything is loaded: a refused line costs
    // no load.
    QElapsedTimer clock;
    clock.start();
    QList<EditCommand> commands;
    EditTimings timings;
    if (options.command == u"edit"_s) {
        if (!readEditScript(options, &commands))
            return EditRefused;
        timings.parseNs = clock.nsecsElapsed();
    }
    ImportCommand::Prepared imported;
    if (options.command == u"import"_s) {
        QString why;
        if (!ImportCommand::prepare(options.import, &imported, &why)) {
            printTo(stderr, u"velmarctl: "_s + why + u'\n');
            return LoadFailed;
        }
        timings.parseNs = clock.nsecsElapsed();
    }

    const Folder folder(options);
    RegistryHives *hives = folder.hives.get();
    if (options.verbose) {
        // Read without them; neither file is written while they are there.
        for (const QString &line : DamagedConfigLines::of(*hives, folder.profilePath))
            printTo(stderr, u"velmarctl: skipped a damaged line: %1\n"_s.arg(line));
    }
    if (options.command == u"logs"_s)
        return LogsCommand::run(options.logs, *hives, options.serverDir);
    folder.prepareDatabaseSettings();
    const QString &profilePath = folder.profilePath;
    const QString &databasePath = folder.databasePath;

    std::unique_ptr<SqlTrace> trace;
    if (!options.sqlTrace.isEmpty()) {
        trace = std::make_unique<SqlTrace>(options.sqlTrace);
        if (!trace->isOpen()) {
            printTo(stderr,
                u"velmarctl: cannot write %1: %2\n"_s.arg(options.sqlTrace, trace->errorString()));
            return UsageError;
        }
    }

    if (options.command == u"recover"_s)
        return recover(options);
    if (options.command == u"doctor"_s)
        return doctor(options, trace.get());

    ConsoleMessageService messages;
    // The document is left to the end of the process: freeing 100,000
    // members and 200,000 memberships one by one would only keep the
    // administrator waiting. Sanitizer builds free it, so that the leak
    // check looks at everything it holds.
    auto *document = new CVelmarManagerDoc;
#if defined(__SANITIZE_ADDRESS__)
    const std::unique_ptr<CVelmarManagerDoc> freed(document);
#endif
    CVelmarManagerDoc &data = *document;
    clock.restart();

    {
        DbSession session(*hives, profilePath, databasePath, messages);
        if (const auto code = refuseOverPendingSave(session, messages, profilePath, options))
            return *code;
    }

    // The console's loading worker, as the main window runs it.
    int loadResult = 0;
    ServerDataLoader::Outcome loadOutcome = ServerDataLoader::Outcome::Ok;
    {
        QEventLoop loop;
        CReadDBThread reader(*hives, profilePath, databasePath, messages, data, trace.get());
        reader.setLockWait(lockWait(options));
        QObject::connect(&reader, &CReadDBThread::workerExited, &loop, [&](int result) {
            loadResult = result;
            loop.quit();
        });
        reader.start();
        loop.exec();
        const ServerDataLoader::Result result = reader.loadResult();
        loadOutcome = result.outcome;
        if (result.outcome == ServerDataLoader::Outcome::ReadFailed) {
            printTo(stderr,
                u"velmarctl: reading %1 failed: %2\n"_s.arg(
                    ServerDataLoader::stepName(result.failedStep),
                    result.error.formatted().replace(u"\r\n"_s, u"\n"_s)));
        }
    }
    if (loadResult != 1)
        return loadOutcome == ServerDataLoader::Outcome::Busy ? (printBusy(options), Busy)
                                                              : LoadFailed;
    timings.loadNs = clock.nsecsElapsed();
#ifdef Q_OS_UNIX
    if (qEnvironmentVariable("VELMAR_SAVE_STOP_AT") == u"loaded"_s)
        ::raise(SIGSTOP);
#endif

    if (options.command == u"edit"_s) {
        DbSession session(*hives, profilePath, databasePath, messages, trace.get());
        ServerDataSaver saver(data, session, messages, profilePath, *hives, options.serverDir);
        prepareSaver(saver, options);
        return edit(options, commands, data, saver, profilePath, timings);
    }

    if (options.command == u"import"_s) {
        bool stopped = false;
        const int added
            = ImportCommand::apply(options.import, imported, data, stdout, stderr, &stopped);
        if (added == 0) {
            printTo(stdout, u"no member added, nothing saved\n"_s);
            return stopped ? EditRefused : Success;
        }
        DbSession session(*hives, profilePath, databasePath, messages, trace.get());
        ServerDataSaver saver(data, session, messages, profilePath, *hives, options.serverDir);
        prepareSaver(saver, options);
        const int code = edit(options, {}, data, saver, profilePath, timings);
        return code == Success && stopped ? EditRefused : code;
    }
    if (options.command == u"access"_s) {
        QString error;
        if (!AccessCommand::run(options.access, data, stdout, &error)) {
            printTo(stderr, u"velmarctl: "_s + error + u'\n');
            return NotFound;
        }
        return Success;
    }

    if (options.command == u"invite"_s)
        return InviteCommand::run(options.invite, data, *hives, options.serverDir, profilePath);

    QJsonObject report = ServerDataCounts::of(data);
    if (options.command == u"resave"_s) {
        DbSession session(*hives, profilePath, databasePath, messages, trace.get());
        ServerDataSaver saver(data, session, messages, profilePath, *hives, options.serverDir);
        prepareSaver(saver, options);
        const ServerDataSaver::Result result = saver.save(true);
        if (!result.ok()) {
            if (const int code = reportSaveRefusal(result, options); code >= 0)
                return code;
            if (result.outcome == ServerDataSaver::Outcome::DatabaseError)
                printTo(stderr,
                    u"velmarctl: the save failed: %1\n"_s.arg(
                        result.error.formatted().replace(u"\r\n"_s, u"\n"_s)));
            return SaveFailed;
        }
        if (options.timings) {
            auto ms = [](qint64 ns) { return QString::number(double(ns) / 1e6, 'f', 1); };
            printTo(stderr,
                u"journal: %1 ms (building %2 ms, writing %3 ms) for %4 statements\n"
                "statements and notices: %5 ms (reading them back from the journal %6 ms)\n"_s.arg(
                    ms(result.journalNs + result.journalWriteNs), ms(result.journalNs),
                    ms(result.journalWriteNs), QString::number(result.statements), ms(result.runNs),
                    ms(result.journalDecodeNs)));
            printTo(stderr, u"concurrent-change check: %1 ms\n"_s.arg(ms(result.guardNs)));
        }
        report = ServerDataCounts::of(data);
        report.insert(u"version"_s, result.version);
    }
    printTo(stdout, QString::fromUtf8(QJsonDocument(report).toJson(QJsonDocument::Indented)));
    return Success;
}

int VelmarCtl::edit(const Options &options, const QList<EditCommand> &commands,
    CVelmarManagerDoc &document, ServerDataSaver &saver, const QString &profilePath,
    EditTimings timings)
{
    const auto printTimings = [&] {
        if (!options.timings)
            return;
        printTo(stderr,
            u"load: %1 ms\nparse: %2 ms (%3 commands)\nedits: %4 ms\nsave: %5 ms\n"_s.arg(
                milliseconds(timings.loadNs), milliseconds(timings.parseNs),
                QString::number(commands.size()), milliseconds(timings.editNs),
                milliseconds(timings.saveNs)));
    };

    // The console writes a new default position at once; a batch writes it
    // only once everything it holds has been saved.
    std::optional<qint32> defaultPosition;
    document.setDefaultPositionWriter([&defaultPosition](qint32 positionId) {
        defaultPosition = positionId;
        return true;
    });

    QElapsedTimer clock;
    clock.start();
    EditScriptApplier applier(document, [](const QString &line) { printTo(stdout, line + u'\n'); });
    for (const EditCommand &command : commands) {
        const QString refusal = applier.apply(command);
        if (!refusal.isEmpty()) {
            printTo(stderr, u"line %1: %2\n"_s.arg(command.line).arg(refusal));
            return EditRefused;
        }
    }
    timings.editNs = clock.nsecsElapsed();

    const QStringList journal = document.journal();
    if (options.preview) {
        const ServerDataSaver::Preview preview = saver.preview();
        if (preview.busy) {
            printBusy(options);
            return Busy;
        }
        if (!preview.problems.isEmpty()) {
            printTo(stderr,
                SavePreflight::refusalText(preview.problems).replace(u"\r\n"_s, u"\n"_s) + u'\n');
            return SaveRefused;
        }
        if (!preview.ok) {
            printTo(stderr,
                u"velmarctl: reading the database failed: %1\n"_s.arg(
                    preview.error.formatted().replace(u"\r\n"_s, u"\n"_s)));
            return LoadFailed;
        }
        printTo(stdout,
            SavePreview::describe(preview.tables, options.previewRows)
                + u"\n(preview, nothing saved)\n"_s);
        if (options.timings)
            printTo(stderr, u"preview: %1 ms\n"_s.arg(milliseconds(preview.ns)));
        return Success;
    }
    if (options.dryRun) {
        printTo(stdout,
            journal.join(u'\n') + (journal.isEmpty() ? u""_s : u"\n"_s)
                + u"%1 steps (dry run, nothing saved)\n"_s.arg(journal.size()));
        printTimings();
        return Success;
    }

    clock.restart();
    const ServerDataSaver::Result result = saver.save(true);
    timings.saveNs = clock.nsecsElapsed();
    if (!result.ok()) {
        if (const int code = reportSaveRefusal(result, options); code >= 0)
            return code;
        // The saver has shown its designed message on standard error.
        if (result.outcome != ServerDataSaver::Outcome::DatabaseError)
            return SaveRefused;
        printTo(stderr,
            u"velmarctl: the save failed: %1\n"_s.arg(
                result.error.formatted().replace(u"\r\n"_s, u"\n"_s)));
        return SaveFailed;
    }
    if (defaultPosition) {
        ProfileFile profile(profilePath);
        if (!PositionList::writeDefaultPositionId(profile, *defaultPosition)) {
            printTo(stderr,
                u"velmarctl: the data was saved, but DefaultPositionID could not be written to "
                "%1\n"_s.arg(profilePath));
            return SaveFailed;
        }
    }
    printTo(stdout, u"%1 steps saved (version %2)\n"_s.arg(journal.size()).arg(result.version));
    printTimings();
    return Success;
}

int VelmarCtl::recover(const Options &options)
{
    const Folder folder(options);
    const QString &profilePath = folder.profilePath;
    std::unique_ptr<SqlTrace> trace;
    if (!options.sqlTrace.isEmpty())
        trace = std::make_unique<SqlTrace>(options.sqlTrace);
    ConsoleMessageService messages;
    DbSession session(*folder.hives, profilePath, folder.databasePath, messages, trace.get());
    SaveRecovery recovery(session, messages, profilePath);
    recovery.setCheckpoint(stopPointFromEnvironment());
    recovery.setLockWait(lockWait(options));

    const SaveRecovery::State state = recovery.inspect();
    if (recovery.gaveUpWaiting()) {
        printBusy(options);
        return Busy;
    }
    if (state == SaveRecovery::State::None) {
        printTo(stdout, u"nothing to recover\n"_s);
        return Success;
    }
    if (options.discard) {
        QString why;
        if (!recovery.discard(&why)) {
            printTo(
                stderr, u"velmarctl: cannot remove %1: %2\n"_s.arg(recovery.journalPath(), why));
            return LoadFailed;
        }
        printTo(
            stdout, u"discarded the unfinished save's journal %1\n"_s.arg(recovery.journalPath()));
        return Success;
    }
    if (state == SaveRecovery::State::Corrupt) {
        printTo(stderr,
            u"velmarctl: the save journal %1 cannot be used: %2\n"
            "Nothing was replayed. 'velmarctl recover --discard' drops it.\n"_s.arg(
                recovery.journalPath(), recovery.problem()));
        return LoadFailed;
    }
    if (state == SaveRecovery::State::OtherDatabase) {
        printTo(stderr,
            u"velmarctl: the unfinished save belongs to another database: %1\n"
            "The database configured now is: %2\n"
            "Nothing was replayed. 'velmarctl recover --discard' drops the journal.\n"_s.arg(
                maskConnectionStringPassword(recovery.journal().connectionString()),
                maskConnectionStringPassword(session.connectionString())));
        return LoadFailed;
    }

    const SaveJournalRunner::Result result = recovery.finish();
    if (recovery.gaveUpWaiting()) {
        printBusy(options);
        return Busy;
    }
    if (!result.ok) {
        printTo(stderr,
            u"velmarctl: finishing the save failed at statement %1 (%2): %3\n%4\n"
            "The journal is kept; 'velmarctl recover --discard' drops it.\n"_s.arg(
                QString::number(result.failedIndex + 1), result.failedStep, result.failedStatement,
                result.error.formatted().replace(u"\r\n"_s, u"\n"_s)));
        return LoadFailed;
    }
    for (const NoticeBoard::Failure &failure : result.noticeFailures) {
        printTo(stderr,
            u"velmarctl: notice %1 could not be deleted: %2\n"_s.arg(
                QString::number(failure.noticeId),
                failure.error.formatted().replace(u"\r\n"_s, u"\n"_s)));
    }
    QJsonObject report;
    report.insert(u"recovered"_s, true);
    report.insert(u"statements"_s, qint64(result.statementsRun));
    report.insert(u"created"_s, recovery.journal().created().toString(Qt::ISODate));
    printTo(stdout, QString::fromUtf8(QJsonDocument(report).toJson(QJsonDocument::Indented)));
    return Success;
}

int VelmarCtl::doctor(const Options &options, SqlTrace *trace)
{
    const Folder folder(options);
    const QString &profilePath = folder.profilePath;
    ConsoleMessageService messages;
    DbSession session(*folder.hives, profilePath, folder.databasePath, messages, trace);
    if (const auto code = refuseOverPendingSave(session, messages, profilePath, options))
        return *code;

    auto *document = new CVelmarManagerDoc; // left to the end of the process, as for edit
#if defined(__SANITIZE_ADDRESS__)
    const std::unique_ptr<CVelmarManagerDoc> freed(document);
#endif
    // The database and the working copy read together, between two saves.
    const auto examine = [&](QList<DataDoctor::Finding> *findings, bool load) -> int {
        ServerFolderLock lock(ServerFolderLock::savePathFor(profilePath));
        if (lock.acquire(ServerFolderLock::Mode::Shared, lockWait(options))
            == ServerFolderLock::Status::GaveUp)
            return Busy;
        DbConnection connection = session.OpenDBConnection();
        if (connection.isNull())
            return int(LoadFailed);
        try {
            *findings = DataDoctor::examine(connection);
        } catch (const DbException &e) {
            printTo(stderr,
                u"velmarctl: reading the database failed: %1\n"_s.arg(
                    e.error().formatted().replace(u"\r\n"_s, u"\n"_s)));
            return int(LoadFailed);
        }
        connection = DbConnection();
        lock.release();
        if (load) {
            ServerDataSet data;
            ServerDataLoader loader(session, profilePath);
            loader.setLockWait(lockWait(options));
            const ServerDataLoader::Result result = loader.run(data);
            if (result.outcome == ServerDataLoader::Outcome::ReadFailed) {
                // The database's findings say which rows stopped it.
                printTo(stderr,
                    u"velmarctl: the load stopped: %1\n"_s.arg(
                        result.error.formatted().replace(u"\r\n"_s, u"\n"_s)));
                return int(LoadFailed);
            }
            if (!result.ok())
                return result.outcome == ServerDataLoader::Outcome::Busy ? int(Busy)
                                                                         : int(LoadFailed);
            document->adopt(std::move(data), CVelmarManagerDoc::LoadState::Complete);
        }
        *findings += DataDoctor::examine(*document, session.OpenDBConnection().dialect());
        return int(Success);
    };

    QList<DataDoctor::Finding> before;
    const int examined = examine(&before, true);
    if (examined == Busy)
        return printBusy(options), examined;
    // A load that stopped on a row still shows what the database holds.
    if (examined != Success && (before.isEmpty() || options.fix))
        return examined;
    if (!options.fix) {
        if (options.json) {
            const QJsonObject report { { u"findings"_s, DataDoctor::toJson(before) },
                { u"total"_s, DataDoctor::total(before) } };
            printTo(
                stdout, QString::fromUtf8(QJsonDocument(report).toJson(QJsonDocument::Indented)));
        } else {
            printTo(stdout, DataDoctor::describe(before) + u'\n');
        }
        return examined;
    }

    const int steps = DataDoctor::repair(*document);
    ServerDataSaver saver(
        *document, session, messages, profilePath, *folder.hives, options.serverDir);
    prepareSaver(saver, options);
    const ServerDataSaver::Result saved = saver.save(true);
    if (!saved.ok()) {
        if (const int code = reportSaveRefusal(saved, options); code >= 0)
            return code;
        return saved.outcome == ServerDataSaver::Outcome::DatabaseError ? int(SaveFailed)
                                                                        : int(SaveRefused);
    }
    QList<DataDoctor::Finding> after;
    if (const int code = examine(&after, false); code != Success)
        return code == Busy ? (printBusy(options), code) : code;
    if (options.json) {
        const QJsonObject report { { u"before"_s, DataDoctor::toJson(before) },
            { u"after"_s, DataDoctor::toJson(after) }, { u"repairSteps"_s, steps },
            { u"version"_s, saved.version } };
        printTo(stdout, QString::fromUtf8(QJsonDocument(report).toJson(QJsonDocument::Indented)));
    } else {
        printTo(stdout,
            u"before:\n%1\n%2 repair steps, saved (version %3)\nafter:\n%4\n"_s.arg(
                DataDoctor::describe(before), QString::number(steps),
                QString::number(saved.version), DataDoctor::describe(after)));
    }
    return Success;
}
