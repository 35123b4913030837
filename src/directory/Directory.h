#pragma once

#include "DirectoryData.h"
#include "DirectoryWriter.h"
#include "GroupTreeModel.h"
#include "MemberListModel.h"

#include <QObject>
#include <QSet>
#include <QStringList>

class DbConnection;
class PositionListModel;

// The in-memory organisation directory, the working copy of Member, [Group]
// and Relation: the two member lists, the two group trees, the member index,
// the group counter and the members created and deleted since the last save.
// Lives on the user-interface thread; adopts what the loader read.
class Directory : public QObject
{
    Q_OBJECT

public:
    explicit Directory(QObject *parent = nullptr);

    // Replaces everything by loaded data (models reset); clears the created
    // and deleted lists.
    void adopt(DirectoryData data);
    // A deep copy of the current content as plain data.
    DirectoryData toData() const;
    DirectoryContent content() const;

    MemberListModel *members(bool guest) const { return guest ? m_guestMembers : m_regularMembers; }
    MemberListModel *regularMembers() const { return m_regularMembers; }
    MemberListModel *guestMembers() const { return m_guestMembers; }
    GroupTreeModel *tree(bool guest) const { return guest ? m_guestTree : m_regularTree; }
    GroupTreeModel *regularTree() const { return m_regularTree; }
    GroupTreeModel *guestTree() const { return m_guestTree; }

    const MemberIndex &memberIndex() const { return m_index; }
    // nullptr when the id is unknown.
    const UserInfo *findMember(qint32 id) const;
    // Where membership labels find position names; not owned.
    void setPositions(const PositionListModel *positions);

    // The largest group id ever inserted into a tree; a new group takes the
    // next one (-2 when that would be below 1: no id left).
    qint32 groupCounter() const { return m_groupCounter; }
    qint32 nextGroupId() const;
    // The id a new member gets: largest id of both lists plus one, skipping
    // ids of members deleted since the last save.
    qint32 nextMemberId() const;

    // Whether a row of either member list carries exactly this user ID (the
    // duplicate test of a new member).
    bool hasLoginName(const QString &loginName) const;
    // Whether the member stands in a group: for a regular member's row icon
    // either tree counts, for a guest member's only the guest tree.
    bool isPlaced(qint32 memberId, bool guestList) const;
    bool isDeletedSinceSave(qint32 memberId) const { return m_deletedSet.contains(memberId); }

    const QList<qint32> &createdMemberIds() const { return m_created; }
    const QList<qint32> &deletedMemberIds() const { return m_deleted; }
    const QStringList &deletedLoginNames() const { return m_deletedLoginNames; }

    // Appends a member to a list; id -1 allocates nextMemberId(). Enters the id
    // in the created list (once) and the index. Returns the id.
    qint32 addMember(bool guest, UserInfo member);
    // Deletes a member row: enters it in the deleted list (once), removes its
    // memberships (a regular member's from both trees, a guest member's from
    // the guest tree), removes the row and, unless another row carries the
    // id, its index entry.
    void removeMember(bool guest, int row);
    // Adds a group named name under parent with the next group id.
    QModelIndex addGroup(bool guest, const QModelIndex &parent, const QString &name);
    // Places a member under a group (skipped when already directly there).
    QModelIndex addMembership(bool guest, const QModelIndex &group, qint32 memberId, qint32 rankId);
    // Removes a group (with sub-groups and memberships) or a membership.
    bool removeNode(bool guest, const QModelIndex &node);

    // After a successful save: the created and deleted lists start again.
    void markSaved();

Q_SIGNALS:
    // A membership of the member was added / removed (row icons follow).
    void memberPlaced(qint32 memberId);
    void memberUnplaced(qint32 memberId);
    // Any change through the editing primitives or the models' setData.
    void edited();

private:
    void noteGroupId(qint32 id);
    void onMembersChanged(
        MemberListModel *model, const QModelIndex &topLeft, const QModelIndex &bottomRight);

    MemberListModel *m_regularMembers;
    MemberListModel *m_guestMembers;
    GroupTreeModel *m_regularTree;
    GroupTreeModel *m_guestTree;
    MemberIndex m_index;
    qint32 m_groupCounter = 0;
    QList<qint32> m_created;
    QList<qint32> m_deleted;
    // The same ids as sets: "entered once" and the id allocation's skip test
    // stay constant-time however many members were created or deleted.
    QSet<qint32> m_createdSet;
    QSet<qint32> m_deletedSet;
    QStringList m_deletedLoginNames;
};
