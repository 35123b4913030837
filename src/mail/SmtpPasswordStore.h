#pragma once

#include <QString>

// The SMTP login's password in the desktop's keyring (the Secret Service on
// Linux, the credential store on Windows), through QtKeychain. Never in a
// file: QtKeychain's plain-file fallback stays off, so a desktop without a
// keyring keeps the password for the session only. Each call waits for its
// keyring job in a local event loop.
class SmtpPasswordStore final
{
public:
    static const QString DefaultService; // "VelmarManager SMTP"

    explicit SmtpPasswordStore(QString service = DefaultService);

    struct Result
    {
        bool ok = false;
        bool notFound = false; // the keyring answered, and holds none
        QString password;
        QString error;
    };

    // "user@host:port": one password per login and server.
    static QString accountKey(const QString &user, const QString &host, quint16 port);

    Result read(const QString &account) const;
    bool write(const QString &account, const QString &password, QString *error) const;
    bool remove(const QString &account, QString *error) const;

private:
    QString m_service;
};
