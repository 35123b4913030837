// The start-up questions about a save that never finished, answered through
// the message seam on a real SQLite server folder: which questions come in
// which order, and what each answer leaves in the database and the folder.

#include "DbSession.h"
#include "ProfileFile.h"
#include "SaveJournal.h"
#include "SaveRecovery.h"
#include "ScriptedMessageService.h"
#include "ServerDataFixture.h"
#include "TempServerDir.h"
#include "TestDatabase.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString pendingEnd
    = u")没有完成，数据库中的数据可能不完整。\r\n\r\n是: 现在完成上次的保存(推荐)\r\n"
      "否: 放弃上次的保存\r\n取消: 退出程序"_s;
const QString confirmDiscard
    = u"放弃后，数据库将保持现在可能不完整的状态，上次保存的内容无法恢复。\r\n"
      "确定要放弃上次的保存吗?"_s;

enum class Kind { Replayable, Failing, OtherDatabase, Corrupt };

} // namespace

Q_DECLARE_METATYPE(Kind)

class TestSaveRecovery : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void questions_data();
    void questions();
};

void TestSaveRecovery::questions_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QList<int>>("answers");
    QTest::addColumn<QStringList>(
        "asked"); // "pending", "confirm", "failed", "other", "corrupt", "done"
    QTest::addColumn<bool>("loads");
    QTest::addColumn<bool>("replayed");
    const int yes = MessageService::Yes;
    const int no = MessageService::No;
    const int cancel = MessageService::Cancel;
    const int ok = MessageService::Ok;
    QTest::newRow("finish") << Kind::Replayable << QList<int> { yes, ok }
                            << QStringList { u"pending"_s, u"done"_s } << true << true;
    QTest::newRow("quit") << Kind::Replayable << QList<int> { cancel }
                          << QStringList { u"pending"_s } << false << false;
    QTest::newRow("discard") << Kind::Replayable << QList<int> { no, yes }
                             << QStringList { u"pending"_s, u"confirm"_s } << true << false;
    QTest::newRow("discard not confirmed, then finish")
        << Kind::Replayable << QList<int> { no, no, yes, ok }
        << QStringList { u"pending"_s, u"confirm"_s, u"pending"_s, u"done"_s } << true << true;
    QTest::newRow("replay fails, quit")
        << Kind::Failing << QList<int> { yes, no } << QStringList { u"pending"_s, u"failed"_s }
        << false << false;
    QTest::newRow("replay fails, discard")
        << Kind::Failing << QList<int> { yes, yes, yes }
        << QStringList { u"pending"_s, u"failed"_s, u"confirm"_s } << true << false;
    QTest::newRow("replay fails, discard not confirmed, quit")
        << Kind::Failing << QList<int> { yes, yes, no, no }
        << QStringList { u"pending"_s, u"failed"_s, u"confirm"_s, u"failed"_s } << false << false;
    QTest::newRow("other database, discard")
        << Kind::OtherDatabase << QList<int> { yes, yes }
        << QStringList { u"other"_s, u"confirm"_s } << true << false;
    QTest::newRow("other database, quit")
        << Kind::OtherDatabase << QList<int> { no } << QStringList { u"other"_s } << false << false;
    QTest::newRow("corrupt, discard")
        << Kind::Corrupt << QList<int> { yes, yes } << QStringList { u"corrupt"_s, u"confirm"_s }
        << true << false;
    QTest::newRow("corrupt, quit")
        << Kind::Corrupt << QList<int> { no } << QStringList { u"corrupt"_s } << false << false;
}

void TestSaveRecovery::questions()
{
    QFETCH(Kind, kind);
    QFETCH(QList<int>, answers);
    QFETCH(QStringList, asked);
    QFETCH(bool, loads);
    QFETCH(bool, replayed);
    VELMAR_SQLITE_DATABASE(db);
    QVERIFY(db.writeConnectionString(dir.hives()));
    QVERIFY(db.execAll(populatedDatabase()));
    ScriptedMessageService messages;
    DbSession session(dir.hives(), dir.iniPath(), dir.databasePath(), messages);

    // The journal of a save that renames every position and bumps the version.
    const QString path = SaveJournal::pathFor(dir.iniPath());
    SaveJournal journal;
    journal.setConnectionString(kind == Kind::OtherDatabase
            ? u"DRIVER={PostgreSQL Unicode};SERVER=db2;DATABASE=velmar;UID=a;PWD=secret;"_s
            : session.connectionString());
    journal.setNotifyPorts({});
    journal.addStep(u"Positions"_s);
    journal.addStatement(u"DELETE FROM Rank"_s);
    journal.addStatement(u"INSERT INTO Rank (ORankID,RankName) VALUES  ('1' ,'新')"_s);
    if (kind == Kind::Failing)
        journal.addStatement(u"INSERT INTO NoSuchTable (A) VALUES ('1')"_s);
    journal.addProfileWrite(u"GroupInfo"_s, u"Version"_s, u"0007"_s);
    QVERIFY(journal.write(path));
    if (kind == Kind::Corrupt) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::Append));
        file.write("Q DELETE FROM Member\n");
    }
    for (const int answer : answers)
        messages.queueAnswer(answer);

    SaveRecovery recovery(session, messages, dir.iniPath());
    recovery.setPause([](int) {});
    const SaveRecovery::Decision decision = recovery.runInteractive();

    QCOMPARE(decision, loads ? SaveRecovery::Decision::Load : SaveRecovery::Decision::Quit);
    const QList<MessageService::Box> boxes = messages.boxes();
    QCOMPARE(boxes.size(), asked.size());
    for (int i = 0; i < asked.size(); ++i) {
        const QString &text = boxes[i].text;
        if (asked[i] == u"pending"_s) {
            QVERIFY(text.startsWith(u"上次的保存("_s) && text.endsWith(pendingEnd));
            QCOMPARE(boxes[i].buttons, MessageService::Buttons::YesNoCancel);
        } else if (asked[i] == u"confirm"_s) {
            QCOMPARE(text, confirmDiscard);
            QCOMPARE(boxes[i].buttons, MessageService::Buttons::YesNo);
        } else if (asked[i] == u"failed"_s) {
            // The statement and the database's own error are named.
            QVERIFY2(
                text.startsWith(
                    u"完成上次的保存时数据库发生错误。\r\n语句: INSERT INTO NoSuchTable (A) VALUES ('1')\r\n(80004005) "_s),
                qPrintable(text));
            QVERIFY(text.contains(u"NoSuchTable"_s));
            QVERIFY(text.endsWith(u"是否放弃上次的保存? (否: 退出程序，下次启动时再试)"_s));
        } else if (asked[i] == u"other"_s) {
            QCOMPARE(text,
                u"上次没有完成的保存属于另一个数据库:\r\n"
                "DRIVER={PostgreSQL Unicode};SERVER=db2;DATABASE=velmar;UID=a;PWD=******;\r\n"
                "现在设置的数据库:\r\n%1\r\n\r\n"
                "这次保存不能在现在的数据库上完成。是否放弃上次的保存? (否: 退出程序)"_s.arg(
                    session.connectionString()));
        } else if (asked[i] == u"corrupt"_s) {
            QVERIFY2(text.startsWith(u"上次保存的记录文件已损坏，不能用来完成保存:\r\n"_s),
                qPrintable(text));
            QVERIFY(text.endsWith(u"是否放弃这个记录文件? (否: 退出程序)"_s));
        } else if (asked[i] == u"done"_s) {
            QCOMPARE(text, u"上次没有完成的保存已经完成。"_s);
        }
    }

    // Replayed: every statement ran and the version was written; anything
    // else leaves the database as it was. The journal stays only on quitting.
    // A failing replay keeps what ran before the failing statement.
    const QStringList renamed { u"新"_s };
    const QStringList original { u"职员"_s, u"经理"_s, u"总监"_s };
    QCOMPARE(db.column(u"SELECT RankName FROM Rank ORDER BY ORankID"_s),
        replayed || kind == Kind::Failing ? renamed : original);
    QCOMPARE(dir.savedVersion(), replayed ? u"0007"_s : u"absent"_s);
    QCOMPARE(QFile::exists(path), !loads);
}

QTEST_GUILESS_MAIN(TestSaveRecovery)
#include "tst_saverecovery.moc"
