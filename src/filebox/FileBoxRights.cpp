#include "FileBoxRights.h"

#include "AuthorityCode.h"
#include "DbConnection.h"
#include "Recordset.h"
#include "SqlTemplate.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The iterations share one shape: scan on from the caller's position for the
// next record that matches, leave the position after it, and park it at the
// end when there is none.
template<typename Record, typename Match>
Record nextMatching(const QList<Record> &list, FileBoxRights::Position &position, Match match,
    const Record &endRecord)
{
    for (qsizetype i = std::max<qsizetype>(position.next, 0); i < list.size(); ++i) {
        if (match(list.at(i))) {
            position.next = i + 1;
            return list.at(i);
        }
    }
    position.next = list.size();
    return endRecord;
}

template<typename Record, typename Match> int countMatching(const QList<Record> &list, Match match)
{
    return int(std::count_if(list.cbegin(), list.cend(), match));
}

const tagGroupAuthority EndGroupRecord { -1, -1, AuthorityCode::None };
const tagUserAuthority EndMemberRecord { -1, -1, AuthorityCode::None };

} // namespace

QString FileBoxRights::pathFromStored(const QString &stored)
{
    QString path = stored;
    return path.replace(u"\\\\"_s, u"\\"_s);
}

QString FileBoxRights::pathToStored(const QString &path)
{
    QString stored = path;
    return stored.replace(u"\\"_s, u"\\\\"_s);
}

QString FileBoxRights::insertFolderStatement(const tagFolderData &folder)
{
    // The path is not escaped otherwise: an apostrophe breaks the statement.
    static const SqlTemplate insert(
        u"INSERT INTO Folder (OFolderID,FolderPath) VALUES  ('%d' ,'%s')");
    return insert.format({ qint64(folder.folderId), QStringView(pathToStored(folder.path)) });
}

QString FileBoxRights::insertGroupRightStatement(const tagGroupAuthority &right)
{
    static const SqlTemplate insert(
        u"INSERT INTO GroupAuthority (OFolderID,OGroupID,Authority) VALUES  ('%d' ,'%d' ,'%s')");
    return insert.format({ qint64(right.folderId), qint64(right.groupId),
        QStringView(AuthorityCode::encode(right.authority)) });
}

QString FileBoxRights::insertMemberRightStatement(const tagUserAuthority &right)
{
    static const SqlTemplate insert(
        u"INSERT INTO UserAuthority (OFolderID,OMemberID,Authority) VALUES  ('%d' ,'%d' ,'%s')");
    return insert.format({ qint64(right.folderId), qint64(right.memberId),
        QStringView(AuthorityCode::encode(right.authority)) });
}

void FileBoxRights::load(DbConnection &connection)
{
    clear();
    // Rows without the ids that place them name no folder, group or member and
    // are left out; a NULL path or authority reads as empty.

    Recordset folders = connection.execute(u"SELECT OFolderID,FolderPath FROM Folder"_s);
    if (!folders.isEOF()) {
        const int folder = folders.fieldIndex(u"OFolderID");
        const int path = folders.fieldIndex(u"FolderPath");
        while (!folders.isEOF()) {
            if (!folders.isNull(folder))
                m_folders.append(
                    { folders.intField(folder), pathFromStored(folders.textField(path)) });
            folders.moveNext();
        }
    }
    folders.close();

    Recordset groups
        = connection.execute(u"SELECT OFolderID,OGroupID,Authority FROM GroupAuthority"_s);
    if (!groups.isEOF()) {
        const int folder = groups.fieldIndex(u"OFolderID");
        const int group = groups.fieldIndex(u"OGroupID");
        const int authority = groups.fieldIndex(u"Authority");
        while (!groups.isEOF()) {
            if (!groups.isNull(folder) && !groups.isNull(group)) {
                m_groupRights.append({ groups.intField(folder), groups.intField(group),
                    AuthorityCode::decode(groups.textField(authority)) });
            }
            groups.moveNext();
        }
    }
    groups.close();

    Recordset members
        = connection.execute(u"SELECT OFolderID,OMemberID,Authority FROM UserAuthority"_s);
    if (!members.isEOF()) {
        const int folder = members.fieldIndex(u"OFolderID");
        const int member = members.fieldIndex(u"OMemberID");
        const int authority = members.fieldIndex(u"Authority");
        while (!members.isEOF()) {
            if (!members.isNull(folder) && !members.isNull(member)) {
                m_memberRights.append({ members.intField(folder), members.intField(member),
                    AuthorityCode::decode(members.textField(authority)) });
            }
            members.moveNext();
        }
    }
    members.close();
    m_modified = false;
}

void FileBoxRights::save(DbConnection &connection) const
{
    connection.execute(u"DELETE FROM Folder"_s);
    for (const tagFolderData &folder : std::as_const(m_folders))
        connection.execute(insertFolderStatement(folder));
    connection.execute(u"DELETE FROM GroupAuthority"_s);
    for (const tagGroupAuthority &right : std::as_const(m_groupRights))
        connection.execute(insertGroupRightStatement(right));
    connection.execute(u"DELETE FROM UserAuthority"_s);
    for (const tagUserAuthority &right : std::as_const(m_memberRights))
        connection.execute(insertMemberRightStatement(right));
}

void FileBoxRights::clear()
{
    m_folders.clear();
    m_groupRights.clear();
    m_memberRights.clear();
    m_modified = false;
}

qint32 FileBoxRights::folderIdByPath(const QString &path) const
{
    for (const tagFolderData &folder : m_folders) {
        if (folder.path == path)
            return folder.folderId;
    }
    return -1;
}

QString FileBoxRights::pathByFolderId(qint32 folderId) const
{
    for (const tagFolderData &folder : m_folders) {
        if (folder.folderId == folderId)
            return folder.path;
    }
    return {};
}

tagGroupAuthority FileBoxRights::nextGroupRightOfFolder(qint32 folderId, Position &position) const
{
    return nextMatching(
        m_groupRights, position,
        [folderId](const tagGroupAuthority &r) { return r.folderId == folderId; }, EndGroupRecord);
}

tagUserAuthority FileBoxRights::nextMemberRightOfFolder(qint32 folderId, Position &position) const
{
    return nextMatching(
        m_memberRights, position,
        [folderId](const tagUserAuthority &r) { return r.folderId == folderId; }, EndMemberRecord);
}

tagGroupAuthority FileBoxRights::nextRightOfGroup(qint32 groupId, Position &position) const
{
    return nextMatching(
        m_groupRights, position,
        [groupId](const tagGroupAuthority &r) { return r.groupId == groupId; }, EndGroupRecord);
}

tagUserAuthority FileBoxRights::nextRightOfMember(qint32 memberId, Position &position) const
{
    return nextMatching(
        m_memberRights, position,
        [memberId](const tagUserAuthority &r) { return r.memberId == memberId; }, EndMemberRecord);
}

int FileBoxRights::rightsCountOfFolder(qint32 folderId) const
{
    return countMatching(m_groupRights, [folderId](const tagGroupAuthority &r) {
        return r.folderId == folderId;
    }) + countMatching(m_memberRights, [folderId](const tagUserAuthority &r) {
        return r.folderId == folderId;
    });
}

int FileBoxRights::rightsCountOfGroup(qint32 groupId) const
{
    return countMatching(
        m_groupRights, [groupId](const tagGroupAuthority &r) { return r.groupId == groupId; });
}

int FileBoxRights::rightsCountOfMember(qint32 memberId) const
{
    return countMatching(
        m_memberRights, [memberId](const tagUserAuthority &r) { return r.memberId == memberId; });
}

bool FileBoxRights::setGroupRight(qint32 groupId, qint32 folderId, qint32 authority)
{
    m_modified = true;
    for (tagGroupAuthority &right : m_groupRights) {
        if (right.groupId == groupId && right.folderId == folderId) {
            right.authority = authority;
            return true;
        }
    }
    m_groupRights.append({ folderId, groupId, authority });
    return false;
}

bool FileBoxRights::setMemberRight(qint32 memberId, qint32 folderId, qint32 authority)
{
    m_modified = true;
    for (tagUserAuthority &right : m_memberRights) {
        if (right.memberId == memberId && right.folderId == folderId) {
            right.authority = authority;
            return true;
        }
    }
    m_memberRights.append({ folderId, memberId, authority });
    return false;
}

bool FileBoxRights::removeGroupRight(qint32 groupId, qint32 folderId)
{
    const auto removed = m_groupRights.removeIf(
        [&](const tagGroupAuthority &r) { return r.groupId == groupId && r.folderId == folderId; });
    m_modified = m_modified || removed > 0;
    return removed > 0;
}

bool FileBoxRights::removeMemberRight(qint32 memberId, qint32 folderId)
{
    const auto removed = m_memberRights.removeIf([&](const tagUserAuthority &r) {
        return r.memberId == memberId && r.folderId == folderId;
    });
    m_modified = m_modified || removed > 0;
    return removed > 0;
}

int FileBoxRights::removeRightsOfGroup(qint32 groupId)
{
    const auto removed = m_groupRights.removeIf(
        [groupId](const tagGroupAuthority &r) { return r.groupId == groupId; });
    m_modified = m_modified || removed > 0;
    return int(removed);
}

int FileBoxRights::removeRightsOfMember(qint32 memberId)
{
    const auto removed = m_memberRights.removeIf(
        [memberId](const tagUserAuthority &r) { return r.memberId == memberId; });
    m_modified = m_modified || removed > 0;
    return int(removed);
}

qint32 FileBoxRights::addFolder(const QString &path)
{
    qint32 largest = 0;
    for (const tagFolderData &folder : std::as_const(m_folders))
        largest = std::max(largest, folder.folderId);
    const qint32 id = largest + 1;
    m_folders.append({ id, path });
    m_modified = true;
    return id;
}

bool FileBoxRights::addFolder(qint32 folderId, const QString &path)
{
    const bool inUse = std::any_of(m_folders.cbegin(), m_folders.cend(),
        [folderId](const tagFolderData &f) { return f.folderId == folderId; });
    if (inUse)
        return false;
    m_folders.append({ folderId, path });
    m_modified = true;
    return true;
}

bool FileBoxRights::removeFolder(qint32 folderId)
{
    const auto removed
        = m_folders.removeIf([folderId](const tagFolderData &f) { return f.folderId == folderId; });
    if (removed == 0)
        return false;
    // Rights on a folder that no longer exists would be written back forever.
    m_groupRights.removeIf(
        [folderId](const tagGroupAuthority &r) { return r.folderId == folderId; });
    m_memberRights.removeIf(
        [folderId](const tagUserAuthority &r) { return r.folderId == folderId; });
    m_modified = true;
    return true;
}
