#pragma once

#include "DirectoryTree.h"
#include "EditRefusal.h"
#include "UserInfo.h"

#include <optional>
#include <QAbstractItemModel>

class Directory;
class DirectoryEditor;

// One group tree (regular or guest) as an item model: the root, groups with
// their sub-groups and memberships. A view over the directory's tree; edits
// (renames, drops, moves, removals) go through the editor. Display text: the
// group name, or the member's name (its user ID while it has none).
class GroupTreeModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Role {
        NodeKindRole = Qt::UserRole + 1, // int of DirectoryNode::Kind
        GroupIdRole, // containers: the group id (root: its marker)
        MemberIdRole, // memberships: the member id
        RankIdRole, // memberships: the position id, -1 = none
        RankNameRole, // memberships: the position name
        PositionRole, // the stored order value
        MaleRole, // memberships: the member's gender flag
        LoginNameRole, // memberships: the member's user ID
    };

    // The format of a node dragged inside its tree: the tree's root id, then
    // the rows from the root down to the node, 32-bit little-endian each.
    static QString nodeMimeType();

    GroupTreeModel(const Directory &directory, bool guest, QObject *parent = nullptr);

    bool isGuest() const { return m_guest; }
    void setEditor(DirectoryEditor *editor) { m_editor = editor; }
    const DirectoryTree &tree() const;

    const DirectoryNode *nodeForIndex(const QModelIndex &index) const;
    QModelIndex indexForNode(const DirectoryNode *node) const;
    QModelIndex rootIndex() const;
    QModelIndex findGroup(qint32 groupId) const;
    QModelIndex findMembership(
        qint32 memberId, const QModelIndex &start = {}, bool recursive = true) const;

    // Why the last edit through the generic API was refused.
    const std::optional<EditRefusal> &lastRefusal() const { return m_lastRefusal; }

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // EditRole on a group (not the root) renames it.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    // Removes groups (with everything below) or memberships.
    bool removeRows(int row, int count, const QModelIndex &parent = {}) override;
    // One node at a time, among its siblings or under another group.
    bool moveRows(const QModelIndex &sourceParent, int sourceRow, int count,
        const QModelIndex &destinationParent, int destinationChild) override;

    Qt::DropActions supportedDragActions() const override;
    Qt::DropActions supportedDropActions() const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    // The drag-over rules: a group (or the root) takes members dragged from a
    // grid, and a node of this tree when it is not the node itself or below
    // it and, for a membership, the group does not hold the member directly.
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
        const QModelIndex &parent) const override;
    // Members are placed at the end of the group; a node moves there as the
    // last child with its subtree.
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
        const QModelIndex &parent) override;

    // The root's label: "类别" for the regular tree, "论坛结构" for the guest tree.
    QString rootLabel() const;

    // The node a drag of this tree carries (nodeMimeType), nullptr when the
    // block names another tree, the root or no node. Other views that take
    // groups from the tree (the file box's rights) read drags with it.
    const DirectoryNode *draggedNode(const QMimeData *data) const;

private:
    friend class Directory;

    const Directory &m_directory;
    bool m_guest;
    DirectoryEditor *m_editor = nullptr;
    std::optional<EditRefusal> m_lastRefusal;
};
