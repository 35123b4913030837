#pragma once

#include "InviteMailSettings.h"

#include <QByteArray>
#include <QString>

typedef void CURL;

// Where and how mails are handed to the SMTP server.
struct SmtpAccount
{
    QString host;
    quint16 port = 25;
    SmtpSecurity security = SmtpSecurity::StartTls;
    QString user; // empty: no login
    QString password;
    QString caFile; // empty: the system's certificate store
    int timeoutSeconds = 60;
};

// What became of one mail: accepted, or refused with curl's reason and the
// server's own answer when it gave one ("550 5.1.1 <x@y>: ...").
struct SmtpResult
{
    bool ok = false;
    QString error; // curl's message
    QString serverReply; // the last reply of the server, when it refused
    QString text() const;
};

// Sends mails over SMTP with libcurl, one recipient per mail. The one
// connection is kept for the mails that follow. Blocking: run it off the
// user-interface thread.
class SmtpSender final
{
public:
    explicit SmtpSender(SmtpAccount account);
    ~SmtpSender();
    SmtpSender(const SmtpSender &) = delete;
    SmtpSender &operator=(const SmtpSender &) = delete;

    SmtpResult send(const QString &from, const QString &to, const QByteArray &message);

    // "smtp://host:port" or "smtps://host:port" (IPv6 hosts in brackets).
    static QByteArray url(const SmtpAccount &account);

private:
    SmtpAccount m_account;
    CURL *m_curl = nullptr;
};
