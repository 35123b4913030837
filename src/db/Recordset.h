#pragma once

#include <QString>

#include <memory>

struct RecordsetPrivate;
class DbConnection;

// A forward-only record set. Field lookup by name ignores case (PostgreSQL
// returns lower-case column names). Field access on a closed set or past the
// end raises DbException.
class Recordset
{
public:
    enum State { Closed = 0, Open = 1 };

    Recordset();
    ~Recordset();
    Recordset(Recordset &&) noexcept;
    Recordset &operator=(Recordset &&) noexcept;

    bool isEOF() const;
    void moveNext();
    int state() const;
    void close();

    qint32 intField(const QString &name) const;
    qint32 intField(int index) const;
    // Raises DbException; NULL reads as empty.
    QString textField(const QString &name) const;
    bool isNull(const QString &name) const;

private:
    friend class DbConnection;
    std::unique_ptr<RecordsetPrivate> d;
};
