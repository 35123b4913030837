#include "OdbcImportSource.h"

#include "DbError.h"
#include "SqlImportCursor.h"

#include <sql.h>
#include <sqlext.h>

using namespace Qt::StringLiterals;

OdbcImportSource::OdbcImportSource(ImportSourceAddress address, DbConnection connection)
    : ImportSource(std::move(address))
    , m_connection(std::move(connection))
{ }

std::unique_ptr<OdbcImportSource> OdbcImportSource::open(
    const ImportSourceAddress &address, QString *error)
{
    QString connectionString = address.location.trimmed();
    // A bare name is a data source name, as the ODBC administrator lists it.
    if (!connectionString.contains(u'='))
        connectionString = u"DSN=%1;"_s.arg(connectionString);
    try {
        DbConnection connection = DbConnection::openForReading(connectionString);
        return std::unique_ptr<OdbcImportSource>(
            new OdbcImportSource(address, std::move(connection)));
    } catch (const DbException &e) {
        if (error)
            *error = u"无法连接数据源 %1: %2"_s.arg(
                address.location, e.error().formatted().replace(u"\r\n"_s, u"\n"_s));
        return nullptr;
    }
}

QList<OdbcImportSource::DataSource> OdbcImportSource::dataSources()
{
    // SQLDataSources of the driver manager rather than reading odbc.ini:
    // unixODBC alone knows where its files are (ODBCSYSINI, ODBCINI, the
    // user's ~/.odbc.ini, the compiled-in system folder) and how it merges
    // them, and a driver manager other than unixODBC answers the same call.
    QList<DataSource> result;
    SQLHENV env = SQL_NULL_HENV;
    if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &env)))
        return result;
    SQLSetEnvAttr(env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    for (const SQLUSMALLINT scope :
        { SQLUSMALLINT(SQL_FETCH_FIRST_USER), SQLUSMALLINT(SQL_FETCH_FIRST_SYSTEM) }) {
        SQLUSMALLINT direction = scope;
        for (;;) {
            SQLCHAR name[SQL_MAX_DSN_LENGTH + 1] = {};
            SQLCHAR description[512] = {};
            SQLSMALLINT nameLength = 0;
            SQLSMALLINT descriptionLength = 0;
            const SQLRETURN rc = SQLDataSources(env, direction, name, SQLSMALLINT(sizeof name),
                &nameLength, description, SQLSMALLINT(sizeof description), &descriptionLength);
            if (!SQL_SUCCEEDED(rc))
                break;
            DataSource source;
            source.name = QString::fromUtf8(reinterpret_cast<const char *>(name));
            source.description = QString::fromUtf8(reinterpret_cast<const char *>(description));
            source.system = scope == SQL_FETCH_FIRST_SYSTEM;
            result.append(source);
            direction = SQL_FETCH_NEXT;
        }
    }
    SQLFreeHandle(SQL_HANDLE_ENV, env);
    return result;
}

QStringList OdbcImportSource::tables() const
{
    return m_connection.tables();
}

std::unique_ptr<ImportCursor> OdbcImportSource::cursor(const QString &table, QString *error)
{
    return SqlImportCursor::open(m_connection, table, error);
}
