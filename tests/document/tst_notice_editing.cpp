#include "CVelmarManagerDoc.h"
#include "DocumentFixture.h"
#include "DocumentUndoStack.h"
#include "NoticeEditor.h"
#include "NoticeListModel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QList<qint32> ids(const QList<NoticeRecord> &records)
{
    QList<qint32> out;
    for (const NoticeRecord &record : records)
        out.append(record.id);
    return out;
}

} // namespace

class TestNoticeEditing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deletionGoesBottomUpAndUndoes();
    void nothingToDelete();
    void reloadDropsPendingDeletions();
};

void TestNoticeEditing::deletionGoesBottomUpAndUndoes()
{
    SampleDocument doc;
    NoticeListModel &model = *doc.notices();
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    const QStringList before = documentState(doc);

    // Rows 2 and 5 selected (with a repeat and rows that do not exist).
    EditResult result = NoticeEditor(doc).deleteNotices({ 2, 5, 2, 9, -1 });
    QVERIFY(result.ok());
    QCOMPARE(result.applied, 2);
    QCOMPARE(removed.size(), 2);
    QCOMPARE(removed.at(0).at(1).toInt(), 5);
    QCOMPARE(removed.at(1).at(1).toInt(), 2);
    QCOMPARE(ids(model.records()), (QList<qint32> { 10, 11, 13, 14 }));
    QCOMPARE(ids(model.pendingDeletions()), (QList<qint32> { 15, 12 }));
    QVERIFY(doc.isModified());
    QCOMPARE(doc.journal(), QStringList { u"删除 2 个公告"_s });
    const QStringList afterFirst = documentState(doc);

    QVERIFY(NoticeEditor(doc).deleteNotices({ 0 }).ok());
    QCOMPARE(ids(model.pendingDeletions()), (QList<qint32> { 15, 12, 10 }));
    QCOMPARE(doc.journal().last(), u"删除公告 Notice 10"_s);
    checkUndoRedo(doc, afterFirst);
    checkUndoRedo(doc, before, 2);
}

void TestNoticeEditing::nothingToDelete()
{
    SampleDocument doc;
    const QStringList before = documentState(doc);
    for (const QList<int> &rows : { QList<int> {}, QList<int> { 6, -1 } }) {
        const EditResult result = NoticeEditor(doc).deleteNotices(rows);
        QVERIFY(!result.ok());
        QVERIFY(result.refusal->text.isEmpty());
    }
    QCOMPARE(doc.undoStack()->count(), 0);
    QCOMPARE(documentState(doc), before);
}

void TestNoticeEditing::reloadDropsPendingDeletions()
{
    SampleDocument doc;
    const QStringList loaded = documentState(doc);
    QVERIFY(NoticeEditor(doc).deleteNotices({ 0, 1 }).ok());
    doc.adopt(sampleServerData(), CVelmarManagerDoc::LoadState::Complete);
    // The notices listed and pending, and the modified flag, as loaded.
    QCOMPARE(documentState(doc), loaded);
    QCOMPARE(doc.undoStack()->count(), 0);
}

QTEST_GUILESS_MAIN(TestNoticeEditing)
#include "tst_notice_editing.moc"
