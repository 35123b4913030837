#pragma once

#include "DbConnection.h"
#include "DbError.h"

#include <atomic>
#include <QMutex>
#include <QString>

class MessageService;
class RegistryHives;
class Recordset;
class SqlTrace;

// How every operation reaches the server database: reads the connection string,
// opens one connection per operation and reports failures in the console's format.
class DbSession
{
public:
    DbSession(const RegistryHives &hives, QString profilePath, QString accessDatabasePath,
        MessageService &messages, SqlTrace *trace = nullptr);

    // Returns an empty handle without opening anything when "DBAddr" of "DBInfo"
    // is set; otherwise openConnection().
    DbConnection OpenDBConnection();
    // ConnectionString of the machine hive, else the Access driver string of the
    // local database. A failure is formatted, shown in one message box (no owner,
    // the system text as title) and gives an empty handle.
    DbConnection openConnection();

    QString connectionString() const;
    QString accessDatabasePath() const { return m_accessDatabasePath; }

    // Reads a field as text with NULL detection: the text is emptied, set from
    // the value, or "(null)" when substitute is asked for and the value is NULL;
    // *wasNull is set to 1 for NULL. Returns 1, or 0 after formatting a failure
    // into the error text.
    int readTextField(Recordset &set, const QString &name, QString &text, int *wasNull = nullptr,
        bool substituteNull = false);

    // The last failure text, "(%x) %s\r\nSource - %s\r\nDesc - %s".
    QString lastErrorText() const;
    void recordError(const DbError &error);

    void setTrace(SqlTrace *trace);

private:
    const RegistryHives &m_hives;
    QString m_profilePath;
    QString m_accessDatabasePath;
    MessageService &m_messages;
    std::atomic<SqlTrace *> m_trace;
    mutable QMutex m_errorMutex;
    QString m_lastErrorText;
};
