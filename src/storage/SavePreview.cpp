#include "SavePreview.h"

#include "DbConnection.h"
#include "Recordset.h"
#include "SaveJournal.h"

#include <QHash>
#include <QRegularExpression>
#include <QSet>

using namespace Qt::StringLiterals;

namespace {

// A table the save rewrites: the rows it deletes (where) and how a row is
// known across the rewrite (the first keyColumns columns, plus the flag).
struct TableShape
{
    QString table; // as the statements name it
    QStringList columns; // in the order of the save's INSERT
    QString where; // the partitions the save deletes
    QList<int> key;
    QList<int> numbers; // columns whose NULL the save writes as 0
};

const QList<TableShape> &tableShapes()
{
    static const QList<TableShape> all {
        { u"[Group]"_s,
            { u"OGroupID"_s, u"GroupName"_s, u"OGroupID_P"_s, u"Position"_s, u"Depth"_s,
                u"IsGuestGroup"_s },
            u"IsGuestGroup=0 OR IsGuestGroup=1 OR IsGuestGroup IS NULL"_s, { 0 }, { 0, 2, 3, 4 } },
        // MemberLevel last: the save sets it after the rows are in.
        { u"Member"_s,
            { u"OMemberID"_s, u"MemberID"_s, u"MemberName"_s, u"MemberNickname"_s, u"Passwd"_s,
                u"Gender"_s, u"bPublic"_s, u"Email"_s, u"HP"_s, u"Address"_s, u"HomePhone"_s,
                u"OfficePhone"_s, u"BirthDay"_s, u"Description"_s, u"bSolar"_s, u"bAdmin"_s,
                u"IsGuestMember"_s, u"MemberLevel"_s },
            u"IsGuestMember=0 OR IsGuestMember=1 OR IsGuestMember IS NULL"_s, { 0 },
            { 0, 5, 6, 14, 15, 16 } },
        { u"Relation"_s,
            { u"OMemberID"_s, u"OGroupID"_s, u"ORankID"_s, u"Position"_s, u"IsGuestRelation"_s },
            u"IsGuestRelation=0 OR IsGuestRelation=1"_s, { 0, 1, 4 }, { 0, 1, 2, 3 } },
        { u"Rank"_s, { u"ORankID"_s, u"RankName"_s }, {}, { 0 }, { 0 } },
        { u"AccessToken"_s,
            { u"OMemberID"_s, u"MessageOn"_s, u"ChatOn"_s, u"FileTransferOn"_s, u"TTSOn"_s,
                u"VoiceToPhoneOn"_s, u"OneToOneCallOn"_s, u"SMSOn"_s, u"VoipOn"_s },
            {}, { 0 }, { 0, 1, 2, 3, 4, 5, 6, 7, 8 } },
        { u"VoipInfo"_s, { u"OMemberID"_s, u"ID"_s, u"Pass"_s }, {}, { 0 }, { 0 } },
        { u"Folder"_s, { u"OFolderID"_s, u"FolderPath"_s }, {}, { 0 }, { 0 } },
        { u"GroupAuthority"_s, { u"OFolderID"_s, u"OGroupID"_s, u"Authority"_s }, {}, { 0, 1 },
            { 0, 1 } },
        { u"UserAuthority"_s, { u"OFolderID"_s, u"OMemberID"_s, u"Authority"_s }, {}, { 0, 1 },
            { 0, 1 } },
        // Not rewritten: the save only sets who holds each account.
        { u"VoipNumberList"_s, { u"VOIP_ID"_s, u"VOIP_PASS"_s, u"OMemberID"_s }, {}, { 0 }, {} },
    };
    return all;
}

constexpr QChar Separator = u'\x1f';

// The values of an INSERT's VALUES list, joined by Separator: quoted texts
// (which hold no quote once the pre-flight has passed) and bare numbers. A
// row is one string, so that 100,000 of them cost 100,000 allocations.
QString joinValues(QStringView list)
{
    QString row;
    row.reserve(list.size());
    qsizetype i = 0;
    bool first = true;
    while (i < list.size()) {
        while (i < list.size() && (list[i].isSpace() || list[i] == u','))
            ++i;
        if (i >= list.size())
            break;
        if (!first)
            row += Separator;
        first = false;
        if (list[i] == u'\'') {
            const qsizetype end = list.indexOf(u'\'', i + 1);
            const qsizetype stop = end < 0 ? list.size() : end;
            row += list.mid(i + 1, stop - i - 1);
            i = stop + 1;
        } else {
            qsizetype end = list.indexOf(u',', i);
            if (end < 0)
                end = list.size();
            row += list.mid(i, end - i).trimmed();
            i = end;
        }
    }
    return row;
}

QString tableOf(QStringView statement, qsizetype from)
{
    qsizetype start = from;
    while (start < statement.size() && statement[start].isSpace())
        ++start;
    qsizetype end = start;
    while (end < statement.size() && !statement[end].isSpace() && statement[end] != u'(')
        ++end;
    return statement.mid(start, end - start).toString();
}

QString rowText(const QStringList &columns, const QStringList &row)
{
    QStringList cells;
    for (qsizetype i = 0; i < columns.size(); ++i)
        cells << columns[i] + u'=' + row.value(i);
    return cells.join(u", "_s);
}

QString keyOf(const TableShape &shape, const QStringList &row)
{
    QStringList parts;
    for (const int column : shape.key)
        parts << row.value(column);
    return parts.join(u'/');
}

// Rows both sides hold cancel out; what is left is removed or added, and a
// removed and an added row with one key make a change.
void diff(const TableShape &shape, const QList<QString> &before, const QList<QString> &after,
    SavePreview::Table &out)
{
    QHash<QStringView, int> remaining; // row -> count among the rows before
    remaining.reserve(before.size());
    for (const QString &row : before)
        ++remaining[QStringView(row)];
    QList<QStringList> added;
    for (const QString &row : after) {
        auto it = remaining.find(QStringView(row));
        if (it != remaining.end() && it.value() > 0)
            --it.value();
        else
            added << row.split(Separator);
    }
    QHash<QString, QList<qsizetype>> removedByKey;
    QList<QStringList> removed;
    for (const QString &row : before) {
        auto it = remaining.find(QStringView(row));
        if (it == remaining.end() || it.value() == 0)
            continue;
        --it.value();
        removed << row.split(Separator);
        removedByKey[keyOf(shape, removed.constLast())] << removed.size() - 1;
    }
    QSet<qsizetype> paired;
    for (const QStringList &row : std::as_const(added)) {
        auto it = removedByKey.find(keyOf(shape, row));
        if (it != removedByKey.end() && !it->isEmpty()) {
            const qsizetype index = it->takeFirst();
            const QStringList &old = removed.at(index);
            paired.insert(index);
            QStringList changes;
            for (qsizetype i = 0; i < shape.columns.size(); ++i) {
                if (old.value(i) != row.value(i))
                    changes << u"%1: %2 → %3"_s.arg(shape.columns[i], old.value(i), row.value(i));
            }
            out.changed << keyOf(shape, row) + u" ("_s + changes.join(u", "_s) + u')';
        } else {
            out.added << rowText(shape.columns, row);
        }
    }
    for (qsizetype i = 0; i < removed.size(); ++i) {
        if (!paired.contains(i))
            out.removed << rowText(shape.columns, removed.at(i));
    }
}

} // namespace

QString SavePreview::buttonText()
{
    return u"显示更改"_s;
}

QList<SavePreview::Table> SavePreview::compute(const SaveJournal &journal, DbConnection &connection)
{
    static const QRegularExpression levelUpdate(
        u"^UPDATE MEMBER SET MemberLevel = (-?\\d+)\\s+where OmemberID = (-?\\d+)$"_s);
    static const QRegularExpression poolUpdate(
        u"^UPDATE VoipNumberList SET OMemberID = (-?\\d+) WHERE VOIP_ID = '([^']*)'$"_s);

    // What the save will hold in each table.
    QHash<QString, QList<QString>> written;
    QHash<QString, QString> levels; // member id -> level
    QHash<QString, QString> poolHolders; // VOIP_ID -> member id
    QStringList deletions; // the deleted members' rows and the notices, as counts
    SaveJournal::Cursor cursor;
    SaveJournal::Action action;
    while (journal.nextAction(cursor, action)) {
        if (action.kind == SaveJournal::Kind::NoticeDelete) {
            deletions << action.text;
            continue;
        }
        if (action.kind != SaveJournal::Kind::Statement)
            continue;
        const QString &sql = action.text;
        if (sql.startsWith(u"INSERT INTO"_s)) {
            const qsizetype values = sql.indexOf(u"VALUES"_s);
            const qsizetype open = sql.indexOf(u'(', values);
            const qsizetype close = sql.lastIndexOf(u')');
            if (values < 0 || open < 0 || close < open)
                continue;
            written[tableOf(sql, 11)]
                << joinValues(QStringView(sql).mid(open + 1, close - open - 1));
        } else if (const auto m = levelUpdate.match(sql); m.hasMatch()) {
            levels.insert(m.captured(2), m.captured(1));
        } else if (const auto p = poolUpdate.match(sql); p.hasMatch()) {
            poolHolders.insert(p.captured(2), p.captured(1));
        } else if (sql.startsWith(u"DELETE FROM"_s)) {
            if (sql.contains(u"WHERE OMemberID"_s))
                deletions << sql;
            else // a table or partition emptied to be filled again
                written[tableOf(sql, 11)];
        }
    }
    for (QString &row : written[u"Member"_s]) {
        const qsizetype end = row.indexOf(Separator);
        row += Separator + levels.value(row.left(end < 0 ? row.size() : end));
    }

    QList<Table> tables;
    for (const TableShape &shape : tableShapes()) {
        // A data set that was not edited is not written at all.
        if (shape.table != u"VoipNumberList"_s && !written.contains(shape.table))
            continue;
        QList<QString> before;
        Recordset set = connection.execute(u"SELECT %1 FROM %2%3"_s.arg(shape.columns.join(u','),
            shape.table, shape.where.isEmpty() ? QString() : u" WHERE "_s + shape.where));
        before.reserve(1024);
        while (!set.isEOF()) {
            QString row;
            row.reserve(64);
            for (int i = 0; i < shape.columns.size(); ++i) {
                if (i > 0)
                    row += Separator;
                // The load reads NULL as empty text or 0; the save writes that.
                if (set.isNull(i)) {
                    if (shape.numbers.contains(i))
                        row += u'0';
                } else {
                    row += set.value(i).toString();
                }
            }
            before << row;
            set.moveNext();
        }
        set.close();

        QList<QString> after;
        if (shape.table == u"VoipNumberList"_s) {
            after = before;
            for (QString &row : after) {
                QStringList cells = row.split(Separator);
                const auto holder = poolHolders.constFind(cells.value(0));
                if (holder != poolHolders.cend() && cells.size() == 3) {
                    cells[2] = holder.value();
                    row = cells.join(Separator);
                }
            }
        } else {
            after = written.value(shape.table);
        }
        Table table;
        table.name = shape.table;
        table.columns = shape.columns;
        diff(shape, before, after, table);
        tables << table;
    }

    // Rows of tables the save does not rewrite: those of deleted members and
    // the notices marked for deletion.
    QHash<QString, Table> others;
    QStringList order;
    for (const QString &sql : std::as_const(deletions)) {
        const QString table = tableOf(sql, 11);
        if (written.contains(table) || table == u"Relation"_s || table == u"VoipInfo"_s
            || table == u"AccessToken"_s)
            continue; // rewritten whole, or not written
        QString count = sql;
        count.replace(0, 6, u"SELECT COUNT(*)"_s);
        if (count.endsWith(u';'))
            count.chop(1);
        Recordset set = connection.execute(count);
        const qint64 rows = set.isEOF() ? 0 : set.value(0).toLongLong();
        set.close();
        if (!others.contains(table)) {
            order << table;
            others[table].name = table;
        }
        const qsizetype where = sql.indexOf(u"WHERE"_s, 0, Qt::CaseInsensitive);
        for (qint64 i = 0; i < rows; ++i)
            others[table].removed << sql.mid(where + 6).trimmed();
    }
    for (const QString &table : std::as_const(order))
        tables << others.value(table);
    return tables;
}

QString SavePreview::describe(const QList<Table> &tables, bool rows, int rowLimit)
{
    QStringList lines;
    for (const Table &table : tables) {
        if (table.isEmpty())
            continue;
        lines << u"%1: +%2 -%3 ~%4"_s.arg(table.name)
                     .arg(table.added.size())
                     .arg(table.removed.size())
                     .arg(table.changed.size());
        if (!rows)
            continue;
        const auto list = [&](QChar mark, const QStringList &items) {
            const qsizetype shown
                = rowLimit < 0 ? items.size() : qMin(items.size(), qsizetype(rowLimit));
            for (qsizetype i = 0; i < shown; ++i)
                lines << u"  "_s + mark + u' ' + items[i];
            if (shown < items.size())
                lines << u"  %1 ... (%2 more)"_s.arg(mark).arg(items.size() - shown);
        };
        list(u'+', table.added);
        list(u'-', table.removed);
        list(u'~', table.changed);
    }
    return lines.isEmpty() ? u"没有更改."_s : lines.join(u'\n');
}
