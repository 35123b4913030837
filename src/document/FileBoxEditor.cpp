#include "FileBoxEditor.h"

#include "AuthorityCode.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"

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

EditResult FileBoxEditor::addRights(qint32 folderId, const QList<Owner> &owners, qint32 authority)
{
    const FileBoxRights &rights = m_document.m_fileBox;
    const bool listed = std::any_of(rights.folders().cbegin(), rights.folders().cend(),
        [folderId](const tagFolderData &folder) { return folder.folderId == folderId; });
    if (!listed)
        return EditResult::refused(EditRefusal::message(u"文件夹不存在."_s));
    if (authority != AuthorityCode::ReadOnly && authority != AuthorityCode::ReadWrite)
        return EditResult::refused(EditRefusal::message(u"权限无效."_s));

    const auto hasRight = [&rights, folderId](const Owner &owner) {
        if (owner.group) {
            return std::any_of(rights.groupRights().cbegin(), rights.groupRights().cend(),
                [&](const tagGroupAuthority &r) {
                    return r.folderId == folderId && r.groupId == owner.id;
                });
        }
        return std::any_of(rights.memberRights().cbegin(), rights.memberRights().cend(),
            [&](const tagUserAuthority &r) {
                return r.folderId == folderId && r.memberId == owner.id;
            });
    };
    // Checked before the step opens, so that it never stands empty on the stack.
    const Directory &directory = *m_document.m_directory;
    std::optional<EditRefusal> firstRefusal;
    QList<Owner> taken;
    int skipped = 0;
    for (const Owner &owner : owners) {
        bool known = false;
        if (owner.group) {
            known = directory.treeData(false).findGroup(owner.id)
                || directory.treeData(true).findGroup(owner.id);
            if (!known && !firstRefusal)
                firstRefusal = EditRefusal::message(u"类别不存在."_s);
        } else {
            known = directory.findMember(owner.id) != nullptr;
            if (!known && !firstRefusal)
                firstRefusal = EditRefusal::unknownMember(owner.id);
        }
        const bool duplicate = std::any_of(taken.cbegin(), taken.cend(),
            [&owner](const Owner &o) { return o.group == owner.group && o.id == owner.id; });
        if (!known || duplicate || hasRight(owner))
            ++skipped;
        else
            taken.append(owner);
    }
    if (taken.isEmpty())
        return firstRefusal ? EditResult::refused(*firstRefusal) : EditResult::refusedSilently();

    DocumentUndoStack *undo = m_document.undoStack();
    undo->beginMacro(
        u"添加 %1 项权限到 %2"_s.arg(taken.size()).arg(rights.pathByFolderId(folderId)));
    for (const Owner &owner : std::as_const(taken))
        setRight(owner.group, owner.id, folderId, authority);
    undo->endMacro();
    return EditResult::done(folderId, int(taken.size()), skipped);
}

EditResult FileBoxEditor::removeRights(qint32 folderId, const QList<Owner> &owners)
{
    const FileBoxRights &rights = m_document.m_fileBox;
    QList<Owner> taken;
    for (const Owner &owner : owners) {
        const bool has = owner.group
            ? std::any_of(rights.groupRights().cbegin(), rights.groupRights().cend(),
                [&](const tagGroupAuthority &r) {
                    return r.folderId == folderId && r.groupId == owner.id;
                })
            : std::any_of(rights.memberRights().cbegin(), rights.memberRights().cend(),
                [&](const tagUserAuthority &r) {
                    return r.folderId == folderId && r.memberId == owner.id;
                });
        const bool duplicate = std::any_of(taken.cbegin(), taken.cend(),
            [&owner](const Owner &o) { return o.group == owner.group && o.id == owner.id; });
        if (has && !duplicate)
            taken.append(owner);
    }
    if (taken.isEmpty())
        return EditResult::refusedSilently();
    DocumentUndoStack *undo = m_document.undoStack();
    undo->beginMacro(
        u"删除 %1 项权限 (%2)"_s.arg(taken.size()).arg(rights.pathByFolderId(folderId)));
    for (const Owner &owner : std::as_const(taken))
        setRight(owner.group, owner.id, folderId, AuthorityCode::None);
    undo->endMacro();
    return EditResult::done(folderId, int(taken.size()));
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

    // A right of a group or member the directory no longer holds (as the
    // tables may hold one) can still be removed; nothing else can name one.
    QString name;
    if (group) {
        const DirectoryNode *node = directory.treeData(false).findGroup(ownerId);
        if (!node)
            node = directory.treeData(true).findGroup(ownerId);
        if (node)
            name = node->name();
        else if (authority != AuthorityCode::None || !exists)
            return EditResult::refused(EditRefusal::message(u"类别不存在."_s));
    } else {
        const UserInfo *member = directory.findMember(ownerId);
        if (member)
            name = member->loginName;
        else if (authority != AuthorityCode::None || !exists)
            return EditResult::refused(EditRefusal::unknownMember(ownerId));
    }
    if (name.isEmpty())
        name = QString::number(ownerId);
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
