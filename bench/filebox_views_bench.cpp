// Times the file-box and notice views on a generated bench server (velmar-gen
// --preset bench: 100,000 members, 500 folders, 5,000 rights, 5,000
// notices): the notice list shown and painted, the rights of the folder with
// the most rights, and the access overview of a member and of a folder whose
// rights reach every member. Not a test: bench/filebox_views_bench.sh runs it.
#include "AccessOverviewModel.h"
#include "AuthorityCode.h"
#include "CAccessOverviewPanel.h"
#include "CFileBoxFormView.h"
#include "CNoticeFormView.h"
#include "CReadDBThread.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "FileBoxEditor.h"
#include "MessageService.h"
#include "NoticeListModel.h"
#include "RegistryHives.h"
#include "ServerFolder.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QHash>
#include <QTableView>
#include <QTabWidget>

using namespace Qt::StringLiterals;

namespace {

constexpr int Runs = 5;

// Nothing is asked during the bench; anything shown goes to standard error.
class SilentMessages final : public MessageService
{
public:
    int showMessage(const Box &box) override
    {
        std::fprintf(stderr, "%s\n", qPrintable(box.text));
        return affirmative(box.buttons);
    }
    void showBalloon(const Balloon &balloon) override
    {
        std::fprintf(stderr, "%s\n", qPrintable(balloon.text));
    }
};

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

template<typename Body> double timedMs(Body body)
{
    QElapsedTimer timer;
    timer.start();
    body();
    return double(timer.nsecsElapsed()) / 1e6;
}

void report(const char *what, const QList<double> &ms, double target, const QString &detail)
{
    std::printf("%-46s median %9.3f ms (of %lld)   target %6.0f ms   %s\n", what, median(ms),
        qlonglong(ms.size()), target, qPrintable(detail));
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s SERVER_DIR [REGISTRY_DIR]\n", argv[0]);
        return 2;
    }
    const QString serverDir = QString::fromLocal8Bit(argv[1]);
    const QString registryDir
        = argc > 2 ? QString::fromLocal8Bit(argv[2]) : serverDir + u"/registry"_s;
    ServerFolder folder(serverDir, registryDir);
    std::unique_ptr<RegistryHives> hives = folder.openHives();
    folder.prepareDatabaseSettings(*hives);
    SilentMessages messages;
    CVelmarManagerDoc document;
    {
        QEventLoop loop;
        CReadDBThread reader(
            *hives, folder.profilePath(), folder.accessDatabasePath(), messages, document);
        QObject::connect(&reader, &CReadDBThread::workerExited, &loop, &QEventLoop::quit);
        reader.start();
        loop.exec();
    }
    if (document.loadState() != CVelmarManagerDoc::LoadState::Complete) {
        std::fprintf(stderr, "the load failed\n");
        return 1;
    }
    const FileBoxRights &box = document.fileBox();
    std::printf("%d members, %lld folders, %lld group rights, %lld member rights, %d notices\n",
        document.directory()->memberCount(), qlonglong(box.folders().size()),
        qlonglong(box.groupRights().size()), qlonglong(box.memberRights().size()),
        document.notices() ? int(document.notices()->rowCount()) : 0);

    // The notice list: the view made, shown and painted once.
    QList<double> ms;
    for (int run = 0; run < Runs; ++run) {
        ms << timedMs([&] {
            CNoticeFormView view(document, {}, {});
            view.resize(1000, 700);
            view.show();
            view.grab();
        });
    }
    report("notice list shown and painted", ms, 200,
        u"%1 notices"_s.arg(document.notices()->rowCount()));

    // The rights of the folder with the most rights, chosen and painted.
    QHash<qint32, int> counts;
    for (const tagGroupAuthority &r : box.groupRights())
        ++counts[r.folderId];
    for (const tagUserAuthority &r : box.memberRights())
        ++counts[r.folderId];
    qint32 busiest = box.folders().first().folderId;
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        if (it.value() > counts.value(busiest))
            busiest = it.key();
    }
    CFileBoxFormView fileBox(document, messages, [] { return QString(); });
    fileBox.resize(1000, 700);
    fileBox.show();
    ms.clear();
    for (int run = 0; run < Runs; ++run) {
        fileBox.selectFolder(box.folders().last().folderId);
        ms << timedMs([&] {
            fileBox.selectFolder(busiest);
            fileBox.rightsTable()->grab();
        });
    }
    report(
        "rights of a folder chosen and painted", ms, 50, u"%1 rights"_s.arg(counts.value(busiest)));

    // The member with the most memberships.
    qint32 member = -1;
    qsizetype most = -1;
    const MemberRows &rows = document.directory()->memberRows(false);
    for (int row = 0; row < rows.count(); ++row) {
        const qint32 id = rows.at(row).id;
        const qsizetype n = document.directory()->treeData(false).membershipsOf(id).size()
            + document.directory()->treeData(true).membershipsOf(id).size();
        if (n > most) {
            most = n;
            member = id;
        }
    }
    AccessOverviewModel overview(document);
    ms.clear();
    for (int run = 0; run < Runs; ++run) {
        ms << timedMs([&] {
            overview.showMember(member);
            for (int row = 0; row < overview.rowCount(); ++row)
                overview.rowCells(row);
        });
    }
    report("access overview of one member (all cells)", ms, 100,
        u"%1 memberships, %2 rows"_s.arg(most).arg(overview.rowCount()));

    // A folder whose rights reach everybody: every top-level group of both
    // trees gets a right on it.
    QList<FileBoxEditor::Owner> tops;
    for (const bool guest : { false, true }) {
        const DirectoryNode *root = document.directory()->treeData(guest).root();
        for (int row = 0; row < root->childCount(); ++row) {
            if (root->child(row)->isGroup())
                tops.append({ true, root->child(row)->id() });
        }
    }
    const qint32 everybody = FileBoxEditor(document).addFolder(u"\\everybody"_s).id;
    FileBoxEditor(document).addRights(everybody, tops, AuthorityCode::ReadOnly);
    ms.clear();
    for (int run = 0; run < Runs; ++run) {
        ms << timedMs([&] {
            overview.showFolder(everybody);
            for (int row = 0; row < overview.rowCount(); ++row)
                overview.rowCells(row);
        });
    }
    report("access overview of one folder (all cells)", ms, 1000,
        u"%1 rows"_s.arg(overview.rowCount()));
    ms.clear();
    for (int run = 0; run < Runs; ++run)
        ms << timedMs([&] { overview.showFolder(everybody); });
    report("  of which working out the rows", ms, 1000, QString());

    // The same in the view: the panel's sortable table filled and painted.
    CAccessOverviewPanel *panel = fileBox.accessOverview();
    fileBox.pages()->setCurrentWidget(panel);
    ms.clear();
    for (int run = 0; run < Runs; ++run) {
        panel->showMember(document.directory()->findMember(member)->loginName);
        ms << timedMs([&] {
            panel->showFolder(everybody);
            panel->table()->grab();
        });
    }
    report("access overview of the folder in the view", ms, 1000,
        u"%1 rows, painted"_s.arg(panel->table()->model()->rowCount()));
    ms.clear();
    for (int run = 0; run < Runs; ++run) {
        ms << timedMs([&] {
            panel->showMember(document.directory()->findMember(member)->loginName);
            panel->table()->grab();
        });
    }
    report("access overview of the member in the view", ms, 100, u"painted"_s);
    return 0;
}
