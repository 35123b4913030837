#include "DbConnection.h"

#include "ConnectionString.h"
#include "DbConnectionPrivate.h"
#include "Recordset.h"
#include "SqliteStatement.h"
#include "SqlTrace.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlDriver>
#include <QSqlError>
#include <QUrl>
#include <sqlite3.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int busyTimeoutMs = 5000;

DbError errorFrom(const QSqlError &error, const QString &source)
{
    DbError result;
    result.source = source;
    result.description = error.databaseText().trimmed();
    if (result.description.isEmpty())
        result.description = error.driverText().trimmed();
    if (result.description.isEmpty())
        result.description = u"The database reported a failure without a description."_s;
    return result;
}

[[noreturn]] void raise(const QString &source, const QString &description)
{
    throw DbException(DbError { DbError::Unspecified, source, description });
}

// QODBC puts "DSN=" before a string that names neither "DRIVER=" nor "SERVER="
// (literally), and "FILEDSN=" before one that mentions ".dsn"; that would break
// a data source string or a "Driver = {...}" string. The driver key is respelt,
// and a DSN pair is moved to the front with its key left out, so that unixODBC
// sees the pairs as they stand.
QString qodbcDatabaseName(const QString &connectionString)
{
    if (connectionString.contains(u".dsn"_s, Qt::CaseInsensitive)) {
        const QString trimmed = connectionString.trimmed();
        if (trimmed.startsWith(u"FILEDSN="_s, Qt::CaseInsensitive))
            return trimmed.mid(8);
        return connectionString;
    }
    if (connectionString.contains(u"DRIVER="_s, Qt::CaseInsensitive)
        || connectionString.contains(u"SERVER="_s, Qt::CaseInsensitive))
        return connectionString;
    // "Driver = {...}" names a driver too; QODBC recognises only "DRIVER=".
    static const QRegularExpression spacedDriverKey(
        u"(^|;)\\s*DRIVER\\s*="_s, QRegularExpression::CaseInsensitiveOption);
    if (connectionString.contains(spacedDriverKey)) {
        QString normalised = connectionString;
        normalised.replace(spacedDriverKey, u"\\1DRIVER="_s);
        return normalised;
    }
    static const QRegularExpression dsnPair(
        u"(^|;)\\s*DSN\\s*=([^;]*)(;|$)"_s, QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = dsnPair.match(connectionString);
    if (!match.hasMatch())
        return connectionString;
    QString rest = connectionString;
    rest.remove(match.capturedStart(), match.capturedLength());
    if (!match.captured(1).isEmpty() && !match.captured(3).isEmpty())
        rest.insert(match.capturedStart(), u';'); // the pair sat between two others
    QString result = match.captured(2).trimmed();
    if (!rest.trimmed().isEmpty())
        result += u';' + rest;
    return result;
}

SqlDialect dialectFromDriverName(const QString &driver)
{
    const QString name = driver.toLower();
    if (name.contains(u"sqlite"_s))
        return SqlDialect::Sqlite;
    if (name.contains(u"postgres"_s) || name.contains(u"psql"_s))
        return SqlDialect::PostgreSql;
    if (name.contains(u"mysql"_s) || name.contains(u"mariadb"_s))
        return SqlDialect::MySql;
    if (name.contains(u"sql server"_s) || name.contains(u"freetds"_s) || name.contains(u"tds"_s))
        return SqlDialect::SqlServer;
    return SqlDialect::Unknown;
}

SqlDialect detectDialect(QSqlDatabase &db, const ConnectionTarget &target)
{
    if (target.qtDriver == u"QSQLITE"_s)
        return SqlDialect::Sqlite;
    switch (db.driver()->dbmsType()) {
    case QSqlDriver::PostgreSQL:
        return SqlDialect::PostgreSql;
    case QSqlDriver::MySqlServer:
        return SqlDialect::MySql;
    case QSqlDriver::MSSqlServer:
    case QSqlDriver::Sybase:
        return SqlDialect::SqlServer;
    case QSqlDriver::SQLite:
        return SqlDialect::Sqlite;
    default:
        break;
    }
    // QODBC names only some database systems (not SQLite); the driver's name
    // tells most of the rest, and a DSN string names no driver at all.
    const SqlDialect byName = dialectFromDriverName(target.odbcDriver);
    if (byName != SqlDialect::Unknown)
        return byName;
    QSqlQuery probe(db);
    probe.setForwardOnly(true);
    if (probe.exec(u"SELECT sqlite_version()"_s))
        return SqlDialect::Sqlite;
    return SqlDialect::Unknown;
}

void runSetupStatement(DbConnectionPrivate &p, const QString &sql)
{
    QSqlQuery query(p.db);
    query.setForwardOnly(true);
    if (!query.exec(sql))
        throw DbException(errorFrom(query.lastError(), p.source));
}

// Statements whose first word says they return rows get a query object of their
// own (the record set keeps it); all others run on the connection's command query.
bool mayReturnRows(QStringView sql)
{
    qsizetype i = 0;
    while (i < sql.size() && (sql.at(i).isSpace() || sql.at(i) == u'('))
        ++i;
    qsizetype end = i;
    while (end < sql.size() && sql.at(end).isLetter())
        ++end;
    const QStringView word = sql.mid(i, end - i);
    static const QStringList rowKeywords { u"SELECT"_s, u"WITH"_s, u"PRAGMA"_s, u"VALUES"_s,
        u"SHOW"_s, u"EXPLAIN"_s, u"TABLE"_s, u"DESCRIBE"_s, u"EXEC"_s, u"EXECUTE"_s, u"CALL"_s };
    for (const QString &keyword : rowKeywords) {
        if (word.compare(keyword, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

// The handle under a QSQLITE connection. Only where the build checked that
// the driver loads the libsqlite3 linked here (Debian's does) is the handle
// one that our sqlite3_* calls may use; with a driver that keeps its own copy
// of SQLite, connections run through QSqlQuery.
sqlite3 *sqliteHandle(const QSqlDatabase &db)
{
    if (!DbConnection::directSqliteAvailable())
        return nullptr;
    const QVariant handle = db.driver()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3 *const *>(handle.constData());
}

} // namespace

DbConnection::DbConnection() = default;
DbConnection::~DbConnection() = default;
DbConnection::DbConnection(const DbConnection &) = default;
DbConnection &DbConnection::operator=(const DbConnection &) = default;

DbConnection::DbConnection(std::shared_ptr<DbConnectionPrivate> d)
    : d(std::move(d))
{ }

bool DbConnection::directSqliteAvailable()
{
    return VELMAR_SQLITE_DIRECT_HANDLE != 0;
}

DbConnection DbConnection::open(
    const QString &connectionString, SqlTrace *trace, SqliteAccess access)
{
    return open(connectionString, trace, access, false);
}

DbConnection DbConnection::openForReading(const QString &connectionString)
{
    return open(connectionString, nullptr, SqliteAccess::Default, true);
}

QStringList DbConnection::tables() const
{
    if (!d || d->recorder)
        return {};
    QStringList names = d->db.tables(QSql::Tables);
    names += d->db.tables(QSql::Views);
    return names;
}

QString DbConnection::quotedTableName(const QString &name) const
{
    if (!d || d->recorder)
        return name;
    return d->db.driver()->escapeIdentifier(name, QSqlDriver::TableName);
}

DbConnection DbConnection::open(
    const QString &connectionString, SqlTrace *trace, SqliteAccess access, bool readOnly)
{
    if (directSqliteAvailable()) {
        // SQLite's allocation statistics take a process-wide mutex on every
        // malloc and free; nothing here reads them. This must happen before
        // the first connection initialises SQLite, and later calls change
        // nothing. (Our own copy of SQLite would not be the driver's.)
        static const bool statisticsOff = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0) == SQLITE_OK;
        Q_UNUSED(statisticsOff);
    }
    const ConnectionTarget target = connectionTargetFor(connectionString);
    auto p = std::make_shared<DbConnectionPrivate>();
    p->trace = trace;
    p->source = target.qtDriver;
    if (target.qtDriver == u"QODBC"_s && !target.odbcDriver.isEmpty())
        p->source += u": "_s + target.odbcDriver;

    p->db = QSqlDatabase::addDatabase(target.qtDriver, p->name);
    if (!p->db.isValid()) {
        // Creating the connection object is tried a second time before the
        // failure is reported. In QtSql that step only loads the driver plugin,
        // so the second try rarely helps; it costs nothing either.
        p->db = QSqlDatabase();
        QSqlDatabase::removeDatabase(p->name);
        p->db = QSqlDatabase::addDatabase(target.qtDriver, p->name);
        if (!p->db.isValid())
            raise(p->source, u"The Qt SQL driver %1 is not available."_s.arg(target.qtDriver));
    }

    if (target.qtDriver == u"QSQLITE"_s) {
        if (target.databaseName.isEmpty())
            raise(p->source, u"The connection string names no database file (DBQ)."_s);
        // mode=rw: a missing file is an error, as it is for the Access driver,
        // instead of a new empty database.
        QUrl url = QUrl::fromLocalFile(QFileInfo(target.databaseName).absoluteFilePath());
        url.setQuery(readOnly ? u"mode=ro"_s : u"mode=rw"_s);
        p->db.setConnectOptions(u"QSQLITE_OPEN_URI;QSQLITE_BUSY_TIMEOUT=%1"_s.arg(busyTimeoutMs));
        p->db.setDatabaseName(url.toString(QUrl::FullyEncoded));
    } else {
        p->db.setDatabaseName(qodbcDatabaseName(target.databaseName));
    }
    if (!p->db.open())
        throw DbException(errorFrom(p->db.lastError(), p->source));

    p->dialect = detectDialect(p->db, target);
    if (p->dialect == SqlDialect::Sqlite) {
        // A file to read gets only what makes a non-database fail here.
        const QStringList settings = readOnly
            ? QStringList { sqliteSettings().at(0), sqliteSettings().at(1) }
            : sqliteSettings();
        for (const QString &setting : settings)
            runSetupStatement(*p, setting);
        if (access == SqliteAccess::Default)
            p->sqlite = sqliteHandle(p->db);
    }
    if (!SqlStatementText::acceptsBrackets(p->dialect)) {
        p->rewriteBrackets = true;
        const QSqlDriver *driver = p->db.driver();
        p->quoteName = [driver](const QString &name) {
            return driver->escapeIdentifier(name, QSqlDriver::TableName);
        };
    }
    return DbConnection(std::move(p));
}

DbConnection DbConnection::recorder(SqlDialect dialect, std::function<void(const QString &)> sink)
{
    auto p = std::make_shared<DbConnectionPrivate>();
    p->source = u"recorder"_s;
    p->dialect = dialect;
    p->recorder = std::move(sink);
    return DbConnection(std::move(p));
}

QStringList DbConnection::sqliteSettings()
{
    return {
        u"PRAGMA busy_timeout = %1"_s.arg(busyTimeoutMs),
        // SQLite opens the file lazily: reading the schema version makes a file
        // that is not a database fail here and not at the first statement.
        u"PRAGMA schema_version"_s,
        // WAL with synchronous=NORMAL keeps autocommit statements cheap and
        // does not block the server's readers.
        u"PRAGMA journal_mode = WAL"_s,
        u"PRAGMA synchronous = NORMAL"_s,
        // A save commits several hundred thousand single-row statements, each
        // appending the pages it touched to the WAL. Checkpointing every 1,000
        // pages (SQLite's default) copied the same few pages back into the
        // database file and synced it again and again; every 10,000 pages
        // (about 40 MB of WAL) most of that work is gone.
        u"PRAGMA wal_autocheckpoint = 10000"_s,
    };
}

QString DbConnection::source() const
{
    return d ? d->source : QString();
}

SqlDialect DbConnection::dialect() const
{
    return d ? d->dialect : SqlDialect::Unknown;
}

bool DbConnection::usesDirectSqlite() const
{
    return d && d->sqlite;
}

Recordset DbConnection::execute(const QString &sql)
{
    if (!d)
        throw DbException(DbError { DbError::InvalidPointer, {}, {} });
    if (d->recorder) {
        d->recorder(sql);
        return Recordset();
    }
    if (QStringView(sql).trimmed().isEmpty())
        raise(d->source, u"The statement is empty."_s);
    if (SqlStatementText::hasSecondStatement(sql, d->dialect))
        raise(d->source,
            u"The statement was not run: its text holds a second statement after a ';'."_s);

    const QString text = d->rewriteBrackets
        ? SqlStatementText::rewriteBrackets(sql, d->dialect, d->quoteName)
        : sql;
    if (d->trace)
        d->trace->record(text);

    if (d->sqlite)
        return executeOnSqlite(text);
    // SQLite runs nothing for a text of comments only, on its own handle; the
    // Qt driver would call that an error.
    if (d->dialect == SqlDialect::Sqlite
        && (text.contains(u"--"_s) || text.contains(u"/*"_s) || text.contains(u';'))
        && SqlStatementText::splitScript(text, d->dialect).isEmpty())
        return Recordset();

    if (mayReturnRows(text)) {
        QSqlQuery query(d->db);
        query.setForwardOnly(true);
        if (!query.exec(text))
            throw DbException(errorFrom(query.lastError(), d->source));
        if (!query.isSelect())
            return Recordset();
        return Recordset(d, std::move(query));
    }

    QSqlQuery &query = d->commandQuery();
    if (!query.exec(text))
        throw DbException(errorFrom(query.lastError(), d->source));
    if (!query.isSelect())
        return Recordset();
    // Rows after all (INSERT ... RETURNING): the record set takes the query over.
    Recordset rows(d, std::move(query));
    d->command.reset();
    return rows;
}

Recordset DbConnection::executeOnSqlite(const QString &text)
{
    SqliteStatement statement;
    if (!statement.prepare(d->sqlite, text))
        raise(d->source, statement.errorText());
    if (statement.isEmpty())
        return Recordset();
    if (statement.columnCount() > 0)
        return Recordset(d, std::move(statement));
    if (statement.step() == SqliteStatement::Step::Error)
        raise(d->source, statement.errorText());
    return Recordset();
}
