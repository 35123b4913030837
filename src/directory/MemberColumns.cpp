#include "MemberColumns.h"

#include "UserInfo.h"

#include <utility>

const QString *MemberColumns::text(const UserInfo &member, int column)
{
    switch (column) {
    case LoginNameColumn:
        return &member.loginName;
    case DisplayNameColumn:
        return &member.displayName;
    case NicknameColumn:
        return &member.nickname;
    case PasswordColumn:
        return &member.password;
    case EmailColumn:
        return &member.email;
    case MobileColumn:
        return &member.mobile;
    case OfficePhoneColumn:
        return &member.officePhone;
    case AddressColumn:
        return &member.address;
    case HomePhoneColumn:
        return &member.homePhone;
    case BirthdayColumn:
        return &member.birthday;
    case DescriptionColumn:
        return &member.description;
    default:
        return nullptr;
    }
}

QString *MemberColumns::text(UserInfo &member, int column)
{
    return const_cast<QString *>(text(std::as_const(member), column));
}
