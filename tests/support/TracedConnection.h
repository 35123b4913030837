#pragma once

#include "DbConnection.h"
#include "SqlTrace.h"

#include <QStringList>

class TestDatabase;

// A connection whose statements are written to a trace file, so that a test
// sees exactly what the console sent.
class TracedConnection
{
public:
    TracedConnection(const TestDatabase &db, const QString &tracePath);
    DbConnection &connection() { return m_connection; }
    QStringList statements() const;

private:
    QString m_path;
    SqlTrace m_trace;
    DbConnection m_connection;
};
