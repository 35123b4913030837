#include "DbConnection.h"
#include "DbError.h"
#include "Recordset.h"
#include "SchemaInstaller.h"
#include "TestDatabase.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {

using Backend = TestDatabase::Backend;

// Every table and column the console's statements name.
const QList<QPair<QString, QStringList>> &schemaColumns()
{
    static const QList<QPair<QString, QStringList>> tables {
        { u"Member"_s,
            { u"OMemberID"_s, u"MemberID"_s, u"MemberName"_s, u"MemberNickname"_s, u"Passwd"_s,
                u"Gender"_s, u"bPublic"_s, u"Email"_s, u"HP"_s, u"Address"_s, u"HomePhone"_s,
                u"OfficePhone"_s, u"BirthDay"_s, u"bSolar"_s, u"bAdmin"_s, u"Description"_s,
                u"MemberLevel"_s, u"IsGuestMember"_s } },
        { u"[Group]"_s,
            { u"OGroupID"_s, u"GroupName"_s, u"OGroupID_P"_s, u"Position"_s, u"Depth"_s,
                u"IsGuestGroup"_s } },
        { u"Relation"_s,
            { u"OMemberID"_s, u"OGroupID"_s, u"ORankID"_s, u"Position"_s, u"IsGuestRelation"_s } },
        { u"Rank"_s, { u"ORankID"_s, u"RankName"_s } },
        { u"AccessToken"_s,
            { u"OMemberID"_s, u"MessageOn"_s, u"ChatOn"_s, u"FileTransferOn"_s, u"TTSOn"_s,
                u"VoiceToPhoneOn"_s, u"OneToOneCallOn"_s, u"SMSOn"_s, u"VoipOn"_s } },
        { u"VoipInfo"_s, { u"OMemberID"_s, u"ID"_s, u"Pass"_s } },
        { u"VoipNumberList"_s, { u"VOIP_ID"_s, u"VOIP_PASS"_s, u"OMemberID"_s } },
        { u"Folder"_s, { u"OFolderID"_s, u"FolderPath"_s } },
        { u"UserAuthority"_s, { u"OFolderID"_s, u"OMemberID"_s, u"Authority"_s } },
        { u"GroupAuthority"_s, { u"OFolderID"_s, u"OGroupID"_s, u"Authority"_s } },
        { u"CONTENTS"_s,
            { u"OCONTENTSID"_s, u"TITLE"_s, u"WRITEDATE"_s, u"OMEMBERID"_s, u"MEMBERID"_s,
                u"MEMBERNAME"_s, u"CONTENTS"_s, u"FilePath"_s, u"FileSessionID"_s,
                u"WriteEndDate"_s } },
        { u"LeavedMemo"_s, { u"OMemberID"_s } },
        { u"MyGroup"_s, { u"OMemberID"_s } },
        { u"MyMember"_s, { u"OMemberID"_s, u"OMemberID_O"_s } },
        { u"Antenna"_s, { u"OMemberID"_s, u"OMemberID_O"_s } },
    };
    return tables;
}

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

} // namespace

// Connections, statements and record sets on every backend the console meets,
// and the schema the demo and the tests create.
class TstDbConnection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void schemaHasEveryTableAndColumn_data() { TestDatabase::addBackends(); }
    void schemaHasEveryTableAndColumn();
    void schemaIndexesServePerRowStatements_data() { TestDatabase::addBackends(); }
    void schemaIndexesServePerRowStatements();
    void recordReading_data() { TestDatabase::addBackends(); }
    void recordReading();
    void intConversion_data() { TestDatabase::addBackends(); }
    void intConversion();
    void fieldAccessErrors_data() { TestDatabase::addBackends(); }
    void fieldAccessErrors();
    void failingStatementRaises_data() { TestDatabase::addBackends(); }
    void failingStatementRaises();
    void oneStatementPerExecution_data() { TestDatabase::addBackends(); }
    void oneStatementPerExecution();
    void statementsTakeEffectOneByOne_data() { TestDatabase::addBackends(); }
    void statementsTakeEffectOneByOne();
    void sqliteSettings_data();
    void sqliteSettings();
    void connectionReleasedWithLastHandle_data() { TestDatabase::addBackends(); }
    void connectionReleasedWithLastHandle();
    void connectionPerThread_data() { TestDatabase::addBackends(); }
    void connectionPerThread();
    void emptyHandle();
    void sqliteFileReadsAsQtDriver();
    void qtDriverPathGivesTheSameResults();
    void sqliteStepFailures();

private:
    QTemporaryDir m_folder;
};

void TstDbConnection::init()
{
    QVERIFY(m_folder.isValid());
}

void TstDbConnection::schemaHasEveryTableAndColumn()
{
    try {
        QFETCH(Backend, backend);
        TestDatabase db(backend, m_folder.path());
        QVERIFY2(db.isValid(), qPrintable(db.errorString()));

        DbConnection connection = db.connect();
        QCOMPARE(connection.source(), sourceFor(backend));
        QCOMPARE(connection.dialect(),
            backend == Backend::PostgresOdbc ? SqlDialect::PostgreSql : SqlDialect::Sqlite);
        for (const auto &[table, columns] : schemaColumns()) {
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
        if (backend == Backend::PostgresOdbc) {
            QCOMPARE(
                db.scalar(
                      u"SELECT COUNT(*) FROM pg_tables WHERE schemaname = 'public' AND tablename = 'Group'"_s)
                    .toInt(),
                1);
        }
    } catch (const DbException &e) {
        QFAIL(e.what());
    }
}

void TstDbConnection::schemaIndexesServePerRowStatements()
{
    QFETCH(Backend, backend);
    TestDatabase db(backend, m_folder.path());
    QVERIFY2(db.isValid(), qPrintable(db.errorString()));

    // (table, leading columns) of an index each per-member or per-group statement needs.
    const QList<QPair<QString, QString>> needed {
        { u"relation"_s, u"ogroupid, isguestrelation"_s },
        { u"relation"_s, u"omemberid"_s },
        { u"member"_s, u"omemberid"_s },
        { u"group"_s, u"ogroupid"_s },
        { u"group"_s, u"ogroupid_p"_s },
        { u"voipinfo"_s, u"omemberid"_s },
        { u"accesstoken"_s, u"omemberid"_s },
        { u"voipnumberlist"_s, u"voip_id"_s },
        { u"leavedmemo"_s, u"omemberid"_s },
        { u"mygroup"_s, u"omemberid"_s },
        { u"mymember"_s, u"omemberid"_s },
        { u"mymember"_s, u"omemberid_o"_s },
        { u"antenna"_s, u"omemberid"_s },
        { u"antenna"_s, u"omemberid_o"_s },
        { u"contents"_s, u"ocontentsid"_s },
    };
    QList<QVariantList> indexes;
    if (backend == Backend::PostgresOdbc)
        indexes
            = db.rows(u"SELECT tablename, indexdef FROM pg_indexes WHERE schemaname = 'public'"_s);
    else
        indexes = db.rows(u"SELECT tbl_name, sql FROM sqlite_master WHERE type = 'index'"_s);
    QVERIFY2(!indexes.isEmpty(), qPrintable(db.errorString()));
    const auto leads = [](const QVariantList &index, const QString &columns) {
        const QString definition = index.at(1).toString().toLower().remove(u'"');
        return definition.contains(u"(%1)"_s.arg(columns))
            || definition.contains(u"(%1,"_s.arg(columns));
    };
    for (const auto &[table, columns] : needed) {
        bool found = false;
        for (const QVariantList &index : std::as_const(indexes))
            found = found || (index.at(0).toString().toLower() == table && leads(index, columns));
        QVERIFY2(found, qPrintable(table + u"."_s + columns));
    }
    // An index that leads with a partition flag lures the planner away from
    // the per-group index and costs every row of the save another page.
    for (const QVariantList &index : std::as_const(indexes)) {
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

void TstDbConnection::recordReading()
{
    try {
        QFETCH(Backend, backend);
        TestDatabase db(backend, m_folder.path());
        QVERIFY2(db.isValid(), qPrintable(db.errorString()));
        QVERIFY2(db.execAll({ u"INSERT INTO Rank (ORankID,RankName) VALUES  ('1' ,'经理')"_s,
                     u"INSERT INTO Rank (ORankID,RankName) VALUES  ('2' ,NULL)"_s,
                     u"INSERT INTO Rank (ORankID,RankName) VALUES  ('3' ,'')"_s }),
            qPrintable(db.errorString()));

        DbConnection c = db.connect();
        Recordset set = c.execute(u"SELECT ORankID,RankName FROM Rank  ORDER BY ORankID"_s);
        QCOMPARE(set.state(), int(Recordset::Open));
        QStringList seen;
        while (!set.isEOF()) {
            QCOMPARE(set.intField(0), set.intField(u"orankid"_s));
            seen.append(u"%1=%2%3"_s.arg(set.intField(u"ORANKID"_s))
                            .arg(set.textField(u"RankName"_s))
                            .arg(set.isNull(u"rankname"_s) ? u"(NULL)"_s : QString()));
            set.moveNext();
        }
        QCOMPARE(seen, QStringList({ u"1=经理"_s, u"2=(NULL)"_s, u"3="_s }));
        QCOMPARE(set.state(), int(Recordset::Open));
        set.close();
        QCOMPARE(set.state(), int(Recordset::Closed));
        QVERIFY(set.isEOF());
        set.close();

        Recordset empty = c.execute(u"SELECT ORankID FROM Rank WHERE ORankID = 99"_s);
        QCOMPARE(empty.state(), int(Recordset::Open));
        QVERIFY(empty.isEOF());

        // A statement without rows gives a closed record set.
        Recordset none = c.execute(u"DELETE FROM Rank WHERE ORankID = 3"_s);
        QCOMPARE(none.state(), int(Recordset::Closed));
        QCOMPARE(db.count(u"Rank"_s), 2);
    } catch (const DbException &e) {
        QFAIL(e.what());
    }
}

void TstDbConnection::intConversion()
{
    try {
        QFETCH(Backend, backend);
        TestDatabase db(backend, m_folder.path());
        QVERIFY2(db.isValid(), qPrintable(db.errorString()));
        // Text columns holding numbers, as a server may keep them.
        QVERIFY2(
            db.execAll({ u"INSERT INTO VoipInfo (OMemberID, ID, Pass) VALUES (-2147483648, ' 42 ', '2147483647')"_s,
                u"INSERT INTO UserAuthority (OFolderID, OMemberID, Authority) VALUES (1, 2, '2147483648')"_s,
                u"INSERT INTO GroupAuthority (OFolderID, OGroupID, Authority) VALUES (1, 2, 'rw')"_s,
                u"INSERT INTO Rank (ORankID,RankName) VALUES (NULL, 'rw')"_s }),
            qPrintable(db.errorString()));
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
    } catch (const DbException &e) {
        QFAIL(e.what());
    }
}

void TstDbConnection::fieldAccessErrors()
{
    try {
        QFETCH(Backend, backend);
        TestDatabase db(backend, m_folder.path());
        QVERIFY2(db.isValid(), qPrintable(db.errorString()));
        QVERIFY(db.exec(u"INSERT INTO Rank (ORankID,RankName) VALUES  ('1' ,NULL)"_s));
        DbConnection c = db.connect();

        Recordset set = c.execute(u"SELECT ORankID,RankName FROM Rank "_s);
        const auto expectError = [&](const std::function<void()> &access, const QString &part) {
            try {
                access();
            } catch (const DbException &e) {
                return e.error().hresult == DbError::Unspecified
                    && e.error().description.contains(part);
            }
            return false;
        };
        QVERIFY(expectError([&] { set.intField(u"RankName"_s); }, u"NULL"_s));
        QVERIFY(expectError([&] { set.textField(u"NoSuchColumn"_s); }, u"Item cannot be found"_s));
        QVERIFY(expectError([&] { set.intField(5); }, u"Item cannot be found"_s));
        set.moveNext();
        QVERIFY(set.isEOF());
        QVERIFY(expectError([&] { set.textField(u"RankName"_s); }, u"EOF"_s));
        QVERIFY(expectError([&] { set.moveNext(); }, u"EOF"_s));
        set.close();
        QVERIFY(expectError([&] { set.intField(0); }, u"closed"_s));
        QVERIFY(expectError([&] { set.moveNext(); }, u"closed"_s));
    } catch (const DbException &e) {
        QFAIL(e.what());
    }
}

void TstDbConnection::failingStatementRaises()
{
    try {
        QFETCH(Backend, backend);
        TestDatabase db(backend, m_folder.path());
        QVERIFY2(db.isValid(), qPrintable(db.errorString()));
        DbConnection c = db.connect();
        for (const QString &sql :
            { u"SELECT OMemberID FROM NoSuchTable"_s, u"DELETE FROM NoSuchTable"_s,
                u"INSERT INTO Rank (ORankID,RankName) VALUES  ('1' ,'it's')"_s, u"   "_s }) {
            try {
                c.execute(sql);
                QFAIL(qPrintable(u"ran: "_s + sql));
            } catch (const DbException &e) {
                QCOMPARE(e.error().hresult, DbError::Unspecified);
                QCOMPARE(e.error().source, sourceFor(backend));
                QVERIFY2(!e.error().description.isEmpty(), qPrintable(sql));
                QVERIFY(e.error().formatted().startsWith(
                    u"(80004005) Unspecified error\r\nSource - "_s));
            }
        }
        // The connection stays usable after failures.
        QCOMPARE(c.execute(u"SELECT COUNT(*) FROM Rank"_s).intField(0), 0);
    } catch (const DbException &e) {
        QFAIL(e.what());
    }
}

void TstDbConnection::oneStatementPerExecution()
{
    try {
        QFETCH(Backend, backend);
        TestDatabase db(backend, m_folder.path());
        QVERIFY2(db.isValid(), qPrintable(db.errorString()));
        QVERIFY(db.exec(u"INSERT INTO Rank (ORankID,RankName) VALUES  ('1' ,'keep')"_s));
        DbConnection c = db.connect();

        // A position named by the administrator, put into the statement as it is.
        const QString insert = u"INSERT INTO Rank (ORankID,RankName) VALUES  ('%1' ,'%2')"_s;
        for (const QString &name : { u"x'); DELETE FROM Rank; --"_s, u"x')  ;  DROP TABLE Rank"_s,
                 u"x'); INSERT INTO Rank (ORankID) VALUES (99); SELECT ('"_s }) {
            try {
                c.execute(insert.arg(2).arg(name));
                QFAIL(qPrintable(u"ran: "_s + name));
            } catch (const DbException &e) {
                QCOMPARE(e.error().hresult, DbError::Unspecified);
                QCOMPARE(e.error().source, sourceFor(backend));
            }
        }
        QCOMPARE(
            db.column(u"SELECT RankName FROM Rank ORDER BY ORankID"_s), QStringList { u"keep"_s });

        // A quote breaks its own statement and nothing more; ';' inside a value is fine.
        QVERIFY_THROWS_EXCEPTION(DbException, c.execute(insert.arg(3).arg(u"O'Brien"_s)));
        c.execute(insert.arg(4).arg(u"a;b; DELETE FROM Rank"_s));
        c.execute(u"DELETE FROM CONTENTS where OCONTENTSID=%1;"_s.arg(7));
        QCOMPARE(db.column(u"SELECT RankName FROM Rank ORDER BY ORankID"_s),
            QStringList({ u"keep"_s, u"a;b; DELETE FROM Rank"_s }));
    } catch (const DbException &e) {
        QFAIL(e.what());
    }
}

void TstDbConnection::statementsTakeEffectOneByOne()
{
    try {
        QFETCH(Backend, backend);
        TestDatabase db(backend, m_folder.path());
        QVERIFY2(db.isValid(), qPrintable(db.errorString()));
        DbConnection writer = db.connect();
        DbConnection reader = db.connect();

        writer.execute(u"DELETE FROM Rank"_s);
        writer.execute(u"INSERT INTO Rank (ORankID,RankName) VALUES  ('1' ,'a')"_s);
        // Visible to another connection at once: no transaction is open.
        QCOMPARE(reader.execute(u"SELECT COUNT(*) FROM Rank"_s).intField(0), 1);
        try {
            writer.execute(u"INSERT INTO Rank (ORankID,RankName) VALUES  ('2' ,'b'"_s);
            QFAIL("a broken statement ran");
        } catch (const DbException &) { }
        writer.execute(u"INSERT INTO Rank (ORankID,RankName) VALUES  ('3' ,'c')"_s);
        // A failure part-way leaves what ran before and after it in place.
        QCOMPARE(reader.execute(u"SELECT COUNT(*) FROM Rank"_s).intField(0), 2);
        writer = DbConnection();
        QCOMPARE(db.column(u"SELECT RankName FROM Rank ORDER BY ORankID"_s),
            QStringList({ u"a"_s, u"c"_s }));
    } catch (const DbException &e) {
        QFAIL(e.what());
    }
}

void TstDbConnection::sqliteSettings_data()
{
    QTest::addColumn<Backend>("backend");
    QTest::newRow("sqlite-file") << Backend::SqliteFile;
    QTest::newRow("sqlite-odbc") << Backend::SqliteOdbc;
}

void TstDbConnection::sqliteSettings()
{
    try {
        QFETCH(Backend, backend);
        TestDatabase db(backend, m_folder.path());
        QVERIFY2(db.isValid(), qPrintable(db.errorString()));
        DbConnection c = db.connect();
        QCOMPARE(c.dialect(), SqlDialect::Sqlite);
        QCOMPARE(c.execute(u"PRAGMA journal_mode"_s).textField(0).toLower(), u"wal"_s);
        QCOMPARE(c.execute(u"PRAGMA synchronous"_s).intField(0), 1); // NORMAL
        QCOMPARE(c.execute(u"PRAGMA busy_timeout"_s).intField(0), 5000);
        QCOMPARE(c.execute(u"PRAGMA wal_autocheckpoint"_s).intField(0), 10000);
        // Autocommit: each statement is its own transaction, none is left open.
        c.execute(u"INSERT INTO Rank (ORankID,RankName) VALUES  ('1' ,'a')"_s);
        QVERIFY_THROWS_EXCEPTION(DbException, c.execute(u"COMMIT"_s));
        QVERIFY(QFile::exists(db.filePath() + u"-wal"_s));
    } catch (const DbException &e) {
        QFAIL(e.what());
    }
}

void TstDbConnection::connectionReleasedWithLastHandle()
{
    try {
        QFETCH(Backend, backend);
        TestDatabase db(backend, m_folder.path());
        QVERIFY2(db.isValid(), qPrintable(db.errorString()));
        QVERIFY(db.exec(u"INSERT INTO Rank (ORankID,RankName) VALUES  ('1' ,'a')"_s));
        QVERIFY(QSqlDatabase::connectionNames().isEmpty());

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
        QVERIFY(QSqlDatabase::connectionNames().isEmpty());

        if (backend == Backend::PostgresOdbc) {
            // Dropping without force fails while any session is connected.
            QVERIFY2(db.drop(false), qPrintable(db.errorString()));
        } else {
            // The last connection to close checkpoints and removes the WAL file.
            QVERIFY(!QFile::exists(db.filePath() + u"-wal"_s));
            QVERIFY(db.drop(false));
            QVERIFY(!QFile::exists(db.filePath()));
        }
    } catch (const DbException &e) {
        QFAIL(e.what());
    }
}

void TstDbConnection::connectionPerThread()
{
    QFETCH(Backend, backend);
    TestDatabase db(backend, m_folder.path());
    QVERIFY2(db.isValid(), qPrintable(db.errorString()));
    const QString connectionString = db.connectionString();

    // The loading thread and the user-interface thread each use their own
    // connection at the same time.
    constexpr int threads = 3;
    constexpr int rows = 150;
    QAtomicInt failures = 0;
    QList<QThread *> workers;
    for (int t = 0; t < threads; ++t) {
        workers.append(QThread::create([&, t] {
            try {
                DbConnection c = DbConnection::open(connectionString);
                for (int i = 0; i < rows; ++i) {
                    c.execute(
                        u"INSERT INTO Relation (OMemberID,OGroupID,ORankID,Position, IsGuestRelation) VALUES  ('%1' ,'%2' ,'%3','%4', 0)"_s
                            .arg(i)
                            .arg(t)
                            .arg(0)
                            .arg(i));
                    Recordset set
                        = c.execute(u"SELECT COUNT(*) FROM Relation WHERE OGroupID=%1"_s.arg(t));
                    if (set.intField(0) != i + 1)
                        failures.fetchAndAddRelaxed(1);
                }
            } catch (const DbException &e) {
                qWarning("%s", e.what());
                failures.fetchAndAddRelaxed(1);
            }
        }));
    }
    for (QThread *worker : workers)
        worker->start();
    for (QThread *worker : workers) {
        QVERIFY(worker->wait(300000));
        delete worker;
    }
    QCOMPARE(failures.loadRelaxed(), 0);
    QCOMPARE(db.count(u"Relation"_s), threads * rows);
    QVERIFY(QSqlDatabase::connectionNames().isEmpty());
}

void TstDbConnection::emptyHandle()
{
    DbConnection none;
    QVERIFY(none.isNull());
    QCOMPARE(none.source(), QString());
    try {
        none.execute(u"SELECT 1"_s);
        QFAIL("an empty handle ran a statement");
    } catch (const DbException &e) {
        QCOMPARE(e.error().hresult, DbError::InvalidPointer);
        QCOMPARE(e.error().formatted(), u"(80004003) Invalid pointer\r\nSource - \r\nDesc - "_s);
    }
    QVERIFY_THROWS_EXCEPTION(DbException, SchemaInstaller::install(none));
}

QTEST_GUILESS_MAIN(TstDbConnection)
// On an SQLite file the record set reads the driver's statement itself; every
// storage class must come out as Qt's own SQLite driver gives it.
void TstDbConnection::sqliteFileReadsAsQtDriver()
{
    TestDatabase db(Backend::SqliteFile, m_folder.path());
    QVERIFY2(db.isValid(), qPrintable(db.errorString()));
    const QString sql = u"SELECT 7, -9000000000, 2.5, 'Zhang 张伟', '', x'00ff41', NULL, '12'"_s;
    QList<QVariant> expected;
    {
        QSqlDatabase qt = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"reference"_s);
        qt.setDatabaseName(db.filePath());
        QVERIFY(qt.open());
        QSqlQuery query(qt);
        QVERIFY(query.exec(sql) && query.next());
        for (int i = 0; i < 8; ++i)
            expected.append(query.value(i));
    }
    QSqlDatabase::removeDatabase(u"reference"_s);

    try {
        DbConnection c = db.connect();
        Recordset set = c.execute(sql);
        QCOMPARE(set.fieldCount(), 8);
        QCOMPARE(set.fieldName(3), u"'Zhang 张伟'"_s);
        for (int i = 0; i < 8; ++i) {
            const QVariant value = set.value(i);
            QCOMPARE(value.metaType(), expected.at(i).metaType());
            QCOMPARE(value.isNull(), expected.at(i).isNull());
            QCOMPARE(value, expected.at(i));
            QCOMPARE(set.isNull(i), i == 6);
        }
        QCOMPARE(set.intField(0), 7);
        QVERIFY_THROWS_EXCEPTION(DbException, set.intField(1)); // beyond 32 bits
        QCOMPARE(set.intField(2), 2); // halves go to the even neighbour
        QCOMPARE(set.textField(3), u"Zhang 张伟"_s);
        QVERIFY(set.textField(4).isEmpty());
        QCOMPARE(set.textField(6), QString());
        QVERIFY_THROWS_EXCEPTION(DbException, set.intField(6));
        QCOMPARE(set.intField(7), 12);
        QCOMPARE(set.textField(0), u"7"_s);
    } catch (const DbException &e) {
        QFAIL(e.what());
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

// Where the build cannot use the driver's own handle, every statement runs
// through QSqlQuery: callers must not see a difference, in types, NULLs,
// conversions or failures.
void TstDbConnection::qtDriverPathGivesTheSameResults()
{
    const QStringList statements = {
        u"INSERT INTO Rank (ORankID,RankName) VALUES  ('2' ,'经理')"_s,
        u"INSERT INTO Rank (ORankID,RankName) VALUES  ('1' ,'100%d')"_s,
        u"INSERT INTO AccessToken \t\t\t\t(OMemberID, MessageOn, ChatOn, FileTransferOn, TTSOn, "
        "VoiceToPhoneOn, OneToOneCallOn, SMSOn, VoipOn) \t\t\tVALUES \t\t\t\t( "
        "'7','1','0','1','0','1','0','1','0') "_s,
        u"INSERT INTO VoipInfo \t\t\t\t(OMemberID, ID, Pass) \t\t\tVALUES \t\t\t\t( '7', "
        "'', 'p w') "_s,
        u"INSERT INTO Rank (ORankID,RankName) VALUES  ('1' ,'twice')"_s, // duplicate key
        u"SELECT ORankID,RankName FROM Rank ORDER BY ORankID"_s,
        u"SELECT * FROM AccessToken"_s,
        u"SELECT OMemberID, ID, Pass FROM VoipInfo"_s,
        u"SELECT 7, -9000000000, 2.5, 'Zhang 张伟', '', x'00ff41', NULL, '12'"_s,
        u"SELECT ORankID FROM Rank WHERE 1 = 0"_s,
        u"UPDATE Rank SET RankName = NULL WHERE ORankID = 2"_s,
        u"SELECT RankName FROM Rank WHERE ORankID = 2"_s,
        u"DELETE FROM Rank"_s,
        u"SELECT COUNT(*) FROM Rank"_s,
        u"SELECT x FROM NoSuchTable"_s,
        u"-- nothing"_s,
        u"/* nothing */ ;"_s,
    };
    TestDatabase direct(Backend::SqliteFile, m_folder.path(), u"direct.db"_s);
    TestDatabase viaQt(Backend::SqliteFile, m_folder.path(), u"qt.db"_s);
    QVERIFY2(direct.isValid(), qPrintable(direct.errorString()));
    QVERIFY2(viaQt.isValid(), qPrintable(viaQt.errorString()));
    try {
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
    } catch (const DbException &e) {
        QFAIL(e.what());
    }
}

// A statement can fail while stepping, before the first row or between rows;
// both surface as DbException with SQLite's message, and the connection goes on.
void TstDbConnection::sqliteStepFailures()
{
    TestDatabase db(Backend::SqliteFile, m_folder.path());
    QVERIFY2(db.isValid(), qPrintable(db.errorString()));
    DbConnection c = db.connect();
    try {
        c.execute(u"SELECT abs(-9223372036854775807 - 1)"_s);
        QFAIL("the overflow was not reported");
    } catch (const DbException &e) {
        QCOMPARE(e.error().source, u"QSQLITE"_s);
        QVERIFY2(e.error().description.contains(u"overflow"_s), qPrintable(e.error().description));
    }
    try {
        Recordset set = c.execute(
            u"SELECT abs(v) FROM (SELECT 1 AS v UNION ALL SELECT -9223372036854775807 - 1)"_s);
        QCOMPARE(set.intField(0), 1);
        try {
            set.moveNext();
            QFAIL("the overflow on the second row was not reported");
        } catch (const DbException &e) {
            QVERIFY2(
                e.error().description.contains(u"overflow"_s), qPrintable(e.error().description));
        }
        QVERIFY(set.isEOF());
        // Reading on while the first set is still open, and writing beside it.
        Recordset ranks = c.execute(u"SELECT COUNT(*) FROM Rank"_s);
        c.execute(u"INSERT INTO Rank (ORankID,RankName) VALUES ('1','a')"_s);
        QCOMPARE(ranks.intField(0), 0);
        QCOMPARE(c.execute(u"SELECT COUNT(*) FROM Rank"_s).intField(0), 1);
        // Text of comments only runs nothing.
        QCOMPARE(c.execute(u"-- nothing"_s).state(), int(Recordset::Closed));
    } catch (const DbException &e) {
        QFAIL(e.what());
    }
}

#include "tst_dbconnection.moc"
