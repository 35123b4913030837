#include "SmtpPasswordStore.h"

#include <QEventLoop>
#include <qt6keychain/keychain.h>
#include <utility>

using namespace Qt::StringLiterals;

const QString SmtpPasswordStore::DefaultService = u"VelmarManager SMTP"_s;

namespace {

// Runs a keyring job to its end; the job answers through the event loop.
void runJob(QKeychain::Job &job)
{
    job.setAutoDelete(false);
    job.setInsecureFallback(false);
    QEventLoop loop;
    QObject::connect(&job, &QKeychain::Job::finished, &loop, &QEventLoop::quit);
    job.start();
    loop.exec();
}

} // namespace

SmtpPasswordStore::SmtpPasswordStore(QString service)
    : m_service(std::move(service))
{ }

QString SmtpPasswordStore::accountKey(const QString &user, const QString &host, quint16 port)
{
    return u"%1@%2:%3"_s.arg(user, host).arg(port);
}

SmtpPasswordStore::Result SmtpPasswordStore::read(const QString &account) const
{
    QKeychain::ReadPasswordJob job(m_service);
    job.setKey(account);
    runJob(job);
    Result result;
    if (job.error() == QKeychain::NoError) {
        result.ok = true;
        result.password = job.textData();
    } else {
        result.notFound = job.error() == QKeychain::EntryNotFound;
        result.error = job.errorString();
    }
    return result;
}

bool SmtpPasswordStore::write(const QString &account, const QString &password, QString *error) const
{
    QKeychain::WritePasswordJob job(m_service);
    job.setKey(account);
    job.setTextData(password);
    runJob(job);
    if (job.error() != QKeychain::NoError) {
        *error = job.errorString();
        return false;
    }
    return true;
}

bool SmtpPasswordStore::remove(const QString &account, QString *error) const
{
    QKeychain::DeletePasswordJob job(m_service);
    job.setKey(account);
    runJob(job);
    if (job.error() != QKeychain::NoError && job.error() != QKeychain::EntryNotFound) {
        *error = job.errorString();
        return false;
    }
    return true;
}
