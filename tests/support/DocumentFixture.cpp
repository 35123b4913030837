#include "DocumentFixture.h"

#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "NoticeListModel.h"
#include "PositionListModel.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

UserInfo member(qint32 id, const QString &login, bool guest)
{
    UserInfo info;
    info.id = id;
    info.loginName = login;
    info.displayName = login.at(0).toUpper() + login.mid(1);
    info.password = u"pw%1"_s.arg(id);
    info.isGuest = guest ? 1 : 0;
    return info;
}

CAccessToken token(const char *flags)
{
    CAccessToken result;
    for (int f = 0; f < CAccessToken::FeatureCount; ++f)
        result.setFlag(CAccessToken::Feature(f), flags[f] == '1');
    return result;
}

NoticeRecord notice(qint32 id)
{
    NoticeRecord record;
    record.id = id;
    record.title = u"Notice %1"_s.arg(id);
    record.written = u"2007/10/%1 12:00:00"_s.arg(30 - id);
    record.writerMemberId = u"anna"_s;
    record.writerName = u"Anna"_s;
    record.fileSessionId = u"S-%1"_s.arg(id);
    return record;
}

QString flagsOf(const CAccessToken &token)
{
    QString flags;
    for (int f = 0; f < CAccessToken::FeatureCount; ++f)
        flags += QString::number(token.rawFlag(CAccessToken::Feature(f)));
    return flags;
}

QString memberLine(const UserInfo &m)
{
    return QStringList { QString::number(m.id), m.loginName, m.displayName, m.nickname, m.password,
        QString::number(m.gender), QString::number(m.bPublic), m.email, m.mobile, m.homePhone,
        m.address, m.birthday, QString::number(m.bSolar), QString::number(m.bAdmin), m.officePhone,
        m.description, QString::number(m.level), QString::number(m.isGuest) }
        .join(u'|');
}

// Walks the tree through the model, so that the view's structure is dumped
// along with each node's record and whether the tree's indexes find it.
void dumpTree(const GroupTreeModel *model, const QModelIndex &parent, int depth, QStringList &out)
{
    for (int row = 0; row < model->rowCount(parent); ++row) {
        const QModelIndex index = model->index(row, 0, parent);
        const DirectoryNode *node = model->nodeForIndex(index);
        const DirectoryTree &tree = model->tree();
        const bool indexed = node->isRoot()
            || (node->isGroup() ? tree.findGroup(node->id()) == node
                                : tree.membershipsOf(node->id()).contains(node));
        out << u"%1 %2 id=%3 rank=%4 pos=%5 name=%6 shown=%7/%8 %9"_s.arg(QString(depth, u'.'))
                   .arg(int(node->kind()))
                   .arg(node->id())
                   .arg(node->rankId())
                   .arg(node->position())
                   .arg(node->name(), index.data().toString(),
                       index.data(GroupTreeModel::RankNameRole).toString(),
                       indexed ? u"indexed"_s : u"NOT INDEXED"_s);
        dumpTree(model, index, depth + 1, out);
    }
}

QString ids(const QList<qint32> &list)
{
    QStringList texts;
    for (const qint32 id : list)
        texts << QString::number(id);
    return texts.join(u',');
}

} // namespace

ServerDataSet sampleServerData()
{
    ServerDataSet data;
    DirectoryData &directory = data.directory;
    directory.regularMembers = { member(1, u"anna"_s, false), member(2, u"bert"_s, false),
        member(3, u"carl"_s, false), member(7, u"dora"_s, false) };
    directory.guestMembers = { member(4, u"gina"_s, true), member(5, u"gus"_s, true) };

    DirectoryTree &regular = directory.regularTree;
    DirectoryNode *sales = regular.addGroup(regular.root(), 10, u"Sales"_s);
    regular.addMembership(sales, 1, 1);
    DirectoryNode *east = regular.addGroup(sales, 11, u"East"_s);
    regular.addMembership(east, 2, 1);
    regular.addMembership(sales, 3, 2);
    DirectoryNode *hq = regular.addGroup(regular.root(), 20, u"HQ"_s);
    regular.addMembership(hq, 7, 1);
    regular.addMembership(hq, 99, 1);
    DirectoryTree &guest = directory.guestTree;
    DirectoryNode *forum = guest.addGroup(guest.root(), 50, u"Forum"_s);
    guest.addMembership(forum, 4, 1);
    guest.addMembership(forum, 5, 1);
    for (const qint32 id : { 10, 11, 20, 50 })
        directory.noteGroupId(id);

    data.positions.positions = { { 1, u"职员"_s }, { 2, u"经理"_s } };
    data.positions.defaultId = 1;

    AccessTokenTable &permissions = data.permissions;
    permissions.ensureToken(1) = token("11111111");
    permissions.ensureToken(2) = token("10011010");
    permissions.ensureToken(4) = token("00100001");
    permissions.ensureToken(5) = token("11111110");
    permissions.ensureVoipAccount(1) = { u"v100"_s, u"p100"_s };
    permissions.ensureVoipAccount(4) = { u"v101"_s, u"p101"_s };
    permissions.ensureVoipAccount(3) = {};
    permissions.setModified(false);

    data.voipPool.append({ u"v100"_s, u"p100"_s, 1 });
    data.voipPool.append({ u"v101"_s, u"p101"_s, 4 });
    data.voipPool.append({ QString(), QString(), 0 });
    data.voipPool.append({ u"v101"_s, u"p101b"_s, 0 });
    data.voipPool.append({ u"v102"_s, u"p102"_s, 0 });
    data.voipPool.append({ u"v103"_s, u"p103"_s, 0 });

    FileBoxRights &fileBox = data.fileBox;
    fileBox.addFolder(1, u"share\\docs"_s);
    fileBox.addFolder(2, u"public"_s);
    fileBox.setGroupRight(10, 1, 2);
    fileBox.setGroupRight(50, 2, 1);
    fileBox.setMemberRight(3, 1, 1);
    fileBox.setMemberRight(1, 2, 2);
    fileBox.setModified(false);

    for (qint32 id = 10; id <= 15; ++id)
        data.notices.append(notice(id));
    return data;
}

QStringList documentState(const CVelmarManagerDoc &doc)
{
    QStringList out;
    const Directory *dir = doc.directory();
    for (const bool guest : { false, true }) {
        const MemberListModel *model = dir->members(guest);
        out << u"members guest=%1 rows=%2"_s.arg(guest).arg(model->rowCount());
        for (int row = 0; row < model->memberCount(); ++row)
            out << memberLine(model->member(row))
                    + u" icon=%1"_s.arg(
                        model->index(row, 0).data(MemberListModel::IconIndexRole).toInt());
        const DirectoryTree &tree = dir->treeData(guest);
        out << u"tree guest=%1 groups=%2 memberships=%3"_s.arg(guest)
                   .arg(tree.groupCount())
                   .arg(tree.membershipCount());
        dumpTree(dir->tree(guest), {}, 0, out);
    }
    out << u"created=%1 deleted=%2 (%3) counter=%4"_s.arg(ids(dir->createdMemberIds()),
        ids(dir->deletedMemberIds()), dir->deletedLoginNames().join(u','),
        QString::number(dir->groupCounter()));
    const PositionList &positions = doc.positions()->list();
    for (const Position &position : positions.positions)
        out << u"position %1 %2"_s.arg(position.id).arg(position.name);
    out << u"default position %1"_s.arg(positions.defaultId);
    out << u"permissions modified %1"_s.arg(doc.permissions().isModified());
    for (const auto &[id, token] : doc.permissions().tokens())
        out << u"token %1 %2"_s.arg(id).arg(flagsOf(token));
    for (const auto &[id, account] : doc.permissions().voipAccounts())
        out << u"voip %1 [%2] [%3]"_s.arg(id).arg(account.id, account.password);
    const VoipAccountPool &pool = doc.voipPool();
    for (int i = 0; i < pool.size(); ++i) {
        const VoipAccountPool::Entry &entry = pool.entries().at(i);
        out << u"pool %1 [%2] [%3] held by %4 %5"_s.arg(i)
                   .arg(entry.voipId, entry.voipPassword)
                   .arg(entry.memberId)
                   .arg(entry.isFree() || pool.accountsOf(entry.memberId).contains(i)
                           ? u"indexed"_s
                           : u"NOT INDEXED"_s);
    }
    out << u"pool first free %1"_s.arg(pool.firstFree());
    const FileBoxRights &box = doc.fileBox();
    for (const tagFolderData &f : box.folders())
        out << u"folder %1 %2"_s.arg(f.folderId).arg(f.path);
    for (const tagGroupAuthority &r : box.groupRights())
        out << u"group right %1 %2 %3"_s.arg(r.folderId).arg(r.groupId).arg(r.authority);
    for (const tagUserAuthority &r : box.memberRights())
        out << u"member right %1 %2 %3"_s.arg(r.folderId).arg(r.memberId).arg(r.authority);
    out << u"file box modified %1"_s.arg(box.isModified());
    for (const NoticeRecord &n : doc.notices()->records())
        out << u"notice %1 %2"_s.arg(n.id).arg(n.title);
    for (const NoticeRecord &n : doc.notices()->pendingDeletions())
        out << u"pending %1 %2"_s.arg(n.id).arg(n.title);
    out << u"document modified %1"_s.arg(doc.isModified());
    return out;
}

void checkUndoRedo(CVelmarManagerDoc &doc, const QStringList &before, int steps)
{
    const QStringList after = documentState(doc);
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < steps; ++i)
            doc.undoStack()->undo();
        QCOMPARE(documentState(doc), before);
        for (int i = 0; i < steps; ++i)
            doc.undoStack()->redo();
        QCOMPARE(documentState(doc), after);
    }
}
