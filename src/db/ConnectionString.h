#pragma once

#include <QString>

// How a connection string is opened here: the Access driver strings open the
// SQLite file named by DBQ; every other string goes to unixODBC as it stands.
struct ConnectionTarget
{
    QString qtDriver; // "QSQLITE" or "QODBC"
    QString databaseName; // the file for QSQLITE, the whole string for QODBC
    QString odbcDriver; // the DRIVER= value, braces removed (empty for none)
};

ConnectionTarget connectionTargetFor(const QString &connectionString);

// The value of one "key=value" pair of an ODBC connection string (keys ignore
// case, surrounding blanks and one pair of braces are removed); empty when absent.
QString connectionStringValue(const QString &connectionString, const QString &key);
