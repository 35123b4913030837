#pragma once

#include "EditRefusal.h"
#include "MemberRules.h"

#include <optional>
#include <QByteArrayView>
#include <QList>
#include <QSet>
#include <QString>
#include <QVariant>

class CVelmarManagerDoc;
class DirectoryNode;

// The editing operations of the organisation: members, groups, memberships
// and positions. Each one applies the console's rules, and either refuses
// (nothing changes; the designed text says why) or makes its change as one
// step of the document's undo stack. Confirmations are the caller's: an
// operation called has been confirmed.
class DirectoryEditor final
{
public:
    enum class MoveStep { Up, Down, First, Last };

    DirectoryEditor(CVelmarManagerDoc &document, MemberRules rules);

    // The blank row's user ID was typed: the space test, the character rule
    // and the duplicate test across both lists, then a member with the next
    // free id, every text empty and all four flags set, a free pool account
    // when there is one, and its permission and VoIP records. The result
    // carries the new id.
    EditResult addMember(bool guest, const QString &userId);
    // The checks of a member added with checks rather than typed (the
    // external data import): the character rule of the user ID, then the
    // duplicate test across both lists and against taken, the user IDs the
    // same operation adds before it. No length or space test: the blank
    // row's cell makes those.
    std::optional<EditRefusal> checkAddedMember(
        const QString &userId, const QSet<QString> &taken = {}) const;
    // Adds members with every attribute as given (nickname included), as one
    // step named text: each checked as above against the lists and the
    // members before it, then made as addMember makes one (next free id,
    // created list, a free pool account, its permission and VoIP records).
    // When one is refused nothing is added; the result's refusal is its, and
    // applied counts the members before it. ids (when given) receives the
    // ids, in order.
    EditResult addMembers(
        bool guest, QList<UserInfo> members, const QString &text, QList<qint32> *ids = nullptr);
    // A cell of a member row was edited (MemberListModel columns): the byte
    // limit of the column in the code page; the user ID is not editable.
    EditResult setMemberCell(bool guest, int row, int column, const QVariant &value);
    // Deletes the members of the rows, bottom-up: each member's memberships
    // (a regular member's in both trees, a guest member's in the guest tree),
    // its pool account, its permission and VoIP records and its file-box
    // rights go with it, and it is entered in the deleted list once.
    EditResult deleteMembers(bool guest, QList<int> rows);

    // Adds a group under a container (the root or a group) as its last child,
    // with the next group id; the result carries the id.
    EditResult addGroup(bool guest, const DirectoryNode *parent, const QString &name);
    // An empty name is refused without a message; the root has no name to edit.
    EditResult renameGroup(bool guest, const DirectoryNode *group, const QString &name);
    // A group goes with its sub-groups, their memberships and the file-box
    // rights of each group; a membership goes alone. The root stays.
    EditResult deleteNode(bool guest, const DirectoryNode *node);
    // Deletes count children of a container from row on, as deleteNode
    // does, in one step.
    EditResult deleteChildren(bool guest, const DirectoryNode *container, int row, int count);
    EditResult moveNode(bool guest, const DirectoryNode *node, MoveStep step);
    // Moves a group or membership with its subtree under another container
    // as its last child. Refused into itself or below itself, and for a
    // membership whose member already stands directly under the target.
    EditResult moveNodeInto(bool guest, const DirectoryNode *node, const DirectoryNode *target);
    // Places members under a group in the order given, with the default
    // position, each at the end; a member already directly there is skipped
    // (counted in the result's skipped).
    EditResult placeMembers(bool guest, const DirectoryNode *group, const QList<qint32> &memberIds);
    // A member-drag block dropped on a group: placed as above; a truncated or
    // lying block is refused whole.
    EditResult dropMembers(bool guest, const DirectoryNode *group, QByteArrayView block);
    // -1 for no position.
    EditResult setMembershipPosition(bool guest, const DirectoryNode *membership, qint32 rankId);
    // The position grid's command over several memberships at once.
    EditResult setMembershipPositions(
        bool guest, const QList<const DirectoryNode *> &memberships, qint32 rankId);

    // The position list. A new position is named "新等级" (or the next
    // "新等级 (n)") unless a name is given; a given name must be new.
    EditResult addPosition(const std::optional<QString> &name = std::nullopt);
    EditResult renamePosition(int row, const QString &name);
    EditResult deletePosition(int row);
    // Why deletePosition(row) would be refused, asked before the deletion is
    // confirmed; nothing when it would go ahead.
    std::optional<EditRefusal> deletePositionRefusal(int row) const;
    EditResult movePosition(int row, int delta);
    // -1: none. Written to the server information file at once (through the
    // document's default-position writer), and written back on undo.
    EditResult setDefaultPosition(qint32 positionId);

    const MemberRules &rules() const { return m_rules; }

private:
    CVelmarManagerDoc &m_document;
    MemberRules m_rules;
};
