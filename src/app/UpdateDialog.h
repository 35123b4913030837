#pragma once

#include "DialogHelpers.h"
#include "UpdateFeed.h"

#include <QDialog>
#include <QNetworkAccessManager>
#include <QPointer>

class MessageService;
class QLabel;
class QProgressBar;
class QPushButton;
class QTreeWidget;
class UpdateDownload;

// "更新版本": reads the release feed, lists what is newer than the console and
// the daemons installed, and downloads a chosen setup file into a folder the
// administrator picks, with its progress, a cancel and its checksum checked.
class UpdateDialog final : public QDialog
{
    Q_OBJECT

public:
    // installed: product name -> installed version.
    UpdateDialog(const QUrl &feed, const QHash<QString, QVersionNumber> &installed,
        MessageService &messages, DialogHelpers::FolderChooser chooseFolder,
        QWidget *parent = nullptr);

    // Reads the feed (done once the list or the reason is shown).
    void check();
    QTreeWidget *releaseList() const { return m_list; }
    QLabel *statusLabel() const { return m_status; }

Q_SIGNALS:
    void checked();
    void downloadFinished(bool ok);

private:
    void feedArrived(QNetworkReply *reply);
    void download();
    void downloadDone(bool ok, const QString &message);
    void updateButtons();

    QUrl m_feed;
    QHash<QString, QVersionNumber> m_installed;
    MessageService &m_messages;
    DialogHelpers::FolderChooser m_chooseFolder;
    QNetworkAccessManager m_network;
    QList<UpdateRelease> m_offered;
    QPointer<UpdateDownload> m_download;

    QLabel *m_status;
    QTreeWidget *m_list;
    QProgressBar *m_progress;
    QPushButton *m_downloadButton;
    QPushButton *m_cancelButton;
};
