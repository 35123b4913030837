#include "GroupTreeModel.h"

#include "PositionListModel.h"

using namespace Qt::StringLiterals;

GroupTreeModel::GroupTreeModel(DirectoryTree::Kind kind, QObject *parent)
    : QAbstractItemModel(parent)
    , m_tree(kind)
{ }

void GroupTreeModel::setTree(DirectoryTree tree)
{
    beginResetModel();
    m_tree = std::move(tree);
    endResetModel();
}

void GroupTreeModel::setMemberIndex(const MemberIndex *index)
{
    m_memberIndex = index;
    refreshMemberLabels();
}

void GroupTreeModel::setPositions(const PositionListModel *positions)
{
    m_positions = positions;
    refreshMemberLabels();
}

void GroupTreeModel::refreshMemberLabels()
{
    // One signal per group rather than one per membership.
    const auto refresh = [this](const DirectoryNode *container) {
        if (container->childCount() > 0) {
            const QModelIndex parent = indexForNode(container);
            Q_EMIT dataChanged(index(0, 0, parent), index(container->childCount() - 1, 0, parent),
                { Qt::DisplayRole, MaleRole, RankNameRole });
        }
    };
    refresh(m_tree.root());
    m_tree.forEachGroup([&](const DirectoryNode *group, int) { refresh(group); });
}

void GroupTreeModel::refreshMemberLabels(qint32 memberId)
{
    for (const DirectoryNode *membership : m_tree.membershipsOf(memberId)) {
        const QModelIndex changed = indexForNode(membership);
        Q_EMIT dataChanged(changed, changed, { Qt::DisplayRole, MaleRole, RankNameRole });
    }
}

QString GroupTreeModel::rootLabel() const
{
    return m_tree.isGuest() ? u"论坛结构"_s : u"类别"_s;
}

DirectoryNode *GroupTreeModel::nodeForIndex(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != this)
        return nullptr;
    return static_cast<DirectoryNode *>(index.internalPointer());
}

QModelIndex GroupTreeModel::indexForNode(const DirectoryNode *node) const
{
    if (!node)
        return {};
    return createIndex(node->parent() ? node->row() : 0, 0, const_cast<DirectoryNode *>(node));
}

QModelIndex GroupTreeModel::rootIndex() const
{
    return indexForNode(m_tree.root());
}

QModelIndex GroupTreeModel::findGroup(qint32 groupId) const
{
    return indexForNode(m_tree.findGroup(groupId));
}

QModelIndex GroupTreeModel::findMembership(
    qint32 memberId, const QModelIndex &start, bool recursive) const
{
    return indexForNode(m_tree.findMembership(memberId, nodeForIndex(start), recursive));
}

const UserInfo *GroupTreeModel::memberOf(const DirectoryNode *membership) const
{
    if (!m_memberIndex)
        return nullptr;
    auto it = m_memberIndex->constFind(membership->id);
    return it == m_memberIndex->cend() ? nullptr : &it.value();
}

QModelIndex GroupTreeModel::addGroup(
    const QModelIndex &parent, qint32 id, const QString &name, qint32 position)
{
    DirectoryNode *container = nodeForIndex(parent);
    if (!container || !container->isContainer())
        return {};
    const int row = container->childCount();
    beginInsertRows(parent, row, row);
    DirectoryNode *node = m_tree.addGroup(container, id, name, position);
    endInsertRows();
    return indexForNode(node);
}

QModelIndex GroupTreeModel::addMembership(
    const QModelIndex &group, qint32 memberId, qint32 rankId, qint32 position, int row)
{
    DirectoryNode *container = nodeForIndex(group);
    if (!container || !container->isContainer()
        || m_tree.findMembership(memberId, container, false))
        return {};
    if (row < 0 || row > container->childCount())
        row = container->childCount();
    beginInsertRows(group, row, row);
    DirectoryNode *node = m_tree.addMembership(container, memberId, rankId, position, row);
    endInsertRows();
    return indexForNode(node);
}

bool GroupTreeModel::removeNode(const QModelIndex &index, QList<qint32> *removedMembers)
{
    DirectoryNode *node = nodeForIndex(index);
    if (!node || node->isRoot())
        return false;
    if (removedMembers) {
        if (node->isMembership()) {
            removedMembers->append(node->id);
        } else {
            std::vector<const DirectoryNode *> pending { node };
            while (!pending.empty()) {
                const DirectoryNode *current = pending.back();
                pending.pop_back();
                // Children in order, so the ids come out in tree order.
                for (int row = current->childCount() - 1; row >= 0; --row)
                    pending.push_back(current->child(row));
                if (current->isMembership())
                    removedMembers->append(current->id);
            }
        }
    }
    beginRemoveRows(index.parent(), node->row(), node->row());
    m_tree.take(node);
    endRemoveRows();
    return true;
}

int GroupTreeModel::removeMembershipsOf(qint32 memberId)
{
    int removed = 0;
    while (DirectoryNode *node = m_tree.findMembership(memberId)) {
        removeNode(indexForNode(node));
        ++removed;
    }
    return removed;
}

bool GroupTreeModel::moveNode(const QModelIndex &index, const QModelIndex &newParent, int row)
{
    DirectoryNode *node = nodeForIndex(index);
    DirectoryNode *target = nodeForIndex(newParent);
    if (!node || node->isRoot() || !target || !target->isContainer())
        return false;
    for (const DirectoryNode *up = target; up; up = up->parent()) {
        if (up == node)
            return false;
    }
    DirectoryNode *source = node->parent();
    if (node->isMembership() && source != target && m_tree.findMembership(node->id, target, false))
        return false;
    const int from = node->row();
    const int countAfterTake = target->childCount() - (source == target ? 1 : 0);
    if (row < 0 || row > countAfterTake)
        row = countAfterTake;
    if (source == target && row == from)
        return false;
    // beginMoveRows counts the destination before the node is taken out.
    const int destination = (source == target && row > from) ? row + 1 : row;
    if (!beginMoveRows(index.parent(), from, from, newParent, destination))
        return false;
    const bool moved = m_tree.move(node, target, row);
    endMoveRows();
    return moved;
}

bool GroupTreeModel::moveBy(const QModelIndex &index, int delta)
{
    const DirectoryNode *node = nodeForIndex(index);
    if (!node || node->isRoot())
        return false;
    const int row = node->row() + delta;
    if (row < 0 || row >= node->parent()->childCount())
        return false;
    return moveNode(index, index.parent(), row);
}

bool GroupTreeModel::moveToFirst(const QModelIndex &index)
{
    const DirectoryNode *node = nodeForIndex(index);
    return node && !node->isRoot() && moveNode(index, index.parent(), 0);
}

bool GroupTreeModel::moveToLast(const QModelIndex &index)
{
    const DirectoryNode *node = nodeForIndex(index);
    return node && !node->isRoot() && moveNode(index, index.parent(), -1);
}

bool GroupTreeModel::setRankId(const QModelIndex &membership, qint32 rankId)
{
    DirectoryNode *node = nodeForIndex(membership);
    if (!node || !node->isMembership())
        return false;
    if (node->rankId != rankId) {
        node->rankId = rankId;
        Q_EMIT dataChanged(membership, membership, { RankIdRole, RankNameRole });
    }
    return true;
}

bool GroupTreeModel::renameGroup(const QModelIndex &group, const QString &name)
{
    DirectoryNode *node = nodeForIndex(group);
    if (!node || !node->isGroup() || name.isEmpty())
        return false;
    if (node->name != name) {
        node->name = name;
        Q_EMIT dataChanged(group, group, { Qt::DisplayRole, Qt::EditRole });
    }
    return true;
}

QModelIndex GroupTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (column != 0 || row < 0)
        return {};
    if (!parent.isValid())
        return row == 0 ? rootIndex() : QModelIndex();
    const DirectoryNode *container = nodeForIndex(parent);
    if (!container || row >= container->childCount())
        return {};
    return createIndex(row, 0, container->child(row));
}

QModelIndex GroupTreeModel::parent(const QModelIndex &child) const
{
    const DirectoryNode *node = nodeForIndex(child);
    if (!node || !node->parent())
        return {};
    return indexForNode(node->parent());
}

int GroupTreeModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return 1;
    if (parent.column() != 0)
        return 0;
    const DirectoryNode *node = nodeForIndex(parent);
    return node ? node->childCount() : 0;
}

int GroupTreeModel::columnCount(const QModelIndex &) const
{
    return 1;
}

QVariant GroupTreeModel::data(const QModelIndex &index, int role) const
{
    const DirectoryNode *node = nodeForIndex(index);
    if (!node)
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        if (node->isRoot())
            return rootLabel();
        if (node->isGroup())
            return node->name;
        if (const UserInfo *member = memberOf(node))
            return member->loginName;
        // A membership of a member the directory does not know still shows up.
        return QString::number(node->id);
    case NodeKindRole:
        return int(node->kind());
    case GroupIdRole:
        return node->isContainer() ? QVariant(node->id) : QVariant();
    case MemberIdRole:
        return node->isMembership() ? QVariant(node->id) : QVariant();
    case RankIdRole:
        return node->isMembership() ? QVariant(node->rankId) : QVariant();
    case RankNameRole:
        if (!node->isMembership() || !m_positions)
            return {};
        return m_positions->list().nameForId(node->rankId);
    case PositionRole:
        return node->position;
    case MaleRole:
        if (!node->isMembership())
            return {};
        if (const UserInfo *member = memberOf(node))
            return member->isMale();
        return true;
    default:
        return {};
    }
}

Qt::ItemFlags GroupTreeModel::flags(const QModelIndex &index) const
{
    const DirectoryNode *node = nodeForIndex(index);
    if (!node)
        return Qt::NoItemFlags;
    Qt::ItemFlags result = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (node->isGroup())
        result |= Qt::ItemIsEditable;
    if (node->isMembership())
        result |= Qt::ItemNeverHasChildren;
    return result;
}

bool GroupTreeModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole)
        return false;
    return renameGroup(index, value.toString());
}
