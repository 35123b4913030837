#pragma once

#include "EditCommand.h"

#include <functional>
#include <optional>
#include <QHash>
#include <QString>

class CVelmarManagerDoc;
class DirectoryNode;

// Applies the commands of an edit script to the document, one at a time and
// in order, through the same editors the console's views call: user IDs,
// group references and position names are looked up in the document as it
// stands after the commands before. Each command is at most one step of the
// journal. A refused command changes nothing and says why, with the designed
// text when the editor gives one.
class EditScriptApplier final
{
public:
    // Receives a line for each member, group, position or folder a command
    // creates ("member alice 101", "group /Sales/East 57").
    using Output = std::function<void(const QString &line)>;

    EditScriptApplier(CVelmarManagerDoc &document, Output output);

    // Empty when the command was applied; otherwise why it was refused.
    QString apply(const EditCommand &command);

private:
    struct MemberRef
    {
        bool guest = false;
        int row = -1;
        qint32 id = -1;
    };

    QString apply(const Edit::MemberAdd &add);
    QString apply(const Edit::MemberSet &set);
    QString apply(const Edit::MemberDelete &del);
    QString apply(const Edit::GroupAdd &add);
    QString apply(const Edit::GroupRename &rename);
    QString apply(const Edit::GroupDelete &del);
    QString apply(const Edit::GroupMove &move);
    QString apply(const Edit::GroupMoveInto &move);
    QString apply(const Edit::Place &place);
    QString apply(const Edit::Unplace &unplace);
    QString apply(const Edit::MembershipPosition &position);
    QString apply(const Edit::PositionAdd &add);
    QString apply(const Edit::PositionRename &rename);
    QString apply(const Edit::PositionDelete &del);
    QString apply(const Edit::PositionDefault &position);
    QString apply(const Edit::PositionMove &move);
    QString apply(const Edit::PermissionSet &set);
    QString apply(const Edit::VoipSet &set);
    QString apply(const Edit::VoipAssign &assign);
    QString apply(const Edit::FolderAdd &add);
    QString apply(const Edit::FolderRemove &remove);
    QString apply(const Edit::RightSet &set);
    QString apply(const Edit::NoticeDelete &del);

    std::optional<MemberRef> findMember(const QString &userId, QString *error) const;
    const DirectoryNode *findGroup(const EditGroupRef &ref, QString *error);
    const DirectoryNode *findMembership(
        const EditGroupRef &group, const QString &userId, QString *error);
    int positionRow(const QString &name, QString *error) const;
    // The cell edits of the options, then the password rule of a member
    // row that is left.
    QString applyFields(const MemberRef &member, const Edit::MemberFields &fields);
    // A group edit moves, renames or removes groups: paths looked up before
    // may now name another node or none.
    void forgetGroups() { m_groups.clear(); }

    CVelmarManagerDoc &m_document;
    Output m_output;
    // Group references already looked up (their text with the tree), so that
    // a script placing thousands of members in one group walks its path once.
    QHash<QString, const DirectoryNode *> m_groups;
};
