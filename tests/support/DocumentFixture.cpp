#include "DocumentFixture.h"

#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "NoticeListModel.h"
#include "PositionListModel.h"

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

void dumpTree(const DirectoryNode *node, const QString &tree, QStringList &out)
{
    for (int row = 0; row < node->childCount(); ++row) {
        const DirectoryNode *child = node->child(row);
        if (child->isGroup()) {
            out << u"%1 group %2 %3 under %4"_s.arg(tree)
                       .arg(child->id())
                       .arg(child->name())
                       .arg(node->id());
            dumpTree(child, tree, out);
        } else {
            out << u"%1 membership %2 in %3 rank %4"_s.arg(tree)
                       .arg(child->id())
                       .arg(node->id())
                       .arg(child->rankId());
        }
    }
}

QString noticeLine(const QString &kind, const NoticeRecord &n)
{
    return u"%1 %2 %3"_s.arg(kind).arg(n.id).arg(n.title);
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
    const Directory &directory = *doc.directory();
    for (const bool guest : { false, true }) {
        const MemberRows &rows = directory.memberRows(guest);
        for (int row = 0; row < rows.count(); ++row) {
            const UserInfo &m = rows.at(row);
            out << u"%1 member %2 %3 %4"_s.arg(guest ? u"guest"_s : u"regular"_s)
                       .arg(m.id)
                       .arg(m.loginName, m.displayName);
        }
        dumpTree(directory.treeData(guest).root(), guest ? u"guest"_s : u"regular"_s, out);
    }
    out << u"default position %1"_s.arg(doc.positions()->list().defaultId);
    for (const auto &[id, token] : doc.permissions().tokens())
        out << u"token %1 %2"_s.arg(id).arg(flagsOf(token));
    for (const auto &[id, account] : doc.permissions().voipAccounts())
        out << u"voip %1 [%2] [%3]"_s.arg(id).arg(account.id, account.password);
    out << u"permissions modified %1"_s.arg(doc.permissions().isModified());
    const QList<VoipAccountPool::Entry> &pool = doc.voipPool().entries();
    for (qsizetype i = 0; i < pool.size(); ++i)
        out << u"pool %1 [%2] [%3] held by %4"_s.arg(i)
                   .arg(pool.at(i).voipId, pool.at(i).voipPassword)
                   .arg(pool.at(i).memberId);
    for (const tagFolderData &f : doc.fileBox().folders())
        out << u"folder %1 %2"_s.arg(f.folderId).arg(f.path);
    for (const tagGroupAuthority &r : doc.fileBox().groupRights())
        out << u"group right %1 %2 %3"_s.arg(r.folderId).arg(r.groupId).arg(r.authority);
    for (const tagUserAuthority &r : doc.fileBox().memberRights())
        out << u"member right %1 %2 %3"_s.arg(r.folderId).arg(r.memberId).arg(r.authority);
    out << u"file box modified %1"_s.arg(doc.fileBox().isModified());
    for (const NoticeRecord &n : doc.notices()->records())
        out << noticeLine(u"notice"_s, n);
    for (const NoticeRecord &n : doc.notices()->pendingDeletions())
        out << noticeLine(u"pending"_s, n);
    out << u"document modified %1"_s.arg(doc.isModified());
    return out;
}
