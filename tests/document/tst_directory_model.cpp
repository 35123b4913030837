#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DirectoryTree.h"
#include "DocumentUndoStack.h"
#include "EscapeMarkers.h"
#include "GroupTreeModel.h"
#include "MemberListModel.h"
#include "ServerDataSet.h"

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
                    + (node->isGroup() ? u"G%1 %2"_s.arg(node->id()).arg(node->name())
                                       : u"M%1 r%2"_s.arg(node->id()).arg(node->rankId()));
        for (int row = node->childCount() - 1; row >= 0; --row) {
            // Row and parent links must follow every change of the children.
            if (node->child(row)->row() != row || node->child(row)->parent() != node)
                out << u"broken link at row %1 of %2"_s.arg(row).arg(node->id());
            pending.emplace_back(node->child(row), level + 1);
        }
    }
    return out;
}

void load(CVelmarManagerDoc &document, MemberList regular, DirectoryTree tree = DirectoryTree())
{
    ServerDataSet set;
    set.directory.regularMembers = std::move(regular);
    set.directory.regularTree = std::move(tree);
    set.positions.positions = { { 1, u"Staff"_s } };
    document.adopt(std::move(set), CVelmarManagerDoc::LoadState::Complete);
}

} // namespace

class TestDirectoryModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void escapeMarkers_data();
    void escapeMarkers();

    void treeRefusesMembershipBelowMembership();
    void treeMoveKeepsRecordsAndRefusesCycles();
    void treeCopyIsDeepAndIndexed();
    void treeSortsMembershipsByStoredOrder();

    void groupModelStructure();

    void memberModel();
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

void TestDirectoryModel::treeRefusesMembershipBelowMembership()
{
    // At most one membership of a member per group is checked against every
    // index after each random edit (tst_directory_index).
    DirectoryTree tree = sampleTree();
    DirectoryNode *m1 = tree.findMembership(1);
    QVERIFY(!tree.addMembership(m1, 7, 1));
    QVERIFY(!tree.addGroup(m1, 99, u"x"_s));
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
    QCOMPARE(DirectoryTree::depth(east), 3);
    // Within the same parent: the row counts after the node is taken out.
    QVERIFY(tree.move(sales, staff, -1));
    QCOMPARE(staff->child(1), sales);
}

void TestDirectoryModel::treeCopyIsDeepAndIndexed()
{
    const DirectoryTree original = sampleTree();
    DirectoryTree copy = original;
    QCOMPARE(shape(copy), shape(original));
    // The copy's indexes are checked after random edits in tst_directory_index.
    QVERIFY(copy.findGroup(11) != original.findGroup(11));
    QCOMPARE(copy.groupIdsInIndexOrder(), QList<qint32>({ 10, 11, 20 }));
    copy.take(copy.findGroup(10));
    QVERIFY(original.findGroup(11));

    DirectoryTree moved = std::move(copy);
    QCOMPARE(moved.groupCount(), 1);
    QCOMPARE(copy.groupCount(), 0); // NOLINT: a moved-from tree is empty and usable
    QVERIFY(copy.addGroup(copy.root(), 5, u"again"_s));
    QCOMPARE(copy.root()->id(), -1);
}

void TestDirectoryModel::treeSortsMembershipsByStoredOrder()
{
    DirectoryTree tree(DirectoryTree::Kind::Guest);
    DirectoryNode *group = tree.addGroup(tree.root(), 1, u"g"_s);
    tree.addMembership(group, 7, 0, 5);
    tree.addMembership(group, 8, 0, 2);
    tree.addGroup(group, 2, u"sub"_s);
    tree.addMembership(group, 9, 0, 2);
    tree.sortMembershipsByPosition(group);
    QStringList order;
    for (int row = 0; row < group->childCount(); ++row)
        order << QString::number(group->child(row)->id());
    QCOMPARE(order, QStringList({ u"2"_s, u"8"_s, u"9"_s, u"7"_s }));
}

void TestDirectoryModel::groupModelStructure()
{
    CVelmarManagerDoc document;
    load(document, { member(1, u"anna"_s, 0) }, sampleTree());
    GroupTreeModel &model = *document.directory()->regularTree();
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
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
    // Labels: the member's user ID while it has no name; a membership naming
    // a member the directory does not know shows its id.
    QCOMPARE(m1.data().toString(), u"anna"_s);
    QCOMPARE(m1.data(GroupTreeModel::MaleRole).toBool(), false);
    QCOMPARE(model.findMembership(2).data().toString(), u"2"_s);

    const GroupTreeModel &guest = *document.directory()->guestTree();
    QCOMPARE(guest.rootIndex().data().toString(), u"论坛结构"_s);
    QCOMPARE(guest.findGroup(-100), guest.rootIndex());
}

void TestDirectoryModel::memberModel()
{
    CVelmarManagerDoc document;
    UserInfo anna = member(1, u"anna"_s);
    anna.nickname = u"it's me"_s;
    anna.officePhone = u"110"_s;
    anna.homePhone = u"220"_s;
    anna.isGuest = 1; // the list decides
    load(document, { anna, member(2, u"bert"_s), member(1, u"anna2"_s) });
    MemberListModel &model = *document.directory()->regularMembers();
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    // Three members and the blank new-member row.
    QCOMPARE(model.rowCount(), 4);
    QCOMPARE(model.index(3, 0).data(MemberListModel::IsBlankRowRole).toBool(), true);
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
    // The later row of a doubled id stands for the member.
    QCOMPARE(document.directory()->findMember(1)->loginName, u"anna2"_s);

    // The first row of a doubled id (the lookups follow every edit in
    // tst_directory_index, where ids are never doubled).
    QCOMPARE(model.rowOfId(1), 0);
    QVERIFY(model.removeRows(0, 1));
    QCOMPARE(model.rowOfId(1), 1);

    QVERIFY(!(model.flags(model.index(0, 0)) & Qt::ItemIsEditable));
    QVERIFY(model.flags(model.index(model.blankRow(), 0)) & Qt::ItemIsEditable);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    QVERIFY(model.setData(model.index(0, MemberListModel::EmailColumn), u"b@x.cn"_s));
    QCOMPARE(model.member(0).email, u"b@x.cn"_s);
    QCOMPARE(changed.count(), 1);
    // Other cells of the blank row create nothing.
    QVERIFY(!model.setData(model.index(model.blankRow(), 1), u"x"_s));
    QCOMPARE(model.memberCount(), 2);
}

QTEST_GUILESS_MAIN(TestDirectoryModel)
#include "tst_directory_model.moc"
