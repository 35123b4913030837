#include "NumberColumns.h"

#include "DbConnection.h"
#include "DbError.h"
#include "Recordset.h"
#include "SqlStatementText.h"

#include <cmath>
#include <limits>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

struct Table
{
    const char16_t *name;
    const char16_t *keys; // the columns that tell the row
    const char16_t *numbers;
};

const Table tables[] = {
    { u"Member", u"OMemberID,MemberID",
        u"OMemberID,Gender,bPublic,bSolar,bAdmin,MemberLevel,IsGuestMember" },
    { u"[Group]", u"OGroupID,GroupName", u"OGroupID,OGroupID_P,Position" },
    { u"Relation", u"OMemberID,OGroupID", u"OMemberID,ORankID,Position" },
    { u"Rank", u"ORankID,RankName", u"ORankID" },
    { u"AccessToken", u"OMemberID",
        u"OMemberID,MessageOn,ChatOn,FileTransferOn,TTSOn,VoiceToPhoneOn,OneToOneCallOn,SMSOn,"
        u"VoipOn" },
    { u"VoipInfo", u"OMemberID,ID", u"OMemberID" },
    { u"VoipNumberList", u"VOIP_ID", u"OMemberID" },
    { u"Folder", u"OFolderID,FolderPath", u"OFolderID" },
    { u"GroupAuthority", u"OFolderID,OGroupID", u"OFolderID,OGroupID" },
    { u"UserAuthority", u"OFolderID,OMemberID", u"OFolderID,OMemberID" },
    { u"CONTENTS", u"OCONTENTSID,TITLE", u"OCONTENTSID,OMEMBERID" },
};

QStringList split(const char16_t *list)
{
    return QString::fromUtf16(list).split(u',');
}

// What the load takes for a number: an integer, or a decimal number rounded
// to one, within 32 bits; blanks around it do not count.
bool isInt32(const QString &stored)
{
    const QString text = stored.trimmed();
    bool ok = false;
    const qint64 value = text.toLongLong(&ok);
    if (ok)
        return value >= std::numeric_limits<qint32>::min()
            && value <= std::numeric_limits<qint32>::max();
    const double real = std::nearbyint(text.toDouble(&ok));
    return ok && std::isfinite(real) && real >= double(std::numeric_limits<qint32>::min())
        && real <= double(std::numeric_limits<qint32>::max());
}

// An SQLite condition true for a row with a value in one of the columns that
// is no 32-bit integer (a text, a real, a number beyond 32 bits).
QString notIntegers(const QStringList &columns)
{
    QStringList wrong;
    for (const QString &column : columns) {
        wrong << u"typeof(%1) NOT IN ('integer', 'null') OR %1 NOT BETWEEN -2147483648 AND "
                 u"2147483647"_s.arg(column);
    }
    return wrong.join(u" OR "_s);
}

} // namespace

QList<NumberColumns::Text> NumberColumns::texts(DbConnection &connection)
{
    QList<Text> found;
    for (const Table &table : tables) {
        const QStringList keys = split(table.keys);
        const QStringList numbers = split(table.numbers);
        // As text, whatever the column's type, so that no driver converts.
        const QString asText = connection.dialect() == SqlDialect::MySql
            ? u"CAST(%1 AS CHAR)"_s
            : u"CAST(%1 AS VARCHAR(255))"_s;
        QStringList columns;
        for (const QString &key : keys)
            columns << asText.arg(key);
        for (const QString &number : numbers)
            columns << asText.arg(number);
        const QString name = QString::fromUtf16(table.name);
        // SQLite says itself which values are no integers: only those rows
        // come over (the doctor reads 100,000 members in a blink then).
        const QString where = connection.dialect() == SqlDialect::Sqlite
            ? u" WHERE "_s + notIntegers(numbers)
            : QString();
        Recordset set
            = connection.execute(u"SELECT %1 FROM %2%3"_s.arg(columns.join(u','), name, where));
        while (!set.isEOF()) {
            for (int n = 0; n < numbers.size(); ++n) {
                const int column = int(keys.size()) + n;
                if (set.isNull(column) || isInt32(set.textField(column)))
                    continue;
                QStringList row;
                for (int k = 0; k < keys.size(); ++k)
                    row << keys.at(k) + u'=' + (set.isNull(k) ? u"NULL"_s : set.textField(k));
                found.append({ name, numbers.at(n), row.join(u", "_s), set.textField(column) });
            }
            set.moveNext();
        }
        set.close();
    }
    return found;
}

void NumberColumns::requireNumbers(DbConnection &connection)
{
    if (connection.dialect() != SqlDialect::Sqlite || connection.source() == u"QSQLITE"_s)
        return;
    for (const Table &table : tables) {
        const QStringList numbers = split(table.numbers);
        QStringList columns;
        for (const QString &number : numbers)
            columns << u"CAST(%1 AS TEXT)"_s.arg(number);
        Recordset set = connection.execute(u"SELECT %1 FROM %2 WHERE %3 LIMIT 1"_s.arg(
            columns.join(u','), QString::fromUtf16(table.name), notIntegers(numbers)));
        if (set.isEOF()) {
            set.close();
            continue;
        }
        for (int n = 0; n < numbers.size(); ++n) {
            if (set.isNull(n) || isInt32(set.textField(n)))
                continue;
            const QString value = set.textField(n);
            set.close();
            throw DbException(DbError { DbError::Unspecified, connection.source(),
                u"Type mismatch: column %1 holds '%2', not a 32-bit number."_s.arg(
                    numbers.at(n), value) });
        }
        set.close();
    }
}
