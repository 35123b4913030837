#pragma once

#include <memory>
#include <QString>
#include <vector>

// A node of a group tree: the root (standing for parent id -1 or -100), a
// group, or a membership of a member in the group above it. Children of a
// group are sub-groups and memberships in display order; the save derives the
// stored parent, order and depth from that order.
class DirectoryNode
{
public:
    enum class Kind : quint8 { Root, Group, Membership };

    explicit DirectoryNode(Kind kind)
        : m_kind(kind)
    { }
    DirectoryNode(const DirectoryNode &) = delete;
    DirectoryNode &operator=(const DirectoryNode &) = delete;

    Kind kind() const { return m_kind; }
    bool isRoot() const { return m_kind == Kind::Root; }
    bool isGroup() const { return m_kind == Kind::Group; }
    // Root or group: a node that can hold groups and memberships.
    bool isContainer() const { return m_kind != Kind::Membership; }
    bool isMembership() const { return m_kind == Kind::Membership; }

    // Group id; member id for a membership; the root marker for the root.
    qint32 id() const { return m_id; }
    // Memberships: the position (Rank id) held in the group, -1 for none.
    qint32 rankId() const { return m_rankId; }
    // The stored order value as loaded; 0 for a node made in this run.
    qint32 position() const { return m_position; }
    // Groups: the group name.
    const QString &name() const { return m_name; }

    DirectoryNode *parent() const { return m_parent; }
    // Index among the parent's children.
    int row() const { return m_row; }
    int childCount() const { return int(m_children.size()); }
    DirectoryNode *child(int row) const { return m_children[size_t(row)].get(); }
    // The group id of the nearest container above (the root marker at top level).
    qint32 parentGroupId() const { return m_parent ? m_parent->m_id : -1; }

private:
    // Only the tree changes its nodes, so that its indexes stay right.
    friend class DirectoryTree;

    Kind m_kind;
    qint32 m_id = 0;
    qint32 m_rankId = -1;
    qint32 m_position = 0;
    QString m_name;
    int m_row = 0;
    DirectoryNode *m_parent = nullptr;
    std::vector<std::unique_ptr<DirectoryNode>> m_children;
};
