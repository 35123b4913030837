#include "ServerNotification.h"

#include <cstring>
#include <QHostAddress>
#include <QtEndian>
#include <QUdpSocket>

namespace ServerNotification {

QByteArray datagram(quint16 code)
{
    QByteArray bytes(DatagramSize, '\0');
    auto *data = reinterpret_cast<uchar *>(bytes.data());
    qToBigEndian<quint32>(1, data);
    qToBigEndian<quint16>(code, data + 18);
    qToBigEndian<quint32>(1, data + 20);
    std::memset(data + 24, 0xCC, 8);
    return bytes;
}

quint16 destinationPort(quint16 port)
{
    const QByteArray map = qgetenv("VELMAR_NOTIFY_PORTS");
    for (const QByteArray &pair : map.split(',')) {
        const qsizetype equals = pair.indexOf('=');
        if (equals < 0)
            continue;
        bool fromOk = false;
        bool toOk = false;
        const uint from = pair.left(equals).trimmed().toUInt(&fromOk);
        const uint to = pair.mid(equals + 1).trimmed().toUInt(&toOk);
        if (fromOk && toOk && from == port && to > 0 && to <= 0xFFFF)
            return quint16(to);
    }
    return port;
}

} // namespace ServerNotification

bool SendServerNotification(quint16 port, quint16 code)
{
    // A fresh socket per notification, bound by the system to any local port,
    // so nothing outlives the call and no port is held between saves.
    QUdpSocket socket;
    const QByteArray bytes = ServerNotification::datagram(code);
    const qint64 written = socket.writeDatagram(
        bytes, QHostAddress(QHostAddress::LocalHost), ServerNotification::destinationPort(port));
    return written == bytes.size();
}
