#include "VelmarCtl.h"

#include "ConnectionStringMask.h"
#include "ConsoleMessageService.h"
#include "CReadDBThread.h"
#include "DbSession.h"
#include "RegistryHives.h"
#include "SaveRecovery.h"
#include "CVelmarManagerDoc.h"
#include "ServerDataCounts.h"
#include "ServerDataSaver.h"
#include "ServerFolder.h"
#include "ServiceCommand.h"
#include "SqlTrace.h"

#include <csignal>
#include <cstdio>
#include <memory>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

void printTo(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

// VELMAR_SAVE_STOP_AT makes a save or a recovery stop its own process
// (SIGSTOP) at one point, so that a test can kill it there with SIGKILL:
// "statement:N" before the statement with index N, "profile" after the
// version is written, "notify" before the notifications, "remove" after them,
// before the journal is removed.
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

} // namespace

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
        "  logs chat|system|user --from DATETIME --to DATETIME\n"
        "           print the rows the log view lists for that period, one per line\n"
        "           (DATETIME: YYYY-MM-DDTHH:MM:SS or 'YYYY-MM-DD HH:MM:SS')\n"
        "  services status|start|stop\n"
        "           print each daemon's state, or start or stop the server's daemons in\n"
        "           the console's orders and print each step\n"
        "  notify PORT [--code N]\n"
        "           send the 32-byte change notification to 127.0.0.1:PORT"_s);
    parser.addPositionalArgument(u"command"_s,
        u"load, resave, recover, logs, services status|start|stop or notify PORT"_s);
    const QCommandLineOption serverDir(
        u"server-dir"_s, u"The server folder (Serverinfo.ini, VelmarDB.mdb)."_s, u"dir"_s);
    const QCommandLineOption registryDir(
        u"registry-dir"_s, u"The folder of the registry hive files."_s, u"dir"_s);
    const QCommandLineOption sqlTrace(
        u"sql-trace"_s, u"Write every statement executed to this file."_s, u"file"_s);
    const QCommandLineOption timings(u"timings"_s,
        u"resave: print the save's phases (journal, statements) on standard error."_s);
    const QCommandLineOption discard(
        u"discard"_s, u"recover: drop the pending save's journal instead of finishing it."_s);
    const QCommandLineOption from(
        u"from"_s, u"logs: the start of the period (inclusive)."_s, u"datetime"_s);
    const QCommandLineOption to(
        u"to"_s, u"logs: the end of the period (inclusive)."_s, u"datetime"_s);
    const QCommandLineOption oldestFirst(
        u"oldest-first"_s, u"logs: keep the reading order instead of newest first."_s);
    const QCommandLineOption format(
        u"format"_s, u"logs: tsv (default) or json (one array per line)."_s, u"format"_s);
    const QCommandLineOption code(
        u"code"_s, u"notify: the code at bytes 18-19 (default 0x0DAC)."_s, u"n"_s);
    const QCommandLineOption help = parser.addHelpOption();
    parser.addOptions(
        { serverDir, registryDir, sqlTrace, timings, discard, from, to, oldestFirst, format, code });
    if (!parser.parse(arguments)) {
        message = parser.errorText();
        return false;
    }
    if (parser.isSet(help)) {
        message = parser.helpText();
        helpShown = true;
        return false;
    }
    const QStringList positional = parser.positionalArguments();
    static const QStringList actions = { u"status"_s, u"start"_s, u"stop"_s };
    if (!positional.isEmpty() && positional.first() == u"services"_s) {
        if (positional.size() != 2 || !actions.contains(positional.at(1))) {
            message = u"expected services status, start or stop\n\n"_s + parser.helpText();
            return false;
        }
        options.command = positional.first();
        options.servicesAction = positional.at(1);
        options.serverDir = resolveServerDir(parser.value(serverDir));
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
    static const QStringList commands { u"load"_s, u"resave"_s, u"recover"_s };
    if (positional.value(0) == u"logs"_s) {
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
        const QString formatText = parser.value(format);
        if (formatText.isEmpty() || formatText == u"tsv"_s) {
            options.logs.format = LogsCommand::Format::Tsv;
        } else if (formatText == u"json"_s) {
            options.logs.format = LogsCommand::Format::Json;
        } else {
            message = u"--format is tsv or json"_s;
            return false;
        }
    } else if (positional.size() != 1 || !commands.contains(positional.first())) {
        message = u"expected one command: load, resave, recover, logs, services or notify\n\n"_s
            + parser.helpText();
        return false;
    }
    options.command = positional.first();
    options.serverDir = resolveServerDir(parser.value(serverDir));
    options.registryDir = parser.value(registryDir);
    options.sqlTrace = parser.value(sqlTrace);
    options.timings = parser.isSet(timings);
    options.discard = parser.isSet(discard);
    return true;
}

QString VelmarCtl::resolveServerDir(const QString &option)
{
    return ServerFolder::chooseDirectory(
        option, qEnvironmentVariable("VELMAR_SERVER_DIR"), QCoreApplication::applicationDirPath());
}

int VelmarCtl::run(const Options &options)
{
    if (options.command == u"services"_s)
        return ServiceCommand::runServices(options.servicesAction, options.serverDir);
    if (options.command == u"notify"_s)
        return ServiceCommand::runNotify(options.port, options.code);

    const Folder folder(options);
    RegistryHives *hives = folder.hives.get();
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

    ConsoleMessageService messages;
    CVelmarManagerDoc data;

    // Nothing reads a database that a cut-short save may have left half
    // written.
    {
        DbSession session(*hives, profilePath, databasePath, messages);
        SaveRecovery recovery(session, messages, profilePath);
        if (recovery.inspect() != SaveRecovery::State::None) {
            printTo(stderr,
                u"velmarctl: an unfinished save is pending in %1 (%2); the database may be "
                "half written. Run 'velmarctl recover --server-dir %1' first.\n"_s.arg(
                    options.serverDir, recovery.journalPath()));
            return SavePending;
        }
    }

    // The console's loading worker, as the main window runs it.
    int loadResult = 0;
    {
        QEventLoop loop;
        CReadDBThread reader(*hives, profilePath, databasePath, messages, data, trace.get());
        QObject::connect(&reader, &CReadDBThread::workerExited, &loop, [&](int result) {
            loadResult = result;
            loop.quit();
        });
        reader.start();
        loop.exec();
        const ServerDataLoader::Result result = reader.loadResult();
        if (result.outcome == ServerDataLoader::Outcome::ReadFailed) {
            printTo(stderr,
                u"velmarctl: reading %1 failed: %2\n"_s.arg(
                    ServerDataLoader::stepName(result.failedStep),
                    result.error.formatted().replace(u"\r\n"_s, u"\n"_s)));
        }
    }
    if (loadResult != 1)
        return LoadFailed;

    QJsonObject report = ServerDataCounts::of(data);
    if (options.command == u"resave"_s) {
        DbSession session(*hives, profilePath, databasePath, messages, trace.get());
        ServerDataSaver saver(data, session, messages, profilePath, *hives, options.serverDir);
        saver.setCheckpoint(stopPointFromEnvironment());
        const ServerDataSaver::Result result = saver.save(true);
        if (!result.ok()) {
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
        }
        report = ServerDataCounts::of(data);
        report.insert(u"version"_s, result.version);
    }
    printTo(stdout, QString::fromUtf8(QJsonDocument(report).toJson(QJsonDocument::Indented)));
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

    const SaveRecovery::State state = recovery.inspect();
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
