#include "InviteMessage.h"

#include <QLocale>
#include <QRegularExpression>
#include <QUuid>

using namespace Qt::StringLiterals;

namespace {

constexpr int MaxEncodedWord = 75;

// A header value never carries a line break of its own: it would start a
// header (or a body) of the sender's choosing.
QString singleLine(const QString &text)
{
    QString line = text;
    for (QChar &c : line) {
        if (c == u'\r' || c == u'\n' || c == u'\t')
            c = u' ';
    }
    return line;
}

bool isPlainAscii(const QString &text)
{
    for (const QChar c : text) {
        if (c.unicode() < 0x20 || c.unicode() > 0x7E)
            return false;
    }
    return true;
}

QByteArray crlf(const QString &text)
{
    QString normal = text;
    normal.replace(u"\r\n"_s, u"\n"_s);
    normal.replace(u'\r', u'\n');
    return normal.toUtf8().replace("\n", "\r\n");
}

// "Sun, 01 Mar 2026 09:30:00 +0800", in English whatever the locale.
QByteArray dateHeader(const QDateTime &date)
{
    const int offset = date.offsetFromUtc() / 60;
    const QString zone = u"%1%2%3"_s.arg(QChar(offset < 0 ? u'-' : u'+'))
                             .arg(std::abs(offset) / 60, 2, 10, QChar(u'0'))
                             .arg(std::abs(offset) % 60, 2, 10, QChar(u'0'));
    return (QLocale::c().toString(date, u"ddd, dd MMM yyyy hh:mm:ss "_s) + zone).toUtf8();
}

QByteArray boundary()
{
    return "=_velmar_" + QUuid::createUuid().toByteArray(QUuid::Id128);
}

} // namespace

QByteArray InviteMessage::encodedHeader(const QString &input, int firstLineUsed)
{
    const QString text = singleLine(input);
    if (isPlainAscii(text))
        return text.toUtf8();
    // Each word is "=?UTF-8?B?" + base64 + "?=", at most 75 characters, and
    // fills what is left of its line (76 characters); characters are never
    // split across words. The space between two words is not part of the text.
    constexpr int wrapper = 12;
    constexpr int lineLength = 76;
    QByteArray out;
    int used = firstLineUsed;
    for (qsizetype i = 0; i < text.size();) {
        const int separator = out.isEmpty() ? 0 : 1;
        const int room = std::min(lineLength - used - separator, MaxEncodedWord) - wrapper;
        const int maxBytes = room / 4 * 3;
        if (maxBytes < 4 && !out.isEmpty()) {
            out += "\r\n";
            used = 0;
            continue;
        }
        QByteArray chunk;
        while (i < text.size()) {
            const qsizetype length = text.at(i).isHighSurrogate() && i + 1 < text.size() ? 2 : 1;
            const QByteArray bytes = text.mid(i, length).toUtf8();
            if (!chunk.isEmpty() && chunk.size() + bytes.size() > std::max(maxBytes, 4))
                break;
            chunk += bytes;
            i += length;
        }
        const QByteArray encoded = "=?UTF-8?B?" + chunk.toBase64() + "?=";
        if (separator) {
            out += ' ';
            ++used;
        }
        out += encoded;
        used += int(encoded.size());
    }
    return out;
}

QByteArray InviteMessage::mailbox(const MailAddress &address)
{
    const QByteArray angle = '<' + address.address.toUtf8() + '>';
    const QString name = singleLine(address.name).trimmed();
    if (name.isEmpty())
        return angle;
    if (!isPlainAscii(name))
        return encodedHeader(name, 10) + ' ' + angle;
    QString quoted = name;
    quoted.replace(u"\\"_s, u"\\\\"_s);
    quoted.replace(u"\""_s, u"\\\""_s);
    return '"' + quoted.toUtf8() + "\" " + angle;
}

QByteArray InviteMessage::quotedPrintable(const QByteArray &bytes)
{
    static const char hex[] = "0123456789ABCDEF";
    QByteArray out;
    out.reserve(bytes.size() * 3 / 2);
    int column = 0;
    auto put = [&](const QByteArray &piece) {
        // A soft break keeps every line within 76 characters.
        if (column + piece.size() > 75) {
            out += "=\r\n";
            column = 0;
        }
        out += piece;
        column += int(piece.size());
    };
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto c = static_cast<unsigned char>(bytes.at(i));
        if (c == '\r' && i + 1 < bytes.size() && bytes.at(i + 1) == '\n') {
            out += "\r\n";
            column = 0;
            ++i;
            continue;
        }
        const bool lineEnds = i + 1 == bytes.size() || bytes.at(i + 1) == '\r';
        // A dot at the start of a line is encoded too: some relays still
        // handle a lone "." line badly.
        // So is the "F" of a line starting "From ", which mbox files mangle.
        const bool lineStart = column == 0
            && (c == '.' || (c == 'F' && QByteArrayView(bytes).sliced(i).startsWith("From ")));
        const bool literal = (c >= 33 && c <= 126 && c != '=' && !lineStart)
            || ((c == ' ' || c == '\t') && !lineEnds);
        if (literal)
            put(QByteArray(1, char(c)));
        else
            put(QByteArray("=") + hex[c >> 4] + hex[c & 0xF]);
    }
    return out;
}

QString InviteMessage::htmlToText(const QString &html)
{
    QString text = html;
    static const QRegularExpression hidden(u"<(head|style|script|title)\\b.*?</\\1\\s*>"_s,
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression comment(
        u"<!--.*?-->"_s, QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression link(
        u"<a\\b[^>]*?href\\s*=\\s*[\"']([^\"']*)[\"'][^>]*>(.*?)</a\\s*>"_s,
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression item(
        u"<li\\b[^>]*>"_s, QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression cell(
        u"</t[dh]\\s*>"_s, QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression block(
        u"<(br|/p|/div|/tr|/h[1-6]|/li|/table|/ul|/ol|p|div|h[1-6])\\b[^>]*>"_s,
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression tag(u"<[^>]*>"_s);
    static const QRegularExpression spaces(u"[ \\t\\r\\n]+"_s);
    text.remove(hidden);
    text.remove(comment);
    // Line breaks of the source mean nothing in HTML.
    text.replace(spaces, u" "_s);
    text.replace(link, u"\\2 <\\1>"_s);
    // A link whose text is its address needs it once.
    static const QRegularExpression doubled(u"(\\S+) <\\1>"_s);
    text.replace(doubled, u"\\1"_s);
    text.replace(item, u"\n- "_s);
    text.replace(cell, u" "_s);
    text.replace(block, u"\n"_s);
    text.remove(tag);

    // Entities last, so that an escaped "<" stays text.
    static const QRegularExpression entity(u"&(#[0-9]+|#[xX][0-9a-fA-F]+|[a-zA-Z]+);"_s);
    QString decoded;
    qsizetype last = 0;
    for (const QRegularExpressionMatch &m : entity.globalMatch(text)) {
        decoded += QStringView(text).mid(last, m.capturedStart() - last);
        const QString name = m.captured(1);
        QString replacement = m.captured(0);
        if (name.startsWith(u'#')) {
            bool ok = false;
            const uint code = name.at(1).toLower() == u'x' ? name.mid(2).toUInt(&ok, 16)
                                                           : name.mid(1).toUInt(&ok, 10);
            if (ok && code > 0 && code <= 0x10FFFF)
                replacement = QString::fromUcs4(reinterpret_cast<const char32_t *>(&code), 1);
        } else if (name == u"amp"_s) {
            replacement = u"&"_s;
        } else if (name == u"lt"_s) {
            replacement = u"<"_s;
        } else if (name == u"gt"_s) {
            replacement = u">"_s;
        } else if (name == u"quot"_s) {
            replacement = u"\""_s;
        } else if (name == u"apos"_s) {
            replacement = u"'"_s;
        } else if (name == u"nbsp"_s) {
            replacement = u" "_s;
        }
        decoded += replacement;
        last = m.capturedEnd();
    }
    decoded += QStringView(text).mid(last);

    QStringList lines;
    bool blank = true;
    for (const QString &line : decoded.split(u'\n')) {
        const QString trimmed = line.trimmed();
        if (trimmed.isEmpty()) {
            if (!blank)
                lines.append(QString());
            blank = true;
            continue;
        }
        lines.append(trimmed);
        blank = false;
    }
    while (!lines.isEmpty() && lines.constLast().isEmpty())
        lines.removeLast();
    return lines.join(u'\n') + u'\n';
}

QByteArray InviteMessage::build(const Parts &parts)
{
    const QByteArray mark = boundary();
    const QString domain = parts.from.domain().isEmpty() ? u"localhost"_s : parts.from.domain();
    QByteArray out;
    out += "Date: " + dateHeader(parts.date) + "\r\n";
    out += "From: " + mailbox(parts.from) + "\r\n";
    out += "To: " + mailbox(parts.to) + "\r\n";
    out += "Subject: " + encodedHeader(parts.subject, 9) + "\r\n";
    out += "Message-ID: <" + QUuid::createUuid().toByteArray(QUuid::WithoutBraces) + '@'
        + domain.toUtf8() + ">\r\n";
    out += "MIME-Version: 1.0\r\n";
    out += "Content-Type: multipart/alternative; boundary=\"" + mark + "\"\r\n";
    out += "\r\n";
    out += "This is a multi-part message in MIME format.\r\n";
    const auto part = [&](const char *type, const QString &body) {
        out += "\r\n--" + mark + "\r\n";
        out += QByteArray("Content-Type: ") + type + "; charset=UTF-8\r\n";
        out += "Content-Transfer-Encoding: quoted-printable\r\n\r\n";
        out += quotedPrintable(crlf(body));
    };
    part("text/plain", htmlToText(parts.html));
    part("text/html", parts.html);
    out += "\r\n--" + mark + "--\r\n";
    return out;
}
