#include "Directory.h"

#include <limits>

Directory::Directory(QObject *parent)
    : QObject(parent)
    , m_regularMembersModel(new MemberListModel(*this, false, this))
    , m_guestMembersModel(new MemberListModel(*this, true, this))
    , m_regularTreeModel(new GroupTreeModel(*this, false, this))
    , m_guestTreeModel(new GroupTreeModel(*this, true, this))
{
    // A member's row icon follows its memberships.
    const auto repaintIcon = [this](qint32 memberId) {
        for (MemberListModel *model : { m_regularMembersModel, m_guestMembersModel }) {
            const int row = model->rowOfId(memberId);
            if (row >= 0) {
                const QModelIndex cell = model->index(row, MemberListModel::LoginNameColumn);
                Q_EMIT model->dataChanged(cell, cell, { MemberListModel::IconIndexRole });
            }
        }
    };
    connect(this, &Directory::memberPlaced, this, repaintIcon);
    connect(this, &Directory::memberUnplaced, this, repaintIcon);
}

Directory::~Directory() = default;

void Directory::adopt(DirectoryData data)
{
    m_regularMembersModel->beginResetModel();
    m_guestMembersModel->beginResetModel();
    m_regularTreeModel->beginResetModel();
    m_guestTreeModel->beginResetModel();
    m_groupCounter = data.groupCounter;
    m_created.clear();
    m_deleted.clear();
    m_createdSet.clear();
    m_deletedSet.clear();
    m_deletedLoginNames.clear();
    for (UserInfo &member : data.regularMembers)
        member.isGuest = 0;
    for (UserInfo &member : data.guestMembers)
        member.isGuest = 1;
    m_regularRows.reset(std::move(data.regularMembers));
    m_guestRows.reset(std::move(data.guestMembers));
    m_regularTree = std::move(data.regularTree);
    m_guestTree = std::move(data.guestTree);
    m_guestTreeModel->endResetModel();
    m_regularTreeModel->endResetModel();
    m_guestMembersModel->endResetModel();
    m_regularMembersModel->endResetModel();
}

DirectoryData Directory::toData() const
{
    DirectoryData data;
    data.regularMembers = m_regularRows.toList();
    data.guestMembers = m_guestRows.toList();
    data.regularTree = m_regularTree;
    data.guestTree = m_guestTree;
    data.groupCounter = m_groupCounter;
    return data;
}

DirectoryContent Directory::content() const
{
    return { m_regularRows.toList(), m_guestRows.toList(), m_regularTree, m_guestTree };
}

const UserInfo *Directory::findMember(qint32 id) const
{
    if (const UserInfo *member = m_regularRows.lastWithId(id))
        return member;
    return m_guestRows.lastWithId(id);
}

void Directory::setPositions(const PositionListModel *positions)
{
    m_positions = positions;
    refreshMembershipLabels();
}

qint32 Directory::nextGroupId() const
{
    const qint64 next = qint64(m_groupCounter) + 1;
    return next < 1 || next > std::numeric_limits<qint32>::max() ? -2 : qint32(next);
}

qint32 Directory::nextMemberId() const
{
    qint64 id = qint64(std::max(m_regularRows.maxId(), m_guestRows.maxId())) + 1;
    // Ids of members deleted since the last save are not reused before it:
    // their dependent rows are removed by id when the save runs.
    while (id <= std::numeric_limits<qint32>::max() && m_deletedSet.contains(qint32(id)))
        ++id;
    return id > std::numeric_limits<qint32>::max() ? -1 : qint32(id);
}

bool Directory::hasLoginName(const QString &loginName) const
{
    return m_regularRows.containsLoginName(loginName) || m_guestRows.containsLoginName(loginName);
}

bool Directory::isPlaced(qint32 memberId, bool guestList) const
{
    return m_guestTree.hasMembership(memberId)
        || (!guestList && m_regularTree.hasMembership(memberId));
}

void Directory::markSaved()
{
    m_created.clear();
    m_deleted.clear();
    m_createdSet.clear();
    m_deletedSet.clear();
    m_deletedLoginNames.clear();
}

int Directory::appendMember(bool guest, UserInfo member)
{
    member.isGuest = guest ? 1 : 0;
    const qint32 id = member.id;
    MemberListModel *model = members(guest);
    // The blank row stays last: the member goes in front of it.
    const int row = mutableRows(guest).count();
    const bool signalled = !m_memberBatch[guest];
    if (signalled)
        model->beginInsertRows({}, row, row);
    const int seq = mutableRows(guest).append(std::move(member));
    if (signalled)
        model->endInsertRows();
    // Memberships can name the id before its member exists (a member
    // deleted and added again); only theirs can change.
    refreshMember(id);
    return seq;
}

void Directory::beginMemberBatch(bool guest, qsizetype count)
{
    constexpr qsizetype RowByRow = 64;
    if (count <= RowByRow || m_memberBatch[guest])
        return;
    m_memberBatch[guest] = true;
    members(guest)->beginResetModel();
}

void Directory::endMemberBatch(bool guest)
{
    if (!m_memberBatch[guest])
        return;
    m_memberBatch[guest] = false;
    members(guest)->endResetModel();
}

UserInfo Directory::removeMember(bool guest, int row)
{
    MemberListModel *model = members(guest);
    const bool signalled = !m_memberBatch[guest];
    if (signalled)
        model->beginRemoveRows({}, row, row);
    UserInfo member = mutableRows(guest).remove(row);
    if (signalled)
        model->endRemoveRows();
    refreshMember(member.id);
    return member;
}

void Directory::restoreMember(bool guest, int seq, UserInfo member)
{
    MemberRows &rows = mutableRows(guest);
    const qint32 id = member.id;
    const int row = rows.rowForSeq(seq);
    MemberListModel *model = members(guest);
    const bool signalled = !m_memberBatch[guest];
    if (signalled)
        model->beginInsertRows({}, row, row);
    rows.restore(seq, std::move(member));
    if (signalled)
        model->endInsertRows();
    refreshMember(id);
}

void Directory::replaceMember(bool guest, int row, UserInfo member)
{
    member.isGuest = guest ? 1 : 0;
    const qint32 id = member.id;
    mutableRows(guest).replace(row, std::move(member));
    MemberListModel *model = members(guest);
    Q_EMIT model->dataChanged(
        model->index(row, 0), model->index(row, MemberListModel::ColumnCount - 1));
    // Names and genders show in both trees.
    refreshMember(id);
}

void Directory::refreshMember(qint32 id)
{
    for (GroupTreeModel *model : { m_regularTreeModel, m_guestTreeModel }) {
        for (const DirectoryNode *membership : model->tree().membershipsOf(id)) {
            const QModelIndex changed = model->indexForNode(membership);
            Q_EMIT model->dataChanged(changed, changed,
                { Qt::DisplayRole, GroupTreeModel::MaleRole, GroupTreeModel::LoginNameRole });
        }
    }
}

void Directory::refreshMembershipLabels()
{
    for (GroupTreeModel *model : { m_regularTreeModel, m_guestTreeModel }) {
        // One signal per container rather than one per membership.
        const auto refresh = [model](const DirectoryNode *container) {
            if (container->childCount() > 0) {
                const QModelIndex parent = model->indexForNode(container);
                Q_EMIT model->dataChanged(model->index(0, 0, parent),
                    model->index(container->childCount() - 1, 0, parent),
                    { Qt::DisplayRole, GroupTreeModel::RankIdRole, GroupTreeModel::RankNameRole });
            }
        };
        refresh(model->tree().root());
        model->tree().forEachGroup([&](const DirectoryNode *group, int) { refresh(group); });
    }
}

bool Directory::noteCreated(qint32 id)
{
    if (m_createdSet.contains(id))
        return false;
    m_createdSet.insert(id);
    m_created.append(id);
    return true;
}

void Directory::unnoteCreated(qint32 id)
{
    if (!m_created.isEmpty() && m_created.last() == id) {
        m_created.removeLast();
        m_createdSet.remove(id);
    }
}

bool Directory::noteDeleted(qint32 id, const QString &loginName)
{
    if (m_deletedSet.contains(id))
        return false;
    m_deletedSet.insert(id);
    m_deleted.append(id);
    m_deletedLoginNames.append(loginName);
    return true;
}

void Directory::unnoteDeleted(qint32 id)
{
    if (!m_deleted.isEmpty() && m_deleted.last() == id) {
        m_deleted.removeLast();
        m_deletedLoginNames.removeLast();
        m_deletedSet.remove(id);
    }
}

DirectoryNode *Directory::addGroup(
    bool guest, DirectoryNode *parent, qint32 id, const QString &name)
{
    GroupTreeModel *model = tree(guest);
    const int row = parent->childCount();
    model->beginInsertRows(model->indexForNode(parent), row, row);
    DirectoryNode *node = mutableTree(guest).addGroup(parent, id, name);
    model->endInsertRows();
    if (id > m_groupCounter)
        m_groupCounter = id;
    return node;
}

DirectoryNode *Directory::addMembership(
    bool guest, DirectoryNode *group, qint32 memberId, qint32 rankId)
{
    GroupTreeModel *model = tree(guest);
    const int row = group->childCount();
    model->beginInsertRows(model->indexForNode(group), row, row);
    DirectoryNode *node = mutableTree(guest).addMembership(group, memberId, rankId);
    model->endInsertRows();
    Q_EMIT memberPlaced(memberId);
    return node;
}

void Directory::notifyMemberships(const DirectoryNode *node, bool placed)
{
    std::vector<const DirectoryNode *> pending { node };
    while (!pending.empty()) {
        const DirectoryNode *current = pending.back();
        pending.pop_back();
        // Children in order, so the notices come out in tree order.
        for (int row = current->childCount() - 1; row >= 0; --row)
            pending.push_back(current->child(row));
        if (current->isMembership()) {
            if (placed)
                Q_EMIT memberPlaced(current->id());
            else
                Q_EMIT memberUnplaced(current->id());
        }
    }
}

std::unique_ptr<DirectoryNode> Directory::takeNode(bool guest, DirectoryNode *node)
{
    GroupTreeModel *model = tree(guest);
    const QModelIndex index = model->indexForNode(node);
    model->beginRemoveRows(index.parent(), node->row(), node->row());
    std::unique_ptr<DirectoryNode> taken = mutableTree(guest).take(node);
    model->endRemoveRows();
    notifyMemberships(taken.get(), false);
    return taken;
}

DirectoryNode *Directory::insertNode(
    bool guest, std::unique_ptr<DirectoryNode> node, DirectoryNode *parent, int row)
{
    GroupTreeModel *model = tree(guest);
    if (row < 0 || row > parent->childCount())
        row = parent->childCount();
    model->beginInsertRows(model->indexForNode(parent), row, row);
    DirectoryNode *inserted = mutableTree(guest).insert(std::move(node), parent, row);
    model->endInsertRows();
    notifyMemberships(inserted, true);
    return inserted;
}

bool Directory::moveNode(bool guest, DirectoryNode *node, DirectoryNode *parent, int row)
{
    GroupTreeModel *model = tree(guest);
    DirectoryNode *source = node->parent();
    const int from = node->row();
    const int countAfterTake = parent->childCount() - (source == parent ? 1 : 0);
    if (row < 0 || row > countAfterTake)
        row = countAfterTake;
    if (source == parent && row == from)
        return false;
    // beginMoveRows counts the destination before the node is taken out.
    const int destination = (source == parent && row > from) ? row + 1 : row;
    if (!model->beginMoveRows(
            model->indexForNode(source), from, from, model->indexForNode(parent), destination))
        return false;
    const bool moved = mutableTree(guest).move(node, parent, row);
    model->endMoveRows();
    return moved;
}

void Directory::renameGroup(bool guest, DirectoryNode *group, const QString &name)
{
    mutableTree(guest).setName(group, name);
    GroupTreeModel *model = tree(guest);
    const QModelIndex changed = model->indexForNode(group);
    Q_EMIT model->dataChanged(changed, changed, { Qt::DisplayRole, Qt::EditRole });
}

void Directory::setRankId(bool guest, DirectoryNode *membership, qint32 rankId)
{
    mutableTree(guest).setRankId(membership, rankId);
    GroupTreeModel *model = tree(guest);
    const QModelIndex changed = model->indexForNode(membership);
    Q_EMIT model->dataChanged(
        changed, changed, { GroupTreeModel::RankIdRole, GroupTreeModel::RankNameRole });
}
