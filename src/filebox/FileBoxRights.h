#pragma once

#include "tagFolderData.h"
#include "tagGroupAuthority.h"
#include "tagUserAuthority.h"

#include <QList>
#include <QString>

class DbConnection;

// The file-box folders and the rights of groups and members on them, as the
// Folder, GroupAuthority and UserAuthority tables hold them. Plain data: the
// loading worker fills one and the user-interface thread adopts it by moving
// it into the document; the views go through the operations below and keep no
// pointers into the lists, which keep insertion order.
class FileBoxRights
{
public:
    // A caller-held iteration position. A default-constructed one starts at
    // the head; once an iteration has run out it stays at the end, so calling
    // again keeps yielding the end record instead of starting over.
    struct Position
    {
        qsizetype next = 0;
    };

    // Replaces the three lists with the tables' rows, in result order (paths
    // with doubled backslashes made single, authorities decoded, rows with a
    // NULL id left out), and clears the modified flag. Raises DbException; what was read so far
    // stays.
    void load(DbConnection &connection);
    // Empties and rewrites Folder, GroupAuthority and UserAuthority in that
    // order (paths with backslashes doubled, authorities as letters). Raises
    // DbException at the first failing statement; statements already run stay
    // in effect. The modified flag is the whole save's to clear.
    void save(DbConnection &connection) const;

    void clear();
    bool isModified() const { return m_modified; }
    void setModified(bool modified) { m_modified = modified; }

    const QList<tagFolderData> &folders() const { return m_folders; }
    const QList<tagGroupAuthority> &groupRights() const { return m_groupRights; }
    const QList<tagUserAuthority> &memberRights() const { return m_memberRights; }

    // The id of the first folder whose path equals path exactly
    // (case-sensitive), or -1.
    qint32 folderIdByPath(const QString &path) const;
    // The path of the first folder with that id, or empty.
    QString pathByFolderId(qint32 folderId) const;

    // Iterations: the next matching record after position, or a record whose
    // folder id is -1 when no further one exists.
    tagGroupAuthority nextGroupRightOfFolder(qint32 folderId, Position &position) const;
    tagUserAuthority nextMemberRightOfFolder(qint32 folderId, Position &position) const;
    tagGroupAuthority nextRightOfGroup(qint32 groupId, Position &position) const;
    tagUserAuthority nextRightOfMember(qint32 memberId, Position &position) const;

    // Group rights plus member rights on the folder.
    int rightsCountOfFolder(qint32 folderId) const;
    int rightsCountOfGroup(qint32 groupId) const;
    int rightsCountOfMember(qint32 memberId) const;

    // Overwrites the authority of the existing right of that group (member) on
    // that folder, or appends one. Returns whether one existed.
    bool setGroupRight(qint32 groupId, qint32 folderId, qint32 authority);
    bool setMemberRight(qint32 memberId, qint32 folderId, qint32 authority);
    // Removes one right; returns whether there was one.
    bool removeGroupRight(qint32 groupId, qint32 folderId);
    bool removeMemberRight(qint32 memberId, qint32 folderId);
    // A group (member) left the directory: every right of it goes. Returns how
    // many were removed.
    int removeRightsOfGroup(qint32 groupId);
    int removeRightsOfMember(qint32 memberId);

    // Adds a folder with the next free id (the largest id in use plus one, 1
    // for the first) and returns the id.
    qint32 addFolder(const QString &path);
    // Adds a folder with a given id; false (nothing added) when the id is in use.
    bool addFolder(qint32 folderId, const QString &path);
    // Removes the folder and every right on it; returns whether it existed.
    bool removeFolder(qint32 folderId);

    // The three lists and the modified flag as they stand, for an edit to
    // put back when it is undone (the lists share their data until changed).
    struct Snapshot
    {
        QList<tagFolderData> folders;
        QList<tagGroupAuthority> groupRights;
        QList<tagUserAuthority> memberRights;
        bool modified = false;
    };
    Snapshot snapshot() const { return { m_folders, m_groupRights, m_memberRights, m_modified }; }
    void restore(const Snapshot &snapshot)
    {
        m_folders = snapshot.folders;
        m_groupRights = snapshot.groupRights;
        m_memberRights = snapshot.memberRights;
        m_modified = snapshot.modified;
    }

    // FolderPath column <-> memory: doubled backslashes become single on load,
    // every backslash is doubled on save.
    static QString pathFromStored(const QString &stored);
    static QString pathToStored(const QString &path);

    // Statement texts, exactly as sent.
    static QString insertFolderStatement(const tagFolderData &folder);
    static QString insertGroupRightStatement(const tagGroupAuthority &right);
    static QString insertMemberRightStatement(const tagUserAuthority &right);

private:
    QList<tagFolderData> m_folders;
    QList<tagGroupAuthority> m_groupRights;
    QList<tagUserAuthority> m_memberRights;
    bool m_modified = false;
};
