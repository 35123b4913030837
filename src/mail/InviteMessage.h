#pragma once

#include "MailAddress.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

// One invitation as it goes on the wire: a MIME multipart/alternative
// message in UTF-8 with a plain-text part derived from the HTML and the HTML
// part, both quoted-printable; Subject and display names as RFC 2047 encoded
// words; CR LF line ends throughout.
class InviteMessage final
{
public:
    struct Parts
    {
        MailAddress from;
        MailAddress to;
        QString subject;
        QString html;
        QDateTime date;
    };

    static QByteArray build(const Parts &parts);

    // The header text: unchanged when it is printable ASCII, else encoded
    // words of at most 75 characters, folded onto continuation lines.
    static QByteArray encodedHeader(const QString &text, int firstLineUsed);
    // "Name <a@b>" with the name quoted or encoded as needed.
    static QByteArray mailbox(const MailAddress &address);
    static QByteArray quotedPrintable(const QByteArray &bytes);
    // What a reader without HTML sees: the text of the page, with line breaks
    // where the blocks end and link targets after their text.
    static QString htmlToText(const QString &html);
};
