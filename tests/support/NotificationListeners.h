#pragma once

#include <memory>
#include <QList>
#include <QStringList>
#include <vector>

class QUdpSocket;

// Listens on 127.0.0.1 for the two ports a save notifies (55051 for the
// distribution server, 55052 for the server daemon): each on a port the
// system picks, with VELMAR_NOTIFY_PORTS sending the designed port's
// datagrams there (inherited by the processes the test starts), so that
// tests run side by side. One set of listeners at a time per process.
class NotificationListeners
{
public:
    NotificationListeners();
    // Other ports and another expected code (the client presentation settings
    // notify 55051 and 55054 with 0x0DAF).
    NotificationListeners(QList<quint16> ports, quint16 code);
    ~NotificationListeners();

    bool bind(QString *error);

    // The designed ports that received a datagram since the last call, in port order;
    // "bad datagram" stands for anything but the database-change notification.
    // A datagram to 127.0.0.1 is in the receiver's queue once its send
    // returned, so nothing is waited for.
    QStringList drain();

private:
    std::vector<std::unique_ptr<QUdpSocket>> m_sockets;
    QList<quint16> m_ports;
    quint16 m_code;
};
