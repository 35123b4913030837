#include "InviteSendRun.h"

#include <QMetaObject>
#include <utility>

InviteSendRun::InviteSendRun(SmtpAccount account, QList<Mail> mails, QObject *parent)
    : QObject(parent)
    , m_account(std::move(account))
    , m_mails(std::move(mails))
{ }

InviteSendRun::~InviteSendRun()
{
    if (m_thread) {
        m_cancelled = true;
        m_thread->wait();
        delete m_thread;
    }
}

void InviteSendRun::start()
{
    if (m_thread)
        return;
    m_thread = QThread::create([this] {
        SmtpSender sender(m_account);
        for (int i = 0; i < m_mails.size() && !m_cancelled; ++i) {
            const Mail &mail = m_mails.at(i);
            const SmtpResult result = sender.send(mail.from, mail.to, mail.message);
            QMetaObject::invokeMethod(
                this, [this, i, result] { Q_EMIT mailSent(i, result); }, Qt::QueuedConnection);
        }
    });
    connect(m_thread, &QThread::finished, this, &InviteSendRun::finished);
    m_thread->start();
}

bool InviteSendRun::isRunning() const
{
    return m_thread && m_thread->isRunning();
}
