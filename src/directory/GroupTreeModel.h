#pragma once

#include "DirectoryTree.h"
#include "UserInfo.h"

#include <QAbstractItemModel>

class PositionListModel;

// One group tree (regular or guest) as an item model: the root, groups with
// their sub-groups and memberships. Display text: the group name, or the
// member's login name looked up in the member index. The model owns its tree.
class GroupTreeModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Role {
        NodeKindRole = Qt::UserRole + 1, // int of DirectoryNode::Kind
        GroupIdRole, // containers: the group id (root: its marker)
        MemberIdRole, // memberships: the member id
        RankIdRole, // memberships: the position id, -1 = none
        RankNameRole, // memberships: the position name (needs setPositions)
        PositionRole, // the stored order value
        MaleRole, // memberships: the member's gender flag
    };

    explicit GroupTreeModel(DirectoryTree::Kind kind, QObject *parent = nullptr);

    bool isGuest() const { return m_tree.isGuest(); }
    // Adopts a tree loaded elsewhere (model reset).
    void setTree(DirectoryTree tree);
    const DirectoryTree &tree() const { return m_tree; }

    // Where membership labels come from; not owned, may be null.
    void setMemberIndex(const MemberIndex *index);
    void setPositions(const PositionListModel *positions);
    // Repaints every membership label (after the member index changed).
    void refreshMemberLabels();
    // Repaints the memberships of one member.
    void refreshMemberLabels(qint32 memberId);

    DirectoryNode *nodeForIndex(const QModelIndex &index) const;
    QModelIndex indexForNode(const DirectoryNode *node) const;
    QModelIndex rootIndex() const;
    QModelIndex findGroup(qint32 groupId) const;
    QModelIndex findMembership(
        qint32 memberId, const QModelIndex &start = {}, bool recursive = true) const;

    // Appends a group under a root or group index. Returns its index, invalid
    // when parent is a membership.
    QModelIndex addGroup(
        const QModelIndex &parent, qint32 id, const QString &name, qint32 position = 0);
    // Inserts a membership under a group (row -1: last). Invalid index when the
    // member already stands directly under the group or group is no container.
    QModelIndex addMembership(const QModelIndex &group, qint32 memberId, qint32 rankId,
        qint32 position = 0, int row = -1);
    // Removes a group (with everything below it) or a membership. The member
    // ids of the removed memberships are appended to removedMembers when given.
    bool removeNode(const QModelIndex &index, QList<qint32> *removedMembers = nullptr);
    // Removes every membership of the member; returns how many went.
    int removeMembershipsOf(qint32 memberId);
    // Moves a group or membership with its subtree under newParent at row
    // (-1: last; counted after the node is taken out). Refused for the root,
    // into its own subtree, and for a membership whose member already stands
    // directly under the new parent.
    bool moveNode(const QModelIndex &index, const QModelIndex &newParent, int row = -1);
    // Moves among the siblings: -1 up, +1 down.
    bool moveBy(const QModelIndex &index, int delta);
    bool moveToFirst(const QModelIndex &index);
    bool moveToLast(const QModelIndex &index);
    bool setRankId(const QModelIndex &membership, qint32 rankId);
    bool renameGroup(const QModelIndex &group, const QString &name);

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // EditRole on a group (not the root) renames it.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

    // The root's label: "类别" for the regular tree, "论坛结构" for the guest tree.
    QString rootLabel() const;

private:
    const UserInfo *memberOf(const DirectoryNode *membership) const;

    DirectoryTree m_tree;
    const MemberIndex *m_memberIndex = nullptr;
    const PositionListModel *m_positions = nullptr;
};
