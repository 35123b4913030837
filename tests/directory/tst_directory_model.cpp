#include "Directory.h"
#include "DirectoryTree.h"
#include "EscapeMarkers.h"
#include "GroupTreeModel.h"
#include "MemberListModel.h"

#include <limits>
#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

UserInfo member(qint32 id, const QString &login, qint32 gender = 1)
{
    UserInfo info;
    info.id = id;
    info.loginName = login;
    info.password = u"pw"_s;
    info.gender = gender;
    return info;
}

// regular tree: 10 "Sales" { 11 "East" { m1 }, m2 }, 20 "Staff" { m1 }
DirectoryTree sampleTree()
{
    DirectoryTree tree(DirectoryTree::Kind::Regular);
    DirectoryNode *sales = tree.addGroup(tree.root(), 10, u"Sales"_s);
    DirectoryNode *east = tree.addGroup(sales, 11, u"East"_s);
    tree.addMembership(east, 1, -1);
    tree.addMembership(sales, 2, 3);
    DirectoryNode *staff = tree.addGroup(tree.root(), 20, u"Staff"_s);
    tree.addMembership(staff, 1, 4);
    return tree;
}

QStringList shape(const DirectoryTree &tree)
{
    QStringList out;
    std::vector<std::pair<const DirectoryNode *, int>> pending { { tree.root(), 0 } };
    while (!pending.empty()) {
        auto [node, level] = pending.back();
        pending.pop_back();
        if (!node->isRoot())
            out << QString(level * 2, u' ')
                    + (node->isGroup() ? u"G%1 %2"_s.arg(node->id).arg(node->name)
                                       : u"M%1 r%2"_s.arg(node->id).arg(node->rankId));
        for (int row = node->childCount() - 1; row >= 0; --row) {
            // Row and parent links must follow every change of the children.
            if (node->child(row)->row() != row || node->child(row)->parent() != node)
                out << u"broken link at row %1 of %2"_s.arg(row).arg(node->id);
            pending.emplace_back(node->child(row), level + 1);
        }
    }
    return out;
}

} // namespace

class TestDirectoryModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void escapeMarkers_data();
    void escapeMarkers();

    void treeRefusesSecondMembershipUnderSameGroup();
    void treeMoveKeepsRecordsAndRefusesCycles();
    void treeCopyIsDeepAndIndexed();
    void treeFindMembershipIsDepthFirstInOrder();
    void treeSortsMembershipsByStoredOrder();

    void groupModelStructure();
    void groupModelEditing();
    void groupModelLabels();

    void memberModel();
    void memberModelChoiceColumns();

    void directoryMemberIds();
    void directoryGroupCounter();
    void directoryRemoveMember();
    void directoryRemoveGroupUnplacesMembers();
};

void TestDirectoryModel::escapeMarkers_data()
{
    QTest::addColumn<QString>("plain");
    QTest::addColumn<QString>("stored");
    QTest::newRow("none") << u"Anna"_s << u"Anna"_s;
    QTest::newRow("quote") << u"O'Neil"_s << u"O###VELMAR-QUOTATION###Neil"_s;
    QTest::newRow("all three")
        << u"a;b'c\\d"_s
        << u"a###VELMAR-SEMICOLON###b###VELMAR-QUOTATION###c###VELMAR-BACKSLASH###d"_s;
    QTest::newRow("percent and chinese") << u"百分之%d;"_s << u"百分之%d###VELMAR-SEMICOLON###"_s;
}

void TestDirectoryModel::escapeMarkers()
{
    QFETCH(QString, plain);
    QFETCH(QString, stored);
    QCOMPARE(EscapeMarkers::escape(plain), stored);
    QCOMPARE(EscapeMarkers::unescape(stored), plain);
}

void TestDirectoryModel::treeRefusesSecondMembershipUnderSameGroup()
{
    DirectoryTree tree = sampleTree();
    DirectoryNode *sales = tree.findGroup(10);
    QVERIFY(!tree.addMembership(sales, 2, 9));
    QCOMPARE(tree.membershipCount(), 3);
    // The same member under another group is fine, and so is a re-add after removal.
    QVERIFY(tree.addMembership(tree.findGroup(11), 2, 9));
    DirectoryNode *m2 = tree.findMembership(2, sales, false);
    QVERIFY(m2);
    QVERIFY(tree.take(m2));
    QVERIFY(tree.addMembership(sales, 2, 5));
    QCOMPARE(tree.membershipCount(), 4);
    // No membership directly under a membership.
    QVERIFY(!tree.addMembership(m2 = tree.findMembership(1), 7, 1));
    QVERIFY(!tree.addGroup(m2, 99, u"x"_s));
}

void TestDirectoryModel::treeMoveKeepsRecordsAndRefusesCycles()
{
    DirectoryTree tree = sampleTree();
    DirectoryNode *sales = tree.findGroup(10);
    DirectoryNode *east = tree.findGroup(11);
    DirectoryNode *staff = tree.findGroup(20);
    QVERIFY(!tree.move(sales, east)); // into its own subtree
    QVERIFY(!tree.move(tree.root(), staff));
    // m1 already stands directly under Staff.
    QVERIFY(!tree.move(tree.findMembership(1, east, false), staff));
    QVERIFY(tree.move(sales, staff, 0));
    QCOMPARE(shape(tree),
        QStringList({ u"  G20 Staff"_s, u"    G10 Sales"_s, u"      G11 East"_s,
            u"        M1 r-1"_s, u"      M2 r3"_s, u"    M1 r4"_s }));
    QCOMPARE(tree.findGroup(11), east);
    QCOMPARE(DirectoryTree::depth(east), 3);
    // Within the same parent: the row counts after the node is taken out.
    QVERIFY(tree.move(sales, staff, -1));
    QCOMPARE(staff->child(1), sales);
    QCOMPARE(tree.membershipCount(), 3);
}

void TestDirectoryModel::treeCopyIsDeepAndIndexed()
{
    const DirectoryTree original = sampleTree();
    DirectoryTree copy = original;
    QCOMPARE(shape(copy), shape(original));
    QVERIFY(copy.findGroup(11) != original.findGroup(11));
    QCOMPARE(copy.findGroup(11)->name, u"East"_s);
    QCOMPARE(copy.groupIdsInIndexOrder(), QList<qint32>({ 10, 11, 20 }));
    QVERIFY(!copy.addMembership(copy.findGroup(20), 1, 0));
    copy.take(copy.findGroup(10));
    QVERIFY(!copy.findGroup(11));
    QCOMPARE(copy.membershipCount(), 1);
    QVERIFY(original.findGroup(11));

    DirectoryTree moved = std::move(copy);
    QCOMPARE(moved.groupCount(), 1);
    QCOMPARE(copy.groupCount(), 0); // NOLINT: a moved-from tree is empty and usable
    QVERIFY(copy.addGroup(copy.root(), 5, u"again"_s));
    QCOMPARE(copy.root()->id, -1);
}

void TestDirectoryModel::treeFindMembershipIsDepthFirstInOrder()
{
    DirectoryTree tree = sampleTree();
    // m1 under East (inside Sales) is met before m1 directly under Staff.
    QCOMPARE(tree.findMembership(1)->parent()->id, 11);
    QVERIFY(!tree.findMembership(1, tree.findGroup(10), false));
    QCOMPARE(tree.findMembership(1, tree.findGroup(10), true)->parent()->id, 11);
    QVERIFY(!tree.findMembership(42));
}

void TestDirectoryModel::treeSortsMembershipsByStoredOrder()
{
    DirectoryTree tree(DirectoryTree::Kind::Guest);
    QCOMPARE(tree.rootId(), -100);
    DirectoryNode *group = tree.addGroup(tree.root(), 1, u"g"_s);
    tree.addMembership(group, 7, 0, 5);
    tree.addMembership(group, 8, 0, 2);
    tree.addGroup(group, 2, u"sub"_s);
    tree.addMembership(group, 9, 0, 2);
    tree.sortMembershipsByPosition(group);
    QStringList order;
    for (int row = 0; row < group->childCount(); ++row)
        order << QString::number(group->child(row)->id);
    QCOMPARE(order, QStringList({ u"2"_s, u"8"_s, u"9"_s, u"7"_s }));
}

void TestDirectoryModel::groupModelStructure()
{
    GroupTreeModel model(DirectoryTree::Kind::Regular);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setTree(sampleTree());
    QCOMPARE(model.rowCount(), 1);
    const QModelIndex root = model.rootIndex();
    QCOMPARE(root.data().toString(), u"类别"_s);
    QCOMPARE(model.rowCount(root), 2);
    const QModelIndex east = model.findGroup(11);
    QCOMPARE(east.data().toString(), u"East"_s);
    QCOMPARE(east.parent(), model.findGroup(10));
    QCOMPARE(model.findGroup(-1), root);
    QCOMPARE(east.data(GroupTreeModel::GroupIdRole).toInt(), 11);
    const QModelIndex m1 = model.findMembership(1);
    QCOMPARE(m1.parent(), east);
    QCOMPARE(m1.data(GroupTreeModel::MemberIdRole).toInt(), 1);
    QCOMPARE(m1.data(GroupTreeModel::RankIdRole).toInt(), -1);
    QVERIFY(!(model.flags(root) & Qt::ItemIsEditable));
    QVERIFY(model.flags(east) & Qt::ItemIsEditable);
    QVERIFY(!(model.flags(m1) & Qt::ItemIsEditable));

    GroupTreeModel guest(DirectoryTree::Kind::Guest);
    QCOMPARE(guest.rootIndex().data().toString(), u"论坛结构"_s);
    QCOMPARE(guest.findGroup(-100), guest.rootIndex());
}

void TestDirectoryModel::groupModelEditing()
{
    GroupTreeModel model(DirectoryTree::Kind::Regular);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setTree(sampleTree());

    const QModelIndex added = model.addGroup(model.findGroup(20), 30, u"New"_s);
    QVERIFY(added.isValid());
    QCOMPARE(model.tree().findGroup(30)->parent()->id, 20);
    QVERIFY(!model.addGroup(model.findMembership(2), 31, u"x"_s).isValid());

    QVERIFY(model.addMembership(added, 2, 1).isValid());
    QVERIFY(!model.addMembership(added, 2, 1).isValid());
    QVERIFY(model.addMembership(added, 5, -1, 0, 0).isValid()); // inserted first
    QCOMPARE(model.index(0, 0, model.findGroup(30)).data(GroupTreeModel::MemberIdRole).toInt(), 5);

    // Moves among siblings and under another group, checked by the tester.
    const QModelIndex staff = model.findGroup(20);
    QVERIFY(model.moveBy(model.findGroup(10), +1));
    QCOMPARE(model.findGroup(10).row(), 1);
    QVERIFY(!model.moveBy(model.findGroup(10), +1));
    QVERIFY(model.moveToFirst(model.findGroup(10)));
    QCOMPARE(model.findGroup(10).row(), 0);
    QVERIFY(model.moveToLast(model.findMembership(1, staff, false)));
    QVERIFY(model.moveNode(model.findGroup(11), staff, 0));
    QCOMPARE(model.findGroup(11).parent(), model.findGroup(20));
    QVERIFY(!model.moveNode(model.findGroup(20), model.findGroup(11)));
    QVERIFY(!model.moveNode(model.rootIndex(), staff));

    QVERIFY(model.setRankId(model.findMembership(2), 7));
    QCOMPARE(model.findMembership(2).data(GroupTreeModel::RankIdRole).toInt(), 7);
    QVERIFY(!model.setRankId(staff, 7));
    QVERIFY(model.setData(staff, u"Personnel"_s));
    QCOMPARE(model.tree().findGroup(20)->name, u"Personnel"_s);
    QVERIFY(!model.setData(staff, QString()));
    QVERIFY(!model.setData(model.rootIndex(), u"x"_s));

    // Removing a group takes its sub-groups and memberships, in tree order.
    QList<qint32> removed;
    QVERIFY(model.removeNode(model.findGroup(20), &removed));
    QCOMPARE(removed, QList<qint32>({ 1, 5, 2, 1 }));
    QVERIFY(!model.findGroup(11).isValid());
    QVERIFY(!model.findGroup(30).isValid());
    QCOMPARE(model.tree().membershipCount(), 1);
    QVERIFY(!model.removeNode(model.rootIndex()));
    QCOMPARE(model.removeMembershipsOf(2), 1);
    QCOMPARE(model.tree().membershipCount(), 0);
}

void TestDirectoryModel::groupModelLabels()
{
    MemberIndex index;
    index.insert(1, member(1, u"anna"_s, 0));
    GroupTreeModel model(DirectoryTree::Kind::Regular);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setTree(sampleTree());
    model.setMemberIndex(&index);
    QCOMPARE(model.findMembership(1).data().toString(), u"anna"_s);
    QCOMPARE(model.findMembership(1).data(GroupTreeModel::MaleRole).toBool(), false);
    // A membership naming a member the directory does not know shows its id.
    QCOMPARE(model.findMembership(2).data().toString(), u"2"_s);
}

void TestDirectoryModel::memberModel()
{
    MemberListModel model(false);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    UserInfo anna = member(1, u"anna"_s);
    anna.nickname = u"it's me"_s;
    anna.officePhone = u"110"_s;
    anna.homePhone = u"220"_s;
    anna.isGuest = 1; // the list decides
    model.setMembers({ anna, member(2, u"bert"_s), member(1, u"anna2"_s) });
    QCOMPARE(model.rowCount(), 3);
    QCOMPARE(model.columnCount(), 15);
    QCOMPARE(model.member(0).isGuest, 0);
    QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), u"用户ID"_s);
    QCOMPARE(model.headerData(8, Qt::Horizontal).toString(), u"办公电话"_s);
    QCOMPARE(model.headerData(10, Qt::Horizontal).toString(), u"电话号码"_s);
    QCOMPARE(model.headerData(14, Qt::Horizontal).toString(), u"公开信息"_s);
    QCOMPARE(model.index(0, MemberListModel::NicknameColumn).data().toString(), u"it's me"_s);
    QCOMPARE(model.index(0, MemberListModel::OfficePhoneColumn).data().toString(), u"110"_s);
    QCOMPARE(model.index(0, MemberListModel::HomePhoneColumn).data().toString(), u"220"_s);
    QCOMPARE(model.index(1, 0).data(MemberListModel::MemberIdRole).toInt(), 2);
    QCOMPARE(model.index(0, 3).data(MemberListModel::UserInfoRole).value<UserInfo>().nickname,
        u"it's me"_s);

    // The first row of a doubled id; lookups follow removals and appends.
    QCOMPARE(model.rowOfId(1), 0);
    QCOMPARE(model.rowOfLoginName(u"bert"_s), 1);
    QVERIFY(model.removeRows(0, 1));
    QCOMPARE(model.rowOfId(1), 1);
    QCOMPARE(model.appendMember(member(9, u"zed"_s)), 2);
    QCOMPARE(model.rowOfId(9), 2);
    QCOMPARE(model.maxId(), 9);

    QVERIFY(!(model.flags(model.index(0, 0)) & Qt::ItemIsEditable));
    QVERIFY(!model.setData(model.index(0, 0), u"renamed"_s));
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    QVERIFY(model.setData(model.index(0, MemberListModel::EmailColumn), u"b@x.cn"_s));
    QCOMPARE(model.member(0).email, u"b@x.cn"_s);
    QCOMPARE(changed.count(), 1);
}

void TestDirectoryModel::memberModelChoiceColumns()
{
    MemberListModel model(true);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    UserInfo info = member(1, u"anna"_s, 2); // any non-zero gender is male
    info.bPublic = 1;
    info.bSolar = 0;
    info.bAdmin = 1;
    model.setMembers({ info });
    QCOMPARE(model.member(0).isGuest, 1);
    QCOMPARE(model.index(0, MemberListModel::GenderColumn).data().toString(), u"男生"_s);
    QCOMPARE(model.index(0, MemberListModel::AdminColumn).data().toString(), u"是"_s);
    QCOMPARE(model.index(0, MemberListModel::SolarColumn).data().toString(), u"阴历"_s);
    QCOMPARE(model.index(0, MemberListModel::PublicColumn).data().toString(), u"公开"_s);
    QCOMPARE(model.index(0, MemberListModel::GenderColumn).data(Qt::EditRole).toBool(), true);

    // Setting the meaning a stored 2 already has keeps the stored value.
    QVERIFY(model.setData(model.index(0, MemberListModel::GenderColumn), u"男生"_s));
    QCOMPARE(model.member(0).gender, 2);
    QVERIFY(model.setData(model.index(0, MemberListModel::GenderColumn), u"女生"_s));
    QCOMPARE(model.member(0).gender, 0);
    QVERIFY(model.setData(model.index(0, MemberListModel::SolarColumn), true));
    QCOMPARE(model.member(0).bSolar, 1);
    QVERIFY(!model.setData(model.index(0, MemberListModel::PublicColumn), u"maybe"_s));
    QCOMPARE(model.member(0).bPublic, 1);
}

void TestDirectoryModel::directoryMemberIds()
{
    Directory directory;
    DirectoryData data;
    data.regularMembers = { member(1, u"a"_s), member(2, u"b"_s) };
    data.guestMembers = { member(7, u"g"_s), member(8, u"h"_s) };
    for (const auto &list : { data.regularMembers, data.guestMembers })
        for (const UserInfo &info : list)
            data.memberIndex.insert(info.id, info);
    directory.adopt(data);
    QCOMPARE(directory.nextMemberId(), 9);

    // Member 8 deleted since the last save: its id is not given out again.
    directory.removeMember(true, 1);
    QCOMPARE(directory.deletedMemberIds(), QList<qint32>({ 8 }));
    QCOMPARE(directory.deletedLoginNames(), QStringList({ u"h"_s }));
    QVERIFY(!directory.findMember(8));
    QCOMPARE(directory.nextMemberId(), 9);
    QCOMPARE(directory.addMember(false, member(-1, u"new"_s)), 9);
    QCOMPARE(directory.createdMemberIds(), QList<qint32>({ 9 }));
    QCOMPARE(directory.findMember(9)->loginName, u"new"_s);
    QCOMPARE(directory.regularMembers()->rowOfId(9), 2);

    // Edits reach the member index.
    QVERIFY(directory.regularMembers()->setData(
        directory.regularMembers()->index(0, MemberListModel::DisplayNameColumn), u"Anna"_s));
    QCOMPARE(directory.findMember(1)->displayName, u"Anna"_s);

    directory.markSaved();
    QVERIFY(directory.deletedMemberIds().isEmpty());
    QVERIFY(directory.createdMemberIds().isEmpty());
    QCOMPARE(directory.nextMemberId(), 10);
}

void TestDirectoryModel::directoryGroupCounter()
{
    Directory directory;
    QCOMPARE(directory.nextGroupId(), 1);
    DirectoryData data;
    data.regularTree = sampleTree();
    data.groupCounter = 20;
    directory.adopt(std::move(data));
    QSignalSpy edited(&directory, &Directory::edited);
    const QModelIndex added
        = directory.addGroup(true, directory.guestTree()->rootIndex(), u"新 类别"_s);
    QCOMPARE(added.data(GroupTreeModel::GroupIdRole).toInt(), 21);
    QCOMPARE(directory.groupCounter(), 21);
    QVERIFY(edited.count() >= 1);
    // Removing the group does not give its id back.
    QVERIFY(directory.removeNode(true, added));
    QCOMPARE(directory.nextGroupId(), 22);

    DirectoryData full;
    full.groupCounter = std::numeric_limits<qint32>::max();
    directory.adopt(std::move(full));
    QCOMPARE(directory.nextGroupId(), -2);
    QVERIFY(!directory.addGroup(false, directory.regularTree()->rootIndex(), u"x"_s).isValid());
}

void TestDirectoryModel::directoryRemoveMember()
{
    Directory directory;
    DirectoryData data;
    data.regularMembers = { member(1, u"a"_s), member(2, u"b"_s) };
    data.guestMembers = { member(3, u"g"_s) };
    data.regularTree = sampleTree();
    DirectoryNode *guestGroup = data.guestTree.addGroup(data.guestTree.root(), 50, u"Forum"_s);
    data.guestTree.addMembership(guestGroup, 1, -1);
    data.guestTree.addMembership(guestGroup, 3, -1);
    directory.adopt(std::move(data));
    QAbstractItemModelTester t1(
        directory.regularTree(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    QAbstractItemModelTester t2(
        directory.guestTree(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy unplaced(&directory, &Directory::memberUnplaced);

    // A regular member leaves both trees.
    directory.removeMember(false, 0);
    QCOMPARE(unplaced.count(), 3);
    QVERIFY(!directory.regularTree()->tree().hasMembership(1));
    QVERIFY(!directory.guestTree()->tree().hasMembership(1));
    QCOMPARE(directory.regularTree()->tree().membershipCount(), 1);

    // A guest member leaves the guest tree only.
    directory.regularTree()->addMembership(directory.regularTree()->findGroup(20), 3, -1);
    directory.removeMember(true, 0);
    QVERIFY(!directory.guestTree()->tree().hasMembership(3));
    QVERIFY(directory.regularTree()->tree().hasMembership(3));
    QCOMPARE(directory.deletedMemberIds(), QList<qint32>({ 1, 3 }));
}

void TestDirectoryModel::directoryRemoveGroupUnplacesMembers()
{
    Directory directory;
    DirectoryData data;
    data.regularMembers = { member(1, u"a"_s), member(2, u"b"_s) };
    data.regularTree = sampleTree();
    directory.adopt(std::move(data));
    QSignalSpy placed(&directory, &Directory::memberPlaced);
    QSignalSpy unplaced(&directory, &Directory::memberUnplaced);
    QVERIFY(
        !directory.addMembership(false, directory.regularTree()->findGroup(10), 2, 1).isValid());
    QCOMPARE(placed.count(), 0);
    QVERIFY(directory.addMembership(false, directory.regularTree()->findGroup(11), 2, 1).isValid());
    QCOMPARE(placed.count(), 1);
    QVERIFY(directory.removeNode(false, directory.regularTree()->findGroup(10)));
    QList<qint32> ids;
    for (const auto &args : std::as_const(unplaced))
        ids << args.at(0).toInt();
    QCOMPARE(ids, QList<qint32>({ 1, 2, 2 }));
    // Members stay in their list when their groups go.
    QCOMPARE(directory.regularMembers()->rowCount(), 2);
}

QTEST_GUILESS_MAIN(TestDirectoryModel)
#include "tst_directory_model.moc"
