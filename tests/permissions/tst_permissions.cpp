#include "AccessTokenTable.h"
#include "CAccessToken.h"
#include "DbConnection.h"
#include "SqlTrace.h"
#include "TempServerDir.h"
#include "TestDatabase.h"
#include "TracedConnection.h"
#include "VoipAccountPool.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

// The eight flags in table order, as written: "01011111".
QString flagsOf(const CAccessToken &token)
{
    QString flags;
    for (int f = 0; f < CAccessToken::FeatureCount; ++f)
        flags += QString::number(token.rawFlag(CAccessToken::Feature(f)));
    return flags;
}

const QString SelectTokens
    = u"SELECT \t\t\t\tOMemberID, MessageOn, ChatOn, FileTransferOn, TTSOn, "
      "VoiceToPhoneOn, OneToOneCallOn, SMSOn, VoipOn \t\t\tFROM AccessToken"_s;
const QString SelectAccounts
    = u"SELECT\t\t\t\t\t\t\t\t\t\t\t\t\t\t\tOMemberID, ID, Pass\t\t\t\t\t\t\t\t\tFROM VoipInfo"_s;

QString insertToken(int id, const QString &flags)
{
    QString values = u"'%1'"_s.arg(id);
    for (const QChar flag : flags)
        values += u",'%1'"_s.arg(flag);
    return u"INSERT INTO AccessToken \t\t\t\t(OMemberID, MessageOn, ChatOn, FileTransferOn, TTSOn, "
           "VoiceToPhoneOn, OneToOneCallOn, SMSOn, VoipOn) \t\t\tVALUES \t\t\t\t( "_s
        + values + u") "_s;
}

QString insertAccount(int id, const QString &voipId, const QString &password)
{
    return u"INSERT INTO VoipInfo \t\t\t\t(OMemberID, ID, Pass) \t\t\tVALUES \t\t\t\t( '"_s
        + QString::number(id) + u"', '"_s + voipId + u"', '"_s + password + u"') "_s;
}

const QString Defaults = u"11111110"_s;
const QString AllOn = u"11111111"_s;

} // namespace

class TestPermissions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Records and rules.
    void flagRule_data();
    void flagRule();
    void poolOperations();

    // Against the databases.
    void loadReadsBothTables_data() { TestDatabase::addSqliteFileBackend(); }
    void loadReadsBothTables();
    void saveWithoutChangeSendsNothing_data() { TestDatabase::addSqliteFileBackend(); }
    void saveWithoutChangeSendsNothing();
    void memberWithoutRowIsWrittenAfterAChange_data() { TestDatabase::addSqliteFileBackend(); }
    void memberWithoutRowIsWrittenAfterAChange();
    void roundTrip_data() { TestDatabase::addSqliteFileBackend(); }
    void roundTrip();
    void poolLoad_data() { TestDatabase::addSqliteFileBackend(); }
    void poolLoad();
    void poolSaveUpdatesExistingRowsOnly_data() { TestDatabase::addSqliteFileBackend(); }
    void poolSaveUpdatesExistingRowsOnly();
};

void TestPermissions::flagRule_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<int>("feature");
    QTest::addColumn<bool>("on");
    QTest::addColumn<QString>("after");
    const auto row
        = [](const char *name, const char *before, int feature, bool on, const char *after) {
              QTest::newRow(name) << QString::fromLatin1(before) << feature << on
                                  << QString::fromLatin1(after);
          };
    using T = CAccessToken;
    row("messages off clears file transfer", "11111111", T::MessageOn, false, "01011111");
    row("messages on leaves file transfer off", "00000000", T::MessageOn, true, "10000000");
    row("file transfer on sets messages", "00000000", T::FileTransferOn, true, "10100000");
    row("file transfer off leaves messages on", "11111111", T::FileTransferOn, false, "11011111");
    row("chat alone", "11111111", T::ChatOn, false, "10111111");
    row("voip alone", "00000000", T::VoipOn, true, "00000001");
    row("sms alone", "11111111", T::SMSOn, false, "11111101");
}

void TestPermissions::flagRule()
{
    QFETCH(QString, before);
    QFETCH(int, feature);
    QFETCH(bool, on);
    QFETCH(QString, after);
    AccessTokenTable table;
    for (int f = 0; f < CAccessToken::FeatureCount; ++f)
        table.ensureToken(7).setFlag(CAccessToken::Feature(f), before.at(f) == u'1');
    table.setFlag(7, CAccessToken::Feature(feature), on);
    QCOMPARE(flagsOf(*table.token(7)), after);
    QVERIFY(table.isModified());
}

void TestPermissions::poolOperations()
{
    // Free accounts taken in turn are the permission editor's to test.
    VoipAccountPool pool;
    QCOMPARE(pool.firstFree(), -1);
    pool.append({ u"8001"_s, u"a"_s, 3 });
    pool.append({ u"8002"_s, u"b"_s, 4 });
    pool.append({ u"8003"_s, u"c"_s, 0 });
    QVERIFY(pool.assign(2, 3));
    QCOMPARE(pool.releaseMember(3), 2);
    QCOMPARE(pool.firstFree(), 0);
    QCOMPARE(pool.accountsOf(3), QList<int> {});
    QCOMPARE(pool.entries().at(1).memberId, 4);
    QVERIFY(!pool.assign(3, 1));
    QVERIFY(!pool.assign(-1, 1));
    QCOMPARE(pool.indexOfVoipId(u"8004"_s), -1);
}

void TestPermissions::loadReadsBothTables()
{
    VELMAR_BACKEND_DATABASE(db);
    QVERIFY2(db.execAll({
                 u"INSERT INTO AccessToken VALUES (3, 1, 1, 1, 1, 1, 1, 1, 1)"_s,
                 u"INSERT INTO AccessToken VALUES (1, 0, 1, 0, 1, 0, 1, 0, 1)"_s,
                 // Any non-zero value is on; a later row for the same member wins.
                 u"INSERT INTO AccessToken VALUES (2, 1, 1, 1, 1, 1, 1, 1, 1)"_s,
                 u"INSERT INTO AccessToken VALUES (2, 5, 0, -1, 0, 0, 0, 0, 2)"_s,
                 // NULL flags are off; a row naming no member is not the console's.
                 u"INSERT INTO AccessToken (OMemberID, MessageOn) VALUES (4, 1)"_s,
                 u"INSERT INTO AccessToken (MessageOn) VALUES (1)"_s,
                 u"INSERT INTO VoipInfo VALUES (3, '8003', 'pw3')"_s,
                 u"INSERT INTO VoipInfo VALUES (1, NULL, NULL)"_s,
                 u"INSERT INTO VoipInfo VALUES (3, '8033', 'pw33')"_s,
             }),
        qPrintable(db.errorString()));

    TracedConnection traced(db, dir.filePath(u"trace.sql"_s));
    AccessTokenTable table;
    table.addMember(77, u"stale"_s, u"x"_s); // a load replaces everything
    table.load(traced.connection());

    QCOMPARE(traced.statements(), (QStringList { SelectTokens, SelectAccounts }));
    QVERIFY(!table.isModified());
    QCOMPARE(table.tokens().size(), size_t(4));
    QCOMPARE(flagsOf(*table.token(1)), u"01010101"_s);
    QCOMPARE(flagsOf(*table.token(2)), u"10100001"_s);
    QCOMPARE(flagsOf(*table.token(3)), AllOn);
    QCOMPARE(flagsOf(*table.token(4)), u"10000000"_s);
    QCOMPARE(table.voipAccounts().size(), size_t(2));
    QCOMPARE(*table.voipAccount(3), (VoipAccount { u"8033"_s, u"pw33"_s }));
    QCOMPARE(*table.voipAccount(1), VoipAccount());
}

void TestPermissions::saveWithoutChangeSendsNothing()
{
    VELMAR_BACKEND_DATABASE(db);
    QVERIFY(db.exec(u"INSERT INTO AccessToken VALUES (1, 1, 1, 1, 1, 1, 1, 1, 1)"_s));

    AccessTokenTable table;
    {
        TracedConnection traced(db, dir.filePath(u"load.sql"_s));
        table.load(traced.connection());
    }
    table.ensureRecords(1);
    table.ensureRecords(2); // shown without records: defaults, still no change

    TracedConnection traced(db, dir.filePath(u"save.sql"_s));
    table.save(traced.connection());
    QCOMPARE(traced.statements(), QStringList());
}

void TestPermissions::memberWithoutRowIsWrittenAfterAChange()
{
    VELMAR_BACKEND_DATABASE(db);
    QVERIFY(db.execAll({ u"INSERT INTO AccessToken VALUES (9, 1, 1, 1, 1, 1, 1, 1, 1)"_s,
        u"INSERT INTO VoipInfo VALUES (9, '8009', 'p9')"_s }));

    AccessTokenTable table;
    {
        DbConnection connection = db.connect();
        table.load(connection);
    }
    table.ensureRecords(5); // a member shown without any row
    table.setFlag(10, CAccessToken::MessageOn, false);

    TracedConnection traced(db, dir.filePath(u"save.sql"_s));
    table.save(traced.connection());
    QCOMPARE(traced.statements(),
        (QStringList {
            u"DELETE FROM AccessToken"_s,
            insertToken(5, Defaults),
            insertToken(9, AllOn),
            insertToken(10, u"01011110"_s),
            u"DELETE FROM VoipInfo"_s,
            insertAccount(5, {}, {}),
            insertAccount(9, u"8009"_s, u"p9"_s),
        }));
}

void TestPermissions::roundTrip()
{
    VELMAR_BACKEND_DATABASE(db);

    AccessTokenTable table;
    table.addMember(-3, u"8001"_s, u"密码"_s);
    table.addMember(2147483647, {}, u"semi;colon"_s);
    table.addMember(40, u"back\\slash"_s, {});
    table.setFlag(40, CAccessToken::TTSOn, false);
    table.setFlag(40, CAccessToken::OneToOneCallOn, false);
    DbConnection connection = db.connect();
    table.save(connection);

    AccessTokenTable reread;
    reread.load(connection);
    QCOMPARE(reread.tokens(), table.tokens());
    QCOMPARE(reread.voipAccounts(), table.voipAccounts());
}

void TestPermissions::poolLoad()
{
    VELMAR_BACKEND_DATABASE(db);
    QVERIFY(db.execAll({
        u"INSERT INTO VoipNumberList VALUES ('8001', 'a', 0)"_s,
        u"INSERT INTO VoipNumberList VALUES ('8002', 'b', 7)"_s,
        u"INSERT INTO VoipNumberList VALUES ('8003', NULL, NULL)"_s,
    }));

    TracedConnection traced(db, dir.filePath(u"load.sql"_s));
    VoipAccountPool pool;
    pool.append({ u"stale"_s, {}, 0 });
    int counted = -1;
    pool.load(traced.connection(), [&counted](int count) { counted = count; });

    QCOMPARE(traced.statements(),
        (QStringList { u"SELECT COUNT(*) FROM VoipNumberList"_s,
            u"SELECT VOIP_ID, VOIP_PASS, OMemberID FROM VoipNumberList"_s }));
    QCOMPARE(counted, 3);
    QCOMPARE(pool.entries(),
        (QList<VoipAccountPool::Entry> {
            { u"8001"_s, u"a"_s, 0 }, { u"8002"_s, u"b"_s, 7 }, { u"8003"_s, {}, 0 } }));
}

void TestPermissions::poolSaveUpdatesExistingRowsOnly()
{
    VELMAR_BACKEND_DATABASE(db);
    QVERIFY(db.execAll({
        u"INSERT INTO VoipNumberList VALUES ('8001', 'a', 0)"_s,
        u"INSERT INTO VoipNumberList VALUES ('8002', 'b', 7)"_s,
    }));

    VoipAccountPool pool;
    {
        DbConnection connection = db.connect();
        pool.load(connection);
    }
    pool.releaseMember(7);
    pool.assignFirstFree(12);
    pool.append({ u"9999"_s, u"z"_s, 3 }); // not a row of the table

    TracedConnection traced(db, dir.filePath(u"save.sql"_s));
    pool.save(traced.connection());
    QCOMPARE(traced.statements(),
        (QStringList { u"UPDATE VoipNumberList SET OMemberID = 12 WHERE VOIP_ID = '8001'"_s,
            u"UPDATE VoipNumberList SET OMemberID = 0 WHERE VOIP_ID = '8002'"_s,
            u"UPDATE VoipNumberList SET OMemberID = 3 WHERE VOIP_ID = '9999'"_s }));
    QCOMPARE(db.column(u"SELECT OMemberID FROM VoipNumberList ORDER BY VOIP_ID"_s),
        (QStringList { u"12"_s, u"0"_s }));
}

QTEST_GUILESS_MAIN(TestPermissions)
#include "tst_permissions.moc"
