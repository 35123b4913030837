// The directory load on a database that an older server, a hand-run script or
// a crash left behind, through the console's own path: each input becomes
// rows of a database of the shipped schema, which the console's loader reads
// into the document (as the loading thread does, synchronously), the
// console's save writes into a second database, and the loader reads again.
// Each input line is one row:
//   G|M|R|K <field>\t<field>...   a group, member, relation or rank row
//   C <n>                          a chain of n groups, each the next's parent
// where a field "~" is NULL, a number is an integer, anything else a text (so
// texts land in integer columns, parents form cycles, ids go out of range).
#include "CVelmarManagerDoc.h"
#include "DbConnection.h"
#include "DbError.h"
#include "DbSession.h"
#include "Directory.h"
#include "MessageService.h"
#include "Recordset.h"
#include "RegistryHives.h"
#include "SchemaInstaller.h"
#include "ServerDataLoader.h"
#include "ServerDataSaver.h"
#include "ServerDataSet.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QUdpSocket>

using namespace Qt::StringLiterals;

namespace {

// No person in front of it: questions go ahead, tips are dropped.
class SilentMessages final : public MessageService
{
public:
    int showMessage(const Box &box) override { return affirmative(box.buttons); }
    void showBalloon(const Balloon &) override { }
};

QString literal(QStringView field)
{
    if (field == u"~")
        return u"NULL"_s;
    bool number = false;
    const qint64 value = field.toLongLong(&number);
    if (number)
        return QString::number(value);
    QString text = field.toString();
    text.replace(u'\'', u"''"_s);
    text.remove(QChar(0));
    return u'\'' + text + u'\'';
}

QString rowStatement(QChar table, QStringView rest)
{
    static const QHash<QChar, std::pair<QString, QStringList>> tables = {
        { u'G',
            { u"[Group]"_s,
                { u"OGroupID"_s, u"GroupName"_s, u"OGroupID_P"_s, u"Position"_s, u"Depth"_s,
                    u"IsGuestGroup"_s } } },
        { u'M',
            { u"Member"_s,
                { u"OMemberID"_s, u"MemberID"_s, u"MemberName"_s, u"Gender"_s, u"bPublic"_s,
                    u"bAdmin"_s, u"MemberLevel"_s, u"IsGuestMember"_s, u"BirthDay"_s, u"bSolar"_s,
                    u"Passwd"_s } } },
        { u'R',
            { u"Relation"_s,
                { u"OMemberID"_s, u"OGroupID"_s, u"ORankID"_s, u"Position"_s,
                    u"IsGuestRelation"_s } } },
        { u'K', { u"Rank"_s, { u"ORankID"_s, u"RankName"_s } } },
    };
    const auto found = tables.constFind(table);
    if (found == tables.constEnd())
        return {};
    const QList<QStringView> fields = rest.split(u'\t');
    QStringList columns;
    QStringList values;
    for (qsizetype i = 0; i < fields.size() && i < found->second.size(); ++i) {
        columns << found->second.at(i);
        values << literal(fields.at(i));
    }
    if (columns.isEmpty())
        return {};
    // Members carry a password unless the row says otherwise, so that the
    // save gets past its check for empty ones.
    if (table == u'M' && !columns.contains(u"Passwd"_s)) {
        columns << u"Passwd"_s;
        values << u"'pw'"_s;
    }
    return u"INSERT INTO %1 (%2) VALUES (%3)"_s.arg(
        found->first, columns.join(u", "_s), values.join(u", "_s));
}

// Deep chains are what a recursive walk cannot take; the 20,000-deep one is
// an ordinary test, here they stay short enough for many runs a second.
constexpr int MaxChained = 1000;
constexpr int MaxRows = 2000;

void fill(DbConnection &connection, const QString &input)
{
    int statements = 0;
    int chained = 0;
    connection.execute(u"BEGIN"_s);
    for (QStringView line : QStringView(input).split(u'\n')) {
        if (line.size() < 2 || ++statements > MaxRows)
            continue;
        if (line.front() == u'C') {
            const int depth = std::clamp(line.mid(1).trimmed().toInt(), 0, MaxChained - chained);
            chained += depth;
            for (int i = 1; i <= depth; ++i)
                connection.execute(
                    u"INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, "
                    "IsGuestGroup) VALUES (%1, 'g%1', %2, 0, %3, 0)"_s.arg(1000 + i)
                        .arg(i == 1 ? -1 : 999 + i)
                        .arg(i));
            continue;
        }
        const QString sql = rowStatement(line.front(), line.mid(1).trimmed());
        if (!sql.isEmpty()) {
            try {
                connection.execute(sql);
            } catch (const DbException &) {
                // A row the database itself refuses is no row.
            }
        }
    }
    connection.execute(u"COMMIT"_s);
}

// A server folder of its own: the database file, Serverinfo.ini and the
// registry, in memory where the system offers it.
struct Folder
{
    explicit Folder(const QString &base)
        : dir(base + u"/velmar-fuzz-XXXXXX"_s)
        , hives(dir.path() + u"/registry"_s)
        , profilePath(dir.path() + u"/Serverinfo.ini"_s)
        , databasePath(dir.path() + u"/VelmarDB.mdb"_s)
        , session(hives, profilePath, databasePath, messages)
    {
        // The console opens an existing database only; an empty file is one.
        QFile(databasePath).open(QIODevice::WriteOnly);
        DbConnection connection = DbConnection::open(
            u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=%1;"_s.arg(databasePath));
        SchemaInstaller::install(connection);
    }

    ServerDataLoader::Result load(ServerDataSet &data)
    {
        ServerDataLoader loader(session, profilePath);
        return loader.run(data);
    }

    QTemporaryDir dir;
    SilentMessages messages;
    RegistryHives hives;
    QString profilePath;
    QString databasePath;
    DbSession session;
};

struct State
{
    State()
        : source(base())
        , target(base())
    {
        // The save notifies the server: here a socket of this process that
        // nobody reads stands in for it.
        notifications.bind(QHostAddress::LocalHost, 0);
        const QByteArray port = QByteArray::number(notifications.localPort());
        qputenv("VELMAR_NOTIFY_PORTS", "55051=" + port + ",55052=" + port);
        sourceConnection = DbConnection::open(
            u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=%1;"_s.arg(source.databasePath));
    }

    static QString base()
    {
        return QDir(u"/dev/shm"_s).exists() ? u"/dev/shm"_s : QDir::tempPath();
    }

    Folder source;
    Folder target;
    QUdpSocket notifications;
    DbConnection sourceConnection;
};

[[noreturn]] void fail(const QString &what, const QString &why)
{
    fprintf(stderr, "%s: %s\n", qUtf8Printable(what), qUtf8Printable(why));
    __builtin_trap();
}

qsizetype memberships(const Directory &directory, bool guest)
{
    return directory.treeData(guest).membershipCount();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static State state;
    const QString input = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    for (const QString &table : { u"[Group]"_s, u"Member"_s, u"Relation"_s, u"Rank"_s })
        state.sourceConnection.execute(u"DELETE FROM "_s + table);
    fill(state.sourceConnection, input);

    ServerDataSet first;
    const ServerDataLoader::Result loaded = state.source.load(first);
    // A text in a number column (a member's, a rank's) stops the load with
    // the database error: what the load is to do.
    if (loaded.outcome == ServerDataLoader::Outcome::ReadFailed
        && loaded.error.description.startsWith(u"Type mismatch"_s))
        return 0;
    if (!loaded.ok())
        fail(u"load"_s, loaded.error.formatted());

    CVelmarManagerDoc document;
    document.adopt(std::move(first), CVelmarManagerDoc::LoadState::Complete);
    const Directory &directory = *document.directory();
    const qsizetype counts[]
        = { directory.members(false)->members().size(), directory.members(true)->members().size(),
              directory.treeData(false).groupCount(), directory.treeData(true).groupCount(),
              memberships(directory, false), memberships(directory, true) };

    ServerDataSaver saver(document, state.target.session, state.target.messages,
        state.target.profilePath, state.target.hives, state.target.dir.path());
    saver.setPause([](int) {});
    saver.setConflictPolicy(ServerDataSaver::ConflictPolicy::Overwrite);
    saver.setRememberOrigin(false);
    const ServerDataSaver::Result saved = saver.save(true);
    switch (saved.outcome) {
    case ServerDataSaver::Outcome::Saved:
        break;
    case ServerDataSaver::Outcome::MemberMissing: // a row without login name or password
    case ServerDataSaver::Outcome::UnsafeText: // a text that would break its statement
        return 0;
    default: // a failing statement or journal: the save lost its way
        fail(u"save"_s, saved.error.formatted() + saved.failedStatement + saved.journalError);
    }

    // What the save wrote reads back as the document shows it.
    ServerDataSet second;
    if (const ServerDataLoader::Result again = state.target.load(second); !again.ok())
        fail(u"load of the saved data"_s, again.error.formatted());
    const DirectoryData &again = second.directory;
    const qsizetype countsAgain[] = { again.regularMembers.size(), again.guestMembers.size(),
        again.regularTree.groupCount(), again.guestTree.groupCount(),
        again.regularTree.membershipCount(), again.guestTree.membershipCount() };
    if (!std::equal(std::begin(counts), std::end(counts), std::begin(countsAgain)))
        fail(u"read back"_s, u"other counts than the document's"_s);
    return 0;
}
