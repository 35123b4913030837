#pragma once

#include "SqlStatementText.h"

#include <functional>
#include <optional>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

class SqlTrace;

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
    std::optional<QSqlQuery> command;
};
