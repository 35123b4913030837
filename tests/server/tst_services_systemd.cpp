#include "ProgramLauncher.h"
#include "ServerServices.h"
#include "ServiceClock.h"
#include "ServiceControl.h"
#include "SystemdServiceManager.h"
#include "TempServerDir.h"
#include "VelmarCtlTool.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
const QStringList AllEight = { u"VelmarD"_s, u"GroupD"_s, u"VelmarboxServerManager"_s, u"RelayD"_s,
    u"CheckD"_s, u"FileDispatchD"_s, u"FileSessionD"_s, u"ChatD"_s };

// GroupD takes two seconds to come up, FileSessionD never does, HangD hangs in
// activating until systemd gives up on it.
QByteArray unitText(const QString &name, const QString &orderFile)
{
    const QByteArray order = orderFile.toUtf8();
    QByteArray text
        = "[Unit]\nDescription=stand-in for " + name.toUtf8() + "\n\n[Service]\nType=simple\n";
    if (name == u"HangD"_s)
        return text
            + "ExecStartPre=/bin/sleep infinity\nExecStart=/bin/sleep infinity\n"
              "TimeoutStartSec=2\n";
    text += "ExecStartPre=/bin/sh -c 'echo start " + name.toUtf8() + " >> " + order + "'\n";
    if (name == u"GroupD"_s)
        text += "ExecStartPre=/bin/sleep 2\nExecStartPost=/bin/sh -c 'echo up GroupD >> " + order
            + "'\n";
    if (name == u"FileSessionD"_s)
        text += "ExecStartPre=/bin/false\n";
    text += "ExecStart=/bin/sleep infinity\n"
            "ExecStop=/bin/sh -c 'echo stop "
        + name.toUtf8() + " >> " + order + "'\nTimeoutStartSec=30\nTimeoutStopSec=30\n";
    return text;
}

QStringList readLines(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
    lines.removeAll(QString());
    return lines;
}

const QStringList ExpectedStart = { u"start VelmarD"_s, u"start GroupD"_s, u"up GroupD"_s,
    u"start RelayD"_s, u"start FileDispatchD"_s, u"start FileSessionD"_s, u"start ChatD"_s,
    u"start VelmarboxServerManager"_s, u"start CheckD"_s };
// FileSessionD never came up, so it is not stopped.
const QStringList ExpectedStop = { u"stop CheckD"_s, u"stop ChatD"_s, u"stop VelmarD"_s,
    u"stop GroupD"_s, u"stop RelayD"_s, u"stop FileDispatchD"_s, u"stop VelmarboxServerManager"_s };

class Recorder final : public ServerServices::Observer
{
public:
    void started(const QString &name, bool ok) override
    {
        events.append(u"%1 %2"_s.arg(name, ok ? u"ok"_s : u"failed"_s));
    }
    QStringList events;
};
} // namespace

// The service layer against a real systemd user manager with eight small
// units standing in for the daemons. Needs the manager that
// scripts/systemd-test-manager.sh starts.
class TestServicesSystemd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (qEnvironmentVariable("VELMAR_TEST_SYSTEMD") != u"1"_s) {
            if (qEnvironmentVariable("VELMAR_REQUIRE_SYSTEMD") == u"1"_s)
                QFAIL("VELMAR_REQUIRE_SYSTEMD is set but no systemd user manager runs");
            QSKIP("no systemd user manager: run under scripts/systemd-test-manager.sh run -- ...");
        }
        QVERIFY(m_dir.isValid());
        m_orderFile = m_dir.filePath(u"order.txt"_s);
        const QString unitDir = QDir::homePath() + u"/.config/systemd/user"_s;
        QVERIFY(QDir().mkpath(unitDir));
        for (const QString &name : AllEight + QStringList { u"HangD"_s }) {
            QFile unit(unitDir + u'/' + name + u".service"_s);
            QVERIFY(unit.open(QIODevice::WriteOnly | QIODevice::Truncate));
            unit.write(unitText(name, m_orderFile));
        }
        // pskill stand-in: records the name it was given.
        QVERIFY(m_dir.writeFile(u"pskill"_s,
            "#!/bin/sh\necho \"pskill $*\" >> \"" + m_dir.filePath(u"pskill.txt"_s).toUtf8()
                + "\"\n"));
        QVERIFY(QFile::setPermissions(
            m_dir.filePath(u"pskill"_s), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));

        const QDBusMessage reload
            = QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
                u"org.freedesktop.systemd1"_s, u"/org/freedesktop/systemd1"_s,
                u"org.freedesktop.systemd1.Manager"_s, u"Reload"_s));
        QCOMPARE(reload.type(), QDBusMessage::ReplyMessage);

        m_manager = std::make_unique<SystemdServiceManager>(SystemdServiceManager::Bus::User);
        QVERIFY(m_manager->openManager());
        m_control
            = std::make_unique<ServiceControl>(*m_manager, m_clock, m_launcher, m_dir.programDir());
        m_services = std::make_unique<ServerServices>(*m_control);
    }

    void init()
    {
        stopEverything();
        QFile::remove(m_orderFile);
    }

    void startAndStopAll()
    {
        for (const QString &name : AllEight)
            QCOMPARE(m_control->queryState(name), ServiceControl::State::Stopped);
        QVERIFY(m_services->isStartEnabled());
        QVERIFY(!m_services->isStopEnabled());

        Recorder recorder;
        QCOMPARE(m_services->StartAllServices(&recorder), ServerServices::StartOutcome::Ran);
        const QStringList started = readLines(m_orderFile);
        qInfo("observed start order: %s", qPrintable(started.join(u", "_s)));
        QCOMPARE(started, ExpectedStart);
        QVERIFY(recorder.events.contains(u"GroupD ok"_s));
        QVERIFY(recorder.events.contains(u"FileSessionD failed"_s));
        for (const QString &name : AllEight) {
            QCOMPARE(m_control->IsServiceRunning(name), name != u"FileSessionD"_s);
        }
        // FileSessionD is down: the start command stays offered.
        QVERIFY(m_services->isStartEnabled());
        QVERIFY(m_services->isStopEnabled());

        // A second run starts only what is down: the failing unit again.
        QFile::remove(m_orderFile);
        QCOMPARE(m_services->StartAllServices(), ServerServices::StartOutcome::Ran);
        QCOMPARE(readLines(m_orderFile), QStringList { u"start FileSessionD"_s });

        QFile::remove(m_orderFile);
        m_services->StopAllServices();
        const QStringList stopped = readLines(m_orderFile);
        qInfo("observed stop order: %s", qPrintable(stopped.join(u", "_s)));
        QCOMPARE(stopped, ExpectedStop);
        QTRY_COMPARE(readLines(m_dir.filePath(u"pskill.txt"_s)), QStringList { u"pskill ChatD"_s });
        for (const QString &name : AllEight)
            QVERIFY2(!m_control->IsServiceRunning(name), qPrintable(name));
        QVERIFY(m_services->isStartEnabled());
        QVERIFY(!m_services->isStopEnabled());
    }

    void hangingAndUnknownUnits()
    {
        // Hangs in activating: given up when its wait hint (its start time-out)
        // has passed without progress.
        QVERIFY(!m_control->StartServiceAndWait(u"HangD"_s));
        QVERIFY(!m_control->IsServiceRunning(u"HangD"_s));

        // A unit systemd does not know is the service that does not exist.
        QVERIFY(!m_control->IsServiceRunning(u"NoSuchD"_s));
        QVERIFY(m_control->StartServiceAndWait(u"NoSuchD"_s));
        QVERIFY(m_control->StopServiceAndWait(u"NoSuchD"_s));
        QCOMPARE(m_control->queryState(u"NoSuchD"_s), ServiceControl::State::NotInstalled);
    }

    void velmarctlServices()
    {
        const auto services = [this](const QString &action, QString *out) {
            const CtlRun run
                = velmarctl({ u"services"_s, action, u"--server-dir"_s, m_dir.programDir() });
            *out = run.outText();
            return run.exitCode;
        };

        QString out;
        QCOMPARE(services(u"start"_s, &out), 5);
        QCOMPARE(readLines(m_orderFile), ExpectedStart);
        QVERIFY2(out.contains(u"FileSessionD 服务运行失败.\n"_s), qPrintable(out));
        QVERIFY2(
            out.contains(u"starting GroupD\nGroupD started\nstarting RelayD\n"_s), qPrintable(out));

        QCOMPARE(services(u"status"_s, &out), 0);
        QCOMPARE(out,
            u"VelmarD\trunning\nGroupD\trunning\nVelmarboxServerManager\trunning\nRelayD\trunning\n"
            "CheckD\trunning\nFileDispatchD\trunning\nFileSessionD\tstopped\nChatD\trunning\n"_s);

        QFile::remove(m_orderFile);
        QCOMPARE(services(u"stop"_s, &out), 0);
        QCOMPARE(readLines(m_orderFile), ExpectedStop);
        QVERIFY2(
            out.startsWith(u"stopping CheckD\nCheckD stopped\npskill ChatD\nstopping ChatD\n"_s),
            qPrintable(out));
        QVERIFY2(out.contains(u"start command enabled, stop command greyed\n"_s), qPrintable(out));
    }

    void cleanupTestCase()
    {
        if (m_control)
            stopEverything();
    }

private:
    void stopEverything()
    {
        for (const QString &name : AllEight + QStringList { u"HangD"_s }) {
            QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
                u"org.freedesktop.systemd1"_s, u"/org/freedesktop/systemd1"_s,
                u"org.freedesktop.systemd1.Manager"_s, u"ResetFailed"_s));
            if (m_control->IsServiceRunning(name))
                QVERIFY(m_control->StopServiceAndWait(name));
        }
    }

    TempServerDir m_dir;
    QString m_orderFile;
    std::unique_ptr<SystemdServiceManager> m_manager;
    ThreadSleepClock m_clock;
    DetachedProcessLauncher m_launcher;
    std::unique_ptr<ServiceControl> m_control;
    std::unique_ptr<ServerServices> m_services;
};

QTEST_GUILESS_MAIN(TestServicesSystemd)
#include "tst_services_systemd.moc"
