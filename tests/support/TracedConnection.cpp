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
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return { u"<no trace>"_s };
    QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
    lines.removeLast();
    return lines;
}
