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
    bool isNull(int column) const;
    // True with the value when the column holds an INTEGER.
    bool integerValue(int column, qint64 *value) const;
    // True with the text when the column holds TEXT.
    bool textValue(int column, QString *text) const;
    QVariant value(int column) const;

private:
    sqlite3 *m_db = nullptr;
    sqlite3_stmt *m_statement = nullptr;
};
