#pragma once

#include "DbError.h"
#include "SqlStatementText.h"

#include <functional>
#include <memory>
#include <QString>
#include <QStringList>

class Recordset;
class SqlTrace;
struct DbConnectionPrivate;

// A reference-counted connection handle. An empty handle is a valid value that
// means no connection is open; any use of it raises InvalidPointer. The
// connection closes when the last handle is dropped. A connection belongs to
// the thread that opened it and is never shared with another.
class DbConnection
{
public:
    DbConnection();
    ~DbConnection();
    DbConnection(const DbConnection &);
    DbConnection &operator=(const DbConnection &);

    // How statements reach an SQLite file: on the Qt driver's own sqlite3
    // handle where the build found the driver to load the libsqlite3 linked
    // here (see directSqliteAvailable), else through QSqlQuery.
    enum class SqliteAccess {
        Default,
        QtDriverOnly, // QSqlQuery even where the handle could be used
    };

    // Opens connectionString (see ConnectionTarget); raises DbException.
    static DbConnection open(const QString &connectionString, SqlTrace *trace = nullptr,
        SqliteAccess access = SqliteAccess::Default);

    // Whether the build found Qt's SQLite driver and the linked libsqlite3 to
    // be one library, so that the driver's handle may be used directly.
    static bool directSqliteAvailable();

    // Opens someone else's database only to read it (the external data
    // import): an SQLite file opens read-only, and none of the settings made
    // for the server's database (WAL, synchronous) are applied, as they
    // would change the file. Raises DbException.
    static DbConnection openForReading(const QString &connectionString);
    // The tables and views the database lists, as the driver names them.
    QStringList tables() const;
    // A table name quoted as this database quotes names.
    QString quotedTableName(const QString &name) const;

    // A handle that runs nothing: every statement given to execute() goes to
    // sink as written and gives an empty record set. The save uses it to put
    // the statements it is about to send into its journal first.
    static DbConnection recorder(SqlDialect dialect, std::function<void(const QString &)> sink);

    // What every connection to an SQLite database runs after opening it.
    static QStringList sqliteSettings();

    bool isNull() const { return !d; }
    // "QSQLITE", "QODBC: PostgreSQL Unicode", ...
    QString source() const;
    // The database behind the connection (Unknown for an empty handle).
    SqlDialect dialect() const;
    // Whether statements run on the SQLite handle itself.
    bool usesDirectSqlite() const;

    // Runs one statement; raises DbException. A text that would run a second
    // statement is refused. The returned record set is forward-only.
    Recordset execute(const QString &sql);

private:
    explicit DbConnection(std::shared_ptr<DbConnectionPrivate> d);
    static DbConnection open(
        const QString &connectionString, SqlTrace *trace, SqliteAccess access, bool readOnly);
    Recordset executeOnSqlite(const QString &text);
    std::shared_ptr<DbConnectionPrivate> d;
    friend class Recordset;
};
