#include "AccessOverview.h"

#include "Directory.h"
#include "FileBoxRights.h"

#include <algorithm>
#include <QHash>
#include <QSet>
#include <vector>

using namespace Qt::StringLiterals;

AccessOverview::AccessOverview(const Directory &directory, const FileBoxRights &rights)
    : m_directory(directory)
    , m_rights(rights)
{ }

QList<AccessEntry> AccessOverview::forMember(qint32 memberId) const
{
    // The groups that reach the member: those holding a membership of it and
    // all their ancestors, with the tree each was found in.
    QHash<qint32, bool> reached;
    for (const bool guest : { false, true }) {
        for (const DirectoryNode *membership :
            m_directory.treeData(guest).membershipsOf(memberId)) {
            for (const DirectoryNode *group = membership->parent(); group && group->isGroup();
                 group = group->parent()) {
                if (reached.contains(group->id()))
                    break; // its ancestors are in already
                reached.insert(group->id(), guest);
            }
        }
    }

    QList<AccessEntry> entries;
    for (const tagUserAuthority &right : m_rights.memberRights()) {
        if (right.memberId == memberId)
            entries.append({ right.folderId, memberId, right.authority, -1, false });
    }
    if (!reached.isEmpty()) {
        for (const tagGroupAuthority &right : m_rights.groupRights()) {
            const auto found = reached.constFind(right.groupId);
            if (found != reached.cend())
                entries.append(
                    { right.folderId, memberId, right.authority, right.groupId, *found });
        }
    }

    QHash<qint32, qsizetype> folderOrder;
    const QList<tagFolderData> &folders = m_rights.folders();
    for (qsizetype i = folders.size() - 1; i >= 0; --i)
        folderOrder.insert(folders.at(i).folderId, i); // the first folder of an id wins
    const auto orderOf = [&folderOrder, &folders](qint32 folderId) {
        return folderOrder.value(folderId, folders.size());
    };
    std::stable_sort(
        entries.begin(), entries.end(), [&orderOf](const AccessEntry &a, const AccessEntry &b) {
            return orderOf(a.folderId) < orderOf(b.folderId);
        });
    return entries;
}

QList<AccessEntry> AccessOverview::forFolder(qint32 folderId) const
{
    QList<AccessEntry> entries;
    for (const tagUserAuthority &right : m_rights.memberRights()) {
        if (right.folderId == folderId && m_directory.findMember(right.memberId))
            entries.append({ folderId, right.memberId, right.authority, -1, false });
    }

    std::vector<const DirectoryNode *> stack;
    QSet<qint32> seen;
    for (const tagGroupAuthority &right : m_rights.groupRights()) {
        if (right.folderId != folderId)
            continue;
        bool guest = false;
        const DirectoryNode *group = m_directory.treeData(false).findGroup(right.groupId);
        if (!group) {
            guest = true;
            group = m_directory.treeData(true).findGroup(right.groupId);
        }
        if (!group)
            continue;
        // Pre-order below the group, children in display order; a member
        // standing in two groups under it is reached once by this right.
        seen.clear();
        stack.assign(1, group);
        while (!stack.empty()) {
            const DirectoryNode *node = stack.back();
            stack.pop_back();
            for (int row = node->childCount() - 1; row >= 0; --row) {
                const DirectoryNode *child = node->child(row);
                if (child->isGroup())
                    stack.push_back(child);
            }
            for (int row = 0; row < node->childCount(); ++row) {
                const DirectoryNode *child = node->child(row);
                if (child->isMembership() && !seen.contains(child->id())
                    && m_directory.findMember(child->id())) {
                    seen.insert(child->id());
                    entries.append(
                        { folderId, child->id(), right.authority, right.groupId, guest });
                }
            }
        }
    }
    return entries;
}

QString AccessOverview::ownRightText()
{
    return u"本人权限"_s;
}

QString AccessOverview::originText(const AccessEntry &entry) const
{
    if (entry.ownRight())
        return ownRightText();
    return u"类别 "_s + groupPath(m_directory, entry.groupId);
}

QString AccessOverview::groupPath(const Directory &directory, qint32 groupId, bool *guest)
{
    bool inGuest = false;
    const DirectoryNode *group = directory.treeData(false).findGroup(groupId);
    if (!group) {
        inGuest = true;
        group = directory.treeData(true).findGroup(groupId);
    }
    if (guest)
        *guest = inGuest;
    if (!group)
        return {};
    QStringList names;
    for (const DirectoryNode *node = group; node && node->isGroup(); node = node->parent())
        names.prepend(node->name());
    const QString path = u'/' + names.join(u'/');
    return inGuest ? u"论坛结构:"_s + path : path;
}

const UserInfo *AccessOverview::memberByLoginName(
    const Directory &directory, const QString &loginName)
{
    for (const bool guest : { false, true }) {
        const MemberRows &rows = directory.memberRows(guest);
        const int row = rows.rowOfLoginName(loginName);
        if (row >= 0)
            return &rows.at(row);
    }
    return nullptr;
}
