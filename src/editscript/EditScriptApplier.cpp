#include "EditScriptApplier.h"

#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "FileBoxEditor.h"
#include "MemberListModel.h"
#include "MemberRules.h"
#include "NoticeEditor.h"
#include "NoticeListModel.h"
#include "PermissionEditor.h"
#include "PositionListModel.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The text an editor gave for its refusal, or ours where it refuses without
// one (the console has nothing to say when, say, a label edit is empty).
QString refusalText(const EditResult &result, const QString &otherwise)
{
    if (result.refusal && !result.refusal->text.isEmpty())
        return result.refusal->text;
    return otherwise;
}

// Gathers the steps of one command into one step of the journal. A command
// whose edits all left things as they were leaves no empty step behind.
class JournalStep final
{
public:
    JournalStep(DocumentUndoStack *stack, const QString &text)
        : m_stack(stack)
    {
        m_stack->beginMacro(text);
    }
    ~JournalStep() { m_stack->endMacro(); }
    JournalStep(const JournalStep &) = delete;
    JournalStep &operator=(const JournalStep &) = delete;

private:
    DocumentUndoStack *m_stack;
};

int columnOf(Edit::MemberText cell)
{
    switch (cell) {
    case Edit::MemberText::Name:
        return MemberListModel::DisplayNameColumn;
    case Edit::MemberText::Password:
        return MemberListModel::PasswordColumn;
    case Edit::MemberText::Nickname:
        return MemberListModel::NicknameColumn;
    case Edit::MemberText::Email:
        return MemberListModel::EmailColumn;
    case Edit::MemberText::Mobile:
        return MemberListModel::MobileColumn;
    case Edit::MemberText::HomePhone:
        return MemberListModel::HomePhoneColumn;
    case Edit::MemberText::OfficePhone:
        return MemberListModel::OfficePhoneColumn;
    case Edit::MemberText::Address:
        return MemberListModel::AddressColumn;
    case Edit::MemberText::Birthday:
        return MemberListModel::BirthdayColumn;
    case Edit::MemberText::Intro:
        return MemberListModel::DescriptionColumn;
    }
    return -1;
}

} // namespace

EditScriptApplier::EditScriptApplier(CVelmarManagerDoc &document, Output output)
    : m_document(document)
    , m_output(std::move(output))
{ }

QString EditScriptApplier::apply(const EditCommand &command)
{
    return std::visit(
        [this](const auto &operation) { return apply(operation); }, command.operation);
}

std::optional<EditScriptApplier::MemberRef> EditScriptApplier::findMember(
    const QString &userId, QString *error) const
{
    const Directory &directory = *m_document.directory();
    for (const bool guest : { false, true }) {
        const MemberRows &rows = directory.memberRows(guest);
        const int row = rows.rowOfLoginName(userId);
        if (row >= 0)
            return MemberRef { guest, row, rows.at(row).id };
    }
    *error = u"no member with the user ID %1"_s.arg(userId);
    return std::nullopt;
}

const DirectoryNode *EditScriptApplier::findGroup(const EditGroupRef &ref, QString *error)
{
    const QString key = ref.toText();
    if (const auto known = m_groups.constFind(key); known != m_groups.cend())
        return *known;
    const DirectoryTree &tree = m_document.directory()->treeData(ref.guest);
    const DirectoryNode *node = nullptr;
    if (ref.byId()) {
        node = tree.findGroup(ref.id);
    } else {
        node = tree.root();
        for (const QString &name : ref.path) {
            const DirectoryNode *found = nullptr;
            for (int row = 0; row < node->childCount() && !found; ++row) {
                const DirectoryNode *child = node->child(row);
                if (child->isGroup() && child->name() == name)
                    found = child;
            }
            node = found;
            if (!node)
                break;
        }
    }
    if (!node) {
        *error = u"no group %1"_s.arg(key);
        return nullptr;
    }
    m_groups.insert(key, node);
    return node;
}

const DirectoryNode *EditScriptApplier::findMembership(
    const EditGroupRef &group, const QString &userId, QString *error)
{
    const DirectoryNode *node = findGroup(group, error);
    if (!node)
        return nullptr;
    const std::optional<MemberRef> member = findMember(userId, error);
    if (!member)
        return nullptr;
    const DirectoryNode *membership
        = m_document.directory()->treeData(group.guest).findMembership(member->id, node, false);
    if (!membership)
        *error = u"%1 is not placed directly under %2"_s.arg(userId, group.toText());
    return membership;
}

int EditScriptApplier::positionRow(const QString &name, QString *error) const
{
    const int row = m_document.positions()->list().indexOfName(name);
    if (row < 0)
        *error = u"no position named %1"_s.arg(name);
    return row;
}

QString EditScriptApplier::applyFields(const MemberRef &member, const Edit::MemberFields &fields)
{
    DirectoryEditor &editor = m_document.editor();
    const auto setCell = [&](int column, const QVariant &value) {
        const EditResult result = editor.setMemberCell(member.guest, member.row, column, value);
        return result.ok()
            ? QString()
            : refusalText(result,
                u"the %1 of %2 cannot be set"_s.arg(MemberListModel::columnTitle(column),
                    m_document.directory()->memberRows(member.guest).at(member.row).loginName));
    };
    for (const Edit::MemberTextEdit &edit : fields.texts) {
        if (const QString why = setCell(columnOf(edit.cell), edit.value); !why.isEmpty())
            return why;
    }
    const std::pair<const std::optional<bool> *, int> flags[] = {
        { &fields.male, MemberListModel::GenderColumn },
        { &fields.isPublic, MemberListModel::PublicColumn },
        { &fields.solar, MemberListModel::SolarColumn },
        { &fields.admin, MemberListModel::AdminColumn },
    };
    for (const auto &[flag, column] : flags) {
        if (!*flag)
            continue;
        if (const QString why = setCell(column, QVariant(**flag)); !why.isEmpty())
            return why;
    }
    // The grid does not let the selection leave a member row whose password
    // is empty; the end of the command is where the row is left.
    const UserInfo &after = m_document.directory()->memberRows(member.guest).at(member.row);
    if (const auto refusal = MemberRules::checkPasswordOnLeave(after.password))
        return refusal->text;
    return {};
}

QString EditScriptApplier::apply(const Edit::MemberAdd &add)
{
    JournalStep step(m_document.undoStack(), u"添加用户 %1"_s.arg(add.userId));
    const EditResult result = m_document.editor().addMember(add.guest, add.userId);
    if (!result.ok())
        return refusalText(result, u"the member %1 cannot be added"_s.arg(add.userId));
    const MemberRows &rows = m_document.directory()->memberRows(add.guest);
    const MemberRef member { add.guest, rows.count() - 1, result.id };
    if (const QString why = applyFields(member, add.fields); !why.isEmpty())
        return why;
    m_output(u"member %1 %2"_s.arg(add.userId).arg(result.id));
    return {};
}

QString EditScriptApplier::apply(const Edit::MemberSet &set)
{
    QString error;
    const std::optional<MemberRef> member = findMember(set.userId, &error);
    if (!member)
        return error;
    JournalStep step(m_document.undoStack(), u"修改用户 %1"_s.arg(set.userId));
    return applyFields(*member, set.fields);
}

QString EditScriptApplier::apply(const Edit::MemberDelete &del)
{
    QList<int> rows[2];
    for (const QString &userId : del.userIds) {
        QString error;
        const std::optional<MemberRef> member = findMember(userId, &error);
        if (!member)
            return error;
        rows[member->guest ? 1 : 0].append(member->row);
    }
    const qsizetype count = rows[0].size() + rows[1].size();
    JournalStep step(m_document.undoStack(),
        count == 1 ? u"删除用户 %1"_s.arg(del.userIds.first()) : u"删除 %1 个用户"_s.arg(count));
    for (const bool guest : { false, true }) {
        if (rows[guest ? 1 : 0].isEmpty())
            continue;
        const EditResult result = m_document.editor().deleteMembers(guest, rows[guest ? 1 : 0]);
        if (!result.ok())
            return refusalText(result, u"the members cannot be deleted"_s);
    }
    return {};
}

QString EditScriptApplier::apply(const Edit::GroupAdd &add)
{
    if (add.group.byId())
        return u"group add: name the new group by its path, not by an id"_s;
    EditGroupRef parentRef = add.group;
    const QString name = parentRef.path.takeLast();
    QString error;
    const DirectoryNode *parent = findGroup(parentRef, &error);
    if (!parent)
        return error;
    forgetGroups();
    const EditResult result = m_document.editor().addGroup(add.group.guest, parent, name);
    if (!result.ok())
        return refusalText(result, u"the group %1 cannot be added"_s.arg(add.group.toText()));
    m_output(u"group %1 %2"_s.arg(add.group.toText()).arg(result.id));
    return {};
}

QString EditScriptApplier::apply(const Edit::GroupRename &rename)
{
    QString error;
    const DirectoryNode *group = findGroup(rename.group, &error);
    if (!group)
        return error;
    forgetGroups();
    const EditResult result
        = m_document.editor().renameGroup(rename.group.guest, group, rename.name);
    if (!result.ok())
        return refusalText(result, u"a group name cannot be empty"_s);
    return {};
}

QString EditScriptApplier::apply(const Edit::GroupDelete &del)
{
    QString error;
    const DirectoryNode *group = findGroup(del.group, &error);
    if (!group)
        return error;
    forgetGroups();
    const EditResult result = m_document.editor().deleteNode(del.group.guest, group);
    if (!result.ok())
        return refusalText(result, u"the group %1 cannot be deleted"_s.arg(del.group.toText()));
    return {};
}

QString EditScriptApplier::apply(const Edit::GroupMove &move)
{
    QString error;
    const DirectoryNode *group = findGroup(move.group, &error);
    if (!group)
        return error;
    forgetGroups();
    DirectoryEditor::MoveStep step = DirectoryEditor::MoveStep::Up;
    switch (move.step) {
    case Edit::GroupMoveStep::Up:
        step = DirectoryEditor::MoveStep::Up;
        break;
    case Edit::GroupMoveStep::Down:
        step = DirectoryEditor::MoveStep::Down;
        break;
    case Edit::GroupMoveStep::First:
        step = DirectoryEditor::MoveStep::First;
        break;
    case Edit::GroupMoveStep::Last:
        step = DirectoryEditor::MoveStep::Last;
        break;
    }
    const EditResult result = m_document.editor().moveNode(move.group.guest, group, step);
    if (!result.ok())
        return refusalText(result, u"the group %1 cannot be moved"_s.arg(move.group.toText()));
    return {};
}

QString EditScriptApplier::apply(const Edit::GroupMoveInto &move)
{
    if (move.group.guest != move.into.guest)
        return u"a group moves within its own tree: %1 and %2 are in different trees"_s.arg(
            move.group.toText(), move.into.toText());
    QString error;
    const DirectoryNode *group = findGroup(move.group, &error);
    const DirectoryNode *target = group ? findGroup(move.into, &error) : nullptr;
    if (!target)
        return error;
    forgetGroups();
    const EditResult result = m_document.editor().moveNodeInto(move.group.guest, group, target);
    if (!result.ok())
        return refusalText(result, u"the group %1 cannot be moved"_s.arg(move.group.toText()));
    return {};
}

QString EditScriptApplier::apply(const Edit::Place &place)
{
    QString error;
    const DirectoryNode *group = findGroup(place.group, &error);
    if (!group)
        return error;
    QList<qint32> ids;
    ids.reserve(place.userIds.size());
    for (const QString &userId : place.userIds) {
        const std::optional<MemberRef> member = findMember(userId, &error);
        if (!member)
            return error;
        // Either list's members go into either tree, as a drop in the
        // console puts them (a member in both trees gets level 3).
        ids.append(member->id);
    }
    const EditResult result = m_document.editor().placeMembers(place.group.guest, group, ids);
    if (!result.ok())
        return refusalText(
            result, u"members cannot be placed under %1"_s.arg(place.group.toText()));
    return {};
}

QString EditScriptApplier::apply(const Edit::Unplace &unplace)
{
    QString error;
    const DirectoryNode *membership = findMembership(unplace.group, unplace.userId, &error);
    if (!membership)
        return error;
    const EditResult result = m_document.editor().deleteNode(unplace.group.guest, membership);
    if (!result.ok())
        return refusalText(
            result, u"%1 cannot be taken from %2"_s.arg(unplace.userId, unplace.group.toText()));
    return {};
}

QString EditScriptApplier::apply(const Edit::MembershipPosition &position)
{
    QString error;
    const DirectoryNode *membership = findMembership(position.group, position.userId, &error);
    if (!membership)
        return error;
    qint32 rankId = PositionList::NoPosition;
    if (position.position) {
        const int row = positionRow(*position.position, &error);
        if (row < 0)
            return error;
        rankId = m_document.positions()->list().positions.at(row).id;
    }
    const EditResult result
        = m_document.editor().setMembershipPosition(position.group.guest, membership, rankId);
    if (!result.ok())
        return refusalText(result, u"the position cannot be set"_s);
    return {};
}

QString EditScriptApplier::apply(const Edit::PositionAdd &add)
{
    const EditResult result = m_document.editor().addPosition(add.name);
    if (!result.ok())
        return refusalText(result, u"a position name cannot be empty"_s);
    const PositionList &list = m_document.positions()->list();
    m_output(u"position %1 %2"_s.arg(list.nameForId(result.id)).arg(result.id));
    return {};
}

QString EditScriptApplier::apply(const Edit::PositionRename &rename)
{
    QString error;
    const int row = positionRow(rename.name, &error);
    if (row < 0)
        return error;
    const EditResult result = m_document.editor().renamePosition(row, rename.newName);
    if (!result.ok())
        return refusalText(result, u"a position name cannot be empty"_s);
    return {};
}

QString EditScriptApplier::apply(const Edit::PositionDelete &del)
{
    QString error;
    const int row = positionRow(del.name, &error);
    if (row < 0)
        return error;
    const EditResult result = m_document.editor().deletePosition(row);
    if (!result.ok())
        return refusalText(result, u"the position %1 cannot be deleted"_s.arg(del.name));
    return {};
}

QString EditScriptApplier::apply(const Edit::PositionDefault &position)
{
    qint32 id = PositionList::NoPosition;
    if (position.name) {
        QString error;
        const int row = positionRow(*position.name, &error);
        if (row < 0)
            return error;
        id = m_document.positions()->list().positions.at(row).id;
    }
    const EditResult result = m_document.editor().setDefaultPosition(id);
    if (!result.ok())
        return refusalText(result, u"the default position cannot be set"_s);
    return {};
}

QString EditScriptApplier::apply(const Edit::PositionMove &move)
{
    QString error;
    const int row = positionRow(move.name, &error);
    if (row < 0)
        return error;
    const EditResult result = m_document.editor().movePosition(row, move.up ? -1 : 1);
    if (!result.ok())
        return refusalText(result, u"the position %1 cannot be moved"_s.arg(move.name));
    return {};
}

QString EditScriptApplier::apply(const Edit::PermissionSet &set)
{
    QList<qint32> members;
    QString target;
    QString error;
    if (const auto *userId = std::get_if<QString>(&set.target)) {
        const std::optional<MemberRef> member = findMember(*userId, &error);
        if (!member)
            return error;
        members.append(member->id);
        target = *userId;
    } else {
        const EditGroupRef &ref = std::get<EditGroupRef>(set.target);
        const DirectoryNode *group = findGroup(ref, &error);
        if (!group)
            return error;
        // The members standing directly under the group.
        for (int row = 0; row < group->childCount(); ++row) {
            if (group->child(row)->isMembership())
                members.append(group->child(row)->id());
        }
        target = ref.toText();
    }
    PermissionEditor editor(m_document);
    JournalStep step(m_document.undoStack(), u"权限设置 %1"_s.arg(target));
    for (int feature = 0; feature < Edit::FeatureCount; ++feature) {
        const std::optional<bool> on = set.flags[size_t(feature)];
        if (!on)
            continue;
        // The features are listed in the record's flag order.
        const auto flag = CAccessToken::Feature(feature);
        const EditResult result = std::holds_alternative<QString>(set.target)
            ? editor.setFlag(members.first(), flag, *on)
            : editor.setFlagForMembers(members, flag, *on);
        if (!result.ok())
            return refusalText(result, u"the permissions of %1 cannot be set"_s.arg(target));
    }
    return {};
}

QString EditScriptApplier::apply(const Edit::VoipSet &set)
{
    QString error;
    const std::optional<MemberRef> member = findMember(set.userId, &error);
    if (!member)
        return error;
    PermissionEditor editor(m_document);
    JournalStep step(m_document.undoStack(), u"VoIP %1"_s.arg(set.userId));
    for (const auto &[field, text] : { std::pair { AccessTokenTable::VoipField::Id, set.account },
             std::pair { AccessTokenTable::VoipField::Password, set.password } }) {
        const EditResult result = editor.setVoipAccount(member->id, field, text);
        if (!result.ok())
            return refusalText(result, u"the VoIP account of %1 cannot be set"_s.arg(set.userId));
    }
    return {};
}

QString EditScriptApplier::apply(const Edit::VoipAssign &)
{
    const EditResult result = PermissionEditor(m_document).assignTelephony();
    if (!result.ok())
        return refusalText(result, u"the telephone numbers cannot be assigned"_s);
    m_output(u"voip assign: %1 assigned, %2 left without an account"_s.arg(result.applied)
                 .arg(result.skipped));
    return {};
}

QString EditScriptApplier::apply(const Edit::FolderAdd &add)
{
    const EditResult result = FileBoxEditor(m_document).addFolder(add.path);
    if (!result.ok())
        return refusalText(result, u"the folder %1 cannot be added"_s.arg(add.path));
    m_output(u"folder %1 %2"_s.arg(add.path).arg(result.id));
    return {};
}

QString EditScriptApplier::apply(const Edit::FolderRemove &remove)
{
    const qint32 folderId = m_document.fileBox().folderIdByPath(remove.path);
    if (folderId < 0)
        return u"no folder %1"_s.arg(remove.path);
    const EditResult result = FileBoxEditor(m_document).removeFolder(folderId);
    if (!result.ok())
        return refusalText(result, u"the folder %1 cannot be removed"_s.arg(remove.path));
    return {};
}

QString EditScriptApplier::apply(const Edit::RightSet &set)
{
    const qint32 folderId = m_document.fileBox().folderIdByPath(set.folder);
    if (folderId < 0)
        return u"no folder %1"_s.arg(set.folder);
    const auto authority = qint32(set.authority);
    FileBoxEditor editor(m_document);
    EditResult result;
    QString error;
    if (const auto *ref = std::get_if<EditGroupRef>(&set.holder)) {
        const DirectoryNode *group = findGroup(*ref, &error);
        if (!group)
            return error;
        if (!group->isGroup())
            return u"rights belong to a group, not to the root"_s;
        result = editor.setGroupRight(group->id(), folderId, authority);
    } else {
        const std::optional<MemberRef> member = findMember(std::get<QString>(set.holder), &error);
        if (!member)
            return error;
        result = editor.setMemberRight(member->id, folderId, authority);
    }
    if (!result.ok())
        return refusalText(result, u"the right on %1 cannot be set"_s.arg(set.folder));
    return {};
}

QString EditScriptApplier::apply(const Edit::NoticeDelete &del)
{
    const QList<NoticeRecord> &records = m_document.notices()->records();
    QList<int> rows;
    for (const qint32 id : del.ids) {
        const auto found = std::find_if(records.cbegin(), records.cend(),
            [id](const NoticeRecord &record) { return record.id == id; });
        if (found == records.cend())
            return u"no notice %1"_s.arg(id);
        rows.append(int(found - records.cbegin()));
    }
    const EditResult result = NoticeEditor(m_document).deleteNotices(rows);
    if (!result.ok())
        return refusalText(result, u"the notices cannot be deleted"_s);
    return {};
}
