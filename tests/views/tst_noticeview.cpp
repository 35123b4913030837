#include "CNoticeFormView.h"
#include "CNoticeViewDlg.h"
#include "DocumentUndoStack.h"
#include "LoadedServer.h"
#include "NoticeListModel.h"

#include <memory>
#include <QDir>
#include <QHeaderView>
#include <QListWidget>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QTextBrowser>

using namespace Qt::StringLiterals;

namespace {

QStringList listedIds(const CNoticeFormView &view)
{
    QStringList ids;
    const QAbstractItemModel *model = view.list()->model();
    for (int row = 0; row < model->rowCount(); ++row)
        ids << model->index(row, 0).data(NoticeListModel::NoticeIdRole).toString();
    return ids;
}

} // namespace

class TestNoticeView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listDeleteAndPanel();
};

// Beside the fixture's 100 (2007) and 101 (2008): 102 in rich text with a
// folder and a file, newest; 103 and 104 in between.
void TestNoticeView::listDeleteAndPanel()
{
    LoadedServer server;
    QString error;
    QVERIFY2(server.start(sqlFile(u"notices.sql"_s), &error), qPrintable(error));
    const QString uploads = server.dir.filePath(u"VelmarFile2Upload"_s);
    QVERIFY(QDir().mkpath(uploads + u"/up102"_s));
    QStringList opened;
    CNoticeFormView view(
        server.document, [&uploads](const QString &session) { return uploads + u'/' + session; },
        [&opened](const QString &folder) { opened << folder; });
    view.resize(800, 600);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    CNoticeViewDlg *panel = view.panel();
    QVERIFY(!panel->openButton()->isEnabled());

    QTableView *list = view.list();
    QCOMPARE(listedIds(view), (QStringList { u"102"_s, u"103"_s, u"104"_s, u"101"_s, u"100"_s }));
    // The captions and the designed widths are the model's to test.
    for (int column = 0; column < NoticeListModel::ColumnCount; ++column)
        QCOMPARE(list->columnWidth(column), NoticeListModel::initialColumnWidth(column));
    QCOMPARE(list->selectionBehavior(), QAbstractItemView::SelectRows);
    QCOMPARE(view.panel()->geometry(), QRect(0, 400, 800, 200));
    QCOMPARE(list->geometry(), QRect(0, 0, 800, 400));

    // Rows 1 and 3 (103 and 101) with the Delete key: one step; undo puts
    // them back where they were.
    list->setFocus();
    list->selectionModel()->select(
        list->model()->index(1, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    list->selectionModel()->select(
        list->model()->index(3, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QTest::keyClick(list, Qt::Key_Delete);
    QCOMPARE(listedIds(view), (QStringList { u"102"_s, u"104"_s, u"100"_s }));
    QCOMPARE(server.document.undoStack()->count(), 1);
    server.document.undoStack()->undo();
    QCOMPARE(listedIds(view), (QStringList { u"102"_s, u"103"_s, u"104"_s, u"101"_s, u"100"_s }));
    server.document.undoStack()->redo();
    // Nothing selected: nothing to delete.
    list->clearSelection();
    QTest::keyClick(list, Qt::Key_Delete);
    QCOMPARE(server.document.undoStack()->count(), 1);
    server.document.undoStack()->undo();

    // Rich text, unescaped once more for the panel; a folder and a file.
    const QPoint row0 = list->visualRect(list->model()->index(0, 0)).center();
    // The press of a double click comes first, as the system delivers it.
    QTest::mousePress(list->viewport(), Qt::LeftButton, {}, row0);
    QTest::mouseRelease(list->viewport(), Qt::LeftButton, {}, row0);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, row0);
    QCOMPARE(panel->textBox()->toPlainText(), u"Bold plain;"_s);
    QVERIFY(panel->textBox()->toHtml().contains(u"font-weight:700"_s));
    QCOMPARE(panel->filesList()->count(), 2);
    QCOMPARE(panel->filesList()->item(0)->text(), u"docs\\2009"_s);
    QCOMPARE(panel->filesList()->item(1)->text(), u"plan.doc"_s);
    QVERIFY(panel->filesList()->item(0)->icon().cacheKey()
        != panel->filesList()->item(1)->icon().cacheKey());
    QTest::mouseClick(panel->openButton(), Qt::LeftButton);
    QCOMPARE(opened, QStringList { uploads + u"/up102"_s });
    QCOMPARE(panel->textBox()->width(), 600);
    QCOMPARE(panel->openButton()->geometry(), QRect(600, 170, 200, 30));

    // Plain text; the fixture's 101 has files but no upload folder: greyed.
    view.showRow(3);
    QCOMPARE(panel->textBox()->toPlainText(), u"text"_s);
    QCOMPARE(panel->filesList()->count(), 1);
    QVERIFY(!panel->openButton()->isEnabled());
}

QTEST_MAIN(TestNoticeView)
#include "tst_noticeview.moc"
