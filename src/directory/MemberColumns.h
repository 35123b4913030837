#pragma once

class QString;
struct UserInfo;

// The member grid's columns, in screen order. The member rules speak of the
// cells they refuse by these; the member list model shows them.
struct MemberColumns
{
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

    // The record's text shown in a column (the user ID included); nullptr
    // for the columns that show a flag.
    static const QString *text(const UserInfo &member, int column);
    static QString *text(UserInfo &member, int column);
};
