#include "ScriptedMessageService.h"

#include <QMutexLocker>
#include <QStringList>

int ScriptedMessageService::showMessage(const Box &box)
{
    QMutexLocker lock(&m_mutex);
    m_boxes.append(box);
    if (!m_answers.isEmpty())
        return m_answers.takeFirst();
    return affirmative(box.buttons);
}

void ScriptedMessageService::showBalloon(const Balloon &balloon)
{
    QMutexLocker lock(&m_mutex);
    m_balloons.append(balloon);
}

void ScriptedMessageService::queueAnswer(int result)
{
    QMutexLocker lock(&m_mutex);
    m_answers.append(result);
}

QList<MessageService::Box> ScriptedMessageService::boxes() const
{
    QMutexLocker lock(&m_mutex);
    return m_boxes;
}

QList<MessageService::Balloon> ScriptedMessageService::balloons() const
{
    QMutexLocker lock(&m_mutex);
    return m_balloons;
}

QStringList ScriptedMessageService::boxTexts() const
{
    QMutexLocker lock(&m_mutex);
    QStringList texts;
    for (const Box &box : m_boxes)
        texts.append(box.text);
    return texts;
}

QStringList ScriptedMessageService::balloonTexts() const
{
    QMutexLocker lock(&m_mutex);
    QStringList texts;
    for (const Balloon &balloon : m_balloons)
        texts.append(balloon.text);
    return texts;
}

void ScriptedMessageService::clear()
{
    QMutexLocker lock(&m_mutex);
    m_answers.clear();
    m_boxes.clear();
    m_balloons.clear();
}
