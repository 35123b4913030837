#pragma once

#include <array>
#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <vector>

// The rows of a generated server database, held as the server stores them:
// texts that the server keeps with escape markers are already escaped here.

struct GenMember
{
    qint32 id = 0;
    QString login;
    QString name;
    QString nickname; // escaped
    QString password;
    int gender = 1; // 1 male, 0 female
    int isPublic = 1;
    QString email;
    QString mobile;
    QString address;
    QString homePhone;
    QString officePhone;
    QString birthday;
    QString description;
    int solar = 1;
    int admin = 0;
    int guest = 0;
    int level = 0; // 0: the member is in no group and has no level (NULL)
};

struct GenGroup
{
    qint32 id = 0;
    QString name;
    qint32 parent = -1; // -1 or -100 for a top-level group
    int position = 0; // among the siblings, from 0 as the console saves it
    int depth = 1;
    bool guest = false;
};

struct GenRelation
{
    qint32 member = 0;
    qint32 group = 0;
    qint32 rank = 1; // -1: no position
    int position = 0; // within the group, from 0
    bool guest = false;
};

struct GenRank
{
    qint32 id = 0;
    QString name;
};

struct GenAccessToken
{
    qint32 member = 0;
    // MessageOn, ChatOn, FileTransferOn, TTSOn, VoiceToPhoneOn, OneToOneCallOn, SMSOn, VoipOn
    std::array<int, 8> flags {};
};

struct GenVoipInfo
{
    qint32 member = 0;
    QString id;
    QString password;
};

struct GenPoolAccount
{
    QString id;
    QString password;
    qint32 member = 0; // 0 while free
};

struct GenUploadedFile
{
    QString relativePath; // below the session folder, '/' separated
    QByteArray contents;
};

struct GenNotice
{
    qint32 id = 0;
    QString title; // escaped
    QString writeDate; // "YYYY-MM-DD hh:mm:ss"
    qint32 writer = 0;
    QString writerLogin;
    QString writerName;
    QString contents; // escaped
    QString fileList; // escaped
    QString fileSessionId;
    QString writeEndDate; // "YYYYMMDD" or empty
    std::vector<GenUploadedFile> files;
};

struct GenFolder
{
    qint32 id = 0;
    QString path; // single backslashes; the database keeps them doubled
};

struct GenRight
{
    qint32 folder = 0;
    qint32 owner = 0; // group id or member id
    QString authority; // "R", "W", "X" or "w"
};

struct GeneratedData
{
    std::vector<GenMember> members;
    std::vector<GenGroup> groups; // regular tree, then guest tree, each parents first
    std::vector<GenRelation> relations;
    std::vector<GenRank> ranks;
    std::vector<GenAccessToken> accessTokens;
    std::vector<GenVoipInfo> voipInfos;
    std::vector<GenPoolAccount> pool;
    std::vector<GenNotice> notices;
    std::vector<GenFolder> folders;
    std::vector<GenRight> groupRights;
    std::vector<GenRight> memberRights;
    qint32 defaultPositionId = 1;
    int groupVersion = 1;
};
