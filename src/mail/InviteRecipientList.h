#pragma once

#include "InviteRecipient.h"

#include <QList>

// The recipients of one sending. A member without a usable e-mail address,
// or with the address of one already listed, is not taken: one member, one
// mail, and no mail to nobody.
class InviteRecipientList final
{
public:
    void clear() { m_recipients.clear(); }
    // True when the recipient was taken (its address trimmed).
    bool add(const InviteRecipient &recipient);
    bool contains(const QString &email) const;

    const QList<InviteRecipient> &recipients() const { return m_recipients; }
    qsizetype size() const { return m_recipients.size(); }
    bool isEmpty() const { return m_recipients.isEmpty(); }
    const InviteRecipient &at(qsizetype i) const { return m_recipients.at(i); }

private:
    QList<InviteRecipient> m_recipients;
};
