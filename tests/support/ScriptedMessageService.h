#pragma once

#include "MessageService.h"

#include <QList>
#include <QMutex>

// Stands in for the real message boxes in tests: records every box and balloon
// and answers boxes from a script (first queued answer first; when the script
// is empty, the box's default button: OK, or Yes for questions).
class ScriptedMessageService : public MessageService
{
public:
    int showMessage(const Box &box) override;
    void showBalloon(const Balloon &balloon) override;

    void queueAnswer(int result);
    QList<Box> boxes() const;
    QList<Balloon> balloons() const;
    QStringList boxTexts() const;
    QStringList balloonTexts() const;
    void clear();

private:
    mutable QMutex m_mutex;
    QList<int> m_answers;
    QList<Box> m_boxes;
    QList<Balloon> m_balloons;
};
