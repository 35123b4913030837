#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DirectoryTree.h"
#include "DocumentFixture.h"
#include "DocumentUndoStack.h"
#include "PositionListModel.h"
#include "ServerDataSet.h"

#include <QRandomGenerator>
#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr qint32 MemberIds = 40;

// Every node below the root in depth-first child order, found by following
// the children, not through any index.
QList<DirectoryNode *> walk(const DirectoryTree &tree)
{
    QList<DirectoryNode *> nodes;
    std::vector<DirectoryNode *> pending { tree.root() };
    while (!pending.empty()) {
        DirectoryNode *node = pending.back();
        pending.pop_back();
        if (!node->isRoot())
            nodes.append(node);
        for (int row = node->childCount() - 1; row >= 0; --row)
            pending.push_back(node->child(row));
    }
    return nodes;
}

bool isBelow(const DirectoryNode *node, const DirectoryNode *start)
{
    for (const DirectoryNode *up = node->parent(); up; up = up->parent()) {
        if (up == start)
            return true;
    }
    return false;
}

// What the indexes must answer, against a walk of the whole tree.
void checkTree(DirectoryTree &tree, QRandomGenerator &random)
{
    const QList<DirectoryNode *> nodes = walk(tree);
    QList<DirectoryNode *> containers { tree.root() };
    QSet<qint32> groupIds;
    int memberships = 0;
    for (DirectoryNode *node : nodes) {
        if (node->isGroup()) {
            containers.append(node);
            groupIds.insert(node->id());
            QCOMPARE(tree.findGroup(node->id()), node);
        } else {
            ++memberships;
        }
    }
    QCOMPARE(tree.membershipCount(), memberships);
    QCOMPARE(tree.groupCount(), int(groupIds.size()));
    const QList<qint32> &order = tree.groupIdsInIndexOrder();
    QCOMPARE(QSet<qint32>(order.cbegin(), order.cend()), groupIds);
    QCOMPARE(order.size(), groupIds.size());

    qint32 largestPlaced = 0;
    for (const DirectoryNode *node : nodes) {
        if (node->isMembership())
            largestPlaced = std::max(largestPlaced, node->id());
    }
    for (qint32 id = 0; id <= largestPlaced + 1; ++id) {
        QSet<DirectoryNode *> all;
        DirectoryNode *first = nullptr;
        for (DirectoryNode *node : nodes) {
            if (node->isMembership() && node->id() == id) {
                all.insert(node);
                if (!first)
                    first = node;
            }
        }
        QCOMPARE(tree.hasMembership(id), first != nullptr);
        QCOMPARE(tree.findMembership(id), first);
        const QList<DirectoryNode *> indexed = tree.membershipsOf(id);
        QCOMPARE(QSet<DirectoryNode *>(indexed.cbegin(), indexed.cend()), all);
        QCOMPARE(indexed.size(), all.size());

        DirectoryNode *start = containers.at(random.bounded(int(containers.size())));
        DirectoryNode *below = nullptr;
        DirectoryNode *direct = nullptr;
        for (DirectoryNode *node : nodes) {
            if (!node->isMembership() || node->id() != id)
                continue;
            if (!below && isBelow(node, start))
                below = node;
            if (node->parent() == start)
                direct = node;
        }
        QCOMPARE(tree.findMembership(id, start, true), below);
        QCOMPARE(tree.findMembership(id, start, false), direct);
        // "At most once directly under a group" answers from its own index:
        // a membership added where none stands is taken out again at once.
        DirectoryNode *added = tree.addMembership(start, id, -1);
        QCOMPARE(added != nullptr, direct == nullptr);
        if (added)
            tree.take(added);
        QCOMPARE(tree.membershipCount(), memberships);
    }
}

void checkMembers(const Directory &directory)
{
    qint32 largest = 0;
    QSet<QString> logins;
    for (const bool guest : { false, true }) {
        const MemberListModel *list = directory.members(guest);
        QHash<qint32, int> firstRowOfId;
        QHash<QString, int> firstRowOfLogin;
        for (int row = 0; row < list->memberCount(); ++row) {
            const UserInfo &member = list->member(row);
            firstRowOfId.insert(member.id, firstRowOfId.value(member.id, row));
            firstRowOfLogin.insert(member.loginName, firstRowOfLogin.value(member.loginName, row));
            largest = std::max(largest, member.id);
            logins.insert(member.loginName);
        }
        for (qint32 id = -1; id <= largest + 1; ++id) {
            QCOMPARE(list->rowOfId(id), firstRowOfId.value(id, -1));
            QCOMPARE(list->containsId(id), firstRowOfId.contains(id));
        }
        for (int n = 0; n < 12; ++n) {
            const QString login = u"user%1"_s.arg(n);
            QCOMPARE(list->rowOfLoginName(login), firstRowOfLogin.value(login, -1));
            QCOMPARE(list->containsLoginName(login), firstRowOfLogin.contains(login));
        }
    }
    for (int n = 0; n < 12; ++n)
        QCOMPARE(directory.hasLoginName(u"user%1"_s.arg(n)), logins.contains(u"user%1"_s.arg(n)));
    qint32 next = largest + 1;
    while (directory.deletedMemberIds().contains(next))
        ++next;
    QCOMPARE(directory.nextMemberId(), next);
    const auto placedIds = [](const DirectoryTree &tree) {
        QSet<qint32> ids;
        for (const DirectoryNode *node : walk(tree)) {
            if (node->isMembership())
                ids.insert(node->id());
        }
        return ids;
    };
    const QSet<qint32> guestPlaced = placedIds(directory.treeData(true));
    const QSet<qint32> regularPlaced = placedIds(directory.treeData(false));
    for (qint32 id = 0; id <= std::max(largest, MemberIds + 30) + 1; ++id) {
        const bool inGuestTree = guestPlaced.contains(id);
        const bool inRegularTree = regularPlaced.contains(id);
        QCOMPARE(directory.isPlaced(id, true), inGuestTree);
        QCOMPARE(directory.isPlaced(id, false), inGuestTree || inRegularTree);
        QCOMPARE(directory.isDeletedSinceSave(id), directory.deletedMemberIds().contains(id));
    }
}

DirectoryNode *randomNode(const DirectoryTree &tree, QRandomGenerator &random, bool containerOnly)
{
    QList<DirectoryNode *> nodes { tree.root() };
    for (DirectoryNode *node : walk(tree)) {
        if (!containerOnly || node->isContainer())
            nodes.append(node);
    }
    return nodes.at(random.bounded(int(nodes.size())));
}

} // namespace

class TestDirectoryIndex : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void treeIndexesFollowRandomEdits();
    void directoryIndexesFollowRandomEdits();
    void indexOrderKeepsWhereAGroupLastEntered();
};

void TestDirectoryIndex::treeIndexesFollowRandomEdits()
{
    QRandomGenerator random(20261123);
    DirectoryTree tree(DirectoryTree::Kind::Guest);
    qint32 nextGroup = 1;
    std::vector<std::unique_ptr<DirectoryNode>> detached;
    int largest = 0;
    for (int step = 0; step < 1500; ++step) {
        const int what = random.bounded(100);
        if (what < 15) {
            tree.addGroup(
                randomNode(tree, random, true), nextGroup++, u"g"_s, 0, random.bounded(-1, 3));
        } else if (what < 45) {
            tree.addMembership(randomNode(tree, random, true), random.bounded(1, MemberIds + 1), -1,
                0, random.bounded(-1, 3));
        } else if (what < 60) {
            DirectoryNode *node = randomNode(tree, random, false);
            if (!node->isRoot())
                detached.push_back(tree.take(node));
        } else if (what < 70 && !detached.empty()) {
            // A taken subtree comes back somewhere else (as an undone removal would).
            std::unique_ptr<DirectoryNode> node = std::move(detached.back());
            detached.pop_back();
            tree.insert(std::move(node), randomNode(tree, random, true), random.bounded(-1, 3));
        } else if (what < 92) {
            tree.move(randomNode(tree, random, false), randomNode(tree, random, true),
                random.bounded(-1, 4));
        } else if (what < 95) {
            DirectoryTree copy = tree;
            checkTree(copy, random);
            tree = std::move(copy);
        } else if (what < 96) {
            tree.sortMembershipsByPosition(randomNode(tree, random, true));
        } else if (what == 96) {
            tree.clear();
        }
        checkTree(tree, random);
        largest = std::max(largest, tree.membershipCount() + tree.groupCount());
        if (QTest::currentTestFailed())
            QFAIL(qPrintable(u"after step %1 (operation %2)"_s.arg(step).arg(what)));
    }
    // The sequence must have built trees worth checking.
    QVERIFY2(largest > 40, qPrintable(QString::number(largest)));
}

void TestDirectoryIndex::directoryIndexesFollowRandomEdits()
{
    QRandomGenerator random(20261125);
    CVelmarManagerDoc document;
    const Directory &directory = *document.directory();
    DirectoryEditor &editor = document.editor();
    DocumentUndoStack &undo = *document.undoStack();
    using Step = DirectoryEditor::MoveStep;
    // The whole document at each step of the journal: going back and forth
    // must find it exactly as it was.
    QList<QStringList> states { documentState(document) };
    document.setDefaultPositionWriter([](qint32) { return true; });
    int largest = 0;
    for (int step = 0; step < 1500; ++step) {
        const bool guest = random.bounded(3) == 0;
        const DirectoryTree &tree = directory.treeData(guest);
        const MemberListModel *list = directory.members(guest);
        const int what = random.bounded(124);
        const PositionList &positions = document.positions()->list();
        const int position = random.bounded(positions.count() + 1);
        if (what >= 110) {
            // The positions, and a membership's, in among the other edits.
            const DirectoryNode *node = randomNode(tree, random, false);
            if (what < 112)
                editor.deletePosition(position);
            else if (what < 113)
                editor.renamePosition(position, u"p%1"_s.arg(random.bounded(4)));
            else if (what < 116)
                editor.movePosition(position, random.bounded(3) - 1);
            else if (what < 117)
                editor.setDefaultPosition(positions.idAt(position));
            else if (what >= 120)
                editor.addPosition();
            else if (node->isMembership())
                editor.setMembershipPosition(guest, node, positions.idAt(position));
        } else if (what < 20) {
            editor.addMember(guest, u"user%1"_s.arg(random.bounded(12)));
        } else if (what < 30 && list->memberCount() > 0) {
            QList<int> rows;
            for (int i = random.bounded(1, 3); i > 0; --i)
                rows.append(random.bounded(list->memberCount()));
            editor.deleteMembers(guest, rows);
        } else if (what < 35 && list->memberCount() > 0) {
            editor.setMemberCell(guest, random.bounded(list->memberCount()),
                MemberListModel::DisplayNameColumn, u"n%1"_s.arg(random.bounded(5)));
        } else if (what < 45) {
            editor.addGroup(guest, randomNode(tree, random, true), u"g"_s);
        } else if (what < 70) {
            editor.placeMembers(guest, randomNode(tree, random, true),
                { random.bounded(1, MemberIds + 30), random.bounded(1, MemberIds + 30) });
        } else if (what < 78) {
            editor.deleteNode(guest, randomNode(tree, random, false));
        } else if (what < 90) {
            editor.moveNodeInto(
                guest, randomNode(tree, random, false), randomNode(tree, random, true));
        } else if (what < 96) {
            editor.moveNode(guest, randomNode(tree, random, false), Step(random.bounded(4)));
        } else if (what < 104) {
            // Back and forth through the journal: every index must follow.
            const int target = random.bounded(undo.count() + 1);
            undo.setIndex(target);
            QCOMPARE(documentState(document), states.at(target));
        } else if (what < 106) {
            // A reload of the same content: every index is built anew.
            ServerDataSet set;
            set.directory = directory.toData();
            set.positions = positions;
            document.adopt(std::move(set), CVelmarManagerDoc::LoadState::Complete);
            QVERIFY(directory.deletedMemberIds().isEmpty());
        } else if (what < 108) {
            document.markSaved();
        } else {
            document.adopt(ServerDataSet {}, CVelmarManagerDoc::LoadState::Complete);
        }
        if (what < 96 || what >= 104) {
            states.resize(undo.count() + 1);
            states[undo.index()] = documentState(document);
        }
        checkMembers(directory);
        // checkTree adds and takes out a membership, leaving the tree as it was.
        checkTree(const_cast<DirectoryTree &>(directory.treeData(false)), random);
        checkTree(const_cast<DirectoryTree &>(directory.treeData(true)), random);
        largest = std::max(largest,
            directory.treeData(false).membershipCount()
                + directory.regularMembers()->memberCount());
        if (QTest::currentTestFailed())
            QFAIL(qPrintable(u"after step %1 (operation %2)"_s.arg(step).arg(what)));
    }
    QVERIFY2(largest > 40, qPrintable(QString::number(largest)));
}

void TestDirectoryIndex::indexOrderKeepsWhereAGroupLastEntered()
{
    DirectoryTree tree;
    tree.addGroup(tree.root(), 1, u"a"_s);
    DirectoryNode *b = tree.addGroup(tree.root(), 2, u"b"_s);
    tree.addGroup(b, 3, u"c"_s);
    tree.addGroup(tree.root(), 4, u"d"_s);
    // Moving keeps the order; taking out and putting back enters again at the end.
    QVERIFY(tree.move(b, tree.findGroup(4)));
    QCOMPARE(tree.groupIdsInIndexOrder(), QList<qint32>({ 1, 2, 3, 4 }));
    std::unique_ptr<DirectoryNode> taken = tree.take(b);
    QCOMPARE(tree.groupIdsInIndexOrder(), QList<qint32>({ 1, 4 }));
    tree.insert(std::move(taken), tree.root());
    QCOMPARE(tree.groupIdsInIndexOrder(), QList<qint32>({ 1, 4, 2, 3 }));
    tree.take(tree.findGroup(1));
    tree.addGroup(tree.root(), 1, u"a again"_s);
    QCOMPARE(tree.groupIdsInIndexOrder(), QList<qint32>({ 4, 2, 3, 1 }));
    // Taking a group out and putting it back many times (undo, redo) between
    // two questions for the order.
    for (int i = 0; i < 500; ++i)
        tree.insert(tree.take(tree.findGroup(i % 2 == 0 ? 4 : 2)), tree.root());
    QCOMPARE(tree.groupIdsInIndexOrder(), QList<qint32>({ 1, 4, 2, 3 }));
}

QTEST_GUILESS_MAIN(TestDirectoryIndex)
#include "tst_directory_index.moc"
