#include "SavePreflight.h"

#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DirectoryTree.h"
#include "FileBoxRights.h"
#include "GroupTreeModel.h"
#include "MemberListModel.h"
#include "PositionListModel.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace {

QString groupPath(const DirectoryNode *group)
{
    QStringList names;
    for (const DirectoryNode *node = group; node && node->isGroup(); node = node->parent())
        names.prepend(node->name());
    return u"/"_s + names.join(u'/');
}

class Collector
{
public:
    Collector(SqlDialect dialect, QList<SavePreflight::Problem> &problems)
        : m_dialect(dialect)
        , m_problems(problems)
    { }

    void check(QStringView text, const std::function<QString()> &item)
    {
        if (!SavePreflight::unsafeReason(text, m_dialect).isEmpty())
            m_problems.append({ item(), text.toString() });
    }

private:
    SqlDialect m_dialect;
    QList<SavePreflight::Problem> &m_problems;
};

} // namespace

QString SavePreflight::unsafeReason(QStringView text, SqlDialect dialect)
{
    for (const QChar c : text) {
        if (c == u'\'')
            return u"单引号(')"_s;
        // A NUL ends the statement text for SQLite and is refused by
        // PostgreSQL and the ODBC drivers alike.
        if (c.unicode() == 0)
            return u"空字符(NUL)"_s;
        // MySQL and MariaDB read a backslash inside a literal as an escape:
        // the text would not be stored as it stands, and a trailing one
        // swallows the closing quote.
        if (c == u'\\' && dialect == SqlDialect::MySql)
            return u"反斜杠(\\)"_s;
    }
    return {};
}

QList<SavePreflight::Problem> SavePreflight::check(
    const CVelmarManagerDoc &data, SqlDialect dialect)
{
    QList<Problem> problems;
    Collector collector(dialect, problems);
    const Directory &directory = *data.directory();

    for (const bool guest : { false, true }) {
        const QString treeName = guest ? u"论坛结构"_s : u"类别"_s;
        directory.tree(guest)->tree().forEachGroup([&](const DirectoryNode *group, int) {
            collector.check(group->name(), [&] { return treeName + u' ' + groupPath(group); });
        });
    }

    // The columns of the member grid that go into Member unescaped (the
    // nickname is the one written with escape markers).
    struct Column
    {
        QString UserInfo::*field;
        const char16_t *caption;
    };
    static const Column columns[] = {
        { &UserInfo::loginName, u"用户ID" },
        { &UserInfo::displayName, u"姓名" },
        { &UserInfo::password, u"密码" },
        { &UserInfo::email, u"邮箱" },
        { &UserInfo::mobile, u"手机" },
        { &UserInfo::address, u"地址" },
        { &UserInfo::homePhone, u"电话号码" },
        { &UserInfo::officePhone, u"办公电话" },
        { &UserInfo::birthday, u"出生年月" },
        { &UserInfo::description, u"自我介绍" },
    };
    for (const bool guest : { false, true }) {
        const QString kind = guest ? u"论坛用户"_s : u"会员"_s;
        for (const UserInfo &member : directory.members(guest)->members()) {
            for (const Column &column : columns) {
                collector.check(member.*column.field, [&] {
                    return u"%1 %2 的 %3"_s.arg(
                        kind, member.loginName, QString::fromUtf16(column.caption));
                });
            }
        }
    }

    for (const Position &position : data.positions()->list().positions)
        collector.check(position.name, [&] { return u"等级 %1"_s.arg(position.name); });

    auto memberName = [&](qint32 id) {
        const UserInfo *member = directory.findMember(id);
        return member ? member->loginName : u"#%1"_s.arg(id);
    };
    const AccessTokenTable::AccountMap &accounts = data.permissions().voipAccounts();
    for (auto it = accounts.cbegin(); it != accounts.cend(); ++it) {
        collector.check(
            it->second.id, [&] { return u"会员 %1 的 VoIP 账号"_s.arg(memberName(it->first)); });
        collector.check(it->second.password,
            [&] { return u"会员 %1 的 VoIP 密码"_s.arg(memberName(it->first)); });
    }

    for (const tagFolderData &folder : data.fileBox().folders()) {
        collector.check(FileBoxRights::pathToStored(folder.path),
            [&] { return u"文件夹 %1"_s.arg(folder.path); });
    }

    for (const VoipAccountPool::Entry &entry : data.voipPool().entries())
        collector.check(entry.voipId, [&] { return u"VoIP 号码 %1"_s.arg(entry.voipId); });

    return problems;
}

QString SavePreflight::refusalText(const QList<Problem> &problems, int maxListed)
{
    QString text = u"以下内容含有数据库不能保存的字符(如单引号)，什么都没有保存。请修改后再保存:"_s;
    const qsizetype shown = std::min<qsizetype>(problems.size(), maxListed);
    for (qsizetype i = 0; i < shown; ++i)
        text += u"\r\n"_s + problems[i].item;
    if (problems.size() > shown)
        text += u"\r\n... 另有 %1 项"_s.arg(problems.size() - shown);
    return text;
}
