#pragma once

#include "InviteRecipient.h"

// Where the organisation view hands the selected members for an invitation
// mail: the list is cleared, each member is offered and either taken or not,
// and then the composer is shown, or hidden when it took nobody.
class InviteRecipientSink
{
public:
    virtual ~InviteRecipientSink() = default;
    virtual void clearRecipients() = 0;
    virtual bool offerRecipient(const InviteRecipient &recipient) = 0;
    virtual void showComposer() = 0;
    virtual void hideComposer() = 0;
};
