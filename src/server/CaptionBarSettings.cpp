#include "CaptionBarSettings.h"

#include "ProfileFile.h"

#include <QFile>

using namespace Qt::StringLiterals;

const QString CaptionBarSettings::CannotOpenText = u"打开文件失败"_s;
const QString CaptionBarSettings::TooLargeText = u"ICO文件大小不能超过10K"_s;

namespace {
const QString Section = u"SettingInfo"_s;
QString flag(bool on)
{
    return on ? u"1"_s : u"0"_s;
}
} // namespace

CaptionBarSettings::CaptionBarSettings(QString profilePath)
    : m_profilePath(std::move(profilePath))
{ }

CaptionBarSettings::Values CaptionBarSettings::load() const
{
    const ProfileFile profile(m_profilePath);
    Values values;
    values.iconPath = profile.readString(Section, u"UserDefineIconPath"_s, QString(), 260);
    values.captionName = profile.readString(Section, u"CaptionBarName"_s, QString(), 260);
    values.logoPath = profile.readString(Section, u"UserDefineLogoPath"_s, QString(), 260);
    values.defaultIcon = profile.readInt(Section, u"bDefaultIcon"_s, 1) != 0;
    values.defaultLogo = profile.readInt(Section, u"bDefaultLogo"_s, 1) != 0;
    return values;
}

CaptionBarSettings::IconCheck CaptionBarSettings::checkIcon(const QString &path)
{
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return IconCheck::CannotOpen;
    return file.size() > MaxIconBytes ? IconCheck::TooLarge : IconCheck::Accepted;
}

QString CaptionBarSettings::checkLogo(const QString &path)
{
    QFile file(path);
    return !path.isEmpty() && file.open(QIODevice::ReadOnly) ? path : QString();
}

qint32 CaptionBarSettings::version() const
{
    return ProfileFile(m_profilePath).readInt(Section, u"VERSION"_s, 0);
}

bool CaptionBarSettings::save(const Values &values)
{
    ProfileFile profile(m_profilePath);
    bool ok = true;
    if (!values.defaultIcon)
        ok = profile.writeString(Section, u"UserDefineIconPath"_s, values.iconPath) && ok;
    ok = profile.writeString(
             Section, u"UserDefineLogoPath"_s, values.defaultLogo ? QString() : values.logoPath)
        && ok;
    const qint32 previous = qMax(0, version());
    ok = profile.writeString(Section, u"Version"_s, QString::number(qint64(previous) + 1)) && ok;
    ok = profile.writeString(Section, u"bDefaultIcon"_s, flag(values.defaultIcon)) && ok;
    ok = profile.writeString(Section, u"bDefaultLogo"_s, flag(values.defaultLogo)) && ok;
    ok = profile.writeString(Section, u"CaptionBarName"_s, values.captionName) && ok;
    return ok;
}
