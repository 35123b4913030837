#include "OnlineAddresses.h"

#include "ConsoleRegistryKey.h"
#include "CRegistry.h"

using namespace Qt::StringLiterals;

namespace {
const QString HomePageValue = u"OnlineHomePage"_s;
const QString SmsPortalValue = u"OnlineSmsPortal"_s;
const QString UpdateFeedValue = u"OnlineUpdateFeed"_s;

QUrl readAddress(CRegistry &registry, const QString &name)
{
    QString text;
    if (!registry.readString(name, text) || !OnlineAddresses::refusal(text).isEmpty())
        return {};
    return QUrl(text.trimmed());
}
} // namespace

OnlineAddresses OnlineAddresses::read(RegistryHives &hives)
{
    OnlineAddresses addresses;
    CRegistry registry(hives, RegistryRoot::CurrentUser);
    if (!registry.openKey(RegistryRoot::CurrentUser, ConsoleRegistryKey))
        return addresses;
    addresses.homePage = readAddress(registry, HomePageValue);
    addresses.smsPortal = readAddress(registry, SmsPortalValue);
    addresses.updateFeed = readAddress(registry, UpdateFeedValue);
    return addresses;
}

bool OnlineAddresses::write(RegistryHives &hives) const
{
    CRegistry registry(hives, RegistryRoot::CurrentUser);
    return registry.createKey(RegistryRoot::CurrentUser, ConsoleRegistryKey)
        && registry.writeString(HomePageValue, homePage.toString())
        && registry.writeString(SmsPortalValue, smsPortal.toString())
        && registry.writeString(UpdateFeedValue, updateFeed.toString());
}

QString OnlineAddresses::refusal(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return {};
    const QUrl url(trimmed, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty()
        || (url.scheme() != u"http"_s && url.scheme() != u"https"_s))
        return u"%1 不是 http:// 或 https:// 开头的网址."_s.arg(trimmed);
    return {};
}
