#pragma once

#include "MessageService.h"

#include <QStringList>

class QTextStream;

// The console's message boxes and balloon tips as lines on standard error.
// Questions get their default answer (Yes), as a confirmed command line has
// already said yes.
class ConsoleMessageService : public MessageService
{
public:
    int showMessage(const Box &box) override;
    void showBalloon(const Balloon &balloon) override;

    // Everything shown so far, in order.
    const QStringList &shown() const { return m_shown; }

private:
    void print(const QString &text);

    QStringList m_shown;
};
