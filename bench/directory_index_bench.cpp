// Times the directory's lookups on a directory of 100,000 members with
// 200,000 memberships: whether a member is placed, user ID and id lookups,
// member deletions, id allocation past deleted ids, and moving a group with
// 500 sub-groups. Not a test: run by hand, see README "Tests and benchmarks".
// Edits go through the document's editor, undo steps included, as the
// console makes them.
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "ServerDataSet.h"

#include <cstdio>
#include <QCoreApplication>
#include <QElapsedTimer>

using namespace Qt::StringLiterals;

namespace {

constexpr int Members = 100000;
constexpr int Departments = 20;
constexpr int TeamsPerDepartment = 75; // 1,500 teams, plus the two below
constexpr int SubGroups = 500;

template<typename Body> void timed(const char *what, int count, Body body)
{
    QElapsedTimer timer;
    timer.start();
    body();
    const double ms = double(timer.nsecsElapsed()) / 1e6;
    std::printf("%-44s %7d ops %10.2f ms %10.3f us/op\n", what, count, ms, ms * 1000.0 / count);
}

DirectoryData build()
{
    DirectoryData data;
    data.regularTree = DirectoryTree(DirectoryTree::Kind::Regular);
    data.guestTree = DirectoryTree(DirectoryTree::Kind::Guest);
    DirectoryTree &tree = data.regularTree;
    qint32 groupId = 0;
    QList<DirectoryNode *> teams;
    for (int d = 0; d < Departments; ++d) {
        DirectoryNode *department = tree.addGroup(tree.root(), ++groupId, u"部门 %1"_s.arg(d));
        for (int t = 0; t < TeamsPerDepartment; ++t)
            teams.append(tree.addGroup(department, ++groupId, u"小组 %1"_s.arg(t)));
    }
    // The group that moves, with its sub-groups, and where it moves to.
    DirectoryNode *mover = tree.addGroup(tree.root(), ++groupId, u"Mover"_s);
    for (int s = 0; s < SubGroups; ++s)
        tree.addGroup(mover, ++groupId, u"子组 %1"_s.arg(s));
    tree.addGroup(tree.root(), ++groupId, u"Target"_s);
    data.groupCounter = groupId;

    data.regularMembers.reserve(Members);
    for (qint32 id = 1; id <= Members; ++id) {
        UserInfo member;
        member.id = id;
        member.loginName = u"user%1"_s.arg(id);
        member.displayName = u"成员 %1"_s.arg(id);
        member.password = u"pw"_s;
        member.gender = id % 2;
        data.regularMembers.append(member);
        // Two memberships each, in two different teams.
        tree.addMembership(teams[id % teams.size()], id, -1);
        tree.addMembership(teams[(id * 7 + 3) % teams.size()], id, -1);
    }
    return data;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    CVelmarManagerDoc document;
    const Directory &directory = *document.directory();
    QElapsedTimer setup;
    setup.start();
    ServerDataSet set;
    set.directory = build();
    document.adopt(std::move(set), CVelmarManagerDoc::LoadState::Complete);
    const DirectoryTree &tree = directory.regularTree()->tree();
    std::printf("%d members, %d memberships, %d groups (built in %.0f ms)\n",
        directory.regularMembers()->memberCount(), tree.membershipCount(), tree.groupCount(),
        double(setup.elapsed()));

    // The last members are placed late in the tree walk; unknown ids are the
    // worst case of a walk (every node visited).
    constexpr int Lookups = 1000;
    int hits = 0;
    timed("is placed (placed members)", Lookups, [&] {
        for (qint32 id = Members - Lookups + 1; id <= Members; ++id)
            hits += directory.regularTree()->tree().hasMembership(id) ? 1 : 0;
    });
    timed("is placed (unplaced ids)", Lookups, [&] {
        for (qint32 id = Members + 1; id <= Members + Lookups; ++id)
            hits += directory.guestTree()->tree().hasMembership(id)
                ? 1
                : 0 + (directory.regularTree()->tree().hasMembership(id) ? 1 : 0);
    });
    timed("first membership of a member", Lookups, [&] {
        for (qint32 id = Members - Lookups + 1; id <= Members; ++id)
            hits += tree.findMembership(id) ? 1 : 0;
    });
    timed("user ID lookup (present, last rows)", Lookups, [&] {
        for (qint32 id = Members - Lookups + 1; id <= Members; ++id)
            hits += directory.regularMembers()->rowOfLoginName(u"user%1"_s.arg(id)) >= 0 ? 1 : 0;
    });
    timed("user ID lookup (absent)", Lookups, [&] {
        for (int i = 0; i < Lookups; ++i)
            hits += directory.guestMembers()->rowOfLoginName(u"nobody%1"_s.arg(i)) >= 0 ? 1
                                                                                        : 0
                    + (directory.regularMembers()->rowOfLoginName(u"nobody%1"_s.arg(i)) >= 0 ? 1
                                                                                             : 0);
    });
    timed("id lookup", Lookups, [&] {
        for (qint32 id = 1; id <= Lookups; ++id)
            hits += directory.regularMembers()->rowOfId(id * 97) >= 0 ? 1 : 0;
    });
    // The members with the largest ids go, so that the next id has to step
    // over every one of them.
    constexpr int Deletions = 1000;
    timed("delete member (with 2 memberships)", Deletions, [&] {
        for (int i = 0; i < Deletions; ++i)
            document.editor().deleteMembers(
                false, { directory.regularMembers()->memberCount() - 1 });
    });
    timed("id lookup after each deletion", 100, [&] {
        for (int i = 0; i < 100; ++i) {
            document.editor().deleteMembers(false, { 0 });
            hits += directory.regularMembers()->rowOfId(Members / 2 + i) >= 0 ? 1 : 0;
        }
    });
    qint32 next = 0;
    timed("next member id (1,100 deleted ids)", Lookups, [&] {
        for (int i = 0; i < Lookups; ++i)
            next = directory.nextMemberId();
    });
    constexpr int Moves = 20;
    timed("move a group with 500 sub-groups", Moves, [&] {
        for (int i = 0; i < Moves; ++i) {
            const DirectoryNode *mover = tree.findGroup(Departments * (TeamsPerDepartment + 1) + 1);
            const DirectoryNode *target = i % 2 == 0
                ? tree.findGroup(Departments * (TeamsPerDepartment + 1) + SubGroups + 2)
                : tree.root();
            if (!document.editor().moveNodeInto(false, mover, target).ok())
                std::fprintf(stderr, "move %d refused\n", i);
        }
    });
    const int steps = document.undoStack()->index();
    timed("undo every step above", steps, [&] {
        for (int i = 0; i < steps; ++i)
            document.undoStack()->undo();
    });

    // What a batch of new members does: 10,000 created, each placed in a
    // team, then all of it undone and redone.
    constexpr int Added = 10000;
    const int before = document.undoStack()->index();
    timed("add member (user ID checks, pool, records)", Added, [&] {
        for (int i = 0; i < Added; ++i)
            document.editor().addMember(false, u"new%1"_s.arg(i));
    });
    const DirectoryNode *team = tree.findGroup(2);
    timed("place member", Added, [&] {
        const MemberRows &rows = directory.memberRows(false);
        for (int i = 0; i < Added; ++i)
            document.editor().placeMembers(false, team, { rows.at(rows.count() - 1 - i).id });
    });
    const int batch = document.undoStack()->index() - before;
    timed("undo the additions and placements", batch, [&] {
        for (int i = 0; i < batch; ++i)
            document.undoStack()->undo();
    });
    timed("redo them", batch, [&] {
        for (int i = 0; i < batch; ++i)
            document.undoStack()->redo();
    });
    std::printf("(checks: %d hits, next id %d)\n", hits, next);
    return next == Members + 1 ? 0 : 1;
}
