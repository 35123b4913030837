#pragma once

#include <QString>
#include <QUrl>

class RegistryHives;

// The addresses behind the 帮助 menu's online entries, kept in the console's
// registry key (HKCU Software\Velmar\VelmarManager): the organisation's web
// site ("网站主页"), its SMS portal, and the release feed "更新版本" reads.
// An address that is not set leaves its entry greyed.
struct OnlineAddresses
{
    QUrl homePage;
    QUrl smsPortal;
    QUrl updateFeed;

    static OnlineAddresses read(RegistryHives &hives);
    bool write(RegistryHives &hives) const;

    // The refusal of a typed address, or the empty text when it is empty or
    // an http or https address.
    static QString refusal(const QString &text);
};
