#pragma once

#include <QString>

// What every mail of one sending shares: the server's name as the clients
// show it in their caption bar, the product's major version, the office to
// contact, where the client is downloaded, and the administrator's memo.
struct InviteFields
{
    QString serverName; // __SERVER_NAME__
    QString majorVersion; // __MAJOR_VERSION__
    QString office; // __OFFICE__
    QString downloadUrl; // __DOWNLOAD_URL__
    QString memo; // __ADDITIONAL_MEMO__
};
