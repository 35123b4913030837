#include "DbSession.h"

#include "CRegistry.h"
#include "MessageService.h"
#include "ProfileFile.h"
#include "Recordset.h"

#include <QDebug>
#include <QMutexLocker>

using namespace Qt::StringLiterals;

DbSession::DbSession(const RegistryHives &hives, QString profilePath, QString accessDatabasePath,
    MessageService &messages, SqlTrace *trace)
    : m_hives(hives)
    , m_profilePath(std::move(profilePath))
    , m_accessDatabasePath(std::move(accessDatabasePath))
    , m_messages(messages)
    , m_trace(trace)
{ }

DbConnection DbSession::OpenDBConnection()
{
    qDebug("OpenDBConnection() \n");
    // A remote database address means the server's database is not for this
    // console: every later use of the empty handle fails with Invalid pointer.
    const QString remoteAddress
        = ProfileFile(m_profilePath).readString(u"DBInfo"_s, u"DBAddr"_s, QString(), 128);
    if (!remoteAddress.isEmpty())
        return DbConnection();
    return openConnection();
}

QString DbSession::connectionString() const
{
    QString value;
    if (readRegistryString(m_hives, RegistryRoot::LocalMachine,
            u"SOFTWARE\\Velmar\\Services\\Database"_s, u"ConnectionString"_s, value)
        == 1)
        return value;
    return u"DRIVER={Microsoft Access Driver (*.mdb)};DBQ=%1;"_s.arg(m_accessDatabasePath);
}

DbConnection DbSession::openConnection()
{
    try {
        return DbConnection::open(connectionString(), m_trace);
    } catch (const DbException &e) {
        recordError(e.error());
        MessageService::Box box;
        box.text = e.error().formatted();
        box.title = e.error().systemMessage();
        box.buttons = MessageService::Buttons::Ok;
        box.icon = MessageService::Icon::None;
        box.parent = nullptr;
        m_messages.showMessage(box);
    }
    return DbConnection();
}

int DbSession::readTextField(
    Recordset &set, const QString &name, QString &text, int *wasNull, bool substituteNull)
{
    text.clear();
    try {
        const QVariant value = set.value(name);
        if (!value.isNull()) {
            text = value.toString();
        } else {
            if (substituteNull)
                text = u"(null)"_s;
            if (wasNull)
                *wasNull = 1;
        }
    } catch (const DbException &e) {
        recordError(e.error());
        return 0;
    }
    return 1;
}

QString DbSession::lastErrorText() const
{
    QMutexLocker lock(&m_errorMutex);
    return m_lastErrorText;
}

void DbSession::recordError(const DbError &error)
{
    const QString text = error.formatted();
    QMutexLocker lock(&m_errorMutex);
    m_lastErrorText = text;
}

void DbSession::setTrace(SqlTrace *trace)
{
    m_trace = trace;
}
