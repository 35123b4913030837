// Times the position and permission views on a loaded server (the bench
// preset of velmar-gen: 100,000 members), in the main window as the console
// shows them, offscreen: filling and painting the permission grid for the
// root and for a 2,000-member group, "Check all" on one column over every
// member and its undo, the position grid built anew and painted, and a
// position renamed. Each figure is the median of five runs, from the click
// (or the edit) to the end of the synchronous repaint. Not a test: run by
// hand, see README "Tests and benchmarks".
//
//   velmar-view-bench --server-dir DIR [--registry-dir DIR]
#include "CAccessControlFormView.h"
#include "CClassTreeCtrl.h"
#include "CMainFrame.h"
#include "CPositionFormView.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "FrozenGridView.h"
#include "GroupTreeModel.h"
#include "MembershipPositionModel.h"
#include "MessageService.h"
#include "PermissionTableModel.h"
#include "PositionListModel.h"
#include "RegistryHives.h"
#include "ServerFolder.h"
#include "ViewIds.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTableView>
#include <QTest>
#include <QTreeView>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

class SilentMessages final : public MessageService
{
public:
    int showMessage(const Box &box) override
    {
        std::fprintf(stderr, "message: %s\n", qPrintable(box.text));
        return affirmative(box.buttons);
    }
    void showBalloon(const Balloon &) override { }
};

// Median of five runs of body (which does the edit or the click) followed by
// a full repaint of the window; prepare runs before each, untimed.
double median(
    QWidget &window, const std::function<void()> &prepare, const std::function<void()> &body)
{
    std::vector<double> runs;
    for (int run = 0; run < 5; ++run) {
        prepare();
        QCoreApplication::processEvents();
        window.repaint();
        QElapsedTimer timer;
        timer.start();
        body();
        QCoreApplication::processEvents();
        window.repaint();
        runs.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(runs.begin(), runs.end());
    return runs[2];
}

void report(const char *what, double ms, double targetMs)
{
    std::printf("%-58s %9.1f ms   target %6.0f ms  %s\n", what, ms, targetMs,
        ms <= targetMs ? "ok" : "MISSED");
}

void click(QTreeView *tree, const QModelIndex &index)
{
    tree->scrollTo(index);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualRect(index).center());
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QString serverDir;
    QString registryDir;
    const QStringList args = app.arguments();
    for (int i = 1; i + 1 < args.size(); ++i) {
        if (args.at(i) == u"--server-dir"_s)
            serverDir = args.at(i + 1);
        else if (args.at(i) == u"--registry-dir"_s)
            registryDir = args.at(i + 1);
    }
    if (serverDir.isEmpty()) {
        std::fputs("usage: velmar-view-bench --server-dir DIR [--registry-dir DIR]\n", stderr);
        return 2;
    }
    if (registryDir.isEmpty())
        registryDir = serverDir + u"/registry"_s;
    ServerFolder folder(serverDir, registryDir);
    const std::unique_ptr<RegistryHives> hives = folder.openHives();
    SilentMessages messages;
    MainFrameContext context { folder.programDirectory(), *hives, messages };
    CMainFrame frame(context);
    frame.resize(1366, 800);

    QElapsedTimer loadClock;
    loadClock.start();
    QEventLoop loop;
    QObject::connect(&frame, &CMainFrame::loadingFinished, &loop, &QEventLoop::quit);
    frame.show();
    loop.exec();
    CVelmarManagerDoc &doc = frame.document();
    if (doc.loadState() != CVelmarManagerDoc::LoadState::Complete) {
        std::fputs("the load did not complete\n", stderr);
        return 1;
    }
    const Directory &directory = *doc.directory();
    std::printf("loaded %d members, %d regular memberships, %d positions in %.0f ms\n",
        directory.memberCount(), directory.treeData(false).membershipCount(),
        doc.positions()->list().count(), double(loadClock.nsecsElapsed()) / 1e6);

    // A group of 2,000 direct members, placed as one step before timing.
    const DirectoryNode *root = directory.treeData(false).root();
    const qint32 bigGroupId = doc.editor().addGroup(false, root, u"两千人"_s).id;
    const DirectoryNode *bigGroup = directory.treeData(false).findGroup(bigGroupId);
    QList<qint32> ids;
    for (int row = 0; row < 2000; ++row)
        ids.append(directory.memberRows(false).at(row).id);
    doc.editor().placeMembers(false, bigGroup, ids);

    frame.showView(ViewId::AccessControl);
    auto *permissions = qobject_cast<CAccessControlFormView *>(frame.view(ViewId::AccessControl));
    QTreeView *groups = permissions->groupTree();
    GroupTreeModel *treeModel = directory.regularTree();
    const QModelIndex rootIndex = treeModel->rootIndex();
    const QModelIndex bigIndex = treeModel->findGroup(bigGroupId);
    const QModelIndex other = treeModel->index(0, 0, rootIndex);

    report("permission grid, root (all members) shown",
        median(
            frame, [&] { click(groups, other); }, [&] { click(groups, rootIndex); }),
        500);
    std::printf("  rows shown: %d\n", permissions->gridModel()->rowCount() - 1);
    report("permission grid, 2,000-member group shown",
        median(
            frame, [&] { click(groups, other); }, [&] { click(groups, bigIndex); }),
        100);

    click(groups, rootIndex);
    FrozenGridView *grid = permissions->grid();
    QTableView *fixedRows = grid->frozenRowsView();
    const QModelIndex checkAll
        = grid->model()->index(0, PermissionTableModel::FirstFeatureColumn + 2);
    auto clickCheckAll = [&] {
        QTest::mouseClick(
            fixedRows->viewport(), Qt::LeftButton, {}, fixedRows->visualRect(checkAll).center());
    };
    report("\"Check all\" on one column, all members",
        median(
            frame, [] {}, clickCheckAll),
        500);
    std::printf("  journal steps: %d\n", doc.undoStack()->index());
    report("  its undo", median(frame, clickCheckAll, [&] { doc.undoStack()->undo(); }), 500);

    // Memberships up to 200,000 in the regular tree, as one step.
    const int missing = 200000 - directory.treeData(false).membershipCount();
    if (missing > 0) {
        const qint32 fillId = doc.editor().addGroup(false, root, u"补足"_s).id;
        QList<qint32> fill;
        for (int row = 0; row < missing && row < directory.memberRows(false).count(); ++row)
            fill.append(directory.memberRows(false).at(row).id);
        doc.editor().placeMembers(false, directory.treeData(false).findGroup(fillId), fill);
    }

    frame.showView(ViewId::Position);
    auto *positions = qobject_cast<CPositionFormView *>(frame.view(ViewId::Position));
    QCoreApplication::processEvents();
    std::printf("position grid rows: %d\n", positions->gridModel()->rowCount());
    // A membership added changes the rows: the grid is built anew.
    const DirectoryNode *firstGroup = directory.treeData(false).root()->child(0);
    report("position grid built anew and painted",
        median(
            frame, [] {},
            [&] {
                static int next = 80000;
                doc.editor().placeMembers(
                    false, firstGroup, { directory.memberRows(false).at(next++).id });
            }),
        1000);
    report("position renamed, grid repainted",
        median(
            frame, [] {},
            [&] {
                static int round = 0;
                doc.editor().renamePosition(0, u"职位 %1"_s.arg(++round));
            }),
        200);
    return 0;
}
