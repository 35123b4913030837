#pragma once

#include <array>
#include <optional>
#include <QString>
#include <QStringList>

// The member fields an import fills, in the order the column mapping lists
// them, each with its Chinese name (as the console shows it) and an English
// name for the command line.
class ImportFields final
{
public:
    enum Field {
        UserId, // 用户ID
        Name, // 姓名
        Password, // 密码
        Email, // 邮箱
        Mobile, // 手机
        Phone, // 电话
        Address, // 地址
        Gender, // 性别: male when the text is "1"
        Admin, // 管理权限: the grid's "权限"
        OfficePhone, // 办公电话
        Birthday, // 出生年月
        Intro, // 自我介绍
        Solar, // 是否阳历
        Public, // 信息公开
        FieldCount
    };

    // For each field, the source column (index into the table's columns)
    // that fills it, -1 for none.
    using Mapping = std::array<int, FieldCount>;

    static QString name(Field field); // Chinese
    static QString englishName(Field field);
    static QStringList names();
    static QStringList englishNames();
    // Flags are set exactly when their text is "1".
    static bool isFlag(Field field);
    // The names joined as the wizard is handed them: each followed by a
    // comma, the last one included.
    static QString fieldList();
    // A field by its Chinese or English name (English without regard to case).
    static std::optional<Field> fieldNamed(QStringView name);

    static Mapping emptyMapping();
    // Columns whose names say which field they hold (用户ID, userid, uid,
    // sAMAccountName, login, 姓名, cn, displayName, mail, telephoneNumber,
    // ...), compared without regard to case, spaces, '-' and '_'. A column
    // fills one field at most; the earlier field in the list wins.
    static Mapping guessMapping(const QStringList &columns);
    // A column given by name (as guessMapping compares names, an exact
    // match first) or by its number from 1; -1 when none.
    static int columnNamed(const QStringList &columns, const QString &name);
};
