#include "ServerNotifier.h"

#include "MessageService.h"

using namespace Qt::StringLiterals;

ServerNotifier::ServerNotifier(MessageService &messages)
    : m_messages(messages)
{ }

QString ServerNotifier::failureText()
{
    return u"发送失败"_s;
}

bool ServerNotifier::notify(quint16 port, quint16 code)
{
    if (SendServerNotification(port, code))
        return true;
    MessageService::Box box;
    box.text = failureText();
    box.buttons = MessageService::Buttons::Ok;
    box.icon = MessageService::Icon::Exclamation;
    m_messages.showMessage(box);
    return false;
}
