#pragma once

#include "SqlStatementText.h"

#include <QString>
#include <QStringList>

class DbConnection;

// Creates the server's tables and indexes in an empty database. Only the tests,
// the demo and the data generator use it: the database belongs to the server,
// and the console itself never creates or alters a table.
class SchemaInstaller
{
public:
    // The script shipped for a dialect (SQLite or PostgreSQL); empty for others.
    static QString scriptFor(SqlDialect dialect);
    static QStringList statementsFor(SqlDialect dialect);
    // Runs the script statement by statement; raises DbException, also for a
    // database the project ships no script for.
    static void install(DbConnection &connection);
};
