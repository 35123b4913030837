#pragma once

#include "SmtpSender.h"

#include <atomic>
#include <QList>
#include <QObject>
#include <QThread>

// One sending of prepared mails on a worker thread, so that a slow server
// never freezes the window. Each mail's result arrives on the owner's thread
// as it happens; cancel() stops before the next mail.
class InviteSendRun final : public QObject
{
    Q_OBJECT

public:
    struct Mail
    {
        QString from;
        QString to;
        QByteArray message;
    };

    InviteSendRun(SmtpAccount account, QList<Mail> mails, QObject *parent = nullptr);
    ~InviteSendRun() override;

    void start();
    void cancel() { m_cancelled = true; }
    bool isRunning() const;

Q_SIGNALS:
    void mailSent(int index, const SmtpResult &result);
    void finished();

private:
    SmtpAccount m_account;
    QList<Mail> m_mails;
    QThread *m_thread = nullptr;
    std::atomic<bool> m_cancelled { false };
};
