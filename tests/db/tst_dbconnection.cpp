#include "DbConnection.h"
#include "DbError.h"
#include "Recordset.h"
#include "SchemaInstaller.h"
#include "SqlTrace.h"
#include "TestDatabase.h"

#include <QFile>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Backend = TestDatabase::Backend;

// Every table and the columns the console's statements name in it.
const QList<QPair<QString, QString>> SchemaColumns {
    { u"Member"_s,
        u"OMemberID MemberID MemberName MemberNickname Passwd Gender bPublic Email HP Address "
        "HomePhone OfficePhone BirthDay bSolar bAdmin Description MemberLevel IsGuestMember"_s },
    { u"[Group]"_s, u"OGroupID GroupName OGroupID_P Position Depth IsGuestGroup"_s },
    { u"Relation"_s, u"OMemberID OGroupID ORankID Position IsGuestRelation"_s },
    { u"Rank"_s, u"ORankID RankName"_s },
    { u"AccessToken"_s,
        u"OMemberID MessageOn ChatOn FileTransferOn TTSOn VoiceToPhoneOn OneToOneCallOn SMSOn "
        "VoipOn"_s },
    { u"VoipInfo"_s, u"OMemberID ID Pass"_s },
    { u"VoipNumberList"_s, u"VOIP_ID VOIP_PASS OMemberID"_s },
    { u"Folder"_s, u"OFolderID FolderPath"_s },
    { u"UserAuthority"_s, u"OFolderID OMemberID Authority"_s },
    { u"GroupAuthority"_s, u"OFolderID OGroupID Authority"_s },
    { u"CONTENTS"_s,
        u"OCONTENTSID TITLE WRITEDATE OMEMBERID MEMBERID MEMBERNAME CONTENTS FilePath "
        "FileSessionID WriteEndDate"_s },
    { u"LeavedMemo"_s, u"OMemberID"_s }, { u"MyGroup"_s, u"OMemberID"_s },
    { u"MyMember"_s, u"OMemberID OMemberID_O"_s }, { u"Antenna"_s, u"OMemberID OMemberID_O"_s }
};

QString sourceFor(Backend backend)
{
    switch (backend) {
    case Backend::SqliteFile:
        return u"QSQLITE"_s;
    case Backend::SqliteOdbc:
        return u"QODBC: SQLite3"_s;
    case Backend::PostgresOdbc:
        return u"QODBC: PostgreSQL Unicode"_s;
    }
    return {};
}

// Whether running sql raises as every failing statement must: Unspecified,
// from the backend's source, with the database's own text.
bool raises(DbConnection &c, const QString &sql, Backend backend)
{
    try {
        c.execute(sql);
    } catch (const DbException &e) {
        return e.error().hresult == DbError::Unspecified && e.error().source == sourceFor(backend)
            && !e.error().description.isEmpty()
            && e.error().formatted().startsWith(u"(80004005) Unspecified error\r\nSource - "_s);
    }
    return false;
}

const QString InsertRank = u"INSERT INTO Rank (ORankID,RankName) VALUES  ('%1' ,'%2')"_s;

} // namespace

// Connections, statements and record sets on every backend the console meets,
// and the schema the demo and the tests create.
class TstDbConnection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void schemaHasEveryTableAndColumn_data() { TestDatabase::addBackends(); }
    void schemaHasEveryTableAndColumn()
    {
        VELMAR_BACKEND_DATABASE(db);
        guarded([&] {
            DbConnection connection = db.connect();
            QCOMPARE(connection.source(), sourceFor(backend));
            QCOMPARE(connection.dialect(),
                backend == Backend::PostgresOdbc ? SqlDialect::PostgreSql : SqlDialect::Sqlite);
            for (const auto &[table, names] : SchemaColumns) {
                const QStringList columns = names.split(u' ');
                Recordset set;
                try {
                    set = connection.execute(
                        u"SELECT %1 FROM %2 WHERE 1 = 0"_s.arg(columns.join(u','), table));
                } catch (const DbException &e) {
                    QFAIL(qPrintable(table + u": "_s + e.error().formatted()));
                }
                QVERIFY(set.isEOF());
                QCOMPARE(set.fieldCount(), columns.size());
                for (int i = 0; i < columns.size(); ++i)
                    QCOMPARE(set.fieldName(i).toLower(), columns.at(i).toLower());
            }
            // The name is kept exactly: "Group" on PostgreSQL, found only quoted.
            if (backend == Backend::PostgresOdbc)
                QCOMPARE(
                    db.count(u"pg_tables"_s, u"schemaname = 'public' AND tablename = 'Group'"_s),
                    1);
        });
    }

    void schemaIndexesServePerRowStatements_data() { TestDatabase::addBackends(); }
    void schemaIndexesServePerRowStatements();

    void recordReading_data() { TestDatabase::addBackends(); }
    void recordReading()
    {
        VELMAR_BACKEND_DATABASE(db);
        QVERIFY2(db.execAll({ InsertRank.arg(1).arg(u"经理"_s),
                     u"INSERT INTO Rank (ORankID,RankName) VALUES  ('2' ,NULL)"_s,
                     InsertRank.arg(3).arg(QString()) }),
            qPrintable(db.errorString()));
        guarded([&] {
            DbConnection c = db.connect();
            Recordset set = c.execute(u"SELECT ORankID,RankName FROM Rank  ORDER BY ORankID"_s);
            QCOMPARE(set.state(), int(Recordset::Open));
            const auto error = [&](const std::function<void()> &access, const QString &part) {
                try {
                    access();
                } catch (const DbException &e) {
                    return e.error().hresult == DbError::Unspecified
                        && e.error().description.contains(part);
                }
                return false;
            };
            QVERIFY(error([&] { set.textField(u"NoSuchColumn"_s); }, u"Item cannot be found"_s));
            QVERIFY(error([&] { set.intField(5); }, u"Item cannot be found"_s));
            QStringList seen;
            while (!set.isEOF()) {
                QCOMPARE(set.intField(0), set.intField(u"orankid"_s));
                seen.append(u"%1=%2%3"_s.arg(set.intField(u"ORANKID"_s))
                                .arg(set.textField(u"RankName"_s))
                                .arg(set.isNull(u"rankname"_s) ? u"(NULL)"_s : QString()));
                if (set.isNull(u"rankname"_s))
                    QVERIFY(error([&] { set.intField(u"RankName"_s); }, u"NULL"_s));
                set.moveNext();
            }
            QCOMPARE(seen, QStringList({ u"1=经理"_s, u"2=(NULL)"_s, u"3="_s }));
            QVERIFY(error([&] { set.textField(u"RankName"_s); }, u"EOF"_s));
            QVERIFY(error([&] { set.moveNext(); }, u"EOF"_s));
            QCOMPARE(set.state(), int(Recordset::Open));
            set.close();
            QCOMPARE(set.state(), int(Recordset::Closed));
            QVERIFY(set.isEOF());
            QVERIFY(error([&] { set.intField(0); }, u"closed"_s));
            QVERIFY(error([&] { set.moveNext(); }, u"closed"_s));
            set.close();

            Recordset empty = c.execute(u"SELECT ORankID FROM Rank WHERE ORankID = 99"_s);
            QCOMPARE(empty.state(), int(Recordset::Open));
            QVERIFY(empty.isEOF());
            // A statement without rows gives a closed record set.
            QCOMPARE(
                c.execute(u"DELETE FROM Rank WHERE ORankID = 3"_s).state(), int(Recordset::Closed));
            QCOMPARE(db.count(u"Rank"_s), 2);
        });
    }

    void intConversion_data() { TestDatabase::addBackends(); }
    void intConversion()
    {
        VELMAR_BACKEND_DATABASE(db);
        // Text columns holding numbers, as a server may keep them.
        QVERIFY2(db.execAll({ u"INSERT INTO VoipInfo (OMemberID, ID, Pass) VALUES "
                              "(-2147483648, ' 42 ', '2147483647')"_s,
                     u"INSERT INTO UserAuthority (OFolderID, OMemberID, Authority) VALUES "
                     "(1, 2, '2147483648')"_s,
                     u"INSERT INTO GroupAuthority (OFolderID, OGroupID, Authority) VALUES "
                     "(1, 2, 'rw')"_s,
                     u"INSERT INTO Rank (ORankID,RankName) VALUES (NULL, 'rw')"_s }),
            qPrintable(db.errorString()));
        guarded([&] {
            DbConnection c = db.connect();
            Recordset voip = c.execute(u"SELECT OMemberID, ID, Pass FROM VoipInfo"_s);
            QCOMPARE(voip.intField(u"OMemberID"_s), std::numeric_limits<qint32>::min());
            QCOMPARE(voip.intField(u"ID"_s), 42);
            QCOMPARE(voip.intField(2), std::numeric_limits<qint32>::max());

            Recordset tooBig = c.execute(u"SELECT Authority FROM UserAuthority"_s);
            QVERIFY_THROWS_EXCEPTION(DbException, tooBig.intField(0));
            Recordset letters = c.execute(u"SELECT Authority FROM GroupAuthority"_s);
            try {
                letters.intField(u"Authority"_s);
                QFAIL("text converted to a number");
            } catch (const DbException &e) {
                QCOMPARE(e.error().hresult, DbError::Unspecified);
                QCOMPARE(e.error().source, sourceFor(backend));
                QVERIFY(e.error().description.contains(u"rw"_s));
            }
            QCOMPARE(letters.textField(0), u"rw"_s);

            // A value for NULL serves NULL only: text that is no number stays an error.
            Recordset ranks = c.execute(u"SELECT ORankID, RankName FROM Rank"_s);
            QCOMPARE(ranks.intField(0, -7), -7);
            QVERIFY_THROWS_EXCEPTION(DbException, ranks.intField(0));
            QVERIFY_THROWS_EXCEPTION(DbException, ranks.intField(1, 0));
            QCOMPARE(voip.intField(0, 5), std::numeric_limits<qint32>::min());
        });
    }

    // Broken statements raise and leave the connection usable; text put into a
    // statement runs as one statement or not at all (which texts hold a second
    // statement is the statement text's to test: tst_dbsession).
    void failingStatementsRunNothing_data() { TestDatabase::addBackends(); }
    void failingStatementsRunNothing()
    {
        VELMAR_BACKEND_DATABASE(db);
        guarded([&] {
            DbConnection c = db.connect();
            c.execute(InsertRank.arg(1).arg(u"keep"_s));
            for (const QString &sql :
                { u"SELECT OMemberID FROM NoSuchTable"_s, InsertRank.arg(2).arg(u"it's"_s),
                    u"   "_s, u"INSERT INTO Rank (ORankID,RankName) VALUES  ('2' ,'b'"_s,
                    // A position named by the administrator, put into the statement as it is.
                    InsertRank.arg(2).arg(u"x'); DELETE FROM Rank; --"_s) })
                QVERIFY2(raises(c, sql, backend), qPrintable(sql));

            // ';' inside a value is fine; what ran before and after a failure
            // stays, visible to another connection at once: no transaction is open.
            c.execute(InsertRank.arg(4).arg(u"a;b; DELETE FROM Rank"_s));
            c.execute(u"DELETE FROM CONTENTS where OCONTENTSID=%1;"_s.arg(7));
            QCOMPARE(db.column(u"SELECT RankName FROM Rank ORDER BY ORankID"_s),
                QStringList({ u"keep"_s, u"a;b; DELETE FROM Rank"_s }));
        });
    }

    void sqliteSettings_data()
    {
        QTest::addColumn<Backend>("backend");
        QTest::newRow("sqlite-file") << Backend::SqliteFile;
        QTest::newRow("sqlite-odbc") << Backend::SqliteOdbc;
    }

    void sqliteSettings()
    {
        VELMAR_BACKEND_DATABASE(db);
        guarded([&] {
            DbConnection c = db.connect();
            QCOMPARE(c.dialect(), SqlDialect::Sqlite);
            QCOMPARE(c.execute(u"PRAGMA journal_mode"_s).textField(0).toLower(), u"wal"_s);
            QCOMPARE(c.execute(u"PRAGMA synchronous"_s).intField(0), 1); // NORMAL
            QCOMPARE(c.execute(u"PRAGMA busy_timeout"_s).intField(0), 5000);
            QCOMPARE(c.execute(u"PRAGMA wal_autocheckpoint"_s).intField(0), 10000);
            // (No transaction is left open: failingStatementsRunNothing.)
            c.execute(InsertRank.arg(1).arg(u"a"_s));
            QVERIFY(QFile::exists(db.filePath() + u"-wal"_s));
        });
    }

    void connectionReleasedWithLastHandle_data() { TestDatabase::addBackends(); }
    void connectionReleasedWithLastHandle()
    {
        VELMAR_BACKEND_DATABASE(db);
        QVERIFY(db.exec(InsertRank.arg(1).arg(u"a"_s)));
        QVERIFY(QSqlDatabase::connectionNames().isEmpty());
        guarded([&] {
            DbConnection first = db.connect();
            DbConnection second = first;
            QCOMPARE(QSqlDatabase::connectionNames().size(), 1);
            Recordset set = second.execute(u"SELECT RankName FROM Rank "_s);
            first = DbConnection();
            second = DbConnection();
            // The record set still reads: it holds the connection.
            QCOMPARE(QSqlDatabase::connectionNames().size(), 1);
            QCOMPARE(set.textField(0), u"a"_s);
            set.close();
        });
        QVERIFY(QSqlDatabase::connectionNames().isEmpty());
        // The last connection to close checkpoints and removes the WAL file;
        // dropping without force fails on PostgreSQL while any session is connected.
        if (backend != Backend::PostgresOdbc)
            QVERIFY(!QFile::exists(db.filePath() + u"-wal"_s));
        QVERIFY2(db.drop(false), qPrintable(db.errorString()));
        QVERIFY(db.filePath().isEmpty() || !QFile::exists(db.filePath()));
    }

    void connectionPerThread_data() { TestDatabase::addBackends(); }
    void connectionPerThread();

    void emptyHandle()
    {
        DbConnection none;
        QVERIFY(none.isNull());
        QCOMPARE(none.source(), QString());
        try {
            none.execute(u"SELECT 1"_s);
            QFAIL("an empty handle ran a statement");
        } catch (const DbException &e) {
            QCOMPARE(e.error().hresult, DbError::InvalidPointer);
            QCOMPARE(
                e.error().formatted(), u"(80004003) Invalid pointer\r\nSource - \r\nDesc - "_s);
        }
        QVERIFY_THROWS_EXCEPTION(DbException, SchemaInstaller::install(none));
    }

    void qtDriverPathGivesTheSameResults();
    void sqliteStepFailures();

private:
    QTemporaryDir m_folder;
};

void TstDbConnection::schemaIndexesServePerRowStatements()
{
    VELMAR_BACKEND_DATABASE(db);
    // table.leading columns of an index each per-member or per-group statement needs.
    const QStringList needed { u"relation.ogroupid, isguestrelation"_s, u"relation.omemberid"_s,
        u"member.omemberid"_s, u"group.ogroupid"_s, u"group.ogroupid_p"_s, u"voipinfo.omemberid"_s,
        u"accesstoken.omemberid"_s, u"voipnumberlist.voip_id"_s, u"leavedmemo.omemberid"_s,
        u"mygroup.omemberid"_s, u"mymember.omemberid"_s, u"mymember.omemberid_o"_s,
        u"antenna.omemberid"_s, u"antenna.omemberid_o"_s, u"contents.ocontentsid"_s };
    const QList<QVariantList> indexes = backend == Backend::PostgresOdbc
        ? db.rows(u"SELECT tablename, indexdef FROM pg_indexes WHERE schemaname = 'public'"_s)
        : db.rows(u"SELECT tbl_name, sql FROM sqlite_master WHERE type = 'index'"_s);
    QVERIFY2(!indexes.isEmpty(), qPrintable(db.errorString()));
    const auto leads = [](const QVariantList &index, const QString &columns) {
        const QString definition = index.at(1).toString().toLower().remove(u'"');
        return definition.contains(u"(%1)"_s.arg(columns))
            || definition.contains(u"(%1,"_s.arg(columns));
    };
    for (const QString &wanted : needed) {
        const QString table = wanted.section(u'.', 0, 0);
        const QString columns = wanted.section(u'.', 1);
        QVERIFY2(std::any_of(indexes.cbegin(), indexes.cend(),
                     [&](const QVariantList &index) {
                         return index.at(0).toString().toLower() == table && leads(index, columns);
                     }),
            qPrintable(wanted));
    }

    // An index that leads with a partition flag lures the planner away from
    // the per-group index and costs every row of the save another page.
    for (const QVariantList &index : indexes) {
        for (const QString &flag : { u"isguestmember"_s, u"isguestgroup"_s, u"isguestrelation"_s })
            QVERIFY2(!leads(index, flag), qPrintable(index.at(1).toString()));
    }

    if (backend == Backend::PostgresOdbc)
        return;
    // SQLite plans with the indexes even on empty tables: the statements that
    // run once per group or member must not scan.
    const QStringList perRow {
        u"SELECT OMemberID,ORankID,Position FROM Relation WHERE OGroupID=%d and OMemberID is not null  and IsGuestRelation=0"_s,
        u"UPDATE MEMBER SET MemberLevel = 1 \t\t\t\t\t\t\twhere OmemberID = %d"_s,
        u"DELETE FROM Relation WHERE OGroupID = %d "_s,
        u"DELETE FROM VoipInfo WHERE OMemberID = %d"_s,
        u"DELETE FROM AccessToken WHERE OMemberID = %d"_s,
        u"DELETE FROM LeavedMemo WHERE OMemberID = %d"_s,
        u"DELETE FROM MyGroup WHERE OMemberID = %d "_s,
        u"DELETE FROM MyMember WHERE OMemberID = %d OR OMemberID_O = %d "_s,
        u"DELETE FROM Antenna WHERE OMemberID = %d OR OMemberID_O = %d "_s,
        u"UPDATE VoipNumberList SET OMemberID = %d WHERE VOIP_ID = 'v1'"_s,
        u"UPDATE VoipInfo SET ID='a', Pass='b' WHERE OMemberID = %d"_s,
        u"UPDATE AccessToken SET VoipOn = 1 WHERE OMemberID = %d"_s,
        u"DELETE FROM CONTENTS where OCONTENTSID=%d;"_s,
    };
    for (QString statement : perRow) {
        statement.replace(u"%d"_s, u"42"_s);
        statement.chop(statement.endsWith(u';') ? 1 : 0);
        const QList<QVariantList> rows = db.rows(u"EXPLAIN QUERY PLAN "_s + statement);
        QVERIFY2(!rows.isEmpty(), qPrintable(db.errorString()));
        for (const QVariantList &row : rows) {
            const QString detail = row.constLast().toString();
            QVERIFY2(!detail.startsWith(u"SCAN"_s), qPrintable(statement + u" => "_s + detail));
        }
    }
}

void TstDbConnection::connectionPerThread()
{
    VELMAR_BACKEND_DATABASE(db);
    const QString connectionString = db.connectionString();
    // The loading thread and the user-interface thread each use their own
    // connection at the same time, both writing to the one trace.
    const QString tracePath = dir.filePath(u"trace.sql"_s);
    SqlTrace trace(tracePath);
    constexpr int threads = 3;
    constexpr int rows = 150;
    const int failures = runThreads(threads, [&](int t) {
        DbConnection c = DbConnection::open(connectionString, &trace);
        bool counted = true;
        for (int i = 0; i < rows; ++i) {
            c.execute(u"INSERT INTO Relation (OMemberID,OGroupID,ORankID,Position, "
                      "IsGuestRelation) VALUES  ('%1' ,'%2' ,'0','%1', 0)"_s.arg(i)
                          .arg(t));
            Recordset set = c.execute(u"SELECT COUNT(*) FROM Relation WHERE OGroupID=%1"_s.arg(t));
            counted = counted && set.intField(0) == i + 1;
        }
        return counted;
    });
    QCOMPARE(failures, 0);
    QCOMPARE(db.count(u"Relation"_s), threads * rows);
    QVERIFY(QSqlDatabase::connectionNames().isEmpty());

    // The trace holds whole lines, each thread's statements in its own order.
    const QStringList lines = SqlTrace::readStatements(tracePath, nullptr);
    QCOMPARE(lines.size(), threads * rows * 2);
    static const QRegularExpression statement(
        u"^(?:INSERT .* VALUES  \\('(\\d+)' ,'(\\d+)' ,'0','\\1', 0\\)|SELECT .*=\\d+)$"_s);
    QList<int> next(threads, 0);
    for (const QString &line : lines) {
        const QRegularExpressionMatch match = statement.match(line);
        QVERIFY2(match.hasMatch(), qPrintable(line));
        if (match.hasCaptured(1))
            QCOMPARE(match.captured(1).toInt(), next[match.captured(2).toInt()]++);
    }
}

namespace {
// Everything a caller can read back from a run of statements, as text: field
// names, each value's type and text, NULL tests, the integer and text reads
// (or that they raise), and which statements failed.
QStringList transcriptOf(DbConnection &connection, const QStringList &statements)
{
    QStringList lines;
    for (const QString &sql : statements) {
        lines.append(u"> "_s + sql);
        try {
            Recordset set = connection.execute(sql);
            if (set.fieldCount() == 0) {
                lines.append(u"no record set"_s);
                continue;
            }
            QStringList names;
            for (int i = 0; i < set.fieldCount(); ++i)
                names.append(set.fieldName(i));
            lines.append(names.join(u'|'));
            while (!set.isEOF()) {
                QStringList cells;
                for (int i = 0; i < set.fieldCount(); ++i) {
                    const QVariant value = set.value(i);
                    QString number;
                    try {
                        number = QString::number(set.intField(i));
                    } catch (const DbException &) {
                        number = u"raises"_s;
                    }
                    cells.append(u"%1:%2 null=%3 text=%4 int=%5"_s.arg(
                        QString::fromLatin1(value.metaType().name()), value.toString(),
                        set.isNull(i) ? u"1"_s : u"0"_s, set.textField(i), number));
                }
                lines.append(cells.join(u" | "_s));
                set.moveNext();
            }
            lines.append(u"EOF"_s);
        } catch (const DbException &e) {
            lines.append(u"raises from "_s + e.error().source);
        }
    }
    return lines;
}
} // namespace

// On an SQLite file the record set reads the driver's statement itself; where
// the build cannot use the driver's own handle, every statement runs through
// QSqlQuery. Callers must not see a difference, in types, NULLs, conversions
// or failures, and every storage class comes out as Qt's own driver gives it.
void TstDbConnection::qtDriverPathGivesTheSameResults()
{
    const QString everyClass
        = u"SELECT 7, -9000000000, 2.5, 'Zhang 张伟', '', x'00ff41', NULL, '12'"_s;
    const QStringList statements = { InsertRank.arg(2).arg(u"经理"_s),
        InsertRank.arg(1).arg(u"100%d"_s),
        u"INSERT INTO AccessToken \t\t\t\t(OMemberID, MessageOn, ChatOn, FileTransferOn, TTSOn, "
        "VoiceToPhoneOn, OneToOneCallOn, SMSOn, VoipOn) \t\t\tVALUES \t\t\t\t( "
        "'7','1','0','1','0','1','0','1','0') "_s,
        u"INSERT INTO VoipInfo \t\t\t\t(OMemberID, ID, Pass) \t\t\tVALUES \t\t\t\t( '7', "
        "'', 'p w') "_s,
        InsertRank.arg(1).arg(u"twice"_s), // duplicate key
        u"SELECT ORankID,RankName FROM Rank ORDER BY ORankID"_s, u"SELECT * FROM AccessToken"_s,
        u"SELECT OMemberID, ID, Pass FROM VoipInfo"_s, everyClass,
        u"SELECT ORankID FROM Rank WHERE 1 = 0"_s,
        u"UPDATE Rank SET RankName = NULL WHERE ORankID = 2"_s,
        u"SELECT RankName FROM Rank WHERE ORankID = 2"_s, u"DELETE FROM Rank"_s,
        u"SELECT COUNT(*) FROM Rank"_s, u"SELECT x FROM NoSuchTable"_s, u"-- nothing"_s,
        u"/* nothing */ ;"_s };
    TestDatabase direct(Backend::SqliteFile, m_folder.path(), u"direct.db"_s);
    TestDatabase viaQt(Backend::SqliteFile, m_folder.path(), u"qt.db"_s);
    QVERIFY2(direct.isValid(), qPrintable(direct.errorString()));
    QVERIFY2(viaQt.isValid(), qPrintable(viaQt.errorString()));

    QList<QVariant> reference;
    {
        QSqlDatabase qt = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"reference"_s);
        qt.setDatabaseName(direct.filePath());
        QVERIFY(qt.open());
        QSqlQuery query(qt);
        QVERIFY(query.exec(everyClass) && query.next());
        for (int i = 0; i < 8; ++i)
            reference.append(query.value(i));
    }
    QSqlDatabase::removeDatabase(u"reference"_s);

    guarded([&] {
        DbConnection first = DbConnection::open(direct.connectionString());
        DbConnection second = DbConnection::open(
            viaQt.connectionString(), nullptr, DbConnection::SqliteAccess::QtDriverOnly);
        QCOMPARE(first.usesDirectSqlite(), DbConnection::directSqliteAvailable());
        QVERIFY(!second.usesDirectSqlite());
        QCOMPARE(second.source(), first.source());
        QCOMPARE(second.dialect(), first.dialect());
        const QStringList expected = transcriptOf(first, statements);
        QCOMPARE(transcriptOf(second, statements), expected);
        QVERIFY(expected.contains(u"raises from QSQLITE"_s));

        Recordset set = first.execute(everyClass);
        QCOMPARE(set.fieldName(3), u"'Zhang 张伟'"_s);
        for (int i = 0; i < 8; ++i) {
            QCOMPARE(set.value(i).metaType(), reference.at(i).metaType());
            QCOMPARE(set.value(i), reference.at(i));
            QCOMPARE(set.isNull(i), i == 6);
        }
        QVERIFY_THROWS_EXCEPTION(DbException, set.intField(1)); // beyond 32 bits
        QCOMPARE(set.intField(2), 2); // halves go to the even neighbour
        QCOMPARE(set.textField(3), u"Zhang 张伟"_s);
        QCOMPARE(set.textField(6), QString());
        QVERIFY_THROWS_EXCEPTION(DbException, set.intField(6));
        QCOMPARE(set.intField(7), 12);
        QCOMPARE(set.textField(0), u"7"_s);
    });
}

// A statement can fail while stepping, before the first row or between rows;
// both surface as DbException with SQLite's message, and the connection goes on.
void TstDbConnection::sqliteStepFailures()
{
    VELMAR_SQLITE_DATABASE(db);
    DbConnection c = db.connect();
    const auto overflows = [](const std::function<void()> &step) {
        try {
            step();
        } catch (const DbException &e) {
            return e.error().source == u"QSQLITE"_s
                && e.error().description.contains(u"overflow"_s);
        }
        return false;
    };
    QVERIFY(overflows([&] { c.execute(u"SELECT abs(-9223372036854775807 - 1)"_s); }));
    guarded([&] {
        Recordset set = c.execute(
            u"SELECT abs(v) FROM (SELECT 1 AS v UNION ALL SELECT -9223372036854775807 - 1)"_s);
        QCOMPARE(set.intField(0), 1);
        QVERIFY(overflows([&] { set.moveNext(); }));
        QVERIFY(set.isEOF());
        // Reading on while the first set is still open, and writing beside it.
        Recordset ranks = c.execute(u"SELECT COUNT(*) FROM Rank"_s);
        c.execute(InsertRank.arg(1).arg(u"a"_s));
        QCOMPARE(ranks.intField(0), 0);
        QCOMPARE(c.execute(u"SELECT COUNT(*) FROM Rank"_s).intField(0), 1);
        // Text of comments only runs nothing.
        QCOMPARE(c.execute(u"-- nothing"_s).state(), int(Recordset::Closed));
    });
}

QTEST_GUILESS_MAIN(TstDbConnection)
#include "tst_dbconnection.moc"
