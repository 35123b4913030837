#include "MemberListModel.h"

#include <algorithm>

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
    m_idCount.clear();
    m_loginCount.clear();
    for (UserInfo &member : m_members) {
        member.isGuest = m_guest ? 1 : 0;
        countRow(member);
    }
    invalidateLookup();
    endResetModel();
}

void MemberListModel::countRow(const UserInfo &member)
{
    ++m_idCount[member.id];
    ++m_loginCount[member.loginName];
}

void MemberListModel::uncountRow(const UserInfo &member)
{
    if (auto id = m_idCount.find(member.id); id != m_idCount.end() && --id->second == 0)
        m_idCount.erase(id);
    if (auto login = m_loginCount.find(member.loginName);
        login != m_loginCount.end() && --login.value() == 0)
        m_loginCount.erase(login);
}

void MemberListModel::buildLookup() const
{
    if (m_lookupValid)
        return;
    m_rowById.clear();
    m_rowByLoginName.clear();
    m_rowById.reserve(m_members.size());
    m_rowByLoginName.reserve(m_members.size());
    for (int row = 0; row < int(m_members.size()); ++row) {
        if (!m_rowById.contains(m_members.at(row).id))
            m_rowById.insert(m_members.at(row).id, row);
        if (!m_rowByLoginName.contains(m_members.at(row).loginName))
            m_rowByLoginName.insert(m_members.at(row).loginName, row);
    }
    m_lookupValid = true;
}

int MemberListModel::rowOfId(qint32 id) const
{
    if (!containsId(id))
        return -1;
    buildLookup();
    return m_rowById.value(id, -1);
}

int MemberListModel::rowOfLoginName(const QString &loginName) const
{
    if (!containsLoginName(loginName))
        return -1;
    buildLookup();
    return m_rowByLoginName.value(loginName, -1);
}

qint32 MemberListModel::maxId() const
{
    return m_idCount.empty() ? 0 : std::max(qint32(0), m_idCount.rbegin()->first);
}

int MemberListModel::appendMember(UserInfo member)
{
    member.isGuest = m_guest ? 1 : 0;
    const int row = int(m_members.size());
    beginInsertRows({}, row, row);
    m_members.append(std::move(member));
    countRow(m_members.last());
    if (m_lookupValid) {
        if (!m_rowById.contains(m_members.last().id))
            m_rowById.insert(m_members.last().id, row);
        if (!m_rowByLoginName.contains(m_members.last().loginName))
            m_rowByLoginName.insert(m_members.last().loginName, row);
    }
    endInsertRows();
    return row;
}

void MemberListModel::setMember(int row, UserInfo member)
{
    if (row < 0 || row >= int(m_members.size()))
        return;
    member.isGuest = m_guest ? 1 : 0;
    if (member.id != m_members.at(row).id || member.loginName != m_members.at(row).loginName)
        invalidateLookup();
    uncountRow(m_members.at(row));
    countRow(member);
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
    for (int i = row; i < row + count; ++i)
        uncountRow(m_members.at(i));
    m_members.remove(row, count);
    invalidateLookup();
    endRemoveRows();
    return true;
}
