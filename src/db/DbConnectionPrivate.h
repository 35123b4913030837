#pragma once

#include "SqlStatementText.h"

#include <functional>
#include <optional>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

class SqlTrace;
struct sqlite3;

// What a connection handle shares: one QSqlDatabase connection under a name of
// its own, removed when the last handle and the last record set let go of it.
struct DbConnectionPrivate
{
    DbConnectionPrivate();
    ~DbConnectionPrivate();
    DbConnectionPrivate(const DbConnectionPrivate &) = delete;
    DbConnectionPrivate &operator=(const DbConnectionPrivate &) = delete;

    // The query object that runs statements returning no rows; kept, since the
    // save sends hundreds of thousands of them.
    QSqlQuery &commandQuery();

    QString name;
    QSqlDatabase db;
    QString source;
    SqlDialect dialect = SqlDialect::Unknown;
    bool rewriteBrackets = false;
    std::function<QString(const QString &)> quoteName;
    SqlTrace *trace = nullptr;
    // The Qt SQLite driver's own handle, when the connection is an SQLite
    // file: statements then run on it directly (see SqliteStatement).
    sqlite3 *sqlite = nullptr;
    // Set on a recording handle (DbConnection::recorder), which has no database.
    std::function<void(const QString &)> recorder;
    std::optional<QSqlQuery> command;
};
