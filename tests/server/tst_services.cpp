#include "ProgramLauncher.h"
#include "ScriptedServiceManager.h"
#include "ServerServices.h"
#include "ServiceControl.h"
#include "TempServerDir.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

// A script names only what differs from a plain stopped service.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace {
using Script = ScriptedServiceManager::Script;

const QString ProgramDir = u"/srv/velmar"_s;

const QStringList AllEight = { u"VelmarD"_s, u"GroupD"_s, u"VelmarboxServerManager"_s, u"RelayD"_s,
    u"CheckD"_s, u"FileDispatchD"_s, u"FileSessionD"_s, u"ChatD"_s };

struct Fixture
{
    ScriptedServiceManager manager;
    ServiceControl control { manager, manager.clock(), manager.launcher(), ProgramDir };
    ServerServices services { control };
};

class Recorder final : public ServerServices::Observer
{
public:
    void starting(const QString &name) override { events.append(u"starting "_s + name); }
    void started(const QString &name, bool ok) override
    {
        events.append(u"started %1 %2"_s.arg(name, ok ? u"ok"_s : u"failed"_s));
    }
    QStringList events;
};

QStringList prefixed(const QString &word, const QStringList &names)
{
    QStringList result;
    for (const QString &name : names)
        result.append(word + u' ' + name);
    return result;
}
} // namespace

// The service layer against a scripted manager: the real one cannot be told
// to freeze a check-point or to forget a service. tst_services_systemd runs the
// same classes against a real systemd.
class TestServices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pollInterval_data()
    {
        QTest::addColumn<quint32>("hint");
        QTest::addColumn<quint32>("start");
        QTest::addColumn<quint32>("stop");
        QTest::newRow("no hint") << 0u << 1000u << 1000u;
        QTest::newRow("short hint") << 5000u << 1000u << 1000u;
        QTest::newRow("inside the range") << 30000u << 3000u << 3000u;
        QTest::newRow("start's bound") << 50000u << 5000u << 5000u;
        QTest::newRow("between the bounds") << 80000u << 5000u << 8000u;
        QTest::newRow("long hint") << 4000000000u << 5000u << 10000u;
    }

    void pollInterval()
    {
        QFETCH(quint32, hint);
        QFETCH(quint32, start);
        QFETCH(quint32, stop);
        QCOMPARE(ServiceControl::pollInterval(hint, ServiceControl::StartPollMaximum), start);
        QCOMPARE(ServiceControl::pollInterval(hint, ServiceControl::StopPollMaximum), stop);
    }

    void startPolling_data()
    {
        QTest::addColumn<int>("pendingQueries");
        QTest::addColumn<bool>("progress");
        QTest::addColumn<quint32>("waitHint");
        QTest::addColumn<quint32>("stateAfterStart");
        QTest::addColumn<bool>("result");
        QTest::addColumn<QStringList>("sleeps");

        // The first answer after the request is pending; each further pending answer costs a sleep.
        QTest::newRow("running at once") << 0 << true << 0u << 4u << true << QStringList();
        QTest::newRow("progress, hint / 10")
            << 3 << true << 30000u << 4u << true
            << QStringList { u"sleep 3000"_s, u"sleep 3000"_s, u"sleep 3000"_s };
        // Progress restarts the clock: eight seconds in all, never more than
        // the 2-second hint without a new check-point.
        QTest::newRow("slow but progressing")
            << 8 << true << 2000u << 4u << true << QStringList(8, u"sleep 1000"_s);
        // No progress: abandoned once more than the hint has passed.
        QTest::newRow("frozen check-point")
            << -1 << false << 3000u << 4u << false << QStringList(4, u"sleep 1000"_s);
        QTest::newRow("comes up and dies")
            << 2 << true << 0u << 1u << false << QStringList(2, u"sleep 1000"_s);
    }

    void startPolling()
    {
        QFETCH(int, pendingQueries);
        QFETCH(bool, progress);
        QFETCH(quint32, waitHint);
        QFETCH(quint32, stateAfterStart);
        QFETCH(bool, result);
        QFETCH(QStringList, sleeps);

        Fixture f;
        Script script { .waitHint = waitHint,
            .pendingQueries = pendingQueries,
            .progress = progress,
            .stateAfterStart = stateAfterStart };
        f.manager.setScript(u"GroupD"_s, script);
        QCOMPARE(f.control.StartServiceAndWait(u"GroupD"_s), result);
        QCOMPARE(f.manager.journal({ u"sleep"_s }), sleeps);
        QCOMPARE(f.manager.journal({ u"start"_s }), QStringList { u"start GroupD"_s });

        // A refused start request is a failure without any polling.
        Fixture refused;
        script.failStart = true;
        refused.manager.setScript(u"GroupD"_s, script);
        QVERIFY(!refused.control.StartServiceAndWait(u"GroupD"_s));
        QVERIFY(refused.manager.journal({ u"sleep"_s }).isEmpty());
    }

    void stopPollsUpToTenSeconds()
    {
        Fixture f;
        f.manager.setScript(u"ChatD"_s,
            { .state = ServiceManager::Running, .waitHint = 300000, .pendingQueries = 2 });
        QVERIFY(f.control.StopServiceAndWait(u"ChatD"_s));
        QCOMPARE(f.manager.journal({ u"sleep"_s }), QStringList(2, u"sleep 10000"_s));
        QVERIFY(!f.control.IsServiceRunning(u"ChatD"_s));

        // Frozen in stop-pending: given up after its hint, the stop failed.
        f.manager.setScript(u"ChatD"_s,
            { .state = ServiceManager::Running,
                .waitHint = 25000,
                .pendingQueries = -1,
                .progress = false });
        f.manager.clearJournal();
        QVERIFY(!f.control.StopServiceAndWait(u"ChatD"_s));
        QCOMPARE(f.manager.journal({ u"sleep"_s }), QStringList(11, u"sleep 2500"_s));
    }

    void unreachableAndUnknown()
    {
        Fixture f;
        f.manager.setScript(u"RelayD"_s, { .known = false });
        // A service the manager does not know: not running, but starting and
        // stopping it succeed, and nothing is asked of the manager.
        QVERIFY(!f.control.IsServiceRunning(u"RelayD"_s));
        QVERIFY(f.control.StartServiceAndWait(u"RelayD"_s));
        QVERIFY(f.control.StopServiceAndWait(u"RelayD"_s));
        QCOMPARE(f.control.queryState(u"RelayD"_s), ServiceControl::State::NotInstalled);
        QCOMPARE(ServiceControl::stateText(f.control.queryState(u"RelayD"_s)), u"未注册"_s);

        f.manager.setRunning({ u"VelmarD"_s });
        f.manager.setReachable(false);
        QVERIFY(!f.control.IsServiceRunning(u"VelmarD"_s));
        QVERIFY(f.control.StartServiceAndWait(u"GroupD"_s));
        QVERIFY(f.control.StopServiceAndWait(u"VelmarD"_s));
        QCOMPARE(f.control.queryState(u"VelmarD"_s), ServiceControl::State::Unreachable);
        QVERIFY(f.manager.journal({ u"start"_s, u"stop"_s }).isEmpty());

        // Nothing reachable: the stop command is greyed, the start command is
        // offered and runs without reaching anything.
        QVERIFY(f.services.isStartEnabled());
        QVERIFY(!f.services.isStopEnabled());
        QCOMPARE(f.services.StartAllServices(), ServerServices::StartOutcome::Ran);
        QVERIFY(!f.services.startInProgress());
    }

    void startAllOrder()
    {
        Fixture f;
        Recorder recorder;
        QCOMPARE(f.services.StartAllServices(&recorder), ServerServices::StartOutcome::Ran);
        QCOMPARE(f.manager.journal({ u"start"_s }),
            prefixed(u"start"_s,
                { u"VelmarD"_s, u"GroupD"_s, u"RelayD"_s, u"FileDispatchD"_s, u"FileSessionD"_s,
                    u"ChatD"_s, u"VelmarboxServerManager"_s, u"CheckD"_s }));
        for (const QString &name : AllEight)
            QVERIFY2(f.manager.isRunning(name), qPrintable(name));
        QCOMPARE(recorder.events.first(), u"starting VelmarD"_s);
        QCOMPARE(recorder.events.last(), u"started CheckD ok"_s);
        QVERIFY(!f.services.startInProgress());
    }

    // A start that hangs fails like these once the polling gives it up (startPolling).
    void startAllSkipsRunningAndGoesOnAfterFailures()
    {
        Fixture f;
        f.manager.setRunning({ u"GroupD"_s, u"CheckD"_s });
        f.manager.setScript(u"RelayD"_s, { .failStart = true });
        f.manager.setScript(
            u"VelmarD"_s, { .pendingQueries = 1, .stateAfterStart = ServiceManager::Stopped });

        Recorder recorder;
        QCOMPARE(f.services.StartAllServices(&recorder), ServerServices::StartOutcome::Ran);
        QCOMPARE(f.manager.journal({ u"start"_s }),
            prefixed(u"start"_s,
                { u"VelmarD"_s, u"RelayD"_s, u"FileDispatchD"_s, u"FileSessionD"_s, u"ChatD"_s,
                    u"VelmarboxServerManager"_s }));
        QVERIFY(recorder.events.contains(u"started VelmarD failed"_s));
        QVERIFY(recorder.events.contains(u"started RelayD failed"_s));
        QVERIFY(recorder.events.contains(u"started ChatD ok"_s));
        QCOMPARE(ServerServices::startFailureText(u"RelayD"_s), u"RelayD 服务运行失败."_s);
    }

    void startAllGuards()
    {
        // Every daemon up: nothing to do, and the command is greyed.
        Fixture all;
        all.manager.setRunning(AllEight);
        QVERIFY(!all.services.isStartEnabled());
        QCOMPARE(all.services.StartAllServices(), ServerServices::StartOutcome::AllRunning);
        QVERIFY(all.manager.journal({ u"start"_s }).isEmpty());

        // A second start while the first is under way returns at once; once the
        // first has ended the flag is down again.
        Fixture f;
        ServerServices::StartOutcome second = ServerServices::StartOutcome::Ran;
        int calls = 0;
        f.manager.setBeforeRequest([&](const QString &, const QString &) {
            if (calls++ == 0) {
                QVERIFY(f.services.startInProgress());
                second = f.services.StartAllServices();
            }
        });
        QCOMPARE(f.services.StartAllServices(), ServerServices::StartOutcome::Ran);
        QCOMPARE(second, ServerServices::StartOutcome::AlreadyInProgress);
        QCOMPARE(f.manager.journal({ u"start"_s }).size(), 8);
        QVERIFY(!f.services.startInProgress());

        // An exception out of a request still lowers the flag.
        Fixture thrown;
        thrown.manager.setBeforeRequest(
            [](const QString &, const QString &) { throw std::runtime_error("lost"); });
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, thrown.services.StartAllServices());
        QVERIFY(!thrown.services.startInProgress());
    }

    void stopAllOrder()
    {
        Fixture f;
        f.manager.setRunning(AllEight);
        f.services.StopAllServices();
        QCOMPARE(f.manager.journal({ u"stop"_s, u"launch"_s }),
            (QStringList { u"stop CheckD"_s, u"launch pskill ChatD"_s, u"stop ChatD"_s,
                u"stop VelmarD"_s, u"stop GroupD"_s, u"stop RelayD"_s, u"stop FileDispatchD"_s,
                u"stop FileSessionD"_s, u"stop VelmarboxServerManager"_s }));
        for (const QString &name : AllEight)
            QVERIFY2(!f.manager.isRunning(name), qPrintable(name));

        // Only what runs is stopped; pskill is launched whatever runs; a failed
        // stop does not end the sequence.
        Fixture some;
        some.manager.setRunning({ u"GroupD"_s, u"FileSessionD"_s, u"RelayD"_s });
        some.manager.setScript(u"GroupD"_s, { .state = ServiceManager::Running, .failStop = true });
        some.services.StopAllServices();
        QCOMPARE(some.manager.journal({ u"stop"_s, u"launch"_s }),
            (QStringList { u"launch pskill ChatD"_s, u"stop GroupD"_s, u"stop RelayD"_s,
                u"stop FileSessionD"_s }));
    }

    void enableStates_data()
    {
        QTest::addColumn<QStringList>("running");
        QTest::addColumn<bool>("start");
        QTest::addColumn<bool>("stop");
        QTest::newRow("nothing") << QStringList() << true << false;
        QTest::newRow("everything") << AllEight << false << true;
        QStringList withoutCheckD = AllEight;
        withoutCheckD.removeOne(u"CheckD"_s);
        QTest::newRow("all but CheckD") << withoutCheckD << false << true;
        QStringList withoutChatD = AllEight;
        withoutChatD.removeOne(u"ChatD"_s);
        QTest::newRow("all but ChatD") << withoutChatD << true << true;
        // These four do not count for the stop command.
        QTest::newRow("only the uncounted four")
            << QStringList { u"CheckD"_s, u"ChatD"_s, u"FileSessionD"_s, u"FileDispatchD"_s }
            << true << false;
        QTest::newRow("only RelayD") << QStringList { u"RelayD"_s } << true << true;
        QTest::newRow("only VelmarboxServerManager")
            << QStringList { u"VelmarboxServerManager"_s } << true << true;
    }

    void enableStates()
    {
        QFETCH(QStringList, running);
        QFETCH(bool, start);
        QFETCH(bool, stop);
        Fixture f;
        f.manager.setRunning(running);
        QCOMPARE(f.services.isStartEnabled(), start);
        QCOMPARE(f.services.isStopEnabled(), stop);
    }

    void registration()
    {
        Fixture f;
        for (const QString &name : { u"ChatD"_s, u"CheckD"_s, u"GroupD"_s })
            f.manager.setScript(name, { .known = false });
        f.services.EnsureServicesRegistered();
        const QString in = u" /service in "_s + ProgramDir;
        // In its own order: CheckD before RelayD.
        QCOMPARE(f.manager.journal({ u"launch"_s }),
            (QStringList {
                u"launch GroupD"_s + in, u"launch CheckD"_s + in, u"launch ChatD"_s + in }));

        f.manager.clearJournal();
        f.services.RegisterAllServices();
        QCOMPARE(f.manager.journal({ u"launch"_s }),
            prefixed(u"launch"_s,
                { u"VelmarD"_s + in, u"GroupD"_s + in, u"VelmarboxServerManager"_s + in,
                    u"RelayD"_s + in, u"CheckD"_s + in, u"FileDispatchD"_s + in,
                    u"FileSessionD"_s + in, u"ChatD"_s + in }));

        // No manager: nothing is registered.
        f.manager.clearJournal();
        f.manager.setReachable(false);
        f.services.EnsureServicesRegistered();
        QVERIFY(f.manager.journal({ u"launch"_s }).isEmpty());
    }

    void realLaunches()
    {
        // The real launcher with stand-in programs: pskill and a daemon that
        // write where they ran and what they were given.
        TempServerDir dir;
        QVERIFY(dir.isValid());
        const QByteArray recorder = "#!/bin/sh\necho \"$(basename \"$0\") $* in $(pwd)\" >> \""
            + dir.filePath(u"launches.txt"_s).toUtf8() + "\"\n";
        QVERIFY(dir.writeFile(u"pskill"_s, recorder));
        QVERIFY(dir.writeFile(u"GroupD"_s, recorder));
        for (const QString &name : { u"pskill"_s, u"GroupD"_s })
            QVERIFY(QFile::setPermissions(
                dir.filePath(name), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        // A daemon that is not executable and one that is missing: nothing happens.
        QVERIFY(dir.writeFile(u"RelayD"_s, recorder));

        ScriptedServiceManager manager;
        DetachedProcessLauncher launcher;
        ServiceControl control(manager, manager.clock(), launcher, dir.programDir());
        ServerServices services(control);
        control.KillProcessByName(u"ChatD"_s);
        QTRY_VERIFY(dir.readFile(u"launches.txt"_s).contains("pskill ChatD"));
        QVERIFY(services.registerService(u"GroupD"_s));
        QTRY_VERIFY(dir.readFile(u"launches.txt"_s)
                        .contains("GroupD /service in " + dir.programDir().toUtf8()));
        QVERIFY(!services.registerService(u"RelayD"_s));
        QVERIFY(!services.registerService(u"VelmarD"_s));

        // Without pskill the stop goes on regardless.
        QVERIFY(QFile::remove(dir.filePath(u"pskill"_s)));
        manager.setRunning({ u"ChatD"_s });
        services.StopAllServices();
        QVERIFY(!manager.isRunning(u"ChatD"_s));
    }
};

QTEST_GUILESS_MAIN(TestServices)
#include "tst_services.moc"
