#include "MemberListModel.h"

using namespace Qt::StringLiterals;

namespace {

QString *textField(UserInfo &member, int column)
{
    switch (column) {
    case MemberListModel::DisplayNameColumn:
        return &member.displayName;
    case MemberListModel::NicknameColumn:
        return &member.nickname;
    case MemberListModel::PasswordColumn:
        return &member.password;
    case MemberListModel::EmailColumn:
        return &member.email;
    case MemberListModel::MobileColumn:
        return &member.mobile;
    case MemberListModel::OfficePhoneColumn:
        return &member.officePhone;
    case MemberListModel::AddressColumn:
        return &member.address;
    case MemberListModel::HomePhoneColumn:
        return &member.homePhone;
    case MemberListModel::BirthdayColumn:
        return &member.birthday;
    case MemberListModel::DescriptionColumn:
        return &member.description;
    default:
        return nullptr;
    }
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

MemberListModel::MemberListModel(bool guest, QObject *parent)
    : QAbstractTableModel(parent)
    , m_guest(guest)
{ }

void MemberListModel::setMembers(MemberList members)
{
    beginResetModel();
    m_members = std::move(members);
    for (UserInfo &member : m_members)
        member.isGuest = m_guest ? 1 : 0;
    m_rows.reset(m_members);
    endResetModel();
}

int MemberListModel::rowOfId(qint32 id) const
{
    return m_rows.rowOfId(id);
}

int MemberListModel::rowOfLoginName(const QString &loginName) const
{
    return m_rows.rowOfLoginName(loginName);
}

qint32 MemberListModel::maxId() const
{
    return m_rows.maxId();
}

int MemberListModel::appendMember(UserInfo member)
{
    member.isGuest = m_guest ? 1 : 0;
    const int row = int(m_members.size());
    beginInsertRows({}, row, row);
    m_members.append(std::move(member));
    m_rows.appended(m_members);
    endInsertRows();
    return row;
}

void MemberListModel::setMember(int row, UserInfo member)
{
    if (row < 0 || row >= int(m_members.size()))
        return;
    member.isGuest = m_guest ? 1 : 0;
    m_rows.replace(row, m_members.at(row), member);
    m_members[row] = std::move(member);
    Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

int MemberListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_members.size());
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
    const UserInfo &member = m_members.at(index.row());
    switch (role) {
    case MemberIdRole:
        return member.id;
    case UserInfoRole:
        return QVariant::fromValue(member);
    case Qt::DisplayRole:
    case Qt::EditRole: {
        const int column = index.column();
        if (column == LoginNameColumn)
            return member.loginName;
        if (QString *text = textField(const_cast<UserInfo &>(member), column))
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

QVariant MemberListModel::headerData(int section, Qt::Orientation orientation, int role) const
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
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0
        || section >= ColumnCount)
        return QAbstractTableModel::headerData(section, orientation, role);
    return QString::fromUtf16(titles[section]);
}

Qt::ItemFlags MemberListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags result = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (index.column() != LoginNameColumn)
        result |= Qt::ItemIsEditable;
    return result;
}

bool MemberListModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole
        || !checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return false;
    UserInfo &member = m_members[index.row()];
    const int column = index.column();
    if (QString *text = textField(member, column)) {
        const QString newText = value.toString();
        if (*text != newText) {
            *text = newText;
            Q_EMIT dataChanged(index, index, { Qt::DisplayRole, Qt::EditRole });
        }
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
    // A stored flag other than 0 and 1 keeps its value while its meaning stays.
    if ((*flag != 0) != (newFlag != 0)) {
        *flag = newFlag;
        Q_EMIT dataChanged(index, index, { Qt::DisplayRole, Qt::EditRole });
    }
    return true;
}

bool MemberListModel::removeRows(int row, int count, const QModelIndex &parent)
{
    if (parent.isValid() || row < 0 || count <= 0 || row + count > int(m_members.size()))
        return false;
    beginRemoveRows({}, row, row + count - 1);
    m_rows.remove(m_members, row, count);
    m_members.remove(row, count);
    endRemoveRows();
    return true;
}
