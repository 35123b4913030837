#include "CLogManagerChatLogFormView.h"
#include "CLogManagerFilterDlg.h"
#include "CLogManagerFilterDlgListener.h"
#include "CLogManagerSysLogFormView.h"
#include "CLogManagerUserLogFormView.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "GroupTreeModel.h"
#include "LoadedServer.h"
#include "LogFilterRules.h"
#include "LogTableModel.h"
#include "ServerDataSet.h"
#include "TempServerDir.h"

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QDateTimeEdit>
#include <QDir>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>
#include <QTextBrowser>
#include <QTreeView>

using namespace Qt::StringLiterals;

namespace {

const QDateTime Now(QDate(2024, 3, 5), QTime(14, 25, 30));

class RecordingListener : public CLogManagerFilterDlgListener
{
public:
    void applyFilter(const LogFilter &filter) override { filters << filter; }
    QList<LogFilter> filters;
};

QDateTime at(int y, int mo, int d, int h, int mi, int s)
{
    return QDateTime(QDate(y, mo, d), QTime(h, mi, s));
}

void click(QWidget *button)
{
    QVERIFY(button);
    QTest::mouseClick(button, Qt::LeftButton);
}

// Members 101..103 in one group of the regular tree.
void fillDirectory(CVelmarManagerDoc &document)
{
    const QList<std::pair<qint32, QString>> members
        = { { 101, u"张三"_s }, { 102, u"李四"_s }, { 103, u"王五"_s } };
    ServerDataSet set;
    DirectoryTree &tree = set.directory.regularTree;
    DirectoryNode *group = tree.addGroup(tree.root(), 1, u"研发部"_s);
    for (const auto &[id, name] : members) {
        UserInfo member;
        member.id = id;
        member.loginName = u"user%1"_s.arg(id);
        member.displayName = name;
        set.directory.regularMembers.append(member);
        tree.addMembership(group, id, -1);
    }
    document.adopt(std::move(set), CVelmarManagerDoc::LoadState::Complete);
}

// A server folder with a log root, the directory and a recorded folder opener.
struct LogViewFixture
{
    TempServerDir dir;
    CVelmarManagerDoc document;
    const Directory &directory = *document.directory();
    QStringList openedFolders;

    LogViewFixture() { fillDirectory(document); }

    LogViewContext context()
    {
        return LogViewContext { dir.hives(), dir.programDir(), [] { return Now; }, &directory,
            [this](const QString &folder) { openedFolders << folder; } };
    }

    bool writeLog(const QString &relative, const QByteArray &contents)
    {
        return dir.writeFile(u"LogFiles/"_s + relative, contents);
    }
};

// Sets the period in the pickers and presses the search button, as the
// administrator does; returns when the list holds the result.
bool searchThrough(
    LogFormView &view, const QDateTime &start, const QDateTime &end, bool newestFirst = true)
{
    CLogManagerFilterDlg *panel = view.filterPanel();
    qobject_cast<QDateTimeEdit *>(panel->control(CLogManagerFilterDlg::IdEndPicker))
        ->setDateTime(end);
    qobject_cast<QDateTimeEdit *>(panel->control(CLogManagerFilterDlg::IdStartPicker))
        ->setDateTime(start);
    qobject_cast<QCheckBox *>(panel->control(CLogManagerFilterDlg::IdNewestFirst))
        ->setChecked(newestFirst);
    QSignalSpy finished(view.model(), &LogTableModel::searchFinished);
    QTest::mouseClick(panel->control(CLogManagerFilterDlg::IdSearch), Qt::LeftButton);
    // Until the reading thread hands the result over the list is empty and loading.
    if (view.model()->rowCount() != 0 || !view.isLoading())
        return false;
    return finished.wait(60000) && !view.isLoading();
}

QStringList rowTexts(const QAbstractItemModel *model, int row)
{
    QStringList cells;
    for (int column = 0; column < model->columnCount(); ++column)
        cells << model->index(row, column).data().toString();
    return cells;
}

// The widths the list shows, back in the designed pixels of the system font;
// a hidden column counts as 0.
QList<int> shownWidths(const LogFormView &view)
{
    const QTableView *list = view.list();
    QList<int> widths;
    for (int column = 0; column < list->model()->columnCount(); ++column) {
        widths << (list->isColumnHidden(column)
                ? 0
                : qRound(list->columnWidth(column) / view.widthScale()));
    }
    return widths;
}

void selectRow(QTableView *list, int row)
{
    const QRect cell = list->visualRect(list->model()->index(row, 0));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, cell.center());
}

} // namespace

class LogViewsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void filterPanelReachesTheRules();
    void chatViewListsAndShowsConversations();
    void userViewShowsTheRecordInFullAndNarrowsToAMember();
    void newSearchReplacesTheRunningOne();
};

// The period rules are the filter rules' to test; the panel has to reach them
// from its buttons and pickers, and hand the adjusted period to its listener.
void LogViewsTest::filterPanelReachesTheRules()
{
    CLogManagerFilterDlg panel([] { return Now; });
    panel.search(); // no listener yet: nothing happens
    RecordingListener listener;
    panel.setListener(&listener);
    auto *start = qobject_cast<QDateTimeEdit *>(panel.control(CLogManagerFilterDlg::IdStartPicker));
    auto *end = qobject_cast<QDateTimeEdit *>(panel.control(CLogManagerFilterDlg::IdEndPicker));

    using B = LogFilterRules::PeriodButton;
    for (const auto &[button, id] : { std::pair { B::Today, CLogManagerFilterDlg::IdToday },
             { B::Week, CLogManagerFilterDlg::IdWeek },
             { B::Month, CLogManagerFilterDlg::IdMonth } }) {
        click(panel.control(id));
        QCOMPARE(panel.start(), LogFilterRules::periodFor(button, Now).start);
        QCOMPARE(panel.end(), LogFilterRules::periodFor(button, Now).end);
    }
    QVERIFY(listener.filters.isEmpty());

    end->setDateTime(at(2024, 3, 9, 13, 45, 10));
    start->setDateTime(at(2024, 3, 8, 7, 5, 6));
    click(panel.control(CLogManagerFilterDlg::IdNewestFirst));
    QTest::keyClicks(panel.control(CLogManagerFilterDlg::IdKeyword), u"MSG_SENT"_s);
    click(panel.control(CLogManagerFilterDlg::IdSearch));
    QCOMPARE(listener.filters.size(), 1);
    const LogFilter expected
        = LogFilterRules::searchFilter(at(2024, 3, 8, 7, 5, 6), at(2024, 3, 9, 13, 45, 10), false);
    QCOMPARE(listener.filters.at(0).start, expected.start);
    QCOMPARE(listener.filters.at(0).end, expected.end);
    QVERIFY(!listener.filters.at(0).newestFirst);

    // A start after the end drags the end along.
    start->setDateTime(at(2024, 3, 10, 8, 0, 0));
    QCOMPARE(panel.end(), at(2024, 3, 10, 8, 0, 0));
}

void LogViewsTest::chatViewListsAndShowsConversations()
{
    LogViewFixture fixture;
    const QByteArray first = "2007-10-08 12:30:00 x 2|101|a|b|c|102|a|b|c\r\n"
                             "2007-10-08 12:30:05 hello there\r\n"
                             "  and more  \r\n"
                             "2007-10-08 12:31:00 bye\r\n";
    QVERIFY(fixture.writeLog(u"ChatD/c200710081230_1.txt"_s, first));
    QVERIFY(fixture.writeLog(u"ChatD/c200710081330_2.txt"_s,
        "2007-10-08 13:30:00 x 1|103|a|b|c\r\n2007-10-08 13:30:01 second\r\n"));
    QVERIFY(fixture.writeLog(u"ChatD/c2007_1.txt"_s, "2007-10-08 12:00:00 x 0\r\n"));
    QVERIFY(fixture.writeLog(u"ChatD/c200710091230_3.txt"_s, "2007-10-09 12:30:00 x 0\r\n"));

    CLogManagerChatLogFormView view(fixture.context());
    view.resize(1100, 700);
    view.show();
    QAbstractItemModelTester tester(view.model());
    QTableView *list = view.list();
    QCOMPARE(shownWidths(view), (QList<int> { 125, 0, 100, 805, 0 }));
    QVERIFY(list->columnWidth(0) > list->fontMetrics().horizontalAdvance(u"2007-10-08 13:30:00"_s));
    QCOMPARE(view.findChild<QLabel *>(u"titleCaption"_s)->text(), u"日志管理"_s);
    QCOMPARE(view.findChild<QLabel *>(u"listCaption"_s)->text(), u"日志"_s);
    QCOMPARE(view.filterPanel()->height(), 98);

    QVERIFY(searchThrough(view, at(2007, 10, 8, 0, 0, 0), at(2007, 10, 8, 23, 59, 59)));
    QCOMPARE(list->model()->rowCount(), 2);
    const QString firstPath = fixture.dir.programDir() + u"/LogFiles//ChatD/c200710081230_1.txt"_s;
    QCOMPARE(rowTexts(list->model(), 0).mid(0, 4),
        (QStringList { u"2007-10-08 13:30:00"_s, QString(), u"王五; "_s, u"second "_s }));
    QCOMPARE(rowTexts(list->model(), 1),
        (QStringList { u"2007-10-08 12:30:00"_s, QString(), u"张三; 李四; "_s,
            u"hello there and more"_s, firstPath }));

    // The list and the detail box share what is left below the list caption.
    QVERIFY(qAbs(list->height() - view.detailText()->height()) <= 1);

    selectRow(list, 1);
    QCOMPARE(view.detailText()->toPlainText(),
        u"2007-10-08 12:30:05 hello there\n  and more  \n2007-10-08 12:31:00 bye\n"_s);
}

void LogViewsTest::userViewShowsTheRecordInFullAndNarrowsToAMember()
{
    LogViewFixture fixture;
    QVERIFY(fixture.writeLog(u"VelmarD/u2007100814.txt"_s, viewTestData(u"u2007100814.txt"_s)));
    CLogManagerUserLogFormView view(fixture.context());
    view.resize(1100, 700);
    view.show();
    QVERIFY(searchThrough(view, at(2007, 10, 8, 0, 0, 0), at(2007, 10, 8, 23, 0, 0)));
    QCOMPARE(view.list()->model()->index(1, 5).data().toString(), u"MSG_SENT"_s);

    selectRow(view.list(), 1);
    const QString header = view.headerText()->toPlainText();
    QVERIFY2(header.startsWith(u"Date\t: 2007-10-08\nTime\t: 14:05:09\nEvent\t: MSG_SENT\n"
                               "Type\t: 1\nSender\t: 101\nSender IP\t: 10.0.0.9\n"
                               "Receiver\t: 102;103\n\nData\t:\nSESSIONID: abc123@host\n"_s),
        qPrintable(header));
    QCOMPARE(view.filesList()->count(), 2);
    QCOMPARE(view.filesList()->item(0)->text(), u"doc.txt"_s);
    QCOMPARE(view.filesList()->item(1)->text(), u"pics\\"_s);
    QVERIFY(view.openButton()->isEnabled());
    QCOMPARE(view.sessionId(), u"abc123"_s);

    // The rich text is shown formatted (what is bold is the RTF reader's to test).
    QCOMPARE(view.messageText()->toPlainText(), u"你好 plain"_s);
    QVERIFY(view.messageText()->toHtml().contains(u"font-weight:700"_s));

    // A message with a space before "{\rtf1" is plain text, shown as written.
    selectRow(view.list(), 0);
    // The message runs up to the terminator line, so its line end stays.
    QCOMPARE(view.messageText()->toPlainText(), u" {\\rtf1 not rich}\n"_s);
    QCOMPARE(view.filesList()->count(), 0);
    QVERIFY(!view.openButton()->isEnabled());
    QVERIFY(view.sessionId().isEmpty());

    // The upload folder of the record's session; none yet: nothing is opened.
    selectRow(view.list(), 1);
    click(view.openButton());
    QVERIFY(fixture.openedFolders.isEmpty());

    const QString folder = fixture.dir.programDir() + u"/VelmarFile2Upload/abc123"_s;
    QVERIFY(QDir().mkpath(folder));
    click(view.openButton());
    QCOMPARE(fixture.openedFolders.size(), 1);
    QCOMPARE(QDir::cleanPath(fixture.openedFolders.at(0)), QDir::cleanPath(folder));
    // Where the registry puts the upload folder is the log locations' to test.

    // The member tree narrows the list.
    QTableView *list = view.list();
    QCOMPARE(list->model()->rowCount(), 4);

    GroupTreeModel *tree = fixture.directory.regularTree();
    QTreeView *treeView = view.memberTree();
    const QModelIndex group = tree->index(0, 0, tree->rootIndex());
    const QModelIndex wang = tree->findMembership(103);
    QVERIFY(group.isValid() && wang.isValid());

    // Which rows are a member's is the user log model's to test.
    treeView->setCurrentIndex(wang);
    QCOMPARE(list->model()->rowCount(), 1);
    QCOMPARE(list->model()->index(0, 8).data().toString(), u"王五"_s);

    // A group leaves the list as it is; the root brings back every row.
    treeView->setCurrentIndex(group);
    QCOMPARE(list->model()->rowCount(), 1);
    treeView->setCurrentIndex(tree->rootIndex());
    QCOMPARE(list->model()->rowCount(), 4);
    QVERIFY(!view.isLoading());
}

void LogViewsTest::newSearchReplacesTheRunningOne()
{
    LogViewFixture fixture;
    QVERIFY(fixture.writeLog(u"VelmarD/s2007100814.txt"_s, "2007-10-08 14:05:09 VelmarD a\r\n"));
    QVERIFY(fixture.writeLog(u"VelmarD/s2007100914.txt"_s, "2007-10-09 14:05:09 VelmarD b\r\n"));
    CLogManagerSysLogFormView view(fixture.context());
    view.show();
    QSignalSpy finished(view.model(), &LogTableModel::searchFinished);
    view.applyFilter(LogFilter { at(2007, 10, 8, 0, 0, 0), at(2007, 10, 8, 23, 0, 0), true });
    view.applyFilter(LogFilter { at(2007, 10, 9, 0, 0, 0), at(2007, 10, 9, 23, 0, 0), true });
    // The result comes through the event loop: until then the progress shows.
    auto *progress = view.findChild<QWidget *>(u"searchProgress"_s);
    QVERIFY(progress->isVisible());
    QVERIFY(view.isLoading());
    QVERIFY(finished.wait(60000));
    // Only the second search delivers.
    QCOMPARE(view.model()->rowCount(), 1);
    QCOMPARE(view.model()->index(0, 3).data().toString(), u"b"_s);
    QCoreApplication::processEvents();
    QCOMPARE(finished.size(), 1);
    QVERIFY(!progress->isVisible());
}

QTEST_MAIN(LogViewsTest)
#include "tst_logviews.moc"
