#pragma once

#include <QList>
#include <QString>

// One web site offered under the icon in the client.
struct Site
{
    QString name;
    QString address;
};

// The client's site list, kept in Serverinfo.ini [SettingInfo] HomePageURL2 as
// "|name|address|name|address|". The old single HomePageURL is moved into the
// list the first time the list is read.
class SiteListSettings final
{
public:
    explicit SiteListSettings(QString profilePath);

    static constexpr int MaxSites = 20;
    static const QString DefaultSiteName;
    static const QString DefaultSiteAddress;
    static const QString TooManyText; // "已经超过规定,添加失败."
    static const QString Forbidden; // "|"

    // The rows of the list dialog; migrates HomePageURL (writing it empty).
    QList<Site> load();
    // The pieces of a stored list taken two at a time; an odd last piece is a
    // site without an address.
    static QList<Site> parse(const QString &stored);
    // A row shows the address in place of an empty name.
    static Site row(const Site &site);
    static QString format(const QList<Site> &rows);
    bool save(const QList<Site> &rows);

    // The refusal of the add/edit dialog, or the empty text when accepted.
    static QString refusal(const QString &name, const QString &address);

private:
    QString m_profilePath;
};
