#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentFixture.h"
#include "DocumentUndoStack.h"
#include "PermissionEditor.h"
#include "PermissionTableModel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// "none" for a member without a permission record.
QString flags(const CVelmarManagerDoc &doc, qint32 id)
{
    const CAccessToken *token = doc.permissions().token(id);
    if (!token)
        return u"none"_s;
    QString out;
    for (int f = 0; f < CAccessToken::FeatureCount; ++f)
        out += QString::number(token->rawFlag(CAccessToken::Feature(f)));
    return out;
}

QString account(const CVelmarManagerDoc &doc, qint32 id)
{
    const VoipAccount *found = doc.permissions().voipAccount(id);
    return found ? found->id + u'/' + found->password : u"none"_s;
}

QList<qint32> holders(const CVelmarManagerDoc &doc)
{
    QList<qint32> out;
    for (const VoipAccountPool::Entry &entry : doc.voipPool().entries())
        out.append(entry.memberId);
    return out;
}

const DirectoryNode *group(const CVelmarManagerDoc &doc, bool guest, qint32 id)
{
    return doc.directory()->treeData(guest).findGroup(id);
}

} // namespace

class TestPermissionEditing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void coupledFlagEditIsOneStep();
    void flagEditsRefusedOrUnchanged();
    void gridShowsDefaultsWithoutModifying();
    void checkAllCoversDirectMembersOnly();
    void voipEditMovesPoolHolder();
    void removePermissionsFreesPoolAndUndoes();
    void assignTelephonyServesUntilPoolRunsDry();
    void gridFollowsUndoAndReload();
};

void TestPermissionEditing::coupledFlagEditIsOneStep()
{
    SampleDocument doc;
    const QStringList before = documentState(doc);
    PermissionEditor editor(doc);

    // Instant messaging off takes file transfer with it.
    EditResult result = editor.setFlag(2, CAccessToken::MessageOn, false);
    QVERIFY(result.ok());
    QCOMPARE(result.applied, 1);
    QCOMPARE(flags(doc, 2), u"00011010"_s);
    QVERIFY(doc.permissions().isModified());
    // The rule in both directions is the permission table's to test; the
    // editor makes the coupled change one step, undone and redone whole.
    QCOMPARE(doc.journal(), QStringList { u"修改用户 bert 的即时通讯"_s });
    checkUndoRedo(doc, before);

    // A member without a record gets one from the defaults; undo takes it away.
    doc.undoStack()->setIndex(0);
    QVERIFY(editor.setFlag(7, CAccessToken::MessageOn, false).ok());
    QCOMPARE(flags(doc, 7), u"01011110"_s);
    doc.undoStack()->undo();
    QCOMPARE(documentState(doc), before);
}

void TestPermissionEditing::flagEditsRefusedOrUnchanged()
{
    SampleDocument doc;
    const QStringList before = documentState(doc);
    PermissionEditor editor(doc);

    // A membership names member 99, but the directory has no such member.
    EditResult result = editor.setFlag(99, CAccessToken::ChatOn, false);
    QVERIFY(!result.ok());
    QCOMPARE(result.refusal->text, u"没有这个用户."_s);
    QCOMPARE(result.refusal->memberId, 99);
    QVERIFY(!editor.setFlag(1, CAccessToken::Feature(8), false).ok());
    QVERIFY(!editor.setVoipAccount(99, AccessTokenTable::VoipField::Id, u"v102"_s).ok());

    // Asking for what the record already says is no step.
    result = editor.setFlag(1, CAccessToken::ChatOn, true);
    QVERIFY(result.ok());
    QCOMPARE(result.applied, 0);
    result = editor.setVoipAccount(1, AccessTokenTable::VoipField::Id, u"v100"_s);
    QVERIFY(result.ok());
    QCOMPARE(result.applied, 0);
    // No account reads as an empty one.
    result = editor.setVoipAccount(7, AccessTokenTable::VoipField::Password, QString());
    QVERIFY(result.ok());
    QCOMPARE(result.applied, 0);
    result = editor.setFlagForMembers({ 1, 99 }, CAccessToken::ChatOn, true);
    QCOMPARE(result.applied, 0);
    QCOMPARE(result.skipped, 1);
    QCOMPARE(doc.undoStack()->count(), 0);
    QCOMPARE(documentState(doc), before);
}

void TestPermissionEditing::gridShowsDefaultsWithoutModifying()
{
    SampleDocument doc;
    PermissionTableModel model(doc);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(model.rowCount(), 1);
    QStringList titles;
    for (int c = 0; c < model.columnCount(); ++c)
        titles << model.headerData(c, Qt::Horizontal).toString();
    QCOMPARE(titles,
        (QStringList { u"用户ID"_s, u"姓名"_s, u"即时通讯"_s, u"聊天"_s, u"文件发送"_s,
            u"TTS即时通讯"_s, u"视频电话"_s, u"1:1 对话"_s, u"SMS 短信"_s, u"使用权限"_s,
            u"用 户 ID "_s, u"用户密码"_s }));

    model.showGroup(false, doc.directory()->treeData(false).root());
    QCOMPARE(model.shownMembers(), (QList<qint32> { 1, 2, 3, 7, 4, 5 }));
    QCOMPARE(model.rowCount(), 7);
    // Records were made for everyone shown, yet nothing counts as changed.
    QCOMPARE(flags(doc, 3), u"11111110"_s);
    QCOMPARE(flags(doc, 7), u"11111110"_s);
    QCOMPARE(account(doc, 7), u"/"_s);
    QCOMPARE(account(doc, 2), u"/"_s);
    QVERIFY(!doc.permissions().isModified());
    QVERIFY(!doc.isModified());
    QCOMPARE(doc.undoStack()->count(), 0);

    const int dora = model.rowOfMember(7);
    QCOMPARE(dora, 4);
    QCOMPARE(model.index(dora, 0).data().toString(), u"dora"_s);
    QCOMPARE(model.index(dora, 1).data().toString(), u"Dora"_s);
    QCOMPARE(model.index(dora, 2).data().toString(), u"使用"_s);
    for (int c = 2; c <= 8; ++c)
        QCOMPARE(model.index(dora, c).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
    QCOMPARE(model.index(dora, 9).data(Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
    QCOMPARE(model.index(dora, 0).data(PermissionTableModel::MemberIdRole).toInt(), 7);
    QCOMPARE(model.index(1, 10).data().toString(), u"v100"_s);
    QCOMPARE(model.index(1, 11).data().toString(), u"p100"_s);

    // Row 0 is the "Check all" row: boxes in the feature columns only.
    QCOMPARE(model.index(0, 2).data().toString(), u"Check all"_s);
    QCOMPARE(model.index(0, 2).data(Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
    QVERIFY(!model.index(0, 0).data().isValid());
    QVERIFY(!model.index(0, 10).data().isValid());
    QVERIFY(model.flags(model.index(0, 9)).testFlag(Qt::ItemIsUserCheckable));
    QVERIFY(!model.flags(model.index(0, 10)).testFlag(Qt::ItemIsEditable));
    QVERIFY(model.flags(model.index(dora, 10)).testFlag(Qt::ItemIsEditable));
    QVERIFY(model.flags(model.index(dora, 11)).testFlag(Qt::ItemIsEditable));
    QVERIFY(!model.flags(model.index(dora, 0)).testFlag(Qt::ItemIsEditable));
    QVERIFY(!model.flags(model.index(dora, 1)).testFlag(Qt::ItemIsEditable));

    // Only the account cells take text.
    QVERIFY(!model.setData(model.index(dora, 0), u"x"_s));
    QVERIFY(!model.setData(model.index(dora, 1), u"x"_s));
    QVERIFY(!model.setData(model.index(0, 10), u"x"_s));
    QCOMPARE(doc.undoStack()->count(), 0);

    // Selecting a membership changes nothing.
    const DirectoryNode *sales = group(doc, false, 10);
    model.showGroup(false, sales->child(0));
    QCOMPARE(model.rowCount(), 7);
    // A group handed over with the other tree's flag is not this tree's node.
    model.showGroup(true, sales);
    QCOMPARE(model.rowCount(), 7);
    model.showGroup(true, group(doc, true, 50));
    QCOMPARE(model.shownMembers(), (QList<qint32> { 4, 5 }));
}

void TestPermissionEditing::checkAllCoversDirectMembersOnly()
{
    SampleDocument doc;
    PermissionTableModel model(doc);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);

    // Member 99 stands under HQ but is not in the directory.
    model.showGroup(false, group(doc, false, 20));
    QCOMPARE(model.shownMembers(), QList<qint32> { 7 });
    // Sales holds anna and carl directly; bert stands in East below it.
    model.showGroup(false, group(doc, false, 10));
    QCOMPARE(model.shownMembers(), (QList<qint32> { 1, 3 }));
    const QStringList before = documentState(doc);
    const QString bert = flags(doc, 2);

    QVERIFY(model.setData(model.index(0, 2), Qt::Unchecked, Qt::CheckStateRole));
    QCOMPARE(flags(doc, 1), u"01011111"_s);
    QCOMPARE(flags(doc, 3), u"01011110"_s);
    QVERIFY(model.setData(model.index(0, 4), Qt::Checked, Qt::CheckStateRole));
    QCOMPARE(flags(doc, 1), u"11111111"_s);
    QCOMPARE(flags(doc, 3), u"11111110"_s);
    QCOMPARE(flags(doc, 2), bert);
    QCOMPARE(doc.undoStack()->count(), 2);
    QCOMPARE(doc.journal().last(), u"修改 2 个用户的文件发送"_s);
    QCOMPARE(model.index(0, 4).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));

    doc.undoStack()->undo();
    QCOMPARE(flags(doc, 1), u"01011111"_s);
    doc.undoStack()->undo();
    QCOMPARE(documentState(doc), before);
    // The "Check all" boxes are the grid's own: neither undo nor filling
    // recomputes them.
    QVERIFY(model.checkAllState(CAccessToken::FileTransferOn));
    model.showGroup(false, group(doc, false, 11));
    QCOMPARE(model.shownMembers(), QList<qint32> { 2 });
    QCOMPARE(model.index(0, 4).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));

    // A member's own box goes through the flag rule as well.
    QVERIFY(model.setData(model.index(1, 4), Qt::Checked, Qt::CheckStateRole));
    QCOMPARE(flags(doc, 2), u"10111010"_s);
}

void TestPermissionEditing::removePermissionsFreesPoolAndUndoes()
{
    SampleDocument doc;
    const QStringList before = documentState(doc);
    // anna (1) holds v100; gina (4) v101; 99 is no member.
    const EditResult result = PermissionEditor(doc).removePermissions({ 1, 4, 1, 99 });
    QCOMPARE(result.applied, 2);
    QCOMPARE(result.skipped, 1);
    QVERIFY(!doc.permissions().token(1) && !doc.permissions().voipAccount(4));
    QCOMPARE(holders(doc), (QList<qint32> { 0, 0, 0, 0, 0, 0 }));
    QVERIFY(doc.permissions().isModified());
    checkUndoRedo(doc, before);
}

void TestPermissionEditing::voipEditMovesPoolHolder()
{
    SampleDocument doc;
    PermissionTableModel model(doc);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.showGroup(false, doc.directory()->treeData(false).root());
    const QStringList before = documentState(doc);
    const int bert = model.rowOfMember(2);

    // bert types the id of a free pool account: he holds it now.
    QVERIFY(model.setData(model.index(bert, 10), u"v102"_s));
    QCOMPARE(account(doc, 2), u"v102/"_s);
    QCOMPARE(holders(doc), (QList<qint32> { 1, 4, 0, 0, 2, 0 }));
    QVERIFY(doc.permissions().isModified());
    QCOMPARE(doc.journal(), QStringList { u"修改用户 bert 的电话号码"_s });
    const QStringList afterFirst = documentState(doc);

    // Then gina's: v102 is free again and the first v101 row moves to bert.
    QVERIFY(model.setData(model.index(bert, 10), u"v101"_s));
    QCOMPARE(holders(doc), (QList<qint32> { 1, 2, 0, 0, 0, 0 }));
    QCOMPARE(model.index(bert, 10).data().toString(), u"v101"_s);
    checkUndoRedo(doc, afterFirst);
    checkUndoRedo(doc, before, 2);
    doc.undoStack()->setIndex(0);
    QCOMPARE(model.index(bert, 10).data().toString(), QString());
    doc.undoStack()->setIndex(2);
    const QStringList afterSecond = documentState(doc);

    // A password edit leaves the pool where the id puts it.
    PermissionEditor editor(doc);
    QVERIFY(editor.setVoipAccount(1, AccessTokenTable::VoipField::Password, u"it's"_s).ok());
    QCOMPARE(account(doc, 1), u"v100/it's"_s);
    QCOMPARE(holders(doc), (QList<qint32> { 1, 2, 0, 0, 0, 0 }));
    // An empty id names no account: anna's is released.
    QVERIFY(model.setData(model.index(model.rowOfMember(1), 10), QString()));
    QCOMPARE(holders(doc), (QList<qint32> { 0, 2, 0, 0, 0, 0 }));
    checkUndoRedo(doc, afterSecond, 2);
}

void TestPermissionEditing::assignTelephonyServesUntilPoolRunsDry()
{
    SampleDocument doc;
    const QStringList before = documentState(doc);

    // Waiting: bert (no record), carl (empty id), dora, then the guest gus.
    // The pool has v102 and v103 to give: its empty row and the second v101
    // row (gina's id) give nothing.
    const EditResult result = PermissionEditor(doc).assignTelephony();
    QVERIFY(result.ok());
    QCOMPARE(result.applied, 2);
    QCOMPARE(result.skipped, 2);
    QCOMPARE(account(doc, 2), u"v102/p102"_s);
    QCOMPARE(account(doc, 3), u"v103/p103"_s);
    QCOMPARE(account(doc, 7), u"none"_s);
    QCOMPARE(account(doc, 5), u"none"_s);
    QCOMPARE(holders(doc), (QList<qint32> { 1, 4, 0, 0, 2, 3 }));
    // VoipOn set; a member without a record gets every feature.
    QCOMPARE(flags(doc, 2), u"10011011"_s);
    QCOMPARE(flags(doc, 3), u"11111111"_s);
    QCOMPARE(flags(doc, 1), u"11111111"_s);
    QVERIFY(doc.permissions().isModified());
    QCOMPARE(doc.journal(), QStringList { u"自动分配电话号码"_s });
    checkUndoRedo(doc, before);

    // Nothing left to give: no step.
    const EditResult again = PermissionEditor(doc).assignTelephony();
    QCOMPARE(again.applied, 0);
    QCOMPARE(again.skipped, 2);
    QCOMPARE(doc.undoStack()->count(), 1);
}

void TestPermissionEditing::gridFollowsUndoAndReload()
{
    SampleDocument doc;
    PermissionTableModel model(doc);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.showGroup(false, doc.directory()->treeData(false).root());
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    const int bert = model.rowOfMember(2);

    QVERIFY(model.setData(model.index(bert, 3), Qt::Checked, Qt::CheckStateRole));
    QCOMPARE(model.index(bert, 3).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
    const qsizetype afterEdit = changed.size();
    QVERIFY(afterEdit >= 1);
    doc.undoStack()->undo();
    QVERIFY(changed.size() > afterEdit);
    QCOMPARE(model.index(bert, 3).data(Qt::CheckStateRole).toInt(), int(Qt::Unchecked));

    // A member created and undone away: its row empties, and filling again
    // drops it.
    const EditResult added = doc.editor().addMember(false, u"erik"_s);
    QVERIFY(added.ok());
    model.showGroup(false, doc.directory()->treeData(false).root());
    QCOMPARE(model.rowCount(), 8);
    const int erik = model.rowOfMember(added.id);
    QCOMPARE(erik, 5); // after the member list, before the guest list
    QCOMPARE(model.index(erik, 0).data().toString(), u"erik"_s);
    doc.undoStack()->undo();
    QCOMPARE(model.index(erik, 0).data().toString(), QString());
    QCOMPARE(model.index(erik, 2).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
    model.showGroup(false, doc.directory()->treeData(false).root());
    QCOMPARE(model.rowCount(), 7);

    // A reload empties the grid and its "Check all" boxes.
    QVERIFY(model.setData(model.index(0, 5), Qt::Checked, Qt::CheckStateRole));
    doc.adopt(sampleServerData(), CVelmarManagerDoc::LoadState::Complete);
    QCOMPARE(model.rowCount(), 1);
    QVERIFY(!model.checkAllState(CAccessToken::TTSOn));
}

QTEST_GUILESS_MAIN(TestPermissionEditing)
#include "tst_permission_editing.moc"
