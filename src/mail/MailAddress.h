#pragma once

#include <QByteArray>
#include <QString>

// A mailbox: an optional display name and the address.
struct MailAddress
{
    QString name;
    QString address;

    // "Name <a@b>", "<a@b>" or "a@b". The address is empty when the text
    // holds no usable one.
    static MailAddress parse(const QString &text);
    // One '@' with text on both sides, and nothing that would break an SMTP
    // command line or a header (spaces, control characters, angle brackets).
    static bool isUsable(const QString &address);
    // The domain part, for Message-ID.
    QString domain() const;
    QString toString() const;
};
