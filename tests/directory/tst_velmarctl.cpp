#include "CRegistry.h"
#include "DirectoryFixture.h"
#include "ProfileFile.h"
#include "ServerDataFixture.h"
#include "ServerDataSet.h"
#include "ServerNotification.h"
#include "TempServerDir.h"
#include "TestDatabase.h"

#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkDatagram>
#include <QProcess>
#include <QTest>
#include <QUdpSocket>

using namespace Qt::StringLiterals;

namespace {

struct CtlRun
{
    int exitCode = -1;
    QByteArray out;
    QString err;
};

CtlRun velmarctl(const QStringList &arguments,
    const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(VELMARCTL_PATH), arguments);
    CtlRun run;
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return run;
    run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

QStringList dirArguments(TempServerDir &dir)
{
    return { u"--server-dir"_s, dir.programDir(), u"--registry-dir"_s, dir.registryDir() };
}

// The counts of populatedDatabase().
QJsonObject populatedCounts()
{
    return QJsonDocument::fromJson(R"({
        "members": {"regular": 5, "guest": 2, "total": 7, "index": 6},
        "groups": {"regular": 3, "guest": 2},
        "memberships": {"regular": 4, "guest": 2},
        "positions": 3, "defaultPosition": 2,
        "accessTokens": 3, "voipAccounts": 2,
        "pool": {"total": 4, "free": 2},
        "folders": 2, "groupRights": 2, "memberRights": 2,
        "notices": 2 })")
        .object();
}

} // namespace

// velmarctl as an administrator runs it, on temporary server folders.
class TestVelmarCtl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void load_data();
    void load();
    void accessFallback();
    void loadFailures_data();
    void loadFailures();
    void resave_data();
    void resave();
    void resaveFailure();
    void usage();
};

void TestVelmarCtl::load_data()
{
    QTest::addColumn<TestDatabase::Backend>("backend");
    QTest::addColumn<bool>("throughEnvironment");
    for (const TestDatabase::Backend backend : TestDatabase::availableBackends()) {
        const QString name = TestDatabase::backendName(backend);
        QTest::addRow("%s options", qPrintable(name)) << backend << false;
        QTest::addRow("%s environment", qPrintable(name)) << backend << true;
    }
}

void TestVelmarCtl::load()
{
    QFETCH(TestDatabase::Backend, backend);
    QFETCH(bool, throughEnvironment);
    TempServerDir dir;
    TestDatabase db(backend, dir.programDir());
    QVERIFY2(db.isValid(), qPrintable(db.errorString()));
    QVERIFY(db.writeConnectionString(dir.hives()));
    QVERIFY2(db.execAll(populatedDatabase()), qPrintable(db.errorString()));
    ProfileFile(dir.iniPath()).writeString(u"ServerInfo"_s, u"DefaultPositionID"_s, u"2"_s);
    const QString tracePath = dir.root() + u"/trace.sql"_s;

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QStringList arguments { u"load"_s, u"--sql-trace"_s, tracePath };
    if (throughEnvironment) {
        environment.insert(u"VELMAR_SERVER_DIR"_s, dir.programDir());
        environment.insert(u"VELMAR_REGISTRY_DIR"_s, dir.registryDir());
    } else {
        environment.remove(u"VELMAR_SERVER_DIR"_s);
        environment.remove(u"VELMAR_REGISTRY_DIR"_s);
        arguments += dirArguments(dir);
    }
    const CtlRun run = velmarctl(arguments, environment);
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QCOMPARE(run.err, QString());
    QCOMPARE(QJsonDocument::fromJson(run.out).object(), populatedCounts());

    const QStringList trace = readTrace(tracePath);
    QVERIFY(trace.size() > 10);
    QCOMPARE(trace.first(), u"SELECT COUNT(*) FROM Member"_s);
    QVERIFY2(trace.last().contains(u"FROM CONTENTS ORDER BY WRITEDATE DESC;"_s),
        qPrintable(trace.last()));
}

void TestVelmarCtl::accessFallback()
{
    // No ConnectionString: the local VelmarDB.mdb beside the console, and the
    // registry stays as it was.
    TempServerDir dir;
    TestDatabase db(TestDatabase::Backend::SqliteFile, dir.programDir());
    QVERIFY2(db.isValid(), qPrintable(db.errorString()));
    QVERIFY2(db.execAll(populatedDatabase()), qPrintable(db.errorString()));
    const CtlRun run = velmarctl(QStringList { u"load"_s } + dirArguments(dir));
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QCOMPARE(QJsonDocument::fromJson(run.out).object().value(u"notices"_s).toInt(), 2);
    QString value;
    QCOMPARE(readRegistryString(dir.hives(), RegistryRoot::LocalMachine,
                 u"SOFTWARE\\Velmar\\Services\\Database"_s, u"ConnectionString"_s, value),
        -1);
}

void TestVelmarCtl::loadFailures_data()
{
    QTest::addColumn<bool>("database");
    QTest::addColumn<QStringList>("expectedLines");
    QTest::newRow("no database") << false
                                 << QStringList { u"Desc - "_s, u"打开数据库时发生错误."_s };
    QTest::newRow("table missing") << true
                                   << QStringList { u"当读数据时发生错误."_s,
                                          u"velmarctl: reading notices failed: (80004005)"_s };
}

void TestVelmarCtl::loadFailures()
{
    QFETCH(bool, database);
    QFETCH(QStringList, expectedLines);
    TempServerDir dir;
    std::unique_ptr<TestDatabase> db;
    if (database) {
        db = std::make_unique<TestDatabase>(TestDatabase::Backend::SqliteFile, dir.programDir());
        QVERIFY2(db->isValid(), qPrintable(db->errorString()));
        QVERIFY(db->execAll(populatedDatabase()));
        QVERIFY(db->exec(u"DROP TABLE CONTENTS"_s));
    }
    const CtlRun run = velmarctl(QStringList { u"load"_s } + dirArguments(dir));
    QCOMPARE(run.exitCode, 1);
    QVERIFY(run.out.isEmpty());
    for (const QString &line : expectedLines)
        QVERIFY2(run.err.contains(line), qPrintable(run.err));
}

void TestVelmarCtl::resave_data()
{
    TestDatabase::addBackends();
}

void TestVelmarCtl::resave()
{
    VELMAR_BACKEND_DATABASE(db);
    QVERIFY(db.writeConnectionString(dir.hives()));
    QVERIFY2(db.execAll(populatedDatabase()), qPrintable(db.errorString()));
    ProfileFile(dir.iniPath()).writeString(u"GroupInfo"_s, u"Version"_s, u"0041"_s);
    const QString tracePath = dir.root() + u"/trace.sql"_s;
    const QStringList before = dumpDataSet(readBack(dir));
    QUdpSocket listener; // SERIAL: the fixed port of the server daemon
    QVERIFY(listener.bind(QHostAddress(QHostAddress::LocalHost), ServerNotification::ServerPort));

    const CtlRun run
        = velmarctl(QStringList { u"resave"_s, u"--sql-trace"_s, tracePath } + dirArguments(dir));
    QVERIFY2(run.exitCode == 0, qPrintable(run.err));
    QJsonObject expected = populatedCounts();
    expected.insert(u"defaultPosition"_s, -1);
    expected.insert(u"version"_s, 42);
    QCOMPARE(QJsonDocument::fromJson(run.out).object(), expected);
    QCOMPARE(
        ProfileFile(dir.iniPath()).readString(u"GroupInfo"_s, u"Version"_s, {}, 128), u"0042"_s);
    QVERIFY(listener.hasPendingDatagrams() || listener.waitForReadyRead(5000));
    QCOMPARE(listener.receiveDatagram().data(), ServerNotification::datagram(0x0DAC));

    // The load, then the whole save in its order, on the one trace. The
    // unchanged feature permissions are not rewritten.
    const QStringList trace = readTrace(tracePath);
    const auto at = [&](const QString &start) {
        for (int i = 0; i < trace.size(); ++i)
            if (trace[i].startsWith(start))
                return i;
        return -1;
    };
    const QList<int> order { at(u"SELECT COUNT(*) FROM Member"_s), at(u"SELECT OCONTENTSID"_s),
        at(u"DELETE FROM "_s), at(u"DELETE FROM Member where IsGuestMember=0"_s),
        at(u"UPDATE MEMBER SET MemberLevel"_s), at(u"DELETE FROM Rank"_s),
        at(u"DELETE FROM Folder"_s), at(u"UPDATE VoipNumberList"_s) };
    QVERIFY2(!order.contains(-1) && std::is_sorted(order.begin(), order.end()),
        qPrintable(trace.join(u'\n')));
    QCOMPARE(at(u"DELETE FROM AccessToken"_s), -1);
    QVERIFY(trace.last().startsWith(u"UPDATE VoipNumberList"_s));

    // Saved unchanged: the database reads back as before, the derived member
    // levels now written (gina is in both trees).
    QCOMPARE(dumpDataSet(readBack(dir)), before);
    QCOMPARE(db.scalar(u"SELECT MemberLevel FROM Member WHERE OMemberID = 4"_s).toInt(), 3);
    QCOMPARE(db.scalar(u"SELECT MemberLevel FROM Member WHERE OMemberID = 3"_s).isNull(), true);
}

void TestVelmarCtl::resaveFailure()
{
    // A group name with a quote reads fine but breaks its INSERT.
    TempServerDir dir;
    TestDatabase db(TestDatabase::Backend::SqliteFile, dir.programDir());
    QVERIFY2(db.isValid(), qPrintable(db.errorString()));
    QVERIFY(db.execAll(populatedDatabase()));
    QVERIFY(db.exec(u"UPDATE [Group] SET GroupName = 'O''Brien' WHERE OGroupID = 20"_s));
    QUdpSocket listener;
    QVERIFY(listener.bind(QHostAddress(QHostAddress::LocalHost), ServerNotification::ServerPort));

    const CtlRun run = velmarctl(QStringList { u"resave"_s } + dirArguments(dir));
    QCOMPARE(run.exitCode, 3);
    QVERIFY(run.out.isEmpty());
    QVERIFY2(run.err.contains(u"数据库发生错误."_s), qPrintable(run.err));
    QVERIFY2(run.err.contains(u"velmarctl: the save failed: (80004005)"_s), qPrintable(run.err));
    QCOMPARE(ProfileFile(dir.iniPath()).readString(u"GroupInfo"_s, u"Version"_s, u"absent"_s, 128),
        u"absent"_s);
    QVERIFY(!listener.hasPendingDatagrams());
}

void TestVelmarCtl::usage()
{
    for (const QStringList &arguments :
        { QStringList(), QStringList { u"save"_s }, QStringList { u"load"_s, u"--bogus"_s } }) {
        const CtlRun run = velmarctl(arguments);
        QCOMPARE(run.exitCode, 2);
        QVERIFY(!run.err.isEmpty());
    }
    const CtlRun help = velmarctl({ u"--help"_s });
    QCOMPARE(help.exitCode, 0);
    QVERIFY(help.out.contains("--sql-trace"));
}

QTEST_GUILESS_MAIN(TestVelmarCtl)
#include "tst_velmarctl.moc"
