#include "TracedConnection.h"

#include "TestDatabase.h"

#include <QFile>

using namespace Qt::StringLiterals;

TracedConnection::TracedConnection(const TestDatabase &db, const QString &tracePath)
    : m_path(tracePath)
    , m_trace(tracePath)
    , m_connection(DbConnection::open(db.connectionString(), &m_trace))
{ }

QStringList TracedConnection::statements() const
{
    QString error;
    const QStringList statements = SqlTrace::readStatements(m_path, &error);
    if (!error.isEmpty())
        return { u"<no trace>"_s };
    return statements;
}
