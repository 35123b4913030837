#pragma once

#include <QHash>
#include <QList>
#include <QMetaType>
#include <QString>

// One member as the directory holds it: every Member column the load reads.
// The nickname is kept unescaped in memory; the escape markers exist only in
// the database (see EscapeMarkers).
struct UserInfo
{
    QString loginName; // MemberID
    QString displayName; // MemberName
    QString nickname; // MemberNickname, unescaped
    QString password; // Passwd
    qint32 gender = 0; // non-zero: male
    qint32 bPublic = 0;
    QString email;
    QString mobile; // HP
    QString homePhone;
    QString address;
    QString birthday;
    qint32 bSolar = 0;
    qint32 bAdmin = 0;
    qint32 id = 0; // OMemberID
    QString officePhone;
    QString description;
    qint32 level = 0; // MemberLevel as read; the save derives it anew
    qint32 isGuest = 0; // 1 for a member of the guest list

    bool isMale() const { return gender != 0; }

    friend bool operator==(const UserInfo &, const UserInfo &) = default;
};

Q_DECLARE_METATYPE(UserInfo)

// The member index: OMemberID -> record. When Member holds an id twice, the
// index keeps the later row while both rows stay listed.
using MemberIndex = QHash<qint32, UserInfo>;
// One member list (regular or guest) in row order.
using MemberList = QList<UserInfo>;
