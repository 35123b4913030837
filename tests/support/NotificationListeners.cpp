#include "NotificationListeners.h"

#include "ServerNotification.h"

#include <QHostAddress>
#include <QNetworkDatagram>
#include <QUdpSocket>

using namespace Qt::StringLiterals;

NotificationListeners::NotificationListeners()
    : NotificationListeners(
        { ServerNotification::DistributionPort, ServerNotification::ServerPort },
        ServerNotification::DatabaseChanged)
{ }

NotificationListeners::NotificationListeners(QList<quint16> ports, quint16 code)
    : m_ports(std::move(ports))
    , m_code(code)
{ }

NotificationListeners::~NotificationListeners()
{
    if (!m_sockets.empty())
        qunsetenv("VELMAR_NOTIFY_PORTS");
}

bool NotificationListeners::bind(QString *error)
{
    QStringList map;
    for (const quint16 port : std::as_const(m_ports)) {
        auto socket = std::make_unique<QUdpSocket>();
        if (!socket->bind(QHostAddress(QHostAddress::LocalHost), 0)) {
            *error = u"port %1: %2"_s.arg(port).arg(socket->errorString());
            return false;
        }
        map << u"%1=%2"_s.arg(port).arg(socket->localPort());
        m_sockets.push_back(std::move(socket));
    }
    qputenv("VELMAR_NOTIFY_PORTS", map.join(u',').toUtf8());
    return true;
}

QStringList NotificationListeners::drain()
{
    QStringList ports;
    for (size_t i = 0; i < m_sockets.size(); ++i) {
        QUdpSocket &socket = *m_sockets[i];
        while (socket.hasPendingDatagrams()) {
            const QNetworkDatagram datagram = socket.receiveDatagram();
            ports << (datagram.data() == ServerNotification::datagram(m_code)
                    ? QString::number(m_ports.at(qsizetype(i)))
                    : u"bad datagram"_s);
        }
    }
    return ports;
}
