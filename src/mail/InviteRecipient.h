#pragma once

#include <QString>

// One member as the invitation mail composer is given it: name, e-mail,
// user ID and password, straight from the member's row.
struct InviteRecipient
{
    QString name;
    QString email;
    QString userId;
    QString password;

    friend bool operator==(const InviteRecipient &, const InviteRecipient &) = default;
};
