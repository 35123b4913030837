#include "UpdateDownload.h"

#include <QDir>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSaveFile>

using namespace Qt::StringLiterals;

UpdateDownload::UpdateDownload(QNetworkAccessManager &network, const UpdateRelease &release,
    const QString &folder, QObject *parent)
    : QObject(parent)
    , m_network(network)
    , m_release(release)
{
    QString name = QFileInfo(release.url.path()).fileName();
    if (name.isEmpty())
        name = u"%1-%2"_s.arg(release.product, release.version.toString());
    m_path = QDir(folder).filePath(name);
}

UpdateDownload::~UpdateDownload()
{
    if (m_reply)
        m_reply->abort();
}

void UpdateDownload::start()
{
    m_file = std::make_unique<QSaveFile>(m_path);
    if (!m_file->open(QIODevice::WriteOnly)) {
        fail(u"无法写入 %1: %2"_s.arg(m_path, m_file->errorString()));
        return;
    }
    QNetworkRequest request(m_release.url);
    request.setAttribute(
        QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    m_reply = m_network.get(request);
    connect(m_reply, &QNetworkReply::readyRead, this, &UpdateDownload::readAvailable);
    connect(m_reply, &QNetworkReply::downloadProgress, this, &UpdateDownload::progress);
    connect(m_reply, &QNetworkReply::finished, this, &UpdateDownload::done);
}

void UpdateDownload::cancel()
{
    if (m_over)
        return;
    fail(u"下载已取消"_s);
}

void UpdateDownload::readAvailable()
{
    const QByteArray chunk = m_reply->readAll();
    m_hash.addData(chunk);
    if (m_file->write(chunk) != chunk.size())
        fail(u"无法写入 %1: %2"_s.arg(m_path, m_file->errorString()));
}

void UpdateDownload::done()
{
    if (m_over)
        return;
    if (m_reply->error() != QNetworkReply::NoError) {
        fail(u"下载 %1 失败: %2"_s.arg(m_release.url.toString(), m_reply->errorString()));
        return;
    }
    readAvailable();
    if (m_over)
        return;
    if (m_hash.result() != m_release.sha256) {
        fail(u"%1 的校验和 (SHA-256) 与发布列表不符, 文件已丢弃"_s.arg(m_release.url.fileName()));
        return;
    }
    if (!m_file->commit()) {
        fail(u"无法写入 %1: %2"_s.arg(m_path, m_file->errorString()));
        return;
    }
    m_over = true;
    m_reply->deleteLater();
    Q_EMIT finished(true, m_path);
}

void UpdateDownload::fail(const QString &message)
{
    m_over = true;
    if (m_file)
        m_file->cancelWriting();
    m_file.reset();
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
        m_reply->deleteLater();
    }
    Q_EMIT finished(false, message);
}
