#include "DeferredMessageService.h"

int DeferredMessageService::showMessage(const Box &box)
{
    m_items.append(box);
    return affirmative(box.buttons);
}

void DeferredMessageService::showBalloon(const Balloon &balloon)
{
    m_items.append(balloon);
}

void DeferredMessageService::replay(MessageService &target)
{
    const QList<std::variant<Box, Balloon>> items = std::exchange(m_items, {});
    for (const auto &item : items) {
        if (const Box *box = std::get_if<Box>(&item))
            target.showMessage(*box);
        else
            target.showBalloon(std::get<Balloon>(item));
    }
}
