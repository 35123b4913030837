#include "ServerNotification.h"

#include <QHostAddress>
#include <QNetworkDatagram>
#include <QTest>
#include <QUdpSocket>

// The designed ports stay fixed; the listener binds a port of the system's
// choosing and VELMAR_NOTIFY_PORTS sends the designed port's datagrams there.
class TestServerNotificationPorts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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

QTEST_GUILESS_MAIN(TestServerNotificationPorts)
#include "tst_servernotificationports.moc"
