#include "SchemaInstaller.h"

#include "DbConnection.h"
#include "Recordset.h"

#include <QFile>

using namespace Qt::StringLiterals;

// The schema lives in a static library: its resources must be registered by hand
// (and Q_INIT_RESOURCE must not stand inside a namespace).
static void initSchemaResource()
{
    Q_INIT_RESOURCE(schema);
}

QString SchemaInstaller::scriptFor(SqlDialect dialect)
{
    initSchemaResource();
    QString path;
    switch (dialect) {
    case SqlDialect::Sqlite:
        path = u":/schema/sqlite.sql"_s;
        break;
    case SqlDialect::PostgreSql:
        path = u":/schema/postgresql.sql"_s;
        break;
    case SqlDialect::SqlServer:
    case SqlDialect::MySql:
    case SqlDialect::Unknown:
        return {};
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll());
}

QStringList SchemaInstaller::statementsFor(SqlDialect dialect)
{
    return SqlStatementText::splitScript(scriptFor(dialect), dialect);
}

void SchemaInstaller::install(DbConnection &connection)
{
    if (connection.isNull())
        throw DbException(DbError { DbError::InvalidPointer, {}, {} });
    const QStringList statements = statementsFor(connection.dialect());
    if (statements.isEmpty())
        throw DbException(DbError { DbError::Unspecified, connection.source(),
            u"No schema script ships for this database."_s });
    for (const QString &statement : statements)
        connection.execute(statement);
}
