#pragma once

#include <memory>
#include <QString>
#include <QVariant>

struct RecordsetPrivate;
struct DbConnectionPrivate;
class DbConnection;
class QSqlQuery;
class SqliteStatement;

// A forward-only record set. Field lookup by name ignores case (PostgreSQL
// returns lower-case column names). Field access on a closed set or past the
// end raises DbException. A record set keeps its connection open until it is
// closed or destroyed, and belongs to the thread of its connection.
class Recordset
{
public:
    enum State { Closed = 0, Open = 1 };

    // A closed record set, as a statement that returns no rows gives.
    Recordset();
    ~Recordset();
    Recordset(Recordset &&) noexcept;
    Recordset &operator=(Recordset &&) noexcept;

    // True past the last row, and for a closed set.
    bool isEOF() const;
    // Raises DbException on a closed set, at the end, or when fetching fails.
    void moveNext();
    int state() const;
    // Releases the rows; closing a closed set does nothing.
    void close();

    // The value converted to a 32-bit signed integer (numbers, and text that
    // reads as a number); NULL and other text raise DbException.
    qint32 intField(const QString &name) const;
    qint32 intField(int index) const;
    // As above, with NULL read as valueForNull (columns without NOT NULL).
    qint32 intField(int index, qint32 valueForNull) const;
    // Raises DbException; NULL reads as empty.
    QString textField(const QString &name) const;
    QString textField(int index) const;
    bool isNull(const QString &name) const;
    bool isNull(int index) const;

    // The raw value as the driver gives it (a null QVariant for NULL).
    QVariant value(const QString &name) const;
    QVariant value(int index) const;
    int fieldCount() const;
    // The position of the first column of that name, for reading many rows
    // by position; raises DbException when there is none.
    int fieldIndex(QStringView name) const;
    // The column's name as the database reports it (lower case on PostgreSQL).
    QString fieldName(int index) const;

private:
    friend class DbConnection;
    Recordset(std::shared_ptr<DbConnectionPrivate> connection, QSqlQuery &&query);
    Recordset(std::shared_ptr<DbConnectionPrivate> connection, SqliteStatement &&statement);
    // Steps to the next row; raises DbException when reading fails.
    void fetch();
    void checkReadable(int index) const;
    qint32 toNumber(int index, const QString *columnName, const qint32 *valueForNull) const;
    std::unique_ptr<RecordsetPrivate> d;
};
