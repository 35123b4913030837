#pragma once

#include "MessageService.h"

#include <QList>
#include <variant>

// Holds the boxes and tips asked for on a thread that may not show any (the
// loading worker) until the user-interface thread replays them in order.
// Only OK boxes are asked for there; each is answered with its default button.
class DeferredMessageService : public MessageService
{
public:
    int showMessage(const Box &box) override;
    void showBalloon(const Balloon &balloon) override;

    bool isEmpty() const { return m_items.isEmpty(); }
    // Shows everything held, in the order asked for, and forgets it.
    void replay(MessageService &target);

private:
    QList<std::variant<Box, Balloon>> m_items;
};
