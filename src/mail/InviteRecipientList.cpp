#include "InviteRecipientList.h"

#include "MailAddress.h"

bool InviteRecipientList::add(const InviteRecipient &recipient)
{
    InviteRecipient taken = recipient;
    taken.email = recipient.email.trimmed();
    if (!MailAddress::isUsable(taken.email) || contains(taken.email))
        return false;
    m_recipients.append(taken);
    return true;
}

bool InviteRecipientList::contains(const QString &email) const
{
    // Mail systems treat addresses without regard to case.
    const QString wanted = email.trimmed();
    for (const InviteRecipient &listed : m_recipients) {
        if (listed.email.compare(wanted, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}
