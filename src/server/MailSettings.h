#pragma once

#include <QString>

// How the client opens web mail: Serverinfo.ini [SettingInfo] USESSO, SSOURL
// and FORCEDMAILMODE. The clients read them at their next login; no
// notification is sent.
class MailSettings final
{
public:
    struct Values
    {
        bool forcedMailMode = false;
        bool useSso = false;
        QString ssoUrl;
    };

    explicit MailSettings(QString profilePath);

    Values load() const;
    // With another URL chosen, an address without "http://" gets it in front.
    static QString completedUrl(const QString &url);
    bool save(const Values &values);

private:
    QString m_profilePath;
};
