#include "ViewRefusal.h"

#include "MessageService.h"

#include <QWidget>

void showRefusal(
    MessageService &messages, const EditRefusal &refusal, QWidget *anchor, const QRect &cell)
{
    if (refusal.text.isEmpty())
        return;
    if (refusal.messageBox) {
        MessageService::Box box;
        box.text = refusal.text;
        box.title = refusal.title;
        box.icon = refusal.icon == MessageService::Icon::Error ? MessageService::Icon::Exclamation
                                                               : refusal.icon;
        box.parent = anchor ? anchor->window() : nullptr;
        messages.showMessage(box);
        // The administrator goes on where the refused entry was.
        if (anchor)
            anchor->setFocus();
        return;
    }
    MessageService::Balloon balloon;
    balloon.title = refusal.title;
    balloon.text = refusal.text;
    balloon.icon = refusal.icon;
    balloon.anchor = anchor;
    balloon.cell = cell;
    messages.showBalloon(balloon);
}
