#include "FileBoxEditor.h"

#include "AuthorityCode.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

FileBoxEditor::FileBoxEditor(CVelmarManagerDoc &document)
    : m_document(document)
{ }

EditResult FileBoxEditor::addFolder(const QString &path)
{
    const FileBoxRights &rights = m_document.m_fileBox;
    if (path.trimmed().isEmpty())
        return EditResult::refused(EditRefusal::message(u"文件夹路径不能为空."_s, true));
    if (path.contains(u'\''))
        return EditResult::refused(EditRefusal::message(u"文件夹路径不能包含单引号."_s, true));
    if (rights.folderIdByPath(path) >= 0)
        return EditResult::refused(EditRefusal::message(u"该文件夹已经存在."_s, true));
    qint32 largest = 0;
    for (const tagFolderData &folder : rights.folders())
        largest = std::max(largest, folder.folderId);
    if (largest == std::numeric_limits<qint32>::max())
        return EditResult::refused(EditRefusal::message(u"没有可用的文件夹编号."_s, true));
    const qint32 id = largest + 1;

    CVelmarManagerDoc *doc = &m_document;
    m_document.push(
        u"添加文件夹 %1"_s.arg(path), [doc, id, path] { doc->m_fileBox.addFolder(id, path); },
        [doc, before = rights.snapshot()] { doc->m_fileBox.restore(before); });
    return EditResult::done(id);
}

EditResult FileBoxEditor::removeFolder(qint32 folderId)
{
    const FileBoxRights &rights = m_document.m_fileBox;
    const bool listed = std::any_of(rights.folders().cbegin(), rights.folders().cend(),
        [folderId](const tagFolderData &folder) { return folder.folderId == folderId; });
    if (!listed)
        return EditResult::refused(EditRefusal::message(u"文件夹不存在."_s));
    CVelmarManagerDoc *doc = &m_document;
    m_document.push(
        u"删除文件夹 %1"_s.arg(rights.pathByFolderId(folderId)),
        [doc, folderId] { doc->m_fileBox.removeFolder(folderId); },
        [doc, before = rights.snapshot()] { doc->m_fileBox.restore(before); });
    return EditResult::done(folderId);
}

EditResult FileBoxEditor::setGroupRight(qint32 groupId, qint32 folderId, qint32 authority)
{
    return setRight(true, groupId, folderId, authority);
}

EditResult FileBoxEditor::setMemberRight(qint32 memberId, qint32 folderId, qint32 authority)
{
    return setRight(false, memberId, folderId, authority);
}

EditResult FileBoxEditor::setRight(bool group, qint32 ownerId, qint32 folderId, qint32 authority)
{
    const FileBoxRights &rights = m_document.m_fileBox;
    const Directory &directory = *m_document.m_directory;
    if (authority != AuthorityCode::None && authority != AuthorityCode::ReadOnly
        && authority != AuthorityCode::ReadWrite)
        return EditResult::refused(EditRefusal::message(u"权限无效."_s));
    const bool listed = std::any_of(rights.folders().cbegin(), rights.folders().cend(),
        [folderId](const tagFolderData &folder) { return folder.folderId == folderId; });
    if (!listed)
        return EditResult::refused(EditRefusal::message(u"文件夹不存在."_s));
    QString name;
    if (group) {
        const DirectoryNode *node = directory.treeData(false).findGroup(ownerId);
        if (!node)
            node = directory.treeData(true).findGroup(ownerId);
        if (!node)
            return EditResult::refused(EditRefusal::message(u"类别不存在."_s));
        name = node->name();
    } else {
        const UserInfo *member = directory.findMember(ownerId);
        if (!member)
            return EditResult::refused(EditRefusal::unknownMember(ownerId));
        name = member->loginName;
    }

    // The right as it stands: none (0) when there is no record.
    qint32 current = AuthorityCode::None;
    bool exists = false;
    if (group) {
        for (const tagGroupAuthority &right : rights.groupRights()) {
            if (right.groupId == ownerId && right.folderId == folderId) {
                current = right.authority;
                exists = true;
                break;
            }
        }
    } else {
        for (const tagUserAuthority &right : rights.memberRights()) {
            if (right.memberId == ownerId && right.folderId == folderId) {
                current = right.authority;
                exists = true;
                break;
            }
        }
    }
    if (authority == AuthorityCode::None ? !exists : (exists && current == authority))
        return EditResult::done(folderId, 0);

    const QString path = rights.pathByFolderId(folderId);
    const QString text = authority == AuthorityCode::None
        ? u"删除 %1 在 %2 的权限"_s.arg(name, path)
        : u"设置 %1 在 %2 的权限: %3"_s.arg(name, path, AuthorityCode::displayText(authority));
    CVelmarManagerDoc *doc = &m_document;
    m_document.push(
        text,
        [doc, group, ownerId, folderId, authority] {
            FileBoxRights &box = doc->m_fileBox;
            if (authority == AuthorityCode::None) {
                if (group)
                    box.removeGroupRight(ownerId, folderId);
                else
                    box.removeMemberRight(ownerId, folderId);
            } else if (group) {
                box.setGroupRight(ownerId, folderId, authority);
            } else {
                box.setMemberRight(ownerId, folderId, authority);
            }
        },
        [doc, before = rights.snapshot()] { doc->m_fileBox.restore(before); });
    return EditResult::done(folderId);
}
