#include "VelmarCtl.h"

#include "ConsoleMessageService.h"
#include "CReadDBThread.h"
#include "DbSession.h"
#include "RegistryHives.h"
#include "ServerData.h"
#include "ServerDataCounts.h"
#include "ServerDataSaver.h"
#include "SqlTrace.h"

#include <cstdio>
#include <memory>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace {

void printTo(FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

} // namespace

bool VelmarCtl::parse(
    const QStringList &arguments, Options &options, QString &message, bool &helpShown)
{
    helpShown = false;
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Runs the console's load or save sequence on a server folder.\n\n"
        "  load     read every data set and print the counts as JSON\n"
        "  resave   read every data set, save it back unchanged (with the version bump\n"
        "           and the server notifications) and print the counts and the version\n"
        "  logs chat|system|user --from DATETIME --to DATETIME\n"
        "           print the rows the log view lists for that period, one per line\n"
        "           (DATETIME: YYYY-MM-DDTHH:MM:SS or 'YYYY-MM-DD HH:MM:SS')"_s);
    parser.addPositionalArgument(u"command"_s, u"load, resave or logs"_s);
    const QCommandLineOption serverDir(
        u"server-dir"_s, u"The server folder (Serverinfo.ini, VelmarDB.mdb)."_s, u"dir"_s);
    const QCommandLineOption registryDir(
        u"registry-dir"_s, u"The folder of the registry hive files."_s, u"dir"_s);
    const QCommandLineOption sqlTrace(
        u"sql-trace"_s, u"Write every statement executed to this file."_s, u"file"_s);
    const QCommandLineOption from(
        u"from"_s, u"logs: the start of the period (inclusive)."_s, u"datetime"_s);
    const QCommandLineOption to(
        u"to"_s, u"logs: the end of the period (inclusive)."_s, u"datetime"_s);
    const QCommandLineOption oldestFirst(
        u"oldest-first"_s, u"logs: keep the reading order instead of newest first."_s);
    const QCommandLineOption format(
        u"format"_s, u"logs: tsv (default) or json (one array per line)."_s, u"format"_s);
    const QCommandLineOption help = parser.addHelpOption();
    parser.addOptions({ serverDir, registryDir, sqlTrace, from, to, oldestFirst, format });
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
    } else if (positional.size() != 1
        || (positional.first() != u"load"_s && positional.first() != u"resave"_s)) {
        message = u"expected one command, load, resave or logs\n\n"_s + parser.helpText();
        return false;
    }
    options.command = positional.first();
    options.serverDir = resolveServerDir(parser.value(serverDir));
    options.registryDir = parser.value(registryDir);
    options.sqlTrace = parser.value(sqlTrace);
    return true;
}

QString VelmarCtl::resolveServerDir(const QString &option)
{
    if (!option.isEmpty())
        return QDir(option).absolutePath();
    const QString fromEnvironment = qEnvironmentVariable("VELMAR_SERVER_DIR");
    if (!fromEnvironment.isEmpty())
        return QDir(fromEnvironment).absolutePath();
    return QCoreApplication::applicationDirPath();
}

int VelmarCtl::run(const Options &options)
{
    std::unique_ptr<RegistryHives> hives = options.registryDir.isEmpty()
        ? RegistryHives::fromEnvironment()
        : std::make_unique<RegistryHives>(options.registryDir);
    if (options.command == u"logs"_s)
        return LogsCommand::run(options.logs, *hives, options.serverDir);
    const QDir serverDir(options.serverDir);
    const QString profilePath = serverDir.filePath(u"Serverinfo.ini"_s);
    const QString databasePath = serverDir.filePath(u"VelmarDB.mdb"_s);

    std::unique_ptr<SqlTrace> trace;
    if (!options.sqlTrace.isEmpty()) {
        trace = std::make_unique<SqlTrace>(options.sqlTrace);
        if (!trace->isOpen()) {
            printTo(stderr,
                u"velmarctl: cannot write %1: %2\n"_s.arg(options.sqlTrace, trace->errorString()));
            return UsageError;
        }
    }

    ConsoleMessageService messages;
    ServerData data;

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
        const ServerDataSaver::Result result = saver.save(true);
        if (!result.ok()) {
            if (result.outcome == ServerDataSaver::Outcome::DatabaseError)
                printTo(stderr,
                    u"velmarctl: the save failed: %1\n"_s.arg(
                        result.error.formatted().replace(u"\r\n"_s, u"\n"_s)));
            return SaveFailed;
        }
        report = ServerDataCounts::of(data);
        report.insert(u"version"_s, result.version);
    }
    printTo(stdout, QString::fromUtf8(QJsonDocument(report).toJson(QJsonDocument::Indented)));
    return Success;
}
