#include "ServerNotification.h"

#include <QHostAddress>
#include <QNetworkDatagram>
#include <QTest>
#include <QUdpSocket>

// Binds the fixed notification ports, so it runs alone (SERIAL).
class TestServerNotificationPorts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void reachesFixedPort_data();
    void reachesFixedPort();
};

void TestServerNotificationPorts::reachesFixedPort_data()
{
    QTest::addColumn<quint16>("port");
    QTest::addColumn<quint16>("code");
    QTest::newRow("distributed servers")
        << ServerNotification::DistributionPort << ServerNotification::DatabaseChanged;
    QTest::newRow("server") << ServerNotification::ServerPort
                            << ServerNotification::DatabaseChanged;
    QTest::newRow("site list") << ServerNotification::DistributionPort
                               << ServerNotification::PresentationChanged;
    QTest::newRow("caption") << ServerNotification::CaptionPort
                             << ServerNotification::PresentationChanged;
}

void TestServerNotificationPorts::reachesFixedPort()
{
    QFETCH(quint16, port);
    QFETCH(quint16, code);
    QCOMPARE(ServerNotification::DistributionPort, 55051);
    QCOMPARE(ServerNotification::ServerPort, 55052);
    QCOMPARE(ServerNotification::CaptionPort, 55054);

    QUdpSocket listener;
    QVERIFY2(listener.bind(QHostAddress(QHostAddress::LocalHost), port),
        qPrintable(listener.errorString()));
    QVERIFY(SendServerNotification(port, code));
    QVERIFY(listener.hasPendingDatagrams() || listener.waitForReadyRead(5000));
    const QNetworkDatagram received = listener.receiveDatagram();
    QCOMPARE(received.data(), ServerNotification::datagram(code));
    QCOMPARE(received.destinationPort(), int(port));
}

QTEST_GUILESS_MAIN(TestServerNotificationPorts)
#include "tst_servernotificationports.moc"
