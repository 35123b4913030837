#include "DataDoctor.h"

#include "CVelmarManagerDoc.h"
#include "DbConnection.h"
#include "Directory.h"
#include "DirectoryEditor.h"
#include "DirectoryNode.h"
#include "NumberColumns.h"
#include "Recordset.h"
#include "SavePreflight.h"

#include <algorithm>
#include <QHash>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

struct Check
{
    const char16_t *kind;
    const char16_t *title;
    const char16_t *sql; // one row per finding; its columns make the example
    bool repairedBySave;
};

// "Level" is what the memberships make of a member: 3 in both trees, 2 in
// the organisation only, 1 in the guest tree only, none in no group.
const Check checks[] = {
    { u"member-id-shared", u"成员编号重复",
        u"SELECT OMemberID, COUNT(*) FROM Member GROUP BY OMemberID HAVING COUNT(*) > 1", false },
    { u"group-id-shared", u"群组编号重复",
        u"SELECT OGroupID, COUNT(*) FROM [Group] GROUP BY OGroupID HAVING COUNT(*) > 1", false },
    { u"member-flag-stray", u"成员的 IsGuestMember 不是 0, 1 或空",
        u"SELECT OMemberID, IsGuestMember FROM Member WHERE IsGuestMember <> 0 AND IsGuestMember "
        u"<> 1",
        true },
    { u"member-flag-null", u"成员的 IsGuestMember 为空",
        u"SELECT OMemberID FROM Member WHERE IsGuestMember IS NULL", true },
    { u"group-flag-stray", u"群组的 IsGuestGroup 不是 0, 1 或空",
        u"SELECT OGroupID, IsGuestGroup FROM [Group] WHERE IsGuestGroup <> 0 AND IsGuestGroup <> 1",
        false },
    { u"group-flag-null", u"群组的 IsGuestGroup 为空",
        u"SELECT OGroupID FROM [Group] WHERE IsGuestGroup IS NULL", true },
    { u"relation-flag-stray", u"所属关系的 IsGuestRelation 不是 0, 1 或空",
        u"SELECT OMemberID, OGroupID, IsGuestRelation FROM Relation WHERE IsGuestRelation <> 0 AND "
        u"IsGuestRelation <> 1",
        true },
    { u"relation-flag-null", u"所属关系的 IsGuestRelation 为空 (不会被读取)",
        u"SELECT OMemberID, OGroupID FROM Relation WHERE IsGuestRelation IS NULL", false },
    { u"group-parent-missing", u"上级群组不存在 (显示在最上层)",
        u"SELECT g.OGroupID, g.OGroupID_P FROM [Group] g WHERE g.OGroupID_P IS NULL OR "
        u"(g.OGroupID_P <> -1 AND g.OGroupID_P <> -100 AND NOT EXISTS (SELECT 1 FROM [Group] p "
        u"WHERE p.OGroupID = g.OGroupID_P))",
        true },
    { u"relation-member-missing", u"所属关系的成员不存在",
        u"SELECT r.OMemberID, r.OGroupID FROM Relation r WHERE r.OMemberID IS NOT NULL AND NOT "
        u"EXISTS (SELECT 1 FROM Member m WHERE m.OMemberID = r.OMemberID)",
        true },
    { u"relation-group-missing", u"所属关系的群组不存在",
        u"SELECT r.OMemberID, r.OGroupID FROM Relation r WHERE NOT EXISTS (SELECT 1 FROM [Group] g "
        u"WHERE g.OGroupID = r.OGroupID)",
        true },
    { u"relation-duplicate", u"重复的所属关系",
        u"SELECT OMemberID, OGroupID, COUNT(*) FROM Relation WHERE OMemberID IS NOT NULL GROUP BY "
        u"OMemberID, OGroupID, IsGuestRelation HAVING COUNT(*) > 1",
        true },
    { u"accesstoken-member-missing", u"功能权限的成员不存在",
        u"SELECT a.OMemberID FROM AccessToken a WHERE NOT EXISTS (SELECT 1 FROM Member m WHERE "
        u"m.OMemberID = a.OMemberID)",
        false },
    { u"voipinfo-member-missing", u"VoIP 账号的成员不存在",
        u"SELECT v.OMemberID, v.ID FROM VoipInfo v WHERE NOT EXISTS (SELECT 1 FROM Member m WHERE "
        u"m.OMemberID = v.OMemberID)",
        false },
    { u"member-without-accesstoken", u"成员没有功能权限",
        u"SELECT m.OMemberID FROM Member m WHERE NOT EXISTS (SELECT 1 FROM AccessToken a WHERE "
        u"a.OMemberID = m.OMemberID)",
        false },
    { u"member-without-voipinfo", u"成员没有 VoIP 账号",
        u"SELECT m.OMemberID FROM Member m WHERE NOT EXISTS (SELECT 1 FROM VoipInfo v WHERE "
        u"v.OMemberID = m.OMemberID AND v.ID IS NOT NULL AND v.ID <> '')",
        false },
    { u"pool-holder-missing", u"号码池账号的持有成员不存在",
        u"SELECT p.VOIP_ID, p.OMemberID FROM VoipNumberList p WHERE p.OMemberID <> 0 AND NOT "
        u"EXISTS "
        u"(SELECT 1 FROM Member m WHERE m.OMemberID = p.OMemberID)",
        false },
    { u"voip-id-shared", u"同一个 VoIP 号码属于多个成员",
        u"SELECT ID, COUNT(*) FROM VoipInfo WHERE ID IS NOT NULL AND ID <> '' GROUP BY ID HAVING "
        u"COUNT(DISTINCT OMemberID) > 1",
        false },
    { u"voip-id-outside-pool", u"VoIP 号码不在号码池中",
        u"SELECT v.OMemberID, v.ID FROM VoipInfo v WHERE v.ID IS NOT NULL AND v.ID <> '' AND NOT "
        u"EXISTS (SELECT 1 FROM VoipNumberList p WHERE p.VOIP_ID = v.ID)",
        false },
    { u"right-folder-missing", u"文件夹权限的文件夹不存在",
        u"SELECT r.OFolderID, r.OMemberID FROM UserAuthority r WHERE NOT EXISTS (SELECT 1 FROM "
        u"Folder "
        u"f WHERE f.OFolderID = r.OFolderID) UNION ALL SELECT r.OFolderID, r.OGroupID FROM "
        u"GroupAuthority r WHERE NOT EXISTS (SELECT 1 FROM Folder f WHERE f.OFolderID = "
        u"r.OFolderID)",
        false },
    { u"right-group-missing", u"文件夹权限的群组不存在",
        u"SELECT r.OFolderID, r.OGroupID FROM GroupAuthority r WHERE NOT EXISTS (SELECT 1 FROM "
        u"[Group] g WHERE g.OGroupID = r.OGroupID)",
        false },
    { u"right-member-missing", u"文件夹权限的成员不存在",
        u"SELECT r.OFolderID, r.OMemberID FROM UserAuthority r WHERE NOT EXISTS (SELECT 1 FROM "
        u"Member m WHERE m.OMemberID = r.OMemberID)",
        false },
    { u"userid-case-twins", u"用户ID只有大小写不同",
        u"SELECT LOWER(MemberID), COUNT(*) FROM Member GROUP BY LOWER(MemberID) HAVING "
        u"COUNT(DISTINCT MemberID) > 1",
        false },
    { u"member-level-wrong", u"成员的 MemberLevel 与所属关系不符",
        u"SELECT m.OMemberID, m.MemberLevel FROM Member m WHERE COALESCE(m.MemberLevel, 0) <> CASE "
        u"WHEN EXISTS (SELECT 1 FROM Relation r WHERE r.OMemberID = m.OMemberID AND "
        u"r.IsGuestRelation = 0) THEN CASE WHEN EXISTS (SELECT 1 FROM Relation r WHERE r.OMemberID "
        u"= m.OMemberID AND r.IsGuestRelation = 1) THEN 3 ELSE 2 END WHEN EXISTS (SELECT 1 FROM "
        u"Relation r WHERE r.OMemberID = m.OMemberID AND r.IsGuestRelation = 1) THEN 1 ELSE "
        u"COALESCE(m.MemberLevel, 0) END",
        true },
};

void addExample(DataDoctor::Finding &finding, const QString &example)
{
    ++finding.count;
    if (finding.examples.size() < DataDoctor::MaxExamples)
        finding.examples << example;
}

// The character rule of user IDs: digits, ASCII letters, '-' and '_', and
// any character beyond ASCII.
bool passesCharacterRule(QStringView userId)
{
    for (const QChar c : userId) {
        if (c.unicode() >= 0x80 || (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'z')
            || (c >= u'A' && c <= u'Z') || c == u'-' || c == u'_')
            continue;
        return false;
    }
    return true;
}

bool isNumber(const Recordset &set, int column)
{
    try {
        set.intField(column, 0);
        return true;
    } catch (const DbException &) {
        return false;
    }
}

DataDoctor::Finding numberColumnTexts(DbConnection &connection)
{
    DataDoctor::Finding finding { u"number-column-text"_s,
        u"数字列中有文字或超出范围的数 (读取会在此停止)"_s, 0, {}, false };
    for (const NumberColumns::Text &text : NumberColumns::texts(connection)) {
        addExample(
            finding, u"%1.%2 (%3): '%4'"_s.arg(text.table, text.column, text.row, text.value));
    }
    return finding;
}

// Groups whose parent chain runs in a circle (a group its own parent
// included) never reach the top of their tree; the load shows them at the
// top. Walked without recursion: a chain may be as long as the table.
DataDoctor::Finding groupCycles(DbConnection &connection)
{
    DataDoctor::Finding finding { u"group-parent-cycle"_s, u"上级群组形成循环 (显示在最上层)"_s, 0,
        {}, true };
    // Per tree, as the load reads them: guest groups, and the others with a
    // flag of 0 or NULL.
    QHash<qint32, qint32> parents[2];
    Recordset set = connection.execute(u"SELECT OGroupID, OGroupID_P, IsGuestGroup FROM [Group]"_s);
    while (!set.isEOF()) {
        // NULLs and texts are reported as missing parents and number-column texts.
        if (!set.isNull(0) && !set.isNull(1) && isNumber(set, 0) && isNumber(set, 1)
            && (set.isNull(2) || isNumber(set, 2))) {
            const int flag = set.intField(2, 0);
            if (flag == 0 || flag == 1)
                parents[flag].insert(set.intField(0), set.intField(1, 0));
        }
        set.moveNext();
    }
    set.close();
    QList<std::pair<qint32, qint32>> members; // (id, parent) in a cycle
    for (const QHash<qint32, qint32> &tree : parents) {
        enum State : char { OnPath = 1, Done = 2 };
        QHash<qint32, char> state;
        QList<qint32> path;
        for (auto it = tree.cbegin(); it != tree.cend(); ++it) {
            path.clear();
            qint32 id = it.key();
            while (tree.contains(id) && !state.contains(id)) {
                state.insert(id, OnPath);
                path << id;
                id = tree.value(id);
            }
            if (state.value(id) == OnPath) {
                for (qsizetype i = path.indexOf(id); i < path.size(); ++i)
                    members.append({ path.at(i), tree.value(path.at(i)) });
            }
            for (const qint32 walked : std::as_const(path))
                state[walked] = Done;
        }
    }
    std::sort(members.begin(), members.end());
    for (const auto &[id, parent] : std::as_const(members))
        addExample(finding, u"%1/%2"_s.arg(id).arg(parent));
    return finding;
}

} // namespace

QList<DataDoctor::Finding> DataDoctor::examine(DbConnection &connection)
{
    QList<Finding> findings;
    for (const Check &check : checks) {
        Finding finding;
        finding.kind = QString::fromUtf16(check.kind);
        finding.title = QString::fromUtf16(check.title);
        finding.repairedBySave = check.repairedBySave;
        Recordset set = connection.execute(QString::fromUtf16(check.sql));
        while (!set.isEOF()) {
            QStringList cells;
            for (int i = 0; i < set.fieldCount(); ++i)
                cells << (set.isNull(i) ? u"NULL"_s : set.value(i).toString());
            addExample(finding, cells.join(u'/'));
            set.moveNext();
        }
        set.close();
        findings << finding;
    }
    findings << numberColumnTexts(connection) << groupCycles(connection);
    return findings;
}

QList<DataDoctor::Finding> DataDoctor::examine(
    const CVelmarManagerDoc &document, SqlDialect dialect)
{
    Finding userIds { u"userid-characters"_s, u"用户ID含有不允许的字符"_s, 0, {}, false };
    const Directory &directory = *document.directory();
    for (const bool guest : { false, true }) {
        for (const UserInfo &member : directory.members(guest)->members()) {
            if (!passesCharacterRule(member.loginName))
                addExample(userIds, member.loginName);
        }
    }
    Finding texts { u"unsafe-text"_s, u"保存时会被拒绝的文字"_s, 0, {}, false };
    for (const SavePreflight::Problem &problem : SavePreflight::check(document, dialect))
        addExample(texts, problem.item + u": "_s + problem.text);
    return { userIds, texts };
}

int DataDoctor::repair(CVelmarManagerDoc &document)
{
    // The load keeps a membership of a member that is gone (shown by its id)
    // so that the save writes it back: only an edit takes it out.
    int steps = 0;
    Directory &directory = *document.directory();
    for (const bool guest : { false, true }) {
        QList<const DirectoryNode *> orphans;
        std::vector<const DirectoryNode *> pending { directory.treeData(guest).root() };
        while (!pending.empty()) {
            const DirectoryNode *node = pending.back();
            pending.pop_back();
            for (int row = 0; row < node->childCount(); ++row) {
                const DirectoryNode *child = node->child(row);
                if (child->isGroup())
                    pending.push_back(child);
                else if (child->isMembership() && !directory.findMember(child->id()))
                    orphans << child;
            }
        }
        for (const DirectoryNode *node : std::as_const(orphans)) {
            if (document.editor().deleteNode(guest, node).ok())
                ++steps;
        }
    }
    return steps;
}

qint64 DataDoctor::total(const QList<Finding> &findings)
{
    qint64 sum = 0;
    for (const Finding &finding : findings)
        sum += finding.count;
    return sum;
}

QString DataDoctor::describe(const QList<Finding> &findings)
{
    QStringList lines;
    for (const Finding &finding : findings) {
        if (finding.count == 0)
            continue;
        lines << u"%1 [%2]: %3 (%4%5)"_s.arg(finding.title, finding.kind)
                     .arg(finding.count)
                     .arg(finding.examples.join(u", "_s),
                         finding.count > finding.examples.size() ? u", ..."_s : QString());
    }
    return lines.isEmpty() ? u"没有发现问题."_s : lines.join(u'\n');
}

QJsonArray DataDoctor::toJson(const QList<Finding> &findings)
{
    QJsonArray array;
    for (const Finding &finding : findings) {
        array.append(QJsonObject {
            { u"kind"_s, finding.kind },
            { u"title"_s, finding.title },
            { u"count"_s, finding.count },
            { u"examples"_s, QJsonArray::fromStringList(finding.examples) },
            { u"repairedBySave"_s, finding.repairedBySave },
        });
    }
    return array;
}
