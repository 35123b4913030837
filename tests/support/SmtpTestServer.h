#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

// A private SMTP server for one test (tests/support/smtp_test_server.py on
// Debian's python3 with aiosmtpd): 127.0.0.1 on a free port, every message
// it accepts kept as N.eml with its envelope in N.json. Recipients whose
// address starts with "refuse" get 550. With TLS modes a self-signed
// certificate is made with openssl for the run; caFile() trusts it.
class SmtpTestServer final
{
public:
    enum class Mode { Plain, StartTls, Tls };
    static constexpr const char *User = "inviter";
    static constexpr const char *Password = "s3cret-pw";

    SmtpTestServer() = default;
    ~SmtpTestServer();
    SmtpTestServer(const SmtpTestServer &) = delete;
    SmtpTestServer &operator=(const SmtpTestServer &) = delete;

    // False with the reason when the server did not come up.
    bool start(Mode mode, bool requireLogin, QString *error);
    quint16 port() const { return m_port; }
    QString caFile() const;

    int messageCount() const;
    // The n-th message received (from 1) and its envelope.
    QByteArray message(int n) const;
    QJsonObject envelope(int n) const;

    // Runs python3 with the email package on a message: JSON with subject,
    // from, to (decoded display names and addresses), the content types in
    // order, the plain text and the HTML.
    static QJsonObject parse(const QByteArray &message, QString *error);

private:
    QTemporaryDir m_dir;
    QProcess m_process;
    quint16 m_port = 0;
};
