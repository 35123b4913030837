#pragma once

#include <QString>
#include <QtGlobal>

// "velmarctl services status|start|stop" and "velmarctl notify": the console's
// own service classes and notification datagram, from a shell.
namespace ServiceCommand {

// Prints each daemon's state, or runs the console's start or stop sequence
// (same orders and guards as the menu commands) and prints each step. The
// exit code is 0, or 4 when a daemon failed to start or to stop.
int runServices(const QString &action, const QString &serverDir);

// Sends the 32-byte change notification to 127.0.0.1:port; 0, or 5 when the
// send itself fails.
int runNotify(quint16 port, quint16 code);

// "0x0DAC", "3500": a 16-bit number in hex or decimal.
bool parseNumber(const QString &text, quint16 &value, quint16 minimum);

} // namespace ServiceCommand
