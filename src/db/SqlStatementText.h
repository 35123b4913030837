#pragma once

#include <functional>
#include <QString>
#include <QStringList>
#include <QStringView>

// The database behind a connection, as far as statement texts are concerned.
enum class SqlDialect { Unknown, Sqlite, SqlServer, PostgreSql, MySql };

// Reads statement texts the way the databases read them: where the literals,
// quoted names and comments are, and where one statement ends.
class SqlStatementText
{
public:
    // True when running text could execute a second statement: a ';' outside
    // literals, quoted names and comments that is followed by anything but
    // white space. Every reading the database might apply is tried (with and
    // without backslash escapes, ...); one that finds a second statement is enough.
    static bool hasSecondStatement(QStringView text, SqlDialect dialect);

    // Whether the dialect takes [Name] as a quoted name.
    static bool acceptsBrackets(SqlDialect dialect);

    // Replaces each [Name] outside literals and comments by quote(Name). A
    // bracket pair that cannot be a name ("[1]") is left alone.
    static QString rewriteBrackets(const QString &text, SqlDialect dialect,
        const std::function<QString(const QString &)> &quote);

    // Splits a script into its statements at the ';' that end them; comments
    // are dropped and so are parts with nothing else in them.
    static QStringList splitScript(const QString &script, SqlDialect dialect);
};
