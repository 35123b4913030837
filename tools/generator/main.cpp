// velmar-gen: creates a server folder with a plausible database, settings and
// logs, for the demo, the tests and the benchmarks.

#include "BenchLogWriter.h"
#include "DatabaseWriter.h"
#include "DataGenerator.h"
#include "GeneratorOptions.h"
#include "LogWriter.h"
#include "ServerFolderWriter.h"

#include <cstdio>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTextStream>

using namespace Qt::StringLiterals;

namespace {

// Left in every folder the generator made, so that running it again may
// replace what it made before, and never anything else.
const QString MarkerName = u".velmar-generated"_s;

QTextStream &err()
{
    static QTextStream stream(stderr);
    return stream;
}

bool fail(const QString &message)
{
    err() << "velmar-gen: " << message << Qt::endl;
    return false;
}

bool prepareFolder(const QString &dir, const QString &registryDir)
{
    QDir folder(dir);
    if (!folder.exists()) {
        if (!QDir().mkpath(dir))
            return fail(u"cannot create %1"_s.arg(dir));
        return true;
    }
    const bool empty
        = folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).isEmpty();
    if (empty)
        return true;
    if (!folder.exists(MarkerName))
        return fail(
            u"%1 is not empty and was not made by velmar-gen; choose a new folder"_s.arg(dir));
    for (const QString &name :
        { u"VelmarDB.mdb"_s, u"VelmarDB.mdb-wal"_s, u"VelmarDB.mdb-shm"_s, u"Serverinfo.ini"_s })
        folder.remove(name);
    for (const QString &name : { u"LogFiles"_s, u"VelmarFile2Upload"_s, u"VelmarBox"_s }) {
        QDir sub(folder.filePath(name));
        if (sub.exists() && !sub.removeRecursively())
            return fail(u"cannot remove %1"_s.arg(sub.path()));
    }
    // Hives inside the folder were made by the generator too; hives elsewhere
    // may hold other settings and only get their values overwritten.
    if (QDir::cleanPath(QFileInfo(registryDir).absoluteFilePath())
        == QDir::cleanPath(folder.absoluteFilePath(u"registry"_s))) {
        QDir hives(registryDir);
        hives.remove(u"HKEY_LOCAL_MACHINE.reg"_s);
        hives.remove(u"HKEY_CURRENT_USER.reg"_s);
    }
    return true;
}

bool readCount(const QCommandLineParser &parser, const QString &name, int *value)
{
    if (!parser.isSet(name))
        return true;
    bool ok = false;
    const int number = parser.value(name).toInt(&ok);
    if (!ok || number < 0)
        return fail(
            u"--%1 needs a number of 0 or more, not \"%2\""_s.arg(name, parser.value(name)));
    *value = number;
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(u"velmar-gen"_s);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Creates a Velmar server folder with generated data: VelmarDB.mdb, Serverinfo.ini, "
        u"registry hives, uploaded notice files, file-box folders and optionally log files."_s);
    parser.addHelpOption();
    const QList<QCommandLineOption> options = {
        { u"out"_s, u"The server folder to create (required)."_s, u"dir"_s },
        { u"registry-dir"_s, u"Where the registry hives go (default <out>/registry)."_s, u"dir"_s },
        { u"preset"_s, u"demo (small, with logs) or bench (100,000 members)."_s, u"name"_s },
        { u"members"_s, u"Members, guests included."_s, u"n"_s },
        { u"guests"_s, u"How many of the members are guests."_s, u"n"_s },
        { u"groups"_s, u"Groups in each of the two trees."_s, u"n"_s },
        { u"depth"_s, u"Deepest group level of each tree."_s, u"n"_s },
        { u"memberships"_s, u"Relation rows over both trees."_s, u"n"_s },
        { u"positions"_s, u"Positions (ranks); id 1 is always present."_s, u"n"_s },
        { u"permissions"_s, u"AccessToken rows, and as many VoipInfo rows."_s, u"n"_s },
        { u"pool"_s, u"Telephony accounts in VoipNumberList."_s, u"n"_s },
        { u"notices"_s, u"Notices."_s, u"n"_s },
        { u"folders"_s, u"File-box folders."_s, u"n"_s },
        { u"rights"_s, u"File-box rights of groups and members."_s, u"n"_s },
        { u"seed"_s, u"Seed of the generator (same seed, same data)."_s, u"n"_s },
        { u"date"_s, u"Day the newest notices and logs are dated (YYYY-MM-DD, default today)."_s,
            u"day"_s },
        { u"logs"_s, u"Also write a LogFiles folder with chat, system and user logs."_s },
        { u"logs-bench"_s,
            u"Write a month of logs at benchmark volume instead: 30 days of hourly user "
            u"logs (about 1 GB), system logs of six daemons (about 300 MB) and 50,000 chat "
            u"files, up to --date."_s },
        { u"logs-bench-scale"_s,
            u"With --logs-bench: the share of that volume to write, in percent (default 100)."_s,
            u"percent"_s },
    };
    parser.addOptions(options);
    parser.process(app);

    GeneratorOptions o;
    if (parser.isSet(u"preset"_s) && !o.applyPreset(parser.value(u"preset"_s)))
        return fail(u"unknown preset \"%1\" (demo or bench)"_s.arg(parser.value(u"preset"_s))), 2;
    o.outDir = parser.value(u"out"_s);
    if (o.outDir.isEmpty()) {
        fail(u"--out DIR is required"_s);
        parser.showHelp(2);
    }
    o.outDir = QDir::cleanPath(QFileInfo(o.outDir).absoluteFilePath());
    o.registryDir = parser.isSet(u"registry-dir"_s) ? parser.value(u"registry-dir"_s)
                                                    : QDir(o.outDir).filePath(u"registry"_s);
    o.registryDir = QDir::cleanPath(QFileInfo(o.registryDir).absoluteFilePath());
    const std::pair<const char *, int *> counts[] = {
        { "members", &o.members },
        { "guests", &o.guests },
        { "groups", &o.groups },
        { "depth", &o.depth },
        { "memberships", &o.memberships },
        { "positions", &o.positions },
        { "permissions", &o.permissions },
        { "pool", &o.pool },
        { "notices", &o.notices },
        { "folders", &o.folders },
        { "rights", &o.rights },
    };
    for (const auto &[name, value] : counts)
        if (!readCount(parser, QString::fromLatin1(name), value))
            return 2;
    // Members alone scale the dependent counts that were not given.
    if (parser.isSet(u"members"_s) && !parser.isSet(u"permissions"_s))
        o.permissions = o.members;
    if (parser.isSet(u"seed"_s)) {
        bool ok = false;
        o.seed = parser.value(u"seed"_s).toULongLong(&ok);
        if (!ok)
            return fail(u"--seed needs a number"_s), 2;
    }
    o.referenceDate = QDate::currentDate();
    if (parser.isSet(u"date"_s)) {
        o.referenceDate = QDate::fromString(parser.value(u"date"_s), u"yyyy-MM-dd"_s);
        if (!o.referenceDate.isValid())
            return fail(u"--date needs YYYY-MM-DD"_s), 2;
    }
    if (parser.isSet(u"logs"_s))
        o.logs = true;
    QStringList notes;
    o.normalise(&notes);
    for (const QString &note : notes)
        err() << "velmar-gen: adjusted " << note << Qt::endl;

    if (!prepareFolder(o.outDir, o.registryDir))
        return 1;

    QElapsedTimer timer;
    timer.start();
    const GeneratedData data = DataGenerator(o).generate();
    const qint64 generated = timer.elapsed();

    ServerFolderWriter folder(o.outDir, o.registryDir);
    QString error;
    if (!DatabaseWriter::write(folder.databasePath(), data, &error))
        return fail(error), 1;
    const qint64 written = timer.elapsed();
    if (!folder.writeProfile(data, &error) || !folder.writeRegistry(&error)
        || !folder.writeUploads(data, &error) || !folder.writeFileBox(data, &error))
        return fail(error), 1;
    if (parser.isSet(u"logs-bench"_s)) {
        BenchLogWriter::Volume volume;
        if (parser.isSet(u"logs-bench-scale"_s)) {
            bool ok = false;
            const int percent = parser.value(u"logs-bench-scale"_s).toInt(&ok);
            if (!ok || percent < 1 || percent > 100)
                return fail(u"--logs-bench-scale needs a percentage from 1 to 100"_s), 2;
            volume.userBytes = volume.userBytes * percent / 100;
            volume.systemBytes = volume.systemBytes * percent / 100;
            volume.chatFiles = std::max(1, volume.chatFiles * percent / 100);
        }
        if (!BenchLogWriter(folder.logRoot(), data, o.referenceDate, o.seed, volume).write(&error))
            return fail(error), 1;
    } else if (o.logs
        && !LogWriter(folder.logRoot(), data, o.referenceDate, o.seed).write(&error)) {
        return fail(error), 1;
    }
    QFile marker(QDir(o.outDir).filePath(MarkerName));
    if (!marker.open(QIODevice::WriteOnly))
        return fail(u"cannot write %1"_s.arg(marker.fileName())), 1;
    marker.write("Made by velmar-gen; running it again replaces the generated files.\n");
    marker.close();

    int guests = 0;
    for (const GenMember &m : data.members)
        guests += m.guest;
    int guestRelations = 0;
    for (const GenRelation &r : data.relations)
        guestRelations += r.guest ? 1 : 0;
    QTextStream out(stdout);
    out << "server folder: " << o.outDir << '\n'
        << "registry:      " << o.registryDir << '\n'
        << "members " << data.members.size() << " (guests " << guests << "), groups "
        << data.groups.size() << ", memberships " << data.relations.size() << " (guest tree "
        << guestRelations << "), positions " << data.ranks.size() << ", AccessToken "
        << data.accessTokens.size() << ", VoipInfo " << data.voipInfos.size() << ", pool "
        << data.pool.size() << ", notices " << data.notices.size() << ", folders "
        << data.folders.size() << ", rights " << data.groupRights.size() + data.memberRights.size()
        << '\n'
        << "time: generate " << generated << " ms, database " << written - generated
        << " ms, total " << timer.elapsed() << " ms" << Qt::endl;
    return 0;
}
