#include "DirectoryFixture.h"

#include "SqlTrace.h"

#include <QFile>

using namespace Qt::StringLiterals;

QStringList dumpMembers(const MemberList &members, const QString &list)
{
    QStringList out;
    for (const UserInfo &m : members) {
        out << QStringList({ list, QString::number(m.id), m.loginName, m.displayName, m.nickname,
                               m.password, QString::number(m.gender), QString::number(m.bPublic),
                               m.email, m.mobile, m.homePhone, m.address, m.birthday,
                               QString::number(m.bSolar), QString::number(m.bAdmin), m.officePhone,
                               m.description, QString::number(m.isGuest) })
                   .join(u'|');
    }
    return out;
}

namespace {

void dumpTree(
    const DirectoryTree &tree, const QString &name, QStringList &groups, QStringList &relations)
{
    tree.forEachGroup([&](const DirectoryNode *group, int depth) {
        groups << u"%1 depth %2 parent %3 group %4 %5"_s.arg(name)
                      .arg(depth)
                      .arg(group->parent()->id())
                      .arg(group->id())
                      .arg(group->name());
    });
    tree.forEachMembership([&](const DirectoryNode *membership) {
        relations << u"%1 group %2 member %3 rank %4"_s.arg(name)
                         .arg(membership->parent()->id())
                         .arg(membership->id())
                         .arg(membership->rankId());
    });
}

} // namespace

QStringList dumpDirectory(const DirectoryData &data)
{
    // Member rows come back in whatever order the database keeps them (the
    // member query has no ORDER BY; PostgreSQL reuses free space), so the
    // lists compare as sets. Groups and memberships keep their order.
    QStringList regular = dumpMembers(data.regularMembers, u"regular"_s);
    QStringList guest = dumpMembers(data.guestMembers, u"guest"_s);
    regular.sort();
    guest.sort();
    QStringList out = regular + guest;
    QStringList groups;
    QStringList relations;
    dumpTree(data.regularTree, u"regular"_s, groups, relations);
    dumpTree(data.guestTree, u"guest"_s, groups, relations);
    return out + groups + relations;
}

QStringList readTrace(const QString &path)
{
    QString error;
    QStringList statements = SqlTrace::readStatements(path, &error);
    if (!error.isEmpty())
        return { u"cannot read the trace "_s + path + u": "_s + error };
    for (QString &statement : statements)
        statement.replace(u"\"Group\""_s, u"[Group]"_s);
    return statements;
}
