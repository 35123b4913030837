#include "ServerNotification.h"
#include "VelmarCtlTool.h"

#include <QHostAddress>
#include <QNetworkDatagram>
#include <QProcess>
#include <QTest>
#include <QUdpSocket>

using namespace Qt::StringLiterals;

// velmarctl services and notify as an administrator runs them. The runs with
// a real service manager are in tst_services_systemd; here the manager cannot
// be reached, and the notification for 55052 goes to a listener of the
// system's choosing through VELMAR_NOTIFY_PORTS.
class TestVelmarCtlServices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void notify_data()
    {
        QTest::addColumn<QStringList>("extra");
        QTest::addColumn<quint16>("code");
        QTest::addColumn<QString>("printed");
        QTest::newRow("default code") << QStringList() << quint16(0x0DAC)
                                      << u"sent 32 bytes to 127.0.0.1:55052, code 0x0DAC\n"_s;
        QTest::newRow("hex code") << QStringList { u"--code"_s, u"0x0daf"_s } << quint16(0x0DAF)
                                  << u"sent 32 bytes to 127.0.0.1:55052, code 0x0DAF\n"_s;
        QTest::newRow("decimal code") << QStringList { u"--code=3500"_s } << quint16(3500)
                                      << u"sent 32 bytes to 127.0.0.1:55052, code 0x0DAC\n"_s;
    }

    void notify()
    {
        QFETCH(QStringList, extra);
        QFETCH(quint16, code);
        QFETCH(QString, printed);
        QUdpSocket listener;
        QVERIFY(listener.bind(QHostAddress(QHostAddress::LocalHost), 0));
        qputenv("VELMAR_NOTIFY_PORTS", "55052=" + QByteArray::number(listener.localPort()));
        const CtlRun run = velmarctl(QStringList { u"notify"_s, u"55052"_s } + extra);
        qunsetenv("VELMAR_NOTIFY_PORTS");
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.outText(), printed);
        QVERIFY(listener.hasPendingDatagrams());
        // The datagram's layout is the notification's to test.
        QCOMPARE(listener.receiveDatagram().data(), ServerNotification::datagram(code));
        QVERIFY(!listener.hasPendingDatagrams());
    }

    void notifyUsage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("no port") << QStringList { u"notify"_s };
        QTest::newRow("port 0") << QStringList { u"notify"_s, u"0"_s };
        QTest::newRow("port too large") << QStringList { u"notify"_s, u"65536"_s };
        QTest::newRow("not a number") << QStringList { u"notify"_s, u"port"_s };
        QTest::newRow("bad code") << QStringList { u"notify"_s, u"55052"_s, u"--code"_s,
            u"0x10000"_s };
        QTest::newRow("no action") << QStringList { u"services"_s };
        QTest::newRow("unknown action") << QStringList { u"services"_s, u"restart"_s };
    }

    void notifyUsage()
    {
        QFETCH(QStringList, arguments);
        const CtlRun run = velmarctl(arguments);
        QCOMPARE(run.exitCode, 2);
        QVERIFY(run.outText().isEmpty());
        QVERIFY(!run.err.isEmpty());
    }

    void servicesWithoutManager()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"VELMAR_SERVICE_BUS"_s, u"user"_s);
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, u"unix:path=/nonexistent/velmar-bus"_s);
        const QString lines = u"VelmarD\tunreachable\nGroupD\tunreachable\n"
                              "VelmarboxServerManager\tunreachable\nRelayD\tunreachable\n"
                              "CheckD\tunreachable\nFileDispatchD\tunreachable\n"
                              "FileSessionD\tunreachable\nChatD\tunreachable\n"_s;

        CtlRun run = velmarctl({ u"services"_s, u"status"_s }, environment);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.outText(), lines);
        QCOMPARE(run.err, u"velmarctl: the service manager cannot be reached\n"_s);

        // Starting and stopping what cannot be reached count as done, as in the
        // console; the states say what happened.
        run = velmarctl({ u"services"_s, u"start"_s }, environment);
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(
            run.outText().startsWith(u"starting VelmarD\nVelmarD started\nstarting GroupD\n"_s),
            qPrintable(run.outText()));
        QVERIFY(run.outText().endsWith(u"start command enabled, stop command greyed\n"_s + lines));

        run = velmarctl({ u"services"_s, u"stop"_s }, environment);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(
            run.outText(), u"pskill ChatD\nstart command enabled, stop command greyed\n"_s + lines);
    }
};

QTEST_GUILESS_MAIN(TestVelmarCtlServices)
#include "tst_velmarctl_services.moc"
