#pragma once

#include <exception>
#include <QString>

// A database failure as the console reports it: HRESULT, system text, source
// (the driver) and the database's own description.
struct DbError
{
    static constexpr quint32 Unspecified = 0x80004005; // driver or database error
    static constexpr quint32 InvalidPointer = 0x80004003; // use of an empty connection

    quint32 hresult = Unspecified;
    QString source;
    QString description;

    // "Unspecified error", "Invalid pointer", "IDispatch error #%d", "Unknown error 0x%0lX".
    QString systemMessage() const;
    // "(%x) %s\r\nSource - %s\r\nDesc - %s"
    QString formatted() const;
};

// Raised by statement execution and field access; each operation catches it
// and reports it its own way.
class DbException : public std::exception
{
public:
    explicit DbException(DbError error);
    const DbError &error() const { return m_error; }
    const char *what() const noexcept override;

private:
    DbError m_error;
    QByteArray m_what;
};
