#pragma once

#include <QByteArray>
#include <QtGlobal>

// The fixed 32-byte datagram that tells the server processes on this machine
// that something they cache has changed. The server daemons interpret the
// bytes; the console only chooses the code and the port.
namespace ServerNotification {

// Codes carried at bytes 18-19.
constexpr quint16 DatabaseChanged = 0x0DAC;
constexpr quint16 PresentationChanged = 0x0DAF;

// Ports on 127.0.0.1.
constexpr quint16 DistributionPort = 55051; // distributed servers; also the site list
constexpr quint16 ServerPort = 55052; // the main server daemon
constexpr quint16 CaptionPort = 55054; // caption-bar settings

constexpr int DatagramSize = 32;

// Big-endian: 0x00000001, 14 zero bytes, the code, 0x00000001, eight 0xCC.
QByteArray datagram(quint16 code);

// The port a notification for port really goes to: port itself, unless
// VELMAR_NOTIFY_PORTS ("55051=40001,55052=40002") sends it elsewhere, as the
// tests do (they cannot all own the fixed ports at once) and as a second
// server on one machine would.
quint16 destinationPort(quint16 port);

} // namespace ServerNotification

// Sends the datagram with code to 127.0.0.1:port from any local port. Returns
// whether the send itself succeeded: a missing listener is not a failure, since
// a datagram does not wait for one.
bool SendServerNotification(quint16 port, quint16 code = ServerNotification::DatabaseChanged);
