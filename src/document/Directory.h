#pragma once

#include "DirectoryData.h"
#include "GroupTreeModel.h"
#include "MemberListModel.h"
#include "MemberRows.h"

#include <memory>
#include <QObject>
#include <QSet>
#include <QStringList>

class PositionListModel;

// The in-memory organisation directory, the working copy of Member, [Group]
// and Relation: the two member lists, the two group trees with their
// memberships, the group counter and the members created and deleted since
// the last save. It holds each of them once; its four item models are views
// over it. Reading is open to all; changing goes through DirectoryEditor,
// which applies the editing rules and records every change for undo.
class Directory : public QObject
{
    Q_OBJECT

public:
    explicit Directory(QObject *parent = nullptr);
    ~Directory() override;

    // Replaces everything by loaded data (models reset); clears the created
    // and deleted lists.
    void adopt(DirectoryData data);
    // A deep copy of the current content as plain data.
    DirectoryData toData() const;
    DirectoryContent content() const;

    const MemberRows &memberRows(bool guest) const { return guest ? m_guestRows : m_regularRows; }
    const DirectoryTree &treeData(bool guest) const { return guest ? m_guestTree : m_regularTree; }

    MemberListModel *members(bool guest) const
    {
        return guest ? m_guestMembersModel : m_regularMembersModel;
    }
    MemberListModel *regularMembers() const { return m_regularMembersModel; }
    MemberListModel *guestMembers() const { return m_guestMembersModel; }
    GroupTreeModel *tree(bool guest) const { return guest ? m_guestTreeModel : m_regularTreeModel; }
    GroupTreeModel *regularTree() const { return m_regularTreeModel; }
    GroupTreeModel *guestTree() const { return m_guestTreeModel; }

    int memberCount() const { return m_regularRows.count() + m_guestRows.count(); }
    // The record standing for a member id: the last row carrying it in the
    // member list, else in the guest list; nullptr when the id is unknown.
    const UserInfo *findMember(qint32 id) const;
    // Where membership labels find position names; not owned.
    void setPositions(const PositionListModel *positions);
    const PositionListModel *positions() const { return m_positions; }

    // The largest group id ever inserted into a tree; a new group takes the
    // next one (-2 when that would be below 1: no id left).
    qint32 groupCounter() const { return m_groupCounter; }
    qint32 nextGroupId() const;
    // The id a new member gets: largest id of both lists plus one, skipping
    // ids of members deleted since the last save (-1 when none is left).
    qint32 nextMemberId() const;

    // Whether a row of either member list carries exactly this user ID (the
    // duplicate test of a new member).
    bool hasLoginName(const QString &loginName) const;
    // Whether the member stands in a group: for a regular member's row icon
    // either tree counts, for a guest member's only the guest tree.
    bool isPlaced(qint32 memberId, bool guestList) const;
    bool isDeletedSinceSave(qint32 memberId) const { return m_deletedSet.contains(memberId); }
    bool isCreatedSinceSave(qint32 memberId) const { return m_createdSet.contains(memberId); }

    const QList<qint32> &createdMemberIds() const { return m_created; }
    const QList<qint32> &deletedMemberIds() const { return m_deleted; }
    const QStringList &deletedLoginNames() const { return m_deletedLoginNames; }

    // After a successful save: the created and deleted lists start again.
    void markSaved();

Q_SIGNALS:
    // A membership of the member was added / removed outside a move (row
    // icons follow).
    void memberPlaced(qint32 memberId);
    void memberUnplaced(qint32 memberId);

private:
    // The editor is the only writer: it records each change for undo and
    // applies it through these, which keep the indexes and the views right.
    friend class DirectoryEditor;

    // Member rows. insert appends; remove keeps the record's number so that
    // restore can put it back where it was.
    int appendMember(bool guest, UserInfo member);
    UserInfo removeMember(bool guest, int row);
    // Around many removals or restorations of one list: above a few dozen
    // rows its views are reset once at the end instead of being told row by
    // row (a grid of 100,000 rows pays for every single removal).
    void beginMemberBatch(bool guest, qsizetype count);
    void endMemberBatch(bool guest);
    void restoreMember(bool guest, int seq, UserInfo member);
    void replaceMember(bool guest, int row, UserInfo member);

    // Created and deleted lists: each id at most once. The un- forms take
    // back the last entry (undo runs in reverse order).
    bool noteCreated(qint32 id);
    void unnoteCreated(qint32 id);
    bool noteDeleted(qint32 id, const QString &loginName);
    void unnoteDeleted(qint32 id);
    void setGroupCounter(qint32 counter) { m_groupCounter = counter; }

    // Tree nodes. take detaches a node with its subtree, insert puts a
    // detached subtree (back) under a container at row. Both send the
    // placed/unplaced notices for the memberships they carry unless told not
    // to (a move is neither).
    DirectoryNode *addGroup(bool guest, DirectoryNode *parent, qint32 id, const QString &name);
    DirectoryNode *addMembership(bool guest, DirectoryNode *group, qint32 memberId, qint32 rankId);
    std::unique_ptr<DirectoryNode> takeNode(bool guest, DirectoryNode *node);
    DirectoryNode *insertNode(
        bool guest, std::unique_ptr<DirectoryNode> node, DirectoryNode *parent, int row);
    // Moves a node among its siblings or under another container (row
    // counted after the node is taken out). False when the tree refuses.
    bool moveNode(bool guest, DirectoryNode *node, DirectoryNode *parent, int row);
    void renameGroup(bool guest, DirectoryNode *group, const QString &name);
    void setRankId(bool guest, DirectoryNode *membership, qint32 rankId);
    // Repaints the memberships of every member in both trees (positions
    // renamed or removed).
    void refreshMembershipLabels();

    DirectoryTree &mutableTree(bool guest) { return guest ? m_guestTree : m_regularTree; }
    MemberRows &mutableRows(bool guest) { return guest ? m_guestRows : m_regularRows; }
    void refreshMember(qint32 id);
    void notifyMemberships(const DirectoryNode *node, bool placed);

    MemberRows m_regularRows;
    MemberRows m_guestRows;
    // Per list (regular, guest): a batch is resetting its model.
    bool m_memberBatch[2] = { false, false };
    DirectoryTree m_regularTree { DirectoryTree::Kind::Regular };
    DirectoryTree m_guestTree { DirectoryTree::Kind::Guest };
    MemberListModel *m_regularMembersModel;
    MemberListModel *m_guestMembersModel;
    GroupTreeModel *m_regularTreeModel;
    GroupTreeModel *m_guestTreeModel;
    const PositionListModel *m_positions = nullptr;
    qint32 m_groupCounter = 0;
    QList<qint32> m_created;
    QList<qint32> m_deleted;
    // The same ids as sets: "entered once" and the id allocation's skip test
    // stay constant-time however many members were created or deleted.
    QSet<qint32> m_createdSet;
    QSet<qint32> m_deletedSet;
    QStringList m_deletedLoginNames;
};
