#include "MemberListModel.h"

#include "Directory.h"
#include "DirectoryEditor.h"
#include "MemberDragFormat.h"
#include "MemberRules.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The text cells a cell edit writes; the user ID is not one of them (it is
// typed only into the blank row, which creates the member).
QString *textField(UserInfo &member, int column)
{
    return column == MemberListModel::LoginNameColumn ? nullptr
                                                      : MemberColumns::text(member, column);
}

qint32 *flagField(UserInfo &member, int column)
{
    switch (column) {
    case MemberListModel::GenderColumn:
        return &member.gender;
    case MemberListModel::AdminColumn:
        return &member.bAdmin;
    case MemberListModel::SolarColumn:
        return &member.bSolar;
    case MemberListModel::PublicColumn:
        return &member.bPublic;
    default:
        return nullptr;
    }
}

} // namespace

MemberListModel::MemberListModel(const Directory &directory, bool guest, QObject *parent)
    : QAbstractTableModel(parent)
    , m_directory(directory)
    , m_guest(guest)
{ }

const MemberRows &MemberListModel::rows() const
{
    return m_directory.memberRows(m_guest);
}

int MemberListModel::memberCount() const
{
    return rows().count();
}

const UserInfo &MemberListModel::member(int row) const
{
    return rows().at(row);
}

MemberList MemberListModel::members() const
{
    return rows().toList();
}

int MemberListModel::rowOfId(qint32 id) const
{
    return rows().rowOfId(id);
}

int MemberListModel::rowOfLoginName(const QString &loginName) const
{
    return rows().rowOfLoginName(loginName);
}

bool MemberListModel::containsId(qint32 id) const
{
    return rows().containsId(id);
}

bool MemberListModel::containsLoginName(const QString &loginName) const
{
    return rows().containsLoginName(loginName);
}

int MemberListModel::rowCount(const QModelIndex &parent) const
{
    // The blank new-member row is always last.
    return parent.isValid() ? 0 : memberCount() + 1;
}

int MemberListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QString MemberListModel::choiceText(int column, bool set)
{
    switch (column) {
    case GenderColumn:
        return set ? u"男生"_s : u"女生"_s;
    case AdminColumn:
        return set ? u"是"_s : u"否"_s;
    case SolarColumn:
        return set ? u"阳历"_s : u"阴历"_s;
    case PublicColumn:
        return set ? u"公开"_s : u"保密"_s;
    default:
        return {};
    }
}

QVariant MemberListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    if (index.row() == blankRow()) {
        return role == IsBlankRowRole ? QVariant(true) : QVariant();
    }
    const UserInfo &member = rows().at(index.row());
    switch (role) {
    case IsBlankRowRole:
        return false;
    case IconIndexRole:
        return (m_directory.isPlaced(member.id, m_guest) ? 0 : 2) + (member.isMale() ? 0 : 1);
    case MemberIdRole:
        return member.id;
    case UserInfoRole:
        return QVariant::fromValue(member);
    case Qt::DisplayRole:
    case Qt::EditRole: {
        const int column = index.column();
        if (const QString *text = MemberColumns::text(member, column))
            return *text;
        const qint32 flag = *flagField(const_cast<UserInfo &>(member), column);
        if (role == Qt::EditRole)
            return flag != 0;
        return choiceText(column, flag != 0);
    }
    default:
        return {};
    }
}

QString MemberListModel::columnTitle(int column)
{
    static const char16_t *const titles[ColumnCount] = {
        u"用户ID",
        u"姓名",
        u"呢称",
        u"密码",
        u"性别",
        u"权限",
        u"邮箱",
        u"手机",
        u"办公电话",
        u"地址",
        u"电话号码",
        u"出生年月",
        u"自我介绍",
        u"是否阳历",
        u"公开信息",
    };
    if (column < 0 || column >= ColumnCount)
        return {};
    return QString::fromUtf16(titles[column]);
}

QVariant MemberListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0
        || section >= ColumnCount)
        return QAbstractTableModel::headerData(section, orientation, role);
    return columnTitle(section);
}

Qt::ItemFlags MemberListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags result = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    const bool blank = index.row() == blankRow();
    if (MemberRules::isEditable(index.column(), blank))
        result |= Qt::ItemIsEditable;
    if (!blank)
        result |= Qt::ItemIsDragEnabled;
    return result;
}

bool MemberListModel::putCell(UserInfo &member, int column, const QVariant &value)
{
    if (QString *text = textField(member, column)) {
        *text = value.toString();
        return true;
    }
    qint32 *flag = flagField(member, column);
    if (!flag)
        return false;
    qint32 newFlag;
    if (value.typeId() == QMetaType::QString) {
        const QString choice = value.toString();
        if (choice == choiceText(column, true))
            newFlag = 1;
        else if (choice == choiceText(column, false))
            newFlag = 0;
        else
            return false;
    } else if (value.canConvert<bool>()) {
        newFlag = value.toBool() ? 1 : 0;
    } else {
        return false;
    }
    if ((*flag != 0) != (newFlag != 0))
        *flag = newFlag;
    return true;
}

bool MemberListModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    m_lastRefusal.reset();
    if (role != Qt::EditRole || !m_editor
        || !checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return false;
    EditResult result;
    if (index.row() == blankRow()) {
        // Other cells of the blank row take an edit but create nothing.
        if (index.column() != LoginNameColumn)
            return false;
        result = m_editor->addMember(m_guest, value.toString());
    } else {
        result = m_editor->setMemberCell(m_guest, index.row(), index.column(), value);
    }
    m_lastRefusal = result.refusal;
    return result.ok();
}

bool MemberListModel::removeRows(int row, int count, const QModelIndex &parent)
{
    m_lastRefusal.reset();
    if (!m_editor || parent.isValid() || row < 0 || count <= 0 || row + count > memberCount())
        return false;
    QList<int> selected;
    for (int i = row; i < row + count; ++i)
        selected.append(i);
    return m_editor->deleteMembers(m_guest, selected).ok();
}

Qt::DropActions MemberListModel::supportedDragActions() const
{
    return Qt::CopyAction | Qt::MoveAction;
}

QStringList MemberListModel::mimeTypes() const
{
    return { MemberDragFormat::mimeType() };
}

QMimeData *MemberListModel::mimeData(const QModelIndexList &indexes) const
{
    QList<int> selected;
    for (const QModelIndex &index : indexes) {
        if (index.isValid() && index.model() == this && index.row() < blankRow())
            selected.append(index.row());
    }
    std::sort(selected.begin(), selected.end());
    selected.erase(std::unique(selected.begin(), selected.end()), selected.end());
    if (selected.isEmpty())
        return nullptr;
    QList<DraggedMember> dragged;
    dragged.reserve(selected.size());
    for (const int row : std::as_const(selected))
        dragged.append({ member(row).id, member(row).isMale() });
    return MemberDragFormat::toMimeData(dragged);
}
