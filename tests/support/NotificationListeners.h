#pragma once

#include <memory>
#include <QStringList>
#include <vector>

class QUdpSocket;

// Listens on 127.0.0.1 at the two ports a save notifies (55051 for the
// distribution server, 55052 for the server daemon). The ports are fixed, so
// the tests that use this run alone (SERIAL).
class NotificationListeners
{
public:
    NotificationListeners();
    ~NotificationListeners();

    bool bind(QString *error);

    // The ports that received a datagram since the last call, in port order;
    // "bad datagram" stands for anything but the database-change notification.
    // A datagram to 127.0.0.1 is in the receiver's queue once its send
    // returned, so nothing is waited for.
    QStringList drain();

private:
    std::vector<std::unique_ptr<QUdpSocket>> m_sockets;
};
