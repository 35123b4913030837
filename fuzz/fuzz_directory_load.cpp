// The directory load on a database that an older server, a hand-run script or
// a crash left behind. Each input line is one row:
//   G|M|R|K <field>\t<field>...   a group, member, relation or rank row
//   C <n>                          a chain of n groups, each the next's parent
// where a field "~" is NULL, a number is an integer, anything else a text (so
// texts land in integer columns, parents form cycles, ids go out of range).
// The rows go into an in-memory database of the shipped schema, are loaded,
// saved to a second database and loaded from it again.
#include "DbConnection.h"
#include "DbError.h"
#include "DirectoryData.h"
#include "DirectoryLoader.h"
#include "DirectoryWriter.h"
#include "Recordset.h"
#include "SchemaInstaller.h"

#include <cstddef>
#include <cstdint>
#include <QCoreApplication>

using namespace Qt::StringLiterals;

namespace {

const QString memoryDatabase = u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=:memory:;"_s;

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
                    u"bAdmin"_s, u"MemberLevel"_s, u"IsGuestMember"_s, u"BirthDay"_s,
                    u"bSolar"_s } } },
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
    return u"INSERT INTO %1 (%2) VALUES (%3)"_s.arg(
        found->first, columns.join(u", "_s), values.join(u", "_s));
}

void fill(DbConnection &connection, const QString &input)
{
    int statements = 0;
    int chained = 0;
    for (QStringView line : QStringView(input).split(u'\n')) {
        if (line.size() < 2 || ++statements > 2000)
            continue;
        if (line.front() == u'C') {
            // Deep chains are what a recursive walk cannot take.
            const int depth = std::clamp(line.mid(1).trimmed().toInt(), 0, 30000 - chained);
            chained += depth;
            connection.execute(u"BEGIN"_s);
            for (int i = 1; i <= depth; ++i)
                connection.execute(
                    u"INSERT INTO [Group] (OGroupID, GroupName, OGroupID_P, Position, Depth, "
                    "IsGuestGroup) VALUES (%1, 'g%1', %2, 0, %3, 0)"_s.arg(1000 + i)
                        .arg(i == 1 ? 0 : 999 + i)
                        .arg(i));
            connection.execute(u"COMMIT"_s);
            continue;
        }
        const QString sql = rowStatement(line.front(), line.mid(1).trimmed());
        if (!sql.isEmpty())
            connection.execute(sql);
    }
}

DbConnection freshDatabase()
{
    DbConnection connection = DbConnection::open(memoryDatabase);
    SchemaInstaller::install(connection);
    return connection;
}

void empty(DbConnection &connection)
{
    for (const QString &table : { u"[Group]"_s, u"Member"_s, u"Relation"_s, u"Rank"_s })
        connection.execute(u"DELETE FROM "_s + table);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // Both databases stay open and keep their schema; each input starts from
    // empty directory tables (installing the schema anew costs more than a run).
    static DbConnection source = freshDatabase();
    static DbConnection target = freshDatabase();
    const QString input = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    empty(source);
    empty(target);
    DirectoryData first;
    try {
        fill(source, input);
        DirectoryLoader::load(source, first);
    } catch (const DbException &) {
        return 0; // refused with the database error: what the load is to do
    }
    DirectoryWriter::writeDirectory(target, DirectoryContent::of(first));
    DirectoryData second;
    DirectoryLoader::load(target, second);
    if (second.regularMembers.size() != first.regularMembers.size()
        || second.guestMembers.size() != first.guestMembers.size())
        __builtin_trap();
    return 0;
}
