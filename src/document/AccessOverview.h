#pragma once

#include <QList>
#include <QString>

class Directory;
class FileBoxRights;
struct UserInfo;

// One right that reaches a member on a folder: the member's own right, or
// the right of a group that holds one of the member's memberships directly
// or through any of its sub-groups.
struct AccessEntry
{
    qint32 folderId = -1;
    qint32 memberId = -1;
    qint32 authority = 0; // AuthorityCode value as the right reads
    qint32 groupId = -1; // -1: the member's own right
    bool guestGroup = false; // the group stands in the guest tree

    bool ownRight() const { return groupId < 0; }
    friend bool operator==(const AccessEntry &, const AccessEntry &) = default;
};

// Which rights apply to a member or reach the members of a folder, and
// where each one comes from. It lists the rights as they stand and does not
// combine them: a member reached read-only through a group and read/write
// on its own gets both rows. Computed from the directory and the file-box
// lists on demand; holds references only.
class AccessOverview final
{
public:
    AccessOverview(const Directory &directory, const FileBoxRights &rights);

    // Every right that names the member, in folder list order (rights on
    // folders the list no longer holds last); within a folder the own right
    // first, then the group rights in their list order. A group reaches the
    // member when it holds one of the member's memberships in either tree or
    // is an ancestor of such a group.
    QList<AccessEntry> forMember(qint32 memberId) const;
    // Every member a right on the folder reaches: the members' own rights in
    // their list order, then per group right (in list order) the members
    // below the group in tree order, each member once per right. Rights of
    // members and groups the directory no longer holds reach nobody.
    QList<AccessEntry> forFolder(qint32 folderId) const;

    // Where a right comes from: "本人权限", or "类别 " and the group's path.
    QString originText(const AccessEntry &entry) const;
    // A group's path from its tree's root: "/Sales/East" in the regular
    // tree, "论坛结构:/Forum/Lounge" in the guest tree; empty when neither
    // tree holds the group. guest (optional) tells which tree it is in.
    static QString groupPath(const Directory &directory, qint32 groupId, bool *guest = nullptr);
    // The member a user ID names in the member list, else in the guest list.
    static const UserInfo *memberByLoginName(const Directory &directory, const QString &loginName);

    static QString ownRightText();

private:
    const Directory &m_directory;
    const FileBoxRights &m_rights;
};
