#pragma once

#include <QList>
#include <QString>

class DbConnection;

// The columns the load reads as numbers, table by table. A text there, or a
// number beyond 32 bits, stops the load with the database error naming
// column and value, so that nothing is saved over it; the data doctor lists
// every such value with the row it is in.
class NumberColumns final
{
public:
    struct Text
    {
        QString table; // as the statements name it ("[Group]")
        QString column;
        QString row; // "OMemberID=7, MemberID=anna"
        QString value;
    };

    // Every such value (raises DbException).
    static QList<Text> texts(DbConnection &connection);

    // The SQLite ODBC driver hands a text in an integer column over as 0:
    // there the first such value is looked for before anything is read, and
    // raised as the error the load raises where the driver does not hide it.
    static void requireNumbers(DbConnection &connection);
};
