#include "MailAddress.h"

using namespace Qt::StringLiterals;

MailAddress MailAddress::parse(const QString &text)
{
    MailAddress mailbox;
    const QString trimmed = text.trimmed();
    const qsizetype open = trimmed.lastIndexOf(u'<');
    if (open >= 0 && trimmed.endsWith(u'>')) {
        mailbox.name = trimmed.left(open).trimmed();
        if (mailbox.name.size() >= 2 && mailbox.name.startsWith(u'"')
            && mailbox.name.endsWith(u'"'))
            mailbox.name = mailbox.name.mid(1, mailbox.name.size() - 2);
        mailbox.address = trimmed.mid(open + 1, trimmed.size() - open - 2).trimmed();
    } else {
        mailbox.address = trimmed;
    }
    if (!isUsable(mailbox.address))
        mailbox.address.clear();
    return mailbox;
}

bool MailAddress::isUsable(const QString &address)
{
    const qsizetype at = address.lastIndexOf(u'@');
    if (at <= 0 || at == address.size() - 1 || address.count(u'@') != 1)
        return false;
    for (const QChar c : address) {
        if (c.unicode() <= 0x20 || c.unicode() == 0x7F || c == u'<' || c == u'>' || c == u','
            || c.isSpace())
            return false;
    }
    return true;
}

QString MailAddress::domain() const
{
    const qsizetype at = address.lastIndexOf(u'@');
    return at < 0 ? QString() : address.mid(at + 1);
}

QString MailAddress::toString() const
{
    return name.isEmpty() ? address : u"%1 <%2>"_s.arg(name, address);
}
