#include "CRegistry.h"
#include "NoticeBoard.h"
#include "NoticeListModel.h"
#include "NoticeText.h"
#include "RegistryHives.h"
#include "TempServerDir.h"
#include "TestDatabase.h"
#include "TracedConnection.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

// A failed comparison of two records shows every field, so the one that
// differs can be read off.
static char *toString(const NoticeRecord &r)
{
    return QTest::toString(u"{%1, %2, %3, %4, %5, %6, %7, %8, %9, %10}"_s.arg(QString::number(r.id),
        r.title, r.written, QString::number(r.writerNumber), r.writerMemberId, r.writerName,
        r.contents, r.fileList, r.fileSessionId, r.endDate));
}

namespace {

// Changes the process's working directory for one test and restores it.
class WorkingDirectory
{
public:
    explicit WorkingDirectory(const QString &path)
        : m_previous(QDir::currentPath())
    {
        m_changed = QDir::setCurrent(path);
    }
    ~WorkingDirectory() { QDir::setCurrent(m_previous); }
    bool changed() const { return m_changed; }

private:
    QString m_previous;
    bool m_changed = false;
};

bool makeItem(const QString &path, bool asFolder)
{
    if (!asFolder) {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write("upload") == 6;
    }
    if (!QDir().mkpath(path + u"/inner"_s))
        return false;
    QFile file(path + u"/inner/part.bin"_s);
    return file.open(QIODevice::WriteOnly) && file.write("upload") == 6;
}

bool setUploadPath(RegistryHives &hives, const QString &path)
{
    CRegistry registry(hives, RegistryRoot::LocalMachine);
    return registry.createKey(
               RegistryRoot::LocalMachine, u"SOFTWARE\\Velmar\\Services\\SessionFolder"_s)
        && registry.writeString(u"UploadPath"_s, path);
}

} // namespace

class TestNotices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Text forms.
    void unescaping_data();
    void unescaping();
    void dates_data();
    void dates();
    void fileNames_data();
    void fileNames();

    // The list model.
    void modelShowsFourColumns();

    // Uploaded files.
    void uploadFolder();
    void removal_data();
    void removal();

    // Against the databases.
    void loadBuildsTheRecords_data() { TestDatabase::addSqliteFileBackend(); }
    void loadBuildsTheRecords();
};

void TestNotices::unescaping_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("loaded");
    QTest::addColumn<QString>("panel");

    QTest::newRow("quotation") << u"It###VELMAR-QUOTATION###s"_s << u"It's"_s << u"It's"_s;
    QTest::newRow("all three")
        << u"a###VELMAR-SEMICOLON###b###VELMAR-BACKSLASH###c###VELMAR-QUOTATION###"_s
        << u"a;b\\c'"_s << u"a;b\\c'"_s;
    QTest::newRow("plain") << u"no markers; here's \\ text"_s << u"no markers; here's \\ text"_s
                           << u"no markers; here's \\ text"_s;
    QTest::newRow("empty") << QString() << QString() << QString();
    // The two orders differ when markers overlap: quotation first on load,
    // semicolon first in the panel.
    QTest::newRow("overlapping markers") << u"###VELMAR-QUOTATION###VELMAR-SEMICOLON###"_s
                                         << u"'VELMAR-SEMICOLON###"_s << u"###VELMAR-QUOTATION;"_s;
    // A restored backslash is not read again as part of a marker.
    QTest::newRow("backslash last") << u"###VELMAR-BACKSLASH###VELMAR-QUOTATION###"_s
                                    << u"###VELMAR-BACKSLASH'"_s << u"###VELMAR-BACKSLASH'"_s;
}

void TestNotices::unescaping()
{
    QFETCH(QString, stored);
    QFETCH(QString, loaded);
    QFETCH(QString, panel);
    QCOMPARE(NoticeText::unescapeStored(stored), loaded);
    QCOMPARE(NoticeText::unescapeForPanel(stored), panel);
}

void TestNotices::dates_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<bool>("isEndDate");
    QTest::newRow("written") << u"2007-10-08 12:00:00"_s << u"2007/10/08 12:00:00"_s << false;
    QTest::newRow("written without dashes") << u"20071008"_s << u"20071008"_s << false;
    // End dates: slashes after the year and the month, whatever the length.
    for (const auto &[stored, shown] : { std::pair { u"20071231"_s, u"2007/12/31"_s },
             { QString(), QString() }, { u"200712"_s, u"2007/12"_s }, { u"20071"_s, u"2007/1"_s },
             { u"2007"_s, u"2007"_s }, { u"7"_s, u"7"_s }, { u"2007123"_s, u"2007/12/3"_s },
             { u"2007123199"_s, u"2007/12/3199"_s } })
        QTest::newRow(qPrintable(u"end "_s + stored)) << stored << shown << true;
}

void TestNotices::dates()
{
    QFETCH(QString, stored);
    QFETCH(QString, shown);
    QFETCH(bool, isEndDate);
    QCOMPARE(isEndDate ? NoticeText::endDateForm(stored) : NoticeText::writtenForm(stored), shown);
}

void TestNotices::fileNames_data()
{
    QTest::addColumn<QString>("fileList");
    QTest::addColumn<QStringList>("names");
    // "|count|session" and then path, name and size for each file.
    const auto row = [](const QString &fileList, const QStringList &names) {
        QTest::newRow(qPrintable(fileList)) << fileList << names;
    };
    row({}, {});
    row(u"|2|session"_s, {});
    row(u"|2|session|/u/a.doc|a.doc|100|/u/dir\\b.txt|dir\\b.txt|200"_s,
        { u"a.doc"_s, u"dir\\b.txt"_s });
    row(u"1|s|p|report.xls|9"_s, { u"report.xls"_s }); // without the leading bar
    row(u"||1||s|p|||shown.txt||9|"_s, { u"shown.txt"_s }); // empty items skipped
    row(u"|1|s|p|a.txt|1|q|b.txt"_s, { u"a.txt"_s, u"b.txt"_s }); // short last group
    row(u"|1|s|p|a.txt|1|q"_s, { u"a.txt"_s });
}

void TestNotices::fileNames()
{
    QFETCH(QString, fileList);
    QFETCH(QStringList, names);
    QCOMPARE(NoticeText::shownFileNames(fileList), names);
}

void TestNotices::modelShowsFourColumns()
{
    NoticeListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(model.columnCount(), 4);
    const QStringList titles { u"主题管理"_s, u"发布者"_s, u"发布时间"_s, u"结束时间"_s };
    const QList<int> widths { 300, 100, 170, 75 };
    for (int c = 0; c < 4; ++c) {
        QCOMPARE(model.headerData(c, Qt::Horizontal).toString(), titles.at(c));
        QCOMPARE(NoticeListModel::initialColumnWidth(c), widths.at(c));
    }

    model.setRecords({ { 3, u"Notice 3"_s, u"2007/10/03 12:00:00"_s, 0, u"user3"_s, u"Name3"_s, {},
                           {}, {}, u"2007/12/31"_s },
        { 4, u"It's here"_s, u"2007/10/04 12:00:00"_s, 0, u"user4"_s, u"Name4"_s, {}, {}, {},
            {} } });
    QCOMPARE(model.index(1, 0).data().toString(), u"It's here"_s);
    QCOMPARE(model.index(1, 1).data().toString(), u"Name4(user4)"_s);
    QCOMPARE(model.index(1, 2).data().toString(), u"2007/10/04 12:00:00"_s);
    QCOMPARE(model.index(1, 3).data().toString(), QString());
    QCOMPARE(model.index(0, 3).data().toString(), u"2007/12/31"_s);
    QCOMPARE(model.index(1, 2).data(NoticeListModel::NoticeIdRole).toInt(), 4);
    QCOMPARE(model.record(0).id, 3);
}

void TestNotices::uploadFolder()
{
    TempServerDir dir;
    const QString fallback = dir.programDir() + u"/VelmarFile2Upload"_s;
    QCOMPARE(NoticeBoard::uploadFolder(dir.hives(), dir.programDir()), fallback);
    QCOMPARE(NoticeBoard::uploadFolder(dir.hives(), dir.programDir() + u'/'), fallback);

    QVERIFY(setUploadPath(dir.hives(), QString()));
    QCOMPARE(NoticeBoard::uploadFolder(dir.hives(), dir.programDir()), fallback);

    QVERIFY(setUploadPath(dir.hives(), u"/srv/velmar/uploads"_s));
    QCOMPARE(NoticeBoard::uploadFolder(dir.hives(), dir.programDir()), u"/srv/velmar/uploads"_s);

    // A value that does not fit the 200-byte buffer cannot be read: the default.
    QVERIFY(setUploadPath(dir.hives(), u"/"_s + QString(250, u'u')));
    QCOMPARE(NoticeBoard::uploadFolder(dir.hives(), dir.programDir()), fallback);
}

void TestNotices::removal_data()
{
    QTest::addColumn<QString>("sessionId");
    QTest::addColumn<bool>("asFolder");
    QTest::addColumn<QString>("uploadFolder");
    QTest::addColumn<bool>("removed");
    // The working directory holds S-1, S-2 and sub/S-1; the upload folder S-1,
    // S-3, sub/S-1 and "sub\S-1".
    QTest::newRow("folder") << u"S-1"_s << true << u"uploads"_s << true;
    QTest::newRow("file") << u"S-1"_s << false << u"uploads"_s << true;
    // The upload folder has no such item, or does not exist at all.
    QTest::newRow("not uploaded") << u"S-2"_s << true << u"uploads"_s << false;
    QTest::newRow("no upload folder") << u"S-1"_s << true << u"missing"_s << false;
    // Uploaded, but nothing of that name beside the process.
    QTest::newRow("only uploaded") << u"S-3"_s << true << u"uploads"_s << false;
    for (const QString &id : { QString(), u".."_s, u"."_s, u"sub/S-1"_s, u"sub\\S-1"_s, u"/S-1"_s })
        QTest::newRow(qPrintable(u'[' + id + u']')) << id << true << u"uploads"_s << false;
}

void TestNotices::removal()
{
    QFETCH(QString, sessionId);
    QFETCH(bool, asFolder);
    QFETCH(QString, uploadFolder);
    QFETCH(bool, removed);
    QTemporaryDir root;
    const QString work = root.filePath(u"work"_s);
    const QString uploads = root.filePath(u"uploads"_s);
    QVERIFY(makeItem(work + u"/sub/S-1"_s, true) && makeItem(uploads + u"/sub/S-1"_s, true));
    for (const QString &item : { u"/S-1"_s, u"/S-2"_s })
        QVERIFY(makeItem(work + item, asFolder));
    for (const QString &item : { u"/S-1"_s, u"/S-3"_s })
        QVERIFY(makeItem(uploads + item, asFolder));
    QVERIFY(QDir().mkpath(uploads + u"/sub\\S-1"_s));
    WorkingDirectory cwd(work);
    QVERIFY(cwd.changed());

    QCOMPARE(NoticeBoard::removeUploadedFiles(root.filePath(uploadFolder), sessionId), removed);
    // The item beside the process goes; the tested one in the upload folder stays.
    QCOMPARE(QFileInfo::exists(work + u"/S-1"_s), !removed);
    for (const QString &kept :
        { work + u"/S-2"_s, work + u"/sub/S-1"_s, uploads + u"/S-1"_s, uploads + u"/S-3"_s })
        QVERIFY2(QFileInfo::exists(kept), qPrintable(kept));
}

void TestNotices::loadBuildsTheRecords()
{
    VELMAR_BACKEND_DATABASE(db);
    QVERIFY2(db.execAll({
                 u"INSERT INTO CONTENTS VALUES (1, 'It###VELMAR-QUOTATION###s', "
                 "'2007-10-08 12:00:00', 7, 'kim', '金', "
                 "'a###VELMAR-SEMICOLON###b###VELMAR-BACKSLASH###c', "
                 "'|2|S1|/up/x###VELMAR-QUOTATION###y|x''y|5', 'S1', '20071231')"_s,
                 u"INSERT INTO CONTENTS VALUES (2, 'Newest', '2007-11-01 09:30:00', 8, 'lee', "
                 "'Lee', '{\\rtf1 rich}', '', '', '')"_s,
                 u"INSERT INTO CONTENTS (OCONTENTSID, WRITEDATE) VALUES (3, '2006-01-01')"_s,
             }),
        qPrintable(db.errorString()));

    TracedConnection traced(db, dir.filePath(u"load.sql"_s));
    const QList<NoticeRecord> records = NoticeBoard::load(traced.connection());
    QCOMPARE(traced.statements(),
        (QStringList { u"SELECT OCONTENTSID, TITLE, WRITEDATE, OMEMBERID, MEMBERID, "
                       "MEMBERNAME,            CONTENTS, FilePath, FileSessionID, "
                       "WriteEndDate \t\tFROM CONTENTS ORDER BY WRITEDATE DESC;"_s }));
    QCOMPARE(records.size(), 3);

    QCOMPARE(records.at(0).id, 2); // newest first, as the database orders them
    QVERIFY(NoticeText::isRichText(records.at(0).contents));
    QVERIFY(records.at(0).endDate.isEmpty());

    // Unescaped, dates in their shown forms; NULL columns read as empty and zero.
    QCOMPARE(records.at(1),
        (NoticeRecord { 1, u"It's"_s, u"2007/10/08 12:00:00"_s, 7, u"kim"_s, u"金"_s, u"a;b\\c"_s,
            u"|2|S1|/up/x'y|x'y|5"_s, u"S1"_s, u"2007/12/31"_s }));
    NoticeRecord bare;
    bare.id = 3;
    bare.written = u"2006/01/01"_s;
    QCOMPARE(records.at(2), bare);

    NoticeListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setRecords(records);
    QCOMPARE(model.index(2, 1).data().toString(), u"()"_s);
}

QTEST_GUILESS_MAIN(TestNotices)
#include "tst_notices.moc"
