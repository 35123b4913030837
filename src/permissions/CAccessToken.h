#pragma once

#include <array>
#include <QString>
#include <QtGlobal>

// One member's feature permissions: eight one-byte flags, each 0 or 1, in the
// order of the permission table (and of the AccessToken columns).
class CAccessToken
{
public:
    enum Feature {
        MessageOn = 0,
        ChatOn,
        FileTransferOn,
        TTSOn,
        VoiceToPhoneOn,
        OneToOneCallOn,
        SMSOn,
        VoipOn,
    };
    static constexpr int FeatureCount = 8;

    // Every flag off.
    CAccessToken() = default;
    virtual ~CAccessToken();
    CAccessToken(const CAccessToken &) = default;
    CAccessToken &operator=(const CAccessToken &) = default;

    // The record a member gets when shown without one: the first seven flags
    // on, VoipOn off.
    static CAccessToken defaults();
    // The record of a newly created member: the first seven flags on, VoipOn
    // on exactly when hasVoipAccount.
    static CAccessToken forNewMember(bool hasVoipAccount);

    bool flag(Feature feature) const { return m_flags[feature] != 0; }
    quint8 rawFlag(Feature feature) const { return m_flags[feature]; }
    // Sets one flag only, without the rule below.
    void setFlag(Feature feature, bool on) { m_flags[feature] = on ? 1 : 0; }

    // The rule the permission grid applies to every change: file transfer needs
    // instant messaging, so turning MessageOn off also turns FileTransferOn off,
    // and turning FileTransferOn on also turns MessageOn on. Other flags change
    // alone.
    void applyFlagRule(Feature feature, bool on);

    // The AccessToken column of a feature ("MessageOn", ...).
    static QString columnName(Feature feature);
    // The grid title of a feature ("即时通讯", ...).
    static QString title(Feature feature);

    bool operator==(const CAccessToken &other) const { return m_flags == other.m_flags; }

private:
    std::array<quint8, FeatureCount> m_flags {};
};
