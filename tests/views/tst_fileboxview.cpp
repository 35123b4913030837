#include "AccessOverviewModel.h"
#include "CAccessOverviewPanel.h"
#include "CFileBoxFormView.h"
#include "CFolderRightPickerDlg.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "FolderListModel.h"
#include "FolderRightsModel.h"
#include "GroupTreeModel.h"
#include "LoadedServer.h"
#include "MemberListModel.h"
#include "RightRowDelegate.h"
#include "ServerDataFixture.h"
#include "ServerDataSet.h"

#include <algorithm>
#include <memory>
#include <QApplication>
#include <QComboBox>
#include <QDropEvent>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QTreeView>

using namespace Qt::StringLiterals;

namespace {

QStringList shownFolders(const CFileBoxFormView &view)
{
    QStringList out;
    const QAbstractItemModel *model = view.folderTable()->model();
    for (int row = 0; row < model->rowCount(); ++row) {
        out << model->index(row, FolderListModel::FolderIdColumn).data().toString() + u' '
                + model->index(row, FolderListModel::PathColumn).data().toString();
    }
    return out;
}

// Every right as the rights table shows it, folder by folder.
QStringList shownRights(CFileBoxFormView &view)
{
    QStringList out;
    for (int folderRow = 0; folderRow < view.folderModel()->rowCount(); ++folderRow) {
        const qint32 folderId = view.folderModel()->folderIdAt(folderRow);
        view.selectFolder(folderId);
        const QAbstractItemModel *model = view.rightsTable()->model();
        for (int row = 0; row < model->rowCount(); ++row) {
            const QModelIndex index = model->index(row, FolderRightsModel::AuthorityColumn);
            out << u"%1 %2 %3 %4"_s.arg(folderId)
                       .arg(index.data(FolderRightsModel::IsGroupRole).toBool() ? u"g"_s : u"m"_s)
                       .arg(index.data(FolderRightsModel::OwnerIdRole).toInt())
                       .arg(index.data().toString());
        }
    }
    std::sort(out.begin(), out.end());
    return out;
}

QComboBox *authorityCombo(CFileBoxFormView &view, int row)
{
    return qobject_cast<QComboBox *>(view.rightsTable()->indexWidget(
        view.rightsTable()->model()->index(row, FolderRightsModel::AuthorityColumn)));
}

struct Fixture
{
    LoadedServer server;
    std::unique_ptr<CFileBoxFormView> view;

    bool start(const QStringList &extra, QString *error)
    {
        if (!server.start(extra, error))
            return false;
        view = std::make_unique<CFileBoxFormView>(server.document, server.messages,
            [this] { return server.dir.filePath(u"VelmarBox"_s); });
        view->resize(1000, 600);
        view->show();
        return QTest::qWaitForWindowExposed(view.get());
    }
};

#define START(f, extra)                                                                            \
    Fixture f;                                                                                     \
    do {                                                                                           \
        QString startError;                                                                        \
        QVERIFY2(f.start(extra, &startError), qPrintable(startError));                             \
    } while (false)

} // namespace

class TestFileBoxView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void editsThroughTheWidgetsAreSaved();
    void rightsOfVanishedGroupsAndMembers();
    void picker();
    void accessOverview();
    void pickedFolderPaths();
};

void TestFileBoxView::editsThroughTheWidgetsAreSaved()
{
    START(f, QStringList {});
    CFileBoxFormView &view = *f.view;
    QCOMPARE(shownFolders(view), (QStringList { u"1 share\\docs"_s, u"2 public"_s }));
    QCOMPARE(view.currentFolderId(), 1);
    QCOMPARE(view.rightsTitle()->text(), u"share\\docs 的权限"_s);
    QVERIFY(view.pathField()->accessibleName() == u"文件夹路径"_s);

    // A folder added with the path field (which paths are refused is the
    // editor's to test; the overview below shows a refusal).
    QTest::keyClicks(view.pathField(), u"team\\plans"_s);
    QTest::mouseClick(view.addFolderButton(), Qt::LeftButton);
    QCOMPARE(shownFolders(view),
        (QStringList { u"1 share\\docs"_s, u"2 public"_s, u"3 team\\plans"_s }));
    QCOMPARE(view.currentFolderId(), 3);
    QVERIFY(view.pathField()->text().isEmpty());

    // Removing asks, naming the rights that go with the folder.
    view.selectFolder(2);
    f.server.messages.queueAnswer(MessageService::No);
    QTest::mouseClick(view.removeFolderButton(), Qt::LeftButton);
    QCOMPARE(f.server.messages.boxTexts(),
        QStringList { u"删除文件夹 \"public\" 以及它的 2 项权限吗?"_s });
    QCOMPARE(shownFolders(view).size(), 3);
    QTest::mouseClick(view.removeFolderButton(), Qt::LeftButton);
    QCOMPARE(shownFolders(view), (QStringList { u"1 share\\docs"_s, u"3 team\\plans"_s }));

    // The right of Sales on share\docs, read/write, made read-only in its drop-down.
    view.selectFolder(1);
    QCOMPARE(view.rightsTable()->model()->index(0, 0).data().toString(), u"/Sales"_s);
    QComboBox *combo = authorityCombo(view, 0);
    QVERIFY(combo);
    QCOMPARE(combo->currentText(), u"读/写"_s);
    combo->setFocus();
    QTest::keyClick(combo, Qt::Key_Up);
    QCOMPARE(view.rightsTable()->model()->index(0, FolderRightsModel::AuthorityColumn).data(),
        QVariant(u"只读"_s));

    // Members dragged from the member grid onto a folder of the list, a
    // group dragged from the tree onto the rights table.
    MemberListModel *members = f.server.document.directory()->regularMembers();
    const std::unique_ptr<QMimeData> memberDrag(members->mimeData(
        { members->index(members->rowOfId(1), 0), members->index(members->rowOfId(2), 0) }));
    const QTableView *folderTable = view.folderTable();
    const QPoint secondFolder = folderTable->visualRect(folderTable->model()->index(1, 0)).center();
    QVERIFY(dragTo(view.folderTable(), secondFolder, memberDrag.get(), true));
    QCOMPARE(view.currentFolderId(), 3);
    GroupTreeModel *tree = f.server.document.directory()->regularTree();
    const std::unique_ptr<QMimeData> groupDrag(tree->mimeData({ tree->findGroup(11) }));
    QVERIFY(dragTo(view.rightsTable(), QPoint(20, 20), groupDrag.get(), true));
    QCOMPARE(shownRights(view).filter(QRegularExpression(u"^3 "_s)),
        (QStringList { u"3 g 11 只读"_s, u"3 m 1 只读"_s, u"3 m 2 只读"_s }));
    // Nothing to drop on outside the rows of the folder list.
    QVERIFY(!dragTo(view.folderTable(), QPoint(5, view.folderTable()->viewport()->height() - 2),
        memberDrag.get(), true));

    // Delete in the rights table removes the selected right.
    view.selectFolder(3);
    view.rightsTable()->setFocus();
    view.rightsTable()->selectRow(2);
    QTest::keyClick(view.rightsTable(), Qt::Key_Delete);
    QCOMPARE(view.rightsTable()->model()->rowCount(), 2);

    QCOMPARE(f.server.document.undoStack()->count(), 6);
    const QStringList rights = shownRights(view);
    QCOMPARE(rights,
        (QStringList { u"1 g 10 只读"_s, u"1 m 3 只读"_s, u"3 g 11 只读"_s, u"3 m 1 只读"_s }));

    // Saved and read back, the view shows the same again, the chosen folder's
    // rights at once.
    const QStringList folders = shownFolders(view);
    QString error;
    QVERIFY2(f.server.save(&error), qPrintable(error));
    f.server.document.adopt(readBack(f.server.dir), CVelmarManagerDoc::LoadState::Complete);
    QCOMPARE(shownFolders(view), folders);
    QCOMPARE(view.currentFolderId(), 3);
    QCOMPARE(view.rightsTable()->model()->rowCount(), 2);
    QVERIFY(authorityCombo(view, 1));
    QCOMPARE(shownRights(view), rights);
}

void TestFileBoxView::rightsOfVanishedGroupsAndMembers()
{
    START(f,
        (QStringList {
            u"INSERT INTO GroupAuthority (OFolderID, OGroupID, Authority) VALUES (1,77,'R')"_s,
            u"INSERT INTO UserAuthority (OFolderID, OMemberID, Authority) VALUES (1,88,'W')"_s }));
    CFileBoxFormView &view = *f.view;
    const QAbstractItemModel *rights = view.rightsTable()->model();
    // Rows 1 and 3; how the model names and marks them is its own test. The
    // table's delegate draws the marked rows in red.
    QCOMPARE(rights->rowCount(), 4);
    QVERIFY(qobject_cast<RightRowDelegate *>(view.rightsTable()->itemDelegate()));

    // Both go in one step with the remove button.
    view.rightsTable()->selectionModel()->select(
        rights->index(1, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    view.rightsTable()->selectionModel()->select(
        rights->index(3, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QTest::mouseClick(view.removeRightButton(), Qt::LeftButton);
    QCOMPARE(rights->rowCount(), 2);
    QCOMPARE(f.server.document.undoStack()->count(), 1);
}

void TestFileBoxView::picker()
{
    START(f, QStringList {});
    CFileBoxFormView &view = *f.view;
    // HQ (20) read/write on share\docs, chosen in the dialog.
    bool seen = false;
    QTimer::singleShot(0, &view, [&] {
        auto *picker = qobject_cast<CFolderRightPickerDlg *>(QApplication::activeModalWidget());
        if (!picker)
            return;
        seen = true;
        QTreeView *tree = picker->groupTree(false);
        const auto *model = static_cast<const GroupTreeModel *>(tree->model());
        tree->selectionModel()->select(
            model->findGroup(20), QItemSelectionModel::Select | QItemSelectionModel::Rows);
        picker->findChild<QComboBox *>(u"pickerAuthority"_s)->setCurrentIndex(1);
        picker->accept();
    });
    QTest::mouseClick(view.addRightButton(), Qt::LeftButton);
    QVERIFY(seen);
    QVERIFY(shownRights(view).contains(u"1 g 20 读/写"_s));
    QCOMPARE(f.server.document.undoStack()->count(), 1);
    // The member lists leave out the grid's blank row.
    QCOMPARE(view.memberList(false)->model()->rowCount(),
        f.server.document.directory()->regularMembers()->memberCount());
}

void TestFileBoxView::accessOverview()
{
    START(f, QStringList {});
    CAccessOverviewPanel *panel = f.view->accessOverview();
    f.view->pages()->setCurrentWidget(panel);
    QTest::keyClicks(panel->memberField(), u"nobody"_s);
    QTest::mouseClick(panel->memberButton(), Qt::LeftButton);
    QCOMPARE(f.server.messages.balloonTexts(), QStringList { u"没有这个用户."_s });

    // carl (which rights reach whom is the overview model's to test).
    panel->memberField()->clear();
    QTest::keyClicks(panel->memberField(), u"carl"_s);
    QTest::keyClick(panel->memberField(), Qt::Key_Return);
    const QAbstractItemModel *table = panel->table()->model();
    QCOMPARE(panel->model()->mode(), AccessOverviewModel::Mode::Member);
    QCOMPARE(table->rowCount(), 1);

    // share\docs reaches carl on his own and, through Sales, anna and bert.
    panel->folderCombo()->setCurrentIndex(0);
    QTest::mouseClick(panel->folderButton(), Qt::LeftButton);
    QCOMPARE(panel->model()->mode(), AccessOverviewModel::Mode::Folder);
    QVERIFY(panel->summary()->text().startsWith(u"share\\docs: "_s));
    QVERIFY(panel->exportButton()->isEnabled());

    const QString csvPath = f.server.dir.filePath(u"access.csv"_s);
    QVERIFY(panel->exportCsv(csvPath));
    QFile csv(csvPath);
    QVERIFY(csv.open(QIODevice::ReadOnly));
    QCOMPARE(csv.readAll(), "\xEF\xBB\xBF" + panel->model()->toCsv().toUtf8());

    // A double-click on a member's right asks about the member.
    f.view->pages()->setCurrentIndex(0);
    QTableView *rights = f.view->rightsTable();
    const QPoint carl = rights->visualRect(rights->model()->index(1, 0)).center();
    QTest::mousePress(rights->viewport(), Qt::LeftButton, {}, carl);
    QTest::mouseRelease(rights->viewport(), Qt::LeftButton, {}, carl);
    QTest::mouseDClick(rights->viewport(), Qt::LeftButton, {}, carl);
    QCOMPARE(f.view->pages()->currentWidget(), panel);
    QCOMPARE(panel->model()->mode(), AccessOverviewModel::Mode::Member);
    QCOMPARE(panel->memberField()->text(), u"carl"_s);
}

void TestFileBoxView::pickedFolderPaths()
{
    QCOMPARE(CFileBoxFormView::folderPathFor(u"/srv/box/a/b"_s, u"/srv/box/"_s), u"\\a\\b"_s);
    QCOMPARE(CFileBoxFormView::folderPathFor(u"/srv/box"_s, u"/srv/box"_s), u"\\"_s);
    QCOMPARE(
        CFileBoxFormView::folderPathFor(u"/srv/boxes/a"_s, u"/srv/box"_s), u"\\srv\\boxes\\a"_s);
}

QTEST_MAIN(TestFileBoxView)
#include "tst_fileboxview.moc"
