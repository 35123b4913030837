#include "DatabaseWriter.h"

#include "SchemaInstaller.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>
#include <QVariant>

using namespace Qt::StringLiterals;

namespace {

class Failure
{
public:
    QString message;
};

void run(QSqlDatabase &db, const QString &sql)
{
    QSqlQuery query(db);
    if (!query.exec(sql))
        throw Failure { sql.left(120) + u": "_s + query.lastError().text() };
}

// One prepared statement reused for every row of a table.
class Insert
{
public:
    Insert(QSqlDatabase &db, const QString &sql)
        : m_query(db)
        , m_sql(sql)
    {
        if (!m_query.prepare(sql))
            throw Failure { sql + u": "_s + m_query.lastError().text() };
    }

    template<typename... Values> void operator()(const Values &...values)
    {
        int index = 0;
        (m_query.bindValue(index++, QVariant::fromValue(values)), ...);
        if (!m_query.exec())
            throw Failure { m_sql + u": "_s + m_query.lastError().text() };
    }

private:
    QSqlQuery m_query;
    QString m_sql;
};

QVariant nullInt()
{
    return QVariant(QMetaType::fromType<int>());
}

void fill(QSqlDatabase &db, const GeneratedData &data)
{
    {
        Insert insert(db, u"INSERT INTO Rank (ORankID,RankName) VALUES (?,?)"_s);
        for (const GenRank &r : data.ranks)
            insert(r.id, r.name);
    }
    {
        Insert insert(db,
            u"INSERT INTO [Group] (OGroupID,GroupName,OGroupID_P,Position,Depth,"
            u"IsGuestGroup) VALUES (?,?,?,?,?,?)"_s);
        for (const GenGroup &g : data.groups)
            insert(g.id, g.name, g.parent, g.position, g.depth, g.guest ? 1 : 0);
    }
    {
        Insert insert(db,
            u"INSERT INTO Member (OMemberID,MemberID,MemberName,MemberNickname,"
            u"Passwd,Gender,bPublic,Email,HP,Address,HomePhone,OfficePhone,BirthDay,"
            u"Description,bSolar,bAdmin,MemberLevel,IsGuestMember) "
            u"VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)"_s);
        for (const GenMember &m : data.members)
            insert(m.id, m.login, m.name, m.nickname, m.password, m.gender, m.isPublic, m.email,
                m.mobile, m.address, m.homePhone, m.officePhone, m.birthday, m.description, m.solar,
                m.admin, m.level ? QVariant(m.level) : nullInt(), m.guest);
    }
    {
        Insert insert(db,
            u"INSERT INTO Relation (OMemberID,OGroupID,ORankID,Position,"
            u"IsGuestRelation) VALUES (?,?,?,?,?)"_s);
        for (const GenRelation &r : data.relations)
            insert(r.member, r.group, r.rank, r.position, r.guest ? 1 : 0);
    }
    {
        Insert insert(db,
            u"INSERT INTO AccessToken (OMemberID,MessageOn,ChatOn,FileTransferOn,"
            u"TTSOn,VoiceToPhoneOn,OneToOneCallOn,SMSOn,VoipOn) "
            u"VALUES (?,?,?,?,?,?,?,?,?)"_s);
        for (const GenAccessToken &t : data.accessTokens)
            insert(t.member, t.flags[0], t.flags[1], t.flags[2], t.flags[3], t.flags[4], t.flags[5],
                t.flags[6], t.flags[7]);
    }
    {
        Insert insert(db, u"INSERT INTO VoipInfo (OMemberID,ID,Pass) VALUES (?,?,?)"_s);
        for (const GenVoipInfo &v : data.voipInfos)
            insert(v.member, v.id, v.password);
    }
    {
        Insert insert(db,
            u"INSERT INTO VoipNumberList (VOIP_ID,VOIP_PASS,OMemberID) "
            u"VALUES (?,?,?)"_s);
        for (const GenPoolAccount &a : data.pool)
            insert(a.id, a.password, a.member);
    }
    {
        Insert insert(db,
            u"INSERT INTO CONTENTS (OCONTENTSID,TITLE,WRITEDATE,OMEMBERID,MEMBERID,"
            u"MEMBERNAME,CONTENTS,FilePath,FileSessionID,WriteEndDate) "
            u"VALUES (?,?,?,?,?,?,?,?,?,?)"_s);
        for (const GenNotice &n : data.notices)
            insert(n.id, n.title, n.writeDate, n.writer, n.writerLogin, n.writerName, n.contents,
                n.fileList, n.fileSessionId, n.writeEndDate);
    }
    {
        // The file box keeps its paths with every backslash doubled.
        Insert insert(db, u"INSERT INTO Folder (OFolderID,FolderPath) VALUES (?,?)"_s);
        for (const GenFolder &f : data.folders)
            insert(f.id, QString(f.path).replace(u"\\"_s, u"\\\\"_s));
    }
    {
        Insert insert(db,
            u"INSERT INTO GroupAuthority (OFolderID,OGroupID,Authority) "
            u"VALUES (?,?,?)"_s);
        for (const GenRight &r : data.groupRights)
            insert(r.folder, r.owner, r.authority);
    }
    {
        Insert insert(db,
            u"INSERT INTO UserAuthority (OFolderID,OMemberID,Authority) "
            u"VALUES (?,?,?)"_s);
        for (const GenRight &r : data.memberRights)
            insert(r.folder, r.owner, r.authority);
    }
}

} // namespace

bool DatabaseWriter::write(const QString &path, const GeneratedData &data, QString *error)
{
    for (const QString &suffix : { u""_s, u"-wal"_s, u"-shm"_s, u"-journal"_s }) {
        if (QFile::exists(path + suffix) && !QFile::remove(path + suffix)) {
            *error = u"cannot replace %1"_s.arg(path + suffix);
            return false;
        }
    }
    const QStringList schema = SchemaInstaller::statementsFor(SqlDialect::Sqlite);
    if (schema.isEmpty()) {
        *error = u"the SQLite schema script is missing from the resources"_s;
        return false;
    }

    const QString name = u"velmar-gen-"_s + QUuid::createUuid().toString(QUuid::WithoutBraces);
    bool ok = false;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
        db.setDatabaseName(path);
        if (!db.open()) {
            *error = u"cannot create %1: %2"_s.arg(path, db.lastError().text());
        } else {
            try {
                // A new file nobody else reads: no journal, no syncing until the end.
                run(db, u"PRAGMA journal_mode=OFF"_s);
                run(db, u"PRAGMA synchronous=OFF"_s);
                for (const QString &statement : schema)
                    run(db, statement);
                if (!db.transaction())
                    throw Failure { db.lastError().text() };
                fill(db, data);
                if (!db.commit())
                    throw Failure { db.lastError().text() };
                run(db, u"PRAGMA journal_mode=DELETE"_s);
                ok = true;
            } catch (const Failure &failure) {
                *error = failure.message;
            }
            db.close();
        }
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}
