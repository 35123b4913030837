#pragma once

#include "EditGroupRef.h"

#include <array>
#include <optional>
#include <QList>
#include <QString>
#include <QStringList>
#include <variant>

// One command of an edit script as parsed, before anything is looked up:
// user IDs, group paths, position names and folder paths are the texts as
// written. Each form is a plain struct; EditCommand carries one of them with
// the script line it came from.
namespace Edit {

// The member text cells an option sets.
enum class MemberText : quint8 {
    Name, // --name
    Password, // --password
    Nickname, // --nickname
    Email, // --email
    Mobile, // --mobile
    HomePhone, // --phone
    OfficePhone, // --office-phone
    Address, // --address
    Birthday, // --birthday, "YYYY-MM-DD" or "" for none
    Intro, // --intro
};

struct MemberTextEdit
{
    MemberText cell = MemberText::Name;
    QString value;
    friend bool operator==(const MemberTextEdit &, const MemberTextEdit &) = default;
};

// The member cells the options set; an absent value leaves the cell alone.
// Text cells are kept in the order written (each at most once), so that the
// edits are applied, and the first one refused is reported, in that order.
struct MemberFields
{
    QList<MemberTextEdit> texts;
    std::optional<bool> male; // --male / --female
    std::optional<bool> isPublic; // --public / --private
    std::optional<bool> solar; // --solar / --lunar
    std::optional<bool> admin; // --admin / --no-admin

    // The value given for a text cell, null when the cell is not set.
    const QString *text(MemberText cell) const
    {
        for (const MemberTextEdit &edit : texts) {
            if (edit.cell == cell)
                return &edit.value;
        }
        return nullptr;
    }

    friend bool operator==(const MemberFields &, const MemberFields &) = default;
};

struct MemberAdd
{
    QString userId;
    bool guest = false;
    MemberFields fields;
    friend bool operator==(const MemberAdd &, const MemberAdd &) = default;
};

struct MemberSet
{
    QString userId;
    MemberFields fields;
    friend bool operator==(const MemberSet &, const MemberSet &) = default;
};

struct MemberDelete
{
    QStringList userIds;
    friend bool operator==(const MemberDelete &, const MemberDelete &) = default;
};

struct GroupAdd
{
    EditGroupRef group; // the last name is the new group, the rest must exist
    friend bool operator==(const GroupAdd &, const GroupAdd &) = default;
};

struct GroupRename
{
    EditGroupRef group;
    QString name;
    friend bool operator==(const GroupRename &, const GroupRename &) = default;
};

struct GroupDelete
{
    EditGroupRef group;
    friend bool operator==(const GroupDelete &, const GroupDelete &) = default;
};

enum class GroupMoveStep : quint8 { Up, Down, First, Last };

struct GroupMove
{
    EditGroupRef group;
    GroupMoveStep step = GroupMoveStep::Up;
    friend bool operator==(const GroupMove &, const GroupMove &) = default;
};

struct GroupMoveInto
{
    EditGroupRef group;
    EditGroupRef into; // may be the root
    friend bool operator==(const GroupMoveInto &, const GroupMoveInto &) = default;
};

struct Place
{
    EditGroupRef group;
    QStringList userIds;
    friend bool operator==(const Place &, const Place &) = default;
};

struct Unplace
{
    EditGroupRef group;
    QString userId;
    friend bool operator==(const Unplace &, const Unplace &) = default;
};

struct MembershipPosition
{
    EditGroupRef group;
    QString userId;
    std::optional<QString> position; // absent for "none"
    friend bool operator==(const MembershipPosition &, const MembershipPosition &) = default;
};

struct PositionAdd
{
    std::optional<QString> name; // absent: the list's next "新等级" name
    friend bool operator==(const PositionAdd &, const PositionAdd &) = default;
};

struct PositionRename
{
    QString name;
    QString newName;
    friend bool operator==(const PositionRename &, const PositionRename &) = default;
};

struct PositionDelete
{
    QString name;
    friend bool operator==(const PositionDelete &, const PositionDelete &) = default;
};

struct PositionDefault
{
    std::optional<QString> name; // absent for "none"
    friend bool operator==(const PositionDefault &, const PositionDefault &) = default;
};

struct PositionMove
{
    QString name;
    bool up = true;
    friend bool operator==(const PositionMove &, const PositionMove &) = default;
};

// The features of a permission record, in the record's flag order.
enum class Feature : quint8 { Message, Chat, File, Tts, Video, Call, Sms, Voip };
inline constexpr int FeatureCount = 8;

struct PermissionSet
{
    // A user ID, or a group whose direct members all get the flags.
    std::variant<QString, EditGroupRef> target;
    // Indexed by Feature; absent flags stay as they are.
    std::array<std::optional<bool>, FeatureCount> flags;
    friend bool operator==(const PermissionSet &, const PermissionSet &) = default;
};

struct VoipSet
{
    QString userId;
    QString account;
    QString password;
    friend bool operator==(const VoipSet &, const VoipSet &) = default;
};

struct VoipAssign
{
    friend bool operator==(const VoipAssign &, const VoipAssign &) = default;
};

struct FolderAdd
{
    QString path;
    friend bool operator==(const FolderAdd &, const FolderAdd &) = default;
};

struct FolderRemove
{
    QString path;
    friend bool operator==(const FolderRemove &, const FolderRemove &) = default;
};

// The file-box authority codes.
enum class Authority : qint32 { None = 0, Read = 1, Write = 2 };

struct RightSet
{
    QString folder;
    // The group or the user ID the right belongs to.
    std::variant<EditGroupRef, QString> holder;
    Authority authority = Authority::None;
    friend bool operator==(const RightSet &, const RightSet &) = default;
};

struct NoticeDelete
{
    QList<qint32> ids;
    friend bool operator==(const NoticeDelete &, const NoticeDelete &) = default;
};

using Operation = std::variant<MemberAdd, MemberSet, MemberDelete, GroupAdd, GroupRename,
    GroupDelete, GroupMove, GroupMoveInto, Place, Unplace, MembershipPosition, PositionAdd,
    PositionRename, PositionDelete, PositionDefault, PositionMove, PermissionSet, VoipSet,
    VoipAssign, FolderAdd, FolderRemove, RightSet, NoticeDelete>;

} // namespace Edit

struct EditCommand
{
    int line = 0; // 1-based line of the script
    Edit::Operation operation;

    friend bool operator==(const EditCommand &, const EditCommand &) = default;
};
