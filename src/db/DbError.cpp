#include "DbError.h"

using namespace Qt::StringLiterals;

QString DbError::systemMessage() const
{
    switch (hresult) {
    case Unspecified:
        return u"Unspecified error"_s;
    case InvalidPointer:
        return u"Invalid pointer"_s;
    default:
        break;
    }
    // The dispatch range: codes a dispatch interface raises on its own behalf.
    if (hresult >= 0x80040200u && hresult <= 0x8004FFFFu)
        return u"IDispatch error #%1"_s.arg(int(hresult & 0xFFFFu) - 0x200);
    return u"Unknown error 0x%1"_s.arg(QString::number(hresult, 16).toUpper());
}

QString DbError::formatted() const
{
    // One multi-argument call: a '%1' inside the database's text must stay as it is.
    return u"(%1) %2\r\nSource - %3\r\nDesc - %4"_s.arg(
        QString::number(hresult, 16), systemMessage(), source, description);
}

DbException::DbException(DbError error)
    : m_error(std::move(error))
    , m_what(m_error.formatted().toUtf8())
{ }

const char *DbException::what() const noexcept
{
    return m_what.constData();
}
