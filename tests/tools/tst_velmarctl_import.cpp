#include "TempServerDir.h"
#include "TestDatabase.h"
#include "VelmarCtlTool.h"

#include <QStringEncoder>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

CtlRun velmarctl(TempServerDir &dir, const QStringList &arguments, const QByteArray &input = {})
{
    return ctl(dir, QStringList { u"import"_s } + arguments, input);
}

QStringList members(TestDatabase &db)
{
    return db.column(u"SELECT OMemberID || ' ' || MemberID || ' ' || MemberName || ' ' || Passwd "
                     "|| ' ' || Gender || bAdmin || bSolar || bPublic || ' ' || Email "
                     "FROM Member ORDER BY OMemberID"_s);
}

// GBK without a byte-order mark, as a Chinese spreadsheet saves CSV; the
// third row repeats the first user ID.
QByteArray staffCsv()
{
    QStringEncoder gbk("GBK");
    return gbk.encode(u"工号,姓名,密码,性别,邮箱\r\n"
                      "zoe,张燕,pz,0,z@x.cn\r\n"
                      "yan,\"Yan, Y\",py,1,\r\n"
                      "zoe,重复,pq,1,\r\n"
                      "xia,夏,px,男,\r\n"_s);
}

} // namespace

#define SERVER(dir, db)                                                                            \
    TempServerDir dir;                                                                             \
    TestDatabase db(TestDatabase::Backend::SqliteFile, dir.programDir());                          \
    QVERIFY2(db.isValid(), qPrintable(db.errorString()));                                          \
    QVERIFY2(db.exec(u"INSERT INTO Member (OMemberID, MemberID, MemberName, MemberNickname, "      \
                     "Passwd, Gender, bPublic, Email, HP, Address, HomePhone, OfficePhone, "       \
                     "BirthDay, bSolar, bAdmin, Description, MemberLevel, IsGuestMember) VALUES "  \
                     "(1,'anna','Anna','','pw1',0,1,'','','','','','',1,0,'',1,0)"_s),             \
        qPrintable(db.errorString()));                                                             \
    QVERIFY(dir.writeFile(u"staff.csv"_s, staffCsv()))

// velmarctl import on a real server folder: the rows of a source become
// members, saved as velmarctl edit saves.
class TestVelmarCtlImport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stopsAtARefusedRowAndSavesTheRowsBefore();
    void skipRefusedAndDryRun();
    void mapAndSqliteSource();
};

void TestVelmarCtlImport::stopsAtARefusedRowAndSavesTheRowsBefore()
{
    SERVER(dir, db);
    const QString source = u"csv:"_s + dir.filePath(u"staff.csv"_s);
    // No column is named after the user ID: it must be mapped.
    CtlRun run = velmarctl(dir, { source });
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.err.contains(u"--map userid=COLUMN"_s), qPrintable(run.err));
    QCOMPARE(dir.savedVersion(), u"absent"_s);

    run = velmarctl(dir, { source, u"--map"_s, u"userid=工号"_s });
    QCOMPARE(run.exitCode, 1);
    QCOMPARE(run.err, u"row 3: 用户已存在.\n"_s);
    QCOMPARE(run.outText(), u"added zoe (id 2)\nadded yan (id 3)\n1 steps saved (version 1)\n"_s);
    QCOMPARE(members(db),
        QStringList({ u"1 anna Anna pw1 0011 "_s, u"2 zoe 张燕 pz 0000 z@x.cn"_s,
            u"3 yan Yan, Y py 1000 "_s }));

    // Without a password a member is added, named, and refused by the save.
    run = velmarctl(dir,
        { source, u"--map"_s, u"userid=工号"_s, u"--map"_s, u"password="_s, u"--skip-refused"_s });
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.err.contains(u"xia has no password: a save refuses members without one "
                              "(用户ID和密码为空.)\n"_s),
        qPrintable(run.err));
    QCOMPARE(db.count(u"Member"_s), 3);
}

void TestVelmarCtlImport::skipRefusedAndDryRun()
{
    SERVER(dir, db);
    const QStringList arguments { u"csv:"_s + dir.filePath(u"staff.csv"_s), u"--map"_s,
        u"用户ID=工号"_s, u"--map"_s, u"password=3"_s, u"--map"_s, u"gender="_s, u"--map"_s,
        u"邮箱="_s, u"--skip-refused"_s };
    // The dry run reads the same rows from standard input.
    QStringList piped = arguments;
    piped[0] = u"csv:-"_s;
    CtlRun run = velmarctl(dir, piped + QStringList { u"--dry-run"_s }, staffCsv());
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QCOMPARE(run.err, u"row 3: 用户已存在.\n"_s);
    QVERIFY(run.outText().startsWith(u"added zoe (id 2)\nadded yan (id 3)\nadded xia (id 4)\n"_s));
    QVERIFY(run.outText().endsWith(u"(dry run, nothing saved)\n"_s));
    QCOMPARE(db.count(u"Member"_s), 1);
    QCOMPARE(dir.savedVersion(), u"absent"_s);

    run = velmarctl(dir, arguments);
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    // Gender and e-mail left empty this time, the name guessed.
    QCOMPARE(members(db),
        QStringList({ u"1 anna Anna pw1 0011 "_s, u"2 zoe 张燕 pz 0000 "_s,
            u"3 yan Yan, Y py 0000 "_s, u"4 xia 夏 px 0000 "_s }));
    QCOMPARE(dir.savedVersion(), u"0001"_s);
    // Every row again: all refused, nothing to save.
    run = velmarctl(dir, arguments);
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.err.count(u"用户已存在."_s), 4);
    QCOMPARE(dir.savedVersion(), u"0001"_s);
}

void TestVelmarCtlImport::mapAndSqliteSource()
{
    SERVER(dir, db);
    TestDatabase staff(TestDatabase::Backend::SqliteFile, dir.root(), u"staff.db"_s);
    QVERIFY(staff.exec(u"CREATE TABLE people (uid TEXT, cn TEXT, userPassword TEXT, mail TEXT)"_s));
    QVERIFY(staff.exec(u"INSERT INTO people VALUES ('wu', '吴', 'pw', 'wu@x.cn')"_s));
    const QString source = u"sqlite:"_s + staff.filePath();

    CtlRun run = velmarctl(dir, { source, u"--table"_s, u"nothing"_s });
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.err.contains(u"nothing"_s), qPrintable(run.err));
    run = velmarctl(dir, { source, u"--table"_s, u"people"_s, u"--map"_s, u"nickname=cn"_s });
    QCOMPARE(run.exitCode, 2);
    run = velmarctl(dir, { source, u"--table"_s, u"people"_s, u"--map"_s, u"userid=login"_s });
    QCOMPARE(run.exitCode, 1);
    QVERIFY2(run.err.contains(u"uid, cn, userPassword, mail"_s), qPrintable(run.err));

    // Guessed from uid, cn, userPassword and mail.
    run = velmarctl(dir, { source, u"--table"_s, u"people"_s });
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QCOMPARE(
        members(db), QStringList({ u"1 anna Anna pw1 0011 "_s, u"2 wu 吴 pw 0000 wu@x.cn"_s }));
}

QTEST_GUILESS_MAIN(TestVelmarCtlImport)
#include "tst_velmarctl_import.moc"
