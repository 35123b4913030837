#include "SmtpTestServer.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace {
const QString Python = u"/usr/bin/python3"_s;

const char ParseScript[] = R"(
import email, email.policy, json, sys
msg = email.message_from_bytes(sys.stdin.buffer.read(), policy=email.policy.default)
def mailbox(header):
    a = header.addresses[0]
    return {"name": a.display_name, "address": a.addr_spec}
parts = [p for p in msg.walk()]
out = {
    "subject": str(msg["subject"]),
    "from": mailbox(msg["from"]),
    "to": mailbox(msg["to"]),
    "date": str(msg["date"]),
    "messageId": str(msg["message-id"]),
    "types": [p.get_content_type() for p in parts],
    "plain": msg.get_body(("plain",)).get_content(),
    "html": msg.get_body(("html",)).get_content(),
    "defects": len(msg.defects) + sum(len(p.defects) for p in parts),
}
json.dump(out, sys.stdout)
)";
} // namespace

SmtpTestServer::~SmtpTestServer()
{
    if (m_process.state() != QProcess::NotRunning) {
        // Closing its standard input ends it; a kill only if it hangs.
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(5000)) {
            m_process.kill();
            m_process.waitForFinished(5000);
        }
    }
}

QString SmtpTestServer::caFile() const
{
    return m_dir.filePath(u"cert.pem"_s);
}

bool SmtpTestServer::start(Mode mode, bool requireLogin, QString *error)
{
    if (!m_dir.isValid() || !QDir(m_dir.path()).mkpath(u"mail"_s)) {
        *error = u"no temporary folder"_s;
        return false;
    }
    QStringList arguments { QStringLiteral(VELMAR_SMTP_TEST_SERVER), m_dir.filePath(u"mail"_s),
        u"--mode"_s,
        mode == Mode::Plain ? u"plain"_s : (mode == Mode::StartTls ? u"starttls"_s : u"tls"_s) };
    if (mode != Mode::Plain) {
        QProcess openssl;
        openssl.start(u"openssl"_s,
            { u"req"_s, u"-x509"_s, u"-newkey"_s, u"rsa:2048"_s, u"-nodes"_s, u"-days"_s, u"2"_s,
                u"-subj"_s, u"/CN=localhost"_s, u"-addext"_s,
                u"subjectAltName=DNS:localhost,IP:127.0.0.1"_s, u"-keyout"_s,
                m_dir.filePath(u"key.pem"_s), u"-out"_s, caFile() });
        if (!openssl.waitForFinished(60000) || openssl.exitCode() != 0) {
            *error = u"openssl: "_s + QString::fromUtf8(openssl.readAllStandardError());
            return false;
        }
        arguments << u"--cert"_s << caFile() << u"--key"_s << m_dir.filePath(u"key.pem"_s);
    }
    if (requireLogin)
        arguments << u"--auth"_s;
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(Python, arguments);
    if (!m_process.waitForStarted(10000)) {
        *error = m_process.errorString();
        return false;
    }
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(20000)) {
            *error = u"the SMTP test server printed no port"_s;
            return false;
        }
    }
    m_port = quint16(m_process.readLine().trimmed().toUInt());
    return m_port != 0;
}

int SmtpTestServer::messageCount() const
{
    return int(QDir(m_dir.filePath(u"mail"_s)).entryList({ u"*.eml"_s }, QDir::Files).size());
}

QByteArray SmtpTestServer::message(int n) const
{
    QFile file(m_dir.filePath(u"mail/%1.eml"_s.arg(n)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QJsonObject SmtpTestServer::envelope(int n) const
{
    QFile file(m_dir.filePath(u"mail/%1.json"_s.arg(n)));
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                          : QJsonObject();
}

QJsonObject SmtpTestServer::parse(const QByteArray &message, QString *error)
{
    QProcess python;
    python.start(Python, { u"-c"_s, QString::fromUtf8(ParseScript) });
    python.write(message);
    python.closeWriteChannel();
    if (!python.waitForFinished(30000) || python.exitCode() != 0) {
        *error = QString::fromUtf8(python.readAllStandardError());
        return {};
    }
    return QJsonDocument::fromJson(python.readAllStandardOutput()).object();
}
