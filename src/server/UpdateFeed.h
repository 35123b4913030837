#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QUrl>
#include <QVersionNumber>

// One setup file a release feed offers.
struct UpdateRelease
{
    QString product; // "VelmarManager", or a daemon's name ("VelmarD", ...)
    QVersionNumber version;
    QUrl url;
    QByteArray sha256; // 32 bytes
};

// The release feed the "更新版本" command reads, a small JSON document:
//   { "releases": [ { "product": "VelmarManager", "version": "0.2.0",
//                     "url": "https://.../velmarmanager_0.2.0_amd64.deb",
//                     "sha256": "<64 hex digits>" }, ... ] }
// A feed with any entry that is not well-formed is refused as a whole, so
// that nothing is offered from a feed that may have been cut short.
class UpdateFeed final
{
public:
    struct Result
    {
        QList<UpdateRelease> releases;
        QString error; // empty: parsed
        bool ok() const { return error.isEmpty(); }
    };

    static Result parse(const QByteArray &json);

    // For each product of installed, the newest release of the feed that is
    // newer than its installed version; in the order of the feed.
    static QList<UpdateRelease> newer(
        const QList<UpdateRelease> &releases, const QHash<QString, QVersionNumber> &installed);
};
