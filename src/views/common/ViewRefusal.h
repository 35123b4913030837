#pragma once

#include "EditRefusal.h"

#include <QRect>

class MessageService;
class QWidget;

// Shows why an edit was turned down, as the console shows refusals: nothing
// for a silent one, a message box for those that ask for one, otherwise a
// balloon at the widget (at a cell of it when cell is given). The box is
// shown at once; callers inside an editor's commit queue the call, so that
// the box does not take the focus from an editor still closing.
void showRefusal(
    MessageService &messages, const EditRefusal &refusal, QWidget *anchor, const QRect &cell = {});
