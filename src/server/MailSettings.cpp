#include "MailSettings.h"

#include "ProfileFile.h"

using namespace Qt::StringLiterals;

namespace {
const QString Section = u"SettingInfo"_s;
} // namespace

MailSettings::MailSettings(QString profilePath)
    : m_profilePath(std::move(profilePath))
{ }

MailSettings::Values MailSettings::load() const
{
    const ProfileFile profile(m_profilePath);
    Values values;
    values.forcedMailMode = profile.readInt(Section, u"FORCEDMAILMODE"_s, 0) != 0;
    values.useSso = profile.readInt(Section, u"USESSO"_s, 0) != 0;
    values.ssoUrl = profile.readString(Section, u"SSOURL"_s, QString(), 128);
    return values;
}

QString MailSettings::completedUrl(const QString &url)
{
    return url.left(7).toLower() == u"http://"_s ? url : u"http://"_s + url;
}

bool MailSettings::save(const Values &values)
{
    ProfileFile profile(m_profilePath);
    const QString url = values.useSso ? completedUrl(values.ssoUrl) : values.ssoUrl;
    bool ok = profile.writeString(
        Section, u"FORCEDMAILMODE"_s, values.forcedMailMode ? u"1"_s : u"0"_s);
    ok = profile.writeString(Section, u"USESSO"_s, values.useSso ? u"1"_s : u"0"_s) && ok;
    ok = profile.writeString(Section, u"SSOURL"_s, url) && ok;
    return ok;
}
