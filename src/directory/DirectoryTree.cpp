#include "DirectoryTree.h"

#include <algorithm>

namespace {

// Visits every node below start in display order, a group before what it
// holds, with its depth (1 for start's children); stops when visit returns
// false. Iterative, so that a deep tree cannot exhaust the stack.
template<typename Visit> void walkBelow(const DirectoryNode *start, Visit visit)
{
    std::vector<std::pair<const DirectoryNode *, int>> stack { { start, 0 } };
    while (!stack.empty()) {
        auto &[node, next] = stack.back();
        if (next == node->childCount()) {
            stack.pop_back();
            continue;
        }
        const DirectoryNode *child = node->child(next++);
        if (!visit(child, int(stack.size())))
            return;
        if (child->isContainer())
            stack.emplace_back(child, 0);
    }
}

// Whether node lies somewhere below ancestor.
bool isBelow(const DirectoryNode *node, const DirectoryNode *ancestor)
{
    for (const DirectoryNode *up = node->parent(); up; up = up->parent()) {
        if (up == ancestor)
            return true;
    }
    return false;
}

// Whether a comes before b in a depth-first walk in child order (neither
// holding the other): compares the rows on their paths from the root.
bool precedes(const DirectoryNode *a, const DirectoryNode *b)
{
    const auto path = [](const DirectoryNode *node) {
        std::vector<int> rows;
        for (; node->parent(); node = node->parent())
            rows.push_back(node->row());
        std::reverse(rows.begin(), rows.end());
        return rows;
    };
    return path(a) < path(b);
}

} // namespace

DirectoryTree::DirectoryTree(Kind kind)
    : m_kind(kind)
    , m_root(std::make_unique<DirectoryNode>(DirectoryNode::Kind::Root))
{
    m_root->m_id = rootId();
}

DirectoryTree::DirectoryTree(const DirectoryTree &other)
    : DirectoryTree(other.m_kind)
{
    *this = other;
}

DirectoryTree &DirectoryTree::operator=(const DirectoryTree &other)
{
    if (this == &other)
        return *this;
    m_kind = other.m_kind;
    clear();
    m_root->m_id = other.m_root->m_id;
    m_root->m_name = other.m_root->m_name;

    // Copies iteratively so that a deep tree cannot exhaust the stack.
    QHash<const DirectoryNode *, DirectoryNode *> copies;
    std::vector<std::pair<const DirectoryNode *, DirectoryNode *>> pending { { other.root(),
        m_root.get() } };
    while (!pending.empty()) {
        auto [from, to] = pending.back();
        pending.pop_back();
        to->m_children.reserve(from->m_children.size());
        for (const auto &child : from->m_children) {
            auto copy = std::make_unique<DirectoryNode>(child->kind());
            copy->m_id = child->m_id;
            copy->m_rankId = child->m_rankId;
            copy->m_position = child->m_position;
            copy->m_name = child->m_name;
            copy->m_parent = to;
            copy->m_row = child->m_row;
            DirectoryNode *raw = copy.get();
            to->m_children.push_back(std::move(copy));
            if (child->isMembership()) {
                noteMembership(raw);
            } else {
                copies.insert(child.get(), raw);
                pending.emplace_back(child.get(), raw);
            }
        }
    }
    m_indexOrder = other.groupIdsInIndexOrder();
    m_indexOrderStale = false;
    m_index.reserve(other.m_index.size());
    for (auto it = other.m_index.cbegin(); it != other.m_index.cend(); ++it)
        m_index.insert(it.key(), copies.value(it.value()));
    return *this;
}

DirectoryTree::DirectoryTree(DirectoryTree &&other)
    : DirectoryTree(other.m_kind)
{
    *this = std::move(other);
}

DirectoryTree &DirectoryTree::operator=(DirectoryTree &&other)
{
    if (this == &other)
        return *this;
    clear();
    m_kind = other.m_kind;
    std::swap(m_root, other.m_root);
    m_index.swap(other.m_index);
    m_indexOrder.swap(other.m_indexOrder);
    std::swap(m_indexOrderStale, other.m_indexOrderStale);
    m_membershipsOf.swap(other.m_membershipsOf);
    std::swap(m_membershipCount, other.m_membershipCount);
    other.m_root->m_id = other.rootId();
    return *this;
}

DirectoryTree::~DirectoryTree()
{
    // Frees deep trees without recursing once per level.
    clear();
}

qint32 DirectoryTree::rootId() const
{
    return m_kind == Kind::Guest ? GuestRootId : RegularRootId;
}

void DirectoryTree::clear()
{
    std::vector<std::unique_ptr<DirectoryNode>> doomed;
    doomed.swap(m_root->m_children);
    while (!doomed.empty()) {
        std::unique_ptr<DirectoryNode> node = std::move(doomed.back());
        doomed.pop_back();
        for (auto &child : node->m_children)
            doomed.push_back(std::move(child));
    }
    m_index.clear();
    m_indexOrder.clear();
    m_indexOrderStale = false;
    m_membershipsOf.clear();
    m_membershipCount = 0;
}

DirectoryNode *DirectoryTree::findGroup(qint32 id) const
{
    if (id == rootId())
        return m_root.get();
    return m_index.value(id, nullptr);
}

void DirectoryTree::renumber(DirectoryNode *parent, int fromRow)
{
    for (size_t i = size_t(std::max(fromRow, 0)); i < parent->m_children.size(); ++i)
        parent->m_children[i]->m_row = int(i);
}

void DirectoryTree::attach(std::unique_ptr<DirectoryNode> node, DirectoryNode *parent, int row)
{
    const int count = parent->childCount();
    if (row < 0 || row > count)
        row = count;
    node->m_parent = parent;
    node->m_row = row;
    if (row == count) {
        parent->m_children.push_back(std::move(node));
    } else {
        parent->m_children.insert(parent->m_children.begin() + row, std::move(node));
        renumber(parent, row + 1);
    }
}

DirectoryNode *DirectoryTree::addGroup(
    DirectoryNode *parent, qint32 id, const QString &name, qint32 position, int row)
{
    if (!parent || !parent->isContainer())
        return nullptr;
    auto node = std::make_unique<DirectoryNode>(DirectoryNode::Kind::Group);
    node->m_id = id;
    node->m_name = name;
    node->m_position = position;
    DirectoryNode *raw = node.get();
    attach(std::move(node), parent, row);
    if (!m_index.contains(id))
        noteIndexed(id);
    m_index.insert(id, raw);
    return raw;
}

DirectoryNode *DirectoryTree::addMembership(
    DirectoryNode *group, qint32 memberId, qint32 rankId, qint32 position, int row)
{
    if (!group || !group->isContainer())
        return nullptr;
    // One lookup serves the test and the entry: loading places 200,000.
    auto &memberships = m_membershipsOf[memberId];
    for (const DirectoryNode *membership : std::as_const(memberships)) {
        if (membership->m_parent == group)
            return nullptr;
    }
    auto node = std::make_unique<DirectoryNode>(DirectoryNode::Kind::Membership);
    node->m_id = memberId;
    node->m_rankId = rankId;
    node->m_position = position;
    DirectoryNode *raw = node.get();
    attach(std::move(node), group, row);
    memberships.append(raw);
    ++m_membershipCount;
    return raw;
}

DirectoryNode *DirectoryTree::findMembership(
    qint32 memberId, const DirectoryNode *start, bool recursive) const
{
    if (!start)
        start = m_root.get();
    auto it = m_membershipsOf.constFind(memberId);
    if (it == m_membershipsOf.cend())
        return nullptr;
    // The member's few memberships are looked at instead of the tree: the one
    // that comes first depth-first in child order among those below start.
    DirectoryNode *found = nullptr;
    for (DirectoryNode *candidate : it.value()) {
        if (!recursive) {
            if (candidate->m_parent == start)
                return candidate;
            continue;
        }
        if (!isBelow(candidate, start))
            continue;
        if (!found || precedes(candidate, found))
            found = candidate;
    }
    return found;
}

void DirectoryTree::noteMembership(DirectoryNode *membership)
{
    m_membershipsOf[membership->m_id].append(membership);
    ++m_membershipCount;
}

void DirectoryTree::forgetMembership(DirectoryNode *membership)
{
    auto it = m_membershipsOf.find(membership->m_id);
    if (it != m_membershipsOf.end()) {
        it.value().removeOne(membership);
        if (it.value().isEmpty())
            m_membershipsOf.erase(it);
    }
    --m_membershipCount;
}

QList<DirectoryNode *> DirectoryTree::membershipsOf(qint32 memberId) const
{
    auto it = m_membershipsOf.constFind(memberId);
    if (it == m_membershipsOf.cend())
        return {};
    return QList<DirectoryNode *>(it.value().cbegin(), it.value().cend());
}

void DirectoryTree::noteIndexed(qint32 id)
{
    // Groups removed and put back again and again (undo, redo) would let the
    // stale entries pile up between two questions for the order. Called
    // before id enters the index, so the compaction drops its old places.
    if (m_indexOrderStale && m_indexOrder.size() > 2 * m_index.size() + 64)
        groupIdsInIndexOrder();
    m_indexOrder.append(id);
}

const QList<qint32> &DirectoryTree::groupIdsInIndexOrder() const
{
    if (m_indexOrderStale) {
        // An id counts where it last entered the index, if it is still there.
        QList<qint32> kept;
        kept.reserve(m_index.size());
        QSet<qint32> seen;
        seen.reserve(m_index.size());
        for (auto id = m_indexOrder.crbegin(); id != m_indexOrder.crend(); ++id) {
            if (m_index.contains(*id) && !seen.contains(*id)) {
                seen.insert(*id);
                kept.append(*id);
            }
        }
        std::reverse(kept.begin(), kept.end());
        m_indexOrder = std::move(kept);
        m_indexOrderStale = false;
    }
    return m_indexOrder;
}

void DirectoryTree::indexSubtree(DirectoryNode *top)
{
    std::vector<DirectoryNode *> pending { top };
    while (!pending.empty()) {
        DirectoryNode *node = pending.back();
        pending.pop_back();
        if (node->isMembership()) {
            noteMembership(node);
            continue;
        }
        if (!m_index.contains(node->m_id))
            noteIndexed(node->m_id);
        m_index.insert(node->m_id, node);
        for (auto &child : node->m_children)
            pending.push_back(child.get());
    }
}

void DirectoryTree::unindexSubtree(DirectoryNode *top)
{
    std::vector<DirectoryNode *> pending { top };
    while (!pending.empty()) {
        DirectoryNode *node = pending.back();
        pending.pop_back();
        if (node->isMembership()) {
            forgetMembership(node);
            continue;
        }
        auto it = m_index.find(node->m_id);
        if (it != m_index.end() && it.value() == node) {
            m_index.erase(it);
            m_indexOrderStale = true;
        }
        for (auto &child : node->m_children)
            pending.push_back(child.get());
    }
}

std::unique_ptr<DirectoryNode> DirectoryTree::take(DirectoryNode *node)
{
    if (!node || node->isRoot() || !node->m_parent)
        return nullptr;
    unindexSubtree(node);
    return detach(node);
}

std::unique_ptr<DirectoryNode> DirectoryTree::detach(DirectoryNode *node)
{
    DirectoryNode *parent = node->m_parent;
    const int row = node->m_row;
    std::unique_ptr<DirectoryNode> taken = std::move(parent->m_children[size_t(row)]);
    parent->m_children.erase(parent->m_children.begin() + row);
    renumber(parent, row);
    taken->m_parent = nullptr;
    taken->m_row = 0;
    return taken;
}

DirectoryNode *DirectoryTree::insert(
    std::unique_ptr<DirectoryNode> node, DirectoryNode *newParent, int row)
{
    if (!node || !newParent || !newParent->isContainer() || node->isRoot())
        return nullptr;
    if (node->isMembership() && holdsDirectly(newParent, node->m_id))
        return nullptr;
    DirectoryNode *raw = node.get();
    attach(std::move(node), newParent, row);
    indexSubtree(raw);
    return raw;
}

bool DirectoryTree::move(DirectoryNode *node, DirectoryNode *newParent, int row)
{
    if (!node || node->isRoot() || !newParent || !newParent->isContainer())
        return false;
    for (const DirectoryNode *up = newParent; up; up = up->m_parent) {
        if (up == node)
            return false;
    }
    if (node->isMembership() && node->m_parent != newParent
        && holdsDirectly(newParent, node->m_id))
        return false;
    // The node stays in this tree: the group index, the index order and the
    // member index keep pointing at the same nodes, so a subtree of any size
    // moves at the cost of its two sibling lists.
    attach(detach(node), newParent, row);
    return true;
}

void DirectoryTree::sortMembershipsByPosition(DirectoryNode *group)
{
    if (!group)
        return;
    auto &children = group->m_children;
    std::stable_sort(children.begin(), children.end(), [](const auto &a, const auto &b) {
        if (a->isMembership() != b->isMembership())
            return !a->isMembership();
        return a->isMembership() && a->m_position < b->m_position;
    });
    renumber(group, 0);
}

int DirectoryTree::depth(const DirectoryNode *node)
{
    int depth = 0;
    for (; node && !node->isRoot(); node = node->m_parent)
        ++depth;
    return depth;
}

void DirectoryTree::forEachGroup(
    const std::function<void(const DirectoryNode *group, int depth)> &visit) const
{
    walkBelow(m_root.get(), [&](const DirectoryNode *child, int depth) {
        if (child->isGroup())
            visit(child, depth);
        return true;
    });
}

void DirectoryTree::forEachMembership(
    const std::function<void(const DirectoryNode *membership)> &visit) const
{
    walkBelow(m_root.get(), [&](const DirectoryNode *child, int) {
        if (child->isMembership())
            visit(child);
        return true;
    });
}

bool DirectoryTree::holdsDirectly(const DirectoryNode *group, qint32 memberId) const
{
    // A member stands in a group or two: its own short list is the cheapest
    // place to look, for groups of any size.
    const auto it = m_membershipsOf.constFind(memberId);
    if (it == m_membershipsOf.cend())
        return false;
    for (const DirectoryNode *membership : *it) {
        if (membership->m_parent == group)
            return true;
    }
    return false;
}
