#include "ScriptedMessageService.h"
#include "ServerNotification.h"
#include "ServerNotifier.h"

#include <QHostAddress>
#include <QNetworkDatagram>
#include <QTest>
#include <QUdpSocket>

using namespace Qt::StringLiterals;

namespace {

QNetworkDatagram receiveOne(QUdpSocket &listener)
{
    if (!listener.hasPendingDatagrams() && !listener.waitForReadyRead(5000))
        return {};
    return listener.receiveDatagram();
}

} // namespace

class TestServerNotification : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void datagramLayout_data()
    {
        QTest::addColumn<quint16>("code");
        QTest::addColumn<QByteArray>("expected");
        const QByteArray head = QByteArray::fromHex("00000001") + QByteArray(14, '\0');
        const QByteArray tail = QByteArray::fromHex("00000001cccccccccccccccc");
        QTest::newRow("database settings")
            << quint16(0x0DAC) << head + QByteArray::fromHex("0dac") + tail;
        QTest::newRow("presentation settings")
            << quint16(0x0DAF) << head + QByteArray::fromHex("0daf") + tail;
        QTest::newRow("high byte set")
            << quint16(0xABCD) << head + QByteArray::fromHex("abcd") + tail;
    }

    void datagramLayout()
    {
        QFETCH(quint16, code);
        QFETCH(QByteArray, expected);
        const QByteArray bytes = ServerNotification::datagram(code);
        QCOMPARE(bytes.size(), 32);
        QCOMPARE(bytes.toHex(), expected.toHex());
    }

    void sendsToLoopbackFromAnyLocalPort()
    {
        QUdpSocket listener;
        QVERIFY(listener.bind(QHostAddress(QHostAddress::LocalHost), 0));
        QVERIFY(SendServerNotification(listener.localPort()));
        QVERIFY(
            SendServerNotification(listener.localPort(), ServerNotification::PresentationChanged));

        const QNetworkDatagram first = receiveOne(listener);
        QVERIFY(first.isValid());
        QCOMPARE(first.data(), ServerNotification::datagram(0x0DAC));
        QCOMPARE(first.senderAddress(), QHostAddress(QHostAddress::LocalHost));
        QVERIFY(first.senderPort() > 0);
        QVERIFY(first.senderPort() != int(listener.localPort()));

        const QNetworkDatagram second = receiveOne(listener);
        QCOMPARE(second.data(), ServerNotification::datagram(0x0DAF));
        QVERIFY(!listener.hasPendingDatagrams());
    }

    void sendWithoutListenerSucceeds()
    {
        // Find a port nobody listens on: bind, note it, release it.
        quint16 port = 0;
        {
            QUdpSocket probe;
            QVERIFY(probe.bind(QHostAddress(QHostAddress::LocalHost), 0));
            port = probe.localPort();
        }
        ScriptedMessageService messages;
        ServerNotifier notifier(messages);
        QVERIFY(notifier.notify(port));
        QVERIFY(messages.boxes().isEmpty());
    }

    void failedSendIsReportedOnce()
    {
        // The system refuses a datagram to port 0: a real local send failure.
        QVERIFY(!SendServerNotification(0));

        ScriptedMessageService messages;
        ServerNotifier notifier(messages);
        QVERIFY(!notifier.notify(0));
        QCOMPARE(messages.boxTexts(), QStringList { u"发送失败"_s });
        QCOMPARE(messages.boxes().constFirst().buttons, MessageService::Buttons::Ok);
        QVERIFY(messages.balloons().isEmpty());
    }

    // The designed ports stay fixed; the listener binds a port of the system's
    // choosing and VELMAR_NOTIFY_PORTS sends the designed port's datagrams there.
    void reachesFixedPort_data()
    {
        QTest::addColumn<quint16>("port");
        QTest::addColumn<quint16>("code");
        QTest::newRow("distributed servers")
            << ServerNotification::DistributionPort << ServerNotification::DatabaseChanged;
        QTest::newRow("server") << ServerNotification::ServerPort
                                << ServerNotification::DatabaseChanged;
        QTest::newRow("site list")
            << ServerNotification::DistributionPort << ServerNotification::PresentationChanged;
        QTest::newRow("caption") << ServerNotification::CaptionPort
                                 << ServerNotification::PresentationChanged;
    }

    void reachesFixedPort()
    {
        QFETCH(quint16, port);
        QFETCH(quint16, code);
        QCOMPARE(ServerNotification::DistributionPort, 55051);
        QCOMPARE(ServerNotification::ServerPort, 55052);
        QCOMPARE(ServerNotification::CaptionPort, 55054);

        QUdpSocket listener;
        QVERIFY2(listener.bind(QHostAddress(QHostAddress::LocalHost), 0),
            qPrintable(listener.errorString()));
        // Malformed pairs and other ports around the one that applies are passed over.
        qputenv("VELMAR_NOTIFY_PORTS",
            QByteArray("junk,1=,=2,70000=5,") + QByteArray::number(port) + '='
                + QByteArray::number(listener.localPort()) + ",55053=1");
        QCOMPARE(ServerNotification::destinationPort(port), listener.localPort());
        QCOMPARE(ServerNotification::destinationPort(55053), quint16(1));
        QCOMPARE(ServerNotification::destinationPort(55055), quint16(55055));
        QVERIFY(SendServerNotification(port, code));
        qunsetenv("VELMAR_NOTIFY_PORTS");
        QCOMPARE(ServerNotification::destinationPort(port), port);
        QVERIFY(listener.hasPendingDatagrams() || listener.waitForReadyRead(5000));
        const QNetworkDatagram received = listener.receiveDatagram();
        QCOMPARE(received.data(), ServerNotification::datagram(code));
    }
};

QTEST_GUILESS_MAIN(TestServerNotification)
#include "tst_servernotification.moc"
