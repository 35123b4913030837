#include "DirectoryEditor.h"

#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "MemberDragFormat.h"
#include "PositionListModel.h"

#include <algorithm>
#include <limits>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

// A node an edit took out of a tree, and where it stood: undo (or redo) puts
// the same node back, so pointers to it held by older steps stay good.
struct TakenNode
{
    DirectoryNode *node = nullptr;
    DirectoryNode *parent = nullptr;
    int row = 0;
    std::unique_ptr<DirectoryNode> held;
};

DirectoryNode *mutableNode(const DirectoryNode *node)
{
    // The editor is handed the directory's own nodes through const views.
    return const_cast<DirectoryNode *>(node);
}

bool isInside(const DirectoryNode *node, const DirectoryNode *ancestor)
{
    for (const DirectoryNode *up = node; up; up = up->parent()) {
        if (up == ancestor)
            return true;
    }
    return false;
}

// Whether the node stands in the tree: views can hold nodes an edit took out
// (the undo stack keeps them alive) or nodes of the other tree.
bool inTree(const DirectoryNode *node, const DirectoryTree &tree)
{
    const DirectoryNode *up = node;
    while (up && up->parent())
        up = up->parent();
    return up && up == tree.root();
}

const QString &nameInUseText()
{
    static const QString text = u"相同的等级已经存在."_s;
    return text;
}

} // namespace

EditRefusal EditRefusal::fromMember(const MemberRefusal &refusal, qint32 memberId)
{
    EditRefusal result;
    result.text = refusal.text;
    result.title = refusal.title;
    result.icon = refusal.icon;
    result.column = refusal.column;
    result.memberId = memberId;
    return result;
}

DirectoryEditor::DirectoryEditor(CVelmarManagerDoc &document, MemberRules rules)
    : m_document(document)
    , m_rules(std::move(rules))
{ }

EditResult DirectoryEditor::addMember(bool guest, const QString &userId)
{
    Directory &directory = *m_document.m_directory;
    if (auto refusal = m_rules.checkNewUserId(userId,
            [&directory](const QString &loginName) { return directory.hasLoginName(loginName); }))
        return EditResult::refused(EditRefusal::fromMember(*refusal));
    const qint32 id = directory.nextMemberId();
    if (id == -1)
        return EditResult::refused(EditRefusal::message(u"没有可用的会员编号."_s));

    struct State
    {
        UserInfo member;
        int seq = -1;
        bool created = false;
        int poolIndex = -1;
        AccessTokenTable::MemberRecords before;
    };
    auto state = std::make_shared<State>();
    state->member = MemberRules::newMember(userId);
    state->member.id = id;
    state->member.isGuest = guest ? 1 : 0;
    CVelmarManagerDoc *doc = &m_document;
    m_document.push(
        u"添加用户 %1"_s.arg(userId),
        [doc, state, guest] {
            Directory &dir = *doc->m_directory;
            const qint32 memberId = state->member.id;
            if (state->seq < 0)
                state->seq = dir.appendMember(guest, state->member);
            else
                dir.restoreMember(guest, state->seq, state->member);
            state->created = dir.noteCreated(memberId);
            state->before = doc->m_permissions.recordsOf(memberId);
            // A free account of the pool goes with the new member.
            state->poolIndex = doc->m_voipPool.firstFree();
            QString voipId;
            QString voipPassword;
            if (state->poolIndex >= 0) {
                doc->m_voipPool.assign(state->poolIndex, memberId);
                voipId = doc->m_voipPool.entries().at(state->poolIndex).voipId;
                voipPassword = doc->m_voipPool.entries().at(state->poolIndex).voipPassword;
            }
            doc->m_permissions.addMember(memberId, voipId, voipPassword);
        },
        [doc, state, guest] {
            Directory &dir = *doc->m_directory;
            const qint32 memberId = state->member.id;
            doc->m_permissions.restoreRecords(memberId, state->before);
            if (state->poolIndex >= 0)
                doc->m_voipPool.assign(state->poolIndex, 0);
            if (state->created)
                dir.unnoteCreated(memberId);
            dir.removeMember(guest, dir.memberRows(guest).rowOfSeq(state->seq));
        });
    return EditResult::done(id);
}

std::optional<EditRefusal> DirectoryEditor::checkAddedMember(
    const QString &userId, const QSet<QString> &taken) const
{
    const Directory &directory = *m_document.m_directory;
    if (auto refusal = m_rules.checkAddedUserId(userId, [&](const QString &loginName) {
            return directory.hasLoginName(loginName) || taken.contains(loginName);
        }))
        return EditRefusal::fromMember(*refusal);
    return std::nullopt;
}

EditResult DirectoryEditor::addMembers(
    bool guest, QList<UserInfo> members, const QString &text, QList<qint32> *ids)
{
    Directory &directory = *m_document.m_directory;
    QSet<QString> taken;
    taken.reserve(members.size());
    // Ids as nextMemberId gives them one after another: each above the
    // largest, none of a member deleted since the last save.
    qint64 nextId = qint64(directory.nextMemberId());
    for (qsizetype i = 0; i < members.size(); ++i) {
        UserInfo &member = members[i];
        if (auto refusal = checkAddedMember(member.loginName, taken)) {
            EditResult result = EditResult::refused(std::move(*refusal));
            result.applied = int(i);
            return result;
        }
        while (nextId > 0 && nextId <= std::numeric_limits<qint32>::max()
            && directory.isDeletedSinceSave(qint32(nextId)))
            ++nextId;
        if (nextId <= 0 || nextId > std::numeric_limits<qint32>::max()) {
            EditResult result = EditResult::refused(EditRefusal::message(u"没有可用的会员编号."_s));
            result.applied = int(i);
            return result;
        }
        taken.insert(member.loginName);
        member.id = qint32(nextId++);
        member.isGuest = guest ? 1 : 0;
    }
    if (ids) {
        ids->clear();
        ids->reserve(members.size());
        for (const UserInfo &member : std::as_const(members))
            ids->append(member.id);
    }
    if (members.isEmpty())
        return EditResult::done(-1, 0);

    struct Added
    {
        UserInfo member;
        int seq = -1;
        bool created = false;
        int poolIndex = -1;
        AccessTokenTable::MemberRecords before;
    };
    auto added = std::make_shared<std::vector<Added>>();
    added->reserve(size_t(members.size()));
    for (UserInfo &member : members) {
        Added entry;
        entry.member = std::move(member);
        added->push_back(std::move(entry));
    }
    const qint32 firstId = added->front().member.id;
    CVelmarManagerDoc *doc = &m_document;
    m_document.push(
        text,
        [doc, added, guest] {
            Directory &dir = *doc->m_directory;
            dir.beginMemberBatch(guest, qsizetype(added->size()));
            for (Added &entry : *added) {
                const qint32 memberId = entry.member.id;
                if (entry.seq < 0)
                    entry.seq = dir.appendMember(guest, entry.member);
                else
                    dir.restoreMember(guest, entry.seq, entry.member);
                entry.created = dir.noteCreated(memberId);
                entry.before = doc->m_permissions.recordsOf(memberId);
                // A free account of the pool goes with each new member, as
                // with one typed into the blank row.
                entry.poolIndex = doc->m_voipPool.firstFree();
                QString voipId;
                QString voipPassword;
                if (entry.poolIndex >= 0) {
                    doc->m_voipPool.assign(entry.poolIndex, memberId);
                    voipId = doc->m_voipPool.entries().at(entry.poolIndex).voipId;
                    voipPassword = doc->m_voipPool.entries().at(entry.poolIndex).voipPassword;
                }
                doc->m_permissions.addMember(memberId, voipId, voipPassword);
            }
            dir.endMemberBatch(guest);
        },
        [doc, added, guest] {
            Directory &dir = *doc->m_directory;
            dir.beginMemberBatch(guest, qsizetype(added->size()));
            for (auto it = added->rbegin(); it != added->rend(); ++it) {
                const qint32 memberId = it->member.id;
                doc->m_permissions.restoreRecords(memberId, it->before);
                if (it->poolIndex >= 0)
                    doc->m_voipPool.assign(it->poolIndex, 0);
                if (it->created)
                    dir.unnoteCreated(memberId);
                dir.removeMember(guest, dir.memberRows(guest).rowOfSeq(it->seq));
            }
            dir.endMemberBatch(guest);
        });
    return EditResult::done(firstId, int(added->size()));
}

EditResult DirectoryEditor::setMemberCell(bool guest, int row, int column, const QVariant &value)
{
    Directory &directory = *m_document.m_directory;
    const MemberRows &rows = directory.memberRows(guest);
    if (row < 0 || row >= rows.count() || !MemberRules::isEditable(column, false))
        return EditResult::refusedSilently();
    const UserInfo &before = rows.at(row);
    UserInfo after = before;
    if (!MemberListModel::putCell(after, column, value))
        return EditResult::refusedSilently();
    if (column != MemberListModel::GenderColumn && column != MemberListModel::AdminColumn
        && column != MemberListModel::SolarColumn && column != MemberListModel::PublicColumn) {
        if (auto refusal = m_rules.checkCell(column, value.toString()))
            return EditResult::refused(EditRefusal::fromMember(*refusal, before.id));
    }
    if (after == before)
        return EditResult::done(before.id, 0);
    const int seq = rows.seqAt(row);
    const QString title = MemberListModel::columnTitle(column);
    Directory *dir = &directory;
    m_document.push(
        u"修改用户 %1 的%2"_s.arg(before.loginName, title),
        [dir, guest, seq, after] {
            dir->replaceMember(guest, dir->memberRows(guest).rowOfSeq(seq), after);
        },
        [dir, guest, seq, before = before] {
            dir->replaceMember(guest, dir->memberRows(guest).rowOfSeq(seq), before);
        });
    return EditResult::done(before.id);
}

EditResult DirectoryEditor::deleteMembers(bool guest, QList<int> rows)
{
    Directory &directory = *m_document.m_directory;
    const int count = directory.memberRows(guest).count();
    rows.removeIf([count](int row) { return row < 0 || row >= count; });
    // Bottom-up, so that the rows still to go keep their numbers.
    std::sort(rows.begin(), rows.end(), std::greater<int>());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    if (rows.isEmpty())
        return EditResult::refusedSilently();

    struct Deleted
    {
        UserInfo member;
        int seq = -1;
        bool noted = false;
        std::vector<TakenNode> memberships; // in the order they were taken
        QList<int> poolAccounts;
        AccessTokenTable::MemberRecords records;
        std::optional<FileBoxRights::Snapshot> rights;
    };
    auto deleted = std::make_shared<std::vector<Deleted>>();
    deleted->reserve(size_t(rows.size()));
    for (const int row : std::as_const(rows)) {
        Deleted entry;
        entry.seq = directory.memberRows(guest).seqAt(row);
        deleted->push_back(std::move(entry));
    }
    const QString text = rows.size() == 1
        ? u"删除用户 %1"_s.arg(directory.memberRows(guest).at(rows.first()).loginName)
        : u"删除 %1 个用户"_s.arg(rows.size());
    CVelmarManagerDoc *doc = &m_document;
    m_document.push(
        text,
        [doc, deleted, guest] {
            Directory &dir = *doc->m_directory;
            dir.beginMemberBatch(guest, qsizetype(deleted->size()));
            for (Deleted &entry : *deleted) {
                const int row = dir.memberRows(guest).rowOfSeq(entry.seq);
                const UserInfo &member = dir.memberRows(guest).at(row);
                const qint32 id = member.id;
                entry.noted = dir.noteDeleted(id, member.loginName);
                // A regular member can stand in the guest tree as well; a
                // guest member only there.
                entry.memberships.clear();
                for (const bool inGuestTree : { false, true }) {
                    if (!inGuestTree && guest)
                        continue;
                    const QList<DirectoryNode *> nodes
                        = dir.treeData(inGuestTree).membershipsOf(id);
                    for (DirectoryNode *node : nodes) {
                        TakenNode taken;
                        taken.node = node;
                        taken.parent = node->parent();
                        taken.row = node->row();
                        // The flag tells undo which tree the node goes back to.
                        taken.held = dir.takeNode(inGuestTree, node);
                        if (inGuestTree)
                            taken.row = -1 - taken.row;
                        entry.memberships.push_back(std::move(taken));
                    }
                }
                entry.member = dir.removeMember(guest, row);
                entry.poolAccounts = doc->m_voipPool.accountsOf(id);
                doc->m_voipPool.releaseMember(id);
                entry.records = doc->m_permissions.recordsOf(id);
                doc->m_permissions.removeMemberPermissions(id);
                doc->m_permissions.removeMemberVoipAccount(id);
                entry.rights.reset();
                if (doc->m_fileBox.rightsCountOfMember(id) > 0) {
                    entry.rights = doc->m_fileBox.snapshot();
                    doc->m_fileBox.removeRightsOfMember(id);
                }
            }
            dir.endMemberBatch(guest);
        },
        [doc, deleted, guest] {
            Directory &dir = *doc->m_directory;
            dir.beginMemberBatch(guest, qsizetype(deleted->size()));
            for (auto it = deleted->rbegin(); it != deleted->rend(); ++it) {
                Deleted &entry = *it;
                const qint32 id = entry.member.id;
                if (entry.rights)
                    doc->m_fileBox.restore(*entry.rights);
                doc->m_permissions.restoreRecords(id, entry.records);
                for (const int index : std::as_const(entry.poolAccounts))
                    doc->m_voipPool.assign(index, id);
                dir.restoreMember(guest, entry.seq, entry.member);
                for (auto taken = entry.memberships.rbegin(); taken != entry.memberships.rend();
                     ++taken) {
                    const bool inGuestTree = taken->row < 0;
                    const int row = inGuestTree ? -1 - taken->row : taken->row;
                    dir.insertNode(inGuestTree, std::move(taken->held), taken->parent, row);
                }
                if (entry.noted)
                    dir.unnoteDeleted(id);
            }
            dir.endMemberBatch(guest);
        });
    return EditResult::done(-1, int(rows.size()));
}

EditResult DirectoryEditor::addGroup(bool guest, const DirectoryNode *parent, const QString &name)
{
    Directory &directory = *m_document.m_directory;
    if (!parent || !parent->isContainer() || !inTree(parent, directory.treeData(guest)))
        return EditResult::refusedSilently();
    const qint32 id = directory.nextGroupId();
    if (id == -2)
        return EditResult::refused(EditRefusal::message(u"没有可用的类别编号."_s));
    auto taken = std::make_shared<TakenNode>();
    taken->parent = mutableNode(parent);
    const qint32 counterBefore = directory.groupCounter();
    Directory *dir = &directory;
    m_document.push(
        u"添加类别 %1"_s.arg(name),
        [dir, guest, taken, id, name] {
            if (!taken->held)
                taken->node = dir->addGroup(guest, taken->parent, id, name);
            else
                dir->insertNode(guest, std::move(taken->held), taken->parent, -1);
            dir->setGroupCounter(std::max(dir->groupCounter(), id));
        },
        [dir, guest, taken, counterBefore] {
            taken->held = dir->takeNode(guest, taken->node);
            dir->setGroupCounter(counterBefore);
        });
    return EditResult::done(id);
}

EditResult DirectoryEditor::renameGroup(bool guest, const DirectoryNode *group, const QString &name)
{
    if (!group || !group->isGroup() || name.isEmpty()
        || !inTree(group, m_document.m_directory->treeData(guest)))
        return EditResult::refusedSilently();
    if (group->name() == name)
        return EditResult::done(group->id(), 0);
    Directory *dir = m_document.m_directory;
    DirectoryNode *node = mutableNode(group);
    m_document.push(
        u"修改类别 %1 为 %2"_s.arg(group->name(), name),
        [dir, guest, node, name] { dir->renameGroup(guest, node, name); },
        [dir, guest, node, before = group->name()] { dir->renameGroup(guest, node, before); });
    return EditResult::done(group->id());
}

EditResult DirectoryEditor::deleteNode(bool guest, const DirectoryNode *node)
{
    if (!node || node->isRoot() || !inTree(node, m_document.m_directory->treeData(guest)))
        return EditResult::refusedSilently();
    Directory *dir = m_document.m_directory;
    CVelmarManagerDoc *doc = &m_document;
    auto taken = std::make_shared<TakenNode>();
    taken->node = mutableNode(node);
    taken->parent = node->parent();
    taken->row = node->row();
    auto rights = std::make_shared<std::optional<FileBoxRights::Snapshot>>();
    QString text;
    if (node->isGroup()) {
        text = u"删除类别 %1"_s.arg(node->name());
    } else {
        const UserInfo *member = dir->findMember(node->id());
        text = u"从 %1 删除用户 %2"_s.arg(
            node->parent()->isRoot() ? (guest ? u"论坛结构"_s : u"类别"_s) : node->parent()->name(),
            member ? member->loginName : QString::number(node->id()));
    }
    m_document.push(
        text,
        [dir, doc, guest, taken, rights] {
            if (taken->node->isGroup()) {
                // The rights of the group and of each group below it go too.
                QList<qint32> groups;
                std::vector<const DirectoryNode *> pending { taken->node };
                while (!pending.empty()) {
                    const DirectoryNode *current = pending.back();
                    pending.pop_back();
                    if (current->isGroup()) {
                        groups.append(current->id());
                        for (int row = 0; row < current->childCount(); ++row)
                            pending.push_back(current->child(row));
                    }
                }
                rights->reset();
                for (const qint32 group : std::as_const(groups)) {
                    if (doc->m_fileBox.rightsCountOfGroup(group) == 0)
                        continue;
                    if (!*rights)
                        *rights = doc->m_fileBox.snapshot();
                    doc->m_fileBox.removeRightsOfGroup(group);
                }
            }
            taken->held = dir->takeNode(guest, taken->node);
        },
        [dir, doc, guest, taken, rights] {
            dir->insertNode(guest, std::move(taken->held), taken->parent, taken->row);
            if (*rights)
                doc->m_fileBox.restore(**rights);
        });
    return EditResult::done(node->isGroup() ? node->id() : -1);
}

EditResult DirectoryEditor::deleteChildren(
    bool guest, const DirectoryNode *container, int row, int count)
{
    if (!container || !container->isContainer() || row < 0 || count <= 0
        || row + count > container->childCount()
        || !inTree(container, m_document.m_directory->treeData(guest)))
        return EditResult::refusedSilently();
    if (count == 1)
        return deleteNode(guest, container->child(row));
    // One step of the journal, however many nodes; bottom-up, so that the
    // rows above stay where they are.
    DocumentUndoStack *undo = m_document.m_undo;
    undo->beginMacro(u"删除 %1 个节点"_s.arg(count));
    for (int i = row + count - 1; i >= row; --i)
        deleteNode(guest, container->child(i));
    undo->endMacro();
    return EditResult::done(-1, count);
}

EditResult DirectoryEditor::moveNode(bool guest, const DirectoryNode *node, MoveStep step)
{
    if (!node || node->isRoot() || !inTree(node, m_document.m_directory->treeData(guest)))
        return EditResult::refusedSilently();
    const int from = node->row();
    const int last = node->parent()->childCount() - 1;
    int to = from;
    switch (step) {
    case MoveStep::Up:
        to = from - 1;
        break;
    case MoveStep::Down:
        to = from + 1;
        break;
    case MoveStep::First:
        to = 0;
        break;
    case MoveStep::Last:
        to = last;
        break;
    }
    if (to < 0 || to > last || to == from)
        return EditResult::refused(EditRefusal::message(u"没有可以移动的位置."_s));
    Directory *dir = m_document.m_directory;
    DirectoryNode *moved = mutableNode(node);
    DirectoryNode *parent = node->parent();
    static const char16_t *const names[] = { u"向上移动", u"向下移动", u"最上面", u"最底下" };
    const QString label = node->isGroup()
        ? node->name()
        : (dir->findMember(node->id()) ? dir->findMember(node->id())->loginName
                                       : QString::number(node->id()));
    m_document.push(
        u"%1 %2"_s.arg(QString::fromUtf16(names[int(step)]), label),
        [dir, guest, moved, parent, to] { dir->moveNode(guest, moved, parent, to); },
        [dir, guest, moved, parent, from] { dir->moveNode(guest, moved, parent, from); });
    return EditResult::done(node->isGroup() ? node->id() : -1);
}

EditResult DirectoryEditor::moveNodeInto(
    bool guest, const DirectoryNode *node, const DirectoryNode *target)
{
    const DirectoryTree &tree = m_document.m_directory->treeData(guest);
    if (!node || node->isRoot() || !target || !target->isContainer() || isInside(target, node)
        || !inTree(node, tree) || !inTree(target, tree))
        return EditResult::refused(EditRefusal::message(u"不能移动到这里."_s));
    if (node->isMembership() && node->parent() != target
        && tree.findMembership(node->id(), target, false))
        return EditResult::refused(EditRefusal::message(u"不能移动到这里."_s));
    const int lastAfterTake = target->childCount() - (node->parent() == target ? 1 : 0);
    if (node->parent() == target && node->row() == lastAfterTake)
        return EditResult::done(node->isGroup() ? node->id() : -1, 0);
    Directory *dir = m_document.m_directory;
    DirectoryNode *moved = mutableNode(node);
    DirectoryNode *from = node->parent();
    DirectoryNode *to = mutableNode(target);
    const int fromRow = node->row();
    const QString label = node->isGroup() ? node->name() : QString::number(node->id());
    const QString targetLabel
        = target->isRoot() ? (guest ? u"论坛结构"_s : u"类别"_s) : target->name();
    m_document.push(
        u"移动 %1 到 %2"_s.arg(label, targetLabel),
        [dir, guest, moved, to] { dir->moveNode(guest, moved, to, -1); },
        [dir, guest, moved, from, fromRow] { dir->moveNode(guest, moved, from, fromRow); });
    return EditResult::done(node->isGroup() ? node->id() : -1);
}

EditResult DirectoryEditor::placeMembers(
    bool guest, const DirectoryNode *group, const QList<qint32> &memberIds)
{
    const DirectoryTree &tree = m_document.m_directory->treeData(guest);
    if (!group || !group->isContainer() || !inTree(group, tree))
        return EditResult::refusedSilently();
    QList<qint32> placed;
    QSet<qint32> seen;
    int skipped = 0;
    for (const qint32 id : memberIds) {
        // A member already directly under the group is skipped without a word.
        if (seen.contains(id) || tree.findMembership(id, group, false)) {
            ++skipped;
            continue;
        }
        seen.insert(id);
        placed.append(id);
    }
    if (placed.isEmpty())
        return EditResult::done(-1, 0, skipped);
    const qint32 rankId = m_document.m_positions->list().defaultPositionId();
    Directory *dir = m_document.m_directory;
    DirectoryNode *target = mutableNode(group);
    auto taken = std::make_shared<std::vector<TakenNode>>(size_t(placed.size()));
    const QString where = group->isRoot() ? (guest ? u"论坛结构"_s : u"类别"_s) : group->name();
    m_document.push(
        u"添加群组 %1 (%2)"_s.arg(where).arg(placed.size()),
        [dir, guest, target, taken, placed, rankId] {
            for (size_t i = 0; i < taken->size(); ++i) {
                TakenNode &slot = (*taken)[i];
                if (!slot.held)
                    slot.node = dir->addMembership(guest, target, placed.at(qsizetype(i)), rankId);
                else
                    dir->insertNode(guest, std::move(slot.held), target, -1);
            }
        },
        [dir, guest, taken] {
            for (auto slot = taken->rbegin(); slot != taken->rend(); ++slot)
                slot->held = dir->takeNode(guest, slot->node);
        });
    return EditResult::done(-1, int(placed.size()), skipped);
}

EditResult DirectoryEditor::dropMembers(
    bool guest, const DirectoryNode *group, QByteArrayView block)
{
    const auto members = MemberDragFormat::decode(block);
    if (!members)
        return EditResult::refused(EditRefusal::message(u"拖放的数据不完整."_s));
    QList<qint32> ids;
    ids.reserve(members->size());
    for (const DraggedMember &member : *members)
        ids.append(member.id);
    return placeMembers(guest, group, ids);
}

EditResult DirectoryEditor::setMembershipPosition(
    bool guest, const DirectoryNode *membership, qint32 rankId)
{
    return setMembershipPositions(guest, { membership }, rankId);
}

EditResult DirectoryEditor::setMembershipPositions(
    bool guest, const QList<const DirectoryNode *> &memberships, qint32 rankId)
{
    std::vector<std::pair<DirectoryNode *, qint32>> changes;
    const DirectoryTree &tree = m_document.m_directory->treeData(guest);
    for (const DirectoryNode *node : memberships) {
        if (!node || !node->isMembership() || !inTree(node, tree))
            return EditResult::refusedSilently();
        if (node->rankId() != rankId)
            changes.emplace_back(mutableNode(node), node->rankId());
    }
    if (changes.empty())
        return EditResult::done(-1, 0);
    Directory *dir = m_document.m_directory;
    const QString name = m_document.m_positions->list().nameForId(rankId);
    m_document.push(
        u"等级设置 %1"_s.arg(name),
        [dir, guest, changes, rankId] {
            for (const auto &[node, before] : changes)
                dir->setRankId(guest, node, rankId);
        },
        [dir, guest, changes] {
            for (const auto &[node, before] : changes)
                dir->setRankId(guest, node, before);
        });
    return EditResult::done(-1, int(changes.size()));
}

EditResult DirectoryEditor::addPosition(const std::optional<QString> &name)
{
    PositionListModel *positions = m_document.m_positions;
    const PositionList &list = positions->list();
    if (name && name->isEmpty())
        return EditResult::refusedSilently();
    if (name && list.indexOfName(*name) >= 0)
        return EditResult::refused(EditRefusal::message(nameInUseText(), true));
    const Position position { list.newPositionId(), name ? *name : list.newPositionName() };
    const int row = list.count();
    Directory *dir = m_document.m_directory;
    m_document.push(
        u"追加等级 %1"_s.arg(position.name),
        [positions, dir, row, position] {
            positions->insertPosition(row, position);
            // Memberships can name the id before the position exists.
            dir->refreshMembershipLabels();
        },
        [positions, dir, row] {
            positions->takePosition(row);
            dir->refreshMembershipLabels();
        });
    return EditResult::done(position.id);
}

EditResult DirectoryEditor::renamePosition(int row, const QString &name)
{
    PositionListModel *positions = m_document.m_positions;
    const PositionList &list = positions->list();
    if (row < 0 || row >= list.count() || name.isEmpty())
        return EditResult::refusedSilently();
    // Compared with every name, the row's own included: confirming an
    // unchanged name is refused as well.
    if (list.indexOfName(name) >= 0)
        return EditResult::refused(EditRefusal::message(nameInUseText(), true));
    Directory *dir = m_document.m_directory;
    const QString before = list.positions.at(row).name;
    m_document.push(
        u"等级名修改 %1 为 %2"_s.arg(before, name),
        [positions, dir, row, name] {
            positions->setName(row, name);
            dir->refreshMembershipLabels();
        },
        [positions, dir, row, before] {
            positions->setName(row, before);
            dir->refreshMembershipLabels();
        });
    return EditResult::done(list.positions.at(row).id);
}

EditResult DirectoryEditor::deletePosition(int row)
{
    PositionListModel *positions = m_document.m_positions;
    const PositionList &list = positions->list();
    if (std::optional<EditRefusal> refusal = deletePositionRefusal(row))
        return EditResult::refused(std::move(*refusal));
    Directory *dir = m_document.m_directory;
    const Position removed = list.positions.at(row);
    // The position grid moves the memberships that held it to position 1
    // when it is built, which the deletion always makes it do.
    std::vector<DirectoryNode *> holders;
    dir->treeData(false).forEachMembership([&](const DirectoryNode *membership) {
        if (membership->rankId() == removed.id)
            holders.push_back(mutableNode(membership));
    });
    m_document.push(
        u"删除等级 %1"_s.arg(removed.name),
        [positions, dir, row, holders] {
            positions->takePosition(row);
            for (DirectoryNode *membership : holders)
                dir->setRankId(false, membership, 1);
            dir->refreshMembershipLabels();
        },
        [positions, dir, row, removed, holders] {
            positions->insertPosition(row, removed);
            for (DirectoryNode *membership : holders)
                dir->setRankId(false, membership, removed.id);
            dir->refreshMembershipLabels();
        });
    return EditResult::done(removed.id);
}

std::optional<EditRefusal> DirectoryEditor::deletePositionRefusal(int row) const
{
    const PositionList &list = m_document.m_positions->list();
    if (row < 0 || row >= list.count())
        return EditRefusal {};
    // Id 1 is the permanent default whatever the configured default is.
    if (list.positions.at(row).id == 1)
        return EditRefusal::message(u"不能删除选择的默认的职务."_s, true);
    if (list.count() == 1)
        return EditRefusal::message(u"默认的职务至少1个以上."_s, true);
    return std::nullopt;
}

EditResult DirectoryEditor::movePosition(int row, int delta)
{
    PositionListModel *positions = m_document.m_positions;
    const int count = positions->list().count();
    const int target = row + delta;
    if (row < 0 || row >= count || delta == 0 || target < 0 || target >= count)
        return EditResult::refused(EditRefusal::message(u"没有可以移动的位置."_s));
    const Position &moved = positions->list().positions.at(row);
    m_document.push(
        u"%1 %2"_s.arg(delta < 0 ? u"向上移动"_s : u"向下移动"_s, moved.name),
        [positions, row, target] { positions->movePosition(row, target); },
        [positions, row, target] { positions->movePosition(target, row); });
    return EditResult::done(moved.id);
}

EditResult DirectoryEditor::setDefaultPosition(qint32 positionId)
{
    PositionListModel *positions = m_document.m_positions;
    const qint32 before = positions->list().defaultId;
    if (positionId != -1 && positions->list().indexOfId(positionId) < 0)
        return EditResult::refusedSilently();
    if (before == positionId)
        return EditResult::done(positionId, 0);
    // Written at once: a refusal to write is a refusal of the edit.
    if (!m_document.writeDefaultPosition(positionId))
        return EditResult::refused(EditRefusal::message(u"不能写入 Serverinfo.ini."_s, true));
    CVelmarManagerDoc *doc = &m_document;
    auto written = std::make_shared<bool>(true);
    m_document.push(
        u"默认登记设置 %1"_s.arg(positions->list().nameForId(positionId)),
        [doc, positions, positionId, written] {
            if (!*written)
                doc->writeDefaultPosition(positionId);
            *written = false;
            positions->setDefaultPositionId(positionId);
        },
        [doc, positions, before] {
            doc->writeDefaultPosition(before);
            positions->setDefaultPositionId(before);
        });
    return EditResult::done(positionId);
}
