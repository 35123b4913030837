#include "CVelmarManagerDoc.h"
#include "DocumentFixture.h"
#include "DocumentUndoStack.h"
#include "FileBoxEditor.h"
#include "FolderListModel.h"
#include "FolderRightsModel.h"
#include "ServerDataSet.h"

#include <QAbstractItemModelTester>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList rightsLines(const CVelmarManagerDoc &doc)
{
    QStringList out;
    for (const tagGroupAuthority &r : doc.fileBox().groupRights())
        out << u"g %1 %2 %3"_s.arg(r.folderId).arg(r.groupId).arg(r.authority);
    for (const tagUserAuthority &r : doc.fileBox().memberRights())
        out << u"m %1 %2 %3"_s.arg(r.folderId).arg(r.memberId).arg(r.authority);
    return out;
}

QStringList column(const QAbstractItemModel &model, int column)
{
    QStringList out;
    for (int row = 0; row < model.rowCount(); ++row)
        out << model.index(row, column).data().toString();
    return out;
}

} // namespace

class TestFileBoxEditing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void addFolder();
    void addFolderRefusals();
    void removeFolderTakesItsRights();
    void rights();
    void rightsRefusals();
    void folderListFollowsTheDocument();
    void folderRightsModel();
    void severalRightsInOneStep();
    void rightsOfVanishedOwners();
};

void TestFileBoxEditing::addFolder()
{
    SampleDocument doc;
    const QStringList before = documentState(doc);

    const EditResult result = FileBoxEditor(doc).addFolder(u"team\\plans"_s);
    QVERIFY(result.ok());
    QCOMPARE(result.id, 3);
    QCOMPARE(doc.fileBox().pathByFolderId(3), u"team\\plans"_s);
    QVERIFY(doc.fileBox().isModified());
    QCOMPARE(doc.journal(), QStringList { u"添加文件夹 team\\plans"_s });
    checkUndoRedo(doc, before);

    // The id follows the largest in use, not the count.
    QVERIFY(FileBoxEditor(doc).removeFolder(1).ok());
    QCOMPARE(FileBoxEditor(doc).addFolder(u"more"_s).id, 4);
}

void TestFileBoxEditing::addFolderRefusals()
{
    SampleDocument doc;
    const QStringList before = documentState(doc);
    FileBoxEditor editor(doc);

    const struct
    {
        QString path;
        QString text;
    } cases[] = {
        { QString(), u"文件夹路径不能为空."_s },
        { u"   "_s, u"文件夹路径不能为空."_s },
        { u"share\\docs"_s, u"该文件夹已经存在."_s },
        { u"bob's"_s, u"文件夹路径不能包含单引号."_s },
    };
    for (const auto &c : cases) {
        const EditResult result = editor.addFolder(c.path);
        QVERIFY2(!result.ok(), qPrintable(c.path));
        QCOMPARE(result.refusal->text, c.text);
        QVERIFY(result.refusal->messageBox);
    }
    // The path comparison is exact: another case is another folder.
    QVERIFY(editor.addFolder(u"Share\\docs"_s).ok());
    doc.undoStack()->undo();
    QCOMPARE(documentState(doc), before);
}

void TestFileBoxEditing::removeFolderTakesItsRights()
{
    SampleDocument doc;
    const QStringList before = documentState(doc);

    QVERIFY(FileBoxEditor(doc).removeFolder(1).ok());
    QCOMPARE(doc.fileBox().folders().size(), 1);
    QCOMPARE(rightsLines(doc), (QStringList { u"g 2 50 1"_s, u"m 2 1 2"_s }));
    QCOMPARE(doc.journal(), QStringList { u"删除文件夹 share\\docs"_s });
    checkUndoRedo(doc, before);

    const EditResult missing = FileBoxEditor(doc).removeFolder(1);
    QVERIFY(!missing.ok());
    QCOMPARE(missing.refusal->text, u"文件夹不存在."_s);
}

void TestFileBoxEditing::rights()
{
    SampleDocument doc;
    const QStringList before = documentState(doc);
    FileBoxEditor editor(doc);

    // New rights are appended; an existing one is overwritten in place.
    QVERIFY(editor.setGroupRight(11, 1, 1).ok());
    QVERIFY(editor.setMemberRight(4, 2, 2).ok());
    QVERIFY(editor.setGroupRight(10, 1, 1).ok());
    QCOMPARE(rightsLines(doc),
        (QStringList { u"g 1 10 1"_s, u"g 2 50 1"_s, u"g 1 11 1"_s, u"m 1 3 1"_s, u"m 2 1 2"_s,
            u"m 2 4 2"_s }));
    // None removes the right.
    QVERIFY(editor.setMemberRight(3, 1, 0).ok());
    QCOMPARE(rightsLines(doc),
        (QStringList { u"g 1 10 1"_s, u"g 2 50 1"_s, u"g 1 11 1"_s, u"m 2 1 2"_s, u"m 2 4 2"_s }));
    QCOMPARE(doc.journal(),
        (QStringList { u"设置 East 在 share\\docs 的权限: 只读"_s,
            u"设置 gina 在 public 的权限: 读/写"_s, u"设置 Sales 在 share\\docs 的权限: 只读"_s,
            u"删除 carl 在 share\\docs 的权限"_s }));

    // What already reads so is no step.
    QCOMPARE(editor.setGroupRight(10, 1, 1).applied, 0);
    QCOMPARE(editor.setMemberRight(3, 1, 0).applied, 0);
    QCOMPARE(doc.undoStack()->count(), 4);
    checkUndoRedo(doc, before, 4);
}

void TestFileBoxEditing::rightsRefusals()
{
    SampleDocument doc;
    const QStringList before = documentState(doc);
    FileBoxEditor editor(doc);

    EditResult result = editor.setGroupRight(10, 9, 1);
    QVERIFY(!result.ok());
    QCOMPARE(result.refusal->text, u"文件夹不存在."_s);
    result = editor.setMemberRight(1, 9, 0);
    QCOMPARE(result.refusal->text, u"文件夹不存在."_s);
    result = editor.setGroupRight(12, 1, 1);
    QCOMPARE(result.refusal->text, u"类别不存在."_s);
    result = editor.setMemberRight(99, 1, 1);
    QCOMPARE(result.refusal->text, u"没有这个用户."_s);
    result = editor.setMemberRight(1, 1, 3);
    QCOMPARE(result.refusal->text, u"权限无效."_s);
    result = editor.setMemberRight(1, 1, -1);
    QVERIFY(!result.ok());
    // A guest group is a group all the same.
    QVERIFY(editor.setGroupRight(50, 1, 2).ok());
    doc.undoStack()->undo();
    QCOMPARE(documentState(doc), before);
}

void TestFileBoxEditing::folderListFollowsTheDocument()
{
    SampleDocument doc;
    FolderListModel model(doc);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(model.columnCount(), 3);
    QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), u"文件夹"_s);
    QCOMPARE(model.headerData(1, Qt::Horizontal).toString(), u"编号"_s);
    QCOMPARE(model.headerData(2, Qt::Horizontal).toString(), u"权限数"_s);
    QCOMPARE(column(model, 0), (QStringList { u"share\\docs"_s, u"public"_s }));
    QCOMPARE(column(model, 1), (QStringList { u"1"_s, u"2"_s }));
    QCOMPARE(column(model, 2), (QStringList { u"2"_s, u"2"_s }));

    FileBoxEditor editor(doc);
    QVERIFY(editor.setMemberRight(7, 2, 1).ok());
    QCOMPARE(column(model, 2), (QStringList { u"2"_s, u"3"_s }));
    QVERIFY(editor.addFolder(u"new"_s).ok());
    QCOMPARE(column(model, 0), (QStringList { u"share\\docs"_s, u"public"_s, u"new"_s }));
    QCOMPARE(model.index(2, 0).data(FolderListModel::FolderIdRole).toInt(), 3);
    QCOMPARE(model.rowOfFolder(3), 2);
    QVERIFY(editor.removeFolder(1).ok());
    QCOMPARE(column(model, 0), (QStringList { u"public"_s, u"new"_s }));

    doc.undoStack()->setIndex(0);
    QCOMPARE(column(model, 0), (QStringList { u"share\\docs"_s, u"public"_s }));
    QCOMPARE(column(model, 2), (QStringList { u"2"_s, u"2"_s }));

    ServerDataSet other = sampleServerData();
    other.fileBox.clear();
    doc.adopt(std::move(other), CVelmarManagerDoc::LoadState::Complete);
    QCOMPARE(model.rowCount(), 0);
}

void TestFileBoxEditing::folderRightsModel()
{
    SampleDocument doc;
    FolderRightsModel model(doc);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(model.rowCount(), 0);
    model.setFolder(1);
    QCOMPARE(column(model, 0), (QStringList { u"/Sales"_s, u"carl"_s }));
    QCOMPARE(column(model, 1), (QStringList { u"类别"_s, u"用户"_s }));
    QCOMPARE(column(model, 2), (QStringList { u"读/写"_s, u"只读"_s }));
    QCOMPARE(model.index(0, 0).data(FolderRightsModel::OwnerIdRole).toInt(), 10);
    QVERIFY(model.index(0, 0).data(FolderRightsModel::IsGroupRole).toBool());
    QCOMPARE(model.index(1, 2).data(FolderRightsModel::AuthorityRole).toInt(), 1);
    QVERIFY(model.flags(model.index(0, 2)).testFlag(Qt::ItemIsEditable));
    QVERIFY(!model.flags(model.index(0, 0)).testFlag(Qt::ItemIsEditable));
    const QStringList before = documentState(doc);

    // The shown texts and the codes both work; a right of none goes.
    QVERIFY(model.setData(model.index(0, 2), u"只读"_s));
    QCOMPARE(column(model, 2), (QStringList { u"只读"_s, u"只读"_s }));
    QVERIFY(model.setData(model.index(1, 2), 2));
    QCOMPARE(column(model, 2), (QStringList { u"只读"_s, u"读/写"_s }));
    QVERIFY(model.setData(model.index(1, 2), QString()));
    QCOMPARE(column(model, 0), QStringList { u"/Sales"_s });
    QVERIFY(!model.setData(model.index(0, 2), u"全部"_s));
    QCOMPARE(model.lastRefusal()->text, u"权限无效."_s);
    QVERIFY(!model.setData(model.index(0, 0), u"HQ"_s));
    QCOMPARE(doc.undoStack()->count(), 3);

    doc.undoStack()->setIndex(0);
    QCOMPARE(column(model, 0), (QStringList { u"/Sales"_s, u"carl"_s }));
    QCOMPARE(column(model, 2), (QStringList { u"读/写"_s, u"只读"_s }));
    QCOMPARE(documentState(doc), before);

    // Folder removed under the view (and brought back by undo).
    QVERIFY(FileBoxEditor(doc).removeFolder(1).ok());
    QCOMPARE(model.rowCount(), 0);
    doc.undoStack()->undo();
    QCOMPARE(model.rowCount(), 2);
}

void TestFileBoxEditing::severalRightsInOneStep()
{
    SampleDocument doc;
    const QStringList before = documentState(doc);
    FileBoxEditor editor(doc);
    using Owner = FileBoxEditor::Owner;

    // carl keeps his right, 77 is no group, anna comes twice: two are added.
    EditResult result = editor.addRights(1,
        { Owner { true, 20 }, Owner { false, 1 }, Owner { false, 3 }, Owner { true, 77 },
            Owner { false, 1 } },
        2);
    QVERIFY(result.ok());
    QCOMPARE(result.applied, 2);
    QCOMPARE(result.skipped, 3);
    QCOMPARE(doc.journal(), QStringList { u"添加 2 项权限到 share\\docs"_s });
    QCOMPARE(rightsLines(doc),
        (QStringList { u"g 1 10 2"_s, u"g 2 50 1"_s, u"g 1 20 2"_s, u"m 1 3 1"_s, u"m 2 1 2"_s,
            u"m 1 1 2"_s }));
    result = editor.addRights(1, { Owner { true, 77 }, Owner { false, 3 } }, 1);
    QCOMPARE(result.refusal->text, u"类别不存在."_s);
    QVERIFY(!editor.addRights(1, { Owner { false, 3 } }, 1).ok());
    QCOMPARE(editor.addRights(1, { Owner { false, 2 } }, 0).refusal->text, u"权限无效."_s);
    QCOMPARE(editor.addRights(9, { Owner { false, 2 } }, 1).refusal->text, u"文件夹不存在."_s);

    result = editor.removeRights(1, { Owner { true, 10 }, Owner { false, 1 }, Owner { false, 2 } });
    QCOMPARE(result.applied, 2);
    QCOMPARE(doc.undoStack()->count(), 2);
    QCOMPARE(rightsLines(doc),
        (QStringList { u"g 2 50 1"_s, u"g 1 20 2"_s, u"m 1 3 1"_s, u"m 2 1 2"_s }));
    QVERIFY(!editor.removeRights(1, { Owner { false, 2 } }).ok());
    checkUndoRedo(doc, before, 2);
}

void TestFileBoxEditing::rightsOfVanishedOwners()
{
    // Rights the tables hold for a group and a member that are gone.
    ServerDataSet data = sampleServerData();
    data.fileBox.setGroupRight(77, 1, 1);
    data.fileBox.setMemberRight(88, 1, 2);
    SampleDocument doc(std::move(data));
    FolderRightsModel model(doc);
    model.setFolder(1);
    QCOMPARE(column(model, 0),
        (QStringList { u"/Sales"_s, u"(已删除的类别 77)"_s, u"carl"_s, u"(已删除的用户 88)"_s }));
    QCOMPARE(column(model, FolderRightsModel::MemberNameColumn),
        (QStringList { QString(), QString(), u"Carl"_s, QString() }));
    QVERIFY(!model.index(0, 0).data(FolderRightsModel::MissingRole).toBool());
    QVERIFY(model.index(1, 0).data(FolderRightsModel::MissingRole).toBool());
    QVERIFY(model.index(3, 0).data(FolderRightsModel::MissingRole).toBool());

    // They can be taken away, not changed.
    FileBoxEditor editor(doc);
    QCOMPARE(editor.setGroupRight(77, 1, 2).refusal->text, u"类别不存在."_s);
    QVERIFY(editor.setGroupRight(77, 1, 0).ok());
    QVERIFY(editor.removeRights(1, { FileBoxEditor::Owner { false, 88 } }).ok());
    QCOMPARE(column(model, 0), (QStringList { u"/Sales"_s, u"carl"_s }));
}

QTEST_GUILESS_MAIN(TestFileBoxEditing)
#include "tst_filebox_editing.moc"
