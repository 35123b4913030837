#pragma once

#include "DbConnection.h"
#include "TempServerDir.h"

#include <functional>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QTest>
#include <QVariant>

class RegistryHives;

// A fresh server database with the schema, on one of the backends the console
// meets: an SQLite file through the Access driver string, the same through the
// SQLite ODBC driver, and PostgreSQL through psqlODBC (a server started by
// scripts/pg-test-server.sh, found through VELMAR_TEST_PG_PORT).
//
//   void tst::load_data() { TestDatabase::addBackends(); }
//   void tst::load()
//   {
//       QFETCH(TestDatabase::Backend, backend);
//       TempServerDir dir;
//       TestDatabase db(backend, dir.programDir());
//       QVERIFY2(db.isValid(), qPrintable(db.errorString()));
//       QVERIFY(db.writeConnectionString(dir.hives()));
//       QVERIFY(db.exec(u"INSERT INTO [Group] (OGroupID, GroupName) VALUES (1, 'A')"_s));
//       ...
//       QCOMPARE(db.count(u"Member"_s, u"IsGuestMember = 0"_s), 3);
//   }
class TestDatabase
{
public:
    enum class Backend { SqliteFile, SqliteOdbc, PostgresOdbc };

    // Both SQLite backends always; PostgresOdbc when VELMAR_TEST_PG_PORT is set.
    static QList<Backend> availableBackends();
    static bool isAvailable(Backend backend);
    // VELMAR_REQUIRE_PG=1 (set by "pg-test-server.sh run"): a missing server fails the tests.
    static bool postgresRequired();
    // "sqlite-file", "sqlite-odbc", "postgres-odbc": the data row names.
    static QString backendName(Backend backend);

    // Data-driven tests: the column "backend" (TestDatabase::Backend) and one row
    // per available backend. When PostgreSQL is required but not there, its row
    // is added anyway and creating its database fails with the reason.
    static void addBackends();
    // The same column with the SQLite file alone: for what does not differ
    // between backends (refusals before any SQL, files beside the database).
    static void addSqliteFileBackend();

    // The statements of a file below tests/data, one a line; blank lines and
    // "--" comments are left out. A file that cannot be read gives one
    // statement that fails, naming it.
    static QStringList statementsFrom(const QString &dataFile);

    // The connection string of a PostgreSQL database on the test server.
    static QString postgresConnectionString(const QString &databaseName);

    // Creates a fresh database with the schema: the SQLite file folder/fileName,
    // or a new PostgreSQL database with a name of its own.
    explicit TestDatabase(Backend backend, const QString &folder,
        const QString &fileName = QStringLiteral("VelmarDB.mdb"));
    // Drops the PostgreSQL database (the SQLite file stays with its folder).
    ~TestDatabase();
    TestDatabase(const TestDatabase &) = delete;
    TestDatabase &operator=(const TestDatabase &) = delete;

    bool isValid() const { return m_valid; }
    // Why creating the database or the last helper call failed.
    QString errorString() const { return m_error; }
    Backend backend() const { return m_backend; }
    // SqliteFile: "DRIVER={Microsoft Access Driver (*.mdb)};DBQ=<file>;"
    // SqliteOdbc: "DRIVER=SQLite3;Database=<file>;"
    // PostgresOdbc: "DRIVER={PostgreSQL
    // Unicode};Server=127.0.0.1;Port=..;Database=..;Uid=postgres;Pwd=;"
    QString connectionString() const { return m_connectionString; }
    QString filePath() const { return m_filePath; } // empty for PostgreSQL
    QString databaseName() const { return m_databaseName; } // empty for SQLite

    // Stores connectionString() as ConnectionString of HKLM SOFTWARE\Velmar\Services\Database.
    bool writeConnectionString(RegistryHives &hives) const;
    // Stores any text there (and nothing else).
    static bool storeConnectionString(RegistryHives &hives, const QString &connectionString);

    // Makes a blocked statement give up within seconds: the SQLite ODBC
    // driver's Timeout in the stored string (its own default is 100 s),
    // PostgreSQL's lock_timeout; the SQLite file waits 5 s anyway.
    bool shortenLockWait(RegistryHives &hives);
    // A connection of its own holding a write lock on the database (on
    // PostgreSQL on `table` alone) until it runs "ROLLBACK"; raises DbException.
    DbConnection holdWriteLock(const QString &table) const;

    // A new connection of its own (statements are checked and rewritten as the
    // console's are); raises DbException.
    DbConnection connect() const;

    // Setup and checks. Each call opens a connection and drops it at its end, so
    // no connection outlives the call. On failure errorString() says why.
    bool exec(const QString &sql);
    bool execAll(const QStringList &statements);
    // The first column of the first row; an invalid QVariant without rows or on failure.
    QVariant scalar(const QString &sql);
    // Every row, every column as the driver gives it (NULL as a null QVariant).
    QList<QVariantList> rows(const QString &sql);
    // The first column of every row as text ("" for NULL).
    QStringList column(const QString &sql);
    // SELECT COUNT(*) FROM table [WHERE where]; -1 on failure.
    qint64 count(const QString &table, const QString &where = QString());

    // Drops the database now: the PostgreSQL database (force: even while
    // connections are open) or the SQLite file with its -wal and -shm files.
    bool drop(bool force = true);

private:
    bool createSqlite(const QString &folder, const QString &fileName);
    bool createPostgres();
    bool fail(const QString &reason);

    Backend m_backend;
    bool m_valid = false;
    bool m_dropped = false;
    QString m_error;
    QString m_connectionString;
    QString m_filePath;
    QString m_databaseName;
};

Q_DECLARE_METATYPE(TestDatabase::Backend)

// Runs a test's body; a DbException out of it fails the test with its text.
template<typename Body> void guarded(Body body)
{
    try {
        body();
    } catch (const DbException &e) {
        QFAIL(e.what());
    }
}

// Runs body(0) .. body(count - 1) at once, each on a thread of its own, and
// waits for all of them: how many returned false or raised DbException (said
// with qWarning).
int runThreads(int count, const std::function<bool(int)> &body);

// Opens a data-driven test over addBackends(): `backend` from the row, a
// temporary server folder `dir` and the row's database `name` in it; the test
// stops when the database cannot be made.
#define VELMAR_BACKEND_DATABASE(name)                                                              \
    QFETCH(TestDatabase::Backend, backend);                                                        \
    TempServerDir dir;                                                                             \
    TestDatabase name(backend, dir.programDir());                                                  \
    QVERIFY2(name.isValid(), qPrintable(name.errorString()))

// The same without a data column, on the SQLite file alone: for what does not
// differ between backends.
#define VELMAR_SQLITE_DATABASE(name)                                                               \
    [[maybe_unused]] const TestDatabase::Backend backend = TestDatabase::Backend::SqliteFile;      \
    TempServerDir dir;                                                                             \
    TestDatabase name(backend, dir.programDir());                                                  \
    QVERIFY2(name.isValid(), qPrintable(name.errorString()))
