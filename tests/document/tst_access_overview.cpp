#include "AccessOverview.h"
#include "AccessOverviewModel.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentFixture.h"
#include "DocumentUndoStack.h"
#include "FileBoxEditor.h"
#include "ServerDataSet.h"

#include <QAbstractItemModelTester>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The sample document, with nesting and rights added:
//
//   regular: Sales(10) { anna, East(11) { bert, Team(12) { anna } }, carl }, HQ(20) { dora, (99) }
//   guest:   Forum(50) { gina, gus, bert }        (bert, a regular member, in both trees)
//   Folder 1 share\docs, 2 public
//   GroupAuthority (1,10,W) (2,50,R) (2,11,R) (1,77,R) (2,12,W)   (77: no such group)
//   UserAuthority  (1,3,R) (2,1,W) (2,2,W)
ServerDataSet overviewData()
{
    ServerDataSet data = sampleServerData();
    DirectoryTree &regular = data.directory.regularTree;
    DirectoryNode *team = regular.addGroup(regular.findGroup(11), 12, u"Team"_s);
    regular.addMembership(team, 1, -1);
    data.directory.noteGroupId(12);
    data.directory.guestTree.addMembership(data.directory.guestTree.findGroup(50), 2, -1);
    data.fileBox.setGroupRight(11, 2, 1);
    data.fileBox.setGroupRight(77, 1, 1);
    data.fileBox.setGroupRight(12, 2, 2);
    data.fileBox.setMemberRight(2, 2, 2);
    return data;
}

QStringList rows(const AccessOverviewModel &model)
{
    QStringList out;
    for (int row = 0; row < model.rowCount(); ++row)
        out << model.rowCells(row).join(u" | ");
    return out;
}

} // namespace

class TestAccessOverview : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void member();
    void folder();
    void followsTheDocument();
    void csv();
};

void TestAccessOverview::member()
{
    SampleDocument doc(overviewData());
    AccessOverviewModel model(doc);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);

    // bert: through East and its parent Sales, through Forum in the guest
    // tree, and on his own; Team's right does not reach him; in folder order,
    // the own right first, then the group rights in list order.
    model.showMember(2);
    QCOMPARE(model.headerCells(), (QStringList { u"文件夹"_s, u"权限"_s, u"来源"_s }));
    QCOMPARE(rows(model),
        (QStringList {
            u"share\\docs | 读/写 | 类别 /Sales"_s,
            u"public | 读/写 | 本人权限"_s,
            u"public | 只读 | 类别 论坛结构:/Forum"_s,
            u"public | 只读 | 类别 /Sales/East"_s,
        }));
    QCOMPARE(model.index(0, 0).data(AccessOverviewModel::GroupIdRole).toInt(), 10);
    QCOMPARE(model.index(1, 0).data(AccessOverviewModel::GroupIdRole).toInt(), -1);

    // anna stands in Sales and, below it, in Team: Sales reaches her once.
    model.showMember(1);
    QCOMPARE(rows(model),
        (QStringList {
            u"share\\docs | 读/写 | 类别 /Sales"_s,
            u"public | 读/写 | 本人权限"_s,
            u"public | 只读 | 类别 /Sales/East"_s,
            u"public | 读/写 | 类别 /Sales/East/Team"_s,
        }));

    // A member in no group with no right of its own: nothing applies.
    const Directory &directory = *doc.directory();
    QCOMPARE(AccessOverview::memberByLoginName(directory, u"gus"_s)->id, 5);
    QVERIFY(!AccessOverview::memberByLoginName(directory, u"nobody"_s));
    QCOMPARE(AccessOverview(directory, doc.fileBox()).forMember(7), QList<AccessEntry> {});
}

void TestAccessOverview::folder()
{
    SampleDocument doc(overviewData());
    AccessOverviewModel model(doc);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);

    // carl twice (his own right and Sales's): rights are listed, not combined.
    // The right of the deleted group 77 reaches nobody.
    model.showFolder(1);
    QCOMPARE(model.headerCells(), (QStringList { u"用户ID"_s, u"姓名"_s, u"权限"_s, u"来源"_s }));
    QCOMPARE(rows(model),
        (QStringList {
            u"carl | Carl | 只读 | 本人权限"_s,
            u"anna | Anna | 读/写 | 类别 /Sales"_s,
            u"carl | Carl | 读/写 | 类别 /Sales"_s,
            u"bert | Bert | 读/写 | 类别 /Sales"_s,
        }));

    model.showFolder(2);
    QCOMPARE(rows(model),
        (QStringList {
            u"anna | Anna | 读/写 | 本人权限"_s,
            u"bert | Bert | 读/写 | 本人权限"_s,
            u"gina | Gina | 只读 | 类别 论坛结构:/Forum"_s,
            u"gus | Gus | 只读 | 类别 论坛结构:/Forum"_s,
            u"bert | Bert | 只读 | 类别 论坛结构:/Forum"_s,
            u"bert | Bert | 只读 | 类别 /Sales/East"_s,
            u"anna | Anna | 只读 | 类别 /Sales/East"_s,
            u"anna | Anna | 读/写 | 类别 /Sales/East/Team"_s,
        }));
    QCOMPARE(AccessOverview::groupPath(*doc.directory(), 77), QString());
}

void TestAccessOverview::followsTheDocument()
{
    SampleDocument doc(overviewData());
    AccessOverviewModel model(doc);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.showMember(3);
    QCOMPARE(rows(model),
        (QStringList {
            u"share\\docs | 只读 | 本人权限"_s, u"share\\docs | 读/写 | 类别 /Sales"_s }));

    // Sales's right goes, then the edit is undone; a reload empties the view.
    QVERIFY(FileBoxEditor(doc).setGroupRight(10, 1, 0).ok());
    QCOMPARE(rows(model), QStringList { u"share\\docs | 只读 | 本人权限"_s });
    doc.undoStack()->undo();
    QCOMPARE(model.rowCount(), 2);
    doc.adopt(overviewData(), CVelmarManagerDoc::LoadState::Complete);
    QCOMPARE(model.mode(), AccessOverviewModel::Mode::None);
    QCOMPARE(model.rowCount(), 0);
}

void TestAccessOverview::csv()
{
    ServerDataSet data = overviewData();
    data.fileBox.addFolder(9, u"a,\"b\""_s);
    data.fileBox.setMemberRight(1, 9, 1);
    SampleDocument doc(std::move(data));
    AccessOverviewModel model(doc);
    model.showMember(1);
    QVERIFY(model.toCsv().startsWith(u"文件夹,权限,来源\r\nshare\\docs,读/写,类别 /Sales\r\n"_s));
    QVERIFY(model.toCsv().endsWith(u"\r\n\"a,\"\"b\"\"\",只读,本人权限\r\n"_s));
}

QTEST_GUILESS_MAIN(TestAccessOverview)
#include "tst_access_overview.moc"
