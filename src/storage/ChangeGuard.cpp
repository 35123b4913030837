#include "ChangeGuard.h"

#include "DbConnection.h"
#include "ProfileFile.h"
#include "Recordset.h"

using namespace Qt::StringLiterals;

namespace {

struct TableColumns
{
    QString table;
    QStringList numbers;
    QStringList texts;
};

// Every column the save writes, so that a change to any of them by another
// program moves the checksum (a text changed to one of the same length is
// the one thing it cannot see; the version catches every console save).
const QList<TableColumns> &rewrittenTables()
{
    static const QList<TableColumns> tables {
        { u"[Group]"_s,
            { u"OGroupID"_s, u"OGroupID_P"_s, u"Position"_s, u"Depth"_s, u"IsGuestGroup"_s },
            { u"GroupName"_s } },
        { u"Member"_s,
            { u"OMemberID"_s, u"Gender"_s, u"bPublic"_s, u"bSolar"_s, u"bAdmin"_s, u"MemberLevel"_s,
                u"IsGuestMember"_s },
            { u"MemberID"_s, u"MemberName"_s, u"MemberNickname"_s, u"Passwd"_s, u"Email"_s, u"HP"_s,
                u"Address"_s, u"HomePhone"_s, u"OfficePhone"_s, u"BirthDay"_s, u"Description"_s } },
        { u"Relation"_s,
            { u"OMemberID"_s, u"OGroupID"_s, u"ORankID"_s, u"Position"_s, u"IsGuestRelation"_s },
            {} },
        { u"Rank"_s, { u"ORankID"_s }, { u"RankName"_s } },
        { u"AccessToken"_s,
            { u"OMemberID"_s, u"MessageOn"_s, u"ChatOn"_s, u"FileTransferOn"_s, u"TTSOn"_s,
                u"VoiceToPhoneOn"_s, u"OneToOneCallOn"_s, u"SMSOn"_s, u"VoipOn"_s },
            {} },
        { u"VoipInfo"_s, { u"OMemberID"_s }, { u"ID"_s, u"Pass"_s } },
        { u"VoipNumberList"_s, { u"OMemberID"_s }, { u"VOIP_ID"_s, u"VOIP_PASS"_s } },
        { u"Folder"_s, { u"OFolderID"_s }, { u"FolderPath"_s } },
        { u"UserAuthority"_s, { u"OFolderID"_s, u"OMemberID"_s }, { u"Authority"_s } },
        { u"GroupAuthority"_s, { u"OFolderID"_s, u"OGroupID"_s }, { u"Authority"_s } },
    };
    return tables;
}

} // namespace

QStringList ChangeGuard::tableNames()
{
    QStringList names;
    for (const TableColumns &t : rewrittenTables())
        names << t.table;
    return names;
}

QString ChangeGuard::checksumQuery(const QString &table, SqlDialect dialect)
{
    for (const TableColumns &t : rewrittenTables()) {
        if (t.table != table)
            continue;
        // SQL Server sums integers as int, which 100,000 ids overflow, and
        // calls the length function LEN.
        const bool sqlServer = dialect == SqlDialect::SqlServer;
        QStringList terms { u"COUNT(*)"_s };
        for (const QString &column : t.numbers)
            terms << (sqlServer ? u"SUM(CAST(%1 AS BIGINT))"_s : u"SUM(%1)"_s).arg(column);
        for (const QString &column : t.texts)
            terms << (sqlServer ? u"SUM(CAST(LEN(%1) AS BIGINT))"_s : u"SUM(LENGTH(%1))"_s)
                         .arg(column);
        return u"SELECT %1 FROM %2"_s.arg(terms.join(u','), t.table);
    }
    return {};
}

DatabaseFingerprint ChangeGuard::read(DbConnection &connection, const QString &profilePath)
{
    DatabaseFingerprint fingerprint;
    fingerprint.version
        = ProfileFile(profilePath).readString(u"GroupInfo"_s, u"Version"_s, {}, 256);
    for (const TableColumns &t : rewrittenTables()) {
        Recordset set = connection.execute(checksumQuery(t.table, connection.dialect()));
        DatabaseFingerprint::Table table;
        table.name = t.table;
        if (!set.isEOF()) {
            table.rows = set.value(0).toLongLong();
            QStringList sums;
            const int columns = 1 + int(t.numbers.size() + t.texts.size());
            for (int i = 1; i < columns; ++i)
                sums << set.value(i).toString();
            table.checksum = sums.join(u'/');
        }
        set.close();
        fingerprint.tables << table;
    }
    return fingerprint;
}

ChangeGuard::Report ChangeGuard::compare(
    const DatabaseFingerprint &then, const DatabaseFingerprint &now)
{
    Report report;
    report.versionThen = then.version;
    report.versionNow = now.version;
    for (const DatabaseFingerprint::Table &table : now.tables) {
        const auto before = std::find_if(then.tables.cbegin(), then.tables.cend(),
            [&table](const DatabaseFingerprint::Table &t) { return t.name == table.name; });
        if (before == then.tables.cend()) {
            report.tables << TableChange { table.name, 0, table.rows };
        } else if (!(*before == table)) {
            report.tables << TableChange { table.name, before->rows, table.rows };
        }
    }
    return report;
}

QString ChangeGuard::describe(const Report &report)
{
    QStringList lines;
    if (report.versionThen != report.versionNow)
        lines << u"版本: %1 → %2"_s.arg(report.versionThen.isEmpty() ? u"-"_s : report.versionThen,
            report.versionNow.isEmpty() ? u"-"_s : report.versionNow);
    for (const TableChange &change : report.tables) {
        const qint64 delta = change.rowsNow - change.rowsThen;
        lines << u"%1: %2 → %3 行 (%4)"_s.arg(change.table)
                     .arg(change.rowsThen)
                     .arg(change.rowsNow)
                     .arg(delta == 0 ? u"行数相同, 内容已改变"_s
                                     : (delta > 0 ? u"+"_s : QString()) + QString::number(delta));
    }
    return lines.join(u"\r\n"_s);
}

QString ChangeGuard::questionText(const Report &report)
{
    return u"读取数据以后, 另一个程序已经保存了这个服务器的数据:\r\n%1\r\n\r\n"
           "是: 重新读取数据 (放弃我的更改)\r\n"
           "否: 仍然保存 (覆盖对方的更改)\r\n"
           "取消: 不保存"_s.arg(describe(report));
}
