#include "TestDatabase.h"

#include "CRegistry.h"
#include "Recordset.h"
#include "SchemaInstaller.h"

#include <QAtomicInteger>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {

QAtomicInteger<int> databaseCounter;

QString environment(const char *name, const QString &fallback)
{
    const QString value = qEnvironmentVariable(name);
    return value.isEmpty() ? fallback : value;
}

} // namespace

QList<TestDatabase::Backend> TestDatabase::availableBackends()
{
    QList<Backend> backends { Backend::SqliteFile, Backend::SqliteOdbc };
    if (isAvailable(Backend::PostgresOdbc))
        backends.append(Backend::PostgresOdbc);
    return backends;
}

bool TestDatabase::isAvailable(Backend backend)
{
    if (backend == Backend::PostgresOdbc)
        return !qEnvironmentVariableIsEmpty("VELMAR_TEST_PG_PORT");
    return true;
}

bool TestDatabase::postgresRequired()
{
    return qEnvironmentVariable("VELMAR_REQUIRE_PG") == u"1"_s;
}

QString TestDatabase::backendName(Backend backend)
{
    switch (backend) {
    case Backend::SqliteFile:
        return u"sqlite-file"_s;
    case Backend::SqliteOdbc:
        return u"sqlite-odbc"_s;
    case Backend::PostgresOdbc:
        return u"postgres-odbc"_s;
    }
    return {};
}

void TestDatabase::addBackends()
{
    QTest::addColumn<TestDatabase::Backend>("backend");
    QList<Backend> backends = availableBackends();
    if (!backends.contains(Backend::PostgresOdbc)) {
        if (postgresRequired()) {
            // The row fails when its database is created, with the reason.
            backends.append(Backend::PostgresOdbc);
        } else {
            static bool told = false;
            if (!told)
                qInfo("PostgreSQL rows left out: VELMAR_TEST_PG_PORT is not set "
                      "(run through scripts/pg-test-server.sh run -- ...)");
            told = true;
        }
    }
    for (const Backend backend : std::as_const(backends))
        QTest::newRow(backendName(backend).toUtf8().constData()) << backend;
}

void TestDatabase::addSqliteFileBackend()
{
    QTest::addColumn<TestDatabase::Backend>("backend");
    QTest::newRow("sqlite-file") << Backend::SqliteFile;
}

QStringList TestDatabase::statementsFrom(const QString &dataFile)
{
    QFile file(QStringLiteral(VELMAR_TEST_DATA_DIR "/") + dataFile);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return { u"cannot read "_s + file.fileName() };
    QStringList statements;
    for (const QString &line : QString::fromUtf8(file.readAll()).split(u'\n')) {
        if (!line.trimmed().isEmpty() && !line.startsWith(u"--"_s))
            statements << line;
    }
    return statements;
}

QString TestDatabase::postgresConnectionString(const QString &databaseName)
{
    return u"DRIVER={PostgreSQL Unicode};Server=%1;Port=%2;Database=%3;Uid=%4;Pwd=;"_s.arg(
        environment("VELMAR_TEST_PG_HOST", u"127.0.0.1"_s),
        qEnvironmentVariable("VELMAR_TEST_PG_PORT"), databaseName,
        environment("VELMAR_TEST_PG_USER", u"postgres"_s));
}

TestDatabase::TestDatabase(Backend backend, const QString &folder, const QString &fileName)
    : m_backend(backend)
{
    if (backend == Backend::PostgresOdbc)
        m_valid = createPostgres();
    else
        m_valid = createSqlite(folder, fileName);
}

TestDatabase::~TestDatabase()
{
    if (m_valid && m_backend == Backend::PostgresOdbc && !m_dropped)
        drop(true);
}

bool TestDatabase::fail(const QString &reason)
{
    m_error = reason;
    return false;
}

bool TestDatabase::createSqlite(const QString &folder, const QString &fileName)
{
    if (!QDir().mkpath(folder))
        return fail(u"cannot create the folder %1"_s.arg(folder));
    m_filePath = QDir(folder).absoluteFilePath(fileName);
    for (const QString &suffix : { u""_s, u"-wal"_s, u"-shm"_s })
        QFile::remove(m_filePath + suffix);
    // A file of length zero is an empty SQLite database; the Access driver
    // string opens only a file that exists.
    QFile file(m_filePath);
    if (!file.open(QIODevice::WriteOnly))
        return fail(u"cannot create %1: %2"_s.arg(m_filePath, file.errorString()));
    file.close();
    m_connectionString = m_backend == Backend::SqliteFile
        ? u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=%1;"_s.arg(m_filePath)
        : u"DRIVER=SQLite3;Database=%1;"_s.arg(m_filePath);
    try {
        DbConnection connection = connect();
        SchemaInstaller::install(connection);
    } catch (const DbException &e) {
        return fail(
            u"creating the schema in %1 failed: %2"_s.arg(m_filePath, e.error().formatted()));
    }
    return true;
}

bool TestDatabase::createPostgres()
{
    if (!isAvailable(Backend::PostgresOdbc))
        return fail(u"PostgreSQL is required (VELMAR_REQUIRE_PG=1) but VELMAR_TEST_PG_PORT is not "
                    "set; run the tests through scripts/pg-test-server.sh run -- ..."_s);
    m_databaseName = u"velmar_test_%1_%2"_s.arg(QCoreApplication::applicationPid())
                         .arg(databaseCounter.fetchAndAddRelaxed(1) + 1);
    m_connectionString = postgresConnectionString(m_databaseName);
    try {
        DbConnection server = DbConnection::open(postgresConnectionString(u"postgres"_s));
        server.execute(u"DROP DATABASE IF EXISTS %1"_s.arg(m_databaseName));
        server.execute(u"CREATE DATABASE %1"_s.arg(m_databaseName));
    } catch (const DbException &e) {
        return fail(u"creating the PostgreSQL database %1 failed: %2"_s.arg(
            m_databaseName, e.error().formatted()));
    }
    try {
        DbConnection connection = connect();
        SchemaInstaller::install(connection);
    } catch (const DbException &e) {
        drop(true);
        return fail(
            u"creating the schema in %1 failed: %2"_s.arg(m_databaseName, e.error().formatted()));
    }
    return true;
}

bool TestDatabase::writeConnectionString(RegistryHives &hives) const
{
    // An installation on another database than the local Access file says so
    // in "SetDBType"; otherwise start-up points the string at that file.
    CRegistry registry(hives, RegistryRoot::LocalMachine);
    return registry.createKey(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\Services\\Database"_s)
        && (m_backend == Backend::SqliteFile
            || registry.writeString(
                u"SetDBType"_s, m_backend == Backend::PostgresOdbc ? u"PGSQL"_s : u"SQLITE"_s))
        && storeConnectionString(hives, m_connectionString);
}

bool TestDatabase::storeConnectionString(RegistryHives &hives, const QString &connectionString)
{
    CRegistry registry(hives, RegistryRoot::LocalMachine);
    return registry.createKey(RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\Services\\Database"_s)
        && registry.writeString(u"ConnectionString"_s, connectionString);
}

bool TestDatabase::shortenLockWait(RegistryHives &hives)
{
    if (m_backend == Backend::SqliteOdbc)
        return storeConnectionString(hives, m_connectionString + u"Timeout=3000;"_s);
    if (m_backend == Backend::PostgresOdbc)
        return exec(u"ALTER DATABASE "_s + m_databaseName + u" SET lock_timeout = '1s'"_s);
    return true;
}

DbConnection TestDatabase::holdWriteLock(const QString &table) const
{
    DbConnection holder = connect();
    if (m_backend == Backend::PostgresOdbc) {
        holder.execute(u"BEGIN"_s);
        holder.execute(u"LOCK TABLE %1 IN ACCESS EXCLUSIVE MODE"_s.arg(table));
    } else {
        holder.execute(u"BEGIN EXCLUSIVE"_s);
    }
    return holder;
}

int runThreads(int count, const std::function<bool(int)> &body)
{
    QAtomicInt failures = 0;
    std::vector<std::unique_ptr<QThread>> workers;
    for (int t = 0; t < count; ++t) {
        workers.emplace_back(QThread::create([&, t] {
            try {
                if (!body(t))
                    failures.fetchAndAddRelaxed(1);
            } catch (const DbException &e) {
                qWarning("%s", e.what());
                failures.fetchAndAddRelaxed(1);
            }
        }));
    }
    for (const auto &worker : workers)
        worker->start();
    for (const auto &worker : workers)
        worker->wait();
    return failures.loadRelaxed();
}

DbConnection TestDatabase::connect() const
{
    return DbConnection::open(m_connectionString);
}

bool TestDatabase::exec(const QString &sql)
{
    try {
        DbConnection connection = connect();
        connection.execute(sql);
    } catch (const DbException &e) {
        return fail(e.error().formatted() + u"\r\nStatement - "_s + sql);
    }
    return true;
}

bool TestDatabase::execAll(const QStringList &statements)
{
    try {
        DbConnection connection = connect();
        for (const QString &sql : statements) {
            try {
                connection.execute(sql);
            } catch (const DbException &e) {
                return fail(e.error().formatted() + u"\r\nStatement - "_s + sql);
            }
        }
    } catch (const DbException &e) {
        return fail(e.error().formatted());
    }
    return true;
}

QList<QVariantList> TestDatabase::rows(const QString &sql)
{
    QList<QVariantList> result;
    try {
        DbConnection connection = connect();
        Recordset set = connection.execute(sql);
        while (!set.isEOF()) {
            QVariantList row;
            for (int i = 0; i < set.fieldCount(); ++i)
                row.append(set.value(i));
            result.append(row);
            set.moveNext();
        }
    } catch (const DbException &e) {
        fail(e.error().formatted() + u"\r\nStatement - "_s + sql);
        return {};
    }
    return result;
}

QVariant TestDatabase::scalar(const QString &sql)
{
    const QList<QVariantList> result = rows(sql);
    if (result.isEmpty() || result.constFirst().isEmpty())
        return {};
    return result.constFirst().constFirst();
}

QStringList TestDatabase::column(const QString &sql)
{
    QStringList result;
    for (const QVariantList &row : rows(sql))
        result.append(
            row.isEmpty() || row.constFirst().isNull() ? QString() : row.constFirst().toString());
    return result;
}

qint64 TestDatabase::count(const QString &table, const QString &where)
{
    QString sql = u"SELECT COUNT(*) FROM "_s + table;
    if (!where.isEmpty())
        sql += u" WHERE "_s + where;
    const QVariant value = scalar(sql);
    bool ok = false;
    const qint64 n = value.toLongLong(&ok);
    return ok ? n : -1;
}

bool TestDatabase::drop(bool force)
{
    if (m_backend != Backend::PostgresOdbc) {
        for (const QString &suffix : { u"-wal"_s, u"-shm"_s })
            QFile::remove(m_filePath + suffix);
        if (QFileInfo::exists(m_filePath) && !QFile::remove(m_filePath))
            return fail(u"cannot remove %1"_s.arg(m_filePath));
        m_dropped = true;
        return true;
    }
    try {
        DbConnection server = DbConnection::open(postgresConnectionString(u"postgres"_s));
        server.execute(u"DROP DATABASE IF EXISTS %1%2"_s.arg(
            m_databaseName, force ? u" WITH (FORCE)"_s : QString()));
    } catch (const DbException &e) {
        return fail(e.error().formatted());
    }
    m_dropped = true;
    return true;
}
