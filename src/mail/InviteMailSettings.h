#pragma once

#include <optional>
#include <QString>

class RegistryHives;

enum class SmtpSecurity { None, StartTls, Tls };

// How invitation mails leave: the SMTP server, its security, the sender and
// the login, and what the composer remembers (subject, office, download
// address). Kept in the console's registry key (HKCU
// Software\Velmar\VelmarManager); the password is never here but in the
// desktop's keyring (SmtpPasswordStore).
struct InviteMailSettings
{
    QString host;
    quint16 port = 0; // 0: the security's usual port
    SmtpSecurity security = SmtpSecurity::StartTls;
    QString sender; // "Name <address>" or "address"
    QString user; // empty: no login
    QString subject; // empty: InviteTemplate::DefaultSubject
    QString office;
    QString downloadUrl;
    QString caFile; // a private CA's certificates; empty: the system's

    static InviteMailSettings read(RegistryHives &hives);
    bool write(RegistryHives &hives) const;

    quint16 effectivePort() const;
    static quint16 defaultPort(SmtpSecurity security); // 25, 587, 465
    static QString securityName(SmtpSecurity security); // "none", "starttls", "tls"
    static std::optional<SmtpSecurity> parseSecurity(const QString &name);
    // "HOST" or "HOST:PORT" (an IPv6 host in brackets); false when malformed.
    static bool parseServer(const QString &text, QString *host, quint16 *port);
};
