#pragma once

#include <QString>

// A member's telephony account as VoipInfo keeps it.
struct VoipAccount
{
    QString id;
    QString password;

    bool operator==(const VoipAccount &) const = default;
};
