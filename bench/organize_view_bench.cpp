// Times the organisation view on a loaded server folder (the 100,000-member
// bench preset): from the end of the load to a painted view, filter
// keystrokes, scrolling, a member created from the blank row, 1,000 members
// dropped on a group and 1,000 selected members deleted, each with the
// repaint that follows. Not a test: run by bench/organize_bench.sh, which
// also compares the console's peak memory with velmarctl's.
#include "COrganizeFormView.h"
#include "CVelmarManagerDoc.h"
#include "DbSession.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "GroupTreeModel.h"
#include "MemberDragFormat.h"
#include "MemberGridProxy.h"
#include "MemberGridView.h"
#include "MemberListModel.h"
#include "MessageService.h"
#include "OrganizeTreeView.h"
#include "RegistryHives.h"
#include "ServerDataLoader.h"
#include "ServerDataSet.h"
#include "ServerFolder.h"

#include <algorithm>
#include <cstdio>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMimeData>
#include <QScrollBar>

using namespace Qt::StringLiterals;

namespace {

// Answers every question with its affirmative button and shows nothing.
class QuietMessages final : public MessageService
{
public:
    int showMessage(const Box &box) override { return affirmative(box.buttons); }
    void showBalloon(const Balloon &) override { }
};

double msSince(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

void report(const char *what, double ms, const char *target)
{
    std::printf("%-52s %9.1f ms   (target %s)\n", what, ms, target);
}

// Paints the visible part of every grid and tree now, as the screen would.
void paint(COrganizeFormView &view)
{
    for (const bool guest : { false, true }) {
        view.memberGrid(guest)->viewport()->repaint();
        view.tree(guest)->viewport()->repaint();
    }
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: velmar-organize-bench SERVER-DIR [REGISTRY-DIR]\n");
        return 2;
    }
    const ServerFolder folder(
        QString::fromLocal8Bit(argv[1]), argc > 2 ? QString::fromLocal8Bit(argv[2]) : QString());
    std::unique_ptr<RegistryHives> hives = folder.openHives();
    folder.prepareDatabaseSettings(*hives);
    QuietMessages messages;
    auto *document = new CVelmarManagerDoc;
    {
        DbSession session(*hives, folder.profilePath(), folder.accessDatabasePath(), messages);
        ServerDataSet data;
        QElapsedTimer load;
        load.start();
        const ServerDataLoader::Result result
            = ServerDataLoader(session, folder.profilePath()).run(data);
        if (!result.ok()) {
            std::fprintf(stderr, "velmar-organize-bench: the load failed\n");
            return 1;
        }
        document->adopt(std::move(data), CVelmarManagerDoc::LoadState::Complete);
        std::printf(
            "loaded %d members in %.0f ms\n", document->directory()->memberCount(), msSince(load));
    }

    QElapsedTimer timer;
    timer.start();
    COrganizeFormView view(*document, messages);
    view.resize(1200, 760);
    view.show();
    QApplication::processEvents();
    paint(view);
    report("end of load to a painted view", msSince(timer), "<= 1000 ms");

    MemberGridView *grid = view.memberGrid(false);
    MemberGridProxy *proxy = grid->grid();
    QLineEdit *filter = view.filterBox(false);
    double worst = 0;
    double total = 0;
    // A user ID from the middle of the list, typed key by key.
    const QString typed
        = proxy->members()->member(proxy->members()->memberCount() / 2).loginName.left(8);
    for (qsizetype i = 1; i <= typed.size(); ++i) {
        timer.restart();
        filter->setText(typed.left(i));
        grid->viewport()->repaint();
        const double ms = msSince(timer);
        std::printf(
            "  \"%s\": %d rows, %.1f ms\n", qPrintable(typed.left(i)), proxy->rowCount() - 1, ms);
        worst = std::max(worst, ms);
        total += ms;
    }
    report("filter keystroke, worst", worst, "<= 100 ms");
    report("filter keystroke, mean", total / double(std::max<qsizetype>(1, typed.size())),
        "<= 100 ms");
    timer.restart();
    filter->clear();
    grid->viewport()->repaint();
    report("filter cleared", msSince(timer), "<= 100 ms");

    timer.restart();
    grid->sortByColumn(MemberListModel::DisplayNameColumn, Qt::AscendingOrder);
    grid->viewport()->repaint();
    report("sort 100,000 rows by name", msSince(timer), "-");
    timer.restart();
    grid->sortByColumn(-1, Qt::AscendingOrder);
    grid->viewport()->repaint();
    report("back to the list order", msSince(timer), "-");

    timer.restart();
    for (int i = 0; i < 100; ++i) {
        grid->verticalScrollBar()->setValue(grid->verticalScrollBar()->maximum() * i / 100);
        grid->viewport()->repaint();
    }
    report("scroll one step and repaint, mean of 100", msSince(timer) / 100, "instant");
    timer.restart();
    for (int i = 0; i < 100; ++i) {
        grid->selectRow((i * 997) % proxy->members()->memberCount());
        grid->viewport()->repaint();
    }
    report("select a row and repaint, mean of 100", msSince(timer) / 100, "instant");

    // A member typed into the blank row, through the grid's model as the cell
    // editor hands it over.
    timer.restart();
    const bool created = proxy->setData(
        proxy->index(proxy->blankRow(), MemberListModel::LoginNameColumn), u"bench-new"_s);
    paint(view);
    report("create a member from the blank row", msSince(timer), "<= 50 ms");
    if (!created)
        std::fprintf(stderr, "  (the new member was refused)\n");

    // 1,000 members dropped on an empty new group.
    GroupTreeModel *tree = document->directory()->regularTree();
    document->editor().addGroup(false, tree->tree().root(), u"Bench"_s);
    const QModelIndex target = tree->findGroup(document->directory()->groupCounter());
    QList<DraggedMember> dragged;
    for (int row = 0; row < 1000; ++row) {
        const UserInfo &member = proxy->members()->member(row * 50);
        dragged.append({ member.id, member.isMale() });
    }
    std::unique_ptr<QMimeData> block(MemberDragFormat::toMimeData(dragged));
    timer.restart();
    const bool dropped = tree->dropMimeData(block.get(), Qt::MoveAction, -1, -1, target);
    view.tree(false)->expand(target);
    QApplication::processEvents();
    paint(view);
    report("drop 1,000 members on a group", msSince(timer), "<= 200 ms");
    std::printf("  group holds %d memberships%s\n", tree->rowCount(target),
        dropped ? "" : " (the drop was refused)");

    // 1,000 selected members deleted.
    QItemSelection rows;
    for (int row = 0; row < 1000; ++row) {
        const QModelIndex index = proxy->index(row * 90, 0);
        rows.select(index, index);
    }
    grid->selectionModel()->select(
        rows, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    const int before = proxy->members()->memberCount();
    timer.restart();
    view.runCommand(COrganizeFormView::Command::DeleteMembers);
    QApplication::processEvents();
    paint(view);
    report("delete 1,000 selected members, with the repaint", msSince(timer), "<= 500 ms");
    std::printf("  members %d -> %d\n", before, proxy->members()->memberCount());

    timer.restart();
    document->undoStack()->undo();
    QApplication::processEvents();
    paint(view);
    report("undo the deletion", msSince(timer), "-");
    return 0;
}
