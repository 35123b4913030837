#include "Directory.h"

#include <limits>

Directory::Directory(QObject *parent)
    : QObject(parent)
    , m_regularMembers(new MemberListModel(false, this))
    , m_guestMembers(new MemberListModel(true, this))
    , m_regularTree(new GroupTreeModel(DirectoryTree::Kind::Regular, this))
    , m_guestTree(new GroupTreeModel(DirectoryTree::Kind::Guest, this))
{
    m_regularTree->setMemberIndex(&m_index);
    m_guestTree->setMemberIndex(&m_index);
    for (MemberListModel *model : { m_regularMembers, m_guestMembers }) {
        connect(model, &QAbstractItemModel::dataChanged, this,
            [this, model](const QModelIndex &topLeft, const QModelIndex &bottomRight) {
                onMembersChanged(model, topLeft, bottomRight);
            });
    }
    for (GroupTreeModel *model : { m_regularTree, m_guestTree }) {
        connect(model, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex &, const QModelIndex &, const QList<int> &roles) {
                // Label refreshes after member edits are no edits of the tree.
                if (roles.contains(Qt::EditRole) || roles.contains(GroupTreeModel::RankIdRole))
                    Q_EMIT edited();
            });
    }
    // Rows added, removed or moved directly on a model (drops, moves) are edits too.
    for (QAbstractItemModel *model : std::initializer_list<QAbstractItemModel *> {
             m_regularMembers, m_guestMembers, m_regularTree, m_guestTree }) {
        connect(model, &QAbstractItemModel::rowsInserted, this, &Directory::edited);
        connect(model, &QAbstractItemModel::rowsRemoved, this, &Directory::edited);
        connect(model, &QAbstractItemModel::rowsMoved, this, &Directory::edited);
    }
}

void Directory::adopt(DirectoryData data)
{
    m_index = std::move(data.memberIndex);
    m_groupCounter = data.groupCounter;
    m_created.clear();
    m_deleted.clear();
    m_createdSet.clear();
    m_deletedSet.clear();
    m_deletedLoginNames.clear();
    m_regularMembers->setMembers(std::move(data.regularMembers));
    m_guestMembers->setMembers(std::move(data.guestMembers));
    m_regularTree->setTree(std::move(data.regularTree));
    m_guestTree->setTree(std::move(data.guestTree));
}

DirectoryData Directory::toData() const
{
    DirectoryData data;
    data.memberIndex = m_index;
    data.regularMembers = m_regularMembers->members();
    data.guestMembers = m_guestMembers->members();
    data.regularTree = m_regularTree->tree();
    data.guestTree = m_guestTree->tree();
    data.groupCounter = m_groupCounter;
    return data;
}

DirectoryContent Directory::content() const
{
    return { m_regularMembers->members(), m_guestMembers->members(), m_regularTree->tree(),
        m_guestTree->tree() };
}

const UserInfo *Directory::findMember(qint32 id) const
{
    auto it = m_index.constFind(id);
    return it == m_index.cend() ? nullptr : &it.value();
}

void Directory::setPositions(const PositionListModel *positions)
{
    m_regularTree->setPositions(positions);
    m_guestTree->setPositions(positions);
}

qint32 Directory::nextGroupId() const
{
    const qint64 next = qint64(m_groupCounter) + 1;
    return next < 1 || next > std::numeric_limits<qint32>::max() ? -2 : qint32(next);
}

qint32 Directory::nextMemberId() const
{
    qint64 id = qint64(std::max(m_regularMembers->maxId(), m_guestMembers->maxId())) + 1;
    // Ids of members deleted since the last save are not reused before it:
    // their dependent rows are removed by id when the save runs.
    while (id <= std::numeric_limits<qint32>::max() && m_deletedSet.contains(qint32(id)))
        ++id;
    return id > std::numeric_limits<qint32>::max() ? -1 : qint32(id);
}

void Directory::noteGroupId(qint32 id)
{
    if (id > m_groupCounter)
        m_groupCounter = id;
}

qint32 Directory::addMember(bool guest, UserInfo member)
{
    if (member.id == -1)
        member.id = nextMemberId();
    if (member.id == -1)
        return -1;
    const qint32 id = member.id;
    member.isGuest = guest ? 1 : 0;
    m_index.insert(id, member);
    members(guest)->appendMember(std::move(member));
    if (!m_createdSet.contains(id)) {
        m_createdSet.insert(id);
        m_created.append(id);
    }
    // Memberships can name the id before its member exists (a member deleted
    // and added again); only theirs can change.
    m_regularTree->refreshMemberLabels(id);
    m_guestTree->refreshMemberLabels(id);
    return id;
}

void Directory::removeMember(bool guest, int row)
{
    MemberListModel *list = members(guest);
    if (row < 0 || row >= list->rowCount())
        return;
    const UserInfo member = list->member(row);
    if (!m_deletedSet.contains(member.id)) {
        m_deletedSet.insert(member.id);
        m_deleted.append(member.id);
        m_deletedLoginNames.append(member.loginName);
    }
    // A regular member can be placed in the guest tree as well; a guest
    // member only there.
    QList<GroupTreeModel *> trees { m_guestTree };
    if (!guest)
        trees.prepend(m_regularTree);
    for (GroupTreeModel *tree : trees) {
        const int removed = tree->removeMembershipsOf(member.id);
        for (int i = 0; i < removed; ++i)
            Q_EMIT memberUnplaced(member.id);
    }
    list->removeRows(row, 1);
    if (!m_regularMembers->containsId(member.id) && !m_guestMembers->containsId(member.id))
        m_index.remove(member.id);
    Q_EMIT edited();
}

QModelIndex Directory::addGroup(bool guest, const QModelIndex &parent, const QString &name)
{
    const qint32 id = nextGroupId();
    if (id == -2)
        return {};
    const QModelIndex added = tree(guest)->addGroup(parent, id, name);
    if (added.isValid())
        noteGroupId(id);
    return added;
}

QModelIndex Directory::addMembership(
    bool guest, const QModelIndex &group, qint32 memberId, qint32 rankId)
{
    const QModelIndex added = tree(guest)->addMembership(group, memberId, rankId);
    if (added.isValid())
        Q_EMIT memberPlaced(memberId);
    return added;
}

bool Directory::removeNode(bool guest, const QModelIndex &node)
{
    QList<qint32> unplaced;
    if (!tree(guest)->removeNode(node, &unplaced))
        return false;
    for (const qint32 id : std::as_const(unplaced))
        Q_EMIT memberUnplaced(id);
    Q_EMIT edited();
    return true;
}

bool Directory::hasLoginName(const QString &loginName) const
{
    return m_regularMembers->containsLoginName(loginName)
        || m_guestMembers->containsLoginName(loginName);
}

bool Directory::isPlaced(qint32 memberId, bool guestList) const
{
    return m_guestTree->tree().hasMembership(memberId)
        || (!guestList && m_regularTree->tree().hasMembership(memberId));
}

void Directory::markSaved()
{
    m_created.clear();
    m_deleted.clear();
    m_createdSet.clear();
    m_deletedSet.clear();
    m_deletedLoginNames.clear();
}

void Directory::onMembersChanged(
    MemberListModel *model, const QModelIndex &topLeft, const QModelIndex &bottomRight)
{
    // Display names and the like feed the dialogs that name members by id.
    for (int row = topLeft.row(); row <= bottomRight.row(); ++row)
        m_index.insert(model->member(row).id, model->member(row));
    Q_EMIT edited();
}
