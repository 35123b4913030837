#pragma once

#include "MemberRowIndex.h"
#include "UserInfo.h"

#include <QAbstractTableModel>

// One member list (regular or guest) as the member grid shows it: a row per
// member in list order, the fifteen grid columns. The model owns its records;
// it holds member rows only (the grid's blank new-member row is the view's).
class MemberListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    // The grid's columns, in screen order.
    enum Column {
        LoginNameColumn, // 用户ID
        DisplayNameColumn, // 姓名
        NicknameColumn, // 呢称 (unescaped)
        PasswordColumn, // 密码
        GenderColumn, // 性别: 男生 / 女生
        AdminColumn, // 权限: 是 / 否
        EmailColumn, // 邮箱
        MobileColumn, // 手机
        OfficePhoneColumn, // 办公电话
        AddressColumn, // 地址
        HomePhoneColumn, // 电话号码
        BirthdayColumn, // 出生年月 (the stored text)
        DescriptionColumn, // 自我介绍
        SolarColumn, // 是否阳历: 阳历 / 阴历
        PublicColumn, // 公开信息: 公开 / 保密
        ColumnCount
    };

    enum Role {
        MemberIdRole = Qt::UserRole + 1, // qint32 OMemberID of the row
        UserInfoRole, // the whole record (QVariant of UserInfo)
    };

    explicit MemberListModel(bool guest, QObject *parent = nullptr);

    bool isGuest() const { return m_guest; }

    // Adopts a list loaded elsewhere (model reset).
    void setMembers(MemberList members);
    const MemberList &members() const { return m_members; }
    const UserInfo &member(int row) const { return m_members.at(row); }

    // The first row of the member id, -1 when absent.
    int rowOfId(qint32 id) const;
    // The first row whose login name equals loginName exactly, -1 when absent.
    int rowOfLoginName(const QString &loginName) const;
    // Whether a row carries the id / exactly this login name.
    bool containsId(qint32 id) const { return m_rows.containsId(id); }
    bool containsLoginName(const QString &loginName) const
    {
        return m_rows.containsLoginName(loginName);
    }
    // Largest member id of the list (0 for an empty list).
    qint32 maxId() const;

    // Appends a row (the record's guest flag is set to this list's).
    int appendMember(UserInfo member);
    // Replaces a row's record (dataChanged for the whole row).
    void setMember(int row, UserInfo member);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // EditRole: text columns take text; the four choice columns take the flag
    // (bool/int) or one of their two choice texts. The login name of an
    // existing member is not editable.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    bool removeRows(int row, int count, const QModelIndex &parent = {}) override;

    // The choice texts of the four drop-down columns: {set, cleared}.
    static QString choiceText(int column, bool set);

private:
    bool m_guest;
    MemberList m_members;
    // Kept in step with every change of the rows.
    MemberRowIndex m_rows;
};
