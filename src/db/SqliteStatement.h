#pragma once

#include <QString>
#include <QVariant>

struct sqlite3;
struct sqlite3_stmt;

// One statement compiled on the SQLite handle that the Qt SQLite driver holds
// open. Reading a 100,000-row table through QSqlQuery converts every column of
// every row to a QVariant through SQLite's UTF-16 translation; here a column
// is converted only when it is asked for, straight from SQLite's UTF-8.
// Values come out as the Qt driver gives them: INTEGER as qlonglong, REAL as
// double, TEXT as QString, BLOB as QByteArray, NULL as a null QString variant.
class SqliteStatement
{
public:
    enum class Step { Row, Done, Error };
    // SQLite's storage classes, with its numbering.
    enum class Type { Integer = 1, Float = 2, Text = 3, Blob = 4, Null = 5 };

    SqliteStatement() = default;
    ~SqliteStatement();
    SqliteStatement(SqliteStatement &&other) noexcept;
    SqliteStatement &operator=(SqliteStatement &&other) noexcept;
    SqliteStatement(const SqliteStatement &) = delete;
    SqliteStatement &operator=(const SqliteStatement &) = delete;

    // Compiles the first statement of sql. False on failure, with errorText().
    // Text that holds only comments or blanks compiles to nothing: isEmpty().
    bool prepare(sqlite3 *db, const QString &sql);
    bool isEmpty() const { return m_statement == nullptr; }

    Step step();
    // SQLite's message for the last failure on the handle.
    QString errorText() const;

    int columnCount() const;
    QString columnName(int column) const;
    // The storage class of the column's value in the current row.
    Type type(int column) const;
    // The value read as the type gives it; for a column of another type
    // SQLite converts.
    qint64 integer(int column) const;
    QString text(int column) const;
    QVariant value(int column) const;

private:
    sqlite3 *m_db = nullptr;
    sqlite3_stmt *m_statement = nullptr;
};
