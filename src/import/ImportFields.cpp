#include "ImportFields.h"

#include <QList>

using namespace Qt::StringLiterals;

namespace {

struct FieldInfo
{
    QString name;
    QString english;
    // Column names that say a column holds the field, compared as
    // normalised() leaves them; the Chinese and English names come first.
    QStringList aliases;
};

const QList<FieldInfo> &fieldTable()
{
    static const QList<FieldInfo> fields {
        { u"用户ID"_s, u"userid"_s,
            { u"用户id"_s, u"userid"_s, u"用户名"_s, u"帐号"_s, u"账号"_s, u"uid"_s,
                u"samaccountname"_s, u"login"_s, u"loginname"_s, u"memberid"_s, u"username"_s,
                u"account"_s } },
        { u"姓名"_s, u"name"_s,
            { u"姓名"_s, u"name"_s, u"名字"_s, u"cn"_s, u"displayname"_s, u"fullname"_s,
                u"membername"_s, u"commonname"_s } },
        { u"密码"_s, u"password"_s,
            { u"密码"_s, u"password"_s, u"passwd"_s, u"pwd"_s, u"userpassword"_s } },
        { u"邮箱"_s, u"email"_s,
            { u"邮箱"_s, u"email"_s, u"mail"_s, u"电子邮件"_s, u"电子邮箱"_s, u"emailaddress"_s } },
        { u"手机"_s, u"mobile"_s,
            { u"手机"_s, u"mobile"_s, u"手机号"_s, u"手机号码"_s, u"cellphone"_s, u"mobilephone"_s,
                u"hp"_s } },
        { u"电话"_s, u"phone"_s,
            { u"电话"_s, u"phone"_s, u"电话号码"_s, u"telephonenumber"_s, u"homephone"_s,
                u"telephone"_s, u"tel"_s } },
        { u"地址"_s, u"address"_s,
            { u"地址"_s, u"address"_s, u"postaladdress"_s, u"homepostaladdress"_s, u"street"_s } },
        { u"性别"_s, u"gender"_s, { u"性别"_s, u"gender"_s, u"sex"_s } },
        { u"管理权限"_s, u"admin"_s, { u"管理权限"_s, u"admin"_s, u"权限"_s, u"isadmin"_s } },
        { u"办公电话"_s, u"officephone"_s,
            { u"办公电话"_s, u"officephone"_s, u"workphone"_s, u"businessphone"_s } },
        { u"出生年月"_s, u"birthday"_s,
            { u"出生年月"_s, u"birthday"_s, u"生日"_s, u"出生日期"_s, u"birthdate"_s,
                u"dateofbirth"_s } },
        { u"自我介绍"_s, u"intro"_s,
            { u"自我介绍"_s, u"intro"_s, u"introduction"_s, u"description"_s, u"简介"_s } },
        { u"是否阳历"_s, u"solar"_s, { u"是否阳历"_s, u"solar"_s, u"阳历"_s } },
        { u"信息公开"_s, u"public"_s, { u"信息公开"_s, u"public"_s, u"公开信息"_s, u"公开"_s } },
    };
    return fields;
}

// Case, spaces, '-' and '_' do not count: "User_ID", "user id" and "userid"
// are one name.
QString normalised(QStringView name)
{
    QString result;
    result.reserve(name.size());
    for (const QChar c : name) {
        if (c.isSpace() || c == u'-' || c == u'_')
            continue;
        result.append(c.toLower());
    }
    return result;
}

} // namespace

QString ImportFields::name(Field field)
{
    return fieldTable().at(field).name;
}

QString ImportFields::englishName(Field field)
{
    return fieldTable().at(field).english;
}

QStringList ImportFields::names()
{
    QStringList result;
    for (const FieldInfo &info : fieldTable())
        result.append(info.name);
    return result;
}

QStringList ImportFields::englishNames()
{
    QStringList result;
    for (const FieldInfo &info : fieldTable())
        result.append(info.english);
    return result;
}

bool ImportFields::isFlag(Field field)
{
    return field == Gender || field == Admin || field == Solar || field == Public;
}

QString ImportFields::fieldList()
{
    // "%s,%s,...,%s," with the fourteen names.
    QString list;
    for (const FieldInfo &info : fieldTable())
        list += info.name + u',';
    return list;
}

std::optional<ImportFields::Field> ImportFields::fieldNamed(QStringView name)
{
    const QStringView trimmed = name.trimmed();
    for (int i = 0; i < FieldCount; ++i) {
        const FieldInfo &info = fieldTable().at(i);
        if (trimmed == info.name || trimmed.compare(info.english, Qt::CaseInsensitive) == 0)
            return Field(i);
    }
    return std::nullopt;
}

ImportFields::Mapping ImportFields::emptyMapping()
{
    Mapping mapping;
    mapping.fill(-1);
    return mapping;
}

ImportFields::Mapping ImportFields::guessMapping(const QStringList &columns)
{
    Mapping mapping = emptyMapping();
    QStringList keys;
    keys.reserve(columns.size());
    for (const QString &column : columns)
        keys.append(normalised(column));
    QList<bool> used(columns.size(), false);
    for (int field = 0; field < FieldCount; ++field) {
        // The field's own aliases in their order: a column named "name" goes
        // to 姓名 even when a column "cn" comes first.
        for (const QString &alias : fieldTable().at(field).aliases) {
            const qsizetype column = keys.indexOf(normalised(alias));
            if (column >= 0 && !used.at(column)) {
                mapping[field] = int(column);
                used[column] = true;
                break;
            }
        }
    }
    return mapping;
}

int ImportFields::columnNamed(const QStringList &columns, const QString &name)
{
    if (const qsizetype exact = columns.indexOf(name); exact >= 0)
        return int(exact);
    const QString key = normalised(name);
    for (qsizetype i = 0; i < columns.size(); ++i) {
        if (normalised(columns.at(i)) == key)
            return int(i);
    }
    bool isNumber = false;
    const int number = name.toInt(&isNumber);
    if (isNumber && number >= 1 && number <= columns.size())
        return number - 1;
    return -1;
}
