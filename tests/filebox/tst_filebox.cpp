#include "AuthorityCode.h"
#include "DbConnection.h"
#include "FileBoxRights.h"
#include "SqlTrace.h"
#include "TempServerDir.h"
#include "TestDatabase.h"
#include "TracedConnection.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

class TestFileBoxRights : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decode_data();
    void decode();
    void encode_data();
    void encode();
    void storedPaths_data();
    void storedPaths();
    void folderIdsAreNotReused();

    // Against the databases.
    void loadDecodesWhatIsStored_data() { TestDatabase::addSqliteFileBackend(); }
    void loadDecodesWhatIsStored();
    void roundTrip_data() { TestDatabase::addSqliteFileBackend(); }
    void roundTrip();
};

void TestFileBoxRights::decode_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<int>("code");
    for (const auto &[stored, code] :
        { std::pair { u"W"_s, 2 }, { u"w"_s, 2 }, { u"R"_s, 1 }, { u"r"_s, 1 }, { u"X"_s, 0 },
            { QString(), 0 }, { u"RW"_s, 0 }, { u"W "_s, 0 }, { u"2"_s, 0 }, { u"读/写"_s, 0 } })
        QTest::newRow(qPrintable(u'[' + stored + u']')) << stored << code;
}

void TestFileBoxRights::decode()
{
    QFETCH(QString, stored);
    QFETCH(int, code);
    QCOMPARE(AuthorityCode::decode(stored), code);
}

void TestFileBoxRights::encode_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("shown");
    QTest::newRow("read/write") << 2 << u"W"_s << u"读/写"_s;
    QTest::newRow("read-only") << 1 << u"R"_s << u"只读"_s;
    for (const int code : { 0, 3, -1 }) // none, then out of range
        QTest::newRow(qPrintable(QString::number(code))) << code << u"X"_s << QString();
}

void TestFileBoxRights::encode()
{
    QFETCH(int, code);
    QFETCH(QString, stored);
    QFETCH(QString, shown);
    QCOMPARE(AuthorityCode::encode(code), stored);
    QCOMPARE(AuthorityCode::displayText(code), shown);
}

void TestFileBoxRights::storedPaths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("stored");
    // Backslashes doubled, slashes untouched.
    for (const auto &[path, stored] : { std::pair { u"Share"_s, u"Share"_s },
             { u"Share\\Docs\\2007"_s, u"Share\\\\Docs\\\\2007"_s },
             { u"Share\\"_s, u"Share\\\\"_s }, { u"\\\\host\\share"_s, u"\\\\\\\\host\\\\share"_s },
             { u"a/b"_s, u"a/b"_s } })
        QTest::newRow(qPrintable(path)) << path << stored;
}

void TestFileBoxRights::storedPaths()
{
    QFETCH(QString, path);
    QFETCH(QString, stored);
    QCOMPARE(FileBoxRights::pathToStored(path), stored);
    QCOMPARE(FileBoxRights::pathFromStored(stored), path);
}

void TestFileBoxRights::folderIdsAreNotReused()
{
    // Lookups by path and id and the rights counts are read through the file
    // box editor and its grids (tst_filebox_editing, tst_document).
    FileBoxRights rights;
    QVERIFY(rights.addFolder(10, u"Share\\Docs"_s));
    QVERIFY(!rights.addFolder(10, u"Other"_s));
    QCOMPARE(rights.folders().size(), 1);
}

void TestFileBoxRights::loadDecodesWhatIsStored()
{
    VELMAR_BACKEND_DATABASE(db);
    QVERIFY2(db.execAll({
                 u"INSERT INTO Folder VALUES (2, 'Share\\\\Docs')"_s,
                 u"INSERT INTO Folder VALUES (1, 'Root')"_s,
                 u"INSERT INTO Folder VALUES (3, NULL)"_s,
                 u"INSERT INTO Folder (FolderPath) VALUES ('nobody''s')"_s,
                 u"INSERT INTO GroupAuthority VALUES (2, 10, 'w')"_s,
                 u"INSERT INTO GroupAuthority VALUES (2, 11, 'R')"_s,
                 u"INSERT INTO GroupAuthority VALUES (1, 10, '')"_s,
                 u"INSERT INTO GroupAuthority VALUES (1, 12, NULL)"_s,
                 u"INSERT INTO GroupAuthority VALUES (1, 13, 'Read and write 读写')"_s,
                 u"INSERT INTO GroupAuthority (OFolderID, Authority) VALUES (1, 'W')"_s,
                 u"INSERT INTO UserAuthority VALUES (1, 100, 'r')"_s,
                 u"INSERT INTO UserAuthority VALUES (2, 100, 'W')"_s,
                 u"INSERT INTO UserAuthority VALUES (2, 100, 'x')"_s,
             }),
        qPrintable(db.errorString()));

    TracedConnection traced(db, dir.filePath(u"load.sql"_s));
    FileBoxRights rights;
    rights.addFolder(u"stale"_s);
    rights.load(traced.connection());

    QCOMPARE(traced.statements(),
        (QStringList { u"SELECT OFolderID,FolderPath FROM Folder"_s,
            u"SELECT OFolderID,OGroupID,Authority FROM GroupAuthority"_s,
            u"SELECT OFolderID,OMemberID,Authority FROM UserAuthority"_s }));
    QVERIFY(!rights.isModified());
    QCOMPARE(rights.folders(),
        (QList<tagFolderData> { { 2, u"Share\\Docs"_s }, { 1, u"Root"_s }, { 3, QString() } }));
    QCOMPARE(rights.groupRights(),
        (QList<tagGroupAuthority> { { 2, 10, AuthorityCode::ReadWrite },
            { 2, 11, AuthorityCode::ReadOnly }, { 1, 10, AuthorityCode::None },
            { 1, 12, AuthorityCode::None }, { 1, 13, AuthorityCode::None } }));
    // Records stay in load order, duplicates included.
    QCOMPARE(rights.memberRights(),
        (QList<tagUserAuthority> { { 1, 100, AuthorityCode::ReadOnly },
            { 2, 100, AuthorityCode::ReadWrite }, { 2, 100, AuthorityCode::None } }));
}

void TestFileBoxRights::roundTrip()
{
    VELMAR_BACKEND_DATABASE(db);
    QVERIFY(db.execAll({ u"INSERT INTO Folder VALUES (1, 'A\\\\B\\\\')"_s,
        u"INSERT INTO Folder VALUES (2, '共享文件夹')"_s,
        u"INSERT INTO GroupAuthority VALUES (1, 10, 'w')"_s,
        u"INSERT INTO GroupAuthority VALUES (2, 10, 'junk')"_s,
        u"INSERT INTO UserAuthority VALUES (2, 100, 'r')"_s }));

    DbConnection connection = db.connect();
    FileBoxRights first;
    first.load(connection);
    first.save(connection);
    FileBoxRights second;
    second.load(connection);
    QCOMPARE(second.folders(), first.folders());
    QCOMPARE(second.groupRights(), first.groupRights());
    QCOMPARE(second.memberRights(), first.memberRights());
    QCOMPARE(db.column(u"SELECT Authority FROM GroupAuthority ORDER BY OFolderID"_s),
        (QStringList { u"W"_s, u"X"_s }));
}

QTEST_GUILESS_MAIN(TestFileBoxRights)
#include "tst_filebox.moc"
