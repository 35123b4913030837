#pragma once

#include "DirectoryNode.h"

#include <functional>
#include <memory>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QVarLengthArray>

// One group tree (regular or guest) as plain data: the root, the groups with
// their memberships, and the index from group id to node. Copyable (deep) and
// movable; not thread-bound, so the loader fills it on its worker thread and
// a GroupTreeModel adopts it afterwards.
class DirectoryTree
{
public:
    enum class Kind { Regular, Guest };
    static constexpr qint32 RegularRootId = -1;
    static constexpr qint32 GuestRootId = -100;

    explicit DirectoryTree(Kind kind = Kind::Regular);
    DirectoryTree(const DirectoryTree &other);
    DirectoryTree &operator=(const DirectoryTree &other);
    // A moved-from tree is an empty tree of the same kind.
    DirectoryTree(DirectoryTree &&other);
    DirectoryTree &operator=(DirectoryTree &&other);
    ~DirectoryTree();

    Kind kind() const { return m_kind; }
    bool isGuest() const { return m_kind == Kind::Guest; }
    // -1 for the regular tree, -100 for the guest tree.
    qint32 rootId() const;
    DirectoryNode *root() const { return m_root.get(); }

    // Removes every group and membership; the root stays.
    void clear();

    // The group index. When two groups carry the same id, the later one is indexed.
    DirectoryNode *findGroup(qint32 id) const;
    // Group ids in the order they were first indexed (load order, then groups
    // added later); the load's per-group relation queries run in this order.
    const QList<qint32> &groupIdsInIndexOrder() const;
    int groupCount() const { return int(m_index.size()); }
    int membershipCount() const { return m_membershipCount; }

    // Appends (row -1) or inserts a group under a root or group node and indexes it.
    DirectoryNode *addGroup(
        DirectoryNode *parent, qint32 id, const QString &name, qint32 position = 0, int row = -1);
    // A member stands at most once directly under a group: returns nullptr and
    // changes nothing when it already does.
    DirectoryNode *addMembership(
        DirectoryNode *group, qint32 memberId, qint32 rankId, qint32 position = 0, int row = -1);
    // The first membership of the member below start (the root when null), in
    // child order and, when recursive, depth-first into sub-groups.
    DirectoryNode *findMembership(
        qint32 memberId, const DirectoryNode *start = nullptr, bool recursive = true) const;
    // Whether the member stands in any group of the tree.
    bool hasMembership(qint32 memberId) const { return m_membershipsOf.contains(memberId); }
    // Every membership node of the member, in no particular order.
    QList<DirectoryNode *> membershipsOf(qint32 memberId) const;

    // Detaches a node (never the root) with its subtree; its groups leave the index.
    std::unique_ptr<DirectoryNode> take(DirectoryNode *node);
    // Re-attaches a detached subtree under newParent at row (-1: last) and
    // indexes its groups again.
    DirectoryNode *insert(
        std::unique_ptr<DirectoryNode> node, DirectoryNode *newParent, int row = -1);
    // Moves a node with its subtree under newParent (a root or group node not
    // inside the node itself) at row (-1: last; the row counts after the node
    // is taken out). The node keeps its record. Returns false when refused.
    bool move(DirectoryNode *node, DirectoryNode *newParent, int row = -1);
    // The only ways to change a node's record in place.
    void setName(DirectoryNode *group, const QString &name) { group->m_name = name; }
    void setRankId(DirectoryNode *membership, qint32 rankId) { membership->m_rankId = rankId; }
    void setPosition(DirectoryNode *node, qint32 position) { node->m_position = position; }

    // Sorts the memberships directly under a group by their stored order value
    // (stable), keeping sub-groups in front in their order.
    void sortMembershipsByPosition(DirectoryNode *group);

    // Depth below the root: 1 for a top-level group.
    static int depth(const DirectoryNode *node);

    // Pre-order walk of every group (parents before children) with its depth.
    void forEachGroup(
        const std::function<void(const DirectoryNode *group, int depth)> &visit) const;
    // Every membership in tree order (pre-order, children in display order).
    void forEachMembership(const std::function<void(const DirectoryNode *membership)> &visit) const;

private:
    void attach(std::unique_ptr<DirectoryNode> node, DirectoryNode *parent, int row);
    void indexSubtree(DirectoryNode *node);
    void unindexSubtree(DirectoryNode *node);
    void noteIndexed(qint32 id);
    void noteMembership(DirectoryNode *membership);
    bool holdsDirectly(const DirectoryNode *group, qint32 memberId) const;
    void forgetMembership(DirectoryNode *membership);
    std::unique_ptr<DirectoryNode> detach(DirectoryNode *node);
    static void renumber(DirectoryNode *parent, int fromRow);

    Kind m_kind;
    std::unique_ptr<DirectoryNode> m_root;
    QHash<qint32, DirectoryNode *> m_index;
    // Ids leave the index without leaving this list (a removal from the middle
    // of a long list per group would make deleting a large subtree quadratic);
    // groupIdsInIndexOrder() drops the stale entries when asked.
    mutable QList<qint32> m_indexOrder;
    mutable bool m_indexOrderStale = false;
    // Member id -> its membership nodes: whether and where a member is placed
    // without walking a tree of 100,000 members.
    // Two inline: most members stand in a group or two.
    QHash<qint32, QVarLengthArray<DirectoryNode *, 2>> m_membershipsOf;
    int m_membershipCount = 0;
};
