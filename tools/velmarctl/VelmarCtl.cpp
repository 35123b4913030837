#include "VelmarCtl.h"

#include "ConsoleMessageService.h"
#include "CReadDBThread.h"
#include "DbSession.h"
#include "RegistryHives.h"
#include "ServerData.h"
#include "ServerDataCounts.h"
#include "ServerDataSaver.h"
#include "ServiceCommand.h"
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
        u"Runs the console's own sequences on a server folder, from a shell.\n\n"
        "  load     read every data set and print the counts as JSON\n"
        "  resave   read every data set, save it back unchanged (with the version bump\n"
        "           and the server notifications) and print the counts and the version\n"
        "  services status|start|stop\n"
        "           print each daemon's state, or start or stop the server's daemons in\n"
        "           the console's orders and print each step\n"
        "  notify PORT [--code N]\n"
        "           send the 32-byte change notification to 127.0.0.1:PORT"_s);
    parser.addPositionalArgument(
        u"command"_s, u"load, resave, services status|start|stop or notify PORT"_s);
    const QCommandLineOption serverDir(
        u"server-dir"_s, u"The server folder (Serverinfo.ini, VelmarDB.mdb)."_s, u"dir"_s);
    const QCommandLineOption registryDir(
        u"registry-dir"_s, u"The folder of the registry hive files."_s, u"dir"_s);
    const QCommandLineOption sqlTrace(
        u"sql-trace"_s, u"Write every statement executed to this file."_s, u"file"_s);
    const QCommandLineOption code(
        u"code"_s, u"notify: the code at bytes 18-19 (default 0x0DAC)."_s, u"n"_s);
    const QCommandLineOption help = parser.addHelpOption();
    parser.addOptions({ serverDir, registryDir, sqlTrace, code });
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
    if (positional.size() != 1
        || (positional.first() != u"load"_s && positional.first() != u"resave"_s)) {
        message = u"expected one command, load or resave\n\n"_s + parser.helpText();
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
    if (options.command == u"services"_s)
        return ServiceCommand::runServices(options.servicesAction, options.serverDir);
    if (options.command == u"notify"_s)
        return ServiceCommand::runNotify(options.port, options.code);

    std::unique_ptr<RegistryHives> hives = options.registryDir.isEmpty()
        ? RegistryHives::fromEnvironment()
        : std::make_unique<RegistryHives>(options.registryDir);
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
