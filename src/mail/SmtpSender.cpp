#include "SmtpSender.h"

#include <cstring>
#include <curl/curl.h>
#include <mutex>
#include <QStringList>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

struct Upload
{
    const QByteArray *data = nullptr;
    qsizetype offset = 0;
};

size_t readMessage(char *buffer, size_t size, size_t count, void *userData)
{
    auto *upload = static_cast<Upload *>(userData);
    const auto left = size_t(upload->data->size() - upload->offset);
    const size_t n = std::min(left, size * count);
    std::memcpy(buffer, upload->data->constData() + upload->offset, n);
    upload->offset += qsizetype(n);
    return n;
}

// The server's replies since the client's last command: what it said to the
// command that failed. The client's own lines (the login among them) are
// never kept.
struct Replies
{
    QStringList lines;
    QStringList refusal; // the last reply that was a 4xx or 5xx
    bool afterCommand = false;
};

int watchDialogue(CURL *, curl_infotype type, char *data, size_t size, void *userData)
{
    auto *replies = static_cast<Replies *>(userData);
    if (type == CURLINFO_HEADER_OUT) {
        replies->afterCommand = true;
    } else if (type == CURLINFO_HEADER_IN) {
        if (replies->afterCommand) {
            replies->lines.clear();
            replies->afterCommand = false;
        }
        const QString text = QString::fromUtf8(data, qsizetype(size)).trimmed();
        for (const QString &line : text.split(u'\n', Qt::SkipEmptyParts))
            replies->lines.append(line.trimmed());
        // The goodbye after a refusal must not hide the refusal.
        const QString first = replies->lines.value(0);
        const QChar kind = first.isEmpty() ? QChar() : first.at(0);
        if (kind == u'4' || kind == u'5')
            replies->refusal = replies->lines;
    }
    return 0;
}

} // namespace

QString SmtpResult::text() const
{
    if (ok)
        return serverReply.isEmpty() ? u"OK"_s : serverReply;
    if (serverReply.isEmpty())
        return error;
    return u"%1 (%2)"_s.arg(error, serverReply);
}

namespace {
// libcurl's global set-up, once per process, whichever thread sends first.
CURL *newHandle()
{
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    return curl_easy_init();
}
} // namespace

SmtpSender::SmtpSender(SmtpAccount account)
    : m_account(std::move(account))
    , m_curl(newHandle())
{ }

SmtpSender::~SmtpSender()
{
    if (m_curl)
        curl_easy_cleanup(m_curl);
}

QByteArray SmtpSender::url(const SmtpAccount &account)
{
    const QString host = account.host.contains(u':') ? u"[%1]"_s.arg(account.host) : account.host;
    return (account.security == SmtpSecurity::Tls ? u"smtps://%1:%2"_s : u"smtp://%1:%2"_s)
        .arg(host)
        .arg(account.port)
        .toUtf8();
}

SmtpResult SmtpSender::send(const QString &from, const QString &to, const QByteArray &message)
{
    SmtpResult result;
    if (!m_curl) {
        result.error = u"libcurl could not be initialised"_s;
        return result;
    }
    CURL *curl = m_curl;
    char errorBuffer[CURL_ERROR_SIZE] = {};
    Upload upload { &message, 0 };
    Replies replies;
    const QByteArray address = url(m_account);
    const QByteArray mailFrom = '<' + from.toUtf8() + '>';
    const QByteArray rcpt = '<' + to.toUtf8() + '>';
    const QByteArray user = m_account.user.toUtf8();
    const QByteArray password = m_account.password.toUtf8();
    const QByteArray caFile = m_account.caFile.toUtf8();
    curl_slist *recipients = curl_slist_append(nullptr, rcpt.constData());

    // The options of the previous mail stay set on a reused handle; every
    // one that matters is set anew.
    curl_easy_setopt(curl, CURLOPT_URL, address.constData());
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, errorBuffer);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, long(m_account.timeoutSeconds));
    curl_easy_setopt(curl, CURLOPT_TIMEOUT, long(m_account.timeoutSeconds) * 4);
    curl_easy_setopt(curl, CURLOPT_USE_SSL,
        m_account.security == SmtpSecurity::StartTls ? long(CURLUSESSL_ALL)
                                                     : long(CURLUSESSL_NONE));
    curl_easy_setopt(curl, CURLOPT_CAINFO, caFile.isEmpty() ? nullptr : caFile.constData());
    curl_easy_setopt(curl, CURLOPT_USERNAME, user.isEmpty() ? nullptr : user.constData());
    curl_easy_setopt(curl, CURLOPT_PASSWORD, user.isEmpty() ? nullptr : password.constData());
    curl_easy_setopt(curl, CURLOPT_MAIL_FROM, mailFrom.constData());
    curl_easy_setopt(curl, CURLOPT_MAIL_RCPT, recipients);
    curl_easy_setopt(curl, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(curl, CURLOPT_READFUNCTION, readMessage);
    curl_easy_setopt(curl, CURLOPT_READDATA, &upload);
    curl_easy_setopt(curl, CURLOPT_INFILESIZE_LARGE, curl_off_t(message.size()));
    curl_easy_setopt(curl, CURLOPT_VERBOSE, 1L);
    curl_easy_setopt(curl, CURLOPT_DEBUGFUNCTION, watchDialogue);
    curl_easy_setopt(curl, CURLOPT_DEBUGDATA, &replies);

    const CURLcode code = curl_easy_perform(curl);
    curl_slist_free_all(recipients);
    // Nothing of this mail may outlive the call in the handle.
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, nullptr);
    curl_easy_setopt(curl, CURLOPT_MAIL_RCPT, nullptr);
    curl_easy_setopt(curl, CURLOPT_READDATA, nullptr);
    curl_easy_setopt(curl, CURLOPT_DEBUGDATA, nullptr);

    result.ok = code == CURLE_OK;
    result.serverReply
        = (result.ok || replies.refusal.isEmpty() ? replies.lines : replies.refusal).join(u' ');
    if (!result.ok) {
        result.error = QString::fromUtf8(errorBuffer).trimmed();
        if (result.error.isEmpty())
            result.error = QString::fromUtf8(curl_easy_strerror(code));
        // A failure before the server said anything (refused connection,
        // certificate) has no reply worth showing.
        if (code == CURLE_COULDNT_CONNECT || code == CURLE_COULDNT_RESOLVE_HOST
            || code == CURLE_PEER_FAILED_VERIFICATION || code == CURLE_SSL_CONNECT_ERROR
            || code == CURLE_OPERATION_TIMEDOUT)
            result.serverReply.clear();
    }
    return result;
}
