#include "CAccessToken.h"

using namespace Qt::StringLiterals;

CAccessToken::~CAccessToken() = default;

CAccessToken CAccessToken::defaults()
{
    return forNewMember(false);
}

CAccessToken CAccessToken::forNewMember(bool hasVoipAccount)
{
    CAccessToken token;
    for (int f = MessageOn; f < VoipOn; ++f)
        token.m_flags[f] = 1;
    token.m_flags[VoipOn] = hasVoipAccount ? 1 : 0;
    return token;
}

void CAccessToken::applyFlagRule(Feature feature, bool on)
{
    setFlag(feature, on);
    if (feature == MessageOn && !on)
        setFlag(FileTransferOn, false);
    else if (feature == FileTransferOn && on)
        setFlag(MessageOn, true);
}

QString CAccessToken::columnName(Feature feature)
{
    switch (feature) {
    case MessageOn:
        return u"MessageOn"_s;
    case ChatOn:
        return u"ChatOn"_s;
    case FileTransferOn:
        return u"FileTransferOn"_s;
    case TTSOn:
        return u"TTSOn"_s;
    case VoiceToPhoneOn:
        return u"VoiceToPhoneOn"_s;
    case OneToOneCallOn:
        return u"OneToOneCallOn"_s;
    case SMSOn:
        return u"SMSOn"_s;
    case VoipOn:
        return u"VoipOn"_s;
    }
    return {};
}

QString CAccessToken::title(Feature feature)
{
    switch (feature) {
    case MessageOn:
        return u"即时通讯"_s;
    case ChatOn:
        return u"聊天"_s;
    case FileTransferOn:
        return u"文件发送"_s;
    case TTSOn:
        return u"TTS即时通讯"_s;
    case VoiceToPhoneOn:
        return u"视频电话"_s;
    case OneToOneCallOn:
        return u"1:1 对话"_s;
    case SMSOn:
        return u"SMS 短信"_s;
    case VoipOn:
        return u"使用权限"_s;
    }
    return {};
}
