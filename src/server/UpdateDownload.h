#pragma once

#include "UpdateFeed.h"

#include <memory>
#include <QCryptographicHash>
#include <QObject>
#include <QPointer>

class QNetworkAccessManager;
class QNetworkReply;
class QSaveFile;

// Downloads one setup file of the release feed into a folder. The file is
// written beside its final name and appears under it only once the whole of
// it has arrived and its SHA-256 is the feed's; a cancelled, failed or
// mismatching download leaves nothing behind.
class UpdateDownload final : public QObject
{
    Q_OBJECT

public:
    UpdateDownload(QNetworkAccessManager &network, const UpdateRelease &release,
        const QString &folder, QObject *parent = nullptr);
    ~UpdateDownload() override;

    // The file's path once finished: the last segment of the address in folder.
    QString filePath() const { return m_path; }

    void start();
    void cancel();

Q_SIGNALS:
    void progress(qint64 received, qint64 total);
    // ok: the file is in place and its checksum verified; otherwise message
    // says why not.
    void finished(bool ok, const QString &message);

private:
    void readAvailable();
    void done();
    void fail(const QString &message);

    QNetworkAccessManager &m_network;
    UpdateRelease m_release;
    QString m_path;
    std::unique_ptr<QSaveFile> m_file;
    QCryptographicHash m_hash { QCryptographicHash::Sha256 };
    QPointer<QNetworkReply> m_reply;
    bool m_over = false;
};
