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

NotificationListeners::~NotificationListeners() = default;

bool NotificationListeners::bind(QString *error)
{
    for (const quint16 port : std::as_const(m_ports)) {
        auto socket = std::make_unique<QUdpSocket>();
        if (!socket->bind(QHostAddress(QHostAddress::LocalHost), port)) {
            *error = u"port %1: %2"_s.arg(port).arg(socket->errorString());
            return false;
        }
        m_sockets.push_back(std::move(socket));
    }
    return true;
}

QStringList NotificationListeners::drain()
{
    QStringList ports;
    for (const auto &socket : m_sockets) {
        while (socket->hasPendingDatagrams()) {
            const QNetworkDatagram datagram = socket->receiveDatagram();
            ports << (datagram.data() == ServerNotification::datagram(m_code)
                    ? QString::number(socket->localPort())
                    : u"bad datagram"_s);
        }
    }
    return ports;
}
