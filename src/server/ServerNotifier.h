#pragma once

#include "ServerNotification.h"

class MessageService;

// Sends change notifications for the commands that report a failed send to the
// administrator (the directory save, the client presentation dialogs): a send
// that fails shows "发送失败" in a message box. The database-settings command
// reacts to a failure differently (it restarts the server) and calls
// SendServerNotification itself.
class ServerNotifier
{
public:
    explicit ServerNotifier(MessageService &messages);

    bool notify(quint16 port, quint16 code = ServerNotification::DatabaseChanged);

    static QString failureText();

private:
    MessageService &m_messages;
};
