#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentFixture.h"
#include "DocumentUndoStack.h"
#include "MemberDragFormat.h"
#include "PositionListModel.h"
#include "ServerDataSet.h"

#include <functional>
#include <memory>
#include <QAbstractItemModelTester>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

using Column = MemberListModel::Column;
using Step = DirectoryEditor::MoveStep;

UserInfo person(qint32 id, const QString &login, const QString &name, bool male)
{
    UserInfo member;
    member.id = id;
    member.loginName = login;
    member.displayName = name;
    member.password = u"pw"_s + QString::number(id);
    member.gender = male ? 1 : 0;
    member.bPublic = 1;
    member.bSolar = 1;
    member.bAdmin = 1;
    member.mobile = u"1390000000"_s + QString::number(id);
    member.birthday = u"1980-01-0"_s + QString::number(id % 9 + 1);
    return member;
}

// Regular members 1 abc (male), 2 bob (female), 7 carol (male, no name), 8 dave
// (male, in no group); guest members 5 guest1 (female), 6 guest2 (male).
//   regular: 10 研发部 { 11 测试组 { 2 }, 1, 7 }, 12 市场部 { 1, 6 }
//   guest:   20 论坛A { 5, 1, 6 }
ServerDataSet sampleSet()
{
    ServerDataSet set;
    DirectoryData &dir = set.directory;
    dir.regularMembers
        = { person(1, u"abc"_s, u"张三"_s, true), person(2, u"bob"_s, u"李梅"_s, false),
              person(7, u"carol"_s, {}, true), person(8, u"dave"_s, u"王五"_s, true) };
    dir.guestMembers
        = { person(5, u"guest1"_s, {}, false), person(6, u"guest2"_s, u"赵六"_s, true) };
    DirectoryTree &tree = dir.regularTree;
    DirectoryNode *g10 = tree.addGroup(tree.root(), 10, u"研发部"_s, 1);
    DirectoryNode *g11 = tree.addGroup(g10, 11, u"测试组"_s, 1);
    tree.addMembership(g11, 2, 2, 1);
    tree.addMembership(g10, 1, 1, 2);
    tree.addMembership(g10, 7, -1, 3);
    DirectoryNode *g12 = tree.addGroup(tree.root(), 12, u"市场部"_s, 2);
    tree.addMembership(g12, 1, 3, 1);
    tree.addMembership(g12, 6, 1, 2);
    DirectoryNode *g20 = dir.guestTree.addGroup(dir.guestTree.root(), 20, u"论坛A"_s, 1);
    for (const qint32 id : { 5, 1, 6 })
        dir.guestTree.addMembership(g20, id, id == 1 ? 2 : 1, 1);
    dir.groupCounter = 20;
    set.positions.positions = { { 1, u"员工"_s }, { 2, u"经理"_s }, { 3, u"总监"_s } };
    set.positions.defaultId = 2;
    set.permissions.addMember(1, u"v100"_s, u"p100"_s);
    for (const qint32 id : { 2, 7, 5 })
        set.permissions.addMember(id, {}, {});
    set.voipPool.append({ u"v100"_s, u"p100"_s, 1 });
    set.voipPool.append({ u"v101"_s, u"p101"_s, 0 });
    set.voipPool.append({ u"v102"_s, u"p102"_s, 0 });
    set.fileBox.addFolder(1, u"\\共享"_s);
    set.fileBox.addFolder(2, u"\\docs"_s);
    for (const auto &[group, folder] : { std::pair { 10, 1 }, { 11, 1 }, { 12, 2 }, { 20, 1 } })
        set.fileBox.setGroupRight(group, folder, 1);
    for (const auto &[member, folder] : { std::pair { 1, 1 }, { 1, 2 }, { 2, 1 }, { 5, 2 } })
        set.fileBox.setMemberRight(member, folder, 2);
    NoticeRecord notice;
    notice.id = 3;
    notice.title = u"通知"_s;
    set.notices = { notice };
    return set;
}

// The document with every view checked by a model tester for as long as it lives.
class Doc
{
public:
    explicit Doc(ServerDataSet set = sampleSet())
    {
        Directory *d = doc.directory();
        for (QAbstractItemModel *model :
            std::initializer_list<QAbstractItemModel *> { d->regularMembers(), d->guestMembers(),
                d->regularTree(), d->guestTree(), doc.positions() })
            testers.push_back(std::make_unique<QAbstractItemModelTester>(
                model, QAbstractItemModelTester::FailureReportingMode::QtTest));
        doc.adopt(std::move(set), CVelmarManagerDoc::LoadState::Complete);
    }

    DirectoryEditor &ed() { return doc.editor(); }
    Directory *dir() const { return doc.directory(); }
    MemberListModel *members(bool guest = false) const { return dir()->members(guest); }
    GroupTreeModel *tree(bool guest = false) const { return dir()->tree(guest); }
    const DirectoryNode *root(bool guest = false) const { return dir()->treeData(guest).root(); }
    const DirectoryNode *group(qint32 id, bool guest = false) const
    {
        return dir()->treeData(guest).findGroup(id);
    }
    const DirectoryNode *membership(qint32 member, qint32 groupId, bool guest = false) const
    {
        return dir()->treeData(guest).findMembership(member, group(groupId, guest), false);
    }
    QModelIndex at(const DirectoryNode *node, bool guest = false) const
    {
        return tree(guest)->indexForNode(node);
    }
    int icon(qint32 id, bool guest = false) const
    {
        const MemberListModel *m = members(guest);
        return m->index(m->rowOfId(id), 0).data(MemberListModel::IconIndexRole).toInt();
    }
    QStringList childLabels(const DirectoryNode *container) const
    {
        QStringList labels;
        for (int row = 0; row < container->childCount(); ++row) {
            const DirectoryNode *child = container->child(row);
            labels << (child->isGroup() ? u"G"_s : u"M"_s) + QString::number(child->id());
        }
        return labels;
    }
    int steps() const { return doc.undoStack()->count(); }

    CVelmarManagerDoc doc;
    std::vector<std::unique_ptr<QAbstractItemModelTester>> testers;
};

// Whether a dataChanged of the spy covered the index for the role (an empty
// role list covers every role).
bool covers(const QSignalSpy &spy, const QModelIndex &index, int role)
{
    for (const QList<QVariant> &args : spy) {
        const auto topLeft = args.at(0).value<QModelIndex>();
        const auto bottomRight = args.at(1).value<QModelIndex>();
        const auto roles = args.at(2).value<QList<int>>();
        if (topLeft.parent() == index.parent() && topLeft.row() <= index.row()
            && index.row() <= bottomRight.row() && topLeft.column() <= index.column()
            && index.column() <= bottomRight.column() && (roles.isEmpty() || roles.contains(role)))
            return true;
    }
    return false;
}

QList<qint32> notices(const QSignalSpy &spy)
{
    QList<qint32> ids;
    for (const QList<QVariant> &args : spy)
        ids << args.at(0).toInt();
    return ids;
}

void refuse(const EditResult &result, const QString &text)
{
    QVERIFY(!result.ok());
    QCOMPARE(result.refusal->text, text);
}

struct Operation
{
    const char *name;
    std::function<bool(Doc &)> run;
};

bool dropOn(GroupTreeModel *tree, QMimeData *data, const QModelIndex &target)
{
    std::unique_ptr<QMimeData> owned(data);
    return owned && tree->dropMimeData(owned.get(), Qt::MoveAction, -1, 0, target);
}

// The operations the random journal walk of the index test does not undo on
// data like this (with permissions, rights and a pool), and every path
// through the generic model API.
// clang-format off
#define OPERATION(name, ...) Operation { name, [](Doc &d) { return bool(__VA_ARGS__); } }
// clang-format on

const QList<Operation> &operations()
{
    static const QList<Operation> ops {
        OPERATION("add member", d.ed().addMember(false, u"newbie"_s).ok()),
        OPERATION("add guest member in the blank row",
            d.members(true)->setData(d.members(true)->index(2, 0), u"访客"_s)),
        OPERATION("edit a name",
            d.members()->setData(d.members()->index(0, Column::DisplayNameColumn), u"李四"_s)),
        OPERATION(
            "edit a gender", d.ed().setMemberCell(false, 1, Column::GenderColumn, u"男生"_s).ok()),
        OPERATION(
            "delete a member with everything of his", d.ed().deleteMembers(false, { 0 }).ok()),
        OPERATION("delete three members", d.members()->removeRows(0, 3)),
        OPERATION("delete a guest member", d.ed().deleteMembers(true, { 1, 0 }).ok()),
        OPERATION("rename a group", d.tree()->setData(d.at(d.group(12)), u"销售部"_s)),
        OPERATION("delete a group with its sub-groups", d.ed().deleteNode(false, d.group(10)).ok()),
        OPERATION("delete two groups", d.tree()->removeRows(0, 2, d.tree()->rootIndex())),
        OPERATION("move a group into another",
            d.tree()->moveRows(d.tree()->rootIndex(), 1, 1, d.at(d.group(11)), 1)),
        OPERATION("move a membership by dropping its node",
            dropOn(d.tree(), d.tree()->mimeData({ d.at(d.membership(1, 12)) }), d.at(d.group(11)))),
        OPERATION("drop grid rows on the guest tree",
            dropOn(d.tree(true),
                d.members()->mimeData({ d.members()->index(3, 0), d.members()->index(1, 2) }),
                d.at(d.group(20, true), true))),
        OPERATION("set several membership positions",
            d.ed()
                .setMembershipPositions(false, { d.membership(1, 10), d.membership(1, 12) }, -1)
                .ok()),
        OPERATION("rename a position",
            d.doc.positions()->setData(d.doc.positions()->index(0), u"职员"_s)),
    };
    return ops;
}
#undef OPERATION

} // namespace

class TestDocument : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void newMemberRefusals_data();
    void newMemberRefusals();
    void newMemberAccepted_data();
    void newMemberAccepted();
    void newMemberIdSkipsMembersDeletedSinceSave();
    void newMemberTakesFreePoolAccount_data();
    void newMemberTakesFreePoolAccount();
    void cellEdits_data();
    void cellEdits();
    void nameEditRepaintsBothTrees();
    void genderEditRepaintsRowIcon();
    void deletingRegularMemberCascades();
    void deletingGuestMemberLeavesRegularTree();
    void groupsAddAndRename();
    void deletingGroupTakesSubtreeAndRights();
    void movesAmongSiblings_data();
    void movesAmongSiblings();
    void movesIntoGroups();
    void placingAndDroppingMembers();
    void brokenMemberDragIsRefusedWhole();
    void membershipPositions();
    void positionList();
    void defaultPositionIsWrittenAtOnce();
    void undoRestoresEverything_data();
    void undoRestoresEverything();
    void modifiedFlagAndJournal();
    void nodeDragsStayInTheirTree();
    void nodesOutsideTheTreeAreRefused();
};

void TestDocument::newMemberRefusals_data()
{
    QTest::addColumn<bool>("guest");
    QTest::addColumn<QString>("userId");
    QTest::addColumn<QString>("text");
    // The rules, their titles and icons are MemberRules' to test; the grid
    // reaches them with both lists.
    QTest::newRow("space") << false << u"ab c"_s
                           << u"用户ID可以用字母数字或符号，但不少于3个字母."_s;
    QTest::newRow("exists in the member list") << true << u"carol"_s << u"用户已存在."_s;
    QTest::newRow("exists in the guest list") << false << u"guest2"_s << u"用户已存在."_s;
}

void TestDocument::newMemberRefusals()
{
    QFETCH(bool, guest);
    QFETCH(QString, userId);
    QFETCH(QString, text);
    Doc d;
    const QStringList before = documentState(d.doc);
    MemberListModel *grid = d.members(guest);
    QVERIFY(!grid->setData(grid->index(grid->blankRow(), 0), userId));
    QVERIFY(grid->lastRefusal());
    QCOMPARE(grid->lastRefusal()->text, text);
    QCOMPARE(documentState(d.doc), before);
    QCOMPARE(d.steps(), 0);
}

void TestDocument::newMemberAccepted_data()
{
    QTest::addColumn<bool>("guest");
    QTest::addColumn<QString>("userId");
    QTest::newRow("chinese") << true << u"中文用户"_s;
    QTest::newRow("case differs from abc") << false << u"Abc"_s;
}

void TestDocument::newMemberAccepted()
{
    QFETCH(bool, guest);
    QFETCH(QString, userId);
    Doc d;
    MemberListModel *grid = d.members(guest);
    const int blank = grid->blankRow();
    QVERIFY(grid->setData(grid->index(blank, 0), userId));
    QVERIFY(grid->index(blank + 1, 0).data(MemberListModel::IsBlankRowRole).toBool());
    const UserInfo &member = grid->member(blank);
    QCOMPARE(member.id, 9);
    QCOMPARE(member.loginName, userId);
    QCOMPARE(member.isGuest, guest ? 1 : 0);
    // The flags as the grid shows them below.
    const QStringList shown { grid->index(blank, Column::GenderColumn).data().toString(),
        grid->index(blank, Column::AdminColumn).data().toString(),
        grid->index(blank, Column::SolarColumn).data().toString(),
        grid->index(blank, Column::PublicColumn).data().toString() };
    QCOMPARE(shown, (QStringList { u"男生"_s, u"是"_s, u"阳历"_s, u"公开"_s }));
    QCOMPARE(grid->index(blank, 0).data(MemberListModel::IconIndexRole).toInt(), 2);
}

void TestDocument::newMemberIdSkipsMembersDeletedSinceSave()
{
    Doc d;
    QVERIFY(d.ed().deleteMembers(false, { 3 }).ok()); // member 8
    QCOMPARE(d.ed().addMember(false, u"erin"_s).id, 9);
    QCOMPARE(d.doc.deletedMemberIds(), QList<qint32> { 8 });
    QCOMPARE(d.doc.createdMemberIds(), QList<qint32> { 9 });
    // After the save the ids deleted before it are free again.
    d.doc.markSaved();
    QVERIFY(d.ed().deleteMembers(false, { 3 }).ok()); // member 9
    QCOMPARE(d.ed().addMember(true, u"fred"_s).id, 8);
    QCOMPARE(d.ed().addMember(true, u"gina"_s).id, 10);
}

void TestDocument::newMemberTakesFreePoolAccount_data()
{
    QTest::addColumn<bool>("poolFull");
    QTest::newRow("free account") << false;
    QTest::newRow("pool exhausted") << true;
}

void TestDocument::newMemberTakesFreePoolAccount()
{
    QFETCH(bool, poolFull);
    ServerDataSet set = sampleSet();
    if (poolFull) {
        set.voipPool.assign(1, 2);
        set.voipPool.assign(2, 7);
    }
    Doc d(std::move(set));
    QCOMPARE(d.ed().addMember(false, u"newbie"_s).id, 9);
    const CAccessToken *token = d.doc.permissions().token(9);
    const VoipAccount *account = d.doc.permissions().voipAccount(9);
    QVERIFY(token && account);
    for (int f = 0; f < CAccessToken::VoipOn; ++f)
        QVERIFY(token->flag(CAccessToken::Feature(f)));
    QCOMPARE(token->flag(CAccessToken::VoipOn), !poolFull);
    QCOMPARE(*account, (poolFull ? VoipAccount {} : VoipAccount { u"v101"_s, u"p101"_s }));
    QCOMPARE(d.doc.voipPool().entries().at(1).memberId, poolFull ? 2 : 9);
    QCOMPARE(d.doc.voipPool().accountsOf(9), poolFull ? QList<int> {} : QList<int> { 1 });
    QVERIFY(d.doc.permissions().isModified());
}

void TestDocument::cellEdits_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QString>("refusal"); // empty: refused without a message
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *name, int column, const QVariant &value, bool accepted,
                         const QString &shown, const QString &refusal = {}) {
        QTest::newRow(name) << column << value << accepted << refusal << shown;
    };
    row("mobile of 14", Column::MobileColumn, u"13900000000123"_s, false, u"13900000001"_s,
        u"已经超过13名."_s);
    row("gender text", Column::GenderColumn, u"女生"_s, true, u"女生"_s);
    row("gender bool", Column::GenderColumn, false, true, u"女生"_s);
    row("gender free text", Column::GenderColumn, u"女"_s, false, u"男生"_s);
    row("admin", Column::AdminColumn, u"否"_s, true, u"否"_s);
    row("solar", Column::SolarColumn, u"阴历"_s, true, u"阴历"_s);
    row("public", Column::PublicColumn, u"保密"_s, true, u"保密"_s);
    row("user id of a member", Column::LoginNameColumn, u"xyz"_s, false, u"abc"_s);
}

void TestDocument::cellEdits()
{
    QFETCH(int, column);
    QFETCH(QVariant, value);
    QFETCH(bool, accepted);
    QFETCH(QString, refusal);
    QFETCH(QString, shown);
    Doc d;
    const QStringList before = documentState(d.doc);
    MemberListModel *grid = d.members();
    const QModelIndex cell = grid->index(0, column);
    QCOMPARE(grid->setData(cell, value), accepted);
    QCOMPARE(cell.data().toString(), shown);
    QCOMPARE(d.steps(), accepted ? 1 : 0);
    if (accepted)
        return;
    QCOMPARE(documentState(d.doc), before);
    QCOMPARE(grid->lastRefusal().has_value(), true);
    QCOMPARE(grid->lastRefusal()->text, refusal);
    if (!refusal.isEmpty()) {
        QCOMPARE(grid->lastRefusal()->column, column);
        QCOMPARE(grid->lastRefusal()->memberId, 1);
    }
}

void TestDocument::nameEditRepaintsBothTrees()
{
    Doc d;
    QSignalSpy regular(d.tree(), &QAbstractItemModel::dataChanged);
    QSignalSpy guest(d.tree(true), &QAbstractItemModel::dataChanged);
    QVERIFY(d.members()->setData(d.members()->index(0, Column::DisplayNameColumn), u"李四"_s));
    for (const QModelIndex &index : { d.at(d.membership(1, 10)), d.at(d.membership(1, 12)),
             d.at(d.membership(1, 20, true), true) }) {
        QVERIFY(covers(index.model() == d.tree() ? regular : guest, index, Qt::DisplayRole));
        QCOMPARE(index.data().toString(), u"李四"_s);
    }
    QVERIFY(!covers(regular, d.at(d.membership(7, 10)), Qt::DisplayRole));
}

void TestDocument::genderEditRepaintsRowIcon()
{
    Doc d;
    QSignalSpy spy(d.members(), &QAbstractItemModel::dataChanged);
    QSignalSpy tree(d.tree(), &QAbstractItemModel::dataChanged);
    QVERIFY(d.ed().setMemberCell(false, 0, Column::GenderColumn, false).ok());
    QVERIFY(covers(spy, d.members()->index(0, 0), MemberListModel::IconIndexRole));
    QVERIFY(covers(tree, d.at(d.membership(1, 12)), GroupTreeModel::MaleRole));
    QCOMPARE(d.icon(1), 1);
    QVERIFY(d.ed().setMemberCell(false, 3, Column::GenderColumn, u"女生"_s).ok());
    QCOMPARE(d.icon(8), 3);
    QVERIFY(!d.at(d.membership(1, 12)).data(GroupTreeModel::MaleRole).toBool());
}

void TestDocument::deletingRegularMemberCascades()
{
    Doc d;
    QSignalSpy unplaced(d.dir(), &Directory::memberUnplaced);
    QVERIFY(!d.members()->removeRows(2, 3)); // would reach the blank row
    QCOMPARE(d.steps(), 0);
    QVERIFY(d.members()->removeRows(0, 1));
    QCOMPARE(d.steps(), 1);
    QCOMPARE(notices(unplaced), QList<qint32>({ 1, 1, 1 }));
    QCOMPARE(d.childLabels(d.group(10)), QStringList({ u"G11"_s, u"M7"_s }));
    QCOMPARE(d.childLabels(d.group(20, true)), QStringList({ u"M5"_s, u"M6"_s }));
    QVERIFY(d.doc.voipPool().entries().at(0).isFree());
    QVERIFY(!d.doc.permissions().token(1) && !d.doc.permissions().voipAccount(1));
    QVERIFY(d.doc.permissions().isModified());
    QCOMPARE(d.doc.fileBox().rightsCountOfMember(1), 0);
    QCOMPARE(d.doc.fileBox().memberRights().size(), 2);
    QCOMPARE(d.doc.deletedMemberIds(), QList<qint32> { 1 });
    QCOMPARE(d.dir()->deletedLoginNames(), QStringList { u"abc"_s });
    // The others keep their icons: bob and carol stay placed, dave stays out.
    QCOMPARE(d.icon(2), 1);
    QCOMPARE(d.icon(7), 0);
    QCOMPARE(d.icon(8), 2);
    QCOMPARE(d.icon(6, true), 0);
    // Deleting several rows keeps the others' ids; the deleted list has each once.
    QVERIFY(d.ed().deleteMembers(false, { 2, 0, 2 }).ok());
    QCOMPARE(d.members()->members().size(), 1);
    QCOMPARE(d.members()->member(0).id, 7);
    QCOMPARE(d.doc.deletedMemberIds(), QList<qint32>({ 1, 8, 2 }));
}

void TestDocument::deletingGuestMemberLeavesRegularTree()
{
    Doc d;
    QSignalSpy unplaced(d.dir(), &Directory::memberUnplaced);
    QVERIFY(d.members(true)->removeRows(1, 1)); // guest2, also in 市场部
    QCOMPARE(notices(unplaced), QList<qint32> { 6 });
    QVERIFY(!d.dir()->treeData(true).hasMembership(6));
    QVERIFY(d.membership(6, 12));
    QCOMPARE(d.doc.deletedMemberIds(), QList<qint32> { 6 });
    QCOMPARE(d.icon(5, true), 1);
}

void TestDocument::groupsAddAndRename()
{
    Doc d;
    EditResult added = d.ed().addGroup(false, d.group(11), u"新 类别"_s);
    QCOMPARE(added.id, 21);
    QCOMPARE(d.dir()->groupCounter(), 21);
    QCOMPARE(d.childLabels(d.group(11)), QStringList({ u"M2"_s, u"G21"_s }));
    QCOMPARE(d.at(d.group(21)).data().toString(), u"新 类别"_s);
    QCOMPARE(d.ed().addGroup(true, d.root(true), u"x"_s).id, 22); // one counter for both trees
    d.doc.undoStack()->undo();
    d.doc.undoStack()->undo();
    QCOMPARE(d.dir()->groupCounter(), 20);
    QCOMPARE(d.ed().addGroup(true, d.root(true), u"y"_s).id, 21);
    QVERIFY(!d.ed().addGroup(false, d.membership(1, 12), u"z"_s).ok());

    const int steps = d.steps();
    QVERIFY(!d.tree()->setData(d.at(d.group(12)), QString()));
    QVERIFY(d.tree()->lastRefusal() && d.tree()->lastRefusal()->text.isEmpty());
    QVERIFY(!d.tree()->setData(d.tree()->rootIndex(), u"根"_s));
    QVERIFY(!d.tree()->setData(d.at(d.membership(1, 12)), u"m"_s));
    QCOMPARE(d.steps(), steps);
    QSignalSpy changed(d.tree(), &QAbstractItemModel::dataChanged);
    QVERIFY(d.tree()->setData(d.at(d.group(12)), u"销售部"_s));
    QVERIFY(covers(changed, d.at(d.group(12)), Qt::DisplayRole));
    QCOMPARE(d.group(12)->name(), u"销售部"_s);
}

void TestDocument::deletingGroupTakesSubtreeAndRights()
{
    Doc d;
    QSignalSpy unplaced(d.dir(), &Directory::memberUnplaced);
    QSignalSpy icons(d.members(), &QAbstractItemModel::dataChanged);
    QVERIFY(!d.ed().deleteNode(false, d.root()).ok());
    QVERIFY(!d.tree()->removeRows(0, 1, {}));
    QVERIFY(d.tree()->removeRows(0, 1, d.tree()->rootIndex()));
    QCOMPARE(d.childLabels(d.root()), QStringList { u"G12"_s });
    QCOMPARE(notices(unplaced), QList<qint32>({ 2, 1, 7 }));
    QList<qint32> groupsWithRights;
    for (const tagGroupAuthority &right : d.doc.fileBox().groupRights())
        groupsWithRights << right.groupId;
    QCOMPARE(groupsWithRights, QList<qint32>({ 12, 20 }));
    QVERIFY(d.doc.fileBox().isModified());
    // Members stay; those left in no group show unplaced.
    QCOMPARE(d.members()->memberCount(), 4);
    QCOMPARE(d.icon(2), 3);
    QCOMPARE(d.icon(7), 2);
    QCOMPARE(d.icon(1), 0);
    QVERIFY(covers(icons, d.members()->index(1, 0), MemberListModel::IconIndexRole));

    // Several rows through the generic API are one step.
    unplaced.clear();
    const QStringList before = documentState(d.doc);
    QVERIFY(d.tree(true)->removeRows(0, 3, d.at(d.group(20, true), true)));
    QCOMPARE(notices(unplaced), QList<qint32>({ 6, 1, 5 }));
    QCOMPARE(d.steps(), 2);
    d.doc.undoStack()->undo();
    QCOMPARE(documentState(d.doc), before);
}

void TestDocument::movesAmongSiblings_data()
{
    QTest::addColumn<qint32>("member"); // 0: group 11
    QTest::addColumn<int>("step");
    QTest::addColumn<bool>("viaModel");
    QTest::addColumn<QStringList>("order"); // empty: refused
    const auto row
        = [](const char *name, qint32 member, Step step, bool viaModel, const QString &order = {}) {
              QTest::newRow(name) << member << int(step) << viaModel
                                  << (order.isEmpty() ? QStringList() : order.split(u' '));
          };
    row("up", 1, Step::Up, false, u"M1 G11 M7"_s);
    row("down, model", 1, Step::Down, true, u"G11 M7 M1"_s);
    row("first, model", 7, Step::First, true, u"M7 G11 M1"_s);
    row("last, model", 0, Step::Last, true, u"M1 M7 G11"_s);
    row("up from the top", 0, Step::Up, false);
    row("first from the top", 0, Step::First, false);
    row("down from the bottom, model", 7, Step::Down, true);
}

void TestDocument::movesAmongSiblings()
{
    QFETCH(qint32, member);
    QFETCH(int, step);
    QFETCH(bool, viaModel);
    QFETCH(QStringList, order);
    Doc d;
    QSignalSpy unplaced(d.dir(), &Directory::memberUnplaced);
    QSignalSpy placed(d.dir(), &Directory::memberPlaced);
    const QStringList before = documentState(d.doc);
    const DirectoryNode *node = member ? d.membership(member, 10) : d.group(11);
    const int row = node->row();
    bool ok;
    QString refusal;
    if (viaModel) {
        const int count = d.group(10)->childCount();
        const int destination = step == int(Step::Up) ? row - 1
            : step == int(Step::Down)                 ? row + 2
            : step == int(Step::First)                ? 0
                                                      : count;
        const QModelIndex parent = d.at(d.group(10));
        ok = d.tree()->moveRows(parent, row, 1, parent, destination);
        refusal = d.tree()->lastRefusal() ? d.tree()->lastRefusal()->text : QString();
    } else {
        const EditResult result = d.ed().moveNode(false, node, Step(step));
        ok = result.ok();
        refusal = ok ? QString() : result.refusal->text;
    }
    QCOMPARE(ok, !order.isEmpty());
    if (order.isEmpty()) {
        QCOMPARE(refusal, u"没有可以移动的位置."_s);
        QCOMPARE(documentState(d.doc), before);
        return;
    }
    QCOMPARE(d.childLabels(d.group(10)), order);
    QCOMPARE(d.group(11)->childCount(), 1); // the subtree went along
    QVERIFY(unplaced.isEmpty() && placed.isEmpty());
}

void TestDocument::movesIntoGroups()
{
    Doc d;
    QSignalSpy unplaced(d.dir(), &Directory::memberUnplaced);
    const QStringList before = documentState(d.doc);
    const QString nowhere = u"不能移动到这里."_s;
    refuse(d.ed().moveNodeInto(false, d.group(10), d.group(11)), nowhere);
    refuse(d.ed().moveNodeInto(false, d.group(10), d.group(10)), nowhere);
    refuse(d.ed().moveNodeInto(false, d.membership(1, 12), d.group(10)), nowhere);
    refuse(d.ed().moveNodeInto(false, d.group(12), d.membership(1, 10)), nowhere);
    QVERIFY(!d.tree()->moveRows(d.tree()->rootIndex(), 0, 1, d.at(d.group(11)), 1));
    QCOMPARE(d.tree()->lastRefusal()->text, nowhere);
    // Hovering refuses what the drop would refuse.
    const std::unique_ptr<QMimeData> group10(d.tree()->mimeData({ d.at(d.group(10)) }));
    const std::unique_ptr<QMimeData> member1(d.tree()->mimeData({ d.at(d.membership(1, 12)) }));
    QVERIFY(!d.tree()->canDropMimeData(group10.get(), Qt::MoveAction, -1, 0, d.at(d.group(11))));
    QVERIFY(!d.tree()->canDropMimeData(member1.get(), Qt::MoveAction, -1, 0, d.at(d.group(10))));
    QVERIFY(!d.tree()->canDropMimeData(
        member1.get(), Qt::MoveAction, -1, 0, d.at(d.membership(7, 10))));
    QVERIFY(!d.tree()->dropMimeData(member1.get(), Qt::MoveAction, -1, 0, d.at(d.group(10))));
    QCOMPARE(documentState(d.doc), before);
    QCOMPARE(d.steps(), 0);

    QVERIFY(d.tree()->canDropMimeData(member1.get(), Qt::CopyAction, -1, 0, d.at(d.group(11))));
    QVERIFY(d.tree()->dropMimeData(member1.get(), Qt::MoveAction, -1, 0, d.at(d.group(11))));
    QCOMPARE(d.childLabels(d.group(11)), QStringList({ u"M2"_s, u"M1"_s }));
    QCOMPARE(d.membership(1, 11)->rankId(), 3); // the node keeps its record
    QVERIFY(d.tree()->moveRows(d.tree()->rootIndex(), 1, 1, d.at(d.group(11)), 2));
    QCOMPARE(d.childLabels(d.group(11)), QStringList({ u"M2"_s, u"M1"_s, u"G12"_s }));
    QCOMPARE(d.childLabels(d.group(12)), QStringList { u"M6"_s });
    QVERIFY(d.ed().moveNodeInto(false, d.membership(7, 10), d.root()).ok());
    QCOMPARE(d.childLabels(d.root()), QStringList({ u"G10"_s, u"M7"_s }));
    QVERIFY(unplaced.isEmpty());
    QCOMPARE(d.icon(7), 0);
    QCOMPARE(d.steps(), 3);
}

void TestDocument::placingAndDroppingMembers()
{
    Doc d;
    QSignalSpy placed(d.dir(), &Directory::memberPlaced);
    QSignalSpy icons(d.members(), &QAbstractItemModel::dataChanged);
    EditResult result = d.ed().placeMembers(false, d.group(12), { 2, 8, 1, 2 });
    QCOMPARE(result.applied, 2);
    QCOMPARE(result.skipped, 2);
    QCOMPARE(d.steps(), 1);
    QCOMPARE(d.childLabels(d.group(12)), QStringList({ u"M1"_s, u"M6"_s, u"M2"_s, u"M8"_s }));
    QCOMPARE(d.membership(8, 12)->rankId(), 2); // the default position
    QCOMPARE(notices(placed), QList<qint32>({ 2, 8 }));
    QCOMPARE(d.icon(8), 0);
    QVERIFY(covers(icons, d.members()->index(3, 0), MemberListModel::IconIndexRole));
    result = d.ed().placeMembers(false, d.group(12), { 1, 8 });
    QVERIFY(result.ok());
    QCOMPARE(result.skipped, 2);
    QCOMPARE(d.steps(), 1);

    // Grid rows travel in row order, whatever order they were selected in.
    placed.clear();
    std::unique_ptr<QMimeData> rows(d.members()->mimeData(
        { d.members()->index(3, 4), d.members()->index(1, 0), d.members()->index(4, 0) }));
    QVERIFY(rows);
    QCOMPARE(*MemberDragFormat::fromMimeData(rows.get()),
        (QList<DraggedMember> { { 2, false }, { 8, true } }));
    const QModelIndex g20 = d.at(d.group(20, true), true);
    QVERIFY(d.tree(true)->canDropMimeData(rows.get(), Qt::CopyAction, -1, 0, g20));
    QVERIFY(!d.tree(true)->canDropMimeData(
        rows.get(), Qt::CopyAction, -1, 0, d.at(d.membership(5, 20, true), true)));
    QVERIFY(d.tree(true)->dropMimeData(rows.get(), Qt::CopyAction, -1, 0, g20));
    QCOMPARE(d.childLabels(d.group(20, true)),
        QStringList({ u"M5"_s, u"M1"_s, u"M6"_s, u"M2"_s, u"M8"_s }));
    QCOMPARE(notices(placed), QList<qint32>({ 2, 8 }));
    QVERIFY(!d.at(d.membership(2, 20, true), true).data(GroupTreeModel::MaleRole).toBool());
    QCOMPARE(d.members()->memberCount(), 4); // the grid rows stay
    QCOMPARE(d.steps(), 2);
}

// Every way a block can break is the drag format's to test; the trees refuse
// a broken one whole, with the designed text.
void TestDocument::brokenMemberDragIsRefusedWhole()
{
    const QByteArray block = MemberDragFormat::encode({ { 8, true }, { 2, false } }).chopped(4);
    Doc d;
    const QStringList before = documentState(d.doc);
    QMimeData data;
    data.setData(MemberDragFormat::mimeType(), block);
    QVERIFY(!d.tree()->dropMimeData(&data, Qt::CopyAction, -1, 0, d.at(d.group(12))));
    QVERIFY(d.tree()->lastRefusal());
    QCOMPARE(d.tree()->lastRefusal()->text, u"拖放的数据不完整."_s);
    refuse(d.ed().dropMembers(false, d.group(12), block), u"拖放的数据不完整."_s);
    QCOMPARE(documentState(d.doc), before);
    QCOMPARE(d.steps(), 0);
}

void TestDocument::membershipPositions()
{
    Doc d;
    QSignalSpy changed(d.tree(), &QAbstractItemModel::dataChanged);
    const QModelIndex m1 = d.at(d.membership(1, 10));
    QCOMPARE(m1.data(GroupTreeModel::RankNameRole).toString(), u"员工"_s);
    QVERIFY(d.ed().setMembershipPosition(false, d.membership(1, 10), -1).ok());
    QCOMPARE(m1.data(GroupTreeModel::RankIdRole).toInt(), -1);
    QCOMPARE(m1.data(GroupTreeModel::RankNameRole).toString(), u"无等级"_s);
    QVERIFY(covers(changed, m1, GroupTreeModel::RankNameRole));
    QVERIFY(!d.ed().setMembershipPosition(false, d.group(10), 1).ok());
    EditResult several = d.ed().setMembershipPositions(
        false, { d.membership(1, 10), d.membership(7, 10), d.membership(1, 12) }, 3);
    QCOMPARE(several.applied, 2); // the one already there is no change
    QCOMPARE(d.steps(), 2);
    QCOMPARE(d.membership(7, 10)->rankId(), 3);
    d.doc.undoStack()->undo();
    QCOMPARE(d.membership(1, 10)->rankId(), -1);
    QCOMPARE(d.membership(7, 10)->rankId(), -1);
    QCOMPARE(d.membership(1, 12)->rankId(), 3);
}

void TestDocument::positionList()
{
    Doc d;
    PositionListModel *positions = d.doc.positions();
    // A membership naming a position not (yet) in the list.
    QVERIFY(d.ed().setMembershipPosition(false, d.membership(7, 10), 4).ok());
    QCOMPARE(d.at(d.membership(7, 10)).data(GroupTreeModel::RankNameRole).toString(), u"无等级"_s);
    QSignalSpy changed(d.tree(), &QAbstractItemModel::dataChanged);
    EditResult added = d.ed().addPosition();
    QCOMPARE(added.id, 4);
    QCOMPARE(positions->index(3).data().toString(), u"新等级"_s);
    QVERIFY(covers(changed, d.at(d.membership(7, 10)), GroupTreeModel::RankNameRole));
    QCOMPARE(d.at(d.membership(7, 10)).data(GroupTreeModel::RankNameRole).toString(), u"新等级"_s);
    QCOMPARE(d.ed().addPosition().id, 5);
    QCOMPARE(positions->index(4).data().toString(), u"新等级 (1)"_s);
    refuse(d.ed().addPosition(u"经理"_s), u"相同的等级已经存在."_s);

    // Renames: onto any name, its own included, refused.
    const int steps = d.steps();
    QVERIFY(!positions->setData(positions->index(0), u"经理"_s));
    QCOMPARE(positions->lastRefusal()->text, u"相同的等级已经存在."_s);
    QVERIFY(positions->lastRefusal()->messageBox);
    QVERIFY(!positions->setData(positions->index(0), u"员工"_s));
    QCOMPARE(positions->lastRefusal()->text, u"相同的等级已经存在."_s);
    QVERIFY(!positions->setData(positions->index(0), QString()));
    QCOMPARE(d.steps(), steps);
    changed.clear();
    QVERIFY(positions->setData(positions->index(0), u"职员"_s));
    QVERIFY(covers(changed, d.at(d.membership(6, 12)), GroupTreeModel::RankNameRole));
    QCOMPARE(d.at(d.membership(6, 12)).data(GroupTreeModel::RankNameRole).toString(), u"职员"_s);

    // Deletion: id 1 never (the default is 2), the last one never.
    const EditResult first = d.ed().deletePosition(0);
    refuse(first, u"不能删除选择的默认的职务."_s);
    QVERIFY(first.refusal->messageBox);
    changed.clear();
    // Its holders move to position 1, as the position grid has always done.
    QCOMPARE(d.ed().deletePosition(2).id, 3);
    QCOMPARE(d.at(d.membership(1, 12)).data(GroupTreeModel::RankNameRole).toString(), u"职员"_s);
    QVERIFY(covers(changed, d.at(d.membership(1, 12)), GroupTreeModel::RankNameRole));
    QVERIFY(d.ed().movePosition(1, 2).ok());
    QCOMPARE(positions->index(3).data(PositionListModel::PositionIdRole).toInt(), 2);
    refuse(d.ed().movePosition(3, 1), u"没有可以移动的位置."_s);

    ServerDataSet set = sampleSet();
    set.positions.positions = { { 3, u"新等级"_s } };
    Doc other(std::move(set));
    refuse(other.ed().deletePosition(0), u"默认的职务至少1个以上."_s);
}

void TestDocument::defaultPositionIsWrittenAtOnce()
{
    Doc d;
    QList<qint32> written;
    bool writable = false;
    d.doc.setDefaultPositionWriter([&](qint32 id) {
        if (writable)
            written << id;
        return writable;
    });
    PositionListModel *positions = d.doc.positions();
    refuse(d.ed().setDefaultPosition(3), u"不能写入 Serverinfo.ini."_s);
    QCOMPARE(positions->list().defaultId, 2);
    QCOMPARE(d.steps(), 0);
    writable = true;
    QVERIFY(d.ed().setDefaultPosition(3).ok());
    QCOMPARE(written, QList<qint32> { 3 });
    QVERIFY(positions->index(2).data(PositionListModel::IsDefaultRole).toBool());
    QVERIFY(!positions->index(1).data(PositionListModel::IsDefaultRole).toBool());
    QVERIFY(d.ed().placeMembers(false, d.group(12), { 8 }).ok());
    QCOMPARE(d.membership(8, 12)->rankId(), 3);
    d.doc.undoStack()->undo();
    d.doc.undoStack()->undo();
    QCOMPARE(written, QList<qint32>({ 3, 2 }));
    QCOMPARE(positions->list().defaultId, 2);
    d.doc.undoStack()->redo();
    QCOMPARE(written, QList<qint32>({ 3, 2, 3 }));
    QVERIFY(!d.ed().setDefaultPosition(99).ok());
    QVERIFY(d.ed().setDefaultPosition(-1).ok());
    QCOMPARE(written.last(), -1);
}

void TestDocument::undoRestoresEverything_data()
{
    QTest::addColumn<int>("operation");
    for (int i = 0; i < operations().size(); ++i)
        QTest::newRow(operations().at(i).name) << i;
}

void TestDocument::undoRestoresEverything()
{
    QFETCH(int, operation);
    Doc d;
    d.doc.setDefaultPositionWriter([](qint32) { return true; });
    const QStringList before = documentState(d.doc);
    QVERIFY(operations().at(operation).run(d));
    QVERIFY(documentState(d.doc) != before);
    QCOMPARE(d.steps(), 1);
    checkUndoRedo(d.doc, before);
}

void TestDocument::modifiedFlagAndJournal()
{
    Doc d;
    QSignalSpy modified(&d.doc, &CVelmarManagerDoc::modifiedChanged);
    const QStringList loaded = documentState(d.doc);
    QVERIFY(d.ed().addMember(false, u"newbie"_s).ok());
    QVERIFY(d.ed().deleteMembers(false, { 0 }).ok());
    QVERIFY(d.ed().addGroup(false, d.root(), u"新 类别"_s).ok());
    QCOMPARE(d.doc.journal(),
        QStringList({ u"添加用户 newbie"_s, u"删除用户 abc"_s, u"添加类别 新 类别"_s }));
    QCOMPARE(modified.size(), 1);
    while (d.doc.undoStack()->canUndo())
        d.doc.undoStack()->undo();
    QVERIFY(!d.doc.isModified());
    QCOMPARE(modified.size(), 2);
    QCOMPARE(documentState(d.doc), loaded);
    QVERIFY(d.doc.journal().isEmpty());
    d.doc.undoStack()->redo();
    d.doc.undoStack()->redo();
    QVERIFY(d.doc.isModified());
    d.doc.markSaved();
    QVERIFY(!d.doc.isModified());
    QVERIFY(d.doc.journal().isEmpty());
    QVERIFY(!d.doc.undoStack()->canUndo());
    QVERIFY(d.doc.createdMemberIds().isEmpty() && d.doc.deletedMemberIds().isEmpty());
    QVERIFY(!d.doc.permissions().isModified() && !d.doc.fileBox().isModified());
}

void TestDocument::nodeDragsStayInTheirTree()
{
    Doc d;
    const QStringList before = documentState(d.doc);
    QVERIFY(!d.tree()->mimeData({ d.tree()->rootIndex() }));
    // A guest-tree node dragged over the organisation tree names nothing there.
    const std::unique_ptr<QMimeData> guest(
        d.tree(true)->mimeData({ d.at(d.membership(5, 20, true), true) }));
    QVERIFY(guest);
    QVERIFY(!d.tree()->canDropMimeData(guest.get(), Qt::MoveAction, -1, 0, d.at(d.group(12))));
    QVERIFY(!d.tree()->dropMimeData(guest.get(), Qt::MoveAction, -1, 0, d.at(d.group(12))));
    QMimeData stale;
    // The regular root's id, row 0 (group 10), a row group 10 does not have;
    // then a block cut short.
    stale.setData(GroupTreeModel::nodeMimeType(), QByteArray::fromHex("ffffffff0000000007000000"));
    QVERIFY(!d.tree()->canDropMimeData(&stale, Qt::MoveAction, -1, 0, d.at(d.group(12))));
    stale.setData(GroupTreeModel::nodeMimeType(), QByteArray::fromHex("ffffffff"));
    QVERIFY(!d.tree()->dropMimeData(&stale, Qt::MoveAction, -1, 0, d.at(d.group(12))));
    QCOMPARE(documentState(d.doc), before);
    QCOMPARE(d.steps(), 0);
    // Its own tree takes it.
    QVERIFY(
        d.tree(true)->dropMimeData(guest.get(), Qt::MoveAction, -1, 0, d.tree(true)->rootIndex()));
    QCOMPARE(d.childLabels(d.root(true)), QStringList({ u"G20"_s, u"M5"_s }));
}

void TestDocument::nodesOutsideTheTreeAreRefused()
{
    Doc d;
    // Views may still hold nodes the last step took out of the tree (the
    // undo stack keeps them), or nodes of the other tree.
    const DirectoryNode *g11 = d.group(11);
    const DirectoryNode *m2 = d.membership(2, 11);
    const DirectoryNode *m5 = d.membership(5, 20, true);
    QVERIFY(d.ed().deleteNode(false, d.group(10)).ok());
    const QStringList before = documentState(d.doc);
    QVERIFY(!d.ed().deleteNode(false, m2).ok());
    QVERIFY(!d.ed().deleteNode(false, m5).ok());
    QVERIFY(!d.ed().deleteChildren(false, g11, 0, 1).ok());
    QVERIFY(!d.ed().moveNode(false, m2, Step::First).ok());
    QVERIFY(!d.ed().moveNodeInto(false, m2, d.group(12)).ok());
    QVERIFY(!d.ed().moveNodeInto(false, d.membership(1, 12), g11).ok());
    QVERIFY(!d.ed().moveNodeInto(false, m5, d.group(12)).ok());
    QVERIFY(!d.ed().setMembershipPosition(false, m2, 3).ok());
    QVERIFY(!d.ed().setMembershipPosition(false, m5, 3).ok());
    QVERIFY(!d.ed().renameGroup(false, g11, u"x"_s).ok());
    QVERIFY(!d.ed().addGroup(false, g11, u"x"_s).ok());
    QVERIFY(!d.ed().addGroup(false, d.group(20, true), u"x"_s).ok());
    QVERIFY(!d.ed().placeMembers(false, g11, { 8 }).ok());
    QVERIFY(!d.ed().placeMembers(true, d.group(12), { 8 }).ok());
    QCOMPARE(documentState(d.doc), before);
    QCOMPARE(d.steps(), 1);
}

QTEST_GUILESS_MAIN(TestDocument)
#include "tst_document.moc"
