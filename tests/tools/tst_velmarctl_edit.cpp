#include "ProfileFile.h"
#include "TempServerDir.h"
#include "TestDatabase.h"
#include "VelmarCtlTool.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The database and the server information file (version and default
// position) byte for byte: a run that saved nothing leaves both as they were.
QByteArray snapshot(TempServerDir &dir)
{
    return dir.readFile(u"VelmarDB.mdb"_s) + dir.readFile(u"Serverinfo.ini"_s);
}

// Every directory form, in an order where each line leans on the ones
// before it (a group added, then moved and filled).
const QString FullScript = u"velmarctl/full-script.txt"_s;

} // namespace

// A server folder with the organisation that velmarctl/organisation.sql describes.
#define SERVER(dir, db)                                                                            \
    TempServerDir dir;                                                                             \
    TestDatabase db(TestDatabase::Backend::SqliteFile, dir.programDir());                          \
    QVERIFY2(db.isValid(), qPrintable(db.errorString()));                                          \
    QVERIFY2(                                                                                      \
        db.execAll(sqlStatements(u"velmarctl/organisation.sql"_s)), qPrintable(db.errorString())); \
    QVERIFY(ProfileFile(dir.iniPath()).writeString(u"ServerInfo"_s, u"DefaultPositionID"_s, u"2"_s))

// velmarctl edit applying scripts to a real server folder and database.
class TestVelmarCtlEdit : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void script();
    void otherDataSets();
    void dryRun();
    void refusedLine_data();
    void refusedLine();
    void refusedSave();
    void oneLineForms();
    void access();
    void eitherListInEitherTree();
    void preview();
};

void TestVelmarCtlEdit::script()
{
    SERVER(dir, db);
    const CtlRun run = ctl(dir, { u"edit"_s, testDataPath(FullScript) });
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QCOMPARE(run.outText(),
        u"group /Sales/West 52\n"
        "member zoe 6\n"
        "member gwen 7\n"
        "position 顾问 4\n"
        "19 steps saved (version 1)\n"_s);
    QCOMPARE(dir.savedVersion(), u"0001"_s);
    // Written once the batch was saved.
    QCOMPARE(ProfileFile(dir.iniPath())
                 .readString(u"ServerInfo"_s, u"DefaultPositionID"_s, u"absent"_s, 32),
        u"4"_s);

    QCOMPARE(db.column(u"SELECT OGroupID || ' ' || GroupName || ' ' || OGroupID_P FROM [Group] "
                       "WHERE IsGuestGroup = 0 ORDER BY Depth, Position"_s),
        QStringList({ u"10 Sales -1"_s, u"52 West 10"_s, u"20 Head Office 10"_s }));
    QCOMPARE(db.rows(u"SELECT MemberID, MemberName, Passwd, Gender, bPublic, bSolar, bAdmin, "
                     "Email, BirthDay, HomePhone, IsGuestMember FROM Member "
                     "WHERE OMemberID IN (3, 6, 7) ORDER BY OMemberID"_s),
        QList<QVariantList>({
            { u"carl"_s, u"Carl C"_s, u"pw3"_s, 1, 1, 1, 1, u""_s, u""_s, u"123"_s, 0 },
            { u"zoe"_s, u"Zoe Z"_s, u"pz"_s, 0, 1, 0, 0, u"z@x.cn"_s, u"1990-05-06"_s, u""_s, 0 },
            { u"gwen"_s, u""_s, u"pg"_s, 1, 0, 1, 1, u""_s, u""_s, u""_s, 1 },
        }));
    QCOMPARE(db.count(u"Member"_s, u"OMemberID IN (2, 5)"_s), 0);
    // zoe with the new default, carl without a position beside his HQ
    // membership, anna in no group;
    // bert's and gus's relations went with them.
    QCOMPARE(db.column(u"SELECT OMemberID || '@' || OGroupID || ':' || ORankID FROM Relation "
                       "ORDER BY OMemberID, OGroupID"_s),
        QStringList({ u"3@20:1"_s, u"3@52:-1"_s, u"4@50:1"_s, u"6@52:4"_s, u"7@51:4"_s }));
    QCOMPARE(db.column(u"SELECT ORankID || ' ' || RankName FROM Rank"_s),
        QStringList({ u"1 职员"_s, u"4 顾问"_s, u"3 董事"_s }));
}

void TestVelmarCtlEdit::otherDataSets()
{
    SERVER(dir, db);
    const CtlRun run = ctl(dir, { u"edit"_s, u"-"_s },
        "permission set anna sms=off file=on\n"
        "permission set /Sales/East chat=off\n"
        "voip set carl 9001 s1\n"
        "voip assign\n"
        "folder add 'D:\\Share'\n"
        "right set 'D:\\Share' group /Sales write\n"
        "right set 'D:\\Share' member carl read\n"
        "folder remove share\n"
        "notice delete 100\n");
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    // The pool's one free account went to anna, the first member without one.
    QCOMPARE(run.outText(),
        u"voip assign: 1 assigned, 3 left without an account\n"
        "folder D:\\Share 2\n"
        "9 steps saved (version 1)\n"_s);
    QCOMPARE(db.column(u"SELECT OMemberID || ':' || MessageOn || ChatOn || FileTransferOn || TTSOn "
                       "|| VoiceToPhoneOn || OneToOneCallOn || SMSOn || VoipOn FROM AccessToken "
                       "WHERE OMemberID IN (1, 2) ORDER BY OMemberID"_s),
        QStringList({ u"1:11111101"_s, u"2:10111110"_s }));
    QCOMPARE(db.column(u"SELECT OMemberID || ' ' || ID || ' ' || Pass FROM VoipInfo "
                       "WHERE OMemberID IN (1, 3) ORDER BY OMemberID"_s),
        QStringList({ u"1 v1 p1"_s, u"3 9001 s1"_s }));
    QCOMPARE(db.column(u"SELECT OFolderID || ' ' || FolderPath FROM Folder"_s),
        QStringList { u"2 D:\\\\Share"_s });
    QCOMPARE(db.column(u"SELECT OGroupID || Authority FROM GroupAuthority WHERE OFolderID = 2"_s),
        QStringList { u"10W"_s });
    QCOMPARE(db.column(u"SELECT OMemberID || Authority FROM UserAuthority WHERE OFolderID = 2"_s),
        QStringList { u"3R"_s });
    QCOMPARE(db.column(u"SELECT OCONTENTSID FROM CONTENTS"_s), QStringList { u"101"_s });
}

void TestVelmarCtlEdit::dryRun()
{
    SERVER(dir, db);
    const QByteArray before = snapshot(dir);
    // The script from standard input.
    const CtlRun run = ctl(dir, { u"edit"_s, u"--dry-run"_s }, testData(FullScript));
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    // What each step would do, in the editors' words, and nothing saved.
    QCOMPARE(run.outText(), QString::fromUtf8(testData(u"velmarctl/full-script.dry-run.txt"_s)));
    QCOMPARE(snapshot(dir), before);
}

void TestVelmarCtlEdit::refusedLine_data()
{
    QTest::addColumn<QByteArray>("line"); // the third line, after two good ones
    QTest::addColumn<QString>("error");
    // The editors' designed texts are the editors' to test; one shows velmarctl reports them.
    QTest::newRow("user ID in the guest list")
        << QByteArray("member add gina --password x") << u"用户已存在."_s;
    // The applier's own: a member is left with a password.
    QTest::newRow("empty password")
        << QByteArray("member add dana --name Dana") << u"用户密码错误."_s;
    // Lookups.
    QTest::newRow("unknown member")
        << QByteArray("place /HQ anna nobody") << u"no member with the user ID nobody"_s;
    QTest::newRow("unknown group")
        << QByteArray("group rename /Sales/West X") << u"no group /Sales/West"_s;
    QTest::newRow("not placed there")
        << QByteArray("unplace /HQ anna") << u"anna is not placed directly under /HQ"_s;
    QTest::newRow("unknown folder")
        << QByteArray("right set nowhere member anna read") << u"no folder nowhere"_s;
    QTest::newRow("unknown notice") << QByteArray("notice delete 101 7") << u"no notice 7"_s;
    // The parse (tst_editscript has its refusals), before anything is loaded.
    QTest::newRow("unknown word") << QByteArray("memeber add dora")
                                  << u"unknown command: memeber"_s;
}

void TestVelmarCtlEdit::refusedLine()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, error);
    SERVER(dir, db);
    const QByteArray before = snapshot(dir);
    // Accepted lines before the refused one, the default position among
    // them: none of it reaches the database or the server information file.
    const QByteArray script
        = "position default 总监\n\nmember add dora --password x\n" + line + "\nplace /HQ dora\n";
    for (const bool dryRun : { false, true }) {
        const QStringList dryRunOption = dryRun ? QStringList { u"--dry-run"_s } : QStringList();
        const CtlRun run = ctl(dir, QStringList { u"edit"_s, u"-"_s } + dryRunOption, script);
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(run.err, u"line 4: "_s + error + u'\n');
        QCOMPARE(snapshot(dir), before);
    }
}

void TestVelmarCtlEdit::refusedSave()
{
    SERVER(dir, db);
    const QByteArray before = snapshot(dir);
    const CtlRun run
        = ctl(dir, { u"edit"_s, u"-"_s }, "position default 总监\ngroup add \"/O'Brien\"\n");
    QCOMPARE(run.exitCode, 2);
    QCOMPARE(run.err,
        u"以下内容含有数据库不能保存的字符(如单引号)，什么都没有保存。请修改后再保存:\n"
        "类别 /O'Brien\n"_s);
    QCOMPARE(snapshot(dir), before);
}

void TestVelmarCtlEdit::oneLineForms()
{
    SERVER(dir, db);
    // velmarctl's own options before, among and after the command's words;
    // the word after a text option is its value, whatever it looks like.
    CtlRun run = ctl(dir,
        { u"--dry-run"_s, u"member"_s, u"add"_s, u"dora"_s, u"--name"_s, u"--timings"_s,
            u"--password"_s, u"x"_s });
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QCOMPARE(run.outText(), u"member dora 6\n添加用户 dora\n1 steps (dry run, nothing saved)\n"_s);
    QCOMPARE(db.count(u"Member"_s, u"MemberID = 'dora'"_s), 0);

    run = velmarctl(dirArguments(dir)
        + QStringList { u"member"_s, u"add"_s, u"dora"_s, u"--name"_s, u"--timings"_s,
            u"--password"_s, u"x"_s });
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QCOMPARE(run.outText(), u"member dora 6\n1 steps saved (version 1)\n"_s);
    QCOMPARE(db.column(u"SELECT MemberName FROM Member WHERE MemberID = 'dora'"_s),
        QStringList { u"--timings"_s });
}

void TestVelmarCtlEdit::access()
{
    // Sales and bert on share; a right of a group that no longer exists.
    SERVER(dir, db);
    QVERIFY(db.execAll({
        u"INSERT INTO GroupAuthority (OFolderID, OGroupID, Authority) VALUES (1,10,'W')"_s,
        u"INSERT INTO GroupAuthority (OFolderID, OGroupID, Authority) VALUES (1,77,'R')"_s,
        u"INSERT INTO UserAuthority (OFolderID, OMemberID, Authority) VALUES (1,2,'R')"_s,
    }));
    CtlRun run = ctl(dir, { u"access"_s, u"member"_s, u"bert"_s });
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QCOMPARE(run.outText(), u"share\t只读\t本人权限\nshare\t读/写\t类别 /Sales\n"_s);
    run = ctl(dir, { u"access"_s, u"folder"_s, u"share"_s, u"--format"_s, u"json"_s });
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QCOMPARE(run.outText(),
        u"[\"bert\",\"Bert\",\"只读\",\"本人权限\"]\n"
        "[\"anna\",\"Anna\",\"读/写\",\"类别 /Sales\"]\n"
        "[\"bert\",\"Bert\",\"读/写\",\"类别 /Sales\"]\n"_s);
    run = ctl(dir, { u"access"_s, u"member"_s, u"nobody"_s });
    QCOMPARE(run.exitCode, 7);
    QCOMPARE(run.err, u"velmarctl: no member has the user ID nobody\n"_s);
    run = ctl(dir, { u"access"_s, u"group"_s, u"x"_s });
    QCOMPARE(run.exitCode, 2);
}

void TestVelmarCtlEdit::eitherListInEitherTree()
{
    SERVER(dir, db);
    // "-" is standard input; a guest member goes into the organisation and a
    // regular one into the guest tree, as a drop in the console puts them.
    CtlRun run = ctl(dir, { u"edit"_s, u"-"_s }, "place /HQ gus\nplace guest:/Forum carl\n");
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QCOMPARE(
        db.column(u"SELECT OMemberID || '@' || OGroupID || ':' || IsGuestRelation FROM Relation "
                  "WHERE OMemberID IN (3, 5) ORDER BY OMemberID, OGroupID"_s),
        QStringList({ u"3@20:0"_s, u"3@50:1"_s, u"5@20:0"_s, u"5@51:1"_s }));
    // What a delete takes out of which tree is the editor's to test.
}

void TestVelmarCtlEdit::preview()
{
    SERVER(dir, db);
    QVERIFY2(ctl(dir, { u"resave"_s }).exitCode == 0, "resave");
    const QByteArray before = snapshot(dir);
    const QByteArray script
        = "group add /Sales/West\ngroup rename /HQ Office\nmember delete bert\n";
    CtlRun run = ctl(dir, { u"edit"_s, u"--preview"_s }, script);
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QCOMPARE(run.outText(),
        u"group /Sales/West 52\n"
        "[Group]: +1 -0 ~1\n"
        "Member: +0 -1 ~0\n"
        "Relation: +0 -1 ~0\n"
        "(preview, nothing saved)\n"_s);
    run = ctl(dir, { u"edit"_s, u"--preview-rows"_s }, script);
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    // The rows' form is the save preview's to test.
    QVERIFY2(run.outText().contains(u"  ~ 20 (GroupName: HQ → Office)\n"_s), run.out.constData());
    QCOMPARE(snapshot(dir), before);
}

QTEST_GUILESS_MAIN(TestVelmarCtlEdit)
#include "tst_velmarctl_edit.moc"
