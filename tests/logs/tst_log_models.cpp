#include "ChatLogModel.h"
#include "LogSearch.h"
#include "SystemLogModel.h"
#include "TempServerDir.h"
#include "UserLogModel.h"

#include <QAbstractItemModelTester>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const CodePage Gbk("GBK");

QDateTime at(const char *text)
{
    return QDateTime::fromString(QString::fromLatin1(text), u"yyyy-MM-dd HH:mm:ss"_s);
}

// A log root with files of three days (2007-10-07 .. 09) in every folder.
class LogRoot
{
public:
    LogRoot()
    {
        root = m_dir.programDir() + u"/LogFiles/"_s;
        for (const char *name : { "c200710071000_1.txt", "c200710091200_2.txt",
                 "c200710081230_3.txt", "c2007_4.txt" }) {
            const QString file = QString::fromLatin1(name);
            const QString day = file.mid(1, 4) + u'-' + file.mid(5, 2) + u'-' + file.mid(7, 2);
            const QString time = file.mid(9, 2) + u':' + file.mid(11, 2) + u":00"_s;
            write(u"ChatD/"_s + file,
                Gbk.encode(u"%1 %2 CR 1|101|a|b|c\r\n%1 %2 张三(zs)\r\n第%3\r\n"_s.arg(
                    day, time, file.mid(14, 1))));
        }
        write(u"VelmarD/s2007100810.txt"_s,
            "2007-10-08 10:00:01 VelmarD one\r\n2007-10-08 10:00:02 VelmarD two\r\n");
        write(u"RelayD/s2007100810.txt"_s, "2007-10-08 10:30:00 RelayD three\r\n");
        write(u"ChatD/s2007100910.txt"_s, "2007-10-09 10:00:00 ChatD four\r\n");
        write(u"GroupD/s200710091.txt"_s, "2007-10-09 10:00:00 GroupD never\r\n");
        write(u"VelmarD/u2007100810.txt"_s,
            "2007-10-08 10:05:09 VelmarD ip 5000 MSG_SENT 1 101 102;103 ip 0 0 64\r\n"
            "MESSAGE: hi\r\n.END_OF_DATA\r\n"
            "2007-10-08 10:06:00 VelmarD ip 5000 MSG_SENT 1 102 101 ip 0 0 64\r\n"
            "MESSAGE: back\r\n.END_OF_DATA\r\n");
    }

    void write(const QString &relative, const QByteArray &bytes)
    {
        QVERIFY(m_dir.writeFile(u"LogFiles/"_s + relative, bytes));
    }
    LogSearchRequest request(bool newestFirst) const
    {
        LogSearchRequest r;
        r.filter = { at("2007-10-07 00:00:00"), at("2007-10-09 23:59:59"), newestFirst };
        r.logRoot = root;
        r.names = { { 101, u"张三"_s }, { 102, u"李四"_s }, { 103, u"王五"_s } };
        r.codePage = Gbk;
        return r;
    }
    QString root;

private:
    TempServerDir m_dir;
};

QStringList column(const QAbstractItemModel &model, int column)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts << model.index(row, column).data().toString();
    return texts;
}

bool runSearch(LogTableModel &model, const LogSearchRequest &request)
{
    QSignalSpy finished(&model, &LogTableModel::searchFinished);
    model.search(request);
    return finished.wait(30000) && finished.size() == 1;
}

} // namespace

class tst_LogModels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void chatListNewestFirstAndEnumerationOrder()
    {
        LogRoot logs;
        ChatLogModel model;
        QAbstractItemModelTester tester(
            &model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        // Captions and widths are the rows' (tst_log_readers) and the view's to show.
        QVERIFY(runSearch(model, logs.request(true)));
        QCOMPARE(column(model, 0),
            QStringList(
                { u"2007-10-09 12:00:00"_s, u"2007-10-08 12:30:00"_s, u"2007-10-07 10:00:00"_s }));
        // The cells themselves are the reader's (tst_log_readers); the names reach it.
        QCOMPARE(column(model, 2), QStringList(3, u"张三; "_s));
        QCOMPARE(model.filePath(1), logs.root + u"/ChatD/c200710081230_3.txt"_s);

        // Oldest first keeps the order the folder is listed in.
        QList<QString> listed;
        for (const LogFileEntry &file :
            LogSearch::keptFiles(LogSearch::Kind::Chat, logs.root, logs.request(false).filter))
            listed << file.path;
        QVERIFY(runSearch(model, logs.request(false)));
        QCOMPARE(column(model, 4), QStringList(listed));

        // The period decides (its rule is tst_log_rules').
        LogSearchRequest narrow = logs.request(true);
        narrow.filter = { at("2007-10-08 12:30:00"), at("2007-10-09 12:00:00"), true };
        QVERIFY(runSearch(model, narrow));
        QCOMPARE(model.rowCount(), 2);
    }

    void loadingFlagCoversTheWholeFill()
    {
        LogRoot logs;
        SystemLogModel model;
        QAbstractItemModelTester tester(
            &model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(!model.isLoading());
        QSignalSpy loading(&model, &LogTableModel::loadingChanged);
        QSignalSpy finished(&model, &LogTableModel::searchFinished);
        QSignalSpy progress(&model, &LogTableModel::searchProgress);
        // The list is never seen half-filled: empty, then every row at once.
        QList<int> rowsAtReset;
        connect(&model, &QAbstractItemModel::modelReset, this,
            [&] { rowsAtReset << model.rowCount(); });
        model.search(logs.request(true));
        QVERIFY(model.isLoading());
        QCOMPARE(model.rowCount(), 0);
        QVERIFY(finished.wait(30000));
        QVERIFY(!model.isLoading());
        QCOMPARE(rowsAtReset, QList<int>({ 0, 4 }));
        QCOMPARE(loading.size(), 2);
        QCOMPARE(loading.at(0).at(0).toBool(), true);
        QCOMPARE(loading.at(1).at(0).toBool(), false);
        QVERIFY(!progress.isEmpty());
        QCOMPARE(progress.last().at(0), progress.last().at(1));
    }

    void newSearchCancelsTheRunningOne()
    {
        LogRoot logs;
        // Enough files that the first search is still running when the second starts.
        for (int i = 0; i < 400; ++i)
            logs.write(u"ChatD/c200710071%1_x.txt"_s.arg(i % 60, 3, 10, QChar(u'0')),
                "2007-10-07 10:00:00 CR 0\r\n");
        ChatLogModel model;
        QAbstractItemModelTester tester(
            &model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy finished(&model, &LogTableModel::searchFinished);
        model.search(logs.request(true));
        LogSearchRequest second = logs.request(true);
        second.filter.start = at("2007-10-09 00:00:00");
        model.search(second);
        QVERIFY(finished.wait(30000));
        QTest::qWait(50);
        QCOMPARE(finished.size(), 1);
        QCOMPARE(column(model, 0), QStringList { u"2007-10-09 12:00:00"_s });

        // Cancelling leaves an empty list that is no longer loading.
        model.search(logs.request(true));
        model.cancel();
        QVERIFY(!model.isLoading());
        QVERIFY(!model.isSearching());
        QCOMPARE(model.rowCount(), 0);
        QTest::qWait(50);
        QCOMPARE(finished.size(), 1);
    }

    void systemListAcrossDaemonFolders()
    {
        LogRoot logs;
        SystemLogModel model;
        QAbstractItemModelTester tester(
            &model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(runSearch(model, logs.request(false)));
        // Folders in their fixed order; the 14-character name is never read.
        QCOMPARE(column(model, 3), QStringList({ u"one"_s, u"two"_s, u"three"_s, u"four"_s }));
        QVERIFY(runSearch(model, logs.request(true)));
        QCOMPARE(
            column(model, 2), QStringList({ u"ChatD"_s, u"RelayD"_s, u"VelmarD"_s, u"VelmarD"_s }));
        QCOMPARE(column(model, 3), QStringList({ u"four"_s, u"three"_s, u"two"_s, u"one"_s }));
    }

    void userListAndMemberTree()
    {
        LogRoot logs;
        UserLogModel model;
        QAbstractItemModelTester tester(
            &model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(runSearch(model, logs.request(false)));
        QCOMPARE(column(model, 5),
            QStringList(
                { u"MSG_SENT"_s, u"MSG_RECV"_s, u"MSG_RECV"_s, u"MSG_SENT"_s, u"MSG_RECV"_s }));
        // How the rows multiply and are named is the reader's (tst_log_readers).
        QCOMPARE(column(model, 8),
            QStringList({ u"李四;王五"_s, u"李四"_s, u"王五"_s, u"张三"_s, u"张三"_s }));
        QCOMPARE(model.detail(3).message, u"back\r\n"_s);

        QSignalSpy loading(&model, &LogTableModel::loadingChanged);
        model.showMember(101);
        QCOMPARE(loading.size(), 2); // on and off again around the refill
        QCOMPARE(*model.shownMember(), 101);
        QCOMPARE(column(model, 5), QStringList({ u"MSG_SENT"_s, u"MSG_RECV"_s }));
        QCOMPARE(model.fields(1).value(8), u"101"_s);
        model.showAll();
        QVERIFY(!model.shownMember());
        QCOMPARE(model.rowCount(), 5);

        // Newest first orders the member's rows too.
        QVERIFY(runSearch(model, logs.request(true)));
        model.showMember(101);
        QCOMPARE(
            column(model, 0), QStringList({ u"2007-10-08 10:06:00"_s, u"2007-10-08 10:05:09"_s }));
    }

    void missingRootGivesAnEmptyList()
    {
        LogSearchRequest request;
        request.filter = { at("2000-01-01 00:00:00"), at("2030-01-01 00:00:00"), true };
        request.logRoot = u"/nonexistent/velmar/LogFiles/"_s;
        UserLogModel model;
        QVERIFY(runSearch(model, request));
        QCOMPARE(model.rowCount(), 0);
        model.showMember(1); // nothing stored: nothing to show, no crash
        QCOMPARE(model.rowCount(), 0);

        // An unreadable folder is passed over like a missing one.
        TempServerDir dir;
        const QString root = dir.programDir() + u"/"_s;
        QVERIFY(dir.writeFile(u"VelmarD/u2007100810.txt"_s,
            "2007-10-08 10:05:09 VelmarD ip 5000 MSG_RECV 1 101 102 ip 0 0 0\r\n"));
        QVERIFY(QFile::setPermissions(root + u"/VelmarD"_s, QFile::Permissions()));
        request.logRoot = root;
        QVERIFY(runSearch(model, request));
        QVERIFY(model.rowCount() <= 1); // root reads it anyway
        QFile::setPermissions(
            root + u"/VelmarD"_s, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
};

QTEST_GUILESS_MAIN(tst_LogModels)
#include "tst_log_models.moc"
