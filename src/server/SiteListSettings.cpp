#include "SiteListSettings.h"

#include "CodePage.h"
#include "ProfileFile.h"

using namespace Qt::StringLiterals;

const QString SiteListSettings::DefaultSiteName = u"Velmar Messenger"_s;
const QString SiteListSettings::DefaultSiteAddress = u"http://www.velmar.com"_s;
const QString SiteListSettings::TooManyText = u"已经超过规定,添加失败."_s;
const QString SiteListSettings::Forbidden = u"|"_s;

namespace {
const QString Section = u"SettingInfo"_s;
} // namespace

SiteListSettings::SiteListSettings(QString profilePath)
    : m_profilePath(std::move(profilePath))
{ }

Site SiteListSettings::row(const Site &site)
{
    return { site.name.isEmpty() ? site.address : site.name, site.address };
}

QList<Site> SiteListSettings::parse(const QString &stored)
{
    QList<Site> sites;
    if (stored.isEmpty())
        return sites;
    const QStringList pieces = stored.mid(1).split(u'|', Qt::SkipEmptyParts);
    for (qsizetype i = 0; i < pieces.size(); i += 2)
        sites.append({ pieces.at(i), i + 1 < pieces.size() ? pieces.at(i + 1) : QString() });
    return sites;
}

QList<Site> SiteListSettings::load()
{
    ProfileFile profile(m_profilePath);
    QList<Site> rows;
    // The old single address has no default: a server that never had one has
    // nothing to move.
    const QString single = profile.readString(Section, u"HomePageURL"_s, QString(), 260);
    if (!single.isEmpty()) {
        rows.append(row({ u"网站主页"_s, u"http://"_s + single }));
        profile.writeString(Section, u"HomePageURL"_s, QString());
    }
    const QString list = profile.readString(
        Section, u"HomePageURL2"_s, u"|%1|%2|"_s.arg(DefaultSiteName, DefaultSiteAddress), 5200);
    for (const Site &site : parse(list))
        rows.append(row(site));
    return rows;
}

QString SiteListSettings::format(const QList<Site> &rows)
{
    QString text = rows.isEmpty() ? QString() : u"|"_s;
    for (const Site &site : rows)
        text += site.name + u'|' + site.address + u'|';
    return text;
}

bool SiteListSettings::save(const QList<Site> &rows)
{
    return ProfileFile(m_profilePath).writeString(Section, u"HomePageURL2"_s, format(rows));
}

QString SiteListSettings::refusal(const QString &name, const QString &address)
{
    for (const QChar c : Forbidden) {
        if (name.contains(c) || address.contains(c))
            return u"在显示的网站地址下面输入说明文字.\n\t%1"_s.arg(Forbidden);
    }
    if (name.isEmpty() && address.isEmpty())
        return u"请输入参数."_s;
    const CodePage codePage = CodePage::system();
    if (codePage.byteLength(name) > 255 || codePage.byteLength(address) > 255)
        return u"输入的地址文字必须小于256byte."_s;
    return {};
}
