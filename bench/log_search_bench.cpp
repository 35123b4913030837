// Times the search of the log views: the list model of a view reads the log
// root of the server folder's log settings for the month period, the way the
// filter panel's "1个月" button and its search button ask for it.
//
//   velmar-log-search-bench --server-dir DIR [--registry-dir DIR] user|system|chat
//
// Prints one line: kind, rows, seconds from the search call to searchFinished,
// peak resident memory in kB, and the bytes of the files the period accepts.
// One kind per run, so that the peak memory is that search's own.
#include "AllocatorTuning.h"
#include "ChatLogModel.h"
#include "LogFilterRules.h"
#include "LogLocations.h"
#include "LogsCommand.h"
#include "LogSearch.h"
#include "RegistryHives.h"
#include "SystemLogModel.h"
#include "UserLogModel.h"

#include <cstdio>
#include <memory>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {

qint64 peakKilobytes()
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

} // namespace

int main(int argc, char **argv)
{
    // The console's own allocator settings, so that the figures are its own.
    AllocatorTuning::prepare(argv);
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption serverDir(u"server-dir"_s, u"The server folder."_s, u"dir"_s);
    const QCommandLineOption registryDir(
        u"registry-dir"_s, u"The folder of the registry hive files."_s, u"dir"_s);
    parser.addOptions({ serverDir, registryDir });
    parser.addPositionalArgument(u"kind"_s, u"user, system or chat"_s);
    parser.addHelpOption();
    parser.process(app);
    LogSearch::Kind kind;
    if (parser.positionalArguments().size() != 1
        || !LogsCommand::parseKind(parser.positionalArguments().constFirst(), kind)
        || !parser.isSet(serverDir)) {
        parser.showHelp(2);
    }
    const QString programDir = parser.value(serverDir);
    std::unique_ptr<RegistryHives> hives = parser.isSet(registryDir)
        ? std::make_unique<RegistryHives>(parser.value(registryDir))
        : RegistryHives::fromEnvironment();

    LogSearchRequest request;
    const LogFilterRules::Period month = LogFilterRules::periodFor(
        LogFilterRules::PeriodButton::Month, QDateTime::currentDateTime());
    request.filter = LogFilterRules::searchFilter(month.start, month.end, true);
    request.logRoot = LogLocations::logRoot(*hives, programDir);
    if (kind != LogSearch::Kind::System)
        request.names = LogsCommand::memberNames(*hives, programDir);

    qint64 bytes = 0;
    for (const LogFileEntry &file : LogSearch::keptFiles(kind, request.logRoot, request.filter))
        bytes += kind == LogSearch::Kind::Chat ? QFileInfo(file.path).size() : file.size;

    std::unique_ptr<LogTableModel> model;
    switch (kind) {
    case LogSearch::Kind::Chat:
        model = std::make_unique<ChatLogModel>();
        break;
    case LogSearch::Kind::System:
        model = std::make_unique<SystemLogModel>();
        break;
    case LogSearch::Kind::User:
        model = std::make_unique<UserLogModel>();
        break;
    }
    QEventLoop loop;
    QObject::connect(model.get(), &LogTableModel::searchFinished, &loop, &QEventLoop::quit);
    QElapsedTimer timer;
    timer.start();
    model->search(request);
    loop.exec();
    const double seconds = double(timer.nsecsElapsed()) / 1e9;
    std::printf("%s %d %.3f %lld %lld\n", qPrintable(parser.positionalArguments().constFirst()),
        model->rowCount(), seconds, static_cast<long long>(peakKilobytes()),
        static_cast<long long>(bytes));
    return 0;
}
